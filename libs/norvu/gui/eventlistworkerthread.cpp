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

using Tellarix::IO::DatabaseInterface;

const char *textOf(const DatabaseInterface &db, EventField field)
{
    return db.field(static_cast<int>(field));
}

/** Reads a number; false for null and for a text that is none. */
template <typename T>
bool read(T &value, const DatabaseInterface &db, EventField field)
{
    return db.readField(static_cast<int>(field), value);
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

void readPlane(EventValues &values, const DatabaseInterface &db)
{
    std::array<float, 3> plane{};
    auto &[strike, dip, rake] = plane;
    if (read(strike, db, EventField::Strike) && read(dip, db, EventField::Dip) &&
        read(rake, db, EventField::Rake))
        values.plane = plane;
}

EventValues readValues(const DatabaseInterface &db)
{
    EventValues values;
    values.time = originTime(db);
    read(values.magnitude, db, EventField::Magnitude);
    read(values.phaseCount, db, EventField::PhaseCount);
    read(values.latitude, db, EventField::Latitude);
    read(values.longitude, db, EventField::Longitude);
    read(values.depth, db, EventField::Depth);
    readPlane(values, db);

    const char *mode = textOf(db, EventField::EvaluationMode);
    values.isManual = mode && std::string_view(mode) == "manual";
    values.status = statusLetter(textOf(db, EventField::EvaluationStatus), values.isManual);
    return values;
}

EventTexts readTexts(const DatabaseInterface &db)
{
    EventTexts texts;
    texts.magnitudeType = textOf(db, EventField::MagnitudeType);
    texts.publicID = textOf(db, EventField::PublicID);
    texts.type = textOf(db, EventField::EventType);
    texts.region = textOf(db, EventField::Region);
    return texts;
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
    readRows(eventRowStatement(*_db, query), count);
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

void EventListWorkerThread::readRows(const std::string &statement, int expected)
{
    if (!beginQuery(statement))
        return;

    EventRowMaker maker(*_style, expected);
    int count = 0;
    while (_db->fetchRow() && !_stop) {
        if (_db->fieldCount() != static_cast<int>(EventField::Count)) {
            _errorString = tr("Unexpected db resultset");
            return;
        }

        _root->insertRow(_root->rowCount(), maker.makeRow(readValues(*_db), readTexts(*_db)));
        emit progressChanged(++count);
    }
    // What was cut off must not pass for the whole list.
    if (!_stop && !_db->lastError().isEmpty())
        _errorString = tr("The list is not complete, reading failed after %1 events:\n%2")
                           .arg(count)
                           .arg(_db->lastError());
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
