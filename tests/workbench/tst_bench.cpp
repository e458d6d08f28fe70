// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bench/region.h"
#include "bench/selection.h"
#include "bench/shownevents.h"
#include "bench/stations.h"
#include "bench/task.h"
#include "taskprogress.h"

#include <QProgressBar>
#include <QToolButton>
#include <QtTest>

#include <limits>
#include <thread>

using namespace Tellarix;
using namespace Workbench;

namespace {

const Core::Time Start(2024, 1, 5, 10, 11, 12);
const double NotANumber = std::numeric_limits<double>::quiet_NaN();

EventFacts eventCalled(const QString &id)
{
    EventFacts event;
    event.publicID = id;
    event.originTime = Start;
    event.longitude = NotANumber;
    event.magnitude = 4.2;
    return event;
}

} // namespace

Q_DECLARE_METATYPE(Workbench::Region)

class TestBench : public QObject
{
    Q_OBJECT

private slots:
    void tellsOnlyOfWhatIsDifferent();
    void tellsWhatIsChosenInTheEnd();
    void keepsPlacesOnEarth();
    void knowsWhatARegionHolds_data();
    void knowsWhatARegionHolds();
    void findsShownEvents();
    void takesProgressFromThreads();
    void showsLastTask();
};

/** Also an event with numbers that are none equals itself, or two panels would run in circles. */
void TestBench::tellsOnlyOfWhatIsDifferent()
{
    Selection selection;
    QStringList told;
    connect(&selection, &Selection::eventChanged, [&] { told << "event"; });
    connect(&selection, &Selection::timeChanged, [&] { told << "time"; });
    connect(&selection, &Selection::timeWindowChanged, [&] { told << "window"; });
    connect(&selection, &Selection::stationsChanged, [&] { told << "stations"; });

    for (int round = 0; round < 2; ++round) {
        selection.setEvent(eventCalled("a"));
        selection.setTime(Core::Time(1970, 1, 1)); // 1970 is a time too
        selection.setTimeWindow({Start, Start + Core::TimeSpan(1.0)});
    }
    selection.setStations({"XX.B", "XX.A", "XX.B"});
    selection.setStations({"XX.A", "XX.B"});
    QCOMPARE(told, QStringList({"event", "time", "window", "stations"}));
    QCOMPARE(selection.stations(), QStringList({"XX.A", "XX.B"}));

    told.clear();
    EventFacts other = eventCalled("a");
    other.depthKm = 0;
    selection.setEvent(other);
    selection.setTimeWindow({Start, Start}); // empty, as is the next
    selection.setTimeWindow({});
    QCOMPARE(told, QStringList({"event", "window"}));
    told.clear();
    selection.clear();
    selection.clear();
    QCOMPARE(told, QStringList({"event", "time", "stations"}));
}

/** A panel may choose anew while it is told; those told later never see what was before. */
void TestBench::tellsWhatIsChosenInTheEnd()
{
    Selection selection;
    QStringList seen;
    connect(&selection, &Selection::eventChanged,
            [&] { selection.setEvent(eventCalled("final")); });
    connect(&selection, &Selection::eventChanged,
            [&] { seen << selection.chosenEvent()->publicID; });
    selection.setEvent(eventCalled("first"));
    QCOMPARE(seen, QStringList({"final", "final"}));
}

void TestBench::knowsWhatARegionHolds_data()
{
    QTest::addColumn<Region>("region");
    QTest::addColumn<QVector<QPointF>>("inside");
    QTest::addColumn<QVector<QPointF>>("outside");

    const auto box = [](double left, double bottom, double right, double top) {
        return Region::box(QRectF(QPointF(left, bottom), QPointF(right, top)));
    };
    using Points = QVector<QPointF>;
    const Points nowhere{{NotANumber, 40}, {15, NotANumber}};
    QTest::newRow("box") << box(10, 30, 20, 50) << Points{{10, 30}, {20, 50}, {375, 40}}
                         << Points{{9.9, 40}, {20.1, 40}, {15, 29.9}, {15, 50.1}} + nowhere;
    QTest::newRow("box across the date line")
        << box(170, 30, 190, 50) << Points{{175, 40}, {-175, 40}}
        << Points{{0, 40}, {-169, 40}, {169, 40}};
    QTest::newRow("whole world") << box(-180, -90, 180, 90)
                                 << Points{{-180, 0}, {180, 90}, {0, -90}} << nowhere;
    QTest::newRow("circle") << Region::circle(0, 180, 100)
                            << Points{{-179.11, 0}, {179.11, 0}, {180, 0.9}}
                            << Points{{-179.09, 0}, {180, 0.91}, {0, 0}} + nowhere;
}

void TestBench::knowsWhatARegionHolds()
{
    QFETCH(const Region, region);
    QFETCH(const QVector<QPointF>, inside);
    QFETCH(const QVector<QPointF>, outside);
    for (const QPointF &place : inside)
        QVERIFY2(region.contains(place.y(), place.x()), qPrintable(region.text()));
    for (const QPointF &place : outside)
        QVERIFY2(!region.contains(place.y(), place.x()), qPrintable(region.text()));
}

void TestBench::findsShownEvents()
{
    ShownEvents events;
    const QSignalSpy changed(&events, SIGNAL(changed()));
    EventFacts later = eventCalled("later");
    later.originTime = Start + Core::TimeSpan(1.0);
    events.set({later, eventCalled("first")});
    QCOMPARE(events.all().first().publicID, QString("first"));
    QCOMPARE(events.find("later")->originTime, later.originTime);

    events.set({});
    QVERIFY(!events.find("later"));
    events.set({});
    QCOMPARE(changed.count(), 2);
}

void TestBench::keepsPlacesOnEarth()
{
    Stations stations;
    QSignalSpy spy(&stations, SIGNAL(changed()));
    stations.add({{"XX.A", {48, 9}}, {"XX.B", {NotANumber, 9}}, {"XX.C", {90.5, 9}}});
    stations.add({{"XX.A", {48, 9}}});
    QCOMPARE(spy.count(), 1);
    QCOMPARE(stations.all().keys(), QStringList("XX.A"));
    QVERIFY(!stations.find("XX.B"));
    stations.add({{"XX.A", {-48, 9}}});
    QCOMPARE(spy.count(), 2);
    QCOMPARE(stations.find("XX.A")->latitude, -48.0);
}

void TestBench::takesProgressFromThreads()
{
    constexpr int Steps = 20000;
    Tasks tasks;
    QSignalSpy progress(&tasks, SIGNAL(progressed(Workbench::Task *)));
    QSignalSpy finished(&tasks, SIGNAL(finished(Workbench::Task *)));
    Task *task = tasks.start("Reading", {}, Task::Canceling::Possible);
    QSignalSpy cancel(task, SIGNAL(cancelRequested()));
    std::thread worker([task] {
        for (int i = 1; i <= Steps; ++i)
            task->setProgress(i, Steps);
        while (!task->isCanceled())
            std::this_thread::yield();
    });
    QTRY_COMPARE(task->progress().done, Steps);
    QTRY_VERIFY(progress.count() > 0);
    QVERIFY(progress.count() < Steps);
    task->cancel();
    task->cancel();
    worker.join();
    QCOMPARE(cancel.count(), 1);

    const QPointer<Task> watched(task);
    task->setProgress(1, 2);
    task->finish("stopped");
    progress.clear();
    QCOMPARE(finished.count(), 1);
    QVERIFY(tasks.running().isEmpty());
    QTRY_VERIFY(!watched);
    QCOMPARE(progress.count(), 0);
}

void TestBench::showsLastTask()
{
    Tasks tasks;
    TaskProgress widget(&tasks);
    const auto *bar = widget.findChild<QProgressBar *>();
    auto *button = widget.findChild<QToolButton *>();
    Task *first = tasks.start("Filtering", "rows");
    first->setProgress(3, 20);
    QTRY_COMPARE(bar->text(), QString("Filtering: 3 of 20 rows"));
    QVERIFY(!widget.isHidden() && button->isHidden());

    Task *second = tasks.start("Reading", {}, Task::Canceling::Possible);
    second->setProgress(1, 4);
    QTRY_COMPARE(bar->text(), QString("Reading: 25 %"));
    button->click();
    QVERIFY(second->isCanceled() && !first->isCanceled());
    QVERIFY(!button->isEnabled());

    second->finish();
    QCOMPARE(bar->text(), QString("Filtering: 3 of 20 rows"));
    first->finish();
    QVERIFY(widget.isHidden());
}

QTEST_MAIN(TestBench)
#include "tst_bench.moc"
