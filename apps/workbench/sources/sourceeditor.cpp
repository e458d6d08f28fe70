// SPDX-License-Identifier: LGPL-3.0-or-later

#include "sourceeditor.h"

#include "sourcelist.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>

namespace Workbench {

namespace {

constexpr int LineWidth = 420;

} // namespace

SourceEditor::SourceEditor(SourceList *list, const DataSource &source, QWidget *parent)
    : QDialog(parent), _list(list), _formerName(source.name),
      _name(makeLine(source.name, tr("Our network"))),
      _live(makeLine(source.live, "seedlink://server.example.org:18000")),
      _past(makeLine(source.past, "fdsnws+https://service.example.org")),
      _stations(makeLine(source.stations, tr("that of the past"))),
      _events(makeLine(source.events, tr("none"))), _problem(new QLabel(this))
{
    setWindowTitle(source.name.isEmpty() ? tr("New source") : tr("Edit source"));
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel, this);
    connect(buttons, SIGNAL(accepted()), this, SLOT(accept()));
    connect(buttons, SIGNAL(rejected()), this, SLOT(reject()));
    _problem->setWordWrap(true);
    _problem->hide();

    auto *layout = new QFormLayout(this);
    layout->addRow(tr("&Name:"), _name);
    layout->addRow(tr("&Live:"), _live);
    layout->addRow(tr("&Past:"), _past);
    layout->addRow(tr("&Stations:"), _stations);
    layout->addRow(tr("&Events:"), _events);
    layout->addRow(_problem);
    layout->addRow(buttons);
}

QLineEdit *SourceEditor::makeLine(const QString &text, const QString &example)
{
    auto *line = new QLineEdit(text, this);
    line->setPlaceholderText(example);
    line->setMinimumWidth(LineWidth);
    return line;
}

DataSource SourceEditor::source() const
{
    DataSource source;
    source.name = _name->text().simplified();
    source.live = _live->text().trimmed();
    source.past = _past->text().trimmed();
    source.stations = _stations->text().trimmed();
    source.events = _events->text().trimmed();
    return source;
}

void SourceEditor::accept()
{
    QString error;
    if (_list->set(source(), _formerName, &error)) {
        QDialog::accept();
        return;
    }
    _problem->setText(error);
    _problem->show();
}

} // namespace Workbench
