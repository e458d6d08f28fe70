// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>

#include <QObject>

/**
 * What every plug-in says it is, with the version of the framework that it was built for. It stands
 * in the meta data of the shared object, so that one of another version is refused before any of
 * its code is run.
 */
#define TELLARIX_PLUGIN_INTERFACE "tellarix.Plugin/5.0"

namespace Tellarix {
namespace Client {

/**
 * What a plug-in is made of: one QObject in a shared object, whose meta data name it.
 *
 * @code
 * class MyPlugin : public QObject, public Tellarix::Client::Plugin
 * {
 *     Q_OBJECT
 *     Q_PLUGIN_METADATA(IID TELLARIX_PLUGIN_INTERFACE FILE "myplugin.json")
 *     Q_INTERFACES(Tellarix::Client::Plugin)
 *
 * public:
 *     bool init(QString *reason) override;
 * };
 * @endcode
 *
 * "myplugin.json" has the texts "name" and "version", and where the plug-in is not for every
 * program, the list "programs" of those that load it.
 *
 * It offers what it has by members or in init(): an object that registers something as long as it
 * lives is best a member, so that a plug-in that fails leaves nothing behind. The application makes
 * it before there are windows, and deletes it when it is done; its code stays loaded until the
 * process ends. Nothing may be thrown by static objects, which nobody could catch.
 */
class TELLARIX_CLIENT_API Plugin
{
public:
    virtual ~Plugin();

    /** Called once, behind the configuration.
     *  @return false, with the reason for the user, if the plug-in can't be used; it is deleted
     *          then, as it is if this or its constructor throws */
    virtual bool init(QString *reason);
};

} // namespace Client
} // namespace Tellarix

Q_DECLARE_INTERFACE(Tellarix::Client::Plugin, TELLARIX_PLUGIN_INTERFACE)
