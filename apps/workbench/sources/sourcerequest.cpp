// SPDX-License-Identifier: LGPL-3.0-or-later

#include "sourcerequest.h"

#include <tellarix/client/io/streamrequest.h>

#include <QUrl>

#include <algorithm>

using namespace Tellarix;

namespace Workbench {

namespace {

const Core::TimeSpan ArchiveDelay(3600);
constexpr double SecondsBefore = 60;
constexpr double SecondsAfterWaves = 60;
constexpr double LeastSecondsAfter = 300;
constexpr double MostSecondsAfter = 1800;
constexpr double SlowestKmPerSecond = 2.5; // surface waves

QString cachedUrl(const QString &url)
{
    const bool canBe = url.startsWith("fdsnws+") || url.startsWith("archive+");
    return canBe ? "cached+" + url : url;
}

QString joinedUrl(const QString &past, const QString &live)
{
    const auto encoded = [](const QString &url) {
        return QString::fromLatin1(QUrl::toPercentEncoding(url));
    };
    return QString("joined://?past=%1&live=%2").arg(encoded(past), encoded(live));
}

std::string timeText(Core::Time time)
{
    return time.toString("%Y-%m-%dT%H:%M:%S");
}

} // namespace

QString requestText(const DataSource &source, const std::vector<std::string> &streams,
                    const RequestTimes &times, bool isCached, Core::Time now)
{
    const bool isLive = !times.span.isEmpty();
    const bool reachesPresent = isLive || times.window.endTime() > now - ArchiveDelay;
    const QString past = isCached ? cachedUrl(source.past) : source.past;
    QString url = isLive ? source.live : past;
    if (!source.past.isEmpty() && !source.live.isEmpty() && reachesPresent)
        url = joinedUrl(past, source.live);
    else if (url.isEmpty())
        url = isLive ? past : source.live;

    IO::StreamRequest request;
    request.url = url.toStdString();
    for (const std::string &stream : streams)
        request.streams.push_back(StreamCodes::FromID(stream));
    request.from = isLive ? times.span.toStdString() : timeText(times.window.startTime());
    if (!isLive)
        request.to = timeText(times.window.endTime());
    else if (source.live.isEmpty())
        request.to = "now";
    return QString::fromStdString(request.text());
}

Core::TimeWindow windowAround(const EventFacts &event, std::optional<double> farthestKm)
{
    const double waves =
        farthestKm ? *farthestKm / SlowestKmPerSecond + SecondsAfterWaves : MostSecondsAfter;
    const double after = std::clamp(waves, LeastSecondsAfter, MostSecondsAfter);
    return {event.originTime - Core::TimeSpan(SecondsBefore),
            event.originTime + Core::TimeSpan(after)};
}

} // namespace Workbench
