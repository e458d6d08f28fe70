// SPDX-License-Identifier: LGPL-3.0-or-later

#include "spectrograms/spectrogramscale.h"

#include "norvu/gradienttesting.h"
#include "norvu/ink.h"
#include "norvu/spectrograms.h"

#include <norvu/gui/spectrogramimage.h>
#include <tellarix/qt/scheme.h>

#include <QHBoxLayout>
#include <QtTest>

#include <cmath>
#include <limits>
#include <vector>

using namespace Workbench;
using Norvu::Gui::Spectrogram;
using Norvu::Gui::SpectrogramAxis;
using Norvu::Gui::SpectrogramSettings;
using Tellarix::Gui::Gradient;
using Tellarix::Gui::RulerLabel;

namespace {

constexpr double Pi = 3.14159265358979323846;

Gradient threeColors()
{
    return GradientTesting::gradientOf({{0, Qt::red}, {1, Qt::green}, {2, Qt::blue}});
}

/** A scale as wide as it wants to be, with amplitudes up to 4300 counts. */
struct Bench
{
    explicit Bench(const char *settings, int height = 100)
    {
        scale.setAxis(SpectrogramAxis(settingsOf(settings)));
        setColors(0, 4300, false);
        scale.resize(scale.sizeHint().width(), height);
        Ink::picture(scale); // A hidden widget learns of its size when it is painted.
    }

    void setColors(double lower, double upper, bool logarithmic, bool discrete = false)
    {
        scale.setColors(threeColors(), discrete, lower, upper, logarithmic, "counts");
    }

    double positionOf(const QVector<RulerLabel> &labels, const QString &text) const
    {
        for (const RulerLabel &label : labels) {
            if (label.text == text)
                return label.position;
        }
        return std::numeric_limits<double>::quiet_NaN();
    }

    /** Rows in which a labelled tick of the axis stands. */
    QVector<int> tickRows()
    {
        const QImage image = Ink::picture(scale);
        const QRgb ink = scale.palette().color(QPalette::WindowText).rgb();
        const int x = Tellarix::Gui::Scheme::Current().rulers.majorTick - 1;
        QVector<int> rows;
        for (int y = 0; y < image.height(); ++y) {
            if (image.pixel(x, y) == ink)
                rows << y;
        }
        return rows;
    }

    SpectrogramScale scale;
};

/** Rows with ink that are not next to others. */
int runsOfInk(const QImage &image, int left, int width)
{
    int runs = 0;
    bool wasInk = false;
    for (int y = 0; y < image.height(); ++y) {
        const QRect row(left, y, width, 1);
        const bool isInk = !Ink::rectOtherThan(image, row, image.pixelColor(left, 0)).isEmpty();
        runs += isInk && !wasInk;
        wasInk = isInk;
    }
    return runs;
}

/** Line of the picture about which the energy of a sine of 1 Hz lies, from its top. */
double lineOfSecond(const SpectrogramSettings &settings, int height)
{
    Spectrogram<float> spectrogram(settings);
    spectrogram.setSamplingFrequency(50);
    std::vector<float> samples(10000);
    for (size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<float>(std::sin(2 * Pi * static_cast<double>(i) / 50));
    spectrogram.pushData(static_cast<int>(samples.size()), samples.data());

    Norvu::Utils::LUT<double, unsigned int> lut;
    lut.fill(0, 2, [](double value) { return static_cast<unsigned int>(1000 * value); });
    QImage image;
    generateImageCW(image, &spectrogram, &lut, 1, height, spectrogram.columns() - 1, 1);
    double sum = 0, moment = 0;
    for (int y = 0; y < height; ++y) {
        const double value = reinterpret_cast<const QRgb *>(image.constScanLine(y))[0];
        sum += value;
        moment += value * y;
    }
    return moment / sum;
}

} // namespace

class SpectrogramScaleTest : public QObject
{
    Q_OBJECT

private slots:
    void tickStandsAtRowOfItsBand_data()
    {
        QTest::addColumn<QByteArray>("settings");
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("row"); // of the matrix
        QTest::addColumn<double>("rows");
        // Centres: from half a decade to 1.5 decades in 21 rows, and from 1.5 to 9.5 in 17 rows.
        const QByteArray log = "periods_log(0.1,10,2,21)";
        QTest::newRow("logarithmic") << log << "1" << 10.0 << 21.0;
        QTest::newRow("descending")
            << QByteArray("periods_log(10,0.1,2,21)") << "1" << 10.0 << 21.0;
        QTest::newRow("between rows") << log << "2" << 10 + 20 * std::log10(2.0) << 21.0;
        QTest::newRow("linear") << QByteArray("freqs(1,10,9,17)") << "4" << 5.0 << 17.0;
    }

    void tickStandsAtRowOfItsBand()
    {
        QFETCH(QByteArray, settings);
        QFETCH(QString, text);
        QFETCH(double, row);
        QFETCH(double, rows);
        Bench bench(settings, 400);
        for (const auto &area : {qMakePair(0, 400), qMakePair(40, 301)}) {
            bench.scale.setPictureArea(area.first, area.second);
            const int line = static_cast<int>(std::lround(row / rows * area.second));
            const int y = area.first + area.second - 1 - line;
            QCOMPARE(std::floor(bench.positionOf(bench.scale.axisLabels(), text)), 1.0 * y);
            QVERIFY(bench.tickRows().contains(y));
            QVERIFY(!bench.tickRows().contains(y - 1) && !bench.tickRows().contains(y + 1));
        }
    }

    void tickStandsAtPictureOfItsPeriod()
    {
        for (const char *text : {"periods_log(0.2,5,20,60)", "freqs_log(4,0.3,20,60)"}) {
            Bench bench(text, 300);
            const double line = lineOfSecond(settingsOf(text), 300);
            const double tick = bench.positionOf(bench.scale.axisLabels(), "1") - 0.5;
            QVERIFY2(std::abs(line - tick) < 2, qPrintable(QString("%1 %2").arg(line).arg(tick)));
        }
    }

    void textsFitAndDoNotOverlap_data()
    {
        QTest::addColumn<QByteArray>("settings");
        QTest::addColumn<int>("height");
        for (const char *settings : {"periods_log(0.05,100,10,64)", "periods_log(100,0.05,10,64)",
                                     "freqs(1,20,10,64)", "freqs_log(2,7,4,16)"}) {
            for (const int height : {24, 60, 400})
                QTest::newRow(qPrintable(QString("%1 %2").arg(settings).arg(height)))
                    << QByteArray(settings) << height;
        }
    }

    void textsFitAndDoNotOverlap()
    {
        QFETCH(QByteArray, settings);
        QFETCH(int, height);
        Bench bench(settings, height);
        const int textLeft = Tellarix::Gui::Scheme::Current().rulers.majorTick + 1;
        const int textWidth = bench.scale.fontMetrics().horizontalAdvance("00");
        const QImage image = Ink::picture(bench.scale);
        const auto check = [&](const QVector<RulerLabel> &labels, int left) {
            QVERIFY(labels.size() >= 2 && labels.size() * 10 <= std::max(20, height));
            QVERIFY(labels.first().start >= 0);
            QVERIFY(labels.last().start + labels.last().extent <= height);
            QCOMPARE(runsOfInk(image, left + textLeft, textWidth), labels.size());
        };
        check(bench.scale.axisLabels(), 0);
        check(bench.scale.colorLabels(), bench.scale.colorBarRect().right() + 2);
    }

    void barShowsColorsFromBottom()
    {
        Bench bench("freqs(1,20,10,64)", 121);
        bench.scale.setPictureArea(10, 103);
        const QRect bar = bench.scale.colorBarRect();
        const QImage image = Ink::picture(bench.scale);
        QCOMPARE(bar.bottom(), 111);
        QCOMPARE(image.pixelColor(bar.center().x(), bar.bottom()), QColor(Qt::red));
        QCOMPARE(image.pixelColor(bar.center()), QColor(Qt::green));
        QCOMPARE(image.pixelColor(bar.center().x(), bar.top()), QColor(Qt::blue));
        QCOMPARE(bench.positionOf(bench.scale.colorLabels(), "0"), bar.bottom() + 0.5);
    }

    void barOfDiscreteColorsHasEqualParts()
    {
        Bench bench("freqs(1,20,10,64)", 92);
        bench.setColors(0, 2, false, true);
        const QImage image = Ink::picture(bench.scale);
        for (const QColor color : {Qt::red, Qt::green, Qt::blue})
            QCOMPARE(Ink::rectOfColor(image, color).height(), 30);
        const double first = Ink::rectOfColor(image, Qt::green).bottom() + 1;
        QVERIFY(std::abs(bench.positionOf(bench.scale.colorLabels(), "1") - first) <= 1);
    }

    void logarithmicBarHasEqualDecades()
    {
        Bench bench("freqs(1,20,10,64)", 203);
        bench.setColors(1, 10000, true);
        const auto &labels = bench.scale.colorLabels();
        for (const char *text : {"10", "100", "1000"})
            QCOMPARE(bench.positionOf(labels, text), 201.5 - 50 * std::log10(atof(text)));
    }

    void impossibleRangesHaveNoNumbers()
    {
        Bench bench("freqs(1,20,10,64)");
        const double none = std::numeric_limits<double>::quiet_NaN();
        const double ends[][2] = {{3, 3}, {5, 1}, {none, 1}, {0, none}, {0, HUGE_VAL}};
        for (const auto &range : ends) {
            bench.setColors(range[0], range[1], false);
            QVERIFY(bench.scale.colorLabels().isEmpty());
            QVERIFY(!Ink::rectOfColor(Ink::picture(bench.scale), Qt::red).isEmpty());
        }
        bench.setColors(0, 10, true);
        QVERIFY(bench.scale.colorLabels().isEmpty());
        bench.scale.setAxis(SpectrogramAxis());
        QVERIFY(bench.scale.axisLabels().isEmpty());
    }

    void widthFollowsContent()
    {
        QWidget window;
        Bench bench("freqs(1,20,10,64)");
        auto *layout = new QHBoxLayout(&window);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(&bench.scale);
        window.show();
        const int full = bench.scale.sizeHint().width();
        QCOMPARE(layout->sizeHint().width(), full);
        bench.scale.setColorBarVisible(false);
        const int axis = bench.scale.sizeHint().width();
        QCOMPARE(layout->sizeHint().width(), axis);
        QVERIFY(0 < axis && axis < full);
        QVERIFY(Ink::rectOfColor(Ink::picture(bench.scale), Qt::red).isEmpty());
        bench.scale.setAxis(SpectrogramAxis());
        QCOMPARE(bench.scale.sizeHint().width(), 0);
        bench.scale.setColorBarVisible(true);
        QVERIFY(bench.scale.sizeHint().width() > full - axis);
        QFont font = bench.scale.font();
        font.setPixelSize(40);
        bench.scale.setFont(font);
        QVERIFY(bench.scale.sizeHint().width() > full);
    }
};

QTEST_MAIN(SpectrogramScaleTest)
#include "tst_spectrogramscale.moc"
