// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/recordrow_p.h>

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/recordsequence.h>
#include <tellarix/qt/scheme.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace Tellarix {
namespace Gui {

namespace {

template <typename Polyline>
RecordPolylinePtr makePolyline(const RecordSequence &sequence, const RowTimes &times,
                               const TraceInfo &info, const QSize &size)
{
    auto *polyline = new Polyline;
    RecordPolylinePtr result(polyline);
    polyline->create(&sequence, times.left(), times.right(size.width()), times.pixelsPerSecond,
                     info.fyMin, info.fyMax, info.yOffset, size.height(), nullptr, nullptr,
                     Scheme::Current().records.optimize);
    polyline->prepareDrawing();
    return result;
}

} // namespace

QRect AxisColumn::canvasOf(const QRect &area) const
{
    const int taken = drawn ? std::min(width, area.width()) : 0;
    return area.adjusted(position == Position::AxisLeft ? taken : 0, 0,
                         position == Position::AxisRight ? -taken : 0, 0);
}

RecordRow::RecordRow(std::function<void(int)> jobFinished) : filter(items, std::move(jobFinished))
{}

RecordSequence *RecordRow::shownRecords(int slot) const
{
    RecordSlot *item = items.at(slot);
    return item != nullptr ? filter.shownRecords(*item) : nullptr;
}

TraceInfo &RecordRow::shownTrace(RecordSlot &slot) const
{
    return slot.traces[filter.isShown(slot) ? 1 : 0];
}

// Amplitudes

double RecordRow::shownFactor(int slot) const
{
    const RecordSlot *item = items.at(slot);
    const double scale = showsScaledValues && item != nullptr ? item->scale.value_or(1) : 1;
    return scale != 0 && std::isfinite(scale) ? scale : 1.0;
}

const TraceExtrema &RecordRow::extremaOf(RecordSlot &slot) const
{
    const bool isFiltered = filter.isShown(slot);
    TraceExtrema &extrema = slot.extrema[isFiltered ? 1 : 0];
    if (extrema.known)
        return extrema;

    const RecordSequence *sequence = filter.shownRecords(slot);
    extrema = TraceExtrema();
    extrema.known = true;
    if (sequence != nullptr)
        extrema = TraceExtrema::Of(*sequence, amplitudes.normalizationWindow);
    return extrema;
}

/** Extrema of all overlaid slots, in values of the axis. */
TraceExtrema RecordRow::commonExtrema() const
{
    TraceExtrema common;
    int count = 0;
    for (const int slot : items.drawn()) {
        const TraceExtrema &own = extremaOf(*items.at(slot));
        if (own.empty)
            continue;
        const TraceExtrema scaled = own.scaled(std::abs(shownFactor(slot)));
        common.minimum = common.empty ? scaled.minimum : std::min(common.minimum, scaled.minimum);
        common.maximum = common.empty ? scaled.maximum : std::max(common.maximum, scaled.maximum);
        common.mean += (scaled.mean - common.mean) / ++count;
        common.empty = false;
    }
    return common;
}

ShownRange RecordRow::rangeOf(int slot) const
{
    RecordSlot *item = items.at(slot);
    if (item == nullptr)
        return {};
    if (!amplitudes.automatic)
        return amplitudes.rangeOf(TraceExtrema());
    if (items.mode != RecordWidget::Overlaid || !items.isDrawn(slot))
        return amplitudes.rangeOf(extremaOf(*item));
    return amplitudes.rangeOf(commonExtrema().scaled(1 / std::abs(shownFactor(slot))));
}

// Traces

bool RecordRow::isDirty() const
{
    const QVector<int> drawn = items.drawn();
    return std::any_of(drawn.begin(), drawn.end(),
                       [this](int slot) { return shownTrace(*items.at(slot)).dirty; });
}

void RecordRow::prepare(const QRect &canvas)
{
    for (const int slot : items.drawn()) {
        RecordSlot &item = *items.at(slot);
        if (shownTrace(item).dirty)
            buildTrace(slot, canvas);
        item.findStretches();
        item.drawnStart = item.raw != nullptr ? item.raw->timeWindow().startTime() : Core::Time();
    }
}

void RecordRow::buildTrace(int slot, const QRect &canvas)
{
    RecordSlot &item = *items.at(slot);
    const ShownRange range = rangeOf(slot);
    const TraceExtrema &extrema = extremaOf(item);
    TraceInfo &info = shownTrace(item);

    info.dirty = false;
    info.amplMin = extrema.minimum;
    info.amplMax = extrema.maximum;
    info.offset = extrema.mean;
    info.absMax = std::max(extrema.mean - extrema.minimum, extrema.maximum - extrema.mean);
    info.yOffset = range.offset;
    info.fyMin = range.lower - range.offset;
    info.fyMax = range.upper - range.offset;
    info.yMin = info.fyMin * amplitudes.magnification;
    info.yMax = info.fyMax * amplitudes.magnification;

    const RecordSequence *sequence = shownRecords(slot);
    const QRect area = items.rectOf(slot, canvas);
    if (sequence == nullptr || range.empty || area.isEmpty()) {
        info.poly.reset();
        return;
    }
    // Slots are as wide as the canvas.
    const auto make = Scheme::Current().records.antiAliasing ? makePolyline<RecordPolylineF>
                                                             : makePolyline<RecordPolyline>;
    info.poly = make(*sequence, times, info, area.size());
}

void RecordRow::forgetTraces()
{
    for (const auto &slot : items)
        slot->forgetTraces();
}

void RecordRow::forgetExtrema()
{
    for (const auto &slot : items)
        slot->forgetExtrema();
}

void RecordRow::forgetStretches()
{
    for (const auto &slot : items)
        slot->stretchesKnown = false;
}

Core::TimeWindow touchedWindow(const RecordSequence &raw, const Record &record)
{
    Core::TimeWindow window = record.timeWindow();
    const int behind = raw.firstStartingFrom(record.startTime());
    const int previous = behind - 1;
    if (previous >= 0) {
        const Record *neighbour = raw.at(previous);
        window.setStartTime(std::min(
            window.startTime(), std::min(neighbour->lastSampleTime(), raw.digest(previous).end)));
    }
    for (int i = behind; i < raw.size(); ++i) {
        if (raw.at(i) == &record)
            continue;
        window.setEndTime(std::max(window.endTime(), raw.at(i)->startTime()));
        break;
    }
    return window;
}

} // namespace Gui
} // namespace Tellarix
