// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowname.h"

#include <norvu/gui/processgroup.h>

#include <QtTest>

using Norvu::Gui::ProcessGroup;
using Process = ProcessGroup::Process;

namespace {

constexpr auto Forever = "sleep 60";

/** A group and what it has signalled, as "first: Idle to Queued", "first: removed". */
struct Bench
{
    Bench()
    {
        QObject::connect(&group, &ProcessGroup::added, [this](Process *process) {
            log.append(process->objectName() + ": added");
        });
        QObject::connect(&group, &ProcessGroup::removed, [this](Process *process) {
            log.append(names.value(process) + ": removed");
        });
        QObject::connect(&group, &ProcessGroup::statusChanged,
                         [this](Process *process, ProcessGroup::ProcessStatus old) {
                             log.append(
                                 QString("%1: %2 to %3")
                                     .arg(process->objectName(), name(old), name(process->status)));
                         });
    }

    static QString name(ProcessGroup::ProcessStatus status)
    {
        return QMetaEnum::fromType<ProcessGroup::ProcessStatus>().valueToKey(status);
    }

    Process *add(const QString &processName, const QString &command)
    {
        auto *process = new Process(command, &owner);
        process->setObjectName(processName);
        names.insert(process, processName);
        group.add(process);
        return process;
    }

    QObject owner; /**< of the processes; goes last */
    QHash<Process *, QString> names;
    QStringList log;
    ProcessGroup group;
};

} // namespace

class TestProcessGroup : public QObject
{
    Q_OBJECT

private slots:
    void leavesOutWhatAReceiverTakesAway()
    {
        Bench bench;
        connect(&bench.group, &ProcessGroup::added, &bench.group, &ProcessGroup::remove);
        const Process *process = bench.add("it", "true");
        QCOMPARE(process->status, ProcessGroup::Idle);
        QCOMPARE(bench.log, (QStringList{"it: added", "it: removed"}));
    }

    void tellsTheLifeOfAProcess()
    {
        const std::tuple<const char *, QString, bool, bool> rows[] = {
            {"good", "true", false, true},
            {"exit code", "sh -c \"exit 3\"", true, true},
            {"crash ends once", "sh -c \"kill -SEGV $$\"", true, true},
            {"missing program", "/no/such/program", true, true},
            {"nothing but blanks", "  ", true, false}};
        for (const auto &[name, command, failed, starts] : rows) {
            const RowName shown(name);
            Bench bench;
            const Process *process = bench.add("it", command);
            QTRY_COMPARE(process->status, ProcessGroup::Finished);
            QTRY_COMPARE(process->state(), QProcess::NotRunning);

            QStringList expected{"it: added", "it: Idle to Queued"};
            if (starts)
                expected << "it: Queued to Running"
                         << "it: Running to Finished";
            else
                expected << "it: Queued to Finished";
            QCOMPARE(bench.log, expected << "it: removed");
            QCOMPARE(process->failed, failed);
            QVERIFY(process->queued.isValid() && process->finished >= process->queued);
            QCOMPARE(process->queued.timeSpec(), Qt::UTC);
        }
    }

    void runsAsManyAsTheLevelSays()
    {
        Bench bench;
        bench.group.setConcurrencyLevel(2);
        bench.group.setConcurrencyLevel(0);
        bench.group.setConcurrencyLevel(-1);
        Process *first = bench.add("first", Forever);
        Process *second = bench.add("second", Forever);
        const Process *third = bench.add("third", Forever);
        QCOMPARE(second->status, ProcessGroup::Running);
        QCOMPARE(third->status, ProcessGroup::Queued);

        QVERIFY(second->waitForStarted());
        second->kill();
        QTRY_COMPARE(third->status, ProcessGroup::Running);
        QCOMPARE(first->status, ProcessGroup::Running);
        QVERIFY(second->failed);
        QCOMPARE(second->errorString(),
                 QString("The process crashed some time after starting successfully."));
    }

    void removesWhatRunsWithoutAWordAndKeepsItsTurn()
    {
        Bench bench;
        Process *first = bench.add("first", Forever);
        const Process *second = bench.add("second", Forever);
        QVERIFY(first->waitForStarted());
        bench.log.clear();
        bench.group.remove(first);
        QTRY_COMPARE(first->state(), QProcess::NotRunning);
        QCOMPARE(bench.log, QStringList());
        QCOMPARE(second->status, ProcessGroup::Queued);
    }

    void survivesDeletedProcesses()
    {
        Bench bench;
        Process *first = bench.add("first", Forever);
        Process *second = bench.add("second", Forever);
        const Process *third = bench.add("third", Forever);
        QVERIFY(first->waitForStarted());
        delete second;
        QCOMPARE(bench.log.last(), QString("second: removed"));
        delete first;
        QCOMPARE(bench.log.count("first: removed"), 1);
        QCOMPARE(third->status, ProcessGroup::Running);
    }

    void keepsItsLevelWhenAReceiverAddsMore()
    {
        Bench bench;
        Process *third = nullptr;
        connect(&bench.group, &ProcessGroup::statusChanged, &bench.group, [&](Process *process) {
            if (!third && process->status == ProcessGroup::Finished)
                third = bench.add("third", Forever);
        });
        bench.add("first", "true");
        const Process *second = bench.add("second", Forever);
        QTRY_COMPARE(second->status, ProcessGroup::Running);
        QCOMPARE(third->status, ProcessGroup::Queued);
    }

    void givesOneSuccessorTheTurnOfEachThatEnds()
    {
        Bench bench;
        bench.group.setConcurrencyLevel(2);
        Process *first = bench.add("first", Forever);
        Process *second = bench.add("second", Forever);
        const Process *third = bench.add("third", Forever);
        const Process *fourth = bench.add("fourth", Forever);
        QVERIFY(first->waitForStarted() && second->waitForStarted());
        bench.group.setConcurrencyLevel(1); // counts once nothing waits
        first->kill();
        QTRY_COMPARE(third->status, ProcessGroup::Running);
        bench.group.setConcurrencyLevel(4); // fills up step by step
        second->kill();
        QTRY_COMPARE(fourth->status, ProcessGroup::Running);
        QCOMPARE(bench.log.count("third: Queued to Running"), 1);
    }

    /** Also one that is told of after the end frees no second turn. */
    void takesAnyErrorForTheEnd()
    {
        Bench bench;
        Process *first = bench.add("first", Forever);
        const Process *second = bench.add("second", Forever);
        const Process *third = bench.add("third", Forever);
        QVERIFY(first->waitForStarted());
        for (int round = 0; round < 2; ++round) {
            QMetaObject::invokeMethod(first, "error",
                                      Q_ARG(QProcess::ProcessError, QProcess::ReadError));
            QCOMPARE(first->status, ProcessGroup::Finished);
            QCOMPARE(second->status, ProcessGroup::Running);
            QCOMPARE(third->status, ProcessGroup::Queued);
        }
        QCOMPARE(first->state(), QProcess::Running);
        QCOMPARE(bench.log.count("first: removed"), 1);
    }

    void startsAgainWhatAReceiverAddsAgain()
    {
        Bench bench;
        int runs = 0;
        connect(&bench.group, &ProcessGroup::statusChanged, &bench.group, [&](Process *process) {
            if (process->status != ProcessGroup::Finished || ++runs == 3)
                return;
            if (runs == 2)
                process->command = "true";
            bench.group.add(process);
        });
        const Process *process = bench.add("it", "sh -c \"kill -SEGV $$\"");
        QTRY_COMPARE(runs, 3);
        QCOMPARE(process->status, ProcessGroup::Finished);
        QVERIFY(!process->failed); // as the runs before it did
        // It has held one turn, and given back one.
        QCOMPARE(bench.add("second", Forever)->status, ProcessGroup::Running);
        QCOMPARE(bench.add("third", Forever)->status, ProcessGroup::Queued);
    }
};

QTEST_GUILESS_MAIN(TestProcessGroup)
#include "tst_processgroup.moc"
