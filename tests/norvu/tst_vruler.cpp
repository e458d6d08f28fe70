// SPDX-License-Identifier: LGPL-3.0-or-later

#include "ink.h"
#include "rowname.h"

#include <norvu/gui/vruler.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>

#include <tellarix/core/records/ringbuffer.h>
#include <tellarix/core/records/typedarray.h>
#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/scheme.h>

#include <QtTest>

using namespace Norvu::Gui;
using Tellarix::Gui::RecordWidget;

namespace {

/** Puts a record from -@p extent to @p extent into a slot; its mean is a third of it. */
void setRecords(RecordWidget &widget, int slot, double extent)
{
    const double samples[] = {-extent, extent, extent};
    auto *sequence = new Tellarix::RingBuffer(0);
    sequence->feed(new Tellarix::Record(Tellarix::StreamCodes::FromID("XX.TEST.00.BHZ"),
                                        Tellarix::Core::Time(2024, 1, 5), 1.0,
                                        new Tellarix::DoubleArray(3, samples)));
    widget.setRecords(slot, sequence);
}

} // namespace

class VRulerTest : public QObject
{
    Q_OBJECT

private slots:
    void tickTexts()
    {
        const std::tuple<const char *, double, double, QString> rows[] = {
            {"large", 1500.0, 2000.0, "1.5e+03"},
            {"1 itself", 1.0, 1.5, "1"},
            {"below 1", -0.25, 0.0, "-0.25"},
            {"rounding noise about zero", 1.4E-17, 0.1, "0"},
            {"a hundredth of the distance", 0.001, 0.101, "0.001"},
            {"no distance", 0.0, 0.0, "0"}};
        for (const auto &[name, value, next, text] : rows) {
            const RowName shown(name);
            VRuler ruler;
            QString result;
            QVERIFY(ruler.getTickText(value, next, 0, result));
            QCOMPARE(result, text);
            QVERIFY(!ruler.getTickText(value, next, 1, result));
        }
    }

    void takesRangeOfCurrentSlot()
    {
        VRuler ruler;
        RecordWidget widget;
        setRecords(widget, 0, 10);
        setRecords(widget, 1, 30);
        widget.setRecordScale(1, 0.5);
        widget.setCurrentRecords(1);
        ruler.updateScale(&widget);
        QCOMPARE(ruler.lower(), widget.amplitudeRange(1).first);
        QCOMPARE(ruler.upper(), widget.amplitudeRange(1).second);

        widget.showScaledValues(true);
        ruler.updateScale(&widget);
        QCOMPARE(ruler.lower(), 0.5 * widget.amplitudeRange(1).first);
        QCOMPARE(ruler.upper(), 0.5 * widget.amplitudeRange(1).second);
    }

    void takesRangeOfShownSlotsWhenOverlaid()
    {
        RecordWidget widget;
        widget.setDrawMode(RecordWidget::Overlaid);
        for (int slot = 0; slot < 3; ++slot) {
            setRecords(widget, slot, 10);
            widget.setRecordScale(slot, slot + 1);
        }
        widget.showScaledValues(true);

        VRuler ruler;
        ruler.updateScale(&widget);
        QCOMPARE(ruler.upper(), 31.5);
        widget.setRecordScale(2, -3);
        ruler.updateScale(&widget);
        QCOMPARE(ruler.upper(), -31.5);
        widget.setRecordVisible(2, false);
        ruler.updateScale(&widget);
        QCOMPARE(ruler.upper(), 21.0);
        widget.setRecords(1, nullptr);
        ruler.updateScale(&widget);
        QCOMPARE(ruler.upper(), 10.5);

        // With filtering on and no filter there are no filtered sequences.
        widget.enableFiltering(true);
        ruler.updateScale(&widget);
        QCOMPARE(ruler.lower(), 0.0);
        QCOMPARE(ruler.upper(), 0.0);
    }

    void gridFallsOnTicks()
    {
        const std::tuple<const char *, double, double> rows[] = {
            {"automatic range", 1.0, 0.0},
            {"reversed polarity", -2.0, 0.0},
            {"reversed polarity, trace turned over", -2.0, -25.0},
            {"no scale that can be used", 0.0, 0.0}};
        for (const auto &[name, scale, top] : rows) {
            const RowName shown(name);
            RecordWidget widget;
            widget.resize(100, 240);
            setRecords(widget, 0, 10);
            widget.setRecordScale(0, scale);
            widget.showScaledValues(true);
            widget.setAmplAutoScaleEnabled(top == 0);
            widget.setAmplRange(-top, top);
            VRuler ruler;
            ruler.resize(60, 240);
            ruler.updateScale(&widget);
            const double pixel = ruler.valueToPixel(7 * widget.shownFactor(0));
            QVERIFY(std::abs(pixel - widget.mapAmplitude(0, 7)) <= 1);
            QVERIFY(std::abs(ruler.pixelToValue(pixel) - 7 * widget.shownFactor(0)) < 1E-9);

            widget.setRecordPen(0, QPen(Qt::transparent));
            const QImage withGrid = Ink::picture(widget);
            widget.setGridVRange(0, 0);
            const QImage withoutGrid = Ink::picture(widget);
            QVector<int> lines;
            for (int y = 2; y < widget.height() - 2; ++y) {
                if (withGrid.pixel(50, y) != withoutGrid.pixel(50, y))
                    lines.append(y);
            }

            const QImage picture = Ink::picture(ruler);
            const int column =
                ruler.width() - Tellarix::Gui::Scheme::Current().rulers.minorTick - 1;
            QVector<int> ticks;
            for (int y = 2; y < ruler.height() - 2; ++y) {
                if (picture.pixel(column, y) == ruler.palette().color(QPalette::WindowText).rgb())
                    ticks.append(y);
            }
            QVERIFY(ticks.size() > 3);
            QCOMPARE(lines, ticks);
        }
    }
};

QTEST_MAIN(VRulerTest)
#include "tst_vruler.moc"
