// SPDX-License-Identifier: LGPL-3.0-or-later

#include "jobmodel.h"

#include "bench/job.h"
#include "bench/jobs.h"

#include <norvu/gui/fontawesome5.h>

#include <QPalette>

namespace Workbench {

namespace {

using Norvu::Gui::ProcessGroup;

constexpr int SecondMilliseconds = 1000;

QString stateText(const Job &job)
{
    switch (job.status) {
    case ProcessGroup::Idle:
    case ProcessGroup::Queued:
        return JobModel::tr("Waiting");
    case ProcessGroup::Running:
        return job.isCanceled() ? JobModel::tr("Ending") : JobModel::tr("Running");
    case ProcessGroup::Finished:
        break;
    }
    if (job.isCanceled())
        return JobModel::tr("Cancelled");
    return job.failed ? JobModel::tr("Failed") : JobModel::tr("Done");
}

QIcon stateIcon(const Job &job)
{
    using namespace Norvu::FontAwesome5;
    switch (job.status) {
    case ProcessGroup::Idle:
    case ProcessGroup::Queued:
        return icon(chClock);
    case ProcessGroup::Running:
        return iconSolid(chPlay, QColor(0x2E, 0x7D, 0x32));
    case ProcessGroup::Finished:
        break;
    }
    if (job.isCanceled())
        return iconSolid(chBan);
    return job.failed ? iconSolid(chTimes, QColor(0xC6, 0x28, 0x28)) : iconSolid(chCheck);
}

/** "3.2 s", "4:05", "1:02:03" */
QString durationText(qint64 milliseconds)
{
    const qint64 seconds = milliseconds / 1000;
    if (seconds < 60)
        return QString("%1 s").arg(static_cast<double>(milliseconds) / 1000, 0, 'f', 1);
    const QString minutes = QString("%1:%2")
                                .arg(seconds / 60 % 60, seconds < 3600 ? 1 : 2, 10, QChar('0'))
                                .arg(seconds % 60, 2, 10, QChar('0'));
    return seconds < 3600 ? minutes : QString("%1:%2").arg(seconds / 3600).arg(minutes);
}

} // namespace

JobModel::JobModel(Jobs *jobs, QObject *parent)
    : QAbstractTableModel(parent), _jobs(jobs), _rows(jobs->all())
{
    connect(jobs, SIGNAL(added(Workbench::Job *)), this, SLOT(append(Workbench::Job *)));
    connect(jobs, SIGNAL(changed(Workbench::Job *)), this, SLOT(update(Workbench::Job *)));
    connect(jobs, SIGNAL(removed(Workbench::Job *)), this, SLOT(drop(Workbench::Job *)));
    connect(&_clock, SIGNAL(timeout()), this, SLOT(updateDurations()));
    _clock.setInterval(SecondMilliseconds);
}

Job *JobModel::job(const QModelIndex &index) const
{
    return index.isValid() && index.row() < _rows.size() ? _rows[index.row()] : nullptr;
}

int JobModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : _rows.size();
}

int JobModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant JobModel::data(const QModelIndex &index, int role) const
{
    const Job *job = this->job(index);
    if (!job)
        return QVariant();
    if (role == Qt::ToolTipRole)
        return job->problem().isEmpty() ? job->command : job->command + '\n' + job->problem();
    if (role == Qt::DecorationRole && index.column() == State)
        return stateIcon(*job);
    if (role == Qt::TextAlignmentRole && index.column() == Duration)
        return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
    if (role != Qt::DisplayRole)
        return QVariant();
    switch (index.column()) {
    case Name:
        return job->title;
    case State:
        return stateText(*job);
    case Since:
        return job->queued.toString("yyyy-MM-dd HH:mm:ss");
    case Duration:
        return job->started.isValid()
                   ? durationText(job->milliseconds(QDateTime::currentDateTimeUtc()))
                   : QString();
    default:
        return QVariant();
    }
}

QVariant JobModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    const QString names[] = {tr("Job"), tr("State"), tr("Queued (UTC)"), tr("Duration")};
    return section >= 0 && section < ColumnCount ? QVariant(names[section]) : QVariant();
}

void JobModel::append(Job *job)
{
    beginInsertRows(QModelIndex(), _rows.size(), _rows.size());
    _rows.append(job);
    endInsertRows();
}

void JobModel::update(Job *job)
{
    const int row = _rows.indexOf(job);
    if (row >= 0)
        emit dataChanged(index(row, 0), index(row, ColumnCount - 1));
    if (_jobs->runningCount() > 0)
        _clock.start();
    else
        _clock.stop();
}

void JobModel::drop(Job *job)
{
    const int row = _rows.indexOf(job);
    if (row < 0)
        return;
    beginRemoveRows(QModelIndex(), row, row);
    _rows.removeAt(row);
    endRemoveRows();
}

void JobModel::updateDurations()
{
    if (!_rows.isEmpty())
        emit dataChanged(index(0, Duration), index(_rows.size() - 1, Duration), {Qt::DisplayRole});
}

} // namespace Workbench
