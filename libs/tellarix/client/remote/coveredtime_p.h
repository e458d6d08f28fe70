// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/timewindow.h>

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Tellarix {
namespace IO {

/** Stretches of time, disjoint and in ascending order. */
class TELLARIX_CLIENT_API CoveredTime
{
public:
    /** Adds a window that isn't empty; it is united with what lies nearer than @p tolerance. */
    void add(const Core::TimeWindow &window, Core::TimeSpan tolerance = Core::TimeSpan());

    /** True if all of @p window, but for @p tolerance at both ends, lies in one stretch. */
    bool covers(const Core::TimeWindow &window, Core::TimeSpan tolerance = Core::TimeSpan()) const;
    /** The parts of @p window that no stretch covers. */
    CoveredTime missingIn(const Core::TimeWindow &window) const;

    bool isEmpty() const { return _windows.empty(); }
    const std::vector<Core::TimeWindow> &windows() const { return _windows; }

private:
    std::vector<Core::TimeWindow> _windows;
};

/** What was delivered of each stream, by which records of another source are known as doubled. */
class TELLARIX_CLIENT_API JoinedCoverage
{
public:
    void add(const Record &record);
    /**
     * True if a record with the same start and number of samples was added, or if all samples of
     * this one, give or take half a sample, lie in what was added without a gap.
     */
    bool holds(const Record &record) const;

private:
    struct Stream
    {
        CoveredTime stretches;
        std::set<std::pair<Core::Time, int>> moments; /**< of records without an end */
    };

    std::map<std::string, Stream> _streams;
};

} // namespace IO
} // namespace Tellarix
