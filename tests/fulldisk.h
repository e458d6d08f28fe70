// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <csignal>

#include <sys/resource.h>

/** While it lives, files can't grow beyond a size, like on a full disk. */
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &_before);
        const rlimit limit{bytes, _before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &_before); }

    FullDisk(const FullDisk &) = delete;
    FullDisk &operator=(const FullDisk &) = delete;

private:
    rlimit _before;
};
