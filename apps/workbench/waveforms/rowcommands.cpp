// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowcommands.h"

#include "rowvisibility.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>

#include <algorithm>

using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

namespace Workbench {

namespace {

QStringList labelsOf(const QList<Trace *> &rows)
{
    QStringList labels;
    for (const Trace *row : rows)
        labels.append(row->label());
    return labels;
}

} // namespace

RowCommands::RowCommands(TraceView *view, RowVisibility *visibility)
    : QObject(view), _view(view), _visibility(visibility),
      _copy(addAction(tr("Copy stream &id"), tr("Ctrl+C"), SLOT(copyIds()))),
      _hide(addAction(tr("&Hide selected rows"), tr("Ctrl+H"), SLOT(hideSelected()))),
      _close(addAction(tr("&Close selected rows"), tr("Shift+Del"), SLOT(closeSelected())))
{
    view->addActions(rowActions());
}

QAction *RowCommands::addAction(const QString &text, const QString &key, const char *slot)
{
    auto *action = new QAction(text, this);
    action->setShortcut(key);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    connect(action, SIGNAL(triggered()), this, slot);
    return action;
}

/** Rows that aren't in sight are left alone. */
QList<Trace *> RowCommands::shownSelection() const
{
    QList<Trace *> rows = _view->selectedItems();
    rows.erase(std::remove_if(rows.begin(), rows.end(),
                              [](const Trace *row) { return row->isTakenOut(); }),
               rows.end());
    return rows;
}

void RowCommands::copyIds()
{
    const QStringList ids = labelsOf(shownSelection());
    if (!ids.isEmpty())
        QGuiApplication::clipboard()->setText(ids.join('\n'));
}

void RowCommands::hideSelected()
{
    const QList<Trace *> rows = shownSelection();
    _view->clearSelection();
    _visibility->hide(rows);
}

void RowCommands::closeSelected()
{
    const QList<Trace *> rows = shownSelection();
    const QStringList streams = labelsOf(rows);
    _view->changeItems([&] {
        for (Trace *row : rows)
            _view->removeItem(row);
    });
    if (!rows.isEmpty())
        emit closed(streams);
}

} // namespace Workbench
