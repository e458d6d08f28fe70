// SPDX-License-Identifier: LGPL-3.0-or-later

#include "magnitudetimepanel.h"

#include <norvu-workbench/panels.h>

#include <tellarix/client/plugin.h>

/** Offers the panel to the workbench. */
class MagnitudeTimePlugin : public QObject, public Tellarix::Client::Plugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID TELLARIX_PLUGIN_INTERFACE FILE "magnitudetime.json")
    Q_INTERFACES(Tellarix::Client::Plugin)

private:
    Workbench::PanelOffer<MagnitudeTimePanel> _panel;
};

#include "plugin.moc"
