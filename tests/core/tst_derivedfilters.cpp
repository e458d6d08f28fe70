#include <tellarix/core/math/differentiate.h>
#include <tellarix/core/math/integrate.h>
#include <tellarix/core/math/stalta.h>

#include <QtTest>

#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <random>

using namespace Tellarix::Math::Filtering;

namespace {

constexpr double Pi = 3.14159265358979323846;
constexpr double Nan = std::numeric_limits<double>::quiet_NaN();

using Samples = std::vector<double>;

Samples sampled(int count, const std::function<double(int)> &signal)
{
    Samples samples;
    for (int i = 0; i < count; ++i)
        samples.push_back(signal(i));
    return samples;
}

Samples noise(int count, unsigned seed)
{
    std::mt19937 random(seed);
    std::normal_distribution<double> normal(0, 1000);
    return sampled(count, [&](int) { return normal(random); });
}

template <typename T>
std::vector<T> filtered(InPlaceFilter<T> &filter, std::vector<T> samples, double rate = 100)
{
    filter.setSamplingFrequency(rate);
    filter.apply(static_cast<int>(samples.size()), samples.data());
    return samples;
}

double meanAmplitude(const Samples &samples, size_t last, size_t length)
{
    const size_t first = last + 1 > length ? last + 1 - length : 0;
    double sum = 0;
    for (size_t i = first; i <= last; ++i)
        sum += std::abs(samples[i]);
    return sum / static_cast<double>(last + 1 - first);
}

template <typename T>
std::vector<std::pair<const char *, std::shared_ptr<InPlaceFilter<T>>>> allFilters()
{
    return {{"stalta", std::make_shared<StaLta<T>>(0.1, 1)},
            {"integrate", std::make_shared<Integrate<T>>()},
            {"differentiate", std::make_shared<Differentiate<T>>()}};
}

} // namespace

class DerivedFiltersTest : public QObject
{
    Q_OBJECT

private slots:
    void staltaIsRatioOfMeans();
    void staltaOfStep();
    void staltaOfSilence();
    void staltaChecksParameters();
    void integratesClosedForms();
    void differentiatesClosedForms();
    void differentiationUndoesIntegration();
    void keepsStateBetweenBlocks();
    void startsAfresh();
    void passesOverWhatIsNotFinite();
    void leavesSamplesWithoutRate();
    void floatFollowsDouble();
};

void DerivedFiltersTest::staltaIsRatioOfMeans()
{
    const Samples input = noise(3000, 1);
    StaLta<double> filter(0.25, 5);
    const Samples output = filtered<double>(filter, input);
    for (size_t i = 0; i < input.size(); ++i) {
        const double expected = meanAmplitude(input, i, 25) / meanAmplitude(input, i, 500);
        QVERIFY2(std::abs(output[i] - expected) < 1E-10, QByteArray::number(int(i)));
    }
}

void DerivedFiltersTest::staltaOfStep()
{
    // Amplitude 1 with either sign, from sample 1000 on 10: k samples into the step the short
    // window of 10 holds k and the long one of 100 holds k of the larger ones.
    const Samples input =
        sampled(1100, [](int i) { return (i % 2 ? -1.0 : 1.0) * (i < 1000 ? 1 : 10); });
    StaLta<double> filter(0.1, 1);
    const Samples output = filtered<double>(filter, input);
    QCOMPARE(output[0], 1.0);
    QCOMPARE(output[999], 1.0);
    for (int k = 1; k <= 100; ++k) {
        const double sta = 1 + 9 * std::min(k, 10) / 10.0;
        const double lta = 1 + 9 * k / 100.0;
        QCOMPARE(output[static_cast<size_t>(999 + k)], sta / lta);
    }
}

void DerivedFiltersTest::staltaOfSilence()
{
    // Rounding errors of the sums must not become a ratio.
    Samples input = noise(777, 2);
    for (double &sample : input)
        sample /= 3;
    input.resize(2000, 0.0);
    StaLta<double> filter(0.1, 1);
    const Samples output = filtered<double>(filter, input);
    for (size_t i = 777; i < 786; ++i)
        QVERIFY(output[i] > 0);
    for (size_t i = 786; i < 2000; ++i)
        QCOMPARE(output[i], 0.0);
    QCOMPARE(filtered<double>(filter, Samples(300, 0.0)), Samples(300, 0.0));
}

void DerivedFiltersTest::staltaChecksParameters()
{
    StaLta<double> filter(1, 10);
    const auto set = [&](const Samples &values) {
        return filter.setParameters(static_cast<int>(values.size()), values.data());
    };
    QCOMPARE(set({2}), -2);
    QCOMPARE(set({0, 5}), -1);
    QCOMPARE(set({Nan, 5}), -1);
    QCOMPARE(set({2, std::numeric_limits<double>::infinity()}), -2);
    QCOMPARE(set({5, 5}), -2);
    QCOMPARE(filter.lta(), 10.0);
    QCOMPARE(set({2, 5}), 2);
    QCOMPARE(filter.sta(), 2.0);
}

void DerivedFiltersTest::integratesClosedForms()
{
    Integrate<double> filter;
    const double rate = 50;
    const Samples ramp =
        filtered<double>(filter, sampled(1000, [](int i) { return i / 50.0; }), rate);
    for (int i = 0; i < 1000; ++i)
        QVERIFY(std::abs(ramp[size_t(i)] - 0.5 * i * i / (rate * rate)) < 1E-9);

    // The trapezoid rule scales a sine by (w / 2) / tan(w / 2), w in radians per sample.
    const double w = 2 * Pi * 4 / rate;
    const Samples sine =
        filtered<double>(filter, sampled(1000, [&](int i) { return std::cos(w * i); }), rate);
    const double gain = 0.5 / std::tan(0.5 * w) / rate;
    for (int i = 0; i < 1000; ++i)
        QVERIFY(std::abs(sine[size_t(i)] - gain * std::sin(w * i)) < 1E-12);
}

void DerivedFiltersTest::differentiatesClosedForms()
{
    Differentiate<double> filter;
    const double rate = 50;
    const Samples line =
        filtered<double>(filter, sampled(100, [](int i) { return 7 - 3 * i / 50.0; }), rate);
    QCOMPARE(line[0], 0.0);
    for (size_t i = 1; i < line.size(); ++i)
        QVERIFY(std::abs(line[i] + 3) < 1E-10);

    const double w = 2 * Pi * 4 / rate;
    const Samples sine =
        filtered<double>(filter, sampled(1000, [&](int i) { return std::sin(w * i); }), rate);
    const double gain = 2 * rate * std::sin(0.5 * w);
    for (int i = 1; i < 1000; ++i)
        QVERIFY(std::abs(sine[size_t(i)] - gain * std::cos(w * (i - 0.5))) < 1E-10);
}

void DerivedFiltersTest::differentiationUndoesIntegration()
{
    const Samples input = noise(5000, 3);
    Integrate<double> integrate;
    Differentiate<double> differentiate;
    const Samples output = filtered<double>(differentiate, filtered<double>(integrate, input));
    for (size_t i = 1; i < input.size(); ++i)
        QVERIFY(std::abs(output[i] - 0.5 * (input[i - 1] + input[i])) < 1E-7);
}

void DerivedFiltersTest::keepsStateBetweenBlocks()
{
    const Samples input = noise(2000, 4);
    for (const auto &[name, filter] : allFilters<double>()) {
        const Samples whole = filtered<double>(*filter, input);
        Samples blocks = input;
        filter->setSamplingFrequency(100);
        for (int first = 0, n = 0; first < 2000; first += n) {
            n = std::min(1 + first % 37, 2000 - first);
            filter->apply(n, blocks.data() + first);
            filter->apply(0, blocks.data());
        }
        QVERIFY2(blocks == whole, name);
    }
}

void DerivedFiltersTest::startsAfresh()
{
    const Samples input = noise(500, 5);
    for (const auto &[name, filter] : allFilters<double>()) {
        const Samples first = filtered<double>(*filter, input);
        const std::unique_ptr<InPlaceFilter<double>> copy(filter->clone());
        QVERIFY2(filtered<double>(*filter, input) == first, name);
        QVERIFY2(filtered<double>(*copy, input) == first, name);
    }
}

void DerivedFiltersTest::passesOverWhatIsNotFinite()
{
    const Samples clean = noise(400, 6);
    Samples spoilt = clean;
    spoilt.insert(spoilt.begin() + 200, std::numeric_limits<double>::infinity());
    spoilt.insert(spoilt.begin() + 100, Nan);
    spoilt.insert(spoilt.begin(), Nan);
    for (const auto &[name, filter] : allFilters<double>()) {
        const Samples expected = filtered<double>(*filter, clean);
        Samples output = filtered<double>(*filter, spoilt);
        QCOMPARE(
            std::count_if(output.begin(), output.end(), [](double v) { return std::isnan(v); }), 3);
        output.erase(
            std::remove_if(output.begin(), output.end(), [](double v) { return std::isnan(v); }),
            output.end());
        QVERIFY2(output == expected, name);
    }
}

void DerivedFiltersTest::leavesSamplesWithoutRate()
{
    const Samples input = noise(10, 7);
    for (const double rate : {0.0, -1.0, Nan, std::numeric_limits<double>::infinity()}) {
        for (const auto &[name, filter] : allFilters<double>())
            QVERIFY2(filtered<double>(*filter, input, rate) == input, name);
    }
}

void DerivedFiltersTest::floatFollowsDouble()
{
    const Samples input = noise(3000, 8);
    const std::vector<float> rounded(input.begin(), input.end());
    const auto inFloat = allFilters<float>();
    const auto inDouble = allFilters<double>();
    for (size_t k = 0; k < inFloat.size(); ++k) {
        const auto output = filtered<float>(*inFloat[k].second, rounded);
        const Samples expected =
            filtered<double>(*inDouble[k].second, Samples(rounded.begin(), rounded.end()));
        for (size_t i = 0; i < output.size(); ++i)
            QVERIFY2(output[i] == static_cast<float>(expected[i]), inFloat[k].first);
    }
}

QTEST_APPLESS_MAIN(DerivedFiltersTest)
#include "tst_derivedfilters.moc"
