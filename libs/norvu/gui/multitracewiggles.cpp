// SPDX-License-Identifier: LGPL-3.0-or-later

#include "multitracewiggles_p.h"

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/recordsequence.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace Norvu {
namespace Gui {

using Tellarix::Record;
using Tellarix::RecordSequence;
using Tellarix::SampleSummary;
using Tellarix::Core::TimeWindow;
using Tellarix::Gui::TraceBars;

namespace {

int wholeSamples(Tellarix::Core::TimeSpan span, double samplingFrequency)
{
    return span.usecs() > 0 ? static_cast<int>(span.length() * samplingFrequency) : 0;
}

/** Summary of the samples of a record in a window, from the one at or before its start. */
SampleSummary summaryIn(const Record *record, const TimeWindow &window)
{
    const int n = record->sampleCount();
    if (!window.valid())
        return record->summary();

    const TimeWindow covered = record->timeWindow();
    const double rate = record->samplingFrequency();
    const int first = wholeSamples(window.startTime() - covered.startTime(), rate);
    const int behind = wholeSamples(covered.endTime() - window.endTime(), rate);
    return record->data()->summary(first, n - behind);
}

/** What minmax() adds up. */
struct Statistics
{
    SampleSummary samples;
    double sum{0};
    int64_t divisor{0};

    void add(const SampleSummary &summary)
    {
        samples.add(summary);
        sum = samples.sum;
        divisor = samples.count;
    }

    /** Adds a record of which the mean takes the samples in a window of its own. */
    void add(const Record *record, const TimeWindow &window, const TimeWindow &offsetWindow)
    {
        samples.add(summaryIn(record, window));
        if (!offsetWindow.overlaps(record->timeWindow()))
            return;
        sum += summaryIn(record, offsetWindow).sum;
        divisor = samples.count;
    }
};

/** Calls @p whole(first, last) for runs of records inside of a window and @p cut(record) for those
 *  that reach over its ends. */
template <typename Whole, typename Cut>
void visitRecords(const RecordSequence &sequence, const TimeWindow &window, Whole whole, Cut cut)
{
    if (!window.valid()) {
        whole(0, sequence.size());
        return;
    }

    const auto single = [&](int index) {
        const Record *record = sequence.at(index);
        if (record->data() && window.overlaps(record->timeWindow()))
            cut(record);
    };
    const int firstWhole = sequence.firstStartingFrom(window.startTime());
    const int last = sequence.firstStartingFrom(window.endTime());
    const int lastWhole =
        std::max(firstWhole, std::min(last, sequence.firstEndingAfter(window.endTime())));
    for (int i = sequence.firstEndingAfter(window.startTime()); i < firstWhole; ++i)
        single(i);
    whole(firstWhole, lastWhole);
    for (int i = lastWhole; i < last; ++i)
        single(i);
}

/** The pixel of a point with time along x. */
QPoint uprightPixel(const QPoint &point, bool turned)
{
    return turned ? QPoint(point.y(), point.x()) : point;
}

/** Adds the pixels between a line of the trace and the line of the lobes at @p base. */
void addSegment(TraceBars &bars, const QPoint &from, const QPoint &to, int base)
{
    const int64_t run = to.x() - from.x();
    const int64_t rise = to.y() - from.y();
    for (int x = from.x(); x < to.x(); ++x) {
        const double center =
            from.y() + static_cast<double>((2 * (x - from.x()) + 1) * rise) / (2 * run);
        const auto i = static_cast<size_t>(x - bars.first);
        const auto edge = static_cast<int>(std::floor(center + 0.5));
        bars.low[i] = std::min(bars.low[i], std::min(edge, base));
        bars.high[i] = std::max(bars.high[i], std::max(edge, base) - 1);
    }
}

/** Pixels of a picture of lobes at most: larger ones of many rows would take too much memory. */
constexpr int MostPixels = 1 << 18;

QRectF boundsOf(const QVector<QPolygonF> &polygons)
{
    QRectF bounds;
    for (const QPolygonF &polygon : polygons)
        bounds |= polygon.boundingRect();
    return bounds;
}

} // namespace

TraceBars lobeBars(const QVector<QPolygon> &lobes, bool turned)
{
    TraceBars bars;
    if (lobes.isEmpty())
        return bars;

    const auto column = [&](const QPoint &point) { return uprightPixel(point, turned).x(); };
    int first = column(lobes.first().first());
    int last = first;
    for (const QPolygon &lobe : lobes) {
        first = std::min(first, column(lobe.first()));
        last = std::max(last, column(lobe.last()));
    }
    const int base = uprightPixel(lobes.first().first(), turned).y();
    bars.first = first;
    bars.low.assign(static_cast<size_t>(last - first), base);
    bars.high.assign(static_cast<size_t>(last - first), base - 1);
    for (const QPolygon &lobe : lobes) {
        QPoint previous = uprightPixel(lobe.first(), turned);
        for (const QPoint &point : lobe) {
            const QPoint pixel = uprightPixel(point, turned);
            addSegment(bars, previous, pixel, base);
            previous = pixel;
        }
    }
    return bars;
}

LobePicture pictureOf(const QVector<QPolygonF> &above, const QVector<QPolygonF> &below,
                      const QColor &aboveColor, const QColor &belowColor)
{
    const QRectF bounds = (boundsOf(above) | boundsOf(below)).adjusted(-1, -1, 1, 1);
    // Negated, so that bounds that are no numbers fail too.
    if (!(bounds.width() * bounds.height() <= MostPixels))
        return {};

    const QRect area = bounds.toAlignedRect();
    LobePicture picture{QImage(area.size(), QImage::Format_ARGB32_Premultiplied), area.topLeft()};
    picture.image.fill(Qt::transparent);
    QPainter painter(&picture.image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(-area.topLeft());
    fillLobes(painter, above, aboveColor);
    fillLobes(painter, below, belowColor);
    return picture;
}

void minmax(const RecordSequence *sequence, const TimeWindow &window, double &offset,
            double &minimum, double &maximum, const TimeWindow &offsetWindow)
{
    Statistics statistics;
    if (offsetWindow.valid()) {
        const auto add = [&](const Record *record) {
            statistics.add(record, window, offsetWindow);
        };
        const auto addAll = [&](int first, int last) {
            for (int i = first; i < last; ++i) {
                if (sequence->at(i)->data())
                    add(sequence->at(i));
            }
        };
        visitRecords(*sequence, window, addAll, add);
    } else {
        visitRecords(
            *sequence, window,
            [&](int first, int last) { statistics.add(sequence->recordSummary(first, last)); },
            [&](const Record *record) { statistics.add(summaryIn(record, window)); });
    }

    minimum = statistics.samples.minimum;
    maximum = statistics.samples.maximum;
    offset = statistics.sum / static_cast<double>(std::max<int64_t>(1, statistics.divisor));
}

} // namespace Gui
} // namespace Norvu
