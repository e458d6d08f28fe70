// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/math/filter.h>

#include <memory>
#include <vector>

namespace Tellarix {
namespace Math {
namespace Filtering {

/** Filters that run one behind the other, in the order in which they were added. */
template <typename T>
class ChainFilter : public InPlaceFilter<T>
{
public:
    /** Appends a filter and takes ownership of it; null is ignored. */
    void add(InPlaceFilter<T> *filter)
    {
        if (filter)
            _filters.emplace_back(filter);
    }
    int count() const { return static_cast<int>(_filters.size()); }
    const InPlaceFilter<T> *at(int index) const
    {
        return _filters[static_cast<size_t>(index)].get();
    }

    void setStartTime(const Core::Time &time) override
    {
        for (auto &filter : _filters)
            filter->setStartTime(time);
    }
    void setStreamID(const std::string &network, const std::string &station,
                     const std::string &location, const std::string &channel) override
    {
        for (auto &filter : _filters)
            filter->setStreamID(network, station, location, channel);
    }
    void handleGap(const Core::TimeSpan &length) override
    {
        for (auto &filter : _filters)
            filter->handleGap(length);
    }
    void setSamplingFrequency(double samplingFrequency) override
    {
        for (auto &filter : _filters)
            filter->setSamplingFrequency(samplingFrequency);
    }
    /** A chain has no parameters of its own. */
    int setParameters(int, const double *) override { return 0; }
    void apply(int n, T *samples) override
    {
        for (auto &filter : _filters)
            filter->apply(n, samples);
    }
    InPlaceFilter<T> *clone() const override
    {
        auto copy = std::make_unique<ChainFilter<T>>();
        for (const auto &filter : _filters)
            copy->add(filter->clone());
        return copy.release();
    }

private:
    std::vector<std::unique_ptr<InPlaceFilter<T>>> _filters;
};

} // namespace Filtering
} // namespace Math
} // namespace Tellarix
