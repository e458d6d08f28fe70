// SPDX-License-Identifier: LGPL-3.0-or-later

#include "waveforms/distanceaxis.h"
#include "waveforms/measuring.h"
#include "waveforms/overviewaxes.h"
#include "waveforms/rowlooks.h"

#include "openwindow.h"
#include "pointer.h"

#include <norvu/gui/multitracewidget.h>
#include <tellarix/qt/records/timescale.h>

using namespace WaveformTesting;
using namespace Workbench;
using Norvu::Gui::MultiTraceWidget;

namespace {

/** The overview of three rows, of which ten seconds are shown. */
struct ShownOverview
{
    explicit ShownOverview(const QTemporaryDir &folder)
        : open({writeRecords(folder.filePath("saw.mseed"), {sawTooth("XX.AAA..HHZ", 0, 1, 120),
                                                            sawTooth("XX.BBB..HHZ", 0, 1, 120),
                                                            sawTooth("XX.CCC..HHZ", 0, 1, 120)})}),
          widget(open.window.findChild<MultiTraceWidget *>()),
          axes(widget->findChild<OverviewAxes *>())
    {
        open.view->setVisibleTimeWindow(window(20, 30));
        press(Qt::Key_O);
    }

    void press(Qt::Key key)
    {
        QTest::keyClick(open.view, key);
        QCoreApplication::processEvents();
        widget->grab();
    }
    bool isTurned() const { return widget->orientation() == Qt::Horizontal; }
    double seconds(const Core::Time &time) const { return (time - Start).length(); }
    double secondsAt(const QPoint &point) const
    {
        return seconds(open.view->timeScale()->timeAt(widget->secondsAt(point)));
    }
    /** A point of a row at shares of the time axis and of the row's height. */
    QPoint at(int row, double time, double height = 0.5) const
    {
        const QRect rect = widget->rowRect(open.view->itemAt(row));
        const auto place = [&](double x, double y) {
            return rect.topLeft() + QPoint(int(x * rect.width()), int(y * rect.height()));
        };
        return isTurned() ? place(1 - height, time) : place(time, height);
    }

    OpenWindow open;
    MultiTraceWidget *widget;
    OverviewAxes *axes;
};

} // namespace

class TestOverview : public QObject
{
    Q_OBJECT

private slots:
    void tellsWhatIsUnderThePointer_data() { orientations(); }
    void tellsWhatIsUnderThePointer()
    {
        QFETCH(bool, turned);
        ShownOverview shown(_folder);
        if (turned)
            shown.press(Qt::Key_H);
        QSignalSpy texts(shown.open.waveforms, SIGNAL(pointerText(QString)));
        const QPoint point = shown.at(1, 0.301, 0.1);
        Pointer::move(*shown.widget, point);
        const QString text = texts.takeLast().value(0).toString();
        QVERIFY2(text.startsWith("XX.BBB..HHZ  2024-01-05 10:11:35.0") ||
                     text.startsWith("XX.BBB..HHZ  2024-01-05 10:11:34.9"),
                 qPrintable(text));
        QVERIFY2(text.contains("sample -700 counts  ·  pointer at "), qPrintable(text));
        // In the window that is shown the saw tooth reaches from -1000 to -100, the row's edges.
        const double height = text.section("pointer at ", 1).section(' ', 0, 0).toDouble();
        QVERIFY2(std::abs(height + 190) < 900.0 / 50, qPrintable(text));
        Pointer::move(*shown.widget, QPoint(1, 1));
        QVERIFY(texts.takeLast().value(0).toString().isEmpty());
    }

    void wheelAndDragMoveTime_data() { orientations(); }
    void wheelAndDragMoveTime()
    {
        QFETCH(bool, turned);
        ShownOverview shown(_folder);
        if (turned)
            shown.press(Qt::Key_H);
        const QPoint point = shown.at(0, 0.3);
        const auto seconds = [&] { return shown.secondsAt(point); };
        const double pixel = shown.secondsAt(point + QPoint(1, 1)) - seconds();
        const auto length = [&] { return shown.open.view->visibleTimeWindow().length().length(); };

        const double before = seconds();
        Pointer::turnWheel(*shown.widget, point, {0, 120}, Qt::ControlModifier);
        QVERIFY(length() < 9 && std::abs(seconds() - before) < 2 * pixel);
        Pointer::turnWheel(*shown.widget, point, {0, -120}, Qt::ControlModifier);
        QVERIFY(std::abs(length() - 10) < 2 * pixel);
        Pointer::turnWheel(*shown.widget, point, {0, 120});
        QVERIFY(std::abs(seconds() - (before - 60 * pixel)) < 2 * pixel);
        Pointer::turnWheel(*shown.widget, point, {0, -120});
        QVERIFY(std::abs(seconds() - before) < 2 * pixel);

        // What was pressed stays under the pointer; the row that was pressed stays selected.
        const QPoint target = shown.at(2, 0.6);
        Pointer::drag(*shown.widget, {point, (point + target) / 2, target});
        QVERIFY(std::abs(shown.secondsAt(target) - before) < 2 * pixel);
        QCOMPARE(shown.open.view->selectedItems(), {shown.open.view->itemAt(0)});
    }

    void timeRunsDownBesideItsScale()
    {
        ShownOverview shown(_folder);
        shown.press(Qt::Key_H);
        const Gui::TimeScale *scale = shown.axes->timeScale();
        const auto isBeside = [&] {
            const QRect area = shown.widget->drawingArea();
            const QRect beside = scale->geometry();
            return scale->isVisible() && beside.right() < area.left() && beside.left() >= 0 &&
                   beside.top() == area.top() && beside.bottom() == area.bottom();
        };
        QVERIFY(isBeside());
        for (const double value : {scale->lower(), scale->upper()})
            QVERIFY(std::abs(scale->valueToPixel(value) + scale->y() -
                             shown.widget->pixelOf(value)) < 1e-3);
        // Dragged down it shows earlier times.
        const double before = shown.open.view->tmin();
        Pointer::drag(*shown.axes->timeScale(), {{20, 100}, {20, 150}});
        QVERIFY(shown.open.view->tmin() < before - 0.1);
        shown.open.window.resize(900, 500);
        QTRY_VERIFY(isBeside());
        shown.press(Qt::Key_H);
        QVERIFY(!scale->isVisible());
    }

    void measures_data() { orientations(); }
    void measures()
    {
        QFETCH(bool, turned);
        ShownOverview shown(_folder);
        MeasuringTool *tool = shown.open.waveforms->measuringTool();
        shown.press(Qt::Key_M);
        if (turned)
            shown.press(Qt::Key_H);
        const Core::TimeWindow before = shown.open.view->visibleTimeWindow();
        const QPoint from = shown.at(0, 0.2);
        const QPoint to = shown.at(1, 0.7);
        Pointer::drag(*shown.widget, {from, to});
        const double pixel = shown.secondsAt(from + QPoint(1, 1)) - shown.secondsAt(from);
        QVERIFY(tool->text().startsWith("XX.BBB..HHZ"));
        QVERIFY(std::abs(shown.seconds(tool->window().startTime()) - shown.secondsAt(from)) <
                pixel);
        QVERIFY(std::abs(shown.seconds(tool->window().endTime()) - shown.secondsAt(to)) < pixel);
        QCOMPARE(tool->measurement().count, 5);
        QCOMPARE(shown.open.view->visibleTimeWindow(), before);

        // Back in the rows the cursors are those of the same times.
        shown.press(Qt::Key_O);
        const double start = shown.seconds(tool->window().startTime());
        QVERIFY(std::abs(start - shown.secondsAt(from)) < 20);
        QVERIFY(tool->text().startsWith("XX.BBB..HHZ"));
    }

    void rowsStandAtTheirDistances_data() { orientations(); }
    void rowsStandAtTheirDistances()
    {
        QFETCH(bool, turned);
        ShownOverview shown(_folder);
        if (turned)
            shown.press(Qt::Key_H);
        shown.press(Qt::Key_D);
        QVERIFY(shown.axes->notice()->text().contains("No row has a distance"));
        shown.open.waveforms->looks()->setPaths({{"XX.AAA", {500, 0}}, {"XX.CCC", {100, 0}}});
        shown.widget->grab();
        QVERIFY(shown.axes->notice()->isVisible());
        QCOMPARE(shown.axes->notice()->text(), QString("1 row without distance"));
        QVERIFY(shown.widget->rowRect(shown.open.view->itemAt(1)).isEmpty());

        // The zero lines stand where the axis has the distances, the near ones first.
        const DistanceAxis *axis = shown.axes->distanceAxis();
        for (const bool degrees : {false, true}) {
            shown.axes->setDegreesShown(degrees);
            for (const auto &[row, km] : {std::pair(0, 500.0), std::pair(2, 100.0)}) {
                const QPoint place = shown.widget->rowRect(shown.open.view->itemAt(row)).center();
                const double pixel = axis->valueToPixel(degrees ? km / 111.195 : km);
                QVERIFY(std::abs((turned ? place.x() - axis->x() : place.y() - axis->y()) - pixel) <
                        1.5);
            }
        }
        // Rows with distances that come later find their places.
        shown.open.waveforms->looks()->setPaths(
            {{"XX.AAA", {500, 0}}, {"XX.BBB", {300, 0}}, {"XX.CCC", {100, 0}}});
        QVERIFY(!shown.axes->notice()->isVisible());
        QVERIFY(!shown.widget->rowRect(shown.open.view->itemAt(1)).isEmpty());
    }

private:
    void orientations()
    {
        QTest::addColumn<bool>("turned");
        QTest::newRow("time to the right") << false;
        QTest::newRow("time down") << true;
    }

    QTemporaryDir _folder;
};

QTEST_MAIN(TestOverview)
#include "tst_overview.moc"
