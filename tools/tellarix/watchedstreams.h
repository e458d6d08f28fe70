// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/remote/coveredtime_p.h>
#include <tellarix/core/records/record.h>

#include <QCoreApplication>
#include <QString>
#include <QStringList>

#include <map>
#include <string>

namespace Tellarix {
namespace Tool {

/** Counts what comes of streams record by record, in memory that grows with their gaps only. */
class WatchedStreams
{
    Q_DECLARE_TR_FUNCTIONS(Tellarix::Tool::WatchedStreams)

public:
    /** Lists a stream before anything of it has come. */
    void expect(const std::string &id) { _streams[id]; }
    /** Counts a record; what is new in it, a stream or a gap, as a line, else empty. */
    QString add(const Record &record);

    /** A table with a line for each stream and a header. */
    QString tableText(Core::Time now) const;
    /** A JSON array with an object per stream; what is unknown is null. */
    QString jsonText(Core::Time now) const;

private:
    struct Stream
    {
        int64_t records{0};
        int64_t overlaps{0};
        double samplingFrequency{0}; /**< of the last record */
        Core::Time lastSampleTime;
        Core::Time end; /**< of the latest record */
        IO::CoveredTime stretches;

        qint64 gaps() const;
    };

    static QStringList cells(const std::string &id, const Stream &stream, Core::Time now);

    std::map<std::string, Stream> _streams;
};

/** A span as "12.3 s", "4.5 min", "3.2 h" or "8.1 d". */
QString spanText(double seconds);

} // namespace Tool
} // namespace Tellarix
