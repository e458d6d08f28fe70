// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/ringbuffer.h>

#include <tellarix/core/records/record.h>

#include <algorithm>

namespace Tellarix {

RingBuffer::RingBuffer(int capacity, double tolerance)
    : RecordSequence(tolerance), _capacity(std::max(0, capacity))
{}

RingBuffer::RingBuffer(Core::TimeSpan length, double tolerance)
    : RecordSequence(tolerance), _capacity(0), _length(length)
{}

void RingBuffer::setLength(Core::TimeSpan length)
{
    _length = length;
    trimToLength();
}

/** Where the stretch begins that is kept; not valid without one. */
Core::Time RingBuffer::firstKept() const
{
    return isEmpty() || _length <= Core::TimeSpan() ? Core::Time()
                                                    : timeWindow().endTime() - _length;
}

void RingBuffer::trimToLength()
{
    const Core::Time first = firstKept();
    if (!first.valid())
        return;
    int count = 0;
    while (digest(count).end < first)
        ++count;
    removeFront(count);
}

bool RingBuffer::feed(const Record *record)
{
    const RecordCPtr held(record);
    if (!held)
        return false;
    if (_capacity > 0 && size() >= _capacity && record->startTime() < front()->startTime())
        return false;
    const Core::Time first = firstKept();
    if (first.valid() && record->timeWindow().endTime() < first)
        return false;
    if (!insert(record))
        return false;

    if (_capacity > 0)
        removeFront(size() - _capacity);
    trimToLength();
    return true;
}

RecordSequence *RingBuffer::clone() const
{
    auto *clone = new RingBuffer(_capacity, tolerance());
    clone->_length = _length;
    return clone;
}

} // namespace Tellarix
