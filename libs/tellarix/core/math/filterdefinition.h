// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/math/filterdescription.h>

#include <memory>
#include <string>
#include <vector>

namespace Tellarix {
namespace Math {
namespace Filtering {

/** A filter of a chain with all of its parameters. */
struct FilterStage
{
    FilterDescriptionCPtr filter;
    FilterValues values; /**< one for each parameter */
};

/** What is wrong with a value of a stage. */
struct FilterValueProblem
{
    int parameter{-1};   /**< -1 if all is right */
    std::string message; /**< names the value and what is allowed */
};

/**
 * Filters and their parameters, independent of sample type and sampling frequency.
 *
 * Kept beside a filter, or instead of one, it tells whether the filter suits a stream before the
 * first sample has come.
 */
class TELLARIX_CORE_API FilterDefinition
{
public:
    /** Checks what can be checked without a sampling frequency. */
    static FilterValueProblem CheckValues(const FilterStage &stage);

    /** @pre the values of the stage passed CheckValues() */
    void append(FilterStage stage);
    const std::vector<FilterStage> &stages() const { return _stages; }
    /** True for no filter at all. */
    bool isEmpty() const { return _stages.empty(); }

    /** A text that is read as the same definition; empty if there is no filter. */
    std::string toString() const;
    /** A new filter, a ChainFilter if there is more than one stage; null if there is none, or
     *  if one can't be made. */
    template <typename T>
    std::unique_ptr<InPlaceFilter<T>> create() const;
    /**
     * Tells why the filter does not work at a sampling frequency in Hz, as in
     * "bandpass: upper corner 20 Hz is not below the Nyquist frequency 10 Hz"; empty if it does.
     * Of several reasons the first is told.
     */
    std::string problemAt(double samplingFrequency) const;

private:
    std::vector<FilterStage> _stages;
};

extern template TELLARIX_CORE_API std::unique_ptr<InPlaceFilter<float>>
FilterDefinition::create() const;
extern template TELLARIX_CORE_API std::unique_ptr<InPlaceFilter<double>>
FilterDefinition::create() const;

} // namespace Filtering
} // namespace Math
} // namespace Tellarix
