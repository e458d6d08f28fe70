// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>

#include <QBasicTimer>
#include <QObject>
#include <QRegion>

class QWidget;

namespace Tellarix {
namespace Gui {

/** Repaints areas of a widget at once, and those that follow soon together a bit later. */
class TELLARIX_GUI_API PacedUpdate : public QObject
{
public:
    /** @param interval  least time between repaints in ms */
    PacedUpdate(QWidget *widget, int interval);

    void add(const QRect &area);
    /** Repaints now what waits. */
    void flush();

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    void paint();

    QWidget *_widget;
    int _interval;
    QBasicTimer _timer;
    QRegion _area; /**< to be painted when the timer ends */
};

} // namespace Gui
} // namespace Tellarix
