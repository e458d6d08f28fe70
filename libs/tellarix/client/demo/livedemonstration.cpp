// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/demo/livedemonstration.h>

#include <tellarix/client/demo/demostation.h>
#include <tellarix/client/demo/seismogram_p.h>
#include <tellarix/core/parallel.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/records/typedarray.h>

#include <QStringList>

#include <algorithm>
#include <chrono>
#include <iterator>

namespace Tellarix {
namespace Client {

namespace {

const IO::RecordStreamScheme demonstrationScheme("demonstration", [] {
    return IO::RecordStreamPtr(new LiveDemonstration);
});

constexpr uint64_t Seed = 20240517;
constexpr int PieceSeconds = 5;
constexpr int Pieces = static_cast<int>(DemoSeconds) / PieceSeconds;
constexpr int PieceSamples = static_cast<int>(PieceSeconds * DemoSamplingFrequency);
/** Of the nearest station, and how much more it is at the farthest, in s. */
constexpr double Latency = 1;
constexpr double FartherLatency = 3;
constexpr int SilentPieces = 36;
const Core::TimeSpan LongestPast(86400.0);

int64_t pieceAt(Core::Time time)
{
    return static_cast<int64_t>(time.toDouble()) / PieceSeconds;
}

Core::Time startOf(int64_t piece)
{
    return Core::Time::FromUSecs(piece * PieceSeconds * 1000000);
}

} // namespace

bool LiveDemonstration::setSource(const std::string &source)
{
    return source == "live" || fail("\"" + source + "\": the demonstration has \"live\" only");
}

/** From the earliest start of all that is asked for to the latest end; ends may be unset. */
Core::TimeWindow LiveDemonstration::allWindows() const
{
    if (requests().empty())
        return requestedWindow();
    Core::TimeWindow all = windowOf(requests().front());
    for (const Request &request : requests()) {
        const Core::TimeWindow &window = windowOf(request);
        const bool haveEnd = all.endTime().valid() && window.endTime().valid();
        all.set(std::min(all.startTime(), window.startTime()),
                haveEnd ? std::max(all.endTime(), window.endTime()) : Core::Time());
    }
    return all;
}

bool LiveDemonstration::isLive() const
{
    const Core::Time end = allWindows().endTime();
    return !end.valid() || end > Core::Time::GMT();
}

bool LiveDemonstration::open()
{
    const Core::Time now = Core::Time::GMT();
    const Core::TimeWindow window = allWindows();
    const Core::Time start = window.startTime().valid() ? window.startTime() : now;
    _end = window.endTime();
    _piece = pieceAt(std::max(start, now - LongestPast));
    _channel = 0;
    const int stations = demonstrationStations().size();
    std::vector<std::vector<Channel>> channels(static_cast<size_t>(stations));
    Core::parallelFor(
        stations, [&](int i) { channels[static_cast<size_t>(i)] = channelsOf(i, pieceAt(now)); });
    _channels.clear();
    for (std::vector<Channel> &some : channels)
        std::move(some.begin(), some.end(), std::back_inserter(_channels));
    return !_closed || fail("closed");
}

/** What is asked for of a station. */
std::vector<LiveDemonstration::Channel> LiveDemonstration::channelsOf(int index, int64_t now) const
{
    const QVector<DemoStation> stations = demonstrationStations();
    const DemoStation &station = stations[index];
    const bool isSilent = station.flaw == DemoStation::Flaw::Gap;
    std::vector<Channel> result;
    DemoSeismogram seismogram;
    for (size_t i = 0; i < seismogram.size(); ++i) {
        const StreamCodesCPtr codes =
            new StreamCodes(station.network.toStdString(), station.station.toStdString(),
                            station.location.toStdString(),
                            DemoStation::Channels().at(static_cast<int>(i)).toStdString());
        const bool isAsked =
            std::any_of(requests().begin(), requests().end(),
                        [&](const Request &item) { return matches(item, *codes); });
        if (!requests().empty() && !isAsked)
            continue;
        if (result.empty())
            seismogram = synthesizeSeismogram(station, Seed + static_cast<uint64_t>(index));
        Channel channel{codes, std::move(seismogram[i])};
        channel.latency = Latency + FartherLatency * index / stations.size();
        if (isSilent)
            channel.silentFrom = now - SilentPieces;
        result.push_back(std::move(channel));
    }
    return result;
}

RecordPtr LiveDemonstration::next()
{
    while (!_closed && !_channels.empty()) {
        const Channel &channel = _channels[_channel];
        const Core::Time start = startOf(_piece);
        if (_end.valid() && start >= _end)
            break;
        const Core::Time end = startOf(_piece + 1);
        if (!waitUntil(end + Core::TimeSpan(channel.latency)))
            break;
        RecordPtr record;
        if (_piece < channel.silentFrom && isRequested(*channel.codes, {start, end})) {
            const auto first = static_cast<size_t>(_piece % Pieces) * PieceSamples;
            record = new Record(channel.codes, start, DemoSamplingFrequency,
                                new IntArray(PieceSamples, channel.samples.data() + first));
        }
        _channel = (_channel + 1) % _channels.size();
        _piece += _channel == 0 ? 1 : 0;
        if (record)
            return record;
    }
    return RecordPtr();
}

/** False if it was closed meanwhile. */
bool LiveDemonstration::waitUntil(Core::Time time)
{
    std::unique_lock<std::mutex> lock(_mutex);
    while (!_closed) {
        const double seconds = (time - Core::Time::GMT()).length();
        if (seconds <= 0)
            return true;
        _wake.wait_for(lock, std::chrono::duration<double>(seconds));
    }
    return false;
}

void LiveDemonstration::close()
{
    const std::lock_guard<std::mutex> lock(_mutex);
    _closed = true;
    _wake.notify_all();
}

} // namespace Client
} // namespace Tellarix
