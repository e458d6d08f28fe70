// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/timewindowbuffer.h>

#include <tellarix/core/records/record.h>

namespace Tellarix {
namespace {

bool belongsTo(const Record *record, const Core::TimeWindow &window)
{
    if (!window.valid())
        return true;
    return record->timeWindow().overlaps(window) || window.contains(record->startTime());
}

} // namespace

TimeWindowBuffer::TimeWindowBuffer(const Core::TimeWindow &window, double tolerance)
    : RecordSequence(tolerance), _window(window)
{}

void TimeWindowBuffer::setStoredWindow(const Core::TimeWindow &window)
{
    _window = window;
    removeIf([&window](const Record *record) { return !belongsTo(record, window); });
}

bool TimeWindowBuffer::feed(const Record *record)
{
    const RecordCPtr held(record);
    return held && belongsTo(record, _window) && insert(record);
}

RecordSequence *TimeWindowBuffer::clone() const
{
    return new TimeWindowBuffer(_window, tolerance());
}

} // namespace Tellarix
