// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowname.h"

#include <QEvent>
#include <QPainter>

#include <algorithm>

namespace Workbench {

namespace {

constexpr int Margin = 4;
/** Longer names end in dots. */
constexpr int MostCharacters = 30;

} // namespace

RowName::RowName(QWidget *traces) : QWidget(traces)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    traces->installEventFilter(this);
}

void RowName::setText(const QString &text)
{
    if (text == _text)
        return;

    _text = text;
    update();
}

QSize RowName::sizeHint() const
{
    const int width = fontMetrics().horizontalAdvance(_text);
    return {std::min(width, MostCharacters * fontMetrics().averageCharWidth()) + 2 * Margin,
            fontMetrics().height()};
}

bool RowName::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize)
        resize(width(), parentWidget()->height());
    return QWidget::eventFilter(watched, event);
}

void RowName::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QRect room = rect().adjusted(Margin, 0, -Margin, 0);
    painter.setPen(palette().color(parentWidget()->foregroundRole()));
    painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter,
                     fontMetrics().elidedText(_text, Qt::ElideRight, room.width()));
}

} // namespace Workbench
