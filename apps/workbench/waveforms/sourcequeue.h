// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "sourceloader.h"

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>

namespace Norvu {
namespace Gui {
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class Bench;
class Task;

/**
 * Loads sources into a view one after the other, while the user goes on: as one task, which can be
 * cancelled.
 */
class SourceQueue : public QObject
{
    Q_OBJECT

public:
    SourceQueue(Bench *bench, Norvu::Gui::TraceView *view, QObject *parent);
    ~SourceQueue() override;

    /** Puts a source at the end.
     *  @return false, with the reason, if it can't be opened */
    bool add(const QString &source, QString *error);
    /** Streams for which no rows are made, from the next source on. */
    void setSkipped(const QSet<QString> &streams) { _skipped = streams; }
    /** Begins with what was added; does nothing while it is loading. */
    void begin();
    bool isLoading() const { return _loader != nullptr; }
    /** Whom it waits for and why; empty if the server is there. */
    QString outage() const { return _loader ? _loader->outage() : QString(); }
    /** Records that have arrived since it was idle. */
    int recordCount() const;
    /** Where they lie. */
    QVector<Tellarix::Core::TimeWindow> arrivals() const;

public slots:
    /** Stops at once, and forgets what waits; what was loaded stays. */
    void cancel();

signals:
    /** Some records have arrived, perhaps in new rows. */
    void advanced();
    /** All that was added has been loaded, or it was cancelled; comes before the task ends.
     *  @param problems  one text each */
    void ended(const QStringList &problems);

private slots:
    void advance();
    void endSource();

private:
    void startNext();
    void gatherProblems();
    void end();

    Bench *_bench;
    Norvu::Gui::TraceView *_view;
    QStringList _waiting;
    QSet<QString> _skipped;
    QPointer<SourceLoader> _loader;
    QPointer<Task> _task;
    QTimer _timer;
    QStringList _problems;
    QStringList _empty; /**< sources that gave nothing */
    int _doneCount{0};
    int _doneRecords{0};
    QVector<Tellarix::Core::TimeWindow> _doneArrivals;
};

} // namespace Workbench
