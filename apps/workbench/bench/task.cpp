// SPDX-License-Identifier: LGPL-3.0-or-later

#include "task.h"

namespace Workbench {

Task::Task(const QString &name, const QString &unit, Canceling canceling, QObject *parent)
    : QObject(parent), _name(name), _unit(unit), _canceling(canceling)
{}

Task::Progress Task::progress() const
{
    const std::lock_guard<std::mutex> lock(_mutex);
    return _progress;
}

void Task::setProgress(int done, int total)
{
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        _progress = {done, total};
    }
    if (_isTold.exchange(false))
        QMetaObject::invokeMethod(this, "tellProgress", Qt::QueuedConnection);
}

void Task::tellProgress()
{
    _isTold = true;
    if (!_isFinished)
        emit progressed();
}

void Task::cancel()
{
    if (canBeCanceled() && !_isFinished && !_isCanceled.exchange(true))
        emit cancelRequested();
}

void Task::finish(const QString &problem)
{
    if (_isFinished)
        return;
    _isFinished = true;
    _problem = problem;
    emit finished();
}

Tasks::Tasks(QObject *parent) : QObject(parent)
{}

Task *Tasks::start(const QString &name, const QString &unit, Task::Canceling canceling)
{
    auto *task = new Task(name, unit, canceling, this);
    connect(task, SIGNAL(progressed()), this, SLOT(passOnProgress()));
    connect(task, SIGNAL(finished()), this, SLOT(remove()));
    _running.append(task);
    emit started(task);
    return task;
}

void Tasks::passOnProgress()
{
    emit progressed(static_cast<Task *>(sender()));
}

void Tasks::remove()
{
    auto *task = static_cast<Task *>(sender());
    _running.removeOne(task);
    emit finished(task);
    task->deleteLater();
}

} // namespace Workbench
