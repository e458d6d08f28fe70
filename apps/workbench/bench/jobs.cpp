// SPDX-License-Identifier: LGPL-3.0-or-later

#include "jobs.h"

#include "job.h"

#include <QDeadlineTimer>
#include <QTimer>

#include <algorithm>

namespace Workbench {

using Norvu::Gui::ProcessGroup;

namespace {

/** For programs to end by themselves when the workbench does. */
constexpr int GraceMilliseconds = 2000;

} // namespace

Jobs::Jobs(QObject *parent) : QObject(parent)
{
    connect(&_group,
            SIGNAL(statusChanged(Norvu::Gui::ProcessGroup::Process *,
                                 Norvu::Gui::ProcessGroup::ProcessStatus)),
            this, SLOT(tellChange(Norvu::Gui::ProcessGroup::Process *)));
}

Jobs::~Jobs()
{
    // The group must not start the next one for each that ends now.
    disconnect(&_group, nullptr, this, nullptr);
    takeOutWaiting();
    for (Job *job : std::as_const(_jobs)) {
        if (job->status == ProcessGroup::Running)
            job->cancel();
    }
    QDeadlineTimer grace(GraceMilliseconds);
    for (Job *job : std::as_const(_jobs)) {
        if (job->state() != QProcess::NotRunning)
            job->waitForFinished(static_cast<int>(grace.remainingTime()));
    }
    qDeleteAll(_jobs);
}

int Jobs::count(ProcessGroup::ProcessStatus status) const
{
    return static_cast<int>(std::count_if(
        _jobs.begin(), _jobs.end(), [status](const Job *job) { return job->status == status; }));
}

int Jobs::runningCount() const
{
    return count(ProcessGroup::Running);
}

int Jobs::waitingCount() const
{
    return count(ProcessGroup::Queued);
}

QVector<Job *> Jobs::takeOutWaiting()
{
    QVector<Job *> waiting;
    for (Job *job : std::as_const(_jobs)) {
        if (job->status != ProcessGroup::Queued)
            continue;
        _group.remove(job);
        waiting.append(job);
    }
    return waiting;
}

/** The group starts what has been added while there is room. */
void Jobs::queueAnew()
{
    for (Job *job : takeOutWaiting()) {
        const QDateTime since = job->queued;
        _isQueuingAnew = true;
        _group.add(job);
        _isQueuingAnew = false;
        job->queued = since;
        emit changed(job);
    }
}

void Jobs::setConcurrencyLevel(int level)
{
    _group.setConcurrencyLevel(level);
    queueAnew();
}

/** By itself the group starts another one for each that ends, also if fewer should run by now. */
void Jobs::keepLevel()
{
    if (runningCount() >= _group.concurrencyLevel()) {
        takeOutWaiting();
        QTimer::singleShot(0, this, SLOT(queueAnew()));
    }
}

Job *Jobs::add(const QString &title, const QString &commandLine)
{
    if (commandLine.trimmed().isEmpty())
        return nullptr;
    auto *job = new Job(title, commandLine.trimmed(), this);
    connect(job, SIGNAL(outputChanged()), this, SLOT(tellOutput()));
    _jobs.append(job);
    emit added(job);
    _group.add(job);
    return job;
}

void Jobs::cancel(Job *job)
{
    switch (job->status) {
    case ProcessGroup::Queued:
        job->_isCanceled = true;
        _group.remove(job);
        job->status = ProcessGroup::Finished;
        emit changed(job);
        break;
    case ProcessGroup::Running:
        job->cancel();
        break;
    default:
        break;
    }
}

void Jobs::remove(Job *job)
{
    if (job->status == ProcessGroup::Running || !_jobs.contains(job))
        return;
    if (job->status == ProcessGroup::Queued)
        _group.remove(job);
    _jobs.removeOne(job);
    emit removed(job);
    job->deleteLater();
}

void Jobs::removeEnded()
{
    const QVector<Job *> jobs = _jobs;
    for (Job *job : jobs) {
        if (job->status == ProcessGroup::Finished)
            remove(job);
    }
}

void Jobs::tellChange(ProcessGroup::Process *process)
{
    if (_isQueuingAnew && process->status == ProcessGroup::Queued)
        return;
    if (process->status == ProcessGroup::Finished)
        keepLevel();
    emit changed(static_cast<Job *>(process));
}

void Jobs::tellOutput()
{
    emit outputChanged(static_cast<Job *>(sender()));
}

} // namespace Workbench
