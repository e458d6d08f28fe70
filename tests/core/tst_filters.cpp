#include <tellarix/core/math/average.h>
#include <tellarix/core/math/butterworth.h>
#include <tellarix/core/math/chainfilter.h>
#include <tellarix/core/math/runningmean.h>

#include <QtTest>

#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <memory>
#include <random>

using namespace Tellarix::Math::Filtering;
using namespace Tellarix::Math::Filtering::IIR;

Q_DECLARE_METATYPE(Band)
Q_DECLARE_METATYPE(std::vector<double>)

namespace {

using Complex = std::complex<double>;
using Samples = std::vector<double>;
template <typename T>
using Filters = std::vector<std::shared_ptr<InPlaceFilter<T>>>;

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

template <typename T>
std::vector<T> filtered(InPlaceFilter<T> &filter, std::vector<T> samples)
{
    filter.apply(static_cast<int>(samples.size()), samples.data());
    return samples;
}

/** All kinds, with numbers of sections both usual and unusual, ready for 100 Hz. */
template <typename T>
Filters<T> allFilters()
{
    Filters<T> filters{std::make_shared<ButterworthLowpass<T>>(1, 3.0),
                       std::make_shared<ButterworthHighpass<T>>(3, 0.5),
                       std::make_shared<ButterworthBandpass<T>>(4, 0.7, 2.0),
                       std::make_shared<ButterworthBandstop<T>>(5, 10.0, 20.0),
                       std::make_shared<RunningMean<T>>(0.37),
                       std::make_shared<RunningMeanHighPass<T>>(60.0)};
    auto chain = std::make_shared<ChainFilter<T>>();
    chain->add(new RunningMeanHighPass<T>(10));
    chain->add(new ButterworthBandpass<T>(3, 1, 20));
    filters.push_back(chain);
    for (auto &filter : filters)
        filter->setSamplingFrequency(100);
    return filters;
}

template <typename T>
bool sameBits(const std::vector<T> &a, const std::vector<T> &b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

double meanOf(const Samples &samples, size_t last, size_t length)
{
    long double sum = 0;
    const size_t first = last + 1 > length ? last + 1 - length : 0;
    for (size_t i = first; i <= last; ++i)
        sum += samples[i];
    return static_cast<double>(sum / static_cast<long double>(last + 1 - first));
}

} // namespace

class FiltersTest : public QObject
{
    Q_OBJECT

private slots:
    void publishedCoefficients_data();
    void publishedCoefficients();
    void responses_data();
    void responses();
    void impulseHasTheResponse();
    void steadySineAtLowCorner();
    void cornersThatDoNotFit_data();
    void cornersThatDoNotFit();
    void checksParameters();
    void blocksDoNotMatter();
    void cloneIsFresh();
    void floatIsRoundedDouble();
    void passesOverWhatIsNotFinite();
    void recoversFromOverflow();
    void waitsForSamplingFrequency();
    void runningMeanOfSamplesSeenSoFar();
    void runningMeanDoesNotDrift();
    void chainRunsStagesInOrder();
};

void FiltersTest::publishedCoefficients_data()
{
    QTest::addColumn<Band>("band");
    QTest::addColumn<int>("order");
    QTest::addColumn<double>("corner");
    QTest::addColumn<Samples>("coefficients");

    // Corners are for 100 Hz, coefficients b0, b1, b2, a1, a2 of one section after the other.
    const double half = 1.0 / (2 + std::sqrt(2.0));
    QTest::newRow("low-pass of order 1 at half of Nyquist")
        << Band::Lowpass << 1 << 25.0 << Samples{0.5, 0.5, 0, 0, 0};
    QTest::newRow("low-pass of order 2 at half of Nyquist")
        << Band::Lowpass << 2 << 25.0
        << Samples{half, 2 * half, half, 0, (2 - std::sqrt(2.0)) * half};
    QTest::newRow("low-pass of order 2 at a tenth of Nyquist")
        << Band::Lowpass << 2 << 5.0
        << Samples{0.020083365564211, 0.040166731128422, 0.020083365564211, -1.561018075800718,
                   0.641351538057563};
    QTest::newRow("high-pass of order 2 at a tenth of Nyquist")
        << Band::Highpass << 2 << 5.0
        << Samples{0.800592403464570, -1.601184806929141, 0.800592403464570, -1.561018075800718,
                   0.641351538057563};
}

void FiltersTest::publishedCoefficients()
{
    QFETCH(Band, band);
    QFETCH(int, order);
    QFETCH(double, corner);
    QFETCH(Samples, coefficients);

    Samples found;
    for (const Biquad &q : butterworthSections(band, order, corner, corner, 100))
        found.insert(found.end(), {q.b0, q.b1, q.b2, q.a1, q.a2});
    QCOMPARE(found.size(), coefficients.size());
    for (size_t i = 0; i < found.size(); ++i)
        QVERIFY2(std::abs(found[i] - coefficients[i]) < 1E-12, QByteArray::number(int(i)));
}

void FiltersTest::responses_data()
{
    QTest::addColumn<Band>("band");
    QTest::addColumn<int>("order");
    QTest::addColumn<double>("lower");
    QTest::addColumn<double>("upper");
    QTest::addColumn<double>("rate");

    const struct
    {
        Band band;
        const char *name;
    } bands[] = {{Band::Lowpass, "low-pass"},
                 {Band::Highpass, "high-pass"},
                 {Band::Bandpass, "band-pass"},
                 {Band::Bandstop, "band-stop"}};
    const struct
    {
        double lower, upper, rate;
    } corners[] = {{0.7, 2, 100}, {0.01, 0.1, 100}, {0.01, 0.0101, 1}, {5, 9.99, 20}, {1, 40, 250}};
    for (const auto &band : bands) {
        for (const auto &corner : corners) {
            for (int order : {1, 2, 3, 4, 7, 10})
                QTest::addRow("%s of order %d, %g to %g at %g Hz", band.name, order, corner.lower,
                              corner.upper, corner.rate)
                    << band.band << order << corner.lower << corner.upper << corner.rate;
        }
    }
}

void FiltersTest::responses()
{
    QFETCH(Band, band);
    QFETCH(int, order);
    QFETCH(double, lower);
    QFETCH(double, upper);
    QFETCH(double, rate);

    const Butterworth<double> filter(band, order, lower, upper, rate);
    QVERIFY(filter.isValid());
    const bool isTwoSided = band == Band::Bandpass || band == Band::Bandstop;
    QCOMPARE(filter.sections().size(), size_t(isTwoSided ? order : (order + 1) / 2));
    for (const Biquad &q : filter.sections())
        QVERIFY(std::abs(q.a2) < 1 && std::abs(q.a1) < 1 + q.a2); // poles within the unit circle

    const double halfPower = std::abs(filter.response(band == Band::Highpass ? lower : upper));
    QVERIFY(std::abs(halfPower - std::sqrt(0.5)) < 1E-9);
    // Far below the sampling frequency the last bit of the coefficients alone makes up for this.
    const double tolerance = lower < 1E-3 * rate ? 1E-8 : 1E-9;
    for (int i = 1; i < 400; ++i) {
        // Even on a logarithmic scale over four decades, up to just below Nyquist.
        const double frequency = 0.499 * rate * std::pow(10.0, -4.0 * i / 400);
        const Complex expected = closedForm(band, order, lower, upper, rate, frequency);
        const double error = std::abs(filter.response(frequency) - expected);
        QVERIFY2(error < tolerance, qPrintable(QString("%1 at %2 Hz").arg(error).arg(frequency)));
    }
}

void FiltersTest::impulseHasTheResponse()
{
    ButterworthBandpass<double> filter(4, 2, 15, 100);
    Samples impulse(8192, 0.0);
    impulse[0] = 1;
    const Samples output = filtered<double>(filter, impulse);
    for (double frequency : {1.0, 2.0, 6.0, 15.0, 30.0}) {
        Complex sum = 0;
        for (size_t i = 0; i < output.size(); ++i)
            sum += output[i] * std::polar(1.0, -2 * Pi * frequency * static_cast<double>(i) / 100);
        QVERIFY(std::abs(sum - filter.response(frequency)) < 1E-9);
    }
}

void FiltersTest::steadySineAtLowCorner()
{
    // Six hours at 100 Hz; the corner passes a sine with its power halved.
    Samples sine(2160000);
    for (size_t i = 0; i < sine.size(); ++i)
        sine[i] = 1E6 * std::sin(2 * Pi * 0.01 * static_cast<double>(i) / 100);
    ButterworthBandpass<double> filter(4, 0.01, 0.05, 100);
    const Samples output = filtered<double>(filter, sine);
    const auto largest = std::max_element(output.end() - 20000, output.end());
    QVERIFY(std::abs(*largest * std::sqrt(2.0) / 1E6 - 1) < 1E-6);
}

void FiltersTest::cornersThatDoNotFit_data()
{
    QTest::addColumn<Band>("band");
    QTest::addColumn<int>("order");
    QTest::addColumn<double>("lower");
    QTest::addColumn<double>("upper");

    QTest::newRow("order 0") << Band::Lowpass << 0 << 0.0 << 2.0;
    QTest::newRow("corner 0") << Band::Highpass << 4 << 0.0 << 0.0;
    QTest::newRow("corner below 0") << Band::Lowpass << 4 << 0.0 << -1.0;
    QTest::newRow("corner at Nyquist") << Band::Lowpass << 4 << 0.0 << 50.0;
    QTest::newRow("upper corner above Nyquist") << Band::Bandpass << 4 << 1.0 << 51.0;
    QTest::newRow("corners reversed") << Band::Bandstop << 4 << 2.0 << 1.0;
    QTest::newRow("corners equal") << Band::Bandpass << 4 << 2.0 << 2.0;
    QTest::newRow("corner no number") << Band::Bandpass << 4 << NaN << 2.0;
    QTest::newRow("corner infinite") << Band::Highpass << 4 << Infinite << 0.0;
}

void FiltersTest::cornersThatDoNotFit()
{
    QFETCH(Band, band);
    QFETCH(int, order);
    QFETCH(double, lower);
    QFETCH(double, upper);

    Butterworth<double> filter(band, order, lower, upper, 100);
    QVERIFY(!filter.isValid());
    QCOMPARE(filter.response(1.5), Complex(0));
    QCOMPARE(filtered<double>(filter, {1, 2, 3}), Samples(3, 0.0));
}

void FiltersTest::checksParameters()
{
    const auto set = [](InPlaceFilter<double> &filter, const Samples &values) {
        return filter.setParameters(static_cast<int>(values.size()), values.data());
    };
    ButterworthBandpass<double> bandpass(2, 1, 5, 100);
    QCOMPARE(set(bandpass, {4, 0.7}), -3);
    QCOMPARE(set(bandpass, {0, 0.7, 2}), -1);
    QCOMPARE(set(bandpass, {2.5, 0.7, 2}), -1);
    QCOMPARE(set(bandpass, {4, -0.7, 2}), -2);
    QCOMPARE(set(bandpass, {4, 0.7, NaN}), -3);
    QCOMPARE(set(bandpass, {4, 2, 0.7}), -3);
    QCOMPARE(bandpass.order(), 2);
    QCOMPARE(bandpass.upperCorner(), 5.0);
    QCOMPARE(set(bandpass, {4, 0.7, 2}), 3);
    QVERIFY(std::abs(std::abs(bandpass.response(0.7)) - std::sqrt(0.5)) < 1E-9);

    ButterworthHighpass<double> highpass(2, 1, 100);
    QCOMPARE(set(highpass, {3, 0.2}), 2);
    QVERIFY(std::abs(std::abs(highpass.response(0.2)) - std::sqrt(0.5)) < 1E-9);

    RunningMean<double> mean(5, 100);
    QCOMPARE(set(mean, {}), -1);
    QCOMPARE(set(mean, {0}), -1);
    QCOMPARE(mean.length(), 5.0);
    QCOMPARE(set(mean, {7}), 1);
}

void FiltersTest::blocksDoNotMatter()
{
    // Behind the signal it is silent for so long that the state fades away.
    Samples input = noise(30000);
    input.resize(90000, 0.0);
    std::mt19937 generator(3);
    int index = 0;
    for (const auto &filter : allFilters<double>()) {
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

void FiltersTest::cloneIsFresh()
{
    const Samples input = noise(3000);
    for (const auto &filter : allFilters<double>()) {
        const Samples first = filtered(*filter, input);
        const std::unique_ptr<InPlaceFilter<double>> copy(filter->clone());
        QVERIFY(!sameBits(filtered(*filter, input), first));
        QVERIFY(sameBits(filtered(*copy, input), first));
        filter->setSamplingFrequency(100);
        QVERIFY(sameBits(filtered(*filter, input), first));
    }
}

void FiltersTest::floatIsRoundedDouble()
{
    const Samples input = noise(20000);
    // The chain rounds between its stages, so it is left out.
    const Filters<double> exact = allFilters<double>();
    const Filters<float> rounded = allFilters<float>();
    for (size_t k = 0; k + 1 < exact.size(); ++k) {
        const Samples expected = filtered(*exact[k], input);
        const std::vector<float> output =
            filtered(*rounded[k], std::vector<float>(input.begin(), input.end()));
        QVERIFY(sameBits(output, std::vector<float>(expected.begin(), expected.end())));
    }
}

void FiltersTest::passesOverWhatIsNotFinite()
{
    const Samples clean = noise(2000);
    for (const auto &filter : allFilters<double>()) {
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

void FiltersTest::recoversFromOverflow()
{
    Samples input = noise(20000);
    std::fill(input.begin(), input.begin() + 40, std::numeric_limits<double>::max());
    for (const auto &filter : allFilters<double>()) {
        const Samples output = filtered(*filter, input);
        QVERIFY(std::all_of(output.end() - 1000, output.end(),
                            [](double sample) { return std::isfinite(sample); }));
    }
}

void FiltersTest::waitsForSamplingFrequency()
{
    const Samples input = noise(100);
    for (const auto &filter : allFilters<double>()) {
        for (double rate : {0.0, -100.0, NaN, Infinite}) {
            filter->setSamplingFrequency(rate);
            QVERIFY(sameBits(filtered(*filter, input), input));
        }
    }
}

void FiltersTest::runningMeanOfSamplesSeenSoFar()
{
    RunningMean<double> mean(0.3, 10);
    QCOMPARE(filtered<double>(mean, {3, 5, 1, 0, -7}), (Samples{3, 4, 3, 2, -2}));
    RunningMeanHighPass<double> highpass(0.3, 10);
    QCOMPARE(filtered<double>(highpass, {3, 5, 1, 0, -7}), (Samples{0, 1, -2, -2, -5}));
    Average<double> shorterThanOneSample(0.001, 10);
    QCOMPARE(filtered<double>(shorterThanOneSample, {3, 5, 1}), (Samples{3, 5, 1}));
}

void FiltersTest::runningMeanDoesNotDrift()
{
    Samples input = noise(1000000);
    for (size_t i = 0; i < input.size(); ++i)
        input[i] = input[i] / 3 + (i < 500000 ? 1E9 : 0);
    RunningMean<double> mean(60, 100);
    const Samples output = filtered(mean, input);
    for (size_t at : {5999u, 6000u, 499999u, 503000u})
        QVERIFY(std::abs(output[at] - meanOf(input, at, 6000)) < 1E-4);
    // The large samples have left the window for more than its length, and nothing of them stays.
    for (size_t at : {512000u, 700123u, 999999u})
        QVERIFY(std::abs(output[at] - meanOf(input, at, 6000)) < 1E-9);
}

void FiltersTest::chainRunsStagesInOrder()
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
    QVERIFY(sameBits(filtered<double>(chain, input), expected));
}

QTEST_APPLESS_MAIN(FiltersTest)
#include "tst_filters.moc"
