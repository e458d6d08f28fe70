// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowname.h"
#include "spectrograms.h"

#include <norvu/gui/spectrogramaxis.h>
#include <norvu/gui/spectrogramproblem.h>

#include <QtTest>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

using namespace Norvu::Gui;

namespace {

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

SpectrogramAxis axisOf(const char *text)
{
    return SpectrogramAxis(settingsOf(text));
}

QString labelsOf(const QVector<RoundTick> &ticks)
{
    QStringList texts;
    for (const RoundTick &tick : ticks) {
        if (tick.isMajor())
            texts << tick.text;
    }
    return texts.join(' ');
}

} // namespace

class SpectrogramAxisTest : public QObject
{
    Q_OBJECT

private slots:
    void valuesStandAtCentresOfBands()
    {
        const std::tuple<const char *, QByteArray, double, double> rows[] = {
            {"linear, bottom", QByteArray("freqs(1,10,2,3)"), 0.0, 3.25},
            {"linear, between rows", QByteArray("freqs(1,10,2,3)"), 0.5, 6.625},
            {"linear, last row", QByteArray("freqs(1,10,2,3)"), 2 / 3.0, 7.75},
            {"top stays at last row", QByteArray("freqs(1,10,2,3)"), 1.0, 7.75},
            {"below the picture", QByteArray("freqs(1,10,2,3)"), -1.0, 3.25},
            {"not a number", QByteArray("freqs(1,10,2,3)"), NaN, 3.25},
            {"log, middle row", QByteArray("periods_log(1,100,2,3)"), 1 / 3.0, 10.0},
            {"descending", QByteArray("periods_log(100,1,2,3)"), 0.0, std::pow(10.0, 1.5)},
            {"one band", QByteArray("periods_log(1,100,2,1)"), 0.7, std::sqrt(10.0)},
            {"bands cover each other", QByteArray("freqs(1,3,1,4)"), 1.0, 2.0}};
        for (const auto &[name, settings, position, value] : rows) {
            const RowName shown(name);
            QCOMPARE(axisOf(settings).valueAt(position), value);
        }
    }

    void positionsAndValuesAreInverse()
    {
        for (const char *text : {"periods_log(0.05,100,10,64)", "freqs(20,1,5,16)",
                                 "periods(2,3,9,2)", "freqs_log(40,0.1,3,7)"}) {
            const SpectrogramAxis axis = axisOf(text);
            const double last = (axis.rows() - 1.0) / axis.rows();
            for (int i = 0; i <= 20; ++i) {
                const double position = last * i / 20;
                QVERIFY(std::abs(axis.positionOf(axis.valueAt(position)) - position) < 1E-12);
            }
        }
        QCOMPARE(axisOf("freqs(1,10,2,3)").positionOf(12.25), 4 / 3.0);
        QVERIFY(std::isnan(axisOf("freqs_log(1,10,2,3)").positionOf(0)));
        QCOMPARE(axisOf("freqs_log(1,10,2,1)").positionOf(5), 0.5);
    }

    void isEmptyWithoutBands()
    {
        const std::tuple<double, int, int, int> rows[] = {
            {1, 2, 4, 8}, {1, 1, 4, 0}, {1, 1, 0, 8}, {0, 0, 4, 8}, {NaN, 0, 4, 8}};
        for (const auto &[lower, mode, divisions, bands] : rows) {
            SpectrogramSettings settings;
            settings.lower = lower;
            settings.upper = 10;
            settings.mode = mode;
            settings.divisions = divisions;
            settings.bands = bands;
            settings.logarithmic = true;
            const SpectrogramAxis axis(settings);
            QVERIFY(axis.isEmpty() && axis.ticks(0.1).isEmpty());
            QVERIFY(std::isnan(axis.valueAt(0.5)) && std::isnan(axis.positionOf(1)));
        }
        QVERIFY(SpectrogramAxis(SpectrogramSettings()).isEmpty());
    }

    void ticksAreRound()
    {
        const std::tuple<const char *, double, double, bool, double, QString> rows[] = {
            {"decades", 0.05, 100.0, true, 0.2, "0.1 1 10 100"},
            {"1-2-5", 0.05, 100.0, true, 0.09, "0.05 0.1 0.2 0.5 1 2 5 10 20 50 100"},
            {"each digit", 0.5, 6.0, true, 0.04, "0.5 0.6 0.7 0.8 0.9 1 2 3 4 5 6"},
            {"descending", 100.0, 0.05, true, 0.2, "100 10 1 0.1"},
            {"many decades", 1E-6, 1E6, true, 0.15, "1e-6 1e-4 0.01 1 100 10000 1e6"},
            {"one decade mark in reach", 0.6, 3.0, true, 0.4, "1 2"},
            {"less than a digit", 2.1, 2.9, true, 0.3, "2.2 2.5 2.8"},
            {"room for the ends alone", 0.1, 100.0, true, 0.9, "0.1 100"},
            {"room for one", 0.3, 30.0, true, 1.5, "10"},
            {"linear", 0.0, 10.0, false, 0.15, "0 2 4 6 8 10"},
            {"linear, both signs", -1.0, 1.0, false, 0.2, "-1 -0.5 0 0.5 1"},
            {"linear, narrow", 1000.0, 1000.3, false, 0.3, "1000 1000.1 1000.2 1000.3"},
            {"linear, far apart", 1.0, 1.9, false, 0.7, "1 1.8"},
            {"no extent", 3.0, 3.0, false, 0.1, ""},
            {"no logarithm", 0.0, 3.0, true, 0.1, ""}};
        for (const auto &[name, begin, end, logarithmic, distance, labels] : rows) {
            const RowName shown(name);
            QCOMPARE(labelsOf(roundTicks(begin, end, logarithmic, distance)), labels);
        }
    }

    /** Whatever the axis: labels are apart, in order, and tell the value that stands there. */
    void anyAxisHasTwoSeparateLabels()
    {
        const unsigned seed = 7;
        qInfo("seed %u", seed);
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> exponent(-4, 4), share(0.01, 0.6);
        for (int i = 0; i < 3000; ++i) {
            SpectrogramSettings settings;
            settings.lower = std::pow(10.0, exponent(random));
            settings.upper =
                i % 3 ? settings.lower * (1 + share(random)) : std::pow(10.0, exponent(random));
            settings.mode = i % 2;
            settings.divisions = 1 + i % 40;
            settings.bands = 2 + i % 64;
            settings.logarithmic = i % 4 < 2;
            const SpectrogramAxis axis(settings);
            if (axis.isSingleValue())
                continue;

            const double distance = share(random) * (axis.rows() - 1) / axis.rows();
            QVector<RoundTick> labelled;
            double last = -1;
            for (const RoundTick &tick : axis.ticks(distance)) {
                QVERIFY2(tick.position > last, qPrintable(tick.text));
                last = tick.position;
                QVERIFY(std::abs(axis.valueAt(tick.position) / tick.value - 1) < 1E-6);
                if (tick.isMajor())
                    labelled << tick;
            }
            QVERIFY2(labelled.size() >= 2, qPrintable(labelsOf(labelled)));
            for (int k = 0; k < labelled.size(); ++k) {
                QVERIFY(std::abs(labelled[k].text.toDouble() / labelled[k].value - 1) < 1E-9);
                QVERIFY(k == 0 ||
                        labelled[k].position - labelled[k - 1].position > 0.999 * distance);
            }
        }
    }

    void settingsProblems()
    {
        const QString known = "known are periods_log, periods, freqs_log and freqs";
        const QString count =
            "expected 4 numbers (lower, upper, divisions and bands) instead of %1";
        const QPair<QString, QString> rows[] = {
            {"Periods_LOG (0.1, 100,10,64) rest", ""},
            {"periods",
             "expected \"(\" behind the name of an axis, as in periods_log(0.1,100,10,64)"},
            {"per%2 (1,2,3,4)", "unknown axis \"per%2\"; " + known},
            {"(1,2,3,4)", "expected the name of an axis in front of \"(\"; " + known},
            {"freqs(1,2,3,4", "expected \")\" behind the numbers, but the text ends"},
            {"freqs( )", count.arg(0)},
            {"freqs(1,2,3)", count.arg(3)},
            {"freqs(1,2,3,4,)", count.arg(5)},
            {"freqs(1,%1x,3,4)", "expected a number for upper instead of \"%1x\""},
            {"freqs(, 2,3,4)", "expected a number for lower, but there is nothing"},
            {"freqs(1,2,3.5,4)", "expected a whole number for divisions instead of \"3.5\""},
            {"freqs(1,2,3,3000000000)", "bands 3e+09 is above 2147483647"},
            {"freqs(1,-2,3,0)", "upper -2 is not above 0"},
            {"freqs(1,2,3, 0)", "bands 0 is not above 0"},
            {"freqs(-1,2,3,x)", "expected a whole number for bands instead of \"x\""},
        };
        for (const auto &[text, problem] : rows)
            QCOMPARE(spectrogramSettingsProblem(text), problem);
    }

    void problemsAgreeWithParser()
    {
        const unsigned seed = 11;
        qInfo("seed %u", seed);
        std::mt19937 random(seed);
        const std::string letters = "(),.0123456789-+eE xperiodsfq_log\t";
        int right = 0;
        for (int i = 0; i < 20000; ++i) {
            std::string text = i % 2 ? "periods_log(0.1,100,10,64)" : "freqs(1,10,2,3)";
            for (unsigned k = random() % 4; k > 0; --k) {
                const size_t place = random() % text.size();
                const char letter = letters[random() % letters.size()];
                text.replace(place, random() % 2, random() % 2, letter);
            }
            const bool isRight = SpectrogramSettings().fromString(text);
            right += isRight;
            QVERIFY2(spectrogramSettingsProblem(text.c_str()).isEmpty() == isRight, text.c_str());
        }
        QVERIFY(right > 2000 && right < 18000);
    }

    /** Counted in a matrix too: the bands that the message speaks of are those without signal. */
    void rateProblems()
    {
        const QString limit = " up to or above 10 Hz, half the sampling frequency; ";
        const std::tuple<const char *, QByteArray, double, int, QString> rows[] = {
            {"all fit", QByteArray("periods_log(0.5,20,4,8)"), 20.0, 0, ""},
            {"highest corner at the limit", QByteArray("freqs(1,10,3,5)"), 20.0, 1,
             "1 of 5 bands reaches" + limit + "it stays at 0"},
            {"periods", QByteArray("periods_log(0.06,20,4,8)"), 20.0, 1,
             "1 of 8 bands reaches" + limit + "it stays at 0"},
            {"descending", QByteArray("freqs_log(12,1,10,16)"), 20.0, 2,
             "2 of 16 bands reach" + limit + "they stay at 0"},
            {"all beyond", QByteArray("freqs(12,20,4,6)"), 20.0, 6,
             "all bands reach" + limit + "they stay at 0"},
            {"mean of one sample", QByteArray("freqs_log(40,1,10,16)"), 20.0, 16,
             "all bands stay at 0: the running mean that is "
             "taken off, over 0.025 s, holds a single "
             "sample at 20 Hz"},
            {"no width", QByteArray("freqs(3,3,2,4)"), 20.0, 4,
             "lower and upper are both 3: the bands have no width and stay at 0"}};
        for (const auto &[name, text, rate, silent, problem] : rows) {
            const RowName shown(name);
            const SpectrogramSettings settings = settingsOf(text.toStdString());
            QCOMPARE(spectrogramRateProblem(settings, rate), problem);

            Spectrogram<float> spectrogram(settings);
            spectrogram.setSamplingFrequency(rate);
            const auto samples = noise<float>(500);
            spectrogram.pushData(500, samples.data());
            const float *last =
                spectrogram.data() + (spectrogram.columns() - 1) * spectrogram.rows();
            QCOMPARE(static_cast<int>(std::count(last, last + spectrogram.rows(), 0.0f)), silent);
        }
    }
};

QTEST_MAIN(SpectrogramAxisTest)
#include "tst_spectrogramaxis.moc"
