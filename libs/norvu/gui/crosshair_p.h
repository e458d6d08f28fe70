// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QPoint>
#include <QWidget>

namespace Tellarix {
namespace Gui {
class TimeScale;
} // namespace Gui
} // namespace Tellarix

namespace Norvu {
namespace Gui {

class Trace;

/** Two lines through the pointer over the rows of a view, with the time and the amplitude there. */
class Crosshair : public QWidget
{
    Q_OBJECT

public:
    /** @param timeScale  tells times; borrowed
     *  @param view       owns it; the lines reach as far as it does */
    Crosshair(const Tellarix::Gui::TimeScale *timeScale, QWidget *view);

    bool isShown() const { return _isShown; }
    void setShown(bool show);
    /** Goes to a position on the traces of a row. */
    void track(const QWidget *traces, const QPoint &position);
    /** Goes away until the pointer comes back. */
    void leave();
    /** Leaves a row that is going away. */
    void forget(const Trace *row);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString timeText() const;
    QString valueText() const;

    const Tellarix::Gui::TimeScale *_timeScale;
    QPoint _position{-1, -1};
    const Trace *_row{nullptr};
    bool _isShown{false};
};

} // namespace Gui
} // namespace Norvu
