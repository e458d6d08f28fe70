// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bench/bench.h"
#include "bench/job.h"
#include "bench/jobs.h"
#include "jobs/jobmodel.h"
#include "jobs/jobpanel.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTreeView>
#include <QtTest>

using namespace Workbench;
using Norvu::Gui::ProcessGroup;

namespace {

constexpr auto Forever = "sleep 60";

QStringList states(const JobModel &model)
{
    QStringList states;
    for (int row = 0; row < model.rowCount(); ++row)
        states.append(model.index(row, JobModel::State).data().toString());
    return states;
}

} // namespace

class TestJobs : public QObject
{
    Q_OBJECT

private slots:
    void showsHowJobsEnd()
    {
        Bench bench;
        JobModel model(bench.jobs());
        Job *good = bench.jobs()->add("good", "sh -c \"echo out; echo err >&2\"");
        bench.jobs()->add("bad", "sh -c \"exit 3\"");
        bench.jobs()->add("missing", "/no/such/program");
        QVERIFY(!bench.jobs()->add("nothing", "  "));
        QTRY_COMPARE(states(model), (QStringList{"Done", "Failed", "Failed"}));
        QCOMPARE(good->output(), QString("out\nerr\n"));
        QCOMPARE(model.job(model.index(1, 0))->problem(), QString("ended with code 3"));
        QVERIFY(model.index(2, 0).data(Qt::ToolTipRole).toString().contains("failed to start"));
        bench.jobs()->removeEnded();
        QCOMPARE(model.rowCount(), 0);
    }

    void cancelsWhatWaitsAndWhatRuns()
    {
        Bench bench;
        JobModel model(bench.jobs());
        Job *first = bench.jobs()->add("first", Forever);
        Job *second = bench.jobs()->add("second", Forever);
        bench.jobs()->add("third", Forever);
        QCOMPARE(states(model), (QStringList{"Running", "Waiting", "Waiting"}));
        bench.jobs()->cancel(second);
        QCOMPARE(states(model), (QStringList{"Running", "Cancelled", "Waiting"}));
        QVERIFY(first->waitForStarted());
        bench.jobs()->cancel(first);
        QTRY_COMPARE(states(model), (QStringList{"Cancelled", "Cancelled", "Running"}));
    }

    void startsWhatWaitsWhenMoreMayRun()
    {
        Bench bench;
        JobModel model(bench.jobs());
        for (int i = 0; i < 4; ++i)
            bench.jobs()->add(QString::number(i), Forever);
        bench.jobs()->setConcurrencyLevel(3);
        QCOMPARE(states(model), (QStringList{"Running", "Running", "Running", "Waiting"}));
    }

    void takesCommandsByKeyboard()
    {
        Bench bench;
        JobPanel panel(&bench);
        panel.show();
        auto *command = panel.findChild<QLineEdit *>(QString(), Qt::FindChildrenRecursively);
        QTest::keyClicks(command, "echo hello");
        QTest::keyClick(command, Qt::Key_Return);
        QCOMPARE(command->text(), QString());
        QTRY_COMPARE(panel.findChild<QPlainTextEdit *>()->toPlainText(), QString("hello\n"));
        auto *view = panel.findChild<QTreeView *>();
        QTRY_COMPARE(bench.jobs()->runningCount(), 0);
        QTest::keyClick(view, Qt::Key_Delete);
        QCOMPARE(bench.jobs()->all().size(), 0);
    }
};

QTEST_MAIN(TestJobs)
#include "tst_jobs.moc"
