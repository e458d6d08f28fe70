// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <tellarix/qt/records/timescale.h>

#include <QBasicTimer>
#include <QLine>
#include <QPointer>
#include <QRect>
#include <QVector>
#include <QWidget>

#include <functional>
#include <optional>

class QPainter;

namespace Tellarix {
class RecordSequence;

namespace Gui {
class RecordMarker;
class RecordWidget;
} // namespace Gui
} // namespace Tellarix

namespace Norvu {
namespace Gui {

class Trace;
class TraceView;

/**
 * All rows of a trace view painted into one area, side by side or overlapping like a record
 * section.
 *
 * The widget is a hidden child of its view until setActive() puts it into the view's scroll area in
 * the place of the rows. It owns no data: it reads the records of slot 0 of each row, and keeps the
 * row's layout and polyline in the trace info of that slot.
 *
 * With the orientation `Qt::Vertical` rows stand below each other and time runs from left to right,
 * above the view's time scale; with `Qt::Horizontal` they stand beside each other and time runs
 * downwards. A click selects the row whose trace passes nearest to it.
 *
 * A host may place rows by itself, and give time that runs down a scale beside it, in the room that
 * contentsMargins() leave free.
 */
class NORVU_GUI_API MultiTraceWidget : public QWidget
{
    Q_OBJECT

public:
    explicit MultiTraceWidget(TraceView *view, Qt::WindowFlags f = Qt::WindowFlags());
    /** Gives the view its rows back if the widget is active. */
    ~MultiTraceWidget() override;

    /** True while the widget stands in the place of the view's rows. */
    bool isActive() const { return _replacedWidget != nullptr; }
    /** The direction in which rows are stacked. */
    Qt::Orientation orientation() const;
    /** Magnification of amplitudes, 1 and above; above 1 traces leave their rows. */
    float ampScale() const { return _ampScale; }
    /** Share of a row that the next one covers: 0 to 1, where all lie on top of each other. */
    double overlap() const { return _overlap; }
    bool areWigglesShown() const { return _wiggles; }

    /** Where the centre of a row stands, from 0 at the start to 1 at the end of the area; nothing
     *  for a row that is left out. */
    using Placement = std::function<std::optional<double>(const Trace &)>;
    /**
     * Places rows, e.g. by distance, instead of one behind another; an empty function places none.
     *
     * Their zero lines stand in their centres, they are a few lines of text high at least, and so
     * may cover each other. Labels without room are left out, those of selected rows last. Whatever
     * changes places has to call updateDisplay().
     */
    void setPlacement(Placement placement);
    bool isPlacing() const { return static_cast<bool>(_placement); }
    /**
     * A vertical scale for time that runs down, whose ticks the grid takes over: traces, markers
     * and grid then go by the whole height of drawingArea(), and labels get the room that the
     * longest one needs. The host lays the scale beside the area with the view's range. Without
     * one, which is null, the grid goes by the view's time scale.
     */
    void setTurnedTimeScale(Tellarix::Gui::TimeScale *scale);

    /** Pixels that the longest label of a row takes. */
    int labelWidth() const;
    /** Where traces are drawn; labels and axes stand beside it. */
    QRect drawingArea() const;
    /** Seconds relative to the alignment at a point, and pixel of them along the time axis. */
    double secondsAt(const QPoint &point) const;
    double pixelOf(double seconds) const;
    /** Room of a row; empty for one that isn't drawn. */
    QRect rowRect(const Trace *row) const;
    /** The row whose trace passes nearest to a point, which a click selects; where no trace is, the
     *  row that has its room there; else null. */
    Trace *rowAt(const QPoint &point) const;
    /** What a row's trace has to be at a point to pass through it, in samples; 0 for a row that
     *  isn't drawn. */
    double sampleValueAt(const Trace *row, const QPoint &point) const;

public slots:
    /** Steps of 0.5, and in overlap of 0.1. */
    void increaseAmpScale();
    void decreaseAmpScale();
    void increaseOverlap();
    void decreaseOverlap();
    void setActive(bool active);
    void setOrientation(Qt::Orientation orientation);
    /** Fills what lies above the zero line of a trace in red, and what lies below it in blue. */
    void setWigglesShown(bool show);
    /** Builds everything again, e.g. after the view's rows have changed. */
    void updateDisplay();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

    /** Number of rows that have records to show. */
    int countSignificantItems() const;
    /** Divides @p size pixels along the stacking axis between the rows. */
    void updateLayout(int size) const;
    void setDirty();
    /** Selects the row whose trace is nearest to a point of the widget, if there is any. */
    void selectAtPoint(const QPoint &point);

private:
    struct Display;

    void addShortcut(const QKeySequence &keys, const QString &text, const char *slot);
    void setRowsDirty();
    bool hasDirtyRow() const;
    bool isLayoutOutdated() const;
    void setAmpScale(float scale);
    void setOverlap(double overlap);
    void updateMinimumSize();
    bool isDrawn(const Trace &row) const;
    Trace *traceAt(const QPoint &point) const;
    QVector<const Trace *> labelledRows() const;
    double timeScalePixels() const;
    int labelSpacing() const;

    bool hasTurnedScale() const { return _horizontal && _turnedScale; }
    Display display() const;
    void drawGrid(QPainter &painter, int width, int height);
    QVector<QLine> gridLines(double spacing, int width, int height) const;
    void drawRecords(QPainter &painter, int width, int height, int labelSpacing);
    void rebuildRow(Tellarix::Gui::RecordWidget *widget, const Display &display) const;
    void buildPolyline(const Tellarix::Gui::RecordWidget *widget,
                       const Tellarix::RecordSequence &sequence, const Display &shown) const;
    void drawRow(QPainter &painter, const Trace *row) const;
    void drawLabel(QPainter &painter, const Trace *row, const QRect &strip) const;
    void drawMarkers(QPainter &painter, const QFont &baseFont) const;
    void drawMarker(QPainter &painter, Tellarix::Gui::RecordWidget *widget,
                    Tellarix::Gui::RecordMarker *marker, int height, int textSize) const;
    int markerPixel(const Tellarix::Gui::RecordWidget *widget,
                    const Tellarix::Core::Time &time) const;

    TraceView *_view;
    QWidget *_replacedWidget{nullptr};
    float _ampScale{1.0f};
    double _overlap{0.0};
    mutable bool _dirty{true};
    bool _mousePressed{false};
    bool _horizontal{false};
    bool _wiggles{false};
    QBasicTimer _refreshTimer;
    mutable int _labelWidth{-1}; /**< kept since it takes all rows; negative if unknown */
    Placement _placement;
    QPointer<Tellarix::Gui::TimeScale> _turnedScale;
};

} // namespace Gui
} // namespace Norvu
