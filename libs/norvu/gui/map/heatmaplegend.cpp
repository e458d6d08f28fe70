// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/map/heatmaplegend.h>

#include <QApplication>
#include <QFontMetrics>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace Norvu {
namespace Gui {
namespace Map {

namespace {

/** Room for a label, so that the outer two, which stand inside of the strip's ends, fit as well. */
int cellWidth(const QVector<StringAtPos> &labels)
{
    const auto narrower = [](const StringAtPos &a, const StringAtPos &b) {
        return a.width < b.width;
    };
    int cell = std::max_element(labels.begin(), labels.end(), narrower)->width;
    int half = cell / 2;
    if (labels.first().width > half) {
        half = labels.first().width;
        cell = 2 * half;
    }
    if (labels.last().width > half)
        cell = 2 * labels.last().width;
    return cell;
}

QRgb opaqueColor(const Tellarix::Gui::Gradient &gradient, double key)
{
    return gradient.colorAt(key, false).rgb();
}

} // namespace

QVector<StringAtPos> legendLabels(const Tellarix::Gui::Gradient &gradient, double min, double max,
                                  LegendScale scale)
{
    QVector<StringAtPos> labels;
    // Numbers at the stops need two of them: one stop alone has no scale.
    if (gradient.size() < 2)
        return labels;
    const double first = gradient.firstKey();
    const double span = gradient.lastKey() - first;
    if (!std::isfinite(span))
        return labels;

    for (auto stop = gradient.constBegin(); stop != gradient.constEnd(); ++stop) {
        const double t = (stop.key() - first) / span;
        const double value =
            scale == LegendScale::Linear ? t * (max - min) + min : min * std::pow(max / min, t);
        StringAtPos label;
        label.text = QString::number(value, 'f', 1);
        label.key = stop.key();
        labels.append(label);
    }
    return labels;
}

QSize placeLabels(QVector<StringAtPos> &labels, int height)
{
    const int gaps = labels.size() - 1;
    const int total = height * gaps / 2 + cellWidth(labels) * labels.size();
    const int step = total / gaps;
    for (int i = 0; i < labels.size(); ++i)
        labels[i].pos = height / 2 + i * step;
    return QSize(total + height, 9 * height / 2);
}

QImage legendStrip(const Tellarix::Gui::Gradient &gradient, const QVector<StringAtPos> &labels,
                   int height)
{
    const int left = labels.first().pos;
    QImage strip(labels.last().pos - left + 1, height, QImage::Format_ARGB32);
    const auto setColumn = [&](int x, QRgb color) {
        for (int y = 0; y < height; ++y)
            strip.setPixel(x, y, color);
    };
    for (int i = 0; i + 1 < labels.size(); ++i) {
        const StringAtPos &from = labels[i];
        const StringAtPos &to = labels[i + 1];
        const int width = to.pos - from.pos;
        for (int p = 0; p < width; ++p) {
            const double key = p * (to.key - from.key) / width + from.key;
            setColumn(from.pos - left + p, opaqueColor(gradient, key));
        }
    }
    setColumn(strip.width() - 1, opaqueColor(gradient, labels.last().key));
    return strip;
}

HeatMapLegend::HeatMapLegend(QObject *parent) : Legend(parent)
{
    setTitle(tr("Heatmap"));
    setAlignment(Qt::AlignLeft | Qt::AlignBottom);
}

void HeatMapLegend::setGradient(const Tellarix::Gui::Gradient *gradient, double min, double max,
                                LegendScale scale)
{
    if (gradient == _gradient && min == _min && max == _max && scale == _scale)
        return;

    _gradient = gradient;
    _min = min;
    _max = max;
    _scale = scale;
    _labels = gradient ? legendLabels(*gradient, min, max, scale) : QVector<StringAtPos>();
    if (!hasGradient()) {
        setEnabled(false);
        return;
    }

    setEnabled(true);
    const QFontMetrics metrics = QApplication::fontMetrics();
    for (StringAtPos &label : _labels)
        label.width = metrics.horizontalAdvance(label.text);
    const QSize size = placeLabels(_labels, metrics.height());
    _image = legendStrip(*gradient, _labels, metrics.height());
    setSize(size);
}

void HeatMapLegend::draw(const QRect &rect, QPainter &painter)
{
    if (!hasGradient())
        return;

    const int height = QApplication::fontMetrics().height();
    const int half = height / 2;
    const int top = rect.top() + half + height;
    drawHeader(rect, painter);
    painter.drawImage(rect.left() + _labels.first().pos, top + half + height, _image);
    for (int i = 0; i < _labels.size(); ++i) {
        drawLabel(i, rect.left(), top, painter);
        const int x = rect.left() + _labels[i].pos;
        painter.drawLine(x, top + half + height, x, top + 2 * height);
    }
}

void HeatMapLegend::drawHeader(const QRect &rect, QPainter &painter) const
{
    const int height = QApplication::fontMetrics().height();
    const int half = height / 2;
    const QFont font = painter.font();
    QFont bold = font;
    bold.setWeight(QFont::Bold);
    painter.setFont(bold);
    painter.drawText(QRect(rect.left() + half, rect.top() + half, rect.width() - height, height),
                     Qt::AlignHCenter | Qt::AlignVCenter, tr("Number of epicenters"));
    painter.setFont(font);
}

void HeatMapLegend::drawLabel(int index, int left, int top, QPainter &painter) const
{
    const StringAtPos &label = _labels[index];
    const int height = QApplication::fontMetrics().height();
    int x = left + label.pos;
    Qt::Alignment alignment = Qt::AlignLeft;
    if (index == _labels.size() - 1) {
        x -= label.width;
        alignment = Qt::AlignRight;
    } else if (index > 0) {
        x -= label.width / 2 + 1;
        alignment = Qt::AlignHCenter;
    }
    painter.drawText(QRect(x, top, label.width, height + height / 2), alignment | Qt::AlignBottom,
                     label.text);
}

} // namespace Map
} // namespace Gui
} // namespace Norvu
