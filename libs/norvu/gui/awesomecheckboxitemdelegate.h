// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QStyledItemDelegate>

namespace Norvu {
namespace Gui {

/**
 * Draws the check boxes of items as glyphs of the icon font, centred in their cells.
 *
 * A parent item with the value 1 in the role Qt::UserRole + 1 makes its children an exclusive
 * group: they are drawn as radio buttons, and checking one clears the others. A click or a key on
 * any cell of a row reaches the one check box of that row.
 */
class NORVU_GUI_API AwesomeCheckBoxItemDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit AwesomeCheckBoxItemDelegate(QObject *parent = nullptr);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    bool editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                     const QModelIndex &index) override;
};

} // namespace Gui
} // namespace Norvu
