// SPDX-License-Identifier: LGPL-3.0-or-later

#include "answer.h"

#include <norvu/gui/exportfiledialog.h>
#include <norvu/gui/fontawesome5.h>

#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Norvu;
using Norvu::Gui::ExportFileDialog;

namespace {

const QString Open(FontAwesome5::chSquare);
const QString Done(FontAwesome5::chCheckSquare);
const QString Failed(FontAwesome5::chTimes);

/** The two marks of the dialog. */
QStringList marks(const ExportFileDialog &dialog)
{
    return {dialog.findChild<QLabel *>("labelTODOExportFile")->text(),
            dialog.findChild<QLabel *>("labelTODORunScript")->text()};
}

/** A program with a shell script's text. */
QString writeScript(const QTemporaryDir &folder, const QString &text)
{
    QFile file(folder.filePath("script"));
    if (!file.open(QFile::WriteOnly))
        return QString();
    file.write("#!/bin/sh\n" + text.toUtf8() + '\n');
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return file.fileName();
}

} // namespace

class TestExportFileDialog : public QObject
{
    Q_OBJECT

private slots:
    void writesAndRuns_data()
    {
        QTest::addColumn<bool>("written");
        QTest::addColumn<QString>("script"); /**< its text, or the name of a missing one */
        QTest::addColumn<QStringList>("marks");
        QTest::addColumn<QString>("message");
        QTest::newRow("not written")
            << false << "" << QStringList{Failed, Open} << "Saving /some/file failed";
        QTest::newRow("no script") << true << "" << QStringList{Done, Failed} << QString();
        QTest::newRow("script") << true << "echo \"$1\" > \"$0.out\"" << QStringList{Done, Done}
                                << QString();
        QTest::newRow("exit code") << true << "exit 1" << QStringList{Done, Done} << QString();
        QTest::newRow("missing") << true << "/no/such/script" << QStringList{Done, Failed}
                                 << "No such file or directory";
        QTest::newRow("crash") << true << "kill -SEGV $$" << QStringList{Done, Failed}
                               << "Script crashed";
    }

    void writesAndRuns()
    {
        QFETCH(bool, written);
        QFETCH(QString, script);
        QFETCH(QString, message);
        const QTemporaryDir folder;
        if (!script.isEmpty() && !script.startsWith('/'))
            script = writeScript(folder, script);

        ExportFileDialog dialog([&](const QString &) { return written; }, "/some/file", QString(),
                                script);
        QString told;
        Answer<QMessageBox> answer([&](QMessageBox &box) {
            told = box.windowTitle() + ": " + box.text();
            box.accept();
        });
        dialog.show();
        QTest::mouseClick(dialog.findChild<QPushButton *>("okButton"), Qt::LeftButton);

        QTEST(marks(dialog), "marks");
        QVERIFY2(message.isEmpty() ? told.isEmpty()
                                   : told.startsWith("Error: ") && told.contains(message),
                 qPrintable(told));
        QCOMPARE(dialog.isVisible(), !message.isEmpty());
        if (QTest::currentDataTag() == QByteArray("script")) {
            QFile out(script + ".out");
            QVERIFY(out.open(QFile::ReadOnly));
            QCOMPARE(out.readAll(), QByteArray("/some/file\n"));
        }
    }

    void abortsAScriptThatHangs_data()
    {
        QTest::addColumn<QString>("script");
        QTest::newRow("heeds the request") << "exec sleep 60";
        QTest::newRow("must be killed") << "trap '' TERM\nwhile :; do sleep 1; done";
    }

    void abortsAScriptThatHangs()
    {
        QFETCH(QString, script);
        const QTemporaryDir folder;
        ExportFileDialog dialog([](const QString &) { return true; }, "/some/file", QString(),
                                writeScript(folder, script));
        dialog.show();
        QString told;
        QTimer cancel;
        connect(&cancel, &QTimer::timeout, [&] {
            QWidget *modal = QApplication::activeModalWidget();
            if (auto *progress = qobject_cast<QProgressDialog *>(modal))
                QTest::mouseClick(progress->findChild<QPushButton *>(), Qt::LeftButton);
            else if (auto *box = qobject_cast<QMessageBox *>(modal)) {
                told = box->text();
                box->accept();
            }
        });
        cancel.start(20);
        dialog.exportClicked();
        QCOMPARE(told, QString("Script aborted"));
        QCOMPARE(marks(dialog), (QStringList{Done, Failed}));
        dialog.reset();
        QCOMPARE(marks(dialog), (QStringList{Open, Open}));
    }

    void asksBeforeItReplacesAFile()
    {
        const QTemporaryDir folder;
        const QString file = writeScript(folder, "exit 0"); // any file that is there
        int count = 0;
        ExportFileDialog dialog([&](const QString &) { return ++count > 0; }, file, QString(),
                                "/no/such/script");
        QStringList told;
        const auto click = [&](QMessageBox::StandardButton button) {
            Answer<QMessageBox> question([&](QMessageBox &box) {
                told << box.text();
                QTest::mouseClick(box.button(button), Qt::LeftButton);
            });
            dialog.exportClicked();
        };
        click(QMessageBox::No);
        QCOMPARE(told, QStringList(file + " exists already. Replace it?"));
        QCOMPARE(marks(dialog), (QStringList{Open, Open}));
        QCOMPARE(count, 0);
        std::unique_ptr<Answer<QMessageBox>> failure;
        Answer<QMessageBox> question([&](QMessageBox &box) {
            failure.reset(new Answer<QMessageBox>([](QMessageBox &box) { box.accept(); }));
            QTest::mouseClick(box.button(QMessageBox::Yes), Qt::LeftButton);
        });
        dialog.exportClicked();
        QVERIFY(failure && failure->given);
        QCOMPARE(count, 1);
        // What it has written itself is written again.
        click(QMessageBox::Ok);
        QCOMPARE(count, 2);
        QCOMPARE(told.size(), 2);
        QVERIFY2(told[1].contains("No such file"), qPrintable(told[1]));
    }

    void restoresTheCursorWithoutAnExporter()
    {
        ExportFileDialog dialog({}, "/some/file", QString(), QString());
        QVERIFY_EXCEPTION_THROWN(dialog.exportClicked(), std::bad_function_call);
        QVERIFY(!QApplication::overrideCursor());
    }

    void survivesItsEndWhileTheScriptRuns()
    {
        const QTemporaryDir folder;
        auto *dialog = new ExportFileDialog([](const QString &) { return true; }, "/some/file",
                                            QString(), writeScript(folder, "exec sleep 60"));
        std::unique_ptr<Answer<QMessageBox>> answer;
        Answer<QProgressDialog> end([&](QProgressDialog &) {
            answer.reset(new Answer<QMessageBox>([](QMessageBox &box) { box.accept(); }));
            delete dialog;
        });
        dialog->show();
        dialog->exportClicked();
        QVERIFY(end.given);
    }
};

QTEST_MAIN(TestExportFileDialog)
#include "tst_exportfiledialog.moc"
