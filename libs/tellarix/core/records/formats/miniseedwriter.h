// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/forward.h>

#include <memory>
#include <string>

class QIODevice;

namespace Tellarix {
namespace Formats {

/**
 * Writes records as big-endian miniSEED 2.
 *
 * Integers are compressed by Steim2, or stored as 32-bit integers where a step between two samples
 * is too wide for it or a compressed frame has no room; single and double precision and text are
 * stored as they are. Each Record becomes one or more miniSEED records of a fixed length, the last
 * of them filled up; none holds more than 65535 samples, which is as far as the format counts.
 * Times are exact to the microsecond; rates that are no ratio of small numbers have single
 * precision. One writer may be given records of several streams by turns.
 */
class TELLARIX_CORE_API MiniSeedWriter
{
public:
    /**
     * @param device        open for writing; not owned, and has to outlive the writer's use
     * @param recordLength  in bytes: a power of two from 128 to 1048576
     */
    explicit MiniSeedWriter(QIODevice *device, int recordLength = 512);
    ~MiniSeedWriter();

    MiniSeedWriter(const MiniSeedWriter &) = delete;
    MiniSeedWriter &operator=(const MiniSeedWriter &) = delete;

    /** Steim2 for integers if true, which is the default; 32-bit integers otherwise. */
    void setCompressed(bool compressed) { _compressed = compressed; }

    /**
     * Writes all samples of @p record.
     * @return false with an errorString() if the device does not take the bytes, or if the record
     *         can't be read back: codes that are too long or not ASCII, no samples, times outside
     *         of the years 1900 to 2500, a rate that is neither 0 nor from 1E-9 to 1E9 Hz. In
     *         the latter case nothing has been written.
     */
    bool write(const Record &record);

    /** miniSEED records written so far. */
    int64_t recordCount() const { return _recordCount; }
    const std::string &errorString() const { return _errorString; }

private:
    class Template;

    bool setCodes(const Record &record);
    void setEncoding(const Record &record);
    void addBlockettes(const Record &record);
    int packSome(const Record &record, int first);
    bool flush(const Record &record);
    bool fail(const Record &record, const std::string &cause);
    static void keepRecord(char *record, int length, void *writer);

    QIODevice *_device;
    int _recordLength;
    bool _compressed{true};
    int64_t _recordCount{0};
    std::string _errorString;
    std::unique_ptr<Template> _template;
    std::string _packed; /**< miniSEED records of the Record being written */
};

} // namespace Formats
} // namespace Tellarix
