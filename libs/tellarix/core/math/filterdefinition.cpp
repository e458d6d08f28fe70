// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/math/filterdefinition.h>

#include <tellarix/core/math/average.h>
#include <tellarix/core/math/butterworth.h>
#include <tellarix/core/math/chainfilter.h>
#include <tellarix/core/math/differentiate.h>
#include <tellarix/core/math/finite_p.h>
#include <tellarix/core/math/integrate.h>
#include <tellarix/core/math/stalta.h>
#include <tellarix/core/strings.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace Tellarix {
namespace Math {
namespace Filtering {

namespace {

using IIR::Band;

const FilterParameter Corner{"corner", "Hz", {}};
const FilterParameter Lower{"lower", "Hz", {}};
const FilterParameter Upper{"upper", "Hz", {}};
const FilterParameter Order{"order", "", 4.0};
const FilterParameter Length{"length", "s", {}};
const FilterParameter Sta{"sta", "s", {}};
const FilterParameter Lta{"lta", "s", {}};

/** Name of the value in messages. */
std::string valueName(const FilterParameter &parameter)
{
    if (parameter.unit != "Hz")
        return parameter.name;
    return parameter.name == "corner" ? "corner" : parameter.name + " corner";
}

std::string valueText(const FilterParameter &parameter, double value)
{
    return parameter.unit.empty() ? numberText(value) : numberText(value) + " " + parameter.unit;
}

std::string namedValue(const FilterStage &stage, size_t index)
{
    const FilterParameter &parameter = stage.filter->parameters[index];
    return valueName(parameter) + " " + valueText(parameter, stage.values[index]);
}

/** Two parameters of one unit in a row are the ends of a band or two windows. */
bool isUpperEnd(const FilterStage &stage, size_t index)
{
    const auto &parameters = stage.filter->parameters;
    return index > 0 && !parameters[index].isOrder() &&
           parameters[index].unit == parameters[index - 1].unit;
}

std::optional<Band> bandOf(const FilterDescription &filter)
{
    if (filter.name == "lowpass")
        return Band::Lowpass;
    if (filter.name == "highpass")
        return Band::Highpass;
    if (filter.name == "bandpass")
        return Band::Bandpass;
    if (filter.name == "bandstop")
        return Band::Bandstop;
    return {};
}

struct Corners
{
    double lower;
    double upper;
    int order;
};

Corners cornersOf(const FilterStage &stage)
{
    const size_t last = stage.values.size() - 1;
    return {stage.values[0], stage.values[last - 1], static_cast<int>(stage.values[last])};
}

template <typename T>
std::unique_ptr<InPlaceFilter<T>> makeFilter(const FilterStage &stage)
{
    if (const auto band = bandOf(*stage.filter)) {
        const Corners corners = cornersOf(stage);
        return std::make_unique<IIR::Butterworth<T>>(*band, corners.order, corners.lower,
                                                     corners.upper);
    }
    const std::string &name = stage.filter->name;
    if (name == "runningmean" || name == "average")
        return std::make_unique<Average<T>>(stage.values[0]);
    if (name == "demean")
        return std::make_unique<RunningMeanHighPass<T>>(stage.values[0]);
    if (name == "stalta")
        return std::make_unique<StaLta<T>>(stage.values[0], stage.values[1]);
    if (name == "integrate")
        return std::make_unique<Integrate<T>>();
    return std::make_unique<Differentiate<T>>();
}

/** Poles that rounding has put on the unit circle, or beyond, never fade. */
bool isStable(const IIR::Biquad &section)
{
    return std::abs(section.a2) < 1 && std::abs(section.a1) < 1 + section.a2;
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

std::string stabilityProblem(const FilterStage &stage, Band band, double samplingFrequency)
{
    const Corners corners = cornersOf(stage);
    const auto sections = IIR::butterworthSections(band, corners.order, corners.lower,
                                                   corners.upper, samplingFrequency);
    if (!sections.empty() && std::all_of(sections.begin(), sections.end(), isStable))
        return {};
    const std::string rate = "for a sampling frequency of " + numberText(samplingFrequency) + " Hz";
    if (band == Band::Lowpass || band == Band::Highpass)
        return namedValue(stage, 0) + " is too low " + rate;
    return "the band from " + valueText(Lower, corners.lower) + " to " +
           valueText(Upper, corners.upper) + " is too narrow or too low " + rate;
}

std::string stageProblem(const FilterStage &stage, double samplingFrequency)
{
    for (size_t i = 0; i < stage.values.size(); ++i) {
        const std::string &unit = stage.filter->parameters[i].unit;
        std::string problem;
        if (unit == "Hz")
            problem = cornerProblem(stage, i, samplingFrequency);
        else if (unit == "s")
            problem = windowProblem(stage, i, samplingFrequency);
        if (!problem.empty())
            return problem;
    }
    const auto band = bandOf(*stage.filter);
    return band ? stabilityProblem(stage, *band, samplingFrequency) : std::string();
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

const std::vector<FilterDescription> &knownFilters()
{
    static const std::vector<FilterDescription> filters{
        {"lowpass", {Corner, Order}, "Butterworth filter that keeps what lies below the corner"},
        {"highpass", {Corner, Order}, "Butterworth filter that keeps what lies above the corner"},
        {"bandpass", {Lower, Upper, Order}, "Butterworth filter that keeps a band"},
        {"bandstop", {Lower, Upper, Order}, "Butterworth filter that takes out a band"},
        {"runningmean", {Length}, "Mean of the samples that lie at most the length back"},
        {"average", {Length}, "The same as runningmean"},
        {"demean", {Length}, "Subtracts the running mean: a gentle high-pass"},
        {"stalta", {Sta, Lta}, "Ratio of short to long term average of the absolute amplitudes"},
        {"integrate", {}, "Integral over time, as from velocity to displacement"},
        {"differentiate", {}, "Derivative in time, as from velocity to acceleration"},
    };
    return filters;
}

const FilterDescription *knownFilter(const std::string &name)
{
    for (const FilterDescription &filter : knownFilters()) {
        if (Core::compareNoCase(filter.name, name) == 0)
            return &filter;
    }
    return nullptr;
}

std::string numberText(double value)
{
    std::array<char, 32> buffer;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    return std::string(buffer.data(), end);
}

FilterValueProblem FilterDefinition::CheckValues(const FilterStage &stage)
{
    for (size_t i = 0; i < stage.values.size(); ++i) {
        const FilterParameter &parameter = stage.filter->parameters[i];
        const double value = stage.values[i];
        const int index = static_cast<int>(i);
        if (parameter.isOrder()) {
            if (!(value >= 1 && value <= MaximumFilterOrder && value == std::floor(value)))
                return {index, namedValue(stage, i) + " is not a whole number from 1 to " +
                                   std::to_string(MaximumFilterOrder)};
            continue;
        }
        if (!(value > 0 && std::isfinite(value)))
            return {index, namedValue(stage, i) + " is not above 0"};
        if (isUpperEnd(stage, i) && !(value > stage.values[i - 1]))
            return {index, namedValue(stage, i) + " is not above the " + namedValue(stage, i - 1)};
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
    for (const FilterStage &stage : _stages)
        chain->add(makeFilter<T>(stage).release());
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
