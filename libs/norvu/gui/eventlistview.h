// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include "ui_eventlistview.h"

#include <norvu/gui/eventfilter.h>
#include <tellarix/client/io/databaseinterface.h>
#include <tellarix/core/timewindow.h>

#include <QWidget>

#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

class QAbstractButton;
class QAbstractItemModel;
class QProgressDialog;
class QStandardItemModel;

namespace Norvu {
namespace Gui {

class EventFilterWidget;
class EventListWorkerThread;
class SortFilterModel;

/** One event of the list; what is unknown is unset or empty. */
struct EventRow
{
    Tellarix::Core::Time time;
    std::optional<double> magnitude;
    std::optional<int> phaseCount;
    std::optional<double> latitude;  /**< degrees */
    std::optional<double> longitude; /**< degrees */
    std::optional<double> depth;     /**< km */
    std::string publicID;            /**< UTF-8 */
    std::string region;              /**< UTF-8 */
};

/**
 * A sortable table of the events of a time window, loaded from a database.
 *
 * The window is that of two dates or of the last days; a menu narrows the load further. A load runs
 * in a thread of its own behind a modal dialog: the call that starts it returns when it has ended,
 * and until then the list is empty.
 */
class NORVU_GUI_API EventListView : public QWidget
{
    Q_OBJECT

public:
    /**
     * Takes over the window title of @p parent.
     *
     * @param db  kept alive by the view; nobody else uses it while events are loaded. May be null
     */
    explicit EventListView(Tellarix::IO::DatabaseInterface *db, QWidget *parent = nullptr);
    /** Ends a load and waits for it. */
    ~EventListView() override;

    /** The export button, which hosts that export show and enable. */
    QAbstractButton *buttonExport();

    /** The table, for its header and its current row. */
    QTreeView *table() const { return _ui.treeView; }
    /** What loadInterval() loads: between the two dates, and within the bounds of the menu. */
    Tellarix::Core::TimeWindow timeWindow() const;
    EventFilter filter() const;
    /** The earliest date that can be put in; not before the year 100; by itself 1752. */
    void setEarliestDate(const QDate &date);

    /** Number of rows that aren't filtered out. */
    int rowCount() const;
    /** The current row; an empty one if there is none. */
    EventRow currentEvent() const;
    /** A row of the list as it is shown; an empty one if there is none. */
    EventRow fromRow(int row) const;
    /** A row of any model with the columns and roles of exportEvents(). */
    static EventRow fromRow(QAbstractItemModel *model, int row);

    /** All rows that would be shown without a row filter, as the database gave them. */
    std::vector<EventRow> unfilteredRows() const;
    /** Leaves out rows for which @p accepts is false, of those that are loaded now or later; null
     *  for none. */
    void setRowFilter(std::function<bool(const EventRow &)> accepts);
    /** Makes the row of an event the current one, and brings it into sight.
     *  @return false, with nothing changed, if it isn't shown */
    bool showEvent(const std::string &publicID);

    /** Sets the number of days, within the limits of its box, and loads them. */
    void loadLastDays(int days);

signals:
    /** The current row was activated. */
    void eventSelected();
    /** The user wants to export the rows of @p model; see fromRow(). */
    void exportEvents(QAbstractItemModel *model);
    /** A load has ended, whatever came of it, or other rows are left out than before. */
    void rowsChanged();
    /** The user, or the host, has removed all rows. */
    void cleared();

public slots:
    /** Loads the events between the two dates. */
    void loadInterval();
    /** Sets the two dates, without loading; their fields are taken for UTC. */
    void setTimeWindow(const QDateTime &begin, const QDateTime &end);
    /** Lets the user size the columns, or fits them to their contents. */
    void setHeaderResizable(bool resizeable);
    /** Whether the header has a menu to choose columns from. */
    void setHeaderMenuEnabled(bool enabled);
    /** Brings the list in line with the check box for fake events. */
    void hideFakeEvents();
    void showHeaderContextMenu(QPoint pos);
    /** Loads the last days until now. */
    void loadLastDays();
    void exportClicked();
    /** Removes all rows; does nothing while events are loaded. */
    void clear();
    /** Colours the filter button if there are bounds. */
    void updateFilterButton();
    /** Cancels a load, whose rows so far stay. */
    void stopWorker();

protected:
    void changeEvent(QEvent *event) override;

private:
    void initButtons();
    void initFilterMenu();
    void initListUi();
    void initHeader();
    void takeOffModel();
    void putBackModel();
    void makeProgressDialog();
    void closeProgressDialog();
    void runWorker();
    void resetColumns();
    int sourceRow(const std::string &publicID);

    Ui_NorvuEventListView _ui;
    bool _headerMenuEnabled{false};
    Tellarix::IO::DatabaseInterfacePtr _db;
    EventFilterWidget *_filterWidget{nullptr};
    QStandardItemModel *_model{nullptr};
    SortFilterModel *_proxy{nullptr};
    QProgressDialog *_progress{nullptr};
    EventListWorkerThread *_worker{nullptr};
    /** Rows of the model by public id; empty until it is asked for. */
    std::unordered_map<std::string, int> _rowsByID;
    /** Stands in for the model while events are loaded. */
    QStandardItemModel *_emptyModel{nullptr};
};

} // namespace Gui
} // namespace Norvu
