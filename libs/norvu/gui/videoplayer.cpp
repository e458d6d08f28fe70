// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/videoplayer.h>

#include <norvu/gui/customwidgetmenu.h>
#include <norvu/gui/defaultvideoplayerstyle.h>
#include <norvu/gui/fontawesome5.h>

#include <QBoxLayout>
#include <QCheckBox>
#include <QComboBox>
#include <QFontMetrics>
#include <QFrame>
#include <QGridLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPropertyAnimation>
#include <QSettings>
#include <QShowEvent>
#include <QSlider>
#include <QStyleOptionSlider>
#include <QToolButton>

namespace Norvu {
namespace Gui {

namespace {

constexpr int HideDelayMilliseconds = 3000;
constexpr int SlideMilliseconds = 250;
constexpr int RefreshMilliseconds = 1000;
constexpr int SettingsGap = 20;

const auto SettingsGroup = QStringLiteral("VideoPlayer");
const auto AutoHideKey = QStringLiteral("autoHide");
const auto RepeatKey = QStringLiteral("repeat");
const auto SpeedKey = QStringLiteral("playbackSpeed");
const auto AbsoluteTimeKey = QStringLiteral("showAbsoluteTime");
const auto RelativeModeKey = QStringLiteral("relativeTimeMode");

struct Speed
{
    const char *text;
    int milliseconds;
};

constexpr Speed Speeds[] = {{"0.25", 250}, {"0.5", 500}, {"0.75", 750}, {"Standard", 1000},
                            {"2x", 2000},  {"4x", 4000}, {"8x", 8000}};
constexpr auto StandardSpeed = "Standard";

/** Paints the text of labels with an outline, so that it can be read over a map. */
class OutLineDrawer : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject *object, QEvent *event) override
    {
        auto *label = qobject_cast<QLabel *>(object);
        if (!label || event->type() != QEvent::Paint)
            return QObject::eventFilter(object, event);

        constexpr QPointF Baseline(0, 20); // whatever the size of the font
        QPainterPath path;
        path.addText(Baseline, label->font(), label->text());
        QPainter painter(label);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(Qt::black, 1));
        painter.setBrush(label->palette().color(QPalette::WindowText));
        painter.drawPath(path);
        return true;
    }
};

/** A slider whose handle jumps to where it is clicked, and is held there, in any style. */
class TimelineSlider : public QSlider
{
public:
    using QSlider::QSlider;

protected:
    void mousePressEvent(QMouseEvent *event) override
    {
        QStyleOptionSlider option;
        initStyleOption(&option);
        const auto rectOf = [&](QStyle::SubControl part) {
            return style()->subControlRect(QStyle::CC_Slider, &option, part, this);
        };
        const QRect handle = rectOf(QStyle::SC_SliderHandle);
        const QRect groove = rectOf(QStyle::SC_SliderGroove);
        if (event->button() == Qt::LeftButton && !handle.contains(event->pos())) {
            setValue(QStyle::sliderValueFromPosition(
                minimum(), maximum(), event->x() - groove.x() - handle.width() / 2,
                groove.width() - handle.width(), option.upsideDown));
        }
        QSlider::mousePressEvent(event);
    }
};

QFont enlarged(QFont font)
{
    font.setPixelSize(static_cast<int>(QFontMetrics(font).height() * 1.1));
    return font;
}

QLabel *createMapLabel(const QString &text)
{
    auto *label = new QLabel(text);
    label->setObjectName(QStringLiteral("MapLabel"));
    label->installEventFilter(new OutLineDrawer(label));
    return label;
}

QToolButton *createButton(QChar icon, const QString &toolTip)
{
    auto *button = new QToolButton;
    button->setFont(enlarged(FontAwesome5::fontSolid()));
    button->setText(icon);
    button->setToolTip(toolTip);
    return button;
}

QCheckBox *createCheckBox(bool checked)
{
    auto *box = new QCheckBox;
    box->setLayoutDirection(Qt::RightToLeft);
    box->setChecked(checked);
    return box;
}

} // namespace

VideoPlayer::VideoPlayer(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("VideoPlayer"));
    setAttribute(Qt::WA_StyledBackground);
    setAttribute(Qt::WA_MouseTracking);
    _playTimer.setObjectName(QStringLiteral("PlayTimer"));
    _relativeTimer.setObjectName(QStringLiteral("RelativeTimer"));
    _relativeTimer.setInterval(RefreshMilliseconds);
    _animation = new QPropertyAnimation(this, "pos", this);
    _animation->setDuration(SlideMilliseconds);

    auto *layout = new QVBoxLayout(this);
    layout->setMargin(0);
    layout->setSpacing(0);
    createLabels(layout);
    createControls();
    layout->addWidget(_controls);
    createSettings();

    connect(&_playTimer, SIGNAL(timeout()), this, SLOT(nextStep()));
    connect(&_relativeTimer, SIGNAL(timeout()), this, SLOT(updateRelativeTime()));

    const DefaultVideoPlayerStyle style;
    setStyleSheet(style.styleSheet());
    reset();
    hideControls(false);
    setReferenceTime(Tellarix::Core::Time());
    restoreSettings();
}

VideoPlayer::~VideoPlayer()
{
    // The menu may still be open, and tells when it goes.
    disconnect(_settings, nullptr, this, nullptr);
    saveSettings();
}

void VideoPlayer::createLabels(QVBoxLayout *layout)
{
    _absoluteLabel = createMapLabel(QStringLiteral("2020-01-01 00:00:00"));
    _relativeLabel = createMapLabel(QStringLiteral("now"));
    QFont font = enlarged(_absoluteLabel->font());
    font.setWeight(QFont::Bold);
    _absoluteLabel->setFont(font);
    _relativeLabel->setFont(font);

    auto *labels = new QVBoxLayout;
    labels->setMargin(6);
    labels->addWidget(_absoluteLabel);
    labels->addWidget(_relativeLabel);
    layout->addLayout(labels);
}

void VideoPlayer::createControls()
{
    _slider = new TimelineSlider(Qt::Horizontal);
    _slider->setMaximum(0); // as long as the timeline
    _slider->setValue(0);
    _slider->setFocusPolicy(Qt::NoFocus);
    _playButton = createButton(FontAwesome5::chPlay, tr("Play"));
    _followButton =
        createButton(FontAwesome5::chClock, QStringLiteral("Jump to current time and play"));
    _followButton->hide();
    _elapsedLabel = new QLabel(QStringLiteral("00:00 / 12:00:00"));
    _settingsButton = createButton(FontAwesome5::chCog, tr("Show settings"));

    auto *row = new QHBoxLayout;
    row->addSpacerItem(new QSpacerItem(6, 1, QSizePolicy::Fixed, QSizePolicy::Fixed));
    row->addWidget(_playButton);
    row->addWidget(_followButton);
    row->addWidget(_elapsedLabel);
    row->addStretch();
    row->addWidget(_settingsButton);

    _controls = new QFrame(this);
    _controls->setObjectName(QStringLiteral("Controls"));
    auto *layout = new QVBoxLayout(_controls);
    layout->setSpacing(3);
    layout->setMargin(6);
    layout->addWidget(_slider);
    layout->addLayout(row);

    connect(_slider, SIGNAL(valueChanged(int)), this, SLOT(applySliderValue(int)));
    connect(_slider, SIGNAL(valueChanged(int)), this, SLOT(updateView(int)));
    connect(_slider, SIGNAL(sliderReleased()), this, SLOT(pause()));
    connect(_playButton, SIGNAL(clicked()), this, SLOT(togglePlayPause()));
    connect(_followButton, SIGNAL(clicked()), this, SLOT(followCurrentTime()));
    connect(_settingsButton, SIGNAL(clicked()), this, SLOT(showSettings()));
}

void VideoPlayer::createSettings()
{
    _settings = new CustomWidgetMenu(_controls);
    _settings->setObjectName(QStringLiteral("Settings"));
    _settings->setWindowFlags(_settings->windowFlags() | Qt::FramelessWindowHint);
    _settings->setAttribute(Qt::WA_TranslucentBackground);

    _autoHide = createCheckBox(true);
    _repeat = createCheckBox(false);
    _showAbsoluteTime = createCheckBox(true);
    _speed = new QComboBox;
    for (const Speed &speed : Speeds)
        _speed->addItem(QString::fromLatin1(speed.text), speed.milliseconds);
    _speed->setCurrentText(QString::fromLatin1(StandardSpeed));
    _relativeMode = new QComboBox;
    _relativeMode->addItem(QStringLiteral("Disabled"), Disabled);
    _relativeMode->addItem(QStringLiteral("Origin time"), OriginTime);
    _relativeMode->addItem(QStringLiteral("Current time"), CurrentTime);
    _relativeMode->setMinimumContentsLength(12);

    auto *layout = new QGridLayout(_settings);
    layout->addItem(new QSpacerItem(SettingsGap, 1), 0, 1);
    auto *absoluteTime = new QLabel(QStringLiteral("Show absolute time"));
    auto *relativeTime = new QLabel(QStringLiteral("Relative time"));
    const QPair<QWidget *, QWidget *> rows[] = {
        {new QLabel(QStringLiteral("Auto hide")), _autoHide},
        {new QLabel(QStringLiteral("Repeat")), _repeat},
        {new QLabel(QStringLiteral("Playback speed")), _speed},
        {absoluteTime, _showAbsoluteTime},
        {relativeTime, _relativeMode},
    };
    int row = 0;
    for (const auto &[label, control] : rows) {
        layout->addWidget(label, row, 0);
        layout->addWidget(control, row++, 2);
    }
    _speed->adjustSize();
    _relativeMode->adjustSize();
    _referenceWidgets << absoluteTime << relativeTime << _showAbsoluteTime << _relativeMode
                      << _followButton << _relativeLabel << _absoluteLabel;

    connect(_settings, SIGNAL(aboutToHide()), this, SLOT(hideSettingsRequested()));
    connect(_showAbsoluteTime, SIGNAL(clicked()), this, SLOT(toggleAbsoluteTimeLabel()));
    connect(_speed, SIGNAL(currentIndexChanged(int)), this, SLOT(applySpeed(int)));
    connect(_relativeMode, SIGNAL(currentIndexChanged(int)), this,
            SLOT(applyRelativeTimeMode(int)));
}

void VideoPlayer::setAutoHideEnabled(bool enabled)
{
    _autoHide->setChecked(enabled);
}

bool VideoPlayer::isAutoHideEnabled() const
{
    return _autoHide->isChecked();
}

int VideoPlayer::controlsHeight() const
{
    return _controls->height();
}

void VideoPlayer::updatePlayButton()
{
    const bool playing = _state != 0;
    _playButton->setText(playing ? FontAwesome5::chPause : FontAwesome5::chPlay);
    _playButton->setToolTip(playing ? tr("Pause") : tr("Play"));
}

void VideoPlayer::showSettings()
{
    // A second loop would leave the first one without an end.
    if (_settings->isVisible())
        return;

    // The style sheet reaches them when they are shown, and changes their size.
    for (QWidget *widget : _settings->findChildren<QWidget *>())
        widget->ensurePolished();
    _settings->layout()->activate();
    const QSize size = _settings->sizeHint();
    const QPoint corner = _controls->mapToGlobal(QPoint(_controls->width() - 1, 0));
    // The player may be gone when this returns.
    _settings->exec(corner - QPoint(size.width(), size.height()));
}

void VideoPlayer::autoHide()
{
    if (!_autoHide->isChecked() || _settings->isVisible())
        return;

    _hideTimer = new QTimer(this);
    _hideTimer->setSingleShot(true);
    _hideTimer->start(HideDelayMilliseconds);
    connect(_hideTimer, SIGNAL(timeout()), this, SLOT(startBackwardAnimation()));
    // One for each time that the pointer leaves: they would pile up.
    connect(_hideTimer, SIGNAL(timeout()), _hideTimer, SLOT(deleteLater()));
}

void VideoPlayer::forgetHideTimer()
{
    if (!_hideTimer)
        return;
    _hideTimer->stop();
    _hideTimer->deleteLater();
    _hideTimer.clear();
}

void VideoPlayer::hideSettingsRequested()
{
    if (!underMouse())
        autoHide();
}

void VideoPlayer::enterEvent(QEvent *event)
{
    forgetHideTimer();
    if (!_controls->isVisible())
        startForwardAnimation();
    QWidget::enterEvent(event);
}

void VideoPlayer::leaveEvent(QEvent *event)
{
    if (_animation->state() != QAbstractAnimation::Running)
        autoHide();
    QWidget::leaveEvent(event);
}

void VideoPlayer::mousePressEvent(QMouseEvent *event)
{
    event->accept();
}

void VideoPlayer::showEvent(QShowEvent *event)
{
    if (!event->spontaneous())
        standUp();
    QWidget::showEvent(event);
}

void VideoPlayer::startBackwardAnimation()
{
    if (_animation->state() == QAbstractAnimation::Running)
        return;

    standUp();
    // Once: a player that its owner shows in the hide that ends this must not be hidden again.
    connect(_animation, SIGNAL(finished()), this, SLOT(hideControls()), Qt::UniqueConnection);
    _animation->setDirection(QAbstractAnimation::Backward);
    _animation->setEasingCurve(QEasingCurve::OutCubic);
    _animation->setStartValue(pos() + QPoint(0, height()));
    _animation->setEndValue(pos());
    _slidesAway = true;
    _animation->start();
}

void VideoPlayer::startForwardAnimation()
{
    forgetHideTimer();
    disconnect(_animation, SIGNAL(finished()), this, SLOT(hideControls()));
    standUp();
    hideControls(false);
    layout()->activate();
}

/**
 * Puts a player that slides, or has slid, away back in its place. Without a layout around it, it
 * would come back below its owner's edge, one height lower each time, and never be seen again.
 */
void VideoPlayer::standUp()
{
    const bool slides = _animation->state() == QAbstractAnimation::Running;
    const bool isDown = _slidesAway && pos() == _animation->startValue().toPoint();
    _animation->stop();
    _slidesAway = false;
    if (slides || isDown)
        move(_animation->endValue().toPoint());
}

void VideoPlayer::hideControls(bool hide)
{
    setHidden(hide);
}

void VideoPlayer::toggleAbsoluteTimeLabel()
{
    _absoluteLabel->setVisible(_showAbsoluteTime->isChecked());
    layout()->activate();
}

void VideoPlayer::saveSettings()
{
    QSettings settings;
    settings.beginGroup(SettingsGroup);
    settings.setValue(AutoHideKey, _autoHide->isChecked());
    settings.setValue(RepeatKey, _repeat->isChecked());
    settings.setValue(SpeedKey, _speed->currentData().toInt());
    settings.setValue(AbsoluteTimeKey, _showAbsoluteTime->isChecked());
    settings.setValue(RelativeModeKey, _relativeMode->currentIndex());
}

void VideoPlayer::restoreSettings()
{
    QSettings settings;
    settings.beginGroup(SettingsGroup);
    if (settings.contains(AutoHideKey)) {
        _autoHide->setChecked(settings.value(AutoHideKey).toBool());
        if (_autoHide->isChecked())
            setVisible(false);
    }
    if (settings.contains(RepeatKey))
        _repeat->setChecked(settings.value(RepeatKey).toBool());
    if (settings.contains(SpeedKey)) {
        const int index = _speed->findData(settings.value(SpeedKey).toDouble());
        if (index >= 0)
            _speed->setCurrentIndex(index);
    }
    if (settings.contains(AbsoluteTimeKey)) {
        _showAbsoluteTime->setChecked(settings.value(AbsoluteTimeKey).toBool());
        if (_referenceTime.valid())
            _absoluteLabel->setVisible(_showAbsoluteTime->isChecked());
    }
    if (settings.contains(RelativeModeKey)) {
        // An entry that there isn't would leave the selector empty.
        const int index = settings.value(RelativeModeKey).toInt();
        if (index >= 0 && index < _relativeMode->count())
            _relativeMode->setCurrentIndex(index);
        if (!_referenceTime.valid())
            _relativeLabel->hide();
    }
}

} // namespace Gui
} // namespace Norvu
