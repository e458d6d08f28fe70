// SPDX-License-Identifier: LGPL-3.0-or-later

#include "taskthreads.h"

#include <QPointer>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace Workbench {

namespace {

/** For all work together, when its owner goes. */
constexpr std::chrono::seconds Grace(3);

} // namespace

/** What a thread and its owner have in common; the last of the two takes it along. */
struct TaskThreads::Shared : public TaskThreads::Reporter
{
    void setProgress(int done, int total) override
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (task)
            task->setProgress(done, total);
    }

    bool isCanceled() const override { return canceled; }

    /** The last thing that the thread does. */
    void end(Finish result)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        finish = std::move(result);
        hasEnded = true;
        ended.notify_all();
        if (owner)
            QMetaObject::invokeMethod(owner, "collect", Qt::QueuedConnection);
    }

    std::mutex mutex;
    std::condition_variable ended;
    TaskThreads *owner{nullptr}; /**< null once it is gone */
    Task *task{nullptr};         /**< null once it has ended */
    Finish finish;
    bool hasEnded{false};
    std::atomic<bool> canceled{false};
};

class TaskThreads::Run
{
public:
    Run(TaskThreads *owner, Task *task, Canceling canceling, const Work &work)
        : _task(task), _canceling(canceling), _shared(std::make_shared<Shared>())
    {
        _shared->owner = owner;
        _shared->task = task;
        _thread = std::thread([shared = _shared, work] { shared->end(work(*shared)); });
    }

    ~Run()
    {
        if (_thread.joinable())
            _thread.join();
    }

    Task *task() const { return _task; }
    Canceling canceling() const { return _canceling; }
    void cancel() { _shared->canceled = true; }

    /** Lets go of the task, which ends: nothing is told to it from now on. */
    Task *takeTask()
    {
        const std::lock_guard<std::mutex> lock(_shared->mutex);
        _shared->task = nullptr;
        return std::exchange(_task, nullptr);
    }

    bool hasEnded() const
    {
        const std::lock_guard<std::mutex> lock(_shared->mutex);
        return _shared->hasEnded;
    }

    Finish takeResult()
    {
        const std::lock_guard<std::mutex> lock(_shared->mutex);
        return std::exchange(_shared->finish, nullptr);
    }

    /** Waits for the end of the thread, or leaves it to itself. */
    void letGo(const std::chrono::steady_clock::time_point &deadline)
    {
        std::unique_lock<std::mutex> lock(_shared->mutex);
        _shared->owner = nullptr;
        _shared->task = nullptr;
        if (!_shared->ended.wait_until(lock, deadline, [this] { return _shared->hasEnded; }))
            _thread.detach();
    }

private:
    Task *_task;
    Canceling _canceling;
    std::shared_ptr<Shared> _shared;
    std::thread _thread;
};

TaskThreads::TaskThreads(Tasks *tasks, QObject *parent) : QObject(parent), _tasks(tasks)
{}

TaskThreads::~TaskThreads()
{
    const auto deadline = std::chrono::steady_clock::now() + Grace;
    for (const auto &run : _runs)
        run->cancel();
    for (const auto &run : _runs)
        run->letGo(deadline);
}

Task *TaskThreads::start(const QString &name, Canceling canceling, const Work &work)
{
    Task *task = _tasks->start(name, QString(), Task::Canceling::Possible);
    connect(task, SIGNAL(cancelRequested()), this, SLOT(cancel()));
    _runs.push_back(std::make_unique<Run>(this, task, canceling, work));
    return task;
}

void TaskThreads::cancel()
{
    const auto run = std::find_if(_runs.begin(), _runs.end(), [this](const auto &candidate) {
        return candidate->task() == sender();
    });
    if (run == _runs.end())
        return;
    (*run)->cancel();
    if ((*run)->canceling() == Canceling::DropsWork)
        (*run)->takeTask()->finish();
}

/** Results may open windows that let events through, and so come here again. */
void TaskThreads::collect()
{
    const auto ended =
        std::find_if(_runs.begin(), _runs.end(), [](const auto &run) { return run->hasEnded(); });
    if (ended == _runs.end())
        return;
    const std::unique_ptr<Run> run = std::move(*ended);
    _runs.erase(ended);
    if (run->task())
        end(*run);
}

void TaskThreads::end(Run &run)
{
    const QPointer<TaskThreads> self(this);
    const QPointer<Task> task(run.takeTask());
    const Finish finish = run.takeResult();
    const QString problem = finish ? finish() : QString();
    if (self && task)
        task->finish(problem);
}

} // namespace Workbench
