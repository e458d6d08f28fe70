// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <csignal>

#include <sys/resource.h>

/** Lets no file of the process grow beyond a size, as on a disk that is full, as long as it lives.
 */
class FullDisk
{
public:
    explicit FullDisk(unsigned bytes) : _handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &_before);
        rlimit limit = _before;
        limit.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &_before);
        std::signal(SIGXFSZ, _handler);
    }

    FullDisk(const FullDisk &) = delete;
    FullDisk &operator=(const FullDisk &) = delete;

private:
    void (*_handler)(int);
    rlimit _before{};
};
