// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bench/bench.h"
#include "bench/job.h"
#include "bench/jobs.h"
#include "bench/mapview.h"
#include "bench/replay.h"
#include "bench/selection.h"
#include "bench/shownevents.h"
#include "bench/task.h"
#include "map/eventmaplayer.h"
#include "map/eventsonmap.h"
#include "map/mappanel.h"
#include "player/filmexport.h"
#include "player/playerpanel.h"
#include "waveformtesting.h"

#include <norvu/gui/datetimeedit.h>
#include <norvu/gui/videoplayer.h>
#include <norvu/gui/videoplayer_p.h>
#include <tellarix/qt/map/mapwidget.h>

#include <QComboBox>
#include <QProcess>
#include <QSettings>
#include <QSlider>

#include <random>

using namespace WaveformTesting;
using namespace Workbench;

namespace {

constexpr double Day = 86400;

Core::Time day(double days)
{
    return Core::Time(2024, 1, 1) + Core::TimeSpan(days * Day);
}

EventFacts eventAt(const Core::Time &time, int number)
{
    EventFacts event;
    event.publicID = QString("event/%1").arg(number);
    event.originTime = time;
    event.longitude = number * 7 % 100;
    event.latitude = number * 3 % 50;
    event.magnitude = 4 + number % 3;
    return event;
}

/** Six events: two at once on the first day, and one of no known time. */
QVector<EventFacts> sixEvents()
{
    QVector<EventFacts> events;
    for (const double days : {0.0, 1.0, 1.0, 2.5, 4.0})
        events.append(eventAt(day(days), events.size()));
    events.append(eventAt(Core::Time(), events.size()));
    return events;
}

struct Desk
{
    explicit Desk(const QVector<EventFacts> &events = sixEvents())
    {
        bench.shownEvents()->set(events);
        map->resize(500, 400);
        map->show();
        map->showAll();
        panel.show();
        QObject::connect(&bench, &Bench::problemsTold,
                         [this](const QStringList &texts) { problems += texts; });
    }

    /** Ids of what is on the map, with its opacity. */
    QMap<QString, double> shown() const
    {
        QMap<QString, double> shown;
        for (const EventFacts &event : bench.shownEvents()->all()) {
            const auto *symbol = map->events()->layer()->symbol(event.publicID.toStdString());
            if (symbol)
                shown.insert(event.publicID, symbol->opacity());
        }
        return shown;
    }

    Core::Time time() const { return bench.selection()->time(); }
    void setTime(const Core::Time &time) { bench.selection()->setTime(time); }

    /** Chooses an entry of the first box that has it. */
    void choose(const QString &text)
    {
        for (QComboBox *box : panel.findChildren<QComboBox *>()) {
            if (box->findText(text) >= 0)
                return box->setCurrentText(text);
        }
        qFatal("No entry %s", qPrintable(text));
    }

    FilmPlan plan(const QString &folder) const
    {
        return {folder, {320, 200}, 10, day(0), day(4), Core::TimeSpan(Day), false};
    }

    void write(const FilmPlan &plan)
    {
        QPointer<FilmExport> film = new FilmExport(&bench, plan, &panel);
        film->start();
        QTRY_VERIFY(!film);
        QVERIFY(bench.tasks()->running().isEmpty());
    }

    QStringList problems;
    Bench bench;
    std::unique_ptr<MapPanel> map{new MapPanel(&bench)};
    PlayerPanel panel{&bench};
};

} // namespace

class TestPlayer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup() { Norvu::Gui::setVideoPlayerClock(nullptr); }
    void mapShowsWhatHasCome();
    void stepsLeaveTheMapAsSetOnes();
    void walksFromEventToEvent();
    void runsThroughCatalogue();
    void followsAnyTime();
    void standsClocksThatJump();
    void takesTypedTimesOfLongCatalogues();
    void endsWithItsMap();
    void ignoresBrokenSettings();
    void plansFilms_data();
    void plansFilms();
    void writesPictures();
    void tellsWhatCannotBeWritten();
    void leavesFilmsToJobs();

private:
    QTemporaryDir _folder;
};

void TestPlayer::initTestCase()
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, _folder.path());
}

void TestPlayer::mapShowsWhatHasCome()
{
    Desk desk;
    const QImage before = desk.map->grab().toImage();
    desk.choose("1 day");
    desk.panel.setOn(true);
    QVERIFY(desk.panel.player());
    QCOMPARE(desk.panel.player()->geometry().bottom(), desk.map->map()->rect().bottom());
    QCOMPARE(desk.shown(), (QMap<QString, double>{{"event/0", 1}}));
    desk.setTime(day(1.75));
    QCOMPARE(desk.shown(),
             (QMap<QString, double>{{"event/0", 0}, {"event/1", 0.25}, {"event/2", 0.25}}));
    desk.choose("never");
    QCOMPARE(desk.shown().value("event/0"), 1.0);
    desk.setTime(day(0.5));
    QCOMPARE(desk.shown().size(), 1);

    desk.panel.setOn(false);
    QCOMPARE(desk.shown().size(), 6);
    QVERIFY(!desk.time().valid());
    QTRY_VERIFY(desk.map->map()->findChildren<Norvu::Gui::VideoPlayer *>().isEmpty());
    QTRY_COMPARE(desk.map->grab().toImage(), before);
}

void TestPlayer::stepsLeaveTheMapAsSetOnes()
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> days(-1, 41);
    QVector<EventFacts> events;
    for (int i = 0; i < 200; ++i)
        events.append(eventAt(day(qBound(0.0, days(random), 40.0)), i));
    Desk desk(events);
    desk.panel.setOn(true);
    for (int step = 0; step < 60; ++step) {
        const Core::Time moment = day(days(random));
        const Core::TimeSpan fade(step % 4 * 5 * Day);
        desk.setTime(moment);
        desk.bench.replay()->setFade(fade);
        const QMap<QString, double> shown = desk.shown();
        for (const EventFacts &event : events) {
            QCOMPARE(shown.contains(event.publicID), event.originTime <= moment);
            QCOMPARE(shown.value(event.publicID), opacityAt(moment, event.originTime, fade));
        }
    }
}

void TestPlayer::walksFromEventToEvent()
{
    Desk desk;
    desk.panel.setOn(true);
    const QSignalSpy chosen(desk.bench.selection(), SIGNAL(eventChanged()));
    QVERIFY(chosen.isValid());
    for (const double days : {1.0, 2.5, 4.0, 4.0}) {
        desk.panel.showNext();
        QCOMPARE(desk.time(), day(days));
        QCOMPARE(desk.panel.player()->absoluteTime(), day(days));
    }
    for (const double days : {2.5, 1.0, 0.0, 0.0}) {
        desk.panel.showPrevious();
        QCOMPARE(desk.time(), day(days));
    }
    QCOMPARE(chosen.count(), 6);
    QCOMPARE(desk.bench.selection()->chosenEvent()->publicID, QString("event/0"));
}

void TestPlayer::runsThroughCatalogue()
{
    Desk desk;
    desk.panel.setOn(true);
    desk.choose("10 minutes a second");
    const auto speed = desk.panel.player()->speedSelection()->currentIndex();
    desk.panel.togglePlaying();
    QTRY_VERIFY(day(0) + Core::TimeSpan(30) < desk.time());
    QVERIFY(desk.time() < day(1));
    desk.choose("30 days a second");
    QCOMPARE(desk.panel.player()->speedSelection()->currentIndex(), speed);
    const QSignalSpy stopped(desk.panel.player(), SIGNAL(playerStopped()));
    QTRY_COMPARE(desk.time(), day(4));
    QTRY_COMPARE(stopped.count(), 1);
    QCOMPARE(desk.shown().size(), 5);
}

void TestPlayer::followsAnyTime()
{
    Desk desk;
    desk.panel.setOn(true);
    const QSignalSpy told(desk.bench.selection(), SIGNAL(timeChanged()));
    const auto last = Core::Time::FromUSecs(std::numeric_limits<int64_t>::max());
    const std::pair<Core::Time, double> cases[] = {{day(1.5), 1.5},
                                                   {day(-9), 0},
                                                   {day(99), 4},
                                                   {last, 4},
                                                   {Core::Time::FromUSecs(-last.usecs()), 0}};
    int count = 0;
    for (const auto &[time, shown] : cases) {
        desk.setTime(time);
        QCOMPARE(desk.time(), time); // nothing sets it back
        QCOMPARE(told.count(), ++count);
        QCOMPARE(desk.panel.player()->absoluteTime(), day(shown));
    }
    desk.panel.togglePlaying();
    desk.setTime(Core::Time());
    QCOMPARE(desk.shown().size(), 6);
    QTRY_VERIFY(!desk.time().valid());
    desk.bench.shownEvents()->set({});
    desk.panel.showNext();
    QVERIFY(!desk.bench.selection()->chosenEvent());
    desk.panel.setOn(false);
    desk.panel.setOn(true); // nothing to replay
    QVERIFY(!desk.bench.replay()->isOn());
}

void TestPlayer::standsClocksThatJump()
{
    Desk desk;
    desk.panel.setOn(true);
    for (Core::Time (*clock)() :
         {+[] { return Core::Time(1000, 1, 1); }, +[] { return Core::Time(9999, 1, 1); }}) {
        Norvu::Gui::setVideoPlayerClock(clock);
        desk.panel.player()->followCurrentTime();
        QVERIFY(desk.panel.range().startTime() <= desk.time());
        QVERIFY(desk.time() <= desk.panel.range().endTime());
    }
}

void TestPlayer::takesTypedTimesOfLongCatalogues()
{
    const Core::Time first(1000, 1, 1);
    const Core::Time last(2024, 1, 1);
    Desk desk({eventAt(first, 0), eventAt(Core::Time(1400, 6, 1), 1), eventAt(last, 2)});
    desk.panel.setOn(true);
    auto *edit = desk.panel.findChild<Norvu::Gui::DateTimeEdit *>();
    edit->setDateTime(QDateTime(QDate(1500, 1, 1), QTime(0, 0), Qt::UTC));
    QCOMPARE(desk.time(), Core::Time(1500, 1, 1));
    QCOMPARE(desk.shown().size(), 2);
    const double off = (desk.panel.player()->absoluteTime() - desk.time()).length();
    QVERIFY2(std::abs(off) <= 16, qPrintable(QString::number(off)));
    auto *slider = desk.panel.player()->findChild<QSlider *>();
    slider->setValue(slider->maximum());
    QVERIFY(std::abs((desk.time() - last).length()) <= 16);
}

void TestPlayer::endsWithItsMap()
{
    Desk desk;
    desk.panel.setOn(true);
    desk.panel.togglePlaying();
    desk.map->hide(); // a dock that is closed: the time goes on
    QVERIFY(desk.bench.replay()->isOn());
    desk.map.reset();
    QVERIFY(!desk.bench.replay()->isOn());
    QVERIFY(!desk.panel.player());
    QVERIFY(!desk.time().valid());
    desk.panel.setOn(true);
    QVERIFY(!desk.bench.replay()->isOn());
    desk.bench.shownEvents()->set(sixEvents());
}

void TestPlayer::ignoresBrokenSettings()
{
    QSettings settings(_folder.filePath("broken.ini"), QSettings::IniFormat);
    settings.setValue("player/speed", "nan");
    settings.setValue("player/fade", -5);
    QSettings().setValue("VideoPlayer/playbackSpeed", "rather fast");
    QSettings().setValue("VideoPlayer/relativeTimeMode", 99);
    Desk desk;
    desk.panel.restoreState(settings);
    desk.panel.setOn(true);
    QSettings kept(_folder.filePath("kept.ini"), QSettings::IniFormat);
    desk.panel.saveState(kept);
    QCOMPARE(kept.value("player/speed").toInt(), int(Day));
    QCOMPARE(kept.value("player/fade").toInt(), int(30 * Day));
    QCOMPARE(desk.bench.replay()->fade(), Core::TimeSpan(30 * Day));
}

void TestPlayer::plansFilms_data()
{
    QTest::addColumn<double>("to");
    QTest::addColumn<double>("perFrame");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("count");

    const QSize size(10, 10);
    QTest::newRow("both ends") << 4.0 << 1.0 << size << 5;
    QTest::newRow("rest of a step") << 4.5 << 1.0 << size << 5;
    QTest::newRow("one moment") << 0.0 << 1.0 << size << 1;
    QTest::newRow("end before start") << -1.0 << 1.0 << size << 0;
    QTest::newRow("no step") << 4.0 << 0.0 << size << 0;
    QTest::newRow("backwards") << 4.0 << -1.0 << size << 0;
    QTest::newRow("too many") << 4.0 << 1e-7 << size << 0;
    QTest::newRow("no pixels") << 4.0 << 1.0 << QSize(0, 10) << 0;
    QTest::newRow("too many pixels") << 4.0 << 1.0 << QSize(10, 100000) << 0;
}

void TestPlayer::plansFilms()
{
    QFETCH(double, to);
    QFETCH(double, perFrame);
    QFETCH(QSize, size);
    QFETCH(int, count);

    const FilmPlan plan{"/100% \"sure\"", size,    25,
                        day(0),           day(to), Core::TimeSpan(perFrame * Day)};
    QCOMPARE(frameCount(plan), count);
    QCOMPARE(problemOf(plan).isEmpty(), count > 0);
    const QStringList words = QProcess::splitCommand(filmCommand(plan, "/bin/an encoder"));
    QCOMPARE(words.first(), QString("/bin/an encoder"));
    QCOMPARE(words.last(), QString("/100% \"sure\"/replay.mp4"));
    QVERIFY(words.contains("/100%% \"sure\"/replay-%06d.png"));
}

void TestPlayer::writesPictures()
{
    const QTemporaryDir folder;
    Desk desk;
    desk.panel.setOn(true);
    desk.setTime(day(3));
    desk.write(desk.plan(folder.filePath("new/pictures")));
    QCOMPARE(desk.problems, QStringList());
    QCOMPARE(desk.time(), day(3));
    const QDir written(folder.filePath("new/pictures"));
    QCOMPARE(written.entryList(QDir::Files).size(), 5);
    QImage former;
    for (const QString &name : written.entryList(QDir::Files)) {
        const QImage picture(written.filePath(name));
        QCOMPARE(picture.size(), QSize(320, 200));
        QVERIFY(picture != former);
        former = picture;
    }

    FilmPlan long_ = desk.plan(folder.filePath("cancelled"));
    long_.perFrame = Core::TimeSpan(60);
    QPointer<FilmExport> film = new FilmExport(&desk.bench, long_, &desk.panel);
    film->start();
    QTRY_VERIFY(desk.bench.tasks()->running().first()->progress().done > 1);
    desk.bench.tasks()->running().first()->cancel();
    QTRY_VERIFY(!film);
    QVERIFY(desk.bench.tasks()->running().isEmpty());
    QCOMPARE(desk.time(), day(3));
}

void TestPlayer::tellsWhatCannotBeWritten()
{
    const QTemporaryDir folder;
    const QString file = writeText(folder.filePath("file"), "no folder");
    Desk desk;
    desk.panel.setOn(true);
    desk.write(desk.plan(file + "/below"));
    QVERIFY2(desk.problems.join(' ').contains(file), qPrintable(desk.problems.join(' ')));
    desk.problems.clear();
    {
        const FullDisk disk(1000);
        desk.write(desk.plan(folder.filePath("full")));
    }
    QCOMPARE(desk.problems.size(), 1);
    QVERIFY2(desk.problems.first().contains("replay-000001.png: "),
             qPrintable(desk.problems.first()));
}

void TestPlayer::leavesFilmsToJobs()
{
    const QByteArray pathBefore = qgetenv("PATH");
    const QTemporaryDir folder;
    Desk desk;
    desk.panel.setOn(true);
    FilmPlan plan = desk.plan(folder.filePath("my film"));
    plan.makesFilm = true;
    qputenv("PATH", folder.path().toLocal8Bit());
    desk.write(plan);
    QVERIFY2(desk.problems.join(' ').contains("install"), qPrintable(desk.problems.join(' ')));

    const QString encoder =
        writeText(folder.filePath("ffmpeg"), "#!/bin/sh\necho \"$@\"\necho film > \"${12}\"\n");
    QFile::setPermissions(encoder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    desk.write(plan);
    QCOMPARE(desk.bench.jobs()->all().size(), 1);
    QTRY_COMPARE(contentOf(plan.folder + "/replay.mp4"), QByteArray("film\n"));
    QTRY_VERIFY(desk.bench.jobs()->all().first()->output().contains("-frames:v 5"));
    qputenv("PATH", pathBefore);
}

QTEST_MAIN(TestPlayer)
#include "tst_player.moc"
