// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QBasicTimer>
#include <QLine>
#include <QRect>
#include <QVector>
#include <QWidget>

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
    void updateLayout(int size);
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
    QRect drawingArea() const;

    Display display(int height, int rulerSpacing) const;
    void drawGrid(QPainter &painter, int width, int height);
    QVector<QLine> gridLines(double spacing, int width, int height) const;
    void drawRecords(QPainter &painter, int width, int height, int rulerSpacing);
    void rebuildRow(Tellarix::Gui::RecordWidget *widget, const Display &display) const;
    void buildPolyline(const Tellarix::Gui::RecordWidget *widget,
                       const Tellarix::RecordSequence &sequence, const Display &shown) const;
    void drawRow(QPainter &painter, const Trace *row) const;
    void drawLabel(QPainter &painter, const Trace *row, const QRect &strip) const;
    void drawMarkers(QPainter &painter, const QFont &baseFont) const;
    void drawMarker(QPainter &painter, Tellarix::Gui::RecordWidget *widget,
                    Tellarix::Gui::RecordMarker *marker, int height, int textSize) const;

    TraceView *_view;
    QWidget *_replacedWidget{nullptr};
    float _ampScale{1.0f};
    double _overlap{0.0};
    bool _dirty{true};
    bool _mousePressed{false};
    bool _horizontal{false};
    bool _wiggles{false};
    QBasicTimer _refreshTimer;
};

} // namespace Gui
} // namespace Norvu
