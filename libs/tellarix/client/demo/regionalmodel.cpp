// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/demo/regionalmodel_p.h>

#include <algorithm>
#include <cmath>

namespace Tellarix {
namespace Client {

namespace {

constexpr double Pi = 3.14159265358979323846;
constexpr double MohoDepthKm = 30;
/** Velocities grow with depth inside a real crust, which bends waves towards the vertical. */
constexpr double LargestIncidence = 62 * Pi / 180;
/** Amplitude of waves along and off the Moho against the direct wave at the same distance. */
constexpr double HeadWaveShare = 0.24;
constexpr double ReflectionShare = 0.45;

/** Velocities of one kind of wave in km/s, and the names of its phases. */
struct WaveKind
{
    bool isShear;
    double crust;
    double mantle;
    const char *direct;
    const char *reflected;
    const char *head;
};

constexpr WaveKind WaveKinds[] = {
    {false, 6.0, 8.0, "Pg", "PmP", "Pn"},
    {true, 3.46, 4.6, "Sg", "SmS", "Sn"},
};

RegionalArrival directWave(const WaveKind &kind, double distance, double depth)
{
    const double path = std::hypot(distance, depth);
    const double angle = std::atan2(distance, depth);
    return {
        kind.direct, kind.isShear, path / kind.crust, Pi - angle, std::min(angle, LargestIncidence),
        1 / path};
}

RegionalArrival reflectedWave(const WaveKind &kind, double distance, double depth)
{
    const double height = 2 * MohoDepthKm - depth;
    const double path = std::hypot(distance, height);
    const double angle = std::atan2(distance, height);
    // Little comes back from the Moho before the critical angle.
    const double share =
        ReflectionShare * std::min(1.0, std::pow(std::sin(angle) * kind.mantle / kind.crust, 4));
    return {
        kind.reflected, kind.isShear, path / kind.crust, angle, std::min(angle, LargestIncidence),
        share / path};
}

RegionalArrival headWave(const WaveKind &kind, double distance, double depth)
{
    const double height = 2 * MohoDepthKm - depth;
    const double angle = std::asin(kind.crust / kind.mantle);
    const double time = distance / kind.mantle + height * std::cos(angle) / kind.crust;
    return {kind.head, kind.isShear, time, angle, angle, HeadWaveShare / distance};
}

bool hasHeadWave(const WaveKind &kind, double distance, double depth)
{
    const double angle = std::asin(kind.crust / kind.mantle);
    return distance > (2 * MohoDepthKm - depth) * std::tan(angle);
}

} // namespace

std::vector<RegionalArrival> regionalArrivals(double distanceKm, double depthKm)
{
    std::vector<RegionalArrival> arrivals;
    for (const WaveKind &kind : WaveKinds) {
        arrivals.push_back(directWave(kind, distanceKm, depthKm));
        arrivals.push_back(reflectedWave(kind, distanceKm, depthKm));
        if (hasHeadWave(kind, distanceKm, depthKm))
            arrivals.push_back(headWave(kind, distanceKm, depthKm));
    }
    std::sort(arrivals.begin(), arrivals.end(),
              [](const auto &a, const auto &b) { return a.travelTime < b.travelTime; });
    return arrivals;
}

RadiationPattern radiationPattern(double strike, double dip, double rake, double takeOffAngle,
                                  double azimuth)
{
    using std::cos;
    using std::sin;
    const double phi = azimuth - strike;
    const double sinI = sin(takeOffAngle);
    const double cosI = cos(takeOffAngle);
    const double sin2I = sin(2 * takeOffAngle);
    const double cos2I = cos(2 * takeOffAngle);
    const double strikeSlip = cos(rake) * sin(dip);
    const double dipSlip = sin(rake) * sin(2 * dip);
    const double tilted = cos(rake) * cos(dip);
    const double thrust = sin(rake) * cos(2 * dip);

    RadiationPattern pattern;
    pattern.p = strikeSlip * sinI * sinI * sin(2 * phi) - tilted * sin2I * cos(phi) +
                dipSlip * (cosI * cosI - sinI * sinI * sin(phi) * sin(phi)) +
                thrust * sin2I * sin(phi);
    pattern.sv = thrust * cos2I * sin(phi) - tilted * cos2I * cos(phi) +
                 0.5 * strikeSlip * sin2I * sin(2 * phi) -
                 0.5 * dipSlip * sin2I * (1 + sin(phi) * sin(phi));
    pattern.sh = tilted * cosI * sin(phi) + strikeSlip * sinI * cos(2 * phi) +
                 thrust * cosI * cos(phi) - 0.5 * dipSlip * sinI * sin(2 * phi);
    return pattern;
}

} // namespace Client
} // namespace Tellarix
