// SPDX-License-Identifier: LGPL-3.0-or-later

#include "job.h"

namespace Workbench {

namespace {

constexpr int MostOutput = 1 << 20;

} // namespace

Job::Job(const QString &name, const QString &commandLine, QObject *parent)
    : Process(commandLine, parent)
{
    title = name.isEmpty() ? commandLine : name;
    setProcessChannelMode(QProcess::MergedChannels);
    connect(this, SIGNAL(readyReadStandardOutput()), this, SLOT(readOutput()));
}

void Job::readOutput()
{
    _output += readAllStandardOutput();
    if (_output.size() > MostOutput)
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
