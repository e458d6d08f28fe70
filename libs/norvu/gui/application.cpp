// SPDX-License-Identifier: LGPL-3.0-or-later

#include "application.h"

#include <norvu/gui/aboutwidget.h>
#include <norvu/gui/splashscreen.h>

#include <tellarix/core/environment.h>

#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QFile>
#include <QIcon>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPixmap>
#include <QUrl>

namespace Norvu {
namespace Gui {

namespace {

const QSize AboutSize(600, 500);

QString applicationName()
{
    return QString::fromStdString(Tellarix::Gui::Application::Instance()->name());
}

/** The menu that a host has laid out itself, or a new one at the end of the bar. */
QMenu *helpMenu(QMenuBar *menuBar)
{
    const QString objectName = QStringLiteral("menuHelp");
    auto *menu = menuBar->findChild<QMenu *>(objectName);
    if (menu)
        return menu;

    menu = new QMenu(menuBar);
    menu->setObjectName(objectName);
    menu->setTitle(Application::tr("&Help"));
    menuBar->addAction(menu->menuAction());
    return menu;
}

} // namespace

Application::Application(int &argc, char **argv, int flags, Tellarix::Gui::Application::Type type,
                         const char *splashImage, const char *iconFile, const char *title,
                         const char *subtitle, const char *version)
    : Tellarix::Gui::Application(argc, argv, flags & ~ShowSplash, type), _iconFile(iconFile),
      _title(title), _subtitle(subtitle), _version(version)
{
    // Terminal programs have no windows.
    if ((flags & ShowSplash) && qobject_cast<QApplication *>(QCoreApplication::instance()))
        showSplash(splashImage, iconFile, title, subtitle, version);
}

Application::~Application() = default;

void Application::showSplash(const char *splashImage, const char *iconFile, const char *title,
                             const char *subtitle, const char *version)
{
    const QPixmap picture{QString(splashImage)};
    _splash = new SplashScreen(picture, iconFile, version, title, subtitle);
    connect(_splash, SIGNAL(destroyed(QObject *)), this, SLOT(objectDestroyed(QObject *)));
    _splash->setAttribute(Qt::WA_DeleteOnClose);
    _splash->show();
    _splash->repaint();
    QCoreApplication::processEvents();
}

void Application::showMessage(const char *msg)
{
    if (_splash)
        _splash->setMessage(QString(msg));
}

bool Application::init()
{
    return Tellarix::Gui::Application::init();
}

void Application::setMainWidget(QWidget *w)
{
    _mainWidget = w;
    if (auto *window = qobject_cast<QMainWindow *>(w))
        addAboutAction(window);
    Tellarix::Gui::Application::setMainWidget(w);
}

void Application::addAboutAction(QMainWindow *window)
{
    QAction *action =
        helpMenu(window->menuBar())->addAction(tr("About %1").arg(applicationName().toUpper()));
    connect(action, SIGNAL(triggered()), this, SLOT(showAppAbout()));
    if (_iconFile.isEmpty())
        return;

    const QIcon icon{QPixmap(_iconFile)};
    window->setWindowIcon(icon);
    action->setIcon(icon);
}

QString Application::docUrl() const
{
    return QStringLiteral("%1/doc/%2/html/index.html")
        .arg(QString(Tellarix::Environment::Instance()->shareDirectory()))
        .arg(QString::fromStdString(name()));
}

void Application::showAppHelp()
{
    const QString path = docUrl();
    if (QFile::exists(path)) {
        QDesktopServices::openUrl(QUrl(QStringLiteral("file://%1").arg(path)));
        return;
    }

    const QString program = QString::fromStdString(name());
    QMessageBox::information(
        nullptr, QStringLiteral("%1 help").arg(program),
        tr("Help for %1 is not available. Missing file: %2").arg(program, path), QMessageBox::Ok);
}

void Application::showAppAbout(int tabIndex)
{
    auto *dialog = new AboutWidget(nullptr, Qt::WindowFlags());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(tr("About %1").arg(applicationName().toUpper()));
    dialog->setWindowModality(Qt::ApplicationModal);
    dialog->resize(AboutSize);
    if (_mainWidget) {
        QRect geometry = dialog->geometry();
        geometry.moveCenter(_mainWidget->geometry().center());
        dialog->setGeometry(geometry);
    }
    if (!_iconFile.isEmpty())
        dialog->setWindowIcon(QIcon(QPixmap(_iconFile)));
    dialog->setVersion(_version);
    dialog->setFrameworkVersion(QString(frameworkVersion()));
    dialog->show(tabIndex);
}

void Application::showAppAbout()
{
    showAppAbout(0);
}

void Application::objectDestroyed(QObject *o)
{
    if (o == _splash)
        _splash = nullptr;
}

} // namespace Gui
} // namespace Norvu
