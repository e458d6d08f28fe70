// SPDX-License-Identifier: LGPL-3.0-or-later

#include "semaphore.h"

#include <tellarix/core/parallel.h>

#include <QThreadPool>
#include <QtTest>

#include <atomic>
#include <vector>

using Tellarix::Core::parallelFor;
using Tellarix::Core::PoolWork;

namespace {

PoolWork work;

} // namespace

class TestParallel : public QObject
{
    Q_OBJECT

private slots:
    void callsEachNumberOnce()
    {
        // Of numbers and threads, none for as many as there are cores.
        const std::pair<int, int> rows[] = {{-3, 0},    {0, 0},   {1, 0},
                                            {10000, 0}, {100, 1}, {3, 100}};
        for (const auto &[count, threads] : rows) {
            std::vector<std::atomic<int>> calls(static_cast<size_t>(std::max(count, 0)));
            parallelFor(
                count, [&](int number) { ++calls[static_cast<size_t>(number)]; }, threads);
            QVERIFY2(std::all_of(calls.begin(), calls.end(), [](const auto &n) { return n == 1; }),
                     QByteArray::number(count));
        }
    }

    void usesOtherThreads()
    {
        if (QThreadPool::globalInstance()->maxThreadCount() < 2)
            QSKIP("a single core");
        // A thread that came late to the work of another test counts as busy.
        QThreadPool::globalInstance()->waitForDone();
        // Each call waits for the other.
        Semaphore met;
        parallelFor(2, [&](int) {
            met.release();
            QVERIFY(met.tryAcquire(2, 10000));
            met.release(2);
        });
    }

    void waitsForNoBusyThread()
    {
        QThreadPool *pool = QThreadPool::globalInstance();
        Semaphore begun, end;
        for (int i = 0; i < pool->maxThreadCount(); ++i) {
            work.start(pool, [&] {
                begun.release();
                end.acquire();
            });
        }
        begun.acquire(pool->maxThreadCount());
        int sum = 0;
        parallelFor(100, [&](int number) { sum += number; });
        QCOMPARE(sum, 4950);
        end.release(pool->maxThreadCount());
        pool->waitForDone();
    }
};

QTEST_GUILESS_MAIN(TestParallel)
#include "tst_parallel.moc"
