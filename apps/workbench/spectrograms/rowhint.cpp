// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowhint.h"

#include <QPainter>
#include <QWidget>

namespace Workbench {

namespace {

constexpr int Padding = 6;

} // namespace

void RowHint::setText(const QString &text, const QString &action)
{
    _text = text;
    _action = action;
    if (text.isEmpty() || action.isEmpty())
        _actionArea = QRect();
}

/** Above the traces, so that it can be read, and in a corner, so that they can be. */
void RowHint::paint(QPainter &painter, const QRect &room, const QWidget &row)
{
    if (_text.isEmpty())
        return;
    const QFontMetrics metrics = painter.fontMetrics();
    QFont link = painter.font();
    link.setUnderline(true);
    const int actionWidth =
        _action.isEmpty() ? 0 : QFontMetrics(link).horizontalAdvance(_action) + Padding;
    const QRect inner = room.adjusted(Padding, 0, -Padding, -1);
    const QString text =
        metrics.elidedText(_text, Qt::ElideRight, std::max(0, inner.width() - actionWidth));
    const int width = metrics.horizontalAdvance(text) + actionWidth;
    const QRect area(inner.right() + 1 - width, inner.bottom() + 1 - metrics.height(), width,
                     metrics.height());
    painter.fillRect(area.adjusted(-Padding, 0, Padding, 0), row.palette().color(QPalette::Base));
    painter.setPen(row.palette().color(QPalette::Text));
    painter.drawText(area, Qt::AlignLeft | Qt::AlignVCenter, text);
    if (_action.isEmpty())
        return;
    _actionArea = area.adjusted(width - actionWidth + Padding, 0, 0, 0);
    painter.setFont(link);
    painter.setPen(row.palette().color(QPalette::Link));
    painter.drawText(_actionArea, Qt::AlignLeft | Qt::AlignVCenter, _action);
}

} // namespace Workbench
