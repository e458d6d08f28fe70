// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QDateTime>
#include <QList>
#include <QProcess>

namespace Norvu {
namespace Gui {

/**
 * Runs external programs one after the other, or several side by side, in the order in which they
 * were added.
 *
 * A process that runs normally makes the signals added(), statusChanged() to Queued, to Running
 * and to Finished, and removed(). The group owns no process: whoever added it deletes it, unless
 * its autoDelete is set and remove() is called. The group's end stops none.
 */
class NORVU_GUI_API ProcessGroup : public QObject
{
    Q_OBJECT

public:
    enum ProcessStatus
    {
        Idle,    /**< not yet added to a group */
        Queued,  /**< waits for its turn */
        Running, /**< started */
        Finished /**< ended, by itself or by an error */
    };
    Q_ENUM(ProcessStatus)

    /** A command line and what has become of it. */
    class NORVU_GUI_API Process : public QProcess
    {
    public:
        /** @param command  program and arguments as QProcess::splitCommand() takes them apart */
        explicit Process(const QString &command = QString(), QObject *parent = nullptr);
        /** Kills the program if it still runs. */
        ~Process() override;

        /** What the last error was, in English. */
        QString errorString() const;

        QString command;
        QString title; /**< what to call the process before users; not read by the group */
        ProcessGroup *group{nullptr};
        ProcessStatus status{Idle};
        QDateTime queued; /**< in UTC, as the other two; invalid until it happened */
        QDateTime started;
        QDateTime finished;
        bool failed{false}; /**< after an error, or an exit code other than 0 */
        bool autoDelete{false};
    };

    explicit ProcessGroup(QObject *parent = nullptr);
    ~ProcessGroup() override;

    /** How many run at a time, 1 at the start. What is not above 0 is ignored. Waiting processes
     *  start when another is added and there is room, and one for each that ends: a raised level
     *  fills up step by step, and a lowered one counts once nothing waits. */
    void setConcurrencyLevel(int level);
    int concurrencyLevel() const { return _concurrencyLevel; }
    /** Whether the standard error of processes that start from now on goes to the debug log. */
    void enableConsoleLogging(bool enable);

    /** Puts a process that is in no group, or has ended, at the end of the queue. */
    void add(Process *process);
    /** Forgets a process. One that runs is killed, without removed() and without giving its turn to
     *  another; to end it and go on with the next, use QProcess::terminate() or kill(). */
    void remove(Process *process);

signals:
    void added(Norvu::Gui::ProcessGroup::Process *process);
    /** @param process  only its address counts if it is being deleted */
    void removed(Norvu::Gui::ProcessGroup::Process *process);
    void statusChanged(Norvu::Gui::ProcessGroup::Process *process,
                       Norvu::Gui::ProcessGroup::ProcessStatus oldStatus);

private slots:
    void onDestroyed(QObject *object);
    void onError(QProcess::ProcessError error);
    void onFinished(int exitCode, QProcess::ExitStatus exitStatus);
    void logStandardError();

private:
    void triggerProcess();
    void changeStatus(Process *process, ProcessStatus status);
    void end(Process *process, bool failed);
    Process *nextQueued() const;

    QList<Process *> _processes;
    int _concurrencyLevel{1};
    bool _consoleLogging{false};
    int _running{0};
    int _startedCount{0};        /**< since the beginning */
    Process *_starting{nullptr}; /**< the one that is being started */
    int _handled{0};             /**< signals of processes that are being handled */
};

} // namespace Gui
} // namespace Norvu

Q_DECLARE_METATYPE(Norvu::Gui::ProcessGroup::Process *)
