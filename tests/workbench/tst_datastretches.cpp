// SPDX-License-Identifier: LGPL-3.0-or-later

#include "waveforms/datastretches.h"

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
    void groupsWindows()
    {
        const QPair<Windows, Windows> cases[] = {
            {{window(5, 5), window(9, 3), TimeWindow()}, {}},
            {{window(0, 1000), window(1300, 2000)}, {window(0, 2000)}}, // a gap within data
            {{window(50000, 50200), window(0, 200)}, {window(0, 200), window(50000, 50200)}},
            {{window(0, 200), window(10, 210), window(50, 60)}, {window(0, 210)}},
            {{window(0, 2), window(60, 62)}, {window(0, 62)}}, // of one event
            // Rows that overlap count once in what is covered.
            {{window(0, 100), window(0, 100), window(0, 100), window(200, 210)},
             {window(0, 100), window(200, 210)}},
        };
        for (const auto &[windows, stretches] : cases)
            QCOMPARE(dataStretches(windows), stretches);
    }

    void findsNeighbours()
    {
        const Windows stretches{window(0, 100), window(1000, 1100), window(2000, 2100)};
        QCOMPARE(neighbouringStretch(stretches, window(-5, 105), 1), 1);
        QCOMPARE(neighbouringStretch(stretches, window(-5, 105), -1), -1);
        QCOMPARE(neighbouringStretch(stretches, window(1995, 2105), 1), -1);
        QCOMPARE(neighbouringStretch(stretches, window(1995, 2105), -1), 1);
        QCOMPARE(neighbouringStretch(stretches, window(300, 400), 1), 1);
        QCOMPARE(neighbouringStretch(stretches, window(300, 400), -1), 0);
        // From all of them, the first and the last one; from parts of two, by the middle.
        QCOMPARE(neighbouringStretch(stretches, window(-1, 3000), 1), 0);
        QCOMPARE(neighbouringStretch(stretches, window(-1, 3000), -1), 2);
        QCOMPARE(neighbouringStretch(stretches, window(1050, 2050), 1), 2);
        QCOMPARE(neighbouringStretch(stretches, window(1050, 2050), -1), 1);
        QCOMPARE(neighbouringStretch(stretches, window(1010, 1060), 1), 2);
        QCOMPARE(neighbouringStretch(stretches, window(1010, 1060), -1), 0);
    }
};

QTEST_GUILESS_MAIN(TestDataStretches)
#include "tst_datastretches.moc"
