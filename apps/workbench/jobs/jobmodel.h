// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QAbstractTableModel>
#include <QTimer>

namespace Workbench {

class Job;
class Jobs;

/** The jobs as rows of a table. */
class JobModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column
    {
        Name,
        State,
        Since, /**< when it was queued, in UTC */
        Duration,
        ColumnCount
    };

    explicit JobModel(Jobs *jobs, QObject *parent = nullptr);

    Job *job(const QModelIndex &index) const;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private slots:
    void append(Workbench::Job *job);
    void update(Workbench::Job *job);
    void drop(Workbench::Job *job);
    void updateDurations();

private:
    Jobs *_jobs;
    QVector<Job *> _rows;
    QTimer _clock; /**< runs while a job does */
};

} // namespace Workbench
