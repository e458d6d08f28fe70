// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bench/bench.h"
#include "bench/selection.h"
#include "bench/shownevents.h"
#include "bench/stations.h"
#include "bench/streamstates.h"
#include "map/delaylegend.h"
#include "map/eventmaplayer.h"
#include "map/eventsonmap.h"
#include "map/mappanel.h"
#include "map/measurelayer.h"

#include <tellarix/qt/map/mapwidget.h>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include <limits>

using namespace Tellarix;
using namespace Workbench;

namespace {

EventFacts eventAt(const QString &id, double longitude, double latitude, double magnitude)
{
    EventFacts event;
    event.publicID = id;
    event.originTime = Core::Time(2024, 1, 5, 10, 11, 12);
    event.longitude = longitude;
    event.latitude = latitude;
    event.magnitude = magnitude;
    return event;
}

/** A map of two events and two stations. */
class Map
{
public:
    Map()
    {
        const double nowhere = std::numeric_limits<double>::quiet_NaN();
        bench.shownEvents()->set({eventAt("a", 10, 40, 5), eventAt("b", 30, 50, 6),
                                  eventAt("unknown place", nowhere, 0, 7)});
        bench.stations()->add({{"XX.ONE", {45, 20}}, {"XX.TWO", {45, 15}}});
        panel.resize(900, 500);
        panel.show();
        (void)QTest::qWaitForWindowExposed(&panel);
        panel.showAll();
        draw();
    }

    /** Symbols find their pixels when they are painted. */
    void draw() { panel.grab(); }

    QPoint pixel(double longitude, double latitude) const
    {
        QPoint pixel;
        panel.map()->canvas()->projection()->project(pixel, QPointF(longitude, latitude));
        return pixel;
    }

    // The mouse goes by the window, as only then the application knows of keys and buttons.

    void move(const QPoint &pixel) { QTest::mouseMove(panel.windowHandle(), inWindow(pixel)); }

    void click(const QPoint &pixel, Qt::KeyboardModifiers modifiers = {})
    {
        move(pixel + QPoint(40, 40));
        move(pixel);
        QTest::mouseClick(panel.windowHandle(), Qt::LeftButton, modifiers, inWindow(pixel));
        QCoreApplication::processEvents();
    }

    void drag(const QPoint &from, const QPoint &to)
    {
        move(from);
        QTest::mousePress(panel.windowHandle(), Qt::LeftButton, {}, inWindow(from));
        move(to);
        QTest::mouseRelease(panel.windowHandle(), Qt::LeftButton, {}, inWindow(to));
        QCoreApplication::processEvents();
    }

    QPoint inWindow(const QPoint &pixel) const { return panel.map()->mapTo(&panel, pixel); }

    void trigger(const QString &text)
    {
        for (QAction *action : panel.menus().first()->actions()) {
            if (action->text().remove('&') == text)
                return action->trigger();
        }
        QFAIL(qPrintable("no entry " + text));
    }

    QString chosenID() const
    {
        const auto &event = bench.selection()->chosenEvent();
        return event ? event->publicID : QString();
    }

    Bench bench;
    MapPanel panel{&bench};
};

} // namespace

class TestMapPanel : public QObject
{
    Q_OBJECT

private slots:
    void choosesEvents();
    void showsWhatWasChosen();
    void choosesStations();
    void coloursStationsByDelay();
    void labelsWhatIsUnderTheMouse();
    void labelsWhatIsUnderTheMouseElsewhere();
    void limitsListToWhatIsShown();
    void offersWhatIsNear();
    void measuresByDragging();
    void measuresAcrossDateLine();
    void writesPictures();
    void keepsChoices();
};

void TestMapPanel::choosesEvents()
{
    Map map;
    const QSignalSpy told(map.bench.selection(), SIGNAL(eventChanged()));
    map.click(map.pixel(30, 50));
    QCOMPARE(map.chosenID(), QString("b"));
    map.click(map.pixel(30, 50));
    map.click(map.pixel(20, 45)); // nothing is there
    QCOMPARE(map.chosenID(), QString("b"));
    QCOMPARE(told.count(), 1);
}

void TestMapPanel::showsWhatWasChosen()
{
    Map map;
    const QPointF before = map.panel.map()->canvas()->center();
    map.bench.selection()->setEvent(eventAt("a", 10, 40, 5));
    QCOMPARE(map.panel.events()->layer()->selectedEvent(), std::string("a"));
    QCOMPARE(map.panel.map()->canvas()->center(), before); // it was in sight

    map.panel.map()->showRegion(QRectF(9, 39, 2, 2));
    map.bench.selection()->setEvent(eventAt("b", 30, 50, 6));
    const QPointF centre = map.panel.map()->canvas()->center();
    QVERIFY(qAbs(centre.x() - 30) < 1e-6 && qAbs(centre.y() - 50) < 1e-6);
}

void TestMapPanel::choosesStations()
{
    Map map;
    // The body of the symbol lies above the place that it stands on.
    const QPoint body(0, -8);
    map.click(map.pixel(20, 45) + body);
    QCOMPARE(map.bench.selection()->stations(), QStringList{"XX.ONE"});
    map.click(map.pixel(15, 45) + body, Qt::ControlModifier);
    QCOMPARE(map.bench.selection()->stations(), QStringList({"XX.ONE", "XX.TWO"}));
    map.click(map.pixel(20, 45) + body, Qt::ControlModifier);
    QCOMPARE(map.bench.selection()->stations(), QStringList{"XX.TWO"});
}

void TestMapPanel::coloursStationsByDelay()
{
    Map map;
    StreamStates *states = map.bench.streamStates();
    const Core::Time last(2024, 1, 5);
    Core::Time now = last;
    states->setClock([&now] { return now; });
    states->note("XX.ONE..HHZ", {last - Core::TimeSpan(10), last});
    map.trigger("Colour stations by delay");
    const auto color = [&map](double longitude) {
        const QPoint body = map.pixel(longitude, 45) + QPoint(0, -8);
        return map.panel.map()->grab().toImage().pixelColor(body);
    };
    const auto hovered = [&map] {
        map.move(map.pixel(10, 50));
        map.move(map.pixel(20, 45) + QPoint(0, -8));
        return map.panel.hoveredText();
    };
    const std::tuple<double, DelayGrade, QString> rows[] = {
        {5, DelayGrade::Fresh, "XX.ONE, last sample 5 s ago"},
        {61, DelayGrade::Late, "XX.ONE, last sample 1 min ago"},
        {599, DelayGrade::Late, "XX.ONE, last sample 9 min ago"},
        {601, DelayGrade::Stale, "XX.ONE, last sample 10 min ago"}};
    for (const auto &[age, grade, text] : rows) {
        now = last + Core::TimeSpan(age);
        QTRY_COMPARE(color(20), colorOf(grade));
        QTRY_VERIFY2(hovered().endsWith(text), qPrintable(map.panel.hoveredText()));
    }
    QCOMPARE(color(15), colorOf(DelayGrade::Never));
    // One of its streams is enough.
    states->note("XX.ONE..HHN", {now - Core::TimeSpan(10), now});
    QTRY_COMPARE(color(20), colorOf(DelayGrade::Fresh));
    map.trigger("Colour stations by delay");
    QCOMPARE(color(20), color(15));
}

void TestMapPanel::labelsWhatIsUnderTheMouse()
{
    Map map;
    map.move(map.pixel(20, 40));
    map.move(map.pixel(30, 50));
    QVERIFY2(map.panel.hoveredText().contains("M 6.0, 2024-01-05 10:11:12"),
             qPrintable(map.panel.hoveredText()));
    map.move(map.pixel(20, 40));
    QVERIFY2(!map.panel.hoveredText().contains("M "), qPrintable(map.panel.hoveredText()));

    // Of what doesn't fit the start is told.
    map.panel.resize(420, 500);
    QCoreApplication::processEvents();
    map.move(map.pixel(30, 50));
    QVERIFY2(map.panel.hoveredText().startsWith("M 6.0") && map.panel.hoveredText().endsWith("…"),
             qPrintable(map.panel.hoveredText()));
}

void TestMapPanel::labelsWhatIsUnderTheMouseElsewhere()
{
    Map map;
    const QImage before = map.panel.map()->grab().toImage();
    map.bench.selection()->setHoveredEvent("b");
    QVERIFY(map.panel.map()->grab().toImage() != before);
    map.bench.selection()->setHoveredEvent("no such event");
    QCOMPARE(map.panel.map()->grab().toImage(), before);

    map.bench.selection()->setHoveredEvent("b");
    map.bench.shownEvents()->set({eventAt("a", 10, 40, 5)});
    const QImage without = map.panel.map()->grab().toImage();
    map.bench.selection()->setHoveredEvent(QString());
    QCOMPARE(map.panel.map()->grab().toImage(), without);
}

void TestMapPanel::limitsListToWhatIsShown()
{
    Map map;
    const auto &region = map.bench.selection()->region();
    map.panel.setLimitsList(true);
    QVERIFY(region && region->contains(40, 10) && region->contains(50, 30));

    map.panel.map()->showRegion(QRectF(9, 39, 2, 2));
    QTRY_VERIFY(region && region->contains(40, 10) && !region->contains(50, 30));
    map.panel.setLimitsList(false);
    QVERIFY(!region);
}

void TestMapPanel::offersWhatIsNear()
{
    Map map;
    QMenu menu;
    QVERIFY(QMetaObject::invokeMethod(map.panel.map(), "menuRequested", Q_ARG(QMenu *, &menu),
                                      Q_ARG(QPointF, QPointF(10.5, 40))));
    const auto entry = [&](const QString &text) {
        for (QAction *action : menu.findChildren<QAction *>()) {
            if (action->text() == text)
                return action;
        }
        return static_cast<QAction *>(nullptr);
    };
    QVERIFY(entry("Copy coordinates") && entry("Within 100 km"));
    entry("Copy coordinates")->trigger();
    QCOMPARE(QApplication::clipboard()->text(), QString("40.00000 10.50000"));

    map.panel.setLimitsList(true);
    entry("Within 100 km")->trigger();
    const auto &region = map.bench.selection()->region();
    QVERIFY(region && region->contains(40, 10) && !region->contains(50, 30));
    map.panel.map()->zoomIn(); // the map no longer limits the list
    QTest::qWait(0);
    QVERIFY(region->contains(40, 10) && !region->contains(50, 30));
    map.trigger("List events from everywhere");
    QVERIFY(!region);
}

void TestMapPanel::measuresByDragging()
{
    Map map;
    map.trigger("Measure distances");
    const QPointF before = map.panel.map()->canvas()->center();
    const QPoint from = map.pixel(10, 40);
    const QPoint to = map.pixel(30, 50);
    map.drag(from, to);
    QCOMPARE(map.panel.map()->canvas()->center(), before);
    const auto course = map.panel.measuring()->course();
    QVERIFY(course);
    const double expected = courseBetween({10, 40}, {30, 50}).distanceKm;
    QVERIFY(qAbs(course->distanceKm - expected) < 20); // a pixel is some km
    QVERIFY2(map.panel.hoveredText().contains("azimuth"), qPrintable(map.panel.hoveredText()));

    QTest::keyClick(map.panel.map(), Qt::Key_Escape);
    QVERIFY(!map.panel.measuring()->course());
}

void TestMapPanel::measuresAcrossDateLine()
{
    const Course course = courseBetween({179, 0}, {-179, 0});
    QVERIFY(qAbs(course.distanceKm - 222.639) < 0.01);
    QVERIFY(qAbs(course.degrees - 2) < 1e-6);
    QCOMPARE(course.azimuth, 90.0);
    QCOMPARE(course.backAzimuth, 270.0);
    for (const QPointF &place : shortestWay({179, 0}, {-179, 0}))
        QVERIFY(qAbs(place.x()) >= 179 && qAbs(place.y()) < 1e-6);
}

void TestMapPanel::writesPictures()
{
    Map map;
    const QTemporaryDir folder;
    const auto write = [&](const QString &name) {
        QString error;
        return map.panel.writeTo(folder.filePath(name), &error) ? QString() : error;
    };
    for (const char *name : {"map.png", "map.svg", "map.pdf"})
        QCOMPARE(write(name), QString());
    QCOMPARE(QImage(folder.filePath("map.png")).size(), map.panel.map()->size());

    // All else is drawn: images are the world below and the shadows of two stations.
    QFile drawing(folder.filePath("map.svg"));
    QVERIFY(drawing.open(QFile::ReadOnly));
    const QByteArray content = drawing.readAll();
    QVERIFY(content.contains("M 6.0"));
    QCOMPARE(content.count("<image"), 3);
    QVERIFY(write("none/map.png").contains("none/map.png"));
}

void TestMapPanel::keepsChoices()
{
    const QTemporaryDir folder;
    QSettings settings(folder.filePath("settings.ini"), QSettings::IniFormat);
    QPointF centre;
    {
        Map map;
        map.panel.map()->showRegion(QRectF(9, 39, 2, 2));
        map.trigger("Mercator projection");
        map.panel.events()->layer()->setShown(false, true);
        map.panel.events()->layer()->setGradientName("Viridis");
        centre = map.panel.map()->canvas()->center();
        map.panel.saveState(settings);
    }
    Map map;
    map.panel.restoreState(settings);
    QCOMPARE(map.panel.map()->canvas()->projection()->maximumLatitude(),
             Gui::Map::Mercator().maximumLatitude());
    const QPointF moved = map.panel.map()->canvas()->center() - centre;
    QVERIFY(qAbs(moved.x()) < 1e-9 && qAbs(moved.y()) < 1e-9);
    QCOMPARE(map.panel.events()->layer()->viewModes(),
             EventMapLayer::ViewModes(EventMapLayer::Heatmap));

    settings.setValue("map/pixelPerDegree", "nan");
    settings.setValue("map/gradient", "no such one");
    map.panel.restoreState(settings);
    QVERIFY(map.panel.map()->canvas()->view().pixelPerDegree > 0);
}

QTEST_MAIN(TestMapPanel)
#include "tst_mappanel.moc"
