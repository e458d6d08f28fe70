// SPDX-License-Identifier: LGPL-3.0-or-later

// Band-pass filtering of waveform rows, from the bare filter to a view that goes on answering. Each
// benchmark times the plain form of its work in the same run and prints the ratio of the two.

#include "benchmarking.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>

#include <tellarix/core/math/butterworth.h>
#include <tellarix/core/records/ringbuffer.h>
#include <tellarix/core/records/typedarray.h>
#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/records/timescale.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QThread>
#include <QTimer>
#include <QtConcurrent>

#include <algorithm>
#include <memory>
#include <vector>

using namespace Benchmarking;
using namespace Tellarix;
namespace IIR = Math::Filtering::IIR;

namespace {

constexpr int Rows = 30;
constexpr int Order = 4;
constexpr double Lower = 0.7;
constexpr double Upper = 2;
constexpr double SamplingFrequency = 100;
constexpr int ShortRecord = 500;
constexpr int Hour = 360000;
constexpr int Day = 24 * Hour;

std::vector<int> noise(int count, unsigned seed)
{
    std::vector<int> samples(static_cast<size_t>(count));
    Noise(seed).fill(samples.data(), count);
    return samples;
}

std::unique_ptr<RingBuffer> makeRecords(int sampleCount, unsigned seed)
{
    const StreamCodesCPtr codes(new StreamCodes("GE", "APE", "", "BHZ"));
    const std::vector<int> samples = noise(sampleCount, seed);
    auto records = std::make_unique<RingBuffer>(0);
    for (int first = 0; first < sampleCount; first += ShortRecord) {
        const Core::Time start = Midnight + Core::TimeSpan(first / SamplingFrequency);
        records->feed(new Record(codes, start, SamplingFrequency,
                                 new IntArray(ShortRecord, samples.data() + first)));
    }
    return records;
}

/** The plain form: one section behind the other over all samples. */
void plainFilter(std::vector<double> &samples)
{
    for (const IIR::Biquad &q :
         IIR::butterworthSections(IIR::Band::Bandpass, Order, Lower, Upper, SamplingFrequency)) {
        double first = 0, second = 0;
        for (double &sample : samples) {
            const double x = sample;
            const double y = q.b0 * x + first;
            first = q.b1 * x - q.a1 * y + second;
            second = q.b2 * x - q.a2 * y;
            sample = y;
        }
    }
}

double plainSeconds(int sampleCount)
{
    const std::vector<int> input = noise(sampleCount, 1);
    double fastest = 1E9;
    for (int i = 0; i < 3; ++i) {
        std::vector<double> samples(input.begin(), input.end());
        fastest = std::min(fastest, secondsOf([&] { plainFilter(samples); }));
        benchmark::DoNotOptimize(samples.data());
    }
    return fastest;
}

/** What the filter alone takes for the samples of a row in blocks of the length of records, with
 *  as many rows at a time as there are cores; the fastest of three. */
double bareSecondsPerRow(int sampleCount)
{
    const std::vector<int> input = noise(Hour, 1);
    std::vector<int> cores(static_cast<size_t>(QThread::idealThreadCount()));
    const auto filterRow = [&](int) {
        IIR::ButterworthBandpass<double> filter(Order, Lower, Upper, SamplingFrequency);
        std::vector<double> samples;
        for (int done = 0; done < sampleCount; done += Hour) {
            samples.assign(input.begin(), input.end());
            for (int first = 0; first < Hour; first += ShortRecord)
                filter.apply(ShortRecord, samples.data() + first);
        }
    };
    double fastest = 1E9;
    for (int i = 0; i < 3; ++i)
        fastest =
            std::min(fastest, secondsOf([&] { QtConcurrent::blockingMap(cores, filterRow); }));
    return fastest / static_cast<double>(cores.size());
}

/** The filter alone, in blocks of the length of records. */
void FilterSamples(benchmark::State &state)
{
    const std::vector<int> input = noise(Hour, 1);
    std::vector<double> samples(input.begin(), input.end());
    IIR::ButterworthBandpass<double> filter(Order, Lower, Upper, SamplingFrequency);
    double ours = 0;
    for (auto _ : state) {
        samples.assign(input.begin(), input.end());
        const double seconds = secondsOf([&] {
            for (int first = 0; first < Hour; first += ShortRecord)
                filter.apply(ShortRecord, samples.data() + first);
        });
        state.SetIterationTime(seconds);
        ours += seconds;
    }
    const auto n = static_cast<double>(state.iterations());
    state.SetItemsProcessed(state.iterations() * Hour);
    state.counters["faster_than_plain"] = plainSeconds(Hour) / (ours / n);
}

/** A view of many rows, shown, and a clock that notes how long it did not answer. */
class FilteredView
{
public:
    explicit FilteredView(int samplesPerRow)
    {
        std::vector<std::unique_ptr<RingBuffer>> records(Rows);
        QtConcurrent::blockingMap(records, [&](std::unique_ptr<RingBuffer> &item) {
            item = makeRecords(samplesPerRow, unsigned(&item - records.data() + 1));
        });
        for (auto &item : records) {
            auto *row = new Norvu::Gui::Trace("GE.APE..BHZ", Qt::black);
            row->recordWidget()->setRecords(0, item.release());
            _view.addItem(row);
        }
        _view.setAlignment(Midnight);
        _view.setTimeRange(0, samplesPerRow / SamplingFrequency);
        _view.setAllTracesNormalization(true);
        _view.setBackgroundFiltering(true);
        _view.setFilterEnabled(true);
        _view.resize(1600, 900);
        _view.show();
        QCoreApplication::processEvents();

        QObject::connect(&_clock, &QTimer::timeout, [this] { noteGap(); });
    }

    /** Filters all rows; returns the time that this takes. */
    double filter(double upper)
    {
        QEventLoop loop;
        QObject::connect(&_view, &Norvu::Gui::TraceView::filteringProgress, &loop,
                         [&](int done, int total) {
                             if (done == total)
                                 loop.quit();
                         });
        // Often enough, and without taking a core from the filters as one without pause would.
        _clock.start(1);
        _sinceAnswer.start();
        const double seconds = secondsOf([&] {
            _view.setFilter(new IIR::ButterworthBandpass<double>(Order, Lower, upper));
            loop.exec();
        });
        // The last rows are still to be painted.
        QCoreApplication::processEvents();
        noteGap();
        _clock.stop();
        return seconds;
    }

    double largestGap() const { return _largestGap; }

private:
    void noteGap()
    {
        _largestGap = std::max(_largestGap, _sinceAnswer.nsecsElapsed() * 1E-9);
        _sinceAnswer.start();
    }

    Norvu::Gui::TraceView _view;
    QTimer _clock;
    QElapsedTimer _sinceAnswer;
    double _largestGap{0};
};

/** From the choice of a filter to filtered rows, beside the plain loop over as many samples
 *  on one core and the filter alone on all cores. */
void FilterRows(benchmark::State &state)
{
    const auto samples = static_cast<int>(state.range(0));
    double ours = 0;
    double gap = 0;
    {
        FilteredView view(samples);
        int round = 0;
        for (auto _ : state) {
            const double seconds = view.filter(Upper + 0.1 * ++round);
            state.SetIterationTime(seconds);
            ours += seconds;
        }
        gap = view.largestGap();
    }
    const auto n = static_cast<double>(state.iterations());
    state.SetItemsProcessed(state.iterations() * Rows * int64_t(samples));
    state.counters["faster_than_plain"] = Rows * plainSeconds(samples) / (ours / n);
    state.counters["to_bare_filter"] = ours / n / (Rows * bareSecondsPerRow(samples));
    state.counters["largest_gap_ms"] = gap * 1E3;
}

BENCHMARK(FilterSamples)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(FilterRows)
    ->ArgName("samples")
    ->Arg(Hour)
    ->Arg(Day)
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    return Benchmarking::run<QApplication>(argc, argv);
}
