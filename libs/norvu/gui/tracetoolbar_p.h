// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/traceview.h>

#include <QToolBar>

namespace Norvu {
namespace Gui {

/** The commands of a view as a tool bar. */
class TraceToolBar : public QToolBar
{
    Q_OBJECT

public:
    /** @param view  gets the commands; it isn't the bar's parent, and outlives it */
    explicit TraceToolBar(TraceView *view);

    bool hasLoadAction() const { return _load != nullptr; }
    /** Only while there is that action. */
    void setLoadingEnabled(bool enable);
    /** Without the action these do nothing. */
    void allowCleaning(bool allow);
    void allowResetting(bool allow);
    void removeLoadActions();

private:
    void addLoadTools();
    void addViewTools();
    void addNormalizationTools();
    QAction *addTool(const QIcon &icon, const QString &text, const QString &toolTip,
                     const char *slot);
    QAction *addToggle(const QIcon &icon, const QString &text, const QString &toolTip, bool checked,
                       const char *slot);

    TraceView *_view;
    QAction *_load{nullptr};
    QAction *_clean{nullptr};
    QAction *_reset{nullptr};
    QAction *_loadSeparator{nullptr};
};

} // namespace Gui
} // namespace Norvu
