// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>
#include <vector>

class QPluginLoader;

namespace Tellarix {
namespace Client {

/** A plug-in that was loaded. */
struct LoadedPlugin
{
    QString name;
    QString version;
    QString fileName;
};

/**
 * Loads plug-ins and keeps their objects, and tells which could not be loaded and why. See Plugin
 * for what one is. Their code stays loaded until the process ends.
 */
class TELLARIX_CLIENT_API Plugins
{
public:
    Plugins();
    ~Plugins();
    Plugins(const Plugins &) = delete;
    Plugins &operator=(const Plugins &) = delete;

    /**
     * Loads the files "*.so" of a folder, in the order of their names. Those that name programs,
     * but not @p program, are passed over.
     */
    void loadFolder(const QString &folder, const QString &program);

    /** Deletes the objects of the plug-ins, the last one first, and forgets them. */
    void clear();

    /** In the order in which they were loaded. */
    const QVector<LoadedPlugin> &loaded() const { return _loaded; }
    /** One line "FILE: CAUSE" for each file or folder that is left out. */
    const QStringList &problems() const { return _problems; }

private:
    void loadFile(const QString &fileName, const QString &program);
    void load(QPluginLoader &loader, const LoadedPlugin &plugin);
    void addProblem(const QString &fileName, const QString &cause);

    QVector<LoadedPlugin> _loaded;
    std::vector<std::unique_ptr<QObject>> _objects; /**< of the loaded ones */
    QStringList _problems;
};

} // namespace Client
} // namespace Tellarix
