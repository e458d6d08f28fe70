// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/math/filterdescription.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace FilterTesting {

using namespace Tellarix::Math::Filtering;

/** The last peak as it fades away: a filter of somebody else. */
template <typename T>
class Fading : public InPlaceFilter<T>
{
public:
    explicit Fading(double factor) : _factor(factor) {}

    void setSamplingFrequency(double samplingFrequency) override
    {
        _isReady = samplingFrequency > 0 && std::isfinite(samplingFrequency);
        _peak = 0;
    }
    int setParameters(int, const double *) override { return 0; }
    void apply(int n, T *samples) override
    {
        for (int i = 0; _isReady && i < n; ++i) {
            const bool isFinite = std::isfinite(samples[i]);
            if (isFinite)
                _peak = std::max(std::abs(double(samples[i])), _factor * _peak);
            samples[i] = isFinite ? T(_peak) : std::numeric_limits<T>::quiet_NaN();
        }
    }
    InPlaceFilter<T> *clone() const override
    {
        auto *copy = new Fading(_factor);
        copy->_isReady = _isReady;
        return copy;
    }

private:
    double _factor;
    double _peak{0};
    bool _isReady{false};
};

inline FilterDescription fading()
{
    return {"fading",
            "The last peak as it fades away",
            {FilterParameter::Number("factor", "", 0.9, 0.99, 0.95)},
            FilterMaker::Of<Fading, 1>()};
}

/** Values that suit a filter at 100 Hz; @p scale takes corners and lengths elsewhere. */
inline FilterValues someValues(const FilterDescription &filter, std::mt19937 &random,
                               double scale = 1)
{
    const auto between = [&random](double lowest, double highest) {
        return std::uniform_real_distribution<double>(lowest, highest)(random);
    };
    FilterValues values;
    for (const FilterParameter &parameter : filter.parameters) {
        const bool isWhole = parameter.kind == FilterParameter::Kind::WholeNumber;
        if (isWhole || parameter.kind == FilterParameter::Kind::Number) {
            const double value = between(parameter.lowest, parameter.highest);
            values.push_back(isWhole ? std::round(value) : value);
        } else if (parameter.above.empty()) {
            values.push_back(between(0.3, 5) * scale);
        } else {
            values.push_back(values[size_t(filter.parameterIndex(parameter.above))] *
                             between(1.5, 8));
        }
    }
    return values;
}

} // namespace FilterTesting
