// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/seedlinkstream.h>

#include <tellarix/client/io/savefile.h>
#include <tellarix/client/remote/seedlinkstations.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/strings.h>

#include <QFile>
#include <QSaveFile>

#include <algorithm>

namespace Tellarix {
namespace IO {

namespace {

const RecordStreamScheme seedLinkScheme("seedlink",
                                        [] { return RecordStreamPtr(new SeedLinkStream); });

using Severity = StreamMessage::Severity;

constexpr double FirstPause = 1;
constexpr int MostMessages = 1000;
constexpr size_t MostTold = 100;
constexpr qint64 MSecsBetweenSaves = 10000;
constexpr qint64 LargestState = 64 << 20;
// Clocks of stations are seldom as wrong as that.
const Core::TimeSpan FarAhead(3600.0);
// What live data may be behind, when they are asked for again without having come.
const Core::TimeSpan Latency(60.0);

std::string stationOf(const StreamCodes &codes)
{
    return codes.network() + '.' + codes.station();
}

QString fileName(const std::string &path)
{
    return QString::fromStdString(path);
}

} // namespace

SeedLinkStream::~SeedLinkStream()
{
    savePlaces();
}

bool SeedLinkStream::setSource(const std::string &source)
{
    std::string error;
    SeedLinkAddress address;
    if (!parseSeedLinkAddress(source, address, error))
        return fail(error);
    _address = address;
    _session.setAddress(address);
    return true;
}

bool SeedLinkStream::addStream(const std::string &network, const std::string &station,
                               const std::string &location, const std::string &channel,
                               const Core::TimeWindow &window)
{
    std::vector<SeedLinkBlock> blocks;
    if (!addToSeedLinkBlocks(blocks, {network, station, {}, {}}, location == "--" ? "" : location,
                             channel, _address.type))
        return fail(_address.name() + ": \"" +
                    printable(network + '.' + station + '.' + location + '.' + channel) +
                    "\" names no streams of a SeedLink server");
    return RecordStream::addStream(network, station, location, channel, window);
}

bool SeedLinkStream::isLive() const
{
    const std::vector<SeedLinkBlock> blocks = blocksOf(nullptr);
    const Core::Time now = Core::Time::GMT();
    return !_address.fetch && std::any_of(blocks.begin(), blocks.end(), [&](const auto &block) {
        return !block.window.endTime().valid() || block.window.endTime() > now;
    });
}

bool SeedLinkStream::open()
{
    // A close() that came before was meant for this one, unless there was another to close.
    if (_wasOpened) {
        _closed = false;
        _session.connection().restart();
    }
    _wasOpened = true;
    _places = SeedLinkPlaces();
    _arePlacesLoaded = _isResolving = _isFlowing = _isLossTold = _isPauseSkipped = false;
    _isDoubtingWildcards = false;
    _greeting.clear();
    _firstFlow = Core::Time();
    _pauseSeconds = std::min(FirstPause, _address.longestPause);
    _messages = 0;
    _told.clear();
    setOutage(std::string());
    const std::vector<SeedLinkBlock> blocks = blocksOf(nullptr);
    setWindows(blocks);
    _areWildcardsHeard = std::none_of(blocks.begin(), blocks.end(),
                                      [](const auto &block) { return block.hasWildcards(); });
    _progress = _allWindows.isEmpty() ? -1 : 0;
    _isAtEnd = blocks.empty();
    if (_isAtEnd || connect())
        return true;
    // One that has greeted is there, and refuses.
    if (isPersistent() && isLive() && _greeting.empty() && _address.longestPause > 0 && !_closed) {
        _firstFlow = Core::Time::GMT();
        lose();
        return true;
    }
    _session.connection().drop();
    return fail(_address.name() + ": " + _cause);
}

RecordPtr SeedLinkStream::next()
{
    _isReading = true;
    _places.confirm();
    RecordPtr record;
    while (!_closed && !_isAtEnd && !record) {
        if (!_isFlowing && !reconnect())
            break;
        switch (step(record)) {
        case Step::Record:
        case Step::Nothing:
            break;
        case Step::Again:
            _isFlowing = false;
            _isPauseSkipped = true;
            break;
        case Step::Lost:
            lose();
            break;
        case Step::End:
            _isAtEnd = true;
            _progress = _allWindows.isEmpty() ? -1 : 1;
            break;
        }
    }
    // One that has been taken is given out even so: it counts as delivered.
    if (!record) {
        _session.connection().drop();
        _isFlowing = false;
        savePlaces();
    }
    _isReading = false;
    return record;
}

void SeedLinkStream::close()
{
    _closed = true;
    _session.connection().end();
    if (_session.connection().isOwn() && !_isReading)
        _session.connection().drop();
}

/** The requests by stations; those with wildcards for the @p known ones, if these are given. */
std::vector<SeedLinkBlock> SeedLinkStream::blocksOf(const std::vector<Station> *known) const
{
    std::vector<Request> wanted = requests();
    if (wanted.empty())
        wanted.push_back({"*", "*", "*", "*", requestedWindow()});

    std::vector<SeedLinkBlock> blocks;
    for (const Request &request : wanted) {
        const Core::TimeWindow window = requests().empty() ? request.window : windowOf(request);
        const SeedLinkBlock pattern{request.network, request.station, {}, window};
        if (window.valid() && window.isEmpty())
            continue;
        if (!known || !pattern.hasWildcards() || _isDoubtingWildcards)
            addToSeedLinkBlocks(blocks, pattern, request.location, request.channel, _address.type);
        for (const Station &station :
             known &&pattern.hasWildcards() ? *known : std::vector<Station>()) {
            if (Core::wildcardMatch(request.network, station.network) &&
                Core::wildcardMatch(request.station, station.station))
                addToSeedLinkBlocks(blocks, {station.network, station.station, {}, window},
                                    request.location, request.channel, _address.type);
        }
    }
    return blocks;
}

void SeedLinkStream::setWindows(const std::vector<SeedLinkBlock> &blocks)
{
    _allWindows = blocks.empty() ? Core::TimeWindow() : blocks.front().window;
    for (const SeedLinkBlock &block : blocks) {
        const bool haveEnd = _allWindows.endTime().valid() && block.window.endTime().valid();
        _allWindows.set(std::min(_allWindows.startTime(), block.window.startTime()),
                        haveEnd ? std::max(_allWindows.endTime(), block.window.endTime())
                                : Core::Time());
    }
}

/** Connects and makes the data flow; false with a cause. */
bool SeedLinkStream::connect()
{
    const bool isFirst = _greeting.empty();
    _isFlowing = false;
    if (_session.open() != SeedLinkSession::Outcome::Done) {
        _cause = _session.cause();
        return false;
    }
    if (!isFirst && _session.greeting() != _greeting)
        _places.doubtAll();
    _greeting = _session.greeting();
    if (isFirst)
        loadPlaces();
    _places.beginConnection();

    std::vector<Station> stations;
    if (_isResolving && !listStations(stations) && !_isDoubtingWildcards)
        return false;
    const bool wasResolving = _isResolving;
    if (!request(blocksOf(_isResolving ? &stations : nullptr)))
        return _isResolving && !wasResolving && connect();
    if (!_session.send("END")) {
        _cause = _session.cause();
        return false;
    }
    if (!_firstFlow.valid())
        _firstFlow = Core::Time::GMT();
    _isFlowing = true;
    setOutage(std::string());
    _isSilenceChecked = _isAsked = false;
    _hasAnswered = !isFirst;
    _sinceFlow.start();
    _sinceBytes.start();
    _sinceWanted.start();
    _sinceSaved.start();
    return true;
}

/** The stations that the server has, for one that takes no wildcards. */
bool SeedLinkStream::listStations(std::vector<Station> &stations)
{
    const bool read = readSeedLinkStations(
        _session, "STATIONS",
        [&](const SeedLinkStation &station) {
            stations.push_back({station.network, station.code});
            return true;
        },
        &_cause);
    if (!read)
        _cause =
            "wildcards in station codes are refused, and so is the list of stations: " + _cause;
    return read;
}

/** Asks for blocks; false with a cause if none is taken, or if wildcards have to be resolved. */
bool SeedLinkStream::request(const std::vector<SeedLinkBlock> &blocks)
{
    using Outcome = SeedLinkSession::Outcome;
    size_t taken = 0;
    _cause = "has no station that was asked for";
    for (const SeedLinkBlock &block : blocks) {
        const Outcome outcome = _session.request(block, startOf(block));
        if (outcome == Outcome::Done) {
            ++taken;
            continue;
        }
        _cause = _session.cause();
        if (outcome != Outcome::Refused)
            return false;
        if (block.hasWildcards() && !_isResolving) {
            _isResolving = true;
            return false;
        }
        _cause =
            block.id() + ": the server refuses the request" + (_cause.empty() ? "" : ": " + _cause);
        if (blocks.size() > 1)
            tellOnce(block.id(), _cause);
    }
    return taken > 0;
}

/** The line by which a block is asked for: from where it stands, or from its beginning. */
std::string SeedLinkStream::startOf(const SeedLinkBlock &block)
{
    const bool hasEnd = block.window.endTime().valid();
    const bool isPast = hasEnd && block.window.endTime() <= Core::Time::GMT();
    SeedLinkPosition position;
    // What a file tells is of the present: a window may lie far behind it.
    if (!block.hasWildcards() && !(hasEnd && _arePlacesLoaded))
        position.sequence = _places.resume(block.id());
    if (position.sequence)
        return seedLinkStart({nextSeedLinkSequence(*position.sequence), {}}, _address.fetch);

    Core::Time begin = block.window.startTime();
    if (!hasEnd || (!begin.valid() && !isPast)) {
        const Core::Time known = _places.timeOf(block.id());
        if (known.valid())
            begin = std::max(begin, known);
        else if (!begin.valid() && _firstFlow.valid())
            begin = _firstFlow - Latency;
    }
    const bool isLive = !begin.valid() && !isPast;
    position.window.set(begin, isLive ? Core::Time() : block.window.endTime());
    return seedLinkStart(position, _address.fetch);
}

SeedLinkStream::Step SeedLinkStream::step(RecordPtr &record)
{
    if (_sinceSaved.elapsed() > MSecsBetweenSaves)
        savePlaces();
    const auto settleMSecs = static_cast<qint64>(_address.settle * 1000);
    if (!_isSilenceChecked && _sinceFlow.elapsed() >= settleMSecs) {
        _isSilenceChecked = true;
        if (_places.doubtSilent() || doubtWildcards())
            return Step::Again;
    }
    if (!_address.fetch && arePast() && _sinceWanted.elapsed() >= settleMSecs) {
        if (_hasAnswered)
            return Step::End;
        if (!_isAsked && !_session.send("INFO ID"))
            return lost(_session.cause());
        _isAsked = true;
    }

    SeedLinkPacket packet;
    switch (_session.next(packet, msecsToWait())) {
    case SeedLinkSession::Outcome::Done:
        return takePacket(packet, record);
    case SeedLinkSession::Outcome::TimedOut:
        return takeSilence();
    default:
        return lost(_session.cause());
    }
}

SeedLinkStream::Step SeedLinkStream::takePacket(const SeedLinkPacket &packet, RecordPtr &record)
{
    _sinceBytes.start();
    _isAsked = false;
    _hasAnswered = true;
    switch (packet.kind) {
    case SeedLinkPacket::Kind::Record:
        return takeRecord(packet, record);
    case SeedLinkPacket::Kind::Damaged:
        tell(Severity::Fault, "damaged record: " + packet.cause);
        return Step::Nothing;
    case SeedLinkPacket::Kind::End:
        return takeEnd();
    case SeedLinkPacket::Kind::Error:
        return lost("the server gives up by ERROR");
    case SeedLinkPacket::Kind::Info:
        noteLife();
        return Step::Nothing;
    default:
        return Step::Nothing;
    }
}

SeedLinkStream::Step SeedLinkStream::takeRecord(const SeedLinkPacket &packet, RecordPtr &record)
{
    const Formats::MiniSeedHeader &header = packet.header;
    const StreamCodes &codes = *_decoder.codes(header);
    noteLife();
    const bool isOurs = requests().empty() || std::any_of(requests().begin(), requests().end(),
                                                          [&](const Request &request) {
                                                              return matches(request, codes);
                                                          });
    if (!isOurs) {
        tellOnce(codes.id(), codes.id() + ": was not asked for; its records are skipped");
        return Step::Nothing;
    }

    _areWildcardsHeard = _areWildcardsHeard || isOfWildcards(codes);
    const Core::TimeWindow window = header.timeWindow();
    const bool ahead = isAhead(codes, header.startTime);
    switch (_places.take(stationOf(codes), codes.id(), packet.sequence, window,
                         header.samplingFrequency, ahead)) {
    case SeedLinkPlaces::Verdict::Doubtful:
        _places.doubtSilent();
        return Step::Again;
    case SeedLinkPlaces::Verdict::Known:
        return Step::Nothing;
    case SeedLinkPlaces::Verdict::New:
        break;
    }
    tellLost(codes);
    if (!isRequested(codes, window))
        return Step::Nothing;

    _pauseSeconds = std::min(FirstPause, _address.longestPause);
    _sinceWanted.start();
    _hasAnswered = false;
    if (!ahead)
        noteProgress(window.endTime());
    record = decode(packet, codes);
    return record ? Step::Record : Step::Nothing;
}

RecordPtr SeedLinkStream::decode(const SeedLinkPacket &packet, const StreamCodes &codes)
{
    const Formats::MiniSeedHeader &header = packet.header;
    if (!header.cause.empty())
        tell(Severity::Fault, codes.id() + ": " + header.cause);
    if (header.sampleCount == 0) {
        tellOnce(codes.id() + " empty", codes.id() + ": sends records without samples");
        return RecordPtr();
    }
    std::string cause;
    const RecordPtr record = _decoder.decode(header, packet.record, cause);
    if (!cause.empty())
        tell(Severity::Fault, codes.id() + ": " + cause);
    return record;
}

/** Nothing has come for a while: is there still somebody? */
SeedLinkStream::Step SeedLinkStream::takeSilence()
{
    const double silence = static_cast<double>(_sinceBytes.elapsed()) / 1000;
    if (silence >= _address.timeout)
        return lost("silent for " + std::to_string(static_cast<int>(silence)) + " s");
    if (_address.keepAlive > 0 && silence >= _address.keepAlive && !_isAsked) {
        _isAsked = true;
        if (!_session.send("INFO ID"))
            return lost(_session.cause());
    }
    return Step::Nothing;
}

SeedLinkStream::Step SeedLinkStream::takeEnd()
{
    // A server that counts anew has nothing by the numbers of before.
    if (_places.doubtSilent() || doubtWildcards())
        return Step::Again;
    return _address.fetch || arePast() ? Step::End : lost("the server has ended the flow");
}

/** Servers that know no wildcards may take them for names that they don't have, without a word: if
 *  nothing has come by them, they are asked for by name as well, once. */
bool SeedLinkStream::doubtWildcards()
{
    if (_areWildcardsHeard || _isResolving)
        return false;
    _isResolving = _isDoubtingWildcards = true;
    return true;
}

bool SeedLinkStream::isOfWildcards(const StreamCodes &codes) const
{
    return requests().empty() ||
           std::any_of(requests().begin(), requests().end(), [&](const Request &request) {
               return SeedLinkBlock{request.network, request.station, {}, {}}.hasWildcards() &&
                      matches(request, codes);
           });
}

SeedLinkStream::Step SeedLinkStream::lost(const std::string &cause)
{
    _cause = cause;
    return Step::Lost;
}

/** Up to the next thing that time brings. */
int SeedLinkStream::msecsToWait() const
{
    double seconds = _address.timeout - static_cast<double>(_sinceBytes.elapsed()) / 1000;
    const auto consider = [&](double after, const QElapsedTimer &since) {
        seconds = std::min(seconds, after - static_cast<double>(since.elapsed()) / 1000);
    };
    if (_address.keepAlive > 0 && !_isAsked)
        consider(_address.keepAlive, _sinceBytes);
    if (!_isSilenceChecked)
        consider(_address.settle, _sinceFlow);
    if (arePast() && !_isAsked && !_address.fetch)
        consider(_address.settle, _sinceWanted);
    else if (_allWindows.endTime().valid() && !arePast())
        seconds = std::min(seconds, (_allWindows.endTime() - Core::Time::GMT()).length());
    return static_cast<int>(std::max(0.0, seconds) * 1000) + 1;
}

/** True if all windows have an end that has passed. */
bool SeedLinkStream::arePast() const
{
    return _allWindows.endTime().valid() && _allWindows.endTime() <= Core::Time::GMT();
}

bool SeedLinkStream::isAhead(const StreamCodes &codes, Core::Time start)
{
    const Core::Time now = Core::Time::GMT();
    if (start <= now + FarAhead)
        return false;
    tellOnce(codes.id() + " ahead",
             codes.id() + ": sends records of the future, the first of " + start.iso());
    return true;
}

void SeedLinkStream::noteProgress(Core::Time end)
{
    if (_allWindows.isEmpty())
        return;
    const double share = (end - _allWindows.startTime()).length() / _allWindows.length().length();
    _progress = std::max(_progress.load(), std::min(1.0, share));
}

/** Tries until there is a connection; false if there is to be none. */
bool SeedLinkStream::reconnect()
{
    while (!_closed) {
        if (!_isPauseSkipped) {
            const int msecs = static_cast<int>(_pauseSeconds * 1000);
            if (_session.connection().pause(msecs) == Connection::Outcome::Ended)
                return false;
            _pauseSeconds = std::min(2 * _pauseSeconds, _address.longestPause);
        }
        _isPauseSkipped = false;
        if (connect())
            return true;
        lose();
        if (_isAtEnd)
            return false;
    }
    return false;
}

void SeedLinkStream::lose()
{
    _session.connection().drop();
    _isFlowing = false;
    if (_closed)
        return;
    _isAtEnd = _address.longestPause == 0;
    _places.noteLoss();
    setOutage(_address.name() + ": " + _cause);
    if (!_isLossTold) {
        tell(_isAtEnd ? Severity::Fault : Severity::Note,
             (_greeting.empty() ? "no connection: " : "connection lost: ") + _cause +
                 (_isAtEnd ? "" : "; trying to connect again"));
        _sinceLoss.start();
    }
    _isLossTold = true;
    savePlaces();
}

/** Something sound has come: if the connection was lost, that is over. */
void SeedLinkStream::noteLife()
{
    if (!_isLossTold)
        return;
    _isLossTold = false;
    tell(Severity::Note, "connected after " + std::to_string(_sinceLoss.elapsed() / 1000) + " s");
}

std::string SeedLinkStream::outage() const
{
    const std::lock_guard<std::mutex> lock(_outageMutex);
    return _outage;
}

void SeedLinkStream::setOutage(const std::string &cause)
{
    const std::lock_guard<std::mutex> lock(_outageMutex);
    _outage = cause;
}

/** Tells what the server no longer had before the record that was taken last. */
void SeedLinkStream::tellLost(const StreamCodes &codes)
{
    const Core::TimeWindow &lost = _places.lost();
    if (!lost.isEmpty() && isRequested(codes, lost))
        tell(Severity::Fault, codes.id() + ": the server no longer has what lies between " +
                                  lost.startTime().iso() + " and " + lost.endTime().iso());
}

void SeedLinkStream::tell(Severity severity, const std::string &cause)
{
    if (_messages++ < MostMessages)
        report({severity, _address.name(), -1, cause});
    else if (_messages == MostMessages + 1)
        report({severity, _address.name(), -1, "further messages are left out"});
}

void SeedLinkStream::tellOnce(const std::string &subject, const std::string &cause)
{
    if (_told.size() < MostTold && _told.insert(subject).second)
        tell(Severity::Note, cause);
}

/** Reads the file of places; one that is damaged is moved out of the way. */
void SeedLinkStream::loadPlaces()
{
    QFile file(fileName(_address.stateFile));
    if (_address.stateFile.empty() || !file.exists())
        return;
    if (!file.open(QIODevice::ReadOnly)) {
        tell(Severity::Fault, _address.stateFile + ": " + file.errorString().toStdString());
        return;
    }
    const std::string text = file.read(LargestState).toStdString();
    file.close();
    _arePlacesLoaded = _places.fromText(text, _address.name() + ' ' + _greeting);
    if (_arePlacesLoaded)
        return;
    const QString aside = file.fileName() + ".damaged";
    QFile::remove(aside);
    const bool moved = file.rename(aside);
    tell(Severity::Fault, _address.stateFile + ": is damaged and not used" +
                              (moved ? "; it lies in " + aside.toStdString() + " now" : ""));
}

void SeedLinkStream::savePlaces()
{
    _sinceSaved.start();
    // Before the first answer nothing is known.
    if (_address.stateFile.empty() || _greeting.empty())
        return;
    QSaveFile file(fileName(_address.stateFile));
    const std::string text = _places.toText(_address.name() + ' ' + _greeting);
    if (!file.open(QIODevice::WriteOnly) || !writeWhole(file, QByteArray::fromStdString(text)) ||
        !commitWhole(file))
        tellOnce("state", _address.stateFile + ": " + file.errorString().toStdString());
}

} // namespace IO
} // namespace Tellarix
