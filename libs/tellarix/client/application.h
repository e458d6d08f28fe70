// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/configuration.h>
#include <tellarix/client/plugins.h>
#include <tellarix/client/system/application.h>

#include <QCommandLineParser>
#include <QStringList>

namespace Tellarix {
namespace Client {

/**
 * A program with a command line, configuration files and addresses of its data sources.
 *
 * init() runs these steps: createCommandLineDescription(), parsing, initConfiguration(), loading of
 * plug-ins, validateParameters(), initSubscriptions(). A usage error prints its reason on standard
 * error and ends with status 2; --help and --version print to standard output and end with 0;
 * whatever else fails ends with 1.
 *
 * Configuration files are "tellarix.ini" and "NAME.ini", first those of the system, then those of
 * the user, then those that --config-file names. Files of the first two kinds may be missing. What
 * they set is checked against "schemas/SCHEMA.ini" below the share directory for each schema that
 * schemaValidationNames() names: the types of keys, see Configuration::conformsTo().
 *
 * Plug-ins are loaded from the folders of --plugin-folder, of the key "plugins/folders" (a list),
 * of the environment variable TELLARIX_PLUGIN_PATH (with colons between them) and from the plug-in
 * directory of the environment, in this order. One that can't be loaded is told by showWarning().
 */
class TELLARIX_CLIENT_API Application : public System::Application
{
public:
    /** Steps of init(), as handleInitializationError() gets them. */
    enum Stage
    {
        CommandLine = 1,
        ConfigurationFiles = 2,
        Parameters = 3,
        Subscriptions = 4,
    };

    Application(int &argc, char **argv);
    ~Application() override;

    static Application *Instance();

    Configuration &configuration() { return _configuration; }
    const Configuration &configuration() const { return _configuration; }
    QCommandLineParser &commandLine() { return _commandLine; }
    const QCommandLineParser &commandLine() const { return _commandLine; }
    /** Arguments that are no options. */
    QStringList positionalArguments() const { return _commandLine.positionalArguments(); }

    /** URL of the record stream, from --record-stream or the key "recordstream/url". */
    std::string recordStreamURL() const;
    /** URL of the event database, from --database or the key "database/url". */
    std::string databaseURL() const;
    /** The plug-ins that init() has loaded, and what is wrong with others; none behind done(). */
    const Plugins &plugins() const { return _plugins; }
    /** Version text for --version; the framework's by default. */
    void setVersion(const std::string &version) { _version = version; }
    const std::string &version() const { return _version; }
    /** The version of the framework as text. */
    const char *frameworkVersion() const { return _frameworkVersion.c_str(); }

    /** Whether --database and --record-stream are offered; they are unless this is called before
     *  init(). */
    void setDatabaseOffered(bool offered) { _offersDatabase = offered; }
    void setRecordStreamOffered(bool offered) { _offersRecordStream = offered; }

    bool init() override;
    void done() override;

protected:
    void createCommandLineDescription() override;
    bool initConfiguration() override;
    bool validateParameters() override;
    void handleInitializationError(int stage) override;

    /** The command that usage errors point at; "NAME --help" by default. */
    void setHelpCommand(const QString &command) { _helpCommand = command; }
    /** Prints a usage error; validateParameters() calls it and returns the result, false. */
    bool usageError(const QString &reason);
    /** Prints "NAME: REASON" on standard error; always returns false. */
    bool failure(const QString &reason) const;
    /** The names of the configuration files, least important first; missing ones are skipped. */
    virtual QStringList configurationFiles() const;

private:
    bool parseCommandLine();
    bool checkSchemas();
    bool initCache();
    bool initPlugins();
    QStringList pluginFolders() const;
    void applyOptions();
    QString helpText() const;

    Configuration _configuration;
    QCommandLineParser _commandLine;
    Plugins _plugins;
    QString _helpCommand;
    std::string _version;
    std::string _frameworkVersion;
    bool _offersDatabase{true};
    bool _offersRecordStream{true};
};

} // namespace Client
} // namespace Tellarix
