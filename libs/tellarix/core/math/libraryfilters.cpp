// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/math/libraryfilters_p.h>

#include <tellarix/core/math/average.h>
#include <tellarix/core/math/butterworth.h>
#include <tellarix/core/math/differentiate.h>
#include <tellarix/core/math/integrate.h>
#include <tellarix/core/math/stalta.h>

#include <algorithm>
#include <cmath>

namespace Tellarix {
namespace Math {
namespace Filtering {

namespace {

using IIR::Band;

struct Corners
{
    double lower;
    double upper;
    int order;
};

/** The order stands behind one corner or two. */
Corners cornersOf(const FilterValues &values)
{
    const size_t last = values.size() - 1;
    return {values[0], values[last - 1], static_cast<int>(values[last])};
}

template <typename T>
FilterMaker::Function<T> butterworthMaker(Band band)
{
    return [band](const FilterValues &values) {
        const Corners corners = cornersOf(values);
        return std::make_unique<IIR::Butterworth<T>>(band, corners.order, corners.lower,
                                                     corners.upper);
    };
}

/** Poles that rounding has put on the unit circle, or beyond, never fade. */
bool isStable(const IIR::Biquad &section)
{
    return std::abs(section.a2) < 1 && std::abs(section.a1) < 1 + section.a2;
}

std::string stabilityProblem(Band band, const FilterValues &values, double samplingFrequency)
{
    const Corners corners = cornersOf(values);
    const auto sections = IIR::butterworthSections(band, corners.order, corners.lower,
                                                   corners.upper, samplingFrequency);
    if (!sections.empty() && std::all_of(sections.begin(), sections.end(), isStable))
        return {};
    const std::string rate = "for a sampling frequency of " + numberText(samplingFrequency) + " Hz";
    if (band == Band::Lowpass || band == Band::Highpass)
        return "corner " + numberText(corners.lower) + " Hz is too low " + rate;
    return "the band from " + numberText(corners.lower) + " Hz to " + numberText(corners.upper) +
           " Hz is too narrow or too low " + rate;
}

FilterDescription butterworth(const std::string &name, Band band, const std::string &description)
{
    using Parameter = FilterParameter;
    const bool hasOneCorner = band == Band::Lowpass || band == Band::Highpass;
    std::vector<Parameter> parameters{Parameter::Corner(hasOneCorner ? "corner" : "lower")};
    if (!hasOneCorner)
        parameters.push_back(Parameter::Corner("upper", "lower"));
    parameters.push_back(Parameter::WholeNumber("order", 1, MaximumFilterOrder, 4.0));
    const int count = static_cast<int>(parameters.size());
    return {name,
            description,
            std::move(parameters),
            {butterworthMaker<float>(band), butterworthMaker<double>(band), count},
            FilterOutput::SameUnit,
            [band](const FilterValues &values, double samplingFrequency) {
                return stabilityProblem(band, values, samplingFrequency);
            }};
}

} // namespace

std::vector<FilterDescription> libraryFilters()
{
    using Parameter = FilterParameter;
    const Parameter length = Parameter::Duration("length");
    return {
        butterworth("lowpass", Band::Lowpass,
                    "Butterworth filter that keeps what lies below the corner"),
        butterworth("highpass", Band::Highpass,
                    "Butterworth filter that keeps what lies above the corner"),
        butterworth("bandpass", Band::Bandpass, "Butterworth filter that keeps a band"),
        butterworth("bandstop", Band::Bandstop, "Butterworth filter that takes out a band"),
        {"runningmean",
         "Mean of the samples that lie at most the length back",
         {length},
         FilterMaker::Of<RunningMean, 1>()},
        {"average", "The same as runningmean", {length}, FilterMaker::Of<RunningMean, 1>()},
        {"demean",
         "Subtracts the running mean: a gentle high-pass",
         {length},
         FilterMaker::Of<RunningMeanHighPass, 1>()},
        {"stalta",
         "Ratio of short to long term average of the absolute amplitudes",
         {Parameter::Duration("sta"), Parameter::Duration("lta", "sta")},
         FilterMaker::Of<StaLta, 2>(),
         FilterOutput::NoUnit},
        {"integrate",
         "Integral over time, as from velocity to displacement",
         {},
         FilterMaker::Of<Integrate, 0>(),
         FilterOutput::Integral},
        {"differentiate",
         "Derivative in time, as from velocity to acceleration",
         {},
         FilterMaker::Of<Differentiate, 0>(),
         FilterOutput::Derivative},
    };
}

} // namespace Filtering
} // namespace Math
} // namespace Tellarix
