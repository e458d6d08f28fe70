// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QMenu>

namespace Norvu {
namespace Gui {
class MultiTraceWidget;
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class OverviewAxes;

/** Shows the overview in the place of a view's rows, and how it is drawn. */
class OverviewMenu : public QMenu
{
    Q_OBJECT

public:
    OverviewMenu(Norvu::Gui::TraceView *view, Norvu::Gui::MultiTraceWidget *overview,
                 OverviewAxes *axes, QWidget *parent);

    /** Shows the overview, for tool bars. */
    QAction *showAction() const { return _show; }

public slots:
    void setOverviewShown(bool show);
    /** Rows beside each other, with time running down. */
    void setHorizontal(bool horizontal);
    void setWigglesShown(bool show);
    /** Rows at their distances. */
    void setDistancesShown(bool show);

signals:
    /** The overview has come, gone or turned. */
    void changed();

private:
    QAction *addToggle(const QString &text, const QString &shortcut, const char *slot);
    void update();

    Norvu::Gui::TraceView *_view;
    Norvu::Gui::MultiTraceWidget *_overview;
    OverviewAxes *_axes;
    QAction *_show;
    QAction *_horizontal;
    QAction *_wiggles;
    QAction *_distances;
    QAction *_degrees;
};

} // namespace Workbench
