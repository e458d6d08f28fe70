// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/centericondelegate.h>

#include <QApplication>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QStyle>

namespace Norvu {
namespace Gui {

CenterIconDelegate::CenterIconDelegate(QObject *parent) : QStyledItemDelegate(parent)
{}

void CenterIconDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                               const QModelIndex &index) const
{
    const QVariant decoration = index.data(Qt::DecorationRole);
    if (decoration.userType() != QMetaType::QIcon) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }

    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    // The cell's own size is that of the icon for another state.
    const QPixmap pixmap =
        decoration.value<QIcon>().pixmap(option.decorationSize, QIcon::Normal, QIcon::On);

    // The base class would take the icon from the item again, so its drawing is done here.
    cell.features &= ~QStyleOptionViewItem::HasDecoration;
    cell.icon = QIcon();
    const QStyle *style = cell.widget ? cell.widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &cell, painter, cell.widget);

    const QSize size = (QSizeF(pixmap.size()) / pixmap.devicePixelRatio()).toSize();
    const QRect box = QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, size, cell.rect);
    painter->drawPixmap(box.topLeft(), pixmap);
}

QSize CenterIconDelegate::sizeHint(const QStyleOptionViewItem &option,
                                   const QModelIndex &index) const
{
    return QStyledItemDelegate::sizeHint(option, index);
}

} // namespace Gui
} // namespace Norvu
