// SPDX-License-Identifier: LGPL-3.0-or-later

#include "gainfilter.h"
#include "ink.h"
#include "rowname.h"

#include <norvu/gui/spectrogramrecordwidget.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>

#include <tellarix/core/records/ringbuffer.h>
#include <tellarix/core/records/typedarray.h>

#include <QtTest>

#include <cmath>
#include <numeric>
#include <random>

using namespace Norvu::Gui;
using namespace Tellarix;

using Table = Norvu::Utils::LUT<double, unsigned int>;

namespace {

constexpr int Width = 400;
constexpr int Height = 40;
constexpr double Rate = 20;
// 4 pixels a second.
constexpr double ShownSeconds = 100;
const Core::Time Epoch = Core::Time(2024, 1, 5);

Core::Time timeAt(double seconds)
{
    return Epoch + Core::TimeSpan(seconds);
}

/** Noise from @p start on, with a pulse at @p pulse; times are in seconds. */
RecordCPtr makeRecord(double start, double length, double rate = Rate, double pulse = -1e6)
{
    const auto count = static_cast<int>(std::lround(length * rate));
    Core::SmartPointer<DoubleArray> samples(new DoubleArray(count));
    std::minstd_rand random(static_cast<unsigned>(start * 10 + 1));
    for (int i = 0; i < count; ++i)
        samples->typedData()[i] = 0.001 * (static_cast<int>(random() % 2001) - 1000);
    const auto at = static_cast<int>(std::lround((pulse - start) * rate));
    if (at >= 0 && at < count)
        samples->typedData()[at] = 10000;
    return new Record(StreamCodes::FromID("GE.APE..BHZ"), timeAt(start), rate, samples);
}

/** All values are opaque: noise is bluish, what is far above it green. */
const Table &table()
{
    static const Table result = [] {
        Table filled;
        filled.fill(0, 100, [](double value) {
            const int level = 40 + static_cast<int>(value * 20);
            return value < 10 ? qRgb(level, level, 255) : qRgb(0, 255, 0);
        });
        return filled;
    }();
    return result;
}

/** Four pixels a second, with the spectrogram of slot 0 and without its traces. */
class Widget : public SpectrogramRecordWidget
{
public:
    explicit Widget(int capacity = 0)
    {
        setAutoFillBackground(true);
        resize(Width, Height);
        setAlignment(Epoch);
        setTimeRange(0, ShownSeconds);
        setTimeScale(Width / ShownSeconds);
        setRecords(0, new RingBuffer(capacity), true);
        setRecordVisible(0, false);
        setSpectrogramSettings(0.2, 2, 3, 8);
        setSpectrogramSlot(0);
        setColorLUT(&table());
        setSpectrogramEnabled(true);
    }

    using SpectrogramRecordWidget::changedRecords;

    double maximum() const { return _maximum; }
    int pictureWidth() const { return _items.empty() ? 0 : _items.front().image.width(); }
    int columns() const { return _items.empty() ? 0 : _items.front().spectrogram->columns(); }
    size_t memoryTaken() const
    {
        return std::accumulate(_items.begin(), _items.end(), size_t(0),
                               [](size_t sum, const SpectrogramItem &item) {
                                   return sum + item.spectrogram->memorySize();
                               });
    }
    /** Greatest value of all stretches at present. */
    double greatestValue() const
    {
        double result = 0;
        for (const SpectrogramItem &item : _items)
            result = std::max(result, item.spectrogram->maximum());
        return result;
    }

    void feed(const RecordCPtr &record)
    {
        records(0)->feed(record.get());
        fed(0, record.get());
    }
};

/** Runs of columns that the spectrogram fills, as "first-last"; the frame hides the outermost. */
QStringList spans(Widget &widget)
{
    const QImage image = Ink::picture(widget);
    const auto isInk = [&](int x) {
        const QColor color = image.pixelColor(x, Height / 2);
        return color == Qt::green ||
               (color.blue() == 255 && color.red() < 255 && color.red() == color.green());
    };
    QStringList result;
    for (int x = 0; x < Width; ++x) {
        if (!isInk(x))
            continue;
        const int first = x;
        while (x < Width && isInk(x))
            ++x;
        result << QStringLiteral("%1-%2").arg(first).arg(x - 1);
    }
    return result;
}

/** The first column of a pulse in the line of the shortest periods. */
int ridge(const QImage &image)
{
    const QRect line(0, image.height() - 2, image.width(), 1);
    return Ink::rectOf(image, line, [](QRgb pixel) { return pixel == qRgb(0, 255, 0); }).left();
}

using Records = QVector<RecordCPtr>;

} // namespace

class TestSpectrogramRecordWidget : public QObject
{
    Q_OBJECT

private slots:
    void takesTheSequenceThatItIsGiven()
    {
        Widget widget;
        widget.feed(makeRecord(0, 90));
        RingBuffer other(0);
        other.feed(makeRecord(10, 10).get());
        widget.changedRecords(0, &other);
        QCOMPARE(spans(widget), QStringList("40-79"));
        widget.changedRecords(0, nullptr);
        QCOMPARE(spans(widget), QStringList());
    }

    void takesLittleMoreThanItsValues()
    {
        Widget widget;
        for (int start = 0; start < 4000; start += 100) {
            widget.feed(makeRecord(start, 20));
            widget.feed(makeRecord(start + 20, 20));
        }
        QCOMPARE(widget.spectrogramSize(), 40 * 800 * 8 * sizeof(float));
        QVERIFY(2 * widget.memoryTaken() <= 3 * widget.spectrogramSize());
    }

    void followsRecords()
    {
        const auto first = makeRecord(10, 10);
        const std::tuple<const char *, Records, QStringList> rows[] = {
            {"next", Records{first, makeRecord(20, 10)}, QStringList("40-119")},
            {"nearly next", Records{first, makeRecord(20.02, 10)}, QStringList("40-119")},
            {"gap", Records{first, makeRecord(30, 10)}, QStringList({"40-79", "120-159"})},
            {"twice", Records{first, first}, QStringList("40-79")},
            {"overlap", Records{first, makeRecord(15, 10)}, QStringList("40-79")},
            {"another rate", Records{first, makeRecord(20, 10, 50)}, QStringList("40-119")},
            {"out of view", Records{makeRecord(-20, 10), makeRecord(110, 5)}, QStringList()},
            {"across both edges", Records{makeRecord(-20, 200)}, QStringList("1-398")}};
        for (const auto &[name, records, spans] : rows) {
            const RowName shown(name);
            Widget live;
            for (const RecordCPtr &record : records)
                live.feed(record);
            QCOMPARE(::spans(live), spans);

            Widget complete;
            complete.setSpectrogramEnabled(false);
            auto *sequence = new RingBuffer(0);
            for (const RecordCPtr &record : records)
                sequence->feed(record.get());
            complete.setRecords(0, sequence, true);
            QCOMPARE(::spans(complete), QStringList());
            complete.setSpectrogramEnabled(true);
            QCOMPARE(Ink::picture(complete), Ink::picture(live));
        }
    }

    void showsColumnsFarWiderThanTheView()
    {
        Widget widget;
        widget.setSpectrogramColumnInterval(1000);
        widget.feed(makeRecord(-5, 8));
        // Nothing is known before the first column is complete.
        QCOMPARE(widget.spectrogramRange(), qMakePair(0.0, 0.0));
        widget.feed(makeRecord(3, 100));
        QVERIFY(widget.spectrogramRange().second > 0);
        QVERIFY(!spans(widget).isEmpty());
        for (const double pixelsPerSecond : {600.0, 1E5, 1E9}) {
            widget.setTimeScale(pixelsPerSecond);
            QCOMPARE(spans(widget), QStringList("1-398"));
            QCOMPARE(widget.pictureWidth(), Width);
        }
    }

    void movesByLessThanAColumn()
    {
        Widget widget;
        widget.feed(makeRecord(5, 80, Rate, 50));
        widget.setTimeScale(2000);
        widget.setTimeRange(49.91, 50.11);
        const int before = ridge(Ink::picture(widget));
        widget.setTimeRange(49.92, 50.12);
        QVERIFY(before > 20);
        QVERIFY(std::abs(before - 20 - ridge(Ink::picture(widget))) <= 1);
    }

    void recordTwiceTrimsNothing()
    {
        Widget widget(3);
        for (const double start : {0.0, 10.0, 20.0})
            widget.feed(makeRecord(start, 10));
        const RecordCPtr next = makeRecord(30, 10);
        widget.records(0)->feed(next.get());
        widget.feedSpectrogram(0, makeRecord(20, 10).get());
        QCOMPARE(spans(widget), QStringList("1-119"));
        widget.feedSpectrogram(0, next.get());
        QCOMPARE(spans(widget), QStringList("40-159"));
    }

    void takesRecordsOfOneSampleOnce()
    {
        for (const double rate : {20.0, 3.0, 59.9, 13.7, 33.333, 123456.0}) {
            Widget widget(4);
            for (int i = 0; i < 200; ++i) {
                const RecordCPtr record = makeRecord(i / rate, 1 / rate, rate);
                widget.feed(record);
                const int columns = widget.columns();
                widget.feedSpectrogram(0, record.get());
                QCOMPARE(widget.columns(), columns);
                QVERIFY(columns >= std::min(i + 1, 4) && columns <= 5);
            }
        }
    }

    void newStretchHasNoHistory()
    {
        const std::tuple<const char *, double, double, bool> rows[] = {
            {"goes on", 20.0, Rate, false},
            {"one sample missing", 20.05, Rate, true},
            {"another rate", 20.0, 40.0, true}};
        for (const auto &[name, start, rate, isNew] : rows) {
            const RowName shown(name);
            Widget widget;
            widget.feed(makeRecord(10, 10, Rate, 19.5));
            widget.feed(makeRecord(start, 10, rate));
            Widget fresh;
            fresh.feed(makeRecord(start, 10, rate));
            const QRect second(81, 0, 30, Height);
            QCOMPARE(Ink::picture(widget).copy(second) == Ink::picture(fresh).copy(second), isNew);
        }
    }

    void trimsWithItsRecords()
    {
        Widget widget(3);
        widget.feed(makeRecord(0, 10));
        widget.feed(makeRecord(20, 10));
        widget.feed(makeRecord(30, 10, Rate, 37));
        QCOMPARE(spans(widget), QStringList({"1-39", "80-159"}));
        const int pulse = ridge(Ink::picture(widget));
        QVERIFY(pulse >= 37 * 4);

        widget.feed(makeRecord(40, 10));
        QCOMPARE(spans(widget), QStringList("80-199"));
        // A stretch as long as before, but ten seconds later: the pulse stays where it was.
        widget.feed(makeRecord(50, 10));
        QCOMPARE(spans(widget), QStringList("120-239"));
        QCOMPARE(ridge(Ink::picture(widget)), pulse);
        for (int start = 60; start < 90; start += 10)
            widget.feed(makeRecord(start, 10));
        QCOMPARE(spans(widget), QStringList("240-359"));
    }

    void keepsTheRangeOfAllStretches()
    {
        Widget widget(3);
        widget.feed(makeRecord(0, 10, Rate, 5));
        const double pulse = widget.maximum();
        QCOMPARE(widget.greatestValue(), pulse);
        widget.feed(makeRecord(10, 10));
        widget.feed(makeRecord(30, 10));
        widget.feed(makeRecord(40, 10));
        // The pulse has left the first stretch, which is still there.
        QVERIFY(widget.greatestValue() < pulse);
        QCOMPARE(widget.maximum(), pulse);
        widget.feed(makeRecord(50, 10));
        QCOMPARE(widget.maximum(), widget.greatestValue());
        QVERIFY(widget.maximum() > 0);
    }

    void standsBelowTheTrace()
    {
        const std::tuple<const char *, int, double, double> rows[] = {
            // The envelope rises within a few samples, which are less than a pixel or two here.
            {"whole", 0, 0.0, 4.0},
            {"cut at the left", 0, 20.0, 4.0},
            {"axis, cut at the left", 60, 20.01, 4.0},
            {"starts within", 60, -30.0, 4.0}};
        for (const auto &[name, axisWidth, tmin, pixelsPerSecond] : rows) {
            const RowName shown(name);
            constexpr double Pulse = 50;
            Widget widget;
            widget.setAxisWidth(axisWidth);
            widget.setDrawAxis(axisWidth > 0);
            widget.setTimeRange(tmin, tmin + ShownSeconds);
            widget.setTimeScale(pixelsPerSecond);
            widget.feed(makeRecord(5, 80, Rate, Pulse));
            QCOMPARE(widget.canvasOffset(), axisWidth);

            const int rise = ridge(Ink::picture(widget));
            const int trace = widget.mapTime(timeAt(Pulse));
            // Half a sample before the pulse the interpolation begins to rise.
            const double sample = pixelsPerSecond / Rate;
            QVERIFY2(rise >= trace - sample - 1 && rise <= trace + sample + 1,
                     qPrintable(QStringLiteral("%1, trace %2").arg(rise).arg(trace)));
        }
    }

    void switchesKeepTheData()
    {
        Widget widget;
        widget.feed(makeRecord(10, 10));
        const QImage shown = Ink::picture(widget);

        widget.setSpectrogramDisplayEnabled(false);
        QCOMPARE(spans(widget), QStringList());
        widget.feed(makeRecord(20, 10));
        widget.setSpectrogramDisplayEnabled(true);
        QCOMPARE(spans(widget), QStringList("40-119"));

        widget.setSpectrogramEnabled(false);
        QCOMPARE(spans(widget), QStringList());
        widget.setSpectrogramEnabled(true);
        QCOMPARE(spans(widget), QStringList("40-119"));
        QCOMPARE(Ink::picture(widget).copy(0, 0, 79, Height), shown.copy(0, 0, 79, Height));

        widget.setColorLUT(nullptr);
        QCOMPARE(spans(widget), QStringList());
        widget.setColorLUT(&table());
        for (const int slot : {3, -1, 0}) {
            widget.setSpectrogramSlot(slot);
            QCOMPARE(spans(widget), slot == 0 ? QStringList("40-119") : QStringList());
        }

        widget.setSpectrogramSettings(0.2, 2, 3, 2);
        QVERIFY(Ink::picture(widget).copy(0, 0, 79, Height) != shown.copy(0, 0, 79, Height));
        widget.clearRecords();
        QCOMPARE(spans(widget), QStringList());
    }

    void usesTheRecordsAskedFor()
    {
        Widget widget;
        widget.feed(makeRecord(10, 80));
        const QImage raw = Ink::picture(widget);
        widget.useFilteredRecords(true);
        QCOMPARE(spans(widget), QStringList());

        const GainFilter amplifier(1000);
        widget.setFilter(&amplifier);
        widget.enableFiltering(true);
        QVERIFY(ridge(Ink::picture(widget)) > 0);
        widget.useFilteredRecords(false);
        QCOMPARE(Ink::picture(widget), raw);
        widget.enableFiltering(false);
        widget.enableFiltering(true);
        QCOMPARE(Ink::picture(widget), raw);
    }
};

QTEST_MAIN(TestSpectrogramRecordWidget)
#include "tst_spectrogramrecordwidget.moc"
