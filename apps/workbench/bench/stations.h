// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QHash>
#include <QObject>
#include <QString>

#include <optional>

namespace Workbench {

/** Where a station stands. */
struct StationPlace
{
    double latitude{0};  /**< in degrees, north is positive */
    double longitude{0}; /**< in degrees, east is positive */

    bool operator==(const StationPlace &other) const
    {
        return latitude == other.latitude && longitude == other.longitude;
    }
};

/** Places of stations by "NET.STA", as far as they are known. */
class Stations : public QObject
{
    Q_OBJECT

public:
    explicit Stations(QObject *parent = nullptr);

    std::optional<StationPlace> find(const QString &station) const;
    const QHash<QString, StationPlace> &all() const { return _places; }

    /** Adds places, or puts them in the stead of former ones. Coordinates that are no numbers, or
     *  latitudes beyond a pole, are left out. */
    void add(const QHash<QString, StationPlace> &places);

signals:
    void changed();

private:
    QHash<QString, StationPlace> _places;
};

} // namespace Workbench
