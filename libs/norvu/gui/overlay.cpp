// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/overlay.h>

#include <QResizeEvent>

namespace Norvu {
namespace Gui {

Overlay::Overlay(QWidget *parent, Qt::WindowFlags flags) : QWidget(parent, flags)
{
    followParent();
}

void Overlay::followParent()
{
    if (!parentWidget())
        return;

    parentWidget()->installEventFilter(this);
    resize(parentWidget()->size());
}

bool Overlay::eventFilter(QObject *object, QEvent *event)
{
    if (object == parent() && event->type() == QEvent::Resize)
        resize(static_cast<QResizeEvent *>(event)->size());
    return false;
}

bool Overlay::event(QEvent *event)
{
    if (event->type() == QEvent::ParentChange)
        followParent();
    else if (event->type() == QEvent::ParentAboutToChange && parentWidget())
        parentWidget()->removeEventFilter(this);
    return QWidget::event(event);
}

} // namespace Gui
} // namespace Norvu
