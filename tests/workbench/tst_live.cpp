// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bench/stations.h"
#include "bench/streamstates.h"
#include "bench/tracerows.h"
#include "client/seedlinkserver.h"
#include "spectrograms/spectrogramrow.h"
#include "spectrograms/spectrograms.h"
#include "waveforms/livefollow.h"
#include "waveforms/livemenu.h"
#include "waveforms/livesources.h"
#include "waveforms/outagenotice.h"
#include "waveforms/rowfilters.h"
#include "waveforms/rowlooks.h"
#include "waveforms/rowname.h"
#include "waveforms/waveformpanel.h"
#include "waveforms/waveforms.h"
#include "waveformtesting.h"

#include <tellarix/client/io/recordstream.h>
#include <tellarix/qt/records/timescale.h>

#include <QAbstractButton>
#include <QAction>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>

using namespace WaveformTesting;
using namespace Workbench;

namespace {

/** What sources "fake://" give: records of tests, and then nothing until they are closed. */
struct Line
{
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<RecordCPtr> records;
    std::atomic<int> readers{0};

    void send(const RecordCPtr &record)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        records.push_back(record);
        changed.notify_all();
    }
};

Line line;

class FakeStream : public IO::RecordStream
{
public:
    bool setSource(const std::string &source) override { return source != "refused"; }
    bool isLive() const override { return true; }
    bool open() override { return ++line.readers > 0; }
    RecordPtr next() override
    {
        std::unique_lock<std::mutex> lock(line.mutex);
        line.changed.wait(lock, [this] { return _closed || !line.records.empty(); });
        if (_closed)
            return RecordPtr();
        const RecordCPtr record = line.records.front();
        line.records.pop_front();
        return RecordPtr(new Record(*record));
    }
    void close() override
    {
        const std::lock_guard<std::mutex> lock(line.mutex);
        line.readers -= _closed ? 0 : 1;
        _closed = true;
        line.changed.notify_all();
    }

private:
    bool _closed{false};
};

const IO::RecordStreamScheme fakeScheme("fake", [] { return IO::RecordStreamPtr(new FakeStream); });

constexpr double Rate = 20;
const QString Source("fake://line");

/** Rows that follow a fake source, at a time that stands still unless it is moved on. */
struct Desk
{
    explicit Desk(const QString &source = Source)
        : panel((bench.streamStates()->setClock([this] { return now; }), &bench))
    {
        bench.rows()->setAddition(new Spectrograms(panel.view()));
        panel.resize(900, 500);
        panel.show();
        panel.open({source});
    }

    /** Sends @p seconds of a stream up to now. */
    void send(const std::string &id, double seconds)
    {
        line.send(
            sawTooth(id, (now - Start).length() - seconds, Rate, static_cast<int>(seconds * Rate)));
    }
    void pass(double seconds) { now += Core::TimeSpan(seconds); }
    /** Seconds from the right end of the view to now; steps of less than a pixel are not taken. */
    int behind() const
    {
        return qFloor((now - panel.view()->visibleTimeWindow().endTime()).length() + 0.05);
    }
    int length() const { return qRound(panel.view()->visibleTimeWindow().length().length()); }
    void scroll(double seconds)
    {
        TraceView *view = panel.view();
        view->setTimeRange(view->tmin() + seconds, view->tmax() + seconds);
    }
    const RecordSequence *records(int row) const
    {
        const Trace *item = panel.view()->itemAt(row);
        return item ? item->recordWidget()->records(0) : nullptr;
    }
    /** What is held of a row, in s. */
    int held(int row) const
    {
        return records(row) ? qRound(records(row)->timeWindow().length().length()) : 0;
    }

    Core::Time now{Start};
    Bench bench;
    Waveforms panel;
};

/** Counts how often the traces of a row are painted, rather than what stands beside them. */
class TracePaints : public QObject
{
public:
    explicit TracePaints(Gui::RecordWidget *traces) : _traces(traces)
    {
        traces->installEventFilter(this);
    }

    int count{0};

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            count += static_cast<QPaintEvent *>(event)->region().intersects(_traces->canvasRect());
        return false;
    }

private:
    Gui::RecordWidget *_traces;
};

} // namespace

class TestLive : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qputenv("XDG_CONFIG_HOME", QDir::tempPath().toLocal8Bit()); }
    void init()
    {
        const std::lock_guard<std::mutex> lock(line.mutex);
        line.records.clear();
    }

    void tellsZoomFromLookBack_data();
    void tellsZoomFromLookBack();
    void followsPausesAndFollowsAgain();
    void showsWhatWasAskedFor();
    void showsDelays_data();
    void showsDelays();
    void delaysLeaveTracesAlone();
    void keepsTheLastWhileOnly();
    void closedRowsStayAway();
    void endsAtOnce();
    void waitsForServerThatIsDown();
    void opensSourcesAgain();
    void spectrogramsAndFiltersGoOn();
};

void TestLive::tellsZoomFromLookBack_data()
{
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("end");
    QTest::addColumn<int>("change");
    const auto none = static_cast<int>(FollowChange::None);
    const auto zoom = static_cast<int>(FollowChange::Zoom);
    const auto leave = static_cast<int>(FollowChange::Leave);

    QTest::newRow("the same") << 0.0 << 600.0 << none;
    QTest::newRow("into the future") << 60.0 << 660.0 << none;
    QTest::newRow("back") << -60.0 << 540.0 << leave;
    QTest::newRow("back by a pixel or two") << -1.0 << 599.0 << none;
    QTest::newRow("wheel in about the left end") << 0.0 << 300.0 << zoom;
    QTest::newRow("wheel out about the middle") << -200.0 << 800.0 << zoom;
    QTest::newRow("a box about the past") << 100.0 << 160.0 << leave;
    QTest::newRow("a box up to the present") << 540.0 << 600.0 << zoom;
    QTest::newRow("all of a day") << -86400.0 << 600.0 << zoom;
}

void TestLive::tellsZoomFromLookBack()
{
    QFETCH(double, start);
    QFETCH(double, end);
    QFETCH(int, change);
    QCOMPARE(static_cast<int>(followChange(window(0, 600), window(start, end))), change);
}

void TestLive::followsPausesAndFollowsAgain()
{
    Desk desk;
    desk.send("XX.AAA..HHZ", 5);
    QTRY_VERIFY(desk.panel.follow()->isFollowing());
    QCOMPARE(desk.behind(), 0);
    QCOMPARE(desk.length(), 600);
    QAbstractButton *notice = desk.panel.follow()->notice();

    desk.pass(100);
    QTRY_COMPARE(desk.behind(), 0);
    desk.panel.view()->horizontalZoomIn();
    QTRY_VERIFY(desk.behind() == 0 && desk.length() < 600);
    QVERIFY(desk.panel.follow()->isFollowing() && !notice->isVisible());

    desk.scroll(-100);
    QTRY_VERIFY(notice->isVisible());
    QVERIFY(notice->text().contains("10:12:52"));
    desk.pass(50);
    QTest::keyClick(desk.panel.view(), Qt::Key_Home); // the other keys are those of the rows
    QCOMPARE(desk.behind(), 150);
    QTest::keyClick(desk.panel.view(), Qt::Key_End);
    QVERIFY(!notice->isVisible());
    desk.pass(50);
    QTRY_COMPARE(desk.behind(), 0);

    desk.scroll(-100);
    QTRY_VERIFY(notice->isVisible());
    notice->click();
    QCOMPARE(desk.behind(), 0);
    desk.panel.clear();
    QVERIFY(!desk.panel.follow()->isFollowing() && !desk.panel.follow()->action()->isEnabled());
}

void TestLive::showsWhatWasAskedFor()
{
    const QString source =
        Source + "#from=-2h&streams=XX.AAA..HHZ" + QString(",XX.B..HHZ").repeated(30);
    Desk desk(source);
    desk.send("XX.AAA..HHZ", 5);
    QTRY_VERIFY(desk.panel.follow()->isFollowing());
    QCOMPARE(desk.length(), 7200);

    // Many streams make no menu as wide as the screen.
    const LiveMenu menu(desk.panel.live(), desk.panel.follow(), nullptr);
    const auto actions = menu.actions();
    const auto entry = std::find_if(actions.begin(), actions.end(),
                                    [&](const QAction *some) { return some->toolTip() == source; });
    QVERIFY(entry != actions.end() && (*entry)->text().size() < source.size() / 2);
}

void TestLive::showsDelays_data()
{
    QTest::addColumn<double>("seconds"); // of a record
    QTest::addColumn<double>("age");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("stale");

    QTest::newRow("fresh") << 5.0 << 3.0 << "3 s" << false;
    QTest::newRow("late, but not yet stale") << 5.0 << 59.0 << "59 s" << false;
    QTest::newRow("stale") << 5.0 << 61.0 << "1 min" << true;
    QTest::newRow("long records, late") << 400.0 << 1190.0 << "19 min" << false;
    QTest::newRow("long records, stale") << 400.0 << 1210.0 << "20 min" << true;
    QTest::newRow("days") << 5.0 << 200000.0 << "2 d" << true;
    QTest::newRow("a clock ahead") << 5.0 << -30.0 << "0 s" << false;
}

void TestLive::showsDelays()
{
    QFETCH(double, seconds);
    QFETCH(double, age);
    QFETCH(QString, text);
    QFETCH(bool, stale);

    StreamStates states;
    Core::Time now = Start;
    states.setClock([&now] { return now; });
    states.note("XX.AAA..HHZ", window(-2 * seconds, -seconds));
    states.note("XX.AAA..HHZ", window(-seconds, 0));
    states.note("XX.AAA..HHZ", window(-4 * seconds, -3 * seconds)); // late, and counts for nothing
    now += Core::TimeSpan(age);
    const StreamState *state = states.find("XX.AAA..HHZ");
    QVERIFY(state);
    QCOMPARE(delayText(delayOf(*state, now)), text);
    QCOMPARE(isStale(*state, now), stale);
    states.forget("XX.AAA..HHZ");
    QVERIFY(!states.find("XX.AAA..HHZ"));
}

void TestLive::delaysLeaveTracesAlone()
{
    Desk desk;
    desk.panel.looks()->setCompact(true);
    desk.send("XX.AAA..HHZ", 5);
    QTRY_VERIFY(desk.panel.follow()->isFollowing());
    Gui::RecordWidget *traces = desk.panel.view()->itemAt(0)->recordWidget();
    auto *name = traces->findChild<RowName *>();
    QVERIFY(name);
    QSignalSpy updates(desk.bench.streamStates(), SIGNAL(updated()));
    QVERIFY(updates.isValid());
    desk.panel.follow()->action()->trigger(); // paused: nothing else moves
    QTRY_COMPARE(updates.count(), 1);
    QCoreApplication::processEvents();

    TracePaints paints(traces);
    const QImage before = name->grab().toImage();
    paints.count = 0;
    desk.pass(90);
    QTRY_COMPARE(updates.count(), 2);
    QCoreApplication::processEvents();
    QCOMPARE(paints.count, 0);
    QVERIFY(name->grab().toImage() != before);
}

void TestLive::keepsTheLastWhileOnly()
{
    Desk desk;
    desk.panel.live()->setLength(Core::TimeSpan(600));
    for (int i = 0; i < 100; ++i) {
        desk.pass(100);
        desk.send("XX.AAA..HHZ", 100);
    }
    QTRY_COMPARE(desk.records(0) ? desk.records(0)->timeWindow().endTime() : Core::Time(),
                 desk.now);
    QCOMPARE(desk.held(0), 700); // the record that the beginning lies in is whole
    QTRY_COMPARE(qRound(desk.panel.coverage().extent().length().length()), 700);

    desk.panel.live()->setLength(Core::TimeSpan(200));
    QCOMPARE(desk.held(0), 300);
    // A station whose clock is wrong doesn't take the others' room, nor its own.
    QSignalSpy problems(&desk.panel, SIGNAL(problems(QStringList)));
    line.send(sawTooth("XX.AAA..HHZ", 1E6, Rate, 100));
    QTRY_COMPARE(problems.count(), 1);
    QCOMPARE(desk.held(0), 300);
}

void TestLive::closedRowsStayAway()
{
    Desk desk;
    desk.send("XX.AAA..HHZ", 5);
    desk.send("XX.BBB..HHZ", 5);
    QTRY_COMPARE(desk.panel.view()->count(), 2);
    const auto closeFirst = [&desk] {
        desk.panel.view()->setSelectedTrace(0);
        for (QAction *action : desk.panel.view()->actions()) {
            if (action->shortcut() == QKeySequence("Shift+Del"))
                action->trigger();
        }
    };
    closeFirst();
    desk.pass(5);
    desk.send("XX.AAA..HHZ", 5);
    desk.send("XX.BBB..HHZ", 5);
    QTRY_COMPARE(desk.held(0), 10);
    QCOMPARE(desk.panel.view()->count(), 1);
    QCOMPARE(desk.panel.live()->names(), QStringList{Source});

    closeFirst();
    QVERIFY(desk.panel.live()->isEmpty());
    QTRY_COMPARE(line.readers.load(), 0);
}

void TestLive::endsAtOnce()
{
    QElapsedTimer time;
    {
        Desk desk;
        desk.send("XX.AAA..HHZ", 5);
        QTRY_COMPARE(desk.held(0), 5);
        QCOMPARE(line.readers.load(), 1);
        time.start();
        desk.panel.clear();
        QVERIFY(time.elapsed() < 100);
        QCOMPARE(line.readers.load(), 0);

        desk.panel.open({Source, Source});
        QCOMPARE(desk.panel.live()->names().size(), 1);
        QTRY_COMPARE(line.readers.load(), 1);
        time.start();
    }
    QVERIFY(time.elapsed() < 1000); // with all of the panel
    QCOMPARE(line.readers.load(), 0);
}

void TestLive::waitsForServerThatIsDown()
{
    SeedLinkTesting::SeedLinkServer server;
    QVERIFY(server.start());
    server.stop();
    const QString url = QString::fromStdString(server.url()) + "?retry=0.05";
    Desk desk;
    desk.now = Core::Time::GMT();
    desk.send("XX.AAA..HHZ", 5);
    QTRY_COMPARE(desk.panel.view()->count(), 1);
    const LiveMenu menu(desk.panel.live(), desk.panel.follow(), nullptr);
    const auto entryOf = [&] {
        for (const QAction *action : menu.actions()) {
            if (action->text().contains(url))
                return action->text();
        }
        return QString();
    };
    const auto *notice = desk.panel.findChild<OutageNotice *>();
    QVERIFY(notice && !notice->isVisible());

    desk.panel.open({url});
    QTRY_VERIFY(notice->isVisible());
    QCOMPARE(notice->text(),
             "Waiting for " + QString::fromStdString(server.address()) + ": Connection refused");
    QCOMPARE(entryOf(), "End " + url + " (waiting)");
    QVERIFY(server.start());
    QTRY_VERIFY(!notice->isVisible());
    QCOMPARE(entryOf(), "End " + url);
    server.add(seedRecord("XX.BBB..HHZ", desk.now - Core::TimeSpan(100.0)));
    QTRY_COMPARE(desk.panel.view()->count(), 2);

    server.stop();
    QTRY_VERIFY(notice->isVisible());
    QElapsedTimer time;
    time.start();
    desk.panel.live()->end(url);
    QVERIFY(time.elapsed() < 100);
    QVERIFY(!notice->isVisible() && entryOf().isEmpty());
}

void TestLive::opensSourcesAgain()
{
    const QTemporaryDir folder;
    QSettings settings(folder.filePath("settings.ini"), QSettings::IniFormat);
    for (const bool isWanted : {true, false}) {
        {
            Bench bench;
            WaveformPanel panel(&bench);
            panel.openSources({Source});
            QTRY_COMPARE(line.readers.load(), 1);
            line.send(sawTooth("XX.AAA..HHZ", 0, Rate, 100));
            QTRY_COMPARE(panel.waveforms()->view()->count(), 1);
            bench.stations()->add({{"XX.AAA", {48.5, -9.1}}, {"XX.OFF", {1, 2}}});
            for (QAction *action : panel.findChildren<QAction *>()) {
                const QString text = action->text().remove('&');
                if (text == "1 hour" ||
                    (text == "Open live sources again at the start" && isWanted))
                    action->trigger();
            }
            panel.saveState(settings);
        }
        QCOMPARE(line.readers.load(), 0);
        Bench bench;
        WaveformPanel panel(&bench);
        panel.restoreState(settings);
        QCOMPARE(panel.waveforms()->live()->length(), Core::TimeSpan(3600));
        QCOMPARE(panel.openRemembered(), isWanted);
        QTRY_COMPARE(line.readers.load(), isWanted ? 1 : 0);
        const auto &places = bench.stations()->all();
        QCOMPARE(places.keys(), isWanted ? QStringList("XX.AAA") : QStringList());
        QCOMPARE(places.value("XX.AAA").longitude, isWanted ? -9.1 : 0.0);
    }
}

void TestLive::spectrogramsAndFiltersGoOn()
{
    Desk desk;
    desk.panel.live()->setLength(Core::TimeSpan(300));
    auto *spectrograms = static_cast<Spectrograms *>(desk.bench.rows()->addition());
    spectrograms->setMemoryLimit(200 << 20);
    desk.panel.filters()->setFilter("bandpass(1, 4, order=2)");
    desk.panel.view()->setFilterEnabled(true);
    spectrograms->setAllShown(true);
    size_t most = 0;
    for (int i = 0; i < 40; ++i) {
        desk.pass(50);
        desk.send("XX.AAA..HHZ", 50);
        QTRY_VERIFY(desk.records(0) && desk.records(0)->timeWindow().endTime() == desk.now);
        QTRY_VERIFY(!spectrograms->isBusy());
        auto *row = static_cast<SpectrogramRow *>(desk.panel.view()->itemAt(0)->recordWidget());
        QTRY_VERIFY(row->isComplete() && row->hasPicture());
        if (i == 12)
            most = row->memoryUsed();
        const RecordSequence *filtered = row->filteredRecords(0);
        QTRY_COMPARE(filtered ? filtered->size() : 0, desk.records(0)->size());
        if (i > 12)
            QVERIFY(row->memoryUsed() <= 2 * most);
    }
}

QTEST_MAIN(TestLive)
#include "tst_live.moc"
