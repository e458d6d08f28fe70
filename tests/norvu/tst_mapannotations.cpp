// SPDX-License-Identifier: LGPL-3.0-or-later

#include "ink.h"
#include "mapsymbols.h"

#include <norvu/gui/map/annotationlayer.h>
#include <norvu/gui/map/labelbins_p.h>
#include <norvu/gui/map/symbollayer.h>

#include <QRandomGenerator>
#include <QtTest>

#include <memory>

using namespace Norvu::Gui;
using MapTesting::Recorder;
using MapTesting::TenPerDegree;

namespace {

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
class Writer : public AnnotationStyle
{
public:
    void draw(QPainter &, const AnnotationItem &item) override { painted.append(item.text); }
    QStringList painted;
};

} // namespace

class TestMapAnnotations : public QObject
{
    Q_OBJECT

private slots:
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
        Map::AnnotationLayer layer(nullptr, &pool);
        TenPerDegree canvas;
        canvas.addLayer(&layer);
        canvas.picture();
        QCOMPARE(writer.painted.join(','),
                 QString("first,beside the one left out,where nothing is seen,last"));
    }

    void boxesStandOnTheirAnchor()
    {
        QImage image(100, 100, QImage::Format_RGB32);
        QPainter painter(&image);
        AnnotationStyle style;
        AnnotationItem item;
        QVERIFY(style.itemRect(painter, item, QPoint(50, 80)).isNull());
        // What was measured for one text and font holds for no other.
        using Case = QPair<const char *, int>;
        for (const Case &of : {Case("M 5", 9), Case("M 5", 14), Case("a longer one", 14)}) {
            QFont font;
            font.setPointSize(of.second);
            style.setFont(font);
            item.text = of.first;
            const QRect box = style.itemRect(painter, item, QPoint(50, 80));
            const QFontMetrics metrics(font, &image);
            const QSize ink = metrics.boundingRect(item.text).size();
            const int margin = metrics.height() / 4;
            QCOMPARE(box.size(), ink + QSize(2 * margin, 2 * margin));
            QCOMPARE(QPoint(box.left() + margin + ink.width() / 2, box.bottom()), QPoint(50, 80));
        }
        // Nor does a painter that paints nowhere end the process.
        for (const char *call : {"setFont", "fontMetrics", "font"})
            QTest::ignoreMessage(QtWarningMsg,
                                 QByteArray("QPainter::") + call + ": Painter not active");
        QPainter nowhere;
        style.itemRect(nowhere, item, QPoint(50, 80));
    }

    void highlightedLabelsAreInverted()
    {
        AnnotationItem item;
        item.rect = QRect(10, 10, 60, 30);
        for (bool highlighted : {false, true}) {
            item.highlighted = highlighted;
            QImage image(100, 60, QImage::Format_RGB32);
            image.fill(Qt::white);
            QPainter painter(&image);
            AnnotationStyle().draw(painter, item);
            // Dark grey or white of three quarters' opacity, within grey, round at the corners.
            QCOMPARE(qGray(image.pixel(13, 25)), highlighted ? 255 : 87);
            QCOMPARE(image.pixel(10, 25), qRgb(160, 160, 164));
            QVERIFY(qGray(image.pixel(10, 10)) > 200);
        }
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
        QVERIFY(pool->take(item) && !pool->take(item));
        QVERIFY(!item->pool && !item->style);
        QCOMPARE(first->annotation(), QString("first"));
        first->setAnnotation("", nullptr);
        QCOMPARE(first->annotation(), QString());
        QVERIFY(!first->setAnnotationHighlight(true) && !first->isAnnotationHighlighted());
        first->setAnnotation("again", pool.get());
        QVERIFY(first->setAnnotationHighlight(true) && !first->setAnnotationHighlight(true));
        first.reset();
        QCOMPARE(pool->items().size(), 1);
        QCOMPARE(pool->items().first()->text, QString("renamed"));

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
        pool.add("9");
        delete items[1];
        const auto texts = [&pool] {
            QString all;
            for (const AnnotationItem *item : pool.items())
                all.append(item->text);
            return all;
        };
        QCOMPARE(texts(), QString("246789"));
        delete items[7];
        QCOMPARE(texts(), QString("24689"));
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
        auto *outside = new Recorder("outside", 90, 0);
        for (Recorder *symbol : {shown, outside}) {
            symbol->setAnnotation(symbol->name(), &pool);
            symbols.addSymbol(symbol);
        }
        const auto painted = [&] {
            writer.painted.clear();
            canvas.picture();
            return writer.painted.join(',');
        };
        QCOMPARE(painted(), QString("shown"));
        QCOMPARE(pool.items().first()->rect.bottom(), 100);
        shown->setVisible(false);
        QCOMPARE(painted(), QString());
        shown->setVisible(true);
        QCOMPARE(painted(), QString("shown"));
        symbols.setVisible(false);
        QCOMPARE(painted(), QString());
        // New positions don't bring the labels of a hidden layer back.
        symbols.update();
        QCOMPARE(painted(), QString());
        symbols.setVisible(true);
        QCOMPARE(painted(), QString("shown"));
        const std::unique_ptr<Map::Symbol> taken(symbols.takeSymbol(0));
        QCOMPARE(taken.get(), shown);
        QCOMPARE(painted(), QString());
    }
};

QTEST_MAIN(TestMapAnnotations)
#include "tst_mapannotations.moc"
