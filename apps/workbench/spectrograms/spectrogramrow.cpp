// SPDX-License-Identifier: LGPL-3.0-or-later

#include "spectrogramrow.h"

#include <tellarix/core/records/recordsequence.h>
#include <tellarix/qt/scheme.h>

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

using namespace Tellarix;
using Core::Time;
using Core::TimeSpan;
using Core::TimeWindow;
using Norvu::Gui::SpectrogramAxis;
using Norvu::Gui::SpectrogramSettings;

namespace Workbench {

namespace {

constexpr int RowSlot = 0;
constexpr double LineContrast = 3;

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

SpectrogramRow::SpectrogramRow(QWidget *parent)
    : SpectrogramRecordWidget(parent), _pen(this, RowSlot)
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

// Place

void SpectrogramRow::setPlace(SpectrogramPlace place)
{
    if (place == _place)
        return;
    _place = place;
    update();
}

void SpectrogramRow::setBand(QWidget *band)
{
    _band = band;
    connect(band, SIGNAL(destroyed()), this, SIGNAL(pictureMoved()));
    update();
}

void SpectrogramRow::followBand()
{
    emit pictureMoved();
}

QRect SpectrogramRow::spectrogramRect() const
{
    const QRect canvas = canvasRect();
    if (!_band)
        return canvas;
    return QRect(canvas.left(), _band->y() - y(), canvas.width(), _band->height());
}

bool SpectrogramRow::areTracesShown() const
{
    return _place != SpectrogramPlace::Instead || !coversTraces();
}

bool SpectrogramRow::isInSight() const
{
    return !visibleRegion().isEmpty() || (_band && !_band->visibleRegion().isEmpty());
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
    updateHint();
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

/** Whether most of the traces in view have colours at their place. */
bool SpectrogramRow::coversTraces() const
{
    if (!_wanted || _band || _colors.gradient.isEmpty() || !isOfTheseRecords())
        return false;
    if (!_former.empty())
        return true;
    const TimeWindow data = plan().visibleData();
    const TimeWindow covered = spectrogramTimeWindow().overlap(data);
    return !covered.isEmpty() && 2 * covered.length().length() >= data.length().length();
}

/** Above the colours of small amplitudes a dark trace, or a light one, can't be seen. */
void SpectrogramRow::updateTracePen()
{
    if (!coversTraces())
        _pen.restore();
    else if (_place == SpectrogramPlace::Instead)
        _pen.set(Qt::NoPen);
    else
        _pen.set(penAbovePicture(quietColor(), samplesPerPixel()));
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

/** Nobody tells of a new filter while filtering is switched off. */
bool SpectrogramRow::isOfTheseRecords() const
{
    return isSpectrogramEnabled() && content() == _content;
}

bool SpectrogramRow::isUpToDate() const
{
    return isOfTheseRecords() && plan().fits(spectrogramColumnInterval());
}

bool SpectrogramRow::isComplete() const
{
    const TimeWindow data = plan().visibleData();
    return data.isEmpty() || (isUpToDate() && spectrogramTimeWindow().contains(data));
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

StretchPlan SpectrogramRow::plan() const
{
    const RecordSequence *records = source();
    return StretchPlan({{leftTime(), rightTime()},
                        records ? records->timeWindow() : TimeWindow(),
                        samplingFrequency(),
                        samplesPerPixel(),
                        _axis});
}

double SpectrogramRow::memoryNeeded() const
{
    return isComplete() ? 0 : plan().memory();
}

bool SpectrogramRow::isOversized() const
{
    return isUpToDate() && plan().isExceededBy(static_cast<double>(spectrogramSize()));
}

bool SpectrogramRow::workOut(size_t memory)
{
    if (!_wanted || isComplete() || samplingFrequency() <= 0)
        return false;

    const double needed = memoryNeeded();
    if (needed > static_cast<double>(memory)) {
        setSpectrogramEnabled(false);
        _former.clear();
        setMemoryHint(tr("Zoom in for the spectrogram: this much of it takes %1 GB of memory")
                          .arg(QString::number(needed / 1E9, 'f', 1)));
        _memoryWindow = {leftTime(), rightTime()};
        return false;
    }
    if (needed + static_cast<double>(memoryUsed()) > static_cast<double>(memory))
        forgetFormer();
    const StretchPlan plan = this->plan();
    setMemoryHint(QString());
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

void SpectrogramRow::goOn(const StretchPlan &plan)
{
    setSpectrogramTimeWindow(plan.withNextPiece(spectrogramTimeWindow()));
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

void SpectrogramRow::beginAnew(const StretchPlan &plan)
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

void SpectrogramRow::release()
{
    setMemoryHint(QString());
    _former.clear();
    setSpectrogramEnabled(false);
}

void SpectrogramRow::setMemoryHint(const QString &hint)
{
    if (hint == _memoryHint)
        return;
    _memoryHint = hint;
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
    const QRect picture = spectrogramRect();
    painter.fillRect(QRect(mapTime(alignment()), picture.top(), 1, picture.height()) & picture,
                     color);
}

/** Why there is nothing to be seen, if something is missing. */
void SpectrogramRow::updateHint()
{
    const TimeWindow visible(leftTime(), rightTime());
    const bool isForThis = _memoryWindow.startTime() == visible.startTime() &&
                           _memoryWindow.endTime() == visible.endTime();
    QString text, action;
    if (!_wanted) {
        text.clear();
    } else if (records(RowSlot) && !source() && !filter()) {
        text = tr("No spectrogram: the traces have no filter");
    } else if (isForThis && !_memoryHint.isEmpty()) {
        text = _memoryHint;
    } else if (hasPicture() && isOfTheseRecords()) {
        const QPair<double, double> range = amplitudeRange();
        if (_colors.isAbove(range.second))
            text = tr("The spectrogram lies below the range of the colours.");
        else if (_colors.isBelow(range.first))
            text = tr("The spectrogram lies above the range of the colours.");
        if (!text.isEmpty())
            action = tr("Fit the range");
    }
    _hint.setText(text, action);
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

void SpectrogramRow::paintBand(QPainter &painter)
{
    painter.fillRect(spectrogramRect(), Gui::Scheme::Current().records.background);
    if (isSpectrogramDisplayEnabled())
        drawSpectrogram(painter);
}

/** Whatever is another picture paints the row, from where the band is told. */
void SpectrogramRow::customPaintTracesBegin(QPainter &painter)
{
    updateTracePen(); // The view has moved, or more of it has been worked out.
    if (_band)
        _band->update();
    else
        SpectrogramRecordWidget::customPaintTracesBegin(painter);
}

void SpectrogramRow::customPaintTracesEnd(QPainter &painter)
{
    updateHint();
    _hint.paint(painter, canvasRect(), *this);
}

void SpectrogramRow::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && _hint.isActionAt(event->pos()))
        emit rangeFitRequested();
    else
        SpectrogramRecordWidget::mousePressEvent(event);
}

void SpectrogramRow::mouseMoveEvent(QMouseEvent *event)
{
    SpectrogramRecordWidget::mouseMoveEvent(event);
    if (_hint.isActionAt(event->pos()))
        setCursor(Qt::PointingHandCursor);
    else if (cursor().shape() == Qt::PointingHandCursor)
        unsetCursor();
}

/** Traces are drawn elsewhere in the meantime, without the picture. */
void SpectrogramRow::hideEvent(QHideEvent *event)
{
    _pen.restore();
    SpectrogramRecordWidget::hideEvent(event);
}

} // namespace Workbench
