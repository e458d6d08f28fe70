// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/inventoryreader.h>
#include <tellarix/client/io/sensorlocationindex_p.h>
#include <tellarix/core/datamodel/station.h>
#include <tellarix/core/datamodel/stream.h>

#include <QByteArray>
#include <QList>

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace Tellarix {
namespace IO {

/**
 * Reads stations from lines of fields under a line with the names of the columns, as web services
 * write them for networks, stations or channels.
 */
class StationTableReader
{
public:
    /** Columns that are understood, in whatever order; the others are passed over. */
    enum Column
    {
        Network,
        Station,
        Location,
        Channel,
        Latitude,
        Longitude,
        Elevation,
        Depth,
        Azimuth,
        Dip,
        Scale,
        ScaleFrequency,
        ScaleUnits,
        SampleRate,
        StartTime,
        EndTime,
        Description,
        SiteName,
        ColumnCount
    };

    StationTableReader(QIODevice &device, const QString &name, const InventoryReadHandler &handler);

    bool read(std::vector<DataModel::NetworkPtr> &networks, QString *error);

private:
    /** A station whose channels are read. */
    struct ChannelStation
    {
        explicit ChannelStation(const DataModel::StationPtr &station)
            : station(station), locations(*station)
        {}
        DataModel::StationPtr station;
        SensorLocationIndex locations;
    };

    bool readLine(QByteArray *line);
    void readColumns(const QByteArray &line);
    bool readEpoch(const QByteArray &line);
    void readNetwork();
    void readStation();
    void readChannel();
    DataModel::NetworkPtr networkOf(const std::string &code);

    bool has(Column column) const { return _columns[column] >= 0; }
    std::string text(Column column) const;
    double number(Column column) const;
    Core::TimeWindow epoch() const;
    Core::Time time(Column column) const;
    DataModel::Coordinates place() const;
    bool fail(const QString &cause);
    void warn(const QString &text) const;

    QIODevice &_device;
    QString _name;
    const InventoryReadHandler &_handler;
    qint64 _total; /**< bytes, -1 if unknown */
    std::vector<char> _lineBuffer;
    QList<QByteArray> _names;
    QList<QByteArray> _fields; /**< of the current line */
    int _columns[ColumnCount]; /**< index of the field of each column, -1 if there is none */
    int _line{0};
    QString _fault;

    std::vector<DataModel::NetworkPtr> _networks;
    std::unordered_map<std::string, DataModel::NetworkPtr> _networksOfStations;
    std::unordered_map<std::string, std::unique_ptr<ChannelStation>> _stations; /**< by NET.STA */
};

} // namespace IO
} // namespace Tellarix
