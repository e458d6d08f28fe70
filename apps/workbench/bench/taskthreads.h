// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "task.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace Workbench {

/**
 * Work of tasks in threads of their own, whose results come back to the thread of this object.
 *
 * The work itself must touch nothing of its owner, which may be gone before it ends: it takes
 * copies of what it needs, and returns a function that takes the result over. That one runs in the
 * thread of this object, before the task ends, and never once this object is gone.
 */
class TaskThreads : public QObject
{
    Q_OBJECT

public:
    /** What work knows of its task, in its own thread and for as long as it likes. */
    class Reporter
    {
    public:
        virtual ~Reporter() = default;
        virtual void setProgress(int done, int total) = 0;
        /** The user wants it to stop, or its owner is gone. */
        virtual bool isCanceled() const = 0;
    };

    /** Takes the result over. @return why the task failed, if it did */
    using Finish = std::function<QString()>;
    using Work = std::function<Finish(Reporter &)>;

    /** What comes of a task that is cancelled. */
    enum class Canceling
    {
        WaitsForWork, /**< it lasts until the work has ended, whose result counts */
        DropsWork     /**< it ends at once, also if the work waits for a server that is gone */
    };

    explicit TaskThreads(Tasks *tasks, QObject *parent = nullptr);
    /** Cancels everything and waits for it, but not for long: what doesn't heed is left to itself.
     */
    ~TaskThreads() override;

    /** Begins a task, and its work. */
    Task *start(const QString &name, Canceling canceling, const Work &work);

private slots:
    void collect();
    void cancel();

private:
    struct Shared;
    class Run;

    void end(Run &run);

    Tasks *_tasks;
    std::vector<std::unique_ptr<Run>> _runs;
};

} // namespace Workbench
