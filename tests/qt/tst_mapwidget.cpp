// SPDX-License-Identifier: LGPL-3.0-or-later

#include "pointer.h"

#include <tellarix/qt/map/mapwidget.h>

#include <QApplication>
#include <QMenu>
#include <QPainter>
#include <QSignalSpy>
#include <QWheelEvent>
#include <QtTest>

#include <cmath>
#include <utility>

using namespace Tellarix::Gui::Map;

namespace {

/** Covers the top left of the map and takes what it is told to. */
class Corner : public Layer
{
public:
    Corner() { setName("corner"); }

    bool isInside(const QMouseEvent *event, const QPointF &) override
    {
        return QRect(0, 0, 20, 20).contains(event->pos());
    }
    bool filterMousePressEvent(QMouseEvent *, const QPointF &) override { return takes; }
    bool filterMouseDoubleClickEvent(QMouseEvent *, const QPointF &) override { return takes; }
    bool filterKeyPressEvent(QKeyEvent *) override { return takes; }
    bool filterContextMenuEvent(QContextMenuEvent *, const QPointF &) override { return takes; }
    bool filterMouseReleaseEvent(QMouseEvent *, const QPointF &) override
    {
        ++releases;
        return false;
    }
    QMenu *menu(QMenu *parent) const override
    {
        auto *menu = new QMenu(parent);
        menu->addAction("of the layer");
        return menu;
    }

    bool takes{false};
    int releases{0};
};

/** A map of 400 x 200 pixels, 10 pixels a degree about (20, 10). */
struct Fixture
{
    Fixture()
    {
        widget.resize(400, 200);
        widget.show();
        widget.canvas()->setView(QPointF(20, 10), 10);
        widget.canvas()->addLayer(&corner);
    }

    const View &view() const { return widget.canvas()->view(); }
    bool isAt(double longitude, double latitude, double scale) const
    {
        return std::abs(view().center.x() - longitude) < 1e-6 &&
               std::abs(view().center.y() - latitude) < 1e-6 &&
               std::abs(view().pixelPerDegree / scale - 1) < 1e-6;
    }

    void move(const QPoint &position) { Pointer::move(widget, position); }
    void drag(const QPoint &from, const QPoint &to, Qt::MouseButton button = Qt::LeftButton,
              Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        Pointer::drag(widget, {from, (from + to) / 2, to}, button, modifiers);
    }

    void turnWheel(const QPoint &position, int angle, int pixels = 0)
    {
        QWheelEvent event(position, widget.mapToGlobal(position), QPoint(0, pixels),
                          QPoint(0, angle), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&widget, &event);
    }

    MapWidget widget;
    Corner corner;
};

} // namespace

class MapWidgetTest : public QObject
{
    Q_OBJECT

private slots:
    void draggingMovesTheMap()
    {
        for (const Qt::MouseButton button : {Qt::LeftButton, Qt::MiddleButton, Qt::RightButton}) {
            for (const bool taken : {false, true}) {
                Fixture f;
                f.corner.takes = taken;
                QSignalSpy clicks(&f.widget, SIGNAL(placeClicked(QPointF)));
                f.drag(QPoint(5, 105), QPoint(55, 75), button);
                const bool moves = !taken && button != Qt::RightButton;
                QVERIFY(moves ? f.isAt(15, 7, 10) : f.isAt(20, 10, 10));
                QCOMPARE(clicks.size(), 0);
                QCOMPARE(f.corner.releases, 1);
                QCOMPARE(f.widget.canGoBack(), moves);
                f.widget.back();
                QVERIFY(f.isAt(20, 10, 10));
            }
        }
    }

    void clicksTellPlaces()
    {
        Fixture f;
        QSignalSpy clicks(&f.widget, SIGNAL(placeClicked(QPointF)));
        QSignalSpy hovers(&f.widget, SIGNAL(placeHovered(QPointF)));
        QSignalSpy left(&f.widget, SIGNAL(placeLeft()));
        QTest::mouseClick(&f.widget, Qt::LeftButton, Qt::NoModifier, QPoint(250, 80));
        QTest::mouseClick(&f.widget, Qt::MiddleButton, Qt::NoModifier, QPoint(250, 80));
        f.move(QPoint(100, 100));
        QCOMPARE(clicks.size(), 1);
        QCOMPARE(clicks[0][0].toPointF(), QPointF(25, 12));
        QCOMPARE(hovers.last()[0].toPointF(), QPointF(10, 10));
        QVERIFY(!f.widget.canGoBack());

        f.widget.showWorld();
        f.widget.resize(600, 200);
        f.move(QPoint(300, 100));
        f.move(QPoint(2, 100));
        f.move(QPoint(1, 100));
        QCOMPARE(left.size(), 1);
    }

    void wheelZoomsAboutThePointer()
    {
        Fixture f;
        const QPoint pixel(300, 60);
        QPointF before;
        QPointF after;
        QVERIFY(f.widget.canvas()->projection()->unproject(before, pixel));
        for (int i = 0; i < 24; ++i)
            f.turnWheel(pixel, 10);
        QVERIFY(std::abs(f.view().pixelPerDegree - 20) < 1e-9);
        QVERIFY(f.widget.canvas()->projection()->unproject(after, pixel));
        QVERIFY((after - before).manhattanLength() < 1e-9);
        // A touchpad may tell pixels alone; all of it is one step back.
        f.turnWheel(pixel, 0, -60);
        QVERIFY(f.view().pixelPerDegree < 20);
        f.widget.back();
        QVERIFY(f.isAt(20, 10, 10));
        f.widget.forward();
        QVERIFY(f.view().pixelPerDegree > 15);
        QVERIFY(!f.widget.canGoForward());
    }

    void keysMoveTheMap()
    {
        const double step = std::sqrt(2.0);
        const std::tuple<Qt::Key, double, double, double> rows[] = {
            {Qt::Key_Left, 15, 10, 10},        {Qt::Key_Right, 25, 10, 10},
            {Qt::Key_Up, 20, 12.5, 10},        {Qt::Key_Down, 20, 7.5, 10},
            {Qt::Key_Plus, 20, 10, 10 * step}, {Qt::Key_PageDown, 20, 10, 10 / step},
            {Qt::Key_Home, 0, 0, 400.0 / 360}};
        for (const auto &[key, longitude, latitude, scale] : rows) {
            Fixture f;
            QTest::keyClick(&f.widget, key);
            QVERIFY(f.isAt(longitude, latitude, scale));
            QTest::keyClick(&f.widget, Qt::Key_Left, Qt::AltModifier);
            QVERIFY(f.isAt(20, 10, 10));
            f.corner.takes = true;
            QTest::keyClick(&f.widget, key);
            QVERIFY(f.isAt(20, 10, 10));
        }
    }

    void regionsFillAnySize()
    {
        MapWidget widget;
        const auto longitudes = [&] { return widget.width() / widget.canvas()->pixelPerDegree(); };
        widget.showRegion(QRectF(170, 0, 40, 10));
        for (const QSize &size : {QSize(400, 300), QSize(800, 300)}) {
            widget.resize(size);
            widget.show();
            QCOMPARE(longitudes(), 40.f);
            QCOMPARE(widget.canvas()->center(), QPointF(-170, 5));
        }
        QTest::keyClick(&widget, Qt::Key_Right);
        widget.resize(400, 300);
        QCOMPARE(longitudes(), 20.f);
    }

    void boxFillsTheMap()
    {
        Fixture f;
        QTest::mousePress(&f.widget, Qt::LeftButton, Qt::ShiftModifier, QPoint(300, 100));
        Pointer::move(f.widget, QPoint(350, 150), Qt::LeftButton);
        QTest::keyClick(&f.widget, Qt::Key_Escape);
        QTest::mouseRelease(&f.widget, Qt::LeftButton, Qt::ShiftModifier, QPoint(350, 150));
        f.drag(QPoint(5, 100), QPoint(7, 102), Qt::LeftButton, Qt::ShiftModifier);
        QVERIFY(f.isAt(20, 10, 10));
        f.drag(QPoint(349, 149), QPoint(300, 100), Qt::LeftButton, Qt::ShiftModifier);
        QVERIFY(std::abs(f.view().pixelPerDegree - 40) < 1e-6);
        QVERIFY((f.view().center - QPointF(32.5, 7.5)).manhattanLength() < 0.2);
    }

    void hostsAddToTheMenu()
    {
        qRegisterMetaType<QMenu *>();
        Fixture f;
        QSignalSpy requests(&f.widget, SIGNAL(menuRequested(QMenu *, QPointF)));
        QStringList entries;
        connect(&f.widget, &MapWidget::menuRequested, [&](QMenu *menu) {
            menu->addAction("of the host");
            for (const QAction *action : menu->actions())
                entries << action->text();
        });
        QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(250, 80));
        f.corner.takes = true;
        QApplication::sendEvent(&f.widget, &event);
        QCOMPARE(requests.size(), 0);
        f.corner.takes = false;
        QApplication::sendEvent(&f.widget, &event);
        QCOMPARE(entries, (QStringList{"corner", "of the host"}));
        QCOMPARE(requests[0][1].toPointF(), QPointF(25, 12));
        QCOMPARE(QApplication::activePopupWidget(), requests[0][0].value<QMenu *>());
        QApplication::activePopupWidget()->close();
    }
};

QTEST_MAIN(MapWidgetTest)
#include "tst_mapwidget.moc"
