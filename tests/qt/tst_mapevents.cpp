// SPDX-License-Identifier: LGPL-3.0-or-later

#include "norvu/ink.h"

#include <tellarix/core/datamodel/event.h>
#include <tellarix/qt/map/canvas.h>
#include <tellarix/qt/map/eventlayer.h>

#include <QMouseEvent>
#include <QPainter>
#include <QPicture>
#include <QSignalSpy>
#include <QtTest>

#include <cmath>
#include <limits>
#include <memory>
#include <utility>

using namespace Tellarix;
using namespace Tellarix::Gui;

namespace {

const double Infinity = std::numeric_limits<double>::infinity();

DataModel::EventPtr makeEvent(const std::string &id, double longitude, double latitude,
                              double magnitude)
{
    DataModel::EventPtr event(new DataModel::Event);
    event->publicID = id;
    event->origins.emplace_back(new DataModel::Origin);
    event->origins[0]->longitude = longitude;
    event->origins[0]->latitude = latitude;
    event->magnitudes.emplace_back(new DataModel::Magnitude);
    event->magnitudes[0]->magnitude = magnitude;
    return event;
}

/** The world on 360 x 180 pixels, with a layer that writes down its signals. */
struct Fixture
{
    Fixture()
    {
        canvas.setSize(QSize(360, 180));
        canvas.setView(QPointF(0, 0), 1);
        canvas.addLayer(&layer);
        const auto record = [this](const char *name) {
            return [this, name](const std::string &id) {
                log << QString("%1 %2").arg(name, id.c_str());
            };
        };
        QObject::connect(&layer, &EventLayer::eventHovered, record("hovered"));
        QObject::connect(&layer, &EventLayer::eventSelected, record("selected"));
        QObject::connect(&layer, &EventLayer::eventActivated, record("activated"));
    }

    QImage picture()
    {
        QImage image(canvas.size(), QImage::Format_RGB32);
        QPainter painter(&image);
        canvas.draw(painter);
        return image;
    }

    bool mouse(QEvent::Type type, const QPoint &position, Qt::MouseButton button = Qt::LeftButton)
    {
        QMouseEvent event(type, position, type == QEvent::MouseMove ? Qt::NoButton : button,
                          Qt::NoButton, Qt::NoModifier);
        return canvas.filterEvent(&event);
    }
    void move(int x, int y) { mouse(QEvent::MouseMove, QPoint(x, y)); }

    QStringList takeLog() { return std::exchange(log, {}); }

    QStringList log;
    Map::Canvas canvas;
    EventLayer layer;
};

} // namespace

class MapEventsTest : public QObject
{
    Q_OBJECT

private slots:
    void smallSymbolsLieAbove()
    {
        Fixture f;
        const auto middleOf = [&f](const std::vector<EventLayer::Values> &events) {
            f.layer.setEvents(events);
            return f.picture().pixelColor(180, 90);
        };
        const auto distance = [](const QColor &a, const QColor &b) {
            return std::abs(a.red() - b.red()) + std::abs(a.blue() - b.blue());
        };
        const EventLayer::Values small{"a", 0, 0, 10, 3};
        const EventLayer::Values large{"b", 0, 0, 600, 7};
        const QColor both = middleOf({small, large});
        QVERIFY(distance(both, middleOf({small})) < distance(both, middleOf({large})) / 2);

        f.layer.setEvents({small, large});
        for (const int x : {180, 191, 210})
            f.move(x, 90);
        QCOMPARE(f.takeLog(), (QStringList{"hovered a", "hovered b", "hovered "}));
        f.layer.setSelectedEvent("b");
        f.move(180, 90);
        QCOMPARE(f.takeLog(), QStringList("hovered b"));
        // It covers the other one now, and is of one colour to its rim.
        const QImage selected = f.picture();
        QCOMPARE(selected.pixelColor(180, 90), selected.pixelColor(188, 90));
    }

    void tellsWhatTheMouseDoes()
    {
        Fixture f;
        f.layer.setEvents({{"a", -50, 0, 10, 6}, {"b", 50, 0, 10, 6}});
        const QImage before = f.picture();
        QVERIFY(!f.mouse(QEvent::MouseButtonPress, QPoint(130, 90), Qt::RightButton));
        QVERIFY(f.mouse(QEvent::MouseButtonPress, QPoint(130, 90)));
        QVERIFY(f.mouse(QEvent::MouseButtonDblClick, QPoint(230, 90)));
        QVERIFY(!f.mouse(QEvent::MouseButtonPress, QPoint(180, 90)));
        QCOMPARE(f.takeLog(), (QStringList{"selected a", "activated b", "hovered "}));
        QCOMPARE(f.layer.selectedEvent(), std::string("a"));
        QCOMPARE(Ink::rectOfDifference(f.picture(), before).center(), QPoint(130, 90));

        // A selection outlives a reload of the list.
        f.layer.clear();
        f.layer.setEvents({{"a", 20, 0, 10, 6}});
        QVERIFY(f.layer.symbol("a")->isSelected());
    }

    void survivesSymbolsThatGoMeanwhile()
    {
        Fixture f;
        const std::vector<EventLayer::Values> events{{"a", 0, 0, 10, 6}};
        const auto clear = [&] { f.layer.clear(); };
        connect(&f.layer, &EventLayer::eventHovered, clear);
        connect(&f.layer, &EventLayer::eventSelected, clear);
        connect(&f.layer, &EventLayer::eventActivated, clear);
        for (const QEvent::Type type :
             {QEvent::MouseMove, QEvent::MouseButtonPress, QEvent::MouseButtonDblClick}) {
            f.layer.setEvents(events);
            f.mouse(type, QPoint(180, 90));
            QCOMPARE(f.layer.symbolCount(), 0);
        }
    }

    void showsWhatHasAPlace()
    {
        const QPoint none(-1, -1);
        const std::tuple<double, double, double, int, QPoint> rows[] = {
            {qQNaN(), 0, 5, 0, none},
            {0, -Infinity, 5, 0, none},
            {0, 91, 5, 1, none},
            {0, 90, 5, 1, {180, 0}},
            {180, 0, 5, 1, {0, 90}},
            {370, 0, qQNaN(), 1, {190, 90}},
            {10, 0, Infinity, 1, {190, 90}},
            {10, 0, -3, 1, {190, 90}}};
        for (const auto &[longitude, latitude, magnitude, count, pixel] : rows) {
            Fixture f;
            const QImage before = f.picture();
            // An event that loses its place loses its symbol.
            f.layer.addEvent(makeEvent("a", 1, 2, 3).get(), false);
            const DataModel::EventPtr event = makeEvent("a", longitude, latitude, magnitude);
            f.layer.updateEvent(event.get());
            QCOMPARE(f.layer.symbolCount(), count);
            const QRect ink = Ink::rectOfDifference(before, f.picture());
            QCOMPARE(ink.isNull(), pixel == none);
            QVERIFY(ink.isNull() || (ink.contains(pixel) && ink.width() < 26));
            event->origins.clear();
            f.layer.updateEvent(event.get());
            QCOMPARE(f.layer.symbolCount(), 0);
        }
    }

    void discsLookTheSameAsPictures()
    {
        Fixture f;
        std::vector<EventLayer::Values> events;
        for (int i = 0; i < 30; ++i)
            events.push_back({std::to_string(i), i * 12.0 - 175, 0.0, i * 20.0, i * 0.4});
        f.layer.setEvents(events);
        const QImage fromPictures = f.picture();
        // A picture that is played back holds shapes, not pixels.
        QPicture shapes;
        QPainter recorder(&shapes);
        f.layer.draw(&f.canvas, recorder);
        recorder.end();
        f.layer.hide();
        QImage painted = f.picture();
        QPainter painter(&painted);
        painter.drawPicture(0, 0, shapes);
        painter.end();
        QVERIFY(Ink::rectOfDifference(painted, f.picture()).width() > 300);
        for (int y = 0; y < painted.height(); ++y) {
            for (int x = 0; x < painted.width(); ++x) {
                const QColor a = fromPictures.pixelColor(x, y);
                const QColor b = painted.pixelColor(x, y);
                QVERIFY(std::abs(a.red() - b.red()) <= 3 && std::abs(a.blue() - b.blue()) <= 3);
            }
        }
    }

    void addedAndRemovedEventsLookLikeSetOnes()
    {
        std::vector<EventLayer::Values> all;
        for (int i = 0; i < 60; ++i)
            all.push_back(
                {std::to_string(i * 37 % 60), i % 20 * 1.0, i % 7 * 1.0, i * 10.0, i % 5 + 3.0});
        const auto part = [&all](int from, int to) {
            return std::vector<EventLayer::Values>(all.begin() + from, all.begin() + to);
        };
        Fixture stepped;
        stepped.layer.setEvents(part(0, 10));
        stepped.picture();
        for (int i = 10; i < 60; i += 10) {
            stepped.layer.addEvents(part(i, i + 10));
            stepped.picture();
        }
        stepped.move(180, 90);
        std::vector<std::string> ids{"not there"};
        for (const EventLayer::Values &values : part(25, 60))
            ids.push_back(values.id);
        stepped.layer.removeEvents(ids);
        stepped.layer.addEvents({{"nowhere", Infinity, 0}, all[3], all[40]});
        stepped.layer.removeEvents({all[40].id});

        Fixture set;
        set.layer.setEvents(part(0, 25));
        QCOMPARE(stepped.layer.symbolCount(), 25);
        QCOMPARE(stepped.picture(), set.picture());
    }

    void fadedEventsAreNotThere()
    {
        Fixture f;
        const QImage empty = f.picture();
        f.layer.setEvents({{"a", 0, 0, 10, 6}});
        const auto inkAt = [&](double opacity) {
            f.layer.symbol("a")->setOpacity(opacity);
            const QColor a = f.picture().pixelColor(180, 90);
            const QColor b = empty.pixelColor(180, 90);
            return std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) +
                   std::abs(a.blue() - b.blue());
        };
        const int full = inkAt(1);
        QVERIFY(full > 20);
        QVERIFY(std::abs(inkAt(0.5) - full / 2) <= 4);
        QCOMPARE(inkAt(qQNaN()), 0);
        f.move(180, 90);
        QCOMPARE(f.takeLog(), QStringList());
        f.layer.setSelectedEvent("a");
        QVERIFY(inkAt(0) > full);
    }

    void takesManyEventsOneByOne()
    {
        Fixture f;
        f.picture();
        QCoreApplication::processEvents();
        QSignalSpy updates(&f.canvas, SIGNAL(updateRequested()));
        for (int i = 0; i < 100000; ++i)
            f.layer.addEvent(makeEvent(std::to_string(i), i % 360, i % 91, i % 9).get(), true);
        QCOMPARE(updates.size(), 1);
        QCOMPARE(f.layer.symbolCount(), 100000);
        f.picture();
    }
};

QTEST_MAIN(MapEventsTest)
#include "tst_mapevents.moc"
