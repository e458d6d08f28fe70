// SPDX-License-Identifier: LGPL-3.0-or-later

#include "job.h"

#include <QTimer>

#include <csignal>
#include <unistd.h>

namespace Workbench {

namespace {

constexpr int MostOutput = 1 << 20;
constexpr int GraceMilliseconds = 3000;

} // namespace

Job::Job(const QString &name, const QString &commandLine, QObject *parent)
    : Process(commandLine, parent)
{
    title = name.isEmpty() ? commandLine : name;
    setProcessChannelMode(QProcess::MergedChannels);
    connect(this, SIGNAL(readyReadStandardOutput()), this, SLOT(readOutput()));
    connect(this, SIGNAL(stateChanged(QProcess::ProcessState)), this, SLOT(noteLeader()));
}

Job::~Job()
{
    if (_isCanceled || state() != QProcess::NotRunning)
        killAll();
}

/** In the child, before the program begins. */
void Job::setupChildProcess()
{
    ::setsid();
}

void Job::noteLeader()
{
    if (processId() > 0)
        _leader = processId();
}

/** To the program and all that it has started, also those that outlive it. */
void Job::signalAll(int signal)
{
    if (_leader <= 0)
        return;
    // A program that has only just been forked leads nothing yet.
    if (::kill(static_cast<pid_t>(-_leader), signal) != 0 && state() != QProcess::NotRunning)
        ::kill(static_cast<pid_t>(_leader), signal);
}

void Job::killAll()
{
    signalAll(SIGKILL);
    _leader = 0; // the number may be given to others from now on
}

void Job::cancel()
{
    _isCanceled = true;
    signalAll(SIGTERM);
    QTimer::singleShot(GraceMilliseconds, this, SLOT(killAll()));
}

void Job::readOutput()
{
    const QByteArray more = readAllStandardOutput();
    _output += more;
    _printed += more.size();
    // By halves, or each piece would move all that is kept.
    if (_output.size() > 2 * MostOutput)
        _output = _output.right(MostOutput);
    emit outputChanged();
}

qint64 Job::milliseconds(const QDateTime &now) const
{
    return started.isValid() ? started.msecsTo(finished.isValid() ? finished : now) : 0;
}

QString Job::problem() const
{
    if (!failed)
        return QString();
    if (error() == QProcess::UnknownError)
        return tr("ended with code %1").arg(exitCode());
    return errorString();
}

} // namespace Workbench
