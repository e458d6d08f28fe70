// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/pluginwidget.h>

namespace Norvu {
namespace Gui {

PluginWidget::PluginWidget(QWidget *parent) : QWidget(parent)
{}

PluginWidget::~PluginWidget() = default;

void PluginWidget::init()
{}

std::list<std::string> PluginWidget::messagingSubscriptions() const
{
    return {};
}

} // namespace Gui
} // namespace Norvu

TELLARIX_DEFINE_INTERFACE_POOL(NORVU_GUI_API, Norvu::Gui::PluginWidget)
