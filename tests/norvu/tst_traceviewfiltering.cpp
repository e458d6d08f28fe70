// SPDX-License-Identifier: LGPL-3.0-or-later

#include "gainfilter.h"
#include "semaphore.h"
#include "traces.h"

#include <QSignalSpy>

using namespace Norvu::Gui;
using namespace Traces;
using Range = QPair<double, double>;

namespace {

/** Multiplies by a factor once the gate is open. */
class GatedGain : public GainFilter
{
public:
    using GainFilter::GainFilter;

    void apply(int n, double *samples) override
    {
        gate.acquire();
        gate.release();
        GainFilter::apply(n, samples);
    }
    GatedGain *clone() const override { return new GatedGain(*this); }

    static Semaphore gate;
};

Semaphore GatedGain::gate;

/** Signals of a view about its filtering: "1/3" for progress, "layout" for new contents. */
class FilteringLog : public QObject
{
public:
    explicit FilteringLog(TraceView *view)
    {
        connect(view, &TraceView::filteringProgress, this,
                [this](int done, int total) { _entries << QString("%1/%2").arg(done).arg(total); });
        connect(view, &TraceView::layoutOrContentChanged, this, [this] { _entries << "layout"; });
    }

    QStringList take() { return std::exchange(_entries, {}); }
    bool contains(const QString &entry) const { return _entries.contains(entry); }

private:
    QStringList _entries;
};

} // namespace

class TraceViewFilteringTest : public QObject
{
    Q_OBJECT

private slots:
    // The gate is closed when a test begins.
    void init() { QCOMPARE(GatedGain::gate.available(), 0); }

    void cleanup() { GatedGain::gate.acquire(); }

    void normalizesOnceAllRowsAreThrough()
    {
        TraceView view;
        fill(view);
        FilteringLog log(&view);
        view.setFilter(new GatedGain(10));
        QCOMPARE(log.take(), (QStringList{"0/3", "layout"}));
        QCOMPARE(view.itemAt(0)->recordWidget()->amplRange(), Range(-3, 3));

        GatedGain::gate.release();
        QTRY_VERIFY(log.contains("3/3"));
        QCOMPARE(log.take(), (QStringList{"1/3", "2/3", "3/3", "layout"}));
        for (const Trace *row : view.items())
            QCOMPARE(row->recordWidget()->amplRange(), Range(-30, 30));
    }

    void countsRowsAfresh()
    {
        TraceView view;
        fill(view);
        FilteringLog log(&view);
        view.setFilter(new GatedGain(10));
        view.setFilter(new GatedGain(20));
        QCOMPARE(log.take(), (QStringList{"0/3", "layout", "0/3", "layout"}));
        view.setFilter(nullptr);
        QCOMPARE(log.take(), (QStringList{"3/3", "layout"}));
        view.setFilter(nullptr);
        QCOMPARE(log.take(), QStringList("layout"));
        GatedGain::gate.release();
    }

    void removedRowsDoNotCount()
    {
        for (const int removed : {1, 3}) {
            TraceView view;
            fill(view);
            FilteringLog log(&view);
            view.setFilter(new GatedGain(10));
            for (int i = 0; i < removed; ++i)
                view.removeItem(view.itemAt(0));
            QCOMPARE(log.contains("3/3"), removed == 3);
            GatedGain::gate.release();
            QTRY_VERIFY(log.contains("3/3"));
            GatedGain::gate.acquire();
        }
        GatedGain::gate.release();
    }

    void dyingViewIsNotTold()
    {
        auto view = std::make_unique<TraceView>();
        fill(*view);
        FilteringLog log(view.get());
        view->setFilter(new GatedGain(10));
        log.take();
        view.reset();
        QCOMPARE(log.take(), QStringList());
        GatedGain::gate.release();
    }

    void laterRowsAreFiltered()
    {
        GatedGain::gate.release();
        TraceView view;
        fill(view);
        view.setFilter(new GatedGain(10));
        view.addItem(makeRow("late", makeRecord("XX.B..BHZ", 0, 100, -7, 7)));
        FilteringLog log(&view);
        QTRY_VERIFY(log.contains("4/4"));
        QCOMPARE(view.itemAt(3)->recordWidget()->amplRange(), Range(-70, 70));

        view.addItem(makeRow("later", makeRecord("XX.C..BHZ", 0, 100, -8, 8)));
        QTRY_VERIFY(log.contains("1/1"));
        QCOMPARE(view.itemAt(0)->recordWidget()->amplRange(), Range(-80, 80));
    }

private:
    /** Three rows with amplitudes of 1, 2 and 3. */
    void fill(TraceView &view)
    {
        for (int i = 1; i <= 3; ++i)
            view.addItem(makeRow(QString::number(i), makeRecord("XX.A..BHZ", 0, 100, -i, i)));
        view.setAllTracesNormalization(true);
        view.setTimeRange(0, 100);
        view.setBackgroundFiltering(true);
        view.setFilterEnabled(true);
    }
};

QTEST_MAIN(TraceViewFilteringTest)
#include "tst_traceviewfiltering.moc"
