// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>
#include <norvu/gui/trace.h>

#include <tellarix/core/math/filter.h>
#include <tellarix/core/timewindow.h>

#include <QAbstractItemView>
#include <QActionGroup>
#include <QFrame>
#include <QList>
#include <QPair>
#include <QPoint>
#include <QPointer>

#include <functional>
#include <memory>
#include <string>

class QScrollArea;

namespace Tellarix {
namespace Gui {
class RecordWidget;
class TimeScale;
} // namespace Gui
} // namespace Tellarix

namespace Norvu {
namespace Gui {

class Crosshair;
class FilteringCount;
class RowStack;
class StreamBindings;
class TraceToolBar;

/**
 * A vertical, scrolling list of waveform rows above one time scale that all of them share.
 *
 * All rows show the same time window at the same scale: seconds relative to the alignment, from the
 * left edge to the right edge of the time scale. The view owns its rows. Stream ids are bound to
 * rows and slots, so that a record that arrives finds its place; rows that still wait for data are
 * counted, and loadData() requests data for them. A view requests nothing by itself: a subclass
 * overrides the three request operations, or the host answers loadDataRequested() with a loader.
 *
 * Receivers of its signals may remove or delete rows, and the view itself unless it is just being
 * resized. A row that is deleted without removeItem() is forgotten at once;
 * layoutOrContentChanged() and, for the current row, currentItemChanged() with two null rows tell
 * of it as soon as the event loop runs.
 */
class NORVU_GUI_API TraceView : public QFrame
{
    Q_OBJECT

public:
    /** The text that addItem() gives to each slot of a row. */
    enum RecordIDStrategy
    {
        NoRecordID = 0,        /**< none */
        ComponentRecordID = 1, /**< last character of the stream's code */
        ChannelRecordID = 2,   /**< the stream's whole code */
    };

    /** Where the amplitude range of the rows comes from. */
    enum NormalizationMode
    {
        WindowNormalization = 1,    /**< from the visible time window, not from all data */
        AllTracesNormalization = 2, /**< one range for all rows, in physical units */
    };
    Q_DECLARE_FLAGS(NormalizationModes, NormalizationMode)

    /**
     * @param timeScale    used instead of a time scale of the view's own; the view takes it over
     * @param withToolBar  puts a tool bar above the rows
     */
    explicit TraceView(QWidget *parent = nullptr, Qt::WindowFlags f = Qt::WindowFlags(),
                       Tellarix::Gui::TimeScale *timeScale = nullptr, bool withToolBar = false);
    ~TraceView() override;

    // Rows

    /**
     * Appends a row, which the view owns from then on, and gives it the view's time range, filter
     * and normalization. A row without an alignment of its own takes over that of the view. Each
     * stream in the row's meta data is bound to its slot and sets the slot's scale to 1 / gain.
     * @return true
     */
    bool addItem(Trace *row, RecordIDStrategy strategy = NoRecordID);
    /** Replaces all rows. */
    void setItems(QList<Trace *> rows);
    /** Deletes a row; one that isn't in the list is left alone. */
    void removeItem(Trace *row);
    /** Deletes all rows and bindings, without telling anyone but of the current row. */
    void removeItems();
    /** Deletes all rows and emits itemSelectionCleared() and layoutOrContentChanged(). */
    void clear();

    QList<Trace *> items() const { return _items; }
    int count() const { return _items.count(); }
    /** The row at a position of the list, null outside of it. */
    Trace *itemAt(int index) const;
    /** Position of a row, -1 if it isn't in the list. */
    int indexOf(Trace *row) const;

    /**
     * Runs @p change, which may show, hide or alter any number of rows: they are laid out once
     * afterwards, not for each of them.
     */
    void changeItems(const std::function<void()> &change);

    /** Asks for distances by distanceValuesRequired() and puts the rows in ascending order. */
    void sort(bool (*lessThan)(const Trace *, const Trace *));

    // Layout

    /** Height below which no row's record area shrinks, in pixels. */
    void setMinimumRowHeight(int height);
    int minimumRowHeight() const { return _minRowHeight; }
    /** Shows a bar in each row's colour at its left edge; on at the start. */
    void setColorIndicatorEnabled(bool enable);
    bool isColorIndicatorEnabled() const { return _colorIndicator; }
    /** Room left of the time scale, under the rows' amplitude axes, in pixels. */
    int rulerSpacing() const;
    /** Room right of the time scale in pixels; 0 at the start. */
    void setExtraSpacing(int pixels);
    int extraSpacing() const;
    /** Room between each row's colour bar and its amplitude axis, for what the host puts there, in
     *  pixels; 0 at the start. The time scale keeps standing under the traces. */
    void setNameWidth(int pixels);
    int nameWidth() const { return _nameWidth; }

    Tellarix::Gui::TimeScale *timeScale() const { return _timeScale; }
    bool isCrosshairShown() const;
    /** What the cross hair shows at a height of a row's traces: in the unit of the slot there if
     *  scaled values are shown, else in samples; 0 beside all slots. */
    static double crosshairValue(const Tellarix::Gui::RecordWidget *widget, int y);

    // Time window

    Tellarix::Core::TimeWindow visibleTimeWindow() const;
    /** From the earliest start to the latest end of the records of all slots, filtered ones not
     *  counted; an empty window without data. */
    Tellarix::Core::TimeWindow coveredTimeWindow() const;
    /** Visible range in seconds relative to the alignment. */
    double tmin() const { return _tmin; }
    double tmax() const { return _tmax; }

    /** Shows all data. */
    void updateView();
    /** Redraws the rows after records were added to their sequences. */
    void updateRecords();

    // Stream bindings and data

    /** Binds a stream id to a row and slot, in place of what it was bound to. @return true */
    bool bindItem(const std::string &id, Trace *row, int slot);
    /** @return false if @p id isn't bound */
    bool unbind(const std::string &id);
    /**
     * The row that a stream id is bound to, null if there is none.
     * @param slot  set to the slot; left alone if null is returned; may be null
     */
    Trace *itemBoundTo(const std::string &id, int *slot = nullptr) const;
    void removeItemBoundTo(const std::string &id);
    /** Ids and slots bound to a row, in ascending order of the ids. */
    QList<QPair<std::string, int>> bindingsFor(Trace *row) const;
    void clearBindings(const Trace *row);
    /** Removes the records of a slot from every row; the rows still count as requested. */
    void clearDataSlot(int slot);

    /** Marks a row as requested. For subclasses and hosts that subscribe by themselves; once per
     *  row, since it counts down each time. */
    void subscribedToData(Trace *row);
    /** Marks all rows as not requested; their records stay. */
    void resetDataStateOfAllTraces();
    /** Number of rows that wait for data to be requested. */
    int emptyDataSlots() const { return _emptyDataSlots; }

    /**
     * Adds a copy of each row of @p other that has records. The sequences are shared and stay the
     * property of the other view's rows, so @p other must live longer than the copies.
     * @return false if nothing was copied
     */
    bool copyDataFrom(const TraceView *other);
    /** As above with sequences of the copies' own, made of the records that overlap @p window. */
    bool copyDataFrom(const TraceView *other, const Tellarix::Core::TimeWindow &window);

    /** Enables the load action of the tool bar while rows wait for data. */
    void updateToolbar();

    // Normalization and filter

    /** Sets both flags and applies them to the visible range. */
    void setNormalizionMode(NormalizationModes mode);
    NormalizationModes normalizationMode() const { return _normMode; }
    /** Sets the filter of all rows, or none if null; the view takes it over. */
    void setFilter(Tellarix::Math::Filtering::InPlaceFilter<double> *filter);
    bool hasFilter() const { return _filter != nullptr; }
    bool isFilterEnabled() const { return _filterEnabled; }
    /**
     * Filters the rows in the background; off at the start.
     *
     * Rows show their raw data palely until their filtered data are there. Amplitudes of all rows
     * are normalized again, and layoutOrContentChanged() is sent, once the last row is through.
     */
    void setBackgroundFiltering(bool enable);
    bool isBackgroundFilteringEnabled() const { return _backgroundFiltering; }

    // Selection

    QAbstractItemView::SelectionMode selectionMode() const { return _selectionMode; }
    /** Sets the mode and clears the selection. */
    void setSelectionMode(QAbstractItemView::SelectionMode mode);
    /** Selected rows in the order of the list. */
    QList<Trace *> selectedItems() const;
    int numberOfSelectedItems() const;
    /** True if no row is selected. */
    bool emptySelection() const;
    /** The row with the keyboard focus in the list, selected or not; null without one. */
    Trace *currentItem() const { return _currentItem; }
    /** Selects one row, makes it current and scrolls to it. Positions beyond either end wrap. */
    void setSelectedTrace(int index);
    /** As setSelectedTrace(); ignored below 0 and above count(). */
    void setCurrentItem(int index);
    void setCurrentItem(Trace *row);
    /** Makes a row current without selecting it. */
    void updateCurrentTrace(Trace *row);
    /**
     * Selects or deselects the rows whose whole label matches a pattern; the others and the current
     * row stay as they are.
     * @param pattern  with the wildcards `*`, `?` and `[...]`; case counts
     */
    void selectMatching(const QString &pattern, bool select);

    // Actions

    /** Actions that change what is shown, for menus of the host. */
    QList<QAction *> controlActions() const { return _controlActions.actions(); }
    /** Show or hide an action of the tool bar; without that action they do nothing. */
    void allowCleaning(bool allow);
    void allowResetting(bool allow);
    /** Takes loading, cleaning and resetting out of the tool bar. */
    void removeLoadActions();

signals:
    /** The visible range in seconds relative to the alignment, and pixels per second. */
    void displayChanged(double tmin, double tmax, double pps);
    void alignmentChanged(const Tellarix::Core::Time &time);
    void rulerSpacingChanged(int pixels);
    void itemDoubleClicked(Trace *row);
    void itemActivated(Trace *row);
    void currentItemChanged(Trace *old, Trace *new_);
    void itemSelectionChanged();
    void itemSelectionCleared();
    /** The user asks for data. */
    void loadDataRequested();
    /** Rows are about to be sorted: time to set their distances. */
    void distanceValuesRequired();
    void layoutOrContentChanged();
    void viewReset();
    /** Of @p total rows that are filtered in the background, @p done are through. */
    void filteringProgress(int done, int total);

public slots:
    /** Sets the time to which the visible range relates, for all rows and the time scale. */
    void setAlignment(Tellarix::Core::Time time);
    /** Shows a range in seconds relative to the alignment. */
    void setTimeRange(double tmin, double tmax);
    void setVisibleTimeWindow(Tellarix::Core::TimeWindow window);
    /** Shows all data; from 0 to 1 without any. */
    void setCoveredTimeRange();
    void setTimeScaleVisible(bool visible);
    /** Selects one row, whatever the mode. */
    void select(Trace *row);
    void selectAll();
    void clearSelection();
    /** Scrolls a row into sight. */
    void ensureVisible(const Trace *row);
    /** Moves the visible range, as little as possible, so that it shows the start of @p window.
     *  @param center  puts the window in the middle */
    void ensureVisible(Tellarix::Core::TimeWindow window, bool center);
    void setWindowNormalization(bool enable);
    void setAllTracesNormalization(bool enable);
    /** Works the amplitude ranges out again, e.g. after new data. */
    void updateTraceNormalization();
    void showCrosshair(bool show);
    /** Requests data for the rows that wait for it. */
    void loadData();
    /** Removes the rows without records in slot 0. */
    virtual void cleanTraces();
    /** Sorts by distance, then by label. */
    void sortView();
    void setFilterEnabled(bool enable);
    void selectPreviousRow();
    void selectNextRow();
    /** Shows all data and tells so by viewReset(). */
    void resetView();
    /** Sets the vertical grid of all rows: distances of major and minor lines, offset. */
    void changedTimeInterval(double dA, double dT, double ofs);
    void verticalZoomIn();
    void verticalZoomOut();
    void horizontalZoomIn();
    void horizontalZoomOut();
    void scrollLeft();
    void scrollRight();
    /** Takes the data of the selected rows away, so that they can be loaded again. */
    void resetSelectedTraces();
    /** Asks for a pattern by which rows are selected or deselected; for several rows at once. */
    void selectPattern();
    void deselectPattern();

protected:
    /** Called before the first row is requested; false ends the request there and then. */
    virtual bool beginDataRequest();
    /** Subscribes a row to its data; called for each row that waits. */
    virtual void requestData(Trace *row);
    /** Called behind the last row, if there was any. */
    virtual void endDataRequest();

    bool eventFilter(QObject *watched, QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void enterEvent(QEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private slots:
    void countFilteringRow(Tellarix::Gui::RecordWidget *widget);
    void finishFilteringRow(Tellarix::Gui::RecordWidget *widget);

private:
    static constexpr int ColorBarWidth = 6;

    void createScrollArea();
    void createTimeScale(Tellarix::Gui::TimeScale *timeScale);
    void createWrapper();
    void setupLayout();
    void createCrosshairOverlay();
    void createActions();
    void createToolBar();

    Tellarix::Core::TimeWindow windowOf(const Tellarix::Gui::RecordWidget *widget) const;
    void applyViewTo(const QPointer<Tellarix::Gui::RecordWidget> &widget);
    void bindStreams(Trace *row, RecordIDStrategy strategy);
    bool forgetItem(Trace *row);
    bool releaseItem(Trace *row);
    void forgetDeletedItem(Trace *row);
    void removeTraceItem(Trace *row);
    template <typename Visit>
    bool visitRows(QList<Trace *> rows, Visit visit);
    template <typename Visit>
    bool visitRows(Visit visit);

    bool changeFiltering(const std::function<void(Tellarix::Gui::RecordWidget *)> &change);
    void watchFiltering(Tellarix::Gui::RecordWidget *widget);
    void tellFilteringProgress();
    bool applyNormMode();
    bool applyCommonAmplitudeRange();
    void prepareVisibleRows();

    void markRequested(Trace *row);
    void markNotRequested(Trace *row);
    bool copyRows(const TraceView *other, const Tellarix::Core::TimeWindow *window);
    Trace *copyRow(const Trace *source, const Tellarix::Core::TimeWindow *window) const;
    static Trace *copyWithoutRecords(const Trace *source);

    bool allowsMultipleSelection() const
    {
        return _selectionMode > QAbstractItemView::SingleSelection;
    }
    bool setOnlySelected(const Trace *target, bool makeCurrent = false);
    void setSelected(const QList<Trace *> &rows, bool select);
    void selectByDialog(const QString &title, bool select);
    void selectNeighbour(int step);
    void selectNextShown(int index, int step);
    void scrollContents(int pixels);

    void activateCurrentRow();
    bool mapToContents(const QPoint &position, QPoint &contentsPosition) const;
    void selectUpTo(Trace *row, QMouseEvent *event);
    void toggleRow(Trace *row, QMouseEvent *event);
    void selectOnly(Trace *row, QMouseEvent *event);
    void takeDragItems();
    void moveDragItemsTo(Trace *target);
    void focusChanged();

    void placeCrosshairOverlay();
    void alignTimeScale();
    void applyNameWidth(Trace *row) const;
    void updateRulerSpacing();

    QAbstractItemView::SelectionMode _selectionMode{QAbstractItemView::ExtendedSelection};
    QActionGroup _controlActions;
    QScrollArea *_scrollArea{nullptr};
    RowStack *_contents{nullptr};
    QWidget *_rulerSpacer{nullptr};
    QWidget *_extraSpacer{nullptr};
    Crosshair *_crosshairOverlay{nullptr};
    QList<Trace *> _items;
    std::unique_ptr<StreamBindings> _bindings;
    Trace *_currentItem{nullptr};
    Tellarix::Gui::TimeScale *_timeScale{nullptr};
    int _minRowHeight{16};
    int _nameWidth{0};
    double _tmin{0};
    double _tmax{0};
    bool _colorIndicator{true};
    QPoint _pressPos;
    bool _dragging{false};
    QList<Trace *> _dragItems;
    NormalizationModes _normMode{WindowNormalization};
    int _emptyDataSlots{0};
    Tellarix::Math::Filtering::InPlaceFilter<double> *_filter{nullptr};
    bool _filterEnabled{false};
    bool _backgroundFiltering{false};
    bool _filterIsChanging{false};
    std::unique_ptr<FilteringCount> _filtering;
    TraceToolBar *_toolBar{nullptr};

    friend class MultiTraceWidget;
    friend class Trace;
};

/**
 * Visits rows one by one, save those that are gone when it is their turn: what a visit sets off may
 * remove any of them.
 * @return false if the view is gone
 */
template <typename Visit>
bool TraceView::visitRows(QList<Trace *> rows, Visit visit)
{
    const QPointer<TraceView> alive(this);
    for (int i = 0; alive && i < rows.size(); ++i) {
        // As a rule a row is still where it was.
        if (_items.value(i) == rows.at(i) || _items.contains(rows.at(i)))
            visit(rows.at(i));
    }
    return !alive.isNull();
}

/** Visits all rows. */
template <typename Visit>
bool TraceView::visitRows(Visit visit)
{
    return visitRows(_items, visit);
}

Q_DECLARE_OPERATORS_FOR_FLAGS(TraceView::NormalizationModes)

} // namespace Gui
} // namespace Norvu
