// SPDX-License-Identifier: LGPL-3.0-or-later

#include "answer.h"

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
        : Application(count, values, flags, Desktop, ":/norvu/gui/splash.png", icon, "Picker",
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
    void init()
    {
        QCOMPARE(splashCount(), 0);
        _opened.clear();
    }

    void showsSplashOnDemand()
    {
        {
            const Host silent(Application::DefaultFlags & ~Application::ShowSplash);
            QVERIFY(!silent.splashScreen());
            QCOMPARE(splashCount(), 0);
        }
        Host host(Application::DefaultFlags);
        QCOMPARE(splashCount(), 1);
        QVERIFY(host.splashScreen()->isVisible());
        // the framework must not show a second one later
        QVERIFY(!(host.flags() & Application::ShowSplash));
        Tellarix::System::Application *framework = Tellarix::System::Application::Instance();
        framework->showMessage("Stationen werden gelesen \xE2\x80\xA6");
        QCOMPARE(host.splashScreen()->message(), QString::fromUtf8("Stationen werden gelesen …"));

        QObject other;
        host.objectDestroyed(&other);
        QVERIFY(host.splashScreen());
        host.splashScreen()->close();
        QTRY_VERIFY(!host.splashScreen());
        framework->showMessage("too late");
    }

    void entersItselfIntoHelpMenu()
    {
        Host host(0, Icon);
        QMainWindow window;
        window.menuBar()->addMenu(QStringLiteral("&File"));
        for (const QStringList &entries :
             {QStringList("About PICKER"), QStringList({"About PICKER", "About PICKER"})}) {
            host.setMainWidget(&window);
            const QMenu *menu = helpMenu(window);
            QVERIFY(menu);
            QCOMPARE(menu->title(), QStringLiteral("&Help"));
            QCOMPARE(window.menuBar()->actions().last(), menu->menuAction());
            QCOMPARE(actionTexts(menu), entries);
            QVERIFY(!menu->actions().last()->icon().isNull());
        }
        QCOMPARE(window.menuBar()->actions().size(), 2);

        QMainWindow another;
        QMenu *own = another.menuBar()->addMenu(QStringLiteral("&More"))->addMenu("&Assistance");
        own->setObjectName(QStringLiteral("menuHelp"));
        own->addAction(QStringLiteral("Manual"));
        host.setMainWidget(&another);
        QCOMPARE(another.menuBar()->actions().size(), 1);
        QCOMPARE(actionTexts(own), QStringList({"Manual", "About PICKER"}));

        QWidget plain;
        host.setMainWidget(&plain);
        QVERIFY(!plain.findChild<QMenu *>());
        host.setMainWidget(nullptr);
    }

    void opensHelp()
    {
        QTemporaryDir share;
        qputenv("TELLARIX_SHARE_DIR", share.path().toUtf8());
        Tellarix::Environment::Instance()->refresh();
        Host host;
        const QString folder = share.filePath(QStringLiteral("doc/picker/html"));
        QString title, text;
        const Answer<QMessageBox> answer([&](QMessageBox &box) {
            title = box.windowTitle();
            text = box.text();
            box.accept();
        });
        host.showAppHelp();
        QCOMPARE(title, QStringLiteral("picker help"));
        QCOMPARE(text,
                 QStringLiteral("Help for picker is not available. Missing file: %1/index.html")
                     .arg(folder));

        QVERIFY(QDir().mkpath(folder));
        QFile page(folder + QStringLiteral("/index.html"));
        QVERIFY(page.open(QIODevice::WriteOnly));
        page.close();
        QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "openUrl");
        host.showAppHelp();
        QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
        QCOMPARE(_opened, QList<QUrl>{QUrl(QStringLiteral("file://") + page.fileName())});
    }

    void showsAboutDialog()
    {
        Host host;
        QMainWindow window;
        window.setGeometry(40, 60, 700, 520);
        host.setMainWidget(&window);
        helpMenu(window)->actions().last()->trigger();

        QPointer<AboutWidget> dialog(aboutDialog());
        QVERIFY(dialog);
        QCOMPARE(dialog->windowTitle(), QStringLiteral("About PICKER"));
        QCOMPARE(dialog->size(), QSize(600, 500));
        QCOMPARE(dialog->geometry().center(), window.geometry().center());
        QCOMPARE(dialog->findChild<QLabel *>("labelVersion")->text(), QStringLiteral("1.4"));
        QVERIFY(dialog->findChild<QLabel *>("labelMailTo")->text().contains("picker%20%281.4%29"));
        dialog->reject();
        QTRY_VERIFY(!dialog);

        host.setMainWidget(nullptr);
        host.showAppAbout();
        dialog = aboutDialog();
        QVERIFY(dialog);
        dialog->accept();
        QTRY_VERIFY(!dialog);
    }

private:
    QList<QUrl> _opened;
};

QTEST_MAIN(ApplicationTest)
#include "tst_application.moc"
