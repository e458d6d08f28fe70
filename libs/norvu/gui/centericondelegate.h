// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QStyledItemDelegate>

namespace Norvu {
namespace Gui {

/** Draws the icon of an item in the centre of its cell. */
class NORVU_GUI_API CenterIconDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit CenterIconDelegate(QObject *parent = nullptr);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

} // namespace Gui
} // namespace Norvu
