// SPDX-License-Identifier: LGPL-3.0-or-later

#include "playerpanel.h"

#include "bench/bench.h"
#include "bench/darkpalette.h"
#include "bench/mapview.h"
#include "bench/replay.h"
#include "bench/selection.h"
#include "bench/shownevents.h"
#include "filmdialog.h"
#include "filmexport.h"

#include <norvu/gui/datetimeedit.h>
#include <norvu/gui/fontawesome5.h>
#include <norvu/gui/videoplayer.h>

#include <QBoxLayout>
#include <QComboBox>
#include <QCoreApplication>
#include <QDateTime>
#include <QEvent>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QScopedValueRollback>
#include <QSettings>
#include <QSignalBlocker>
#include <QSlider>
#include <QToolButton>

#include <algorithm>
#include <cmath>

using namespace Tellarix;
using namespace Norvu::FontAwesome5;
using Norvu::Gui::VideoPlayer;

namespace Workbench {

namespace {

constexpr int TickMilliseconds = 50;
/** After a pause of the machine, or of the window, the replay goes on where it was. */
constexpr qint64 LongestTick = 500;
constexpr auto SettingsGroup = "player";
constexpr int Hour = 3600;
constexpr int Day = 24 * Hour;

struct Choice
{
    const char *text;
    int seconds;
};

constexpr Choice Speeds[] = {
    {QT_TRANSLATE_NOOP("Workbench::PlayerPanel", "As the player"), 0},
    {QT_TRANSLATE_NOOP("Workbench::PlayerPanel", "10 minutes a second"), 600},
    {QT_TRANSLATE_NOOP("Workbench::PlayerPanel", "1 hour a second"), Hour},
    {QT_TRANSLATE_NOOP("Workbench::PlayerPanel", "6 hours a second"), 6 * Hour},
    {QT_TRANSLATE_NOOP("Workbench::PlayerPanel", "1 day a second"), Day},
    {QT_TRANSLATE_NOOP("Workbench::PlayerPanel", "7 days a second"), 7 * Day},
    {QT_TRANSLATE_NOOP("Workbench::PlayerPanel", "30 days a second"), 30 * Day}};
constexpr int DefaultSpeed = Day;

constexpr Choice Fades[] = {{QT_TRANSLATE_NOOP("Workbench::PlayerPanel", "1 hour"), Hour},
                            {QT_TRANSLATE_NOOP("Workbench::PlayerPanel", "6 hours"), 6 * Hour},
                            {QT_TRANSLATE_NOOP("Workbench::PlayerPanel", "1 day"), Day},
                            {QT_TRANSLATE_NOOP("Workbench::PlayerPanel", "1 week"), 7 * Day},
                            {QT_TRANSLATE_NOOP("Workbench::PlayerPanel", "1 month"), 30 * Day},
                            {QT_TRANSLATE_NOOP("Workbench::PlayerPanel", "1 year"), 365 * Day},
                            {QT_TRANSLATE_NOOP("Workbench::PlayerPanel", "never"), 0}};
constexpr int DefaultFade = 30 * Day;

/** What isn't among the choices, such as that of broken settings, leaves the choice as it is. */
void choose(QComboBox *box, const QVariant &seconds)
{
    bool isNumber = false;
    const int index = box->findData(seconds.toInt(&isNumber));
    if (isNumber && index >= 0)
        box->setCurrentIndex(index);
}

} // namespace

PlayerPanel::PlayerPanel(Bench *bench)
    : Panel(bench, {"player", tr("Player"), tr("Pla&yer"), tr("Ctrl+Shift+R"), iconSolid(chHistory),
                    PanelPlace::Bottom, false}),
      _time(new Norvu::Gui::DateTimeEdit(this)), _text(new QLabel(this))
{
    auto *row = new QHBoxLayout;
    _switch = addButton(row, chHistory, tr("Replay the events on the map"), nullptr);
    _switch->setText(tr("Replay"));
    _switch->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    _switch->setCheckable(true);
    connect(_switch, SIGNAL(toggled(bool)), this, SLOT(setOn(bool)));
    addButton(row, chStepBackward, tr("Previous event"), SLOT(showPrevious()));
    _playButton = addButton(row, chPlay, tr("Play"), SLOT(togglePlaying()));
    addButton(row, chStepForward, tr("Next event"), SLOT(showNext()));
    // Inputs take no earlier ones.
    _time->setMinimumDate(QDate(100, 1, 1));
    _time->setKeyboardTracking(false);
    row->addWidget(_time);
    _speed = addChoice(row, tr("&Speed"), SLOT(updateTicker()));
    _fade = addChoice(row, tr("&Fades within"), SLOT(setFade()));
    _exportButton =
        addButton(row, chFilm, tr("Export the replay as pictures or a film…"), SLOT(exportFilm()));
    row->addStretch();
    for (const Choice &speed : Speeds)
        _speed->addItem(tr(speed.text), speed.seconds);
    for (const Choice &fade : Fades)
        _fade->addItem(tr(fade.text), fade.seconds);
    choose(_speed, DefaultSpeed);
    choose(_fade, DefaultFade);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(row);
    layout->addWidget(_text);
    layout->addStretch();

    _ticker.setInterval(TickMilliseconds);
    connect(&_ticker, SIGNAL(timeout()), this, SLOT(tick()));
    connect(_time, SIGNAL(dateTimeChanged(QDateTime)), this, SLOT(setTypedTime(QDateTime)));
    connect(bench->replay(), SIGNAL(changed()), this, SLOT(followReplay()));
    connect(bench->mapView(), SIGNAL(changed()), this, SLOT(followMap()));
    connect(bench->shownEvents(), SIGNAL(changed()), this, SLOT(followEvents()));
    connect(bench->selection(), SIGNAL(eventChanged()), this, SLOT(followChosen()));
    connect(bench->selection(), SIGNAL(eventShown()), this, SLOT(followChosen()));
    connect(bench->selection(), SIGNAL(timeChanged()), this, SLOT(followTime()));
    followMap();
    updateRange();
    updateTexts();
}

PlayerPanel::~PlayerPanel()
{
    disconnect(bench()->mapView(), nullptr, this, nullptr);
    if (_player)
        _player->removeEventFilter(this);
    if (_map)
        _map->removeEventFilter(this);
    delete _player;
}

QToolButton *PlayerPanel::addButton(QBoxLayout *row, QChar glyph, const QString &text,
                                    const char *slot)
{
    auto *button = new QToolButton(this);
    button->setIcon(iconSolid(glyph));
    button->setToolTip(text);
    button->setAccessibleName(text);
    if (slot)
        connect(button, SIGNAL(clicked()), this, slot);
    row->addWidget(button);
    return button;
}

QComboBox *PlayerPanel::addChoice(QBoxLayout *row, const QString &text, const char *slot)
{
    auto *label = new QLabel(text, this);
    auto *box = new QComboBox(this);
    label->setBuddy(box);
    row->addWidget(label);
    row->addWidget(box);
    connect(box, SIGNAL(currentIndexChanged(int)), this, slot);
    return box;
}

VideoPlayer *PlayerPanel::player() const
{
    return _player;
}

Core::Time PlayerPanel::moment() const
{
    return bench()->selection()->time();
}

// On and off

void PlayerPanel::setOn(bool on)
{
    if (on && !bench()->replay()->isOn() && _range.isEmpty())
        bench()->showStatus(tr("There are no events of different times to replay"));
    else
        bench()->replay()->setOn(on && bench()->mapView()->widget());
    _switch->setChecked(bench()->replay()->isOn());
}

void PlayerPanel::followReplay()
{
    if (bench()->replay()->isOn() && !_player)
        begin();
    else if (!bench()->replay()->isOn() && _isReplaying)
        end();
    _switch->setChecked(bench()->replay()->isOn());
    choose(_fade, QVariant::fromValue(bench()->replay()->fade().seconds()));
    updateTexts();
}

void PlayerPanel::begin()
{
    _map = bench()->mapView()->widget();
    if (!_map) {
        bench()->replay()->setOn(false);
        return;
    }
    _isReplaying = true;
    setFade();
    _timeBefore = moment();
    _player = new VideoPlayer(_map);
    _map->installEventFilter(this);
    _player->installEventFilter(this);
    connect(_player, SIGNAL(nextFrameRequested()), this, SLOT(showFrame()));
    connect(_player, SIGNAL(playerStarted()), this, SLOT(setPlaying()));
    connect(_player, SIGNAL(playerStopped()), this, SLOT(setPaused()));
    updateRange();
    _player->show();
    _player->raise();
    placePlayer();

    // A window does not contain its end, at which the last event is.
    const auto isInRange = [this](const Core::Time &time) {
        return time.valid() && _range.startTime() <= time && time <= _range.endTime();
    };
    const auto &event = bench()->selection()->chosenEvent();
    if (isInRange(moment()))
        followTime();
    else if (event && isInRange(event->originTime))
        followChosen();
    else
        bench()->selection()->setTime(_range.startTime());
}

/** All is as it was before. */
void PlayerPanel::end()
{
    _isReplaying = false;
    _ticker.stop();
    if (_film)
        _film->cancel();
    if (_map)
        _map->removeEventFilter(this);
    _map.clear();
    if (_player) {
        // It may be the one that the call comes from.
        disconnect(_player, nullptr, this, nullptr);
        _player->removeEventFilter(this);
        _player->hide();
        _player->deleteLater();
        _player.clear();
        bench()->mapView()->setCoveredHeight(0);
    }
    setPaused();
    bench()->selection()->setTime(_timeBefore);
}

/** The map that the player lies over is gone, and the player with it. */
void PlayerPanel::followMap()
{
    _switch->setEnabled(bench()->mapView()->widget());
    if (bench()->replay()->isOn())
        bench()->replay()->setOn(false);
}

void PlayerPanel::closeAll()
{
    bench()->replay()->setOn(false);
}

// Where the player lies

void PlayerPanel::placePlayer()
{
    if (!_player || !_map)
        return;
    const int height = std::min(_player->sizeHint().height(), _map->height());
    _player->setGeometry(0, _map->height() - height, _map->width(), height);
    bench()->mapView()->setCoveredHeight(height);
}

bool PlayerPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == _map && _player) {
        if (event->type() == QEvent::Resize) {
            _player->startForwardAnimation();
            placePlayer();
            _player->autoHide();
        } else if (event->type() == QEvent::MouseMove) {
            _player->startForwardAnimation();
            _player->autoHide();
        }
    } else if (watched == _player && event->type() == QEvent::LayoutRequest)
        placePlayer();
    return Panel::eventFilter(watched, event);
}

// The events

void PlayerPanel::updateRange()
{
    const ShownEvents &events = *bench()->shownEvents();
    const int first = events.timelessCount();
    _range = Core::TimeWindow();
    if (first < events.all().size()) {
        const auto secondOf = [](const Core::Time &time, double (*round)(double)) {
            return Core::Time::FromUSecs(
                static_cast<int64_t>(round(static_cast<double>(time.usecs()) / 1e6)) * 1000000);
        };
        _range = {secondOf(events.all()[first].originTime, std::floor),
                  secondOf(events.all().last().originTime, std::ceil)};
    }
    if (!_player)
        return;
    _player->setReferenceTime(_range.startTime());
    _player->setMaxTime(_range.length());
    placePlayer();
}

void PlayerPanel::followEvents()
{
    updateRange();
    if (_player && moment().valid())
        movePlayer(moment());
    updateTexts();
}

/** In a replay, a chosen event is shown as it came. */
void PlayerPanel::followChosen()
{
    const auto &event = bench()->selection()->chosenEvent();
    if (_player && event && event->originTime.valid())
        bench()->selection()->setTime(event->originTime);
    updateTexts();
}

void PlayerPanel::showStep(int index)
{
    const QVector<EventFacts> &events = bench()->shownEvents()->all();
    if (index < bench()->shownEvents()->timelessCount() || index >= events.size())
        return;
    // The list of events may change while others are told of it.
    const EventFacts event = events[index];
    bench()->selection()->showEvent(event);
}

void PlayerPanel::showNext()
{
    const auto &chosen = bench()->selection()->chosenEvent();
    const Core::Time from = !_player && chosen ? chosen->originTime : moment();
    showStep(bench()->shownEvents()->countUntil(from));
}

void PlayerPanel::showPrevious()
{
    const auto &chosen = bench()->selection()->chosenEvent();
    const Core::Time from = !_player && chosen ? chosen->originTime : moment();
    showStep(bench()->shownEvents()->countBefore(from) - 1);
}

void PlayerPanel::setFade()
{
    bench()->replay()->setFade(Core::TimeSpan(_fade->currentData().toInt(), 0));
}

// The time

void PlayerPanel::setTypedTime(const QDateTime &time)
{
    bench()->selection()->setTime(Core::Time::FromUSecs(time.toMSecsSinceEpoch() * 1000));
}

void PlayerPanel::followTime()
{
    const Core::Time time = moment();
    if (_player && time.valid())
        movePlayer(time);
    else if (_player && _isPlaying)
        _player->pause(); // without a moment all is shown
    // Nobody can type where digits run.
    if (time.valid() && !(_isPlaying && _time->hasFocus())) {
        const QSignalBlocker blocker(_time);
        _time->setDateTime(QDateTime::fromMSecsSinceEpoch(time.usecs() / 1000, Qt::UTC));
        _time->selfDateTimeChanged(_time->dateTime());
    }
    updateTexts();
}

/** A player that is there already keeps what it has beside whole seconds. */
void PlayerPanel::movePlayer(const Core::Time &time)
{
    auto *slider = _player->findChild<QSlider *>();
    if (!slider || _player->absoluteTime() == time)
        return;
    // Timelines beyond the slider's numbers have longer steps than a second.
    const int64_t length = std::max<int64_t>(1, _range.length().seconds());
    const int64_t step = slider->maximum() > 0 ? length / slider->maximum() : 1;
    const int64_t position = (time - _range.startTime()).seconds() / std::max<int64_t>(1, step);
    const int value = static_cast<int>(std::clamp<int64_t>(position, 0, slider->maximum()));
    {
        const QSignalBlocker blocker(slider);
        slider->setValue(value);
    }
    _player->updateView(value);
}

void PlayerPanel::showFrame()
{
    if (!_range.isEmpty())
        bench()->selection()->setTime(_player->absoluteTime());
}

void PlayerPanel::togglePlaying()
{
    if (!_player)
        setOn(true);
    if (_player)
        _player->togglePlayPause();
}

void PlayerPanel::setPlaying()
{
    _isPlaying = true;
    updateTicker();
    updateTexts();
}

void PlayerPanel::setPaused()
{
    _isPlaying = false;
    updateTicker();
    updateTexts();
}

double PlayerPanel::secondsPerSecond() const
{
    return _speed->currentData().toDouble();
}

void PlayerPanel::updateTicker()
{
    if (!_isPlaying || !_player || secondsPerSecond() <= 0) {
        _ticker.stop();
        return;
    }
    _clock.start();
    _ticker.start();
}

/** What comes at the end is the player's own business. */
void PlayerPanel::tick()
{
    const double seconds = std::min(_clock.restart(), LongestTick) / 1e3;
    if (!moment().valid() || !(moment() < _range.endTime()))
        return;
    const Core::Time next = moment() + Core::TimeSpan(seconds * secondsPerSecond());
    bench()->selection()->setTime(std::min(next, _range.endTime()));
}

void PlayerPanel::updateTexts()
{
    _playButton->setIcon(iconSolid(_isPlaying ? chPause : chPlay));
    _playButton->setToolTip(_isPlaying ? tr("Pause") : tr("Play"));
    _exportButton->setEnabled(_player && !_film);

    const ShownEvents &events = *bench()->shownEvents();
    const int timeless = events.timelessCount();
    const QLocale locale(QLocale::English);
    const QString all = locale.toString(events.all().size() - timeless);
    QString text = tr("%1 events").arg(all);
    if (_player && moment().valid())
        text = tr("%1 of %2 events until %3")
                   .arg(locale.toString(events.countUntil(moment()) - timeless), all,
                        QString::fromStdString(moment().toString("%Y-%m-%d %H:%M:%S")));
    if (timeless > 0)
        text += tr(", %1 more are of no known time").arg(timeless);
    _text->setText(text);
}

// Export

void PlayerPanel::exportFilm()
{
    if (!_player || _film)
        return;
    if (_isPlaying)
        _player->pause();
    FilmDialog dialog(_range, _map->size(), window());
    if (dialog.exec() != QDialog::Accepted || !_player)
        return;
    _film = new FilmExport(bench(), dialog.plan(), this);
    connect(_film, SIGNAL(ended()), this, SLOT(endExport()));
    updateTexts();
    _film->start();
}

void PlayerPanel::endExport()
{
    _film.clear();
    updateTexts();
}

// Session and pictures

void PlayerPanel::saveState(QSettings &settings) const
{
    settings.beginGroup(SettingsGroup);
    settings.setValue("speed", _speed->currentData());
    settings.setValue("fade", _fade->currentData());
    settings.endGroup();
}

void PlayerPanel::restoreState(QSettings &settings)
{
    settings.beginGroup(SettingsGroup);
    choose(_speed, settings.value("speed"));
    choose(_fade, settings.value("fade"));
    settings.endGroup();
}

/** The map with the player over it, at two thirds of the replay. */
QVector<PanelPicture> PlayerPanel::pictures()
{
    const bool wasOn = bench()->replay()->isOn();
    const Core::Time timeBefore = moment();
    setOn(true);
    if (!_player)
        return {};
    bench()->selection()->setTime(_range.startTime() + _range.length() * (2 / 3.0));
    const auto picture = [this] {
        QCoreApplication::processEvents();
        // Other than the widget itself, this waits for land and water.
        QPixmap map(_map->size());
        QPainter painter(&map);
        bench()->mapView()->paint(painter, map.size());
        return _map->grab();
    };
    const bool wasDark = hasDarkColors();
    FilmDialog dialog(_range, _map->size(), nullptr);
    dialog.ensurePolished();
    QVector<PanelPicture> pictures{{"player.png", picture()},
                                   {"player-controls.png", grab()},
                                   {"player-export.png", dialog.grab()}};
    setDarkColors(!wasDark);
    pictures.append({wasDark ? "player-light.png" : "player-dark.png", picture()});
    setDarkColors(wasDark);
    if (wasOn)
        bench()->selection()->setTime(timeBefore);
    else
        setOn(false);
    return pictures;
}

} // namespace Workbench
