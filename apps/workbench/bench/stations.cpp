// SPDX-License-Identifier: LGPL-3.0-or-later

#include "stations.h"

#include <cmath>

namespace Workbench {

namespace {

bool isOnEarth(const StationPlace &place)
{
    return std::abs(place.latitude) <= 90 && std::isfinite(place.longitude);
}

} // namespace

Stations::Stations(QObject *parent) : QObject(parent)
{}

std::optional<StationPlace> Stations::find(const QString &station) const
{
    const auto place = _places.constFind(station);
    return place == _places.constEnd() ? std::nullopt : std::make_optional(*place);
}

void Stations::add(const QHash<QString, StationPlace> &places)
{
    bool hasChanged = false;
    for (auto place = places.begin(); place != places.end(); ++place) {
        if (!isOnEarth(*place) || find(place.key()) == *place)
            continue;
        _places.insert(place.key(), *place);
        hasChanged = true;
    }
    if (hasChanged)
        emit changed();
}

} // namespace Workbench
