// SPDX-License-Identifier: LGPL-3.0-or-later

// The world below a map's layers, from a file that has been read, on one thread. Each run times the
// plain form beside it: all nodes of the same shapes, neither clipped nor thinned, painted one
// shape after the other with the same pens. Labels are in neither of these two; with_labels_ms has
// them.

#include "benchmarking.h"

#include <tellarix/qt/map/background.h>
#include <tellarix/qt/map/projection.h>
#include <tellarix/qt/scheme.h>

#include <QApplication>
#include <QImage>
#include <QPainter>

#include <algorithm>
#include <climits>
#include <limits>

using namespace Benchmarking;
using namespace Tellarix::Gui;
using namespace Tellarix::Gui::Map;

namespace {

/** The pixels of a shape, wherever they are. */
QPolygonF pixelsOf(const WorldShapes &shapes, const WorldShapes::Shape &shape,
                   const Projection &projection)
{
    const View &view = projection.view();
    QPolygonF result;
    for (int i = 0; i < shape.count; ++i) {
        const WorldNode &node = shapes.nodes[shape.first + i];
        const double longitude = node.east / double(shapes.stepsPerDegree);
        QPointF pixel;
        projection.project(pixel,
                           QPointF(longitude, qBound(-projection.maximumLatitude(),
                                                     node.north / double(shapes.stepsPerDegree),
                                                     projection.maximumLatitude())));
        pixel.setX(view.size.width() / 2 + (longitude - view.center.x()) * view.pixelPerDegree);
        result.append(pixel);
    }
    return result;
}

void paintPlain(QImage &image, const Projection &projection, const WorldData &data,
                const Scheme::Map &colors)
{
    const BackgroundDetail detail = backgroundDetail(projection.view().pixelPerDegree);
    image.fill(colors.water);
    QPainter painter(&image);
    const auto paint = [&](WorldData::Kind kind, int rank, const QColor &pen, const QBrush &brush) {
        const auto shapes = data.shapes(detail.scale, kind);
        for (const WorldShapes::Shape &shape : shapes->shapes) {
            if (shape.rank > rank)
                continue;
            const QPolygonF pixels = pixelsOf(*shapes, shape, projection);
            if (brush.style() != Qt::NoBrush) {
                painter.setRenderHint(QPainter::Antialiasing, false);
                painter.setPen(Qt::NoPen);
                painter.setBrush(brush);
                painter.drawPolygon(pixels, Qt::WindingFill);
            }
            painter.setRenderHint(QPainter::Antialiasing);
            painter.setPen(pen);
            painter.drawPolyline(pixels);
        }
    };
    paint(WorldData::Land, INT_MAX, colors.coast, colors.land);
    paint(WorldData::Rivers, detail.riverRank, colors.river, Qt::NoBrush);
    paint(WorldData::Lakes, detail.lakeRank, colors.river, colors.water);
    paint(WorldData::Provinces, detail.provinceRank, colors.province, Qt::NoBrush);
    paint(WorldData::Borders, INT_MAX, colors.country, Qt::NoBrush);
    paint(WorldData::DisputedBorders, INT_MAX, colors.country, Qt::NoBrush);
}

void Paint(benchmark::State &state, const QPointF &center, double pixelPerDegree)
{
    const Scheme::Map colors = Scheme(QPalette(Qt::black, Qt::white)).map;
    const auto data = WorldData::installed();
    const Background shapes(colors, data, QFont(), {true, true, false, false});
    const Background whole(colors, data);
    Mercator projection;
    projection.setView({QSize(1600, 900), center, pixelPerDegree});
    QImage image(1600, 900, QImage::Format_ARGB32_Premultiplied);
    whole.paint(image, projection);

    double ours = std::numeric_limits<double>::max(), labelled = ours, plain = ours;
    for (auto _ : state) {
        plain = std::min(plain, secondsOf([&] { paintPlain(image, projection, *data, colors); }));
        labelled = std::min(labelled, secondsOf([&] { whole.paint(image, projection); }));
        const double painted = secondsOf([&] { shapes.paint(image, projection); });
        state.SetIterationTime(painted);
        ours = std::min(ours, painted);
    }
    state.counters["best_ms"] = ours * 1E3;
    state.counters["with_labels_ms"] = labelled * 1E3;
    state.counters["plain_ms"] = plain * 1E3;
    state.counters["times_as_fast"] = plain / ours;
}

#define BACKGROUND(name, longitude, latitude, pixelPerDegree)                                      \
    BENCHMARK_CAPTURE(Paint, name, QPointF(longitude, latitude), pixelPerDegree)                   \
        ->UseManualTime()                                                                          \
        ->Unit(benchmark::kMillisecond)                                                            \
        ->MinTime(0.3)

BACKGROUND(world, 0, 0, 1600 / 360.0);
BACKGROUND(Europe, 12, 50, 20);
BACKGROUND(Alps, 10, 46.5, 200);
BACKGROUND(village, 11.4, 47.26, 5000);

/** All of a scale, out of the page cache. */
void Load(benchmark::State &state)
{
    for (auto _ : state) {
        const WorldData data;
        for (int kind = WorldData::Land; kind < WorldData::Places; ++kind)
            data.shapes(static_cast<WorldData::Scale>(state.range(0)),
                        static_cast<WorldData::Kind>(kind));
        benchmark::DoNotOptimize(data.places());
    }
}

BENCHMARK(Load)
    ->ArgName("scale")
    ->DenseRange(WorldData::Coarse, WorldData::Fine)
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    return Benchmarking::run<QApplication>(argc, argv);
}
