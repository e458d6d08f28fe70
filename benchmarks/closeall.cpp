// SPDX-License-Identifier: LGPL-3.0-or-later

// The memory of the workbench after Close all: 30 streams of 24 h at 100 Hz are opened from files
// of 512-byte records and closed again, filtered in one of the runs. The plain form is the memory
// of the same window before.

#include "benchmarking.h"

#include "bench/bench.h"
#include "bench/task.h"
#include "mainwindow.h"
#include "waveforms/waveforms.h"

#include <norvu/gui/traceview.h>
#include <tellarix/core/math/filterparser.h>
#include <tellarix/core/records/formats/miniseedwriter.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QTemporaryDir>

#include <unistd.h>

using namespace Benchmarking;
using namespace Tellarix;

namespace {

constexpr int Streams = 30;
constexpr int DaySamples = 8640000;
constexpr int RecordSamples = 2000;

QString writeDay(const QString &folder, int number)
{
    const std::string station = "S" + std::to_string(10 + number);
    const StreamCodesCPtr codes(new StreamCodes("XX", station, "", "HHZ"));
    const QString name = QString("%1/%2.mseed").arg(folder, station.c_str());
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly))
        return QString();
    Formats::MiniSeedWriter writer(&file);
    Noise noise(static_cast<unsigned>(number + 1));
    for (int first = 0; first < DaySamples; first += RecordSamples) {
        const RecordPtr record(new Record(codes, Midnight + Core::TimeSpan(first / 100.0), 100,
                                          noise.recordOfDay(first, RecordSamples)));
        if (!writer.write(*record))
            return QString();
    }
    return name;
}

double residentMegabytes()
{
    QFile file("/proc/self/statm");
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toDouble() *
           static_cast<double>(sysconf(_SC_PAGESIZE)) / 1048576;
}

void wait(Workbench::MainWindow &window)
{
    do
        QApplication::processEvents(QEventLoop::AllEvents, 50);
    while (!window.bench()->tasks()->running().isEmpty());
    QApplication::processEvents();
}

void closeAll(benchmark::State &state)
{
    QTemporaryDir folder;
    QStringList files;
    for (int i = 0; i < Streams; ++i)
        files.append(writeDay(folder.path(), i));

    Workbench::MainWindow window;
    window.setInteractive(false);
    window.show();
    wait(window);
    auto *waveforms = window.findChild<Workbench::Waveforms *>();
    const double before = residentMegabytes();
    double loaded = 0;
    double closed = 0;
    double closing = 0;
    for (auto _ : state) {
        window.open(files);
        wait(window);
        if (state.range(0))
            waveforms->view()->setFilter(
                Math::Filtering::parseFilter<double>("bandpass(1, 5)").release());
        waveforms->view()->setFilterEnabled(state.range(0));
        wait(window);
        window.grab();
        loaded = residentMegabytes();
        closing = secondsOf([&] { QMetaObject::invokeMethod(&window, "closeAll"); });
        wait(window);
        closed = residentMegabytes();
    }
    state.counters["before_MB"] = before;
    state.counters["loaded_MB"] = loaded;
    state.counters["closed_MB"] = closed;
    state.counters["closed_to_before"] = closed / before;
    state.counters["closing_ms"] = closing * 1E3;
}

} // namespace

BENCHMARK(closeAll)->ArgName("filtered")->Arg(0)->Arg(1)->Iterations(1)->Unit(benchmark::kSecond);

int main(int argc, char **argv)
{
    return Benchmarking::run<QApplication>(argc, argv);
}
