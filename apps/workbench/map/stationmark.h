// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/map/stationsymbol.h>

#include <QString>

namespace Workbench {

/** A station of the map that knows its code. */
class StationMark : public Norvu::Gui::Map::StationSymbol
{
public:
    /** @param station  "NET.STA" */
    StationMark(const QString &station, double longitude, double latitude)
        : StationSymbol(longitude, latitude), _station(station)
    {}

    const QString &station() const { return _station; }

private:
    QString _station;
};

} // namespace Workbench
