// SPDX-License-Identifier: LGPL-3.0-or-later

#include "overviewmenu.h"

#include "overviewaxes.h"

#include <norvu/gui/fontawesome5.h>
#include <norvu/gui/multitracewidget.h>
#include <norvu/gui/traceview.h>

using namespace Norvu;

namespace Workbench {

OverviewMenu::OverviewMenu(Gui::TraceView *view, Gui::MultiTraceWidget *overview,
                           OverviewAxes *axes, QWidget *parent)
    : QMenu(tr("&Overview"), parent), _view(view), _overview(overview), _axes(axes)
{
    _show = addToggle(tr("&Overview of all rows"), tr("O"), SLOT(setOverviewShown(bool)));
    _show->setIcon(FontAwesome5::iconSolid(FontAwesome5::chLayerGroup));
    _wiggles = addToggle(tr("&Wiggles"), tr("W"), SLOT(setWigglesShown(bool)));
    _horizontal = addToggle(tr("Rows from &left to right"), tr("H"), SLOT(setHorizontal(bool)));
    _distances = addToggle(tr("Rows at their &distances"), tr("D"), SLOT(setDistancesShown(bool)));
    _degrees = addAction(tr("Distances in de&grees"));
    _degrees->setCheckable(true);
    connect(_degrees, SIGNAL(toggled(bool)), _axes, SLOT(setDegreesShown(bool)));
    addSeparator();
    addActions(_overview->actions());
    setOverviewShown(false);
}

QAction *OverviewMenu::addToggle(const QString &text, const QString &shortcut, const char *slot)
{
    QAction *action = addAction(text);
    action->setCheckable(true);
    action->setShortcut(shortcut);
    connect(action, SIGNAL(toggled(bool)), this, slot);
    return action;
}

void OverviewMenu::setOverviewShown(bool show)
{
    _show->setChecked(show);
    // Rows may have come since the overview was last asked for its size.
    _overview->setOrientation(_overview->orientation());
    _overview->setActive(show);
    for (QAction *action : {_wiggles, _horizontal, _distances, _degrees})
        action->setEnabled(show);
    for (QAction *action : _overview->actions())
        action->setEnabled(show);
    update();
}

void OverviewMenu::setHorizontal(bool horizontal)
{
    _horizontal->setChecked(horizontal);
    _overview->setOrientation(horizontal ? Qt::Horizontal : Qt::Vertical);
    update();
}

void OverviewMenu::setWigglesShown(bool show)
{
    _wiggles->setChecked(show);
    _overview->setWigglesShown(show);
}

void OverviewMenu::setDistancesShown(bool show)
{
    _distances->setChecked(show);
    _axes->setDistancesShown(show);
}

/** The view's time scale runs from left to right: time that runs down has one of its own. */
void OverviewMenu::update()
{
    _view->setTimeScaleVisible(!_show->isChecked() || !_horizontal->isChecked());
    _axes->update();
    emit changed();
}

} // namespace Workbench
