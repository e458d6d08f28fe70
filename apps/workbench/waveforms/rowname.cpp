// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowname.h"

#include <QEvent>
#include <QPainter>

#include <algorithm>

namespace Workbench {

namespace {

constexpr int Margin = 4;
/** Longer names end in dots. */
constexpr int MostCharacters = 36;

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

void RowName::setDelay(const QString &delay, bool isPale)
{
    if (delay == _delay && isPale == _pale)
        return;

    // Each second: only what has changed.
    const QRect delayRect(width() - Margin - delayWidth(), 0, delayWidth() + Margin, height());
    const bool isSame = delay.isEmpty() == _delay.isEmpty() && isPale == _pale;
    _delay = delay;
    _pale = isPale;
    update(isSame ? delayRect : rect());
}

/** The same for all texts, so that names stand still. */
int RowName::delayWidth() const
{
    return _delay.isEmpty() ? 0 : fontMetrics().horizontalAdvance(tr("88 min")) + 2 * Margin;
}

QSize RowName::sizeHint() const
{
    // Texts are cut by fractions of a pixel, which the advance is rounded to.
    const int width = fontMetrics().horizontalAdvance(_text) + 1;
    return {std::min(width, MostCharacters * fontMetrics().averageCharWidth()) + delayWidth() +
                2 * Margin,
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
    const QRect all = rect().adjusted(Margin, 0, -Margin, 0);
    const QRect room = all.adjusted(0, 0, -delayWidth(), 0);
    const QPalette::ColorGroup group = _pale ? QPalette::Disabled : QPalette::Active;
    painter.setPen(palette().color(group, parentWidget()->foregroundRole()));
    painter.drawText(all, Qt::AlignRight | Qt::AlignVCenter, _delay);
    painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter,
                     fontMetrics().elidedText(_text, Qt::ElideRight, room.width()));
}

} // namespace Workbench
