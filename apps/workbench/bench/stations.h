// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/datamodel/inventory.h>

#include <QHash>
#include <QObject>
#include <QPair>
#include <QString>
#include <QVector>

#include <optional>
#include <vector>

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

/** What is known of stations: where they stand, what their channels record, and when. */
class Stations : public QObject
{
    Q_OBJECT

public:
    explicit Stations(QObject *parent = nullptr);

    /** Everything that is known, from all sources. */
    const Tellarix::DataModel::Inventory &inventory() const { return _inventory; }
    /** Where a station "NET.STA" stands at a time; at a time that nothing is known of, or without
     *  one, where it stood last. */
    std::optional<StationPlace> find(const QString &station,
                                     Tellarix::Core::Time time = Tellarix::Core::Time()) const;
    /** Last places by "NET.STA" of all stations that have coordinates. */
    const QHash<QString, StationPlace> &all() const { return _places; }

    /** Sets what is known from a source, such as a file, in the stead of what was known from it
     *  before; of sources that contradict each other the last one holds. */
    void setSource(const QString &source, std::vector<Tellarix::DataModel::NetworkPtr> networks);
    /** Adds places, or puts them in the stead of former ones. Coordinates that are no numbers, or
     *  latitudes beyond a pole, are left out. */
    void add(const QHash<QString, StationPlace> &places);
    /** Forgets everything. */
    void clear();

signals:
    void changed();

private:
    using Source = QPair<QString, std::vector<Tellarix::DataModel::NetworkPtr>>;

    void update();

    QVector<Source> _sources;
    QHash<QString, StationPlace> _addedPlaces;
    Tellarix::DataModel::Inventory _inventory;
    QHash<QString, StationPlace> _places;
};

} // namespace Workbench
