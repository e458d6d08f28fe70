// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/tabbar.h>

#include <QCoreApplication>
#include <QMouseEvent>
#include <QPointer>

namespace Norvu {
namespace Gui {

TabBar::TabBar(QWidget *parent) : QTabBar(parent)
{
    connect(this, SIGNAL(tabMoved(int, int)), this, SLOT(updateIndex(int, int)));
}

int TabBar::tabAt(const QPoint &position) const
{
    return QTabBar::tabAt(position);
}

void TabBar::updateIndex(int from, int)
{
    // The signal tells of the tab that made way: "from" is where the dragged one is now.
    _dragTab = from;
}

void TabBar::mousePressEvent(QMouseEvent *event)
{
    QTabBar::mousePressEvent(event);
    const int tab = tabAt(event->pos());
    if (!event->buttons().testFlag(Qt::LeftButton) || tab < 0)
        return;

    const QRect rect = tabRect(tab);
    _dragTab = tab;
    _pressPoint = event->pos();
    _grabOffsetLeft = event->pos() - rect.topLeft();
    _grabOffsetRight = rect.bottomRight() - event->pos();
}

void TabBar::mouseMoveEvent(QMouseEvent *event)
{
    if (!event->buttons().testFlag(Qt::LeftButton) || _dragTab == -1)
        return;

    const QPoint position = event->pos();
    if (!rect().contains(_pressPoint) && tabRect(_dragTab).contains(position)) {
        resumeMove(position);
        return;
    }
    if (rect().contains(position)) {
        if (fitsAt(position)) {
            QTabBar::mouseMoveEvent(event);
            setCursor(Qt::ArrowCursor);
        }
        return;
    }
    if (rect().contains(_pressPoint))
        endMove(position);
    setCursor(Qt::OpenHandCursor);
}

/** True if the pressed tab, held at @p position, lies wholly in the bar. */
bool TabBar::fitsAt(const QPoint &position) const
{
    return position.x() + _grabOffsetRight.x() <= width() - 1 &&
           position.x() >= _grabOffsetLeft.x();
}

// The base class moves tabs between a press and a release. Both are feigned when the pointer comes
// back into the bar and leaves it, so that the tab snaps into its place meanwhile.

void TabBar::postMouseEvent(QEvent::Type type, const QPoint &position)
{
    QCoreApplication::postEvent(
        this, new QMouseEvent(type, position, Qt::LeftButton, Qt::NoButton, Qt::NoModifier));
}

void TabBar::resumeMove(const QPoint &position)
{
    postMouseEvent(QEvent::MouseButtonPress, _grabOffsetLeft + tabRect(_dragTab).topLeft());
    _pressPoint = position;
}

void TabBar::endMove(const QPoint &position)
{
    postMouseEvent(QEvent::MouseButtonRelease, _pressPoint);
    _pressPoint = position;
}

void TabBar::mouseReleaseEvent(QMouseEvent *event)
{
    const QPointer<TabBar> alive(this);
    QTabBar::mouseReleaseEvent(event);
    if (alive)
        setCursor(Qt::ArrowCursor);
    if (alive && !rect().contains(event->pos()))
        emit detachRequested(_dragTab, event->globalPos());
    // A bar that is gone has no parent to which the event could go on.
    if (!alive)
        event->accept();
}

} // namespace Gui
} // namespace Norvu
