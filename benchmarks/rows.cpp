// SPDX-License-Identifier: LGPL-3.0-or-later

// Rows added to a trace view that is shown already, from the first to the finished picture, as it
// is when a folder of many streams is opened. The plain form is as many empty widgets of a fixed
// height in a scroll area, with as many children as a row has.

#include "benchmarking.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>

#include <QApplication>
#include <QScrollArea>
#include <QVBoxLayout>

using namespace Benchmarking;

namespace {

/** Until there is nothing more to lay out and to paint. */
void finishPicture()
{
    QApplication::sendPostedEvents();
    QApplication::processEvents();
}

double secondsOfRows(int count)
{
    Norvu::Gui::TraceView view;
    view.resize(1600, 900);
    view.show();
    finishPicture();
    return secondsOf([&] {
        for (int i = 0; i < count; ++i)
            view.addItem(new Norvu::Gui::Trace(QString("XX.S%1..HHZ").arg(i), Qt::black));
        finishPicture();
    });
}

QWidget *makePlainRow()
{
    auto *row = new QWidget;
    row->setFixedHeight(48);
    for (int i = 0; i < 5; ++i)
        new QWidget(row);
    return row;
}

double secondsOfPlainWidgets(int count)
{
    QScrollArea area;
    auto *contents = new QWidget;
    auto *layout = new QVBoxLayout(contents);
    area.setWidget(contents);
    area.setWidgetResizable(true);
    area.resize(1600, 900);
    area.show();
    finishPicture();
    return secondsOf([&] {
        for (int i = 0; i < count; ++i)
            layout->addWidget(makePlainRow());
        finishPicture();
    });
}

void addRows(benchmark::State &state)
{
    const int count = static_cast<int>(state.range(0));
    double ours = 1E9;
    double plain = 1E9;
    double tenth = 1E9;
    for (auto _ : state) {
        plain = std::min(plain, secondsOfPlainWidgets(count));
        tenth = std::min(tenth, secondsOfRows(count / 10));
        const double seconds = secondsOfRows(count);
        state.SetIterationTime(seconds);
        ours = std::min(ours, seconds);
    }
    state.counters["fastest_ms"] = ours * 1E3;
    state.counters["to_ten_times_a_tenth"] = ours / (10 * tenth);
    state.counters["to_plain_widgets"] = ours / plain;
}

} // namespace

BENCHMARK(addRows)->Arg(2000)->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    return Benchmarking::run<QApplication>(argc, argv);
}
