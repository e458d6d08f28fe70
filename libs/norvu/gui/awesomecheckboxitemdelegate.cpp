// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/awesomecheckboxitemdelegate.h>

#include <norvu/gui/fontawesome5.h>

#include <QApplication>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>

namespace Norvu {
namespace Gui {

namespace {

constexpr int ExclusiveRole = Qt::UserRole + 1;

bool isCheckable(const QModelIndex &index)
{
    return index.model() && index.flags().testFlag(Qt::ItemIsUserCheckable);
}

bool isExclusive(const QModelIndex &index)
{
    const QModelIndex parent = index.parent();
    return parent.isValid() && parent.data(ExclusiveRole).toInt() == 1;
}

QChar glyphOf(const QModelIndex &index, int state)
{
    if (isExclusive(index))
        return state == Qt::Unchecked ? FontAwesome5::chCircle : FontAwesome5::chDotCircle;
    return state == Qt::Unchecked ? FontAwesome5::chSquare : FontAwesome5::chCheckSquare;
}

bool isActivation(QEvent *event, const QRect &cell)
{
    if (event->type() == QEvent::MouseButtonRelease)
        return cell.contains(static_cast<QMouseEvent *>(event)->localPos().toPoint());
    if (event->type() != QEvent::KeyPress)
        return false;

    const int key = static_cast<QKeyEvent *>(event)->key();
    return key == Qt::Key_Select || key == Qt::Key_Space;
}

/** The one checkable cell that stands for its row; invalid when there are none or several. */
QModelIndex checkableSibling(const QModelIndex &index)
{
    QModelIndex result;
    const int columns = index.model()->columnCount(index.parent());
    for (int column = 0; column < columns; ++column) {
        const QModelIndex sibling = index.sibling(index.row(), column);
        if (!isCheckable(sibling))
            continue;
        if (result.isValid())
            return QModelIndex();
        result = sibling;
    }
    return result;
}

void clearGroup(QAbstractItemModel *model, const QModelIndex &member)
{
    const QModelIndex parent = member.parent();
    for (int row = 0; row < model->rowCount(parent); ++row)
        model->setData(model->index(row, member.column(), parent), int(Qt::Unchecked),
                       Qt::CheckStateRole);
}

} // namespace

AwesomeCheckBoxItemDelegate::AwesomeCheckBoxItemDelegate(QObject *parent)
    : QStyledItemDelegate(parent)
{}

void AwesomeCheckBoxItemDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                                        const QModelIndex &index) const
{
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    if (!isCheckable(index)) {
        QStyledItemDelegate::paint(painter, cell, index);
        return;
    }

    painter->save();
    QFont font = FontAwesome5::font();
    font.setPixelSize(option.fontMetrics.height());
    painter->setFont(font);
    const int advance = QFontMetrics(font).horizontalAdvance(FontAwesome5::chSquare);
    const int left = option.rect.left() + (option.rect.width() - advance) / 2;

    cell.features &= ~QStyleOptionViewItem::HasCheckIndicator;
    cell.features |= QStyleOptionViewItem::HasDisplay;
    QApplication::style()->drawControl(QStyle::CE_ItemViewItem, &cell, painter);

    const int state = index.data(Qt::CheckStateRole).toInt();
    if (state == Qt::PartiallyChecked)
        painter->setPen(option.palette.color(QPalette::Disabled, QPalette::Text));
    else if (option.state & QStyle::State_Selected)
        painter->setPen(option.palette.color(QPalette::HighlightedText));
    const QRect box(QPoint(left, option.rect.top() + 1), option.rect.bottomRight());
    painter->drawText(box, Qt::AlignLeft | Qt::AlignVCenter, QString(glyphOf(index, state)));
    painter->restore();
}

bool AwesomeCheckBoxItemDelegate::editorEvent(QEvent *event, QAbstractItemModel *model,
                                              const QStyleOptionViewItem &option,
                                              const QModelIndex &index)
{
    if (!isActivation(event, option.rect))
        return false;
    if (!index.model() || !index.flags().testFlag(Qt::ItemIsEnabled))
        return false;

    const QModelIndex target = isCheckable(index) ? index : checkableSibling(index);
    const QVariant state = target.data(Qt::CheckStateRole);
    if (!state.isValid())
        return false;

    const auto newState = state.toInt() != Qt::Unchecked ? Qt::Unchecked : Qt::Checked;
    if (isExclusive(target)) {
        if (newState == Qt::Unchecked)
            return false;
        clearGroup(model, target);
    }
    return model->setData(target, int(newState), Qt::CheckStateRole);
}

} // namespace Gui
} // namespace Norvu
