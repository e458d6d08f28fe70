// SPDX-License-Identifier: LGPL-3.0-or-later

#include "norvu/ink.h"
#include "pointer.h"

#include <norvu/gui/customwidgetmenu.h>
#include <norvu/gui/videoplayer.h>
#include <norvu/gui/videoplayer_p.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLayout>
#include <QSlider>
#include <QToolButton>
#include <QtTest>

using namespace Norvu::Gui;
using namespace Tellarix::Core;

namespace {

const Time Origin(2024, 1, 5, 10, 0, 0);
Time Present;

QTimer *timerOf(const VideoPlayer &player, const char *name)
{
    return player.findChild<QTimer *>(name, Qt::FindDirectChildrenOnly);
}

QList<QTimer *> hideTimers(const VideoPlayer &player)
{
    QList<QTimer *> timers;
    for (auto *timer : player.findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly)) {
        if (timer->isSingleShot())
            timers.append(timer);
    }
    return timers;
}

/** Lets a running timer time out now. */
void fire(QTimer *timer)
{
    QVERIFY(timer->isActive());
    QTimerEvent event(timer->timerId());
    QCoreApplication::sendEvent(timer, &event);
}

void enter(QWidget &widget)
{
    QEvent event(QEvent::Enter);
    QCoreApplication::sendEvent(&widget, &event);
}

/** An owner that shows a widget whenever it is hidden. */
struct ShowAgain : QObject
{
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::HideToParent) {
            ++times;
            static_cast<QWidget *>(watched)->show();
        }
        return false;
    }

    int times{0};
};

/** A view with a player at its lower edge, as an owner without a layout has it. */
struct View : QWidget
{
    explicit View(bool isFirst = true)
    {
        if (isFirst)
            QSettings().clear();
        player = new VideoPlayer(this);
        resize(600, 400);
        player->setGeometry(0, 300, 600, 100);
        show();
        connect(player, &VideoPlayer::nextFrameRequested, [this] { calls += "next "; });
        connect(player, &VideoPlayer::playerStarted, [this] { calls += "started "; });
        connect(player, &VideoPlayer::playerStopped, [this] { calls += "stopped "; });
    }

    template <typename T>
    QList<T *> all() const
    {
        return player->findChildren<T *>();
    }
    QCheckBox *autoHide() const { return all<QCheckBox>()[0]; }
    QCheckBox *repeat() const { return all<QCheckBox>()[1]; }
    QCheckBox *showAbsoluteTime() const { return all<QCheckBox>()[2]; }
    QComboBox *relativeMode() const { return all<QComboBox>()[1]; }
    QSlider *slider() const { return player->findChild<QSlider *>(); }
    QLabel *label(int index) const { return player->findChildren<QLabel *>("MapLabel")[index]; }
    QToolButton *button(const QString &toolTip) const
    {
        for (auto *button : all<QToolButton>()) {
            if (button->toolTip() == toolTip)
                return button;
        }
        return nullptr;
    }
    void click(const QString &toolTip) { QTest::mouseClick(button(toolTip), Qt::LeftButton); }
    QString elapsed() const
    {
        auto *bar = player->findChild<QFrame *>("Controls");
        return bar->findChild<QLabel *>(QString(), Qt::FindDirectChildrenOnly)->text();
    }
    QMenu *menu() const { return player->findChild<CustomWidgetMenu *>("Settings"); }
    QString takeCalls() { return std::exchange(calls, QString()).trimmed(); }
    double position() const { return player->currentStep().length(); }
    /** Plays from @p seconds behind the origin by way of the button that follows the present. */
    void follow(double seconds)
    {
        Present = Origin + TimeSpan(seconds);
        click("Jump to current time and play");
    }

    VideoPlayer *player;
    QString calls;
};

} // namespace

class VideoPlayerTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QCoreApplication::setOrganizationName("tests");
        QSettings::setDefaultFormat(QSettings::IniFormat);
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, _folder.path());
        setVideoPlayerClock([] { return Present; });
    }

    void playsByTheSpeed()
    {
        // Positions at the start and behind each tick.
        const std::tuple<QString, double, bool, QVector<double>, QString> rows[] = {
            {"Standard", 3, false, {1, 2, 3}, "started next next stopped next"},
            {"8x", 10, false, {8, 10}, "started next stopped next"},
            {"4x", 8, true, {4, 0, 4}, "started next next next"},
            {"0.25", 9, false, {0.25, 0.5, 0.75, 1}, "started next next next next"},
            {"Standard", 0, false, {0}, "started stopped next"},
            {"2x", 0, true, {0, 0}, "started next next"},
        };
        for (const auto &[speed, length, repeats, positions, calls] : rows) {
            View view;
            QVERIFY(view.player->setMaxTime(TimeSpan(length)));
            view.player->speedSelection()->setCurrentText(speed);
            view.player->applySpeed(99); // no such entry
            view.repeat()->setChecked(repeats);
            view.click("Play");
            QTimer *tick = timerOf(*view.player, "PlayTimer");
            for (int i = 0; i < positions.size(); ++i) {
                if (i > 0)
                    fire(tick);
                QCOMPARE(view.position(), positions[i]);
                QCOMPARE(view.slider()->value(), int(positions[i]));
            }
            QCOMPARE(view.takeCalls(), calls);
            QCOMPARE(tick->isActive(), view.button("Pause") != nullptr);
        }
    }

    void followsTheSlider()
    {
        View view;
        view.player->setMaxTime(TimeSpan(1000.0));
        view.click("Play");
        view.takeCalls();
        const QPoint place(view.slider()->width() / 2, view.slider()->height() / 2);
        QTest::mousePress(view.slider(), Qt::LeftButton, {}, place);
        QCOMPARE(view.takeCalls(), QString("next"));
        QVERIFY(qAbs(view.position() - 500) < 20);
        QVERIFY(view.button("Pause"));
        QTest::mouseRelease(view.slider(), Qt::LeftButton, {}, place);
        QCOMPARE(view.takeCalls(), QString("stopped"));
        QVERIFY(view.button("Play"));
    }

    void takesAnyLength()
    {
        View view;
        QCOMPARE(view.slider()->maximum(), 0);
        QVERIFY(!view.player->setMaxTime(TimeSpan(-1.0)));
        QVERIFY(view.player->setMaxTime(TimeSpan(60.0)));
        view.slider()->setValue(50);
        view.takeCalls();
        QVERIFY(view.player->setMaxTime(TimeSpan(10.0))); // the position stays where it was
        QCOMPARE(view.elapsed(), QString("0:50 / 0:00:10"));
        QCOMPARE(view.takeCalls(), QString());
        QVERIFY(view.player->setMaxTime(TimeSpan(90061.0)));
        QCOMPARE(view.slider()->value(), 50);
        view.slider()->setValue(3600);
        QCOMPARE(view.elapsed(), QString("1:00:00 / 25:01:01"));

        // Two hundred years are more seconds than a slider can count.
        for (const TimeSpan &length : {TimeSpan(6.3e9), TimeSpan(9e12)}) {
            QVERIFY(view.player->setMaxTime(length));
            view.slider()->setValue(view.slider()->maximum() / 2);
            QVERIFY(qAbs(view.position() / length.length() - 0.5) < 1E-6);
            view.player->setReferenceTime(Origin);
            view.player->start();
            QVERIFY(qAbs(view.slider()->value() * 2.0 / view.slider()->maximum() - 1) < 1E-6);
        }
        QVERIFY(view.elapsed().endsWith(" / 2500000000:00:00"));
    }

    void tellsRelativeTime()
    {
        // Seconds from the origin or the present to the position.
        const std::tuple<int, double, QString> rows[] = {
            {1, 0.9, "Origin time"},
            {1, 1, "1 seconds after origin time"},
            {1, 59.9, "59 seconds after origin time"},
            {1, 60, "1 minutes and 0 seconds after origin time"},
            {1, 7199, "1 hours and 59 minutes after origin time"},
            {1, 90000, "1 days and 1 hours after origin time"},
            {2, -0.9, "Now"},
            {2, 61, "1 minutes and 1 seconds to go"},
            {2, -3600, "1 hours and 0 minutes ago"},
            {2, -1e12, "11574074 days and 1 hours ago"},
        };
        for (const auto &[mode, seconds, text] : rows) {
            View view;
            view.player->setMaxTime(TimeSpan(1e7));
            view.player->setReferenceTime(Origin);
            view.player->speedSelection()->setCurrentText("0.25");
            view.relativeMode()->setCurrentIndex(mode);
            QVERIFY(view.label(0)->isVisible() && view.label(1)->isVisible());
            if (mode == VideoPlayer::OriginTime) {
                view.follow(seconds - 0.25);
            } else {
                Present = Origin - TimeSpan(seconds);
                fire(timerOf(*view.player, "RelativeTimer"));
            }
            QCOMPARE(view.label(1)->text(), text);
        }
    }

    void refreshesRelativeTimeWhilePaused()
    {
        View view;
        QTimer *refresh = timerOf(*view.player, "RelativeTimer");
        view.player->setMaxTime(TimeSpan(100.0));
        view.player->setReferenceTime(Origin);
        Present = Origin;
        view.player->setRelativeTimeMode(VideoPlayer::CurrentTime);
        QCOMPARE(view.relativeMode()->currentText(), QString("Current time"));
        QVERIFY(refresh->isActive());
        view.click("Play");
        QVERIFY(!refresh->isActive());
        QCOMPARE(view.label(1)->text(), QString("1 seconds to go"));
        Present = Origin + TimeSpan(10.0);
        fire(timerOf(*view.player, "PlayTimer"));
        QCOMPARE(view.label(1)->text(), QString("8 seconds ago"));
        view.click("Pause");
        QVERIFY(refresh->isActive());
        view.relativeMode()->setCurrentIndex(1);
        QVERIFY(!refresh->isActive());
        view.player->applyRelativeTimeMode(7);
        QCOMPARE(view.relativeMode()->currentIndex(), 1);
        QCOMPARE(view.label(1)->text(), QString("2 seconds after origin time"));
        view.player->setRelativeTimeMode(VideoPlayer::Disabled);
        QVERIFY(view.label(1)->isHidden());
    }

    void followsThePresent()
    {
        View view;
        view.player->setMaxTime(TimeSpan(100.0));
        view.player->setReferenceTime(Origin);
        QCOMPARE(view.label(0)->text(), QString("2024-01-05 10:00:00"));
        view.follow(-1e6);
        QCOMPARE(view.position(), 1.0);
        QCOMPARE(view.takeCalls(), QString("stopped started next"));
        view.follow(41.5);
        QCOMPARE(view.player->absoluteTime(), Origin + TimeSpan(42.5));
        QCOMPARE(view.label(0)->text(), QString("2024-01-05 10:00:42"));
        view.follow(1e6);
        QCOMPARE(view.position(), 100.0);
        QVERIFY(view.button("Play"));
    }

    void hidesWhenThePointerHasLeft()
    {
        View view;
        const QPoint place = view.player->pos();
        enter(*view.player);
        Pointer::leave(*view.player);
        QTimer *first = hideTimers(*view.player).value(0);
        QVERIFY(first && first->interval() == 3000);
        enter(*view.player); // comes back in time
        QVERIFY(!first->isActive());
        Pointer::leave(*view.player);
        Pointer::leave(*view.player);
        enter(*view.player); // stops the last one only
        QTRY_COMPARE(hideTimers(*view.player).size(), 1);
        fire(hideTimers(*view.player)[0]);
        Pointer::leave(*view.player); // while it slides
        QTRY_VERIFY(view.player->isHidden());
        QCOMPARE(view.player->pos(), place + QPoint(0, view.player->height()));
        QTRY_COMPARE(hideTimers(*view.player).size(), 0);

        // However it is shown it comes back where it stood, and stays when it is called back.
        view.player->hideControls(false);
        QCOMPARE(view.player->pos(), place);
        // It hides once: an owner that shows it then must see it stay.
        ShowAgain owner;
        view.player->installEventFilter(&owner);
        view.player->startBackwardAnimation();
        auto *slide = view.player->findChild<QPropertyAnimation *>();
        QTRY_COMPARE(slide->state(), QPropertyAnimation::Stopped);
        QCOMPARE(owner.times, 1);
        view.player->removeEventFilter(&owner);
        view.player->startBackwardAnimation();
        slide->setCurrentTime(100);
        QVERIFY(view.player->y() > place.y());
        view.player->startForwardAnimation();
        QVERIFY(view.player->isVisible() && slide->state() == QPropertyAnimation::Stopped);
        QCOMPARE(view.player->pos(), place);
    }

    void outlivesItsOwnersWhims()
    {
        for (const char *slot : {"start", "reset", "followCurrentTime", "nextStep"}) {
            View view;
            const QPointer<VideoPlayer> player(view.player);
            connect(player, &VideoPlayer::playerStarted, [&] { delete player; });
            connect(player, &VideoPlayer::playerStopped, [&] { delete player; });
            QMetaObject::invokeMethod(view.player, slot);
            QVERIFY(!player);
        }
        View view;
        view.player->startBackwardAnimation();
        delete view.player;
        QTest::qWait(0);
    }

    void keepsSettings()
    {
        {
            View view;
            QVERIFY(view.player->isVisible() && view.player->isAutoHideEnabled());
            view.autoHide()->click();
            view.repeat()->click();
            view.showAbsoluteTime()->click();
            view.player->speedSelection()->setCurrentText("2x");
            view.relativeMode()->setCurrentIndex(2);
        }
        View view(false);
        QVERIFY(view.player->isVisible() && !view.player->isAutoHideEnabled());
        QVERIFY(view.repeat()->isChecked() && !view.showAbsoluteTime()->isChecked());
        QCOMPARE(view.relativeMode()->currentIndex(), 2);
        QVERIFY(view.label(1)->isHidden());
        view.player->setMaxTime(TimeSpan(100.0));
        view.player->start();
        QCOMPARE(view.position(), 2.0);

        QSettings settings;
        settings.beginGroup("VideoPlayer");
        settings.setValue("autoHide", true);
        settings.setValue("playbackSpeed", "fast");
        settings.setValue("relativeTimeMode", 99);
        view.player->restoreSettings();
        QVERIFY(view.player->isHidden());
        QCOMPARE(view.player->speedSelection()->currentText(), QString("2x"));
        QCOMPARE(view.relativeMode()->currentIndex(), 2);
    }

private:
    QTemporaryDir _folder;
};

QTEST_MAIN(VideoPlayerTest)
#include "tst_videoplayer.moc"
