// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QStyledItemDelegate>

namespace Norvu {
namespace Gui {

/**
 * Draws and edits keys and colours of a table of stops.
 *
 * ColorColumn holds a QColor, drawn as a filled cell and edited in a colour dialog; every other
 * column is a line of text that has to be a number.
 */
class NORVU_GUI_API GradientTableDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    static constexpr int ColorColumn = 1;

    using QStyledItemDelegate::QStyledItemDelegate;

    /**
     * Reads a key as it is typed, in the C locale.
     * @param ok  set to false if the text is no finite number; not null
     */
    static double toKey(const QString &text, bool *ok);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    /** Writes a colour if its dialog was accepted and a key if it is a number; otherwise a message
     *  says that it is none, and nothing is written. */
    void setModelData(QWidget *editor, QAbstractItemModel *model,
                      const QModelIndex &index) const override;
    void updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                              const QModelIndex &index) const override;
};

} // namespace Gui
} // namespace Norvu
