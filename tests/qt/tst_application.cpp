// SPDX-License-Identifier: LGPL-3.0-or-later

#include "arguments.h"

#include <tellarix/qt/application.h>
#include <tellarix/qt/scheme.h>

#include <QApplication>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

#include <csignal>
#include <memory>

using namespace Tellarix;

namespace {

/** Notes which of its operations are called. */
class TestApplication : public Gui::Application
{
public:
    TestApplication(Arguments &arguments, int flags = 0, Type type = Desktop)
        : Gui::Application(arguments.argc, arguments.argv(), flags, type)
    {}

    QStringList calls;

    void done() override
    {
        calls << QStringLiteral("done");
        Gui::Application::done();
    }
};

} // namespace

class ApplicationTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qputenv("XDG_CONFIG_HOME", "/nonexistent"); }

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
        QApplication host(arguments.argc, arguments.argv());
        host.setApplicationName(QStringLiteral("host"));
        {
            TestApplication application(arguments);
            QVERIFY(application.init());
        }
        QCOMPARE(QCoreApplication::instance(), static_cast<QCoreApplication *>(&host));
        QCOMPARE(host.applicationName(), QStringLiteral("host"));
    }

    void offersOptionsByFlags()
    {
        for (const int flag :
             {Gui::Application::OfferDatabase, Gui::Application::OfferRecordStream}) {
            Arguments arguments({"--database=sqlite:///x"});
            QCOMPARE(TestApplication(arguments, flag).init(),
                     flag == Gui::Application::OfferDatabase);
            Arguments others({"--record-stream=file:///x"});
            QCOMPARE(TestApplication(others, flag).init(),
                     flag == Gui::Application::OfferRecordStream);
        }
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

    void runsUntilExitWithoutWindows()
    {
        Arguments arguments;
        TestApplication application(arguments, 0, Gui::Application::Console);
        QTimer::singleShot(10, &application, [&] { application.exit(3); });
        QCOMPARE(application.exec(), 3);
        QCOMPARE(application.calls.last(), QStringLiteral("done"));

        // An exit before the loop counts too.
        application.exit(4);
        QVERIFY(application.run());
        QCOMPARE(application.returnCode(), 4);
    }

    void endsWithMainWidget()
    {
        for (const bool isDeleted : {false, true}) {
            Arguments arguments;
            TestApplication application(arguments);
            QPointer<QWidget> window = new QWidget;
            QWidget tornOff;
            tornOff.show();
            application.setMainWidget(window);
            QTimer::singleShot(10, window, [&] {
                isDeleted ? window->deleteLater() : static_cast<void>(window->close());
            });
            QTimer::singleShot(5000, &application, [&] { application.exit(9); });
            QCOMPARE(application.exec(), 0);
            QCOMPARE(application.mainWidget() == nullptr, isDeleted);
            delete window;
            QVERIFY(!application.mainWidget());
        }
    }

    void leavesConnectionsOfHostsToMainWidget()
    {
        Arguments arguments;
        TestApplication application(arguments);
        QWidget window;
        int titles = 0;
        connect(&window, &QWidget::windowTitleChanged, &application, [&titles] { ++titles; });
        application.setMainWidget(&window);
        application.setMainWidget(nullptr);
        window.setWindowTitle(QStringLiteral("still heard"));
        QCOMPARE(titles, 1);
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
};

QTEST_APPLESS_MAIN(ApplicationTest)
#include "tst_application.moc"
