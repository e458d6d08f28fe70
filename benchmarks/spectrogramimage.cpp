// SPDX-License-Identifier: LGPL-3.0-or-later

// The picture of an hour of spectrogram at 100 Hz, 64 bands on 1600 x 400 pixels. The plain form
// beside it interpolates and colours one pixel after the other; each run prints the ratio.

#include <norvu/gui/gradients.h>
#include <norvu/gui/spectrogramimage.h>

#include <benchmark/benchmark.h>

#include <QElapsedTimer>
#include <QThreadPool>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

using namespace Norvu::Gui;

namespace {

constexpr int Width = 1600;
constexpr int Height = 400;

using Table = Norvu::Utils::LUT<double, unsigned int>;

template <typename T>
void fill(Spectrogram<T> &spectrogram, int columns)
{
    SpectrogramSettings settings;
    settings.fromString("periods_log(0.05,20,10,64)");
    spectrogram.init(settings);
    spectrogram.setSamplingFrequency(100);
    std::minstd_rand random(1);
    std::vector<T> samples(static_cast<size_t>(columns));
    for (T &sample : samples)
        sample = static_cast<T>(static_cast<int>(random() % 2001) - 1000);
    spectrogram.pushData(columns, samples.data());
}

template <typename T>
T plainValue(const T *data, int rows, int columns, int64_t x, int64_t y)
{
    constexpr T Unit = static_cast<T>(4294967296.0);
    constexpr T PerUnit = static_cast<T>(2.3283064365386963e-10);
    const auto column = static_cast<int>(x >> 32);
    const auto row = static_cast<int>(y >> 32);
    const T xShare = static_cast<T>(static_cast<uint32_t>(x));
    const T yShare = static_cast<T>(static_cast<uint32_t>(y));
    const T *value = data + static_cast<std::ptrdiff_t>(column) * rows + row;
    const bool hasRight = column + 1 < columns;
    const bool hasUpper = row + 1 < rows;
    if (hasRight && hasUpper) {
        const T a = (value[rows] * xShare + value[0] * (Unit - xShare)) * PerUnit;
        const T b = (value[rows + 1] * xShare + value[1] * (Unit - xShare)) * PerUnit;
        return (a * (Unit - yShare) + b * yShare) * PerUnit;
    }
    if (hasRight)
        return (value[rows] * xShare + value[0] * (Unit - xShare)) * PerUnit;
    if (hasUpper)
        return (value[0] * (Unit - yShare) + value[1] * yShare) * PerUnit;
    return value[0];
}

template <typename T>
void drawPlain(QImage &image, const Spectrogram<T> &spectrogram, const Table &table)
{
    const int rows = spectrogram.rows();
    const int columns = spectrogram.columns();
    const int64_t xStep = (static_cast<int64_t>(columns) << 32) / Width;
    const int64_t yStep = (static_cast<int64_t>(rows) << 32) / Height;
    int64_t y = 0;
    for (int line = Height - 1; line >= 0; --line, y += yStep) {
        auto *pixels = reinterpret_cast<unsigned int *>(image.scanLine(line));
        int64_t x = 0;
        for (int i = 0; i < Width; ++i, x += xStep) {
            const double value = plainValue(spectrogram.data(), rows, columns, x, y);
            pixels[i] = table.at(value);
        }
    }
}

template <typename Function>
double secondsFor(Function &&work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return 1e-9 * static_cast<double>(timer.nsecsElapsed());
}

/** Draws both forms in turn; the ratio is that of their shortest times. */
template <typename T>
void draw(benchmark::State &state)
{
    Spectrogram<T> spectrogram;
    fill(spectrogram, static_cast<int>(state.range(0)));
    Table table;
    fillTable(table, Gradients::Viridis.rescaled(0, 0.5 * spectrogram.maximum()));
    QImage plain(Width, Height, QImage::Format_ARGB32);
    QImage image;

    double shortestPlain = std::numeric_limits<double>::infinity();
    double shortest = shortestPlain;
    for (auto _ : state) {
        const double seconds =
            secondsFor([&] { generateImageCW(image, &spectrogram, &table, Width, Height, 0, 0); });
        state.SetIterationTime(seconds);
        shortest = std::min(shortest, seconds);
        shortestPlain =
            std::min(shortestPlain, secondsFor([&] { drawPlain(plain, spectrogram, table); }));
    }
    if (image != plain)
        state.SkipWithError("pixels differ");
    state.SetItemsProcessed(state.iterations() * Width * Height);
    state.counters["plain_ms"] = 1e3 * shortestPlain;
    state.counters["best_ms"] = 1e3 * shortest;
    state.counters["times_as_fast"] = shortestPlain / shortest;
}

template <typename T>
void picture(benchmark::State &state)
{
    draw<T>(state);
}

template <typename T>
void pictureOnOneThread(benchmark::State &state)
{
    QThreadPool *pool = QThreadPool::globalInstance();
    const int threads = pool->maxThreadCount();
    pool->setMaxThreadCount(1);
    draw<T>(state);
    pool->setMaxThreadCount(threads);
}

void setUp(benchmark::internal::Benchmark *benchmark)
{
    benchmark->Arg(36000)
        ->Arg(360000)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(400);
}

BENCHMARK_TEMPLATE(picture, float)->Apply(setUp);
BENCHMARK_TEMPLATE(picture, double)->Apply(setUp);
BENCHMARK_TEMPLATE(pictureOnOneThread, float)->Apply(setUp);
BENCHMARK_TEMPLATE(pictureOnOneThread, double)->Apply(setUp);

} // namespace

BENCHMARK_MAIN();
