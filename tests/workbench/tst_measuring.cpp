// SPDX-License-Identifier: LGPL-3.0-or-later

#include "waveforms/measuring.h"
#include "waveforms/measuringoverlay.h"

#include "pointer.h"
#include "waveformtesting.h"

#include <tellarix/core/math/runningmean.h>

#include <QAction>
#include <QScrollArea>

#include <cmath>

using namespace WaveformTesting;
using namespace Workbench;
using Tellarix::Gui::RecordWidget;

namespace {

constexpr double Pi = 3.14159265358979323846;
constexpr double Rate = 100;
constexpr double Seconds = 40;

/** 40 s of a sine of 1 Hz. */
RecordCPtr sine(double amplitude)
{
    std::vector<double> samples;
    for (int i = 0; i < static_cast<int>(Seconds * Rate); ++i)
        samples.push_back(amplitude * std::sin(2 * Pi * (i + 0.5) / Rate));
    return record("XX.TEST..HHZ", 0, Rate, samples);
}

/** A view that shows 40 s of three rows with amplitudes of 1, 2 and 3, and its tool. */
struct MeasuredView
{
    MeasuredView() : tool(new MeasuringTool(&view))
    {
        for (int i = 1; i <= 3; ++i)
            addRow(view, {sine(i)})->setLabel(QString("row %1").arg(i));
        view.setAlignment(Start);
        view.resize(900, 400);
        view.show();
        if (!QTest::qWaitForWindowExposed(&view))
            qFatal("The window of the view does not come up");
        view.setTimeRange(0, Seconds);
    }

    RecordWidget *row(int index) { return view.itemAt(index)->recordWidget(); }
    QScrollArea *area() { return view.findChild<QScrollArea *>(); }
    MeasuringOverlay *overlay() { return view.findChild<MeasuringOverlay *>(); }

    /** Pixel of a time in the middle of a row's traces. */
    QPoint at(int index, double seconds)
    {
        return QPoint(row(index)->mapTime(seconds), row(index)->canvasRect().center().y());
    }

    /** Moves the pointer, which the row where it was pressed has grabbed, over another row. */
    void moveTo(int grabbing, int index, double seconds)
    {
        const QPoint global = row(index)->mapToGlobal(at(index, seconds));
        Pointer::move(*row(grabbing), row(grabbing)->mapFromGlobal(global), Qt::LeftButton);
    }

    void drag(int index, double from, double to)
    {
        QTest::mousePress(row(index), Qt::LeftButton, Qt::NoModifier, at(index, from));
        moveTo(index, index, (from + to) / 2);
        moveTo(index, index, to);
        QTest::mouseRelease(row(index), Qt::LeftButton, Qt::NoModifier, at(index, to));
    }

    QImage picture() { return area()->viewport()->grab().toImage(); }
    QPoint inPicture(int index, double seconds)
    {
        return row(index)->mapTo(area()->viewport(), at(index, seconds) - QPoint(0, 8));
    }

    TraceView view;
    MeasuringTool *tool;
};

bool isClose(double actual, double expected, double tolerance)
{
    return std::abs(actual - expected) <= tolerance;
}

} // namespace

class MeasuringTest : public QObject
{
    Q_OBJECT

private slots:
    void leavesViewAloneWhileOff()
    {
        MeasuredView bench;
        bench.drag(2, 10, 20);
        QVERIFY(bench.tool->text().isEmpty());
        // Turned off again, the view gets its mouse back.
        QTest::keyClick(&bench.view, Qt::Key_M);
        QVERIFY(bench.tool->isOn());
        QTest::keyClick(&bench.view, Qt::Key_M);
        QTest::mouseClick(bench.row(0), Qt::LeftButton, Qt::NoModifier, bench.at(0, 10));
        QVERIFY(bench.view.currentItem() == bench.view.itemAt(0));
        QVERIFY(bench.tool->text().isEmpty());
    }

    void measuresBetweenPressAndPointer()
    {
        MeasuredView bench;
        bench.row(1)->setRecordScale(0, 100);
        bench.row(1)->setRecordUnit(0, "nm/s");
        bench.tool->setOn(true);
        for (const bool isScaled : {false, true}) {
            bench.row(1)->showScaledValues(isScaled);
            bench.drag(1, isScaled ? 20 : 10, isScaled ? 10 : 20);
            const double factor = isScaled ? 100 : 1;
            const double pixel = 1 / bench.row(1)->timeScale();
            const Measurement &result = bench.tool->measurement();
            QVERIFY(isClose(result.span.length(), 10, pixel));
            QVERIFY(isClose(result.frequency, 0.1, 0.01 * pixel));
            QVERIFY(isClose(result.peakToPeak, 4 * factor, 0.01 * factor));
            QVERIFY(isClose(result.rms, 2 / std::sqrt(2.0) * factor, 0.02 * factor));
            QVERIFY(isClose((bench.tool->window().startTime() - Start).length(), 10, pixel));
        }
        QVERIFY(bench.tool->text().contains("nm/s"));

        // A click takes the cursors away; the values stay.
        QVERIFY(!bench.overlay()->marks().isEmpty());
        const QString text = bench.tool->text();
        QTest::mouseClick(bench.row(1), Qt::LeftButton, Qt::NoModifier, bench.at(1, 30));
        QVERIFY(bench.overlay()->marks().isEmpty());
        QCOMPARE(bench.tool->text(), text);
    }

    void measuresRowUnderPointer()
    {
        MeasuredView bench;
        bench.tool->setOn(true);
        QTest::mousePress(bench.row(0), Qt::LeftButton, Qt::NoModifier, bench.at(0, 10));
        bench.moveTo(0, 2, 20);
        QVERIFY(isClose(bench.tool->measurement().peakToPeak, 6, 0.01));
        QCOMPARE(bench.overlay()->marks().title, QString("row 3"));

        // Beyond the ends of the traces the cursor stops; above the rows the last one stays.
        bench.moveTo(0, 2, 1000);
        QVERIFY(isClose(bench.tool->measurement().span.length(), 30, 0.1));
    }

    void keepsSelectionAndOrder()
    {
        MeasuredView bench;
        bench.view.select(bench.view.itemAt(1));
        QSignalSpy selection(&bench.view, SIGNAL(itemSelectionChanged()));
        QSignalSpy activated(&bench.view, SIGNAL(itemActivated(Trace *)));
        const QList<Trace *> order = bench.view.items();
        bench.tool->setOn(true);
        QTest::mousePress(bench.row(0), Qt::LeftButton, Qt::NoModifier, bench.at(0, 10));
        bench.moveTo(0, 0, 10.05);
        bench.moveTo(0, 2, 12);
        QTest::mouseRelease(bench.row(0), Qt::LeftButton, Qt::NoModifier, bench.at(0, 10));
        QTest::mouseDClick(bench.row(2), Qt::LeftButton, Qt::NoModifier, bench.at(2, 10));
        QCOMPARE(bench.view.items(), order);
        QVERIFY(bench.view.itemAt(1)->isSelected());
        QCOMPARE(selection.count(), 0);
        QCOMPARE(activated.count(), 0);
    }

    void cursorsCrossAllRows()
    {
        MeasuredView bench;
        bench.tool->setOn(true);
        const QImage before = bench.picture();
        bench.drag(1, 10, 20);
        const QImage after = bench.picture();

        for (int row = 0; row < 3; ++row) {
            for (const double seconds : {10.0, 12.0, 20.0})
                QVERIFY(after.pixel(bench.inPicture(row, seconds)) !=
                        before.pixel(bench.inPicture(row, seconds)));
            QCOMPARE(after.pixel(bench.inPicture(row, 5)), before.pixel(bench.inPicture(row, 5)));
            QCOMPARE(after.pixel(bench.inPicture(row, 10)), after.pixel(bench.inPicture(0, 10)));
        }
        bench.tool->setOn(false);
        QVERIFY(bench.picture() == before);
    }

    void cursorsFollowDisplay()
    {
        MeasuredView bench;
        bench.tool->setOn(true);
        bench.drag(1, 10, 20);
        const auto lineAt = [&](double seconds) {
            return bench.overlay()
                ->mapFromGlobal(bench.row(1)->mapToGlobal(bench.at(1, seconds)))
                .x();
        };
        bench.view.setTimeRange(5, 25);
        QVERIFY(std::abs(bench.overlay()->marks().anchor - lineAt(10)) <= 2);
        QVERIFY(std::abs(bench.overlay()->marks().end - lineAt(20)) <= 2);

        bench.view.resize(700, 600);
        QTRY_COMPARE(bench.overlay()->marks().area.height(), bench.area()->viewport()->height());
        QVERIFY(std::abs(bench.overlay()->marks().end - lineAt(20)) <= 2);

        // Times relative to another alignment: the cursors stay with the samples.
        bench.view.setAlignment(Start + Core::TimeSpan(5.0));
        QVERIFY(std::abs(bench.overlay()->marks().anchor - lineAt(5)) <= 2);
    }

    void removedRowTakesItsCursors()
    {
        MeasuredView bench;
        bench.tool->setOn(true);
        bench.drag(1, 10, 20);
        bench.view.removeItem(bench.view.itemAt(1));
        QVERIFY(bench.overlay()->marks().isEmpty());
        QVERIFY(bench.tool->text().startsWith("row 2"));
        bench.drag(1, 10, 20);
        QVERIFY(bench.tool->text().startsWith("row 3"));
    }

    void tellsOfGap()
    {
        MeasuredView bench;
        bench.view.setTimeRange(0, 2 * Seconds);
        bench.tool->setOn(true);
        bench.drag(0, 10, 20);
        QVERIFY(!bench.tool->text().contains("gap"));
        bench.drag(0, 30, 50);
        QVERIFY(bench.tool->text().contains("gap"));
        bench.drag(0, 50, 60);
        QVERIFY(bench.tool->text().contains("no data"));
    }

    void followsFilter()
    {
        MeasuredView bench;
        bench.tool->setOn(true);
        bench.drag(1, 10, 20);
        // Over a period of the sine the mean is zero.
        bench.view.setFilter(new Math::Filtering::RunningMean<double>(1.0));
        bench.view.setFilterEnabled(true);
        QVERIFY(isClose(bench.tool->measurement().peakToPeak, 0, 0.1));
        bench.view.setFilterEnabled(false);
        QVERIFY(isClose(bench.tool->measurement().peakToPeak, 4, 0.01));
    }

    void panelStaysInView()
    {
        const QRect area(0, 0, 300, 200);
        QCOMPARE(panelPosition({100, 50}, {50, 50}, area, 10), QPoint(60, 60));
        QCOMPARE(panelPosition({100, 50}, {270, 190}, area, 10), QPoint(160, 130));
        QCOMPARE(panelPosition({100, 50}, {-500, 50}, area, 10), QPoint(0, 60));
    }
};

QTEST_MAIN(MeasuringTest)
#include "tst_measuring.moc"
