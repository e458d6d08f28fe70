// SPDX-License-Identifier: LGPL-3.0-or-later

#include "interference.h"
#include "mapsymbols.h"

#include <norvu/gui/map/symbollayer.h>

#include <QtTest>

#include <cmath>
#include <memory>

using namespace Norvu::Gui;
using MapTesting::Recorder;
using MapTesting::TenPerDegree;

namespace {

const QPoint onA(145, 100); // A place of the symbol at longitude and latitude 0.

/** A layer on a map, the mouse over it, and a log of its signals. */
struct Stage
{
    Stage()
    {
        canvas.addLayer(layer.get());
        const auto write = [this](const char *what) {
            return [this, what](Map::Symbol *symbol) {
                auto *recorder = static_cast<Recorder *>(symbol);
                log.append(QString(what) + (recorder ? recorder->name() : "none"));
            };
        };
        QObject::connect(layer.get(), &Map::SymbolLayer::symbolHovered, write("hovered "));
        QObject::connect(layer.get(), &Map::SymbolLayer::symbolPressed, write("pressed "));
        QObject::connect(layer.get(), &Map::SymbolLayer::symbolDoubleClicked, write("double "));
    }

    Recorder *add(const QString &name, double longitude, double latitude)
    {
        auto *symbol = new Recorder(name, longitude, latitude, &log);
        layer->addSymbol(symbol);
        return symbol;
    }

    /** As the canvas offers events to a layer. */
    bool mouse(QEvent::Type type, const QPointF &position, Qt::MouseButton button = Qt::NoButton)
    {
        QMouseEvent event(type, position, button, button, Qt::NoModifier);
        const bool wasInside = std::exchange(inside, layer->isInside(&event, QPointF()));
        if (wasInside && !inside)
            layer->handleLeaveEvent();
        if (type == QEvent::MouseMove)
            return layer->filterMouseMoveEvent(&event, QPointF());
        return type == QEvent::MouseButtonPress
                   ? layer->filterMousePressEvent(&event, QPointF())
                   : layer->filterMouseDoubleClickEvent(&event, QPointF());
    }

    QString takeLog() { return std::exchange(log, {}).join(','); }

    QStringList log;
    TenPerDegree canvas;
    std::unique_ptr<Map::SymbolLayer> layer{new Map::SymbolLayer};
    bool inside{false};
};

} // namespace

class TestMapSymbols : public QObject
{
    Q_OBJECT

private slots:
    void paintsShadowsThenPriorities()
    {
        Stage stage;
        stage.add("south", 1, -2);
        stage.add("nowhere", 0, std::nan(""));
        stage.add("top", 0, -1)->setPriority(Map::Symbol::Highest);
        stage.add("north", 1, 5);
        stage.add("low", 2, 0)->setPriority(Map::Symbol::Low);
        stage.add("hidden", 1, 1)->setVisible(false);
        stage.add("outside", 60, 1);
        stage.layer->sortSymbols();
        stage.add("late", 3, 9);

        const QString drawn = "draw north,draw south,draw late,draw low,draw top";
        stage.canvas.picture();
        QCOMPARE(stage.takeLog(),
                 "shadow north,shadow low,shadow top,shadow south,shadow late," + drawn);
        stage.layer->setShadows(false);
        stage.canvas.picture();
        QCOMPARE(stage.takeLog(), drawn);
        QCOMPARE(static_cast<Recorder *>(stage.layer->symbols()[6])->name(), QString("nowhere"));
    }

    void asksForPositionsWhenShown()
    {
        Stage stage;
        QVector<int> hints;
        connect(stage.layer.get(), &Map::Layer::updateRequested, this,
                [&hints](const Map::Layer::UpdateHints &what) { hints.append(what); });
        stage.layer->setShadows(true);
        stage.layer->setShadows(false);
        QCOMPARE(hints, QVector<int>({1}));
        stage.layer->setVisible(false);
        stage.layer->setShadows(true);
        stage.layer->setVisible(true);
        QCOMPARE(hints, QVector<int>({1, 0, 0, 1}));
        QVERIFY(!stage.layer->hasCursorShape());
    }

    void tellsWhatTheMouseMeets()
    {
        Stage stage;
        stage.add("a", 0, 0);
        stage.add("b", 1, 0); // 10 pixels to the right of it, above it
        stage.canvas.picture();
        stage.takeLog();
        const QPoint onBoth(155, 100);
        const QPoint onB(165, 100);

        QVERIFY(!stage.mouse(QEvent::MouseMove, onA));
        QVERIFY(!stage.mouse(QEvent::MouseMove, onBoth));
        QCOMPARE(stage.takeLog(), QString("hovered a"));
        QVERIFY(!stage.mouse(QEvent::MouseButtonPress, onBoth, Qt::RightButton));
        QVERIFY(!stage.mouse(QEvent::MouseButtonDblClick, onBoth, Qt::RightButton));
        QVERIFY(stage.mouse(QEvent::MouseButtonPress, onBoth, Qt::LeftButton));
        QVERIFY(stage.mouse(QEvent::MouseButtonDblClick, onBoth, Qt::LeftButton));
        QCOMPARE(stage.takeLog(), QString("pressed a,double a"));
        // Rounded, the first of these is one pixel left of it.
        stage.mouse(QEvent::MouseMove, QPointF(160.5, 100));
        QCOMPARE(stage.takeLog(), QString("hovered b"));
        stage.mouse(QEvent::MouseMove, QPointF(160.4, 100));
        stage.mouse(QEvent::MouseMove, onB);
        stage.mouse(QEvent::MouseMove, QPoint(0, 0));
        QCOMPARE(stage.takeLog(), QString("hovered a,hovered b,hovered none"));
        stage.layer->handleLeaveEvent();
        QCOMPARE(stage.takeLog(), QString("hovered none"));
        QVERIFY(!stage.mouse(QEvent::MouseButtonPress, QPoint(0, 0), Qt::LeftButton));
        // Hidden symbols are met as well.
        stage.layer->symbols().first()->setVisible(false);
        stage.mouse(QEvent::MouseMove, onA);
        QCOMPARE(stage.takeLog(), QString("hovered a"));
    }

    void forgetsSymbolsThatGo()
    {
        Stage stage;
        Recorder *a = stage.add("a", 0, 0);
        Recorder *b = stage.add("b", 5, 0);
        stage.add("c", 10, 0);
        stage.canvas.picture();
        stage.mouse(QEvent::MouseMove, onA);
        stage.takeLog();

        QVERIFY(stage.layer->removeSymbol(b));
        QCOMPARE(stage.takeLog(), QString("~b"));
        QVERIFY(!stage.layer->removeSymbol(b));
        for (int index : {-1, 2}) {
            QVERIFY(!stage.layer->removeSymbol(index));
            QVERIFY(!stage.layer->takeSymbol(index));
        }
        QVERIFY(stage.layer->takeSymbol(a));
        QCOMPARE(stage.takeLog(), QString("hovered none"));
        QVERIFY(!stage.mouse(QEvent::MouseButtonPress, onA, Qt::LeftButton));
        stage.layer->addSymbol(nullptr);
        stage.layer->addSymbol(a);
        stage.mouse(QEvent::MouseMove, onA);
        stage.takeLog();
        stage.layer->clear();
        QCOMPARE(stage.takeLog(), QString("~c,~a,hovered none"));
        QVERIFY(stage.layer->symbols().isEmpty());
        stage.layer->clear();
        QCOMPARE(stage.takeLog(), QString());
    }

    void survivesReceiversThatDelete_data()
    {
        QTest::addColumn<QByteArray>("signal");
        for (const char *signal :
             {SIGNAL(symbolHovered(Norvu::Gui::Map::Symbol *)),
              SIGNAL(symbolPressed(Norvu::Gui::Map::Symbol *)),
              SIGNAL(symbolDoubleClicked(Norvu::Gui::Map::Symbol *)),
              SIGNAL(visibilityChanged(bool)),
              SIGNAL(updateRequested(QFlags<Tellarix::Gui::Map::Layer::UpdateHint>))})
            QTest::newRow(signal) << QByteArray(signal);
    }

    void survivesReceiversThatDelete()
    {
        QFETCH(QByteArray, signal);

        for (bool all : {false, true}) {
            Stage stage;
            stage.add("a", 0, 0);
            stage.canvas.picture();
            const Interference interference(stage.layer.get(), signal, [&] {
                if (all)
                    stage.layer.reset();
                else
                    stage.layer->removeSymbol(0);
            });
            for (QEvent::Type type :
                 {QEvent::MouseMove, QEvent::MouseButtonPress, QEvent::MouseButtonDblClick}) {
                if (!interference.done)
                    stage.mouse(type, onA, Qt::LeftButton);
            }
            if (!interference.done)
                stage.layer->setVisible(false);
            QVERIFY(interference.done);
            QVERIFY(stage.takeLog().contains("~a"));
            QVERIFY(all || !stage.mouse(QEvent::MouseButtonPress, onA, Qt::LeftButton));
        }
    }
};

QTEST_MAIN(TestMapSymbols)
#include "tst_mapsymbols.moc"
