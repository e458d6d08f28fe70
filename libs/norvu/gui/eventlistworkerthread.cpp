// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/eventlistworkerthread.h>

#include <norvu/gui/eventitem_p.h>
#include <norvu/gui/eventstatements.h>

#include <tellarix/client/io/databaseinterface.h>
#include <tellarix/core/strings.h>
#include <tellarix/qt/scheme.h>

#include <QList>

#include <string_view>

namespace Norvu {
namespace Gui {

namespace {

using Columns = EEventListColumnsNames;
using Tellarix::IO::DatabaseInterface;
using Items = QList<QStandardItem *>;

const char *textOf(const DatabaseInterface &db, EventField field)
{
    return db.field(static_cast<int>(field));
}

/** Reads a number; false for null and for a text that is none. */
template <typename T>
bool read(T &value, const DatabaseInterface &db, EventField field)
{
    const char *text = textOf(db, field);
    return text && Tellarix::Core::fromString(value, text);
}

template <typename T>
void read(std::optional<T> &value, const DatabaseInterface &db, EventField field)
{
    T number{};
    if (read(number, db, field))
        value = number;
}

Tellarix::Core::Time originTime(const DatabaseInterface &db)
{
    static const int registered = qRegisterMetaType<Tellarix::Core::Time>("Tellarix::Core::Time");
    Q_UNUSED(registered)

    Tellarix::Core::Time time = db.stringToTime(textOf(db, EventField::OriginTime));
    // A null means no fraction: a text made of it would end the program. An unknown time stays
    // unknown, whatever its fraction.
    int microseconds = 0;
    if (time.valid() && read(microseconds, db, EventField::OriginMicroseconds))
        time.setUSecs(microseconds);
    return time;
}

char statusLetter(const char *status, bool isManual)
{
    const std::string_view text = status ? status : "";
    const struct
    {
        std::string_view status;
        char letter;
    } letters[] = {{"preliminary", 'P'}, {"confirmed", 'C'}, {"reviewed", 'V'},
                   {"final", 'F'},       {"rejected", 'X'},  {"reported", 'R'}};
    for (const auto &known : letters) {
        if (text == known.status)
            return known.letter;
    }
    return isManual ? 'M' : 'A';
}

void readPlane(EventRecord &record, const DatabaseInterface &db)
{
    std::array<float, 3> plane{};
    auto &[strike, dip, rake] = plane;
    if (read(strike, db, EventField::Strike) && read(dip, db, EventField::Dip) &&
        read(rake, db, EventField::Rake))
        record.plane = plane;
}

EventRecordPtr readRecord(const DatabaseInterface &db)
{
    const EventRecordPtr record(new EventRecord);
    record->time = originTime(db);
    read(record->magnitude, db, EventField::Magnitude);
    read(record->phaseCount, db, EventField::PhaseCount);
    read(record->latitude, db, EventField::Latitude);
    read(record->longitude, db, EventField::Longitude);
    read(record->depth, db, EventField::Depth);
    readPlane(*record, db);

    const char *mode = textOf(db, EventField::EvaluationMode);
    record->isManual = mode && std::string_view(mode) == "manual";
    record->status = statusLetter(textOf(db, EventField::EvaluationStatus), record->isManual);

    record->setText(Columns::MagnitudeType, textOf(db, EventField::MagnitudeType));
    record->setText(Columns::PublicID, textOf(db, EventField::PublicID));
    record->setText(Columns::EventType, textOf(db, EventField::EventType));
    record->setText(Columns::Region, textOf(db, EventField::Region));
    return record;
}

} // namespace

EventListWorkerThread::EventListWorkerThread(DatabaseInterface *db, QStandardItem *root,
                                             QObject *parent)
    : QThread(parent), _db(db), _root(root)
{
    const Tellarix::Gui::Scheme &scheme = Tellarix::Gui::Scheme::Current();
    _style =
        std::make_shared<EventStyle>(EventStyle{scheme.precision.location, scheme.precision.depth,
                                                scheme.origins.automatic, scheme.origins.manual});
}

EventListWorkerThread::~EventListWorkerThread()
{
    const std::lock_guard<std::mutex> lock(_mutex);
}

void EventListWorkerThread::setFilter(const EventFilter &filter)
{
    _filter = filter;
}

void EventListWorkerThread::setTimeWindow(Tellarix::Core::Time &begin, Tellarix::Core::Time &end)
{
    _begin = begin;
    _end = end;
}

const QString &EventListWorkerThread::errorString() const
{
    const std::lock_guard<std::mutex> lock(_mutex);
    return _errorString;
}

void EventListWorkerThread::stop()
{
    _stop = true;
}

void EventListWorkerThread::run()
{
    load();
    const std::lock_guard<std::mutex> lock(_mutex);
}

void EventListWorkerThread::load()
{
    if (!_db) {
        _errorString = tr("No database connection available");
        return;
    }

    const EventQuery query{_begin, _end, _filter};
    int count = 0;
    if (!readCount(eventCountStatement(*_db, query), count) || _stop)
        return;

    emit eventCountChanged(count);
    readRows(eventRowStatement(*_db, query));
}

bool EventListWorkerThread::readCount(const std::string &statement, int &count)
{
    if (!beginQuery(statement))
        return false;
    if (!_db->fetchRow()) {
        _errorString = tr("Failed to fetch results");
        return false;
    }
    const char *text = _db->field(0);
    if (!text || !Tellarix::Core::fromString(count, text)) {
        _errorString = tr("Failed to read results");
        return false;
    }
    _db->endQuery();
    return true;
}

void EventListWorkerThread::readRows(const std::string &statement)
{
    if (!beginQuery(statement))
        return;

    int count = 0;
    while (_db->fetchRow() && !_stop) {
        if (_db->fieldCount() != static_cast<int>(EventField::Count)) {
            _errorString = tr("Unexpected db resultset");
            return;
        }

        const EventRecordPtr record = readRecord(*_db);
        record->style = _style;
        Items items;
        items.reserve(Columns::Count);
        for (int column = 0; column < Columns::Count; ++column)
            items.append(new EventItem(record, column));
        _root->insertRow(_root->rowCount(), items);
        emit progressChanged(++count);
    }
    // What was cut off must not pass for the whole list.
    if (!_stop && !_db->lastError().isEmpty())
        _errorString =
            tr("The events end early after %1 rows:\n%2").arg(count).arg(_db->lastError());
    _db->endQuery();
}

bool EventListWorkerThread::beginQuery(const std::string &statement)
{
    const bool isRunning = _db->beginQuery(statement);
    if (!isRunning)
        _errorString =
            tr("Error while executing query:\n%1").arg(QString::fromStdString(statement));
    return isRunning;
}

} // namespace Gui
} // namespace Norvu
