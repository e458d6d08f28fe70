// SPDX-License-Identifier: LGPL-3.0-or-later

#include "scalecolumn.h"

#include <tellarix/qt/scheme.h>

#include <QFontMetricsF>
#include <QPainter>
#include <QtMath>

#include <algorithm>

using Norvu::Gui::RoundTick;
using Tellarix::Gui::RulerLabel;
using Tellarix::Gui::Scheme;

namespace Workbench {

namespace {

/** Pixels between numbers that stand as close as they may. */
constexpr double LeastGap = 2;
/** Heights of a number from one to the next, if that leaves enough of them, and else. */
constexpr double Comfortable = 2.5;
constexpr double Readable = 1.5;
constexpr int EnoughLabels = 4;
constexpr double TextGap = 3;
constexpr double TitleGap = 4;
constexpr int SmallestFont = 6;
/** Height of the scales whose numbers preferredWidth() measures, in numbers. */
constexpr double MeasuredNumbers = 24;

double textOffset()
{
    return Scheme::Current().rulers.majorTick + TextGap;
}

/** The ink of numbers, from their baseline. */
QRectF digitRect(const QFont &font)
{
    return QFontMetricsF(font).tightBoundingRect(QStringLiteral("0123456789"));
}

/** The font, or a smaller one of which two numbers stand above each other. */
QFont fittingFont(QFont font, double height)
{
    const double wanted = 0.5 * (height - LeastGap);
    int size = QFontInfo(font).pixelSize();
    while (digitRect(font).height() > wanted && size > SmallestFont)
        font.setPixelSize(--size);
    return font;
}

double breadthOf(double ratio)
{
    return std::max(1.0, std::floor(ratio)) / ratio;
}

double snapped(double y, double ratio)
{
    return std::round(y * ratio) / ratio;
}

} // namespace

void ScaleColumn::setContent(const TickSource &ticks, const QString &title, const QString &unit)
{
    _source = ticks;
    _title = title;
    _unit = unit;
}

int ScaleColumn::preferredWidth(const QFont &font, const QString &leastText) const
{
    const QFontMetricsF metrics(font);
    double text = metrics.horizontalAdvance(leastText);
    if (_source) {
        for (const RoundTick &tick : _source(1 / MeasuredNumbers))
            text = std::max(text, metrics.horizontalAdvance(tick.text));
    }
    const double title = _title.isEmpty() ? 0 : TitleGap + metrics.height();
    return qCeil(textOffset() + text + title);
}

void ScaleColumn::arrange(const QFont &font, const ScaleSpan &span, int width)
{
    _span = span;
    _width = width;
    _font = fittingFont(font, span.maximumY);
    _digits = digitRect(_font);
    _marks.clear();
    _labels.clear();
    if (!_source || span.length <= 0)
        return;

    const double height = _digits.height() / span.length;
    if (placeLabels(Comfortable * height) >= EnoughLabels)
        return;
    if (Readable * height < 0.5 && placeLabels(Readable * height) > 1)
        return;
    // Texts are moved inwards at the ends, so that those chosen need not fit: then less is chosen.
    constexpr double Growth = 1.2;
    double distance = height + LeastGap / span.length;
    while (placeLabels(distance) < 2 && distance < 1)
        distance *= Growth;
}

/** Gives the number of those that have found room. */
int ScaleColumn::placeLabels(double distance)
{
    const QVector<RoundTick> ticks = _source(distance);
    QVector<RulerLabel> wanted;
    for (const RoundTick &tick : ticks) {
        if (tick.isMajor())
            wanted.append({tick.text, yOf(tick.position), _digits.height(), 0});
    }
    _labels = Tellarix::Gui::layoutLabels(wanted, _span.maximumY, LeastGap);
    std::sort(_labels.begin(), _labels.end(),
              [](const RulerLabel &a, const RulerLabel &b) { return a.start < b.start; });

    _marks.clear();
    for (const RoundTick &tick : ticks) {
        const bool isLabelled =
            std::any_of(_labels.begin(), _labels.end(), [&](const RulerLabel &label) {
                return tick.isMajor() && label.position == yOf(tick.position);
            });
        _marks.append({tick.position, isLabelled});
    }
    return _labels.size();
}

/** Middle of a tick. */
double ScaleColumn::yOf(double position) const
{
    return _span.bottom - 0.5 - position * _span.length;
}

void ScaleColumn::paint(QPainter &painter, double x, double ratio) const
{
    painter.save();
    painter.setFont(_font);
    paintTicks(painter, x, ratio);
    paintLabels(painter, x, ratio);
    paintTitle(painter, x, ratio);
    painter.restore();
}

void ScaleColumn::paintTicks(QPainter &painter, double x, double ratio) const
{
    const auto &rulers = Scheme::Current().rulers;
    const double breadth = breadthOf(ratio);
    for (const Mark &mark : _marks) {
        const double y = _span.bottom - breadth - snapped(mark.position * _span.length, ratio);
        const int length = mark.isLabelled ? rulers.majorTick : rulers.minorTick;
        painter.fillRect(QRectF(x, std::max(y, 0.0), length, breadth), painter.pen().color());
    }
}

void ScaleColumn::paintLabels(QPainter &painter, double x, double ratio) const
{
    for (const RulerLabel &label : _labels) {
        const double baseline = snapped(label.start - _digits.top(), ratio);
        painter.drawText(QPointF(x + textOffset(), baseline), label.text);
    }
}

void ScaleColumn::paintTitle(QPainter &painter, double x, double ratio) const
{
    if (_title.isEmpty() || _labels.isEmpty())
        return;

    const QFontMetricsF metrics(_font);
    const double length = metrics.horizontalAdvance(_title);
    if (length <= std::min(_span.length, _span.maximumY)) {
        const double middle = _span.bottom - 0.5 * _span.length;
        const double begin = qBound(length, middle + 0.5 * length, _span.maximumY);
        painter.translate(snapped(x + _width - metrics.descent(), ratio), snapped(begin, ratio));
        painter.rotate(-90);
        painter.drawText(QPointF(0, 0), _title);
        return;
    }
    const RulerLabel &top = _labels.first();
    const QString text = top.text + QChar(QChar::Nbsp) + _unit;
    if (textOffset() + metrics.horizontalAdvance(text) > _width)
        return;
    const double beforeUnit = metrics.horizontalAdvance(text) - metrics.horizontalAdvance(_unit);
    painter.drawText(
        QPointF(x + textOffset() + beforeUnit, snapped(top.start - _digits.top(), ratio)), _unit);
}

} // namespace Workbench
