// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "fulldisk.h"

#include "bench/bench.h"
#include "bench/task.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>

#include <tellarix/core/records/formats/miniseedwriter.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/ringbuffer.h>
#include <tellarix/core/records/typedarray.h>
#include <tellarix/qt/records/recordwidget.h>

#include <QFile>
#include <QtTest>

#include <algorithm>
#include <string>
#include <vector>

namespace WaveformTesting {

using namespace Tellarix;
using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

const Core::Time Start(2024, 1, 5, 10, 11, 12);

inline Core::TimeWindow window(double start, double end)
{
    return {Start + Core::TimeSpan(start), Start + Core::TimeSpan(end)};
}

/** A record that begins @p start seconds after the time base. */
template <typename T>
RecordCPtr record(const std::string &id, double start, double rate, const std::vector<T> &samples)
{
    ArrayPtr data(new TypedArray<T>(static_cast<int>(samples.size()), samples.data()));
    return new Record(StreamCodes::FromID(id), Start + Core::TimeSpan(start), rate, data);
}

/** A saw tooth of integers. */
inline RecordCPtr sawTooth(const std::string &id, double start, double rate, int count)
{
    std::vector<int> samples;
    for (int i = 0; i < count; ++i)
        samples.push_back(100 * (i % 20) - 1000);
    return record(id, start, rate, samples);
}

/** A miniSEED file of records. @return its name; empty if it can't be written */
inline QString writeRecords(const QString &path, const std::vector<RecordCPtr> &records)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return QString();
    Formats::MiniSeedWriter writer(&file);
    const bool written = std::all_of(records.begin(), records.end(),
                                     [&](const auto &record) { return writer.write(*record); });
    return written ? path : QString();
}

/** Opens files in a window or panel, and waits until nothing goes on in the background. */
template <typename Opener>
void openAll(Opener &opener, Workbench::Bench &bench, const QStringList &files)
{
    if (!opener.open(files) ||
        !QTest::qWaitFor([&] { return bench.tasks()->running().isEmpty(); }, 60000))
        qFatal("Can't open %s", qPrintable(files.join(' ')));
}

inline Trace *addRow(TraceView &view, const std::vector<RecordCPtr> &records)
{
    auto *row = new Trace(records.front()->streamID().c_str(), Qt::black);
    auto *sequence = new RingBuffer(-1);
    for (const RecordCPtr &record : records)
        sequence->feed(record.get());
    row->recordWidget()->setRecords(0, sequence, true);
    view.addItem(row);
    return row;
}

inline QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline QString writeText(const QString &path, const QByteArray &text)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size() ? path : QString();
}

} // namespace WaveformTesting
