// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/datamodel/waveformstreamid.h>
#include <tellarix/core/math/filter.h>
#include <tellarix/core/records/recordsequence.h>
#include <tellarix/core/timewindow.h>
#include <tellarix/qt/api.h>
#include <tellarix/qt/records/recordpolyline.h>

#include <QBasicTimer>
#include <QPair>
#include <QPen>
#include <QRegion>
#include <QVector>
#include <QWidget>

#include <functional>
#include <memory>
#include <vector>

namespace Tellarix {
namespace Gui {

class FilteredRecords;
class RecordMarker;
struct AmplitudeTick;

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
 * A repaint costs pixels, not samples: each slot's polyline is cached and built again from the
 * sequences' levels when data, range or size change. Stretches without data and stretches that
 * more than one record covers are shaded as soon as they are a pixel wide.
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

    /** What the widget knows and caches of one slot, once for raw and once for filtered data. */
    struct TraceInfo
    {
        bool dirty{true};  /**< the rest must be worked out again before it is drawn */
        double amplMin{0}; /**< extrema of the samples that count for the range */
        double amplMax{0};
        double offset{0}; /**< mean of these samples, about which amplitudes are magnified */
        double absMax{0}; /**< larger distance of the extrema from the offset */
        double yMin{0};   /**< amplitude range that is shown, offset subtracted */
        double yMax{0};
        double fyMin{0}; /**< the same with the amplitude scale applied */
        double fyMax{0};
        double yOffset{0}; /**< what is subtracted of each sample */
        int pos{0};        /**< position and extent in pixels, for views that lay out rows */
        int height{0};
        RecordPolylinePtr poly;
    };

    explicit RecordWidget(QWidget *parent = nullptr);
    explicit RecordWidget(const DataModel::WaveformStreamID &streamID, QWidget *parent = nullptr);
    ~RecordWidget() override;

    const DataModel::WaveformStreamID &streamID() const { return _streamID; }

    // Slots and records

    int slotCount() const { return static_cast<int>(_slots.size()); }
    /** Adds empty slots at the end or removes slots there with what they own. */
    bool setSlotCount(int count);
    int currentRecords() const { return _currentSlot; }
    /**
     * Installs a sequence; slots up to @p slot are made as needed. A sequence that was installed
     * with @p owner true and is replaced is deleted. Null clears the slot.
     * @return false for a negative slot or a number of slots that can't be meant (above 4096); the
     *         sequence then stays the caller's
     */
    bool setRecords(int slot, RecordSequence *sequence, bool owner = true);
    /** The raw sequence of a slot, null if there is none or no such slot. */
    RecordSequence *records(int slot) const;
    /**
     * The filtered sequence of a slot; null without a filter, records or such a slot. With
     * background filtering it is null until it was made, may lag behind the raw one for a while,
     * and is good until the event loop runs again.
     */
    RecordSequence *filteredRecords(int slot) const;
    /** The filtered sequence if filtering is on and there is one, otherwise the raw one. */
    RecordSequence *displayedRecords(int slot) const;
    /** True if the widget deletes the raw sequence of the slot. */
    bool ownsRecords(int slot) const;
    void clearRecords();

    // What is set for a slot below makes the slot, so that it can be set before there are records.

    /** Factor from samples to physical values; null without one. */
    const double *recordScale(int slot) const;
    void setRecordScale(int slot, double scale);
    void removeRecordScale(int slot);
    QString recordLabel(int slot) const;
    void setRecordLabel(int slot, const QString &label);
    QString recordID(int slot) const;
    void setRecordID(int slot, const QString &id);
    /** Unit of the (scaled) values, shown at the axis. */
    QString recordUnit(int slot) const;
    void setRecordUnit(int slot, const QString &unit);
    /** The pen set for a slot, otherwise one of the scheme's colour and line width. */
    QPen recordPen(int slot) const;
    void setRecordPen(int slot, const QPen &pen);
    /** Goes back to the pen of the scheme. */
    void removeRecordPen(int slot);
    bool isRecordVisible(int slot) const;
    void setRecordVisible(int slot, bool visible);
    /** State of a slot for raw or filtered data; null if there is no such slot. */
    TraceInfo *traceInfo(int slot, bool filtered) const;

    // Filtering

    /** Sets the filter of all slots; the widget keeps a clone of it. Null removes it. */
    void setFilter(const Math::Filtering::InPlaceFilter<double> *filter);
    const Math::Filtering::InPlaceFilter<double> *filter() const { return _filter.get(); }
    bool isFilteringEnabled() const { return _filtering; }
    /**
     * Filters sequences in threads of their own instead of at once; off at the start.
     *
     * Until the filtered records of a slot are there, displayedRecords() are the raw ones, whose
     * trace is drawn pale. Records that are fed meanwhile are not lost. Another filter cancels what
     * is under way. Filters have to be such that clones can run in several threads.
     */
    void setBackgroundFiltering(bool enable);
    bool isBackgroundFilteringEnabled() const { return _backgroundFiltering; }
    /** True while records of a slot are filtered in the background. */
    bool isFilteringInProgress() const;
    /** Draws all traces as palely as raw data that wait for their filtered ones; off at the start.
     */
    void setTracesPale(bool pale);
    bool areTracesPale() const { return _tracesPale; }

    // Time axis

    Core::Time alignment() const { return _alignment; }
    double tmin() const { return _tmin; } /**< seconds relative to the alignment, left edge */
    double tmax() const { return _tmax; } /**< right edge */
    double timeScale() const { return _pixelsPerSecond; } /**< pixels per second */
    Core::Time leftTime() const;
    Core::Time rightTime() const;

    /** Area of the traces, without the axis column, in widget coordinates. */
    QRect canvasRect() const;
    int canvasWidth() const { return canvasRect().width(); }
    /** Offset of the canvas from the left edge of the widget in pixels: mapTime(t) minus this is
     *  a pixel of the canvas. */
    int canvasOffset() const { return canvasRect().left(); }
    /** Pixel of a time in the widget; limited to what an int holds. */
    int mapTime(const Core::Time &time) const;
    int mapTime(double seconds) const;
    /** Pixel of a time in the canvas. */
    int mapCanvasTime(const Core::Time &time) const;
    Core::Time unmapTime(int x) const;
    Core::Time unmapCanvasTime(int x) const;

    // Amplitude axis

    /** Range in effect for a slot, in samples: fixed, or from the data. Its upper end stands at
     *  the top row of pixels of the slot, its lower end at the bottom one. */
    QPair<double, double> amplitudeRange(int slot) const;
    /** The range given to setAmplRange(). */
    QPair<double, double> amplRange() const { return {_amplMin, _amplMax}; }
    bool isAmplAutoScaleEnabled() const { return _amplAutoScale; }
    double magnification() const { return _magnification; }
    const Core::TimeWindow &normalizationWindow() const { return _normalizationWindow; }
    bool areScaledValuesShown() const { return _showScaledValues; }
    /** Factor from samples to the values that axis, pointer and rulers show; 1 without a scale
     *  that can be used, such as 0. */
    double shownFactor(int slot) const;
    /** Value of a slot at a y of the widget, in samples; and the y of a value. */
    double unmapAmplitude(int slot, int y) const;
    int mapAmplitude(int slot, double value) const;

    bool isAxisDrawn() const { return _drawAxis; }
    AxisPosition axisPosition() const { return _axisPosition; }
    int axisWidth() const { return _axisWidth; }
    int axisSpacing() const { return _axisSpacing; }

    DrawMode drawMode() const { return _drawMode; }
    /** Top of a slot in the widget, and its height; -1 and 0 for a slot that isn't drawn. */
    int streamYPos(int slot) const;
    int streamHeight(int slot) const;

    // Markers

    /** Adds a marker, which the widget owns from then on. */
    bool addMarker(RecordMarker *marker);
    /** Takes a marker out; the caller owns it. */
    bool takeMarker(RecordMarker *marker);
    bool removeMarker(int index);
    void clearMarkers();
    int markerCount() const { return static_cast<int>(_markers.size()); }
    RecordMarker *marker(int index) const;
    RecordMarker *marker(const QString &text) const;
    RecordMarker *currentMarker() const { return _currentMarker; }
    void setCurrentMarker(RecordMarker *marker);
    /** The visible marker nearest to a pixel of the widget, at most @p tolerance away. */
    RecordMarker *markerAt(const QPoint &position, int tolerance = 3) const;

    // Selection and pointer

    bool isSelectionEnabled() const { return _selectionEnabled; }
    /** Lets the user drag out a time range with the left button; off at the start. */
    void setSelectionEnabled(bool enable);
    const Core::TimeWindow &selectedTimeWindow() const { return _selection; }
    /** Shows a band over a time range. Dragging does not set it: whoever wants the dragged range
     *  to stay connects selectedTimeRange(). */
    void setSelectedTimeWindow(const Core::TimeWindow &window);

    /** Time of the hover cursor, invalid without one. */
    Core::Time cursorTime() const { return _cursorTime; }
    /** Moves the cursor, for widgets that share one; emits nothing. */
    void setCursorTime(const Core::Time &time);
    /** Shows a line at the pointer's time while the pointer is over the canvas. */
    void setCursorShown(bool show);

    /** Short text of the data under the pointer: time, value, unit. */
    QString statusText(const QPoint &position) const;

    /** Forgets everything cached; the next paint builds it again. */
    void setDirty();
    /** True if the next paint has to build a trace. */
    bool isDirty() const;

    /**
     * Builds the outdated traces of several widgets at once, on all cores, instead of one by one as
     * they are painted. In the thread of the user interface.
     */
    static void prepare(const QVector<RecordWidget *> &widgets);
    /** What is called before a paint event builds an outdated trace: a view of many widgets
     *  prepares all of them there. */
    void setPreparation(std::function<void()> preparation);

    /** Tells the widget that a record was added to a slot's raw sequence: filters it, widens the
     *  range, and repaints only the columns that it touches; those of further records follow
     *  together, a few times a second. */
    virtual void fed(int slot, const Tellarix::Record *record);

    QSize sizeHint() const override;

public slots:
    void setCurrentRecords(int slot);
    void enableFiltering(bool enable);
    void setAlignment(Tellarix::Core::Time alignment);
    /** Pixels per second, about the left edge. */
    bool setTimeScale(double pixelsPerSecond);
    /** Shows from tmin; tmax is kept for asking, the scale stays. */
    bool setTimeRange(double tmin, double tmax);
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
    /** Whether axis and pointer show samples times recordScale(). */
    void showScaledValues(bool show);

    void setDrawMode(Tellarix::Gui::RecordWidget::DrawMode mode);
    void setDrawAxis(bool draw);
    void setAxisPosition(Tellarix::Gui::RecordWidget::AxisPosition position);
    /** Width of the axis column in pixels, and the room between it and the canvas, which is part
     *  of that width. */
    void setAxisWidth(int width);
    void setAxisSpacing(int spacing);

    /** Builds polylines again after sequences grew. */
    void updateRecords();

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
    void timerEvent(QTimerEvent *event) override;

private:
    struct Slot;
    struct Extrema;
    struct ShownRange;
    struct Look;
    friend class RecordMarker;

    enum class Drag
    {
        None,
        Press, /**< a button is down, but nothing has been moved yet */
        Select,
        Marker,
    };

    Slot *slotAt(int slot) const;
    Slot *makeSlot(int slot);
    void addSlots(int count);
    bool isFiltered(const Slot &slot) const;
    bool isSlotDrawn(int slot) const;
    QVector<int> drawnSlots() const;
    QRect slotRect(int slot) const;
    int slotAtY(int y) const;
    int mapCanvasSeconds(double seconds) const;

    bool awaitsFiltered(const Slot &slot) const;
    bool isNearlyFiltered(const Slot &slot) const;
    std::unique_ptr<FilteredRecords> makeFiltered(const Slot &slot) const;
    void updateFiltered(Slot &slot) const;
    void forgetFiltered(int slot);
    void cancelJob(int slot);
    void cancelFiltering();
    void filterAll();
    void filterInBackground(int slot);
    void startJob(int slot, std::unique_ptr<FilteredRecords> filtered);
    Core::TimeWindow filterFed(int slot, const Record *record);
    void finishJob(int slot);
    void announceFiltering();
    void notifyRecords(int slot);
    void displayedRecordsChanged(bool areOthersShown);
    const Extrema &extremaOf(Slot &slot) const;
    Extrema commonExtrema() const;
    ShownRange shownRange(int slot) const;
    void forgetExtrema();
    void forgetPolylines();
    void updateAll();
    void updateCanvas();
    QRect columnsOf(int slot, const Core::TimeWindow &window) const;
    void updateFed(const QRect &area);
    void paintFed();
    Core::TimeWindow touchedWindow(const Slot &slot, const Record *record) const;

    Look look() const;
    void prepareTraces();
    void buildTrace(int slot);
    void drawBackground(QPainter &painter) const;
    void drawStretches(QPainter &painter) const;
    void drawGrid(QPainter &painter, const Look &colors) const;
    void drawTimeGrid(QPainter &painter, const QPen &pen, double spacing) const;
    void drawAmplitudeGrid(QPainter &painter, const Look &colors) const;
    QVector<int> rangeGridLines(int height) const;
    QVector<int> tickLines(int slot) const;
    void drawTraces(QPainter &painter, const Look &colors);
    void drawMarkers(QPainter &painter, const Look &colors);
    void drawMarker(QPainter &painter, RecordMarker &marker, int textSize, const Look &colors);
    void drawSlotTexts(QPainter &painter, const Look &colors) const;
    void drawSelection(QPainter &painter) const;
    void drawCursor(QPainter &painter) const;
    void drawFrame(QPainter &painter, const Look &colors) const;
    QVector<AmplitudeTick> axisTicks(double lower, double upper, int height,
                                     const QFont &textFont) const;
    QVector<AmplitudeTick> slotTicks(int slot, const QFont &textFont) const;
    void drawAxes(QPainter &painter, const Look &colors) const;
    void drawAxis(QPainter &painter, const Look &colors, int slot) const;

    void updateMarker(const RecordMarker &marker);
    void updateCursor();
    bool owns(const RecordMarker *marker) const;
    void detachMarker(RecordMarker *marker);
    bool grabMarker(const QPoint &position);
    void dragTo(const QPoint &position);
    void hover(const QPoint &position);
    void giveUpSelecting();
    int clampedToCanvas(int x) const;

    std::vector<std::unique_ptr<Slot>> _slots;
    std::vector<std::unique_ptr<RecordMarker>> _markers;
    std::unique_ptr<Math::Filtering::InPlaceFilter<double>> _filter;
    DataModel::WaveformStreamID _streamID;
    std::function<void()> _preparation;
    Core::Time _alignment;
    Core::TimeWindow _normalizationWindow;
    Core::TimeWindow _selection;
    Core::Time _cursorTime;
    QBasicTimer _feedTimer;
    QRegion _fedArea; /**< to be painted when the timer ends */
    RecordMarker *_currentMarker{nullptr};
    double _tmin{0};
    double _tmax{0};
    double _pixelsPerSecond{1};
    double _gridMajor{0};
    double _gridMinor{0};
    double _gridOffset{0};
    double _gridLower{0};
    double _gridUpper{0};
    double _amplMin{-1};
    double _amplMax{1};
    double _magnification{1};
    int _currentSlot{0};
    int _axisWidth{0};
    int _axisSpacing{0};
    DrawMode _drawMode{Single};
    AxisPosition _axisPosition{AxisLeft};
    bool _filtering{false};
    bool _backgroundFiltering{false};
    bool _tracesPale{false};
    bool _filteringAnnounced{false};
    int _jobCount{0}; /**< since filteringStarted(), those of them that are done included */
    int _jobsDone{0};
    bool _amplAutoScale{true};
    bool _showScaledValues{false};
    bool _drawAxis{false};
    bool _selectionEnabled{false};
    bool _cursorShown{false};
    bool _laidOut{false};         /**< got its first size from a layout or a window */
    bool _rangeAwaitsSize{false}; /**< showTimeRange() came before that */
    bool _pointerShape{false};    /**< the pointer shows that a marker can be moved */
    Drag _drag{Drag::None};
    QPoint _dragStart;
    int _dragGrip{0}; /**< distance of the pointer from the line of the marker it drags */
    RecordMarker *_dragMarker{nullptr};
};

} // namespace Gui
} // namespace Tellarix
