// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QSplashScreen>
#include <QString>

namespace Norvu {
namespace Gui {

/**
 * The start-up picture of an application: a header with icon, title and versions above a picture,
 * a strip for progress messages and a foot with the maker's logo.
 *
 * It stays until it is closed: a click does nothing.
 */
class NORVU_GUI_API SplashScreen : public QSplashScreen
{
    Q_OBJECT

public:
    /**
     * Texts are UTF-8; those that are null are left out, except @p version.
     *
     * @param pixmap    the picture; 328 pixels high, since strip and foot have fixed places on it
     * @param icon      path of a vector image
     * @param version   version of the application
     * @param title     large text of the header
     * @param subtitle  line on the coloured bar below the header
     */
    SplashScreen(const QPixmap &pixmap, const char *icon, const char *version, const char *title,
                 const char *subtitle);
    ~SplashScreen() override;

    const QString &message() const { return _message; }

public slots:
    /** Shows a progress message at once. */
    void setMessage(const QString &msg);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void drawContents(QPainter *painter) override;

private:
    QString _message;
};

} // namespace Gui
} // namespace Norvu
