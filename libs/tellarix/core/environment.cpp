// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/environment.h>

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace Tellarix {
namespace {

/** A folder below the one in which the program's "bin" stands, or else that of build time. */
std::string installedDirectory(const QString &relative, const char *installed)
{
    // Not QCoreApplication::applicationDirPath(): the folders are asked for before there is one.
    const QFileInfo program(QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath());
    const QDir beside(program.absolutePath() + QStringLiteral("/../") + relative);
    if (program.exists() && beside.exists())
        return QDir::cleanPath(beside.path()).toStdString();
    return installed;
}

std::string findShareDirectory()
{
    const QString chosen = QFile::decodeName(qgetenv("TELLARIX_SHARE_DIR"));
    if (!chosen.isEmpty())
        return QDir::cleanPath(chosen).toStdString();
    return installedDirectory(QStringLiteral("share/tellarix"), TELLARIX_INSTALL_SHARE_DIR);
}

std::string userDirectory(QStandardPaths::StandardLocation location)
{
    return (QStandardPaths::writableLocation(location) + QStringLiteral("/tellarix")).toStdString();
}

} // namespace

Environment::Environment()
{
    refresh();
}

Environment *Environment::Instance()
{
    static Environment instance;
    return &instance;
}

void Environment::refresh()
{
    _shareDirectory = findShareDirectory();
    _systemConfigurationDirectory = _shareDirectory + "/etc";
    _configurationDirectory = userDirectory(QStandardPaths::GenericConfigLocation);
    _dataDirectory = userDirectory(QStandardPaths::GenericDataLocation);
    _pluginDirectory = installedDirectory(QStringLiteral(TELLARIX_RELATIVE_PLUGIN_DIR),
                                          TELLARIX_INSTALL_PLUGIN_DIR);
}

} // namespace Tellarix
