// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/videoplayer.h>
#include <norvu/gui/videoplayer_p.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLayout>
#include <QSignalBlocker>
#include <QSlider>

#include <algorithm>
#include <cstdio>
#include <limits>

using namespace Tellarix;

namespace Norvu {
namespace Gui {

namespace {

constexpr int TickMilliseconds = 1000;
constexpr int Paused = 0;
constexpr int Playing = 1;

Core::Time (*Clock)() = nullptr;

/** Hours hold the days too, more than an int takes on the longest spans. */
struct ElapsedFields
{
    explicit ElapsedFields(const Core::TimeSpan &span)
    {
        int days = 0;
        int hoursOfDay = 0;
        span.elapsedTime(&days, &hoursOfDay, &minutes, &seconds);
        hours = days * 24LL + hoursOfDay;
    }

    long long hours;
    int minutes;
    int seconds;
};

QString elapsedText(const Core::TimeSpan &position, const Core::TimeSpan &end)
{
    const ElapsedFields now(position);
    const ElapsedFields all(end);
    char text[64];
    if (now.hours < 1) {
        std::snprintf(text, sizeof text, "%d:%02d / %lld:%02d:%02d", now.minutes, now.seconds,
                      all.hours, all.minutes, all.seconds);
    } else {
        std::snprintf(text, sizeof text, "%lld:%02d:%02d / %lld:%02d:%02d", now.hours, now.minutes,
                      now.seconds, all.hours, all.minutes, all.seconds);
    }
    return QString::fromLatin1(text);
}

/** The two largest units of a span; empty below a second. */
QString spanText(const Core::TimeSpan &span)
{
    const qint64 s = span.seconds();
    if (s >= 86400)
        return QStringLiteral("%1 days and %2 hours").arg(s / 86400).arg(s % 86400 / 3600);
    if (s >= 3600)
        return QStringLiteral("%1 hours and %2 minutes").arg(s / 3600).arg(s % 3600 / 60);
    if (s >= 60)
        return QStringLiteral("%1 minutes and %2 seconds").arg(s / 60).arg(s % 60);
    if (s >= 1)
        return QStringLiteral("%1 seconds").arg(s);
    return QString();
}

} // namespace

void setVideoPlayerClock(Core::Time (*clock)())
{
    Clock = clock;
}

Core::Time videoPlayerNow()
{
    return Clock ? Clock() : Core::Time::GMT();
}

bool VideoPlayer::setMaxTime(const Core::TimeSpan &maxTime)
{
    if (maxTime.seconds() < 0)
        return false;

    _maxTime = maxTime;
    {
        // A shorter slider would pull the position along.
        const QSignalBlocker blocker(_slider);
        _slider->setMaximum(static_cast<int>(maxTime.seconds() / secondsPerSliderStep()));
    }
    showPosition();
    updateView();
    return true;
}

void VideoPlayer::setReferenceTime(const Core::Time &time)
{
    _referenceTime = time;
    const bool valid = time.valid();
    for (QWidget *widget : _referenceWidgets)
        widget->setVisible(valid);
    if (valid) {
        _absoluteLabel->setVisible(_showAbsoluteTime->isChecked());
        _relativeLabel->setVisible(_relativeMode->currentIndex() != 0);
    }
    updateView();
}

void VideoPlayer::setRelativeTimeMode(RelativeTimeMode mode)
{
    if (mode == _relativeTimeMode)
        return;

    _relativeTimeMode = mode;
    {
        // The selector would deny what is shown, and not take the user's choice of its entry.
        const QSignalBlocker blocker(_relativeMode);
        _relativeMode->setCurrentIndex(mode);
    }
    if (mode != Disabled) {
        if (_relativeLabel->isHidden()) {
            _relativeLabel->show();
            layout()->activate();
        }
        updateRelativeTime();
    } else {
        _relativeLabel->hide();
        layout()->activate();
    }

    if (mode != CurrentTime)
        _relativeTimer.stop();
    else if (_state != Playing)
        _relativeTimer.start();
}

// Whoever hears that it starts or stops may delete the player.
void VideoPlayer::start()
{
    const QPointer<VideoPlayer> self(this);
    _state = Playing;
    updatePlayButton();
    if (_relativeTimeMode == CurrentTime)
        _relativeTimer.stop();
    _playTimer.start(TickMilliseconds);
    emit playerStarted();
    if (self)
        nextStep();
}

void VideoPlayer::pause()
{
    _playTimer.stop();
    if (_relativeTimeMode == CurrentTime)
        _relativeTimer.start();
    _state = Paused;
    updatePlayButton();
    emit playerStopped();
}

void VideoPlayer::togglePlayPause()
{
    if (_state == Playing)
        pause();
    else
        start();
}

void VideoPlayer::reset()
{
    const QPointer<VideoPlayer> self(this);
    pause();
    if (!self)
        return;
    _currentStep = Core::TimeSpan();
    showPosition(); // the slider would go on showing where it was
    updateView();
}

void VideoPlayer::nextStep()
{
    const QPointer<VideoPlayer> self(this);
    _currentStep += _stepSize;
    if (_currentStep >= _maxTime || _maxTime.seconds() <= 0) {
        _currentStep = _maxTime;
        if (_repeat->isChecked())
            _currentStep = Core::TimeSpan();
        else
            pause();
    }
    if (!self)
        return;
    showPosition();
    updateView();
    emit nextFrameRequested();
}

void VideoPlayer::applySliderValue(int value)
{
    updateView(value);
    emit nextFrameRequested();
}

void VideoPlayer::updateView(int value)
{
    _currentStep = Core::TimeSpan(value * secondsPerSliderStep(), 0);
    updateView();
}

void VideoPlayer::followCurrentTime()
{
    const QPointer<VideoPlayer> self(this);
    Core::TimeSpan position = videoPlayerNow() - _referenceTime;
    if (position < Core::TimeSpan())
        position = Core::TimeSpan();
    pause();
    if (!self)
        return;
    _currentStep = position;
    start();
}

void VideoPlayer::applySpeed(int index)
{
    const QVariant data = _speed->itemData(index);
    // A step of nothing would look like playing, and get nowhere.
    if (!data.isValid())
        return;
    const int ms = data.toInt();
    _stepSize = Core::TimeSpan(ms / 1000, ms % 1000 * 1000);
}

void VideoPlayer::applyRelativeTimeMode(int index)
{
    // No mode has it: the label would be shown with a text that nobody chose.
    if (index >= Disabled && index <= CurrentTime)
        setRelativeTimeMode(static_cast<RelativeTimeMode>(index));
}

void VideoPlayer::updateView()
{
    if (_referenceTime.valid())
        _absoluteLabel->setText(QString::fromStdString(absoluteTime().toString("%F %T")));
    updateElapsedTime();
    updateRelativeTime();
}

void VideoPlayer::updateElapsedTime()
{
    _elapsedLabel->setText(elapsedText(_currentStep, _maxTime));
}

void VideoPlayer::updateRelativeTime()
{
    const Core::Time time = absoluteTime();
    Core::TimeSpan span = time - _referenceTime;
    QString suffix = QStringLiteral(" after origin time");
    if (_relativeTimeMode == CurrentTime) {
        const Core::Time now = videoPlayerNow();
        const bool isPast = time < now;
        span = isPast ? now - time : time - now;
        suffix = isPast ? QStringLiteral(" ago") : QStringLiteral(" to go");
    }

    QString text = spanText(span);
    if (!text.isEmpty())
        text += suffix;
    else if (_relativeTimeMode == CurrentTime)
        text = QStringLiteral("Now");
    else
        text = QStringLiteral("Origin time");
    _relativeLabel->setText(text);
}

/** 1 up to 68 years; longer timelines don't fit a slider of seconds. */
int64_t VideoPlayer::secondsPerSliderStep() const
{
    const int64_t seconds = _maxTime.seconds();
    return seconds > 0 ? (seconds - 1) / std::numeric_limits<int>::max() + 1 : 1;
}

void VideoPlayer::showPosition()
{
    const QSignalBlocker blocker(_slider);
    const int64_t value = _currentStep.seconds() / secondsPerSliderStep();
    _slider->setSliderPosition(
        static_cast<int>(std::min<int64_t>(value, std::numeric_limits<int>::max())));
}

} // namespace Gui
} // namespace Norvu
