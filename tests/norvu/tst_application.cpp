// SPDX-License-Identifier: LGPL-3.0-or-later

#include "answer.h"
#include "ink.h"
#include "rowname.h"

#include <norvu/gui/aboutwidget.h>
#include <norvu/gui/application.h>
#include <norvu/gui/splashscreen.h>
#include <tellarix/core/environment.h>

#include <QDesktopServices>
#include <QImage>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QtTest>

using Norvu::Gui::AboutWidget;
using Norvu::Gui::Application;
using Norvu::Gui::SplashScreen;

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

const QColor Teal(0, 137, 161);

QPixmap background(const QColor &color)
{
    QPixmap result(500, 328);
    result.fill(color);
    return result;
}

QImage pictureOf(const SplashScreen &splash)
{
    return splash.pixmap().toImage().convertToFormat(QImage::Format_RGB32);
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

private slots:
    void placesTitleBesideIcon()
    {
        QTemporaryDir folder;
        QFile file(folder.filePath("icon.svg"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 8 8\">"
                   "<rect width=\"8\" height=\"8\" fill=\"#ff0000\"/></svg>");
        file.close();

        const QByteArray path = file.fileName().toUtf8();
        for (const char *icon : {static_cast<const char *>(nullptr), path.constData()}) {
            const SplashScreen splash(background(Qt::black), icon, "1", "HIM", "Subtitle");
            const QImage image = pictureOf(splash);
            QCOMPARE(Ink::rectOfColor(image, Qt::red), icon ? QRect(13, 13, 24, 24) : QRect());
            const QRect title =
                Ink::rectOtherThan(image, QRect(icon ? 40 : 0, 0, 350, 50), Qt::white);
            // a letter stands a little right of where its line begins
            QVERIFY(qAbs(title.left() - (icon ? 53 : 16)) <= 3);
            QVERIFY(qAbs(title.center().y() - 25) <= 3);
            const QRect subtitle = Ink::rectOtherThan(image, QRect(0, 50, 500, 22), Teal);
            QVERIFY(subtitle.left() >= 13 && subtitle.left() <= 16);
            QVERIFY(subtitle.top() > 50 && subtitle.bottom() < 71);
        }
    }

    void keepsTextsApart()
    {
        const SplashScreen splash(background(Qt::black), nullptr, "12.10.3", "Norvu Jpqgy",
                                  nullptr);
        const QImage image = pictureOf(splash);
        // descenders of the title end inside of the header
        QVERIFY(Ink::rectOtherThan(image, QRect(0, 47, 400, 3), Qt::white).isEmpty());
        // a title that is too long ends before the versions
        const SplashScreen wordy(background(Qt::black), nullptr, "1",
                                 "Strong motion of all regions", nullptr);
        QVERIFY(Ink::rectOtherThan(pictureOf(wordy), QRect(320, 0, 80, 50), Qt::white).isEmpty());
    }

    void showsMessageOnStrip()
    {
        SplashScreen splash(background(Qt::black), nullptr, "1", nullptr, nullptr);
        splash.show();
        const QImage before = Ink::picture(splash);
        splash.setMessage(QStringLiteral("Reading stations"));
        const QRect changed = Ink::rectOfDifference(before, Ink::picture(splash));
        QVERIFY(!changed.isEmpty());
        QVERIFY(QRect(QPoint(13, 327), QPoint(486, 348)).contains(changed));

        SplashScreen bare(QPixmap(), nullptr, "1", "Title", nullptr);
        bare.show();
        bare.setMessage(QStringLiteral("Reading stations"));
    }

    void namesVersionInMailSubject()
    {
        const std::tuple<const char *, QString, QString> rows[] = {
            {"one character", "7", "About%20norvu%20application"},
            {"version", "1.2", "About%20norvu%20application%20%281.2%29"},
            {"marks of a URL", "1&2?", "About%20norvu%20application%20%281%262%3F%29"}};
        for (const auto &[name, version, subject] : rows) {
            const RowName shown(name);
            AboutWidget dialog;
            dialog.setAttribute(Qt::WA_DeleteOnClose, false);
            dialog.setVersion(version);
            dialog.show();
            QCOMPARE(dialog.findChild<QLabel *>(QStringLiteral("labelMailTo"))->text(),
                     QStringLiteral(
                         "<a href=\"mailto:norvu@example.org?subject=%1\">norvu@example.org</a>")
                         .arg(subject));
        }
    }

    void choosesTab()
    {
        AboutWidget dialog;
        dialog.setAttribute(Qt::WA_DeleteOnClose, false);
        auto *tabs = dialog.findChild<QTabWidget *>(QStringLiteral("tabWidget"));
        tabs->addTab(new QWidget, QStringLiteral("Licence"));
        tabs->addTab(new QWidget, QStringLiteral("Thanks"));
        tabs->setCurrentIndex(1);
        // The first one stands for the current one, as does what is out of range.
        const QVector<QPair<int, int>> asked{{0, 1}, {3, 1}, {2, 2}};
        for (const auto &[index, current] : asked) {
            dialog.show(index);
            QCOMPARE(tabs->currentIndex(), current);
        }
    }
};

QTEST_MAIN(ApplicationTest)
#include "tst_application.moc"
