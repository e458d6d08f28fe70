// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/system/namelookups.h>

#include <QCoreApplication>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>

namespace Tellarix {
namespace System {

namespace {

constexpr int NoStatus = -1;

std::atomic<int> exitStatus{NoStatus};

/** Called at the end of the program, before Qt waits. */
void exitNow()
{
    if (exitStatus == NoStatus)
        return;
    std::fflush(nullptr);
    std::_Exit(exitStatus);
}

} // namespace

void NameLookups::Abandon()
{
    static std::once_flag once;
    std::call_once(once, [] { qAddPostRoutine(exitNow); });
}

void NameLookups::SetExitStatus(int status)
{
    exitStatus = status;
}

} // namespace System
} // namespace Tellarix
