// SPDX-License-Identifier: LGPL-3.0-or-later

#include "gainfilter.h"
#include "ink.h"
#include "traces.h"

#include <tellarix/core/datamodel/network.h>
#include <tellarix/core/datamodel/sensorlocation.h>
#include <tellarix/core/datamodel/station.h>
#include <tellarix/core/datamodel/stream.h>

#include <limits>

using namespace Norvu::Gui;
using namespace Traces;
using Tellarix::Core::TimeWindow;
using Tellarix::Gui::RecordWidget;

namespace {

using Range = QPair<double, double>;

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

} // namespace

class TraceViewTest : public QObject
{
    Q_OBJECT

private slots:
    void refusesRangesThatAreNoNumbers()
    {
        TraceView view;
        QVERIFY(view.itemAt(0) == nullptr);
        QVERIFY(view.itemAt(-1) == nullptr);
        QCOMPARE(view.indexOf(nullptr), -1);

        view.setTimeRange(NaN, 10);
        view.setTimeRange(0, std::numeric_limits<double>::infinity());
        QCOMPARE(view.tmax(), 600.0);
    }

    void linesTimeScaleUpWithTraces()
    {
        for (const bool hasBars : {true, false}) {
            TraceView view;
            view.setColorIndicatorEnabled(hasBars);
            // Without bars, the rows need a scroll bar.
            view.setMinimumRowHeight(hasBars ? 16 : 400);
            show(view, {"A", "B"});
            const RecordWidget *widget = view.itemAt(1)->recordWidget();
            const QRect canvas =
                widget->canvasRect().translated(widget->mapTo(&view, QPoint(0, 0)));
            QCOMPARE(view.timeScale()->mapTo(&view, QPoint(0, 0)).x(), canvas.left());
            QTRY_COMPARE(view.timeScale()->width(), canvas.width());
            QCOMPARE(view.rulerSpacing(), canvas.left() - view.frameWidth() - Trace::Padding());
        }
    }

    void appliesRangeToWidthOfTimeScale()
    {
        TraceView view;
        view.addItem(makeRow("A"));
        view.timeScale()->resize(0, 20);
        SignalLog log(&view);
        QSignalSpy spy(&view, &TraceView::displayChanged);

        view.setTimeRange(5, 25);
        QCOMPARE(log.take(), QStringList());
        const RecordWidget *widget = view.itemAt(0)->recordWidget();
        view.resize(500, 200);
        view.show();
        QTRY_COMPARE(widget->timeScale(), view.timeScale()->width() / 20.0);
        QCOMPARE(widget->tmin(), 5.0);
        view.resize(view.width() + 155, view.height());
        QTRY_COMPARE(widget->timeScale(), view.timeScale()->width() / 20.0);
        QCOMPARE(view.tmax(), 25.0);

        // A reversed range counts as one second, and the scale's limits count.
        spy.clear();
        view.setTimeRange(10, 4);
        view.timeScale()->setRangeLimits(0.5, 1000);
        view.setTimeRange(0, 1E-3);
        QCOMPARE(spy.size(), 2);
        QCOMPARE(spy[0][1].toDouble() - spy[0][0].toDouble(), 1.0);
        QCOMPARE(spy[1][1].toDouble() - spy[1][0].toDouble(), 0.5);
        QCOMPARE(spy[1][2].toDouble(), view.timeScale()->width() / 0.5);
        QCOMPARE(widget->timeScale(), view.timeScale()->width() / 0.5);
    }

    void coversAllSlotsOfAllRows()
    {
        TraceView view;
        QVERIFY(!view.coveredTimeWindow().valid());
        view.updateView();
        QCOMPARE(view.tmin(), 0.0);
        QCOMPARE(view.tmax(), 1.0);

        Trace *first = makeRow("A", makeRecord("XX.A..BHZ", 1000, 1010));
        feed(first, 2, makeRecord("XX.A..BHE", 900, 905));
        Trace *second = makeRow("B", makeRecord("XX.B..BHZ", 1005, 1100));
        second->recordWidget()->setAlignment(timeAt(50));
        view.addItem(first);
        view.addItem(second);

        QVERIFY(view.coveredTimeWindow() == window(900, 1100));
        view.setCoveredTimeRange();
        QCOMPARE(view.tmin(), 900.0);
        QCOMPARE(view.tmax(), 1050.0);
    }

    void bringsWindowIntoSight_data()
    {
        QTest::addColumn<TimeWindow>("wanted");
        QTest::addColumn<bool>("center");
        QTest::addColumn<TimeWindow>("shown");
        QTest::newRow("in sight") << window(1020, 1030) << false << window(1000, 1100);
        QTest::newRow("behind, centred") << window(1190, 1200) << true << window(1145, 1245);
        QTest::newRow("longer, behind") << window(1050, 1250) << false << window(1050, 1250);
        QTest::newRow("same length, centred") << window(1100, 1200) << true << window(1100, 1200);
        QTest::newRow("unset") << TimeWindow() << true << window(1000, 1100);
    }

    void bringsWindowIntoSight()
    {
        QFETCH(TimeWindow, wanted);
        QFETCH(bool, center);
        QFETCH(TimeWindow, shown);
        TraceView view;
        view.setAlignment(timeAt(500));
        view.setVisibleTimeWindow(window(1000, 1100));
        view.ensureVisible(wanted, center);
        QCOMPARE(view.visibleTimeWindow().startTime().toDouble(), shown.startTime().toDouble());
        QCOMPARE(view.visibleTimeWindow().endTime().toDouble(), shown.endTime().toDouble());
    }

    void resetsViewInOrder()
    {
        TraceView view;
        Trace *row = makeRow("A", makeRecord("XX.A..BHZ", 1000, 1060));
        row->recordWidget()->setAlignment(timeAt(77));
        row->setTimeAxisEnabled(true);
        view.addItem(row);
        view.timeScale()->setAlignment(timeAt(1000));
        SignalLog log(&view);

        view.resetView();
        QCOMPARE(log.take(), QStringList({"alignment", "display", "reset"}));
        QVERIFY(row->recordWidget()->alignment() == timeAt(1000));
        QVERIFY(row->timeAxis()->alignment() == timeAt(77));
        QVERIFY(view.visibleTimeWindow() == window(1000, 1060));
    }

    void setsRowUpWhenAdded()
    {
        using namespace Tellarix::DataModel;
        NetworkPtr network(new Network("GE"));
        auto *station = new Station("APE");
        auto *location = new SensorLocation("");
        auto *stream = new Stream("BHZ");
        stream->setGain(4);
        network->add(station);
        station->add(location);
        location->add(stream);

        TraceView view;
        view.setAlignment(timeAt(1000));
        view.setTimeRange(100, 200);
        SignalLog log(&view);
        Trace *row = makeRow("A");
        row->recordWidget()->setSlotCount(2);
        row->setMetaData(1, stream);
        view.addItem(row, TraceView::ComponentRecordID);
        QCOMPARE(log.take(), QStringList("layout"));
        RecordWidget *widget = row->recordWidget();
        QCOMPARE(widget->tmin(), 100.0);
        QCOMPARE(widget->timeScale(), view.timeScale()->scale());
        QVERIFY(widget->alignment() == timeAt(1000));
        QVERIFY(widget->normalizationWindow() == window(1100, 1200));

        int slot = -1;
        QVERIFY(view.itemBoundTo("GE.APE..BHZ", &slot) == row);
        QCOMPARE(slot, 1);
        QCOMPARE(widget->recordID(1), QString("Z"));
        QCOMPARE(*widget->recordScale(1), 0.25);

        // A gain of none is no divisor, and the row's own alignment stays.
        stream->setGain(0);
        Trace *second = makeRow("B");
        second->setMetaData(0, stream);
        second->recordWidget()->setSlotCount(1);
        second->recordWidget()->setAlignment(timeAt(5));
        view.addItem(second, TraceView::NoRecordID);
        QVERIFY(second->recordWidget()->recordScale(0) == nullptr);
        QCOMPARE(second->recordWidget()->recordID(0), QString());
        QVERIFY(second->recordWidget()->alignment() == timeAt(5));
    }

    void sortsByDistanceThenLabel()
    {
        TraceView view;
        Trace *unknown = new Trace("unknown", Qt::black);
        view.setItems({makeRow("not a number", NaN), makeRow("far", 30), makeRow("b", 10),
                       makeRow("a", 10), unknown, makeRow("negative", -1)});
        view.resize(400, 900);
        view.show();
        SignalLog log(&view);
        connect(&view, &TraceView::distanceValuesRequired,
                [&view] { view.itemAt(1)->setData(TraceDistance, 0.5); });

        view.sortView();
        const QStringList order{"negative", "unknown", "far", "a", "b", "not a number"};
        QCOMPARE(labels(view.items()), order);
        QTRY_COMPARE(labelsFromTop(view), order);
        QCOMPARE(log.take(), QStringList({"distances", "layout"}));
    }

    void removesRowsInOrder()
    {
        TraceView view;
        view.setItems({makeRow("A"), makeRow("B"), makeRow("C")});
        view.bindItem("XX.A..BHZ", view.itemAt(0), 0);
        view.bindItem("XX.B..BHZ", view.itemAt(1), 0);
        view.select(view.itemAt(1));
        SignalLog log(&view);
        view.removeItemBoundTo("XX.unknown..BHZ");
        QCOMPARE(log.take(), QStringList());
        view.removeItemBoundTo("XX.B..BHZ");
        QCOMPARE(log.take(), QStringList({"current B>-", "layout"}));
        QCOMPARE(labels(view.items()), QStringList({"A", "C"}));
        QVERIFY(view.itemBoundTo("XX.B..BHZ") == nullptr);

        view.select(view.itemAt(0));
        log.take();
        const QPointer<Trace> row = view.itemAt(0);
        view.clear();
        QCOMPARE(log.take(), QStringList({"current A>-", "cleared", "layout"}));
        QVERIFY(row.isNull());
        QVERIFY(view.itemBoundTo("XX.A..BHZ") == nullptr);

        // A slot may clear the view while it is being cleaned.
        view.setItems({makeRow("A"), makeRow("B")});
        view.select(view.itemAt(0));
        connect(&view, &TraceView::currentItemChanged, [&view](Trace *, Trace *current) {
            if (!current)
                view.clear();
        });
        view.cleanTraces();
        QCOMPARE(view.count(), 0);
        QCOMPARE(view.emptyDataSlots(), 0);
    }

    void comparesRowsInPhysicalUnits()
    {
        const QVector<QPair<double, Range>> scales{{-0.5, {40, -60}}, {0, {-20, 30}}};
        for (const auto &[scale, range] : scales) {
            TraceView view;
            view.setItems({makeRow("A", makeRecord("XX.A..BHZ", 0, 100, -20, 30)),
                           makeRow("B", makeRecord("XX.B..BHZ", 0, 100, -1, 1)), makeRow("empty")});
            view.itemAt(1)->recordWidget()->setRecordScale(0, scale);
            view.setAllTracesNormalization(true);
            QCOMPARE(view.itemAt(0)->recordWidget()->amplRange(), Range(-20, 30));
            QCOMPARE(view.itemAt(1)->recordWidget()->amplRange(), range);
            QCOMPARE(view.itemAt(2)->recordWidget()->amplRange(), Range(-20, 30));
        }
    }

    void turnsRowsOfReversedPolarityOver()
    {
        TraceView view;
        view.setItems({makeRow("A", makeRecord("XX.A..BHZ", 0, 100, -5, 10)),
                       makeRow("B", makeRecord("XX.B..BHZ", 0, 100, 5, -10))});
        view.itemAt(0)->recordWidget()->setRecordScale(0, 1);
        view.itemAt(1)->recordWidget()->setRecordScale(0, -1);
        view.setAllTracesNormalization(true);
        view.setTimeRange(0, 10);
        QCOMPARE(view.itemAt(1)->recordWidget()->amplRange(), Range(5, -10));
        QImage pictures[2];
        for (int i = 0; i < 2; ++i) {
            RecordWidget *widget = view.itemAt(i)->recordWidget();
            widget->resize(300, 100);
            widget->setRecordPen(0, QPen(Qt::red));
            pictures[i] = Ink::picture(*widget);
        }
        // Trace and axis are those of the same motion, recorded the right way round.
        QVERIFY(!Ink::rectOfColor(pictures[0], Qt::red).isEmpty());
        QCOMPARE(pictures[1], pictures[0]);

        // Nothing that a row shows is cut off by what another one asks for.
        feed(view.itemAt(1), 0, makeRecord("XX.B..BHZ", 100, 200, -5, 20));
        view.setWindowNormalization(false);
        QCOMPARE(view.itemAt(0)->recordWidget()->amplRange(), Range(-20, 10));
        QCOMPARE(view.itemAt(1)->recordWidget()->amplRange(), Range(20, -10));
    }

    void normalizesOverTheVisibleWindow()
    {
        TraceView view;
        Trace *row = makeRow("A", makeRecord("XX.A..BHZ", 0, 100, -2, 3));
        feed(row, 0, makeRecord("XX.A..BHZ", 100, 200, -50, 70));
        view.addItem(row);
        view.setNormalizionMode(TraceView::WindowNormalization | TraceView::AllTracesNormalization);

        view.setTimeRange(10, 90);
        QCOMPARE(row->recordWidget()->amplRange(), Range(-2, 3));
        view.setTimeRange(50, 150);
        QCOMPARE(row->recordWidget()->amplRange(), Range(-50, 70));
        view.setTimeRange(10, 90);
        view.setWindowNormalization(false);
        QCOMPARE(row->recordWidget()->amplRange(), Range(-50, 70));

        Trace *late = makeRow("B", makeRecord("XX.B..BHZ", 0, 10, -8, 9));
        view.addItem(late);
        QCOMPARE(late->recordWidget()->amplRange(), Range(-8, 9));

        // What was asked for counts, not what the time scale makes of it.
        view.setWindowNormalization(true);
        view.timeScale()->setRangeLimits(100, 1000);
        view.setTimeRange(60, 90);
        QCOMPARE(view.tmax(), 125.0);
        QVERIFY(row->recordWidget()->normalizationWindow() == window(60, 90));
    }

    void filterReachesAllRows()
    {
        {
            TraceView view;
            Trace *row = makeRow("A", makeRecord("XX.A..BHZ", 0, 100, -2, 3));
            view.addItem(row);
            view.setAllTracesNormalization(true);
            SignalLog log(&view);

            view.setFilterEnabled(true);
            QCOMPARE(log.take(), QStringList("layout"));
            auto *filter = new GainFilter(10);
            view.setFilter(filter);
            QCOMPARE(log.take(), QStringList("layout"));
            QCOMPARE(row->recordWidget()->amplRange(), Range(-20, 30));
            view.setFilter(filter);
            QVERIFY(view.hasFilter());
            Trace *late = makeRow("B", makeRecord("XX.B..BHZ", 0, 100, -1, 1));
            view.addItem(late);
            QVERIFY(late->recordWidget()->filter() != nullptr);
            QVERIFY(late->recordWidget()->isFilteringEnabled());

            view.setFilter(nullptr);
            QVERIFY(!view.hasFilter());
            QVERIFY(late->recordWidget()->filter() == nullptr);
            view.setFilter(new GainFilter(2));
        }
        QCOMPARE(GainFilter::alive.load(), 0);
    }
};

QTEST_MAIN(TraceViewTest)
#include "tst_traceview.moc"
