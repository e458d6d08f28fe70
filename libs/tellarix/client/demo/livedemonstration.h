// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/client/io/recordstream.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <limits>
#include <mutex>
#include <vector>

namespace Tellarix {
namespace Client {

/**
 * The recordings of the demonstration as if they came in now, again and again:
 * "demonstration://live".
 *
 * Records of five seconds come some seconds late, those of far stations later. Without a window it
 * begins now, with one at its beginning, at most a day ago. One station has fallen silent a while
 * ago.
 */
class LiveDemonstration : public IO::RecordStream
{
public:
    bool setSource(const std::string &source) override;
    bool isLive() const override;
    bool open() override;
    RecordPtr next() override;
    void close() override;

private:
    struct Channel
    {
        StreamCodesCPtr codes;
        std::vector<int> samples;
        double latency{0};                                       /**< in s */
        int64_t silentFrom{std::numeric_limits<int64_t>::max()}; /**< piece */
    };

    Core::TimeWindow allWindows() const;
    std::vector<Channel> channelsOf(int index, int64_t now) const;
    bool waitUntil(Core::Time time);

    std::vector<Channel> _channels; /**< in the order in which their records come */
    size_t _channel{0};
    int64_t _piece{0}; /**< since 1970 */
    Core::Time _end;

    std::mutex _mutex;
    std::condition_variable _wake;
    std::atomic<bool> _closed{false};
};

} // namespace Client
} // namespace Tellarix
