// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/map/pixelgrid.h>
#include <tellarix/qt/map/projection.h>
#include <tellarix/qt/map/viewhistory.h>

#include <QtTest>

#include <cmath>
#include <limits>
#include <memory>
#include <random>

using namespace Tellarix::Gui::Map;

namespace {

using Pointer = std::shared_ptr<Projection>;

QVector<Pointer> projections(const View &view)
{
    const QVector<Pointer> all{std::make_shared<PlateCarree>(), std::make_shared<Mercator>()};
    for (const Pointer &projection : all)
        projection->setView(view);
    return all;
}

const double Infinity = std::numeric_limits<double>::infinity();

void leadToPlacesAndBack(const View &view)
{
    for (const Pointer &projection : projections(view)) {
        for (int i = 0; i < (view.size.width() + 4) * (view.size.height() + 4); ++i) {
            const QPoint pixel(i % (view.size.width() + 4) - 2, i / (view.size.width() + 4) - 2);
            const QRectF globe = projection->globe().adjusted(1e-6, 1e-6, -1e-6, -1e-6);
            QPointF place;
            QPoint back;
            if (!projection->unproject(place, pixel)) {
                QVERIFY(globe.width() < 1 || !globe.contains(pixel));
                continue;
            }
            QVERIFY(std::abs(place.x()) <= 180);
            for (const int turn : {0, 360}) {
                QVERIFY(projection->project(back, place + QPointF(turn, 0)));
                QCOMPARE(back, pixel);
            }
        }
    }
}

} // namespace

class MapProjectionTest : public QObject
{
    Q_OBJECT

private slots:
    void pixelsLeadToPlacesAndBack()
    {
        for (const View &view :
             {View{{400, 300}, {0, 0}, 1}, View{{401, 301}, {10.1, 5}, 1.003},
              View{{400, 300}, {180, 0}, 1}, View{{300, 200}, {13.064, 52.379}, 100000},
              View{{300, 200}, {33, 90}, 7}, View{{1, 1}, {20, 30}, 3}, View{{0, 0}, {20, 30}, 3},
              View{{50, 50}, {20, 30}, 0}})
            leadToPlacesAndBack(view);
    }

    void placesAreWhereTheyBelong()
    {
        PlateCarree plain;
        plain.setView({QSize(400, 300), QPointF(170, 10), 2});
        QPoint pixel;
        QVERIFY(plain.project(pixel, QPointF(-170, 35)));
        QCOMPARE(pixel, QPoint(240, 100));
        QVERIFY(plain.project(pixel, QPointF(170, -90)));
        QCOMPARE(pixel, QPoint(200, 350));

        // Published: a Mercator map of radius 1 has the latitude 35 at a height of 0.6528366.
        Mercator mercator;
        mercator.setView({QSize(400, 300), QPointF(0, 0), 1000});
        QPointF exact;
        QVERIFY(mercator.project(exact, QPointF(0, 35)));
        QVERIFY(std::abs((150 - exact.y()) / 1000 - qRadiansToDegrees(0.6528366)) < 1e-5);
    }

    void refusesWhatCannotBeShown()
    {
        for (const Pointer &projection : projections({QSize(400, 300), QPointF(0, 0), 1})) {
            QPoint pixel(7, 7);
            QPointF place(7, 7);
            for (const QPointF &bad :
                 {QPointF(qQNaN(), 0), QPointF(0, qQNaN()), QPointF(Infinity, 0),
                  QPointF(0, -Infinity), QPointF(0, 90.01)})
                QVERIFY(!projection->project(pixel, bad));
            for (const QPointF &bad : {QPointF(qQNaN(), 0), QPointF(0, Infinity), QPointF(-1, 150),
                                       QPointF(381, 150), QPointF(200, -181)})
                QVERIFY(!projection->unproject(place, bad));
            QCOMPARE(pixel, QPoint(7, 7));
            QCOMPARE(place, QPointF(7, 7));
            QCOMPARE(projection->project(pixel, QPointF(0, 90)),
                     projection->maximumLatitude() == 90);
        }
    }

    void viewsStaySensible()
    {
        const QSize size(720, 360);
        const PlateCarree projection;
        const auto bounded = [&](double longitude, double latitude, double scale) {
            return projection.boundedView({size, QPointF(longitude, latitude), scale});
        };
        QCOMPARE(bounded(0, 0, 0.1), (View{size, QPointF(0, 0), 2}));
        QCOMPARE(bounded(550, 400, 4), (View{size, QPointF(-170, 45), 4}));
        QCOMPARE(bounded(qQNaN(), 1, Infinity), (View{size, QPointF(0, 0), 2}));
        QCOMPARE(projection.boundedView({QSize(), QPointF(5, 6), 1e9}).pixelPerDegree, 1e5);
    }

    void zoomKeepsPlaceUnderPixel()
    {
        const QPointF pixel(310, 40);
        for (const Pointer &projection : projections({QSize(400, 300), QPointF(179, 30), 20})) {
            QPointF place;
            QVERIFY(projection->unproject(place, pixel));
            projection->setView(projection->zoomedView(1.7, pixel, pixel));
            QPointF after;
            QVERIFY(projection->project(after, place));
            QVERIFY((after - pixel).manhattanLength() < 1e-6);
            projection->setView(projection->movedView(QPointF(25, -10)));
            QVERIFY(projection->project(after, place));
            QVERIFY((after - pixel - QPointF(25, -10)).manhattanLength() < 1e-6);
        }
    }

    void picturesOfOtherViewsFit()
    {
        const View other{QSize(400, 300), QPointF(-175, 20), 10};
        for (const Pointer &projection : projections(other)) {
            QPointF before;
            QVERIFY(projection->project(before, QPointF(-179, 31)));
            projection->setView({QSize(333, 201), QPointF(178, 25), 17});
            const QRectF rect = projection->rectOf(other);
            QPointF after;
            QVERIFY(projection->project(after, QPointF(-179, 31)));
            const QPointF half(0.5, 0.5);
            const QPointF moved = rect.topLeft() + (before + half) * 1.7;
            QVERIFY((moved - after - half).manhattanLength() < 1e-9);
            QVERIFY(std::abs(rect.width() - 680) < 1e-9 && std::abs(rect.height() - 510) < 1e-9);
        }
    }

    void regionsFillTheMap()
    {
        PlateCarree projection;
        projection.setView({QSize(400, 300), QPointF(1, 2), 5});
        const auto shows = [&](const QRectF &region, double longitude, double latitude,
                               double scale) {
            const View view = projection.viewOf(region);
            return qFuzzyCompare(nearestTurn(view.center.x(), longitude), longitude) &&
                   qFuzzyCompare(view.center.y() + 1, latitude + 1) &&
                   qFuzzyCompare(view.pixelPerDegree, scale);
        };
        QVERIFY(shows(QRectF(10, 20, 40, 10), 30, 25, 10));
        QVERIFY(shows(QRectF(10, 20, 10, 30), 15, 35, 10));
        QVERIFY(shows(QRectF(170, -5, 20, 10), 180, 0, 20));
        QVERIFY(shows(QRectF(100, -10, 200, 20), -160, 0, 2));
        QVERIFY(shows(QRectF(15, 16, 0, 0), 15, 16, 5));
        QVERIFY(shows(QRectF(qQNaN(), 0, 1, 1), 1, 2, 5));
    }

    void historyGoesBackAndForward()
    {
        const auto at = [](double longitude) {
            return View{QSize(10, 10), QPointF(longitude, 0), 1};
        };
        ViewHistory history;
        history.leave(at(0), ViewHistory::Jump, 0);
        history.leave(at(1), ViewHistory::Zoom, 100);
        history.leave(at(2), ViewHistory::Zoom, 1000); // goes on with the step before
        history.leave(at(3), ViewHistory::Zoom, 2001);
        history.leave(at(4), ViewHistory::Pan, 2002);
        View view = at(5);
        for (const double longitude : {4, 3, 1, 0, 0}) {
            view = history.back(view);
            QCOMPARE(view.center.x(), longitude);
        }
        QVERIFY(!history.canGoBack());
        for (const double longitude : {1, 3})
            QCOMPARE((view = history.forward(view)).center.x(), longitude);
        history.leave(view, ViewHistory::Zoom, 2003);
        QVERIFY(!history.canGoForward());
        QCOMPARE(history.back(at(9)).center.x(), 3.0);
    }

    void gridFindsWhatALoopFinds()
    {
        std::mt19937 random(5);
        const auto below = [&](int limit) { return static_cast<int>(random() % unsigned(limit)); };
        std::vector<PixelGrid::Point> points;
        for (int i = 0; i < 500; ++i)
            points.push_back({QPoint(below(300) - 50, below(200) - 50), i});
        const QRect area(-20, -20, 205, 99);
        PixelGrid grid;
        QCOMPARE(grid.last(area, [](int) { return true; }), -1);
        grid.setPoints(points, area);
        for (int i = 0; i < 300; ++i) {
            const QRect box(below(300) - 50, below(200) - 50, below(60), below(60));
            const auto isIn = [&](int number) {
                return box.contains(points[static_cast<std::size_t>(number)].pixel);
            };
            int expected = -1;
            for (const PixelGrid::Point &point : points) {
                if (isIn(point.number) && area.contains(point.pixel))
                    expected = point.number;
            }
            QCOMPARE(grid.last(box, isIn), expected);
        }
    }
};

QTEST_APPLESS_MAIN(MapProjectionTest)
#include "tst_mapprojection.moc"
