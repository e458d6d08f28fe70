#include "datastretches.h"

#include <QtTest>

using namespace Tellarix::Core;
using namespace Workbench;

namespace {

using Windows = QVector<TimeWindow>;

TimeWindow window(double start, double end)
{
    return TimeWindow(Time(start), Time(end));
}

} // namespace

class TestDataStretches : public QObject
{
    Q_OBJECT

private slots:
    void groupsWindows_data();
    void groupsWindows();
    void findsNeighbours_data();
    void findsNeighbours();
};

void TestDataStretches::groupsWindows_data()
{
    QTest::addColumn<Windows>("windows");
    QTest::addColumn<Windows>("stretches");

    QTest::newRow("nothing") << Windows{} << Windows{};
    QTest::newRow("only empty ones")
        << Windows{window(5, 5), window(9, 3), TimeWindow()} << Windows{};
    QTest::newRow("a gap within data")
        << Windows{window(0, 1000), window(1300, 2000)} << Windows{window(0, 2000)};
    QTest::newRow("events far apart, unsorted")
        << Windows{window(100000, 100200), window(0, 200), window(50000, 50200)}
        << Windows{window(0, 200), window(50000, 50200), window(100000, 100200)};
    QTest::newRow("rows of one event overlap")
        << Windows{window(0, 200), window(10, 210), window(50, 60)} << Windows{window(0, 210)};
    QTest::newRow("seconds of data a minute apart stay together")
        << Windows{window(0, 2), window(60, 62)} << Windows{window(0, 62)};
    QTest::newRow("overlapping rows count once in what is covered")
        << Windows{window(0, 100), window(0, 100), window(0, 100), window(200, 210)}
        << Windows{window(0, 100), window(200, 210)};
}

void TestDataStretches::groupsWindows()
{
    QFETCH(Windows, windows);
    QFETCH(Windows, stretches);

    QCOMPARE(dataStretches(windows), stretches);
}

void TestDataStretches::findsNeighbours_data()
{
    QTest::addColumn<TimeWindow>("visible");
    QTest::addColumn<int>("step");
    QTest::addColumn<int>("index");

    QTest::newRow("next of the first") << window(-5, 105) << 1 << 1;
    QTest::newRow("next of the last") << window(1995, 2105) << 1 << -1;
    QTest::newRow("previous of the last") << window(1995, 2105) << -1 << 1;
    QTest::newRow("previous of the first") << window(-5, 105) << -1 << -1;
    QTest::newRow("between two, forwards") << window(300, 400) << 1 << 1;
    QTest::newRow("between two, backwards") << window(300, 400) << -1 << 0;
    QTest::newRow("everything visible") << window(-1, 3000) << 1 << -1;
}

void TestDataStretches::findsNeighbours()
{
    QFETCH(TimeWindow, visible);
    QFETCH(int, step);
    QFETCH(int, index);

    const Windows stretches{window(0, 100), window(1000, 1100), window(2000, 2100)};
    QCOMPARE(neighbouringStretch(stretches, visible, step), index);
}

QTEST_GUILESS_MAIN(TestDataStretches)
#include "tst_datastretches.moc"
