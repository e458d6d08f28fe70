// SPDX-License-Identifier: LGPL-3.0-or-later

#include "jobs.h"

#include "job.h"

#include <QTimer>

#include <algorithm>

namespace Workbench {

using Norvu::Gui::ProcessGroup;

namespace {

constexpr int GraceMilliseconds = 3000;

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
    for (Job *job : std::as_const(_jobs))
        _group.remove(job);
    qDeleteAll(_jobs);
}

int Jobs::runningCount() const
{
    return static_cast<int>(std::count_if(_jobs.begin(), _jobs.end(), [](const Job *job) {
        return job->status == ProcessGroup::Running;
    }));
}

void Jobs::setConcurrencyLevel(int level)
{
    const int more = level - _group.concurrencyLevel();
    _group.setConcurrencyLevel(level);
    // The group starts what waits when another is added: the last one in the queue keeps its place.
    for (int i = 0; i < more; ++i) {
        const auto last = std::find_if(_jobs.crbegin(), _jobs.crend(), [](const Job *job) {
            return job->status == ProcessGroup::Queued;
        });
        if (last == _jobs.crend())
            return;
        _group.remove(*last);
        _group.add(*last);
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
        job->_isCanceled = true;
        job->terminate();
        QTimer::singleShot(GraceMilliseconds, job, [job] { job->kill(); });
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
    emit changed(static_cast<Job *>(process));
}

void Jobs::tellOutput()
{
    emit changed(static_cast<Job *>(sender()));
}

} // namespace Workbench
