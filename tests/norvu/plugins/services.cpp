// SPDX-License-Identifier: LGPL-3.0-or-later

// A shared object with a back end and a widget under the service name "test".

#include <norvu/gui/authbackend.h>
#include <norvu/gui/pluginwidget.h>

using namespace Norvu::Gui;
using namespace Tellarix::Core::Generic;

namespace {

/** Lets a user in whose password is the source; tells by its failure() what it knows. */
class TestBackend : public AuthBackend
{
public:
    bool setSource(const std::string &source) override
    {
        _message = source;
        return true;
    }
    bool authenticate(const std::string &userName, const std::string &password) override
    {
        _userName = userName;
        _credential = password;
        return isAuthenticated();
    }
    bool isAuthenticated() const override { return _credential == _message; }
    std::string failure() const override { return _userName + _credential + _message; }
};

class TestWidget : public PluginWidget
{
public:
    QString title() const override { return QStringLiteral("Test"); }
};

const InterfaceFactory<AuthBackend, TestBackend> Backend("test");
const InterfaceFactory<PluginWidget, TestWidget> Widget("test");

} // namespace
