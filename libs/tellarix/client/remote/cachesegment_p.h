// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/timewindow.h>

#include <QByteArray>

#include <string>
#include <vector>

class QIODevice;

namespace Tellarix {
namespace IO {

/** A stretch of time for which a source was asked. */
struct AskedTime
{
    Core::TimeWindow window;
    bool isEmpty{false}; /**< the source had nothing */
};

/**
 * What one visit to a source has brought for a stream, or a pattern of streams, and a day.
 *
 * A file of the cache is a row of segments, each with check sums. A segment that is cut off at the
 * end of a file was not written to its end, or is being written.
 */
struct TELLARIX_CLIENT_API CacheSegment
{
    Core::Time asked;
    std::vector<AskedTime> stretches;
    std::vector<std::string> streams; /**< ids that answered to a pattern */
    QByteArray records;               /**< as appendRecord() writes them */

    /** Adds a record, exactly as it is. */
    void appendRecord(const Record &record);
    /** The records; false if they can't be read, with those before that in @p result. */
    bool readRecords(const StreamCodesCPtr &codes, std::vector<RecordPtr> &result) const;

    QByteArray bytes() const;
};

enum class CacheReading
{
    Segment,
    End,     /**< also where a segment is cut off */
    Damaged, /**< nothing behind it can be read */
};

/**
 * Reads the segment at the position of @p file, which then stands behind it; otherwise it stands
 * where it was.
 * @param withRecords  skips the records if false
 */
TELLARIX_CLIENT_API CacheReading readCacheSegment(QIODevice &file, bool withRecords,
                                                  CacheSegment &segment);

} // namespace IO
} // namespace Tellarix
