// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/eventreader.h>

#include <QByteArray>
#include <QHash>
#include <QVector>

#include <optional>
#include <string>
#include <vector>

namespace Tellarix {
namespace IO {

/** Reads events from lines of fields under a line with the names of the columns. */
class EventTableReader
{
public:
    /** Columns that are understood, in whatever order; the others are passed over. */
    enum Column
    {
        Id,
        Time,
        Latitude,
        Longitude,
        Depth,
        DepthError,
        Magnitude,
        MagnitudeType,
        MagnitudeError,
        MagnitudeStations,
        MagnitudeAgency,
        Phases,
        Stations,
        Gap,
        MinimumDistance,
        StandardError,
        Agency,
        Author,
        Updated,
        Region,
        Type,
        Status,
        ColumnCount
    };

    EventTableReader(QIODevice &device, const QString &name, const EventReadHandler &handler,
                     EventFormat format);

    bool read(QString *error);

private:
    bool readRecord();
    bool readLine(QByteArray *line);
    void splitByBars(const QByteArray &line);
    bool splitByCommas(QByteArray line);
    bool readColumns();
    bool readEvent();

    DataModel::OriginPtr makeOrigin();
    DataModel::MagnitudePtr makeMagnitude();
    std::string text(Column column) const;
    std::optional<double> number(Column column);
    std::optional<int> count(Column column);
    std::optional<double> required(Column column, double limit);
    bool fail(const QString &cause);
    void warn(const QString &text) const;

    QIODevice &_device;
    QString _name;
    const EventReadHandler &_handler;
    EventFormat _format;
    qint64 _total; /**< bytes, -1 if unknown */
    std::vector<char> _lineBuffer;
    int _columns[ColumnCount];   /**< index of the field of each column, -1 if there is none */
    QVector<QByteArray> _fields; /**< of the current record */
    QVector<QByteArray> _names;
    int _line{0};      /**< the last one read, from 1 */
    int _firstLine{0}; /**< of the current record */
    QString _fault;
    bool _ended{false};
};

} // namespace IO
} // namespace Tellarix
