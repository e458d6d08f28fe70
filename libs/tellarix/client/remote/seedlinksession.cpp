// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/seedlinksession.h>

#include <QDeadlineTimer>
#include <QString>

#include <algorithm>

namespace Tellarix {
namespace IO {

namespace {

constexpr double LongestConnect = 30;
const char *const LineEnd = "\r\n";

} // namespace

SeedLinkSession::Outcome SeedLinkSession::open()
{
    _packetSize = 0;
    _greeting.clear();
    _cause.clear();
    const double seconds = std::min(_address.timeout, LongestConnect);
    const Connection::Outcome outcome =
        _connection.open(_address.host, _address.port, static_cast<int>(seconds * 1000));
    if (outcome == Connection::Outcome::TimedOut)
        return fail("no connection within " + std::to_string(static_cast<int>(seconds)) + " s");
    if (outcome != Connection::Outcome::Done)
        return fail(outcome);

    SeedLinkReply software;
    SeedLinkReply site;
    if (!send("HELLO") || reply(software) != Outcome::Done)
        return Outcome::Failed;
    if (software.kind != SeedLinkReply::Kind::Text || software.text.compare(0, 5, "HTTP/") == 0)
        return fail("\"" + software.text + "\" is no greeting of a SeedLink server");
    if (reply(site) != Outcome::Done)
        return Outcome::Failed;
    _greeting = software.text + " / " + site.text;
    return Outcome::Done;
}

SeedLinkSession::Outcome SeedLinkSession::command(const std::string &line)
{
    SeedLinkReply answer;
    if (!send(line) || reply(answer) != Outcome::Done)
        return Outcome::Failed;
    if (answer.kind == SeedLinkReply::Kind::Ok)
        return Outcome::Done;
    _cause = answer.text;
    if (answer.kind == SeedLinkReply::Kind::Error)
        return Outcome::Refused;
    return fail("\"" + answer.text + "\" is no reply to " + line.substr(0, line.find(' ')));
}

bool SeedLinkSession::send(const std::string &lines)
{
    const Connection::Outcome outcome = _connection.write(lines + LineEnd, timeoutMSecs());
    return outcome == Connection::Outcome::Done || fail(outcome) == Outcome::Done;
}

SeedLinkSession::Outcome SeedLinkSession::request(const SeedLinkBlock &block,
                                                  const std::string &start)
{
    Outcome outcome = command("STATION " + block.station + ' ' + block.network);
    if (outcome != Outcome::Done)
        return outcome;

    // In one write, since each turn takes the way there and back.
    std::string lines;
    for (const std::string &selector : block.selectors)
        lines += "SELECT " + selector + LineEnd;
    if (!send(lines + start))
        return Outcome::Failed;
    std::string refusal;
    for (size_t i = 0; i <= block.selectors.size(); ++i) {
        const bool isStart = i == block.selectors.size();
        SeedLinkReply answer;
        if (reply(answer) != Outcome::Done)
            return Outcome::Failed;
        if (answer.kind == SeedLinkReply::Kind::Error)
            refusal = (isStart ? start : block.selectors[i]) + " is refused" +
                      (answer.text.empty() ? "" : ": " + answer.text);
        else if (answer.kind != SeedLinkReply::Kind::Ok)
            return fail("\"" + answer.text + "\" is no reply to a request");
    }
    _cause = refusal;
    return refusal.empty() ? Outcome::Done : Outcome::Refused;
}

SeedLinkSession::Outcome SeedLinkSession::next(SeedLinkPacket &packet, int msecs)
{
    if (_packetSize > 0)
        _connection.consume(_packetSize);
    _packetSize = 0;
    // A packet that comes byte by byte is late, too.
    const QDeadlineTimer deadline(msecs);
    for (;;) {
        packet = parseSeedLinkPacket(_connection.bytes(), _lastLength);
        if (packet.kind == SeedLinkPacket::Kind::Lost)
            return fail(packet.cause);
        if (packet.kind != SeedLinkPacket::Kind::NeedsBytes)
            break;
        const Connection::Outcome outcome =
            _connection.read(static_cast<int>(deadline.remainingTime()));
        if (outcome == Connection::Outcome::TimedOut)
            return Outcome::TimedOut;
        if (outcome != Connection::Outcome::Done)
            return fail(outcome);
    }
    if (packet.kind == SeedLinkPacket::Kind::Record)
        _lastLength = packet.record.size();
    _packetSize = packet.size;
    return Outcome::Done;
}

SeedLinkSession::Outcome SeedLinkSession::readInfo(std::string &text, bool &isLast)
{
    SeedLinkPacket packet;
    const Outcome outcome = next(packet, timeoutMSecs());
    if (outcome == Outcome::TimedOut)
        return fail(Connection::Outcome::TimedOut);
    if (outcome != Outcome::Done)
        return outcome;
    if (packet.kind == SeedLinkPacket::Kind::Error || packet.isRefused) {
        _cause = "the server gives no such list";
        return Outcome::Refused;
    }
    if (packet.kind != SeedLinkPacket::Kind::Info)
        return fail("the server answers a question for a list by something else");
    text.assign(packet.text);
    isLast = packet.isLast;
    return Outcome::Done;
}

/** Waits for a line; Done or Failed. */
SeedLinkSession::Outcome SeedLinkSession::reply(SeedLinkReply &reply)
{
    if (_packetSize > 0)
        _connection.consume(_packetSize);
    _packetSize = 0;
    // A line that comes byte by byte is late, too.
    const QDeadlineTimer deadline(timeoutMSecs());
    for (;;) {
        reply = parseSeedLinkReply(_connection.bytes());
        if (reply.kind == SeedLinkReply::Kind::TooLong)
            return fail("a line without an end");
        if (reply.kind != SeedLinkReply::Kind::NeedsBytes)
            break;
        const Connection::Outcome outcome =
            _connection.read(static_cast<int>(deadline.remainingTime()));
        if (outcome != Connection::Outcome::Done)
            return fail(outcome);
    }
    _connection.consume(reply.size);
    return Outcome::Done;
}

SeedLinkSession::Outcome SeedLinkSession::fail(const std::string &cause)
{
    _cause = cause;
    return Outcome::Failed;
}

SeedLinkSession::Outcome SeedLinkSession::fail(Connection::Outcome outcome)
{
    if (outcome == Connection::Outcome::Ended)
        return fail("closed");
    if (outcome == Connection::Outcome::TimedOut)
        return fail("no answer within " + QString::number(_address.timeout).toStdString() + " s");
    return fail(_connection.error());
}

int SeedLinkSession::timeoutMSecs() const
{
    return static_cast<int>(_address.timeout * 1000);
}

} // namespace IO
} // namespace Tellarix
