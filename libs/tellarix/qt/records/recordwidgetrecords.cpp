// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/recordwidget.h>

#include <tellarix/qt/records/recordwidget_p.h>

#include <QPointer>
#include <QTimerEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace Tellarix {
namespace Gui {

namespace {

// Share of half of the data's range that is left free at top and bottom.
constexpr double Margin = 0.05;
// Sums and differences of amplitudes within these limits stay finite.
constexpr double AmplitudeLimit = 1E250;
constexpr double LargestMagnification = 1E9;
// Least distance of repaints for fed records in ms: while a day is loaded, painting each of its
// records would take longer than reading it.
constexpr int FeedInterval = 200;

} // namespace

// New records

void RecordWidget::fed(int slot, const Record *record)
{
    Slot *item = slotAt(slot);
    if (item == nullptr || item->raw == nullptr || record == nullptr)
        return;

    const ShownRange before = shownRange(slot);
    Core::TimeWindow changed = touchedWindow(*item, record);
    const QPointer<RecordWidget> alive(this);
    changed = changed.united(filterFed(slot, record));
    // A receiver of its signal may have taken the slot away.
    item = alive ? slotAt(slot) : nullptr;
    if (item == nullptr || item->raw == nullptr)
        return;

    item->stretchesKnown = false;
    item->traces[0].dirty = true;
    item->traces[1].dirty = true;
    item->extrema[0].known = false;
    item->extrema[1].known = false;
    if (!isSlotDrawn(slot))
        return;

    const ShownRange after = shownRange(slot);
    // The mean moves with every record, but hardly ever by a pixel.
    const int height = slotRect(slot).height();
    if (after.empty != before.empty || after.lower != before.lower || after.upper != before.upper ||
        after.offsetY(height) != before.offsetY(height)) {
        forgetPolylines();
        updateFed(rect());
        emit traceUpdated(this);
        return;
    }

    updateFed(columnsOf(slot, changed));
    const Core::Time start = item->raw->timeWindow().startTime();
    if (item->drawnStart.valid() && start > item->drawnStart)
        updateFed(columnsOf(slot, Core::TimeWindow(item->drawnStart, start)));
}

QRect RecordWidget::columnsOf(int slot, const Core::TimeWindow &window) const
{
    const QRect area = slotRect(slot);
    return area & QRect(QPoint(mapTime(window.startTime()) - 1, area.top()),
                        QPoint(mapTime(window.endTime()) + 1, area.bottom()));
}

/** Repaints an area at once, or a bit later if fed records were painted just before. */
void RecordWidget::updateFed(const QRect &area)
{
    if (area.isEmpty())
        return;

    _fedArea += area;
    if (!_feedTimer.isActive())
        paintFed();
}

void RecordWidget::paintFed()
{
    if (_fedArea.isEmpty()) {
        _feedTimer.stop();
        return;
    }
    update(std::exchange(_fedArea, QRegion()));
    _feedTimer.start(FeedInterval, this);
}

void RecordWidget::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == _feedTimer.timerId())
        paintFed();
    else
        QWidget::timerEvent(event);
}

/**
 * Window in which a record that was fed changes the picture: the record, the lines from and to its
 * neighbours, and gaps that it opens or closes.
 */
Core::TimeWindow RecordWidget::touchedWindow(const Slot &slot, const Record *record) const
{
    const RecordSequence &raw = *slot.raw;
    Core::TimeWindow window = record->timeWindow();
    const int behind = raw.firstStartingFrom(record->startTime());
    const int previous = behind - 1;
    if (previous >= 0) {
        const Record *neighbour = raw.at(previous);
        window.setStartTime(std::min(
            window.startTime(), std::min(neighbour->lastSampleTime(), raw.span(previous).end)));
    }
    for (int i = behind; i < raw.size(); ++i) {
        if (raw.at(i) == record)
            continue;
        window.setEndTime(std::max(window.endTime(), raw.at(i)->startTime()));
        break;
    }
    return window;
}

void RecordWidget::updateRecords()
{
    filterAll();
    setDirty();
    update();
    emit traceUpdated(this);
}

// Amplitude range

void RecordWidget::forgetExtrema()
{
    for (const auto &slot : _slots) {
        slot->extrema[0].known = false;
        slot->extrema[1].known = false;
    }
}

const RecordWidget::Extrema &RecordWidget::extremaOf(Slot &slot) const
{
    const bool filtered = isFiltered(slot);
    Extrema &extrema = slot.extrema[filtered ? 1 : 0];
    if (extrema.known)
        return extrema;

    extrema = Extrema();
    extrema.known = true;
    if (slot.raw == nullptr)
        return extrema;
    if (filtered)
        updateFiltered(slot);
    const RecordSequence &sequence = filtered ? *slot.filtered->sequence() : *slot.raw;

    const bool limited = !_normalizationWindow.isEmpty();
    const Core::TimeWindow *window = limited ? &_normalizationWindow : nullptr;
    const SampleSummary summary = sequence.summary(window);
    extrema.empty = summary.isEmpty();
    if (extrema.empty)
        return extrema;
    extrema.minimum = std::clamp(summary.minimum, -AmplitudeLimit, AmplitudeLimit);
    extrema.maximum = std::clamp(summary.maximum, -AmplitudeLimit, AmplitudeLimit);
    extrema.mean = std::clamp(summary.mean(), extrema.minimum, extrema.maximum);
    return extrema;
}

double RecordWidget::shownFactor(int slot) const
{
    const double *scale = _showScaledValues ? recordScale(slot) : nullptr;
    return scale != nullptr && *scale != 0 && std::isfinite(*scale) ? *scale : 1.0;
}

/** Extrema of all overlaid slots, in values of the axis. */
RecordWidget::Extrema RecordWidget::commonExtrema() const
{
    Extrema common;
    int count = 0;
    for (const int slot : drawnSlots()) {
        const Extrema &own = extremaOf(*slotAt(slot));
        if (own.empty)
            continue;
        const double factor = std::abs(shownFactor(slot));
        const double minimum = own.minimum * factor;
        const double maximum = own.maximum * factor;
        common.minimum = common.empty ? minimum : std::min(common.minimum, minimum);
        common.maximum = common.empty ? maximum : std::max(common.maximum, maximum);
        common.mean += (own.mean * factor - common.mean) / ++count;
        common.empty = false;
    }
    return common;
}

RecordWidget::ShownRange RecordWidget::shownRange(int slot) const
{
    ShownRange range;
    Slot *item = slotAt(slot);
    if (item == nullptr)
        return range;

    double lower = _amplMin;
    double upper = _amplMax;
    double offset = 0.5 * lower + 0.5 * upper;
    if (_amplAutoScale) {
        const bool overlaid = _drawMode == Overlaid && isSlotDrawn(slot);
        const double factor = overlaid ? 1 / std::abs(shownFactor(slot)) : 1.0;
        const Extrema extrema = overlaid ? commonExtrema() : extremaOf(*item);
        if (extrema.empty)
            return range;
        lower = extrema.minimum * factor;
        upper = extrema.maximum * factor;
        offset = extrema.mean * factor;
        const double margin = Margin * 0.5 * (upper - lower);
        lower -= margin;
        upper += margin;
    }
    // A constant trace runs through the middle of a range that its size suggests.
    if (lower == upper) {
        const double half = lower != 0 ? 0.1 * std::abs(lower) : 1.0;
        lower -= half;
        upper += half;
    }
    range.empty = false;
    range.offset = offset;
    range.lower = offset + (lower - offset) / _magnification;
    range.upper = offset + (upper - offset) / _magnification;
    return range;
}

QPair<double, double> RecordWidget::amplitudeRange(int slot) const
{
    const ShownRange range = shownRange(slot);
    if (range.empty)
        return {0.0, 0.0};
    if (!_amplAutoScale && _amplMin == _amplMax)
        return {_amplMin, _amplMax};
    return {range.lower, range.upper};
}

double RecordWidget::unmapAmplitude(int slot, int y) const
{
    const ShownRange range = shownRange(slot);
    const QRect area = slotRect(slot);
    if (area.height() < 2)
        return 0.5 * range.lower + 0.5 * range.upper;
    const double share = static_cast<double>(y - area.top()) / (area.height() - 1);
    return range.upper - share * (range.upper - range.lower);
}

int RecordWidget::mapAmplitude(int slot, double value) const
{
    constexpr double Limit = 1 << 30;
    const ShownRange range = shownRange(slot);
    const QRect area = slotRect(slot);
    const double share = (range.upper - value) / (range.upper - range.lower);
    if (std::isnan(share))
        return area.top() + area.height() / 2;
    return area.top() +
           static_cast<int>(std::lround(std::clamp(share * (area.height() - 1), -Limit, Limit)));
}

void RecordWidget::setAmplRange(double minimum, double maximum)
{
    if (!std::isfinite(minimum) || !std::isfinite(maximum))
        return;
    if (minimum == _amplMin && maximum == _amplMax)
        return;

    _amplMin = std::clamp(minimum, -AmplitudeLimit, AmplitudeLimit);
    _amplMax = std::clamp(maximum, -AmplitudeLimit, AmplitudeLimit);
    if (!_amplAutoScale)
        updateAll();
}

void RecordWidget::setAmplAutoScaleEnabled(bool enable)
{
    if (enable == _amplAutoScale)
        return;

    _amplAutoScale = enable;
    updateAll();
}

void RecordWidget::setMagnification(double magnification)
{
    if (!(magnification >= 1 / LargestMagnification) || !(magnification <= LargestMagnification) ||
        magnification == _magnification)
        return;

    _magnification = magnification;
    forgetExtrema();
    updateAll();
}

void RecordWidget::setNormalizationWindow(const Core::TimeWindow &window)
{
    if (window == _normalizationWindow)
        return;

    _normalizationWindow = window;
    forgetExtrema();
    if (_amplAutoScale)
        updateAll();
}

} // namespace Gui
} // namespace Tellarix
