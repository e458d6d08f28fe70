// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <tellarix/qt/application.h>

#include <QString>

class QMainWindow;

namespace Norvu {
namespace Gui {

class SplashScreen;

/**
 * Base of desktop applications: adds a splash screen, a Help menu with an About dialog, and the
 * way to the installed documentation to the framework's application.
 *
 * The splash is on screen as soon as the constructor returns; the application closes it, through
 * splashScreen(), when its main window is up.
 */
class NORVU_GUI_API Application : public Tellarix::Gui::Application
{
    Q_OBJECT

public:
    /**
     * All texts are UTF-8 and may be null.
     *
     * @param flags        features of the framework; ShowSplash asks for the splash of this class
     * @param splashImage  path of the picture on the splash
     * @param iconFile     path of a vector image: icon of the splash, main window and About dialog
     * @param title        large text on the splash
     * @param subtitle     line below it
     * @param version      version of the application
     */
    Application(int &argc, char **argv, int flags, Tellarix::Gui::Application::Type type,
                const char *splashImage, const char *iconFile, const char *title,
                const char *subtitle, const char *version);
    ~Application() override;

    /** Shows a progress message on the splash; without a splash it is dropped. */
    void showMessage(const char *msg) override;
    bool init() override;
    /** Takes the main widget; a main window also gets an About entry in its Help menu. */
    void setMainWidget(QWidget *w) override;
    /** Path of the first page of the documentation. */
    virtual QString docUrl() const;

    /** The splash, null without one and once it is closed. */
    SplashScreen *splashScreen() const { return _splash; }

public slots:
    /** Opens the documentation, or tells which file is missing. */
    void showAppHelp();
    /** Shows the About dialog, with this tab in front, above the main widget. */
    void showAppAbout(int tabIndex);
    void showAppAbout();
    void objectDestroyed(QObject *o);

private:
    void showSplash(const char *splashImage, const char *iconFile, const char *title,
                    const char *subtitle, const char *version);
    void addAboutAction(QMainWindow *window);

    SplashScreen *_splash{nullptr};
    QWidget *_mainWidget{nullptr};
    QString _iconFile;
    QString _title;
    QString _subtitle;
    QString _version;
};

} // namespace Gui
} // namespace Norvu
