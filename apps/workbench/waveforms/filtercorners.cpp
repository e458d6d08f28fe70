// SPDX-License-Identifier: LGPL-3.0-or-later

#include "filtercorners.h"

#include <tellarix/core/math/butterworth.h>

#include <algorithm>
#include <cmath>

using namespace Tellarix::Math::Filtering;

namespace Workbench {

namespace {

constexpr double LowestFrequency = 1E-6;
constexpr double HighestFrequency = 1E6;
/** Corners that are closer make a filter that hardly passes anything, or can't be worked out. */
constexpr double SmallestRatio = 1.05;
/** How far an axis reaches below the Nyquist frequency, and beyond corners. */
constexpr double NyquistReach = 2000;
constexpr double CornerReach = 3;

/** To three significant digits, by @p round downwards, upwards or to the nearest. */
template <typename Round>
double toThreeDigits(double value, const Round &round)
{
    const int decimals = 2 - static_cast<int>(std::floor(std::log10(value)));
    const double digits = round(value * std::pow(10, decimals));
    // The sum of rounding errors would show in the text.
    return QString::number(digits * std::pow(10, -decimals), 'g', 3).toDouble();
}

/** A value that is round already must not go a digit up or down. */
double roundedDown(double value)
{
    return toThreeDigits(value, [](double digits) { return std::floor(digits + 1E-6); });
}

double roundedUp(double value)
{
    return toThreeDigits(value, [](double digits) { return std::ceil(digits - 1E-6); });
}

double rounded(double value)
{
    return toThreeDigits(value, [](double digits) { return std::round(digits); });
}

double highestBelow(double nyquist)
{
    if (nyquist <= 0)
        return HighestFrequency;
    const double frequency = roundedDown(nyquist);
    return frequency < nyquist ? frequency : roundedDown(nyquist * (1 - 1E-3));
}

std::vector<size_t> cornersOf(const FilterDescription &filter)
{
    std::vector<size_t> corners;
    for (size_t i = 0; i < filter.parameters.size(); ++i) {
        if (filter.parameters[i].kind == FilterParameter::Kind::Corner)
            corners.push_back(i);
    }
    return corners;
}

bool hasCorners(const FilterPlace &place)
{
    return !cornersOf(*place.stage.filter).empty();
}

} // namespace

FilterCorners::FilterCorners(const QString &text, int cursor) : _text(text), _cursor(cursor)
{
    // What is a filter is ASCII, so that bytes are characters.
    const std::string bytes = text.toStdString();
    FilterDefinition definition;
    _isFilter = parseFilterDefinition(bytes, definition);
    const std::vector<FilterPlace> places = filterPlaces(bytes);
    const auto isAtCursor = [cursor](const FilterPlace &place) {
        return hasCorners(place) && static_cast<int>(place.text.begin) <= cursor &&
               cursor <= static_cast<int>(place.text.end);
    };
    auto found = std::find_if(places.begin(), places.end(), isAtCursor);
    if (found == places.end())
        found = std::find_if(places.begin(), places.end(), hasCorners);
    if (found == places.end())
        return;

    _stage = static_cast<size_t>(found - places.begin());
    _place = *found;
    _parameters = cornersOf(*_place.stage.filter);
    for (const size_t parameter : _parameters)
        _frequencies.append(_place.stage.values[parameter]);
}

QString FilterCorners::name() const
{
    return _frequencies.isEmpty() ? QString() : QString::fromStdString(_place.stage.filter->name);
}

/** Between which frequencies a corner can be moved while the others stay. */
FrequencyRange FilterCorners::bounds(int corner, double nyquist) const
{
    const FilterDescription &filter = *_place.stage.filter;
    const FilterParameter &own = filter.parameters[_parameters[static_cast<size_t>(corner)]];
    FrequencyRange range{LowestFrequency, highestBelow(nyquist)};
    for (int i = 0; i < _frequencies.size(); ++i) {
        const FilterParameter &other = filter.parameters[_parameters[static_cast<size_t>(i)]];
        if (own.above == other.name)
            range.lower = roundedUp(_frequencies[i] * SmallestRatio);
        if (other.above == own.name)
            range.upper = std::min(range.upper, roundedDown(_frequencies[i] / SmallestRatio));
    }
    return range;
}

QString FilterCorners::withFrequencies(const QVector<double> &frequencies) const
{
    FilterValues values = _place.stage.values;
    for (int i = 0; i < frequencies.size(); ++i)
        values[_parameters[static_cast<size_t>(i)]] = frequencies[i];
    return QString::fromStdString(withFilterValues(_text.toStdString(), _stage, values));
}

QString FilterCorners::moved(int corner, double frequency, double nyquist) const
{
    if (corner < 0 || corner >= _frequencies.size() || !(frequency > 0))
        return _text;
    const FrequencyRange range = bounds(corner, nyquist);
    if (range.lower > range.upper)
        return _text;
    QVector<double> frequencies = _frequencies;
    frequencies[corner] = std::clamp(rounded(std::clamp(frequency, range.lower, range.upper)),
                                     range.lower, range.upper);
    return withFrequencies(frequencies);
}

QString FilterCorners::shifted(double factor, double nyquist) const
{
    if (_frequencies.isEmpty())
        return _text;
    const auto ends = std::minmax_element(_frequencies.begin(), _frequencies.end());
    const double highest = highestBelow(nyquist);
    // The way back is open to a band beyond the bounds.
    factor = factor > 1 ? std::max(1.0, std::min(factor, highest / *ends.second))
                        : std::min(1.0, std::max(factor, LowestFrequency / *ends.first));
    QVector<double> frequencies = _frequencies;
    for (double &frequency : frequencies)
        frequency = rounded(frequency * factor);
    return withFrequencies(frequencies);
}

QString FilterCorners::widened(double factor, double nyquist) const
{
    if (_frequencies.size() != 2)
        return _text;
    const double lower = std::max(_frequencies[0] / factor, LowestFrequency);
    const double upper =
        std::min(_frequencies[1] * factor, std::max(highestBelow(nyquist), _frequencies[1]));
    if (!(upper >= lower * SmallestRatio))
        return _text;
    return withFrequencies({rounded(lower), rounded(upper)});
}

QString FilterCorners::withBand(double one, double other, double nyquist) const
{
    const double highest = highestBelow(nyquist);
    const double upper = std::clamp(std::max(one, other), LowestFrequency, highest);
    const double lower = std::clamp(std::min(one, other), LowestFrequency, upper / SmallestRatio);
    const QString band =
        QStringLiteral("bandpass(%1, %2)")
            .arg(numberText(roundedDown(lower)).c_str(), numberText(rounded(upper)).c_str());
    return filterPlaces(_text.toStdString()).empty() ? band : band + " | " + _text;
}

int FilterCorners::cursorIn(const QString &changed) const
{
    const int more = changed.size() - _text.size();
    if (_frequencies.isEmpty() || _cursor >= static_cast<int>(_place.text.end))
        return _cursor + more;
    return std::min(_cursor, static_cast<int>(_place.text.end) + more);
}

FrequencyRange shownFrequencies(const QVector<double> &corners, const std::set<double> &rates)
{
    FrequencyRange range;
    if (!rates.empty())
        range = {*rates.begin() / 2 / NyquistReach, *rates.rbegin() / 2 * 1.2};
    for (const double corner : corners) {
        range.lower = std::min(range.lower, corner / CornerReach);
        range.upper = std::max(range.upper, corner * CornerReach);
    }
    return range;
}

QVector<double> filterGains(const QString &text, double samplingFrequency,
                            const QVector<double> &frequencies)
{
    using Butterworth = IIR::Butterworth<double>;
    QVector<double> gains;
    for (const FilterPlace &place : filterPlaces(text.toStdString())) {
        FilterDefinition definition;
        definition.append(place.stage);
        const auto filter = definition.create<double>();
        auto *band = dynamic_cast<Butterworth *>(filter.get());
        if (!band)
            continue;
        band->setSamplingFrequency(samplingFrequency);
        if (!band->isValid())
            return {};
        if (gains.isEmpty())
            gains.fill(1, frequencies.size());
        for (int i = 0; i < frequencies.size(); ++i) {
            const bool isBeyond = frequencies[i] >= samplingFrequency / 2;
            gains[i] *= isBeyond ? 0 : std::abs(band->response(frequencies[i]));
        }
    }
    return gains;
}

} // namespace Workbench
