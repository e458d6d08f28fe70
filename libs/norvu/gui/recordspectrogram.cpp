// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/recordspectrogram.h>

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/typedarray.h>

#include <algorithm>
#include <cmath>
#include <limits>

using Tellarix::Core::Time;
using Tellarix::Core::TimeSpan;

namespace Norvu {
namespace Gui {

namespace {

/** Samples that are collected before they are filtered: enough for several threads. */
constexpr size_t BlockLength = 1 << 17;

} // namespace

template <typename T>
RecordSpectrogram<T>::RecordSpectrogram() = default;

template <typename T>
RecordSpectrogram<T>::RecordSpectrogram(const SpectrogramSettings &settings)
    : Spectrogram<T>(settings)
{}

template <typename T>
RecordSpectrogram<T>::~RecordSpectrogram() = default;

/** Takes the times of a record; false if it is not to be fed. */
template <typename T>
bool RecordSpectrogram<T>::begin(const Tellarix::Record *record)
{
    if (!record || !record->hasEndTime())
        return false;
    if (!_started) {
        this->setSamplingFrequency(record->samplingFrequency());
        _started = true;
        _origin = _startTime = record->startTime();
        _dropped = 0;
    }
    _endTime = record->endTime();
    return true;
}

template <typename T>
void RecordSpectrogram<T>::feed(const Tellarix::Record *record)
{
    if (!begin(record))
        return;
    if (const auto samples = Tellarix::TypedArray<T>::From(record->dataArray()))
        this->pushData(samples->size(), samples->typedData());
}

template <typename T>
void RecordSpectrogram<T>::feed(const std::vector<const Tellarix::Record *> &records)
{
    std::vector<T> block;
    const auto push = [&] {
        this->pushData(static_cast<int>(block.size()), block.data());
        block.clear();
    };
    for (const Tellarix::Record *record : records) {
        if (!begin(record) || !record->data())
            continue;
        const size_t before = block.size();
        block.resize(before + static_cast<size_t>(record->sampleCount()));
        record->data()->convert(0, record->sampleCount(), block.data() + before);
        if (block.size() >= BlockLength)
            push();
    }
    push();
}

template <typename T>
int RecordSpectrogram<T>::mapTime(const Time &time) const
{
    constexpr double Least = std::numeric_limits<int>::min();
    constexpr double Most = std::numeric_limits<int>::max();
    const double column = (time - _startTime).length() * this->columnRate();
    return static_cast<int>(std::clamp(column, Least, Most));
}

template <typename T>
void RecordSpectrogram<T>::trim(const Time &start, const Time &end)
{
    trimData(mapTime(start), mapTime(end), nullptr);
}

template <typename T>
void RecordSpectrogram<T>::trimData(int first, int last, int *firstKept)
{
    int kept = 0;
    Spectrogram<T>::trimData(first, last, &kept);
    // Counted from the first record: what each trim rounds would add up in a live stream.
    _dropped += kept;
    if (kept > 0)
        _startTime = _origin + TimeSpan(static_cast<double>(_dropped) / this->columnRate());
    const double samples =
        static_cast<double>(this->columns()) * this->columnInterval() + this->pendingSamples();
    _endTime = _startTime + TimeSpan(samples / this->samplingFrequency());
    if (firstKept)
        *firstKept = kept;
}

template <typename T>
void RecordSpectrogram<T>::resetted()
{
    _started = false;
    _startTime = _endTime = Time();
}

template class RecordSpectrogram<float>;
template class RecordSpectrogram<double>;

} // namespace Gui
} // namespace Norvu
