// SPDX-License-Identifier: LGPL-3.0-or-later

#include "livefollow.h"

#include "bench/streamstates.h"

#include <norvu/gui/traceview.h>
#include <tellarix/qt/records/timescale.h>

#include <QAction>
#include <QKeyEvent>
#include <QToolButton>

#include <algorithm>
#include <cmath>

using namespace Tellarix;
using Norvu::Gui::TraceView;

namespace Workbench {

namespace {

/** Times between two steps, in ms; windows of hours move by a pixel now and then. */
constexpr int ShortestStep = 200;
constexpr int LongestStep = 1000;
/** Differences in parts of the window that come from rounding. */
constexpr double Tolerance = 0.004;
/** A turn of the wheel or a key changes the length by less; what changes it by more is a leap. */
constexpr double LargestZoom = 2.6;

} // namespace

FollowChange followChange(const Core::TimeWindow &followed, const Core::TimeWindow &visible)
{
    const double before = followed.length().length();
    const double now = visible.length().length();
    const double behind = (followed.endTime() - visible.endTime()).length();
    const bool isZoom = std::abs(now - before) > Tolerance * before;
    const bool isStep = now < LargestZoom * before && before < LargestZoom * now;
    if (isZoom && (isStep || behind <= Tolerance * now))
        return FollowChange::Zoom;
    return behind > Tolerance * now ? FollowChange::Leave : FollowChange::None;
}

LiveFollow::LiveFollow(TraceView *view, const StreamStates *states)
    : QObject(view), _view(view), _states(states),
      _action(new QAction(tr("&Follow the present"), this)), _notice(new QToolButton)
{
    _action->setCheckable(true);
    _action->setEnabled(false);
    _action->setShortcut(tr("Ctrl+End"));
    _notice->setFocusPolicy(Qt::NoFocus);
    static_cast<QToolButton *>(_notice.data())->setAutoRaise(true);
    _notice->hide();
    _look.setSingleShot(true);
    connect(_action, SIGNAL(triggered(bool)), this, SLOT(toggle(bool)));
    connect(_notice, SIGNAL(clicked()), this, SLOT(follow()));
    connect(view, SIGNAL(displayChanged(double, double, double)), &_look, SLOT(start()));
    connect(&_look, SIGNAL(timeout()), this, SLOT(noticeUser()));
    connect(&_steps, SIGNAL(timeout()), this, SLOT(step()));
    view->installEventFilter(this);
}

LiveFollow::~LiveFollow()
{
    if (_notice && !_notice->parent())
        delete _notice;
}

void LiveFollow::setLive(bool live)
{
    if (live == _isLive)
        return;
    _isLive = live;
    _action->setEnabled(live);
    if (!live)
        setFollowing(false);
    if (!live && _notice)
        _notice->hide();
}

void LiveFollow::start(Core::TimeSpan length)
{
    if (!_isLive)
        return;
    setFollowing(true);
    const Core::Time now = _states->now();
    show({now - length, now});
}

void LiveFollow::follow()
{
    start(_view->visibleTimeWindow().length());
}

void LiveFollow::toggle(bool on)
{
    on ? follow() : pause();
}

void LiveFollow::pause()
{
    setFollowing(false);
    if (!_notice)
        return;
    _notice->setText(
        tr("Paused at %1 – End follows again").arg(_states->now().toString("%H:%M:%S").c_str()));
    _notice->show();
}

void LiveFollow::setFollowing(bool following)
{
    _action->setChecked(following);
    if (following && _notice)
        _notice->hide();
    if (following == _isFollowing)
        return;
    _isFollowing = following;
    following ? _steps.start(ShortestStep) : _steps.stop();
    emit changed();
}

double LiveFollow::pixelSeconds() const
{
    return _view->visibleTimeWindow().length().length() / std::max(1, _view->timeScale()->width());
}

void LiveFollow::show(const Core::TimeWindow &window)
{
    _view->setVisibleTimeWindow(window);
    _shown = _view->visibleTimeWindow();
    _width = _view->timeScale()->width();
    const int milliseconds = std::clamp(static_cast<int>(std::min(1E6, 1000 * pixelSeconds())),
                                        ShortestStep, LongestStep);
    if (_isFollowing && milliseconds != _steps.interval())
        _steps.setInterval(milliseconds);
}

/** Moves by whole pixels, so that traces keep their shape. */
void LiveFollow::step()
{
    if (!_view->isVisible() || _view->window()->isMinimized())
        return;
    noticeUser();
    if (!_isFollowing)
        return;
    const double pixel = pixelSeconds();
    const double pixels = std::floor((_states->now() - _shown.endTime()).length() / pixel);
    const Core::TimeSpan way(pixels * pixel);
    if (std::abs(pixels) >= 1)
        show({_shown.startTime() + way, _shown.endTime() + way});
}

/** Another width of the window isn't the user's look back. */
void LiveFollow::noticeUser()
{
    _look.stop();
    if (!_isFollowing)
        return;
    const Core::TimeWindow visible = _view->visibleTimeWindow();
    if (_width != _view->timeScale()->width()) {
        start(visible.length());
        return;
    }
    switch (followChange(_shown, visible)) {
    case FollowChange::None:
        break;
    case FollowChange::Zoom:
        start(visible.length());
        break;
    case FollowChange::Leave:
        pause();
        break;
    }
}

/** While it follows, End keeps leading to the last row. */
bool LiveFollow::eventFilter(QObject *, QEvent *event)
{
    if (event->type() != QEvent::KeyPress || !_isLive || _isFollowing)
        return false;
    const auto *key = static_cast<QKeyEvent *>(event);
    if (key->key() != Qt::Key_End || key->modifiers() != Qt::NoModifier)
        return false;
    follow();
    return true;
}

} // namespace Workbench
