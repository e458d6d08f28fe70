// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/application.h>
#include <tellarix/qt/api.h>

#include <QObject>

#include <memory>
#include <string>
#include <vector>

class QCoreApplication;
class QSplashScreen;
class QWidget;

namespace Tellarix {
namespace Gui {

class Scheme;

/**
 * A program with windows: a QObject around a QApplication, with a main widget and a scheme.
 *
 * Makes the QApplication unless one exists already, so that tests and plug-ins can bring their own.
 */
class TELLARIX_GUI_API Application : public QObject, public Client::Application
{
    Q_OBJECT

public:
    enum Type
    {
        Console, /**< QCoreApplication, no windows */
        Desktop, /**< QApplication */
    };

    /** Bits of the constructor's flags. */
    enum Flag
    {
        ShowSplash = 0x01,        /**< shows the splash picture of splashImagePath() */
        OfferDatabase = 0x02,     /**< offers --database */
        OfferRecordStream = 0x04, /**< offers --record-stream */
        DefaultFlags = ShowSplash | OfferDatabase | OfferRecordStream,
    };

    Application(int &argc, char **argv, int flags = DefaultFlags, Type type = Desktop);
    ~Application() override;

    static Application *Instance();

    int flags() const { return _flags; }
    Type type() const { return _type; }
    /** Colours, sizes and pens of all windows. */
    Scheme &scheme();
    const Scheme &scheme() const;
    QWidget *mainWidget() const { return _mainWidget; }

    void showMessage(const char *message) override;
    void showWarning(const char *message) override;
    bool init() override;
    /**
     * Shows the main widget and runs the event loop until the widget is closed or exit() is
     * called. Without a main widget only a Console application has something to wait for.
     */
    bool run() override;
    void done() override;
    void exit(int returnCode) override;

protected:
    void createCommandLineDescription() override;
    bool initConfiguration() override;
    // The next four add nothing: they stand here so that all operations that a program overrides
    // follow each other in one table, in the order of the run sequence.
    bool initSubscriptions() override;
    void schemaValidationNames(std::vector<std::string> &modules) const override;
    bool validateParameters() override;
    void handleInitializationError(int stage) override;
    void handleInterrupt(int signal) override;

public:
    /** Picture of the framework's own splash: "NAME/splash.png" in the share directory. */
    virtual QString splashImagePath() const;
    /** Takes the main window, not its ownership; it is shown by run() and ends the program when
     *  it is closed. Null takes it away. */
    virtual void setMainWidget(QWidget *widget);

signals:
    /** SIGINT or SIGTERM arrived, before the event loop is asked to end. */
    void interruptRequested(int signal);
    /** The scheme follows another palette now; views read their colours again. */
    void schemeChanged();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void showSplash();
    void quitBehindMainWidget();

    std::unique_ptr<QCoreApplication> _application;
    std::unique_ptr<Scheme> _scheme;
    std::unique_ptr<QSplashScreen> _splash;
    QWidget *_mainWidget{nullptr};
    QMetaObject::Connection _mainWidgetConnection;
    int _flags;
    Type _type;
};

} // namespace Gui
} // namespace Tellarix
