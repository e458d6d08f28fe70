// SPDX-License-Identifier: LGPL-3.0-or-later

#include "arguments.h"

#include <tellarix/client/application.h>
#include <tellarix/client/io/recordstream.h>
#include <tellarix/core/environment.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QtTest>

#include <csignal>
#include <functional>

using namespace Tellarix;

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

} // namespace

class TestApplication : public QObject
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
        const struct
        {
            QStringList arguments;
            QString failingStep;
            QStringList calls;
            int status;
        } rows[] = {
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
        for (const auto &row : rows) {
            Arguments arguments(row.arguments);
            Program program(arguments);
            program.failingStep = row.failingStep;
            System::Application &base = program;
            QCOMPARE(base.exec(), row.status);
            QCOMPARE(program.calls, row.calls);
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
};

QTEST_GUILESS_MAIN(TestApplication)
#include "tst_application.moc"
