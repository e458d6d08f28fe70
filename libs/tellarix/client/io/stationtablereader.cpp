// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/stationtablereader_p.h>

#include <tellarix/core/datamodel/sensorlocation.h>
#include <tellarix/core/strings.h>

#include <QIODevice>

#include <algorithm>
#include <limits>

namespace Tellarix {
namespace IO {

namespace {

constexpr qint64 LongestLine = 64 << 10;
constexpr int LinesBetweenTellings = 1000;
constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();

/** In the order of the columns. */
constexpr const char *ColumnNames[] = {
    "network",    "station",    "location",  "channel", "latitude",    "longitude",
    "elevation",  "depth",      "azimuth",   "dip",     "scale",       "scalefreq",
    "scaleunits", "samplerate", "starttime", "endtime", "description", "sitename",
};

} // namespace

StationTableReader::StationTableReader(QIODevice &device, const QString &name,
                                       const InventoryReadHandler &handler)
    : _device(device), _name(name), _handler(handler),
      _total(device.isSequential() ? -1 : device.size()),
      _lineBuffer(static_cast<size_t>(LongestLine) + 2)
{
    std::fill(std::begin(_columns), std::end(_columns), -1);
}

bool StationTableReader::read(std::vector<DataModel::NetworkPtr> &networks, QString *error)
{
    QByteArray line;
    while (readLine(&line)) {
        if (line.startsWith('#'))
            readColumns(line);
        else if (!line.isEmpty() && !readEpoch(line))
            break;
        const bool isDue = _line % LinesBetweenTellings == 0;
        if (isDue && _handler.progress && !_handler.progress(_device.pos(), _total))
            return false;
    }
    networks = std::move(_networks);
    *error = _fault;
    return _fault.isEmpty();
}

bool StationTableReader::fail(const QString &cause)
{
    if (_fault.isEmpty())
        _fault = QString("%1: line %2: %3").arg(_name, QString::number(_line), cause);
    return false;
}

void StationTableReader::warn(const QString &text) const
{
    if (_handler.warn)
        _handler.warn(QString("%1: line %2: %3").arg(_name, QString::number(_line), text));
}

/** A line without white space around it; false at the end of the device or on a fault. */
bool StationTableReader::readLine(QByteArray *line)
{
    const qint64 size =
        _device.readLine(_lineBuffer.data(), static_cast<qint64>(_lineBuffer.size()));
    if (size <= 0)
        return false;
    ++_line;
    if (size > LongestLine)
        return fail(QString("longer than %1 kB").arg(LongestLine >> 10));
    *line = QByteArray(_lineBuffer.data(), static_cast<int>(size)).trimmed();
    if (_line == 1 && line->startsWith("\xEF\xBB\xBF"))
        line->remove(0, 3);
    return true;
}

/** Such a line stands at the beginning, and once more where tables were joined. */
void StationTableReader::readColumns(const QByteArray &line)
{
    const QList<QByteArray> names = line.mid(1).toLower().replace(' ', "").split('|');
    if (names.first() != ColumnNames[Network])
        return;
    _names = names;
    for (int column = 0; column < ColumnCount; ++column)
        _columns[column] = _names.indexOf(ColumnNames[column]);
}

bool StationTableReader::readEpoch(const QByteArray &line)
{
    _fields = line.split('|');
    if (_fields.size() != _names.size())
        return fail(QString("%1 fields instead of %2").arg(_fields.size()).arg(_names.size()));
    for (const Column code : {Network, Station, Channel}) {
        if (has(code) && text(code).empty())
            return fail(QString("no code of the %1").arg(ColumnNames[code]));
    }
    if (has(Channel))
        readChannel();
    else if (has(Station))
        readStation();
    else
        readNetwork();
    return true;
}

void StationTableReader::readNetwork()
{
    const DataModel::NetworkPtr network(new DataModel::Network(text(Network)));
    network->setEpoch(epoch());
    network->setDescription(text(Description));
    _networks.push_back(network);
}

void StationTableReader::readStation()
{
    const DataModel::StationPtr station(new DataModel::Station(text(Station)));
    station->setEpoch(epoch());
    station->setSiteName(text(SiteName));
    station->setCoordinates(place());
    networkOf(text(Network))->add(station.get());
}

/** The lines of channels tell nothing of their stations, which stand where their first one does. */
void StationTableReader::readChannel()
{
    std::unique_ptr<ChannelStation> &entry = _stations[text(Network) + '.' + text(Station)];
    if (!entry) {
        entry = std::make_unique<ChannelStation>(new DataModel::Station(text(Station)));
        networkOf(text(Network))->add(entry->station.get());
    }
    const DataModel::Coordinates where = place();
    if (!entry->station->coordinates().isPlace())
        entry->station->setCoordinates(where);

    const DataModel::StreamPtr stream(new DataModel::Stream(text(Channel)));
    stream->setEpoch(epoch());
    stream->setDepth(number(Depth));
    stream->setAzimuth(number(Azimuth));
    stream->setDip(number(Dip));
    stream->setSamplingFrequency(number(SampleRate));
    stream->setGainUnit(text(ScaleUnits));
    const double gain = number(Scale);
    if (gain < 0 || gain > 0) {
        stream->setGain(gain);
        stream->setGainFrequency(number(ScaleFrequency));
    }
    entry->locations.at(locationCodeOf(text(Location)), where).add(stream.get());
}

/** The network that stations of a code are put into. */
DataModel::NetworkPtr StationTableReader::networkOf(const std::string &code)
{
    DataModel::NetworkPtr &network = _networksOfStations[code];
    if (!network) {
        network = new DataModel::Network(code);
        _networks.push_back(network);
    }
    return network;
}

std::string StationTableReader::text(Column column) const
{
    return has(column) ? _fields[_columns[column]].trimmed().toStdString() : std::string();
}

double StationTableReader::number(Column column) const
{
    const std::string field = text(column);
    double value = NotANumber;
    if (!field.empty() && !Core::fromString(value, field))
        warn(QString("%1: \"%2\" is no number").arg(ColumnNames[column], field.c_str()));
    return value;
}

Core::Time StationTableReader::time(Column column) const
{
    const std::string field = text(column);
    const Core::Time time = Core::Time::FromString(field);
    if (!field.empty() && !time.valid())
        warn(QString("%1: \"%2\" is no time").arg(ColumnNames[column], field.c_str()));
    return time;
}

Core::TimeWindow StationTableReader::epoch() const
{
    return {time(StartTime), time(EndTime)};
}

DataModel::Coordinates StationTableReader::place() const
{
    DataModel::Coordinates place{number(Latitude), number(Longitude), number(Elevation)};
    if (!keepOnGlobe(place))
        warn("coordinates beyond the globe are left out");
    return place;
}

} // namespace IO
} // namespace Tellarix
