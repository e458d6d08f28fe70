// SPDX-License-Identifier: LGPL-3.0-or-later

#include "arguments.h"

#include <tellarix/client/application.h>
#include <tellarix/client/configuration.h>
#include <tellarix/client/io/recordstream.h>
#include <tellarix/client/plugins.h>
#include <tellarix/core/environment.h>

#include <QtTest>

#include <csignal>
#include <functional>
#include <tuple>

#include <unistd.h>

using namespace Tellarix;
using Tellarix::Client::Configuration;

namespace {
/** Writes down what the run sequence calls; fails in the step that it is told. */
class Program : public Client::Application
{
public:
    explicit Program(Arguments &arguments) : Client::Application(arguments.argc, arguments.argv())
    {}

    bool run() override
    {
        if (work)
            work();
        return step("run", Client::Application::run());
    }
    void done() override { step("done", true); }

    QStringList calls;
    QString failingStep;
    std::function<void()> work;

protected:
    void createCommandLineDescription() override
    {
        step("describe", true);
        Client::Application::createCommandLineDescription();
    }
    bool initConfiguration() override
    {
        return step("configuration", Client::Application::initConfiguration());
    }
    bool validateParameters() override
    {
        return step("parameters", Client::Application::validateParameters());
    }
    bool initSubscriptions() override
    {
        return step("subscriptions", Client::Application::initSubscriptions());
    }
    void handleInitializationError(int stage) override
    {
        step(QString("error%1").arg(stage), true);
        Client::Application::handleInitializationError(stage);
    }
    void handleInterrupt(int signal) override
    {
        step(QThread::currentThread() == qApp->thread() ? "interrupt" : "interrupt elsewhere",
             true);
        Client::Application::handleInterrupt(signal);
    }

private:
    bool step(const QString &name, bool result)
    {
        calls.append(name);
        return result && name != failingStep;
    }
};

const QStringList Setup{"describe", "configuration", "parameters", "subscriptions"};

constexpr auto HasRun = "TELLARIX_TEST_HAS_RUN";

QString pluginFile(const QString &name)
{
    return QStringLiteral(NORVU_TEST_PLUGINS "/%1.so").arg(name);
}

bool offersScheme()
{
    const std::vector<std::string> schemes = IO::RecordStream::Schemes();
    return std::find(schemes.begin(), schemes.end(), "test") != schemes.end();
}

} // namespace

class ApplicationTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        _folder.reset(new QTemporaryDir);
        qputenv("XDG_CONFIG_HOME", _folder->filePath("user").toLocal8Bit());
        qputenv("TELLARIX_SHARE_DIR", _folder->filePath("share").toLocal8Bit());
        Environment::Instance()->refresh();
    }

    void runsStepsInOrder()
    {
        const QStringList wrong{"describe", "error1", "done"};
        const std::tuple<QStringList, QString, QStringList, int> rows[] = {
            {{}, "", Setup + QStringList{"run", "done"}, 0},
            {{}, "configuration", Setup.mid(0, 2) + QStringList{"error2", "done"}, 1},
            {{}, "parameters", Setup.mid(0, 3) + QStringList{"error3", "done"}, 2},
            {{}, "subscriptions", Setup + QStringList{"error4", "done"}, 1},
            {{}, "run", Setup + QStringList{"run", "done"}, 1},
            {{"--version"}, "", {"describe", "done"}, 0},
            {{"--nonsense", "-h"}, "", {"describe", "done"}, 0},
            {{"--nonsense"}, "", wrong, 2},
            {{"--database"}, "", wrong, 2},
        };
        for (const auto &[words, failingStep, calls, status] : rows) {
            Arguments arguments(words);
            Program program(arguments);
            program.failingStep = failingStep;
            System::Application &base = program;
            QCOMPARE(base.exec(), status);
            QCOMPARE(program.calls, calls);
        }
    }

    void filesAndFlagsSetURLs()
    {
        const Environment *environment = Environment::Instance();
        const QString system = QString::fromLocal8Bit(environment->systemConfigurationDirectory());
        const QString user = QString::fromLocal8Bit(environment->configurationDirectory());
        write(system + "/prog.ini", "[a]\n1=system prog\n2=system prog\n3=system prog\n");
        write(system + "/tellarix.ini", "[a]\n1=system\n[database]\nurl=sqlite:///system\n");
        write(user + "/tellarix.ini", "[a]\n2=user\n3=user\n");
        write(user + "/prog.ini", "[a]\n3=user prog\n[recordstream]\nurl=file:///user\n");
        const QString named = _folder->filePath("named.ini");
        write(named, "[database]\nurl=sqlite:///named\n");

        Arguments arguments({"--config-file", named, "-I", "file:///flag", "one", "two"});
        Program program(arguments);
        QCOMPARE(program.exec(), 0);
        QCOMPARE(program.configuration().string("a/1"), QString("system prog"));
        QCOMPARE(program.configuration().string("a/2"), QString("user"));
        QCOMPARE(program.configuration().string("a/3"), QString("user prog"));
        QCOMPARE(program.recordStreamURL(), std::string("file:///flag"));
        QCOMPARE(program.databaseURL(), std::string("sqlite:///named"));
        QCOMPARE(program.positionalArguments(), QStringList({"one", "two"}));
    }

    void brokenConfigurationFileStops()
    {
        const QString user =
            QString::fromLocal8Bit(Environment::Instance()->configurationDirectory()) + "/prog.ini";
        const auto status = [](const QStringList &flags) {
            Arguments arguments(flags);
            return Program(arguments).exec();
        };
        QCOMPARE(status({"--config-file", user}), 1);
        QCOMPARE(status({}), 0);
        write(user, "no entry\n");
        QCOMPARE(status({}), 1);
    }

    void loadsPluginsFromAllFolders()
    {
        const QString good = QStringLiteral(NORVU_TEST_PLUGINS "/good.so");
        const auto folder = [&](const char *name) { return _folder->filePath(name); };
        for (const char *name : {"option", "configured", "variable"})
            QVERIFY(QDir().mkpath(folder(name)));
        QVERIFY(QFile::link(good, folder("option") + "/good.so"));
        QVERIFY(QFile::link(good, folder("configured") + "/alias.so"));
        QVERIFY(QFile::copy(good, folder("variable") + "/again.so"));
        write(folder("set.ini"), "[plugins]\nfolders=missing, " + folder("configured").toUtf8());
        qputenv("TELLARIX_PLUGIN_PATH", folder("variable").toLocal8Bit());

        const QStringList options{"--config-file", folder("set.ini"), "--plugin-folder",
                                  folder("option")};
        Arguments arguments(options);
        Arguments without(options + QStringList("--no-plugins"));
        const auto offers = [] {
            const std::vector<std::string> schemes = IO::RecordStream::Schemes();
            return std::count(schemes.begin(), schemes.end(), "test");
        };
        for (int i = 0; i < 2; ++i) {
            QCOMPARE(offers(), 0); // the plug-in goes with its application
            Program program(arguments);
            program.work = [&] {
                QCOMPARE(offers(), 1);
                QCOMPARE(program.plugins().loaded().size(), 1);
                const Client::LoadedPlugin plugin = program.plugins().loaded()[0];
                QCOMPARE(plugin.fileName, folder("option") + "/good.so");
                QCOMPARE(plugin.version, QString("1.2"));
                const QStringList problems = program.plugins().problems();
                QCOMPARE(problems.size(), 2);
                QVERIFY(problems[0].startsWith("missing: "));
                QVERIFY(problems[1].startsWith(folder("variable")) &&
                        problems[1].contains("\"Good\" is loaded"));
            };
            QCOMPARE(program.exec(), 0);
        }
        Program program(without);
        program.work = [&] { QVERIFY(program.plugins().loaded().isEmpty()); };
        QCOMPARE(program.exec(), 0);
        qunsetenv("TELLARIX_PLUGIN_PATH");
    }

    void signalEndsEventLoop()
    {
        Arguments arguments;
        Program program(arguments);
        program.work = []() {
            QTimer::singleShot(0, []() { ::raise(SIGINT); });
            QTimer::singleShot(20000, []() { QCoreApplication::exit(); });
            QCoreApplication::exec();
        };
        QCOMPARE(program.exec(), 128 + SIGINT);
        QCOMPARE(program.calls, Setup + QStringList({"interrupt", "run", "done"}));
    }

    void readsArgumentsLessThoseOfQt()
    {
        Arguments arguments({"-platform", "offscreen", "rest"});
        Program program(arguments);
        QCOMPARE(program.name(), std::string("prog"));
        // As QGuiApplication does, which is made behind the application object.
        arguments.argv()[1] = arguments.argv()[3];
        arguments.argc = 2;
        QCOMPARE(program.exec(), 0);
        QCOMPARE(program.positionalArguments(), QStringList("rest"));
    }

private:
    void write(const QString &name, const QByteArray &content)
    {
        QFile file(name);
        QVERIFY(QDir().mkpath(QFileInfo(name).path()));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
    }

    QScopedPointer<QTemporaryDir> _folder;

private slots:
    void laterLayersWinKeyByKey()
    {
        const QString first = file("first.ini", "[a]\nx=file1\ny=file1\nz=file1\n");
        const QString second = file("second.ini", "[a]\nx=file2\ny=file2\n");

        Configuration configuration;
        configuration.setOverride("a/x", "flag");
        QVERIFY(configuration.readFile(first));
        QVERIFY(configuration.readFile(second));
        configuration.setDefault("a/z", "default");
        configuration.setDefault("a/d", "default");

        QCOMPARE(configuration.string("a/x"), QString("flag"));
        QCOMPARE(configuration.string("a/y"), QString("file2"));
        QCOMPARE(configuration.string("a/z"), QString("file1"));
        QCOMPARE(configuration.string("a/d"), QString("default"));
        QCOMPARE(configuration.keys(), QStringList({"a/d", "a/x", "a/y", "a/z"}));
        QCOMPARE(configuration.origin("a/y"), second);
        QCOMPARE(configuration.origin("a/x"), QString("command line"));
        QVERIFY(!configuration.value("a/unknown").isValid());
    }

    void readsFileValues()
    {
        const std::pair<QByteArray, QString> rows[] = {
            {"v=https://host/q?a=1,2", "https://host/q?a=1,2"},
            {"v=Z\xc3\xbcrich", QString::fromUtf8("Zürich")},
            {"v=", ""},
            {"v=1\nv=2", "2"},
            {"v=a;b ; c#d", "a;b ; c#d"},
            {"  ; v=1\r\n;[x]\r\nv= ;a;\r\n#v=2;", ";a;"},
            {"v=\"a;b\";c\\\";d, e;f", "a;b;c\";d,e;f"},
            {"v=a;\\\r\n b;c\nw=1", "a; b;c"},
            {"v=\"a\n;b\"\nw=;", "a\n;b"}};
        for (const auto &[line, expected] : rows) {
            Configuration configuration;
            QVERIFY(configuration.readFile(file("value.ini", "[k]\n" + line + '\n')));
            QVERIFY(configuration.contains("k/v"));
            QCOMPARE(configuration.string("k/v"), expected);
        }
    }

    void numbersAreReadWhole()
    {
        const std::tuple<QVariant, bool, bool, bool> rows[] = {
            {"12", true, true, false},     {"1.5", true, false, false},
            {"12 s", false, false, false}, {QStringList{"1", "2"}, false, false, false},
            {"", false, false, false},     {"on", false, false, true},
            {2.5, true, false, false}};
        for (const auto &[value, isNumber, isInteger, isBoolean] : rows) {
            Configuration configuration;
            configuration.setDefault("k", value);
            double number = -7;
            int integer = -7;
            bool truth = false;
            QCOMPARE(configuration.number("k", number), isNumber);
            QCOMPARE(number != -7, isNumber);
            QCOMPARE(configuration.integer("k", integer), isInteger);
            QCOMPARE(configuration.boolean("k", truth), isBoolean);
        }
    }

    void brokenFilesChangeNothing()
    {
        for (const QString &fileName :
             {_folder->filePath("missing.ini"), _folder->path(),
              file("broken.ini", "[a]\nx=new\nthis line says nothing\n")}) {
            Configuration configuration;
            QVERIFY(configuration.readFile(file("good.ini", "[a]\nx=old\n")));
            QString error;
            QVERIFY(!configuration.readFile(fileName, &error));
            QVERIFY2(error.startsWith(fileName + ": "), qPrintable(error));
            QCOMPARE(configuration.string("a/x"), QString("old"));
        }
    }

    void namesValueOfWrongType()
    {
        Configuration schema;
        schema.setDefault("a/count", "integer");
        schema.setDefault("a/unset", "number");
        schema.setDefault("a/name", "text");
        Configuration configuration;
        configuration.setDefault("a/name", "5");
        QVERIFY(configuration.readFile(file("types.ini", "[a]\ncount=3\n")));
        QVERIFY(configuration.conformsTo(schema));

        const QString fileName = file("wrong.ini", "[a]\ncount=many\n");
        QVERIFY(configuration.readFile(fileName));
        QString error;
        QVERIFY(!configuration.conformsTo(schema, &error));
        for (const QString &part : {fileName, QString("a/count"), QString("many")})
            QVERIFY2(error.contains(part), qPrintable(error));
    }

private:
    QString file(const QString &name, const QByteArray &content)
    {
        QFile target(_folder->filePath(name));
        if (!target.open(QIODevice::WriteOnly) || target.write(content) != content.size())
            qFatal("can't write %s", qPrintable(target.fileName()));
        return target.fileName();
    }

private slots:
    void leavesOutWhatDoesNotFit()
    {
        const std::tuple<QString, QString, bool> rows[] = {
            {"other", "is made for version 4.2 of the framework, and this is 5.0", false},
            {"nameless", "have no \"name\"", false},
            {"listless", "is no list", false}, // of programs
            {"stranger", "", false},           // to another program
            {"unresolved", "definedNowhere", false},
            {"text", "ELF", false},
            {"link", "not found", false},
            {"refusing", "needs a key", true},
            {"throwing", "out of luck", true},
        };
        for (const auto &[name, cause, runs] : rows) {
            qunsetenv(HasRun);
            const QTemporaryDir folder;
            const QString fileName = folder.filePath(name + ".so");
            QFile file(fileName);
            if (name == "text")
                QVERIFY(file.open(QIODevice::WriteOnly) && file.write(QByteArray(9000, 'x')));
            else if (name == "link")
                QVERIFY(QFile::link("/nowhere/at/all", fileName));
            else
                QVERIFY(QFile::copy(pluginFile(name), fileName));
            file.close();

            Client::Plugins plugins;
            plugins.loadFolder(folder.path(), "prog");
            QVERIFY2(plugins.loaded().isEmpty(), qPrintable(name));
            QVERIFY2(qEnvironmentVariableIsSet(HasRun) == runs, qPrintable(name));
            QVERIFY2(!offersScheme(), qPrintable(name));
            QCOMPARE(plugins.problems().size(), cause.isEmpty() ? 0 : 1);
            const QString told = plugins.problems().join(' ');
            QVERIFY2(cause.isEmpty() || (told.startsWith(fileName + ": ") && told.contains(cause)),
                     qPrintable(told));
        }
    }

    void looksIntoNoNamelessFolder()
    {
        const QTemporaryDir folder;
        QVERIFY(QFile::copy(pluginFile("good"), folder.filePath("good.so")));
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(folder.path()));
        Client::Plugins plugins;
        plugins.loadFolder("", "prog");
        QVERIFY(QDir::setCurrent(before));
        QVERIFY(plugins.loaded().isEmpty());
        QCOMPARE(plugins.problems().size(), 1);
    }

    void tellsAFolderThatCannotBeRead()
    {
        const QTemporaryDir folder;
        const bool isRoot = ::geteuid() == 0; // who may read any
        QVERIFY(QFile::setPermissions(folder.path(), QFile::Permissions()));
        if (isRoot)
            QCOMPARE(::setresuid(65534, 65534, 0), 0);
        Client::Plugins plugins;
        plugins.loadFolder(folder.path(), "prog");
        if (isRoot)
            QCOMPARE(::setresuid(0, 0, 0), 0);
        QVERIFY(QFile::setPermissions(folder.path(), QFile::ReadOwner | QFile::ExeOwner));
        QVERIFY(plugins.problems().value(0).contains("can't be read"));
    }
};

QTEST_GUILESS_MAIN(ApplicationTest)
#include "tst_application.moc"
