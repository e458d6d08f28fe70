// SPDX-License-Identifier: LGPL-3.0-or-later

#include "spectrogramrow.h"

#include <tellarix/core/records/recordsequence.h>
#include <tellarix/qt/scheme.h>

#include <QPainter>

#include <algorithm>
#include <utility>

using namespace Tellarix;
using Core::Time;
using Core::TimeSpan;
using Core::TimeWindow;
using Norvu::Gui::SpectrogramAxis;
using Norvu::Gui::SpectrogramSettings;

namespace Workbench {

namespace {

constexpr int RowSlot = 0;
/** Values that are worked out at once: some milliseconds, and tens where memory is slow. */
constexpr double PieceValues = 4E6;
/** Longest periods of the axis until the filters have forgotten that there was nothing before. */
constexpr double RunIn = 3;
/** What is worked out beside the visible stretch on either side, in parts of it. */
constexpr double Margin = 0.25;
/** Columns that make up a pixel, from which on coarser ones are made. */
constexpr int FinestColumns = 8;
constexpr int LongestInterval = 1 << 20;
/** Panning makes a stretch longer until it has so many times the length that is wanted. */
constexpr double LongestStretch = 3;
/** Memory of a stretch in parts of what the wanted one takes, from which on it is a waste. */
constexpr double Oversized = 1.5;
constexpr int PenAlpha = 150;
constexpr double LineContrast = 3;
constexpr int HintPadding = 6;

double longestPeriod(const SpectrogramSettings &axis)
{
    return axis.mode == SpectrogramSettings::Periods ? std::max(axis.lower, axis.upper)
                                                     : 1 / std::min(axis.lower, axis.upper);
}

/** @p color as it looks above @p background. */
QColor blended(const QColor &color, const QColor &background)
{
    const double share = color.alphaF();
    const auto mix = [share](double above, double below) {
        return above * share + below * (1 - share);
    };
    return QColor::fromRgbF(mix(color.redF(), background.redF()),
                            mix(color.greenF(), background.greenF()),
                            mix(color.blueF(), background.blueF()));
}

} // namespace

SpectrogramRow::SpectrogramRow(QWidget *parent) : SpectrogramRecordWidget(parent)
{
    _axis.logarithmic = false;
    setSpectrogramSlot(RowSlot);
}

void SpectrogramRow::setWanted(bool wanted)
{
    if (wanted == _wanted)
        return;
    _wanted = wanted;
    if (!wanted)
        release();
    update();
    emit wantedChanged();
}

void SpectrogramRow::setAxis(const SpectrogramSettings &settings)
{
    release();
    _axis = settings;
    setSpectrogramSettings(settings);
    emit axisChanged();
}

void SpectrogramRow::setInFront(bool inFront)
{
    _inFront = inFront;
    setDrawSpectrogramInFront(inFront);
}

// Colours

void SpectrogramRow::setColors(const AmplitudeColors &colors)
{
    if (colors == _colors)
        return;
    _colors = colors;
    applyColors();
}

/** Colours are of amplitudes in the unit, pictures of samples. */
void SpectrogramRow::applyColors()
{
    setColorLUT(_colors.fillTable(_table, unitFactor()) ? &_table : nullptr);
    for (SpectrogramItem &item : _former)
        item = {item.spectrogram, QImage(), -1, 0};
    emit colorsChanged();
}

void SpectrogramRow::followUnit()
{
    applyColors();
    emit amplitudeRangeChanged();
}

/** What the picture looks like where amplitudes are small. */
QColor SpectrogramRow::quietColor() const
{
    const QColor base = palette().color(QPalette::Base);
    return _colors.gradient.isEmpty() ? base : blended(_colors.gradient.first().first, base);
}

/** Whether most of the traces in view stand above colours. */
bool SpectrogramRow::coversTraces() const
{
    if (!_wanted || _inFront || _colors.gradient.isEmpty() || !isOfTheseRecords())
        return false;
    if (!_former.empty())
        return true;
    const TimeWindow data = visibleData();
    const TimeWindow covered = spectrogramTimeWindow().overlap(data);
    return !covered.isEmpty() && 2 * covered.length().length() >= data.length().length();
}

/** Above the colours of small amplitudes a dark trace, or a light one, can't be seen. */
void SpectrogramRow::updateTracePen()
{
    if (!coversTraces()) {
        restorePen();
        return;
    }
    const QColor background = quietColor();
    const bool isDark =
        Gui::contrastRatio(Qt::white, background) > Gui::contrastRatio(Qt::black, background);
    QColor color(isDark ? Qt::white : Qt::black);
    color.setAlpha(PenAlpha);
    QPen pen(color, Gui::Scheme::Current().records.lineWidth);
    pen.setCosmetic(true);
    if (recordPen(RowSlot) == pen)
        return;
    if (!_hasPictureColor) {
        const QPen before = recordPen(RowSlot);
        removeRecordPen(RowSlot);
        if (before != recordPen(RowSlot))
            _ownPen = before;
    }
    _hasPictureColor = true;
    setRecordPen(RowSlot, pen);
}

/** Gives the traces the pen back that they had before there was a picture. */
void SpectrogramRow::restorePen()
{
    if (!_hasPictureColor)
        return;
    _hasPictureColor = false;
    removeRecordPen(RowSlot);
    if (const auto pen = std::exchange(_ownPen, std::nullopt))
        setRecordPen(RowSlot, *pen);
}

double SpectrogramRow::unitFactor() const
{
    const double *scale = recordScale(RowSlot);
    return scale && *scale > 0 ? *scale : 1;
}

QString SpectrogramRow::unit() const
{
    const QString unit = recordUnit(RowSlot);
    return unit.isEmpty() ? tr("counts") : unit;
}

QPair<double, double> SpectrogramRow::amplitudeRange() const
{
    QPair<double, double> range = spectrogramRange();
    if (!_former.empty()) {
        const bool isAlone = spectrogramSize() == 0;
        range.first = isAlone ? _formerRange.first : std::min(range.first, _formerRange.first);
        range.second = std::max(range.second, _formerRange.second);
    }
    return {range.first * unitFactor(), range.second * unitFactor()};
}

QString SpectrogramRow::spectrogramText(const QPoint &point) const
{
    double position = 0;
    double amplitude = 0;
    if (!_wanted || !spectrogramAt(point, &position, &amplitude))
        return QString();
    const SpectrogramAxis axis(_axis);
    const QString text = _axis.mode == SpectrogramSettings::Periods ? tr("period %1 s: %2 %3")
                                                                    : tr("frequency %1 Hz: %2 %3");
    return text.arg(QString::number(axis.valueAt(position), 'g', 3),
                    QString::number(amplitude * unitFactor(), 'g', 4), unit());
}

// Working out

const RecordSequence *SpectrogramRow::source() const
{
    return spectrogramRecords(RowSlot);
}

/** What there is of the visible stretch; may be empty. */
TimeWindow SpectrogramRow::visibleData() const
{
    const RecordSequence *records = source();
    if (!records || records->isEmpty())
        return TimeWindow();
    return records->timeWindow().overlap(TimeWindow(leftTime(), rightTime()));
}

/** Nobody tells of a new filter while filtering is switched off. */
bool SpectrogramRow::isOfTheseRecords() const
{
    return isSpectrogramEnabled() && content() == _content;
}

bool SpectrogramRow::isUpToDate() const
{
    return isOfTheseRecords() && hasFittingColumns();
}

bool SpectrogramRow::isComplete() const
{
    const TimeWindow data = visibleData();
    return data.isEmpty() || (isUpToDate() && spectrogramTimeWindow().contains(data));
}

/** The visible stretch, some more to pan into, and what the filters need to run in. Behind the
 *  data it goes on, for records that arrive live. */
TimeWindow SpectrogramRow::wantedStretch() const
{
    const TimeSpan margin((rightTime() - leftTime()).length() * Margin);
    const Time start = leftTime() - margin - TimeSpan(RunIn * longestPeriod(_axis));
    return {std::max(start, source()->timeWindow().startTime()), rightTime() + margin};
}

/** Of the first record that has one, 0 without any. */
double SpectrogramRow::samplingFrequency() const
{
    const RecordSequence *records = source();
    if (!records)
        return 0;
    const auto found = std::find_if(records->begin(), records->end(),
                                    [](const RecordCPtr &record) { return record->hasEndTime(); });
    return found == records->end() ? 0 : (*found)->samplingFrequency();
}

double SpectrogramRow::samplesPerPixel() const
{
    return samplingFrequency() / (timeScale() * devicePixelRatioF());
}

/** Samples of a column, of which one or two make up a pixel. */
int SpectrogramRow::wantedInterval() const
{
    int interval = 1;
    while (interval < LongestInterval && 2 * interval <= samplesPerPixel())
        interval *= 2;
    return interval;
}

/** Whether columns are fine enough for the pixels, and not so fine that they are a waste. */
bool SpectrogramRow::hasFittingColumns() const
{
    const int interval = spectrogramColumnInterval();
    const int wanted = wantedInterval();
    return interval <= wanted && wanted < FinestColumns * interval;
}

/** Bytes that the wanted stretch takes. */
double SpectrogramRow::stretchMemory() const
{
    const TimeWindow data = source()->timeWindow().overlap(wantedStretch());
    return data.isEmpty() ? 0
                          : data.length().length() * samplingFrequency() / wantedInterval() *
                                _axis.bands * sizeof(float);
}

double SpectrogramRow::memoryNeeded() const
{
    return isComplete() ? 0 : stretchMemory();
}

bool SpectrogramRow::isOversized() const
{
    return isUpToDate() && static_cast<double>(spectrogramSize()) > Oversized * stretchMemory();
}

TimeSpan SpectrogramRow::pieceLength() const
{
    return TimeSpan(std::max(1.0, PieceValues / (samplingFrequency() * _axis.bands)));
}

bool SpectrogramRow::workOut(size_t memory)
{
    if (!_wanted || isComplete() || samplingFrequency() <= 0)
        return false;

    const double needed = memoryNeeded();
    if (needed > static_cast<double>(memory)) {
        setSpectrogramEnabled(false);
        _former.clear();
        setHint(tr("Zoom in for the spectrogram: this much of it takes %1 GB of memory")
                    .arg(QString::number(needed / 1E9, 'f', 1)));
        _hintWindow = {leftTime(), rightTime()};
        return false;
    }
    if (needed + static_cast<double>(memoryUsed()) > static_cast<double>(memory))
        forgetFormer();
    const TimeWindow stretch = wantedStretch();
    setHint(QString());
    if (canGoOn(stretch))
        goOn(stretch);
    else
        beginAnew(stretch);
    if (isComplete()) {
        _hasBeenComplete = true;
        _former.clear();
    }
    emit amplitudeRangeChanged();
    return true;
}

bool SpectrogramRow::canGoOn(const TimeWindow &stretch) const
{
    const TimeWindow done = spectrogramTimeWindow();
    return isUpToDate() && done.startTime() <= visibleData().startTime() &&
           done.endTime() >= stretch.startTime() &&
           (stretch.endTime() - done.startTime()).length() <=
               LongestStretch * stretch.length().length();
}

void SpectrogramRow::goOn(const TimeWindow &stretch)
{
    const TimeWindow done = spectrogramTimeWindow();
    const Time next = done.endTime() + pieceLength();
    const Time dataEnd = source()->timeWindow().endTime();
    setSpectrogramTimeWindow(
        {done.startTime(), next < dataEnd ? std::min(next, stretch.endTime()) : stretch.endTime()});
}

/** A zoom asks for other columns of the same records: until there are enough of them the old ones
 *  are better than nothing. */
void SpectrogramRow::keepFormer()
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
void SpectrogramRow::forgetFormer()
{
    _former.clear();
    _hasBeenComplete = false;
}

void SpectrogramRow::beginAnew(const TimeWindow &stretch)
{
    keepFormer();
    setSpectrogramEnabled(false);
    _content = content();
    setSpectrogramColumnInterval(wantedInterval());
    setSpectrogramTimeWindow({stretch.startTime(), stretch.startTime()});
    setSpectrogramEnabled(true);
    goOn(stretch);
}

void SpectrogramRow::release()
{
    setHint(QString());
    _former.clear();
    setSpectrogramEnabled(false);
}

void SpectrogramRow::setHint(const QString &hint)
{
    if (hint == _hint)
        return;
    _hint = hint;
    update();
}

// Records

bool SpectrogramRow::Content::operator==(const Content &other) const
{
    return first == other.first && last == other.last && count == other.count;
}

SpectrogramRow::Content SpectrogramRow::content() const
{
    const RecordSequence *records = source();
    if (!records || records->isEmpty())
        return Content();
    return {records->front(), records->back(), records->size()};
}

void SpectrogramRow::fed(int slot, const Record *record)
{
    const QPair<double, double> before = spectrogramRange();
    SpectrogramRecordWidget::fed(slot, record);
    if (slot != RowSlot || !isSpectrogramEnabled())
        return;
    _content = content();
    if (spectrogramRange() != before)
        emit amplitudeRangeChanged();
}

/** Other records are worked out piece by piece, as those before. When a filter is switched on or
 *  off, the raw ones stay what they were, and what was made of them too. */
void SpectrogramRow::changedRecords(int slot, RecordSequence *)
{
    if (slot != RowSlot || content() == _content)
        return;
    release();
    update();
    if (_wanted)
        emit amplitudeRangeChanged();
}

// Painting

/** The picture covers the grid, of which the time that rows are aligned to is missed. */
void SpectrogramRow::drawAlignment(QPainter &painter) const
{
    if (!alignment().valid() || !hasPicture())
        return;
    const QColor color =
        Gui::readableColor(Gui::Scheme::Current().records.alignment, quietColor(), LineContrast);
    painter.fillRect(QRect(mapTime(alignment()), 0, 1, height()) & canvasRect(), color);
}

/** Why there is nothing to be seen; empty if nothing is missing. */
QString SpectrogramRow::hint() const
{
    if (records(RowSlot) && !source() && !filter())
        return tr("No spectrogram: the traces have no filter");
    const bool isForThis =
        _hintWindow.startTime() == leftTime() && _hintWindow.endTime() == rightTime();
    return isForThis ? _hint : QString();
}

/** Above the traces, so that it can be read, and in a corner, so that they can be. */
void SpectrogramRow::drawHint(QPainter &painter) const
{
    const QRect room = canvasRect().adjusted(HintPadding, 0, -HintPadding, -1);
    const QString text = painter.fontMetrics().elidedText(hint(), Qt::ElideRight, room.width());
    if (!_wanted || text.isEmpty())
        return;
    const QRect area = painter.boundingRect(room, Qt::AlignRight | Qt::AlignBottom, text);
    painter.fillRect(area.adjusted(-HintPadding, 0, HintPadding, 0),
                     palette().color(backgroundRole()));
    painter.setPen(palette().color(foregroundRole()));
    painter.drawText(area, Qt::AlignCenter, text);
}

void SpectrogramRow::drawSpectrogram(QPainter &painter)
{
    if (!_wanted)
        return;
    _items.swap(_former);
    SpectrogramRecordWidget::drawSpectrogram(painter);
    _items.swap(_former);
    SpectrogramRecordWidget::drawSpectrogram(painter);
    drawAlignment(painter);
    if (!isComplete())
        emit incomplete();
}

void SpectrogramRow::customPaintTracesBegin(QPainter &painter)
{
    updateTracePen(); // The view has moved, or more of it has been worked out.
    SpectrogramRecordWidget::customPaintTracesBegin(painter);
}

void SpectrogramRow::customPaintTracesEnd(QPainter &painter)
{
    SpectrogramRecordWidget::customPaintTracesEnd(painter);
    drawHint(painter);
}

/** Traces are drawn elsewhere in the meantime, without the picture. */
void SpectrogramRow::hideEvent(QHideEvent *event)
{
    restorePen();
    SpectrogramRecordWidget::hideEvent(event);
}

} // namespace Workbench
