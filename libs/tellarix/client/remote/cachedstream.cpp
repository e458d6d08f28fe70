// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/cachedstream.h>

#include <tellarix/client/remote/cachevisit_p.h>
#include <tellarix/core/strings.h>

#include <QUrlQuery>

namespace Tellarix {
namespace IO {

namespace {

RecordStreamScheme::Maker cachedMaker(const char *scheme)
{
    return [scheme] { return RecordStreamPtr(new CachedStream(scheme)); };
}

const RecordStreamScheme cachedScheme("cached", cachedMaker(""));
const RecordStreamScheme cachedServiceScheme("cached+fdsnws+https", cachedMaker("fdsnws+https"));
const RecordStreamScheme cachedPlainServiceScheme("cached+fdsnws+http", cachedMaker("fdsnws+http"));
const RecordStreamScheme cachedArchiveScheme("cached+archive+https", cachedMaker("archive+https"));
const RecordStreamScheme cachedPlainArchiveScheme("cached+archive+http",
                                                  cachedMaker("archive+http"));

constexpr double MostOption = 1E6;
constexpr double MostDays = 3660;
constexpr double SecondsPerDay = 86400;
const Core::TimeSpan SweepPause(600);

} // namespace

CachedStream::CachedStream(std::string scheme)
    : _scheme(std::move(scheme)), _delivered(std::make_unique<JoinedCoverage>())
{}

CachedStream::~CachedStream() = default;

bool CachedStream::setSource(const std::string &source)
{
    _settings = CacheSettings::Defaults();
    _url = _scheme.empty() ? std::string() : _scheme + "://" + source;
    if (_scheme.empty()) {
        if (source.empty() || source[0] != '?')
            return fail("cached://: the source is given as \"cached://?source=URL\"");
        const QUrlQuery query(QString::fromStdString(source.substr(1)));
        for (const auto &item : query.queryItems(QUrl::FullyDecoded)) {
            if (!setOption(item.first.toStdString(), item.second.toStdString()))
                return false;
        }
    }
    std::string error = "cached://: no source given";
    return (!_url.empty() && Create(_url, &error)) || fail(error);
}

bool CachedStream::open()
{
    setSourceStream(nullptr);
    _closed = _isSourceDone = _hasFault = _hasToldFailure = false;
    _known.clear();
    _delivered = std::make_unique<JoinedCoverage>();
    visitCache();
    // Where something is delivered first, it is told later by a message.
    return _visit->knowsAny() || openSource();
}

RecordPtr CachedStream::next()
{
    RecordPtr record = nextKnown();
    if (!record && !_closed && !_isSourceDone) {
        if (!_source && !openSource())
            report({StreamMessage::Severity::Fault, withoutPassword(_url), -1, errorString()});
        record = nextOfSource();
    }
    return _closed ? RecordPtr() : record;
}

void CachedStream::close()
{
    _closed = true;
    const std::lock_guard<std::mutex> lock(_sourceMutex);
    if (_source)
        _source->close();
}

std::string CachedStream::originName() const
{
    return _source ? _source->originName() : "cache of " + withoutPassword(_url);
}

int64_t CachedStream::originOffset() const
{
    return _source ? _source->originOffset() : -1;
}

double CachedStream::progress() const
{
    const std::lock_guard<std::mutex> lock(_sourceMutex);
    return _source ? _source->progress() : -1;
}

std::string CachedStream::outage() const
{
    const std::lock_guard<std::mutex> lock(_sourceMutex);
    return _source ? _source->outage() : std::string();
}

bool CachedStream::setOption(const std::string &name, const std::string &text)
{
    if (name == "source") {
        _url = text;
        return true;
    }
    if (name == "folder") {
        _settings.folder = QString::fromStdString(text);
        return !text.empty() || fail("cached://: no folder given");
    }
    const std::pair<const char *, double *> numbers[] = {
        {"size", &_settings.mostMB},
        {"age", &_settings.ageDays},
        {"empty", &_settings.emptyHours},
        {"late", &_settings.lateMinutes},
    };
    for (const auto &[option, value] : numbers) {
        if (name == option)
            return (Core::fromString(*value, text) && *value >= 0 && *value <= MostOption) ||
                   fail("cached://: " + name + "=" + text + " is no number from 0 to 1000000");
    }
    return fail("cached://: unknown option \"" + name + '"');
}

/** Finds out what is known of all that is requested. */
void CachedStream::visitCache()
{
    _folder = std::make_unique<CacheFolder>(_settings, _url);
    _visit = std::make_unique<CacheVisit>(*_folder, Core::Time::GMT(), _closed);
    _passedOn.clear();
    if (requests().empty())
        visitCache({"*", "*", "*", "*", requestedWindow()});
    for (const Request &request : requests())
        visitCache(request);
    tellFailure();
}

void CachedStream::visitCache(const Request &request)
{
    const Core::TimeWindow window = windowOf(request);
    if (window.valid() && window.length().length() <= MostDays * SecondsPerDay)
        _visit->ask({request.network, request.station, request.location, request.channel, window});
    else
        _passedOn.push_back(request);
}

/** Asks the source for what is missing; true as well if nothing is. */
bool CachedStream::openSource()
{
    _isSourceDone = true;
    if (_passedOn.empty() && _visit->missing().empty())
        return true;

    std::string error;
    const RecordStreamPtr source = Create(_url, &error);
    if (!source)
        return fail(error);
    source->setMessageHandler([this](const StreamMessage &message) {
        _hasFault = _hasFault || message.severity == StreamMessage::Severity::Fault;
        report(message);
    });
    source->setPersistent(isPersistent());
    setSourceStream(source);
    if (!requestOf(*source) || !source->open()) {
        setSourceStream(nullptr);
        return fail(source->errorString());
    }
    // Opening it may have undone a close() that came just before.
    if (_closed)
        source->close();
    _isSourceDone = false;
    return true;
}

bool CachedStream::requestOf(RecordStream &source) const
{
    // An open window of all streams is no request.
    if (requests().empty() && !_passedOn.empty())
        return source.setTimeWindow(requestedWindow());
    for (const CacheRequest &missing : _visit->missing()) {
        if (!source.addStream(missing.network, missing.station, missing.location, missing.channel,
                              missing.window))
            return false;
    }
    for (const Request &request : _passedOn) {
        if (!source.addStream(request.network, request.station, request.location, request.channel,
                              windowOf(request)))
            return false;
    }
    return true;
}

RecordPtr CachedStream::nextKnown()
{
    while (!_closed) {
        while (!_known.empty()) {
            const RecordPtr record = _known.front();
            _known.pop_front();
            if (!isRequested(*record->codes(), record->timeWindow()))
                continue;
            _delivered->add(*record);
            return record;
        }
        if (!_visit->readNext(_known))
            break;
        tellFailure();
    }
    return RecordPtr();
}

RecordPtr CachedStream::nextOfSource()
{
    while (_source && !_closed) {
        const RecordPtr record = _source->next();
        if (!record) {
            endSource();
            break;
        }
        if (_delivered->holds(*record))
            continue;
        _visit->keep(*record);
        tellFailure();
        return record;
    }
    return RecordPtr();
}

void CachedStream::endSource()
{
    // After a fault it isn't known whether there was anything else.
    if (_hasFault)
        _visit->write();
    else if (!_closed)
        _visit->finish();
    tellFailure();
    sweep();
    setSourceStream(nullptr);
    _isSourceDone = true;
}

/** Makes room now and then. */
void CachedStream::sweep() const
{
    if (!_closed)
        _folder->sweep(Core::Time::GMT(), SweepPause);
}

void CachedStream::setSourceStream(const RecordStreamPtr &source)
{
    RecordStreamPtr previous = source; // freed without the lock
    const std::lock_guard<std::mutex> lock(_sourceMutex);
    _source.swap(previous);
}

void CachedStream::tellFailure()
{
    if (_hasToldFailure || _folder->failure().empty())
        return;
    _hasToldFailure = true;
    report({StreamMessage::Severity::Note, "cache", -1, _folder->failure()});
}

} // namespace IO
} // namespace Tellarix
