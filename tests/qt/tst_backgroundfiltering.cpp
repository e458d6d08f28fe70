// SPDX-License-Identifier: LGPL-3.0-or-later

#include "recordwidgettest.h"
#include "semaphore.h"

#include <QSignalSpy>

#include <atomic>
#include <functional>
#include <random>

using namespace Tellarix;
using Gui::RecordWidget;

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

    static Semaphore gate;
    static std::atomic<int> blocks; /**< filtered so far by all filters */

private:
    double _factor;
    double _sum{0};
};

Semaphore GatedSum::gate;
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
    // The gate is open unless a test closes it.
    void init() { GatedSum::gate.release(); }

    void cleanup() { GatedSum::gate.acquire(); }

    void showsRawUntilFiltered()
    {
        BackgroundWidget widget;
        widget.install(consecutive(5));
        widget.enableFiltering(true);
        QCOMPARE(widget.takeLog(), QStringList());
        QVERIFY(inkRect(picture(widget), Qt::red).isValid());
        {
            const ClosedGate gate;
            widget.setFilter(std::make_unique<GatedSum>().get());
            QCOMPARE(widget.takeLog(), QStringList("started"));
            QCOMPARE(widget.displayedRecords(0), widget.records(0));
            // Raw records are drawn paler meanwhile.
            QVERIFY(!inkRect(picture(widget), Qt::red).isValid());
        }
        QTRY_VERIFY(!widget.isFilteringInProgress());
        QCOMPARE(widget.takeLog(), (QStringList{"filtered 0", "1/1", "finished"}));
        QCOMPARE(samplesOf(widget.displayedRecords(0)), reference(widget));
        QVERIFY(inkRect(picture(widget), Qt::red).isValid());
    }

    void tellsProgressOfSlots()
    {
        BackgroundWidget widget;
        for (int slot = 0; slot < 3; ++slot)
            widget.install(consecutive(3 + slot), slot);
        widget.setFilter(std::make_unique<GatedSum>().get());
        widget.enableFiltering(true);
        QTRY_VERIFY(!widget.isFilteringInProgress());
        QCOMPARE(widget.takeLog().filter("/"), (QStringList{"1/3", "2/3", "3/3"}));
    }

    void takesRecordsFedMeanwhile()
    {
        // A gap, any order and records that are too much for the GUI thread.
        const QVector<QPair<QVector<double>, int>> cases{
            {{150}, 10}, {{120, 100, 40, -10, 110}, 10}, {{100, 400100}, 400000}};
        for (const auto &[starts, length] : cases) {
            BackgroundWidget widget;
            widget.install(consecutive(4));
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
    }

    void lateRecordKeepsTraceUntilRefiltered()
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
        }
        QTRY_VERIFY(!widget.isFilteringInProgress());
        QCOMPARE(samplesOf(widget.displayedRecords(0)), (Samples{1, 2, 3, 4, 5, 6}));
    }

    void otherFilterCancels()
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
        // What the last one has made stays in view, which spares the eye a flash of raw traces.
        QCOMPARE(samplesOf(widget.displayedRecords(0)), (Samples{4, 8, 12, 16}));
        QTRY_VERIFY(!widget.isFilteringInProgress());
        QCOMPARE(widget.takeLog(), (QStringList{"started", "filtered 0", "1/1", "finished"}));
        QCOMPARE(samplesOf(widget.displayedRecords(0)), (Samples{6, 12, 18, 24}));
    }

    void endsWhenNothingIsToBeFiltered()
    {
        const std::function<void(RecordWidget &)> ends[] = {
            [](RecordWidget &widget) { widget.setFilter(nullptr); },
            [](RecordWidget &widget) { widget.enableFiltering(false); },
            [](RecordWidget &widget) { widget.setBackgroundFiltering(false); },
            [](RecordWidget &widget) { widget.clearRecords(); },
            [](RecordWidget &widget) { widget.setSlotCount(0); },
        };
        for (const auto &end : ends) {
            BackgroundWidget widget;
            widget.install(consecutive(5));
            widget.enableFiltering(true);
            widget.setFilter(std::make_unique<GatedSum>().get());
            widget.takeLog();
            end(widget);
            QCOMPARE(widget.takeLog().filter("finished"), QStringList("finished"));
            QVERIFY(!widget.isFilteringInProgress());

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
    }

    void replacedRecordsAreFiltered()
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

    void diesWhileFiltering()
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

    void followsRandomChanges()
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
};

QTEST_MAIN(TestBackgroundFiltering)
#include "tst_backgroundfiltering.moc"
