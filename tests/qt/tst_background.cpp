// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowname.h"

#include <tellarix/qt/map/background.h>
#include <tellarix/qt/map/backgroundshapes.h>
#include <tellarix/qt/map/cities.h>
#include <tellarix/qt/map/graticule.h>
#include <tellarix/qt/map/projection.h>

#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QtTest>

#include <climits>
#include <cmath>
#include <limits>
#include <random>
#include <thread>
#include <tuple>

using namespace Tellarix::Gui;
using namespace Tellarix::Gui::Map;

namespace {

const QString WorldFile = QStringLiteral(NORVU_SOURCE_DIR "/libs/tellarix/qt/map/world/world.dat");
constexpr QRgb LandColor = 0xff00ff00;
constexpr QRgb WaterColor = 0xff0000ff;
constexpr QRgb OutsideColor = 0xffff00ff;
constexpr BackgroundContents NoLines{false, false, false, false};
constexpr double Infinity = std::numeric_limits<double>::infinity();

std::shared_ptr<const WorldData> world()
{
    static const auto data = std::make_shared<const WorldData>(WorldFile);
    return data;
}

/** Coasts and lakes can't be told from land, so that pixels have one of three colours. */
Scheme::Map plainColors()
{
    Scheme::Map colors;
    colors.land = colors.coast = colors.river = QColor(LandColor);
    colors.water = QColor(WaterColor);
    colors.outside = QColor(OutsideColor);
    colors.label = colors.graticule = colors.country = colors.province = Qt::black;
    return colors;
}

template <typename Kind>
Kind viewed(const QSize &size, const QPointF &center, double pixelPerDegree)
{
    Kind projection;
    projection.setView({size, center, pixelPerDegree});
    return projection;
}

QImage painted(const Background &background, const Projection &projection)
{
    QImage image(projection.view().size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::red);
    background.paint(image, projection);
    return image;
}

double areaOf(const QPolygonF &ring)
{
    double twice = 0;
    for (int i = 0; i < ring.size(); ++i) {
        const QPointF a = ring[i], b = ring[(i + 1) % ring.size()];
        twice += a.x() * b.y() - a.y() * b.x();
    }
    return twice / 2;
}

QByteArray numbers(const std::vector<quint32> &values)
{
    QByteArray result;
    for (quint32 value : values) {
        for (; value >= 128; value >>= 7)
            result.append(static_cast<char>(value | 128));
        result.append(static_cast<char>(value));
    }
    return result;
}

/** A triangle and a line: steps, shapes, nodes; rank and count of each; steps east, steps north. */
QByteArray twoShapes()
{
    return numbers({100, 2, 5, 0, 3, 7, 2, 200, 400, 1, 3, 2, 0, 100, 200, 6, 1});
}

} // namespace

class BackgroundTest : public QObject
{
    Q_OBJECT

private slots:
    void committedFileHasAllKinds()
    {
        for (int kind = WorldData::Land; kind < WorldData::Places; ++kind) {
            for (int scale = WorldData::Coarse; scale <= WorldData::Fine; ++scale) {
                const auto shapes = world()->shapes(static_cast<WorldData::Scale>(scale),
                                                    static_cast<WorldData::Kind>(kind));
                const bool expected = kind != WorldData::Provinces || scale == WorldData::Fine;
                QCOMPARE(!shapes->shapes.isEmpty(), expected);
            }
        }
        QVERIFY(world()->places()->size() > 7000);
        QCOMPARE(world()->places()->first().rank, 0);
        QCOMPARE(world()->error(), QString());
    }

    void damagedFileIsToldAndMapGoesOn()
    {
        QFile original(WorldFile);
        QVERIFY(original.open(QIODevice::ReadOnly));
        const QByteArray whole = original.readAll();
        const auto flipped = [whole](int at) {
            QByteArray data = whole;
            data[at] = static_cast<char>(data[at] ^ 16);
            return data;
        };
        const int contents = whole.indexOf("Domain\n") + 7;
        const int land = contents + 2 + 17 * 34 + 20;
        const std::pair<QByteArray, QString> rows[] = {
            {QByteArray(), "No such file"},
            {"\x89PNG\r\n", "no world map"},
            {QByteArray(whole).replace(0, 20, "Tellarix world map 2"), "version"},
            {whole.left(15), "no world map"},
            {whole.left(contents + 1), "table of contents"},
            {whole.left(contents + 40), "table of contents"},
            {flipped(contents + 1), "table of contents"}, // the number of blocks
            {flipped(contents + 9), "table of contents"}, // a length
            {whole.left(land + 9), "checksum"},
            {flipped(land + 99), "checksum"}};
        for (const auto &[data, cause] : rows) {
            const QTemporaryDir folder;
            QFile file(folder.filePath("world.dat"));
            if (!data.isEmpty())
                QVERIFY(file.open(QIODevice::WriteOnly) && file.write(data) == data.size());
            file.close();

            const QRegularExpression message("world\\.dat: .*" + cause);
            QTest::ignoreMessage(QtWarningMsg, message);
            const auto broken = std::make_shared<const WorldData>(file.fileName());
            QVERIFY(broken->shapes(WorldData::Coarse, WorldData::Land)->shapes.isEmpty());
            QVERIFY2(message.match(broken->error()).hasMatch(), qPrintable(broken->error()));
            const auto projection = viewed<PlateCarree>(QSize(90, 45), QPointF(20, 0), 0.25);
            const Background background(plainColors(), broken, QFont(), NoLines);
            QCOMPARE(painted(background, projection).pixel(45, 20), WaterColor);
        }
    }

    void damagedShapesAreRefused()
    {
        WorldShapes shapes;
        QString error;
        QVERIFY2(decodeWorldShapes(&shapes, &error, twoShapes()), qPrintable(error));
        QCOMPARE(shapes.shapes.size(), 2);
        QCOMPARE(shapes.nodes[1].east, 300);
        QCOMPARE(shapes.shapes[1].box.north, 153);
        QCOMPARE(shapes.shapes[1].rank, 7);

        for (int length = 0; length < twoShapes().size(); ++length)
            QVERIFY(!decodeWorldShapes(&shapes, &error, twoShapes().left(length)));
        for (const QByteArray &data :
             {twoShapes() + '\0', numbers({0, 0, 0}), numbers({100, 0xffffffff, 0}),
              numbers({100, 1, 3, 0, 4, 0, 0, 0, 0, 0, 0}), numbers({100, 1, 2, 16, 2, 0, 0, 0, 0}),
              numbers({100, 1, 2, 0, 2, 36001, 0, 0, 0}),
              numbers({100, 1, 2, 0, 2, 0, 0, 18002, 0}), QByteArray(20, '\xff')})
            QVERIFY2(!decodeWorldShapes(&shapes, &error, data), data.toHex());
        QCOMPARE(shapes.nodes.size(), 5);
        QVERIFY(!error.isEmpty());
    }

    void flippedBitsAreSurvived()
    {
        std::minstd_rand random(20261122);
        const QByteArray towns =
            numbers({100, 2, 1, 200, 100, 4}) + "Rome" + numbers({4, 20, 10, 3}) + "Uzy";
        for (const QByteArray &whole : {twoShapes(), towns}) {
            for (int i = 0; i < 20000; ++i) {
                QByteArray data = whole;
                for (int flips = 0; flips < 1 + i % 3; ++flips) {
                    const int at = static_cast<int>(random() % static_cast<unsigned>(data.size()));
                    data[at] = static_cast<char>(data[at] ^ (1 << random() % 8));
                }
                WorldShapes shapes;
                QVector<WorldPlace> places;
                QString error;
                const bool areShapes = decodeWorldShapes(&shapes, &error, data);
                QCOMPARE(areShapes, error.isEmpty());
                for (const WorldShapes::Shape &shape : qAsConst(shapes.shapes))
                    QVERIFY(shape.box.east <= 180 * shapes.stepsPerDegree &&
                            shape.first + shape.count <= shapes.nodes.size());
                const bool arePlaces = decodeWorldPlaces(&places, &error, data);
                QCOMPARE(arePlaces, error.isEmpty());
                for (const WorldPlace &place : qAsConst(places))
                    QVERIFY(std::abs(place.position.y()) <= 90);
            }
        }
    }

    void clippedRingHasArea()
    {
        const QRectF area(0, 0, 10, 10);
        const auto square = [](double x, double y, double width) {
            return QPolygonF({{x, y}, {x + width, y}, {x + width, y + width}, {x, y + width}});
        };
        const std::pair<QPolygonF, double> rows[] = {
            {square(2, 2, 3), 9},
            {square(8, 8, 5), 4}, // across a corner
            {square(-5, -5, 50), 100},
            {square(20, 3, 5), 0},
            {square(10, 0, 5), 0}, // touching
            {QPolygonF({{-10, 0}, {10, 0}, {10, 10}}), 75},
            // Two pieces.
            {QPolygonF({{-9, 1}, {5, 1}, {5, 2}, {-8, 2}, {-8, 5}, {5, 5}, {5, 7}, {-9, 7}}), 15},
            {QPolygonF({{8, 13}, {13, 13}, {13, 8}, {8, 8}}), -4}, // the other way round
            {QPolygonF(), 0}};
        for (const auto &[ring, expected] : rows) {
            const QPolygonF clipped = clippedRing(ring, area);
            QCOMPARE(areaOf(clipped), expected);
            for (const QPointF &point : clipped)
                QVERIFY(area.contains(point));
        }
    }

    void clippedLineEndsAtWindow()
    {
        const std::pair<QLineF, QLineF> rows[] = {{{1, 2, 3, 4}, {1, 2, 3, 4}},
                                                  {{-10, 5, 30, 5}, {0, 5, 10, 5}},
                                                  {{5, 5, 5, 25}, {5, 5, 5, 10}},
                                                  {{-2, 1, 1, -4}, {}}, // beside a corner
                                                  {{0, -1, 10, -1}, {}}};
        for (const auto &[line, clipped] : rows) {
            QPointF from = line.p1(), to = line.p2();
            QCOMPARE(clipLine(&from, &to, QRectF(0, 0, 10, 10)), !clipped.isNull());
            if (!clipped.isNull())
                QCOMPARE(QLineF(from, to), clipped);
        }
    }
    /** All nodes through the projection, neither clipped nor thinned, three times side by side. */
    void areasAreThoseOfAllNodes()
    {
        const std::tuple<const char *, QPointF, double> rows[] = {
            {"world", {0, 0}, 1.2},          {"Pacific", {-170, 20}, 1.2},
            {"Europe", {12, 50}, 9.0},       {"Chukotka", {178, 67}, 13.0},
            {"Antarctica", {100, -80}, 4.0}, {"Naples", {14.2, 40.8}, 400.0},
            {"inland", {100, 60}, 3000.0}};
        for (const auto &[name, center, pixelPerDegree] : rows) {
            const RowName shown(name);
            compareAreas(center, pixelPerDegree);
        }
    }

private:
    static void compareAreas(const QPointF &center, double pixelPerDegree)
    {
        const QSize size(400, 260);
        const auto projection = viewed<Mercator>(size, center, pixelPerDegree);
        const double limit = projection.maximumLatitude();
        const auto shapes =
            world()->shapes(backgroundDetail(pixelPerDegree).scale, WorldData::Land);
        QPainterPath all, ours, edges;
        all.setFillRule(Qt::WindingFill);
        ours.setFillRule(Qt::WindingFill);
        for (const int turn : {-360, 0, 360}) {
            for (const WorldShapes::Shape &shape : shapes->shapes) {
                QPolygonF ring;
                for (int i = shape.first; i < shape.first + shape.count; ++i) {
                    const double steps = shapes->stepsPerDegree;
                    QPointF pixel;
                    QVERIFY(projection.project(
                        pixel, QPointF(0, qBound(-limit, shapes->nodes[i].north / steps, limit))));
                    pixel.setX(200 + (shapes->nodes[i].east / steps + turn - center.x()) *
                                         pixelPerDegree);
                    ring.append(pixel);
                }
                all.addPolygon(clippedRing(ring, QRectF(-9000, -9000, 18000, 18000)));
                all.closeSubpath();
            }
        }
        const BackgroundShapes traced(projection, QRectF(QPointF(-3, -3), QSizeF(406, 266)));
        traced.addRings(&ours, &edges, *shapes, INT_MAX);

        const auto picture = [&](const QPainterPath &path) {
            QImage image(size, QImage::Format_ARGB32_Premultiplied);
            image.fill(WaterColor);
            QPainter(&image).fillPath(path, QColor(LandColor));
            return image;
        };
        const QImage expected = picture(all), actual = picture(ours);
        int different = 0;
        for (int i = 0; i < size.width() * size.height(); ++i)
            different += expected.pixel(i % 400, i / 400) != actual.pixel(i % 400, i / 400);
        // Thinning moves edges by less than a pixel.
        QVERIFY2(different < 300, qPrintable(QString::number(different)));
        QVERIFY(ours.boundingRect().isEmpty() || ours.boundingRect().width() <= 407);
    }
private slots:
    void ringAroundWindowFillsIt()
    {
        // Its sides have as many nodes each as are passed over at once: one goes north from 50 W
        // 32 S, the other south from 13 E 31 N.
        const int length = WorldShapes::ChunkLength;
        std::vector<quint32> values(5 + 4 * length, 0);
        std::copy_n(std::begin({1u, 1u, 128u, 0u, 128u, 99u}), 6, values.begin());
        values[5 + length] = 2 * 63;
        std::fill_n(values.begin() + 5 + 2 * length, length, 2);
        values[5 + 2 * length] = 63;
        std::fill_n(values.begin() + 6 + 3 * length, length - 1, 1);
        WorldShapes shapes;
        QString error;
        QVERIFY2(decodeWorldShapes(&shapes, &error, numbers(values)), qPrintable(error));
        const auto projection = viewed<PlateCarree>(QSize(100, 100), QPointF(-20, 0), 5);
        QPainterPath areas, edges;
        BackgroundShapes(projection, QRectF(0, 0, 100, 100))
            .addRings(&areas, &edges, shapes, INT_MAX);
        QCOMPARE(areas.boundingRect(), QRectF(0, 0, 100, 100));
        QCOMPARE(std::abs(areaOf(areas.toFillPolygon())), 10000.0);
        QVERIFY(edges.isEmpty());
    }
    void cutsOfDataLeaveNoSeam()
    {
        for (const double longitude : {0.0, 180.0, -180.0, 77.0, 540.0})
            lookForSeams(QPointF(longitude, 0));
    }

private:
    static void lookForSeams(const QPointF &center)
    {
        const Background background(plainColors(), world(), QFont(), NoLines);
        const auto projection = viewed<PlateCarree>(QSize(1448, 760), center, 4);
        const QImage image = painted(background, projection);
        const auto colorOf = [&](double longitude, double latitude) {
            QPoint pixel;
            projection.project(pixel, QPointF(longitude, latitude));
            return image.pixel(qBound(4, pixel.x(), 1443), pixel.y());
        };
        for (double x = -180; x <= 180; x += 0.25) {
            QCOMPARE(colorOf(x, -89.5), LandColor);
            QCOMPARE(colorOf(x, 89), WaterColor);
        }
        for (double x = 170; x < 190; x += 0.25)
            QCOMPARE(colorOf(x, 67.2), x < 185 ? LandColor : colorOf(x, 67.2));
        QCOMPARE(colorOf(100, 60), LandColor);
        QCOMPARE(colorOf(-150, 10), WaterColor);
        QCOMPARE(colorOf(51, 41), WaterColor); // Caspian
        QCOMPARE(image.pixel(700, 10), OutsideColor);
        QCOMPARE(image.pixel(700, 750), OutsideColor);
        QCOMPARE(image.pixel(1, 300), OutsideColor);
    }

private slots:
    void FijiIsWholeAtDateLine()
    {
        auto colors = plainColors();
        colors.coast = Qt::black;
        const Background background(colors, world(), QFont(), NoLines);
        const QImage image =
            painted(background, viewed<Mercator>(QSize(400, 400), QPointF(180, -16.85), 500));
        // Taveuni lies on the line; its coast must not follow it.
        for (int row = 190; row < 211; ++row) {
            for (int column = 196; column < 205; ++column)
                QCOMPARE(image.pixel(column, row), LandColor);
        }
    }

    void graticuleHasRoundLabels()
    {
        const std::tuple<double, QPointF, const char *, const char *> cases[] = {
            {1.2, {0, 0}, "135°W 90°W 45°W 0° 45°E 90°E 135°E", "45°S 0° 45°N"},
            {20, {180, -12}, "175°E 180° 175°W", "15°S 10°S"},
            {500, {-0.1, 0}, "0.4°W 0.2°W 0.0° 0.2°E", "0.2°S 0.0° 0.2°N"},
            {50000,
             {11.401, 47.25},
             "11.398°E 11.400°E 11.402°E 11.404°E",
             "47.248°N 47.250°N 47.252°N"}};
        const auto joined = [](const QVector<GraticuleLine> &lines) {
            QStringList labels;
            for (const GraticuleLine &line : lines)
                labels.append(line.label);
            return labels.join(' ');
        };
        for (const auto &[scale, center, columns, rows] : cases) {
            const auto projection = viewed<PlateCarree>(QSize(360, 240), center, scale);
            const double step = graticuleStep(scale, scale < 2 ? 50 : 90);
            QCOMPARE(joined(meridians(projection, step)), QString(columns));
            QCOMPARE(joined(parallels(projection, step)), QString(rows));
            for (const GraticuleLine &line : meridians(projection, step)) {
                QPointF place;
                projection.unproject(place, QPoint(line.pixel, 120));
                QVERIFY(std::abs(std::remainder(place.x(), step)) * scale <= 0.51);
            }
        }
    }

    void citiesKeepRoomForEachOther()
    {
        const auto projection = viewed<Mercator>(QSize(800, 500), QPointF(8, 48), 100);
        const QRectF taken(300, 200, 150, 80);
        const QVector<CityLabel> labels =
            layoutCities(*world()->places(), projection, 8, {taken},
                         [](const WorldPlace &place) { return QSizeF(7 * place.name.size(), 14); });
        QVERIFY(labels.size() > 20);
        for (const CityLabel &label : labels) {
            QVERIFY(QRectF(0, 0, 800, 500).contains(label.text) && !label.text.intersects(taken));
            for (const CityLabel &other : labels)
                QVERIFY(&label == &other ||
                        !(label.text.intersects(other.text) || label.text.contains(other.dot)));
        }

        const QVector<WorldPlace> neighbours{{QPointF(8, 48), 0, false, "first"},
                                             {QPointF(8.01, 48), 1, false, "too near"},
                                             {QPointF(11.9, 48), 2, false, "at the edge"},
                                             {QPointF(8, 50), 9, false, "unimportant"}};
        const QVector<CityLabel> few = layoutCities(
            neighbours, projection, 8, {}, [](const WorldPlace &) { return QSizeF(60, 14); });
        QCOMPARE(few.size(), 2);
        QVERIFY(few[0].text.left() > few[0].dot.x());
        QVERIFY(few[1].text.right() < few[1].dot.x());
    }

    void oddViewsAreSurvived()
    {
        const Background background(plainColors(), world());
        const QPointF nowhere(std::numeric_limits<double>::quiet_NaN(), Infinity);
        for (const View &view :
             {View{QSize(1, 1), QPointF(10, 50), 1e5}, View{QSize(50, 50), nowhere, 1},
              View{QSize(50, 50), QPointF(0, 0), 0}, View{QSize(50, 50), QPointF(0, 0), Infinity},
              View{QSize(50, 50), QPointF(0, 90), 1e9},
              View{QSize(50, 50), QPointF(9e9, -90), 1e-9},
              View{QSize(3000, 20), QPointF(0, 0), 0.01}}) {
            Mercator projection;
            projection.setView(view);
            const QImage image = painted(background, projection);
            QVERIFY(image.pixel(0, 0) != QColor(Qt::red).rgba());
        }
        Mercator projection;
        QImage null;
        background.paint(null, projection);
    }

    void threadsPaintTheSame()
    {
        const auto projection = viewed<Mercator>(QSize(300, 200), QPointF(10, 45), 20);
        const QImage expected = painted(Background(plainColors(), world()), projection);
        const Background shared(plainColors(), std::make_shared<const WorldData>(WorldFile));
        std::array<QImage, 4> images;
        std::vector<std::thread> threads;
        for (QImage &image : images)
            threads.emplace_back([&] { image = painted(shared, projection); });
        for (std::thread &thread : threads)
            thread.join();
        for (const QImage &image : images)
            QCOMPARE(image, expected);
    }
};

QTEST_MAIN(BackgroundTest)
#include "tst_background.moc"
