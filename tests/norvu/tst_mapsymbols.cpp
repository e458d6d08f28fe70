// SPDX-License-Identifier: LGPL-3.0-or-later

#include "interference.h"
#include "mapsymbols.h"
#include "rowname.h"

#include <norvu/gui/map/annotationlayer.h>
#include <norvu/gui/map/labelbins_p.h>
#include <norvu/gui/map/symbollayer.h>
#include <tellarix/qt/map/legend.h>

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

/** The plain form: a list of rectangles for each row. */
QVector<bool> placedPlainly(const QVector<QRect> &rects, const QSize &canvas, int rowHeight)
{
    const int rows = canvas.height() / rowHeight + 1;
    QVector<QVector<QRect>> bins(rows);
    QVector<bool> placed;
    for (const QRect &rect : rects) {
        const int center = (rect.left() + rect.right()) / 2;
        const int first = qMax(rect.top() / rowHeight, 0);
        const int last = rect.bottom() / rowHeight;
        bool free = center >= 0 && center < canvas.width() && first < rows && last >= 0;
        for (int row = first; free && row <= qMin(last, rows - 1); ++row)
            free = std::none_of(bins[row].cbegin(), bins[row].cend(),
                                [&](const QRect &other) { return other.intersects(rect); });
        for (int row = first; free && row <= qMin(last, rows - 1); ++row)
            bins[row].append(rect);
        placed.append(free);
    }
    return placed;
}

/** Writes down whom it paints. */
struct Plate : Tellarix::Gui::Map::Legend
{
    explicit Plate(const QSize &size) { setSize(size); }
    void draw(const QRect &, QPainter &) override {}
};

class Writer : public AnnotationStyle
{
public:
    void draw(QPainter &, const AnnotationItem &item) override { painted.append(item.text); }
    QStringList painted;
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

    void survivesReceiversThatDelete()
    {
        const char *const signalNames[] = {
            SIGNAL(symbolHovered(Norvu::Gui::Map::Symbol *)),
            SIGNAL(symbolPressed(Norvu::Gui::Map::Symbol *)),
            SIGNAL(symbolDoubleClicked(Norvu::Gui::Map::Symbol *)), SIGNAL(visibilityChanged(bool)),
            SIGNAL(updateRequested(QFlags<Tellarix::Gui::Map::Layer::UpdateHint>))};
        for (int i = 0; i < 10; ++i) {
            const char *const signal = signalNames[i / 2];
            const RowName shown(signal);
            const bool all = i % 2;
            Stage stage;
            stage.add("a", 0, 0);
            stage.canvas.picture();
            stage.layer->setVisible(false);
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
                stage.layer->setVisible(true);
            QVERIFY(interference.done);
            QVERIFY(stage.takeLog().contains("~a"));
            QVERIFY(all || !stage.mouse(QEvent::MouseButtonPress, onA, Qt::LeftButton));
        }
    }

    void placesLikeThePlainForm()
    {
        const quint32 seed = QRandomGenerator::global()->generate();
        qInfo("seed %u", seed);
        QRandomGenerator random(seed);
        using Case = std::tuple<QSize, int, int>;
        for (const auto &[canvas, rowHeight, largest] :
             {Case({400, 300}, 17, 60), Case({40, 30}, 5, 3), Case({300, 10}, 100, 30),
              Case({40, 30}, 0, 9)}) {
            // The second one touches nothing.
            QVector<QRect> rects{QRect(5, 5, 9, 9), QRect(8, 8, 0, 0)};
            for (int i = 0; i < 3000; ++i) {
                // Partly out of the canvas, some of them empty, null or the wrong way round.
                const int lowest = i % 8 == 0 ? -3 : 1;
                rects.append(QRect(random.bounded(-30, canvas.width() + 30),
                                   random.bounded(-30, canvas.height() + 30),
                                   random.bounded(lowest, largest),
                                   random.bounded(lowest, largest)));
            }
            Map::LabelBins bins(canvas, rowHeight);
            QVector<bool> placed;
            for (const QRect &rect : qAsConst(rects))
                placed.append(bins.place(rect));
            QCOMPARE(placed, placedPlainly(rects, canvas, qMax(rowHeight, 1)));
        }
    }

    void paintsLabelsThatFindRoom()
    {
        Writer writer;
        Annotations pool;
        pool.setStyle(&writer);
        const auto add = [&pool](const QString &text, int x) {
            AnnotationItem *item = pool.add(text);
            item->rect = QRect(x, 50, 40, 12);
            return item;
        };
        add("first", 50);
        add("left out", 80)->highlighted = true;
        add("beside the one left out", 110);
        add("hidden", 200)->visible = false;
        add("where nothing is seen", 200);
        add("nowhere", 0)->rect = QRect();
        add("without a style", 0)->style = nullptr;
        add("last", 0);
        add("below the legend", 250);
        Map::AnnotationLayer layer(nullptr, &pool);
        layer.addLegend(new Plate({40, 60}));
        TenPerDegree canvas;
        canvas.addLayer(&layer);
        canvas.picture();
        QCOMPARE(writer.painted.join(','),
                 QString("first,beside the one left out,where nothing is seen,last"));
    }

    void labelsGoWithWhoeverGoesFirst()
    {
        auto pool = std::make_unique<Annotations>();
        auto style = std::make_unique<AnnotationStyle>();
        pool->setStyle(style.get());
        auto first = std::make_unique<Recorder>("a", 0, 0);
        Recorder second("b", 0, 0);
        first->setAnnotation("no list", nullptr);
        first->setAnnotation("first", pool.get());
        second.setAnnotation("second", pool.get());
        second.setAnnotation("renamed", nullptr);
        AnnotationItem *item = pool->items().first();
        style.reset();
        QCOMPARE(item->style, pool->style());

        // An item that is let go outlives the list, but not the style of the list.
        QVERIFY(pool->take(item) && !pool->take(item) && !item->pool && !item->style);
        QCOMPARE(first->annotation(), QString("first"));
        first->setAnnotation("", nullptr);
        QCOMPARE(first->annotation(), QString());
        QVERIFY(!first->setAnnotationHighlight(true) && !first->isAnnotationHighlighted());
        first->setAnnotation("again", pool.get());
        QVERIFY(first->setAnnotationHighlight(true) && !first->setAnnotationHighlight(true));
        first.reset();
        QCOMPARE(pool->items().size(), 1);
        QCOMPARE(second.annotation(), QString("renamed"));

        Map::AnnotationLayer layer(nullptr, pool.get());
        pool.reset();
        QCOMPARE(second.annotation(), QString());
        TenPerDegree canvas;
        canvas.addLayer(&layer);
        canvas.picture();
    }

    void itemsKeepTheirOrder()
    {
        Annotations pool;
        QVector<AnnotationItem *> items;
        for (int i = 0; i < 9; ++i)
            items.append(pool.add(QString::number(i)));
        for (int i : {0, 5, 3})
            QVERIFY(pool.remove(items[i]));
        QVERIFY(!pool.remove(items[5]) && !pool.remove(nullptr));
        items.append(pool.add("9"));
        // The list is looked at in between, so that its gaps are closed.
        using Case = QPair<int, const char *>;
        for (const auto &[gone, left] : {Case(1, "246789"), Case(7, "24689")}) {
            delete items[gone];
            QString texts;
            for (const AnnotationItem *item : pool.items())
                texts.append(item->text);
            QCOMPARE(texts, QString(left));
        }
    }

    void labelsFollowTheirSymbols()
    {
        Writer writer;
        Annotations pool;
        pool.setStyle(&writer);
        Map::SymbolLayer symbols;
        Map::AnnotationLayer labels(nullptr, &pool);
        TenPerDegree canvas;
        canvas.addLayer(&symbols);
        canvas.addLayer(&labels);
        auto *shown = new Recorder("shown", 0, 0);
        for (Recorder *symbol : {shown, new Recorder("outside", 90, 0)}) {
            symbol->setAnnotation(symbol->name(), &pool);
            symbols.addSymbol(symbol);
        }
        const auto isPainted = [&](bool painted) {
            writer.painted.clear();
            canvas.picture();
            return writer.painted == (painted ? QStringList("shown") : QStringList());
        };
        QVERIFY(isPainted(true));
        QCOMPARE(pool.items().first()->rect.bottom(), 100);
        shown->setVisible(false);
        QVERIFY(isPainted(false));
        shown->setVisible(true);
        QVERIFY(isPainted(true));
        symbols.setVisible(false);
        QVERIFY(isPainted(false));
        // New positions don't bring the labels of a hidden layer back.
        symbols.calculateMapPosition(&canvas);
        QVERIFY(isPainted(false));
        symbols.setVisible(true);
        QVERIFY(isPainted(true));
        const std::unique_ptr<Map::Symbol> taken(symbols.takeSymbol(0));
        QVERIFY(taken.get() == shown && isPainted(false));
    }
};

QTEST_MAIN(TestMapSymbols)
#include "tst_mapsymbols.moc"
