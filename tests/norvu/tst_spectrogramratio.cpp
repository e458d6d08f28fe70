// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/spectrogramrecordwidget.h>

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/ringbuffer.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/records/typedarray.h>

#include <QApplication>
#include <QtTest>

#include <random>

using namespace Norvu::Gui;
using namespace Tellarix;

namespace {

constexpr double Rate = 20;
const Core::Time Start(2024, 1, 5);

RecordCPtr noise(int count)
{
    Core::SmartPointer<DoubleArray> samples(new DoubleArray(count));
    std::minstd_rand random(1);
    for (int i = 0; i < count; ++i)
        samples->typedData()[i] = static_cast<int>(random() % 2001) - 1000;
    return new Record(StreamCodes::FromID("GE.APE..BHZ"), Start, Rate, samples);
}

} // namespace

/** On a screen with two device pixels a pixel. */
class TestSpectrogramRatio : public QObject
{
    Q_OBJECT

private slots:
    void picturesHaveThePixelsOfTheScreen()
    {
        Norvu::Utils::LUT<double, unsigned int> table;
        table.fill(0, 1000, [](double value) { return qRgb(0, static_cast<int>(value / 4), 255); });
        SpectrogramRecordWidget widget;
        widget.resize(200, 80);
        widget.setAlignment(Start);
        widget.setTimeRange(0, 100);
        widget.setTimeScale(widget.canvasWidth() / 100.0);
        widget.setRecords(0, new RingBuffer(0), true);
        widget.setRecordVisible(0, false);
        widget.records(0)->feed(noise(100 * static_cast<int>(Rate)).get());
        widget.setSpectrogramSettings(0.2, 2, 3, 32);
        widget.setSpectrogramSlot(0);
        widget.setColorLUT(&table);
        widget.setSpectrogramEnabled(true);

        const QImage image = widget.grab().toImage();
        QCOMPARE(image.size(), 2 * widget.size());
        // Colours repeat within most pixels if the picture has one colour for each.
        int count = 0, across = 0, down = 0;
        for (int y = 20; y < 140; y += 2) {
            for (int x = 100; x < 300; x += 2) {
                ++count;
                across += image.pixel(x, y) != image.pixel(x + 1, y);
                down += image.pixel(x, y) != image.pixel(x, y + 1);
            }
        }
        QVERIFY2(2 * across > count && 2 * down > count,
                 qPrintable(QStringLiteral("%1 and %2 of %3").arg(across).arg(down).arg(count)));
    }
};

int main(int argc, char **argv)
{
    qputenv("QT_SCALE_FACTOR", "2");
    QApplication application(argc, argv);
    TestSpectrogramRatio test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_spectrogramratio.moc"
