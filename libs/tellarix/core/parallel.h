// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>

#include <QRunnable>

#include <deque>
#include <functional>
#include <memory>
#include <mutex>

class QThreadPool;

namespace Tellarix {
namespace Core {

/**
 * Work on its way to the threads of a pool, in the order of its start unless told otherwise.
 *
 * What a thread has written before it starts some work is seen by that work: it is handed over
 * under a mutex of ours, so that nobody has to trust the insides of the pool. For objects of static
 * lifetime, one for each pool; all functions may be called by several threads at the same time.
 */
class TELLARIX_CORE_API PoolWork : private QRunnable
{
public:
    PoolWork() { setAutoDelete(false); }
    ~PoolWork() override;

    /** Calls @p work, which must not throw, in a thread of @p pool as soon as one is free. */
    void start(QThreadPool *pool, std::function<void()> work);
    /** The same before all work that waits. */
    void startFirst(QThreadPool *pool, std::function<void()> work);
    /** The same if a thread is free now; else gives false and does nothing. */
    bool tryStart(QThreadPool *pool, std::function<void()> work);

private:
    void run() override;

    std::mutex _mutex;
    std::deque<std::function<void()>> _waiting;
};

/**
 * Calls of a function with each number from 0 to a count - 1, which other threads begin with and
 * finish() ends: for what will be needed a bit later.
 *
 * The numbers are taken in ascending order, each by whichever thread is free. Nobody waits for a
 * thread that hasn't begun.
 */
class TELLARIX_CORE_API SharedCalls
{
public:
    /** @param work  must not throw; is called by several threads at the same time, and may live on
     *               for a while after this object */
    SharedCalls(int count, std::function<void(int)> work);
    /** Calls that nobody has begun with are left out; those that run are not waited for. */
    ~SharedCalls();

    /** Takes the calls that are left; ends when there are none. For as many threads as are to take
     *  part, in which it may also come too late. */
    std::function<void()> part() const;
    /** True if all calls have returned. */
    bool isDone() const;
    /** Takes part, and returns when all calls have returned. */
    void finish();

private:
    class Queue;

    std::shared_ptr<Queue> _queue;
};

/**
 * Calls @p work with each number from 0 to @p count - 1, in this thread and in idle ones of Qt's
 * global thread pool, and returns when all calls have returned. A count below 1 does nothing.
 *
 * The numbers are taken in ascending order, each by whichever thread is free. This thread waits for
 * no other that hasn't begun: on a busy machine that can take longer than the work itself.
 *
 * @param work     must not throw; is called by several threads at the same time
 * @param threads  how many at most, this one included; 0 for as many as the pool may have
 */
TELLARIX_CORE_API void parallelFor(int count, const std::function<void(int)> &work,
                                   int threads = 0);

} // namespace Core
} // namespace Tellarix
