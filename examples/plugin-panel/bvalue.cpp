// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bvalue.h"

#include <cmath>
#include <map>

namespace {

constexpr int BinsPerUnit = 10;
constexpr int LeastCount = 50;

} // namespace

std::optional<BValue> bValue(const QVector<double> &magnitudes)
{
    std::map<int, int> bins;
    for (const double magnitude : magnitudes) {
        if (std::abs(magnitude) < 100) // false for what is no number
            ++bins[static_cast<int>(std::lround(magnitude * BinsPerUnit))];
    }
    auto most = bins.cbegin();
    for (auto bin = bins.cbegin(); bin != bins.cend(); ++bin) {
        if (bin->second > most->second)
            most = bin;
    }

    BValue result;
    double sum = 0;
    for (auto bin = most; bin != bins.cend(); ++bin) {
        result.count += bin->second;
        sum += static_cast<double>(bin->first - most->first) * bin->second / BinsPerUnit;
    }
    if (result.count < LeastCount)
        return std::nullopt;

    // A rounded magnitude may stand for one that is lower by half a bin.
    const double meanAboveLeast = sum / result.count + 0.5 / BinsPerUnit;
    result.b = std::log10(std::exp(1.0)) / meanAboveLeast;
    result.error = result.b / std::sqrt(result.count);
    result.completeness = static_cast<double>(most->first) / BinsPerUnit;
    return result;
}
