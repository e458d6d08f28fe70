// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/cut.h>

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/recordsequence.h>
#include <tellarix/core/records/typedarray.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace Tellarix {
namespace {

template <typename T>
ArrayPtr arrayOfType(int size)
{
    return new TypedArray<T>(size);
}

ArrayPtr emptyArray(DataType type, int size)
{
    switch (type) {
    case DataType::Char:
        return arrayOfType<char>(size);
    case DataType::Int:
        return arrayOfType<int>(size);
    case DataType::Float:
        return arrayOfType<float>(size);
    case DataType::Double:
        return arrayOfType<double>(size);
    }
    return ArrayPtr();
}

/** Copies bytes, so that not-a-number keeps its payload. */
void copySamples(const NumericArray &source, int first, int count, NumericArray &target, int to)
{
    const auto size = static_cast<size_t>(source.elementSize());
    // The arrays given here are new: nobody shares them yet.
    auto *bytes = static_cast<char *>(const_cast<void *>(target.data()));
    std::memcpy(bytes + static_cast<size_t>(to) * size,
                static_cast<const char *>(source.data()) + static_cast<size_t>(first) * size,
                static_cast<size_t>(count) * size);
}

RecordCPtr cutRecord(const Record *record, const Core::TimeWindow &window)
{
    if (record->sampleCount() == 0)
        return RecordCPtr();
    if (!record->hasEndTime())
        return window.contains(record->startTime()) ? RecordCPtr(record) : RecordCPtr();

    const int first = record->sampleIndex(window.startTime());
    const int count = record->sampleIndex(window.endTime()) - first;
    if (count <= 0)
        return RecordCPtr();
    if (count == record->sampleCount())
        return RecordCPtr(record);

    const ArrayPtr samples = emptyArray(record->dataType(), count);
    copySamples(*record->data(), first, count, *samples, 0);
    return new Record(record->codes(), record->sampleTime(first), record->samplingFrequency(),
                      samples, record->timingQuality());
}

/** True if the next sample behind @p count samples from @p first on is that of @p record. */
bool goesOn(const Record &first, int64_t count, const Record &record, double tolerance)
{
    if (!first.hasEndTime() || !record.hasEndTime() ||
        record.samplingFrequency() != first.samplingFrequency() ||
        record.dataType() != first.dataType() || record.streamID() != first.streamID() ||
        count + record.sampleCount() > std::numeric_limits<int>::max())
        return false;

    const double interval = 1E6 / first.samplingFrequency();
    const auto passed = static_cast<double>(record.startTime().usecs() - first.startTime().usecs());
    return std::abs(passed - static_cast<double>(count) * interval) <= tolerance * interval;
}

} // namespace

std::vector<RecordCPtr> cutRecords(const RecordSequence &records, const Core::TimeWindow &window)
{
    std::vector<RecordCPtr> result;
    if (window.isEmpty())
        return result;

    const int last = records.firstStartingFrom(window.endTime());
    // A record without an end stands at its start, where its end does not lie behind the window's.
    const int first = std::min(records.firstEndingAfter(window.startTime()),
                               records.firstStartingFrom(window.startTime()));
    for (int i = first; i < last; ++i) {
        if (RecordCPtr record = cutRecord(records.at(i), window))
            result.push_back(std::move(record));
    }
    return result;
}

std::vector<RecordStretch> gaplessStretches(const std::vector<RecordCPtr> &records,
                                            double tolerance)
{
    std::vector<RecordStretch> stretches;
    int64_t count = 0;
    for (const RecordCPtr &record : records) {
        if (stretches.empty() || !goesOn(*stretches.back().front(), count, *record, tolerance)) {
            stretches.emplace_back();
            count = 0;
        }
        stretches.back().push_back(record);
        count += record->sampleCount();
    }
    return stretches;
}

RecordCPtr joinedRecord(const RecordStretch &stretch)
{
    if (stretch.size() < 2)
        return stretch.empty() ? RecordCPtr() : stretch.front();

    int count = 0;
    for (const RecordCPtr &record : stretch)
        count += record->sampleCount();

    const Record &first = *stretch.front();
    const ArrayPtr samples = emptyArray(first.dataType(), count);
    int position = 0;
    for (const RecordCPtr &record : stretch) {
        if (record->sampleCount() == 0)
            continue;
        copySamples(*record->data(), 0, record->sampleCount(), *samples, position);
        position += record->sampleCount();
    }
    return first.withData(samples);
}

} // namespace Tellarix
