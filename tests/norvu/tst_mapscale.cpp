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
using MapTesting::TenPerDegree;
using Tellarix::Gui::Gradient;

namespace {

const QColor StopColors[] = {Qt::red, Qt::blue, Qt::green};

/** Width of the black and grey segments of a map's scale. */
int barLength(Canvas &canvas)
{
    QImage image(400, 100, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    canvas.draw(painter);
    Map::ScaleLayer(nullptr, Qt::AlignLeft | Qt::AlignTop).draw(&canvas, painter);
    const int row = Ink::rectOfColor(image, Qt::lightGray).bottom();
    return Ink::rectOf(image, QRect(12, row, 400, 1),
                       [](QRgb pixel) {
                           return pixel == qRgb(0, 0, 0) || pixel == QColor(Qt::lightGray).rgb();
                       })
        .width();
}

/** Shows a legend of a gradient with some keys on a map and gives the picture. */
QImage pictureOf(Legend &legend, const QVector<double> &keys, TenPerDegree &canvas)
{
    Gradient gradient;
    for (int i = 0; i < keys.size(); ++i)
        gradient.setColorAt(keys[i], StopColors[i]);
    legend.setGradient(gradient);
    QImage image = canvas.picture();
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    legend.calculateMapPosition(&canvas);
    legend.draw(&canvas, painter);
    return image;
}

} // namespace

class TestMapScale : public QObject
{
    Q_OBJECT

private slots:
    void barsAreRound()
    {
        // The km that 37.5 pixels have, those of the bar of four segments, and its pixels.
        using Case = std::tuple<double, double, QString, int>;
        for (const auto &[ideal, total, text, length] :
             {Case(0.12, 0.4, "400 m", 125), Case(0.24, 0.8, "800 m", 125),
              Case(0.251, 1.2, "1.2 km", 179), Case(1.49, 4, "4 km", 100),
              Case(1.51, 8, "8 km", 198), Case(9.6, 40, "40 km", 156),
              Case(9800, 40000, "40000 km", 153)}) {
            const Map::ScaleBar bar = Map::scaleBar(37.5 / ideal);
            QVERIFY(qFuzzyCompare(bar.totalKm, total));
            QCOMPARE(Map::scaleText(bar.totalKm), text);
            QCOMPARE(bar.length, length);
            QCOMPARE(bar.segmentLength, static_cast<int>(37.5 / ideal * total / 4));
        }
    }

    void standsInCornersAndAtEdges()
    {
        const auto corner = [](Qt::Alignment alignment) {
            return Map::alignedOnCanvas(QRect(-3, -4, 50, 20), QSize(300, 200), alignment)
                .topLeft();
        };
        QCOMPARE(corner(Qt::AlignLeft | Qt::AlignTop), QPoint(10, 10));
        QCOMPARE(corner(Qt::AlignRight | Qt::AlignBottom), QPoint(241, 171));
        QCOMPARE(corner(Qt::AlignCenter), QPoint(125, 90));
        QCOMPARE(corner(Qt::AlignTop | Qt::AlignBottom | Qt::AlignHCenter), QPoint(125, 10));
        QCOMPARE(corner(Qt::Alignment()), QPoint(-3, -4));
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
        // The equator stands in where the quarter points are off the globe or one pixel.
        for (const QSize &size : {QSize(600, 200), QSize(0, 0), QSize(2, 40)}) {
            canvas.setSize(size);
            canvas.setView(QPointF(0, 0), 0.6);
            QCOMPARE(barLength(canvas),
                     4 * Map::scaleBar(canvas.pixelPerDegree() / 111.13291).segmentLength);
        }
    }

    void legendsHaveAFrame()
    {
        using Keys = QVector<double>;
        using Case = std::tuple<QString, Keys, QPoint, QRect>; // the frame without the texts
        for (auto [title, keys, pos, frame] :
             {Case("", {}, {10, 20}, {10, 20, 30, 12}),
              Case("", {0, 0.5}, {10, 20}, {10, 20, 30, 46}),
              Case("A rather long title", {0, 0.5, 7}, {10, 20}, {10, 20, 12, 68 + 24}),
              Case("", {}, {-1, -11}, {270, 178, 30, 12})}) {
            MapTesting::OwnScheme scheme;
            scheme->legend = {Qt::white, Qt::cyan, Qt::magenta, Qt::darkYellow};
            TenPerDegree canvas;
            Legend legend(title);
            if (pos != QPoint(10, 20))
                legend.setPos(pos);
            const QImage picture = pictureOf(legend, keys, canvas);

            QFont bold = canvas.font();
            bold.setWeight(QFont::Bold);
            const QSize titleInk = QFontMetrics(bold).boundingRect(title).size();
            if (!title.isEmpty())
                frame.setSize(frame.size() + titleInk);
            else if (!keys.isEmpty())
                frame.setWidth(30 + QFontMetrics(canvas.font()).horizontalAdvance("0.5"));
            // Outlines reach a pixel farther to the right and down.
            QCOMPARE(Ink::rectOfColor(picture, Qt::cyan),
                     frame.adjusted(0, 0, 1, 1) & picture.rect());
            QCOMPARE(Ink::rectOfColor(picture, Qt::magenta).isNull(), title.isEmpty());
            QVERIFY(!legend.isInside(frame.left() + 3, frame.top() + 3));

            const int rowsHeight = qMax(0, 22 * keys.size() - 10);
            QCOMPARE(legend.contentPos(),
                     QPoint(frame.left() + 18, frame.bottom() + 1 - 6 - rowsHeight));
            for (int i = 0; i < keys.size(); ++i) {
                // Within black outlines, the highest key on top.
                const QPoint corner = legend.contentPos() + QPoint(0, 22 * (keys.size() - 1 - i));
                QCOMPARE(Ink::rectOfColor(picture, StopColors[i]),
                         QRect(corner + QPoint(1, 1), QSize(11, 11)));
            }
        }
    }

    void legendsKeepTheirNumbersOnTheMap()
    {
        MapTesting::OwnScheme scheme;
        scheme->legend.text = Qt::magenta;
        TenPerDegree canvas;
        Legend legend("");
        const auto numberWidth = [&](const QPoint &pos) {
            legend.setPos(pos);
            const QImage picture = pictureOf(legend, {100000}, canvas);
            return Ink::rectOf(picture, picture.rect(),
                               [](QRgb pixel) { return qGreen(pixel) < 100 && qBlue(pixel) > 200; })
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
        QCOMPARE(legend.contentPos(), QPoint(300 - 12, 200 - 6));
    }
};

QTEST_MAIN(TestMapScale)
#include "tst_mapscale.moc"
