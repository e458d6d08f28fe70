// SPDX-License-Identifier: LGPL-3.0-or-later

#include "recordwidgettest.h"

#include <tellarix/qt/records/amplitudeaxis_p.h>
#include <tellarix/qt/scheme.h>

#include <QPainter>
#include <QVBoxLayout>

#include <cmath>
#include <limits>

using namespace Tellarix;
using Gui::RecordWidget;
using Range = QPair<double, double>;

namespace {

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
constexpr double Infinity = std::numeric_limits<double>::infinity();

const Gui::Scheme::Records &colors()
{
    return Gui::Scheme::Current().records;
}

/** A colour as it looks on the background. */
QColor onBackground(const QColor &color)
{
    QImage image(1, 1, QImage::Format_RGB32);
    image.fill(colors().background);
    QPainter(&image).fillRect(image.rect(), color);
    return image.pixelColor(0, 0);
}

bool isClose(const Range &a, const Range &b)
{
    return std::abs(a.first - b.first) < 1E-9 && std::abs(a.second - b.second) < 1E-9;
}

/** Columns in which a row of the picture has a colour. */
QVector<int> columnsOf(const QImage &image, int y, const QColor &color)
{
    QVector<int> result;
    for (int x = 0; x < image.width(); ++x) {
        if (image.pixel(x, y) == color.rgb())
            result.append(x);
    }
    return result;
}

/** Fills the canvas in its hooks and writes down where their painters start. */
class HookedWidget : public TestWidget
{
public:
    QColor behindTraces{Qt::transparent};
    QColor aboveTraces{Qt::transparent};
    QVector<QPointF> origins;

protected:
    void drawCustomBackground(QPainter &painter) override { use(painter, Qt::transparent); }
    void customPaintTracesBegin(QPainter &painter) override { use(painter, behindTraces); }
    void customPaintTracesEnd(QPainter &painter) override { use(painter, aboveTraces); }

private:
    void use(QPainter &painter, const QColor &color)
    {
        origins.append(painter.worldTransform().map(QPointF()));
        painter.fillRect(-1000, -1000, 3000, 3000, color);
        // A careless hook: none of this may reach what is painted after it.
        painter.translate(50, 50);
        painter.setClipRect(0, 0, 1, 1);
        painter.setOpacity(0);
    }
};

} // namespace

class TestRecordWidget : public QObject
{
    Q_OBJECT

private slots:
    void mapsTimes()
    {
        const struct
        {
            int axis;
            double tmin, scale, seconds;
            int x;
        } cases[] = {
            {0, 0, 2, 0.499, 0}, // the last instant of a pixel
            {0, 0, 2, 0.5, 1},   // and the first of the next
            {0, 0, 2, -0.1, -1},  {40, -30, 0.5, 10, 60},
            {0, 0.1, 10, 0.3, 2}, // not exact in binary
        };
        for (const auto &item : cases) {
            TestWidget widget;
            widget.setDrawAxis(true);
            widget.setAxisWidth(item.axis);
            widget.setTimeScale(item.scale);
            widget.setTimeRange(item.tmin, item.tmin + 100);
            QCOMPARE(widget.mapTime(at(item.seconds)), item.x);
            QCOMPARE(widget.mapTime(widget.unmapTime(item.x)), item.x);
            QCOMPARE(widget.rightTime(), at(item.tmin + (200 - item.axis) / item.scale));
            widget.setAxisPosition(RecordWidget::AxisRight);
            QCOMPARE(widget.mapTime(at(item.seconds)), item.x - item.axis);
        }
    }

    void survivesAbsurdTimes()
    {
        constexpr int64_t Largest = std::numeric_limits<int64_t>::max();
        TestWidget widget;
        widget.install({record(0, zigzag(10, -1, 1))});
        QVERIFY(widget.mapTime(Core::Time::FromUSecs(Largest)) > 1000000);
        QVERIFY(widget.mapTime(Core::Time::FromUSecs(-Largest)) < -1000000);

        for (const double tmin : {-1E300, 1E300, 9E12}) {
            widget.setTimeRange(tmin, tmin);
            QVERIFY(inkRect(picture(widget), Qt::red).isEmpty());
        }
        widget.setAlignment(Core::Time::FromUSecs(Largest));
        widget.setTimeScale(1E300);
        widget.setSelectedTimeWindow(window(-1E9, 1E9));
        picture(widget);
        widget.resize(1, 1);
        picture(widget);
        widget.setAxisWidth(50);
        widget.setDrawAxis(true);
        widget.resize(20, 100);
        QCOMPARE(widget.canvasWidth(), 0);
        picture(widget);
    }

    void rejectsImpossibleScales()
    {
        TestWidget widget;
        for (const double scale : {0.0, -1.0, NaN, Infinity})
            QVERIFY(!widget.setTimeScale(scale));
        QVERIFY(!widget.setTimeRange(NaN, 1));
        QVERIFY(!widget.showTimeRange(10, 10));
        QCOMPARE(widget.timeScale(), 2.0);
        QCOMPARE(widget.tmin(), 0.0);
    }

    void showsRangeAtFirstLayout()
    {
        QWidget window;
        QVBoxLayout layout(&window);
        layout.setContentsMargins(0, 0, 0, 0);
        auto *widget = new TestWidget;
        layout.addWidget(widget);
        widget->showTimeRange(0, 50);
        window.resize(500, 100);
        window.show();
        QCOMPARE(widget->timeScale(), 10.0);

        window.resize(300, 100);
        QCoreApplication::processEvents();
        QCOMPARE(widget->width(), 300);
        QCOMPARE(widget->timeScale(), 10.0);
    }

    void findsAmplitudeRange()
    {
        const Core::TimeWindow all;
        const Samples steps{1, 2, 3, 4, 100};
        const struct
        {
            Samples samples;
            Core::TimeWindow window;
            Range range;
        } cases[] = {
            {{-10, 30}, all, {-11, 31}},
            {steps, window(1, 4), {1.95, 4.05}},
            {{-10, 30}, window(3, 3), {-11, 31}},
            {steps, window(50, 60), {0, 0}},
            {{-5}, all, {-5.5, -4.5}},
            {{0, 0}, all, {-1, 1}},
            {{NaN, 0, Infinity, 1}, all, {-0.025, 1.025}},
            {{NaN, NaN}, all, {0, 0}},
            {{}, all, {0, 0}},
        };
        TestWidget widget;
        for (const auto &item : cases) {
            widget.install({record(0, item.samples)});
            widget.setNormalizationWindow(item.window);
            QVERIFY(isClose(widget.amplitudeRange(0), item.range));
        }

        widget.install({record(0, {0, 0, 0, 8})});
        widget.setMagnification(2);
        widget.setMagnification(0);
        widget.setMagnification(NaN);
        QVERIFY(isClose(widget.amplitudeRange(0), Range(2 + (-0.2 - 2) / 2, 2 + (8.2 - 2) / 2)));

        widget.setMagnification(1);
        widget.setAmplAutoScaleEnabled(false);
        widget.setAmplRange(3, -3);
        QVERIFY(isClose(widget.amplitudeRange(0), Range(3, -3)));
        QVERIFY(isClose(widget.amplitudeRange(-1), Range(0, 0)));
        QVERIFY(isClose(widget.amplitudeRange(1), Range(0, 0)));
    }

    void sharesRangeAmongOverlaidSlots()
    {
        TestWidget widget;
        widget.install({record(0, {-10, 10})}, 0);
        widget.install({record(0, {-1, 3})}, 1);
        widget.setRecordScale(1, 10);
        QVERIFY(isClose(widget.amplitudeRange(1), Range(-1.1, 3.1)));
        widget.setDrawMode(RecordWidget::Overlaid);
        QVERIFY(isClose(widget.amplitudeRange(0), Range(-10.5, 10.5)));
        widget.showScaledValues(true);
        QVERIFY(isClose(widget.amplitudeRange(0), Range(-11, 31)));
        QVERIFY(isClose(widget.amplitudeRange(1), Range(-1.1, 3.1)));
        widget.setRecordVisible(1, false);
        QVERIFY(isClose(widget.amplitudeRange(0), Range(-10.5, 10.5)));
    }

    void drawsTraceBetweenItsExtrema()
    {
        TestWidget widget;
        widget.install({record(10, zigzag(41, -20, 60))});
        const QRect ink = inkRect(picture(widget), Qt::red);
        QCOMPARE(ink.left(), 20);
        QCOMPARE(ink.right(), 100);
        // Caps of steep lines may reach one pixel further.
        QVERIFY(std::abs(ink.top() - widget.mapAmplitude(0, 60)) <= 1);
        QVERIFY(std::abs(ink.bottom() - widget.mapAmplitude(0, -20)) <= 1);
        QVERIFY(std::abs(widget.unmapAmplitude(0, ink.top()) - 60) < 1.5);
        QCOMPARE(widget.unmapAmplitude(0, 0), widget.amplitudeRange(0).second);
        QCOMPARE(widget.unmapAmplitude(0, 99), widget.amplitudeRange(0).first);
    }

    void drawsEachSlotInItsRow()
    {
        TestWidget widget;
        const QColor pens[] = {Qt::red, Qt::blue};
        for (int slot = 0; slot < 2; ++slot) {
            widget.install({record(5, zigzag(80, -1, 1))}, slot);
            widget.setRecordPen(slot, QPen(pens[slot], 1));
        }
        widget.setDrawMode(RecordWidget::InRows);
        QVERIFY(QRect(0, 0, 200, 50).contains(inkRect(picture(widget), Qt::red)));
        QVERIFY(QRect(0, 50, 200, 50).contains(inkRect(picture(widget), Qt::blue)));

        // Amplitudes beyond a fixed range stay inside their row.
        widget.setAmplAutoScaleEnabled(false);
        widget.setAmplRange(-0.1, 0.1);
        QVERIFY(QRect(0, 0, 200, 50).contains(inkRect(picture(widget), Qt::red)));
    }

    void leavesGapsOpen()
    {
        TestWidget widget;
        Samples withHole = zigzag(20, -1, 1);
        for (int i = 5; i < 15; ++i)
            withHole[static_cast<size_t>(i)] = NaN;
        widget.install({record(0, withHole), record(30, zigzag(30, -1, 1)),
                        record(50, zigzag(30, -1, 1)), record(80.3, zigzag(10, -1, 1))});
        const QImage image = picture(widget);
        const auto inkBetween = [&](int left, int right) {
            return inkRect(image.copy(left, 0, right - left + 1, 100), Qt::red);
        };
        QVERIFY(inkBetween(12, 28).isEmpty());
        QVERIFY(inkBetween(42, 58).isEmpty());
        QVERIFY(!inkBetween(62, 158).isEmpty());

        // The shades are translucent, so they are told from the bare canvas at the same height.
        const int y = 20;
        const QRgb bare = image.pixel(190, y);
        QCOMPARE(image.pixel(20, y), bare);
        QVERIFY(image.pixel(50, y) != bare);
        QVERIFY(image.pixel(110, y) != bare);
        QVERIFY(image.pixel(110, y) != image.pixel(50, y));
        QCOMPARE(columnsOf(image, y, QColor(image.pixel(50, y))).first(), 40);
        QCOMPARE(columnsOf(image, y, QColor(image.pixel(50, y))).last(), 59);
    }

    void movesInkWithTheRange()
    {
        TestWidget widget;
        widget.install({record(50, zigzag(10, -1, 1))});
        const QRect before = inkRect(picture(widget), Qt::red);
        widget.setTimeRange(20, 120);
        QCOMPARE(inkRect(picture(widget), Qt::red), before.translated(-40, 0));
        widget.setAlignment(at(-10));
        QCOMPARE(inkRect(picture(widget), Qt::red), before.translated(-20, 0));

        // A range that moves, but not through the widget, shows after updateRecords().
        widget.records(0)->feed(record(60, {100}).get());
        widget.updateRecords();
        QVERIFY(isClose(widget.amplitudeRange(0), Range(-1 - 0.05 * 50.5, 100 + 0.05 * 50.5)));
    }

    void drawsGrid()
    {
        TestWidget widget;
        // Stay clear of the frame.
        const int y = 50;
        const QColor major = onBackground(colors().gridMajor.color());
        const QColor minor = onBackground(colors().gridMinor.color());
        widget.setGridSpacing(20, 5, 0);
        QCOMPARE(columnsOf(picture(widget), y, major), (QVector<int>{40, 80, 120, 160}));
        QCOMPARE(columnsOf(picture(widget), y, minor).size(), 15);
        widget.setGridSpacing(20, 5, 8);
        QCOMPARE(columnsOf(picture(widget), y, major), (QVector<int>{24, 64, 104, 144, 184}));
        widget.setGridSpacing(0, 5, 0);
        QVERIFY(columnsOf(picture(widget), y, minor).isEmpty());
        widget.setGridSpacing(NaN, NaN, 0);
        QVERIFY(columnsOf(picture(widget), y, major).isEmpty());

        QVERIFY(widget.setGridVRange(-100, 100));
        QVERIFY(columnsOf(picture(widget), y, minor).size() > 150);
        QVERIFY(!widget.setGridVRange(NaN, 1));
    }

    void paintsHooksInTheirOrder()
    {
        HookedWidget widget;
        widget.install({record(20, zigzag(60, -1, 1))});
        widget.setDrawAxis(true);
        widget.setAxisWidth(40);
        widget.behindTraces = Qt::green;
        QImage image = picture(widget);
        QCOMPARE(widget.origins, (QVector<QPointF>{{40, 0}, {0, 0}, {0, 0}}));
        QVERIFY(!inkRect(image, Qt::red).isEmpty());
        QCOMPARE(inkRect(image, Qt::green).left(), 41);
        QCOMPARE(inkRect(image, Qt::green).right(), 198);

        widget.aboveTraces = Qt::blue;
        image = picture(widget);
        QVERIFY(inkRect(image, Qt::red).isEmpty());
        QVERIFY(inkRect(image, Qt::green).isEmpty());
    }

    void placesAxisTexts()
    {
        const struct
        {
            double lower, upper;
            int height;
            QStringList texts;
        } cases[] = {
            {-5, 5, 100, {"4", "2", "0", "-2", "-4"}},
            {-2.4E6, 2.4E6, 100, {"2e+06", "1e+06", "0", "-1e+06", "-2e+06"}},
            {0, 3E-9, 50, {"2e-09", "1e-09"}},
            {100000, 100004, 60, {"1.00003e+05", "1.00002e+05", "1.00001e+05"}},
            {-123.4, 567.8, 25, {"568", "-123"}},
            {-1, 1, 19, {}},
            {1, 1, 100, {}},
            {-Infinity, 1, 100, {}},
        };
        const auto width = [](const QString &text) { return 6 * text.size(); };
        for (const auto &item : cases) {
            QStringList found;
            for (const auto &tick :
                 Gui::amplitudeTicks(item.lower, item.upper, {item.height, 10, 70, width}))
                found.append(tick.text);
            QCOMPARE(found, item.texts);
        }
    }
};

QTEST_MAIN(TestRecordWidget)
#include "tst_recordwidget.moc"
