// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowlabel_p.h"

#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace Norvu {
namespace Gui {

void RowLabel::setTexts(const QString &text, const QString &name, const QString &description)
{
    _name = name;
    _description = description;
    const QString plain = name + description;
    setTextFormat(plain.contains('<') || plain.contains('&') ? Qt::AutoText : Qt::PlainText);
    setAccessibleName(hasMarkup() ? QString() : plain);
    setText(text);
    updateGeometry();
    update();
}

void RowLabel::copyTexts(const RowLabel &other)
{
    setTexts(other.text(), other._name, other._description);
}

QFont RowLabel::nameFont() const
{
    QFont bold = font();
    bold.setBold(true);
    return bold;
}

int RowLabel::nameWidth() const
{
    return _name.isEmpty() ? 0 : QFontMetrics(nameFont()).horizontalAdvance(_name);
}

int RowLabel::textHeight() const
{
    return std::max(fontMetrics().height(), QFontMetrics(nameFont()).height());
}

QSize RowLabel::sizeHint() const
{
    if (hasMarkup())
        return QLabel::sizeHint();
    return {nameWidth() + fontMetrics().horizontalAdvance(_description), textHeight()};
}

QSize RowLabel::minimumSizeHint() const
{
    return hasMarkup() ? QLabel::minimumSizeHint() : QSize(nameWidth(), textHeight());
}

void RowLabel::paintEvent(QPaintEvent *event)
{
    if (hasMarkup()) {
        QLabel::paintEvent(event);
        return;
    }
    QPainter painter(this);
    const auto draw = [&](int x, const QString &text) {
        style()->drawItemText(&painter, {x, 0, width() - x, height()},
                              Qt::AlignLeft | Qt::AlignVCenter, palette(), isEnabled(), text,
                              foregroundRole());
    };
    const int descriptionX = nameWidth();
    draw(descriptionX, fontMetrics().elidedText(_description, Qt::ElideRight,
                                                std::max(0, width() - descriptionX)));
    painter.setFont(nameFont());
    draw(0, _name);
}

} // namespace Gui
} // namespace Norvu
