// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "bench/panel.h"

#include <tellarix/core/timewindow.h>

#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>

class QBoxLayout;
class QComboBox;
class QDateTime;
class QLabel;
class QToolButton;

namespace Norvu {
namespace Gui {
class DateTimeEdit;
class VideoPlayer;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class FilmExport;

/**
 * Replays the shown events: while it is on, a video player lies over the map, from the first event
 * to the last one, and its position is the time of the selection.
 *
 * The player's own speeds are about real time. Those of the panel are for catalogues: while one of
 * them is chosen, the panel moves the player along many times a second.
 */
class PlayerPanel : public Panel
{
    Q_OBJECT

public:
    explicit PlayerPanel(Bench *bench);
    ~PlayerPanel() override;

    /** Null while no replay is on. */
    Norvu::Gui::VideoPlayer *player() const;
    /** From the first event to the last one, in whole seconds; not valid without events. */
    const Tellarix::Core::TimeWindow &range() const { return _range; }

    void saveState(QSettings &settings) const override;
    void restoreState(QSettings &settings) override;
    QVector<PanelPicture> pictures() override;
    void closeAll() override;

    bool eventFilter(QObject *watched, QEvent *event) override;

public slots:
    void setOn(bool on);
    void showNext();
    void showPrevious();
    void togglePlaying();
    void exportFilm();

private slots:
    void followReplay();
    void followMap();
    void followEvents();
    void followChosen();
    void followTime();
    void showFrame();
    void setPlaying();
    void setPaused();
    void setTypedTime(const QDateTime &time);
    void setFade();
    void updateTicker();
    void tick();
    void endExport();

private:
    QToolButton *addButton(QBoxLayout *row, QChar glyph, const QString &text, const char *slot);
    QComboBox *addChoice(QBoxLayout *row, const QString &text, const char *slot);
    void begin();
    void end();
    void updateRange();
    void updateTexts();
    void placePlayer();
    void movePlayer(const Tellarix::Core::Time &time);
    double secondsPerSecond() const;
    void showStep(int index);
    Tellarix::Core::Time moment() const;

    QToolButton *_switch;
    QToolButton *_playButton;
    QToolButton *_exportButton;
    Norvu::Gui::DateTimeEdit *_time;
    QComboBox *_speed;
    QComboBox *_fade;
    QLabel *_text;
    QPointer<Norvu::Gui::VideoPlayer> _player;
    QPointer<QWidget> _map; /**< that the player lies over */
    QPointer<FilmExport> _film;
    Tellarix::Core::TimeWindow _range;
    Tellarix::Core::Time _timeBefore; /**< the replay */
    QTimer _ticker;
    QElapsedTimer _clock;
    bool _isReplaying{false};
    bool _isPlaying{false};
};

} // namespace Workbench
