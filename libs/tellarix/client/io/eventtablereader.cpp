// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/eventtablereader_p.h>

#include <tellarix/client/io/eventcompletion_p.h>
#include <tellarix/core/strings.h>

#include <QIODevice>

#include <algorithm>
#include <cmath>

namespace Tellarix {
namespace IO {

namespace {

constexpr qint64 LongestLine = 1 << 20;

struct ColumnName
{
    const char *name;
    EventTableReader::Column column;
};

// As the common services and our own lists call them, in lower case.
constexpr ColumnName ColumnNames[] = {
    {"id", EventTableReader::Id},
    {"eventid", EventTableReader::Id},
    {"time", EventTableReader::Time},
    {"latitude", EventTableReader::Latitude},
    {"longitude", EventTableReader::Longitude},
    {"depth", EventTableReader::Depth},
    {"depth/km", EventTableReader::Depth},
    {"deptherror", EventTableReader::DepthError},
    {"mag", EventTableReader::Magnitude},
    {"magnitude", EventTableReader::Magnitude},
    {"magtype", EventTableReader::MagnitudeType},
    {"magnitudetype", EventTableReader::MagnitudeType},
    {"magerror", EventTableReader::MagnitudeError},
    {"magnst", EventTableReader::MagnitudeStations},
    {"magsource", EventTableReader::MagnitudeAgency},
    {"magauthor", EventTableReader::MagnitudeAgency},
    {"phases", EventTableReader::Phases},
    {"nst", EventTableReader::Stations},
    {"gap", EventTableReader::Gap},
    {"dmin", EventTableReader::MinimumDistance},
    {"rms", EventTableReader::StandardError},
    {"net", EventTableReader::Agency},
    {"contributor", EventTableReader::Agency},
    {"author", EventTableReader::Author},
    {"updated", EventTableReader::Updated},
    {"place", EventTableReader::Region},
    {"region", EventTableReader::Region},
    {"eventlocationname", EventTableReader::Region},
    {"type", EventTableReader::Type},
    {"eventtype", EventTableReader::Type},
    {"status", EventTableReader::Status},
};

} // namespace

EventTableReader::EventTableReader(QIODevice &device, const QString &name,
                                   const EventReadHandler &handler, EventFormat format)
    : _device(device), _name(name), _handler(handler), _format(format),
      _total(device.isSequential() ? -1 : device.size())
{
    std::fill(std::begin(_columns), std::end(_columns), -1);
}

bool EventTableReader::read(QString *error)
{
    bool ok = readColumns();
    while (ok && readRecord())
        ok = readEvent();
    if (ok && _fault.isEmpty() && !_ended)
        return true;
    if (error)
        *error = _fault;
    return false;
}

bool EventTableReader::fail(const QString &cause)
{
    if (_fault.isEmpty() && !_ended)
        _fault = QString("%1: line %2: %3").arg(_name, QString::number(_firstLine), cause);
    return false;
}

void EventTableReader::warn(const QString &text) const
{
    if (_handler.warn)
        _handler.warn(QString("%1: line %2: %3").arg(_name, QString::number(_firstLine), text));
}

/** A line without its end; false at the end of the device. */
bool EventTableReader::readLine(QByteArray *line)
{
    // QIODevice would take memory for the longest line each time, from the system and back.
    _lineBuffer.resize(static_cast<size_t>(LongestLine) + 2);
    const qint64 size =
        _device.readLine(_lineBuffer.data(), static_cast<qint64>(_lineBuffer.size()));
    if (size <= 0)
        return false;
    *line = QByteArray(_lineBuffer.data(), static_cast<int>(size));
    ++_line;
    if (line->size() > LongestLine)
        return fail(QString("longer than %1 MB").arg(LongestLine >> 20));
    if (line->endsWith('\n'))
        line->chop(1);
    if (line->endsWith('\r'))
        line->chop(1);
    return true;
}

/** The fields of the next line that isn't empty; false at the end or on a fault. */
bool EventTableReader::readRecord()
{
    QByteArray line;
    do {
        if (!readLine(&line))
            return false;
    } while (line.trimmed().isEmpty());
    _firstLine = _line;
    _fields.clear();
    if (_format == EventFormat::Csv)
        return splitByCommas(line);
    splitByBars(line);
    return true;
}

void EventTableReader::splitByBars(const QByteArray &line)
{
    for (const QByteArray &field : line.split('|'))
        _fields.append(field.trimmed());
}

/** Quotes as in RFC 4180: a quoted field may hold commas, doubled quotes and ends of lines. */
bool EventTableReader::splitByCommas(QByteArray line)
{
    QByteArray field;
    bool quoted = false;
    for (int i = 0;; ++i) {
        if (i >= line.size()) {
            if (!quoted)
                break;
            if (field.size() > LongestLine || !readLine(&line))
                return fail("a quoted field has no end");
            field.append('\n');
            i = -1;
            continue;
        }
        const char c = line[i];
        if (quoted && c == '"' && i + 1 < line.size() && line[i + 1] == '"') {
            field.append('"');
            ++i;
        } else if (c == '"')
            quoted = !quoted;
        else if (c == ',' && !quoted) {
            _fields.append(field);
            field.clear();
        } else
            field.append(c);
    }
    _fields.append(field);
    return true;
}

bool EventTableReader::readColumns()
{
    if (!readRecord())
        return fail("no line with the names of the columns");
    for (QByteArray &name : _fields) {
        name = name.trimmed().toLower();
        if (name.startsWith("\xEF\xBB\xBF"))
            name.remove(0, 3);
        if (name.startsWith('#'))
            name = name.mid(1).trimmed();
    }
    for (const ColumnName &known : ColumnNames) {
        if (_columns[known.column] < 0)
            _columns[known.column] = _fields.indexOf(known.name);
    }
    for (const Column column : {Time, Latitude, Longitude}) {
        if (_columns[column] < 0)
            return fail("the columns time, latitude and longitude are not all there");
    }
    _names = _fields;
    return true;
}

std::string EventTableReader::text(Column column) const
{
    const int index = _columns[column];
    return index >= 0 ? _fields[index].trimmed().toStdString() : std::string();
}

std::optional<double> EventTableReader::number(Column column)
{
    const std::string field = text(column);
    double value = 0;
    if (field.empty())
        return std::nullopt;
    if (Core::fromString(value, field))
        return value;
    warn(QString("%1: \"%2\" is no number")
             .arg(_names[_columns[column]].constData(), field.c_str()));
    return std::nullopt;
}

std::optional<int> EventTableReader::count(Column column)
{
    const std::optional<double> value = number(column);
    return value && std::abs(*value) < 1E9 ? std::optional<int>(static_cast<int>(*value))
                                           : std::nullopt;
}

/** A number without which there is no origin. */
std::optional<double> EventTableReader::required(Column column, double limit)
{
    const std::string field = text(column);
    double value = 0;
    if (Core::fromString(value, field) && std::abs(value) <= limit)
        return value;
    fail(QString("\"%1\" is no %2").arg(field.c_str(), _names[_columns[column]].constData()));
    return std::nullopt;
}

bool EventTableReader::readEvent()
{
    // The form of the services has got another column with time; a line may end before it.
    const bool mayLackLast =
        _format == EventFormat::FdsnText && _fields.size() == _names.size() - 1;
    if (mayLackLast)
        _fields.append(QByteArray());
    if (_fields.size() != _names.size())
        return fail(QString("%1 fields instead of %2").arg(_fields.size()).arg(_names.size()));

    const bool hasOrigin =
        !text(Time).empty() || !text(Latitude).empty() || !text(Longitude).empty();
    const DataModel::OriginPtr origin = hasOrigin ? makeOrigin() : nullptr;
    if (hasOrigin && !origin)
        return false;
    const DataModel::EventPtr event(new DataModel::Event);
    event->publicID = text(Id);
    event->type = text(Type);
    event->creationInfo.agencyID = text(Agency);
    event->creationInfo.modificationTime = Core::Time::FromString(text(Updated));
    if (!text(Region).empty())
        event->descriptions.push_back({text(Region), "region name"});
    if (origin)
        event->origins.push_back(origin);
    if (const DataModel::MagnitudePtr magnitude = makeMagnitude())
        event->magnitudes.push_back(magnitude);
    completeEvent(*event);

    _ended =
        !_handler.take(event) || (_handler.progress && !_handler.progress(_device.pos(), _total));
    return !_ended;
}

DataModel::OriginPtr EventTableReader::makeOrigin()
{
    const DataModel::OriginPtr origin(new DataModel::Origin);
    const Core::Time time = Core::Time::FromString(text(Time));
    if (!time.valid()) {
        fail(QString("\"%1\" is no time").arg(text(Time).c_str()));
        return nullptr;
    }
    const std::optional<double> latitude = required(Latitude, 90);
    const std::optional<double> longitude = required(Longitude, 360);
    if (!latitude || !longitude)
        return nullptr;

    origin->time = time;
    origin->latitude = *latitude;
    origin->longitude = *longitude;
    if (const std::optional<double> depth = number(Depth)) {
        DataModel::Uncertainty uncertainty;
        uncertainty.symmetric = number(DepthError);
        origin->depth = DataModel::RealQuantity(*depth, uncertainty);
    }
    origin->quality.usedPhaseCount = count(Phases);
    origin->quality.usedStationCount = count(Stations);
    origin->quality.azimuthalGap = number(Gap);
    origin->quality.minimumDistance = number(MinimumDistance);
    origin->quality.standardError = number(StandardError);
    const std::string status = text(Status);
    (status == "manual" || status == "automatic" ? origin->evaluationMode
                                                 : origin->evaluationStatus) = status;
    origin->creationInfo.agencyID = text(Agency);
    origin->creationInfo.author = text(Author);
    return origin;
}

DataModel::MagnitudePtr EventTableReader::makeMagnitude()
{
    const std::optional<double> value = number(Magnitude);
    if (!value)
        return nullptr;
    const DataModel::MagnitudePtr magnitude(new DataModel::Magnitude);
    DataModel::Uncertainty uncertainty;
    uncertainty.symmetric = number(MagnitudeError);
    magnitude->magnitude = DataModel::RealQuantity(*value, uncertainty);
    magnitude->type = text(MagnitudeType);
    magnitude->stationCount = count(MagnitudeStations);
    magnitude->creationInfo.agencyID = text(MagnitudeAgency);
    return magnitude;
}

} // namespace IO
} // namespace Tellarix
