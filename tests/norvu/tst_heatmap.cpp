// SPDX-License-Identifier: LGPL-3.0-or-later

#include "eventtesting.h"
#include "gradienttesting.h"
#include "ink.h"

#include <norvu/gui/gradients.h>
#include <norvu/gui/map/eventsheatmaplayer.h>
#include <norvu/gui/map/heatmaplegend.h>

#include <tellarix/qt/map/canvas.h>

#include <QMenu>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <tuple>

using namespace Norvu::Gui;
using namespace Norvu::Gui::Map;
using Tellarix::Gui::Gradient;
using Tellarix::Gui::Map::Canvas;
using Tellarix::Gui::Map::Mercator;
using Heat = EventsHeatmapLayer;

using GradientTesting::gradientOf;

Q_DECLARE_METATYPE(Norvu::Gui::Map::EventsHeatmapLayer::HeatmapMode)

namespace {

constexpr double Infinity = std::numeric_limits<double>::infinity();
constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();

struct Place
{
    double longitude;
    double latitude;
    double magnitude;
};
using Places = std::vector<Place>;

void addEvents(Heat &layer, const Places &places)
{
    for (size_t i = 0; i < places.size(); ++i) {
        EventTesting::Draft draft;
        draft.id = std::to_string(1000000 + i);
        draft.longitude = places[i].longitude;
        draft.latitude = places[i].latitude;
        draft.magnitude = places[i].magnitude;
        layer.addEvent(EventTesting::makeEvent(draft).get(), false);
    }
}

/** Events all over the globe and beyond, whose discs are cut by each edge of a map. */
Places randomPlaces(unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> share(0, 1);
    Places places{{0, 90, 6}, {180, -90, 6}, {-180, 0, 9.5}, {10, 10, 0}, {10, 10, -3}};
    while (places.size() < 300)
        places.push_back({360 * share(random) - 180, 180 * share(random) - 90,
                          1 - 2 * std::log10(1 - share(random))});
    return places;
}

QImage noise(const QSize &size, unsigned seed)
{
    std::mt19937 random(seed);
    QImage image(size, QImage::Format_ARGB32);
    std::generate_n(reinterpret_cast<QRgb *>(image.bits()), size.width() * size.height(),
                    [&] { return static_cast<QRgb>(random()); });
    return image;
}

/** A map of the density in the plainest way: event by event, pixel by pixel. */
struct PlainMap
{
    Heat::HeatmapMode mode;
    bool multiply;
    bool logarithmic;
    Gradient gradient;

    int radius(double magnitude, float pixelPerDegree) const
    {
        if (mode == Heat::Default) {
            const double degrees =
                magnitude * (std::exp(magnitude / 1.01 - 0.13) / 111.13291490135191);
            return std::max(5, static_cast<int>(degrees * pixelPerDegree));
        }
        const auto area = static_cast<float>(std::pow(10, (magnitude - 4.07) / 0.98));
        const double factor = mode == Heat::WellsCoppersmith ? 1 : 100;
        const auto length =
            static_cast<float>(std::sqrt(factor * (static_cast<double>(area) + area)));
        return std::max(3, static_cast<int>(length / 111.13291F * pixelPerDegree));
    }

    float sum(float old, int d2, int r) const
    {
        if (mode == Heat::Default)
            return d2 <= r * r ? static_cast<float>(1.0 - d2 * (1.0 / (r * r)) + old) : old;
        const auto r2 = static_cast<int>(static_cast<float>(r) * static_cast<float>(r));
        return d2 <= r2 ? old + (1.0F - static_cast<float>(d2) / static_cast<float>(r2)) : old;
    }

    std::vector<float> densities(const QSize &size, const Canvas &canvas,
                                 const Places &places) const
    {
        std::vector<float> result(static_cast<size_t>(size.width() * size.height()));
        for (const Place &place : places) {
            QPoint center;
            if (!canvas.projection()->project(center, QPointF(place.longitude, place.latitude)))
                continue;
            const int r = radius(place.magnitude, canvas.pixelPerDegree());
            const QRect box(center.x() - r, center.y() - r, 2 * r + 1, 2 * r + 1);
            const QRect inside = box & QRect(QPoint(), size);
            for (int y = inside.top(); y <= inside.bottom(); ++y) {
                for (int x = inside.left(); x <= inside.right(); ++x) {
                    const QPoint offset = QPoint(x, y) - center;
                    float &density = result[static_cast<size_t>(y * size.width() + x)];
                    density = sum(density, QPoint::dotProduct(offset, offset), r);
                }
            }
        }
        for (float &density : result)
            density = logarithmic && density > 0 ? std::log(density) : density;
        return result;
    }

    QRgb mixed(QRgb color, QRgb old) const
    {
        int above[] = {qRed(color), qGreen(color), qBlue(color)};
        const int below[] = {qRed(old), qGreen(old), qBlue(old)};
        const int alpha = qAlpha(color);
        for (int i = 0; i < 3; ++i) {
            const int onWhite = (above[i] * alpha + (255 - alpha) * 255) / 255;
            above[i] = multiply ? onWhite * below[i] / 255
                                : (above[i] * alpha + below[i] * (255 - alpha)) / 255;
        }
        return qRgba(above[0], above[1], above[2], qAlpha(old));
    }

    void paint(QImage &image, const Canvas &canvas, const Places &places) const
    {
        const std::vector<float> values = densities(image.size(), canvas, places);
        const float maximum = std::max(0.0F, *std::max_element(values.begin(), values.end()));
        DensityTable table;
        fillTable(table, gradient);
        const auto scale = static_cast<float>(table._maxKey / maximum);
        const bool everywhere = qAlpha(table.at(0)) > 0;
        for (int i = 0; i < image.width() * image.height(); ++i) {
            const QPoint at(i % image.width(), i / image.width());
            const float value = values[static_cast<size_t>(i)];
            if (everywhere || value > 0)
                image.setPixel(at, mixed(table.at(value * scale), image.pixel(at)));
        }
    }
};

/** Paints into the buffer as the canvas does. */
void paintBuffer(Heat &layer, Canvas &canvas, const QImage &map)
{
    canvas.buffer() = map;
    QPainter painter;
    layer.bufferUpdated(&canvas, painter);
}

/** What is painted on white in blue. */
template <typename Paint>
QImage pictureOf(const QSize &size, Paint paint)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setPen(Qt::blue);
    paint(painter);
    return image;
}

HeatMapLegend *legendOf(const Heat &layer)
{
    return qobject_cast<HeatMapLegend *>(layer.legends().first());
}

QStringList textsOf(const HeatMapLegend &legend)
{
    QStringList texts;
    for (const StringAtPos &label : legend.labels())
        texts += label.text;
    return texts;
}

const Gradient Opaque = gradientOf({{0, Qt::yellow}, {1, Qt::red}});

} // namespace

class TestHeatmap : public QObject
{
    Q_OBJECT

private slots:
    void radiusFollowsFromMagnitude()
    {
        struct
        {
            double magnitude;
            int exponential, rupture, amplified; // at 40 pixels a degree; worked out apart
        } const rows[] = {
            {0, 5, 3, 3},         {-2, 5, 3, 3},
            {5.5, 402, 3, 27},    {9, 21083, 166, 1667},
            {Infinity, 5, 3, 3},  {1000, LargestRadius, LargestRadius, LargestRadius},
            {-Infinity, 5, 3, 3}, {NotANumber, 5, 3, 3},
        };
        for (const auto &row : rows) {
            QCOMPARE(exponentialRadius(row.magnitude, 40), row.exponential);
            QCOMPARE(ruptureRadius(row.magnitude, 1, 40), row.rupture);
            QCOMPARE(ruptureRadius(row.magnitude, 100, 40), row.amplified);
        }
    }

    void addsDiscsLargerThanIntsCanSquare()
    {
        for (const int radius : {40000, 60000, LargestRadius}) {
            // The right half of the field lies beyond the rim.
            const DensityDisc disc{10 - radius, 3, radius};
            for (const DiscPrecision precision : {DiscPrecision::Double, DiscPrecision::Single}) {
                std::vector<float> density(20 * 7, NAN);
                computeDensity(density.data(), 20, 7, {disc}, precision, false);
                for (int x = 0; x < 20; ++x) {
                    const double distance = (static_cast<double>(x) - disc.x) / radius;
                    const float off = density[3 * 20 + static_cast<size_t>(x)] -
                                      static_cast<float>(std::max(0.0, 1 - distance * distance));
                    QVERIFY(std::abs(off) < (precision == DiscPrecision::Double ? 1e-9 : 1e-6));
                }
            }
        }
    }

    void paintsWhatThePlainLoopPaints()
    {
        const auto compare = [](const PlainMap &plain, const QSize &size) {
            Heat layer;
            layer.setViewMode(Heat::Heatmap, true);
            layer.setHeatmapMode(plain.mode);
            layer.setCompositionMode(plain.multiply);
            layer.setLogarithmic(plain.logarithmic);
            layer.setHeatmapGradient(plain.gradient);
            const Places places = randomPlaces(static_cast<unsigned>(size.width()));
            addEvents(layer, places);
            // Poles can't be shown in the second projection.
            for (const bool mercator : {false, true}) {
                Canvas canvas;
                canvas.setSize(size);
                if (mercator)
                    canvas.setProjection(new Mercator);
                canvas.setView(QPointF(20, 10), 2);
                const QImage map = noise(size, 3);
                paintBuffer(layer, canvas, map);
                QImage expected = map;
                plain.paint(expected, canvas, places);
                QVERIFY(expected != map);
                QVERIFY(Ink::rectOfDifference(canvas.buffer(), expected).isNull());
            }
        };
        const Gradient own = Heat().heatmapGradient();
        const Gradient one = gradientOf({{3, QColor(1, 200, 3, 99)}});
        const Gradient keys = gradientOf({{-2, QColor(9, 9, 99, 77)}, {8, QColor(255, 1, 0, 200)}});
        for (const auto mode :
             {Heat::Default, Heat::WellsCoppersmith, Heat::AmplifiedWellsCoppersmith}) {
            for (const Gradient &gradient : {own, Opaque, one, keys}) {
                for (const int options : {0, 1, 2, 3})
                    compare({mode, options % 2 == 1, options / 2 == 1, gradient}, QSize(199, 101));
            }
            // Narrower than lanes, and so wide that there are bands of a few lines.
            compare({mode, false, false, own}, QSize(7, 90));
            compare({mode, false, false, own}, QSize(9001, 20));
        }
    }

    void paintsCanvasesOfAnySize()
    {
        Heat layer;
        layer.setViewMode(Heat::Heatmap, true);
        addEvents(layer, {{0, 0, 2}});
        for (const QSize &size : {QSize(0, 0), QSize(1, 1), QSize(8000, 4000)}) {
            Canvas canvas;
            canvas.setSize(size);
            QImage map(size, QImage::Format_RGB32);
            map.fill(Qt::white);
            paintBuffer(layer, canvas, map);
            const QRect disc(size.width() / 2 - 5, size.height() / 2 - 5, 11, 11);
            // The rim itself has a density of 0.
            const QRect ink = disc.adjusted(1, 1, -1, -1) & map.rect();
            const QRect around = disc.adjusted(-99, -99, 99, 99);
            QCOMPARE(Ink::rectOtherThan(canvas.buffer(), around, Qt::white), ink);
            if (!ink.isEmpty())
                QCOMPARE(canvas.buffer().pixelColor(disc.center()), QColor(Qt::red));
        }
    }

    void requestsUpdates()
    {
        constexpr auto Wells = Heat::WellsCoppersmith;
        using Hints = QVector<int>;
        struct
        {
            void (*change)(Heat &layer);
            Hints shown; // with the heat map on
            Hints off;
        } const rows[] = {
            {[](Heat &layer) { layer.setViewModeSymbols(false); }, {}, {}},
            {[](Heat &layer) { layer.setViewModeSymbols(true); }, {1}, {1}},
            {[](Heat &layer) { layer.setViewModeHeatmap(false); }, {2}, {}},
            {[](Heat &layer) { layer.setViewModeHeatmap(true); }, {}, {2}},
            {[](Heat &layer) { layer.setHeatmapMode(Wells); }, {2}, {}},
            {[](Heat &layer) { layer.setHeatmapMode(static_cast<Heat::HeatmapMode>(3)); }, {}, {}},
            {[](Heat &layer) {
                 layer.setAllowedHeatmapModes({Wells, Heat::Default});
             },
             {},
             {}},
            {[](Heat &layer) { layer.setAllowedHeatmapModes({Wells}); }, {2}, {}},
            {[](Heat &layer) { layer.setAllowedHeatmapModes({}); }, {}, {}},
            {[](Heat &layer) { layer.setHeatmapGradient(Opaque, true); }, {0}, {}},
            {[](Heat &layer) { layer.setCompositionMode(false); }, {}, {}},
            {[](Heat &layer) { layer.setCompositionMode(true); }, {0}, {}},
            {[](Heat &layer) { layer.setLogarithmic(false); }, {}, {}},
            {[](Heat &layer) { layer.setLogarithmic(true); }, {0}, {}},
            {[](Heat &layer) { layer.clear(), layer.setLogarithmic(true); }, {1}, {1}},
            // The layer's own request comes after that of all layers.
            {[](Heat &layer) { layer.setVisible(false), layer.setLogarithmic(true); },
             {0, 2},
             {0, 1}},
            {[](Heat &layer) { layer.setVisible(true); }, {2}, {1}},
        };
        for (const auto &row : rows) {
            for (const bool shown : {true, false}) {
                Heat layer;
                addEvents(layer, {{0, 0, 5}});
                QVERIFY(!legendOf(layer)->isEnabled());
                layer.setViewMode(Heat::Heatmap, shown);
                layer.takeBufferOutdated();
                Hints hints;
                connect(&layer, &Heat::updateRequested, this, [&](const Heat::UpdateHints &hint) {
                    hints += static_cast<int>(hint);
                    // What is in the buffer has changed, though only a repaint is asked for.
                    if (!hint && layer.isVisible())
                        QVERIFY(layer.takeBufferOutdated());
                });
                row.change(layer);
                QVERIFY2(hints == (shown ? row.shown : row.off),
                         QByteArray::number(static_cast<int>(&row - rows)));
                QCOMPARE(legendOf(layer)->isEnabled(), layer.viewModes().testFlag(Heat::Heatmap));
            }
        }
        auto doomed = std::make_unique<Heat>();
        connect(doomed.get(), &Heat::visibilityChanged, this, [&] { doomed.reset(); });
        doomed->setVisible(false);
        QVERIFY(!doomed);
    }

    void canvasPaintsWhatIsOn()
    {
        Canvas canvas;
        canvas.setSize(QSize(60, 40));
        const auto color = [&](int x) {
            return pictureOf(canvas.size(), [&](QPainter &painter) { canvas.draw(painter); })
                .pixelColor(x, 20);
        };
        const QColor empty = color(3);
        Heat layer;
        layer.setHeatmapGradient(Opaque);
        layer.setViewMode(Heat::Heatmap, true);
        canvas.addLayer(&layer);
        addEvents(layer, {{0, 0, 2}});
        QCOMPARE(color(30), QColor(Qt::red));
        QCOMPARE(color(3), QColor(Qt::yellow));
        // Without stops the colours stay, however they are mixed in between.
        layer.setHeatmapGradient(gradientOf({{0, QColor(255, 255, 0, 128)}, {1, Qt::red}}));
        const QColor faint = color(3);
        layer.setHeatmapGradient(Gradient());
        layer.setCompositionMode(true);
        QVERIFY(color(3) != faint && faint != empty);
        layer.setCompositionMode(false);
        QVERIFY(!legendOf(layer)->isEnabled());
        QCOMPARE(color(3), faint);
        layer.setHeatmapGradient(gradientOf({{0, QColor(0, 0, 0, 0)}, {1, Qt::blue}}));
        QCOMPARE(color(30), QColor(Qt::blue));
        QCOMPARE(color(3), empty);
        // The legend, too: one event has a maximum of 1, as the keys had before.
        QVERIFY(legendOf(layer)->isEnabled());
        const QRect rect(QPoint(), legendOf(layer)->size());
        const QImage legend = pictureOf(
            rect.size(), [&](QPainter &painter) { legendOf(layer)->draw(rect, painter); });
        QVERIFY(Ink::rectOfColor(legend, Qt::red).isNull());
        // A host that wants no legend deletes it.
        delete legendOf(layer);
        layer.setHeatmapGradient(Opaque);
        QCOMPARE(color(30), QColor(Qt::red));
        // Symbols can be seen and touched only while they are on.
        const QMouseEvent move(QEvent::MouseMove, QPointF(30, 20), Qt::NoButton, {}, {});
        for (const bool symbols : {false, true}) {
            layer.setViewMode(Heat::Symbols, symbols);
            color(0); // a draw finds the symbols' pixels
            QCOMPARE(layer.isInside(&move, QPointF()), symbols);
            const QImage image =
                pictureOf(canvas.size(), [&](QPainter &painter) { layer.draw(&canvas, painter); });
            QCOMPARE(Ink::rectOtherThan(image, image.rect(), Qt::white).isNull(), !symbols);
        }
    }

    void menuOffersModes()
    {
        Heat layer;
        layer.setViewMode(Heat::Symbols, true);
        layer.setAllowedHeatmapModes(
            {Heat::AmplifiedWellsCoppersmith, Heat::WellsCoppersmith, Heat::Default});
        QMenu parent;
        QMenu *menu = layer.menu(&parent);
        QCOMPARE(menu->parent(), &parent);
        const QList<QAction *> actions = menu->actions();
        QStringList texts;
        for (const QAction *action : actions)
            texts +=
                action->text() + (action->isCheckable() ? action->isChecked() ? "+" : "-" : "");
        QCOMPARE(texts, QStringList({"heatmap-", "symbols+", "Heatmap mode"}));
        actions[0]->trigger();
        actions[1]->trigger();
        QCOMPARE(layer.viewModes(), Heat::ViewModes(Heat::Heatmap));

        const QList<QAction *> modes = actions[2]->menu()->actions();
        texts.clear();
        for (const QAction *action : modes)
            texts += action->text() + ' ' + action->data().toString() +
                     (action->isEnabled() && !action->isCheckable() ? "" : " off");
        QCOMPARE(texts,
                 QStringList({"Amplified W&&C 2", "Wells && Coppersmith 1", "Default 0 off"}));
        for (const int i : {0, 1}) {
            modes[i]->trigger();
            QCOMPARE(static_cast<int>(layer.heatmapMode()), 2 - i);
        }

        // Modes that the layer doesn't know are neither named nor painted.
        const auto unknown = static_cast<Heat::HeatmapMode>(7);
        layer.setAllowedHeatmapModes({unknown, Heat::Default});
        QCOMPARE(layer.menu(&parent)->actions()[2]->menu()->actions().size(), 1);
        QCOMPARE(layer.heatmapMode(), unknown);
        addEvents(layer, {{0, 0, 5}});
        Canvas canvas;
        const QImage map = noise(QSize(30, 20), 1);
        paintBuffer(layer, canvas, map);
        QCOMPARE(canvas.buffer(), map);
        layer.setAllowedHeatmapModes({});
        QVERIFY(layer.menu(&parent)->actions()[2]->menu()->isEmpty());
    }

    void legendShowsTrueDensities()
    {
        const QColor color(Qt::blue);
        const std::tuple<Gradient, bool, QStringList> rows[] = {
            {gradientOf({{0, color}, {0.5, color}, {1, color}}), false, {"0.0", "4.5", "9.0"}},
            {gradientOf({{0, color}, {0.5, color}, {1, color}}), true, {"1.0", "3.0", "9.0"}},
            {gradientOf({{2, color}, {6, color}}), false, {"3.0", "9.0"}},
            {gradientOf({{-2, color}, {0, color}}), false, {}},
            {gradientOf({{1, color}}), false, {}},
        };
        for (const auto &[gradient, logarithmic, texts] : rows) {
            Heat layer;
            layer.setViewMode(Heat::Heatmap, true);
            layer.setLogarithmic(logarithmic);
            layer.setHeatmapGradient(gradient);
            addEvents(layer, Places(9, {0, 0, 2}));
            Canvas canvas;
            canvas.setSize(QSize(30, 20));
            paintBuffer(layer, canvas, noise(QSize(30, 20), 1));
            QCOMPARE(textsOf(*legendOf(layer)), texts);
            layer.setViewMode(Heat::Symbols, true);
            QCOMPARE(legendOf(layer)->isEnabled(), !texts.isEmpty());
        }
    }

    void legendIsLaidOut()
    {
        // A line of 15 pixels, texts of 20, 30, 26: the first is wider than half of the widest and
        // gets 2 * 20, the last is wider than that half and gets 2 * 26, for each of the three.
        QVector<StringAtPos> labels{{"", 0, -1, 20}, {"", 1, -1, 30}, {"", 4, -1, 26}};
        QCOMPARE(placeLabels(labels, 15), QSize(15 + 3 * 52 + 15, 67));
        // Steps of 171 / 2 from 15 / 2.
        QCOMPARE(labels[0].pos, 7);
        QCOMPARE(labels[1].pos, 92);
        QCOMPARE(labels[2].pos, 177);
        // Without wide outer ones the widest counts.
        labels[0].width = labels[2].width = 10;
        QCOMPARE(placeLabels(labels, 15).width(), 15 + 3 * 30 + 15);

        labels[1].pos = 9;
        labels[2].pos = 13;
        const Gradient gradient = gradientOf(
            {{0, QColor(0, 0, 0, 0)}, {1, QColor(100, 0, 0, 50)}, {4, QColor(100, 80, 0, 9)}});
        const QImage strip = legendStrip(gradient, labels, 2);
        QCOMPARE(strip.size(), QSize(7, 2));
        const QRgb columns[] = {qRgb(0, 0, 0),    qRgb(50, 0, 0),   qRgb(100, 0, 0),
                                qRgb(100, 20, 0), qRgb(100, 40, 0), qRgb(100, 60, 0),
                                qRgb(100, 80, 0)};
        for (int x = 0; x < 7; ++x) {
            QCOMPARE(strip.pixel(x, 0), columns[x]);
            QCOMPARE(strip.pixel(x, 1), columns[x]);
        }
    }

    void legendIsOffWithoutScale()
    {
        Gradient gradient = gradientOf({{0, Qt::green}, {1, Qt::red}});
        const Gradient endless = gradientOf({{0, Qt::red}, {Infinity, Qt::red}});
        HeatMapLegend legend;
        for (const Gradient *bad : {static_cast<const Gradient *>(nullptr), &endless}) {
            legend.setGradient(&gradient, 0, 3);
            QVERIFY(legend.isEnabled());
            legend.setGradient(bad, 0, 3);
            QVERIFY(!legend.isEnabled());
        }
        // The same gradient is told by its place.
        legend.setGradient(&gradient, 0, 3);
        gradient.setColorAt(2, Qt::blue);
        legend.setGradient(&gradient, 0, 3);
        QCOMPARE(legend.labels().size(), 2);
        legend.setGradient(&gradient, 0, 4);
        QCOMPARE(textsOf(legend), QStringList({"0.0", "2.0", "4.0"}));
    }
};

QTEST_MAIN(TestHeatmap)
#include "tst_heatmap.moc"
