// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/remote/fdsnservice.h>

#include <mutex>

namespace Tellarix {
namespace Tool {

/** The web service that a command waits for, if any, and whether it was told to stop that. */
class RunningService
{
public:
    /** Makes a service the one that is waited for, as long as it lives. */
    class Guard
    {
    public:
        Guard(RunningService &running, IO::FdsnService &service) : _running(running)
        {
            const std::lock_guard<std::mutex> lock(_running._mutex);
            _running._service = &service;
            if (_running._interrupted)
                service.cancel();
        }
        ~Guard()
        {
            const std::lock_guard<std::mutex> lock(_running._mutex);
            _running._service = nullptr;
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
        if (_service)
            _service->cancel();
    }

private:
    std::mutex _mutex;
    IO::FdsnService *_service{nullptr};
    bool _interrupted{false};
};

} // namespace Tool
} // namespace Tellarix
