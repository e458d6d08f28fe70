// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/processgroup.h>

#include <QObject>
#include <QVector>

namespace Workbench {

class Job;

/** All jobs of the workbench: those that wait, run and have ended, in the order of adding. */
class Jobs : public QObject
{
    Q_OBJECT

public:
    explicit Jobs(QObject *parent = nullptr);
    /** Ends what runs, by force after a moment. */
    ~Jobs() override;

    const QVector<Job *> &all() const { return _jobs; }
    int runningCount() const;
    int waitingCount() const;
    int concurrencyLevel() const { return _group.concurrencyLevel(); }
    /** How many may run at a time: what waits starts at once if there is room, and not before fewer
     *  than that run otherwise. */
    void setConcurrencyLevel(int level);

    /** Puts a command line at the end of the queue.
     *  @param title  for the user
     *  @return null if the command line is blank */
    Job *add(const QString &title, const QString &commandLine);
    /** Takes a job out of the queue, or ends it with all that it has started, by force if they
     *  don't heed; it stays listed. */
    void cancel(Job *job);
    /** Takes a job that waits or has ended off the list. */
    void remove(Job *job);
    void removeEnded();

signals:
    void added(Workbench::Job *job);
    /** Its state is another. */
    void changed(Workbench::Job *job);
    void outputChanged(Workbench::Job *job);
    void removed(Workbench::Job *job);

private slots:
    void tellChange(Norvu::Gui::ProcessGroup::Process *process);
    void tellOutput();
    void queueAnew();

private:
    int count(Norvu::Gui::ProcessGroup::ProcessStatus status) const;
    QVector<Job *> takeOutWaiting();
    void keepLevel();

    Norvu::Gui::ProcessGroup _group;
    QVector<Job *> _jobs;
    bool _isQueuingAnew{false};
};

} // namespace Workbench
