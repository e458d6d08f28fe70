// SPDX-License-Identifier: LGPL-3.0-or-later

#include "traceview.h"

#include "tracetoolbar_p.h"

#include <QAction>

namespace Norvu {
namespace Gui {

void TraceView::createActions()
{
    const struct
    {
        QString text;
        QString shortcut;
        QString toolTip;
        const char *slot;
    } controls[] = {
        {tr("Reset view"), tr("N"), tr("Reset view"), SLOT(resetView())},
        {tr("Increase horizontal scale"), tr(">"), tr("Increase horizontal scale"),
         SLOT(horizontalZoomIn())},
        {tr("Decrease horizontal scale"), tr("<"), tr("Decrease horizontal scale"),
         SLOT(horizontalZoomOut())},
        {tr("Increase vertical scale"), tr("Shift+Y"), tr("Increase vertical scale"),
         SLOT(verticalZoomIn())},
        {tr("Decrease vertical scale"), tr("Y"), tr("Decrease vertical scale"),
         SLOT(verticalZoomOut())},
        {tr("Scroll left"), tr("Left"), tr("Shift the visible time range to the left"),
         SLOT(scrollLeft())},
        {tr("Scroll right"), tr("Right"), tr("Shift the visible time range to the right"),
         SLOT(scrollRight())},
    };
    for (const auto &control : controls) {
        auto *action = new QAction(control.text, &_controlActions);
        action->setToolTip(control.toolTip);
        action->setShortcut(control.shortcut);
        connect(action, SIGNAL(triggered()), this, control.slot);
    }
    addActions(_controlActions.actions());

    const struct
    {
        QString text;
        QString shortcut;
        const char *slot;
    } selections[] = {
        {tr("Select all traces"), tr("Ctrl+A"), SLOT(selectAll())},
        {tr("Clear selection"), tr("Esc"), SLOT(clearSelection())},
    };
    for (const auto &selection : selections) {
        auto *action = new QAction(selection.text, this);
        action->setShortcut(selection.shortcut);
        connect(action, SIGNAL(triggered()), this, selection.slot);
        addAction(action);
    }

    const QList<QAction *> viewActions = actions();
    for (QAction *action : viewActions)
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
}

void TraceView::createToolBar()
{
    _toolBar = new TraceToolBar(this);
    updateToolbar();
}

void TraceView::allowCleaning(bool allow)
{
    if (_toolBar)
        _toolBar->allowCleaning(allow);
}

void TraceView::allowResetting(bool allow)
{
    if (_toolBar)
        _toolBar->allowResetting(allow);
}

void TraceView::removeLoadActions()
{
    if (_toolBar)
        _toolBar->removeLoadActions();
}

} // namespace Gui
} // namespace Norvu
