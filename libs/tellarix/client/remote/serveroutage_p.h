// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/remote/httpclient.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>

namespace Tellarix {
namespace IO {

/** How a server that is away is waited for, in seconds. */
struct OutageSettings
{
    double pause{2}; /**< before the second try; doubled for each further one */
    double longestPause{60};
    double patience{4 * 3600}; /**< from the first failure on; then it is given up */

    /** Sets the one that is named "pause", "longest-pause" or "patience"; false if it is none of
     *  them, or @p text no number for it. */
    bool read(const QString &name, const QString &text);
};

/** How long a server wants to be left alone by its header Retry-After; negative if it doesn't say.
 */
std::chrono::milliseconds askedPause(const QByteArray &header);

/**
 * Has those who ask one server side by side wait for it together while it is away.
 *
 * It is away if it can't be reached, keeps silent or says that it is overloaded, and nobody else
 * has got an answer meanwhile: else the fault lies in what was asked. A server that has never
 * answered isn't waited for, since the address may as well be wrong.
 */
class ServerOutage
{
public:
    using Clock = std::chrono::steady_clock;
    using Milliseconds = std::chrono::milliseconds;
    using Tell = std::function<void(const std::string &text)>;

    enum class Verdict
    {
        Fault,  /**< it is there, or has never been */
        Wait,   /**< ask again after waitForTurn() */
        GiveUp, /**< it has been away for too long */
    };
    /** When a request was begun. */
    struct Turn
    {
        Clock::time_point begin;
        int64_t answers{0};
    };

    /** Between close() and open(). */
    void setSettings(const OutageSettings &settings) { _settings = settings; }
    /** @param tell  gets a line when it has been waited for in vain, and one when the server is
     *               back; called by those who ask, without a lock */
    void open(const std::string &server, Tell tell);
    /** Ends all waiting, up to the next open(). */
    void close();
    bool isClosed() const;

    /** Waits until the server wants to be asked; false after close(). */
    bool waitForTurn();
    /** Nobody asks for so long. */
    void pause(Milliseconds length);

    Turn begin() const;
    /** What a request has come to; its body doesn't count. */
    Verdict judge(const Turn &turn, const HttpAnswer &answer);

    /** Why nothing more is asked after GiveUp. */
    std::string givenUpText() const;
    /** Whom it waits for and why; empty if it doesn't. */
    std::string text() const;

private:
    void noteAnswer();
    Verdict noteFailure(const Turn &turn, const HttpAnswer &answer);

    mutable std::mutex _mutex;
    std::condition_variable _changed;
    std::string _server;
    OutageSettings _settings;
    Tell _tell;
    bool _isClosed{false};
    Clock::time_point _resumption;
    int64_t _answers{0};
    int _pauses{0};            /**< since it is away */
    Clock::time_point _since;  /**< it is away */
    Clock::time_point _paused; /**< when the last pause began */
    std::string _cause;
};

} // namespace IO
} // namespace Tellarix
