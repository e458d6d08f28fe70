// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/authbackend.h>

namespace Norvu {
namespace Gui {

AuthBackend::~AuthBackend() = default;

void AuthBackend::abortAuthentication()
{}

void AuthBackend::reset()
{
    _userName.clear();
    _credential.clear();
    _message.clear();
}

} // namespace Gui
} // namespace Norvu

TELLARIX_DEFINE_INTERFACE_POOL(NORVU_GUI_API, Norvu::Gui::AuthBackend)
