// SPDX-License-Identifier: LGPL-3.0-or-later

#include "measuringoverlay.h"

#include <tellarix/qt/scheme.h>

#include <QPainter>

#include <algorithm>

using Tellarix::Gui::Scheme;

namespace Workbench {

namespace {

constexpr int BandAlpha = 26;
constexpr int RowBandAlpha = 52;
constexpr int PanelAlpha = 240;
constexpr int PanelMargin = 8;
constexpr int ColumnSpacing = 14;
constexpr int PointerDistance = 14;

} // namespace

QRect MeasuringMarks::bandBetween(int from, int to) const
{
    const int start = std::min(from, to);
    const int length = std::max(from, to) - start + 1;
    return (isTurned ? QRect(area.left(), start, area.width(), length)
                     : QRect(start, area.top(), length, area.height())) &
           area;
}

QPoint panelPosition(const QSize &panel, const QPoint &point, const QRect &area, int distance)
{
    const auto place = [distance](int at, int extent, int first, int last) {
        const int behind = at + distance;
        const int wanted = behind + extent <= last ? behind : at - distance - extent;
        return std::max(first, std::min(wanted, last - extent));
    };
    return {place(point.x(), panel.width(), area.left(), area.right() + 1),
            place(point.y(), panel.height(), area.top(), area.bottom() + 1)};
}

MeasuringOverlay::MeasuringOverlay(QWidget *parent) : Overlay(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

QRegion MeasuringOverlay::lines() const
{
    return QRegion(_marks.bandBetween(_marks.anchor, _marks.anchor)) +
           _marks.bandBetween(_marks.end, _marks.end);
}

void MeasuringOverlay::setMarks(const MeasuringMarks &marks)
{
    QRegion changed = lines() + panelRect();
    const QRegion before = QRegion(_marks.band()) - changed;
    const bool isSameArea = _marks.area == marks.area && _marks.row == marks.row;
    const QRect rows = _marks.row | marks.row;

    _marks = marks;
    changed += lines() + panelRect();
    changed += before.xored(QRegion(_marks.band()));
    if (!isSameArea)
        changed += QRegion(_marks.band()) & rows;
    update(changed);
}

void MeasuringOverlay::paintEvent(QPaintEvent *)
{
    if (_marks.isEmpty())
        return;

    QPainter painter(this);
    drawBand(painter);
    if (!_marks.entries.isEmpty())
        drawPanel(painter);
}

void MeasuringOverlay::drawBand(QPainter &painter) const
{
    const QColor lineColor = Scheme::Current().records.cursor;
    QColor bandColor = lineColor;
    bandColor.setAlpha(BandAlpha);
    QColor rowColor = lineColor;
    rowColor.setAlpha(RowBandAlpha - BandAlpha);

    const QRect band = _marks.band();
    painter.fillRect(band, bandColor);
    painter.fillRect(band & _marks.row, rowColor);
    for (const QRect &line : lines())
        painter.fillRect(line, lineColor);
}

QFont MeasuringOverlay::titleFont() const
{
    QFont result = font();
    result.setBold(true);
    return result;
}

QSize MeasuringOverlay::panelSize() const
{
    const QFontMetrics metrics(font());
    const QFontMetrics titleMetrics(titleFont());
    int names = 0;
    int values = 0;
    for (const auto &entry : _marks.entries) {
        names = std::max(names, metrics.horizontalAdvance(entry.first));
        values = std::max(values, metrics.horizontalAdvance(entry.second));
    }
    const int width =
        std::max({titleMetrics.horizontalAdvance(_marks.title),
                  metrics.horizontalAdvance(_marks.warning), names + ColumnSpacing + values});
    const int lineCount = _marks.entries.size() + (_marks.warning.isEmpty() ? 0 : 1);
    return {width + 2 * PanelMargin,
            titleMetrics.height() + lineCount * metrics.height() + 2 * PanelMargin};
}

QRect MeasuringOverlay::panelRect() const
{
    if (_marks.isEmpty() || _marks.entries.isEmpty())
        return {};

    const QSize size = panelSize();
    const QPoint point =
        _marks.isTurned ? QPoint(_marks.pointer, _marks.end) : QPoint(_marks.end, _marks.pointer);
    return {panelPosition(size, point, rect(), PointerDistance), size};
}

void MeasuringOverlay::drawPanel(QPainter &painter) const
{
    const QRect panel = panelRect();
    QColor background = palette().color(QPalette::Base);
    background.setAlpha(PanelAlpha);
    QColor border = palette().color(QPalette::Text);
    border.setAlpha(96);
    painter.setPen(border);
    painter.setBrush(background);
    painter.drawRect(panel.adjusted(0, 0, -1, -1));

    QColor nameColor = palette().color(QPalette::Text);
    nameColor.setAlpha(176);
    const QRect inside = panel.adjusted(PanelMargin, PanelMargin, -PanelMargin, -PanelMargin);
    QRect line(inside.topLeft(), QSize(inside.width(), QFontMetrics(titleFont()).height()));
    painter.setFont(titleFont());
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter, _marks.title);

    painter.setFont(font());
    line = QRect(line.bottomLeft() + QPoint(0, 1),
                 QSize(inside.width(), QFontMetrics(font()).height()));
    for (const auto &entry : _marks.entries) {
        painter.setPen(nameColor);
        painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter, entry.first);
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(line, Qt::AlignRight | Qt::AlignVCenter, entry.second);
        line.translate(0, line.height());
    }
    painter.setPen(Tellarix::Gui::problemColor(palette().color(QPalette::Base)));
    painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter, _marks.warning);
}

} // namespace Workbench
