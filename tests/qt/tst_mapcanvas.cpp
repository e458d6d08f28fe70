// SPDX-License-Identifier: LGPL-3.0-or-later

#include "norvu/ink.h"
#include "semaphore.h"

#include <tellarix/qt/map/canvas.h>
#include <tellarix/qt/map/legend.h>
#include <tellarix/qt/map/legendlayout.h>
#include <tellarix/qt/scheme.h>

#include <QMouseEvent>
#include <QPainter>
#include <QSignalSpy>
#include <QtTest>

#include <functional>
#include <memory>
#include <utility>

using namespace Tellarix::Gui;
using namespace Tellarix::Gui::Map;

namespace {

/** Blue, with yellow pixels at the multiples of 10 degrees; waits for leave to paint, if it has to.
 */
class Dots : public BackgroundPainter
{
public:
    explicit Dots(std::shared_ptr<Semaphore> leave = nullptr) : _leave(std::move(leave)) {}

    void paint(QImage &image, const Projection &projection) const override
    {
        if (_leave)
            _leave->acquire();
        image.fill(Qt::blue);
        for (int i = 0; i < 36 * 17; ++i) {
            QPoint pixel;
            if (projection.project(pixel, QPointF(i % 36 * 10, i / 36 * 10 - 80)) &&
                image.rect().contains(pixel))
                image.setPixelColor(pixel, Qt::yellow);
        }
    }

private:
    std::shared_ptr<Semaphore> _leave;
};

/** Covers a rectangle of the canvas and writes down what it is asked. */
class Sheet : public Layer
{
public:
    Sheet(const QString &name, const QRect &rect, QStringList *log) : _rect(rect), _log(log)
    {
        setName(name);
    }

    void note(const char *what) { *_log << name() + ' ' + what; }
    bool noteTaken(const char *what)
    {
        // The action may delete this.
        const bool result = takes;
        note(what);
        if (action)
            std::exchange(action, nullptr)();
        return result;
    }

    void calculateMapPosition(const Canvas *) override { note("place"); }
    void bufferUpdated(Canvas *canvas, QPainter &painter) override
    {
        note("buffer");
        QVERIFY(canvas->buffer().size() == canvas->size());
        painter.fillRect(_rect, Qt::red);
    }
    bool isInside(const QMouseEvent *event, const QPointF &) override
    {
        return _rect.contains(event->pos());
    }
    void handleEnterEvent() override { note("enter"); }
    void handleLeaveEvent() override { note("leave"); }
    bool filterMouseMoveEvent(QMouseEvent *, const QPointF &) override { return noteTaken("move"); }
    bool filterMousePressEvent(QMouseEvent *, const QPointF &place) override
    {
        pressed = place;
        return noteTaken("press");
    }

    bool takes{false};
    std::function<void()> action; /**< once, while it is asked for an event */
    QPointF pressed;

    void outdate() { setBufferOutdated(); }

private:
    QRect _rect;
    QStringList *_log;
};

struct Key : public Legend
{
    explicit Key(const QColor &color) : color(color)
    {
        setSize(QSize(30, 20));
        setAlignment(Qt::AlignLeft | Qt::AlignTop);
    }
    void draw(const QRect &rect, QPainter &painter) override { painter.fillRect(rect, color); }

    QColor color;
};

/** A canvas of 200 x 100 pixels with two layers, of which the upper one covers its left half. */
struct Fixture
{
    Fixture()
    {
        canvas.setSize(QSize(200, 100));
        canvas.setView(QPointF(0, 0), 2);
        canvas.setBackground(std::make_shared<Dots>());
        canvas.addLayer(&lower);
        canvas.addLayer(&upper);
        picture();
        log.clear();
    }

    QImage picture()
    {
        QImage image(canvas.size().expandedTo(QSize(1, 1)), QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        canvas.draw(painter);
        return image;
    }

    bool mouse(QEvent::Type type, const QPoint &position, Qt::MouseButtons held = Qt::NoButton)
    {
        QMouseEvent event(type, position, type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                          held, Qt::NoModifier);
        return canvas.filterEvent(&event);
    }

    QStringList takeLog() { return std::exchange(log, {}); }

    QStringList log;
    Canvas canvas;
    Sheet lower{"lower", QRect(0, 0, 60, 5), &log};
    Sheet upper{"upper", QRect(0, 0, 30, 5), &log};
};

} // namespace

class MapCanvasTest : public QObject
{
    Q_OBJECT

private slots:
    void drawsOnlyWhatIsOutdated()
    {
        Fixture f;
        QSignalSpy updates(&f.canvas, SIGNAL(updateRequested()));
        for (int i = 0; i < 3; ++i)
            emit f.upper.updateRequested(Layer::SymbolPositions);
        emit f.lower.updateRequested(Layer::Repaint);
        QCOMPARE(updates.size(), 1);
        f.picture();
        QCOMPARE(f.takeLog(), QStringList("upper place"));

        emit f.upper.updateRequested(Layer::Buffer);
        QCOMPARE(updates.size(), 2);
        f.picture();
        QCOMPARE(f.takeLog(), (QStringList{"lower buffer", "upper buffer"}));
        f.lower.outdate();
        emit f.lower.updateRequested(Layer::Repaint);
        f.picture();
        QCOMPARE(f.takeLog(), (QStringList{"lower buffer", "upper buffer"}));
    }

    void fillsAnySize()
    {
        Fixture f;
        const auto isCurrent = [&] {
            f.picture();
            return f.canvas.isBufferCurrent();
        };
        for (const bool asynchronous : {false, true}) {
            f.canvas.setAsynchronous(asynchronous);
            for (const QSize &size :
                 {QSize(0, 0), QSize(1, 1), QSize(8000, 4000), QSize(200, 100)}) {
                f.canvas.setSize(size);
                QCOMPARE(f.canvas.buffer().size(), size);
                QTRY_VERIFY(isCurrent());
                f.mouse(QEvent::MouseMove, QPoint(0, 0));
            }
        }
    }

    void movesOldBufferMeanwhile()
    {
        const auto gate = std::make_shared<Semaphore>();
        const auto opened = qScopeGuard([&] { gate->release(1000); });
        Fixture f;
        gate->release();
        f.canvas.setBackground(std::make_shared<Dots>(gate));
        const QImage before = f.picture();
        f.canvas.setAsynchronous(true);

        f.canvas.setView(QPointF(175, 5), 2);
        f.canvas.setView(QPointF(-4, 5), 2);
        QVERIFY(!f.canvas.isBufferCurrent());
        f.log.clear();
        QImage moved = f.picture();
        QCOMPARE(moved.copy(8, 10, 192, 90), before.copy(0, 0, 192, 90));
        QVERIFY(moved.pixelColor(3, 50) != QColor(Qt::blue));
        QCOMPARE(f.takeLog(), (QStringList{"lower place", "upper place"}));

        // What comes of a view that is gone shows its part, and doesn't pass for the new one.
        f.canvas.setView(QPointF(-9, 5), 2);
        gate->release();
        QTRY_COMPARE(f.picture().pixelColor(13, 50), QColor(Qt::blue));
        QVERIFY(f.picture().pixelColor(3, 50) != QColor(Qt::blue));
        QVERIFY(!f.canvas.isBufferCurrent());
        QVERIFY(!f.log.contains("upper buffer"));

        gate->release();
        const auto isCurrent = [&] {
            f.picture();
            return f.canvas.isBufferCurrent();
        };
        QTRY_VERIFY(isCurrent());
        QVERIFY(f.log.contains("upper buffer"));
        const QImage finished = f.picture();
        QCOMPARE(finished.pixelColor(3, 50), QColor(Qt::blue));
        QCOMPARE(finished.pixelColor(118, 60), QColor(Qt::yellow));
        QCOMPARE(Ink::rectOfColor(finished, Qt::red), QRect(0, 0, 60, 5));

        // Another background drops the job; the canvas goes before the next one is done.
        f.canvas.setView(QPointF(3, 3), 3);
        f.picture();
        f.canvas.setBackground(std::make_shared<Dots>(gate));
        f.picture();
    }

    void wrapsOldBufferAtDateLine()
    {
        Fixture f;
        const auto gate = std::make_shared<Semaphore>();
        const auto opened = qScopeGuard([&] { gate->release(1000); });
        gate->release();
        f.canvas.setSize(QSize(360, 180));
        f.canvas.setView(QPointF(0, 0), 1);
        f.canvas.setBackground(std::make_shared<Dots>(gate));
        f.upper.hide();
        f.lower.hide();
        f.picture();
        f.canvas.setAsynchronous(true);
        f.canvas.setView(QPointF(170, 0), 1);
        const QImage moved = f.picture();
        gate->release();
        f.canvas.setAsynchronous(false);
        f.canvas.updateBuffer();
        gate->release();
        QCOMPARE(Ink::rectOfDifference(moved, f.picture()), QRect());
    }

    void rendersAnySizeAndComesBack()
    {
        Fixture f;
        f.upper.hide();
        f.lower.addLegend(new Key(Qt::green));
        const QImage before = f.picture();
        QSignalSpy changes(&f.canvas, SIGNAL(viewChanged()));
        QSignalSpy updates(&f.canvas, SIGNAL(updateRequested()));
        QImage large(400, 300, QImage::Format_RGB32);
        large.fill(Qt::white);
        QPainter painter(&large);
        f.canvas.renderTo(painter, large.size());
        QCOMPARE(large.pixelColor(200 + 40, 150 - 80), QColor(Qt::yellow)); // 4 pixels a degree
        QCOMPARE(Ink::rectOfColor(large, Qt::red).right(), 59);
        QCOMPARE(f.canvas.size(), QSize(200, 100));
        QCOMPARE(changes.size(), 0);
        QCOMPARE(updates.size(), 1);
        QCOMPARE(f.picture(), before);
    }

    void asksLayersFromTopToBottom()
    {
        Fixture f;
        QVERIFY(!f.mouse(QEvent::MouseMove, QPoint(100, 50)));
        QCOMPARE(f.takeLog(), (QStringList{"upper move", "lower move"}));
        f.mouse(QEvent::MouseMove, QPoint(50, 2));
        QCOMPARE(f.takeLog(), (QStringList{"lower enter", "upper move", "lower move"}));
        f.upper.takes = true;
        QVERIFY(f.mouse(QEvent::MouseMove, QPoint(10, 2)));
        QCOMPARE(f.takeLog(), (QStringList{"lower leave", "upper enter", "upper move"}));
        QCOMPARE(f.canvas.layerUnderMouse(), &f.upper);
        f.upper.hide();
        QCOMPARE(f.takeLog(), QStringList("upper leave"));
        f.mouse(QEvent::MouseButtonPress, QPoint(10, 2));
        QCOMPARE(f.takeLog(), (QStringList{"lower enter", "lower press"}));
        QCOMPARE(f.lower.pressed, QPointF(-45, 24));
        QEvent leave(QEvent::Leave);
        f.canvas.filterEvent(&leave);
        QCOMPARE(f.takeLog(), QStringList("lower leave"));

        // Beyond the edge of the globe it is the nearest place.
        f.canvas.setView(QPointF(20, 0), 0);
        f.mouse(QEvent::MouseButtonPress, QPoint(0, 50));
        QCOMPARE(f.lower.pressed, QPointF(-160, 0));
    }

    void survivesLayersThatGoMeanwhile()
    {
        Fixture f;
        auto *top = new Sheet("top", QRect(0, 0, 30, 5), &f.log);
        f.canvas.addLayer(top);
        f.mouse(QEvent::MouseMove, QPoint(1, 1));
        QCOMPARE(f.canvas.layerUnderMouse(), top);
        top->action = [&] {
            delete top;
            f.canvas.removeLayer(&f.upper);
        };
        f.takeLog();
        f.mouse(QEvent::MouseMove, QPoint(2, 1));
        QCOMPARE(f.takeLog(), (QStringList{"top move", "lower move"}));
        QCOMPARE(f.canvas.layers(), QList<Layer *>{&f.lower});
        QCOMPARE(f.canvas.layerUnderMouse(), nullptr);
        f.mouse(QEvent::MouseMove, QPoint(2, 1));
        QCOMPARE(f.canvas.layerUnderMouse(), &f.lower);
    }

    void stacksLegends()
    {
        const auto rects = [](const QVector<LegendBox> &boxes) {
            return layOutLegends(boxes, QSize(200, 100), 5, 3);
        };
        const auto stack = [&](Qt::Alignment alignment, const QVector<int> &heights) {
            QVector<LegendBox> boxes;
            for (const int height : heights)
                boxes.append({QSize(40, height), alignment});
            return rects(boxes);
        };
        using Rects = QVector<QRect>;
        const QRect none;
        QCOMPARE(stack(Qt::AlignTop | Qt::AlignLeft, {20, 0, 10}),
                 (Rects{{5, 5, 40, 20}, none, {5, 28, 40, 10}}));
        QCOMPARE(stack(Qt::AlignBottom | Qt::AlignRight, {20, 10}),
                 (Rects{{155, 75, 40, 20}, {155, 62, 40, 10}}));
        QCOMPARE(stack(Qt::AlignRight | Qt::AlignVCenter, {20, 7}),
                 (Rects{{155, 35, 40, 20}, {155, 58, 40, 7}}));
        QCOMPARE(stack(Qt::AlignTop, {60, 40, 10}),
                 (Rects{{80, 5, 40, 60}, none, {80, 68, 40, 10}}));
        // A full column leaves no room for what comes from another corner.
        QVERIFY(rects({{QSize(40, 60), Qt::AlignTop | Qt::AlignLeft},
                       {QSize(40, 30), Qt::AlignBottom | Qt::AlignLeft}})[1]
                    .isNull());
    }

    void legendsFollowLayersAndFlags()
    {
        Fixture f;
        auto *green = new Key(Qt::green);
        auto *cyan = new Key(Qt::cyan);
        f.lower.addLegend(green);
        f.lower.addLegend(cyan);
        const auto places = [&] {
            const QImage image = f.picture();
            return QVector<QRect>{Ink::rectOfColor(image, Qt::green),
                                  Ink::rectOfColor(image, Qt::cyan)};
        };
        const QRect first(11, 11, 30, 20);
        const QRect second = first.translated(0, 28);
        QCOMPARE(places(), (QVector<QRect>{first, second}));
        QCOMPARE(f.picture().pixel(10, 10), Scheme::Current().legend.border.rgb());
        QCOMPARE(f.canvas.legendAt(QPoint(10, 10)), green);
        QCOMPARE(f.canvas.legendAt(QPoint(9, 10)), nullptr);
        cyan->bringToFront();
        QCOMPARE(places(), (QVector<QRect>{second, first}));
        cyan->setEnabled(false);
        QCOMPARE(places(), (QVector<QRect>{first, QRect()}));
        green->setTitle("Depth of events");
        QVERIFY(places()[0].top() > first.top() + 10);
        f.canvas.setSize(QSize(200, 30));
        QCOMPARE(places(), (QVector<QRect>{QRect(), QRect()}));
        f.canvas.setSize(QSize(200, 100));
        f.canvas.setCoveredHeight(70);
        QCOMPARE(places(), (QVector<QRect>{QRect(), QRect()}));
        f.canvas.setCoveredHeight(0);
        delete green;
        QCOMPARE(f.canvas.legendAt(QPoint(12, 12)), nullptr);
        cyan->setEnabled(true);
        QCOMPARE(places(), (QVector<QRect>{QRect(), first}));

        // The mouse on a legend is on no layer below.
        f.takeLog();
        QVERIFY(!f.mouse(QEvent::MouseButtonPress, first.center()));
        QCOMPARE(f.takeLog(), QStringList());
        f.mouse(QEvent::MouseMove, first.center(), Qt::LeftButton);
        QCOMPARE(f.takeLog(), (QStringList{"upper move", "lower move"}));
        f.lower.hide();
        QCOMPARE(f.canvas.legendAt(first.center()), nullptr);
        f.lower.show();
        f.canvas.removeLayer(&f.lower);
        QCOMPARE(places(), (QVector<QRect>{QRect(), QRect()}));
    }
};

QTEST_MAIN(MapCanvasTest)
#include "tst_mapcanvas.moc"
