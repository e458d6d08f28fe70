// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/timewindow.h>

#include <QAbstractButton>
#include <QObject>
#include <QPointer>
#include <QTimer>

class QAction;

namespace Norvu {
namespace Gui {
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class StreamStates;

/** What a user has done to a window that follows the present. */
enum class FollowChange
{
    None,
    Zoom, /**< another length, which goes on following */
    Leave /**< a look back */
};

/**
 * Tells a zoom from a look back.
 * @param followed  what was shown as a step of following
 * @param visible   what is shown now
 */
FollowChange followChange(const Tellarix::Core::TimeWindow &followed,
                          const Tellarix::Core::TimeWindow &visible);

/**
 * Has a view end at the present and go along with it, until the user looks back; a notice tells so
 * then, and leads to the present again, as the key End does.
 */
class LiveFollow : public QObject
{
    Q_OBJECT

public:
    /** @param view  owns it */
    LiveFollow(Norvu::Gui::TraceView *view, const StreamStates *states);
    ~LiveFollow() override;

    /** "Follow the present", enabled while there is something to follow. */
    QAction *action() const { return _action; }
    /** Tells that following is paused; hidden otherwise. To be put into a layout, which owns it. */
    QAbstractButton *notice() const { return _notice; }

    bool isFollowing() const { return _isFollowing; }
    /** Begins to follow with the last @p length. */
    void start(Tellarix::Core::TimeSpan length);
    /** Whether anything comes in; without it there is nothing to follow, nor any pause. */
    void setLive(bool live);

public slots:
    /** Goes back to the present, with the length that is shown. */
    void follow();

signals:
    /** It follows, or no longer does. */
    void changed();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private slots:
    void step();
    void noticeUser();
    void toggle(bool on);

private:
    void show(const Tellarix::Core::TimeWindow &window);
    void pause();
    void setFollowing(bool following);
    double pixelSeconds() const;

    Norvu::Gui::TraceView *_view;
    const StreamStates *_states;
    QAction *_action;
    QPointer<QAbstractButton> _notice;
    QTimer _steps;
    QTimer _look; /**< many changes at once are one */
    bool _isLive{false};
    bool _isFollowing{false};
    Tellarix::Core::TimeWindow _shown; /**< by the last step */
    int _width{0};                     /**< of the time scale then */
};

} // namespace Workbench
