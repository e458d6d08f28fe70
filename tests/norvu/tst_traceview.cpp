#include "ink.h"
#include "traces.h"

#include <tellarix/core/datamodel/network.h>
#include <tellarix/core/datamodel/sensorlocation.h>
#include <tellarix/core/datamodel/station.h>
#include <tellarix/core/datamodel/stream.h>
#include <tellarix/core/math/filter.h>

#include <limits>

using namespace Norvu::Gui;
using namespace Traces;
using Tellarix::Core::TimeWindow;
using Tellarix::Gui::RecordWidget;

Q_DECLARE_METATYPE(Norvu::Gui::TraceView::RecordIDStrategy)

namespace {

using Range = QPair<double, double>;

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

/** A filter that multiplies by a factor, and counts how many of it are alive. */
class GainFilter : public Tellarix::Math::Filtering::InPlaceFilter<double>
{
public:
    explicit GainFilter(double factor) : _factor(factor) { ++alive; }
    ~GainFilter() override { --alive; }
    GainFilter(const GainFilter &other) : InPlaceFilter(other), _factor(other._factor) { ++alive; }

    void setSamplingFrequency(double) override {}
    int setParameters(int, const double *) override { return 0; }
    void apply(int n, double *samples) override
    {
        for (int i = 0; i < n; ++i)
            samples[i] *= _factor;
    }
    InPlaceFilter<double> *clone() const override { return new GainFilter(*this); }

    static int alive;

private:
    double _factor;
};

int GainFilter::alive = 0;

/** A station with one stream. */
struct Inventory
{
    explicit Inventory(const char *channel, double gain)
        : network(new Tellarix::DataModel::Network("GE")),
          station(new Tellarix::DataModel::Station("APE")),
          location(new Tellarix::DataModel::SensorLocation("")),
          stream(new Tellarix::DataModel::Stream(channel))
    {
        stream->setGain(gain);
        network->add(station.get());
        station->add(location.get());
        location->add(stream.get());
    }

    Tellarix::DataModel::NetworkPtr network;
    Tellarix::DataModel::StationPtr station;
    Tellarix::DataModel::SensorLocationPtr location;
    Tellarix::DataModel::StreamPtr stream;
};

} // namespace

class TraceViewTest : public QObject
{
    Q_OBJECT

private slots:
    void showsTenMinutesAtFirst();
    void linesTimeScaleUpWithTraces_data();
    void linesTimeScaleUpWithTraces();
    void colorIndicatorMovesTimeScale();
    void givesAllRowsTheSameRange_data();
    void givesAllRowsTheSameRange();
    void appliesRangeToWidthOfTimeScale();
    void drawsGridOfTimeScaleInAllRows();
    void coversAllSlotsOfAllRows();
    void bringsWindowIntoSight_data();
    void bringsWindowIntoSight();
    void resetsViewInOrder();
    void setsRowsUpWhenAdded();
    void rowWithoutAlignmentTakesThatOfTheView();
    void bindsStreamsOfAddedRow_data();
    void bindsStreamsOfAddedRow();
    void sortsByDistanceThenLabel();
    void removesRowsAndTellsOfTheCurrentOne();
    void clearsInOrder();
    void survivesRemovalFromSlots();
    void comparesRowsInPhysicalUnits_data();
    void comparesRowsInPhysicalUnits();
    void normalizesOverTheVisibleWindow();
    void sameNormalizationTellsNobody();
    void filterReachesAllRows();
};

void TraceViewTest::showsTenMinutesAtFirst()
{
    TraceView view;
    QCOMPARE(view.tmin(), 0.0);
    QCOMPARE(view.tmax(), 600.0);
    QVERIFY(view.itemAt(0) == nullptr);
    QVERIFY(view.itemAt(-1) == nullptr);
    QCOMPARE(view.indexOf(nullptr), -1);

    view.setTimeRange(NaN, 10);
    view.setTimeRange(0, std::numeric_limits<double>::infinity());
    QCOMPARE(view.tmax(), 600.0);
}

void TraceViewTest::linesTimeScaleUpWithTraces_data()
{
    QTest::addColumn<bool>("colorIndicator");
    QTest::addColumn<int>("rowHeight");
    QTest::newRow("with colour bars") << true << 16;
    QTest::newRow("without colour bars") << false << 16;
    QTest::newRow("with scroll bar") << true << 400;
}

void TraceViewTest::linesTimeScaleUpWithTraces()
{
    QFETCH(bool, colorIndicator);
    QFETCH(int, rowHeight);
    TraceView view;
    view.setColorIndicatorEnabled(colorIndicator);
    view.setMinimumRowHeight(rowHeight);
    show(view, {"A", "B"});

    const QWidget *scale = view.timeScale();
    const RecordWidget *widget = view.itemAt(1)->recordWidget();
    const QRect canvas = widget->canvasRect().translated(widget->mapTo(&view, QPoint(0, 0)));
    QCOMPARE(scale->mapTo(&view, QPoint(0, 0)).x(), canvas.left());
    QTRY_COMPARE(scale->width(), canvas.width());
    QCOMPARE(view.rulerSpacing(), canvas.left() - view.frameWidth() - Trace::Padding());
}

void TraceViewTest::colorIndicatorMovesTimeScale()
{
    TraceView view;
    SignalLog log(&view);
    const int spacing = view.rulerSpacing();
    view.setColorIndicatorEnabled(true);
    QCOMPARE(log.take(), QStringList());
    view.setColorIndicatorEnabled(false);
    QCOMPARE(log.take(), QStringList("spacing"));
    QCOMPARE(view.rulerSpacing(), Trace::FixedLabelWidth(0));
    QVERIFY(view.rulerSpacing() < spacing);
}

void TraceViewTest::givesAllRowsTheSameRange_data()
{
    QTest::addColumn<double>("tmin");
    QTest::addColumn<double>("tmax");
    QTest::addColumn<double>("length");
    QTest::newRow("range") << -20.0 << 100.0 << 120.0;
    QTest::newRow("empty range counts as one second") << 10.0 << 10.0 << 1.0;
    QTest::newRow("reversed range counts as one second") << 10.0 << 4.0 << 1.0;
    QTest::newRow("limited by the time scale") << 0.0 << 1E-3 << 0.5;
}

void TraceViewTest::givesAllRowsTheSameRange()
{
    QFETCH(double, tmin);
    QFETCH(double, tmax);
    QFETCH(double, length);
    TraceView view;
    view.addItem(makeRow("A"));
    view.addItem(makeRow("B"));
    view.timeScale()->setRangeLimits(0.5, 1000);
    QSignalSpy spy(&view, &TraceView::displayChanged);

    view.setTimeRange(tmin, tmax);
    const double scale = view.timeScale()->width() / length;
    QCOMPARE(spy.count(), 1);
    QCOMPARE(view.tmax() - view.tmin(), length);
    QCOMPARE(spy[0][0].toDouble(), view.tmin());
    QCOMPARE(spy[0][1].toDouble(), view.tmax());
    QCOMPARE(spy[0][2].toDouble(), scale);
    for (const Trace *row : view.items()) {
        QCOMPARE(row->recordWidget()->tmin(), view.tmin());
        QCOMPARE(row->recordWidget()->timeScale(), scale);
    }
}

void TraceViewTest::appliesRangeToWidthOfTimeScale()
{
    TraceView view;
    view.addItem(makeRow("A"));
    view.timeScale()->resize(0, 20);
    SignalLog log(&view);

    view.setTimeRange(5, 25);
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(view.tmax(), 25.0);
    view.resize(500, 200);
    view.show();
    QTRY_COMPARE(view.itemAt(0)->recordWidget()->timeScale(), view.timeScale()->width() / 20.0);
    QCOMPARE(view.itemAt(0)->recordWidget()->tmin(), 5.0);
    view.resize(view.width() + 155, view.height());
    QTRY_COMPARE(view.itemAt(0)->recordWidget()->timeScale(), view.timeScale()->width() / 20.0);
    QCOMPARE(view.tmax(), 25.0);
}

void TraceViewTest::drawsGridOfTimeScaleInAllRows()
{
    TraceView view;
    show(view, {"early"});
    view.setTimeRange(0, 300);
    view.addItem(makeRow("late"));
    QApplication::processEvents();
    for (Trace *row : view.items())
        row->recordWidget()->setFixedSize(500, 40);
    RecordWidget *early = view.itemAt(0)->recordWidget();
    RecordWidget *late = view.itemAt(1)->recordWidget();

    const QImage before = Ink::picture(*early);
    QCOMPARE(Ink::picture(*late), before);
    emit view.timeScale()->changedInterval(35, 7, 0);
    QVERIFY(Ink::picture(*early) != before);
    QCOMPARE(Ink::picture(*late), Ink::picture(*early));
    early->setGridSpacing(0, 0, 0);
    QVERIFY(Ink::picture(*late) != Ink::picture(*early));
}

void TraceViewTest::coversAllSlotsOfAllRows()
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

void TraceViewTest::bringsWindowIntoSight_data()
{
    QTest::addColumn<TimeWindow>("wanted");
    QTest::addColumn<bool>("center");
    QTest::addColumn<TimeWindow>("shown");
    QTest::newRow("in sight") << window(1020, 1030) << false << window(1000, 1100);
    QTest::newRow("in sight, centred") << window(1020, 1030) << true << window(975, 1075);
    QTest::newRow("before") << window(900, 910) << false << window(900, 1000);
    QTest::newRow("behind") << window(1190, 1200) << false << window(1100, 1200);
    QTest::newRow("behind, centred") << window(1190, 1200) << true << window(1145, 1245);
    QTest::newRow("longer, to both sides") << window(900, 1300) << false << window(900, 1300);
    QTest::newRow("longer, behind") << window(1050, 1250) << false << window(1050, 1250);
    QTest::newRow("longer, centred") << window(900, 1300) << true << window(900, 1300);
    QTest::newRow("same length, centred") << window(1100, 1200) << true << window(1100, 1200);
    QTest::newRow("unset") << TimeWindow() << true << window(1000, 1100);
}

void TraceViewTest::bringsWindowIntoSight()
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

void TraceViewTest::resetsViewInOrder()
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

void TraceViewTest::setsRowsUpWhenAdded()
{
    TraceView view;
    view.setTimeRange(100, 200);
    view.setMinimumRowHeight(48);
    SignalLog log(&view);
    Trace *row = makeRow("A");
    row->recordWidget()->setAlignment(timeAt(10));

    QVERIFY(view.addItem(row));
    const RecordWidget *widget = row->recordWidget();
    QCOMPARE(log.take(), QStringList("layout"));
    QCOMPARE(widget->minimumHeight(), 48);
    QCOMPARE(widget->tmin(), 100.0);
    QCOMPARE(widget->timeScale(), view.timeScale()->scale());
    QVERIFY(widget->normalizationWindow() == window(110, 210));
}

void TraceViewTest::rowWithoutAlignmentTakesThatOfTheView()
{
    TraceView view;
    view.setAlignment(timeAt(1000));
    Trace *own = makeRow("own");
    own->recordWidget()->setAlignment(timeAt(5));
    view.setItems({own, makeRow("none")});
    QVERIFY(view.itemAt(0)->recordWidget()->alignment() == timeAt(5));
    QVERIFY(view.itemAt(1)->recordWidget()->alignment() == timeAt(1000));
}

void TraceViewTest::bindsStreamsOfAddedRow_data()
{
    QTest::addColumn<double>("gain");
    QTest::addColumn<TraceView::RecordIDStrategy>("strategy");
    QTest::addColumn<QString>("text");
    QTest::newRow("no text") << 4.0 << TraceView::NoRecordID << QString();
    QTest::newRow("component") << -0.5 << TraceView::ComponentRecordID << QString("Z");
    QTest::newRow("channel, no gain") << 0.0 << TraceView::ChannelRecordID << QString("BHZ");
}

void TraceViewTest::bindsStreamsOfAddedRow()
{
    QFETCH(double, gain);
    QFETCH(TraceView::RecordIDStrategy, strategy);
    QFETCH(QString, text);
    const Inventory inventory("BHZ", gain);
    TraceView view;
    Trace *row = makeRow("A");
    row->recordWidget()->setSlotCount(2);
    row->setMetaData(1, inventory.stream.get());
    view.addItem(row, strategy);

    int slot = -1;
    QVERIFY(view.itemBoundTo("GE.APE..BHZ", &slot) == row);
    QCOMPARE(slot, 1);
    QCOMPARE(view.bindingsFor(row).size(), 1);
    QCOMPARE(row->recordWidget()->recordID(1), text);
    const double *scale = row->recordWidget()->recordScale(1);
    QCOMPARE(scale != nullptr, gain != 0);
    if (scale)
        QCOMPARE(*scale, 1 / gain);
}

void TraceViewTest::sortsByDistanceThenLabel()
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

void TraceViewTest::removesRowsAndTellsOfTheCurrentOne()
{
    TraceView view;
    view.setItems({makeRow("A"), makeRow("B"), makeRow("C")});
    view.bindItem("XX.B..BHZ", view.itemAt(1), 0);
    view.select(view.itemAt(1));
    SignalLog log(&view);

    view.removeItemBoundTo("XX.unknown..BHZ");
    QCOMPARE(log.take(), QStringList());
    view.removeItemBoundTo("XX.B..BHZ");
    QCOMPARE(log.take(), QStringList({"current B>-", "layout"}));
    QCOMPARE(labels(view.items()), QStringList({"A", "C"}));
    QVERIFY(view.itemBoundTo("XX.B..BHZ") == nullptr);

    Trace stranger("stranger", Qt::black);
    view.updateCurrentTrace(&stranger);
    log.take();
    view.removeItem(&stranger);
    QCOMPARE(log.take(), QStringList("current stranger>-"));
    QCOMPARE(view.count(), 2);
}

void TraceViewTest::clearsInOrder()
{
    TraceView view;
    view.setItems({makeRow("A"), makeRow("B")});
    view.bindItem("XX.A..BHZ", view.itemAt(0), 0);
    view.select(view.itemAt(0));
    const QPointer<Trace> row = view.itemAt(0);
    SignalLog log(&view);

    view.clear();
    QCOMPARE(log.take(), QStringList({"current A>-", "cleared", "layout"}));
    QVERIFY(row.isNull());
    QVERIFY(view.itemBoundTo("XX.A..BHZ") == nullptr);
    QCOMPARE(view.emptyDataSlots(), 0);
}

void TraceViewTest::survivesRemovalFromSlots()
{
    TraceView view;
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

void TraceViewTest::comparesRowsInPhysicalUnits_data()
{
    QTest::addColumn<double>("scale");
    QTest::addColumn<Range>("range");
    QTest::newRow("gain of 1000") << 0.001 << Range(-20000, 30000);
    QTest::newRow("reversed polarity") << -0.5 << Range(-60, 40);
    QTest::newRow("unusable scale") << 0.0 << Range(-20, 30);
}

void TraceViewTest::comparesRowsInPhysicalUnits()
{
    QFETCH(double, scale);
    QFETCH(Range, range);
    TraceView view;
    view.setItems({makeRow("A", makeRecord("XX.A..BHZ", 0, 100, -20, 30)),
                   makeRow("B", makeRecord("XX.B..BHZ", 0, 100, -1, 1)), makeRow("empty")});
    view.itemAt(1)->recordWidget()->setRecordScale(0, scale);

    view.setAllTracesNormalization(true);
    QCOMPARE(view.itemAt(0)->recordWidget()->amplRange(), Range(-20, 30));
    QCOMPARE(view.itemAt(1)->recordWidget()->amplRange(), range);
    QCOMPARE(view.itemAt(2)->recordWidget()->amplRange(), Range(-20, 30));
    QVERIFY(!view.itemAt(2)->recordWidget()->isAmplAutoScaleEnabled());
    view.setAllTracesNormalization(false);
    QVERIFY(view.itemAt(0)->recordWidget()->isAmplAutoScaleEnabled());
}

void TraceViewTest::normalizesOverTheVisibleWindow()
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
    QVERIFY(!row->recordWidget()->normalizationWindow().valid());

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

void TraceViewTest::sameNormalizationTellsNobody()
{
    TraceView view;
    SignalLog log(&view);
    view.setNormalizionMode(TraceView::WindowNormalization);
    view.setAllTracesNormalization(false);
    QCOMPARE(log.take(), QStringList());
    view.addItem(makeRow("without data"));
    log.take();
    view.setAllTracesNormalization(true);
    QCOMPARE(log.take(), QStringList("display"));
    QCOMPARE(view.itemAt(0)->recordWidget()->amplRange(), Range(0, 0));
}

void TraceViewTest::filterReachesAllRows()
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
    QCOMPARE(GainFilter::alive, 0);
}

QTEST_MAIN(TraceViewTest)
#include "tst_traceview.moc"
