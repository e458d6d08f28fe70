// SPDX-License-Identifier: LGPL-3.0-or-later

// Labels of a map: which of 20,000 find room, first come, first served, beside the plain form with
// a list of rectangles for each row of text, and the paint of as many symbols with their labels.

#include "benchmarking.h"

#include <norvu/gui/map/annotationlayer.h>
#include <norvu/gui/map/labelbins_p.h>
#include <norvu/gui/map/originsymbol.h>
#include <norvu/gui/map/symbollayer.h>

#include <tellarix/qt/map/canvas.h>

#include <QApplication>
#include <QPainter>

using namespace Benchmarking;
using namespace Norvu::Gui;

namespace {

const QSize Screen(1600, 900);
constexpr int RowHeight = 17;

/** Labels of 9 points of 4 to 12 letters all over the screen and somewhat beyond it. */
QVector<QRect> labels(int count)
{
    std::minstd_rand random(1);
    const auto below = [&random](int limit) { return static_cast<int>(random() % limit); };
    QVector<QRect> result;
    for (int i = 0; i < count; ++i)
        result.append(QRect(below(1700) - 80, below(940) - 20, 30 + below(60), 19));
    return result;
}

/** The plain form: a list of rectangles for each row. */
int placePlainly(const QVector<QRect> &rects)
{
    const int rows = Screen.height() / RowHeight + 1;
    QVector<QList<QRect>> bins(rows);
    const auto place = [&](const QRect &rect) {
        const int center = (rect.left() + rect.right()) / 2;
        if (center < 0 || center >= Screen.width())
            return false;
        int first = rect.top() / RowHeight;
        int last = rect.bottom() / RowHeight;
        if (first >= rows || last < 0)
            return false;
        first = qMax(first, 0);
        last = qMin(last, rows - 1);
        for (int row = first; row <= last; ++row) {
            for (const QRect &other : qAsConst(bins[row])) {
                if (other.intersects(rect))
                    return false;
            }
        }
        for (int row = first; row <= last; ++row)
            bins[row].append(rect);
        return true;
    };
    return static_cast<int>(std::count_if(rects.begin(), rects.end(), place));
}

int placeInBins(const QVector<QRect> &rects)
{
    Map::LabelBins bins(Screen, RowHeight);
    const auto place = [&bins](const QRect &rect) { return bins.place(rect); };
    return static_cast<int>(std::count_if(rects.begin(), rects.end(), place));
}

void declutter(benchmark::State &state)
{
    const QVector<QRect> rects = labels(static_cast<int>(state.range(0)));
    double plain = 0;
    double own = 0;
    int placed = 0;
    for (auto _ : state) {
        state.PauseTiming();
        int placedPlainly = 0;
        plain += secondsOf([&] { placedPlainly = placePlainly(rects); });
        state.ResumeTiming();
        own += secondsOf([&] { benchmark::DoNotOptimize(placed = placeInBins(rects)); });
        if (placed != placedPlainly)
            state.SkipWithError("the two forms place different labels");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["placed"] = placed;
    state.counters["plain/own"] = plain / own;
}
BENCHMARK(declutter)->Arg(2000)->Arg(20000)->Unit(benchmark::kMicrosecond);

/** Origins with labels all over the world, in their two layers. */
struct Scene
{
    explicit Scene(int count)
    {
        std::minstd_rand random(1);
        for (int i = 0; i < count; ++i) {
            const double longitude = static_cast<int>(random() % 3600) / 10.0 - 180;
            const double latitude = static_cast<int>(random() % 1600) / 10.0 - 80;
            auto *symbol = new Map::OriginSymbol(longitude, latitude, random() % 600);
            symbol->setAnnotation(QString("event %1").arg(i), &annotations);
            symbols.addSymbol(symbol);
        }
        symbols.sortSymbols();
        canvas.setSize(Screen);
        canvas.addLayer(&symbols);
        canvas.addLayer(&labels);
    }

    Annotations annotations;
    Map::SymbolLayer symbols;
    Map::AnnotationLayer labels{nullptr, &annotations};
    Tellarix::Gui::Map::Canvas canvas;
};

/** What labels add to the paint of symbols. */
void paint(benchmark::State &state)
{
    Scene scene(static_cast<int>(state.range(0)));
    QImage image(Screen, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    scene.canvas.draw(painter);
    double symbols = 0;
    double labels = 0;
    for (auto _ : state) {
        symbols += secondsOf([&] { scene.symbols.draw(&scene.canvas, painter); });
        labels += secondsOf([&] { scene.labels.draw(&scene.canvas, painter); });
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["symbols ms"] = symbols * 1000 / static_cast<double>(state.iterations());
    state.counters["labels ms"] = labels * 1000 / static_cast<double>(state.iterations());
}
BENCHMARK(paint)->Arg(2000)->Arg(20000)->Unit(benchmark::kMillisecond);

void destroy(benchmark::State &state)
{
    for (auto _ : state) {
        state.PauseTiming();
        auto scene = std::make_unique<Scene>(static_cast<int>(state.range(0)));
        state.ResumeTiming();
        scene->symbols.clear();
        state.PauseTiming();
        scene.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(destroy)->Arg(2000)->Arg(20000)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace

int main(int argc, char **argv)
{
    return run<QApplication>(argc, argv);
}
