// SPDX-License-Identifier: LGPL-3.0-or-later

// A filter: "clip(limit)".

#include <tellarix/core/math/filterdescription.h>

#include <algorithm>
#include <cmath>

using namespace Tellarix::Math::Filtering;

namespace {

/** Cuts off what lies beyond a limit. Not-a-number passes; infinity becomes not-a-number. */
template <typename T>
class Clip : public InPlaceFilter<T>
{
public:
    explicit Clip(double limit) : _limit(limit) {}

    void setSamplingFrequency(double samplingFrequency) override
    {
        // Forgets what came before, if a filter remembers; without a rate samples stay.
        _isReady = samplingFrequency > 0 && std::isfinite(samplingFrequency);
    }
    int setParameters(int n, const double *parameters) override
    {
        if (n < 1 || !(parameters[0] > 0))
            return -1;
        _limit = parameters[0];
        return 1;
    }
    void apply(int n, T *samples) override
    {
        for (int i = 0; _isReady && i < n; ++i)
            samples[i] = std::isfinite(samples[i])
                             ? static_cast<T>(std::clamp<double>(samples[i], -_limit, _limit))
                             : static_cast<T>(std::nan(""));
    }
    InPlaceFilter<T> *clone() const override { return new Clip(*this); }

private:
    double _limit;
    bool _isReady{false};
};

const FilterOffer clipOffer({"clip",
                             "Cuts off what lies beyond the limit",
                             {FilterParameter::Number("limit", "", 1, 1e12)},
                             FilterMaker::Of<Clip, 1>()});

} // namespace
