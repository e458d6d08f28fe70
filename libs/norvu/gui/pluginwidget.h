// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <tellarix/core/interfacefactory.h>

#include <QWidget>

#include <list>
#include <string>

namespace Norvu {
namespace Gui {

/**
 * A widget that plugs into an application, which plug-ins offer under a service name.
 *
 * A host makes it without a parent, puts it where it belongs, and calls init().
 */
class NORVU_GUI_API PluginWidget : public QWidget
{
public:
    explicit PluginWidget(QWidget *parent = nullptr);
    ~PluginWidget() override;

    /** Title of its tab or window. */
    virtual QString title() const = 0;
    /** Called once, when the widget stands in its window; does nothing here. */
    virtual void init();
    /** Names of the messaging groups that it wants; none here. */
    virtual std::list<std::string> messagingSubscriptions() const;
};

} // namespace Gui
} // namespace Norvu

TELLARIX_DECLARE_INTERFACE_POOL(NORVU_GUI_API, Norvu::Gui::PluginWidget)

namespace Norvu {
namespace Gui {

using PluginWidgetFactoryInterface =
    Tellarix::Core::Generic::InterfaceFactoryInterface<PluginWidget>;

} // namespace Gui
} // namespace Norvu
