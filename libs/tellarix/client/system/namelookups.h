// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>

namespace Tellarix {
namespace System {

/**
 * Names that are being looked up when nobody waits for them any more.
 *
 * A look-up can't be ended, and where no server of names answers it takes half a minute. Qt waits
 * for it when the program ends: one that has left any is ended without, when all of its own has
 * been let go of.
 */
class TELLARIX_CLIENT_API NameLookups
{
public:
    /** The name of a host is still being looked up, and of no interest. */
    static void Abandon();
    /** The program is about to end with @p status; before that it waits as Qt does. */
    static void SetExitStatus(int status);
};

} // namespace System
} // namespace Tellarix
