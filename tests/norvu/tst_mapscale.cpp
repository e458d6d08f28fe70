// SPDX-License-Identifier: LGPL-3.0-or-later

#include "ink.h"
#include "mapsymbols.h"

#include <norvu/gui/legend.h>
#include <norvu/gui/map/scalelayer.h>

#include <QPushButton>
#include <QtTest>

#include <memory>

using namespace Norvu::Gui;
using MapTesting::Canvas;
using MapTesting::OwnScheme;
using MapTesting::TenPerDegree;
using Tellarix::Gui::Gradient;

namespace {

/** Width of the bar's black and grey segments on a map. */
int barLength(Canvas &canvas)
{
    Map::ScaleLayer layer(nullptr, Qt::AlignLeft | Qt::AlignTop);
    canvas.addLayer(&layer);
    QImage image(canvas.size(), QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    canvas.draw(painter);
    // The row of the bar is the last one that has light grey; the text above may hold black.
    const int row = Ink::rectOfColor(image, Qt::lightGray).bottom();
    const QRect line(12, row, image.width(), 1);
    return Ink::rectOf(image, line,
                       [](QRgb pixel) {
                           return pixel == qRgb(0, 0, 0) || pixel == QColor(Qt::lightGray).rgb();
                       })
        .width();
}

/** Shows a legend on a map and gives the picture. */
QImage pictureOf(Legend &legend, TenPerDegree &canvas)
{
    QImage image = canvas.picture();
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    legend.calculateMapPosition(&canvas);
    legend.draw(&canvas, painter);
    return image;
}

Gradient gradientOf(const QVector<double> &keys)
{
    Gradient gradient;
    for (int i = 0; i < keys.size(); ++i)
        gradient.setColorAt(keys[i], i == 0 ? Qt::red : i == 1 ? Qt::blue : Qt::green);
    return gradient;
}

} // namespace

class TestMapScale : public QObject
{
    Q_OBJECT

private slots:
    void barsAreRound_data()
    {
        QTest::addColumn<double>("ideal"); // km of a segment of 37.5 pixels
        QTest::addColumn<double>("total");
        QTest::addColumn<int>("length");
        QTest::newRow("400 m") << 0.12 << 0.4 << 125;
        QTest::newRow("1 km") << 0.251 << 1.2 << 179;
        QTest::newRow("to the next power") << 9.6 << 40.0 << 156;
        QTest::newRow("down") << 1.49 << 4.0 << 100;
        QTest::newRow("up") << 1.51 << 8.0 << 198;
        QTest::newRow("world") << 9800.0 << 40000.0 << 153;
    }

    void barsAreRound()
    {
        QFETCH(double, ideal);
        QFETCH(double, total);

        const double scale = 37.5 / ideal;
        const Map::ScaleBar bar = Map::scaleBar(scale);
        QVERIFY(qFuzzyCompare(bar.totalKm, total));
        QTEST(bar.length, "length");
        QCOMPARE(bar.segmentLength, static_cast<int>(scale * total / 4));
    }

    void standsInCornersAndAtEdges_data()
    {
        QTest::addColumn<int>("alignment");
        QTest::addColumn<QPoint>("corner");
        QTest::newRow("left top") << int(Qt::AlignLeft | Qt::AlignTop) << QPoint(10, 10);
        QTest::newRow("right bottom") << int(Qt::AlignRight | Qt::AlignBottom) << QPoint(241, 171);
        QTest::newRow("middle") << int(Qt::AlignCenter) << QPoint(125, 90);
        QTest::newRow("top before bottom")
            << int(Qt::AlignTop | Qt::AlignBottom | Qt::AlignHCenter) << QPoint(125, 10);
        QTest::newRow("nowhere") << 0 << QPoint(-3, -4);
    }

    void standsInCornersAndAtEdges()
    {
        QFETCH(int, alignment);
        QFETCH(QPoint, corner);
        const QRect box(-3, -4, 50, 20);
        QCOMPARE(Map::alignedOnCanvas(box, QSize(300, 200), Qt::Alignment(alignment)),
                 QRect(corner, box.size()));
    }

    void measuresInTheMiddleOfTheMap()
    {
        // 11.3 pixels are a km at the equator: 150 of them ask for segments of 3.3 km, and 3 km are
        // 33 pixels. At 60 degrees of latitude a km has twice as many, and 2 km are 45 pixels.
        Canvas canvas;
        canvas.setProjection(new Tellarix::Gui::Map::Mercator);
        canvas.setSize(QSize(600, 200));
        canvas.setView(QPointF(0, 0), 1250);
        QCOMPARE(barLength(canvas), 4 * 33);
        canvas.setView(QPointF(0, 60), 1250);
        QVERIFY(qAbs(barLength(canvas) - 4 * 45) <= 4);
        // Where the quarter points are off the globe, the equator's degrees stand in.
        canvas.setView(QPointF(0, 0), 0.6);
        QVERIFY(barLength(canvas) > 80);
    }

    void drawsOnTheSmallestMaps()
    {
        Map::ScaleLayer layer;
        for (const QSize &size : {QSize(0, 0), QSize(1, 1), QSize(2, 40), QSize(40, 3)}) {
            Canvas canvas;
            canvas.setSize(size);
            canvas.addLayer(&layer);
            QImage image(100, 60, QImage::Format_RGB32);
            image.fill(Qt::blue);
            QPainter painter(&image);
            canvas.draw(painter);
            layer.draw(&canvas, painter);
            canvas.removeLayer(&layer);
        }
    }

    void legendsHaveAFrame_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QVector<double>>("keys");
        QTest::addColumn<QPoint>("pos");
        QTest::addColumn<QSize>("frame"); // without the texts
        QTest::addColumn<QPoint>("corner");

        using Keys = QVector<double>;
        QTest::newRow("nothing") << "" << Keys() << QPoint(10, 20) << QSize(30, 12)
                                 << QPoint(10, 20);
        QTest::newRow("rows") << "" << Keys{0, 0.5} << QPoint(10, 20) << QSize(30, 46)
                              << QPoint(10, 20);
        QTest::newRow("title") << "A rather long title" << Keys{0, 0.5, 700} << QPoint(10, 20)
                               << QSize(12, 68) << QPoint(10, 20);
        QTest::newRow("other corner")
            << "" << Keys() << QPoint(-1, -11) << QSize(30, 12) << QPoint(270, 178);
    }

    void legendsHaveAFrame()
    {
        QFETCH(QString, title);
        QFETCH(QVector<double>, keys);
        QFETCH(QPoint, pos);
        QFETCH(QSize, frame);

        OwnScheme scheme;
        scheme->legend = {QColor(250, 250, 250), Qt::cyan, Qt::magenta, Qt::darkYellow};
        TenPerDegree canvas;
        Legend legend(title);
        legend.setGradient(gradientOf(keys));
        legend.setPos(pos);
        const QImage picture = pictureOf(legend, canvas);

        QFont bold = canvas.font();
        bold.setWeight(QFont::Bold);
        const QRect titleInk = QFontMetrics(bold).boundingRect(title);
        if (!title.isEmpty())
            frame += QSize(titleInk.width(), titleInk.height() + 24);
        else if (!keys.isEmpty())
            frame.rwidth() += QFontMetrics(canvas.font()).horizontalAdvance("0.5");
        // The border's right and bottom lines lie outside of the frame, as outlines do.
        const QRect border = Ink::rectOfColor(picture, Qt::cyan);
        QCOMPARE(border, QRect(border.topLeft(), frame + QSize(1, 1)) & picture.rect());
        QTEST(border.topLeft(), "corner");
        QCOMPARE(Ink::rectOfColor(picture, Qt::magenta).isNull(), title.isEmpty());
        QVERIFY(!legend.isInside(border.left() + 3, border.top() + 3));

        const QPoint rows = legend.contentPos();
        const int left = 6 + 12; // one square's width is kept free, as there is room for it
        QCOMPARE(rows, border.topLeft() +
                           QPoint(left, frame.height() - 6 - qMax(0, 22 * keys.size() - 10)));
        for (int i = 0; i < keys.size(); ++i) {
            const QRect square(rows + QPoint(1, 22 * (keys.size() - 1 - i) + 1), QSize(11, 11));
            QCOMPARE(Ink::rectOfColor(picture, i == 0   ? Qt::red
                                               : i == 1 ? Qt::blue
                                                        : Qt::green),
                     square);
        }
    }

    void legendsKeepTheirNumbersOnTheMap()
    {
        OwnScheme scheme;
        scheme->legend.text = Qt::magenta;
        TenPerDegree canvas;
        Legend legend("");
        legend.setGradient(gradientOf({1000000}));
        const auto numberWidth = [&](const QPoint &pos) {
            legend.setPos(pos);
            return Ink::rectOf(pictureOf(legend, canvas), QRect(QPoint(), canvas.size()),
                               [](QRgb pixel) { return qGreen(pixel) < 100 && qRed(pixel) > 200; })
                .width();
        };
        QVERIFY(numberWidth(QPoint(10, 20)) > 10);
        QCOMPARE(numberWidth(QPoint(-1, 20)), numberWidth(QPoint(10, 20)));
    }

    void widgetsFollowTheirLegend()
    {
        TenPerDegree canvas;
        Legend legend("");
        auto widget = std::make_unique<QPushButton>("some text");
        const QSize hint = widget->sizeHint();
        legend.attachWidget(widget.get());
        legend.setPos(QPoint(-1, -1));
        legend.calculateMapPosition(&canvas);
        QCOMPARE(widget->pos(), QPoint(300 - 12 - hint.width(), 200 - 6 - hint.height()));
        QCOMPARE(legend.contentPos(), widget->pos());
        legend.setVisible(true);
        QVERIFY(widget->isVisible());
        legend.setVisible(false);
        QVERIFY(!widget->isVisible() && !legend.isVisible());
        widget.reset();
        legend.setVisible(true);
        legend.calculateMapPosition(&canvas);
        legend.attachWidget(nullptr);
        legend.calculateMapPosition(&canvas);
        QCOMPARE(legend.contentPos(), QPoint(300 - 30 + 18, 200 - 6));
    }
};

QTEST_MAIN(TestMapScale)
#include "tst_mapscale.moc"
