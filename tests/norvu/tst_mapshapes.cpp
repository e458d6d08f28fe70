// SPDX-License-Identifier: LGPL-3.0-or-later

#include "ink.h"
#include "mapsymbols.h"

#include <norvu/gui/map/imagesymbol.h>
#include <norvu/gui/map/originsymbol.h>
#include <norvu/gui/map/stationsymbol.h>
#include <norvu/gui/map/symbollayer.h>

#include <QtTest>

#include <cmath>
#include <limits>

using namespace Norvu::Gui;
using MapTesting::TenPerDegree;

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

} // namespace

Q_DECLARE_METATYPE(Pixels)

class TestMapShapes : public QObject
{
    Q_OBJECT

private slots:
    void blursChannelByChannel_data()
    {
        QTest::addColumn<Pixels>("pixels");
        QTest::addColumn<int>("radius");
        QTest::addColumn<Pixels>("blurred");

        QTest::newRow("one pixel") << Pixels{{0x80ff0102}} << 1 << Pixels{{0x80ff0102}};
        QTest::newRow("rounded down") << Pixels{{0xff000010, 0x00000100, 0x00ffff00}} << 1
                                      << Pixels{{0x7f000008, 0x55555505, 0x007f8000}};
        QTest::newRow("fewer at the edges") << Pixels{{9, 0, 0}, {0, 0, 0}, {0, 0, 90}} << 1
                                            << Pixels{{2, 1, 0}, {1, 11, 15}, {0, 15, 22}};
        QTest::newRow("wider than the image")
            << Pixels{{8, 0}, {0, 0}} << std::numeric_limits<int>::max() << Pixels{{2, 2}, {2, 2}};
    }

    void blursChannelByChannel()
    {
        QFETCH(Pixels, pixels);
        QFETCH(int, radius);
        QFETCH(Pixels, blurred);

        QImage image = imageOf(pixels);
        blurImage(image, radius);
        QCOMPARE(image, imageOf(blurred));
    }

    void blursLikeThePlainForm()
    {
        QImage image(13, 9, QImage::Format_ARGB32);
        quint32 pixel = 1;
        for (int i = 0; i < 13 * 9; ++i)
            image.setPixel(i % 13, i / 13, pixel = pixel * 1664525 + 1013904223);
        for (int radius : {2, 5, 10}) {
            QImage blurred = image;
            blurImage(blurred, radius);
            for (int i = 0; i < 13 * 9; ++i) {
                const QPoint at(i % 13, i / 13);
                const QRect about =
                    QRect(at - QPoint(radius, radius), at + QPoint(radius, radius)) & image.rect();
                int alpha = 0;
                int green = 0;
                for (int y = about.top(); y <= about.bottom(); ++y) {
                    for (int x = about.left(); x <= about.right(); ++x) {
                        alpha += qAlpha(image.pixel(x, y));
                        green += qGreen(image.pixel(x, y));
                    }
                }
                const int count = about.width() * about.height();
                QCOMPARE(qAlpha(blurred.pixel(at)), alpha / count);
                QCOMPARE(qGreen(blurred.pixel(at)), green / count);
            }
        }
        QImage gray(4, 4, QImage::Format_Grayscale8);
        blurImage(gray, 0);
        QCOMPARE(gray.format(), QImage::Format_Grayscale8);
        QImage none;
        blurImage(none, 1);
        QVERIFY(none.isNull());
    }

    void trimsClearBorders_data()
    {
        QTest::addColumn<Pixels>("pixels");
        QTest::addColumn<QRect>("rect");
        QTest::addColumn<QSize>("trimmed");

        QTest::newRow("one pixel")
            << Pixels{{C, C, W}, {C, F, C}} << QRect(1, 1, 1, 1) << QSize(1, 1);
        QTest::newRow("corners") << Pixels{{C, C, I, C}, {I, C, C, C}} << QRect(0, 0, 3, 2)
                                 << QSize(3, 2);
        QTest::newRow("nothing to cut") << Pixels{{I, C}, {C, I}} << QRect() << QSize(2, 2);
        QTest::newRow("clear") << Pixels{{C, W}} << QRect(QPoint(2, 1), QPoint(1, 0))
                               << QSize(2, 1);
    }

    void trimsClearBorders()
    {
        QFETCH(Pixels, pixels);

        QImage image = imageOf(pixels);
        QTEST(trimmedImageRect(image), "rect");
        trimImage(image);
        QTEST(image.size(), "trimmed");
    }

    void shadowsStandOnTheFoot()
    {
        // The square from (20, 0) to (40, 20) becomes one from (15, 3) over (29, 5) and (15, 15)
        // to (1, 13), whose foot is at (8, 14); the blur takes a pixel more on each side.
        QImage shadow;
        QPoint offset;
        Map::ImageSymbol::generateShadow(shadow, offset, square(20, Qt::red));
        QCOMPARE(QRect(QPoint(8, 14) - offset, shadow.size()), QRect(0, 2, 30, 14));
        // Inside it is as dense as a blur of one density is.
        QCOMPARE(shadow.pixel(offset + QPoint(7, -5)), 0xa0404040);
        Map::ImageSymbol::generateShadow(shadow, offset, square(20, QColor(0, 255, 0, 128)));
        QCOMPARE(shadow.pixel(offset + QPoint(7, -5)), 0x50404040u);

        Map::ImageSymbol::generateShadow(shadow, offset, QImage());
        QVERIFY(shadow.isNull());
    }

    void picturesStandOnTheirPlace()
    {
        const QImage image = square(21, Qt::red);
        auto *symbol = new Map::ImageSymbol(image, 0, 0);
        QCOMPARE(symbol->annotationOffset(), QPoint(0, -25));
        const QImage plain = pictureOf(symbol);
        QCOMPARE(Ink::rectOfColor(plain, Qt::red), QRect(140, 79, 21, 21));

        const QImage shaded = pictureOf(new Map::ImageSymbol(image, 0, 0), true);
        const QRect shadow = Ink::rectOfDifference(plain, shaded);
        QVERIFY(shadow.right() > 160 && shadow.bottom() >= 99 && shadow.bottom() < 104);

        // On a screen of twice the resolution, the same.
        QImage fine = square(42, Qt::red);
        fine.setDevicePixelRatio(2);
        QCOMPARE(Ink::rectOfColor(pictureOf(new Map::ImageSymbol(fine, 0, 0)), Qt::red),
                 QRect(140, 79, 21, 21));
        const QRect fineShadow =
            Ink::rectOfDifference(plain, pictureOf(new Map::ImageSymbol(fine, 0, 0), true));
        QVERIFY(qAbs(fineShadow.right() - shadow.right()) <= 2);
        QVERIFY(qAbs(fineShadow.bottom() - shadow.bottom()) <= 2);
    }

    void picturesAreHitRightBelowTheirPlace()
    {
        Map::ImageSymbol symbol(square(20, Qt::red), 0, 0);
        const TenPerDegree canvas;
        symbol.calculateMapPosition(&canvas);
        QVERIFY(symbol.isInside(150, 100) && symbol.isInside(169, 119));
        QVERIFY(!symbol.isInside(149, 100) && !symbol.isInside(170, 100));
        QVERIFY(!symbol.isInside(150, 99) && !symbol.isInside(150, 120));
        QVERIFY(!Map::ImageSymbol(0, 0).isInside(0, 0));
        QCOMPARE(pictureOf(new Map::ImageSymbol(0, 0), true), TenPerDegree().picture());
    }

    void picturesShareTheirShadow()
    {
        QPixmap blue(3, 3);
        blue.fill(Qt::blue);
        Map::ImageSymbol first(square(20, Qt::red), 0, 0);
        first.setShadow(blue, QPoint(-20, 1));
        const QImage picture = pictureOf(new Map::ImageSymbol(first, 1, 0), true);
        QCOMPARE(Ink::rectOfColor(picture, Qt::blue), QRect(180, 99, 3, 3));
        QCOMPARE(Ink::rectOfColor(picture, Qt::red), QRect(150, 80, 20, 20));
    }

    void stationsAreKites_data()
    {
        QTest::addColumn<int>("size");
        QTest::addColumn<QPolygon>("shape");
        const auto kite = [](int half, int top, int roof) {
            return QPolygon({{5, 7 - roof}, {5 + half, 7 - top}, {5, 7}, {5 - half, 7 - top}});
        };
        QTest::newRow("even") << 12 << kite(10, 18, 21);
        QTest::newRow("odd") << 7 << kite(6, 10, 11);
        QTest::newRow("nothing") << 0 << kite(0, 0, 0);
    }

    void stationsAreKites()
    {
        QFETCH(int, size);
        QFETCH(QPolygon, shape);

        QCOMPARE(Map::StationSymbol::generateShape(5, 7, size), shape);
        Map::StationSymbol station;
        station.setSize(size);
        QCOMPARE(station.stationPolygon().translated(5, 7), shape);
        QCOMPARE(station.annotationOffset(), QPoint(0, -4 - 2 * size));
    }

    void stationsStandOnTheirTip()
    {
        const auto pictureOfSize = [](int size, bool shadows) {
            auto *station = new Map::StationSymbol(0, 0);
            station->setSize(size);
            station->setFill(Qt::red);
            return pictureOf(station, shadows);
        };
        const QImage plain = pictureOfSize(40, false);
        const QRect ink = Ink::rectOfColor(plain, Qt::red);
        QVERIFY(qAbs(ink.bottom() - 99) <= 2 && qAbs(ink.top() - 31) <= 2);
        QVERIFY(qAbs(ink.left() - 117) <= 2 && qAbs(ink.right() - 183) <= 2);

        // Its corner (34, -60) is to fall to .7 (34 + 60) and .5 (7 - 60) from the tip, and its
        // roof at (0, -70) to the height of -35.
        const QRect shadow = Ink::rectOfDifference(plain, pictureOfSize(40, true));
        QVERIFY(qAbs(shadow.right() - (150 + 66)) <= 2);
        QVERIFY(qAbs(shadow.bottom() - 100) <= 2);
        // Another size in between leaves the shadow as it was.
        const QImage other = pictureOfSize(12, true);
        QVERIFY(Ink::rectOfDifference(other, pictureOfSize(12, false)).right() < 175);
        QCOMPARE(Ink::rectOfDifference(plain, pictureOfSize(40, true)), shadow);
        QCOMPARE(pictureOfSize(-5, true).size(), plain.size());
    }

    void stationsAreHitInTheirShape()
    {
        Map::StationSymbol station(0, 0);
        const TenPerDegree canvas;
        station.setSize(12);
        station.calculateMapPosition(&canvas);
        QVERIFY(station.isInside(150, 90) && station.isInside(157, 84));
        QVERIFY(!station.isInside(157, 95) && !station.isInside(150, 102));
    }

    void originsGrowWithTheirMagnitude_data()
    {
        QTest::addColumn<double>("magnitude");
        QTest::addColumn<int>("size");
        const int smallest = Tellarix::Gui::Scheme::Current().map.originSymbolMinimumSize;
        QTest::newRow("5") << 5.0 << 18;
        QTest::newRow("7") << 7.0 << 28;
        QTest::newRow("negative") << -1.0 << smallest;
        QTest::newRow("smallest") << 1.2 + (smallest + 0.9) / 4.9 << smallest;
        QTest::newRow("no number") << std::nan("") << smallest;
        QTest::newRow("infinite") << HUGE_VAL << 32768;
    }

    void originsGrowWithTheirMagnitude()
    {
        QFETCH(double, magnitude);
        QFETCH(int, size);

        Map::OriginSymbol origin(0, 0, 10);
        origin.setPreferredMagnitudeValue(magnitude);
        QCOMPARE(origin.size(), QSize(size, size));
        QCOMPARE(origin.priority(), Map::Symbol::Highest);
        QCOMPARE(origin.annotationOffset(), QPoint(0, -4 - 2 * size));
        const TenPerDegree canvas;
        origin.calculateMapPosition(&canvas);
        // The corners of the square about the circle, both ends.
        const int half = size / 2;
        QVERIFY(origin.isInside(150 - half, 100 - half) && origin.isInside(150 + half, 100 + half));
        QVERIFY(!origin.isInside(151 + half, 100) && !origin.isInside(150, 99 - half));
    }

    void originsAreColoredByDepth_data()
    {
        QTest::addColumn<bool>("outlines");
        QTest::addColumn<bool>("filled");
        QTest::addColumn<QColor>("fill");
        QTest::addColumn<QColor>("middle");
        // Red with half of its alpha of 255 on white.
        const QColor translucent(255, 128, 128);
        QTest::newRow("disc") << false << false << QColor() << translucent;
        QTest::newRow("filled disc") << false << true << QColor() << QColor(Qt::red);
        QTest::newRow("disc of a colour") << false << false << QColor(Qt::blue) << QColor(Qt::blue);
        QTest::newRow("outline") << true << false << QColor(Qt::blue) << QColor(Qt::white);
        QTest::newRow("filled outline") << true << true << QColor() << QColor(Qt::red);
        QTest::newRow("of a colour") << true << true << QColor(Qt::blue) << QColor(Qt::blue);
    }

    void originsAreColoredByDepth()
    {
        QFETCH(bool, outlines);
        QFETCH(bool, filled);
        QFETCH(QColor, fill);

        MapTesting::OwnScheme scheme;
        scheme->map.filledOutlines = outlines;
        scheme->map.depthGradient.clear();
        scheme->map.depthGradient.setColorAt(0, Qt::green);
        scheme->map.depthGradient.setColorAt(100, Qt::red);
        auto *origin = new Map::OriginSymbol(0, 0, 0);
        QCOMPARE(origin->color(), QColor(Qt::green));
        origin->setFillColor(Qt::yellow);
        origin->setDepth(100);
        origin->setPreferredMagnitudeValue(7);
        origin->setFilled(filled);
        QVERIFY(!origin->fillColor().isValid());
        if (fill.isValid())
            origin->setFillColor(fill);
        const QImage picture = pictureOf(origin, true);
        QTEST(QColor(picture.pixel(150, 100)), "middle");
        // The outline lies about the edge of the circle of 28 pixels.
        QCOMPARE(QColor(picture.pixel(136, 100)), QColor(Qt::red));
        QCOMPARE(QColor(picture.pixel(134, 100)), QColor(outlines ? Qt::red : Qt::white));
    }
};

QTEST_MAIN(TestMapShapes)
#include "tst_mapshapes.moc"
