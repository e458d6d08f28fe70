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
    QVector<QList<QRect>> bins(rows);
    const auto place = [&](const QRect &rect) {
        const int center = (rect.left() + rect.right()) / 2;
        const int first = rect.top() / rowHeight;
        const int last = rect.bottom() / rowHeight;
        if (center < 0 || center >= canvas.width() || first >= rows || last < 0)
            return false;
        for (int row = qMax(first, 0); row <= qMin(last, rows - 1); ++row) {
            for (const QRect &other : qAsConst(bins[row])) {
                if (other.intersects(rect))
                    return false;
            }
        }
        for (int row = qMax(first, 0); row <= qMin(last, rows - 1); ++row)
            bins[row].append(rect);
        return true;
    };
    QVector<bool> placed;
    std::transform(rects.begin(), rects.end(), std::back_inserter(placed), place);
    return placed;
}

/** Writes down whom it paints. */
class Writer : public AnnotationStyle
{
public:
    void draw(QPainter &, const AnnotationItem &item) override { painted.append(item.text); }
    QStringList painted;
};

struct Label
{
    const char *text;
    QRect rect;
};

} // namespace

Q_DECLARE_METATYPE(QVector<Label>)

class TestMapAnnotations : public QObject
{
    Q_OBJECT

private slots:
    void placesLikeThePlainForm_data()
    {
        QTest::addColumn<QSize>("canvas");
        QTest::addColumn<int>("rowHeight");
        QTest::addColumn<int>("largest");
        QTest::newRow("labels") << QSize(400, 300) << 17 << 60;
        QTest::newRow("many rows each") << QSize(200, 200) << 3 << 40;
        QTest::newRow("specks") << QSize(40, 30) << 5 << 3;
        QTest::newRow("one row") << QSize(300, 10) << 100 << 30;
        QTest::newRow("no canvas") << QSize(0, 0) << 10 << 30;
    }

    void placesLikeThePlainForm()
    {
        QFETCH(QSize, canvas);
        QFETCH(int, rowHeight);
        QFETCH(int, largest);

        const quint32 seed = QRandomGenerator::global()->generate();
        qInfo("seed %u", seed);
        QRandomGenerator random(seed);
        QVector<QRect> rects;
        for (int i = 0; i < 3000; ++i) {
            // Partly out of the canvas, some of them empty, null or the wrong way round.
            const int lowest = random.bounded(8) == 0 ? -3 : 1;
            const QPoint corner(random.bounded(-30, canvas.width() + 30),
                                random.bounded(-30, canvas.height() + 30));
            rects.append(QRect(
                corner, QSize(random.bounded(lowest, largest), random.bounded(lowest, largest))));
        }
        Map::LabelBins bins(canvas, rowHeight);
        QVector<bool> placed;
        for (const QRect &rect : qAsConst(rects))
            placed.append(bins.place(rect));
        QCOMPARE(placed, placedPlainly(rects, canvas, rowHeight));
    }

    void paintsLabelsThatFindRoom_data()
    {
        QTest::addColumn<QVector<Label>>("labels");
        QTest::addColumn<QString>("painted");

        const auto at = [](int x, int y) { return QRect(x, y, 40, 12); };
        using Labels = QVector<Label>;
        QTest::newRow("same place") << Labels{{"a", at(50, 50)}, {"b", at(50, 50)}} << "a";
        QTest::newRow("touching") << Labels{{"a", at(50, 50)}, {"b", at(90, 50)}} << "a,b";
        QTest::newRow("left out takes no room")
            << Labels{{"a", at(50, 50)}, {"b", at(80, 50)}, {"c", at(110, 50)}} << "a,c";
        QTest::newRow("highlighted comes no earlier")
            << Labels{{"a", at(50, 50)}, {"b!", at(60, 55)}} << "a";
        QTest::newRow("above, partly and far")
            << Labels{{"a", at(50, -5)}, {"b", at(60, 2)}, {"c", at(150, -99)}} << "a";
        QTest::newRow("centre outside")
            << Labels{{"a", at(-21, 50)}, {"b", at(-20, 50)}, {"c", at(281, 50)}} << "b";
        QTest::newRow("hidden") << Labels{{"a?", at(50, 50)}, {"b", at(50, 50)}} << "b";
        QTest::newRow("without a place") << Labels{{"a", QRect()}, {"b", at(0, 0)}} << "b";
    }

    void paintsLabelsThatFindRoom()
    {
        QFETCH(QVector<Label>, labels);

        Writer writer;
        Annotations pool;
        pool.setStyle(&writer);
        for (const Label &label : qAsConst(labels)) {
            AnnotationItem *item = pool.add(label.text);
            item->rect = label.rect;
            item->highlighted = item->text.endsWith('!');
            item->visible = !item->text.endsWith('?');
        }
        Map::AnnotationLayer layer(nullptr, &pool);
        TenPerDegree canvas;
        canvas.addLayer(&layer);
        canvas.picture();
        QTEST(writer.painted.join(','), "painted");
    }

    void paintsWithoutPoolAndStyle()
    {
        auto pool = std::make_unique<Annotations>();
        Map::AnnotationLayer layer(nullptr, pool.get());
        TenPerDegree canvas;
        canvas.addLayer(&layer);
        AnnotationItem *item = pool->add("label");
        item->rect = QRect(50, 50, 40, 12);
        QVERIFY(canvas.picture() != TenPerDegree().picture());
        item->style = nullptr;
        QCOMPARE(canvas.picture(), TenPerDegree().picture());
        pool.reset();
        QCOMPARE(canvas.picture(), TenPerDegree().picture());
    }

    void boxesStandOnTheirAnchor()
    {
        QImage image(100, 100, QImage::Format_RGB32);
        QPainter painter(&image);
        AnnotationStyle style;
        AnnotationItem item;
        QCOMPARE(style.itemRect(painter, item, QPoint(50, 80)), QRect(0, 0, 0, 0));

        // The second round finds what was measured in the first one to be out of date.
        for (const char *text : {"M 5", "a longer one"}) {
            for (int points : {9, 14}) {
                QFont font = style.font();
                font.setPointSize(points);
                style.setFont(font);
                item.text = text;
                const QRect box = style.itemRect(painter, item, QPoint(50, 80));
                const QFontMetrics metrics(painter.font(), &image);
                const QSize ink = metrics.boundingRect(text).size();
                const int margin = metrics.height() / 4;
                QCOMPARE(box.size(), ink + QSize(2 * margin, 2 * margin));
                QCOMPARE(box.bottom(), 80);
                QCOMPARE(box.left() + margin + ink.width() / 2, 50);
            }
        }
    }

    void highlightedLabelsAreInverted()
    {
        AnnotationItem item;
        item.text = "M 5";
        item.rect = QRect(10, 10, 60, 30);
        AnnotationStyle style;
        // Black and white through boxes of three quarters' opacity.
        for (const QPair<bool, int> &look : {qMakePair(false, 87), qMakePair(true, 255)}) {
            item.highlighted = look.first;
            QImage image(100, 60, QImage::Format_RGB32);
            image.fill(Qt::white);
            QPainter painter(&image);
            style.draw(painter, item);
            QCOMPARE(qGray(image.pixel(13, 25)), look.second);
            QCOMPARE(image.pixel(10, 25), qRgb(160, 160, 164));
            QVERIFY(qGray(image.pixel(10, 10)) > 200); // a round corner
        }
    }

    void labelsGoWithWhoeverGoesFirst()
    {
        auto pool = std::make_unique<Annotations>();
        auto style = std::make_unique<AnnotationStyle>();
        pool->setStyle(style.get());
        auto first = std::make_unique<Recorder>("a", 0, 0);
        Recorder second("b", 0, 0);
        first->setAnnotation("first", pool.get());
        second.setAnnotation("second", pool.get());
        second.setAnnotation("renamed", nullptr);
        const AnnotationItem *item = pool->items().first();
        style.reset();
        QCOMPARE(item->style, pool->style());

        // An item that is let go outlives the list, but not the style of the list.
        QVERIFY(pool->take(item));
        QVERIFY(!pool->take(item));
        QVERIFY(!item->pool && !item->style);
        QCOMPARE(first->annotation(), QString("first"));
        first->setAnnotation("", nullptr);
        QCOMPARE(first->annotation(), QString());
        QVERIFY(!first->setAnnotationHighlight(true) && !first->isAnnotationHighlighted());
        first->setAnnotation("without a list", nullptr);
        QCOMPARE(first->annotation(), QString());

        first->setAnnotation("again", pool.get());
        QVERIFY(first->setAnnotationHighlight(true) && !first->setAnnotationHighlight(true));
        first.reset();
        QCOMPARE(pool->items().size(), 1);
        QCOMPARE(pool->items().first()->text, QString("renamed"));
        pool.reset();
        QCOMPARE(second.annotation(), QString());
    }

    void labelsKeepTheirOrder()
    {
        Annotations pool;
        QVector<AnnotationItem *> items;
        for (int i = 0; i < 9; ++i)
            items.append(pool.add(QString::number(i)));
        for (int i : {0, 5, 3})
            QVERIFY(pool.remove(items[i]));
        QVERIFY(!pool.remove(items[5]));
        QVERIFY(!pool.remove(nullptr));
        pool.add("9");
        delete items[1];
        QStringList texts;
        for (const AnnotationItem *item : pool.items())
            texts.append(item->text);
        QCOMPARE(texts.join(""), QString("246789"));
        pool.clear();
        QVERIFY(pool.items().isEmpty());
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
