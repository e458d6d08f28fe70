// SPDX-License-Identifier: LGPL-3.0-or-later

#include "answer.h"
#include "rowname.h"

#include <norvu/gui/exportfiledialog.h>
#include <norvu/gui/fontawesome5.h>

#include <QLabel>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
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
    void writesAndRuns()
    {
        const QStringList both{Done, Done}, half{Done, Failed};
        // The script is its text, or the name of a missing one.
        const std::tuple<const char *, bool, QString, QStringList, QString> rows[] = {
            {"not written", false, "", {Failed, Open}, "Saving /some/file failed"},
            {"no script", true, "", half, ""},
            {"script", true, "echo \"$1\" > \"$0.out\"", both, ""},
            {"exit code", true, "exit 1", both, ""},
            {"missing", true, "/no/such/script", half, "No such file or directory"},
            {"crash", true, "kill -SEGV $$", half, "Script crashed"}};
        for (const auto &[name, written, text, expected, message] : rows) {
            const RowName shown(name);
            const QTemporaryDir folder;
            const bool isThere = !text.isEmpty() && !text.startsWith('/');
            const QString script = isThere ? writeScript(folder, text) : text;
            ExportFileDialog dialog([isWritten = written](const QString &) { return isWritten; },
                                    "/some/file", QString(), script);
            QString told;
            Answer<QMessageBox> answer([&](QMessageBox &box) {
                told = box.windowTitle() + ": " + box.text();
                box.accept();
            });
            dialog.show();
            QTest::mouseClick(dialog.findChild<QPushButton *>("okButton"), Qt::LeftButton);
            QCOMPARE(marks(dialog), expected);
            QVERIFY2(message.isEmpty() ? told.isEmpty()
                                       : told.startsWith("Error: ") && told.contains(message),
                     qPrintable(told));
            QCOMPARE(dialog.isVisible(), !message.isEmpty());
            QFile out(script + ".out");
            QCOMPARE(out.open(QFile::ReadOnly), text.startsWith("echo"));
            QVERIFY(!out.isOpen() || out.readAll() == "/some/file\n");
        }
    }

    void abortsAScriptThatHangs()
    {
        const std::pair<const char *, QString> rows[] = {
            {"heeds the request", "exec sleep 60"},
            {"must be killed", "trap '' TERM\nwhile :; do sleep 1; done"}};
        for (const auto &[name, script] : rows) {
            const RowName shown(name);
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
