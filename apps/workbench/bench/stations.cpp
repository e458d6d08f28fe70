// SPDX-License-Identifier: LGPL-3.0-or-later

#include "stations.h"

#include <tellarix/core/datamodel/station.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

using namespace Tellarix;

namespace Workbench {

namespace {

bool isOnEarth(const StationPlace &place)
{
    return std::abs(place.latitude) <= 90 && std::isfinite(place.longitude);
}

std::vector<DataModel::NetworkPtr> networksOf(const QHash<QString, StationPlace> &places)
{
    std::vector<DataModel::NetworkPtr> networks;
    for (auto place = places.begin(); place != places.end(); ++place) {
        const std::string network = place.key().section('.', 0, 0).toStdString();
        const std::string code = place.key().section('.', 1).toStdString();
        const DataModel::StationPtr station(new DataModel::Station(code));
        station->setCoordinates(
            {place->latitude, place->longitude, std::numeric_limits<double>::quiet_NaN()});
        networks.emplace_back(new DataModel::Network(network));
        networks.back()->add(station.get());
    }
    return networks;
}

} // namespace

Stations::Stations(QObject *parent) : QObject(parent)
{}

std::optional<StationPlace> Stations::find(const QString &station, Core::Time time) const
{
    const auto last = _places.constFind(station);
    const DataModel::Coordinates place = _inventory.coordinates(station.toStdString(), time);
    if (place.isPlace())
        return StationPlace{place.latitude, place.longitude};
    return last == _places.constEnd() ? std::nullopt : std::make_optional(*last);
}

void Stations::setSource(const QString &source, std::vector<DataModel::NetworkPtr> networks)
{
    const auto former = std::find_if(_sources.begin(), _sources.end(),
                                     [&](const Source &other) { return other.first == source; });
    if (former == _sources.end() && networks.empty())
        return;
    if (former != _sources.end())
        _sources.erase(former);
    if (!networks.empty())
        _sources.append({source, std::move(networks)});
    update();
}

void Stations::add(const QHash<QString, StationPlace> &places)
{
    bool hasChanged = false;
    for (auto place = places.begin(); place != places.end(); ++place) {
        if (!isOnEarth(*place) || find(place.key()) == *place)
            continue;
        _addedPlaces.insert(place.key(), *place);
        hasChanged = true;
    }
    if (hasChanged)
        setSource(QString(), networksOf(_addedPlaces));
}

void Stations::clear()
{
    if (_sources.isEmpty())
        return;
    _sources.clear();
    _addedPlaces.clear();
    update();
}

void Stations::update()
{
    std::vector<DataModel::NetworkPtr> networks;
    for (const Source &source : std::as_const(_sources))
        networks.insert(networks.end(), source.second.begin(), source.second.end());
    _inventory = DataModel::Inventory(std::move(networks));

    _places.clear();
    for (const std::string &id : _inventory.stationIDs()) {
        const DataModel::Coordinates place = _inventory.coordinates(id, Core::Time());
        if (place.isPlace())
            _places.insert(QString::fromStdString(id), {place.latitude, place.longitude});
    }
    emit changed();
}

} // namespace Workbench
