// SPDX-License-Identifier: LGPL-3.0-or-later

#include "viewhistory.h"

#include <norvu/gui/traceview.h>

#include <QAction>

#include <algorithm>
#include <cmath>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr int RestMilliseconds = 400;
constexpr int MostWindows = 100;
constexpr double UnmovedShare = 0.05;

} // namespace

bool isOtherView(const Core::TimeWindow &before, const Core::TimeWindow &now)
{
    const double length = std::max(before.length().length(), now.length().length());
    const auto isFar = [length](const Core::Time &a, const Core::Time &b) {
        return std::abs((a - b).length()) > UnmovedShare * length;
    };
    return isFar(before.startTime(), now.startTime()) || isFar(before.endTime(), now.endTime());
}

ViewHistory::ViewHistory(Norvu::Gui::TraceView *view)
    : QObject(view), _view(view), _back(new QAction(tr("View &before"), this)),
      _forward(new QAction(tr("View af&ter"), this))
{
    _back->setShortcut(tr("Alt+Left"));
    _forward->setShortcut(tr("Alt+Right"));
    _rest.setSingleShot(true);
    _rest.setInterval(RestMilliseconds);
    connect(_back, SIGNAL(triggered()), this, SLOT(goBack()));
    connect(_forward, SIGNAL(triggered()), this, SLOT(goForward()));
    connect(view, SIGNAL(displayChanged(double, double, double)), this, SLOT(wait()));
    connect(&_rest, SIGNAL(timeout()), this, SLOT(keep()));
    updateActions();
}

void ViewHistory::wait()
{
    if (_view->count() == 0 || _isPaused)
        return;
    _rest.start();
    updateActions();
}

void ViewHistory::keep()
{
    _rest.stop();
    const Core::TimeWindow window = _view->visibleTimeWindow();
    if (_view->count() == 0 || !window.valid() ||
        (_current >= 0 && !isOtherView(_windows[_current], window)))
        return;
    _windows.resize(_current + 1);
    _windows.append(window);
    if (_windows.size() > MostWindows)
        _windows.removeFirst();
    _current = _windows.size() - 1;
    updateActions();
}

void ViewHistory::goBack()
{
    keep();
    show(_current - 1);
}

void ViewHistory::goForward()
{
    keep();
    show(_current + 1);
}

void ViewHistory::show(int index)
{
    if (index < 0 || index >= _windows.size())
        return;
    _current = index;
    _view->setVisibleTimeWindow(_windows[index]);
    updateActions();
}

void ViewHistory::clear()
{
    _rest.stop();
    _windows.clear();
    _current = -1;
    updateActions();
}

void ViewHistory::updateActions()
{
    // A window in which the view hasn't come to rest yet can be left as well.
    const bool isElsewhere = _current == 0 && isOtherView(_windows[0], _view->visibleTimeWindow());
    _back->setEnabled(_current > 0 || isElsewhere);
    _forward->setEnabled(_current + 1 < _windows.size());
}

} // namespace Workbench
