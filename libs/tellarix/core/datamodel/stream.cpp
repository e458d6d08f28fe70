// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/datamodel/stream.h>

#include <cmath>
#include <limits>
#include <utility>

namespace Tellarix {
namespace DataModel {

Stream::Stream(std::string code) : InventoryObject(std::move(code))
{}

Stream::~Stream() = default;

double Stream::samplingFrequency() const
{
    if (_samplingRateNumerator <= 0 || _samplingRateDenominator <= 0)
        return 0;

    return static_cast<double>(_samplingRateNumerator) / _samplingRateDenominator;
}

/** Goes through the convergents of the continued fraction. */
void Stream::setSamplingFrequency(double frequency)
{
    constexpr double Largest = std::numeric_limits<int>::max();
    _samplingRateNumerator = _samplingRateDenominator = 0;
    if (!(frequency >= 0) || !(frequency <= Largest))
        return;

    double former[] = {1, 0};
    double fraction[] = {std::floor(frequency), 1};
    double rest = frequency - fraction[0];
    while (rest > 0 && fraction[0] / fraction[1] != frequency) {
        const double whole = std::floor(1 / rest);
        const double next[] = {whole * fraction[0] + former[0], whole * fraction[1] + former[1]};
        if (!(next[0] <= Largest) || !(next[1] <= Largest))
            break;
        rest = 1 / rest - whole;
        for (const int i : {0, 1}) {
            former[i] = fraction[i];
            fraction[i] = next[i];
        }
    }
    _samplingRateNumerator = static_cast<int>(fraction[0]);
    _samplingRateDenominator = static_cast<int>(fraction[1]);
}

} // namespace DataModel
} // namespace Tellarix
