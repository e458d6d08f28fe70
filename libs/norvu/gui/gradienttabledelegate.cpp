// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/gradienttabledelegate.h>

#include <norvu/gui/modaldialog_p.h>

#include <QColorDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPainter>

#include <cmath>

namespace Norvu {
namespace Gui {

namespace {

/** Knows its result before it is hidden, which is when a delegate asks for it. */
class NoHideColorDialog : public QColorDialog
{
public:
    using QColorDialog::QColorDialog;

    void done(int r) override
    {
        QDialog::setResult(r);
        QColorDialog::done(r);
    }
};

} // namespace

double GradientTableDelegate::toKey(const QString &text, bool *ok)
{
    const double key = text.toDouble(ok);
    // What is no number has no place in the order of the stops, and an endless bar shows nothing.
    *ok = *ok && std::isfinite(key);
    return key;
}

void GradientTableDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                                  const QModelIndex &index) const
{
    if (index.column() == ColorColumn)
        painter->fillRect(option.rect, index.data(Qt::DisplayRole).value<QColor>());
    else
        QStyledItemDelegate::paint(painter, option, index);
}

QWidget *GradientTableDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &,
                                             const QModelIndex &index) const
{
    if (index.column() != ColorColumn)
        return new QLineEdit(parent);

    auto *dialog = new NoHideColorDialog(parent);
    dialog->setModal(true);
    dialog->setOption(QColorDialog::ShowAlphaChannel);
    return dialog;
}

void GradientTableDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    if (auto *dialog = dynamic_cast<NoHideColorDialog *>(editor))
        dialog->setCurrentColor(index.data(Qt::DisplayRole).value<QColor>());
    else if (auto *edit = qobject_cast<QLineEdit *>(editor))
        edit->setText(index.data(Qt::EditRole).toString());
}

void GradientTableDelegate::setModelData(QWidget *editor, QAbstractItemModel *model,
                                         const QModelIndex &index) const
{
    if (auto *dialog = dynamic_cast<NoHideColorDialog *>(editor)) {
        if (dialog->result() == QDialog::Accepted)
            model->setData(index, dialog->currentColor(), Qt::EditRole);
        return;
    }

    const auto *edit = qobject_cast<QLineEdit *>(editor);
    if (!edit)
        return;
    bool ok = false;
    const double key = toKey(edit->text(), &ok);
    if (!ok) {
        ModalDialog<QMessageBox>(QMessageBox::Critical, tr("Conversion error"),
                                 tr("Invalid number"), QMessageBox::Ok, editor)
            ->exec();
        return;
    }
    // Opening and leaving the editor is no edit: it would cut keys to the six digits of their
    // texts.
    if (edit->text() != index.data(Qt::EditRole).toString())
        model->setData(index, key, Qt::EditRole);
}

void GradientTableDelegate::updateEditorGeometry(QWidget *editor,
                                                 const QStyleOptionViewItem &option,
                                                 const QModelIndex &index) const
{
    // A dialog keeps its own place.
    if (index.column() != ColorColumn)
        editor->setGeometry(option.rect);
}

} // namespace Gui
} // namespace Norvu
