#include <tellarix/qt/records/filterjob_p.h>

#include <QtConcurrent>

#include <atomic>
#include <utility>

namespace Tellarix {
namespace Gui {

struct FilterJob::Task
{
    std::vector<RecordCPtr> records;
    std::unique_ptr<FilteredRecords> filtered;
    std::atomic<bool> cancelled{false};
    std::atomic<bool> done{false};

    void run()
    {
        if (!cancelled.load(std::memory_order_acquire)) {
            const auto raw = FilteredRecords::Copy(std::exchange(records, {}));
            filtered->update(*raw, nullptr, &cancelled);
        }
        records.clear();
        if (cancelled.load(std::memory_order_acquire))
            filtered.reset();
        done.store(true, std::memory_order_release);
    }
};

FilterJob::FilterJob(std::unique_ptr<FilteredRecords> filtered, const RecordSequence &raw)
    : _task(std::make_shared<Task>())
{
    _task->records.assign(raw.begin(), raw.end());
    _task->filtered = std::move(filtered);
    connect(&_watcher, SIGNAL(finished()), this, SIGNAL(finished()));
    _watcher.setFuture(QtConcurrent::run([task = _task] { task->run(); }));
}

FilterJob::~FilterJob()
{
    _task->cancelled.store(true, std::memory_order_release);
    Discard(takeResult());
}

std::unique_ptr<FilteredRecords> FilterJob::takeResult()
{
    if (!_task->done.load(std::memory_order_acquire))
        return nullptr;
    return std::move(_task->filtered);
}

void FilterJob::Discard(std::unique_ptr<FilteredRecords> filtered)
{
    if (filtered == nullptr)
        return;
    auto holder = std::make_shared<std::unique_ptr<FilteredRecords>>(std::move(filtered));
    QtConcurrent::run([holder = std::move(holder)] { holder->reset(); });
}

} // namespace Gui
} // namespace Tellarix
