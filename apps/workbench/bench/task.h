// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QObject>
#include <QString>
#include <QVector>

#include <atomic>
#include <mutex>

namespace Workbench {

/**
 * Work that goes on while the user does something else: what it is, and how far it has come.
 *
 * Whoever works calls finish() at the end, in the thread of the user interface and as the last
 * thing; the task is deleted soon after. Until then progress may be told, and isCanceled() asked,
 * by any thread.
 */
class Task : public QObject
{
    Q_OBJECT

public:
    /** Numbers of things done and to be done; a total of 0 stands for one that isn't known. */
    struct Progress
    {
        int done{0};
        int total{0};
    };

    enum class Canceling
    {
        Impossible,
        Possible
    };

    const QString &name() const { return _name; }
    /** What is counted, in the plural; percents are shown if it is empty. */
    const QString &unit() const { return _unit; }
    Progress progress() const;
    bool canBeCanceled() const { return _canceling == Canceling::Possible; }
    bool isCanceled() const { return _isCanceled; }
    /** Why it failed; empty if it didn't, or hasn't yet. */
    const QString &problem() const { return _problem; }

    void setProgress(int done, int total);

public slots:
    /** Asks to stop, if that is possible. */
    void cancel();
    void finish(const QString &problem = QString());

signals:
    /** Some progress; many steps close together are told of once. */
    void progressed();
    /** The user wants it to stop; told once. */
    void cancelRequested();
    void finished();

private slots:
    void tellProgress();

private:
    friend class Tasks;
    Task(const QString &name, const QString &unit, Canceling canceling, QObject *parent);

    QString _name;
    QString _unit;
    Canceling _canceling;
    QString _problem;
    mutable std::mutex _mutex;
    Progress _progress;
    std::atomic<bool> _isTold{true}; /**< nothing is new since progressed() */
    std::atomic<bool> _isCanceled{false};
    bool _isFinished{false};
};

/** Everything that goes on. */
class Tasks : public QObject
{
    Q_OBJECT

public:
    explicit Tasks(QObject *parent = nullptr);

    /**
     * Begins a task, which belongs to this object.
     * @param name  for the user, e.g. "Filtering"
     * @param unit  what is counted, e.g. "rows"; percents are shown without one
     */
    Task *start(const QString &name, const QString &unit = QString(),
                Task::Canceling canceling = Task::Canceling::Impossible);

    /** In the order in which they were started. */
    const QVector<Task *> &running() const { return _running; }

signals:
    void started(Workbench::Task *task);
    void progressed(Workbench::Task *task);
    /** It stands in running() no more, and is deleted once this has been told. */
    void finished(Workbench::Task *task);

private slots:
    void passOnProgress();
    void remove();

private:
    QVector<Task *> _running;
};

} // namespace Workbench
