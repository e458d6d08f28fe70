// SPDX-License-Identifier: LGPL-3.0-or-later

#include "panel.h"

#include <QAction>

namespace Workbench {

Panel::Panel(Bench *bench, const PanelDescription &description)
    : _bench(bench), _description(description), _toggle(new QAction(this))
{
    setObjectName(description.name);
    _toggle->setText(description.toggleText.isEmpty() ? description.title : description.toggleText);
    _toggle->setIcon(description.icon);
    _toggle->setShortcut(description.key);
    _toggle->setCheckable(description.place != PanelPlace::Centre &&
                          description.place != PanelPlace::Window);
}

Panel::~Panel() = default;

QList<QAction *> Panel::menuActions(Menu) const
{
    return {};
}

QList<QMenu *> Panel::menus() const
{
    return {};
}

QList<QToolBar *> Panel::toolBars() const
{
    return {};
}

void Panel::fillStatusBar(QStatusBar *)
{}

void Panel::saveState(QSettings &) const
{}

void Panel::restoreState(QSettings &)
{}

QVector<PanelPicture> Panel::pictures()
{
    return {{_description.name + ".png", window()->grab()}};
}

QStringList Panel::fileFilters() const
{
    return {};
}

bool Panel::canOpen(const QString &) const
{
    return false;
}

bool Panel::openSources(const QStringList &)
{
    return true;
}

bool Panel::openDemonstration(const QString &)
{
    return true;
}

bool Panel::openRemembered()
{
    return false;
}

void Panel::closeAll()
{}

} // namespace Workbench
