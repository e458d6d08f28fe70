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

/** A part of a text, in bytes. */
struct FilterTextPart
{
    size_t begin{0};
    size_t end{0}; /**< behind the last byte */
};

/** A filter and where a text has it. */
struct FilterPlace
{
    FilterStage stage;
    FilterTextPart text;                /**< from the name to what closes the parameters */
    std::vector<FilterTextPart> values; /**< the number of each parameter; empty for a default */
};

/** The stages of the definition of a text, with their places; none for a wrong text. */
TELLARIX_CORE_API std::vector<FilterPlace> filterPlaces(const std::string &text);

/**
 * The text with other numbers for one of its filters. Everything else stays as it is written,
 * numbers that don't change included; a default that changes is added by its name.
 *
 * @param stage   index of one of filterPlaces(); for any other the text stays as it is
 * @param values  one for each parameter; they aren't checked
 */
TELLARIX_CORE_API std::string withFilterValues(const std::string &text, size_t stage,
                                               const FilterValues &values);

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
