// SPDX-License-Identifier: LGPL-3.0-or-later

#include "gainfilter.h"
#include "ink.h"
#include "rowname.h"
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

/** Requests data for its rows and writes down how. */
class RequestingView : public TraceView
{
public:
    using TraceView::TraceView;

    QStringList requests;
    bool isReady{true};

protected:
    bool beginDataRequest() override
    {
        requests << "begin";
        return isReady;
    }
    void requestData(Trace *row) override { requests << row->label(); }
    void endDataRequest() override { requests << "end"; }
};

} // namespace

class TraceViewTest : public QObject
{
    Q_OBJECT

private slots:
    /** The layout of the rows is held meanwhile. */
    void rowsMayGoWhileManyAreChanged()
    {
        TraceView view;
        for (const char *label : {"a", "b", "c"})
            view.addItem(new Trace(label, Qt::black));
        view.show();
        view.changeItems([&] {
            view.removeItem(view.itemAt(0));
            delete view.itemAt(0);
        });
        view.grab();
        QCOMPARE(view.count(), 1);
        QVERIFY(view.itemAt(0)->isVisible());
    }

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

    void bringsWindowIntoSight()
    {
        const std::tuple<const char *, TimeWindow, bool, TimeWindow> rows[] = {
            {"in sight", window(1020, 1030), false, window(1000, 1100)},
            {"behind, centred", window(1190, 1200), true, window(1145, 1245)},
            {"longer, behind", window(1050, 1250), false, window(1050, 1250)},
            {"same length, centred", window(1100, 1200), true, window(1100, 1200)},
            {"unset", TimeWindow(), true, window(1000, 1100)}};
        for (const auto &[name, wanted, center, expected] : rows) {
            const RowName shown(name);
            TraceView view;
            view.setAlignment(timeAt(500));
            view.setVisibleTimeWindow(window(1000, 1100));
            view.ensureVisible(wanted, center);
            QVERIFY(view.visibleTimeWindow() == expected);
        }
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

    void bindsOneRowAndSlotToAnId()
    {
        using Bindings = QList<QPair<std::string, int>>;
        TraceView view;
        view.setItems({makeRow("A"), makeRow("B")});
        Trace *first = view.itemAt(0);
        Trace *second = view.itemAt(1);
        QVERIFY(view.bindItem("XX.A..BHZ", first, 2));
        QVERIFY(view.bindItem("XX.A..BHE", first, 0));
        QVERIFY(view.bindItem("XX.A..BHN", first, 1));
        QCOMPARE(view.bindingsFor(first),
                 Bindings({{"XX.A..BHE", 0}, {"XX.A..BHN", 1}, {"XX.A..BHZ", 2}}));
        QCOMPARE(view.bindingsFor(second), Bindings());

        QVERIFY(view.bindItem("XX.A..BHE", second, 5));
        QCOMPARE(view.bindingsFor(second), Bindings({{"XX.A..BHE", 5}}));
        QVERIFY(view.unbind("XX.A..BHZ"));
        QVERIFY(!view.unbind("XX.A..BHZ"));
        QCOMPARE(view.bindingsFor(first), Bindings({{"XX.A..BHN", 1}}));
        view.clearBindings(first);
        QCOMPARE(view.bindingsFor(first), Bindings());

        int slot = 42;
        QVERIFY(view.itemBoundTo("XX.A..BHZ", &slot) == nullptr);
        QCOMPARE(slot, 42);
        QVERIFY(view.itemBoundTo("XX.A..BHE", &slot) == second);
        QCOMPARE(slot, 5);
    }

    void requestsRowsThatWait()
    {
        RequestingView view;
        view.setItems({makeRow("A", makeRecord("XX.A..BHZ", 0, 10)), makeRow("B"), makeRow("C")});
        view.bindItem("XX.A..BHZ", view.itemAt(0), 0);
        view.subscribedToData(view.itemAt(1));
        SignalLog log(&view);

        view.isReady = false;
        view.loadData();
        QCOMPARE(log.take(), QStringList("load"));
        QCOMPARE(view.emptyDataSlots(), 2);
        view.isReady = true;
        view.loadData();
        view.loadData();
        QCOMPARE(view.requests, QStringList({"begin", "begin", "A", "C", "end"}));
        QCOMPARE(view.emptyDataSlots(), 0);

        view.requests.clear();
        view.select(view.itemAt(0));
        view.resetSelectedTraces();
        QCOMPARE(view.itemAt(0)->recordWidget()->slotCount(), 0);
        QVERIFY(view.itemBoundTo("XX.A..BHZ") == view.itemAt(0));
        view.loadData();
        QCOMPARE(view.requests, QStringList({"begin", "A", "end"}));
        view.resetDataStateOfAllTraces();
        QCOMPARE(view.emptyDataSlots(), 3);
        view.clearDataSlot(0);
        QCOMPARE(view.emptyDataSlots(), 3);
    }

    void copySharesRecords()
    {
        TraceView source;
        Trace *row = makeRow("A", makeRecord("XX.A..BHZ", 0, 10));
        feed(row, 2, makeRecord("XX.A..BHE", 0, 10));
        row->recordWidget()->setRecordScale(2, 0.25);
        row->recordWidget()->setRecordLabel(2, "east");
        row->setDescription("on the island");
        source.setItems({makeRow("empty"), row});
        row->setMetaData(4, nullptr);

        TraceView view;
        view.addItem(makeRow("before"));
        QVERIFY(view.copyDataFrom(&source));
        QCOMPARE(labels(view.items()), QStringList({"before", "A"}));
        const RecordWidget *copy = view.itemAt(1)->recordWidget();
        QVERIFY(copy->records(0) == row->recordWidget()->records(0));
        QVERIFY(!copy->ownsRecords(0));
        QVERIFY(copy->records(1) == nullptr);
        QVERIFY(copy->recordScale(0) == nullptr);
        QCOMPARE(*copy->recordScale(2), 0.25);
        QCOMPARE(copy->recordLabel(2), QString("east"));
        QCOMPARE(view.itemAt(1)->labelText(), row->labelText());
        QCOMPARE(view.itemAt(1)->metaDataCount(), 5);
    }

    void laysOutRowsOfAnySize()
    {
        TraceView view;
        view.show();
        view.addItem(Traces::makeRow("A"));
        QCoreApplication::processEvents();
        // What a widget has by itself is no change.
        view.resize(view.size() + QSize(640, 480) - view.itemAt(0)->size());
        QTRY_COMPARE(view.itemAt(0)->size(), QSize(640, 480));
        view.clear();
        view.addItem(Traces::makeRow("B"));
        QTRY_COMPARE(view.itemAt(0)->size(), QSize(640, 480));
        QTRY_VERIFY(view.itemAt(0)->recordWidget()->y() > 10); // below its name
    }

    void copyOfWindowOwnsRecords()
    {
        TraceView view;
        {
            TraceView source;
            Trace *row = makeRow("A");
            for (int i = 0; i < 10; ++i)
                feed(row, 0, makeRecord("XX.A..BHZ", 10 * i, 10 * i + 10));
            source.addItem(row);
            QVERIFY(!view.copyDataFrom(&source, window(100, 200)));
            QCOMPARE(view.count(), 0);
            QVERIFY(view.copyDataFrom(&source, window(25, 50)));
        }
        const RecordWidget *copy = view.itemAt(0)->recordWidget();
        QVERIFY(copy->ownsRecords(0));
        QVERIFY(copy->records(0)->timeWindow() == window(20, 50));
    }
};

QTEST_MAIN(TraceViewTest)
#include "tst_traceview.moc"
