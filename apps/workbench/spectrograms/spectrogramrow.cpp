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

SpectrogramRow::SpectrogramRow(QWidget *parent) : PiecewiseSpectrogram(parent), _pen(this, Slot)
{}

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
    forgetFormerImages();
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
    return isWanted() && !_band && !_colors.gradient.isEmpty() && showsMostData();
}

/** Above the colours of small amplitudes a dark trace, or a light one, can't be seen. */
void SpectrogramRow::updateTracePen()
{
    if (coversTraces() && areTracesShown())
        _pen.set(penAbovePicture(quietColor(), samplesPerPixel()));
    else
        _pen.restore();
    hideTraces(!areTracesShown());
}

/** With the traces goes their axis, and what else would stand for amplitudes. */
void SpectrogramRow::hideTraces(bool hide)
{
    if (hide == _hidesTraces)
        return;
    _hidesTraces = hide;
    setRecordVisible(Slot, !hide);
}

double SpectrogramRow::unitFactor() const
{
    const double *scale = recordScale(Slot);
    return scale && *scale > 0 ? *scale : 1;
}

QString SpectrogramRow::unit() const
{
    const QString unit = recordUnit(Slot);
    return unit.isEmpty() ? tr("counts") : unit;
}

QPair<double, double> SpectrogramRow::amplitudeRange() const
{
    const QPair<double, double> range = valueRange();
    return {range.first * unitFactor(), range.second * unitFactor()};
}

QString SpectrogramRow::spectrogramText(const QPoint &point) const
{
    double position = 0;
    double amplitude = 0;
    if (!isWanted() || !spectrogramAt(point, &position, &amplitude))
        return QString();
    const SpectrogramAxis scale(axis());
    const QString text = axis().mode == SpectrogramSettings::Periods ? tr("period %1 s: %2 %3")
                                                                     : tr("frequency %1 Hz: %2 %3");
    return text.arg(QString::number(scale.valueAt(position), 'g', 3),
                    QString::number(amplitude * unitFactor(), 'g', 4), unit());
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
    QString text, action;
    if (!isWanted()) {
        text.clear();
    } else if (records(Slot) && !source() && !filter()) {
        text = tr("No spectrogram: the traces have no filter");
    } else if (lackingMemory() > 0) {
        text = tr("Zoom in for the spectrogram: this much of it takes %1 GB of memory")
                   .arg(QString::number(lackingMemory() / 1E9, 'f', 1));
    } else if (hasPicture() && isOfTheseRecords()) {
        const double loudest = amplitudeRange().second;
        if (_colors.isAbove(loudest))
            text = tr("The spectrogram lies below the range of the colours.");
        else if (loudest > _colors.upper && _colors.isBelow(quietValue() * unitFactor()))
            text = tr("The spectrogram lies above the range of the colours.");
        if (!text.isEmpty())
            action = tr("Fit the range");
    }
    _hint.setText(text, action);
}

void SpectrogramRow::drawSpectrogram(QPainter &painter)
{
    PiecewiseSpectrogram::drawSpectrogram(painter);
    if (isWanted())
        drawAlignment(painter);
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
        PiecewiseSpectrogram::customPaintTracesBegin(painter);
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
        PiecewiseSpectrogram::mousePressEvent(event);
}

void SpectrogramRow::mouseMoveEvent(QMouseEvent *event)
{
    PiecewiseSpectrogram::mouseMoveEvent(event);
    if (_hint.isActionAt(event->pos()))
        setCursor(Qt::PointingHandCursor);
    else if (cursor().shape() == Qt::PointingHandCursor)
        unsetCursor();
}

/** Traces are drawn elsewhere in the meantime, without the picture. */
void SpectrogramRow::hideEvent(QHideEvent *event)
{
    _pen.restore();
    hideTraces(false);
    PiecewiseSpectrogram::hideEvent(event);
}

} // namespace Workbench
