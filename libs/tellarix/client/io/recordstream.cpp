// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/recordstream.h>

#include <tellarix/client/io/streamrequest.h>
#include <tellarix/core/logging.h>
#include <tellarix/core/namedoffers.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/strings.h>

#include <algorithm>

namespace Tellarix {
namespace IO {

namespace {

using Registry = Core::NamedOffers<RecordStreamScheme::Maker>;

// Static objects of other sources register themselves: it has to exist before them.
Registry &registry()
{
    static Registry instance;
    return instance;
}

std::string unknownScheme(const std::string &scheme)
{
    std::string known;
    for (const std::string &name : RecordStream::Schemes())
        known += (known.empty() ? "" : ", ") + name;
    return "Unknown record stream scheme \"" + scheme + "\" (known: " + known + ")";
}

/** Asks a stream for what stands behind the `#` of its URL. */
bool ask(RecordStream &stream, const StreamRequest &request)
{
    const Core::TimeWindow window = request.windowAt(Core::Time::GMT());
    const bool hasWindow = window.startTime().valid() || window.endTime().valid();
    if (request.streams.empty() && hasWindow)
        return stream.addStream("*", "*", "*", "*", window);
    return std::all_of(request.streams.begin(), request.streams.end(),
                       [&](const StreamCodesCPtr &codes) {
                           return stream.addStream(codes->network(), codes->station(),
                                                   codes->location(), codes->channel(), window);
                       });
}

} // namespace

std::string StreamMessage::text() const
{
    if (offset < 0)
        return source + ": " + cause;
    return source + ": byte " + std::to_string(offset) + ": " + cause;
}

RecordStreamPtr RecordStream::Create(const std::string &text, std::string *error)
{
    std::string reason;
    if (!error)
        error = &reason;

    StreamRequest request;
    if (!StreamRequest::parse(text, &request, error))
        return RecordStreamPtr();
    const std::string &url = request.url;
    const size_t separator = url.find("://");
    const bool hasScheme = separator != std::string::npos;
    const std::string scheme = hasScheme ? url.substr(0, separator) : "file";
    // Called without the lock, since a stream may be made of other streams.
    const std::optional<RecordStreamScheme::Maker> maker = registry().find(scheme);
    if (!maker || !*maker) {
        *error = unknownScheme(scheme);
        return RecordStreamPtr();
    }
    const RecordStreamPtr stream = (*maker)();
    if (!stream) {
        *error = "No record stream could be made for the scheme \"" + scheme + "\"";
        return RecordStreamPtr();
    }
    if (!stream->setSource(hasScheme ? url.substr(separator + 3) : url) || !ask(*stream, request)) {
        *error = stream->errorString();
        return RecordStreamPtr();
    }
    return stream;
}

std::vector<std::string> RecordStream::Schemes()
{
    std::vector<std::string> names;
    for (const auto &[name, maker] : registry().all())
        names.push_back(name);
    std::sort(names.begin(), names.end());
    return names;
}

bool RecordStream::addStream(const std::string &network, const std::string &station,
                             const std::string &location, const std::string &channel,
                             const Core::TimeWindow &window)
{
    _requests.push_back({network, station, location == "--" ? "" : location, channel, window});
    _requestsOfStreams.clear();
    return true;
}

bool RecordStream::setTimeWindow(const Core::TimeWindow &window)
{
    _timeWindow = window;
    return true;
}

bool RecordStream::isLiveBy(const std::string &url) const
{
    const RecordStreamPtr stream = Create(url);
    if (!stream)
        return false;
    stream->setTimeWindow(_timeWindow);
    for (const Request &request : _requests)
        stream->addStream(request.network, request.station, request.location, request.channel,
                          request.window);
    return stream->isLive();
}

bool RecordStream::isRequested(const StreamCodes &codes, const Core::TimeWindow &recordWindow) const
{
    if (_requests.empty())
        return meets(recordWindow, _timeWindow);

    const std::vector<size_t> &matching = requestsFor(codes);
    return std::any_of(matching.begin(), matching.end(), [&](size_t index) {
        return meets(recordWindow, windowOf(_requests[index]));
    });
}

bool RecordStream::matches(const Request &request, const StreamCodes &codes)
{
    return Core::wildcardMatch(request.network, codes.network()) &&
           Core::wildcardMatch(request.station, codes.station()) &&
           Core::wildcardMatch(request.location, codes.location()) &&
           Core::wildcardMatch(request.channel, codes.channel());
}

bool RecordStream::meets(const Core::TimeWindow &recordWindow, const Core::TimeWindow &window)
{
    const Core::Time start = recordWindow.startTime();
    if (window.endTime().valid() && start >= window.endTime())
        return false;
    return !window.startTime().valid() || start >= window.startTime() ||
           recordWindow.endTime() > window.startTime();
}

const Core::TimeWindow &RecordStream::windowOf(const Request &request) const
{
    const bool ownWindow = request.window.startTime().valid() || request.window.endTime().valid();
    return ownWindow ? request.window : _timeWindow;
}

void RecordStream::report(StreamMessage message) const
{
    if (_messageHandler)
        _messageHandler(message);
    else if (message.severity == StreamMessage::Severity::Note)
        qCInfo(Log::io, "%s", message.text().c_str());
    else
        qCWarning(Log::io, "%s", message.text().c_str());
}

bool RecordStream::fail(const std::string &reason)
{
    _errorString = reason;
    return false;
}

const std::vector<size_t> &RecordStream::requestsFor(const StreamCodes &codes) const
{
    // Damaged input may hold any number of streams.
    constexpr size_t MaxStreams = 100000;

    const auto known = _requestsOfStreams.find(codes.id());
    if (known != _requestsOfStreams.end())
        return known->second;
    if (_requestsOfStreams.size() >= MaxStreams)
        _requestsOfStreams.clear();

    std::vector<size_t> matching;
    for (size_t i = 0; i < _requests.size(); ++i) {
        if (matches(_requests[i], codes))
            matching.push_back(i);
    }
    return _requestsOfStreams.emplace(codes.id(), std::move(matching)).first->second;
}

RecordStreamScheme::RecordStreamScheme(const std::string &scheme, Maker maker)
{
    registry().add(this, scheme, std::move(maker));
}

RecordStreamScheme::~RecordStreamScheme()
{
    registry().remove(this);
}

} // namespace IO
} // namespace Tellarix
