// SPDX-License-Identifier: LGPL-3.0-or-later

#include "core/recordtesting.h"
#include "rowname.h"

#include <norvu/gui/multitracewiggles_p.h>

#include <tellarix/core/records/ringbuffer.h>

#include <QImage>
#include <QtTest>

#include <random>

using namespace Norvu::Gui;
using namespace RecordTesting;
using Tellarix::Core::TimeWindow;
using Tellarix::Gui::TraceBars;

using Polygons = QVector<QPolygon>;

namespace {

struct Statistics
{
    double offset{0};
    double minimum{0};
    double maximum{0};
};

/** First and last sample of a record that count for a window. */
std::pair<int, int> samplesIn(const Record &record, const TimeWindow &window)
{
    const int n = record.sampleCount();
    if (!window.valid())
        return {0, n};
    const double before = (window.startTime() - record.startTime()).length();
    const double behind = (record.endTime() - window.endTime()).length();
    const double rate = record.samplingFrequency();
    return {before > 0 ? static_cast<int>(before * rate) : 0,
            behind > 0 ? n - static_cast<int>(behind * rate) : n};
}

/** The plain form of minmax(): every sample is looked at. */
Statistics plainStatistics(const RecordSequence &sequence, const TimeWindow &window,
                           const TimeWindow &offsetWindow)
{
    Statistics result;
    double sum = 0;
    int64_t count = 0, divisor = 0;
    bool isFirst = true;
    for (const RecordCPtr &record : sequence) {
        if (window.valid() && !window.overlaps(record->timeWindow()))
            continue;
        const auto samples = DoubleArray::From(record->dataArray());
        const auto [first, last] = samplesIn(*record, window);
        for (int i = first; i < last; ++i) {
            const double value = (*samples)[i];
            result.minimum = isFirst ? value : std::min(result.minimum, value);
            result.maximum = isFirst ? value : std::max(result.maximum, value);
            isFirst = false;
        }
        count += last - first;

        if (offsetWindow.valid() && !offsetWindow.overlaps(record->timeWindow()))
            continue;
        const auto [from, to] = samplesIn(*record, offsetWindow.valid() ? offsetWindow : window);
        for (int i = from; i < to; ++i)
            sum += (*samples)[i];
        divisor = count;
    }
    result.offset = divisor != 0 ? sum / static_cast<double>(divisor) : sum;
    return result;
}

/** Records with gaps, overlaps and all types of samples. */
std::unique_ptr<RecordSequence> randomSequence(std::mt19937 &random)
{
    std::unique_ptr<RecordSequence> sequence(new RingBuffer(0));
    std::uniform_int_distribution<int> length(1, 700);
    std::uniform_real_distribution<double> jump(-1.5, 3);
    double start = 0;
    for (int i = 0; i < 60; ++i) {
        const int n = length(random);
        const ArrayPtr data = i % 3 == 0   ? arrayOf(randomSamples<int>(random, n, 0))
                              : i % 3 == 1 ? arrayOf(randomSamples<float>(random, n, 0))
                                           : arrayOf(randomSamples<double>(random, n, 0));
        const RecordCPtr record = makeRecord(at(start), 100, data);
        sequence->feed(record.get());
        start += n / 100.0 + (i % 4 == 0 ? jump(random) : 0);
    }
    return sequence;
}

QPolygon line(const QVector<QPoint> &points)
{
    return points;
}

/** A trace as polylines are: x ascends, several points a column. */
QPolygon randomTrace(std::mt19937 &random, int columns, int mostPoints, int mostStep)
{
    std::uniform_int_distribution<int> points(1, mostPoints);
    std::uniform_int_distribution<int> step(1, mostStep);
    std::normal_distribution<double> y(50, 25);
    QPolygon result;
    for (int x = 0; x < columns; x += step(random)) {
        for (int i = points(random); i > 0; --i)
            result << QPoint(x, static_cast<int>(y(random)));
    }
    return result;
}

QPolygon turned(QPolygon polygon, int height)
{
    for (QPoint &point : polygon)
        point = QPoint(height - 1 - point.y(), point.x());
    return polygon;
}

QImage filled(const std::function<void(QPainter &)> &draw)
{
    QImage image(120, 120, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    draw(painter);
    return image;
}

} // namespace

class MultiTraceWigglesTest : public QObject
{
    Q_OBJECT

private slots:
    void splitsTracesIntoLobes()
    {
        using P = QPoint;
        const std::tuple<const char *, Polygons, Polygons, Polygons> rows[] = {
            {"below, in two stretches", Polygons{line({P(0, 13), P(4, 11)}), line({P(6, 12)})},
             Polygons(),
             Polygons{line({P(0, 10), P(0, 13), P(4, 11), P(4, 10)}),
                      line({P(6, 10), P(6, 12), P(6, 10)})}},
            {"crosses twice, truncated", Polygons{line({P(0, 5), P(3, 14), P(10, 9)})},
             Polygons{line({P(0, 10), P(0, 5), P(1, 10)}), line({P(8, 10), P(10, 9), P(10, 10)})},
             Polygons{line({P(1, 10), P(3, 14), P(8, 10)})}},
            {"point on the line belongs to both", Polygons{line({P(0, 8), P(2, 10), P(4, 8)})},
             Polygons{line({P(0, 10), P(0, 8), P(2, 10), P(4, 8), P(4, 10)})},
             Polygons{line({P(2, 10), P(2, 10), P(2, 10)})}},
            {"upper lobe is lost at an end on the line",
             Polygons{line({P(0, 8), P(2, 10)}), line({P(6, 8)})},
             Polygons{line({P(6, 10), P(6, 8), P(6, 10)})},
             Polygons{line({P(2, 10), P(2, 10), P(2, 10)})}}};
        for (const auto &[name, lines, positive, negative] : rows) {
            const RowName shown(name);
            Polygons above, below;
            generateWiggles<QPolygon, QPoint>(above, below, lines, 10);
            QCOMPARE(above, positive);
            QCOMPARE(below, negative);
        }
    }

    void crossesBetweenPixels()
    {
        QVector<QPolygonF> positive, negative;
        const QPolygonF trace(QVector<QPointF>{QPointF(0, 5), QPointF(3, 14)});
        generateWiggles<QPolygonF, QPointF>(positive, negative, {trace}, 9.5);
        const QPointF crossing(1.5, 9.5);
        QCOMPARE(positive,
                 QVector<QPolygonF>{QPolygonF({QPointF(0, 9.5), QPointF(0, 5), crossing})});
        QCOMPARE(negative,
                 QVector<QPolygonF>{QPolygonF({crossing, QPointF(3, 14), QPointF(3, 9.5)})});
    }

    void barsFillWhatPolygonsFill()
    {
        // Several points a column, one a column, and one in several.
        const QPair<int, int> densities[] = {{6, 1}, {1, 1}, {1, 12}};
        std::mt19937 random(7);
        for (int run = 0; run < 48; ++run) {
            const auto [mostPoints, mostStep] = densities[run % 3];
            const bool isTurned = run % 2;
            Polygons lobes[2];
            const QPolygon trace = randomTrace(random, 100, mostPoints, mostStep);
            generateWiggles<QPolygon, QPoint>(lobes[0], lobes[1], {trace}, 30 + run);
            for (Polygons &side : lobes) {
                for (QPolygon &lobe : side)
                    lobe = isTurned ? turned(lobe, 100) : lobe;
                const QImage bars = filled([&](QPainter &painter) {
                    fillBars(painter, lobeBars(side, isTurned), isTurned);
                });
                const QImage polygons = filled([&](QPainter &painter) {
                    for (const QPolygon &lobe : qAsConst(side))
                        painter.drawPolygon(lobe, Qt::OddEvenFill);
                });
                // A centre right on a slanted edge may fall to either side.
                int differing = 0;
                for (int i = 0; i < bars.width() * bars.height(); ++i)
                    differing += bars.pixel(i % 120, i / 120) != polygons.pixel(i % 120, i / 120);
                QVERIFY(differing <= 10);
            }
        }
    }

    void smoothLobesHaveTheInkOfTheirPolygons()
    {
        std::mt19937 random(11);
        std::normal_distribution<double> y(40, 12);
        for (const double columns : {0.3, 5.0}) {
            WiggleRecordPolylineF trace;
            QPolygonF line;
            for (double x = 0; x < 100; x += columns)
                line << QPointF(x, y(random));
            trace.append(line);
            trace.addLobes(40.5);
            trace.prepareLobes(Qt::red, Qt::blue);
            const auto smooth = [](const std::function<void(QPainter &)> &draw) {
                return filled([&](QPainter &painter) {
                    painter.setRenderHint(QPainter::Antialiasing);
                    painter.translate(7, 5);
                    draw(painter);
                });
            };
            const QImage found = smooth([&](QPainter &painter) { trace.drawLobes(painter); });
            const QImage expected = smooth([&](QPainter &painter) {
                fillLobes(painter, trace.positive, Qt::red);
                fillLobes(painter, trace.negative, Qt::blue);
            });
            QVERIFY(found.pixel(0, 0) == qRgb(255, 255, 255) && found != filled([](QPainter &) {}));
            for (int i = 0; i < found.width() * found.height(); ++i) {
                const QRgb a = found.pixel(i % 120, i / 120), b = expected.pixel(i % 120, i / 120);
                QVERIFY(std::abs(qRed(a) - qRed(b)) + std::abs(qBlue(a) - qBlue(b)) <= 6);
            }
        }
    }

    void statisticsEqualPlainScan()
    {
        std::mt19937 random(3);
        std::uniform_real_distribution<double> time(-20, 250);
        for (int run = 0; run < 200; ++run) {
            const auto sequence = randomSequence(random);
            const auto randomWindow = [&](int rarity) {
                const double start = time(random);
                return run % rarity ? window(start, start + std::abs(time(random)) / (run % 7 + 1))
                                    : TimeWindow();
            };
            const TimeWindow shown = randomWindow(10);
            const TimeWindow offsetWindow = run % 3 ? TimeWindow() : randomWindow(2);
            const Statistics expected = plainStatistics(*sequence, shown, offsetWindow);

            Statistics found{-1, -1, -1};
            minmax(sequence.get(), shown, found.offset, found.minimum, found.maximum, offsetWindow);
            QCOMPARE(found.minimum, expected.minimum);
            QCOMPARE(found.maximum, expected.maximum);
            QVERIFY(std::abs(found.offset - expected.offset) <=
                    1E-9 * (1 + std::abs(expected.offset)));
        }
    }

    void ignoresSamplesThatAreNotFinite()
    {
        RingBuffer sequence(0);
        sequence.feed(
            makeRecord(at(0), 1, arrayOf<double>({NaN, 2, Infinity, 4, -Infinity})).get());
        Statistics found;
        minmax(&sequence, {}, found.offset, found.minimum, found.maximum, {});
        QCOMPARE(found.minimum, 2.0);
        QCOMPARE(found.maximum, 4.0);
        QCOMPARE(found.offset, 3.0);
    }

    void findsAmplitudes()
    {
        // Before, at the first of several points of a column, between points, in the gap.
        const QPair<int, double> amplitudes[] = {{-1, NaN}, {4, 20}, {5, 27}, {8, 28}, {15, NaN}};
        const Polygons lines{
            line({QPoint(0, 10), QPoint(4, 20), QPoint(7, 41), QPoint(9, 14), QPoint(10, 11)}),
            QPolygon(), line({QPoint(20, 99)})};
        for (const bool isTurned : {false, true}) {
            Polygons polygons = lines;
            for (QPolygon &polygon : polygons) {
                for (QPoint &point : polygon)
                    point = isTurned ? QPoint(point.y(), point.x()) : point;
            }
            for (const auto &[time, expected] : amplitudes) {
                double found = NaN;
                QCOMPARE(amplitudeAt(polygons, time, isTurned, found), !std::isnan(expected));
                QCOMPARE(found, expected);
            }
        }
    }
};

QTEST_APPLESS_MAIN(MultiTraceWigglesTest)
#include "tst_multitracewiggles.moc"
