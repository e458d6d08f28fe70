// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/traceview.h>

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/ringbuffer.h>
#include <tellarix/core/records/typedarray.h>
#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/records/timescale.h>

#include <QStringList>
#include <QtTest>

#include <cmath>

/** Rows and records for tests of views; times are in seconds since 1970. */
namespace Traces {

constexpr double SamplingFrequency = 20.0;

inline Tellarix::Core::Time timeAt(double seconds)
{
    return Tellarix::Core::Time(seconds);
}

inline Tellarix::Core::TimeWindow window(double start, double end)
{
    return Tellarix::Core::TimeWindow(timeAt(start), timeAt(end));
}

/** A record whose samples alternate between both ends of the range. */
inline Tellarix::RecordPtr makeRecord(const std::string &id, double start, double end,
                                      double lower = -1, double upper = 1)
{
    const int count = static_cast<int>(std::lround((end - start) * SamplingFrequency));
    Tellarix::Core::SmartPointer<Tellarix::DoubleArray> samples(new Tellarix::DoubleArray(count));
    for (int i = 0; i < count; ++i)
        samples->typedData()[i] = i % 2 ? upper : lower;
    return new Tellarix::Record(Tellarix::StreamCodes::FromID(id), timeAt(start), SamplingFrequency,
                                samples);
}

inline void feed(Norvu::Gui::Trace *row, int slot, const Tellarix::RecordPtr &record)
{
    if (!row->recordWidget()->records(slot))
        row->recordWidget()->setRecords(slot, new Tellarix::RingBuffer(0), true);
    row->recordWidget()->records(slot)->feed(record.get());
    row->recordWidget()->fed(slot, record.get());
}

inline Norvu::Gui::Trace *makeRow(const QString &label, double distance = 0)
{
    auto *row = new Norvu::Gui::Trace(label, Qt::black);
    row->setData(Norvu::Gui::TraceDistance, distance);
    return row;
}

/** A row with one record in slot 0. */
inline Norvu::Gui::Trace *makeRow(const QString &label, const Tellarix::RecordPtr &record)
{
    auto *row = makeRow(label);
    feed(row, 0, record);
    return row;
}

inline QStringList labels(const QList<Norvu::Gui::Trace *> &rows)
{
    QStringList result;
    for (const Norvu::Gui::Trace *row : rows)
        result << row->label();
    return result;
}

/** Labels of the rows from top to bottom. */
inline QStringList labelsFromTop(const Norvu::Gui::TraceView &view)
{
    QList<Norvu::Gui::Trace *> rows = view.items();
    std::sort(rows.begin(), rows.end(),
              [](const auto *a, const auto *b) { return a->y() < b->y(); });
    return labels(rows);
}

/** Writes down the signals of a view in the order in which they come. */
class SignalLog : public QObject
{
public:
    explicit SignalLog(Norvu::Gui::TraceView *view)
    {
        using Norvu::Gui::Trace;
        using Norvu::Gui::TraceView;
        connect(view, &TraceView::displayChanged, this, [this] { add("display"); });
        connect(view, &TraceView::alignmentChanged, this, [this] { add("alignment"); });
        connect(view, &TraceView::rulerSpacingChanged, this, [this] { add("spacing"); });
        connect(view, &TraceView::itemSelectionChanged, this, [this] { add("selection"); });
        connect(view, &TraceView::itemSelectionCleared, this, [this] { add("cleared"); });
        connect(view, &TraceView::loadDataRequested, this, [this] { add("load"); });
        connect(view, &TraceView::distanceValuesRequired, this, [this] { add("distances"); });
        connect(view, &TraceView::layoutOrContentChanged, this, [this] { add("layout"); });
        connect(view, &TraceView::viewReset, this, [this] { add("reset"); });
        connect(view, &TraceView::itemActivated, this,
                [this](Trace *row) { add("activated " + row->label()); });
        connect(view, &TraceView::itemDoubleClicked, this,
                [this](Trace *row) { add("double " + row->label()); });
        connect(view, &TraceView::currentItemChanged, this, [this](Trace *old, Trace *current) {
            add("current " + name(old) + ">" + name(current));
        });
    }

    /** The signals since the last call. */
    QStringList take() { return std::exchange(_entries, QStringList()); }

private:
    static QString name(const Norvu::Gui::Trace *row) { return row ? row->label() : "-"; }
    void add(const QString &entry) { _entries << entry; }

    QStringList _entries;
};

/** Shows a view with a row for each label and waits for it. */
inline void show(Norvu::Gui::TraceView &view, const QStringList &rowLabels)
{
    for (const QString &label : rowLabels)
        view.addItem(makeRow(label));
    view.resize(600, 60 * rowLabels.size() + 60);
    view.show();
    if (!QTest::qWaitForWindowExposed(&view))
        qFatal("The window of the view does not come up");
}

} // namespace Traces
