// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/serveroutage_p.h>

#include <tellarix/core/strings.h>

#include <QDateTime>

#include <algorithm>
#include <cmath>

namespace Tellarix {
namespace IO {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds MaxAskedPause{600000};
constexpr double LongestSetting = 1E7;
// The first pause passes without a word: servers stumble.
constexpr int PausesBeforeTelling = 2;

milliseconds inMilliseconds(double seconds)
{
    return milliseconds(static_cast<int64_t>(seconds * 1000));
}

bool isAway(const HttpAnswer &answer)
{
    if (answer.status == 0)
        return answer.failure == HttpFailure::Unreachable ||
               answer.failure == HttpFailure::TimedOut;
    return answer.status == 429 || answer.status == 502 || answer.status == 503;
}

} // namespace

bool OutageSettings::read(const QString &name, const QString &text)
{
    double number = 0;
    if (!Core::fromString(number, text.toStdString()) || !(number >= 0 && number <= LongestSetting))
        return false;
    double *const setting = name == "pause"           ? &pause
                            : name == "longest-pause" ? &longestPause
                            : name == "patience"      ? &patience
                                                      : nullptr;
    if (setting)
        *setting = number;
    return setting != nullptr;
}

milliseconds askedPause(const QByteArray &header)
{
    bool isNumber = false;
    const qlonglong seconds = header.toLongLong(&isNumber);
    if (isNumber)
        return std::clamp(milliseconds(std::min<qlonglong>(seconds, 3600) * 1000), milliseconds(0),
                          MaxAskedPause);
    // Other forms would be read by way of the local time, whose zone all threads share.
    const QString date = QString::fromLatin1(header).replace(" GMT", " +0000");
    const QDateTime time = QDateTime::fromString(date, Qt::RFC2822Date);
    if (!time.isValid())
        return milliseconds(-1);
    return std::clamp(milliseconds(QDateTime::currentDateTimeUtc().msecsTo(time)), milliseconds(0),
                      MaxAskedPause);
}

void ServerOutage::open(const std::string &server, Tell tell)
{
    const std::lock_guard<std::mutex> lock(_mutex);
    _server = server;
    _tell = std::move(tell);
    _isClosed = false;
    _resumption = {};
    _answers = 0;
    _pauses = 0;
}

void ServerOutage::close()
{
    const std::lock_guard<std::mutex> lock(_mutex);
    _isClosed = true;
    _changed.notify_all();
}

bool ServerOutage::isClosed() const
{
    const std::lock_guard<std::mutex> lock(_mutex);
    return _isClosed;
}

bool ServerOutage::waitForTurn()
{
    std::unique_lock<std::mutex> lock(_mutex);
    // Another thread may be told to wait even longer meanwhile.
    while (!_isClosed && Clock::now() < _resumption) {
        const auto until = _resumption;
        _changed.wait_until(lock, until);
    }
    return !_isClosed;
}

void ServerOutage::pause(milliseconds length)
{
    const std::lock_guard<std::mutex> lock(_mutex);
    _resumption = std::max(_resumption, Clock::now() + length);
}

ServerOutage::Turn ServerOutage::begin() const
{
    const std::lock_guard<std::mutex> lock(_mutex);
    return {Clock::now(), _answers};
}

ServerOutage::Verdict ServerOutage::judge(const Turn &turn, const HttpAnswer &answer)
{
    if (isAway(answer))
        return noteFailure(turn, answer);
    if (answer.status != 0)
        noteAnswer();
    return Verdict::Fault;
}

void ServerOutage::noteAnswer()
{
    std::unique_lock<std::mutex> lock(_mutex);
    ++_answers;
    const bool isTold = _pauses >= PausesBeforeTelling;
    _pauses = 0;
    if (!isTold)
        return;
    const auto length = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - _since);
    const Tell tell = _tell;
    lock.unlock();
    tell("is there again after " + std::to_string(length.count()) + " s");
}

ServerOutage::Verdict ServerOutage::noteFailure(const Turn &turn, const HttpAnswer &answer)
{
    std::unique_lock<std::mutex> lock(_mutex);
    if (_answers == 0 || turn.answers != _answers)
        return Verdict::Fault;
    const auto now = Clock::now();
    if (_pauses == 0)
        _since = now;
    else if (now - _since >= inMilliseconds(_settings.patience))
        return Verdict::GiveUp;
    // Those who asked before that pause wait along.
    if (_pauses > 0 && turn.begin < _paused)
        return Verdict::Wait;

    const double seconds = _settings.pause * std::exp2(std::min(_pauses, 30));
    const milliseconds asked = askedPause(answer.header("Retry-After"));
    _resumption = std::max(_resumption,
                           now + (asked.count() >= 0
                                      ? asked
                                      : inMilliseconds(std::min(seconds, _settings.longestPause))));
    _paused = now;
    _cause = (answer.status == 0 ? answer.cause : answer.statusText()).toStdString();
    if (++_pauses != PausesBeforeTelling)
        return Verdict::Wait;
    const Tell tell = _tell;
    const std::string text = _cause + "; waiting for the server";
    lock.unlock();
    tell(text);
    return Verdict::Wait;
}

std::string ServerOutage::givenUpText() const
{
    return "has been away for " + std::to_string(std::lround(_settings.patience)) + " s; given up";
}

std::string ServerOutage::text() const
{
    const std::lock_guard<std::mutex> lock(_mutex);
    return _pauses >= PausesBeforeTelling ? _server + ": " + _cause : std::string();
}

} // namespace IO
} // namespace Tellarix
