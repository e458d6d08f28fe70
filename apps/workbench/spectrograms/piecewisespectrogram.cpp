// SPDX-License-Identifier: LGPL-3.0-or-later

#include "piecewisespectrogram.h"

#include <tellarix/core/records/recordsequence.h>

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <vector>

using namespace Tellarix;
using Core::Time;
using Core::TimeWindow;
using Norvu::Gui::SpectrogramSettings;

namespace Workbench {

namespace {

/** Values of a stretch from which the quiet ones are found, and the part that counts as such. */
constexpr size_t LookedAt = 1000;
constexpr size_t QuietPart = 20;

} // namespace

PiecewiseSpectrogram::PiecewiseSpectrogram(QWidget *parent) : SpectrogramRecordWidget(parent)
{
    _axis.logarithmic = false;
    setSpectrogramSlot(Slot);
}

void PiecewiseSpectrogram::setWanted(bool wanted)
{
    if (wanted == _wanted)
        return;
    _wanted = wanted;
    if (!wanted)
        release();
    update();
    emit wantedChanged();
}

void PiecewiseSpectrogram::setAxis(const SpectrogramSettings &settings)
{
    release();
    _axis = settings;
    setSpectrogramSettings(settings);
    emit axisChanged();
}

/** In the unit of the samples. */
QPair<double, double> PiecewiseSpectrogram::valueRange() const
{
    QPair<double, double> range = spectrogramRange();
    if (!_former.empty()) {
        const bool isAlone = spectrogramSize() == 0;
        range.first = isAlone ? _formerRange.first : std::min(range.first, _formerRange.first);
        range.second = std::max(range.second, _formerRange.second);
    }
    return range;
}

double PiecewiseSpectrogram::quietValue() const
{
    std::vector<float> values;
    for (const SpectrogramItem &item : _items) {
        const auto &spectrogram = *item.spectrogram;
        const auto columnAt = [&](const Time &time) {
            return static_cast<size_t>(
                std::clamp(spectrogram.mapTime(time), 0, spectrogram.columns()));
        };
        const size_t rows = static_cast<size_t>(spectrogram.rows());
        const size_t first = columnAt(leftTime()) * rows;
        const size_t end = columnAt(rightTime()) * rows;
        const size_t step = (end - first) / LookedAt | 1; // odd, to meet all bands
        for (size_t i = first; i < end; i += step) {
            if (std::isfinite(spectrogram.data()[i]))
                values.push_back(spectrogram.data()[i]);
        }
    }
    if (values.empty())
        return 0;
    const auto quiet = values.begin() + static_cast<ptrdiff_t>(values.size() / QuietPart);
    std::nth_element(values.begin(), quiet, values.end());
    return static_cast<double>(*quiet);
}

// Working out

const RecordSequence *PiecewiseSpectrogram::source() const
{
    return spectrogramRecords(Slot);
}

/** Nobody tells of a new filter while filtering is switched off. */
bool PiecewiseSpectrogram::isOfTheseRecords() const
{
    return isSpectrogramEnabled() && content() == _content;
}

bool PiecewiseSpectrogram::isUpToDate() const
{
    return isOfTheseRecords() && plan().fits(spectrogramColumnInterval());
}

bool PiecewiseSpectrogram::isComplete() const
{
    const TimeWindow data = plan().visibleData();
    return data.isEmpty() || (isUpToDate() && spectrogramTimeWindow().contains(data));
}

/** Of the first record that has one, 0 without any. */
double PiecewiseSpectrogram::samplingFrequency() const
{
    const RecordSequence *records = source();
    if (!records)
        return 0;
    const auto found = std::find_if(records->begin(), records->end(),
                                    [](const RecordCPtr &record) { return record->hasEndTime(); });
    return found == records->end() ? 0 : (*found)->samplingFrequency();
}

double PiecewiseSpectrogram::samplesPerPixel() const
{
    return samplingFrequency() / (timeScale() * devicePixelRatioF());
}

StretchPlan PiecewiseSpectrogram::plan() const
{
    const RecordSequence *records = source();
    return StretchPlan({{leftTime(), rightTime()},
                        records ? records->timeWindow() : TimeWindow(),
                        samplingFrequency(),
                        samplesPerPixel(),
                        _axis});
}

double PiecewiseSpectrogram::memoryNeeded() const
{
    return isComplete() ? 0 : plan().memory();
}

bool PiecewiseSpectrogram::isOversized() const
{
    return isUpToDate() && plan().isExceededBy(static_cast<double>(spectrogramSize()));
}

bool PiecewiseSpectrogram::workOut(size_t memory)
{
    if (!_wanted || isComplete() || samplingFrequency() <= 0)
        return false;

    const double needed = memoryNeeded();
    if (needed > static_cast<double>(memory)) {
        setSpectrogramEnabled(false);
        _former.clear();
        if (lackingMemory() != needed)
            update();
        _lackingMemory = needed;
        _lackingWindow = {leftTime(), rightTime()};
        return false;
    }
    if (needed + static_cast<double>(memoryUsed()) > static_cast<double>(memory))
        forgetFormer();
    const StretchPlan plan = this->plan();
    _lackingMemory = 0;
    if (isUpToDate() && plan.canGoOn(spectrogramTimeWindow()))
        goOn(plan);
    else
        beginAnew(plan);
    if (isComplete()) {
        _hasBeenComplete = true;
        _former.clear();
    }
    emit amplitudeRangeChanged();
    return true;
}

double PiecewiseSpectrogram::lackingMemory() const
{
    const bool isForThis =
        _lackingWindow.startTime() == leftTime() && _lackingWindow.endTime() == rightTime();
    return isForThis ? _lackingMemory : 0;
}

bool PiecewiseSpectrogram::showsMostData() const
{
    if (!isOfTheseRecords())
        return false;
    if (!_former.empty())
        return true;
    const TimeWindow data = plan().visibleData();
    const TimeWindow covered = spectrogramTimeWindow().overlap(data);
    return !covered.isEmpty() && 2 * covered.length().length() >= data.length().length();
}

void PiecewiseSpectrogram::goOn(const StretchPlan &plan)
{
    setSpectrogramTimeWindow(plan.withNextPiece(spectrogramTimeWindow()));
}

/** A zoom asks for other columns of the same records: until there are enough of them the old ones
 *  are better than nothing. */
void PiecewiseSpectrogram::keepFormer()
{
    if (!isOfTheseRecords())
        _former.clear();
    else if (_hasBeenComplete) {
        _formerRange = spectrogramRange();
        _former = std::move(_items);
    }
    _items.clear();
    _hasBeenComplete = false;
}

/** For want of memory; what is there now isn't kept either. */
void PiecewiseSpectrogram::forgetFormer()
{
    _former.clear();
    _hasBeenComplete = false;
}

void PiecewiseSpectrogram::beginAnew(const StretchPlan &plan)
{
    keepFormer();
    setSpectrogramEnabled(false);
    _content = content();
    setSpectrogramColumnInterval(plan.columnInterval());
    const Time start = plan.stretch().startTime();
    setSpectrogramTimeWindow({start, start});
    setSpectrogramEnabled(true);
    goOn(plan);
}

void PiecewiseSpectrogram::release()
{
    _lackingMemory = 0;
    _former.clear();
    setSpectrogramEnabled(false);
}

// Records

bool PiecewiseSpectrogram::Content::operator==(const Content &other) const
{
    return first == other.first && last == other.last && count == other.count;
}

PiecewiseSpectrogram::Content PiecewiseSpectrogram::content() const
{
    const RecordSequence *records = source();
    if (!records || records->isEmpty())
        return Content();
    return {records->front(), records->back(), records->size()};
}

void PiecewiseSpectrogram::fed(int slot, const Record *record)
{
    const QPair<double, double> before = spectrogramRange();
    SpectrogramRecordWidget::fed(slot, record);
    if (slot != Slot || !isSpectrogramEnabled())
        return;
    _content = content();
    if (spectrogramRange() != before)
        emit amplitudeRangeChanged();
}

/** Other records are worked out piece by piece, as those before. When a filter is switched on or
 *  off, the raw ones stay what they were, and what was made of them too. */
void PiecewiseSpectrogram::changedRecords(int slot, RecordSequence *)
{
    if (slot != Slot || content() == _content)
        return;
    release();
    update();
    if (_wanted)
        emit amplitudeRangeChanged();
}

// Painting

void PiecewiseSpectrogram::drawSpectrogram(QPainter &painter)
{
    if (!_wanted)
        return;
    _items.swap(_former);
    SpectrogramRecordWidget::drawSpectrogram(painter);
    _items.swap(_former);
    SpectrogramRecordWidget::drawSpectrogram(painter);
    if (!isComplete())
        emit incomplete();
}

void PiecewiseSpectrogram::forgetFormerImages()
{
    for (SpectrogramItem &item : _former)
        item = {item.spectrogram, QImage(), -1, 0};
}

} // namespace Workbench
