// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/timewindow.h>

#include <QObject>
#include <QTimer>
#include <QVector>

class QAction;

namespace Norvu {
namespace Gui {
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

/** Which windows a view has shown, with a way back and forward. A window counts once the view has
 *  come to rest in it, so that many small steps are one. */
class ViewHistory : public QObject
{
    Q_OBJECT

public:
    /** @param view  owns the history, and gets its actions */
    explicit ViewHistory(Norvu::Gui::TraceView *view);

    QAction *backAction() const { return _back; }
    QAction *forwardAction() const { return _forward; }

    /** Windows that go along with the present by themselves are no places to come back to. */
    void setPaused(bool paused) { _isPaused = paused; }

public slots:
    /** Keeps the window that is shown now, before the view leaps elsewhere. */
    void keep();
    void goBack();
    void goForward();
    void clear();

private slots:
    void wait();

private:
    void show(int index);
    void updateActions();

    Norvu::Gui::TraceView *_view;
    QAction *_back;
    QAction *_forward;
    QTimer _rest;
    QVector<Tellarix::Core::TimeWindow> _windows;
    int _current{-1};
    bool _isPaused{false};
};

/** Whether @p now is another view than @p before, rather than the same one in a window whose width
 *  is a little different. */
bool isOtherView(const Tellarix::Core::TimeWindow &before, const Tellarix::Core::TimeWindow &now);

} // namespace Workbench
