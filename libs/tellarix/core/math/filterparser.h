// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/math/filterdefinition.h>

#include <memory>
#include <string>

namespace Tellarix {
namespace Math {
namespace Filtering {

/** Where and why a text is no filter. */
struct FilterError
{
    int column{0};       /**< first offending character, 1-based; one past the end if the text
                              stops too early; 0 without an error */
    std::string message; /**< what is wrong and what is allowed */
};

/**
 * Reads the text form of filters, as in "bandpass(0.7, 2, order=4) | stalta(1, 60)".
 *
 * Filters that are joined by `|` run one behind the other. Parameters are given in the order of
 * their description, by name, or first these and then those; parentheses without anything in them
 * can be left out. Numbers are in C notation. Case and blanks don't matter. `self`, and a text
 * without anything in it, mean no filter.
 *
 * @param definition  left as it was if the text is wrong
 * @param error       may be null
 * @return false if the text is wrong
 */
TELLARIX_CORE_API bool parseFilterDefinition(const std::string &text, FilterDefinition &definition,
                                             FilterError *error = nullptr);

/**
 * Makes the filter that a text describes, for samples of type float or double.
 *
 * @param error  set in any case unless null: its column tells "no filter" from a wrong text
 * @return null if the text is wrong, and for the texts that mean no filter
 */
template <typename T>
std::unique_ptr<InPlaceFilter<T>> parseFilter(const std::string &text, FilterError *error = nullptr)
{
    FilterDefinition definition;
    return parseFilterDefinition(text, definition, error) ? definition.create<T>() : nullptr;
}

/**
 * Tells why a filter given as text does not work at a sampling frequency in Hz; empty if it does.
 * The message about a wrong text begins with its column.
 */
TELLARIX_CORE_API std::string filterProblem(const std::string &text, double samplingFrequency);

} // namespace Filtering
} // namespace Math
} // namespace Tellarix
