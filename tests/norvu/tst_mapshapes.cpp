// SPDX-License-Identifier: LGPL-3.0-or-later

#include "ink.h"
#include "mapsymbols.h"

#include <norvu/gui/legend.h>
#include <norvu/gui/map/imagesymbol.h>
#include <norvu/gui/map/originsymbol.h>
#include <norvu/gui/map/scalelayer.h>
#include <norvu/gui/map/stationsymbol.h>
#include <norvu/gui/map/symbollayer.h>

#include <QPushButton>
#include <QtTest>

#include <cmath>
#include <limits>
#include <memory>

using namespace Norvu::Gui;
using MapTesting::Canvas;
using MapTesting::TenPerDegree;
using Tellarix::Gui::Gradient;

namespace {

using Pixels = QVector<QVector<QRgb>>; // row by row

QImage imageOf(const Pixels &rows)
{
    QImage image(rows.first().size(), rows.size(), QImage::Format_ARGB32);
    for (int y = 0; y < rows.size(); ++y) {
        for (int x = 0; x < rows[y].size(); ++x)
            image.setPixel(x, y, rows[y][x]);
    }
    return image;
}

QImage square(int size, const QColor &color)
{
    QImage image(size, size, QImage::Format_ARGB32);
    image.fill(color);
    return image;
}

/** A picture of a map on which a symbol, which it takes, is the only one. */
QImage pictureOf(Map::Symbol *symbol, bool shadows = false)
{
    Map::SymbolLayer layer;
    layer.addSymbol(symbol);
    layer.setShadows(shadows);
    TenPerDegree canvas;
    canvas.addLayer(&layer);
    return canvas.picture();
}

constexpr QRgb C = 0;          // clear
constexpr QRgb I = 0xff102030; // ink
constexpr QRgb F = 0x01ffffff; // faint
constexpr QRgb W = 0x00ffffff; // as clear, but white

const QColor StopColors[] = {Qt::red, Qt::blue, Qt::green};

/** Width of the black and grey segments of a map's scale. */
int barLength(Canvas &canvas)
{
    QImage image(400, 100, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    canvas.draw(painter);
    Map::ScaleLayer(nullptr, Qt::AlignLeft | Qt::AlignTop).draw(&canvas, painter);
    const int row = Ink::rectOfColor(image, Qt::lightGray).bottom();
    return Ink::rectOf(image, QRect(12, row, 400, 1),
                       [](QRgb pixel) {
                           return pixel == qRgb(0, 0, 0) || pixel == QColor(Qt::lightGray).rgb();
                       })
        .width();
}

/** Shows a legend of a gradient with some keys on a map and gives the picture. */
QImage pictureOf(Legend &legend, const QVector<double> &keys, TenPerDegree &canvas)
{
    Gradient gradient;
    for (int i = 0; i < keys.size(); ++i)
        gradient.setColorAt(keys[i], StopColors[i]);
    legend.setGradient(gradient);
    QImage image = canvas.picture();
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    legend.calculateMapPosition(&canvas);
    legend.draw(&canvas, painter);
    return image;
}

} // namespace

class MapShapesTest : public QObject
{
    Q_OBJECT

private slots:
    void blursChannelByChannel()
    {
        using Case = std::tuple<int, Pixels, Pixels>;
        for (const auto &[radius, pixels, blurred] :
             {Case(1, {{0x80ff0102}}, {{0x80ff0102}}),
              Case(1, {{0xff000010, 0x00000100, 0x00ffff00}},
                   {{0x7f000008, 0x55555505, 0x007f8000}}),
              Case(1, {{9, 0, 0}, {0, 0, 0}, {0, 0, 90}}, {{2, 1, 0}, {1, 11, 15}, {0, 15, 22}}),
              Case(std::numeric_limits<int>::max(), {{8, 0}, {0, 0}}, {{2, 2}, {2, 2}})}) {
            QImage image = imageOf(pixels);
            blurImage(image, radius);
            QCOMPARE(image, imageOf(blurred));
        }
        // With a radius of 0 an image keeps even its format.
        QImage image = imageOf({{0x80ff0000, C}}).convertToFormat(QImage::Format_RGBA8888);
        blurImage(image, 0);
        QCOMPARE(image.format(), QImage::Format_RGBA8888);
        blurImage(image, 1);
        QCOMPARE(image, imageOf({{0x407f0000, 0x407f0000}}));
    }

    void trimsClearBorders()
    {
        using Case = std::tuple<Pixels, QRect, QSize>;
        for (const auto &[pixels, rect, trimmed] :
             {Case({{C, C, W}, {C, F, C}}, {1, 1, 1, 1}, {1, 1}),
              Case({{C, C, I, C}, {I, C, C, C}}, {0, 0, 3, 2}, {3, 2}),
              Case({{I, C}, {C, I}}, {}, {2, 2}),
              Case({{C, W}}, {QPoint(2, 1), QPoint(1, 0)}, {2, 1})}) {
            for (const auto format : {QImage::Format_ARGB32, QImage::Format_RGBA8888}) {
                QImage image = imageOf(pixels).convertToFormat(format);
                QCOMPARE(trimmedImageRect(image), rect);
                trimImage(image);
                QCOMPARE(image.size(), trimmed);
            }
        }
    }

    void shadowsStandOnTheFoot()
    {
        // The square from (20, 0) to (40, 20) becomes one from (15, 3) over (29, 5) and (15, 15)
        // to (1, 13), whose foot is at (8, 14); the blur takes a pixel more on each side.
        QImage shadow;
        QPoint offset;
        Map::ImageSymbol::generateShadow(shadow, offset, square(20, Qt::red));
        QCOMPARE(QRect(QPoint(8, 14) - offset, shadow.size()), QRect(0, 2, 30, 14));
        QCOMPARE(shadow.pixel(offset + QPoint(7, -5)), 0xa0404040);
    }

    void picturesStandOnTheirPlace()
    {
        const QRect place(140, 79, 21, 21);
        const QImage image = square(21, Qt::red);
        const QImage plain = pictureOf(new Map::ImageSymbol(image, 0, 0));
        QCOMPARE(Ink::rectOfColor(plain, Qt::red), place);
        const auto shadow = [&plain](const QImage &shaded) {
            return Ink::rectOfDifference(plain, shaded);
        };
        const QRect cast = shadow(pictureOf(new Map::ImageSymbol(image, 0, 0), true));
        QVERIFY(cast.right() > 160 && cast.bottom() >= 99 && cast.bottom() < 104);
        // The same on a screen of twice the resolution.
        QImage fine = square(42, Qt::red);
        fine.setDevicePixelRatio(2);
        const QImage shaded = pictureOf(new Map::ImageSymbol(fine, 0, 0), true);
        QCOMPARE(Ink::rectOfColor(shaded, Qt::red), place);
        QVERIFY(qAbs(shadow(shaded).right() - cast.right()) <= 2);

        QPixmap blue(3, 3);
        blue.fill(Qt::blue);
        Map::ImageSymbol first(image, 9, 9);
        first.setShadow(blue, QPoint(-20, 1));
        const QImage shared = pictureOf(new Map::ImageSymbol(first, 0, 0), true);
        QCOMPARE(Ink::rectOfColor(shared, Qt::blue), QRect(170, 99, 3, 3));
        QCOMPARE(Ink::rectOfColor(shared, Qt::red), place);
    }

    void stationsAreKites()
    {
        QCOMPARE(Map::StationSymbol::generateShape(5, 7, 12),
                 QPolygon({{5, -14}, {15, -11}, {5, 7}, {-5, -11}}));
        Map::StationSymbol station(0, 0);
        station.setSize(7);
        QCOMPARE(station.stationPolygon(), QPolygon({{0, -11}, {6, -10}, {0, 0}, {-6, -10}}));
        QCOMPARE(station.annotationOffset(), QPoint(0, -18));
        const TenPerDegree canvas;
        station.calculateMapPosition(&canvas);
        QVERIFY(station.isInside(150, 95) && station.isInside(154, 91));
        QVERIFY(!station.isInside(154, 97) && !station.isInside(150, 102));
    }

    void stationsCastShadowsOfTheirSize()
    {
        const auto pictureOfSize = [](int size, bool shadows) {
            auto *station = new Map::StationSymbol(0, 0);
            station->setSize(size);
            station->setFill(Qt::red);
            return pictureOf(station, shadows);
        };
        const QImage plain = pictureOfSize(40, false);
        const QRect ink = Ink::rectOfColor(plain, Qt::red);
        // Both tips are mixed with the smooth outline.
        QVERIFY(qAbs(ink.bottom() - 96) <= 4 && qAbs(ink.top() - 34) <= 4);
        // The right shoulder (34, -60) falls to .7 (34 + 60) right of the tip.
        const QRect shadow = Ink::rectOfDifference(plain, pictureOfSize(40, true));
        QVERIFY(qAbs(shadow.right() - (150 + 66)) <= 2 && qAbs(shadow.bottom() - 100) <= 2);
        // Another size in between leaves it as it was.
        const QImage other = pictureOfSize(12, true);
        QVERIFY(Ink::rectOfDifference(other, pictureOfSize(12, false)).right() < 175);
        QCOMPARE(Ink::rectOfDifference(plain, pictureOfSize(40, true)), shadow);
    }

    void originsGrowWithTheirMagnitude()
    {
        const int smallest = Tellarix::Gui::Scheme::Current().map.originSymbolMinimumSize;
        QCOMPARE(Map::OriginSymbol::getSize(5), 18);
        QCOMPARE(Map::OriginSymbol::getSize(1.2 + (smallest + 0.9) / 4.9), smallest);
        for (double magnitude : {-1.0, double(-HUGE_VAL), std::nan("")})
            QCOMPARE(Map::OriginSymbol::getSize(magnitude), smallest);
        QVERIFY(Map::OriginSymbol::getSize(HUGE_VAL) > 1000);

        Map::OriginSymbol origin(0, 0, 10);
        origin.setPreferredMagnitudeValue(7);
        QCOMPARE(origin.size(), QSize(28, 28));
        QCOMPARE(origin.annotationOffset(), QPoint(0, -60));
        const TenPerDegree canvas;
        origin.calculateMapPosition(&canvas);
        QVERIFY(origin.isInside(136, 86) && origin.isInside(164, 114));
        QVERIFY(!origin.isInside(165, 100) && !origin.isInside(150, 85));
    }

    void originsAreColoredByDepth()
    {
        // Outlines, filled, colour of the inside, and what that comes to.
        using Case = std::tuple<bool, bool, QColor, QColor>;
        const Case cases[] = {{false, false, QColor(), QColor(255, 128, 128)}, // half of its alpha
                              {false, true, QColor(), Qt::red},
                              {false, false, Qt::blue, Qt::blue},
                              {true, false, Qt::blue, Qt::white},
                              {true, true, QColor(), Qt::red},
                              {true, true, Qt::blue, Qt::blue}};
        OwnScheme scheme;
        scheme->map.depthGradient.clear();
        scheme->map.depthGradient.setColorAt(0, Qt::green);
        scheme->map.depthGradient.setColorAt(100, Qt::red);
        for (const auto &[outlines, filled, fill, middle] : cases) {
            scheme->map.filledOutlines = outlines;
            auto *origin = new Map::OriginSymbol(0, 0, 0);
            QCOMPARE(origin->color(), QColor(Qt::green));
            origin->setFillColor(Qt::yellow);
            origin->setDepth(100);
            origin->setPreferredMagnitudeValue(7);
            origin->setFilled(filled);
            if (fill.isValid())
                origin->setFillColor(fill);
            const QImage picture = pictureOf(origin, true);
            QCOMPARE(QColor(picture.pixel(150, 100)), middle);
            // The outline lies about the edge of the circle of 28 pixels.
            QCOMPARE(QColor(picture.pixel(136, 100)), QColor(Qt::red));
            QCOMPARE(qGreen(picture.pixel(134, 100)) < 32, outlines);
        }
    }

    void barsAreRound()
    {
        // The km that 37.5 pixels have, those of the bar of four segments, and its pixels.
        using Case = std::tuple<double, double, QString, int>;
        for (const auto &[ideal, total, text, length] :
             {Case(0.12, 0.4, "400 m", 125), Case(0.24, 0.8, "800 m", 125),
              Case(0.251, 1.2, "1.2 km", 179), Case(1.49, 4, "4 km", 100),
              Case(1.51, 8, "8 km", 198), Case(9.6, 40, "40 km", 156),
              Case(9800, 40000, "40000 km", 153)}) {
            const Map::ScaleBar bar = Map::scaleBar(37.5 / ideal);
            QVERIFY(qFuzzyCompare(bar.totalKm, total));
            QCOMPARE(Map::scaleText(bar.totalKm), text);
            QCOMPARE(bar.length, length);
            QCOMPARE(bar.segmentLength, static_cast<int>(37.5 / ideal * total / 4));
        }
    }

    void standsInCornersAndAtEdges()
    {
        const auto corner = [](Qt::Alignment alignment) {
            return Map::alignedOnCanvas(QRect(-3, -4, 50, 20), QSize(300, 200), alignment)
                .topLeft();
        };
        QCOMPARE(corner(Qt::AlignLeft | Qt::AlignTop), QPoint(10, 10));
        QCOMPARE(corner(Qt::AlignRight | Qt::AlignBottom), QPoint(241, 171));
        QCOMPARE(corner(Qt::AlignCenter), QPoint(125, 90));
        QCOMPARE(corner(Qt::AlignTop | Qt::AlignBottom | Qt::AlignHCenter), QPoint(125, 10));
        QCOMPARE(corner(Qt::Alignment()), QPoint(-3, -4));
    }

    void measuresInTheMiddleOfTheMap()
    {
        // 11.3 pixels are a km at the equator: 150 of them ask for segments of 3.3 km, and 3 km are
        // 33 pixels. At 60 degrees of latitude a km has twice as many, and 2 km are 45 pixels.
        Canvas canvas;
        canvas.setProjection(new Tellarix::Gui::Map::Mercator);
        canvas.setSize(QSize(600, 200));
        canvas.setView(QPointF(0, 0), 1250);
        QCOMPARE(barLength(canvas), 4 * 33);
        canvas.setView(QPointF(0, 60), 1250);
        QVERIFY(qAbs(barLength(canvas) - 4 * 45) <= 4);
        // The equator stands in where the quarter points are off the globe or one pixel.
        for (const QSize &size : {QSize(600, 200), QSize(0, 0), QSize(2, 40)}) {
            canvas.setSize(size);
            canvas.setView(QPointF(0, 0), 0.6);
            QCOMPARE(barLength(canvas),
                     4 * Map::scaleBar(canvas.pixelPerDegree() / 111.13291).segmentLength);
        }
    }

    void legendsHaveTheHighestKeyOnTop()
    {
        TenPerDegree canvas;
        Legend legend("A rather long title");
        const QVector<double> keys{0, 0.5, 7};
        const QImage picture = pictureOf(legend, keys, canvas);
        for (int i = 0; i < 3; ++i) {
            const QPoint corner = legend.contentPos() + QPoint(0, 22 * (2 - i));
            QCOMPARE(Ink::rectOfColor(picture, StopColors[i]),
                     QRect(corner + QPoint(1, 1), QSize(11, 11)));
        }
    }

    void widgetsFollowTheirLegend()
    {
        TenPerDegree canvas;
        Legend legend("");
        auto widget = std::make_unique<QPushButton>("some text");
        const QSize hint = widget->sizeHint();
        legend.attachWidget(widget.get());
        legend.setPos(QPoint(-1, -1));
        legend.calculateMapPosition(&canvas);
        QCOMPARE(widget->pos(), QPoint(300 - 12 - hint.width(), 200 - 6 - hint.height()));
        QCOMPARE(legend.contentPos(), widget->pos());
        legend.setVisible(true);
        QVERIFY(widget->isVisible());
        legend.setVisible(false);
        QVERIFY(!widget->isVisible() && !legend.isVisible());
        widget.reset();
        legend.setVisible(true);
        legend.calculateMapPosition(&canvas);
        QCOMPARE(legend.contentPos(), QPoint(300 - 12, 200 - 6));
    }
};

QTEST_MAIN(MapShapesTest)
#include "tst_mapshapes.moc"
