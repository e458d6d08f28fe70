// SPDX-License-Identifier: LGPL-3.0-or-later

#include "core/filtertesting.h"

#include <tellarix/core/math/butterworth.h>
#include <tellarix/core/math/chainfilter.h>
#include <tellarix/core/math/differentiate.h>
#include <tellarix/core/math/integrate.h>
#include <tellarix/core/math/runningmean.h>
#include <tellarix/core/math/stalta.h>

#include <tellarix/core/time.h>

#include <QtTest>

#include <cmath>
#include <complex>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <tuple>

using namespace Tellarix::Math::Filtering;
using namespace Tellarix::Math::Filtering::IIR;

namespace {
using Complex = std::complex<double>;
using Samples = std::vector<double>;
using Filters = std::vector<std::shared_ptr<InPlaceFilter<double>>>;

constexpr double Pi = 3.14159265358979323846;
constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
constexpr double Infinite = std::numeric_limits<double>::infinity();

/**
 * Response by the closed form: the prototype's poles lie evenly on the left half of the unit
 * circle, the bilinear transform sees the frequency as tan(pi f / fs), and the bands follow from
 * s -> s/wu, wl/s, (s^2 + wl wu)/(s (wu - wl)) and the inverse of the last.
 */
Complex closedForm(Band band, int order, double lower, double upper, double rate, double frequency)
{
    const Complex s(0, std::tan(Pi * frequency / rate));
    const double low = std::tan(Pi * lower / rate);
    const double high = std::tan(Pi * upper / rate);
    const Complex bandpass = (s * s + low * high) / (s * (high - low));
    const Complex mapped = band == Band::Lowpass    ? s / high
                           : band == Band::Highpass ? low / s
                           : band == Band::Bandpass ? bandpass
                                                    : 1.0 / bandpass;
    Complex response = 1;
    for (int k = 1; k <= order; ++k)
        response /= mapped - std::polar(1.0, Pi * (2.0 * k + order - 1) / (2.0 * order));
    return response;
}

Samples noise(size_t count, unsigned seed = 1)
{
    std::mt19937 generator(seed);
    std::normal_distribution<double> counts(0, 1000);
    Samples samples(count);
    for (double &sample : samples)
        sample = static_cast<float>(counts(generator));
    return samples;
}

/** Begins anew if there is a rate. */
Samples filtered(InPlaceFilter<double> &filter, Samples samples, double rate = 0)
{
    if (rate > 0)
        filter.setSamplingFrequency(rate);
    filter.apply(static_cast<int>(samples.size()), samples.data());
    return samples;
}

struct Design
{
    Band band;
    int order;
    double lower, upper, rate;
};

struct Reference
{
    Design design;
    Complex responses[2]; // at 0.8 and 1.5 times the lowest corner
    struct
    {
        int at;
        double early, late; // samples 1 and at
    } impulse;
};

/** scipy 1.10.1: freqz_zpk(*butter(order, corners, band, output='zpk', fs=rate)) and
 *  sosfilt(butter(..., output='sos')) of an impulse. */
const Reference References[] = {
    {{Band::Lowpass, 3, 0, 0.01, 100},
     {{-0.2218447132925, -0.8620252643924}, {-0.2824715925321, 0.03026483393261}},
     {10000, 1.858818850692e-10, -2.86054244216e-05}},
    {{Band::Highpass, 4, 0.01, 0, 100},
     {{-0.2720080397519, -0.2639700509738}, {-0.3078841379136, 0.9314795723085}},
     {10000, -0.001640528107264, -3.910638492359e-05}},
    {{Band::Bandpass, 4, 0.01, 0.1, 100},
     {{-0.2090049592929, -0.2559676406032}, {-0.01638891386096, 0.9940184344535}},
     {10000, 5.065841448936e-10, -4.757374872255e-05}},
    {{Band::Bandpass, 3, 5, 9.9, 20},
     {{-0.3508566451752, 0.01314861953712}, {0.7055008698948, 0.7065101562669}},
     {30, -0.470887853217, -0.0184786222099}},
    {{Band::Bandstop, 2, 1, 3, 40},
     {{0.4432966181213, -0.7921812947479}, {-0.06089595818165, -0.02357295953101}},
     {30, -0.3384110233385, -0.01586877731433}}};

/** Compares with the references; an impulse shows that the state of float filters is in double. */
template <typename T>
void compareWithReferences()
{
    for (const Reference &item : References) {
        const auto &[band, order, lower, upper, rate] = item.design;
        Butterworth<T> filter(band, order, lower, upper, rate);
        const double corner = lower > 0 ? lower : upper;
        QVERIFY(std::abs(filter.response(0.8 * corner) - item.responses[0]) < 1E-9);
        QVERIFY(std::abs(filter.response(1.5 * corner) - item.responses[1]) < 1E-9);

        std::vector<T> impulse(10001, T(0));
        impulse[0] = 1;
        filter.apply(10001, impulse.data());
        const auto isAt = [&](size_t at, double expected) {
            const double rounding = double(std::numeric_limits<T>::epsilon());
            return std::abs(double(impulse[at]) - expected) <
                   (1E-9 + rounding) * std::abs(expected);
        };
        QVERIFY(isAt(1, item.impulse.early));
        QVERIFY(isAt(size_t(item.impulse.at), item.impulse.late));
    }
}

/** Each that is known and a chain, with all sorts of values, ready for 100 Hz. */
Filters allFilters()
{
    const FilterOffer offer(FilterTesting::fading());
    std::mt19937 random(20240105);
    Filters filters;
    for (const FilterDescriptionCPtr &known : knownFilters()) {
        for (int i = 0; i < 3; ++i) {
            FilterValues values;
            do {
                values = FilterTesting::someValues(*known, random);
            } while (known->problemAt && !known->problemAt(values, 100).empty());
            filters.push_back(known->maker.forDouble(values));
        }
    }
    auto chain = std::make_shared<ChainFilter<double>>();
    chain->add(new RunningMeanHighPass<double>(10));
    chain->add(new ButterworthBandpass<double>(3, 1, 20));
    filters.push_back(chain);
    for (auto &filter : filters)
        filter->setSamplingFrequency(100);
    return filters;
}

bool sameBits(const Samples &a, const Samples &b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0;
}

Samples sampled(int count, const std::function<double(int)> &signal)
{
    Samples samples;
    for (int i = 0; i < count; ++i)
        samples.push_back(signal(i));
    return samples;
}

/** The mean of up to @p length samples that end with the one at @p last. */
double meanOf(const Samples &samples, size_t last, size_t length)
{
    long double sum = 0;
    const size_t first = last + 1 > length ? last + 1 - length : 0;
    for (size_t i = first; i <= last; ++i)
        sum += samples[i];
    return static_cast<double>(sum / static_cast<long double>(last + 1 - first));
}

/** Compares the response with the closed form on a logarithmic scale over four decades. */
void compareResponse(Band band, int order, double lower, double upper, double rate)
{
    const Butterworth<double> filter(band, order, lower, upper, rate);
    for (const Biquad &q : filter.sections())
        QVERIFY(std::abs(q.a2) < 1 && std::abs(q.a1) < 1 + q.a2); // poles within the unit circle
    // Far below the sampling frequency the last bit of the coefficients alone makes up for this.
    const double tolerance = lower < 1E-3 * rate ? 1E-8 : 1E-9;
    for (int i = 1; i < 400; ++i) {
        const double frequency = 0.499 * rate * std::pow(10.0, -4.0 * i / 400);
        const Complex expected = closedForm(band, order, lower, upper, rate, frequency);
        const double error = std::abs(filter.response(frequency) - expected);
        QVERIFY2(error < tolerance,
                 qPrintable(QString("band %1, order %2, lower corner %3 Hz: %4 at %5 Hz")
                                .arg(int(band))
                                .arg(order)
                                .arg(lower)
                                .arg(error)
                                .arg(frequency)));
    }
}

} // namespace

class FiltersTest : public QObject
{
    Q_OBJECT

private slots:
    void chainTellsStagesOfGaps()
    {
        struct Stage : RunningMean<double>
        {
            using RunningMean<double>::RunningMean;
            void handleGap(const Tellarix::Core::TimeSpan &gap) override { length += gap; }
            Tellarix::Core::TimeSpan length;
        };
        ChainFilter<double> chain;
        auto *stage = new Stage(0.3);
        chain.add(new RunningMean<double>(0.3));
        chain.add(stage);
        chain.handleGap(Tellarix::Core::TimeSpan(2.5));
        QVERIFY(stage->length == Tellarix::Core::TimeSpan(2.5));
    }

    void agreesWithReferences()
    {
        compareWithReferences<float>();
        compareWithReferences<double>();
    }

    void responses()
    {
        const std::tuple<double, double, double> corners[] = {
            {0.7, 2, 100}, {0.01, 0.0101, 1}, {5, 9.99, 20}, {0.01, 0.1, 100}};
        for (const Band band : {Band::Lowpass, Band::Highpass, Band::Bandpass, Band::Bandstop}) {
            for (const auto &[lower, upper, rate] : corners) {
                for (int order : {1, 2, 7, 10})
                    compareResponse(band, order, lower, upper, rate);
            }
        }
    }

    void cornersThatDoNotFit()
    {
        const std::tuple<Band, int, double, double> rows[] = {
            {Band::Lowpass, 0, 0, 2},        {Band::Highpass, 4, 0, 0}, {Band::Lowpass, 4, 0, 50},
            {Band::Bandpass, 4, 1, 51},      {Band::Bandpass, 4, 2, 2}, {Band::Bandpass, 4, NaN, 2},
            {Band::Highpass, 4, Infinite, 0}};
        for (const auto &[band, order, lower, upper] : rows) {
            Butterworth<double> filter(band, order, lower, upper, 100);
            QVERIFY(!filter.isValid());
            QCOMPARE(filter.response(1.5), Complex(0));
            const Samples output = filtered(filter, {1, 2, NaN, 3});
            QCOMPARE((Samples{output[0], output[1], output[3]}), Samples(3, 0.0));
            QVERIFY(std::isnan(output[2]));
        }
    }

    void blocksDoNotMatter()
    {
        // Behind the signal it is silent for so long that the state fades away.
        Samples input = noise(30000);
        input.resize(90000, 0.0);
        std::mt19937 generator(3);
        int index = 0;
        for (const auto &filter : allFilters()) {
            const std::unique_ptr<InPlaceFilter<double>> twin(filter->clone());
            const Samples whole = filtered(*filter, input);
            Samples pieces = input;
            for (size_t first = 0; first < pieces.size();) {
                const size_t length = std::min<size_t>(generator() % 1500, pieces.size() - first);
                twin->apply(static_cast<int>(length), pieces.data() + first);
                twin->apply(-1, pieces.data() + first);
                first += length;
            }
            QVERIFY2(sameBits(whole, pieces), QByteArray::number(index++));
        }
    }

    void isTheSameForBothTypes()
    {
        const FilterOffer offer(FilterTesting::fading());
        std::mt19937 random(3);
        for (const FilterDescriptionCPtr &known : knownFilters()) {
            const FilterValues values = FilterTesting::someValues(*known, random);
            const auto single = known->maker.forFloat(values);
            const Samples expected = filtered(*known->maker.forDouble(values), noise(2000), 100);
            std::vector<float> samples;
            for (const double sample : noise(2000))
                samples.push_back(static_cast<float>(sample));
            single->setSamplingFrequency(100);
            single->apply(2000, samples.data());
            for (size_t i = 0; i < samples.size(); ++i)
                QVERIFY2(std::abs(double(samples[i]) - expected[i]) <= 1E-6 * std::abs(expected[i]),
                         known->name.c_str());
        }
    }

    void cloneIsFresh()
    {
        const Samples input = noise(3000);
        for (const auto &filter : allFilters()) {
            const Samples first = filtered(*filter, input);
            const std::unique_ptr<InPlaceFilter<double>> copy(filter->clone());
            QVERIFY(!sameBits(filtered(*filter, input), first));
            QVERIFY(sameBits(filtered(*copy, input), first));
            filter->setSamplingFrequency(100);
            QVERIFY(sameBits(filtered(*filter, input), first));
        }
    }

    void passesOverWhatIsNotFinite()
    {
        const Samples clean = noise(2000);
        for (const auto &filter : allFilters()) {
            const std::unique_ptr<InPlaceFilter<double>> twin(filter->clone());
            Samples spoilt = clean;
            spoilt.insert(spoilt.begin() + 1000, {NaN, Infinite, -Infinite});
            spoilt.insert(spoilt.begin(), NaN);
            spoilt = filtered(*filter, spoilt);
            for (size_t at : {0, 1001, 1002, 1003})
                QVERIFY(std::isnan(spoilt[at]));
            spoilt.erase(spoilt.begin() + 1001, spoilt.begin() + 1004);
            spoilt.erase(spoilt.begin());
            QVERIFY(sameBits(spoilt, filtered(*twin, clean)));
        }
    }

    void recoversFromOverflow()
    {
        Samples input = noise(20000);
        std::fill(input.begin(), input.begin() + 40, std::numeric_limits<double>::max());
        for (const auto &filter : allFilters()) {
            // An integral keeps what it has summed up.
            if (dynamic_cast<Integrate<double> *>(filter.get()))
                continue;
            const Samples output = filtered(*filter, input);
            QVERIFY(std::all_of(output.end() - 1000, output.end(),
                                [](double sample) { return std::isfinite(sample); }));
        }
    }

    void checksRatesAndParameters()
    {
        const Samples input = noise(100);
        for (const auto &filter : allFilters()) {
            for (double rate : {0.0, -100.0, NaN, Infinite}) {
                filter->setSamplingFrequency(rate);
                QVERIFY(sameBits(filtered(*filter, input), input));
            }
        }

        const auto set = [](InPlaceFilter<double> &filter, const Samples &values) {
            return filter.setParameters(static_cast<int>(values.size()), values.data());
        };
        ButterworthBandpass<double> bandpass(2, 1, 5, 100);
        QCOMPARE(set(bandpass, {2.5, 0.7, 2}), -1);
        QCOMPARE(set(bandpass, {4, -0.7, 2}), -2);
        QCOMPARE(set(bandpass, {4, 2, 0.7}), -3);
        QCOMPARE(bandpass.upperCorner(), 5.0);
        QCOMPARE(set(bandpass, {4, 0.7, 2}), 3);
        QVERIFY(std::abs(std::abs(bandpass.response(0.7)) - std::sqrt(0.5)) < 1E-9);
        StaLta<double> stalta(1, 10);
        QCOMPARE(set(stalta, {2}), -2);
        QCOMPARE(set(stalta, {NaN, 5}), -1);
        QCOMPARE(set(stalta, {5, 5}), -2);
        QCOMPARE(stalta.lta(), 10.0);
        QCOMPARE(set(stalta, {2, 5}), 2);
    }

    void runningMeanOfSamplesSeenSoFar()
    {
        RunningMean<double> mean(0.3, 10);
        QCOMPARE(filtered(mean, {3, 5, 1, 0, -7}), (Samples{3, 4, 3, 2, -2}));
        RunningMeanHighPass<double> highpass(0.3, 10);
        QCOMPARE(filtered(highpass, {3, 5, 1, 0, -7}), (Samples{0, 1, -2, -2, -5}));
    }

    void runningMeanDoesNotDrift()
    {
        Samples input = noise(1000000);
        for (size_t i = 0; i < input.size(); ++i)
            input[i] = input[i] / 3 + (i < 500000 ? 1E9 : 0);
        RunningMean<double> mean(60, 100);
        const Samples output = filtered(mean, input);
        for (size_t at : {5999u, 6000u, 499999u, 503000u})
            QVERIFY(std::abs(output[at] - meanOf(input, at, 6000)) < 1E-4);
        // The large samples have left the window for more than its length, and nothing of them
        // stays.
        for (size_t at : {512000u, 700123u, 999999u})
            QVERIFY(std::abs(output[at] - meanOf(input, at, 6000)) < 1E-9);
    }

    void staltaIsRatioOfMeans()
    {
        Samples input = noise(3000);
        StaLta<double> filter(0.25, 5, 100);
        const Samples output = filtered(filter, input);
        for (double &sample : input)
            sample = std::abs(sample);
        for (size_t i = 0; i < input.size(); ++i) {
            const double expected = meanOf(input, i, 25) / meanOf(input, i, 500);
            QVERIFY2(std::abs(output[i] - expected) < 1E-10, QByteArray::number(int(i)));
        }
    }

    void staltaOfSilence()
    {
        // Rounding errors of the sums must not become a ratio.
        Samples input = noise(777);
        for (double &sample : input)
            sample /= 3;
        input.resize(2000, 0.0);
        StaLta<double> filter(0.1, 1, 100);
        const Samples output = filtered(filter, input);
        for (size_t i = 777; i < 786; ++i)
            QVERIFY(output[i] > 0);
        for (size_t i = 786; i < 2000; ++i)
            QCOMPARE(output[i], 0.0);
        QCOMPARE(filtered(filter, Samples(300, 0.0), 100), Samples(300, 0.0));
    }

    void integratesClosedForms()
    {
        Integrate<double> filter;
        const double rate = 50;
        const Samples ramp = filtered(filter, sampled(1000, [](int i) { return i / 50.0; }), rate);
        for (int i = 0; i < 1000; ++i)
            QVERIFY(std::abs(ramp[size_t(i)] - 0.5 * i * i / (rate * rate)) < 1E-9);

        // The trapezoid rule scales a sine by (w / 2) / tan(w / 2), w in radians per sample.
        const double w = 2 * Pi * 4 / rate;
        const Samples sine =
            filtered(filter, sampled(1000, [&](int i) { return std::cos(w * i); }), rate);
        const double gain = 0.5 / std::tan(0.5 * w) / rate;
        for (int i = 0; i < 1000; ++i)
            QVERIFY(std::abs(sine[size_t(i)] - gain * std::sin(w * i)) < 1E-12);
    }

    void differentiatesClosedForms()
    {
        Differentiate<double> filter;
        const double rate = 50;
        const Samples line =
            filtered(filter, sampled(100, [](int i) { return 7 - 3 * i / 50.0; }), rate);
        QCOMPARE(line[0], 0.0);
        for (size_t i = 1; i < line.size(); ++i)
            QVERIFY(std::abs(line[i] + 3) < 1E-10);

        const double w = 2 * Pi * 4 / rate;
        const Samples sine =
            filtered(filter, sampled(1000, [&](int i) { return std::sin(w * i); }), rate);
        const double gain = 2 * rate * std::sin(0.5 * w);
        for (int i = 1; i < 1000; ++i)
            QVERIFY(std::abs(sine[size_t(i)] - gain * std::cos(w * (i - 0.5))) < 1E-10);
    }
    void chainRunsStagesInOrder()
    {
        ChainFilter<double> chain;
        chain.add(new RunningMeanHighPass<double>(0.2));
        chain.add(nullptr);
        chain.add(new RunningMean<double>(0.3));
        QCOMPARE(chain.count(), 2);
        chain.setSamplingFrequency(10);

        RunningMeanHighPass<double> first(0.2, 10);
        RunningMean<double> second(0.3, 10);
        const Samples input = noise(500);
        const Samples expected = filtered(second, filtered(first, input));
        QVERIFY(sameBits(filtered(chain, input), expected));
    }
};

QTEST_APPLESS_MAIN(FiltersTest)
#include "tst_filters.moc"
