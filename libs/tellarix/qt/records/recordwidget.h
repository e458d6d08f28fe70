// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/datamodel/waveformstreamid.h>
#include <tellarix/core/records/forward.h>
#include <tellarix/core/timewindow.h>
#include <tellarix/qt/api.h>
#include <tellarix/qt/records/traceinfo.h>

#include <QPair>
#include <QPen>
#include <QVector>
#include <QWidget>

#include <functional>
#include <memory>

namespace Tellarix {
namespace Gui {
class PacedUpdate;
class RecordMarker;
class RecordMarkers;
struct RecordRow;
struct RecordSlot;
struct RowPointer;

/**
 * Shows the records of one or more slots over a common time axis.
 *
 * Horizontally a pixel of the canvas stands for a time: seconds relative to alignment(), tmin() at
 * its left edge, timeScale() pixels per second. Each slot has a raw sequence and, while a filter is
 * set, a filtered one, which is filtered record by record as records are fed. The amplitude range
 * of a slot follows its data (auto scale; over the normalization window if one is set) or is fixed.
 * The automatic range spans the extrema exactly, with a margin of 5 % of half of it on both sides;
 * without any finite sample it is (0, 0). Overlaid slots share one range.
 *
 * A repaint costs pixels, not samples: polylines are cached. Stretches without data and stretches
 * that more than one record covers are shaded as soon as they are a pixel wide.
 *
 * The widget paints no background of its own unless autoFillBackground is on, so a parent can show
 * a selection behind it; texts, and traces without a pen of their own on a highlighted background,
 * follow the foreground role. Mouse events that it has no use for are ignored and reach the parent.
 */
class TELLARIX_GUI_API RecordWidget : public QWidget
{
    Q_OBJECT

public:
    /** How slots share the canvas. */
    enum DrawMode
    {
        Single = 0,   /**< only the current slot */
        InRows = 1,   /**< visible slots below each other */
        Overlaid = 2, /**< visible slots on top of each other */
    };
    enum AxisPosition
    {
        AxisLeft = 0,
        AxisRight = 1,
    };
    using TraceInfo = Tellarix::Gui::TraceInfo;
    using Filter = Math::Filtering::InPlaceFilter<double>;

    explicit RecordWidget(QWidget *parent = nullptr);
    explicit RecordWidget(const DataModel::WaveformStreamID &streamID, QWidget *parent = nullptr);
    ~RecordWidget() override;
    const DataModel::WaveformStreamID &streamID() const { return _streamID; }
    // Slots and records
    int slotCount() const;
    bool setSlotCount(int count); /**< adds empty slots or removes the last with what they own */
    int currentRecords() const;
    /** Installs a sequence; slots up to @p slot are made as needed. A sequence that was installed
     *  with @p owner true and is replaced is deleted. Null clears the slot.
     *  @return false for a negative slot or a number of slots that can't be meant (above 4096); the
     *          sequence then stays the caller's */
    bool setRecords(int slot, RecordSequence *sequence, bool owner = true);
    RecordSequence *records(int slot) const; /**< raw; null if there is none or no such slot */
    /** The filtered sequence of a slot; null without a filter, records or such a slot. With
     *  background filtering it is null until it was made, may lag behind the raw one for a while,
     *  and is good until the event loop runs again. */
    RecordSequence *filteredRecords(int slot) const;
    /** The filtered sequence if filtering is on and one can be shown, otherwise the raw one. */
    RecordSequence *displayedRecords(int slot) const;
    bool ownsRecords(int slot) const; /**< true if the widget deletes the raw sequence */
    void clearRecords();

    // What is set for a slot below makes the slot, so that it can be set before there are records.
    const double *recordScale(int slot) const; /**< samples to physical values; null without one */
    void setRecordScale(int slot, double scale);
    void removeRecordScale(int slot);
    QString recordLabel(int slot) const;
    void setRecordLabel(int slot, const QString &label);
    QString recordID(int slot) const;
    void setRecordID(int slot, const QString &id);
    QString recordUnit(int slot) const; /**< of the (scaled) values, shown at the axis */
    void setRecordUnit(int slot, const QString &unit);
    QPen recordPen(int slot) const; /**< set, or with the scheme's colour and line width */
    void setRecordPen(int slot, const QPen &pen);
    void removeRecordPen(int slot); /**< goes back to the pen of the scheme */
    bool isRecordVisible(int slot) const;
    void setRecordVisible(int slot, bool visible);
    /** State of a slot for raw or filtered data; null if there is no such slot. */
    TraceInfo *traceInfo(int slot, bool filtered) const;

    // Filtering
    void setFilter(const Filter *filter); /**< of all slots; keeps a clone; null removes it */
    const Filter *filter() const;
    bool isFilteringEnabled() const;
    /** Filters sequences in threads of their own instead of at once; off at the start. Until its
     *  filtered records are there a slot shows those of the filter before, or if there are none the
     *  raw ones, palely. Records that are fed meanwhile are not lost. Another filter cancels what
     *  is under way. Filters have to be such that clones can run in several threads. */
    void setBackgroundFiltering(bool enable);
    bool isBackgroundFilteringEnabled() const;
    bool isFilteringInProgress() const; /**< in the background, for any slot */
    void setTracesPale(bool pale); /**< as raw data that wait for filtered ones; off at the start */
    bool areTracesPale() const;

    // Time axis
    Core::Time alignment() const;
    double tmin() const;      /**< seconds relative to the alignment, left edge */
    double tmax() const;      /**< right edge */
    double timeScale() const; /**< pixels per second */
    Core::Time leftTime() const;
    Core::Time rightTime() const;
    QRect canvasRect() const; /**< area of the traces, without the axis column, in the widget */
    int canvasWidth() const;
    int canvasOffset() const; /**< left edge of the canvas: mapTime() less mapCanvasTime() */
    int mapTime(const Core::Time &time) const; /**< pixel in the widget, within what an int holds */
    int mapTime(double seconds) const;
    int mapCanvasTime(const Core::Time &time) const; /**< pixel in the canvas */
    Core::Time unmapTime(int x) const;
    Core::Time unmapCanvasTime(int x) const;

    // Amplitude axis
    /** Range in effect for a slot, in samples: fixed, or from the data. Its upper end stands at
     *  the top row of pixels of the slot, its lower end at the bottom one. */
    QPair<double, double> amplitudeRange(int slot) const;
    QPair<double, double> amplRange() const; /**< the one given to setAmplRange() */
    bool isAmplAutoScaleEnabled() const;
    double magnification() const;
    const Core::TimeWindow &normalizationWindow() const;
    bool areScaledValuesShown() const;
    /** From samples to what axis, pointer and rulers show; 1 without a scale or with 0. */
    double shownFactor(int slot) const;
    double unmapAmplitude(int slot, int y) const; /**< in samples, at a y of the widget */
    int mapAmplitude(int slot, double value) const;
    bool isAxisDrawn() const;
    AxisPosition axisPosition() const;
    int axisWidth() const;
    int axisSpacing() const;
    DrawMode drawMode() const;
    int streamYPos(int slot) const;   /**< top of a slot in the widget; -1 if it isn't drawn */
    int streamHeight(int slot) const; /**< 0 for a slot that isn't drawn */

    // Markers
    bool addMarker(RecordMarker *marker);  /**< the widget owns it from then on */
    bool takeMarker(RecordMarker *marker); /**< the caller owns it */
    bool removeMarker(int index);
    void clearMarkers();
    int markerCount() const;
    RecordMarker *marker(int index) const;
    RecordMarker *marker(const QString &text) const;
    RecordMarker *currentMarker() const;
    void setCurrentMarker(RecordMarker *marker);
    /** The visible marker nearest to a pixel of the widget, at most @p tolerance away. */
    RecordMarker *markerAt(const QPoint &position, int tolerance = 3) const;

    // Selection and pointer
    bool isSelectionEnabled() const;
    void setSelectionEnabled(bool enable); /**< by dragging the left button; off at the start */
    const Core::TimeWindow &selectedTimeWindow() const;
    /** Shows a band over a time range. Dragging does not set it: whoever wants the dragged range
     *  to stay connects selectedTimeRange(). */
    void setSelectedTimeWindow(const Core::TimeWindow &window);
    Core::Time cursorTime() const;              /**< of the hover cursor, invalid without one */
    void setCursorTime(const Core::Time &time); /**< for widgets that share one; emits nothing */
    void setCursorShown(bool show); /**< a line at the pointer's time while it is on the canvas */
    QString statusText(const QPoint &position) const; /**< time, value and unit under a pixel */

    // Updates
    void setDirty(); /**< forgets everything cached; the next paint builds it again */
    bool isDirty() const;
    /** Builds the outdated traces of several widgets at once, on all cores, instead of one by one
     *  as they are painted. In the thread of the user interface. */
    static void prepare(const QVector<RecordWidget *> &widgets);
    /** What is called before a paint event builds an outdated trace: a view of many widgets
     *  prepares all of them there. */
    void setPreparation(std::function<void()> preparation);
    /** Tells the widget that a record was added to a slot's raw sequence: filters it, widens the
     *  range, and repaints only the columns that it touches; those of further records follow
     *  together, a few times a second. */
    virtual void fed(int slot, const Tellarix::Record *record);
    /** The same for several records, at the cost of one: calls fed() with the one that starts last.
     */
    void fedAll(int slot, const QVector<RecordPtr> &records);
    QSize sizeHint() const override;

public slots:
    void setCurrentRecords(int slot);
    void enableFiltering(bool enable);
    void setAlignment(Tellarix::Core::Time alignment);
    bool setTimeScale(double pixelsPerSecond);   /**< about the left edge */
    bool setTimeRange(double tmin, double tmax); /**< tmax is kept for asking, the scale stays */
    /** Shows exactly this range by choosing the scale for it. The scale stays when the widget is
     *  resized later; before it was laid out for the first time, it is chosen again then. */
    bool showTimeRange(double tmin, double tmax);
    /** Vertical grid lines: distances of labelled and other ticks in seconds, and the offset added
     *  to a time before ticks are placed. 0 draws none. */
    void setGridSpacing(double major, double minor, double offset);
    /** Horizontal grid lines at round values of this range, which spans the canvas from bottom to
     *  top; an empty range leaves it to the axis. */
    bool setGridVRange(double lower, double upper);
    /** Fixes the amplitude range of all slots, used while auto scale is off; @p minimum stands at
     *  the bottom, also if it is the larger one. */
    void setAmplRange(double minimum, double maximum);
    void setAmplAutoScaleEnabled(bool enable);
    /** Magnifies amplitudes about the offset; above 0, 1 shows the whole range. */
    void setMagnification(double magnification);
    /** Time window that counts for the automatic range; an invalid one means all data. */
    void setNormalizationWindow(const Tellarix::Core::TimeWindow &window);
    void showScaledValues(bool show); /**< at axis and pointer: samples times recordScale() */
    void setDrawMode(Tellarix::Gui::RecordWidget::DrawMode mode);
    void setDrawAxis(bool draw);
    void setAxisPosition(Tellarix::Gui::RecordWidget::AxisPosition position);
    void setAxisWidth(int width);     /**< of the axis column in pixels, spacing included */
    void setAxisSpacing(int spacing); /**< between the axis and the canvas */
    void updateRecords();             /**< builds polylines again after sequences grew */

signals:
    /** Range, scale or data have changed and amplitudeRange() may be another. */
    void traceUpdated(Tellarix::Gui::RecordWidget *widget);
    /** Filtering in the background has begun for some slot, and has come to its end for all. */
    void filteringStarted(Tellarix::Gui::RecordWidget *widget);
    void filteringFinished(Tellarix::Gui::RecordWidget *widget);
    /** So many of the slots that were to be filtered since filteringStarted() are through. */
    void filteringProgress(Tellarix::Gui::RecordWidget *widget, int done, int total);
    /** The left button was pressed and released at the same place of the canvas. */
    void timeClicked(const Tellarix::Core::Time &time);
    /** The selection while it is dragged, from where the button was pressed to the pointer, in
     *  that order; and when the button is released, in ascending order. A drag that is given up,
     *  because the widget is hidden or selecting is disabled, ends with the first of the two and an
     *  empty range. */
    void selectedTimeRangeChanged(Tellarix::Core::Time start, Tellarix::Core::Time end);
    void selectedTimeRange(Tellarix::Core::Time start, Tellarix::Core::Time end);
    /** The hover cursor has moved; an invalid time when the pointer left. */
    void cursorMoved(Tellarix::Gui::RecordWidget *widget, const Tellarix::Core::Time &time);
    void currentMarkerChanged(Tellarix::Gui::RecordWidget *widget,
                              Tellarix::Gui::RecordMarker *marker);
    /** A marker is being dragged, and was released. */
    void markerMoving(Tellarix::Gui::RecordWidget *widget, Tellarix::Gui::RecordMarker *marker);
    void markerMoved(Tellarix::Gui::RecordWidget *widget, Tellarix::Gui::RecordMarker *marker);

protected:
    /** Called when a slot got another sequence, raw or filtered; the one displayed is given. */
    virtual void changedRecords(int slot, Tellarix::RecordSequence *sequence);
    /** Paint behind everything but the background colour. The painter's origin is the top left of
     *  the canvas: x is mapCanvasTime(). */
    virtual void drawCustomBackground(QPainter &painter);
    /** Paint between grid and traces, and above the traces. The painter's origin is that of the
     *  widget: x is mapTime(). All three are clipped to the canvas and may leave the painter in
     *  any state. */
    virtual void customPaintTracesBegin(QPainter &painter);
    virtual void customPaintTracesEnd(QPainter &painter);
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    friend class RecordMarker;
    RecordSlot *makeSlot(int slot);
    void notifyRecords(int slot);
    void showOtherRecords(bool areOthersShown);
    Core::TimeWindow filterFed(int slot, const Record *record);
    void finishJob(int slot);
    void announceFiltering();
    void updateAll();
    void updateCanvas();
    void detachMarker(RecordMarker *marker);
    bool grabMarker(const QPoint &position);
    void dragTo(const QPoint &position);
    void hover(const QPoint &position);
    void giveUpSelecting();
    void updateCursor();

    DataModel::WaveformStreamID _streamID;
    const std::unique_ptr<RecordRow> _row; /**< what is shown */
    const std::unique_ptr<RecordMarkers> _markers;
    const std::unique_ptr<RowPointer> _pointer; /**< selection, cursor and what is dragged */
    const std::unique_ptr<PacedUpdate> _fedUpdate;
    Core::TimeWindow _fedBefore; /**< what fed() has to repaint beside its record */
    std::function<void()> _preparation;
    bool _laidOut{false};         /**< got its first size from a layout or a window */
    bool _rangeAwaitsSize{false}; /**< showTimeRange() came before that */
};

} // namespace Gui
} // namespace Tellarix
