// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <tellarix/core/baseobject.h>
#include <tellarix/core/interfacefactory.h>

#include <string>

namespace Norvu {
namespace Gui {

/**
 * A source of authentication, which plug-ins offer under a service name.
 *
 * A host makes one by the name of its service, tells it where to ask, and calls authenticate() with
 * what the user typed. No operation throws.
 */
class NORVU_GUI_API AuthBackend : public Tellarix::Core::BaseObject
{
public:
    ~AuthBackend() override;

    /** Sets where to ask, such as the address of a server or the name of a file; false if it is not
     *  well formed. */
    virtual bool setSource(const std::string &source) = 0;
    /**
     * Asks whether this is the user's password. It may wait for an answer, in any thread.
     * @return false if it is not, if nobody could be asked, or if that was aborted
     */
    virtual bool authenticate(const std::string &userName, const std::string &password) = 0;
    /** Whether a user is signed in. */
    virtual bool isAuthenticated() const = 0;
    /** Why the last operation failed, for the user; empty if it didn't. */
    virtual std::string failure() const = 0;

    /** Makes an authenticate() that waits in another thread return soon; does nothing here. */
    virtual void abortAuthentication();
    /** Signs out: empties what is known of the user. */
    virtual void reset();

protected:
    // What they hold is up to the implementation; reset() empties them.
    std::string _userName;
    std::string _credential;
    std::string _message;
};

} // namespace Gui
} // namespace Norvu

TELLARIX_DECLARE_INTERFACE_POOL(NORVU_GUI_API, Norvu::Gui::AuthBackend)

namespace Norvu {
namespace Gui {

using AuthBackendFactoryInterface = Tellarix::Core::Generic::InterfaceFactoryInterface<AuthBackend>;

} // namespace Gui
} // namespace Norvu
