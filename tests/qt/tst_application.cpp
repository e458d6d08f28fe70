#include <tellarix/qt/application.h>
#include <tellarix/qt/scheme.h>

#include <QApplication>
#include <QMessageBox>
#include <QPixmap>
#include <QSignalSpy>
#include <QSplashScreen>
#include <QTimer>
#include <QtTest>

#include <csignal>
#include <memory>

using namespace Tellarix;

namespace {

/** A command line that lives as long as the application made of it. */
struct Arguments
{
    explicit Arguments(const QList<QByteArray> &options = {}) : texts(options)
    {
        texts.prepend("/usr/bin/seismotest");
        for (QByteArray &text : texts)
            pointers.push_back(text.data());
        count = static_cast<int>(pointers.size());
        pointers.push_back(nullptr);
    }

    QList<QByteArray> texts;
    std::vector<char *> pointers;
    int count;
};

/** Notes which of its operations are called. */
class TestApplication : public Gui::Application
{
public:
    TestApplication(Arguments &arguments, int flags = 0, Type type = GuiClient)
        : Gui::Application(arguments.count, arguments.pointers.data(), flags, type)
    {}

    QStringList calls;
    QString splash;
    bool valid{true};

    void showMessage(const char *message) override
    {
        calls << QStringLiteral("showMessage");
        Gui::Application::showMessage(message);
    }
    void showWarning(const char *message) override
    {
        calls << QStringLiteral("showWarning");
        Gui::Application::showWarning(message);
    }
    bool init() override
    {
        calls << QStringLiteral("init");
        return Gui::Application::init();
    }
    bool run() override
    {
        calls << QStringLiteral("run");
        return Gui::Application::run();
    }
    void done() override
    {
        calls << QStringLiteral("done");
        Gui::Application::done();
    }
    void exit(int returnCode) override
    {
        calls << QStringLiteral("exit");
        Gui::Application::exit(returnCode);
    }
    bool validateParameters() override { return valid; }
    void handleInitializationError(int stage) override
    {
        calls << QStringLiteral("handleInitializationError %1").arg(stage);
        Gui::Application::handleInitializationError(stage);
    }
    void handleInterrupt(int signal) override
    {
        calls << QStringLiteral("handleInterrupt");
        Gui::Application::handleInterrupt(signal);
    }
    QString splashImagePath() const override { return splash; }
};

QSplashScreen *visibleSplash()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible() && qobject_cast<QSplashScreen *>(widget))
            return static_cast<QSplashScreen *>(widget);
    }
    return nullptr;
}

} // namespace

class ApplicationTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qputenv("XDG_CONFIG_HOME", "/nonexistent"); }

    void basesReachOverrides()
    {
        Arguments arguments;
        TestApplication application(arguments);
        System::Application *base = System::Application::Instance();
        QVERIFY(base == &application);
        QVERIFY(Client::Application::Instance() == &application);
        QVERIFY(Gui::Application::Instance() == &application);

        QTest::ignoreMessage(QtWarningMsg, "careful");
        base->showMessage("hello");
        base->showWarning("careful");
        QVERIFY(base->init());
        QVERIFY(base->run());
        base->exit(0);
        base->done();
        application.calls.removeDuplicates();
        QCOMPARE(application.calls,
                 QStringList({"showMessage", "showWarning", "init", "run", "exit", "done"}));
    }

    void baseDestructorDestroysAll()
    {
        Arguments arguments;
        auto *application = new TestApplication(arguments);
        const QPointer<QObject> watch(application);
        System::Application *base = application;
        delete base;
        QVERIFY(watch.isNull());
        QVERIFY(!QCoreApplication::instance());
        QVERIFY(!Gui::Application::Instance());
    }

    void usesApplicationOfHost()
    {
        Arguments arguments;
        QApplication host(arguments.count, arguments.pointers.data());
        host.setApplicationName(QStringLiteral("host"));
        {
            TestApplication application(arguments);
            QVERIFY(application.init());
        }
        QCOMPARE(QCoreApplication::instance(), static_cast<QCoreApplication *>(&host));
        QCOMPARE(host.applicationName(), QStringLiteral("host"));
    }

    void offersOptionsByFlags_data()
    {
        QTest::addColumn<int>("flags");
        QTest::addColumn<QByteArray>("option");
        QTest::addColumn<bool>("offered");
        QTest::newRow("database") << int(Gui::Application::WantDatabase)
                                  << QByteArray("--database=sqlite:///x") << true;
        QTest::newRow("no database") << int(Gui::Application::WantRecordStream)
                                     << QByteArray("--database=sqlite:///x") << false;
        QTest::newRow("records") << int(Gui::Application::WantRecordStream)
                                 << QByteArray("--record-stream=file:///x") << true;
        QTest::newRow("no records") << int(Gui::Application::WantDatabase)
                                    << QByteArray("--record-stream=file:///x") << false;
    }
    void offersOptionsByFlags()
    {
        QFETCH(int, flags);
        QFETCH(QByteArray, option);
        QFETCH(bool, offered);
        Arguments arguments({option});
        TestApplication application(arguments, flags);
        QCOMPARE(application.init(), offered);
        const std::string url = option.startsWith("--database") ? application.databaseURL()
                                                                : application.recordStreamURL();
        QCOMPARE(!url.empty(), offered);
    }

    void schemeFollowsPalette()
    {
        Arguments arguments;
        TestApplication application(arguments);
        QSignalSpy changes(&application, &Gui::Application::schemeChanged);
        QApplication::setPalette(QPalette(Qt::white, Qt::black, Qt::gray, Qt::black, Qt::darkGray,
                                          Qt::white, Qt::black));
        QCOMPARE(changes.size(), 1);
        QVERIFY(application.scheme().isDark());
        QVERIFY(&Gui::Scheme::Current() == &application.scheme());
    }

    void runsUntilExit_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<bool>("hasWindow");
        QTest::newRow("window") << int(Gui::Application::GuiClient) << true;
        QTest::newRow("no windows at all") << int(Gui::Application::Tty) << false;
    }
    void runsUntilExit()
    {
        QFETCH(int, type);
        QFETCH(bool, hasWindow);
        Arguments arguments;
        TestApplication application(arguments, 0, static_cast<Gui::Application::Type>(type));
        std::unique_ptr<QWidget> window(hasWindow ? new QWidget : nullptr);
        application.setMainWidget(window.get());
        bool wasVisible = false;
        QTimer::singleShot(10, &application, [&] {
            wasVisible = window && window->isVisible();
            static_cast<System::Application &>(application).exit(3);
        });
        QCOMPARE(application.exec(), 3);
        QCOMPARE(wasVisible, hasWindow);
        QCOMPARE(application.calls.last(), QStringLiteral("done"));
    }

    void exitBeforeTheLoopCounts()
    {
        Arguments arguments;
        TestApplication application(arguments);
        QWidget window;
        application.setMainWidget(&window);
        application.exit(4);
        QVERIFY(application.run());
        QCOMPARE(application.returnCode(), 4);
    }

    void endsWithMainWidget_data()
    {
        QTest::addColumn<bool>("isDeleted");
        QTest::newRow("closed") << false;
        QTest::newRow("deleted") << true;
    }
    void endsWithMainWidget()
    {
        QFETCH(bool, isDeleted);
        Arguments arguments;
        TestApplication application(arguments);
        QPointer<QWidget> window = new QWidget;
        QWidget tornOff;
        tornOff.show();
        application.setMainWidget(window);
        QTimer::singleShot(10, window, [&] {
            if (isDeleted)
                window->deleteLater();
            else
                window->close();
        });
        QTimer::singleShot(5000, &application, [&] { application.exit(9); });
        QCOMPARE(application.exec(), 0);
        QVERIFY(tornOff.isVisible());
        QCOMPARE(application.mainWidget() == nullptr, isDeleted);
        delete window;
        QVERIFY(!application.mainWidget());
    }

    void survivesWindowsThatCloseBeforeIt()
    {
        Arguments arguments;
        TestApplication application(arguments);
        QWidget window;
        application.setMainWidget(&window);
        QWidget early;
        early.show();
        early.close();
        QTimer::singleShot(100, &application, [&] { application.exit(5); });
        QCOMPARE(application.exec(), 5);
    }

    void failedStartRunsNothing()
    {
        Arguments arguments;
        TestApplication application(arguments);
        application.valid = false;
        QVERIFY(application.exec() != 0);
        QVERIFY(!application.calls.contains(QStringLiteral("run")));
        QVERIFY(application.calls.contains(
            QStringLiteral("handleInitializationError %1").arg(Client::Application::Parameters)));
        QCOMPARE(application.calls.last(), QStringLiteral("done"));
    }

    void interruptAnnouncesItselfAndEnds()
    {
        Arguments arguments;
        TestApplication application(arguments);
        QWidget window;
        application.setMainWidget(&window);
        QSignalSpy interrupts(&application, &Gui::Application::interruptRequested);
        QTimer::singleShot(10, &application, [] { std::raise(SIGTERM); });
        QTimer::singleShot(5000, &application, [&] { application.exit(9); });
        QCOMPARE(application.exec(), 128 + SIGTERM);
        QCOMPARE(interrupts.size(), 1);
        QCOMPARE(interrupts[0][0].toInt(), SIGTERM);
    }

    void splashShowsOnlyWhenAskedFor_data()
    {
        QTest::addColumn<int>("flags");
        QTest::addColumn<bool>("pictureExists");
        QTest::addColumn<bool>("shown");
        QTest::newRow("asked for") << int(Gui::Application::ShowSplash) << true << true;
        QTest::newRow("not asked for") << 0 << true << false;
        QTest::newRow("no picture") << int(Gui::Application::ShowSplash) << false << false;
    }
    void splashShowsOnlyWhenAskedFor()
    {
        QFETCH(int, flags);
        QFETCH(bool, pictureExists);
        QFETCH(bool, shown);
        QTemporaryDir folder;
        Arguments arguments;
        TestApplication application(arguments, flags);
        application.splash = folder.filePath(QStringLiteral("splash.png"));
        if (pictureExists) {
            QPixmap picture(80, 40);
            picture.fill(Qt::blue);
            QVERIFY(picture.save(application.splash));
        }

        QVERIFY(application.init());
        QCOMPARE(visibleSplash() != nullptr, shown);
        application.showMessage("Loading inventory");
        if (shown)
            QCOMPARE(visibleSplash()->message(), QStringLiteral("Loading inventory"));
        application.done();
        QVERIFY(!visibleSplash());
    }

    void warnsInBoxAboveMainWidget()
    {
        Arguments arguments;
        TestApplication application(arguments);
        QWidget window;
        application.setMainWidget(&window);
        QString text;
        QTimer::singleShot(50, &application, [&] {
            if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
                text = box->text();
                box->accept();
            }
        });
        QTest::ignoreMessage(QtWarningMsg, "The disk is full");
        application.showWarning("The disk is full");
        QCOMPARE(text, QStringLiteral("The disk is full"));
    }
};

QTEST_APPLESS_MAIN(ApplicationTest)
#include "tst_application.moc"
