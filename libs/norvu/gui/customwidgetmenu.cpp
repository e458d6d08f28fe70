// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/customwidgetmenu.h>

#include <QMouseEvent>

namespace Norvu {
namespace Gui {

CustomWidgetMenu::CustomWidgetMenu(QWidget *parent) : QMenu(parent)
{}

QSize CustomWidgetMenu::sizeHint() const
{
    return QWidget::sizeHint();
}

void CustomWidgetMenu::mouseReleaseEvent(QMouseEvent *event)
{
    if (rect().contains(event->pos()) && !actionAt(event->pos()))
        return;
    QMenu::mouseReleaseEvent(event);
}

bool CustomWidgetMenu::focusNextPrevChild(bool next)
{
    return QWidget::focusNextPrevChild(next);
}

} // namespace Gui
} // namespace Norvu
