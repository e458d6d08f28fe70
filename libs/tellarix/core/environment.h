// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>

#include <string>

namespace Tellarix {

/**
 * Folders in which the framework looks for its files.
 *
 * The share directory is, in this order: the environment variable TELLARIX_SHARE_DIR, the folder
 * "share/tellarix" beside the running program's "bin", the folder that was fixed at build time.
 * The configuration and data directories of the user follow the XDG rules. The plug-in directory is
 * "tellarix/plugins" in the folder of libraries beside "bin", or else that of build time.
 */
class TELLARIX_CORE_API Environment
{
public:
    static Environment *Instance();

    /** Installed files, documentation below "doc"; no trailing slash. */
    const char *shareDirectory() const { return _shareDirectory.c_str(); }
    /** Configuration files of the system: "etc" below the share directory. */
    const char *systemConfigurationDirectory() const
    {
        return _systemConfigurationDirectory.c_str();
    }
    /** Configuration files of the user, "~/.config/tellarix"; it may not exist. */
    const char *configurationDirectory() const { return _configurationDirectory.c_str(); }
    /** Data files of the user, "~/.local/share/tellarix"; it may not exist. */
    const char *dataDirectory() const { return _dataDirectory.c_str(); }
    /** Plug-ins that were installed for all users; it may not exist. */
    const char *pluginDirectory() const { return _pluginDirectory.c_str(); }

    /** Reads the environment again; for tests that change it. */
    void refresh();

private:
    Environment();

    std::string _shareDirectory;
    std::string _systemConfigurationDirectory;
    std::string _configurationDirectory;
    std::string _dataDirectory;
    std::string _pluginDirectory;
};

} // namespace Tellarix
