// SPDX-License-Identifier: LGPL-3.0-or-later

#include "traceview.h"

#include <norvu/gui/fontawesome5.h>

#include <QAction>
#include <QIcon>
#include <QLayout>
#include <QToolBar>

namespace Norvu {
namespace Gui {

namespace {

constexpr int ToolBarMargin = 9;

void setActionAllowed(QAction *action, bool allow)
{
    if (!action)
        return;

    action->setEnabled(allow);
    action->setVisible(allow);
}

} // namespace

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
    _toolBar = new QToolBar;
    const int iconSize = fontMetrics().ascent();
    _toolBar->setIconSize(QSize(iconSize, iconSize));
    _toolBar->setOrientation(Qt::Horizontal);
    _toolBar->layout()->setContentsMargins(ToolBarMargin, ToolBarMargin, ToolBarMargin,
                                           ToolBarMargin);
    addLoadTools();
    addViewTools();
    addNormalizationTools();
    updateToolbar();
}

void TraceView::addLoadTools()
{
    using namespace FontAwesome5;

    _loadAction = addTool(iconSolid(chSync), tr("Load data"), tr("Load data"), SLOT(loadData()));
    _loadAction->setShortcut(tr("F5"));
    _cleanAction =
        addTool(iconSolid(chShower), tr("Clean"), tr("Remove empty traces"), SLOT(cleanTraces()));
    _resetAction = addTool(icon(chTrashAlt), tr("Reset"),
                           tr("Reset selected traces: delete data and allow reloading"),
                           SLOT(resetSelectedTraces()));
    _loadSeparator = _toolBar->addSeparator();
}

void TraceView::addViewTools()
{
    using namespace FontAwesome5;

    QAction *crosshair = addToggle(iconSolid(chCrosshairs), tr("Cross hair"), tr("Show cross hair"),
                                   _showCrosshair, SLOT(showCrosshair(bool)));
    crosshair->setShortcut(tr("C"));
    addTool(iconSolid(chAlignCenter), tr("Cross hair"), tr("Resets the view"), SLOT(resetView()));
    addTool(iconSolid(chSortAmountDown), tr("Sort by distance"),
            tr("Sorts the traces ascending by distance"), SLOT(sortView()));
    _normSeparator = _toolBar->addSeparator();
}

void TraceView::addNormalizationTools()
{
    using namespace FontAwesome5;

    addToggle(iconSolid(chList), tr("Norm all"),
              tr("Toggles between normalization of all traces (on) or single trace (off)"),
              _normMode.testFlag(AllTracesNormalization), SLOT(setAllTracesNormalization(bool)));
    addToggle(iconSolid(chEye), tr("Norm visibile"),
              tr("Toggles between normalization of visible window (on) or the whole trace (off)"),
              _normMode.testFlag(WindowNormalization), SLOT(setWindowNormalization(bool)));
}

QAction *TraceView::addTool(const QIcon &icon, const QString &text, const QString &toolTip,
                            const char *slot)
{
    QAction *action = _toolBar->addAction(icon, text);
    action->setToolTip(toolTip);
    connect(action, SIGNAL(triggered()), this, slot);
    return action;
}

QAction *TraceView::addToggle(const QIcon &icon, const QString &text, const QString &toolTip,
                              bool checked, const char *slot)
{
    QAction *action = _toolBar->addAction(icon, text);
    action->setToolTip(toolTip);
    action->setCheckable(true);
    action->setChecked(checked);
    connect(action, SIGNAL(toggled(bool)), this, slot);
    return action;
}

void TraceView::allowCleaning(bool allow)
{
    setActionAllowed(_cleanAction, allow);
}

void TraceView::allowResetting(bool allow)
{
    setActionAllowed(_resetAction, allow);
}

void TraceView::removeLoadActions()
{
    for (QAction **action : {&_cleanAction, &_resetAction, &_loadAction, &_loadSeparator}) {
        delete *action;
        *action = nullptr;
    }
}

} // namespace Gui
} // namespace Norvu
