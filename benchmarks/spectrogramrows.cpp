// SPDX-License-Identifier: LGPL-3.0-or-later

// A pan step by 16 pixels with the spectrograms of ten rows in sight: the view is moved, painted,
// and what has come into sight is worked out. The frame is the time until the rows are painted with
// what there is, the longest turn that until the event loop could go on.

#include "benchmarking.h"

#include "spectrograms/spectrogramrow.h"
#include "spectrograms/spectrograms.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>

#include <tellarix/core/records/ringbuffer.h>

#include <QApplication>

#include <algorithm>
#include <vector>

using namespace Tellarix;
using namespace Workbench;
using Benchmarking::Midnight;
using Benchmarking::secondsOf;
using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

namespace {

constexpr int Rows = 10;
constexpr double Rate = 100;
constexpr int RecordLength = 6000;
constexpr int PanPixels = 16;
constexpr int Steps = 40;

/** Ten rows of @p seconds of data. */
struct Desk
{
    TraceView view;
    Spectrograms *spectrograms;

    explicit Desk(double seconds) : spectrograms(new Spectrograms(&view))
    {
        QList<Trace *> traces;
        for (int i = 0; i < Rows; ++i)
            traces.append(addRow(static_cast<unsigned>(i), seconds));
        spectrograms->adopt(traces);
        view.setMinimumRowHeight(80);
        view.resize(1600, 950);
        view.setAlignment(Midnight);
        view.show();
    }

    Trace *addRow(unsigned seed, double seconds)
    {
        Benchmarking::Noise noise(seed);
        auto *row = spectrograms->makeTraces();
        auto *trace = new Trace(QString::number(seed), row, Qt::black);
        auto *sequence = new RingBuffer(-1);
        for (int first = 0; first < seconds * Rate; first += RecordLength) {
            const RecordCPtr record(new Record(StreamCodes::FromID("XX.AAA..HHZ"),
                                               Midnight + Core::TimeSpan(first / Rate), Rate,
                                               noise.recordOfDay(first, RecordLength)));
            sequence->feed(record.get());
        }
        row->setRecords(0, sequence, true);
        view.addItem(trace);
        return trace;
    }

    void showFrom(double start, double length)
    {
        view.setVisibleTimeWindow(
            {Midnight + Core::TimeSpan(start), Midnight + Core::TimeSpan(start + length)});
    }

    void settle()
    {
        for (int rests = 0; rests < 3; rests = spectrograms->isBusy() ? 0 : rests + 1) {
            view.grab();
            QCoreApplication::processEvents();
        }
    }
};

/** @p state's ranges: length in minutes, and where the picture stands. */
void panStep(benchmark::State &state)
{
    const double length = static_cast<double>(state.range(0)) * 60;
    Desk desk(1.5 * length);
    desk.spectrograms->setPlace(static_cast<SpectrogramPlace>(state.range(1)));
    desk.spectrograms->setAllShown(true);
    desk.showFrom(0, length);
    desk.settle();

    std::vector<double> frames;
    double longestTurn = 0;
    double start = 0;
    for (auto _ : state) {
        start += length * PanPixels / desk.view.itemAt(0)->recordWidget()->canvasWidth();
        const double seconds = secondsOf([&] {
            desk.showFrom(start, length);
            desk.view.grab();
        });
        frames.push_back(seconds);
        state.SetIterationTime(seconds);
        while (desk.spectrograms->isBusy())
            longestTurn =
                std::max(longestTurn, secondsOf([] { QCoreApplication::processEvents(); }));
    }
    std::sort(frames.begin(), frames.end());
    state.counters["frame_ms"] = frames[frames.size() / 2] * 1E3;
    state.counters["slowest_ms"] = frames.back() * 1E3;
    state.counters["longest_turn_ms"] = longestTurn * 1E3;
}

} // namespace

BENCHMARK(panStep)
    ->ArgNames({"minutes", "place"})
    ->ArgsProduct({{10, 60, 1440}, {0, 1, 2}})
    ->Iterations(Steps)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    return Benchmarking::run<QApplication>(argc, argv);
}
