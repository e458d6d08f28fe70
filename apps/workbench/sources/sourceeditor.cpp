// SPDX-License-Identifier: LGPL-3.0-or-later

#include "sourceeditor.h"

#include "sourcelist.h"
#include "sourcelogin.h"

#include <tellarix/client/remote/httpaccounts.h>

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>

namespace Workbench {

namespace {

constexpr int LineWidth = 420;

} // namespace

SourceEditor::SourceEditor(SourceList *list, const DataSource &source, QWidget *parent)
    : QDialog(parent), _list(list), _former(source), _name(makeLine(tr("Our network"))),
      _live(makeLine("seedlink://server.example.org:18000")),
      _past(makeLine("fdsnws+https://service.example.org")),
      _stations(makeLine(tr("that of the past"))), _events(makeLine(tr("none"))),
      _user(makeLine(tr("none; web services want one for restricted data"))),
      _password(makeLine(hasPassword(source) ? tr("as before") : QString())),
      _problem(new QLabel(this))
{
    setWindowTitle(source.name.isEmpty() ? tr("New source") : tr("Edit source"));
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel, this);
    connect(buttons, SIGNAL(accepted()), this, SLOT(accept()));
    connect(buttons, SIGNAL(rejected()), this, SLOT(reject()));
    fill(source);
    _password->setEchoMode(QLineEdit::Password);
    _password->setToolTip(tr("Kept in %1, which nobody else can read; it is no part of an address")
                              .arg(Tellarix::IO::HttpAccounts::Instance().file()));
    _problem->setWordWrap(true);
    _problem->hide();

    auto *layout = new QFormLayout(this);
    layout->addRow(tr("&Name:"), _name);
    layout->addRow(tr("&Live:"), _live);
    layout->addRow(tr("&Past:"), _past);
    layout->addRow(tr("&Stations:"), _stations);
    layout->addRow(tr("&Events:"), _events);
    layout->addRow(tr("&User:"), _user);
    layout->addRow(tr("Pass&word:"), _password);
    layout->addRow(_problem);
    layout->addRow(buttons);
}

QLineEdit *SourceEditor::makeLine(const QString &example)
{
    auto *line = new QLineEdit(this);
    line->setPlaceholderText(example);
    line->setMinimumWidth(LineWidth);
    return line;
}

/** A password that stands in an address is taken out of it before anyone sees it. */
void SourceEditor::fill(DataSource source)
{
    _password->setText(source.takeLogin());
    _name->setText(source.name);
    _live->setText(source.live);
    _past->setText(source.past);
    _stations->setText(source.stations);
    _events->setText(source.events);
    _user->setText(source.user);
}

DataSource SourceEditor::typed() const
{
    DataSource source;
    source.name = _name->text().simplified();
    source.live = _live->text().trimmed();
    source.past = _past->text().trimmed();
    source.stations = _stations->text().trimmed();
    source.events = _events->text().trimmed();
    source.user = _user->text().trimmed();
    return source;
}

DataSource SourceEditor::source() const
{
    DataSource source = typed();
    source.takeLogin();
    return source;
}

QString SourceEditor::password() const
{
    return _password->text().isEmpty() ? typed().takeLogin() : _password->text();
}

void SourceEditor::accept()
{
    QString error;
    const DataSource now = source();
    if (_list->set(now, _former.name, &error)) {
        const bool isDone = keepPassword(*_list, _former, now, password(), &error);
        _former.name = now.name;
        if (isDone) {
            QDialog::accept();
            return;
        }
    }
    _problem->setText(error);
    _problem->show();
}

} // namespace Workbench
