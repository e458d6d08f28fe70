// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/plugins.h>

#include <tellarix/client/plugin.h>

#include <QCoreApplication>
#include <QDir>
#include <QJsonArray>
#include <QJsonObject>
#include <QPluginLoader>

#include <algorithm>
#include <exception>
#include <string_view>

#define TEXT_OF_VALUE(value) #value
#define TEXT_OF(macro) TEXT_OF_VALUE(macro)

namespace Tellarix {
namespace Client {

namespace {

constexpr auto InterfaceVersion =
    TEXT_OF(TELLARIX_VERSION_MAJOR) "." TEXT_OF(TELLARIX_VERSION_MINOR);
static_assert(
    std::string_view(TELLARIX_PLUGIN_INTERFACE) ==
        "tellarix.Plugin/" TEXT_OF(TELLARIX_VERSION_MAJOR) "." TEXT_OF(TELLARIX_VERSION_MINOR),
    "the header plugin.h has another version than the framework");

QString tr(const char *text)
{
    return QCoreApplication::translate("Tellarix::Client::Plugins", text);
}

/** Why a shared object of this interface can't be one of ours; empty if it can. */
QString interfaceProblem(const QString &interface)
{
    const QString ours = QStringLiteral(TELLARIX_PLUGIN_INTERFACE);
    const int slash = ours.indexOf('/');
    if (interface == ours)
        return QString();
    if (interface.left(slash + 1) != ours.left(slash + 1))
        return tr("is a plug-in of something else, \"%1\"").arg(interface);
    return tr("is made for version %1 of the framework, and this is %2")
        .arg(interface.mid(slash + 1), QString::fromLatin1(InterfaceVersion));
}

/** Runs the code of a plug-in: its object, or null with the reason why it can't be used. */
std::unique_ptr<QObject> setUp(QPluginLoader &loader, QString *reason)
{
    std::unique_ptr<QObject> object;
    try {
        object.reset(loader.instance());
        auto *plugin = qobject_cast<Plugin *>(object.get());
        if (plugin && plugin->init(reason)) {
            reason->clear(); // some write one first, in case that they fail
            return object;
        }
        if (!object)
            *reason = loader.errorString();
        else if (!plugin)
            *reason = tr("does not implement the interface that it names");
        else if (reason->isEmpty())
            *reason = tr("can't be used, and gives no reason");
    } catch (const std::exception &exception) {
        *reason = tr("failed when it was set up: %1").arg(QString::fromUtf8(exception.what()));
    } catch (...) {
        *reason = tr("failed when it was set up");
    }
    return nullptr;
}

} // namespace

Plugin::~Plugin() = default;

bool Plugin::init(QString *)
{
    return true;
}

Plugins::Plugins() = default;

Plugins::~Plugins()
{
    clear();
}

void Plugins::clear()
{
    while (!_objects.empty())
        _objects.pop_back();
    _loaded.clear();
    _problems.clear();
}

void Plugins::loadFolder(const QString &folder, const QString &program)
{
    const QDir directory(folder);
    // An empty name, left by a variable that is not set, would stand for the working directory.
    if (folder.isEmpty() || !directory.exists()) {
        addProblem(folder.isEmpty() ? QStringLiteral("\"\"") : folder,
                   tr("there is no such folder of plug-ins"));
        return;
    }
    if (!directory.isReadable()) {
        addProblem(folder, tr("the folder can't be read"));
        return;
    }
    for (const QString &name :
         directory.entryList({QStringLiteral("*.so")}, QDir::Files | QDir::System, QDir::Name))
        loadFile(directory.absoluteFilePath(name), program);
}

void Plugins::loadFile(const QString &fileName, const QString &program)
{
    QPluginLoader loader;
    loader.setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
    loader.setFileName(fileName);
    const QJsonObject metaData = loader.metaData();
    const QString problem =
        metaData.isEmpty() ? loader.errorString()
                           : interfaceProblem(metaData.value(QStringLiteral("IID")).toString());
    if (!problem.isEmpty()) {
        addProblem(fileName, problem);
        return;
    }

    const QJsonObject own = metaData.value(QStringLiteral("MetaData")).toObject();
    const QJsonValue named = own.value(QStringLiteral("programs"));
    if (!named.isUndefined() && !named.isArray()) {
        addProblem(fileName, tr("\"programs\" in its meta data is no list"));
        return;
    }
    const QJsonArray programs = named.toArray();
    if (programs.isEmpty() || programs.contains(program))
        load(loader, {own.value(QStringLiteral("name")).toString(),
                      own.value(QStringLiteral("version")).toString(), fileName});
}

void Plugins::load(QPluginLoader &loader, const LoadedPlugin &plugin)
{
    const QString file = QFileInfo(plugin.fileName).canonicalFilePath();
    const auto hasName = [&](const LoadedPlugin &other) { return other.name == plugin.name; };
    const auto same = std::find_if(_loaded.cbegin(), _loaded.cend(), hasName);
    QString problem;
    if (plugin.name.isEmpty() || plugin.version.isEmpty())
        problem = tr("its meta data have no \"name\" or no \"version\"");
    else if (same != _loaded.cend() && QFileInfo(same->fileName).canonicalFilePath() == file)
        return; // by another way to the same folder
    else if (same != _loaded.cend())
        problem = tr("\"%1\" is loaded from %2 already").arg(plugin.name, same->fileName);
    else if (std::unique_ptr<QObject> object = setUp(loader, &problem)) {
        _objects.push_back(std::move(object));
        _loaded.append(plugin);
    }
    if (!problem.isEmpty())
        addProblem(plugin.fileName, problem);
}

void Plugins::addProblem(const QString &fileName, const QString &cause)
{
    _problems.append(QStringLiteral("%1: %2").arg(fileName, cause));
}

} // namespace Client
} // namespace Tellarix
