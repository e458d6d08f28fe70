// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/filterjob_p.h>

#include <tellarix/core/parallel.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/recordsequence.h>

#include <QGlobalStatic>
#include <QThreadPool>

#include <atomic>
#include <mutex>
#include <utility>

namespace Tellarix {
namespace Gui {

namespace {

// Not the global pool: there, what a paint event gives to all cores and waits for would stand in
// line behind the filters of many rows. One thread for each core, as there.
Q_GLOBAL_STATIC(QThreadPool, filterThreads)
Core::PoolWork Waiting;

} // namespace

/** What job and thread share; each of them may be gone first. */
class FilterJob::Task
{
public:
    Task(FilterJob *job, std::unique_ptr<FilteredRecords> filtered, std::vector<RecordCPtr> records)
        : _job(job), _cancelled(false), _filtered(std::move(filtered)), _records(std::move(records))
    {}

    static void Start(const std::shared_ptr<Task> &task)
    {
        Waiting.start(filterThreads(), [task] { task->run(); });
    }

    std::unique_ptr<FilteredRecords> takeFiltered()
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        return std::move(_filtered);
    }

    void cancel()
    {
        _cancelled = true;
        const std::lock_guard<std::mutex> lock(_mutex);
        _job = nullptr;
    }

private:
    void run()
    {
        std::unique_lock<std::mutex> lock(_mutex);
        std::unique_ptr<FilteredRecords> filtered = std::move(_filtered);
        std::vector<RecordCPtr> records = std::move(_records);
        lock.unlock();

        // A job that was cancelled before has nothing any more.
        if (!_cancelled && filtered->isEmpty()) {
            filtered->fill(records, _cancelled);
        } else if (!_cancelled) {
            const auto raw = FilteredRecords::Copy(std::move(records));
            filtered->update(*raw, nullptr, &_cancelled);
        }

        lock.lock();
        if (_job != nullptr) {
            _filtered = std::move(filtered);
            QMetaObject::invokeMethod(_job, "finished", Qt::QueuedConnection);
        }
        lock.unlock();
    }

    std::mutex _mutex;
    FilterJob *_job;
    std::atomic<bool> _cancelled;
    std::unique_ptr<FilteredRecords> _filtered;
    std::vector<RecordCPtr> _records;
};

FilterJob::FilterJob(std::unique_ptr<FilteredRecords> filtered, const RecordSequence &raw)
    : _task(std::make_shared<Task>(this, std::move(filtered),
                                   std::vector<RecordCPtr>(raw.begin(), raw.end())))
{
    Task::Start(_task);
}

FilterJob::~FilterJob()
{
    _task->cancel();
    Discard(takeResult());
}

std::unique_ptr<FilteredRecords> FilterJob::takeResult()
{
    return _task->takeFiltered();
}

void FilterJob::Discard(std::unique_ptr<FilteredRecords> filtered)
{
    if (filtered == nullptr)
        return;
    // Before all rows that wait: what they need is what is freed here.
    std::shared_ptr<FilteredRecords> shared = std::move(filtered);
    Waiting.startFirst(filterThreads(), [shared = std::move(shared)]() mutable { shared.reset(); });
}

} // namespace Gui
} // namespace Tellarix
