// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <functional>
#include <mutex>
#include <utility>

namespace Tellarix {
namespace Tool {

/** The server that a command waits for, if any, and whether it was told to stop that. */
class RunningService
{
public:
    /** Makes a server the one that is waited for, as long as it lives. */
    class Guard
    {
    public:
        /** @param cancel  ends the wait, also one that is still to come; any thread calls it */
        Guard(RunningService &running, std::function<void()> cancel) : _running(running)
        {
            const std::lock_guard<std::mutex> lock(_running._mutex);
            _running._cancel = std::move(cancel);
            if (_running._interrupted)
                _running._cancel();
        }
        ~Guard()
        {
            const std::lock_guard<std::mutex> lock(_running._mutex);
            _running._cancel = nullptr;
        }
        Guard(const Guard &) = delete;
        Guard &operator=(const Guard &) = delete;

    private:
        RunningService &_running;
    };

    /** Called from another thread. */
    void interrupt()
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        _interrupted = true;
        if (_cancel)
            _cancel();
    }

private:
    std::mutex _mutex;
    std::function<void()> _cancel;
    bool _interrupted{false};
};

} // namespace Tool
} // namespace Tellarix
