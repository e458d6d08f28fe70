// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/math/filter.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Tellarix {
namespace Math {
namespace Filtering {

constexpr int MaximumFilterOrder = 20;
/** The text that stands for no filter. */
constexpr char NoFilterName[] = "none";

/** A number in the text form of a filter. Its kind says how it is checked. */
struct TELLARIX_CORE_API FilterParameter
{
    enum class Kind
    {
        Corner,      /**< in Hz, above 0 and below half the sampling frequency */
        Duration,    /**< in seconds, at least one sample and at most MeanWindow::LongestLength */
        WholeNumber, /**< from lowest to highest */
        Number,      /**< from lowest to highest, in any unit */
    };

    static FilterParameter Corner(const std::string &name, const std::string &above = {});
    static FilterParameter Duration(const std::string &name, const std::string &above = {});
    static FilterParameter WholeNumber(const std::string &name, double lowest, double highest,
                                       std::optional<double> defaultValue = {});
    static FilterParameter Number(const std::string &name, const std::string &unit, double lowest,
                                  double highest, std::optional<double> defaultValue = {});

    /** What is wrong with a value by itself, as in "is not above 0"; empty if nothing is. */
    std::string problemOf(double value) const;

    Kind kind;
    std::string name;
    std::string unit; /**< empty for what has none */
    double lowest;
    double highest;
    std::optional<double> defaultValue; /**< must be given if there is none */
    std::string above;                  /**< the parameter before it that it has to exceed */
};

/** The values of a filter's parameters, in the order of its description. */
using FilterValues = std::vector<double>;

/** Makes a filter from values that have passed the checks of its parameters. */
struct FilterMaker
{
    template <typename T>
    using Function = std::function<std::unique_ptr<InPlaceFilter<T>>(const FilterValues &)>;

    Function<float> forFloat;
    Function<double> forDouble;
    int valueCount{-1}; /**< how many values it takes; -1 for any number */

    /** Makes a Filter<T>(value, ...) of the first @p Count values. */
    template <template <typename> class Filter, size_t Count>
    static FilterMaker Of()
    {
        return of<Filter>(std::make_index_sequence<Count>());
    }

private:
    template <template <typename> class Filter, size_t... Index>
    static FilterMaker of(std::index_sequence<Index...>)
    {
        return {[](const FilterValues &values) {
                    Q_UNUSED(values)
                    return std::make_unique<Filter<float>>(values[Index]...);
                },
                [](const FilterValues &values) {
                    Q_UNUSED(values)
                    return std::make_unique<Filter<double>>(values[Index]...);
                },
                sizeof...(Index)};
    }
};

/** What a filter makes of the unit of its samples. */
enum class FilterOutput
{
    SameUnit,
    Integral,   /**< over time: m of m/s */
    Derivative, /**< in time: m/s of m */
    NoUnit,     /**< a ratio, say */
};

/** All that there is to know about a filter: its text form, its checks and how it is made. */
struct TELLARIX_CORE_API FilterDescription
{
    std::string name;        /**< lower-case letters, digits and "_", first a letter */
    std::string description; /**< one line for users, without a full stop */
    std::vector<FilterParameter> parameters;
    FilterMaker maker{};
    FilterOutput output{FilterOutput::SameUnit};
    /** What the kinds of parameters don't tell: why values do not work at a sampling frequency in
     *  Hz; empty if they do. May be left out. */
    std::function<std::string(const FilterValues &, double samplingFrequency)> problemAt{};

    /** "bandpass(lower, upper, order=4)" */
    std::string usage() const;
    /** Index of a parameter, without regard to case; -1 if there is none of that name. */
    int parameterIndex(const std::string &parameter) const;
    /** Why it can't be offered, as in "has no maker"; empty if it can. */
    std::string flaw() const;
};

using FilterDescriptionCPtr = std::shared_ptr<const FilterDescription>;

/** All filters that have a text form: first those of the library, with synonyms beside each other,
 *  then those that are offered, in the order in which they came. */
TELLARIX_CORE_API std::vector<FilterDescriptionCPtr> knownFilters();
/** The filter of a name, without regard to case; null if there is none. */
TELLARIX_CORE_API FilterDescriptionCPtr knownFilter(const std::string &name);

/**
 * Offers a filter for as long as it lives: a static object of the filter's source, or a member of a
 * plug-in. Of those with one name the first stands. Definitions that were read meanwhile go on
 * working.
 *
 * A description with a flaw is told to the log "tellarix" and not offered.
 */
class TELLARIX_CORE_API FilterOffer
{
public:
    explicit FilterOffer(FilterDescription description);
    ~FilterOffer();

    FilterOffer(const FilterOffer &) = delete;
    FilterOffer &operator=(const FilterOffer &) = delete;
};

/** The shortest text that reads as the same number, as in "0.7" and "1e-06". */
TELLARIX_CORE_API std::string numberText(double value);

} // namespace Filtering
} // namespace Math
} // namespace Tellarix
