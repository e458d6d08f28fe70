// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowname.h"
#include "spectrograms.h"

#include <norvu/gui/iirenvelope_p.h>

#include <QtTest>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <random>
#include <string>
#include <vector>

using namespace Norvu::Gui;

namespace {

constexpr double Pi = 3.14159265358979323846;
constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
constexpr double Infinity = std::numeric_limits<double>::infinity();

struct Band
{
    double low;
    double high;
};
using Bands = std::vector<Band>;
using Real = long double;
using Signal = std::vector<Real>;

// The plain form of a band, with sums from prefix sums and each pole by itself.

Signal runningMean(const Signal &x, double seconds, double rate)
{
    const size_t length = std::max<size_t>(1, size_t(std::lround(seconds * rate)));
    Signal sums{0};
    for (const Real v : x)
        sums.push_back(sums.back() + v);
    Signal result;
    for (size_t i = 1; i <= x.size(); ++i) {
        const size_t count = std::min(i, length);
        result.push_back((sums[i] - sums[i - count]) / Real(count));
    }
    return result;
}

Signal bandpass(const Signal &x, Band band, double rate)
{
    using Complex = std::complex<Real>;
    const Real low = std::tan(Real(Pi) * band.low / rate);
    const Real high = std::tan(Real(Pi) * band.high / rate);
    const Complex centre = std::polar(Real(1), 2 * std::atan(std::sqrt(low * high)));
    Signal result = x;
    for (int k = 0; k < 4; ++k) {
        const Complex prototype = std::polar(Real(1), Real(Pi) * (2 * k + 5) / 8);
        const Complex half = Real(0.5) * prototype * (high - low);
        const Complex root = std::sqrt(half * half - low * high);
        // Of all eight poles those above the real axis; the others are their conjugates.
        const Complex s = (half + root).imag() > 0 ? half + root : half - root;
        const Complex z = (Real(1) + s) / (Real(1) - s);
        const Real gain =
            std::abs((centre - z) * (centre - std::conj(z)) / (centre * centre - Real(1)));
        Complex first = 0, second = 0;
        Real last = 0, beforeLast = 0;
        for (Real &v : result) {
            first = gain * (v - beforeLast) + z * first;
            second = first + std::conj(z) * second;
            beforeLast = last;
            last = v;
            v = second.real();
        }
    }
    return result;
}

Signal plainBand(const Signal &x, Band band, double highPassSeconds, double rate)
{
    Signal signal = x;
    const Signal mean = runningMean(x, highPassSeconds, rate);
    for (size_t i = 0; i < x.size(); ++i)
        signal[i] -= mean[i];
    signal = bandpass(signal, band, rate);
    const Real gain = rate / (2 * Real(Pi) * std::sqrt(Real(band.low) * band.high));
    Real last = 0;
    for (Real &v : signal) {
        const Real slope = gain * (v - last);
        last = v;
        v = std::sqrt(v * v + slope * slope);
    }
    return runningMean(signal, 1.0 / band.low, rate);
}

/** Largest difference of a matrix from the plain form, in parts of each band's maximum. */
template <typename T>
double worstError(const Spectrogram<T> &spectrogram, const std::vector<T> &samples,
                  const Bands &bands, double highPassSeconds)
{
    const Signal x(samples.begin(), samples.end());
    Real worst = 0;
    for (size_t r = 0; r < bands.size(); ++r) {
        const Signal y = plainBand(x, bands[r], highPassSeconds, spectrogram.samplingFrequency());
        const Real maximum = *std::max_element(y.begin(), y.end());
        for (size_t c = 0; c < y.size(); ++c) {
            const Real error = std::abs(spectrogram.data()[c * bands.size() + r] - y[c]) / maximum;
            if (!(error <= worst))
                worst = error;
        }
    }
    return double(worst);
}

Bands logarithmicPeriods(double lower, double upper, int divisions, int count)
{
    Bands bands;
    const double width = std::pow(upper / lower, 1.0 / divisions);
    const double step = std::pow(upper / lower / width, 1.0 / (count - 1));
    for (int i = 0; i < count; ++i) {
        const double shortest = lower * std::pow(step, i);
        bands.push_back({1.0 / (shortest * width), 1.0 / shortest});
    }
    return bands;
}

template <typename T>
void compareWithPlainForm(double tolerance)
{
    const auto samples = noise<T>(60000);
    const auto spectrogram = spectrogramOf<T>("periods_log(0.1,100,10,21)", 100);
    for (size_t first = 0; first < samples.size(); first += 500)
        spectrogram->pushData(500, samples.data() + first);
    QCOMPARE(spectrogram->rows(), 21);
    QCOMPARE(spectrogram->columns(), 60000);
    const double error =
        worstError(*spectrogram, samples, logarithmicPeriods(0.1, 100, 10, 21), 100);
    QVERIFY2(error <= tolerance, qPrintable(QString::number(error)));

    const auto values = matrixOf(*spectrogram);
    const auto range = std::minmax_element(values.begin(), values.end());
    QCOMPARE(spectrogram->minimum(), double(*range.first));
    QCOMPARE(spectrogram->maximum(), double(*range.second));
}

} // namespace

Q_DECLARE_METATYPE(Bands)

class SpectrogramTest : public QObject
{
    Q_OBJECT

private slots:
    void readsSettings()
    {
        const std::tuple<const char *, QString, bool, QString> rows[] = {
            {"case, blanks", " PERIODS_LOG (1, 10 ,2,4)", true, "1 1 1 10 2 4"},
            {"linear periods", "periods(1,10,2,4)", true, "1 0 1 10 2 4"},
            {"text behind", "Freqs(10,1,2,4) | lowpass(1)", true, "0 0 10 1 2 4"},
            {"no bracket", "freqs", false, "7 1 8 9 5 6"},
            {"unknown name", "freq(1,10,2,4)", false, "7 1 8 9 5 6"},
            {"not closed", "freqs(1,10,2,4", false, "0 0 8 9 5 6"},
            {"three numbers", "freqs(1,10,2)", false, "0 0 8 9 5 6"},
            {"five numbers", "freqs(1,10,2,4,5)", false, "0 0 8 9 5 6"},
            {"empty token", "freqs(1,10,,4)", false, "0 0 1 10 5 6"},
            {"no whole number", "freqs(1,10,2,4.5)", false, "0 0 1 10 2 6"},
            {"no divisions", "freqs(1,10,0,4)", false, "0 0 1 10 0 4"},
            {"negative", "freqs(-1,10,2,4)", false, "0 0 -1 10 2 4"}};
        for (const auto &[name, text, isRead, fields] : rows) {
            const RowName shown(name);
            SpectrogramSettings s;
            QCOMPARE(s.mode, 1);
            s.mode = 7;
            s.logarithmic = true;
            s.lower = 8;
            s.upper = 9;
            s.divisions = 5;
            s.bands = 6;
            QCOMPARE(s.fromString(text.toStdString()), isRead);
            const QString read = QStringLiteral("%1 %2 %3 %4 %5 %6")
                                     .arg(s.mode)
                                     .arg(s.logarithmic)
                                     .arg(s.lower)
                                     .arg(s.upper)
                                     .arg(s.divisions)
                                     .arg(s.bands);
            QCOMPARE(read, fields);
        }
    }

    void laysOutBands()
    {
        const double root = std::sqrt(10.0);
        const std::tuple<const char *, QString, Bands, double> rows[] = {
            {"frequencies", "freqs(1,10,2,3)", Bands{{1, 5.5}, {3.25, 7.75}, {5.5, 10}}, 0.1},
            {"log periods", "periods_log(1,100,2,3)",
             Bands{{0.1, 1}, {0.1 / root, 1 / root}, {0.01, 0.1}}, 100.0},
            {"log frequencies", "freqs_log(1,16,4,2)", Bands{{1, 2}, {8, 16}}, 0.0625},
            {"descending periods", "periods(10,1,3,2)", Bands{{0.1, 1 / 7.0}, {0.25, 1}}, 10.0},
            {"one band", "freqs(2,10,4,1)", Bands{{2, 4}}, 0.1}};
        for (const auto &[name, text, bands, highPassSeconds] : rows) {
            const RowName shown(name);
            const auto samples = noise<double>(3000);
            const auto spectrogram = spectrogramOf<double>(text.toStdString(), 50);
            QCOMPARE(spectrogram->rows(), int(bands.size()));
            spectrogram->pushData(3000, samples.data());
            const double error = worstError(*spectrogram, samples, bands, highPassSeconds);
            QVERIFY2(error < 1E-9, qPrintable(QString::number(error)));
        }
    }

    void staysUsableWithBadSettings()
    {
        auto samples = noise<float>(300);
        samples[150] = float(NaN);
        const auto isUsable = [](float value, size_t column) {
            return column == 150 ? std::isnan(value) : std::isfinite(value);
        };
        const auto good = spectrogramOf<float>("freqs(1,4,2,3)", 20);
        good->pushData(300, samples.data());
        for (const char *text :
             {"freqs(1,10,2", "freqs(1,10,0,4)", "freqs_log(-1,10,2,4)", "periods(-1,-10,2,4)",
              "freqs_log(3,3,1,4)", "freqs(8,16,2,4)", "periods_log(0.001,1e300,2,4)",
              "periods(1e-320,1,2,4)", "freqs(1,10,2,2000000000)"}) {
            SpectrogramSettings settings;
            settings.fromString(text);
            Spectrogram<float> spectrogram(settings);
            spectrogram.setSamplingFrequency(20);
            spectrogram.pushData(300, samples.data());
            QCOMPARE(spectrogram.columns(), 300);
            const auto values = matrixOf(spectrogram);
            for (size_t i = 0; i < values.size(); ++i)
                QVERIFY2(isUsable(values[i], i / size_t(spectrogram.rows())), text);
            QVERIFY(std::isfinite(spectrogram.maximum()));

            spectrogram.init(good->settings());
            spectrogram.pushData(300, samples.data());
            QCOMPARE(spectrogram.maximum(), good->maximum());
        }
    }

    void scalesEnvelopeByFrequency()
    {
        const double cases[][3] = {{1, 100, 100 / (2 * Pi)}, {1, 0, 0}, {0, 100, 0}, {NaN, 100, 0}};
        for (const auto &[frequency, samplingFrequency, gain] : cases) {
            IIREnvelope<double> envelope(frequency);
            double samples[] = {-3, 5, NaN, 5, 4};
            envelope.setSamplingFrequency(samplingFrequency);
            envelope.apply(5, samples);
            const double expected[] = {std::hypot(3, 3 * gain), std::hypot(5, 8 * gain), NaN, 5.0,
                                       std::hypot(4, gain)};
            for (int i = 0; i < 5; ++i)
                QCOMPARE(samples[i], expected[i]);
        }
    }

    void agreesWithPlainForm()
    {
        compareWithPlainForm<double>(1E-9);
        compareWithPlainForm<float>(1E-5);
    }

    void doesNotDependOnCuts()
    {
        const auto samples = noise<float>(12000);
        const auto whole = spectrogramOf<float>("periods_log(0.1,40,10,21)", 100);
        whole->pushData(12000, samples.data());
        const auto expected = matrixOf(*whole);
        std::mt19937 random(7);
        for (const int longest : {3, 110, 5000}) {
            const auto cut = spectrogramOf<float>("periods_log(0.1,40,10,21)", 100);
            for (int done = 0; done < 12000;) {
                const int n = std::min(12000 - done, 1 + int(random() % unsigned(longest)));
                cut->pushData(n, samples.data() + done);
                cut->pushData(-int(random() % 2), samples.data());
                done += n;
            }
            QVERIFY(matrixOf(*cut) == expected);
            QCOMPARE(cut->minimum(), whole->minimum());
            QCOMPARE(cut->maximum(), whole->maximum());
        }
    }

    void followsSweptSine()
    {
        // From 10 Hz to 0.1 Hz in 600 s, in equal times for equal ratios, and on for the delays.
        constexpr double Rate = 50, Length = 700;
        const double slope = std::log(100.0) / 600;
        std::vector<float> samples;
        for (int i = 0; i < Length * Rate; ++i)
            samples.push_back(float(std::sin(20 * Pi / slope * (1 - std::exp(-slope * i / Rate)))));
        const auto spectrogram = spectrogramOf<float>("periods_log(0.1,10,10,17)", Rate);
        spectrogram->pushData(int(samples.size()), samples.data());

        const Bands bands = logarithmicPeriods(0.1, 10, 10, 17);
        const auto rows = bands.size();
        for (size_t r = 0; r < rows; ++r) {
            // The ridge is broad and flat, so its middle is the centroid of the energy.
            double energy = 0, moment = 0;
            for (size_t c = 0; c < samples.size(); ++c) {
                const double value = double(spectrogram->data()[c * rows + r]);
                energy += value * value;
                moment += value * value * double(c);
            }
            const double ridge = moment / energy / Rate;
            const Band band = bands[r];
            const double crossing = std::log(10.0 / std::sqrt(band.low * band.high)) / slope;
            // Delays of a Butterworth filter of order 4 and of the moving average.
            const double delay = 2.613 / (Pi * (band.high - band.low)) + 0.5 / band.low;
            const double error = ridge - crossing - delay;
            QVERIFY2(std::abs(error) < 5.0,
                     qPrintable(QStringLiteral("row %1 is off by %2 s").arg(r).arg(error)));
        }
    }

    void passesOverSamplesThatAreNotFinite()
    {
        const auto samples = noise<float>(8000);
        const auto clean = spectrogramOf<float>("periods_log(0.1,20,5,11)", 100);
        clean->pushData(8000, samples.data());
        auto odd = samples;
        std::vector<int> places{0, 90, 91, 500, 4095, 4096, 8005};
        for (const int place : places)
            odd.insert(odd.begin() + place, float(place % 2 ? -Infinity : NaN));
        const auto spectrogram = spectrogramOf<float>("periods_log(0.1,20,5,11)", 100);
        spectrogram->pushData(500, odd.data());
        spectrogram->pushData(int(odd.size()) - 500, odd.data() + 500);

        auto values = matrixOf(*spectrogram);
        for (auto place = places.rbegin(); place != places.rend(); ++place) {
            const auto column = values.begin() + *place * 11;
            QVERIFY(std::all_of(column, column + 11, [](float v) { return std::isnan(v); }));
            values.erase(column, column + 11);
        }
        QVERIFY(values == matrixOf(*clean));
        QCOMPARE(spectrogram->minimum(), clean->minimum());
        QCOMPARE(spectrogram->maximum(), clean->maximum());
    }

    void dependsOnNoNumberOfThreads()
    {
        constexpr int Total = 20000;
        const auto samples = noise<float>(Total);
        QThreadPool *pool = QThreadPool::globalInstance();
        const int before = pool->maxThreadCount();
        const auto valuesBy = [&](int threads) {
            pool->setMaxThreadCount(threads);
            const auto spectrogram = spectrogramOf<float>("freqs(1,20,8,45)", 100);
            spectrogram->pushData(Total, samples.data());
            return matrixOf(*spectrogram);
        };
        const std::vector<float> expected = valuesBy(1);
        for (const int threads : {2, 3, 9})
            QVERIFY2(valuesBy(threads) == expected, qPrintable(QString::number(threads)));
        pool->setMaxThreadCount(before);
    }

    void startsAfresh()
    {
        const auto samples = noise<float>(3000);
        const auto original = spectrogramOf<float>("periods_log(0.2,10,4,7)", 50);
        original->pushData(3000, samples.data());
        const auto expected = matrixOf(*original);

        Spectrogram<float> copy;
        copy.initFrom(*original);
        QVERIFY(copy.isNull());
        QCOMPARE(copy.rows(), 7);
        QCOMPARE(copy.samplingFrequency(), 0.0);
        copy.pushData(1, samples.data());
        QCOMPARE(matrixOf(copy), std::vector<float>(7, samples[0]));
        copy.resetData();
        copy.setSamplingFrequency(50);
        copy.pushData(3000, samples.data());
        QVERIFY(matrixOf(copy) == expected);

        original->reset();
        QVERIFY(original->isNull());
        original->pushData(1, samples.data());
        QCOMPARE(matrixOf(*original), std::vector<float>(7, samples[0]));
        original->init(settingsOf("periods_log(0.2,10,4,7)"));
        original->pushData(3000, samples.data());
        QVERIFY(matrixOf(*original) == expected);

        // A new rate starts the filters afresh and leaves the data alone.
        original->setSamplingFrequency(20);
        original->setSamplingFrequency(50);
        original->pushData(3000, samples.data());
        auto twice = expected;
        twice.insert(twice.end(), expected.begin(), expected.end());
        QVERIFY(matrixOf(*original) == twice);
    }

    void runsBandsBesideTheSettings()
    {
        const auto samples = noise<double>(2000);
        const auto plain = spectrogramOf<double>("freqs(1,4,2,3)", 20);
        plain->pushData(2000, samples.data());
        const auto expected = matrixOf(*plain);

        // Bands with another high-pass, and bands without a row.
        const auto more = spectrogramOf<double>("freqs(1,4,2,3)", 20);
        more->addFilter(1, 2, 0.25);
        more->addFilter(1, 2, 5);
        more->pushData(2000, samples.data());
        QVERIFY(matrixOf(*more) == expected);
        QCOMPARE(more->maximum(), plain->maximum());

        Spectrogram<double> mixed;
        mixed.initFrom(*more);
        mixed.setSamplingFrequency(20);
        QCOMPARE(mixed.rows(), 5);
        mixed.pushData(1, samples.data() + 1);
        mixed.reset();
        mixed.pushData(1, samples.data());
        QCOMPARE(matrixOf(mixed), std::vector<double>(5, samples[0]));
        mixed.reset();
        mixed.setSamplingFrequency(20);
        mixed.pushData(700, samples.data());
        mixed.pushData(1300, samples.data() + 700);
        const Signal x(samples.begin(), samples.end());
        const Signal last = plainBand(x, {1, 2}, 5, 20);
        for (size_t c = 0; c < 2000; ++c) {
            QVERIFY(std::equal(expected.data() + c * 3, expected.data() + c * 3 + 3,
                               mixed.data() + c * 5));
            QVERIFY(std::abs(mixed.data()[c * 5 + 4] - last[c]) < 1E-9 * mixed.maximum());
        }
    }

    void recoversFromOverflow()
    {
        auto samples = noise<double>(6000);
        samples[200] = 1E200;
        samples[201] = -1E308;
        const auto spectrogram = spectrogramOf<double>("freqs(1,4,2,3)", 20);
        spectrogram->pushData(6000, samples.data());
        const auto clean = spectrogramOf<double>("freqs(1,4,2,3)", 20);
        samples[200] = samples[201] = samples[199];
        clean->pushData(6000, samples.data());
        QVERIFY(std::isfinite(spectrogram->maximum()));
        for (size_t i = 5000 * 3; i < 6000 * 3; ++i)
            QVERIFY(std::abs(spectrogram->data()[i] - clean->data()[i]) < 1E-6 * clean->maximum());
    }
};

QTEST_APPLESS_MAIN(SpectrogramTest)

#include "tst_spectrogram.moc"
