// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/remote/coveredtime_p.h>
#include <tellarix/core/records/streamcodes.h>

#include <map>
#include <string>
#include <vector>

namespace Tellarix {
namespace IO {

/** What lies between the end of an archive and the first live record of each stream. */
class TELLARIX_CLIENT_API JoinedSeam
{
public:
    struct Hole
    {
        StreamCodesCPtr codes;
        Core::TimeWindow window;
    };

    /** @param longest  a hole reaches back from the live record at most so far */
    explicit JoinedSeam(Core::TimeSpan longest) : _longest(longest) {}

    void notePast(const Record &record);
    /**
     * @param start    from when on the stream was asked for; may be unset
     * @param isWhole  the archive could not be asked: all is missing, however long it is
     * @return true if there is a hole now that was not there before
     */
    bool noteLive(const Record &record, Core::Time start, bool isWhole);
    /** Notes a record of the archive that was asked again; true if some of it was missing. */
    bool fill(const Record &record);

    /** What is missing still. */
    std::vector<Hole> holes() const;
    /** Gives up holes that end before @p time, and gives what of them is missing. */
    std::vector<Hole> giveUp(Core::Time time);

private:
    struct Stream
    {
        StreamCodesCPtr codes;
        Core::Time pastEnd;
        bool isLive{false};
        Core::TimeWindow hole;
        CoveredTime filled;
        Core::TimeSpan tolerance;
    };

    static bool fill(Stream &stream, const Record &record);
    static Core::TimeWindow missing(const Stream &stream);

    const Core::TimeSpan _longest;
    std::map<std::string, Stream> _streams;
};

} // namespace IO
} // namespace Tellarix
