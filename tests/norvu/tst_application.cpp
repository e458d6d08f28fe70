#include <norvu/gui/aboutwidget.h>
#include <norvu/gui/application.h>
#include <norvu/gui/splashscreen.h>

#include <tellarix/core/environment.h>

#include <QDesktopServices>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>
#include <QTimer>
#include <QtTest>

using Norvu::Gui::AboutWidget;
using Norvu::Gui::Application;

namespace {

const char *const Icon = ":/norvu/gui/icons/norvu.svg";

/** Program name and arguments, which have to live as long as the application. */
struct Arguments
{
    char program[16] = "/opt/bin/picker";
    char *values[2] = {program, nullptr};
    int count = 1;
};

class Host : private Arguments, public Application
{
public:
    explicit Host(int flags = 0, const char *icon = nullptr)
        : Application(count, values, flags, GuiClient, ":/norvu/gui/splash.png", icon, "Picker",
                      "Onsets by hand", "1.4")
    {}
};

int splashCount()
{
    int result = 0;
    for (QWidget *widget : QApplication::topLevelWidgets())
        result += qobject_cast<QSplashScreen *>(widget) != nullptr;
    return result;
}

QStringList actionTexts(const QMenu *menu)
{
    QStringList result;
    for (const QAction *action : menu->actions())
        result.append(action->text());
    return result;
}

QMenu *helpMenu(QMainWindow &window)
{
    return window.menuBar()->findChild<QMenu *>(QStringLiteral("menuHelp"));
}

AboutWidget *aboutDialog()
{
    return qobject_cast<AboutWidget *>(QApplication::activeModalWidget());
}

} // namespace

class ApplicationTest : public QObject
{
    Q_OBJECT

public slots:
    void openUrl(const QUrl &url) { _opened.append(url); }

private slots:
    void init();
    void showsSplashOnDemand_data();
    void showsSplashOnDemand();
    void sendsMessagesToSplash();
    void forgetsOnlyItsOwnSplash();
    void addsHelpMenu();
    void keepsHelpMenuOfHost();
    void givesNoMenuToOtherWidgets();
    void setsIcons_data();
    void setsIcons();
    void tellsOfMissingHelp();
    void opensHelp();
    void showsAboutDialog();
    void placesAboutDialogOverMainWidget();

private:
    QList<QUrl> _opened;
};

void ApplicationTest::init()
{
    QCOMPARE(splashCount(), 0);
    _opened.clear();
}

void ApplicationTest::showsSplashOnDemand_data()
{
    QTest::addColumn<int>("flags");
    QTest::addColumn<int>("splashes");

    QTest::newRow("no flag") << 0 << 0;
    QTest::newRow("other flags") << int(Application::DefaultFlags & ~Application::ShowSplash) << 0;
    QTest::newRow("all flags") << int(Application::DefaultFlags) << 1;
}

void ApplicationTest::showsSplashOnDemand()
{
    QFETCH(int, flags);
    QFETCH(int, splashes);

    Host host(flags);
    QCOMPARE(splashCount(), splashes);
    QCOMPARE(host.splashScreen() != nullptr, splashes == 1);
    // the framework must not show a second one later
    QCOMPARE(host.flags(), flags & ~Application::ShowSplash);
    if (!host.splashScreen())
        return;

    QVERIFY(host.splashScreen()->isVisible());
    QCOMPARE(host.splashScreen()->size(), QSize(500, 400));
    host.splashScreen()->close();
    QTRY_VERIFY(!host.splashScreen());
}

void ApplicationTest::sendsMessagesToSplash()
{
    Host host(Application::ShowSplash);
    Tellarix::System::Application *framework = Tellarix::System::Application::Instance();
    framework->showMessage("Stationen werden gelesen \xE2\x80\xA6");
    QCOMPARE(host.splashScreen()->message(), QString::fromUtf8("Stationen werden gelesen …"));

    host.splashScreen()->close();
    QTRY_VERIFY(!host.splashScreen());
    framework->showMessage("too late");
}

void ApplicationTest::forgetsOnlyItsOwnSplash()
{
    Host host(Application::ShowSplash);
    QObject other;
    host.objectDestroyed(&other);
    host.objectDestroyed(nullptr);
    QVERIFY(host.splashScreen());
    delete host.splashScreen();
    QVERIFY(!host.splashScreen());
}

void ApplicationTest::addsHelpMenu()
{
    Host host;
    QMainWindow window;
    window.menuBar()->addMenu(QStringLiteral("&File"));
    host.setMainWidget(&window);
    QCOMPARE(host.mainWidget(), &window);

    QMenu *menu = helpMenu(window);
    QVERIFY(menu);
    QCOMPARE(menu->title(), QStringLiteral("&Help"));
    QCOMPARE(window.menuBar()->actions().last(), menu->menuAction());
    QCOMPARE(actionTexts(menu), QStringList("About PICKER"));

    // handed over once more, the window gets the entry once more
    host.setMainWidget(&window);
    QCOMPARE(window.menuBar()->actions().size(), 2);
    QCOMPARE(actionTexts(menu), QStringList({"About PICKER", "About PICKER"}));
    host.setMainWidget(nullptr);
}

void ApplicationTest::keepsHelpMenuOfHost()
{
    Host host;
    QMainWindow window;
    QMenu *own = window.menuBar()->addMenu(QStringLiteral("&More"))->addMenu("&Assistance");
    own->setObjectName(QStringLiteral("menuHelp"));
    own->addAction(QStringLiteral("Manual"));
    host.setMainWidget(&window);

    QCOMPARE(window.menuBar()->actions().size(), 1);
    QCOMPARE(own->title(), QStringLiteral("&Assistance"));
    QCOMPARE(actionTexts(own), QStringList({"Manual", "About PICKER"}));
    host.setMainWidget(nullptr);
}

void ApplicationTest::givesNoMenuToOtherWidgets()
{
    Host host;
    QWidget plain;
    host.setMainWidget(&plain);
    QCOMPARE(host.mainWidget(), &plain);
    QVERIFY(!plain.findChild<QMenu *>());
    host.setMainWidget(nullptr);
    QVERIFY(!host.mainWidget());
}

void ApplicationTest::setsIcons_data()
{
    QTest::addColumn<bool>("icon");

    QTest::newRow("icon") << true;
    QTest::newRow("no icon") << false;
}

void ApplicationTest::setsIcons()
{
    QFETCH(bool, icon);

    Host host(0, icon ? Icon : nullptr);
    QPixmap red(8, 8);
    red.fill(Qt::red);
    const QIcon before(red);
    QMainWindow window;
    window.setWindowIcon(before);
    host.setMainWidget(&window);
    QCOMPARE(window.windowIcon().cacheKey() == before.cacheKey(), !icon);
    QCOMPARE(helpMenu(window)->actions().last()->icon().isNull(), !icon);
    host.setMainWidget(nullptr);
}

void ApplicationTest::tellsOfMissingHelp()
{
    qputenv("TELLARIX_SHARE_DIR", "/nowhere/share");
    Tellarix::Environment::Instance()->refresh();
    Host host;
    QCOMPARE(host.docUrl(), QStringLiteral("/nowhere/share/doc/picker/html/index.html"));

    QString title, text;
    QTimer::singleShot(0, this, [&] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box)
            return;
        title = box->windowTitle();
        text = box->text();
        box->accept();
    });
    host.showAppHelp();
    QCOMPARE(title, QStringLiteral("picker help"));
    QCOMPARE(text, QStringLiteral("Help for picker is not available. Missing file: "
                                  "/nowhere/share/doc/picker/html/index.html"));
}

void ApplicationTest::opensHelp()
{
    QTemporaryDir share;
    const QString folder = share.filePath(QStringLiteral("doc/picker/html"));
    QVERIFY(QDir().mkpath(folder));
    QFile page(folder + QStringLiteral("/index.html"));
    QVERIFY(page.open(QIODevice::WriteOnly));
    page.close();
    qputenv("TELLARIX_SHARE_DIR", share.path().toUtf8());
    Tellarix::Environment::Instance()->refresh();

    QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "openUrl");
    Host host;
    host.showAppHelp();
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    QCOMPARE(_opened, QList<QUrl>{QUrl(QStringLiteral("file://") + page.fileName())});
}

void ApplicationTest::showsAboutDialog()
{
    Host host(0, Icon);
    QMainWindow window;
    host.setMainWidget(&window);
    helpMenu(window)->actions().last()->trigger();

    QPointer<AboutWidget> dialog(aboutDialog());
    QVERIFY(dialog);
    QVERIFY(dialog->isVisible());
    QCOMPARE(dialog->windowTitle(), QStringLiteral("About PICKER"));
    QCOMPARE(dialog->windowModality(), Qt::ApplicationModal);
    QCOMPARE(dialog->size(), QSize(600, 500));
    QCOMPARE(dialog->findChild<QLabel *>("labelVersion")->text(), QStringLiteral("1.4"));
    QCOMPARE(dialog->findChild<QLabel *>("labelFrameworkVersion")->text(),
             QString(host.frameworkVersion()));
    dialog->reject();
    QTRY_VERIFY(!dialog);
    host.setMainWidget(nullptr);
}

void ApplicationTest::placesAboutDialogOverMainWidget()
{
    Host host;
    QMainWindow window;
    window.setGeometry(40, 60, 700, 520);
    host.setMainWidget(&window);
    host.showAppAbout(0);

    QPointer<AboutWidget> dialog(aboutDialog());
    QVERIFY(dialog);
    QCOMPARE(dialog->geometry().center(), window.geometry().center());
    dialog->accept();
    QTRY_VERIFY(!dialog);

    host.setMainWidget(nullptr);
    host.showAppAbout();
    dialog = aboutDialog();
    QVERIFY(dialog);
    QCOMPARE(dialog->size(), QSize(600, 500));
    dialog->accept();
    QTRY_VERIFY(!dialog);
}

QTEST_MAIN(ApplicationTest)
#include "tst_application.moc"
