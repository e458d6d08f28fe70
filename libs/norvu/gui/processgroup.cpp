// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/processgroup.h>

#include <tellarix/core/logging.h>

#include <QPointer>

#include <algorithm>

using namespace Tellarix;

namespace Norvu {
namespace Gui {

ProcessGroup::Process::Process(const QString &commandLine, QObject *parent)
    : QProcess(parent), command(commandLine)
{}

ProcessGroup::Process::~Process()
{
    // While this is still whole: the base class would tell the group about a half that is gone.
    if (state() != QProcess::NotRunning) {
        kill();
        waitForFinished();
    }
}

QString ProcessGroup::Process::errorString() const
{
    switch (error()) {
    case QProcess::FailedToStart:
        return "The process failed to start. Either the invoked program is missing, or you may "
               "have insufficient permissions to invoke the program.";
    case QProcess::Crashed:
        return "The process crashed some time after starting successfully.";
    case QProcess::Timedout:
        return "The last waitFor...() function timed out. The state of QProcess is unchanged, and "
               "you can try calling waitFor...() again.";
    case QProcess::ReadError:
        return "An error occurred when attempting to read from the process. For example, the "
               "process may not be running.";
    case QProcess::WriteError:
        return "An error occurred when attempting to write to the process. For example, the "
               "process may not be running, or it may have closed its input channel.";
    default:
        return "An unknown error occurred.";
    }
}

ProcessGroup::ProcessGroup(QObject *parent) : QObject(parent)
{}

ProcessGroup::~ProcessGroup() = default;

void ProcessGroup::setConcurrencyLevel(int level)
{
    if (level > 0)
        _concurrencyLevel = level;
}

void ProcessGroup::enableConsoleLogging(bool enable)
{
    _consoleLogging = enable;
}

void ProcessGroup::changeStatus(Process *process, ProcessStatus status)
{
    const ProcessStatus oldStatus = process->status;
    process->status = status;
    emit statusChanged(process, oldStatus);
}

void ProcessGroup::add(Process *process)
{
    const QPointer<ProcessGroup> self(this);
    const QPointer<Process> alive(process);
    process->group = this;
    connect(process, SIGNAL(destroyed(QObject *)), this, SLOT(onDestroyed(QObject *)),
            Qt::UniqueConnection);
    _processes.append(process);
    emit added(process);
    // A receiver may have taken it out again.
    if (!self || !alive || !_processes.contains(process))
        return;

    process->queued = QDateTime::currentDateTimeUtc();
    // What a former run left behind would be shown as that of the next one.
    process->started = process->finished = QDateTime();
    process->failed = false;
    changeStatus(process, Queued);

    if (self && _running < _concurrencyLevel)
        triggerProcess();
}

/** One that was added again while its program still dies isn't ready yet. */
ProcessGroup::Process *ProcessGroup::nextQueued() const
{
    const auto next =
        std::find_if(_processes.begin(), _processes.end(), [](const Process *process) {
            return process->status == Queued && process->state() == QProcess::NotRunning;
        });
    return next != _processes.end() ? *next : nullptr;
}

void ProcessGroup::triggerProcess()
{
    Process *process = nextQueued();
    if (!process)
        return;

    connect(process, SIGNAL(error(QProcess::ProcessError)), this,
            SLOT(onError(QProcess::ProcessError)), Qt::UniqueConnection);
    connect(process, SIGNAL(finished(int, QProcess::ExitStatus)), this,
            SLOT(onFinished(int, QProcess::ExitStatus)), Qt::UniqueConnection);
    // It may have run before, when this was switched otherwise.
    disconnect(process, SIGNAL(readyReadStandardError()), this, SLOT(logStandardError()));
    if (_consoleLogging)
        connect(process, SIGNAL(readyReadStandardError()), this, SLOT(logStandardError()));

    QStringList arguments = QProcess::splitCommand(process->command);
    const QString program = arguments.isEmpty() ? QString() : arguments.takeFirst();
    const QPointer<ProcessGroup> self(this);
    const QPointer<Process> alive(process);
    ++_running;
    ++_startedCount;
    _starting = process;
    process->start(program, arguments, QIODevice::ReadWrite);
    if (!self)
        return;
    _starting = nullptr;
    // What fails at once has ended by now, and must not be called running for ever.
    if (!alive || process->status != Queued)
        return;

    process->started = QDateTime::currentDateTimeUtc();
    changeStatus(process, Running);
}

/** One successor gets the turn of the process that leaves, whatever the level is by now. */
void ProcessGroup::end(Process *process, bool failed)
{
    // A second error of the same process would free a turn that it doesn't have; one that was added
    // again while its program died waits for this end of its last run.
    if (process->status != Running && process != _starting) {
        if (process->status == Queued && _running < _concurrencyLevel)
            triggerProcess();
        return;
    }

    const QPointer<ProcessGroup> self(this);
    const QPointer<Process> alive(process);
    ++_handled;
    --_running;
    const int startedBefore = _startedCount;
    if (failed)
        process->failed = true;
    process->finished = QDateTime::currentDateTimeUtc();
    changeStatus(process, Finished);
    if (self && alive && _processes.removeOne(process))
        emit removed(process);
    // A receiver that added another process has given the turn away: two at once would run for one.
    if (self && _startedCount == startedBefore)
        triggerProcess();
    if (self)
        --_handled;
}

void ProcessGroup::onError(QProcess::ProcessError)
{
    end(static_cast<Process *>(sender()), true);
}

void ProcessGroup::onFinished(int exitCode, QProcess::ExitStatus)
{
    auto *process = static_cast<Process *>(sender());
    if (process->status != Finished)
        end(process, exitCode != 0);
}

void ProcessGroup::remove(Process *process)
{
    _processes.removeAll(process);
    disconnect(process, SIGNAL(destroyed(QObject *)), this, SLOT(onDestroyed(QObject *)));
    const QPointer<ProcessGroup> self(this);
    const QPointer<Process> alive(process);
    if (process->state() != QProcess::NotRunning) {
        disconnect(process, SIGNAL(error(QProcess::ProcessError)), this, nullptr);
        disconnect(process, SIGNAL(finished(int, QProcess::ExitStatus)), this, nullptr);
        process->kill();
    } else
        emit removed(process);

    if (!alive || !process->autoDelete)
        return;
    // A process must not be deleted in the middle of its own signal.
    if (self && (_handled > 0 || _starting))
        process->deleteLater();
    else
        delete process;
}

void ProcessGroup::onDestroyed(QObject *object)
{
    // What arrives is no process any more: only its address can be compared.
    const auto place = std::find_if(_processes.begin(), _processes.end(),
                                    [&](QObject *process) { return process == object; });
    if (place == _processes.end())
        return;
    Process *process = *place;
    _processes.removeAll(process);
    emit removed(process);
}

void ProcessGroup::logStandardError()
{
    if (!Log::general().isDebugEnabled())
        return;
    auto *process = static_cast<QProcess *>(sender());
    const QString text(process->readAllStandardError().constData());
    qCDebug(Log::general, "%s", text.toLocal8Bit().constData());
}

} // namespace Gui
} // namespace Norvu
