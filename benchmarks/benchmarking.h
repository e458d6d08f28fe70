// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/typedarray.h>
#include <tellarix/core/time.h>

#include <benchmark/benchmark.h>

#include <QElapsedTimer>

#include <random>

/** What the benchmarks of waveform rows share. */
namespace Benchmarking {

const Tellarix::Core::Time Midnight(2024, 1, 5);

template <typename Work>
double secondsOf(Work work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) * 1E-9;
}

/** Ground noise about zero that goes on from call to call. */
class Noise
{
public:
    explicit Noise(unsigned seed) : _random(seed) {}

    /** The next @p count samples; their steps are up to @p amplitude. */
    void fill(int *samples, int count, int amplitude = 1024)
    {
        for (int i = 0; i < count; ++i) {
            const int step = static_cast<int>(_random() % 2048) - 1024;
            _level += (step * amplitude >> 10) - _level / 8;
            samples[i] = _level;
        }
    }

    /** As many samples as a record holds that begins with sample @p first of the day, in which it
     *  is quiet but for some bursts. */
    Tellarix::Core::SmartPointer<Tellarix::IntArray> recordOfDay(int first, int length)
    {
        Tellarix::Core::SmartPointer<Tellarix::IntArray> array(new Tellarix::IntArray(length));
        fill(array->typedData(), length, first % 2000000 < 100000 ? 4000 : 300);
        return array;
    }

private:
    std::minstd_rand _random;
    int _level{0};
};

/** The main() of benchmarks that paint: no window comes up. */
template <typename Application>
int run(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    Application application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

} // namespace Benchmarking
