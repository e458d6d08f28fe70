// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/processgroup.h>

#include <QByteArray>

namespace Workbench {

/**
 * A program that runs beside the workbench: what it prints, and how it ends.
 *
 * The program leads a session of its own, so that what it starts in turn can be ended along with
 * it.
 */
class Job : public Norvu::Gui::ProcessGroup::Process
{
    Q_OBJECT

public:
    /** @param name  for the user; the command line if empty */
    Job(const QString &name, const QString &commandLine, QObject *parent);
    /** Kills what it was asked to end, and what still runs. */
    ~Job() override;

    /** The end of what it printed so far, a megabyte or two. */
    const QByteArray &output() const { return _output; }
    /** Number of bytes that it printed so far. */
    qint64 printed() const { return _printed; }
    bool isCanceled() const { return _isCanceled; }
    /** How long it runs, or ran; 0 before it starts. */
    qint64 milliseconds(const QDateTime &now) const;
    /** What is wrong with it; empty unless it failed. */
    QString problem() const;

signals:
    void outputChanged();

protected:
    void setupChildProcess() override;

private slots:
    void readOutput();
    void noteLeader();
    void killAll();

private:
    friend class Jobs;

    void cancel();
    void signalAll(int signal);

    QByteArray _output;
    qint64 _printed{0};
    qint64 _leader{0}; /**< process id of the program, and of its session */
    bool _isCanceled{false};
};

} // namespace Workbench
