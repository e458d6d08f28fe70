#pragma once

#include <libmseed.h>

#include <mutex>

namespace Tellarix {
namespace Formats {

/** Keeps libmseed from printing: what goes wrong is told by this library's own messages. */
inline void silenceLibmseed()
{
    static std::once_flag once;
    std::call_once(once, [] {
        const auto ignore = [](char *) {};
        ms_loginit(ignore, nullptr, ignore, nullptr);
    });
}

} // namespace Formats
} // namespace Tellarix
