// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/math/differentiate.h>
#include <tellarix/core/math/integrate.h>
#include <tellarix/core/math/stalta.h>

#include <QtTest>

#include <cmath>
#include <functional>
#include <limits>
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

Samples filtered(InPlaceFilter<double> &filter, Samples samples, double rate = 100)
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

} // namespace

class DerivedFiltersTest : public QObject
{
    Q_OBJECT

private slots:
    void staltaIsRatioOfMeans()
    {
        const Samples input = noise(3000, 1);
        StaLta<double> filter(0.25, 5);
        const Samples output = filtered(filter, input);
        for (size_t i = 0; i < input.size(); ++i) {
            const double expected = meanAmplitude(input, i, 25) / meanAmplitude(input, i, 500);
            QVERIFY2(std::abs(output[i] - expected) < 1E-10, QByteArray::number(int(i)));
        }
    }

    void staltaOfSilence()
    {
        // Rounding errors of the sums must not become a ratio.
        Samples input = noise(777, 2);
        for (double &sample : input)
            sample /= 3;
        input.resize(2000, 0.0);
        StaLta<double> filter(0.1, 1);
        const Samples output = filtered(filter, input);
        for (size_t i = 777; i < 786; ++i)
            QVERIFY(output[i] > 0);
        for (size_t i = 786; i < 2000; ++i)
            QCOMPARE(output[i], 0.0);
        QCOMPARE(filtered(filter, Samples(300, 0.0)), Samples(300, 0.0));
    }

    void staltaChecksParameters()
    {
        StaLta<double> filter(1, 10);
        const auto set = [&](const Samples &values) {
            return filter.setParameters(static_cast<int>(values.size()), values.data());
        };
        QCOMPARE(set({2}), -2);
        QCOMPARE(set({Nan, 5}), -1);
        QCOMPARE(set({5, 5}), -2);
        QCOMPARE(filter.lta(), 10.0);
        QCOMPARE(set({2, 5}), 2);
        QCOMPARE(filter.sta(), 2.0);
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
};

QTEST_APPLESS_MAIN(DerivedFiltersTest)
#include "tst_derivedfilters.moc"
