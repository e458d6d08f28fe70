// SPDX-License-Identifier: LGPL-3.0-or-later

#include "spectrogramscale.h"

#include <QEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <iterator>

using Norvu::Gui::RoundTick;
using Norvu::Gui::SpectrogramAxis;
using Tellarix::Gui::Gradient;

namespace Workbench {

namespace {

constexpr int BarDistance = 14;
constexpr int RightMargin = 2;
constexpr int FrameWidth = 1;
constexpr double FrameAlpha = 0.4;
constexpr char LeastPeriod[] = "0.05";
/** Room for most amplitudes, so that the width stays when the range follows the data. */
constexpr char LeastAmplitude[] = "2.5e-7";

QColor faint(QColor color)
{
    color.setAlphaF(FrameAlpha);
    return color;
}

int barWidth(const QFontMetrics &metrics)
{
    return std::max(8, metrics.height() * 3 / 4);
}

QString rangeText(const QString &form, double from, double to, const QString &unit)
{
    return form.arg(QString::number(std::min(from, to), 'g', 3),
                    QString::number(std::max(from, to), 'g', 3), unit);
}

} // namespace

double ColorScale::length() const
{
    if (!discrete || gradient.size() < 2)
        return 1;
    const double last = gradient.lastKey();
    const double previous = std::prev(gradient.constEnd(), 2).key();
    return 1 + (last - previous) / (last - gradient.firstKey());
}

QVector<RoundTick> ColorScale::ticks(double minimumDistance) const
{
    if (gradient.isEmpty() || !(lower < upper))
        return {};
    const double end = logarithmic ? lower * std::pow(upper / lower, length())
                                   : lower + length() * (upper - lower);
    return Norvu::Gui::roundTicks(lower, end, logarithmic, minimumDistance);
}

QImage ColorScale::image(int height) const
{
    if (gradient.isEmpty() || height < 1)
        return QImage();

    QImage result(1, height, QImage::Format_ARGB32);
    const double span = length() * (gradient.lastKey() - gradient.firstKey());
    for (int i = 0; i < height; ++i) {
        const double share = static_cast<double>(i) / std::max(1, height - 1);
        const QColor color = gradient.colorAt(gradient.firstKey() + share * span, discrete);
        result.setPixel(0, height - 1 - i, color.rgba());
    }
    return result;
}

SpectrogramScale::SpectrogramScale(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
}

void SpectrogramScale::setAxis(const SpectrogramAxis &axis)
{
    _axis = axis;
    if (axis.isEmpty())
        _axisColumn.setContent(nullptr, QString(), QString());
    else
        _axisColumn.setContent([axis](double distance) { return axis.ticks(distance); },
                               axis.hasPeriods() ? tr("Period (s)") : tr("Frequency (Hz)"),
                               axis.unit());
    changeContent();
}

void SpectrogramScale::setColors(const Gradient &gradient, bool discrete, double lower,
                                 double upper, bool logarithmic, const QString &unit)
{
    const ColorScale colors{gradient, discrete, lower, upper, logarithmic};
    _colors = colors;
    _amplitudeUnit = unit;
    _colorColumn.setContent([colors](double distance) { return colors.ticks(distance); }, unit,
                            unit);
    changeContent();
}

void SpectrogramScale::setColorBarVisible(bool visible)
{
    if (visible == _colorBarVisible)
        return;
    _colorBarVisible = visible;
    changeContent();
}

void SpectrogramScale::setPictureArea(int top, int height)
{
    if (top == _pictureTop && height == _pictureHeight)
        return;
    _pictureTop = top;
    _pictureHeight = height;
    arrange();
}

bool SpectrogramScale::hasColorBar() const
{
    return _colorBarVisible && !_colors.gradient.isEmpty();
}

QRect SpectrogramScale::pictureRect() const
{
    return _pictureHeight < 1 ? rect() : QRect(0, _pictureTop, width(), _pictureHeight);
}

int SpectrogramScale::barLeft() const
{
    return _axisWidth + BarDistance;
}

QRect SpectrogramScale::colorBarRect() const
{
    const QRect area = pictureRect();
    const QRect bar(barLeft(), area.top(), barWidth(fontMetrics()), area.height());
    return hasColorBar() ? bar.adjusted(FrameWidth, FrameWidth, -FrameWidth, -FrameWidth) : QRect();
}

QSize SpectrogramScale::sizeHint() const
{
    return {_contentWidth, 4 * fontMetrics().height()};
}

QSize SpectrogramScale::minimumSizeHint() const
{
    return {_contentWidth, fontMetrics().height()};
}

void SpectrogramScale::changeContent()
{
    updateToolTip();
    updateWidth();
    arrange();
}

void SpectrogramScale::updateToolTip()
{
    QStringList lines;
    if (!_axis.isEmpty())
        lines << rangeText(_axis.hasPeriods() ? tr("Periods from %1 to %2 %3")
                                              : tr("Frequencies from %1 to %2 %3"),
                           _axis.firstValue(), _axis.lastValue(), _axis.unit());
    if (hasColorBar() && _colors.lower < _colors.upper)
        lines << rangeText(tr("Amplitudes from %1 to %2 %3"), _colors.lower, _colors.upper,
                           _amplitudeUnit);
    setToolTip(lines.join('\n'));
}

/** Rows are laid out anew only if they have to: colours may follow live data. */
void SpectrogramScale::updateWidth()
{
    _axisWidth = _axis.isEmpty() ? 0 : _axisColumn.preferredWidth(font(), LeastPeriod);
    _colorWidth = _colorColumn.preferredWidth(font(), LeastAmplitude);
    int width = _axisWidth;
    if (hasColorBar())
        width += BarDistance + barWidth(fontMetrics()) + _colorWidth;
    if (width > 0)
        width += RightMargin;
    if (width == _contentWidth)
        return;
    _contentWidth = width;
    updateGeometry();
}

void SpectrogramScale::arrange()
{
    const QRect area = pictureRect();
    const double bottom = area.top() + area.height();
    const double maximumY = height();
    _axisColumn.arrange(font(), {bottom, static_cast<double>(area.height()), maximumY}, _axisWidth);
    // The first and the last row of the bar are the ends of its range.
    const double barLength = area.height() - 2 * FrameWidth - 1;
    _colorColumn.arrange(font(), {bottom - FrameWidth, barLength, maximumY}, _colorWidth);
    update();
}

void SpectrogramScale::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    arrange();
}

void SpectrogramScale::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        updateWidth();
        arrange();
    }
    QWidget::changeEvent(event);
}

void SpectrogramScale::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    if (!_axis.isEmpty()) {
        drawBaseline(painter);
        _axisColumn.paint(painter, 0, devicePixelRatioF());
    }
    if (hasColorBar()) {
        drawColorBar(painter);
        const int right = barLeft() + barWidth(fontMetrics());
        _colorColumn.paint(painter, right, devicePixelRatioF());
    }
}

void SpectrogramScale::drawBaseline(QPainter &painter) const
{
    const QRect area = pictureRect();
    painter.fillRect(QRectF(0, area.top(), 1 / devicePixelRatioF(), area.height()),
                     faint(palette().color(foregroundRole())));
}

/** On the background of traces, which shows through colours that are not opaque. */
void SpectrogramScale::drawColorBar(QPainter &painter) const
{
    const QRect bar = colorBarRect();
    const QRect frame = bar.adjusted(-FrameWidth, -FrameWidth, FrameWidth, FrameWidth);
    painter.fillRect(frame, palette().color(QPalette::Base));
    painter.fillRect(frame, faint(palette().color(foregroundRole())));
    painter.fillRect(bar, palette().color(QPalette::Base));
    const int rows = static_cast<int>(std::lround(bar.height() * devicePixelRatioF()));
    painter.drawImage(bar, _colors.image(rows));
}

} // namespace Workbench
