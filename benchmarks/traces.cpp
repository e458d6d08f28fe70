// SPDX-License-Identifier: LGPL-3.0-or-later

// Waveform rows of a day: from samples in memory to pixels. Each benchmark times the plain form of
// its work in the same run and prints the ratio of the two.

#include "benchmarking.h"

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/ringbuffer.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/records/typedarray.h>
#include <tellarix/qt/records/recordpolyline.h>

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QtConcurrent>

#include <malloc.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <numeric>
#include <vector>

using namespace Benchmarking;
using namespace Tellarix;

namespace {

constexpr int Rows = 30;
constexpr int Width = 1600;
constexpr int RowHeight = 30;
constexpr double SamplingFrequency = 100;
constexpr double Day = 86400;
constexpr int DaySamples = static_cast<int>(Day * SamplingFrequency);
constexpr int ShortRecord = 500;
constexpr int HourRecord = 360000;

/** Samples of one row and what is made of them. */
struct Row
{
    std::vector<Core::SmartPointer<IntArray>> arrays;
    std::unique_ptr<RecordSequence> records;
    Gui::RecordPolyline polyline;
    StreamCodesCPtr codes{new StreamCodes("GE", "APE", "", "BHZ")};
};

/** Background noise with some bursts, in arrays of the length of records. */
void fillRow(Row &row, int recordLength, unsigned seed)
{
    Noise noise(seed);
    for (int done = 0; done < DaySamples; done += recordLength)
        row.arrays.push_back(noise.recordOfDay(done, recordLength));
}

/** The rows in records of one length; those of another length are given up first. */
std::vector<Row> &rowsOf(int recordLength)
{
    static std::vector<Row> rows;
    static int length = 0;
    if (length == recordLength)
        return rows;

    rows.clear();
    rows.resize(Rows);
    malloc_trim(0);
    std::vector<int> numbers(Rows);
    std::iota(numbers.begin(), numbers.end(), 0);
    QtConcurrent::blockingMap(
        numbers, [&](int i) { fillRow(rows[size_t(i)], recordLength, unsigned(i + 1)); });
    length = recordLength;
    return rows;
}

void feedRow(Row &row)
{
    row.records = std::make_unique<RingBuffer>(0);
    int64_t samples = 0;
    for (const auto &array : row.arrays) {
        const auto usecs = static_cast<int64_t>(samples * (1000000 / SamplingFrequency));
        row.records->feed(new Record(row.codes, Midnight + Core::TimeSpan::FromUSecs(usecs),
                                     SamplingFrequency, array));
        samples += array->size();
    }
}

void dropRecords(std::vector<Row> &rows)
{
    for (Row &row : rows) {
        row.records.reset();
        for (const auto &array : row.arrays)
            array->typedData();
    }
}

void createPolyline(Row &row, double start, double length)
{
    const Core::Time from = Midnight + Core::TimeSpan(start);
    const Core::TimeWindow window(from, Core::TimeSpan(length));
    const auto range = row.records->amplitudeRange(&window);
    row.polyline.create(row.records.get(), from, window.endTime(), Width / length, range.first,
                        range.second, 0, RowHeight);
}

void drawRows(std::vector<Row> &rows, QImage &image)
{
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setPen(Qt::black);
    for (Row &row : rows) {
        row.polyline.draw(painter);
        painter.translate(0, RowHeight);
    }
}

/** The plain pass: every sample is looked at once for the extrema of its array. */
void plainExtrema(Row &row)
{
    for (const auto &array : row.arrays) {
        int minimum = array->begin()[0];
        int maximum = minimum;
        for (const int sample : *array) {
            minimum = std::min(minimum, sample);
            maximum = std::max(maximum, sample);
        }
        benchmark::DoNotOptimize(minimum);
        benchmark::DoNotOptimize(maximum);
    }
}

/** The plain frame: extrema of each column by a loop over its samples, joined by a polyline. */
void plainFrame(std::vector<Row> &rows, double start, double length, QImage &image)
{
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setPen(Qt::black);
    for (const Row &row : rows) {
        const Core::TimeWindow window(Midnight + Core::TimeSpan(start), Core::TimeSpan(length));
        const auto range = row.records->amplitudeRange(&window);
        const double scale = (RowHeight - 1) / (range.second - range.first);
        const int perRecord = row.arrays.front()->size();
        QPolygon polygon;
        for (int x = 0; x < Width; ++x) {
            const auto at = [&](int column) {
                const double time = start + column * length / Width;
                return std::clamp(int(time * SamplingFrequency), 0, DaySamples - 1);
            };
            int minimum = std::numeric_limits<int>::max();
            int maximum = std::numeric_limits<int>::min();
            for (int i = at(x); i <= at(x + 1); ++i) {
                const int sample = (*row.arrays[size_t(i / perRecord)])[i % perRecord];
                minimum = std::min(minimum, sample);
                maximum = std::max(maximum, sample);
            }
            polygon << QPoint(x, qRound((range.second - minimum) * scale))
                    << QPoint(x, qRound((range.second - maximum) * scale));
        }
        painter.drawPolyline(polygon);
        painter.translate(0, RowHeight);
    }
}

QImage canvas()
{
    return QImage(Width, Rows * RowHeight, QImage::Format_ARGB32_Premultiplied);
}

/** Records with their pyramids, sequences, polylines and the picture, from samples in memory. */
void FirstPicture(benchmark::State &state)
{
    std::vector<Row> &rows = rowsOf(static_cast<int>(state.range(0)));
    QImage image = canvas();
    double plain = 0, ours = 0, feeding = 0, fastest = 1E9, fastestPlain = 1E9;
    for (auto _ : state) {
        dropRecords(rows);
        const double passed = secondsOf([&] { QtConcurrent::blockingMap(rows, plainExtrema); });
        const double fed = secondsOf([&] { QtConcurrent::blockingMap(rows, feedRow); });
        const double drawn = secondsOf([&] {
            QtConcurrent::blockingMap(rows, [](Row &row) { createPolyline(row, 0, Day); });
            drawRows(rows, image);
        });
        state.SetIterationTime(fed + drawn);
        plain += passed;
        ours += fed + drawn;
        feeding += fed;
        fastest = std::min(fastest, fed + drawn);
        fastestPlain = std::min(fastestPlain, passed);
    }
    state.SetItemsProcessed(state.iterations() * Rows * int64_t(DaySamples));
    const auto n = static_cast<double>(state.iterations());
    state.counters["plain_pass_ms"] = plain / n * 1E3;
    state.counters["feeding_ms"] = feeding / n * 1E3;
    state.counters["times_plain_pass"] = ours / plain;
    state.counters["fastest_ms"] = fastest * 1E3;
    state.counters["fastest_plain_pass_ms"] = fastestPlain * 1E3;
}

/** A frame after a small move: polylines of all rows, by one or two threads, and their picture. */
void Frame(benchmark::State &state)
{
    std::vector<Row> &rows = rowsOf(static_cast<int>(state.range(0)));
    const auto length = static_cast<double>(state.range(1));
    for (Row &row : rows) {
        if (!row.records)
            feedRow(row);
    }
    QImage image = canvas();
    double start = length < Day ? Day / 3 : 0;
    double creating = 0, ours = 0, fastest = 1E9;
    for (auto _ : state) {
        start += 13.37 * length / Width;
        const double created = secondsOf([&] {
            const auto create = [&](Row &row) { createPolyline(row, start, length); };
            if (state.range(2) > 1)
                QtConcurrent::blockingMap(rows, create);
            else
                std::for_each(rows.begin(), rows.end(), create);
        });
        const double drawn = secondsOf([&] { drawRows(rows, image); });
        state.SetIterationTime(created + drawn);
        creating += created;
        ours += created + drawn;
        fastest = std::min(fastest, created + drawn);
        if (start + length > 1.02 * Day)
            start = 0;
    }
    const int frames = length < Day ? 20 : 2;
    const double plain = secondsOf([&] {
        for (int i = 0; i < frames; ++i)
            plainFrame(rows, start + i * length / 100, length, image);
    });
    const auto n = static_cast<double>(state.iterations());
    state.SetItemsProcessed(state.iterations() * Rows * Width);
    state.counters["creating_ms"] = creating / n * 1E3;
    state.counters["fastest_ms"] = fastest * 1E3;
    state.counters["plain_ms"] = plain / frames * 1E3;
    state.counters["faster_than_plain"] = plain / frames / (ours / n);
}

/** Memory of records, sequences and pyramids over that of the bare samples. */
void Memory(benchmark::State &state)
{
    const auto length = static_cast<int>(state.range(0));
    double ratio = 0, told = 0;
    for (auto _ : state) {
        malloc_trim(0);
        const auto used = [] { return mallinfo2().uordblks + mallinfo2().hblkhd; };
        const size_t before = used();
        Row row;
        fillRow(row, length, 1);
        feedRow(row);
        row.arrays = {};
        const double bare = DaySamples * sizeof(int);
        ratio = static_cast<double>(used() - before) / bare;
        told = static_cast<double>(row.records->memorySize()) / bare;
    }
    state.counters["allocated_per_sample_byte"] = ratio;
    state.counters["told_per_sample_byte"] = told;
}

void frames(benchmark::internal::Benchmark *benchmark)
{
    for (const int record : {ShortRecord, HourRecord}) {
        for (const int length : {86400, 3600, 60}) {
            for (const int threads : {1, 2})
                benchmark->Args({record, length, threads});
        }
    }
}

BENCHMARK(Memory)->Arg(ShortRecord)->Arg(HourRecord)->Iterations(1);
BENCHMARK(FirstPicture)
    ->ArgName("record")
    ->Arg(ShortRecord)
    ->Arg(HourRecord)
    ->UseManualTime()
    ->Iterations(8)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Frame)
    ->ArgNames({"record", "seconds", "threads"})
    ->Apply(frames)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    return Benchmarking::run<QGuiApplication>(argc, argv);
}
