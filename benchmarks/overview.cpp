// SPDX-License-Identifier: LGPL-3.0-or-later

// The overview of a day of waveform rows: built again after a change and repainted from what it
// keeps, with and without lobes. Each run times a frame of plain rows, without labels, grid and
// lobes, beside it and prints the ratio.

#include "benchmarking.h"

#include <norvu/gui/multitracewidget.h>
#include <norvu/gui/traceview.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>

#include <tellarix/core/records/ringbuffer.h>
#include <tellarix/core/records/typedarray.h>
#include <tellarix/qt/records/recordpolyline.h>
#include <tellarix/qt/records/recordwidget.h>

#include <QApplication>
#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <memory>

using namespace Benchmarking;
using namespace Norvu::Gui;
using namespace Tellarix;

namespace {

constexpr int Rows = 30;
constexpr int Width = 1600;
constexpr int Height = 900;
constexpr int RowHeight = Height / Rows;
constexpr double SamplingFrequency = 100;
constexpr double Day = 86400;

/** Background noise about zero with some bursts. */
RecordSequence *makeRecords(int row, int recordLength)
{
    Noise noise(static_cast<unsigned>(row + 1));
    const StreamCodesCPtr codes(new StreamCodes("GE", "R" + std::to_string(row), "", "BHZ"));
    auto *sequence = new RingBuffer(0);
    const auto samples = static_cast<int>(Day * SamplingFrequency);
    for (int done = 0; done < samples; done += recordLength) {
        const Core::Time start = Midnight + Core::TimeSpan(done / SamplingFrequency);
        sequence->feed(
            new Record(codes, start, SamplingFrequency, noise.recordOfDay(done, recordLength)));
    }
    return sequence;
}

/** A view of a day's rows with its overview, of one length of records at a time. */
struct Scene
{
    explicit Scene(int recordLength)
    {
        view.resize(Width, Height);
        view.show();
        QCoreApplication::processEvents();
        view.setAlignment(Midnight);
        for (int i = 0; i < Rows; ++i) {
            auto *row = new Trace("GE.R" + QString::number(i) + "..BHZ", Qt::black);
            row->recordWidget()->setRecords(0, makeRecords(i, recordLength));
            view.addItem(row);
        }
        overview.setActive(true);
        QCoreApplication::processEvents();
        view.setTimeRange(0, Day);
    }

    TraceView view;
    MultiTraceWidget overview{&view};
    QImage image{Width, Height, QImage::Format_ARGB32_Premultiplied};
};

Scene &sceneOf(int recordLength)
{
    static std::unique_ptr<Scene> scene;
    static int length = 0;
    if (length != recordLength) {
        scene.reset();
        scene = std::make_unique<Scene>(recordLength);
        length = recordLength;
    }
    return *scene;
}

void plainFrame(Scene &scene, double start, double length)
{
    scene.image.fill(Qt::white);
    QPainter painter(&scene.image);
    painter.setPen(Qt::black);
    const Core::Time from = Midnight + Core::TimeSpan(start);
    const Core::TimeWindow window(from, Core::TimeSpan(length));
    for (int i = 0; i < Rows; ++i) {
        const RecordSequence *records = scene.view.itemAt(i)->recordWidget()->records(0);
        const auto range = records->amplitudeRange(&window);
        Gui::RecordPolyline polyline;
        polyline.create(records, from, window.endTime(), Width / length, range.first, range.second,
                        0, RowHeight);
        polyline.draw(painter);
        painter.translate(0, RowHeight);
    }
}

/** Repaints, after forgetting everything if @p rebuild, and compares with frames of plain rows. */
void paint(benchmark::State &state, bool rebuild)
{
    Scene &scene = sceneOf(static_cast<int>(state.range(0)));
    const auto length = static_cast<double>(state.range(1));
    scene.overview.setWigglesShown(state.range(2) != 0);
    scene.view.setTimeRange(Day / 3 * (length < Day), Day / 3 * (length < Day) + length);
    scene.overview.render(&scene.image);

    double start = 0, plain = 0, ours = 0;
    for (auto _ : state) {
        start += 13.37 * length / Width;
        plain += secondsOf([&] { plainFrame(scene, length < Day ? Day / 3 + start : 0, length); });
        if (rebuild)
            scene.overview.updateDisplay();
        const double painted = secondsOf([&] { scene.overview.render(&scene.image); });
        state.SetIterationTime(painted);
        ours += painted;
    }
    const auto n = static_cast<double>(state.iterations());
    state.counters["plain_rows_ms"] = plain / n * 1E3;
    state.counters["times_plain_rows"] = ours / plain;
}

void Rebuild(benchmark::State &state)
{
    paint(state, true);
}

void CachedRepaint(benchmark::State &state)
{
    paint(state, false);
}

void scenes(benchmark::internal::Benchmark *benchmark)
{
    benchmark->ArgNames({"record", "seconds", "wiggles"});
    for (const int record : {500, 360000}) {
        for (const int length : {86400, 3600, 60, 10}) {
            for (const int wiggles : {0, 1})
                benchmark->Args({record, length, wiggles});
        }
    }
    benchmark->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(0.2);
}

BENCHMARK(Rebuild)->Apply(scenes);
BENCHMARK(CachedRepaint)->Apply(scenes);

} // namespace

int main(int argc, char **argv)
{
    return Benchmarking::run<QApplication>(argc, argv);
}
