// SPDX-License-Identifier: LGPL-3.0-or-later

#include "tracetoolbar_p.h"

#include <norvu/gui/fontawesome5.h>

#include <QAction>
#include <QIcon>
#include <QLayout>

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

TraceToolBar::TraceToolBar(TraceView *view) : _view(view)
{
    const int iconSize = view->fontMetrics().ascent();
    setIconSize(QSize(iconSize, iconSize));
    setOrientation(Qt::Horizontal);
    layout()->setContentsMargins(ToolBarMargin, ToolBarMargin, ToolBarMargin, ToolBarMargin);
    addLoadTools();
    addViewTools();
    addNormalizationTools();
}

void TraceToolBar::addLoadTools()
{
    using namespace FontAwesome5;

    _load = addTool(iconSolid(chSync), TraceView::tr("Load data"), TraceView::tr("Load data"),
                    SLOT(loadData()));
    _load->setShortcut(TraceView::tr("F5"));
    _clean = addTool(iconSolid(chShower), TraceView::tr("Clean"),
                     TraceView::tr("Remove empty traces"), SLOT(cleanTraces()));
    _reset = addTool(icon(chTrashAlt), TraceView::tr("Reset"),
                     TraceView::tr("Reset selected traces: delete data and allow reloading"),
                     SLOT(resetSelectedTraces()));
    _loadSeparator = addSeparator();
}

void TraceToolBar::addViewTools()
{
    using namespace FontAwesome5;

    QAction *crosshair = addToggle(iconSolid(chCrosshairs), TraceView::tr("Cross hair"),
                                   TraceView::tr("Show cross hair"), _view->isCrosshairShown(),
                                   SLOT(showCrosshair(bool)));
    crosshair->setShortcut(TraceView::tr("C"));
    addTool(iconSolid(chAlignCenter), TraceView::tr("Cross hair"), TraceView::tr("Resets the view"),
            SLOT(resetView()));
    addTool(iconSolid(chSortAmountDown), TraceView::tr("Sort by distance"),
            TraceView::tr("Sorts the traces ascending by distance"), SLOT(sortView()));
    addSeparator();
}

void TraceToolBar::addNormalizationTools()
{
    using namespace FontAwesome5;

    addToggle(
        iconSolid(chList), TraceView::tr("Norm all"),
        TraceView::tr("Toggles between normalization of all traces (on) or single trace (off)"),
        _view->normalizationMode().testFlag(TraceView::AllTracesNormalization),
        SLOT(setAllTracesNormalization(bool)));
    addToggle(iconSolid(chEye), TraceView::tr("Norm visibile"),
              TraceView::tr(
                  "Toggles between normalization of visible window (on) or the whole trace (off)"),
              _view->normalizationMode().testFlag(TraceView::WindowNormalization),
              SLOT(setWindowNormalization(bool)));
}

QAction *TraceToolBar::addTool(const QIcon &icon, const QString &text, const QString &toolTip,
                               const char *slot)
{
    QAction *action = addAction(icon, text);
    action->setToolTip(toolTip);
    connect(action, SIGNAL(triggered()), _view, slot);
    return action;
}

QAction *TraceToolBar::addToggle(const QIcon &icon, const QString &text, const QString &toolTip,
                                 bool checked, const char *slot)
{
    QAction *action = addAction(icon, text);
    action->setToolTip(toolTip);
    action->setCheckable(true);
    action->setChecked(checked);
    connect(action, SIGNAL(toggled(bool)), _view, slot);
    return action;
}

void TraceToolBar::setLoadingEnabled(bool enable)
{
    _load->setEnabled(enable);
}

void TraceToolBar::allowCleaning(bool allow)
{
    setActionAllowed(_clean, allow);
}

void TraceToolBar::allowResetting(bool allow)
{
    setActionAllowed(_reset, allow);
}

void TraceToolBar::removeLoadActions()
{
    for (QAction **action : {&_clean, &_reset, &_load, &_loadSeparator}) {
        delete *action;
        *action = nullptr;
    }
}

} // namespace Gui
} // namespace Norvu
