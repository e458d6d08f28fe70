// SPDX-License-Identifier: LGPL-3.0-or-later

#include "demonstration.h"

#include "stations.h"

#include <tellarix/client/demo/democatalogue.h>
#include <tellarix/client/demo/demostation.h>
#include <tellarix/core/environment.h>

#include <QCoreApplication>
#include <QDir>

using namespace Tellarix;

namespace Workbench {

QString demonstrationFolder()
{
    return QDir(QString::fromUtf8(Environment::Instance()->dataDirectory()))
        .filePath("demonstration");
}

EventFacts demonstrationEvent()
{
    const Client::DemoOrigin origin = Client::demonstrationOrigin();
    EventFacts event;
    event.publicID = QString::fromStdString(Client::demonstrationEventID());
    event.originTime = origin.time;
    event.latitude = origin.latitude;
    event.longitude = origin.longitude;
    event.depthKm = origin.depthKm;
    event.magnitude = origin.magnitude;
    event.region = QCoreApplication::translate("Workbench", "Demonstration");
    return event;
}

void addDemonstrationStations(Stations *stations)
{
    stations->setSource(demonstrationFolder(), {Client::demonstrationNetwork()});
}

} // namespace Workbench
