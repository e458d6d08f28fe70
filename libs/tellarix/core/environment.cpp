// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/environment.h>

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace Tellarix {
namespace {

std::string findShareDir()
{
    const QString chosen = QFile::decodeName(qgetenv("TELLARIX_SHARE_DIR"));
    if (!chosen.isEmpty())
        return QDir::cleanPath(chosen).toStdString();

    // Not QCoreApplication::applicationDirPath(): the folders are asked for before there is one.
    const QFileInfo program(QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath());
    const QDir beside(program.absolutePath() + QStringLiteral("/../share/tellarix"));
    if (program.exists() && beside.exists())
        return QDir::cleanPath(beside.path()).toStdString();

    return TELLARIX_INSTALL_SHARE_DIR;
}

std::string userDir(QStandardPaths::StandardLocation location)
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

std::string Environment::absolutePath(const std::string &path) const
{
    QString result = QString::fromStdString(path);
    if (result.startsWith(QLatin1String("~/")))
        result.replace(0, 1, QDir::homePath());
    result.replace(QLatin1String("@SHAREDIR@"), QString::fromStdString(_shareDir));
    result.replace(QLatin1String("@CONFIGDIR@"), QString::fromStdString(_configDir));
    result.replace(QLatin1String("@DATADIR@"), QString::fromStdString(_dataDir));
    return result.toStdString();
}

void Environment::refresh()
{
    _shareDir = findShareDir();
    _systemConfigDir = _shareDir + "/etc";
    _configDir = userDir(QStandardPaths::GenericConfigLocation);
    _dataDir = userDir(QStandardPaths::GenericDataLocation);
}

} // namespace Tellarix
