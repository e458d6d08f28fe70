// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/recordsequence.h>

namespace Tellarix {

/** A sequence that keeps a fixed number of records, those of a last stretch of time, or all. */
class TELLARIX_CORE_API RingBuffer : public RecordSequence
{
public:
    /**
     * @param capacity   number of records to keep; the oldest go first, and a full buffer takes no
     * record that is older than all; 0 and below keeps all
     * @param tolerance  in samples, as in RecordSequence
     */
    explicit RingBuffer(int capacity, double tolerance = 0.5);
    /**
     * @param length  of the stretch up to the latest end: records that end before it go, and older
     *                ones are not taken; 0 and below keeps all
     */
    explicit RingBuffer(Core::TimeSpan length, double tolerance = 0.5);

    int capacity() const { return _capacity; }
    Core::TimeSpan length() const { return _length; }
    /** Drops what lies before a shorter stretch. */
    void setLength(Core::TimeSpan length);

    bool feed(const Record *record) override;
    RecordSequence *clone() const override;

private:
    Core::Time firstKept() const;
    void trimToLength();

    int _capacity;
    Core::TimeSpan _length;
};

} // namespace Tellarix
