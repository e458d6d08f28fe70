// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/ringbuffer.h>

#include <tellarix/core/records/record.h>

#include <algorithm>

namespace Tellarix {

RingBuffer::RingBuffer(int capacity, double tolerance)
    : RecordSequence(tolerance), _capacity(std::max(0, capacity))
{}

bool RingBuffer::feed(const Record *record)
{
    const RecordCPtr held(record);
    if (!held)
        return false;
    if (_capacity > 0 && size() >= _capacity && record->startTime() < front()->startTime())
        return false;
    if (!insert(record))
        return false;

    if (_capacity > 0)
        removeFront(size() - _capacity);
    return true;
}

RecordSequence *RingBuffer::clone() const
{
    return new RingBuffer(_capacity, tolerance());
}

} // namespace Tellarix
