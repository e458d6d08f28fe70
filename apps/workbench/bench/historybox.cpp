// SPDX-License-Identifier: LGPL-3.0-or-later

#include "historybox.h"

#include <tellarix/qt/scheme.h>

#include <QKeyEvent>
#include <QLineEdit>
#include <QSettings>

namespace Workbench {

namespace {

constexpr int HistoryLength = 12;

} // namespace

HistoryBox::HistoryBox(const QStringList &presets, const QString &settingsKey, QWidget *parent)
    : QComboBox(parent), _presets(presets), _settingsKey(settingsKey)
{
    setEditable(true);
    setInsertPolicy(QComboBox::NoInsert);
    setCompleter(nullptr);
    lineEdit()->setClearButtonEnabled(true);
    fillList();
    _entered.setSingleShot(true);

    connect(lineEdit(), SIGNAL(returnPressed()), this, SLOT(enter()));
    connect(this, SIGNAL(activated(int)), this, SLOT(enter()));
}

/** Return reaches a combo box more than once: by itself, by way of its input, and as the choice of
 *  a text that stands in the list. */
void HistoryBox::enter()
{
    if (_entered.isActive())
        return;
    _entered.start();
    emit entered(currentText().trimmed());
}

void HistoryBox::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        emit left();
    else
        QComboBox::keyPressEvent(event);
}

void HistoryBox::remember(const QString &text)
{
    if (text.isEmpty() || _presets.contains(text))
        return;
    _history.removeAll(text);
    _history.prepend(text);
    while (_history.size() > HistoryLength)
        _history.removeLast();
    fillList();
}

void HistoryBox::fillList()
{
    const QString text = currentText();
    const int cursor = lineEdit()->cursorPosition();
    clear();
    addItems(_history);
    if (!_history.isEmpty())
        insertSeparator(_history.size());
    addItems(_presets);
    setEditText(text);
    lineEdit()->setCursorPosition(cursor);
}

void HistoryBox::setHelp(const QString &help)
{
    // One that stands there is a problem's.
    if (toolTip() == _help)
        setToolTip(help);
    _help = help;
}

void HistoryBox::showProblem(const QString &message, int column)
{
    QPalette palette;
    if (!message.isEmpty()) {
        palette.setColor(QPalette::Text,
                         Tellarix::Gui::problemColor(palette.color(QPalette::Base)));
        if (column > 0)
            lineEdit()->setCursorPosition(column - 1);
    }
    lineEdit()->setPalette(palette);
    setToolTip(message.isEmpty() ? _help : message);
}

void HistoryBox::restoreHistory()
{
    _history = QSettings().value(_settingsKey).toStringList();
    fillList();
}

void HistoryBox::saveHistory() const
{
    QSettings().setValue(_settingsKey, _history);
}

} // namespace Workbench
