// SPDX-License-Identifier: LGPL-3.0-or-later

#include "client/seedlinkserver.h"
#include "client/seedrecord.h"
#include "mainwindow.h"
#include "waveforms/livesources.h"
#include "waveforms/waveforms.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/client/io/recordstream.h>

#include <QApplication>
#include <QByteArray>
#include <QDockWidget>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using namespace Tellarix;
using SeedLinkTesting::SeedLinkServer;

constexpr double SamplingFrequency = 100;
/** What fits into a record of 512 bytes, about. */
constexpr int RecordSamples = 400;
constexpr int RowsInSight = 30;
constexpr double RecordSeconds = RecordSamples / SamplingFrequency;

std::string streamId(int index)
{
    char station[16];
    std::snprintf(station, sizeof station, "S%04d", index);
    return std::string("XX.") + station + "..HHZ";
}

/** Start of a record of a stream. They are spread over the length of a record, as those of real
 *  stations are. */
Core::Time startOf(Core::Time start, int stream, int count, int record)
{
    return start + Core::TimeSpan(RecordSeconds * (record - static_cast<double>(stream) / count));
}

/** Feeds streams at 100 Hz for ever, each record as soon as its last sample has been, and those of
 *  the last @p seconds at once. */
int serve(int count, int seconds)
{
    SeedLinkServer server;
    server.setCapacity(static_cast<size_t>(count * (seconds / RecordSeconds + 60)));
    const Core::Time start = Core::Time::GMT() - Core::TimeSpan(static_cast<double>(seconds));
    std::vector<int> sent(static_cast<size_t>(count));
    for (bool isServing = false;; isServing = true) {
        const Core::Time now = Core::Time::GMT();
        for (int i = 0; i < count; ++i) {
            int &records = sent[static_cast<size_t>(i)];
            while (startOf(start, i, count, records + 1) <= now)
                server.add(seedRecord(streamId(i), startOf(start, i, count, records++),
                                      RecordSamples, SamplingFrequency));
        }
        if (!isServing) {
            if (!server.start())
                return 1;
            std::printf("%s\n", server.url().c_str());
            std::fflush(stdout);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

/** Reads a source to nothing until it ends. */
int read(const char *url)
{
    std::string error;
    const IO::RecordStreamPtr stream = IO::RecordStream::Create(url, &error);
    if (!stream || !stream->open()) {
        std::fprintf(stderr, "%s\n", stream ? stream->errorString().c_str() : error.c_str());
        return 1;
    }
    long records = 0;
    while (const RecordPtr record = stream->next()) {
        if (++records % 1000 == 0) {
            std::printf("%ld\n", records);
            std::fflush(stdout);
        }
    }
    return 0;
}

/** Rows of @p view that can be seen. */
int rowsInSight(const Norvu::Gui::TraceView &view)
{
    const QList<Norvu::Gui::Trace *> rows = view.items();
    return static_cast<int>(std::count_if(
        rows.begin(), rows.end(), [](const auto *row) { return !row->visibleRegion().isEmpty(); }));
}

/** The workbench without docks, so high that it shows 30 rows, which keep ten minutes. */
int show(const char *url)
{
    Workbench::MainWindow window;
    window.setInteractive(false);
    window.show();
    for (QDockWidget *dock : window.findChildren<QDockWidget *>())
        dock->hide();
    auto *waveforms = window.findChild<Workbench::Waveforms *>();
    waveforms->live()->setLength(Core::TimeSpan(600.0));
    if (!window.open({url}))
        return 1;
    int inSight = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &window, [&] {
        if (inSight == rowsInSight(*waveforms->view()))
            return;
        inSight = rowsInSight(*waveforms->view());
        std::fprintf(stderr, "%d of %d rows are in sight\n", inSight, waveforms->view()->count());
        if (inSight > 0 && inSight < RowsInSight)
            window.resize(1600, window.height() + 100);
    });
    timer.start(1000);
    return QApplication::exec();
}

} // namespace

/** Load for measurements: a server that prints its URL, and clients that show and read one. */
int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    if (argc == 4 && std::strcmp(argv[1], "serve") == 0)
        return serve(std::max(1, std::atoi(argv[2])), std::max(0, std::atoi(argv[3])));
    if (argc == 3 && std::strcmp(argv[1], "show") == 0)
        return show(argv[2]);
    if (argc == 3 && std::strcmp(argv[1], "read") == 0)
        return read(argv[2]);
    std::fprintf(stderr, "usage: live-streams serve COUNT SECONDS | show URL | read URL\n");
    return 2;
}
