// SPDX-License-Identifier: LGPL-3.0-or-later

// A trace view of 30 rows, 24 h at 100 Hz each: what one pan or zoom step costs from the call to
// the finished picture, widgets and all. The plain form is the same view repainted without a
// change.

#include "benchmarking.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>

#include <tellarix/core/records/ringbuffer.h>
#include <tellarix/core/records/typedarray.h>
#include <tellarix/qt/records/recordwidget.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QThread>

#include <sys/resource.h>

#include <algorithm>
#include <random>

using namespace Benchmarking;
using namespace Tellarix;

namespace {

constexpr int Rows = 30;
constexpr int ShortRecord = 500;
constexpr double Rate = 100;
constexpr double Day = 86400;
Norvu::Gui::Trace *makeRow(int number)
{
    const std::string station = "S" + std::to_string(10 + number);
    const StreamCodesCPtr codes(new StreamCodes("XX", station, "", "HHZ"));
    auto *row = new Norvu::Gui::Trace(codes->id().c_str(), Qt::black);
    auto *records = new RingBuffer(0);
    Noise noise(static_cast<unsigned>(number + 1));
    for (double second = 0; second < Day; second += ShortRecord / Rate) {
        Core::SmartPointer<IntArray> samples(new IntArray(ShortRecord));
        noise.fill(samples->typedData(), ShortRecord);
        records->feed(new Record(codes, Midnight + Core::TimeSpan(second), Rate, samples));
    }
    row->recordWidget()->setRecords(0, records, true);
    row->recordWidget()->setAlignment(Midnight);
    row->setHeaderVisible(false);
    row->setVerticalPadding(1, 0);
    return row;
}

Norvu::Gui::TraceView &view()
{
    static Norvu::Gui::TraceView *view = nullptr;
    if (!view) {
        view = new Norvu::Gui::TraceView(nullptr, Qt::WindowFlags(), nullptr, false);
        view->resize(1600, 900);
        view->setAlignment(Midnight);
        for (int i = 0; i < Rows; ++i)
            view->addItem(makeRow(i));
        view->show();
        QApplication::processEvents();
    }
    return *view;
}

double paint(Norvu::Gui::TraceView &view, QImage &image)
{
    QElapsedTimer timer;
    timer.start();
    view.render(&image);
    return timer.nsecsElapsed() * 1E-6;
}

/** Pans through the day by an eighth of the window, as the arrow keys do. */
void panStep(benchmark::State &state)
{
    Norvu::Gui::TraceView &traces = view();
    const double window = static_cast<double>(state.range(0));
    QImage image(traces.size(), QImage::Format_ARGB32_Premultiplied);
    double left = 0;
    double slowest = 0;
    double fastest = 1E9;
    double repaint = 1E9;
    for (auto _ : state) {
        left = left + window > Day ? 0 : left + 0.125 * window;
        QElapsedTimer timer;
        timer.start();
        traces.setTimeRange(left, left + window);
        paint(traces, image);
        const double seconds = timer.nsecsElapsed() * 1E-9;
        state.SetIterationTime(seconds);
        slowest = std::max(slowest, seconds * 1E3);
        fastest = std::min(fastest, seconds * 1E3);
        repaint = std::min(repaint, paint(traces, image));
    }
    state.counters["slowest_ms"] = slowest;
    state.counters["fastest_ms"] = fastest;
    state.counters["unchanged_repaint_ms"] = repaint;
    state.counters["all_rows_visible"] = traces.itemAt(Rows - 1)->visibleRegion().isEmpty() ? 0 : 1;
}

double processorSeconds()
{
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &time) { return time.tv_sec + 1E-6 * time.tv_usec; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/** Live data: records arrive in real time, 10 every 10 ms, while the event loop repaints. */
void liveSecond(benchmark::State &state)
{
    Norvu::Gui::TraceView &traces = view();
    constexpr int RecordSamples = 100;
    std::minstd_rand random(7);
    Core::Time next = Midnight + Core::TimeSpan(Day);
    traces.setTimeRange(Day - 540, Day + 60);
    int row = 0;

    const auto feedOne = [&] {
        Norvu::Gui::Trace *trace = traces.itemAt(row);
        Gui::RecordWidget *widget = trace->recordWidget();
        Core::SmartPointer<IntArray> samples(new IntArray(RecordSamples));
        for (int i = 0; i < RecordSamples; ++i)
            samples->typedData()[i] = static_cast<int>(random() % 4096) - 2048;
        const RecordPtr record(
            new Record(widget->records(0)->back()->codes(), next, Rate, samples));
        if (widget->records(0)->feed(record.get()))
            widget->fed(0, record.get());
        if (++row == Rows) {
            row = 0;
            next += Core::TimeSpan(RecordSamples / Rate);
        }
    };

    double busy = 0;
    for (auto _ : state) {
        const double before = processorSeconds();
        QElapsedTimer second;
        second.start();
        for (int batch = 0; batch < 100; ++batch) {
            for (int i = 0; i < 10; ++i)
                feedOne();
            QApplication::processEvents();
            while (second.elapsed() < 10 * (batch + 1))
                QThread::usleep(500);
        }
        busy += processorSeconds() - before;
        state.SetIterationTime(second.nsecsElapsed() * 1E-9);
    }
    state.counters["core_share"] = busy / static_cast<double>(state.iterations());
}

} // namespace

BENCHMARK(liveSecond)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);

BENCHMARK(panStep)->ArgName("seconds")->Arg(86400)->Arg(3600)->Arg(60)->UseManualTime()->Unit(
    benchmark::kMillisecond);

int main(int argc, char **argv)
{
    return Benchmarking::run<QApplication>(argc, argv);
}
