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

/** Shows the overview in the place of a view's rows, and how it is drawn. */
class OverviewMenu : public QMenu
{
    Q_OBJECT

public:
    OverviewMenu(Norvu::Gui::TraceView *view, Norvu::Gui::MultiTraceWidget *overview,
                 QWidget *parent);

    /** Shows the overview, for tool bars. */
    QAction *showAction() const { return _show; }

public slots:
    void setOverviewShown(bool show);
    /** Rows beside each other, with time running down. */
    void setHorizontal(bool horizontal);
    void setWigglesShown(bool show);

private:
    QAction *addToggle(const QString &text, const QString &shortcut, const char *slot);
    void updateTimeScale();

    Norvu::Gui::TraceView *_view;
    Norvu::Gui::MultiTraceWidget *_overview;
    QAction *_show;
    QAction *_horizontal;
    QAction *_wiggles;
};

} // namespace Workbench
