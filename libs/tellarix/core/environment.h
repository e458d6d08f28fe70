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
 * The configuration and data directories of the user follow the XDG rules.
 */
class TELLARIX_CORE_API Environment
{
public:
    static Environment *Instance();

    /** Installed files, documentation below "doc"; no trailing slash. */
    const char *shareDir() const { return _shareDir.c_str(); }
    /** Configuration files of the system: "etc" below the share directory. */
    const char *systemConfigDir() const { return _systemConfigDir.c_str(); }
    /** Configuration files of the user, "~/.config/tellarix"; it may not exist. */
    const char *configDir() const { return _configDir.c_str(); }
    /** Data files of the user, "~/.local/share/tellarix"; it may not exist. */
    const char *dataDir() const { return _dataDir.c_str(); }

    /** Replaces "@SHAREDIR@", "@CONFIGDIR@", "@DATADIR@" and a leading "~/" in a path. */
    std::string absolutePath(const std::string &path) const;

    /** Reads the environment again; for tests that change it. */
    void refresh();

private:
    Environment();

    std::string _shareDir;
    std::string _systemConfigDir;
    std::string _configDir;
    std::string _dataDir;
};

} // namespace Tellarix
