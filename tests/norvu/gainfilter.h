// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/math/filter.h>

#include <atomic>

/** Multiplies by a factor, and counts how many of its kind are alive. */
class GainFilter : public Tellarix::Math::Filtering::InPlaceFilter<double>
{
public:
    explicit GainFilter(double factor) : _factor(factor) { ++alive; }
    GainFilter(const GainFilter &other) : GainFilter(other._factor) {}
    ~GainFilter() override { --alive; }

    void setSamplingFrequency(double) override {}
    int setParameters(int, const double *) override { return 0; }
    void apply(int n, double *samples) override
    {
        for (int i = 0; i < n; ++i)
            samples[i] *= _factor;
    }
    GainFilter *clone() const override { return new GainFilter(*this); }

    inline static std::atomic<int> alive{0};

private:
    double _factor;
};
