#include "recordwidgettest.h"

#include <QSemaphore>
#include <QSignalSpy>

#include <atomic>
#include <cmath>
#include <functional>
#include <random>

using namespace Tellarix;
using Gui::RecordWidget;

Q_DECLARE_METATYPE(std::function<void(RecordWidget &)>)

namespace {

/** A running sum times a factor that waits at a gate before each block. */
class GatedSum : public Math::Filtering::InPlaceFilter<double>
{
public:
    explicit GatedSum(double factor = 1) : _factor(factor) {}

    void setSamplingFrequency(double) override { _sum = 0; }
    int setParameters(int, const double *) override { return 0; }
    void apply(int n, double *samples) override
    {
        gate.acquire();
        gate.release();
        for (int i = 0; i < n; ++i)
            samples[i] = _factor * (_sum += samples[i]);
        ++blocks;
    }
    InPlaceFilter<double> *clone() const override { return new GatedSum(_factor); }

    static QSemaphore gate;
    static std::atomic<int> blocks; /**< filtered so far by all filters */

private:
    double _factor;
    double _sum{0};
};

QSemaphore GatedSum::gate;
std::atomic<int> GatedSum::blocks{0};

/** Holds up all filters as long as it lives or until it is opened. */
class ClosedGate
{
public:
    ClosedGate() { GatedSum::gate.acquire(); }
    ~ClosedGate() { open(); }
    void open()
    {
        if (!std::exchange(_isOpen, true))
            GatedSum::gate.release();
    }

private:
    bool _isOpen{false};
};

/** A widget that filters in the background and writes down what it sends and shows. */
class BackgroundWidget : public TestWidget
{
public:
    BackgroundWidget()
    {
        setBackgroundFiltering(true);
        connect(this, &RecordWidget::filteringStarted, this, [this] { log << "started"; });
        connect(this, &RecordWidget::filteringFinished, this, [this] { log << "finished"; });
        connect(this, &RecordWidget::filteringProgress, this,
                [this](RecordWidget *, int done, int total) {
                    log << QString("%1/%2").arg(done).arg(total);
                });
    }

    QStringList takeLog() { return std::exchange(log, {}); }

    QStringList log;

protected:
    void changedRecords(int slot, RecordSequence *sequence) override
    {
        if (sequence != nullptr && sequence != records(slot))
            log << QString("filtered %1").arg(slot);
    }
};

/** What a widget that filters at once makes of the records of another. */
Samples reference(const RecordWidget &widget, int slot = 0)
{
    TestWidget other;
    other.setRecords(slot, widget.records(slot), false);
    other.setFilter(widget.filter());
    return samplesOf(other.filteredRecords(slot));
}

std::vector<RecordPtr> consecutive(int count, int first = 0)
{
    std::vector<RecordPtr> result;
    for (int i = first; i < first + count; ++i)
        result.push_back(record(10.0 * i, zigzag(10, -i, 2 * i + 1)));
    return result;
}

} // namespace

class TestBackgroundFiltering : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void showsRawUntilFiltered();
    void drawsRawPaleUntilFiltered();
    void tellsProgressOfSlots();
    void filtersAsAtOnce();
    void takesRecordsFedMeanwhile_data();
    void takesRecordsFedMeanwhile();
    void filtersFedRecordsAtOnce();
    void lateRecordKeepsTraceUntilRefiltered();
    void otherFilterCancels();
    void endsWhenNothingIsToBeFiltered_data();
    void endsWhenNothingIsToBeFiltered();
    void replacedRecordsAreFiltered();
    void diesWhileFiltering();
    void followsRandomChanges();
};

// The gate is open unless a test closes it.
void TestBackgroundFiltering::init()
{
    GatedSum::gate.release();
}

void TestBackgroundFiltering::cleanup()
{
    GatedSum::gate.acquire();
}

void TestBackgroundFiltering::showsRawUntilFiltered()
{
    BackgroundWidget widget;
    widget.install(consecutive(5));
    widget.enableFiltering(true);
    QCOMPARE(widget.takeLog(), QStringList());
    {
        const ClosedGate gate;
        widget.setFilter(std::make_unique<GatedSum>().get());
        QCOMPARE(widget.takeLog(), QStringList("started"));
        QVERIFY(widget.isFilteringInProgress());
        QVERIFY(widget.filteredRecords(0) == nullptr);
        QCOMPARE(widget.displayedRecords(0), widget.records(0));
    }
    QTRY_VERIFY(!widget.isFilteringInProgress());
    QCOMPARE(widget.takeLog(), (QStringList{"filtered 0", "1/1", "finished"}));
    QCOMPARE(widget.displayedRecords(0), widget.filteredRecords(0));
    QCOMPARE(samplesOf(widget.filteredRecords(0)), reference(widget));
}

void TestBackgroundFiltering::drawsRawPaleUntilFiltered()
{
    BackgroundWidget widget;
    widget.install(consecutive(5));
    const QImage raw = picture(widget);
    const QRect ink = inkRect(raw, Qt::red);
    QVERIFY(ink.isValid());
    widget.enableFiltering(true);
    {
        const ClosedGate gate;
        widget.setFilter(std::make_unique<GatedSum>().get());
        const QImage pale = picture(widget);
        QVERIFY(!inkRect(pale, Qt::red).isValid());
        for (int x = ink.left(); x <= ink.right(); ++x) {
            for (int y = ink.top(); y <= ink.bottom(); ++y) {
                if (raw.pixelColor(x, y) == Qt::red)
                    QVERIFY(pale.pixelColor(x, y) != pale.pixelColor(pale.width() - 2, y));
            }
        }
    }
    QTRY_VERIFY(!widget.isFilteringInProgress());
    QVERIFY(inkRect(picture(widget), Qt::red).isValid());
}

void TestBackgroundFiltering::tellsProgressOfSlots()
{
    BackgroundWidget widget;
    for (int slot = 0; slot < 3; ++slot)
        widget.install(consecutive(3 + slot), slot);
    widget.setFilter(std::make_unique<GatedSum>().get());
    widget.enableFiltering(true);
    QTRY_VERIFY(!widget.isFilteringInProgress());
    QStringList log = widget.takeLog();
    QCOMPARE(log.filter("/"), (QStringList{"1/3", "2/3", "3/3"}));
    QCOMPARE(log.first(), QString("started"));
    QCOMPARE(log.last(), QString("finished"));
    QCOMPARE(log.filter("ed").size(), 5);
}

void TestBackgroundFiltering::filtersAsAtOnce()
{
    // Gaps, overlaps, another rate and samples that are not numbers all begin afresh.
    BackgroundWidget widget;
    std::vector<RecordPtr> records = consecutive(10);
    records.push_back(record(130, zigzag(20, 1, 2)));
    records.push_back(record(145, zigzag(20, 1, 2)));
    records.push_back(record(165, zigzag(20, 1, 2), 2));
    records.push_back(record(175, {1, 2, std::nan(""), 4, 5}, 2));
    widget.install(records);
    widget.setFilter(std::make_unique<GatedSum>().get());
    widget.enableFiltering(true);
    QTRY_VERIFY(widget.filteredRecords(0) != nullptr);
    const Samples expected = reference(widget);
    const Samples samples = samplesOf(widget.filteredRecords(0));
    QCOMPARE(samples.size(), expected.size());
    for (size_t i = 0; i < samples.size(); ++i)
        QVERIFY(samples[i] == expected[i] || (std::isnan(samples[i]) && std::isnan(expected[i])));
}

void TestBackgroundFiltering::takesRecordsFedMeanwhile_data()
{
    QTest::addColumn<QVector<double>>("starts");
    QTest::addColumn<int>("length");

    QTest::newRow("at the end") << QVector<double>{100, 110, 120} << 10;
    QTest::newRow("behind a gap") << QVector<double>{150} << 10;
    QTest::newRow("in a gap") << QVector<double>{40} << 10;
    QTest::newRow("before all") << QVector<double>{-10} << 10;
    QTest::newRow("everywhere") << QVector<double>{120, 100, 40, -10, 110} << 10;
    QTest::newRow("too much for the GUI thread") << QVector<double>{100, 400100} << 400000;
}

void TestBackgroundFiltering::takesRecordsFedMeanwhile()
{
    QFETCH(QVector<double>, starts);
    QFETCH(int, length);
    BackgroundWidget widget;
    widget.install(consecutive(4, 0));
    for (const RecordPtr &item : consecutive(5, 5))
        widget.feed(item);
    widget.enableFiltering(true);
    {
        const ClosedGate gate;
        widget.setFilter(std::make_unique<GatedSum>().get());
        for (const double start : starts)
            widget.feed(record(start, zigzag(length, 1, 3)));
        QCOMPARE(widget.takeLog(), QStringList("started"));
    }
    QTRY_VERIFY(!widget.isFilteringInProgress());
    QCOMPARE(widget.takeLog().filter("finished").size(), 1);
    QCOMPARE(widget.filteredRecords(0)->size(), 9 + starts.size());
    QVERIFY(samplesOf(widget.filteredRecords(0)) == reference(widget));
}

void TestBackgroundFiltering::filtersFedRecordsAtOnce()
{
    BackgroundWidget widget;
    widget.setFilter(std::make_unique<GatedSum>().get());
    widget.enableFiltering(true);
    widget.install({});
    for (const RecordPtr &item : consecutive(5)) {
        widget.feed(item);
        QCOMPARE(samplesOf(widget.filteredRecords(0)), reference(widget));
    }
    QCOMPARE(widget.takeLog().filter("started"), QStringList());
}

void TestBackgroundFiltering::lateRecordKeepsTraceUntilRefiltered()
{
    BackgroundWidget widget;
    widget.install({record(0, {1, 1}), record(4, {1, 1})});
    widget.setFilter(std::make_unique<GatedSum>().get());
    widget.enableFiltering(true);
    QTRY_VERIFY(!widget.isFilteringInProgress());
    widget.takeLog();
    {
        const ClosedGate gate;
        widget.feed(record(2, {1, 1}));
        QCOMPARE(widget.takeLog(), QStringList("started"));
        QCOMPARE(samplesOf(widget.displayedRecords(0)), (Samples{1, 2, 1, 2}));
        QVERIFY(inkRect(picture(widget), Qt::red).isValid());
    }
    QTRY_VERIFY(!widget.isFilteringInProgress());
    QCOMPARE(samplesOf(widget.displayedRecords(0)), (Samples{1, 2, 3, 4, 5, 6}));
}

void TestBackgroundFiltering::otherFilterCancels()
{
    BackgroundWidget widget;
    widget.install({record(0, {1, 1}), record(2, {1, 1})});
    widget.enableFiltering(true);
    {
        const ClosedGate gate;
        for (const double factor : {2.0, 3.0, 4.0})
            widget.setFilter(std::make_unique<GatedSum>(factor).get());
    }
    QTRY_VERIFY(!widget.isFilteringInProgress());
    QCOMPARE(widget.takeLog(), (QStringList{"started", "filtered 0", "1/1", "finished"}));
    QCOMPARE(samplesOf(widget.displayedRecords(0)), (Samples{4, 8, 12, 16}));

    // A filter that is through already is not shown any more either.
    const int blocks = GatedSum::blocks;
    widget.setFilter(std::make_unique<GatedSum>(5).get());
    while (GatedSum::blocks < blocks + 2)
        QThread::yieldCurrentThread();
    widget.setFilter(std::make_unique<GatedSum>(6).get());
    QVERIFY(widget.filteredRecords(0) == nullptr);
    QTRY_VERIFY(!widget.isFilteringInProgress());
    QCOMPARE(widget.takeLog(), (QStringList{"started", "filtered 0", "1/1", "finished"}));
    QCOMPARE(samplesOf(widget.displayedRecords(0)), (Samples{6, 12, 18, 24}));
}

void TestBackgroundFiltering::endsWhenNothingIsToBeFiltered_data()
{
    using End = std::function<void(RecordWidget &)>;
    QTest::addColumn<End>("end");
    QTest::newRow("no filter") << End([](RecordWidget &widget) { widget.setFilter(nullptr); });
    QTest::newRow("off") << End([](RecordWidget &widget) { widget.enableFiltering(false); });
    QTest::newRow("at once") << End(
        [](RecordWidget &widget) { widget.setBackgroundFiltering(false); });
    QTest::newRow("no records") << End([](RecordWidget &widget) { widget.clearRecords(); });
    QTest::newRow("no slots") << End([](RecordWidget &widget) { widget.setSlotCount(0); });
}

void TestBackgroundFiltering::endsWhenNothingIsToBeFiltered()
{
    QFETCH(std::function<void(RecordWidget &)>, end);
    BackgroundWidget widget;
    widget.install(consecutive(5));
    widget.enableFiltering(true);
    widget.setFilter(std::make_unique<GatedSum>().get());
    widget.takeLog();
    end(widget);
    QCOMPARE(widget.log.filter("finished"), QStringList("finished"));
    QVERIFY(!widget.isFilteringInProgress());
    widget.takeLog();

    // Whatever was under way is through when others that came later are.
    BackgroundWidget others[4];
    for (BackgroundWidget &other : others) {
        other.install(consecutive(5));
        other.enableFiltering(true);
        other.setFilter(std::make_unique<GatedSum>().get());
    }
    for (const BackgroundWidget &other : others)
        QTRY_VERIFY(!other.isFilteringInProgress());
    QCOMPARE(widget.takeLog(), QStringList());
}

void TestBackgroundFiltering::replacedRecordsAreFiltered()
{
    BackgroundWidget widget;
    widget.enableFiltering(true);
    widget.setFilter(std::make_unique<GatedSum>().get());
    {
        const ClosedGate gate;
        widget.install(consecutive(5));
        widget.install({record(7, {1, 2, 3})});
    }
    QTRY_VERIFY(!widget.isFilteringInProgress());
    QCOMPARE(samplesOf(widget.displayedRecords(0)), (Samples{1, 3, 6}));

    // Records that got into the sequence unseen are found on demand.
    widget.records(0)->feed(record(2, {1}).get());
    widget.updateRecords();
    QTRY_COMPARE(samplesOf(widget.displayedRecords(0)), (Samples{1, 1, 3, 6}));
}

void TestBackgroundFiltering::diesWhileFiltering()
{
    ClosedGate gate;
    auto widget = std::make_unique<BackgroundWidget>();
    const RecordPtr kept = record(0, {1, 2, 3});
    widget->install({kept});
    widget->enableFiltering(true);
    widget->setFilter(std::make_unique<GatedSum>().get());
    widget.reset();
    gate.open();
    QTRY_COMPARE(kept->use_count(), 1U);
}

void TestBackgroundFiltering::followsRandomChanges()
{
    std::mt19937 random(41);
    for (int round = 0; round < 20; ++round) {
        BackgroundWidget widget;
        widget.setRecords(0, new RingBuffer(round % 2 ? 60 : 0));
        widget.enableFiltering(true);
        std::vector<RecordPtr> records = consecutive(120);
        // Neighbours change places now and then.
        for (size_t i = 1; i < records.size(); ++i) {
            if (random() % 8 == 0)
                std::swap(records[i], records[i - 1]);
        }
        for (const RecordPtr &item : records) {
            widget.feed(item);
            if (random() % 12 == 0)
                widget.setFilter(std::make_unique<GatedSum>(random() % 9).get());
            if (random() % 5 == 0)
                QCoreApplication::processEvents();
        }
        widget.setFilter(std::make_unique<GatedSum>(3).get());
        QTRY_VERIFY(!widget.isFilteringInProgress());
        QVERIFY2(samplesOf(widget.displayedRecords(0)) == reference(widget),
                 QByteArray::number(round));
    }
}

QTEST_MAIN(TestBackgroundFiltering)
#include "tst_backgroundfiltering.moc"
