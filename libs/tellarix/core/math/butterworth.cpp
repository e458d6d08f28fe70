// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/math/butterworth.h>

#include <tellarix/core/math/finite_p.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace Tellarix {
namespace Math {
namespace Filtering {
namespace IIR {

namespace {

using Complex = std::complex<double>;

constexpr double Pi = 3.14159265358979323846;
/** Samples between two checks of the state for values that only cost time. */
constexpr int BlockLength = 4096;
constexpr double TinyState = 1E-250;

/** Analogue section (n2 s^2 + n1 s + n0) / (s^2 + d1 s + d0), or without its squares. */
struct AnalogueSection
{
    double n2;
    double n1;
    double n0;
    double d1;
    double d0;
    bool isFirstOrder{false}; /**< (n1 s + n0) / (s + d0) */
};

/** The bilinear transform s = (1 - 1/z) / (1 + 1/z). */
Biquad bilinear(const AnalogueSection &s)
{
    Biquad q;
    if (s.isFirstOrder) {
        const double norm = 1.0 + s.d0;
        q.b0 = (s.n0 + s.n1) / norm;
        q.b1 = (s.n0 - s.n1) / norm;
        q.a1 = (s.d0 - 1.0) / norm;
        return q;
    }
    const double norm = 1.0 + s.d1 + s.d0;
    q.b0 = (s.n2 + s.n1 + s.n0) / norm;
    q.b1 = 2.0 * (s.n0 - s.n2) / norm;
    q.b2 = (s.n2 - s.n1 + s.n0) / norm;
    q.a1 = 2.0 * (s.d0 - 1.0) / norm;
    q.a2 = (1.0 - s.d1 + s.d0) / norm;
    return q;
}

/** Poles of the prototype in the upper half of the plane, the real one last if the order is odd. */
std::vector<Complex> prototypePoles(int order)
{
    std::vector<Complex> poles;
    for (int k = 0; k < order / 2; ++k)
        poles.push_back(std::polar(1.0, Pi * (2 * k + order + 1) / (2.0 * order)));
    if (order % 2)
        poles.emplace_back(-1.0, 0.0);
    return poles;
}

std::vector<AnalogueSection> oneSided(bool isLowpass, int order, double corner)
{
    std::vector<AnalogueSection> sections;
    for (const Complex &pole : prototypePoles(order)) {
        if (pole.imag() == 0) {
            sections.push_back(isLowpass ? AnalogueSection{0, 0, corner, 0, corner, true}
                                         : AnalogueSection{0, 1, 0, 0, corner, true});
            continue;
        }
        const double d1 = -2.0 * pole.real() * corner;
        const double d0 = corner * corner;
        sections.push_back(isLowpass ? AnalogueSection{0, 0, d0, d1, d0}
                                     : AnalogueSection{1, 0, 0, d1, d0});
    }
    return sections;
}

/** Roots of s^2 - sum s + product = 0; the smaller one without cancellation. */
std::array<Complex, 2> roots(Complex sum, double product)
{
    const Complex root = std::sqrt(sum * sum - 4.0 * product);
    const Complex larger =
        0.5 * (std::norm(sum + root) >= std::norm(sum - root) ? sum + root : sum - root);
    return {larger, product / larger};
}

std::vector<AnalogueSection> twoSided(bool isBandpass, int order, double lower, double upper)
{
    const double product = lower * upper;
    const double width = upper - lower;
    const auto section = [&](double d1, double d0) {
        return isBandpass ? AnalogueSection{0, width, 0, d1, d0}
                          : AnalogueSection{1, 0, product, d1, d0};
    };

    std::vector<AnalogueSection> sections;
    for (const Complex &pole : prototypePoles(order)) {
        // Each pole becomes two; those of a complex pole have their partners with its conjugate.
        const Complex sum = isBandpass ? pole * width : width / pole;
        if (pole.imag() == 0) {
            sections.push_back(section(-sum.real(), product));
            continue;
        }
        for (const Complex &root : roots(sum, product))
            sections.push_back(section(-2.0 * root.real(), std::norm(root)));
    }
    return sections;
}

/** Pre-warped corner, so that it is met exactly behind the bilinear transform. */
double prewarped(double frequency, double samplingFrequency)
{
    return std::tan(Pi * frequency / samplingFrequency);
}

bool isCorner(double frequency, double samplingFrequency)
{
    return frequency > 0 && frequency < 0.5 * samplingFrequency;
}

bool usesLower(Band band)
{
    return band != Band::Lowpass;
}

bool usesUpper(Band band)
{
    return band != Band::Highpass;
}

} // namespace

std::complex<double> Biquad::response(double omega) const
{
    const Complex z1 = std::polar(1.0, -omega);
    const Complex z2 = z1 * z1;
    return (b0 + b1 * z1 + b2 * z2) / (1.0 + a1 * z1 + a2 * z2);
}

std::vector<Biquad> butterworthSections(Band band, int order, double lower, double upper,
                                        double samplingFrequency)
{
    const bool fits = order >= 1 && isSamplingFrequency(samplingFrequency) &&
                      (!usesLower(band) || isCorner(lower, samplingFrequency)) &&
                      (!usesUpper(band) || isCorner(upper, samplingFrequency)) &&
                      (!usesLower(band) || !usesUpper(band) || lower < upper);
    if (!fits)
        return {};

    const double low = prewarped(lower, samplingFrequency);
    const double high = prewarped(upper, samplingFrequency);
    std::vector<AnalogueSection> analogue;
    if (band == Band::Lowpass || band == Band::Highpass)
        analogue = oneSided(band == Band::Lowpass, order, band == Band::Lowpass ? high : low);
    else
        analogue = twoSided(band == Band::Bandpass, order, low, high);

    std::vector<Biquad> sections;
    std::transform(analogue.begin(), analogue.end(), std::back_inserter(sections), bilinear);
    return sections;
}

template <typename T>
Butterworth<T>::Butterworth(Band band, int order, double lower, double upper,
                            double samplingFrequency)
    : _band(band), _order(order), _lower(lower), _upper(upper)
{
    setSamplingFrequency(samplingFrequency);
}

template <typename T>
Butterworth<T>::~Butterworth() = default;

template <typename T>
std::complex<double> Butterworth<T>::response(double frequency) const
{
    Complex value = isValid() ? 1.0 : 0.0;
    for (const Biquad &section : _sections)
        value *= section.response(2.0 * Pi * frequency / _samplingFrequency);
    return value;
}

template <typename T>
void Butterworth<T>::setSamplingFrequency(double samplingFrequency)
{
    _samplingFrequency = samplingFrequency;
    _sections = butterworthSections(_band, _order, _lower, _upper, samplingFrequency);
    _states.assign(_sections.size(), State());
    _samplesSinceCheck = 0;
}

template <typename T>
int Butterworth<T>::setParameters(int n, const double *parameters)
{
    const int wanted = usesLower(_band) && usesUpper(_band) ? 3 : 2;
    if (n < wanted)
        return -n - 1;

    const double order = parameters[0];
    if (!(order >= 1 && order <= 1000 && order == std::floor(order)))
        return -1;
    for (int i = 1; i < wanted; ++i) {
        if (!(parameters[i] > 0 && std::isfinite(parameters[i])))
            return -i - 1;
    }
    if (wanted == 3 && parameters[2] <= parameters[1])
        return -3;

    _order = static_cast<int>(order);
    _lower = usesLower(_band) ? parameters[1] : 0;
    _upper = usesUpper(_band) ? parameters[wanted - 1] : 0;
    setSamplingFrequency(_samplingFrequency);
    return wanted;
}

template <typename T>
void Butterworth<T>::apply(int n, T *samples)
{
    if (n < 1 || !isSamplingFrequency(_samplingFrequency))
        return;
    if (!isValid())
        return forEachFinite(n, samples, [](double) { return 0.0; });
    // Counted along the signal, so that the result doesn't depend on how it is cut into blocks.
    for (int first = 0; first < n;) {
        const int length = std::min(BlockLength - _samplesSinceCheck, n - first);
        runBlock(length, samples + first);
        first += length;
        _samplesSinceCheck += length;
        if (_samplesSinceCheck == BlockLength)
            checkState();
    }
}

template <typename T>
void Butterworth<T>::runBlock(int n, T *samples)
{
    switch (_sections.size()) {
    case 1:
        return run<1>(n, samples);
    case 2:
        return run<2>(n, samples);
    case 3:
        return run<3>(n, samples);
    case 4:
        return run<4>(n, samples);
    case 6:
        return run<6>(n, samples);
    case 8:
        return run<8>(n, samples);
    default:
        return runCascade(n, samples, _sections.data(), _states.data(),
                          static_cast<int>(_sections.size()));
    }
}

// All sections of a sample before the next sample: the processor then works on several sections at
// once, while a section by itself would wait for each of its sums.
template <typename T>
void Butterworth<T>::runCascade(int n, T *samples, const Biquad *sections, State *states, int count)
{
    for (int i = 0; i < n; ++i) {
        double x = static_cast<double>(samples[i]);
        if (!std::isfinite(x)) {
            samples[i] = std::numeric_limits<T>::quiet_NaN();
            continue;
        }
        for (int k = 0; k < count; ++k) {
            const Biquad &q = sections[k];
            const double y = q.b0 * x + states[k].first;
            states[k].first = q.b1 * x - q.a1 * y + states[k].second;
            states[k].second = q.b2 * x - q.a2 * y;
            x = y;
        }
        samples[i] = static_cast<T>(x);
    }
}

/** Usual numbers of sections with copies on the stack, which the compiler keeps in registers. */
template <typename T>
template <int Count>
void Butterworth<T>::run(int n, T *samples)
{
    std::array<Biquad, Count> sections;
    std::array<State, Count> states;
    std::copy_n(_sections.begin(), Count, sections.begin());
    std::copy_n(_states.begin(), Count, states.begin());
    runCascade(n, samples, sections.data(), states.data(), Count);
    std::copy_n(states.begin(), Count, _states.begin());
}

/**
 * Behind a long run of zeros the state fades into denormal numbers, which are very slow; samples
 * near the end of the range of double may make it overflow, from which it would never recover.
 */
template <typename T>
void Butterworth<T>::checkState()
{
    _samplesSinceCheck = 0;
    for (State &state : _states) {
        const double size = std::max(std::abs(state.first), std::abs(state.second));
        if (!(size >= TinyState && std::isfinite(state.first) && std::isfinite(state.second)))
            state = State();
    }
}

template <typename T>
InPlaceFilter<T> *Butterworth<T>::clone() const
{
    return new Butterworth<T>(_band, _order, _lower, _upper, _samplingFrequency);
}

template class Butterworth<float>;
template class Butterworth<double>;

} // namespace IIR
} // namespace Filtering
} // namespace Math
} // namespace Tellarix
