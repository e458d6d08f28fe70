// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/timewindow.h>

#include <QByteArray>

#include <string>
#include <vector>

namespace Tellarix {
namespace IO {

/** One line of a request: streams by their codes, which may be patterns, and a time. */
struct FdsnLine
{
    StreamCodes codes;
    Core::TimeWindow window;

    bool isPattern() const;
};

/** What is asked for at once. */
using FdsnLines = std::vector<FdsnLine>;

/** Sizes of pieces. */
struct FdsnPieceSizes
{
    int streams{24};       /**< lines in one request */
    int streamHours{24};   /**< streams times hours, a pattern counts as 8 streams */
    double shortest{3600}; /**< seconds, whatever the number of streams */
    double longest{86400};
};

/**
 * Cuts what is asked for into pieces by time, and those into groups of streams: a piece is a
 * request of a size that no server should mind. In order of time, made when they are wanted.
 */
class FdsnPieces
{
public:
    FdsnPieces() = default;
    /** @param lines  with windows that are not empty */
    explicit FdsnPieces(FdsnLines lines, const FdsnPieceSizes &sizes = FdsnPieceSizes());

    int64_t count() const { return _stretches * _groups; }
    /** The lines of a piece; none if nothing was asked for in its time. */
    FdsnLines at(int64_t index) const;
    /** The time that pieces with this index and those of the same stretch cover. */
    Core::TimeWindow stretch(int64_t index) const;

private:
    FdsnLines _lines;
    Core::TimeWindow _window;
    Core::TimeSpan _length;
    int64_t _stretches{0};
    int64_t _groups{0};
    size_t _groupSize{1};
};

/** The lines without those of which others ask for all that they do. */
FdsnLines withoutCoveredFdsnLines(const FdsnLines &lines);

/** Two smaller requests in place of one that is too large, by time down to ten minutes, then by
 *  streams, then by time again; none if it can't be smaller. */
std::vector<FdsnLines> splitFdsnLines(const FdsnLines &lines);
/** Two requests with half of the streams each; none if there is but one line. */
std::vector<FdsnLines> splitFdsnStreams(const FdsnLines &lines);

/** The lines as the body of a request. */
QByteArray fdsnBody(const FdsnLines &lines);
/** What is asked for, for messages: "XX.A..BHZ and 3 others from TIME to TIME". */
std::string fdsnLinesText(const FdsnLines &lines);

} // namespace IO
} // namespace Tellarix
