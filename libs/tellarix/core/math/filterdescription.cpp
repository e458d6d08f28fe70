// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/math/filterdescription.h>

#include <tellarix/core/logging.h>
#include <tellarix/core/math/libraryfilters_p.h>
#include <tellarix/core/namedoffers.h>
#include <tellarix/core/strings.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace Tellarix {
namespace Math {
namespace Filtering {

namespace {

constexpr double Infinite = std::numeric_limits<double>::infinity();

struct Registry : Core::NamedOffers<FilterDescriptionCPtr>
{
    Registry()
    {
        for (FilterDescription &filter : libraryFilters()) {
            Q_ASSERT(filter.flaw().empty());
            const std::string name = filter.name;
            add(nullptr, name, std::make_shared<FilterDescription>(std::move(filter)));
        }
    }
};

// Static objects of other sources offer filters: it has to exist before them.
Registry &registry()
{
    static Registry instance;
    return instance;
}

bool isLowerCaseLetter(char c)
{
    return c >= 'a' && c <= 'z';
}

/** What the text form takes for a name. */
bool isName(const std::string &text)
{
    const auto mayFollow = [](char c) {
        return isLowerCaseLetter(c) || (c >= '0' && c <= '9') || c == '_';
    };
    return !text.empty() && isLowerCaseLetter(text.front()) &&
           std::all_of(text.begin(), text.end(), mayFollow);
}

std::string parameterFlaw(const std::vector<FilterParameter> &parameters, size_t index)
{
    const FilterParameter &parameter = parameters[index];
    const auto end = parameters.begin() + static_cast<std::ptrdiff_t>(index);
    const auto isBefore = [&](const std::string &name) {
        return std::any_of(parameters.begin(), end,
                           [&](const FilterParameter &other) { return other.name == name; });
    };
    if (!isName(parameter.name))
        return "\"" + parameter.name + "\" is no name for a parameter";
    if (isBefore(parameter.name))
        return "has two parameters \"" + parameter.name + "\"";
    if (!(parameter.lowest <= parameter.highest))
        return "allows no value for " + parameter.name;
    if (parameter.defaultValue && !parameter.problemOf(*parameter.defaultValue).empty())
        return "has a default for " + parameter.name + " that is not allowed";
    if (!parameter.defaultValue && index > 0 && parameters[index - 1].defaultValue)
        return "has a parameter without a default, " + parameter.name + ", behind one with";
    if (!parameter.above.empty() && !isBefore(parameter.above))
        return "has no parameter \"" + parameter.above + "\" before " + parameter.name;
    return {};
}

} // namespace

FilterParameter FilterParameter::Corner(const std::string &name, const std::string &above)
{
    return {Kind::Corner, name, "Hz", 0, Infinite, {}, above};
}

FilterParameter FilterParameter::Duration(const std::string &name, const std::string &above)
{
    return {Kind::Duration, name, "s", 0, Infinite, {}, above};
}

FilterParameter FilterParameter::WholeNumber(const std::string &name, double lowest, double highest,
                                             std::optional<double> defaultValue)
{
    return {Kind::WholeNumber, name, {}, lowest, highest, defaultValue, {}};
}

FilterParameter FilterParameter::Number(const std::string &name, const std::string &unit,
                                        double lowest, double highest,
                                        std::optional<double> defaultValue)
{
    return {Kind::Number, name, unit, lowest, highest, defaultValue, {}};
}

std::string FilterParameter::problemOf(double value) const
{
    if (kind == Kind::Corner || kind == Kind::Duration)
        return value > 0 && std::isfinite(value) ? "" : "is not above 0";

    const bool mustBeWhole = kind == Kind::WholeNumber;
    if (value >= lowest && value <= highest && std::isfinite(value) &&
        (!mustBeWhole || value == std::floor(value)))
        return {};
    return (mustBeWhole ? "is not a whole number from " : "is not a number from ") +
           numberText(lowest) + " to " + numberText(highest);
}

std::string FilterDescription::usage() const
{
    std::string text = name + "(";
    for (const FilterParameter &parameter : parameters) {
        text += &parameter != &parameters.front() ? ", " : "";
        text += parameter.name;
        if (parameter.defaultValue)
            text += "=" + numberText(*parameter.defaultValue);
    }
    return text + ")";
}

int FilterDescription::parameterIndex(const std::string &parameter) const
{
    for (size_t i = 0; i < parameters.size(); ++i) {
        if (Core::compareNoCase(parameters[i].name, parameter) == 0)
            return static_cast<int>(i);
    }
    return -1;
}

std::string FilterDescription::flaw() const
{
    if (!isName(name) || name == NoFilterName)
        return "\"" + name + "\" is no name for a filter";
    if (!maker.forFloat || !maker.forDouble)
        return "has no maker";
    if (maker.valueCount >= 0 && static_cast<size_t>(maker.valueCount) != parameters.size())
        return "has " + std::to_string(parameters.size()) + " parameters, its maker takes " +
               std::to_string(maker.valueCount);
    for (size_t i = 0; i < parameters.size(); ++i) {
        const std::string problem = parameterFlaw(parameters, i);
        if (!problem.empty())
            return problem;
    }
    return {};
}

std::vector<FilterDescriptionCPtr> knownFilters()
{
    std::vector<FilterDescriptionCPtr> filters;
    for (auto &[name, filter] : registry().all())
        filters.push_back(std::move(filter));
    return filters;
}

FilterDescriptionCPtr knownFilter(const std::string &name)
{
    for (const FilterDescriptionCPtr &filter : knownFilters()) {
        if (Core::compareNoCase(filter->name, name) == 0)
            return filter;
    }
    return nullptr;
}

FilterOffer::FilterOffer(FilterDescription description)
{
    const std::string flaw = description.flaw();
    if (!flaw.empty()) {
        qCWarning(Log::general, "Filter %s is not offered: %s", description.name.c_str(),
                  flaw.c_str());
        return;
    }
    const std::string name = description.name;
    registry().add(this, name, std::make_shared<FilterDescription>(std::move(description)));
}

FilterOffer::~FilterOffer()
{
    registry().remove(this);
}

std::string numberText(double value)
{
    std::array<char, 32> buffer;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    return std::string(buffer.data(), end);
}

} // namespace Filtering
} // namespace Math
} // namespace Tellarix
