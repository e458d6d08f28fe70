// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/application.h>

#include <tellarix/client/remote/cachefolder.h>
#include <tellarix/core/environment.h>
#include <tellarix/core/version.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

#include <cstdio>

namespace Tellarix {
namespace Client {

namespace {

constexpr int UsageStatus = 2;

const auto HelpOption = QStringLiteral("help");
const auto VersionOption = QStringLiteral("version");
const auto ConfigFileOption = QStringLiteral("config-file");
const auto RecordStreamOption = QStringLiteral("record-stream");
const auto DatabaseOption = QStringLiteral("database");
const auto DebugOption = QStringLiteral("debug");
const auto PluginFolderOption = QStringLiteral("plugin-folder");
const auto NoPluginsOption = QStringLiteral("no-plugins");
const auto ListPluginsOption = QStringLiteral("list-plugins");

const auto RecordStreamKey = QStringLiteral("recordstream/url");
const auto DatabaseKey = QStringLiteral("database/url");
const auto PluginFoldersKey = QStringLiteral("plugins/folders");
constexpr auto PluginPathVariable = "TELLARIX_PLUGIN_PATH";

QString tr(const char *text)
{
    return QCoreApplication::translate("Tellarix::Client::Application", text);
}

void print(std::FILE *file, const QString &text)
{
    std::fputs(text.toLocal8Bit().constData(), file);
    std::fflush(file);
}

QStringList toStringList(const std::vector<std::string> &arguments)
{
    QStringList result;
    for (const std::string &argument : arguments)
        result.append(QString::fromLocal8Bit(argument.c_str()));
    return result;
}

} // namespace

Application::Application(int &argc, char **argv)
    : System::Application(argc, argv),
      _helpCommand(QString::fromStdString(name()) + QStringLiteral(" --help")),
      _version(Core::CurrentVersion.toString()), _frameworkVersion(_version)
{}

Application::~Application() = default;

Application *Application::Instance()
{
    return dynamic_cast<Application *>(System::Application::Instance());
}

std::string Application::recordStreamURL() const
{
    return _configuration.string(RecordStreamKey).toStdString();
}

std::string Application::databaseURL() const
{
    return _configuration.string(DatabaseKey).toStdString();
}

bool Application::init()
{
    setInitializationStage(CommandLine);
    if (!System::Application::init())
        return false;
    createCommandLineDescription();
    if (!parseCommandLine())
        return false;

    setInitializationStage(ConfigurationFiles);
    showMessage(qUtf8Printable(tr("Reading configuration")));
    if (!initConfiguration() || !initPlugins())
        return false;

    setInitializationStage(Parameters);
    if (!validateParameters())
        return false;

    setInitializationStage(Subscriptions);
    return initSubscriptions();
}

void Application::done()
{
    _plugins.clear();
    System::Application::done();
}

void Application::createCommandLineDescription()
{
    _commandLine.addOptions({
        {{QStringLiteral("h"), HelpOption}, tr("Show this help and end.")},
        {{QStringLiteral("v"), VersionOption}, tr("Show the version and end.")},
        {ConfigFileOption,
         tr("Read settings from FILE, on top of the usual files. May be repeated."), tr("FILE")},
        {DebugOption, tr("Write debug messages to the log.")},
        {PluginFolderOption, tr("Load plug-ins from DIR too. May be repeated."), tr("DIR")},
        {NoPluginsOption, tr("Load no plug-ins.")},
        {ListPluginsOption, tr("List the plug-ins and end.")},
    });
    if (_offersRecordStream) {
        _commandLine.addOption(
            {{QStringLiteral("I"), RecordStreamOption}, tr("Read records from URL."), tr("URL")});
    }
    if (_offersDatabase) {
        _commandLine.addOption({{QStringLiteral("d"), DatabaseOption},
                                tr("Use the event database at URL."),
                                tr("URL")});
    }
}

bool Application::initConfiguration()
{
    QString error;
    for (const QString &fileName : configurationFiles()) {
        if (QFileInfo::exists(fileName) && !_configuration.readFile(fileName, &error))
            return failure(error);
    }
    for (const QString &fileName : _commandLine.values(ConfigFileOption)) {
        if (!_configuration.readFile(fileName, &error))
            return failure(error);
    }
    return checkSchemas() && initCache();
}

bool Application::validateParameters()
{
    return System::Application::validateParameters();
}

void Application::handleInitializationError(int stage)
{
    setReturnCode(stage == CommandLine || stage == Parameters ? UsageStatus : 1);
}

bool Application::usageError(const QString &reason)
{
    failure(reason);
    print(stderr, tr("See \"%1\".\n").arg(_helpCommand));
    setReturnCode(UsageStatus);
    return false;
}

bool Application::failure(const QString &reason) const
{
    print(stderr, QStringLiteral("%1: %2\n").arg(QString::fromStdString(name()), reason));
    return false;
}

QStringList Application::configurationFiles() const
{
    const Environment *environment = Environment::Instance();
    const QString ownFile = QString::fromStdString(name()) + QStringLiteral(".ini");

    QStringList files;
    for (const char *folder :
         {environment->systemConfigurationDirectory(), environment->configurationDirectory()}) {
        for (const QString &file : {QStringLiteral("tellarix.ini"), ownFile})
            files.append(QString::fromLocal8Bit(folder) + QLatin1Char('/') + file);
    }
    files.removeDuplicates();
    return files;
}

bool Application::checkSchemas()
{
    std::vector<std::string> names;
    schemaValidationNames(names);
    for (const std::string &schemaName : names) {
        const std::string fileName =
            Environment::Instance()->shareDirectory() + ("/schemas/" + schemaName + ".ini");
        Configuration schema;
        QString error;
        if (!schema.readFile(QString::fromStdString(fileName), &error) ||
            !_configuration.conformsTo(schema, &error))
            return failure(error);
    }
    return true;
}

/** Hands on where and how long records of remote sources are kept. */
bool Application::initCache()
{
    IO::CacheSettings settings;
    const std::pair<const char *, double *> numbers[] = {
        {"cache/size", &settings.mostMB},
        {"cache/age", &settings.ageDays},
        {"cache/empty", &settings.emptyHours},
        {"cache/late", &settings.lateMinutes},
    };
    for (const auto &[name, value] : numbers) {
        const QString key = QString::fromLatin1(name);
        if (_configuration.contains(key) && (!_configuration.number(key, *value) || !(*value >= 0)))
            return failure(tr("%1: \"%2\" is no number of 0 or more (%3)")
                               .arg(key, _configuration.string(key), _configuration.origin(key)));
    }
    const QString folder = _configuration.string(QStringLiteral("cache/folder"));
    if (!folder.isEmpty())
        settings.folder = folder;
    IO::CacheSettings::SetDefaults(settings);
    return true;
}

bool Application::initPlugins()
{
    if (!_commandLine.isSet(NoPluginsOption)) {
        for (const QString &folder : pluginFolders())
            _plugins.loadFolder(folder, QString::fromStdString(name()));
    }
    for (const QString &problem : _plugins.problems())
        showWarning(qUtf8Printable(problem));

    if (!_commandLine.isSet(ListPluginsOption))
        return true;
    for (const LoadedPlugin &plugin : _plugins.loaded())
        print(stdout,
              QStringLiteral("%1 %2 %3\n").arg(plugin.name, plugin.version, plugin.fileName));
    endEarly(0);
    return false;
}

QStringList Application::pluginFolders() const
{
    QStringList folders = _commandLine.values(PluginFolderOption);
    folders += _configuration.strings(PluginFoldersKey);
    folders += QFile::decodeName(qgetenv(PluginPathVariable)).split(':', Qt::SkipEmptyParts);
    const QString common = QFile::decodeName(Environment::Instance()->pluginDirectory());
    if (QFileInfo::exists(common))
        folders += common;
    folders.removeDuplicates();
    return folders;
}

bool Application::parseCommandLine()
{
    readArguments();
    const bool parsed = _commandLine.parse(toStringList(arguments()));
    // Help is what a user needs whose other options are wrong.
    if (_commandLine.isSet(HelpOption)) {
        print(stdout, helpText());
        endEarly(0);
        return false;
    }
    if (!parsed)
        return usageError(_commandLine.errorText());
    if (_commandLine.isSet(VersionOption)) {
        print(stdout, QString::fromStdString(name() + " " + _version + "\n"));
        endEarly(0);
        return false;
    }

    applyOptions();
    return true;
}

void Application::applyOptions()
{
    if (_commandLine.isSet(DebugOption))
        QLoggingCategory::setFilterRules(QStringLiteral("tellarix*.debug=true"));
    if (_offersRecordStream && _commandLine.isSet(RecordStreamOption))
        _configuration.setOverride(RecordStreamKey, _commandLine.value(RecordStreamOption));
    if (_offersDatabase && _commandLine.isSet(DatabaseOption))
        _configuration.setOverride(DatabaseKey, _commandLine.value(DatabaseOption));
}

QString Application::helpText() const
{
    // The parser takes the program's path from QCoreApplication; a name is easier to read.
    int argc = 1;
    QByteArray ownName = QByteArray::fromStdString(name());
    char *argv[] = {ownName.data(), nullptr};
    std::unique_ptr<QCoreApplication> temporary;
    if (!QCoreApplication::instance())
        temporary = std::make_unique<QCoreApplication>(argc, argv);

    QString text = _commandLine.helpText();
    const QString path = QCoreApplication::arguments().value(0);
    const int position = text.indexOf(path);
    return position < 0 ? text : text.replace(position, path.size(), QString::fromUtf8(ownName));
}

} // namespace Client
} // namespace Tellarix
