// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

/** Counts what may be taken. The thread sanitizer sees through it, as it does not through Qt's. */
class Semaphore
{
public:
    void release(int n = 1)
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        _available += n;
        _released.notify_all();
    }

    void acquire(int n = 1)
    {
        std::unique_lock<std::mutex> lock(_mutex);
        _released.wait(lock, [&] { return _available >= n; });
        _available -= n;
    }

    /** False if there are not that many within @p milliseconds. */
    bool tryAcquire(int n, int milliseconds)
    {
        std::unique_lock<std::mutex> lock(_mutex);
        if (!_released.wait_for(lock, std::chrono::milliseconds(milliseconds),
                                [&] { return _available >= n; }))
            return false;
        _available -= n;
        return true;
    }

    int available() const
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        return _available;
    }

private:
    mutable std::mutex _mutex;
    std::condition_variable _released;
    int _available{0};
};
