// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>
#include <norvu/gui/eventfilter.h>

#include <tellarix/core/time.h>

#include <QString>
#include <QThread>

#include <atomic>
#include <memory>
#include <mutex>

class QStandardItem;

namespace Tellarix {
namespace IO {
class DatabaseInterface;
}
} // namespace Tellarix

namespace Norvu {
namespace Gui {

struct EventStyle;

/**
 * Loads the events of a time window from a database into rows of items, in a thread of its own.
 *
 * One object serves one load. A row has an item for each of EEventListColumnsNames: what is shown
 * as text at Qt::DisplayRole, what it sorts by at Qt::UserRole, and the origin time at
 * Qt::UserRole + 1.
 */
class NORVU_GUI_API EventListWorkerThread : public QThread
{
    Q_OBJECT

public:
    /**
     * Takes decimals and colours from the scheme, and so belongs into the GUI thread.
     *
     * @param db    outlives the thread, which uses it alone meanwhile; may be null
     * @param root  parent of the rows; no other thread may look at it while this one runs
     */
    EventListWorkerThread(Tellarix::IO::DatabaseInterface *db, QStandardItem *root,
                          QObject *parent = nullptr);
    ~EventListWorkerThread() override;

    void setFilter(const EventFilter &filter);
    /** Sets the window of origin times, inclusive at both ends. */
    void setTimeWindow(Tellarix::Core::Time &begin, Tellarix::Core::Time &end);

    /** What went wrong, once the thread has finished; empty if nothing did. The rows up to there
     *  stay. */
    const QString &errorString() const;

public slots:
    /** Ends the load before the next row, without an error; for good. */
    void stop();

signals:
    /** The number of events, once, before the first row. */
    void eventCountChanged(int count);
    /** The number of rows, after each. */
    void progressChanged(int value);

protected:
    void run() override;

private:
    void load();
    bool readCount(const std::string &statement, int &count);
    void readRows(const std::string &statement, int expected);
    bool beginQuery(const std::string &statement);

    Tellarix::Core::Time _begin;
    Tellarix::Core::Time _end;
    EventFilter _filter;
    Tellarix::IO::DatabaseInterface *_db;
    QString _errorString;
    QStandardItem *_root;
    std::atomic<bool> _stop{false};
    mutable std::mutex _mutex; /**< hands over what the thread has made */
    std::shared_ptr<const EventStyle> _style;
};

} // namespace Gui
} // namespace Norvu
