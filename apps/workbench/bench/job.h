// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/processgroup.h>

#include <QByteArray>

namespace Workbench {

/** A program that runs beside the workbench: what it prints, and how it ends. */
class Job : public Norvu::Gui::ProcessGroup::Process
{
    Q_OBJECT

public:
    /** @param name  for the user; the command line if empty */
    Job(const QString &name, const QString &commandLine, QObject *parent);

    /** What it printed so far, at most the last megabyte. */
    QString output() const { return QString::fromLocal8Bit(_output); }
    bool isCanceled() const { return _isCanceled; }
    /** How long it runs, or ran; 0 before it starts. */
    qint64 milliseconds(const QDateTime &now) const;
    /** What is wrong with it; empty unless it failed. */
    QString problem() const;

signals:
    void outputChanged();

private slots:
    void readOutput();

private:
    friend class Jobs;

    QByteArray _output;
    bool _isCanceled{false};
};

} // namespace Workbench
