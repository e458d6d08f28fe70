// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/core/datamodel/network.h>
#include <tellarix/core/time.h>

#include <QString>
#include <QVector>

namespace Tellarix {
namespace Client {

/** The made-up earthquake of the demonstration data. */
struct DemoOrigin
{
    Core::Time time;
    double latitude;
    double longitude;
    double depthKm;
    double magnitude; /**< moment magnitude */
    double strike;    /**< of the double couple, in degrees */
    double dip;
    double rake;
};

/** A made-up station that recorded it. */
struct TELLARIX_CLIENT_API DemoStation
{
    /** What is wrong with its recording, so that a view has something to show. */
    enum class Flaw
    {
        None,
        Gap,     /**< some seconds are missing on all components */
        Overlap, /**< some seconds were sent twice, and a few records arrived twice */
        Noise,   /**< a machine runs nearby */
    };

    QString network;
    QString station;
    QString location;
    double latitude;
    double longitude;
    double elevation; /**< in m */
    double gain;      /**< in counts per m/s, the same at all frequencies */
    Flaw flaw{Flaw::None};
    double distanceKm{0};  /**< from the epicentre along the surface */
    double azimuth{0};     /**< at the epicentre, in degrees */
    double backAzimuth{0}; /**< at the station, in degrees */

    /** The three channel codes, vertical first. */
    static QStringList Channels();
};

/** Onset of a seismic phase at a station. */
struct DemoArrival
{
    QString phase; /**< Pg, Pn, PmP, Sg, Sn or SmS */
    Core::Time time;
};

TELLARIX_CLIENT_API DemoOrigin demonstrationOrigin();
/** The twenty stations, nearest first. */
TELLARIX_CLIENT_API QVector<DemoStation> demonstrationStations();
/** The same stations with their channels and gains. */
TELLARIX_CLIENT_API DataModel::NetworkPtr demonstrationNetwork();
/** The onsets of the earthquake at a station in order of time. */
TELLARIX_CLIENT_API QVector<DemoArrival> demonstrationArrivals(const DemoStation &station);

} // namespace Client
} // namespace Tellarix
