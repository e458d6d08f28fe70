// SPDX-License-Identifier: LGPL-3.0-or-later

#include "messagedock.h"

#include <QFontDatabase>
#include <QPlainTextEdit>

namespace Workbench {

MessageDock::MessageDock(QWidget *parent)
    : QDockWidget(tr("Messages"), parent), _list(new QPlainTextEdit(this))
{
    setObjectName("messages");
    _list->setReadOnly(true);
    // A click selects text, and leaves the keyboard to the rows.
    _list->setFocusPolicy(Qt::NoFocus);
    _list->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    _list->setLineWrapMode(QPlainTextEdit::NoWrap);
    setWidget(_list);
}

void MessageDock::add(const QStringList &problems)
{
    for (const QString &problem : problems)
        _list->appendPlainText(problem);
    show();
    raise();
}

void MessageDock::clear()
{
    _list->clear();
}

} // namespace Workbench
