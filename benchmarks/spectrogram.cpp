// SPDX-License-Identifier: LGPL-3.0-or-later

// Spectrogram of an hour: from samples in memory to the matrix and its range. The benchmark of each
// form times the plain loop, one band after the other, in the same run and prints the ratio.

#include <norvu/gui/iirenvelope_p.h>
#include <norvu/gui/spectrogram.h>

#include <tellarix/core/math/average.h>
#include <tellarix/core/math/butterworth.h>
#include <tellarix/core/math/chainfilter.h>

#include <benchmark/benchmark.h>

#include <QElapsedTimer>
#include <QThreadPool>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <random>
#include <vector>

using namespace Norvu::Gui;
using namespace Tellarix::Math::Filtering;

namespace {

constexpr double SamplingFrequency = 100;
constexpr int Hour = 360000;
constexpr int RecordLength = 500;
constexpr int Bands = 64;

SpectrogramSettings periods()
{
    SpectrogramSettings settings;
    settings.fromString("periods_log(0.1,100,10,64)");
    return settings;
}

const std::vector<float> &samples()
{
    static const auto made = [] {
        std::mt19937 random(3);
        std::normal_distribution<float> noise(0, 300);
        std::vector<float> result(Hour);
        std::generate(result.begin(), result.end(), [&] { return noise(random); });
        return result;
    }();
    return made;
}

/** One band after the other over each record, into a matrix that grows with each record. */
class PlainBank
{
public:
    PlainBank()
    {
        const double width = std::log(1000.0) / 10;
        const double step = (std::log(1000.0) - width) / (Bands - 1);
        for (int i = 0; i < Bands; ++i) {
            const double high = 1.0 / (0.1 * std::exp(i * step));
            const double low = high / std::exp(width);
            _chains.emplace_back(new ChainFilter<float>);
            _chains.back()->add(new RunningMeanHighPass<float>(100));
            _chains.back()->add(new IIR::ButterworthBandpass<float>(4, low, high));
            _chains.back()->add(new IIREnvelope<float>(float(std::sqrt(low * high))));
            _chains.back()->add(new Average<float>(1.0 / low));
            _chains.back()->setSamplingFrequency(SamplingFrequency);
        }
    }
    ~PlainBank() { std::free(_data); }
    PlainBank(const PlainBank &) = delete;
    PlainBank &operator=(const PlainBank &) = delete;

    void push(int n, const float *samples)
    {
        const size_t head = _columns;
        _columns += size_t(n);
        _data = static_cast<float *>(std::realloc(_data, _columns * Bands * sizeof(float)));
        for (size_t r = 0; r < Bands; ++r) {
            _scratch.assign(samples, samples + n);
            _chains[r]->apply(n, _scratch.data());
            float *target = _data + head * Bands + r;
            for (const float value : _scratch) {
                *target = value;
                target += Bands;
                _minimum = std::min(_minimum, value);
                _maximum = std::max(_maximum, value);
            }
        }
    }
    float maximum() const { return _maximum; }

private:
    std::vector<std::unique_ptr<ChainFilter<float>>> _chains;
    std::vector<float> _scratch;
    float *_data{nullptr};
    size_t _columns{0};
    float _minimum{std::numeric_limits<float>::infinity()};
    float _maximum{-std::numeric_limits<float>::infinity()};
};

template <typename Bank>
void pushRecords(Bank &bank, int recordLength)
{
    for (int first = 0; first < Hour; first += recordLength)
        bank.push(recordLength, samples().data() + first);
}

struct Engine
{
    explicit Engine(int columnInterval = 1) : spectrogram(periods())
    {
        spectrogram.setColumnInterval(columnInterval);
        spectrogram.setSamplingFrequency(SamplingFrequency);
    }
    void push(int n, const float *samples) { spectrogram.pushData(n, samples); }
    float maximum() const { return float(spectrogram.maximum()); }

    Spectrogram<float> spectrogram;
};

/** For an hour in 1600 pixels. */
struct PeakEngine : Engine
{
    PeakEngine() : Engine(128) {}
};

template <typename Bank>
double secondsFor(int recordLength)
{
    Bank bank;
    QElapsedTimer timer;
    timer.start();
    pushRecords(bank, recordLength);
    benchmark::DoNotOptimize(bank.maximum());
    return double(timer.nsecsElapsed()) * 1E-9;
}

template <typename Bank>
void run(benchmark::State &state, int recordLength)
{
    samples();
    double plain = std::numeric_limits<double>::infinity();
    double best = plain;
    for (auto _ : state) {
        const double seconds = secondsFor<Bank>(recordLength);
        state.SetIterationTime(seconds);
        best = std::min(best, seconds);
        plain = std::min(plain, secondsFor<PlainBank>(RecordLength));
    }
    state.SetItemsProcessed(state.iterations() * Hour * Bands);
    state.counters["plain_ms"] = plain * 1E3;
    state.counters["best_ms"] = best * 1E3;
    state.counters["times_as_fast"] = plain / best;
}

/** Record by record, as a stream delivers them: on one thread. */
void hourOfRecords(benchmark::State &state)
{
    run<Engine>(state, RecordLength);
}

/** The whole hour at once: on all processors. */
void hourAtOnce(benchmark::State &state)
{
    run<Engine>(state, Hour);
}

/** The whole hour at once, of which one column of peaks is kept for each 128 samples. */
void hourOfPeaks(benchmark::State &state)
{
    run<PeakEngine>(state, Hour);
}

/** The same, on one thread. */
template <typename Bank>
void hourOnOneThread(benchmark::State &state)
{
    QThreadPool *pool = QThreadPool::globalInstance();
    const int threads = pool->maxThreadCount();
    pool->setMaxThreadCount(1);
    run<Bank>(state, Hour);
    pool->setMaxThreadCount(threads);
}

/** A record joins an hour and as much leaves it; the plain form moves the columns and looks at all
 *  values. */
void recordOfLiveHour(benchmark::State &state)
{
    Engine engine;
    engine.push(Hour, samples().data());
    std::vector<float> plain(engine.spectrogram.data(), engine.spectrogram.data() + Hour * Bands);
    QElapsedTimer timer;
    timer.start();
    std::copy(plain.begin() + RecordLength * Bands, plain.end(), plain.begin());
    benchmark::DoNotOptimize(*std::max_element(plain.begin(), plain.end()));
    benchmark::DoNotOptimize(*std::min_element(plain.begin(), plain.end()));
    const double plainSeconds = double(timer.nsecsElapsed()) * 1E-9;

    timer.restart();
    for (auto _ : state) {
        engine.push(RecordLength, samples().data());
        const int columns = engine.spectrogram.columns();
        engine.spectrogram.trimData(columns - Hour, columns, nullptr);
    }
    const double seconds = double(timer.nsecsElapsed()) * 1E-9 / double(state.iterations());
    state.counters["plain_trim_ms"] = plainSeconds * 1E3;
    state.counters["times_as_fast"] = plainSeconds / seconds;
}

} // namespace

BENCHMARK(recordOfLiveHour)->Unit(benchmark::kMicrosecond)->Iterations(1500);
BENCHMARK(hourOfRecords)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(8);
BENCHMARK(hourAtOnce)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(8);
BENCHMARK(hourOfPeaks)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(8);
BENCHMARK_TEMPLATE(hourOnOneThread, Engine)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(8);
BENCHMARK_TEMPLATE(hourOnOneThread, PeakEngine)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(8);

BENCHMARK_MAIN();
