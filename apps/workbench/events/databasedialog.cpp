// SPDX-License-Identifier: LGPL-3.0-or-later

#include "databasedialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace Workbench {

namespace {

constexpr int AddressWidth = 420;

QString filter()
{
    return DatabaseDialog::tr("SQLite databases (*.sqlite *.db);;All files (*)");
}

} // namespace

DatabaseDialog::DatabaseDialog(Catalogue::Schema schema, const QStringList &recent, QWidget *parent)
    : QDialog(parent), _schema(schema), _address(new QComboBox(this))
{
    const bool isNew = schema == Catalogue::Schema::Created;
    setWindowTitle(isNew ? tr("New event database") : tr("Open event database"));
    _address->setEditable(true);
    _address->setMinimumWidth(AddressWidth);
    if (!isNew)
        _address->addItems(recent);
    _address->lineEdit()->setPlaceholderText("sqlite:///home/anna/events.sqlite");

    auto *browseButton = new QPushButton(tr("&File…"), this);
    connect(browseButton, SIGNAL(clicked()), this, SLOT(browse()));
    auto *line = new QHBoxLayout;
    line->addWidget(_address, 1);
    line->addWidget(browseButton);

    auto *hint = new QLabel(tr("A file, or the address of a server:\n"
                               "postgresql://user@host/database\nmysql://user@host/database"),
                            this);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(isNew ? tr("Create") : tr("Open"));
    connect(buttons, SIGNAL(accepted()), this, SLOT(accept()));
    connect(buttons, SIGNAL(rejected()), this, SLOT(reject()));

    auto *layout = new QFormLayout(this);
    layout->addRow(tr("&Database:"), line);
    layout->addRow(QString(), hint);
    layout->addRow(buttons);
    _address->setFocus();
}

QString DatabaseDialog::url() const
{
    const QString text = _address->currentText().trimmed();
    return text.isEmpty() || Catalogue::isAddress(text) ? text : Catalogue::addressOf(text);
}

void DatabaseDialog::browse()
{
    const QString file =
        _schema == Catalogue::Schema::Created
            ? QFileDialog::getSaveFileName(this, windowTitle(), "events.sqlite", filter())
            : QFileDialog::getOpenFileName(this, windowTitle(), QString(), filter());
    if (!file.isEmpty())
        _address->setEditText(file);
}

} // namespace Workbench
