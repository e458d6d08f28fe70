// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/menu.h>

#include <QButtonGroup>
#include <QLayout>

namespace Norvu {
namespace Gui {

Menu::Menu(QWidget *parent) : QMenu(parent), _buttonGroup(new QButtonGroup(this))
{}

QSize Menu::sizeHint() const
{
    return layout() ? layout()->sizeHint() : QMenu::sizeHint();
}

bool Menu::focusNextPrevChild(bool next)
{
    return QWidget::focusNextPrevChild(next);
}

} // namespace Gui
} // namespace Norvu
