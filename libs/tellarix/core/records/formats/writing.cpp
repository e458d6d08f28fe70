// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/formats/writing_p.h>

#include <tellarix/core/records/formats/bytes_p.h>
#include <tellarix/core/records/record.h>

#include <algorithm>
#include <cstdio>

namespace Tellarix {
namespace Formats {

namespace {

bool isWithinYears(Core::Time time)
{
    // miniSEED puts a time down as the nearest tenth of a millisecond and a correction.
    constexpr int64_t Rounding = 100;
    return time.fields().year >= MinYear &&
           (time + Core::TimeSpan::FromUSecs(Rounding)).fields().year <= MaxYear;
}

std::string faultOfTimes(const Record &record)
{
    const std::string years =
        " does not lie in the years " + std::to_string(MinYear) + " to " + std::to_string(MaxYear);
    if (!record.startTime().valid())
        return "record has no start time";
    if (!isWithinYears(record.startTime()))
        return "start time " + record.startTime().iso() + years;
    if (record.samplingFrequency() > 0 && !record.hasEndTime())
        return "end time" + years;
    if (!isWithinYears(record.lastSampleTime()))
        return "time of the last sample " + record.lastSampleTime().iso() + years;
    return {};
}

} // namespace

std::string faultOfRecord(const Record &record)
{
    if (record.sampleCount() == 0)
        return "record has no samples";

    const double rate = record.samplingFrequency();
    // Written so that not-a-number fails as well.
    if (rate != 0 && !(rate >= MinWrittenFrequency && rate <= MaxSamplingFrequency)) {
        char text[80];
        std::snprintf(text, sizeof text, "sampling frequency of %g Hz is not from %g to %g Hz",
                      rate, MinWrittenFrequency, MaxSamplingFrequency);
        return text;
    }
    return faultOfTimes(record);
}

std::string faultOfCode(const std::string &name, const std::string &code, size_t size)
{
    const std::string quoted = name + " \"" + code + "\"";
    if (code.size() > size)
        return quoted + " is longer than " + std::to_string(size) + " characters";

    const auto isPrintable = [](char c) { return c >= ' ' && c <= '~'; };
    if (!std::all_of(code.begin(), code.end(), isPrintable) || trimmedField(code) != code)
        return quoted + " has characters other than ASCII, or a blank at an end";
    return {};
}

} // namespace Formats
} // namespace Tellarix
