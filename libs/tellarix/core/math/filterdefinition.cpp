// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/math/filterdefinition.h>

#include <tellarix/core/math/chainfilter.h>
#include <tellarix/core/math/finite_p.h>
#include <tellarix/core/math/runningmean.h>

#include <cmath>
#include <type_traits>

namespace Tellarix {
namespace Math {
namespace Filtering {

namespace {

using Kind = FilterParameter::Kind;

/** Name of the value in messages. */
std::string valueName(const FilterParameter &parameter)
{
    if (parameter.kind != Kind::Corner)
        return parameter.name;
    return parameter.name == "corner" ? "corner" : parameter.name + " corner";
}

std::string namedValue(const FilterStage &stage, size_t index)
{
    const FilterParameter &parameter = stage.filter->parameters[index];
    return valueName(parameter) + " " + numberText(stage.values[index]) +
           (parameter.unit.empty() ? "" : " " + parameter.unit);
}

std::string cornerProblem(const FilterStage &stage, size_t index, double samplingFrequency)
{
    const double nyquist = 0.5 * samplingFrequency;
    if (stage.values[index] < nyquist)
        return {};
    return namedValue(stage, index) + " is not below the Nyquist frequency " + numberText(nyquist) +
           " Hz";
}

std::string windowProblem(const FilterStage &stage, size_t index, double samplingFrequency)
{
    const double samples = std::nearbyint(stage.values[index] * samplingFrequency);
    const std::string rate = " at " + numberText(samplingFrequency) + " Hz";
    if (samples < 1)
        return namedValue(stage, index) + " is shorter than a sample" + rate;
    if (samples > MeanWindow::LongestLength)
        return namedValue(stage, index) + " is more than " +
               std::to_string(MeanWindow::LongestLength) + " samples" + rate;
    return {};
}

std::string valueProblem(const FilterStage &stage, size_t index, double samplingFrequency)
{
    switch (stage.filter->parameters[index].kind) {
    case Kind::Corner:
        return cornerProblem(stage, index, samplingFrequency);
    case Kind::Duration:
        return windowProblem(stage, index, samplingFrequency);
    case Kind::WholeNumber:
    case Kind::Number:
        break;
    }
    return {};
}

template <typename T>
std::unique_ptr<InPlaceFilter<T>> makeFilter(const FilterStage &stage)
{
    if constexpr (std::is_same_v<T, float>)
        return stage.filter->maker.forFloat(stage.values);
    else
        return stage.filter->maker.forDouble(stage.values);
}

std::string stageProblem(const FilterStage &stage, double samplingFrequency)
{
    for (size_t i = 0; i < stage.values.size(); ++i) {
        const std::string problem = valueProblem(stage, i, samplingFrequency);
        if (!problem.empty())
            return problem;
    }
    if (!makeFilter<float>(stage) || !makeFilter<double>(stage))
        return "can't be made";
    const FilterDescription &filter = *stage.filter;
    return filter.problemAt ? filter.problemAt(stage.values, samplingFrequency) : std::string();
}

std::string stageText(const FilterStage &stage)
{
    std::string text = stage.filter->name + "(";
    for (size_t i = 0; i < stage.values.size(); ++i) {
        const FilterParameter &parameter = stage.filter->parameters[i];
        text += i > 0 ? ", " : "";
        text += parameter.defaultValue ? parameter.name + "=" : "";
        text += numberText(stage.values[i]);
    }
    return text + ")";
}

} // namespace

FilterValueProblem FilterDefinition::CheckValues(const FilterStage &stage)
{
    for (size_t i = 0; i < stage.values.size(); ++i) {
        const FilterParameter &parameter = stage.filter->parameters[i];
        const int index = static_cast<int>(i);
        const std::string problem = parameter.problemOf(stage.values[i]);
        if (!problem.empty())
            return {index, namedValue(stage, i) + " " + problem};
        if (parameter.above.empty())
            continue;
        const size_t lower = static_cast<size_t>(stage.filter->parameterIndex(parameter.above));
        if (!(stage.values[i] > stage.values[lower]))
            return {index, namedValue(stage, i) + " is not above the " + namedValue(stage, lower)};
    }
    return {};
}

void FilterDefinition::append(FilterStage stage)
{
    Q_ASSERT(stage.values.size() == stage.filter->parameters.size());
    Q_ASSERT(CheckValues(stage).parameter < 0);
    _stages.push_back(std::move(stage));
}

std::string FilterDefinition::toString() const
{
    std::string text;
    for (const FilterStage &stage : _stages)
        text += (text.empty() ? "" : " | ") + stageText(stage);
    return text;
}

template <typename T>
std::unique_ptr<InPlaceFilter<T>> FilterDefinition::create() const
{
    if (_stages.empty())
        return nullptr;
    if (_stages.size() == 1)
        return makeFilter<T>(_stages.front());

    auto chain = std::make_unique<ChainFilter<T>>();
    for (const FilterStage &stage : _stages) {
        std::unique_ptr<InPlaceFilter<T>> filter = makeFilter<T>(stage);
        if (!filter)
            return nullptr; // A chain without one of its stages would be another filter.
        chain->add(filter.release());
    }
    return chain;
}

std::string FilterDefinition::problemAt(double samplingFrequency) const
{
    if (_stages.empty())
        return {};
    if (!isSamplingFrequency(samplingFrequency))
        return "the sampling frequency " + numberText(samplingFrequency) + " Hz is not above 0";
    for (const FilterStage &stage : _stages) {
        const std::string problem = stageProblem(stage, samplingFrequency);
        if (!problem.empty())
            return stage.filter->name + ": " + problem;
    }
    return {};
}

template std::unique_ptr<InPlaceFilter<float>> FilterDefinition::create() const;
template std::unique_ptr<InPlaceFilter<double>> FilterDefinition::create() const;

} // namespace Filtering
} // namespace Math
} // namespace Tellarix
