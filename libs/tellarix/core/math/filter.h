// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>

#include <string>

namespace Tellarix {
namespace Core {
class Time;
class TimeSpan;
} // namespace Core
namespace Math {
namespace Filtering {

/**
 * A digital filter that works in place on consecutive blocks of one signal.
 *
 * State is kept between calls of apply(), so consecutive blocks form one continuous signal.
 * Arithmetic and state are in double for every @p T.
 */
template <typename T>
class InPlaceFilter
{
public:
    virtual ~InPlaceFilter() = default;

    /** Tells when the signal begins; filters that depend on it override this. */
    virtual void setStartTime(const Core::Time &) {}
    /** Tells the codes of the stream that is going to be filtered. */
    virtual void setStreamID(const std::string & /*network*/, const std::string & /*station*/,
                             const std::string & /*location*/, const std::string & /*channel*/)
    {}
    /** Tells whoever goes on with the same filter behind a gap: samples of this length are missing
     *  before the next block. */
    virtual void handleGap(const Core::TimeSpan & /*length*/) {}
    /** Sampling frequency in Hz; computes the coefficients and resets the state. */
    virtual void setSamplingFrequency(double samplingFrequency) = 0;
    /**
     * Sets the numeric parameters of the filter, in the order of its constructor.
     * @return the number of parameters taken, or a negative value -k - 1 when parameter k is wrong
     */
    virtual int setParameters(int n, const double *parameters) = 0;
    /** Filters @p n samples in place; n below 1 does nothing. */
    virtual void apply(int n, T *samples) = 0;
    /** A new filter of the same parameters and sampling frequency with fresh state, owned by the
     *  caller. */
    virtual InPlaceFilter<T> *clone() const = 0;
};

} // namespace Filtering
} // namespace Math
} // namespace Tellarix
