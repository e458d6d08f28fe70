// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/exportfiledialog.h>

#include <norvu/gui/fontawesome5.h>
#include <norvu/gui/modaldialog_p.h>
#include <tellarix/core/logging.h>

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontMetrics>
#include <QMessageBox>
#include <QPointer>
#include <QProcess>
#include <QProgressDialog>

using namespace Tellarix;

namespace Norvu {
namespace Gui {

namespace {

constexpr int StartMilliseconds = 30000;

/** The wait cursor for as long as this lives. */
class WaitCursor
{
public:
    WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QApplication::restoreOverrideCursor(); }
    Q_DISABLE_COPY(WaitCursor)
};

void showError(const QString &text)
{
    QMessageBox::critical(nullptr, ExportFileDialog::tr("Error"), text, QMessageBox::Ok);
}

/** Ends a process that still runs when its dialog is through, without Qt's warning about it. */
void endProcess(QProcess &process)
{
    if (process.state() == QProcess::NotRunning)
        return;
    process.kill();
    process.waitForFinished();
}

/** Runs a script on a file, and shows that it does, or what went wrong. */
bool runOnFile(const QString &script, const QString &file, QWidget *parent)
{
    QProcess process;
    process.setEnvironment(QProcess::systemEnvironment());
    const QStringList arguments{file};
    if (Log::general().isDebugEnabled()) {
        qCDebug(Log::general, "Starting %s %s", qUtf8Printable(script),
                qUtf8Printable(arguments.join(" ")));
    }

    // The parent may go while the script runs, and takes the dialog along.
    const QPointer<QProgressDialog> progress(new QProgressDialog(parent));
    progress->setWindowTitle(ExportFileDialog::tr("Run export script"));
    progress->setLabelText(ExportFileDialog::tr("Running %1").arg(script));
    progress->setCancelButtonText(ExportFileDialog::tr("Abort"));
    progress->setRange(0, 0);
    QObject::connect(&process, SIGNAL(finished(int, QProcess::ExitStatus)), progress,
                     SLOT(accept()));
    QObject::connect(progress, SIGNAL(canceled()), &process, SLOT(terminate()));

    process.start(script, arguments, QIODevice::ReadWrite);
    process.waitForStarted(StartMilliseconds);
    if (process.state() == QProcess::NotRunning) {
        showError(process.errorString());
        delete progress;
        return false;
    }

    progress->exec();
    const bool canceled = !progress || progress->wasCanceled();
    if (!progress)
        process.terminate();
    delete progress;
    QString problem;
    if (canceled)
        problem = ExportFileDialog::tr("Script aborted");
    else if (process.exitStatus() != QProcess::NormalExit)
        problem = ExportFileDialog::tr("Script crashed");
    // A script that was told to end may do so while the user reads.
    if (!problem.isEmpty())
        showError(problem);
    endProcess(process);
    return problem.isEmpty();
}

} // namespace

ExportFileDialog::ExportFileDialog(std::function<bool(const QString &)> exporter,
                                   const QString &file, const QString &filter,
                                   const QString &script, QWidget *parent)
    : QDialog(parent), _filter(filter), _exporter(std::move(exporter))
{
    _ui.setupUi(this);
    connect(_ui.okButton, SIGNAL(clicked()), this, SLOT(exportClicked()));
    connect(_ui.cancelButton, SIGNAL(clicked()), this, SLOT(reject()));
    connect(_ui.btnChooseFile, SIGNAL(clicked()), this, SLOT(selectFile()));
    connect(_ui.btnChooseScript, SIGNAL(clicked()), this, SLOT(selectScript()));

    const QFont font = FontAwesome5::font();
    const int width = QFontMetrics(font).horizontalAdvance(FontAwesome5::chSquare) * 3 / 2;
    for (QLabel *label : {_ui.labelTODOExportFile, _ui.labelTODORunScript}) {
        label->setFont(font);
        label->setFixedWidth(width);
    }

    _ui.editFile->setText(file);
    _ui.editScript->setText(script);
    reset();
}

QString ExportFileDialog::filePath() const
{
    return _ui.editFile->text();
}

QString ExportFileDialog::scriptPath() const
{
    return _ui.editScript->text();
}

void ExportFileDialog::reset()
{
    _ui.okButton->setEnabled(true);
    _ui.labelTODOExportFile->setText(FontAwesome5::chSquare);
    _ui.labelTODORunScript->setText(FontAwesome5::chSquare);
}

void ExportFileDialog::exportFileDone()
{
    _ui.labelTODOExportFile->setText(FontAwesome5::chCheckSquare);
}

void ExportFileDialog::exportFileFailed()
{
    _ui.labelTODOExportFile->setText(FontAwesome5::chTimes);
}

void ExportFileDialog::runScriptDone()
{
    _ui.labelTODORunScript->setText(FontAwesome5::chCheckSquare);
}

void ExportFileDialog::runScriptFailed()
{
    _ui.labelTODORunScript->setText(FontAwesome5::chTimes);
}

void ExportFileDialog::exportClicked()
{
    const QPointer<ExportFileDialog> self(this);
    // A name that was typed may be that of a file whose loss the user doesn't think of.
    if (!mayWrite() || !self || !writeFile() || !self)
        return;

    _replaceable = filePath();
    exportFileDone();
    if (scriptPath().isEmpty()) {
        runScriptFailed();
        accept();
        return;
    }
    runScript();
}

bool ExportFileDialog::mayWrite()
{
    const QString file = filePath();
    if (file == _replaceable || !QFileInfo::exists(file))
        return true;
    return QMessageBox::question(
               nullptr, tr("Export"), tr("%1 exists already. Replace it?").arg(file),
               QMessageBox::Yes | QMessageBox::No, QMessageBox::No) == QMessageBox::Yes;
}

bool ExportFileDialog::writeFile()
{
    const QPointer<ExportFileDialog> self(this);
    const QString file = filePath();
    bool written = false;
    {
        const WaitCursor cursor;
        written = _exporter(file);
    }
    if (written)
        return true;
    if (self)
        exportFileFailed();
    showError(tr("Saving %1 failed").arg(file));
    return false;
}

void ExportFileDialog::runScript()
{
    const QPointer<ExportFileDialog> self(this);
    const bool done = runOnFile(scriptPath(), filePath(), this);
    if (!self)
        return;

    if (!done) {
        runScriptFailed();
        return;
    }
    runScriptDone();
    accept();
}

// The static functions of QFileDialog would hold the dialog on the stack, where its parent must not
// go meanwhile.

void ExportFileDialog::selectFile()
{
    ModalDialog<QFileDialog> chooser(this, tr("Save file"), QFileInfo(filePath()).path(), _filter);
    chooser->setAcceptMode(QFileDialog::AcceptSave);
    chooser->selectFile(filePath());
    if (!chooser.isAccepted())
        return;
    _replaceable = chooser->selectedFiles().value(0); // the chooser has asked
    _ui.editFile->setText(_replaceable);
}

void ExportFileDialog::selectScript()
{
    const QString folder = scriptPath().isEmpty() ? QString() : QFileInfo(scriptPath()).path();
    ModalDialog<QFileDialog> chooser(this, tr("Export script"), folder);
    chooser->setFileMode(QFileDialog::ExistingFile);
    if (chooser.isAccepted())
        _ui.editScript->setText(chooser->selectedFiles().value(0));
}

} // namespace Gui
} // namespace Norvu
