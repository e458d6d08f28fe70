// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/parallel.h>

#include <QThreadPool>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <memory>
#include <utility>

namespace Tellarix {
namespace Core {

namespace {

PoolWork Helpers;

} // namespace

/** Numbers that threads take one by one. A thread that comes late finds none and calls nothing, so
 *  only the queue has to outlive the work. */
class SharedCalls::Queue
{
public:
    Queue(int count, std::function<void(int)> work) : _count(count), _work(std::move(work)) {}

    void run()
    {
        int done = 0;
        for (int number = _next++; number < _count; number = _next++) {
            _work(number);
            ++done;
        }
        const std::lock_guard<std::mutex> lock(_mutex);
        _done += done;
        if (_done == _count)
            _allDone.notify_all();
    }

    void wait()
    {
        std::unique_lock<std::mutex> lock(_mutex);
        _allDone.wait(lock, [this] { return _done == _count; });
    }

    bool isDone()
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        return _done == _count;
    }

    /** Leaves out what nobody has begun with; there must be no waiting any more. */
    void drop() { _next = _count; }

private:
    const int _count;
    const std::function<void(int)> _work;
    std::atomic<int> _next{0};
    std::mutex _mutex;
    std::condition_variable _allDone;
    int _done{0};
};

SharedCalls::SharedCalls(int count, std::function<void(int)> work)
    : _queue(std::make_shared<Queue>(std::max(0, count), std::move(work)))
{}

SharedCalls::~SharedCalls()
{
    _queue->drop();
}

std::function<void()> SharedCalls::part() const
{
    return [queue = _queue] { queue->run(); };
}

bool SharedCalls::isDone() const
{
    return _queue->isDone();
}

void SharedCalls::finish()
{
    _queue->run();
    _queue->wait();
}

PoolWork::~PoolWork()
{
    // What other threads took out of here is seen.
    const std::lock_guard<std::mutex> lock(_mutex);
}

void PoolWork::start(QThreadPool *pool, std::function<void()> work)
{
    const std::lock_guard<std::mutex> lock(_mutex);
    _waiting.push_back(std::move(work));
    pool->start(this);
}

void PoolWork::startFirst(QThreadPool *pool, std::function<void()> work)
{
    const std::lock_guard<std::mutex> lock(_mutex);
    _waiting.push_front(std::move(work));
    pool->start(this);
}

bool PoolWork::tryStart(QThreadPool *pool, std::function<void()> work)
{
    // The thread has to wait for the lock, and so finds what it was started for.
    const std::lock_guard<std::mutex> lock(_mutex);
    if (!pool->tryStart(this))
        return false;
    _waiting.push_back(std::move(work));
    return true;
}

void PoolWork::run()
{
    std::unique_lock<std::mutex> lock(_mutex);
    const std::function<void()> work = std::move(_waiting.front());
    _waiting.pop_front();
    lock.unlock();
    work();
}

void parallelFor(int count, const std::function<void(int)> &work, int threads)
{
    QThreadPool *pool = QThreadPool::globalInstance();
    const int most =
        threads > 0 ? std::min(threads, pool->maxThreadCount()) : pool->maxThreadCount();
    if (count < 2 || most < 2) {
        for (int number = 0; number < count; ++number)
            work(number);
        return;
    }

    SharedCalls calls(count, work);
    for (int i = 1; i < std::min(most, count); ++i) {
        if (!Helpers.tryStart(pool, calls.part()))
            break;
    }
    calls.finish();
}

} // namespace Core
} // namespace Tellarix
