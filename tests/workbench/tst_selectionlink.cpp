// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bench/selection.h"
#include "bench/stations.h"
#include "waveforms/selectionlink.h"
#include "waveforms/waveforms.h"
#include "waveformtesting.h"

using namespace WaveformTesting;
using namespace Workbench;

namespace {

/** Ten minutes of two streams of a station and of one of another, two degrees farther north. */
struct Desk
{
    explicit Desk(const QString &file) : waveforms(&bench), view(waveforms.view())
    {
        new SelectionLink(&bench, &waveforms);
        waveforms.resize(900, 500);
        waveforms.show();
        openAll(waveforms, bench, {file});
        bench.stations()->add({{"XX.AAA", {1, 9}}, {"XX.BBB", {3, 9}}});
    }

    /** Chooses an event on the equator. */
    void choose(double seconds)
    {
        EventFacts event;
        event.originTime = Start + Core::TimeSpan(seconds);
        event.longitude = 9;
        bench.selection()->setEvent(event);
    }

    QVector<double> distances() const
    {
        QVector<double> distances;
        for (const Trace *row : view->items())
            distances << row->data(Norvu::Gui::TraceDistance).toDouble();
        return distances;
    }

    QStringList selectedRows() const
    {
        QStringList labels;
        for (const Trace *row : view->selectedItems())
            labels << row->label();
        return labels;
    }

    Bench bench;
    Waveforms waveforms;
    TraceView *view;
};

bool isNear(const Core::TimeWindow &actual, const Core::TimeWindow &expected)
{
    return std::abs((actual.startTime() - expected.startTime()).length()) < 0.001 &&
           std::abs((actual.endTime() - expected.endTime()).length()) < 0.001;
}

} // namespace

class TestSelectionLink : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void windowReachesToTheLastWaves_data();
    void windowReachesToTheLastWaves();
    void windowEndsWithTheData();
    void showsChosenEvent();
    void staysWithoutDataOfTheEvent();
    void followsTimeWindow();
    void followsTimeToItsData();
    void followsStations();

private:
    QTemporaryDir _folder;
    QString _file;
};

void TestSelectionLink::initTestCase()
{
    _file =
        writeRecords(_folder.filePath("minutes.mseed"),
                     {sawTooth("XX.AAA..HHN", 0, 20, 12000), sawTooth("XX.AAA..HHZ", 0, 20, 12000),
                      sawTooth("XX.BBB..HHZ", 0, 20, 12000)});
    QVERIFY(!_file.isEmpty());
}

void TestSelectionLink::windowReachesToTheLastWaves_data()
{
    QTest::addColumn<double>("farthestKm");
    QTest::addColumn<double>("depthKm");
    QTest::addColumn<double>("secondsAfter");

    QTest::newRow("no stations") << 0.0 << 0.0 << 300.0;
    QTest::newRow("near") << 500.0 << 10.0 << 300.0;
    QTest::newRow("far") << 3500.0 << 0.0 << 1060.0;
    QTest::newRow("deep") << 2100.0 << 2800.0 << 1060.0;
}

void TestSelectionLink::windowReachesToTheLastWaves()
{
    QFETCH(double, farthestKm);
    QFETCH(double, depthKm);
    QFETCH(double, secondsAfter);

    EventFacts event;
    event.originTime = Start;
    if (depthKm > 0)
        event.depthKm = depthKm;
    QVERIFY(isNear(eventWindow(event, farthestKm), window(-60, secondsAfter)));
}

void TestSelectionLink::windowEndsWithTheData()
{
    const auto whole = window(0, 2400);
    const auto end = [&](const QVector<Core::TimeWindow> &stretches) {
        return (upToLastData(whole, stretches, Start + Core::TimeSpan(60.0)).endTime() - Start)
            .length();
    };
    QCOMPARE(end({window(30, 230), window(9000, 9900)}), 232.0); // with a margin
    QCOMPARE(end({window(30, 230), window(2300, 9900)}), 2400.0);
    QCOMPARE(end({window(-50, 10)}), 120.0); // the origin stays in sight
}

void TestSelectionLink::showsChosenEvent()
{
    Desk desk(_file);
    QCOMPARE(desk.distances(), QVector<double>({0, 0, 0}));
    desk.choose(100);
    QVERIFY(isNear(desk.view->visibleTimeWindow(), window(40, 400)));
    QVERIFY(isNear(desk.bench.selection()->timeWindow(), window(40, 400)));
    QCOMPARE(desk.view->itemAt(0)->recordWidget()->alignment(), Start + Core::TimeSpan(100.0));
    // A degree of latitude at the equator is 110.574 km long on WGS84.
    QVERIFY(std::abs(desk.distances()[1] - 110.574) < 0.01);
    QVERIFY(std::abs(desk.distances()[2] - 331.73) < 0.02);
    QVERIFY(desk.view->itemAt(0)->labelText().contains("110.6 km"));

    // Coordinates may come later, and the event may go.
    desk.bench.stations()->add({{"XX.BBB", {-1, 9}}});
    QCOMPARE(desk.distances()[2], desk.distances()[1]);
    desk.bench.selection()->clearEvent();
    QCOMPARE(desk.distances(), QVector<double>({0, 0, 0}));
    QVERIFY(!desk.view->itemAt(0)->labelText().contains("km"));
    QVERIFY(isNear(desk.view->visibleTimeWindow(), window(40, 400)));
}

void TestSelectionLink::staysWithoutDataOfTheEvent()
{
    Desk desk(_file);
    QSignalSpy status(&desk.bench, SIGNAL(statusShown(QString)));
    const Core::TimeWindow before = desk.view->visibleTimeWindow();
    const Core::Time alignment = desk.view->itemAt(0)->recordWidget()->alignment();
    desk.choose(-86400);
    QCOMPARE(desk.view->visibleTimeWindow(), before);
    QCOMPARE(desk.view->itemAt(0)->recordWidget()->alignment(), alignment);
    QCOMPARE(status.count(), 1);
    QVERIFY(status.first().first().toString().contains("2024-01-04 10:10:12"));
    QVERIFY(desk.distances()[0] > 0);
}

void TestSelectionLink::followsTimeWindow()
{
    Desk desk(_file);
    Selection *selection = desk.bench.selection();
    QVERIFY(isNear(selection->timeWindow(), desk.view->visibleTimeWindow()));

    QSignalSpy told(selection, SIGNAL(timeWindowChanged()));
    selection->setTimeWindow(window(10, 20));
    QVERIFY(isNear(desk.view->visibleTimeWindow(), window(10, 20)));
    QCOMPARE(told.count(), 1);
    QSignalSpy display(desk.view, SIGNAL(displayChanged(double, double, double)));
    desk.view->scrollRight();
    QCOMPARE(told.count(), 2);
    QCOMPARE(display.count(), 1);
    QVERIFY(isNear(selection->timeWindow(), desk.view->visibleTimeWindow()));
    QVERIFY(selection->timeWindow().startTime() > window(10, 20).startTime());

    desk.waveforms.clear();
    QVERIFY(!selection->timeWindow().valid());
}

void TestSelectionLink::followsTimeToItsData()
{
    Desk desk(_file);
    desk.bench.selection()->setTimeWindow(window(10, 20));
    desk.bench.selection()->setTime(Start + Core::TimeSpan(15.0));
    QVERIFY(isNear(desk.view->visibleTimeWindow(), window(10, 20)));
    desk.bench.selection()->setTime(Start + Core::TimeSpan(5000.0));
    QVERIFY(isNear(desk.view->visibleTimeWindow(), window(10, 20)));
    desk.bench.selection()->setTime(Start + Core::TimeSpan(100.0));
    QVERIFY(desk.view->visibleTimeWindow().contains(Start + Core::TimeSpan(100.0)));
    QCOMPARE(desk.view->visibleTimeWindow().length().length(), 10.0);
}

void TestSelectionLink::followsStations()
{
    Desk desk(_file);
    Selection *selection = desk.bench.selection();
    desk.view->select(desk.view->itemAt(1));
    QCOMPARE(selection->stations(), QStringList("XX.AAA"));
    // One of its streams is enough.
    QCOMPARE(desk.selectedRows(), QStringList("XX.AAA..HHZ"));

    QSignalSpy told(selection, SIGNAL(stationsChanged()));
    selection->setStations({"XX.BBB", "YY.ELSE"});
    QCOMPARE(desk.selectedRows(), QStringList("XX.BBB..HHZ"));
    selection->setStations({"XX.AAA"});
    QCOMPARE(desk.selectedRows(), QStringList({"XX.AAA..HHN", "XX.AAA..HHZ"}));
    QCOMPARE(told.count(), 2);
    desk.view->clearSelection();
    QVERIFY(selection->stations().isEmpty());
}

QTEST_MAIN(TestSelectionLink)
#include "tst_selectionlink.moc"
