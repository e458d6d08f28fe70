// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/parallel.h>

#include <QSemaphore>
#include <QThreadPool>

#include <algorithm>
#include <atomic>
#include <memory>

namespace Tellarix {
namespace Core {

namespace {

/** Numbers that threads take one by one. A thread that comes late finds none and calls nothing, so
 *  only the queue has to outlive the work. */
class Queue
{
public:
    Queue(int count, const std::function<void(int)> &work) : _count(count), _work(work) {}

    void run()
    {
        for (int number = _next++; number < _count; number = _next++) {
            _work(number);
            _done.release();
        }
    }
    void wait() { _done.acquire(_count); }

private:
    const int _count;
    const std::function<void(int)> _work;
    std::atomic<int> _next{0};
    QSemaphore _done;
};

} // namespace

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

    const auto queue = std::make_shared<Queue>(count, work);
    for (int i = 1; i < std::min(most, count); ++i) {
        if (!pool->tryStart([queue] { queue->run(); }))
            break;
    }
    queue->run();
    queue->wait();
}

} // namespace Core
} // namespace Tellarix
