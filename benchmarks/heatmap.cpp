// SPDX-License-Identifier: LGPL-3.0-or-later

// The density of events on a map of 1600 x 900 pixels. The plain form beside it goes over discs and
// pixels one after the other; each run prints the ratio and compares all pixels.

#include "benchmarking.h"

#include <norvu/gui/gradients.h>
#include <norvu/gui/map/eventsheatmaplayer.h>

#include <tellarix/core/datamodel/event.h>
#include <tellarix/qt/map/canvas.h>

#include <QApplication>
#include <QPainter>
#include <QThreadPool>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace Norvu::Gui;
using namespace Norvu::Gui::Map;

namespace {

constexpr int Width = 1600;
constexpr int Height = 900;

/** Each event of a catalogue of all magnitudes from 2: ten times as rare for each unit. */
class Catalogue
{
public:
    /** Shares of the width and height of a region, and magnitude. */
    struct Event
    {
        double x;
        double y;
        double magnitude;
    };

    Event next()
    {
        const double x = _share(_random);
        const double y = _share(_random);
        return {x, y, 2 - std::log10(1 - _share(_random))};
    }

private:
    std::mt19937 _random{1};
    std::uniform_real_distribution<double> _share{0, 1};
};

/** Discs of events all over the map. */
std::vector<DensityDisc> discsOf(int events, float pixelPerDegree)
{
    Catalogue catalogue;
    std::vector<DensityDisc> discs;
    for (int i = 0; i < events; ++i) {
        const Catalogue::Event event = catalogue.next();
        discs.push_back({static_cast<int>(event.x * Width), static_cast<int>(event.y * Height),
                         exponentialRadius(event.magnitude, pixelPerDegree)});
    }
    return discs;
}

void addPlain(std::vector<float> &density, const DensityDisc &disc)
{
    const int squaredRadius = disc.radius * disc.radius;
    const double perSquaredRadius = 1.0 / squaredRadius;
    const int left = std::max(disc.x - disc.radius, 0);
    const int right = std::min(disc.x + disc.radius + 1, Width);
    const int top = std::max(disc.y - disc.radius, 0);
    const int bottom = std::min(disc.y + disc.radius + 1, Height);
    for (int y = top; y < bottom; ++y) {
        float *line = density.data() + y * Width;
        for (int x = left; x < right; ++x) {
            const int dx = x - disc.x;
            const int dy = y - disc.y;
            const int squared = dx * dx + dy * dy;
            if (squared <= squaredRadius)
                line[x] = static_cast<float>(1.0 - squared * perSquaredRadius + line[x]);
        }
    }
}

void paintPlain(QImage &image, const std::vector<float> &density, const DensityTable &table,
                float scale)
{
    auto *pixels = reinterpret_cast<QRgb *>(image.bits());
    for (size_t i = 0; i < density.size(); ++i) {
        if (!(density[i] > 0))
            continue;
        const QRgb color = table.at(density[i] * scale);
        const QRgb old = pixels[i];
        const int alpha = qAlpha(color);
        const auto mixed = [alpha](int above, int below) {
            return static_cast<QRgb>((above * alpha + below * (255 - alpha)) / 255);
        };
        pixels[i] = (old & 0xFF000000) | mixed(qRed(color), qRed(old)) << 16 |
                    mixed(qGreen(color), qGreen(old)) << 8 | mixed(qBlue(color), qBlue(old));
    }
}

void drawPlain(QImage &image, std::vector<float> &density, const std::vector<DensityDisc> &discs,
               const DensityTable &table)
{
    std::fill(density.begin(), density.end(), 0.0F);
    for (const DensityDisc &disc : discs)
        addPlain(density, disc);
    float maximum = 0;
    for (const float value : density)
        maximum = std::max(maximum, value);
    paintPlain(image, density, table, densityScale(table, maximum));
}

void drawOurs(QImage &image, std::vector<float> &density, const std::vector<DensityDisc> &discs,
              const DensityTable &table)
{
    const float maximum =
        computeDensity(density.data(), Width, Height, discs, DiscPrecision::Double, false);
    paintDensity(image, density.data(), {&table, densityScale(table, maximum), false, false});
}

/** Draws both forms in turn; the ratio is that of their shortest times. */
void draw(benchmark::State &state, const std::vector<DensityDisc> &discs)
{
    DensityTable table;
    fillTable(table, Gradients::Default);
    QImage plain(Width, Height, QImage::Format_ARGB32_Premultiplied);
    plain.fill(Qt::darkGray);
    QImage ours = plain;
    ours.bits();
    std::vector<float> density(static_cast<size_t>(Width) * Height);

    double shortestPlain = std::numeric_limits<double>::infinity();
    double shortest = shortestPlain;
    for (auto _ : state) {
        const double seconds =
            Benchmarking::secondsOf([&] { drawOurs(ours, density, discs, table); });
        state.SetIterationTime(seconds);
        shortest = std::min(shortest, seconds);
        shortestPlain =
            std::min(shortestPlain,
                     Benchmarking::secondsOf([&] { drawPlain(plain, density, discs, table); }));
    }
    if (ours != plain)
        state.SkipWithError("pixels differ");
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(discs.size()));
    state.counters["plain_ms"] = 1e3 * shortestPlain;
    state.counters["best_ms"] = 1e3 * shortest;
    state.counters["times_as_fast"] = shortestPlain / shortest;
}

void world(benchmark::State &state)
{
    draw(state, discsOf(static_cast<int>(state.range(0)), 10));
}

void region(benchmark::State &state)
{
    draw(state, discsOf(static_cast<int>(state.range(0)), 40));
}

void regionOnOneThread(benchmark::State &state)
{
    QThreadPool *pool = QThreadPool::globalInstance();
    const int threads = pool->maxThreadCount();
    pool->setMaxThreadCount(1);
    region(state);
    pool->setMaxThreadCount(threads);
}

/** All that a change of the view costs, from the events to the pixels. */
void layerOfTheWorld(benchmark::State &state)
{
    using namespace Tellarix::DataModel;
    EventsHeatmapLayer layer;
    layer.setViewMode(EventsHeatmapLayer::Heatmap, true);
    Catalogue catalogue;
    for (int i = 0; i < state.range(0); ++i) {
        const Catalogue::Event place = catalogue.next();
        const EventPtr event(new Event);
        event->publicID = "event/" + std::to_string(i);
        event->origins = {OriginPtr(new Origin)};
        event->origins[0]->longitude = place.x * 360 - 180;
        event->origins[0]->latitude = place.y * 180 - 90;
        event->magnitudes = {MagnitudePtr(new Magnitude)};
        event->magnitudes[0]->magnitude = place.magnitude;
        layer.addEvent(event.get(), false);
    }
    Tellarix::Gui::Map::Canvas canvas;
    canvas.setSize(QSize(Width, Height));
    canvas.setView(QPointF(0, 0), 10);
    canvas.buffer() = QImage(canvas.size(), QImage::Format_ARGB32_Premultiplied);
    canvas.buffer().fill(Qt::darkGray);
    QPainter painter;
    for (auto _ : state)
        layer.bufferUpdated(&canvas, painter);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void setUp(benchmark::internal::Benchmark *benchmark)
{
    benchmark->Arg(2000)
        ->Arg(20000)
        ->Arg(100000)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(50);
}

BENCHMARK(world)->Apply(setUp);
BENCHMARK(region)->Apply(setUp);
BENCHMARK(regionOnOneThread)->Apply(setUp);
BENCHMARK(layerOfTheWorld)->Arg(20000)->Arg(100000)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    return Benchmarking::run<QApplication>(argc, argv);
}
