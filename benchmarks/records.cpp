// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/recordstream.h>
#include <tellarix/core/records/formats/miniseedwriter.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/ringbuffer.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/records/typedarray.h>

#include <benchmark/benchmark.h>

#include <QFile>
#include <QTemporaryDir>

#include <libmseed.h>

#include <chrono>
#include <cmath>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

using namespace Tellarix;

namespace {

constexpr int Streams = 12;
constexpr int SamplesPerTurn = 8000;
constexpr int64_t FileSize = 100 << 20;

/** Ground noise with a few earthquakes: an autoregressive walk whose size changes. */
class Noise
{
public:
    explicit Noise(unsigned seed) : _random(seed) {}

    void fill(int *samples, int count)
    {
        std::normal_distribution<double> step(0.0, 1.0);
        for (int i = 0; i < count; ++i, ++_index) {
            const double shaking = 40 + 4000 * std::exp(-double(_index % 200000) / 4000);
            _value = 0.97 * _value + shaking * step(_random);
            samples[i] = static_cast<int>(std::lround(_value)) + 1200;
        }
    }

private:
    std::mt19937 _random;
    double _value{0};
    int64_t _index{0};
};

/** A file of about 100 MB with interleaved streams, written once for each record length. */
const std::string &file(int recordLength)
{
    static const QTemporaryDir directory;
    static std::map<int, std::string> files;
    std::string &name = files[recordLength];
    if (!name.empty())
        return name;

    QFile target(directory.filePath(QString("%1.mseed").arg(recordLength)));
    target.open(QIODevice::WriteOnly);
    Formats::MiniSeedWriter writer(&target, recordLength);
    std::vector<Noise> noise;
    for (unsigned stream = 0; stream < Streams; ++stream)
        noise.emplace_back(1000 + stream);
    Core::Time time = Core::Time::FromString("2024-03-01T00:00:00Z");
    std::vector<int> samples(SamplesPerTurn);
    while (writer.recordCount() * recordLength < FileSize) {
        for (int stream = 0; stream < Streams; ++stream) {
            noise[size_t(stream)].fill(samples.data(), SamplesPerTurn);
            const StreamCodesCPtr codes(new StreamCodes("XX", "S" + std::to_string(stream / 3),
                                                        "00",
                                                        std::string("HH") + "ZNE"[stream % 3]));
            writer.write(
                Record(codes, time, 100, new IntArray(SamplesPerTurn, samples.data()), 100));
        }
        time += Core::TimeSpan(SamplesPerTurn / 100.0);
    }
    target.close();
    return name = target.fileName().toStdString();
}

/** Sequences by the id of their streams. */
using Sequences = std::unordered_map<std::string, std::unique_ptr<RingBuffer>>;

/** What libmseed takes for reading and unpacking alone, its records dropped at once. */
int64_t readPlain(const std::string &name)
{
    MSFileParam *parameters = nullptr;
    MSRecord *record = nullptr;
    int64_t samples = 0;
    while (ms_readmsr_r(&parameters, &record, name.c_str(), 0, nullptr, nullptr, 1, 1, 0) ==
           MS_NOERROR)
        samples += record->numsamples;
    ms_readmsr_r(&parameters, &record, nullptr, 0, nullptr, nullptr, 0, 0, 0);
    return samples;
}

/** The same as records with pyramids, kept in a sequence for each stream. */
int64_t readStream(const std::string &name, Sequences &sequences)
{
    const IO::RecordStreamPtr stream = IO::RecordStream::Create("file://" + name);
    int64_t samples = 0;
    if (!stream || !stream->open())
        return samples;
    while (const RecordPtr record = stream->next()) {
        std::unique_ptr<RingBuffer> &sequence = sequences[record->streamID()];
        if (!sequence)
            sequence = std::make_unique<RingBuffer>(0, 0.5);
        if (sequence->feed(record.get()))
            samples += record->sampleCount();
    }
    return samples;
}

template <typename Read>
double secondsOf(Read read)
{
    const auto start = std::chrono::steady_clock::now();
    read();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/** Plain and ours by turns, so that both see the same machine; "ratio" is plain time / our time. */
void readMiniSeed(benchmark::State &state)
{
    const std::string name = file(static_cast<int>(state.range(0)));
    const double megabytes = static_cast<double>(QFile(QString::fromStdString(name)).size()) * 1E-6;
    double plain = 0;
    double ours = 0;
    int64_t samples = readPlain(name);
    for (auto _ : state) {
        int64_t plainSamples = 0;
        Sequences sequences;
        plain += secondsOf([&] { plainSamples = readPlain(name); });
        const double seconds = secondsOf([&] { samples = readStream(name, sequences); });
        ours += seconds;
        state.SetIterationTime(seconds);
        if (samples != plainSamples)
            state.SkipWithError("sample counts differ");
    }
    const double runs = static_cast<double>(state.iterations());
    state.SetItemsProcessed(state.iterations() * samples);
    state.counters["MB/s"] = megabytes * runs / ours;
    state.counters["plain MB/s"] = megabytes * runs / plain;
    state.counters["ratio"] = plain / ours;
}

BENCHMARK(readMiniSeed)
    ->ArgName("recordLength")
    ->Arg(512)
    ->Arg(4096)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
