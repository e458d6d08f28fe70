// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <tellarix/core/time.h>

#include <QList>
#include <QPointer>
#include <QTimer>
#include <QWidget>

class QCheckBox;
class QComboBox;
class QFrame;
class QLabel;
class QPropertyAnimation;
class QSlider;
class QToolButton;
class QVBoxLayout;

namespace Norvu {
namespace Gui {

class CustomWidgetMenu;

/**
 * Plays a stretch of time over a map or another view: a bar with slider and buttons, and large
 * labels of the time.
 *
 * It shows no pictures itself. Once a second it moves on by a step, whose length is the speed, and
 * asks its owner to show the state of the world at absoluteTime(). Position 0 is the reference
 * time, as a rule the origin time of an event. Without a valid one there are no labels, no way to
 * the present, and the settings have no entries for them.
 *
 * A while after the pointer has left it the player slides away, and is hidden then. A hidden widget
 * is told nothing of the pointer: its owner calls startForwardAnimation(). Settings are read by the
 * constructor and written by the destructor. A player that is to hide itself by its stored settings
 * stays hidden until its owner shows it; any other is shown by its constructor.
 */
class NORVU_GUI_API VideoPlayer : public QWidget
{
    Q_OBJECT

public:
    /** What the relative label tells; in the order of the selector's entries. */
    enum RelativeTimeMode
    {
        Disabled,   /**< nothing */
        OriginTime, /**< how long after the reference time the position is */
        CurrentTime /**< how long ago, or ahead of the present, the position is */
    };

    explicit VideoPlayer(QWidget *parent = nullptr);
    ~VideoPlayer() override;

    /** Sets the length of the timeline; the position stays, even where it is beyond the end.
     *  @return false, with nothing changed, if that is a negative number of seconds */
    bool setMaxTime(const Tellarix::Core::TimeSpan &maxTime);
    /** Sets the time of position 0, and shows or hides all that needs one. */
    void setReferenceTime(const Tellarix::Core::Time &time);
    /** Chooses what the relative label tells, and shows it even without a reference time; the
     *  selector follows. */
    void setRelativeTimeMode(RelativeTimeMode mode);

    /** The position on the timeline. */
    const Tellarix::Core::TimeSpan &currentStep() const { return _currentStep; }
    /** The reference time plus the position. */
    Tellarix::Core::Time absoluteTime() const { return _referenceTime + _currentStep; }

    /** The speeds; the user role of an entry is the time of one step in milliseconds. */
    QComboBox *speedSelection() { return _speed; }
    void setAutoHideEnabled(bool enabled);
    bool isAutoHideEnabled() const;
    /** Height of the bar without the labels above. */
    int controlsHeight() const;

    /** Writes times and position into the labels. */
    void updateView();

public slots:
    /** Plays; the first step is done at once. */
    void start();
    /** Stops playing; emits playerStopped() even when nothing was played, so that a slot of that
     *  signal must not call it. */
    void pause();
    /** Pauses at position 0. */
    void reset();
    /** Slides down by its own height and is hidden then. */
    void startBackwardAnimation();
    /** Shows the player where it stood before it slid away; nothing moves. */
    void startForwardAnimation();
    void restoreSettings();
    void saveSettings();
    /** Takes the mode of an entry of its selector; other numbers are ignored. */
    void applyRelativeTimeMode(int index);
    /** Takes the step of an entry of the speeds, for the next step; others are ignored. */
    void applySpeed(int index);
    /** Moves to a value of the slider, in seconds on timelines that it can hold. */
    void applySliderValue(int value);
    /** Slides away in three seconds, if it is to hide itself and the settings are not open. */
    void autoHide();
    /** Plays from the present on, from the start if that lies ahead. */
    void followCurrentTime();
    void hideControls(bool hide = true);
    /** The settings were closed. */
    void hideSettingsRequested();
    void nextStep();
    /** Opens the settings, and returns when they are closed. */
    void showSettings();
    void toggleAbsoluteTimeLabel();
    void togglePlayPause();
    void updateRelativeTime();
    /** Moves to a value of the slider without telling. */
    void updateView(int value);

signals:
    /** The owner has to show the state at absoluteTime(). */
    void nextFrameRequested();
    void playerStarted();
    void playerStopped();

protected:
    void enterEvent(QEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void createLabels(QVBoxLayout *layout);
    void createControls();
    void createSettings();
    void updatePlayButton();
    void updateElapsedTime();
    int64_t secondsPerSliderStep() const;
    void showPosition();
    void forgetHideTimer();
    void standUp();

    QSlider *_slider;
    QToolButton *_playButton;
    QToolButton *_followButton;
    QToolButton *_settingsButton;
    CustomWidgetMenu *_settings;
    QLabel *_elapsedLabel;
    QCheckBox *_repeat;
    QCheckBox *_showAbsoluteTime;
    QCheckBox *_autoHide;
    QComboBox *_speed;
    QComboBox *_relativeMode;
    QLabel *_absoluteLabel;
    QLabel *_relativeLabel;

    Tellarix::Core::TimeSpan _maxTime;
    Tellarix::Core::TimeSpan _currentStep;
    Tellarix::Core::TimeSpan _stepSize{1.0};
    int32_t _state{0}; /**< 1 while playing */
    QTimer _playTimer{this};
    Tellarix::Core::Time _referenceTime;
    RelativeTimeMode _relativeTimeMode{Disabled};
    QTimer _relativeTimer{this};

    QPropertyAnimation *_animation;
    QFrame *_controls;
    QPointer<QTimer> _hideTimer;        /**< the last one; null when none runs */
    QList<QWidget *> _referenceWidgets; /**< what makes no sense without a reference time */
    bool _slidesAway{false};            /**< and has not been put back yet */
};

} // namespace Gui
} // namespace Norvu
