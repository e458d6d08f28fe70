// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/application.h>

#include <tellarix/core/environment.h>
#include <tellarix/qt/scheme.h>

#include <QApplication>
#include <QEvent>
#include <QMessageBox>
#include <QPixmap>
#include <QPointer>
#include <QSplashScreen>
#include <QTimer>

namespace Tellarix {
namespace Gui {

namespace {

std::unique_ptr<QCoreApplication> makeApplication(int &argc, char **argv, Application::Type type)
{
    if (QCoreApplication::instance() != nullptr)
        return nullptr;
    if (type == Application::Console)
        return std::make_unique<QCoreApplication>(argc, argv);

    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    return std::make_unique<QApplication>(argc, argv);
}

bool hasWindows()
{
    return qobject_cast<QApplication *>(QCoreApplication::instance()) != nullptr;
}

} // namespace

Application::Application(int &argc, char **argv, int flags, Type type)
    : Client::Application(argc, argv), _application(makeApplication(argc, argv, type)),
      _scheme(std::make_unique<Scheme>()), _flags(flags), _type(type)
{
    if (_application)
        QCoreApplication::setApplicationName(QString::fromStdString(name()));
    QCoreApplication::instance()->installEventFilter(this);
}

Application::~Application()
{
    disconnect(_mainWidgetConnection);
}

Application *Application::Instance()
{
    return dynamic_cast<Application *>(System::Application::Instance());
}

Scheme &Application::scheme()
{
    return *_scheme;
}

const Scheme &Application::scheme() const
{
    return *_scheme;
}

void Application::showMessage(const char *message)
{
    Client::Application::showMessage(message);
    if (_splash && _splash->isVisible())
        _splash->showMessage(QString::fromUtf8(message), Qt::AlignLeft | Qt::AlignBottom);
}

void Application::showWarning(const char *message)
{
    Client::Application::showWarning(message);
    if (_mainWidget == nullptr)
        return;

    // The main widget may go away, and the box with it, before it is answered.
    const QPointer<QMessageBox> box(
        new QMessageBox(QMessageBox::Warning, QString::fromStdString(name()),
                        QString::fromUtf8(message), QMessageBox::Ok, _mainWidget));
    box->exec();
    delete box;
}

bool Application::init()
{
    // Derived constructors may have set others since this one ran.
    if (_application) {
        QCoreApplication::setApplicationName(QString::fromStdString(name()));
        QCoreApplication::setApplicationVersion(QString::fromStdString(version()));
    }
    return Client::Application::init();
}

bool Application::run()
{
    if (isExitRequested())
        return true;

    if (_mainWidget != nullptr) {
        _mainWidget->show();
        if (_splash)
            _splash->finish(_mainWidget);
    } else if (_type != Console) {
        return true;
    }

    const int status = hasWindows() ? QApplication::exec() : QCoreApplication::exec();
    if (status != 0)
        setReturnCode(status);
    return true;
}

void Application::done()
{
    _splash.reset();
    Client::Application::done();
}

void Application::exit(int returnCode)
{
    Client::Application::exit(returnCode);
}

void Application::createCommandLineDescription()
{
    setDatabaseOffered((_flags & OfferDatabase) != 0);
    setRecordStreamOffered((_flags & OfferRecordStream) != 0);
    Client::Application::createCommandLineDescription();
}

bool Application::initConfiguration()
{
    // Behind the command line, so that --help and --version show no picture.
    showSplash();
    return Client::Application::initConfiguration();
}

bool Application::initSubscriptions()
{
    return Client::Application::initSubscriptions();
}

void Application::schemaValidationNames(std::vector<std::string> &modules) const
{
    Client::Application::schemaValidationNames(modules);
}

bool Application::validateParameters()
{
    return Client::Application::validateParameters();
}

void Application::handleInitializationError(int stage)
{
    Client::Application::handleInitializationError(stage);
}

void Application::handleInterrupt(int signal)
{
    emit interruptRequested(signal);
    Client::Application::handleInterrupt(signal);
}

QString Application::splashImagePath() const
{
    return QStringLiteral("%1/%2/splash.png")
        .arg(QString::fromUtf8(Environment::Instance()->shareDirectory()),
             QString::fromStdString(name()));
}

void Application::setMainWidget(QWidget *widget)
{
    if (widget == _mainWidget)
        return;
    if (_mainWidget != nullptr) {
        disconnect(_mainWidgetConnection);
        _mainWidget->removeEventFilter(this);
    }

    _mainWidget = widget;
    // With a main widget its end is what counts: a splash or dialog that closes before it is shown
    // must not end the program.
    if (hasWindows())
        QGuiApplication::setQuitOnLastWindowClosed(widget == nullptr);
    if (widget == nullptr)
        return;

    widget->installEventFilter(this);
    _mainWidgetConnection = connect(widget, &QObject::destroyed, this, [this] {
        _mainWidget = nullptr;
        QCoreApplication::exit(returnCode());
    });
}

bool Application::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == QCoreApplication::instance() &&
        event->type() == QEvent::ApplicationPaletteChange) {
        _scheme->setPalette(QGuiApplication::palette());
        emit schemeChanged();
    } else if (watched == _mainWidget && event->type() == QEvent::Close) {
        // The widget may refuse to close, which shows only when it has handled the event.
        QTimer::singleShot(0, this, &Application::quitBehindMainWidget);
    }
    return QObject::eventFilter(watched, event);
}

void Application::showSplash()
{
    if ((_flags & ShowSplash) == 0 || !hasWindows())
        return;
    const QPixmap picture(splashImagePath());
    if (picture.isNull())
        return;

    _splash = std::make_unique<QSplashScreen>(picture);
    _splash->show();
    QCoreApplication::processEvents();
}

void Application::quitBehindMainWidget()
{
    // Other windows, such as torn off panels, must not keep the program alive.
    if (_mainWidget != nullptr && !_mainWidget->isVisible())
        QCoreApplication::exit(returnCode());
}

} // namespace Gui
} // namespace Tellarix
