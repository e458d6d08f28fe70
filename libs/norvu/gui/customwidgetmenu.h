// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QMenu>

namespace Norvu {
namespace Gui {

/**
 * A drop-down for any widgets: its size is that of its layout, whatever actions it has.
 *
 * Unlike a menu of actions it stays open when a click misses all widgets, and the tab key goes from
 * one widget to the next.
 */
class NORVU_GUI_API CustomWidgetMenu : public QMenu
{
    Q_OBJECT

public:
    explicit CustomWidgetMenu(QWidget *parent = nullptr);

    QSize sizeHint() const override;

protected:
    void mouseReleaseEvent(QMouseEvent *event) override;
    bool focusNextPrevChild(bool next) override;
};

} // namespace Gui
} // namespace Norvu
