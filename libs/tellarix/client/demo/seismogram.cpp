// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/demo/seismogram_p.h>

#include <tellarix/client/demo/demorandom_p.h>
#include <tellarix/client/demo/regionalmodel_p.h>

#include <algorithm>
#include <cmath>

namespace Tellarix {
namespace Client {

namespace {

constexpr double Pi = 3.14159265358979323846;
constexpr double MetersPerKm = 1000;
constexpr int SampleCount = static_cast<int>(DemoSeconds * DemoSamplingFrequency);
constexpr double SampleInterval = 1 / DemoSamplingFrequency;
constexpr int DigitizerLimit = (1 << 23) - 1;

using Trace = std::vector<double>;
/** Vertical, radial and transverse, or vertical, north and east. */
using Components = std::array<Trace, 3>;

double radians(double degrees)
{
    return degrees * Pi / 180;
}

/** Low pass of 6 dB per octave. */
class LowPass
{
public:
    explicit LowPass(double cornerFrequency)
        : _share(1 - std::exp(-2 * Pi * cornerFrequency * SampleInterval))
    {}

    double operator()(double sample) { return _state += _share * (sample - _state); }

private:
    double _share;
    double _state{0};
};

/** A piece of the rupture that breaks some time behind its beginning. */
struct SubEvent
{
    double delay;
    double momentShare;
};

/** A source at the hypocentre of the demonstration. */
struct Source
{
    double seconds; /**< behind the origin time */
    double magnitude;
    std::vector<SubEvent> rupture;

    /** Scalar moment in N m; Hanks and Kanamori (1979). */
    double moment() const { return std::pow(10, 1.5 * magnitude + 9.1); }
    /** Of S waves, in Hz, for a stress drop of 6 MPa; Brune (1970). */
    double cornerFrequency() const { return 0.49 * 3460 * std::cbrt(6E6 / moment()); }
};

const Source MainShock{0, 5.5, {{0, 0.3}, {0.35, 0.38}, {0.8, 0.2}, {1.25, 0.12}}};
const Source Aftershock{497, 3.4, {{0, 0.4}, {0.05, 0.27}, {0.12, 0.2}, {0.23, 0.13}}};

/** What P and S waves differ in. */
struct WaveParameters
{
    bool isShear;
    double velocity; /**< in m/s */
    double quality;
    double cornerFactor;
    double averageRadiation;
    std::array<double, 3> coda; /**< share of the scattered waves by component */
};

constexpr WaveParameters Waves[] = {
    {false, 6000, 550, 1.4, 0.52, {1.0, 0.65, 0.5}},
    {true, 3460, 400, 1.0, 0.63, {0.7, 1.0, 1.0}},
};

double displacementFactor(const Source &source, const WaveParameters &wave)
{
    constexpr double Density = 2700;
    constexpr double FreeSurface = 2;
    return FreeSurface * source.moment() /
           (4 * Pi * Density * std::pow(wave.velocity, 3) * MetersPerKm);
}

std::array<double, 3> polarization(const RegionalArrival &arrival, double azimuth)
{
    const DemoOrigin origin = demonstrationOrigin();
    const RadiationPattern pattern =
        radiationPattern(radians(origin.strike), radians(origin.dip), radians(origin.rake),
                         arrival.takeOffAngle, radians(azimuth));
    const double vertical = std::cos(arrival.incidenceAngle);
    const double horizontal = std::sin(arrival.incidenceAngle);
    if (!arrival.isShear)
        return {pattern.p * vertical, pattern.p * horizontal, 0};
    return {-pattern.sv * horizontal, pattern.sv * vertical, pattern.sh};
}

/** Adds an impulse of unit area times @p amplitude at a time between two samples. */
void addImpulse(Trace &trace, double seconds, double amplitude)
{
    const double position = seconds * DemoSamplingFrequency;
    const auto index = static_cast<size_t>(position);
    if (position < 0 || index + 1 >= trace.size())
        return;

    const double fraction = position - std::floor(position);
    trace[index] += amplitude * (1 - fraction) * DemoSamplingFrequency;
    trace[index + 1] += amplitude * fraction * DemoSamplingFrequency;
}

/** Amplitudes of scattered waves over time, for long and for short periods. */
struct CodaEnvelope
{
    Trace slow{Trace(SampleCount, 0.0)};
    Trace fast{Trace(SampleCount, 0.0)};

    void add(double seconds, double amplitude, double duration);
};

void addDecay(Trace &trace, double seconds, double amplitude, double decaySeconds)
{
    const int first = std::max(0, static_cast<int>(std::ceil(seconds * DemoSamplingFrequency)));
    const double factor = std::exp(-SampleInterval / decaySeconds);
    const double end = amplitude * 1E-6;
    for (int i = first; i < SampleCount && amplitude > end; ++i, amplitude *= factor)
        trace[static_cast<size_t>(i)] += amplitude;
}

void CodaEnvelope::add(double seconds, double amplitude, double duration)
{
    addDecay(slow, seconds, 0.75 * amplitude, duration);
    addDecay(slow, seconds, 0.25 * amplitude, 4 * duration);
    addDecay(fast, seconds, 0.85 * amplitude, 0.6 * duration);
    addDecay(fast, seconds, 0.15 * amplitude, 2 * duration);
}

void addScattered(Trace &trace, const CodaEnvelope &envelope, double share, DemoRandom &gaussian)
{
    constexpr double SplitFrequency = 1.5;
    LowPass longPeriods(SplitFrequency);
    for (size_t i = 0; i < trace.size(); ++i) {
        if (envelope.slow[i] <= 0)
            continue;
        const double noise = gaussian();
        const double slow = longPeriods(noise);
        trace[i] += share * (slow * envelope.slow[i] + (noise - slow) * envelope.fast[i]);
    }
}

/** Where the spectrum of a wave at a station falls off: by the source, and on the way. */
struct CornerFrequencies
{
    double source;
    double path;

    CornerFrequencies(const Source &from, const WaveParameters &wave, double distanceKm)
        : source(from.cornerFrequency() * wave.cornerFactor)
    {
        constexpr double SiteAttenuation = 0.025; // in s
        const double travelTime = distanceKm * MetersPerKm / wave.velocity;
        path = 0.8 / (Pi * (SiteAttenuation + travelTime / wave.quality));
    }
};

/** Displacement impulses to velocity pulses of the source, less what the path takes away. */
void shapePulses(Trace &trace, const CornerFrequencies &corners)
{
    LowPass first(corners.source);
    LowPass second(corners.source);
    LowPass third(corners.path);
    LowPass fourth(corners.path);
    double previous = 0;
    for (double &sample : trace) {
        const double displacement = fourth(third(second(first(sample))));
        sample = (displacement - previous) * DemoSamplingFrequency;
        previous = displacement;
    }
}

/** Amplitude of a sample of scattered waves against the impulse of the wave that they come from. */
double scattering(const CornerFrequencies &corners, double distanceKm)
{
    // A low pass leaves the less of noise, beside an impulse, the higher it goes.
    const double bandwidth = std::max(1.0, std::min(corners.source, corners.path) / 0.6);
    return (0.03 + 0.04 * std::min(1.5, distanceKm / 200)) * std::sqrt(bandwidth);
}

void addBodyWaves(Components &components, const DemoStation &station, const Source &source,
                  const WaveParameters &wave, DemoRandom &gaussian)
{
    const double distance = station.distanceKm;
    const CornerFrequencies corners(source, wave, distance);
    const double codaShare = scattering(corners, distance) * wave.averageRadiation;
    const double codaSeconds = (wave.isShear ? 9 : 3) + distance / (wave.isShear ? 30 : 25);

    Components impulses;
    impulses.fill(Trace(SampleCount, 0.0));
    CodaEnvelope envelope;
    for (const RegionalArrival &arrival :
         regionalArrivals(distance, demonstrationOrigin().depthKm)) {
        if (arrival.isShear != wave.isShear)
            continue;
        const double onset = DemoSecondsBeforeOrigin + source.seconds + arrival.travelTime;
        const double amplitude = displacementFactor(source, wave) * arrival.spreading;
        const std::array<double, 3> direction = polarization(arrival, station.azimuth);
        for (const SubEvent &part : source.rupture) {
            for (size_t i = 0; i < impulses.size(); ++i)
                addImpulse(impulses[i], onset + part.delay,
                           amplitude * direction[i] * part.momentShare);
        }
        envelope.add(onset, codaShare * amplitude * DemoSamplingFrequency, codaSeconds);
    }

    for (size_t i = 0; i < impulses.size(); ++i) {
        addScattered(impulses[i], envelope, wave.coda[i], gaussian);
        shapePulses(impulses[i], corners);
        std::transform(impulses[i].begin(), impulses[i].end(), components[i].begin(),
                       components[i].begin(), std::plus<>());
    }
}

/**
 * Adds Rayleigh waves (vertical and radial) and Love waves (transverse) whose long periods travel
 * faster, between 3.4 km/s at 20 s and 2.5 km/s at 3 s.
 */
void addSurfaceWaves(Components &components, const DemoStation &station, const Source &source)
{
    constexpr double Fastest = 3.4;
    constexpr double Slowest = 2.5;
    constexpr double LongestPeriod = 20;
    constexpr double ShortestPeriod = 3;
    constexpr double VelocityAt100Km = 1.6E-3; // of a shock of magnitude 5.5, in m/s
    // Near the source the waves have not parted from the body waves yet.
    const double amplitude = VelocityAt100Km * source.moment() / MainShock.moment() * 100 /
                             station.distanceKm * std::min(1.0, station.distanceKm / 150);
    const double begin = DemoSecondsBeforeOrigin + source.seconds;
    const auto first =
        static_cast<size_t>((begin + station.distanceKm / Fastest) * DemoSamplingFrequency);
    const auto last =
        static_cast<size_t>((begin + station.distanceKm / Slowest) * DemoSamplingFrequency);

    double phase = 0;
    for (size_t i = first; i < std::min<size_t>(last, SampleCount); ++i) {
        const double seconds = static_cast<double>(i) * SampleInterval - begin;
        const double share = (station.distanceKm / seconds - Slowest) / (Fastest - Slowest);
        const double period = ShortestPeriod + (LongestPeriod - ShortestPeriod) * share;
        phase += 2 * Pi / period * SampleInterval;
        const double envelope =
            amplitude * std::pow(std::sin(Pi * std::sqrt(std::max(share, 0.0))), 2);
        components[0][i] += envelope * std::sin(phase);
        components[1][i] += 0.7 * envelope * std::cos(phase);
        components[2][i] += 0.9 * envelope * std::sin(1.06 * phase + 0.8);
    }
}

/** Turns radial and transverse into north and east. */
void rotate(Components &components, double backAzimuth)
{
    const double direction = radians(backAzimuth + 180);
    const double cosine = std::cos(direction);
    const double sine = std::sin(direction);
    for (size_t i = 0; i < SampleCount; ++i) {
        const double radial = components[1][i];
        const double transverse = components[2][i];
        components[1][i] = radial * cosine - transverse * sine;
        components[2][i] = radial * sine + transverse * cosine;
    }
}

/** Adds noise between two corner frequencies whose root mean square is @p level. */
void addNoise(Trace &trace, double lowFrequency, double highFrequency, double level,
              DemoRandom &gaussian)
{
    LowPass first(highFrequency);
    LowPass second(highFrequency);
    LowPass third(lowFrequency);
    LowPass fourth(lowFrequency);
    Trace noise(trace.size());
    double energy = 0;
    for (double &sample : noise) {
        const double bounded = second(first(gaussian()));
        const double rising = bounded - third(bounded);
        sample = rising - fourth(rising);
        energy += sample * sample;
    }
    const double scale = level / std::sqrt(energy / static_cast<double>(noise.size()));
    for (size_t i = 0; i < trace.size(); ++i)
        trace[i] += scale * noise[i];
}

/** A machine near the station: a hum that swells and shakes of the ground around it. */
void addMachine(Trace &trace, double phase, DemoRandom &gaussian)
{
    constexpr double Level = 4E-6;
    addNoise(trace, 3, 12, Level, gaussian);
    for (size_t i = 0; i < trace.size(); ++i) {
        const double seconds = static_cast<double>(i) * SampleInterval;
        const double swell = 1 + 0.6 * std::sin(2 * Pi * seconds / 41 + phase);
        trace[i] += Level * swell * std::sin(2 * Pi * 8.33 * seconds + phase);
    }
}

/** Ground noise in m/s: swell of the seas, wind and traffic, and slow tilt of the horizontals. */
void addGroundNoise(Components &components, const DemoStation &station, DemoRandom &gaussian)
{
    const double microseism = gaussian.uniform(0.5E-6, 1.1E-6);
    const double traffic = 1E-8 * std::pow(10, gaussian.uniform(0, 1.3));
    for (size_t i = 0; i < components.size(); ++i) {
        const bool isVertical = i == 0;
        addNoise(components[i], 0.12, 0.22, microseism * (isVertical ? 1 : 0.85), gaussian);
        addNoise(components[i], 1.5, 14, traffic * (isVertical ? 1 : 1.3), gaussian);
        addNoise(components[i], 0.004, 0.02, isVertical ? 3E-8 : 2.5E-7, gaussian);
        if (station.flaw == DemoStation::Flaw::Noise)
            addMachine(components[i], static_cast<double>(i), gaussian);
    }
}

std::vector<int> digitize(const Trace &trace, double gain, double offset)
{
    std::vector<int> counts(trace.size());
    std::transform(trace.begin(), trace.end(), counts.begin(), [=](double sample) {
        const double count = std::round(sample * gain + offset);
        return static_cast<int>(std::clamp<double>(count, -DigitizerLimit, DigitizerLimit));
    });
    return counts;
}

} // namespace

DemoSeismogram synthesizeSeismogram(const DemoStation &station, uint64_t seed)
{
    DemoRandom gaussian(seed);
    Components components;
    components.fill(Trace(SampleCount, 0.0));
    for (const Source &source : {MainShock, Aftershock}) {
        for (const WaveParameters &wave : Waves)
            addBodyWaves(components, station, source, wave, gaussian);
        addSurfaceWaves(components, station, source);
    }
    rotate(components, station.backAzimuth);
    addGroundNoise(components, station, gaussian);

    DemoSeismogram seismogram;
    for (size_t i = 0; i < components.size(); ++i) {
        const double offset = gaussian.uniform(-900, 900);
        seismogram[i] = digitize(components[i], station.gain, offset);
    }
    return seismogram;
}

} // namespace Client
} // namespace Tellarix
