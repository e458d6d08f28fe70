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

/** Not one that has ended and that nobody has asked about yet. */
bool isAlive(int process)
{
    QFile file(QString("/proc/%1/stat").arg(process));
    return file.open(QFile::ReadOnly) && !file.readAll().contains(") Z ");
}

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
        QCOMPARE(good->output(), QByteArray("out\nerr\n"));
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

    /** Also the one that heeds no word, and which its shell has left behind. */
    void endsWhatJobsHaveStarted()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath("id");
        const QString deaf = QString("sh -c \"(trap '' TERM; sleep 60) & echo $! > %1; wait\"");
        const auto startedProcess = [&] {
            QFile id(file);
            return id.open(QFile::ReadOnly) ? id.readAll().trimmed().toInt() : 0;
        };
        int canceled = 0;
        int unended = 0;
        {
            Bench bench;
            Job *job = bench.jobs()->add("canceled", deaf.arg(file));
            QTRY_VERIFY((canceled = startedProcess()) > 0);
            bench.jobs()->cancel(job);
            QTRY_COMPARE(bench.jobs()->runningCount(), 0);
            QTRY_VERIFY_WITH_TIMEOUT(!isAlive(canceled), 20000);
            QFile::remove(file);
            bench.jobs()->add("not ended", deaf.arg(file));
            QTRY_VERIFY((unended = startedProcess()) > 0);
        }
        QTRY_VERIFY(!isAlive(unended));
    }

    void startsWhatWaitsWhenMoreMayRun()
    {
        Bench bench;
        JobModel model(bench.jobs());
        for (int i = 0; i < 5; ++i)
            bench.jobs()->add(QString::number(i), Forever);
        Job *last = bench.jobs()->all().last();
        last->queued = last->queued.addSecs(-60);
        const QDateTime since = last->queued;
        bench.jobs()->setConcurrencyLevel(3);
        QCOMPARE(states(model),
                 (QStringList{"Running", "Running", "Running", "Waiting", "Waiting"}));
        QCOMPARE(last->queued, since);

        // A lowered level counts with the next one that ends.
        bench.jobs()->setConcurrencyLevel(2);
        for (int i = 0; i < 2; ++i) {
            QVERIFY(bench.jobs()->all()[i]->waitForStarted());
            bench.jobs()->cancel(bench.jobs()->all()[i]);
            QTRY_COMPARE(model.index(i, JobModel::State).data().toString(), QString("Cancelled"));
            QTRY_COMPARE(bench.jobs()->runningCount(), 2);
        }
        QTRY_COMPARE(states(model),
                     (QStringList{"Cancelled", "Cancelled", "Running", "Running", "Waiting"}));
    }

    /** However much a job prints, the panel keeps up with it, and shows its end. */
    void showsTheEndOfEndlessOutput()
    {
        Bench bench;
        JobPanel panel(&bench);
        panel.show();
        const auto *output = panel.findChild<QPlainTextEdit *>();
        bench.jobs()->add("many", "seq 300000");
        QTRY_COMPARE(bench.jobs()->runningCount(), 0);
        QTRY_VERIFY(output->toPlainText().contains("\n300000\n"));
        QVERIFY(output->document()->blockCount() <= 2000);

        // What comes in pieces is put together, characters included, and stays if it is short.
        panel.findChild<QTreeView *>()->setCurrentIndex({});
        bench.jobs()->add("pieces",
                          "sh -c \"printf 'a\\303'; sleep 0.5; printf '\\244\\n'; exit 3\"");
        QTRY_COMPARE(output->toPlainText(), QString::fromUtf8("a\303\244\n[ended with code 3]"));
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
