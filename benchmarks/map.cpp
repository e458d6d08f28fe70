// SPDX-License-Identifier: LGPL-3.0-or-later

// A map of 1600 x 900 pixels: what a step of the mouse costs from the change of the view to the
// finished picture, beside a background that is painted anew for each; and what an event layer
// costs, beside a loop over all of its symbols. Fastest and slowest of each run.

#include "benchmarking.h"

#include <tellarix/qt/map/background.h>
#include <tellarix/qt/map/canvas.h>
#include <tellarix/qt/map/eventlayer.h>

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <random>

using namespace Benchmarking;
using namespace Tellarix::Gui;

namespace {

const QSize Screen(1600, 900);

/** A catalogue over the whole globe: ten times as many events for each magnitude less. */
std::vector<EventLayer::Values> catalogue(int count)
{
    std::mt19937 random(1);
    std::uniform_real_distribution<double> share;
    std::vector<EventLayer::Values> events;
    for (int i = 0; i < count; ++i)
        events.push_back({"event/" + std::to_string(i), share(random) * 360 - 180,
                          std::asin(2 * share(random) - 1) * 180 / M_PI, share(random) * 700,
                          std::min(9.0, 3 - std::log10(share(random)))});
    return events;
}

/** Opens up the symbols for the plain forms. */
class Events : public EventLayer
{
public:
    explicit Events(int count) { setEvents(catalogue(count)); }
    const QMap<std::string, OriginSymbol *> &symbols() const { return _symbols; }
};

struct Scene
{
    explicit Scene(int events) : layer(events)
    {
        canvas.setSize(Screen);
        canvas.setView(QPointF(0, 0), 4.5);
        canvas.setBackground(
            std::make_shared<Map::Background>(Scheme::Current().map, Map::WorldData::installed()));
        canvas.addLayer(&layer);
        draw();
    }

    void draw()
    {
        QPainter painter(&picture);
        canvas.draw(painter);
    }

    Map::Canvas canvas;
    Events layer;
    QImage picture{Screen, QImage::Format_RGB32};
};

/** Seconds of one kind of work over a run. */
struct Seconds
{
    double fastest{1e9};
    double slowest{0};

    double add(double seconds)
    {
        fastest = std::min(fastest, seconds);
        slowest = std::max(slowest, seconds);
        return seconds;
    }
};

void report(benchmark::State &state, const Seconds &ours, const Seconds &plain)
{
    state.counters["slowest_ms"] = ours.slowest * 1e3;
    state.counters["fastest_ms"] = ours.fastest * 1e3;
    state.counters["plain_ms"] = plain.fastest * 1e3;
    state.counters["times_as_fast"] = plain.fastest / ours.fastest;
}

using Step = Map::View (*)(const Map::Projection &, int);

void moveMap(benchmark::State &state, Step step)
{
    Scene scene(static_cast<int>(state.range(0)));
    int steps = 0;
    const auto frame = [&] {
        scene.canvas.setView(step(*scene.canvas.projection(), ++steps));
        scene.draw();
        QApplication::processEvents();
    };

    Seconds plain;
    for (int i = 0; i < 10; ++i)
        plain.add(secondsOf(frame));
    scene.canvas.setAsynchronous(true);
    Seconds ours;
    for (auto _ : state)
        state.SetIterationTime(ours.add(secondsOf(frame)));
    report(state, ours, plain);
}

/** Drags the map by some pixels a frame. */
void pan(benchmark::State &state)
{
    moveMap(state, [](const Map::Projection &projection, int) {
        return projection.movedView(QPointF(-7, 0));
    });
}

/** Zooms in and out about a pixel, by a fine wheel. */
void zoom(benchmark::State &state)
{
    moveMap(state, [](const Map::Projection &projection, int step) {
        const QPointF pixel(400, 300);
        return projection.zoomedView(step % 40 < 20 ? 1.05 : 1 / 1.05, pixel, pixel);
    });
}

/** Asks which of the symbols is under the mouse. */
void hover(benchmark::State &state)
{
    Scene scene(static_cast<int>(state.range(0)));
    std::mt19937 random(2);
    std::vector<QPoint> pixels;
    for (int i = 0; i < 1000; ++i)
        pixels.emplace_back(static_cast<int>(random() % 1600), static_cast<int>(random() % 900));

    Seconds plain;
    for (const QPoint &pixel : pixels) {
        plain.add(secondsOf([&] {
            OriginSymbol *found = nullptr;
            for (OriginSymbol *symbol : scene.layer.symbols()) {
                if (symbol->isInside(pixel.x(), pixel.y()))
                    found = symbol;
            }
            benchmark::DoNotOptimize(found);
        }));
    }
    Seconds ours;
    std::size_t next = 0;
    for (auto _ : state) {
        QMouseEvent event(QEvent::MouseMove, pixels[next++ % pixels.size()], Qt::NoButton,
                          Qt::NoButton, Qt::NoModifier);
        state.SetIterationTime(ours.add(secondsOf([&] { scene.canvas.filterEvent(&event); })));
    }
    report(state, ours, plain);
}

/** Finds the pixels of all symbols after a change of the view. */
void position(benchmark::State &state)
{
    Scene scene(static_cast<int>(state.range(0)));
    if (state.range(1))
        scene.canvas.setProjection(new Map::Mercator);

    Seconds plain;
    for (int i = 0; i < 10; ++i) {
        plain.add(secondsOf([&] {
            for (OriginSymbol *symbol : scene.layer.symbols())
                symbol->calculateMapPosition(&scene.canvas);
        }));
    }
    Seconds ours;
    for (auto _ : state)
        state.SetIterationTime(
            ours.add(secondsOf([&] { scene.layer.calculateMapPosition(&scene.canvas); })));
    report(state, ours, plain);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/** Paints all symbols; the plain form paints each one as a smooth ellipse. */
void drawEvents(benchmark::State &state)
{
    Scene scene(static_cast<int>(state.range(0)));
    QPainter painter(&scene.picture);
    painter.setRenderHint(QPainter::Antialiasing);

    Seconds plain;
    for (int i = 0; i < 3; ++i) {
        plain.add(secondsOf([&] {
            for (const OriginSymbol *symbol : scene.layer.symbols()) {
                painter.setPen(QColor(80, 0, 0));
                painter.setBrush(QColor(200, 0, 0, 127));
                painter.drawEllipse(QPointF(symbol->position()), symbol->size().width() / 2.0,
                                    symbol->size().width() / 2.0);
            }
        }));
    }
    Seconds ours;
    for (auto _ : state)
        state.SetIterationTime(
            ours.add(secondsOf([&] { scene.layer.draw(&scene.canvas, painter); })));
    report(state, ours, plain);
}

/** Hands over a whole catalogue; the plain form makes the symbols alone, in a map. */
void setEvents(benchmark::State &state)
{
    const std::vector<EventLayer::Values> events = catalogue(static_cast<int>(state.range(0)));
    Seconds plain;
    for (int i = 0; i < 3; ++i) {
        QMap<std::string, OriginSymbol *> symbols;
        plain.add(secondsOf([&] {
            for (const EventLayer::Values &event : events)
                symbols[event.id] = new OriginSymbol(event.longitude, event.latitude, event.depth);
        }));
        qDeleteAll(symbols);
    }
    Seconds ours;
    for (auto _ : state) {
        EventLayer layer;
        state.SetIterationTime(ours.add(secondsOf([&] { layer.setEvents(events); })));
    }
    report(state, ours, plain);
}

/** A step of a replay near the end of a catalogue, from the change of the events to the finished
 *  picture: some come, and all others fade a little; the plain form sets all events anew. */
void replayStep(benchmark::State &state)
{
    constexpr int PerStep = 10;
    Scene scene(0);
    const std::vector<EventLayer::Values> events = catalogue(static_cast<int>(state.range(0)));
    scene.layer.setEvents(events);
    const auto fade = [&](OriginSymbol *symbol, std::size_t age) {
        symbol->setOpacity(state.range(1) ? 1 - double(age) / double(events.size()) : 1);
    };
    std::vector<OriginSymbol *> symbols;
    const auto findSymbols = [&] {
        symbols.clear();
        for (const EventLayer::Values &event : events)
            symbols.push_back(scene.layer.symbol(event.id));
    };
    findSymbols();
    scene.draw();

    Seconds plain;
    for (int i = 0; i < 3; ++i) {
        plain.add(secondsOf([&] {
            scene.layer.setEvents(events);
            scene.draw();
        }));
    }
    findSymbols();
    std::size_t next = 0;
    Seconds ours;
    for (auto _ : state) {
        std::vector<EventLayer::Values> coming;
        std::vector<std::string> ids;
        for (int i = 0; i < PerStep; ++i) {
            coming.push_back(events[next + std::size_t(i)]);
            ids.push_back(coming.back().id);
        }
        scene.layer.removeEvents(ids);
        scene.draw();
        state.SetIterationTime(ours.add(secondsOf([&] {
            scene.layer.addEvents(coming);
            for (int i = 0; i < PerStep; ++i)
                symbols[next + std::size_t(i)] = scene.layer.symbol(ids[std::size_t(i)]);
            for (std::size_t i = 0; i < symbols.size(); ++i)
                fade(symbols[i], symbols.size() - i);
            scene.draw();
        })));
        next = (next + PerStep) % (events.size() - PerStep);
    }
    report(state, ours, plain);
}

BENCHMARK(replayStep)
    ->Args({20000, 0})
    ->Args({20000, 1})
    ->Iterations(100)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(pan)->Arg(0)->Arg(20000)->Iterations(100)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(zoom)->Arg(0)->Arg(20000)->Iterations(100)->UseManualTime()->Unit(
    benchmark::kMillisecond);
BENCHMARK(hover)->Arg(2000)->Arg(20000)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(position)
    ->Args({20000, 0})
    ->Args({200000, 0})
    ->Args({200000, 1})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(drawEvents)->Arg(2000)->Arg(20000)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(setEvents)->Arg(100000)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    return Benchmarking::run<QApplication>(argc, argv);
}
