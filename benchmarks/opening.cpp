// SPDX-License-Identifier: LGPL-3.0-or-later

// From files of a day to rows that are shown: 30 streams x 24 h x 100 Hz in Steim2 records of 512
// bytes, about 500 MB. The folder of the files can be given by DAY_FOLDER, where they are kept.

#include "benchmarking.h"

#include "bench/bench.h"
#include "bench/task.h"
#include "mainwindow.h"

#include <QApplication>
#include <tellarix/client/io/streamsummary.h>
#include <tellarix/core/records/formats/miniseedwriter.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <memory>
#include <vector>

using namespace Benchmarking;
using namespace Tellarix;

namespace {

constexpr int Streams = 30;
constexpr double SamplingFrequency = 100;
constexpr int Turn = 6000;
constexpr int TurnsPerDay = 24 * 60;
constexpr int Amplitude = 600; /**< so that the day takes about 500 MB */

QString nameOf(int stream)
{
    return QStringLiteral("S%1").arg(stream, 2, 10, QChar('0'));
}

/** Writes a minute of each stream by turns, to one file or to one for each. */
bool writeDay(const QStringList &files)
{
    std::vector<std::unique_ptr<QFile>> targets;
    std::vector<std::unique_ptr<Formats::MiniSeedWriter>> writers;
    for (const QString &name : files) {
        targets.push_back(std::make_unique<QFile>(name));
        if (!targets.back()->open(QIODevice::WriteOnly))
            return false;
        writers.push_back(std::make_unique<Formats::MiniSeedWriter>(targets.back().get(), 512));
    }
    std::vector<Noise> noise;
    for (unsigned stream = 0; stream < Streams; ++stream)
        noise.emplace_back(stream + 1);
    for (int turn = 0; turn < TurnsPerDay; ++turn) {
        const Core::Time time = Midnight + Core::TimeSpan(turn * Turn / SamplingFrequency);
        for (int stream = 0; stream < Streams; ++stream) {
            Core::SmartPointer<IntArray> samples(new IntArray(Turn));
            noise[size_t(stream)].fill(samples->typedData(), Turn, Amplitude);
            const StreamCodesCPtr codes(
                new StreamCodes("XX", nameOf(stream).toStdString(), "", "HHZ"));
            const size_t writer = static_cast<size_t>(stream) % writers.size();
            if (!writers[writer]->write(Record(codes, time, SamplingFrequency, samples)))
                return false;
        }
    }
    return true;
}

/** The files of the day, written once; one or one for each stream. */
QStringList day(int fileCount)
{
    static const QTemporaryDir temporary;
    const QDir folder(qEnvironmentVariable("DAY_FOLDER", temporary.path()));
    QStringList files;
    for (int i = 0; i < fileCount; ++i)
        files.append(folder.filePath(fileCount == 1 ? "day.mseed" : nameOf(i) + ".mseed"));
    if (!QFile::exists(files.last()) && !writeDay(files))
        qFatal("Can't write the day to %s", qPrintable(folder.path()));
    return files;
}

/** What the command-line tool does with the files. */
int64_t summarize(const QStringList &files)
{
    IO::StreamSummarizer summarizer;
    for (const QString &file : files) {
        const IO::RecordStreamPtr stream = IO::RecordStream::Create(file.toStdString());
        if (!stream || !stream->open())
            return 0;
        while (const RecordPtr record = stream->next())
            summarizer.add(*record, stream->originName(), stream->originOffset());
    }
    int64_t samples = 0;
    for (const IO::StreamSummary &summary : summarizer.result().streams)
        samples += summary.samples;
    return samples;
}

/** Opens the files as the user does; returns when all rows are painted. */
double secondsToShow(const QStringList &files)
{
    Workbench::MainWindow window;
    window.setInteractive(false);
    window.resize(1600, 900);
    window.show();
    QCoreApplication::processEvents();
    return secondsOf([&] {
        window.open(files);
        while (!window.bench()->tasks()->running().isEmpty())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QCoreApplication::processEvents();
    });
}

/** "ratio" is the time until the rows are shown over that of the summary, the best of each. */
void Open(benchmark::State &state)
{
    const QStringList files = day(static_cast<int>(state.range(0)));
    double summary = 1E9;
    double shown = 1E9;
    int64_t samples = 0;
    for (auto _ : state) {
        summary = std::min(summary, secondsOf([&] { samples = summarize(files); }));
        const double seconds = secondsToShow(files);
        state.SetIterationTime(seconds);
        shown = std::min(shown, seconds);
    }
    state.SetItemsProcessed(state.iterations() * samples);
    state.counters["summary_ms"] = summary * 1E3;
    state.counters["shown_ms"] = shown * 1E3;
    state.counters["ratio"] = shown / summary;
}

BENCHMARK(Open)->ArgName("files")->Arg(1)->Arg(Streams)->UseManualTime()->Iterations(5)->Unit(
    benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    QStandardPaths::setTestModeEnabled(true);
    return Benchmarking::run<QApplication>(argc, argv);
}
