// SPDX-License-Identifier: LGPL-3.0-or-later

#include "core/recordtesting.h"

#include <tellarix/core/records/ringbuffer.h>
#include <tellarix/qt/records/recordpolyline.h>

#include <QImage>
#include <QPainter>
#include <QWidget>
#include <QtTest>

#include <functional>

using namespace RecordTesting;
using Tellarix::Gui::RecordPolyline;
using Tellarix::Gui::RecordPolylineF;

namespace {

constexpr int Width = 300;
constexpr int Height = 120;

using Signal = std::function<double(int)>;

RecordCPtr record(double start, int samples, double rate, const Signal &signal)
{
    std::vector<double> values;
    for (int i = 0; i < samples; ++i)
        values.push_back(signal(i));
    return makeRecord(at(start), rate, arrayOf(values));
}

double noise(int i)
{
    return std::fmod(i * 7919.0 + i % 13 * 104729.0, 2000) - 1000;
}

template <typename Polyline>
Polyline polyline(const RecordSequence &records, double start, double pixelsPerSecond,
                  bool optimize = true)
{
    Polyline result;
    result.create(&records, at(start), at(start + Width / pixelsPerSecond), pixelsPerSecond, -1000,
                  1000, 0, Height, nullptr, nullptr, optimize);
    return result;
}

QImage picture(const std::function<void(QPainter &)> &paint, const QSize &size)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setPen(Qt::black);
    paint(painter);
    return image;
}

bool hasInk(const QImage &image, int x, int y)
{
    return image.valid(x, y) && image.pixel(x, y) != 0xffffffff;
}

int inkInColumn(const QImage &image, int x)
{
    int ink = 0;
    for (int y = 0; y < image.height(); ++y)
        ink += hasInk(image, x, y);
    return ink;
}

/** Pixels with ink in @p a that have none in @p b within a pixel. */
int strayInk(const QImage &a, const QImage &b)
{
    int stray = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            if (!hasInk(a, x, y))
                continue;
            bool near = false;
            for (int k = 0; k < 9 && !near; ++k)
                near = hasInk(b, x + k % 3 - 1, y + k / 3 - 1);
            stray += !near;
        }
    }
    return stray;
}

template <typename Polyline>
Polyline turned(Polyline line)
{
    for (auto &polygon : line) {
        for (auto &point : polygon)
            point = {Height - 1 - point.y(), point.x()};
    }
    return line;
}

} // namespace

class RecordPolylineTest : public QObject
{
    Q_OBJECT

private slots:
    void sparseSamplesArePoints()
    {
        RingBuffer records(0);
        records.feed(record(0, 10, 1, [](int i) { return i * 100; }).get());
        const auto line = polyline<RecordPolyline>(records, 2.5, 60);
        QCOMPARE(line.size(), 1);
        // From the point before the window, which is cut, to that behind it, which is cut as well.
        QCOMPARE(line[0].size(), 7);
        QCOMPARE(line[0][0], QPoint(-1, qRound((1000 - 248.3) * (Height - 1) / 2000)));
        QCOMPARE(line[0][1], QPoint(30, qRound(700 * (Height - 1) / 2000.0)));
        QCOMPARE(line[0][6], QPoint(300, qRound(250 * (Height - 1) / 2000.0)));

        const auto smooth = polyline<RecordPolylineF>(records, 2.5, 60);
        QCOMPARE(smooth[0][1], QPointF(30, 700 * (Height - 1) / 2000.0));
    }

    void polygonsBeginWhereDataBreak()
    {
        // The second record is joined, behind a gap, over the first or outside of the window.
        const QVector<QPair<double, int>> cases{{50, 1}, {60, 2}, {40, 2}, {400, 1}};
        for (const auto &[start, polygons] : cases) {
            RingBuffer records(0);
            records.feed(record(0, 5000, 100, noise).get());
            records.feed(record(start, 5000, 100, noise).get());
            for (const bool optimize : {true, false})
                QCOMPARE(polyline<RecordPolyline>(records, 0, 1, optimize).size(), polygons);
        }
    }

    void oddRanges()
    {
        const double most = std::numeric_limits<double>::max();
        const int limit = 1 << 20;
        const struct
        {
            double minimum, maximum;
            int height;
            QVector<int> ys; // of values -1 and 1, empty for no polygon
        } cases[] = {
            {-1, 1, 1, {0}},
            {0, 0, 101, {50}},
            {1, -1, 101, {0, 100}},
            {NaN, 1, 101, {}},
            {-1, 1, 0, {}},
            {-most, most, 101, {50}},
            {-1E-300, 1E-300, 101, {limit, -limit}},
        };
        RingBuffer records(0);
        records.feed(record(0, 10000, 100, [](int i) { return i % 2 ? 1 : -1; }).get());
        RecordPolyline line;
        for (const auto &item : cases) {
            line.create(&records, at(0), at(100), 1, item.minimum, item.maximum, 0, item.height);
            QVector<int> ys;
            for (const QPoint &point : line.value(0)) {
                if (!ys.contains(point.y()))
                    ys.append(point.y());
            }
            QCOMPARE(ys, item.ys);
        }
        line.create(nullptr, at(0), at(100), 1, -1, 1, 0, 100);
        QVERIFY(line.isEmpty());
    }

    void inkEqualsThePlainPolyline_data()
    {
        QTest::addColumn<int>("shape");
        QTest::addColumn<int>("samples"); // in the width of the picture
        for (int shape = 0; shape < 4; ++shape) {
            for (const int samples : {40, 500, 1500, 6000, 100000})
                QTest::addRow("shape %d, %d samples", shape, samples) << shape << samples;
        }
    }
    void inkEqualsThePlainPolyline()
    {
        QFETCH(int, shape);
        QFETCH(int, samples);
        const Signal shapes[] = {
            [](int i) { return 900 * std::sin(i * 0.02); },
            [](int i) { return noise(i); },
            [=](int i) { return i % (samples / 7) == 5 ? -990.0 : 300.0; },
            [=](int i) { return i * 7 / samples % 2 ? -800 : 800; },
        };
        RingBuffer records(0);
        for (int i = 0; i < samples; i += 700) {
            const auto part = [&](int k) { return shapes[shape](i + k); };
            records.feed(record(i * 0.01, std::min(700, samples - i), 100, part).get());
        }
        const double scale = Width * 100.0 / samples;
        const auto plain = polyline<RecordPolylineF>(records, 0, scale, false);
        QPolygon pixels;
        for (const QPointF &point : plain.value(0))
            pixels.append(QPoint(qFloor(point.x()), qRound(point.y())));

        const QImage expected =
            picture([&](QPainter &painter) { painter.drawPolyline(pixels); }, {Width, Height});
        auto line = polyline<RecordPolyline>(records, 0, scale);
        auto smooth = polyline<RecordPolylineF>(records, 0, scale);
        auto lying = turned(line);
        QVector<QImage> images{
            picture([&](QPainter &painter) { line.draw(painter); }, {Width, Height}),
            picture([&](QPainter &painter) { lying.draw(painter); }, {Height, Width})
                .transformed(QTransform().rotate(-90)),
        };
        // The painter rounds the points of a sparse trace to other pixels.
        if (samples > 2 * Width)
            images << picture([&](QPainter &painter) { smooth.draw(painter); }, {Width, Height});
        for (const QImage &image : images) {
            QCOMPARE(strayInk(image, expected), 0);
            QCOMPARE(strayInk(expected, image), 0);
        }
    }

    void denseTracesHaveFewPoints()
    {
        RingBuffer records(0);
        for (int i = 0; i < 40; ++i)
            records.feed(record(i * 100, 10000, 100, noise).get());
        const auto line = polyline<RecordPolyline>(records, 0, Width / 4000.0);
        QCOMPARE(line.size(), 1);
        QVERIFY(line[0].size() <= 4 * (Width + 1));
    }

    void gapsStayEmptyAndIslandsShow()
    {
        RingBuffer records(0);
        records.feed(record(0, 100000, 100, noise).get());
        records.feed(record(1495, 1, 100, noise).get());
        records.feed(record(2000, 100000, 100, noise).get());
        for (const bool smooth : {false, true}) {
            const QImage image = picture(
                [&](QPainter &painter) {
                    painter.setRenderHint(QPainter::Antialiasing, smooth);
                    auto line = polyline<RecordPolyline>(records, 0, 0.1);
                    auto lineF = polyline<RecordPolylineF>(records, 0, 0.1);
                    smooth ? lineF.draw(painter) : line.draw(painter);
                },
                {Width, Height});
            for (int x = 0; x < Width; ++x)
                QCOMPARE(inkInColumn(image, x) > 0, x < 100 || x >= 200 || x == 149);
            QVERIFY(inkInColumn(image, 50) > 100);
            QCOMPARE(inkInColumn(image, 149), 1);
        }
    }

    void penIsHonoured()
    {
        RingBuffer records(0);
        records.feed(record(0, 20000, 100, [](int i) { return i / 50 % 2 ? 500 : -500; }).get());
        for (const int width : {0, 1, 2, 5}) {
            const bool lying = width == 1 || width == 5;
            auto line = polyline<RecordPolyline>(records, -50, 1);
            if (lying)
                line = turned(line);
            const QPen pen(QColor(255, 0, 0, 128), width);
            const QImage image = picture(
                [&](QPainter &painter) {
                    painter.setPen(pen);
                    line.draw(painter);
                },
                lying ? QSize(Height, Width) : QSize(Width, Height));

            // Each pixel is covered once, so that all ink is of one colour.
            QRect ink;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    if (!hasInk(image, x, y))
                        continue;
                    QCOMPARE(image.pixelColor(x, y), QColor(255, 127, 127));
                    ink |= QRect(x, y, 1, 1);
                }
            }
            const QSize size = lying ? ink.size().transposed() : ink.size();
            QCOMPARE(size, QSize(200, 60) + QSize(1, 1) * (std::max(width, 1) - 1));
        }
    }

    void drawsWhereTheWidgetLies()
    {
        struct Canvas : QWidget
        {
            using QWidget::QWidget;
            RecordPolyline line;

            void paintEvent(QPaintEvent *) override
            {
                QPainter painter(this);
                painter.translate(0, 20);
                line.draw(painter);
            }
        };
        RingBuffer records(0);
        records.feed(record(0, 30000, 100, [](int i) { return i % 2 ? 1000 : -1000; }).get());
        QWidget window;
        window.setPalette(QPalette(Qt::white));
        window.resize(400, 400);
        auto *canvas = new Canvas(&window);
        canvas->setGeometry(60, 200, 250, 100);
        canvas->line = polyline<RecordPolyline>(records, 0, 1);
        const QImage image = window.grab().toImage();
        const QRgb background = image.pixel(0, 0);
        for (const QPoint &inside : {QPoint(60, 220), QPoint(309, 299), QPoint(150, 250)})
            QCOMPARE(image.pixelColor(inside), window.palette().color(QPalette::WindowText));
        for (const QPoint &outside :
             {QPoint(59, 250), QPoint(310, 250), QPoint(150, 219), QPoint(150, 300)})
            QCOMPARE(image.pixel(outside), background);
    }
};

QTEST_MAIN(RecordPolylineTest)
#include "tst_recordpolyline.moc"
