// SPDX-License-Identifier: LGPL-3.0-or-later

#include "exportactions.h"

#include "bench/exportfile.h"
#include "bench/picture.h"
#include "bench/rowaddition.h"
#include "bench/tracerows.h"
#include "dataexport.h"
#include "pictureexport.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPointer>
#include <QProgressDialog>
#include <QPushButton>

using Norvu::Gui::Trace;

namespace Workbench {

namespace {

constexpr int ProgressSteps = 1000;

/** A dialog with a button to cancel, for what takes longer than a moment. */
class ProgressDialog
{
public:
    ProgressDialog(const QString &text, QWidget *parent)
        : _dialog(text, QObject::tr("Cancel"), 0, ProgressSteps, parent)
    {
        _dialog.setWindowModality(Qt::WindowModal);
    }

    DataExport::Progress function()
    {
        return [this](double share) {
            const int step = static_cast<int>(share * ProgressSteps);
            // Each step lets the event loop run, which is dear for one record.
            if (step > _dialog.value())
                _dialog.setValue(step);
            return !_dialog.wasCanceled();
        };
    }

private:
    QProgressDialog _dialog;
};

} // namespace

ExportActions::ExportActions(Norvu::Gui::TraceView *view, TraceRows *rows, QWidget *window)
    : QObject(window), _view(view), _rows(rows), _window(window)
{
    addAction(tr("Copy &picture"), SLOT(copyPicture()), tr("Ctrl+Shift+P"));
    addAction(tr("Export p&icture…"), SLOT(askForPicture()), tr("Ctrl+Shift+E"));
    addAction(tr("&Export data as miniSEED…"), SLOT(askForMiniSeed()), tr("Ctrl+E"));
    addAction(tr("Export data as &SAC…"), SLOT(askForSac()));
}

void ExportActions::addAction(const QString &text, const char *slot, const QString &shortcut)
{
    auto *action = new QAction(text, this);
    action->setShortcut(shortcut);
    connect(action, SIGNAL(triggered()), this, slot);
    _actions.append(action);
}

/** Rows that are scrolled out of sight belong into a picture with all that is added to them.
 *  @return false if the user has cancelled it */
bool ExportActions::finishRows()
{
    RowAddition *addition = _rows->addition();
    if (!addition || !addition->isAnyShown())
        return true;

    QVector<QPointer<Trace>> rows;
    for (QWidget *part : pictureParts(*_view)) {
        if (auto *row = qobject_cast<Trace *>(part))
            rows.append(row);
    }
    ProgressDialog progress(tr("Drawing…"), _window);
    const auto goOn = progress.function();
    for (int i = 0; i < rows.size(); ++i) {
        if (!goOn(double(i) / rows.size()))
            return false;
        if (rows[i]) // the dialog lets go on what may take it away
            addition->finish(rows[i]->recordWidget());
    }
    return true;
}

void ExportActions::copyPicture()
{
    if (!finishRows())
        return;
    QString error;
    const QImage picture = pictureOf(*_view, &error);
    if (picture.isNull()) {
        emit failed({tr("Copy picture: %1").arg(error)});
        return;
    }
    QApplication::clipboard()->setImage(picture);
    emit done(tr("Copied a picture of %1 x %2 pixels").arg(picture.width()).arg(picture.height()));
}

void ExportActions::askForPicture()
{
    const QString file =
        askForExportFile(_window, tr("Export picture"), suggestedName(), pictureFilters());
    if (file.isEmpty() || !finishRows())
        return;

    QString error;
    if (writePicture(*_view, file, &error))
        emit done(tr("Wrote the picture to %1").arg(QDir::toNativeSeparators(file)));
    else
        emit failed({error});
}

void ExportActions::askForMiniSeed()
{
    // Taken before the dialog runs: records may still arrive while it does.
    const DataExport data = DataExport::FromView(*_view);
    const QString file = askForExportFile(_window, tr("Export data as miniSEED"), suggestedName(),
                                          {tr("miniSEED (*.mseed)")});
    if (file.isEmpty())
        return;

    ProgressDialog progress(tr("Writing miniSEED…"), _window);
    tell(data.writeMiniSeed(file, progress.function()));
}

void ExportActions::askForSac()
{
    const DataExport data = DataExport::FromView(*_view);
    const QString folder = QFileDialog::getExistingDirectory(
        _window, tr("Export data as SAC, a file for each stretch"), exportFolder());
    if (folder.isEmpty() || !mayReplace(folder, data.sacFileNames()))
        return;

    setExportFolder(folder);
    ProgressDialog progress(tr("Writing SAC files…"), _window);
    tell(data.writeSac(folder, progress.function()));
}

QString ExportActions::suggestedName() const
{
    const auto start = DataExport::ChosenWindow(*_view).startTime();
    return QString::fromStdString(start.toString("%Y-%m-%dT%H%M%S"));
}

bool ExportActions::mayReplace(const QString &folder, const QStringList &names)
{
    QStringList there;
    for (const QString &name : names) {
        if (QFileInfo::exists(QDir(folder).filePath(name)))
            there.append(name);
    }
    if (there.isEmpty())
        return true;

    QMessageBox box(QMessageBox::Warning, tr("Export data as SAC"),
                    tr("%1 of %2 files are in %3 already. Replace them?")
                        .arg(there.size())
                        .arg(names.size())
                        .arg(QDir::toNativeSeparators(folder)),
                    QMessageBox::NoButton, _window);
    box.setDetailedText(there.join('\n'));
    const QAbstractButton *replace = box.addButton(tr("Replace"), QMessageBox::AcceptRole);
    box.setDefaultButton(box.addButton(QMessageBox::Cancel));
    box.exec();
    return box.clickedButton() == replace;
}

void ExportActions::tell(const ExportOutcome &outcome)
{
    if (!outcome.messages.isEmpty())
        emit failed(outcome.messages);
    if (!outcome.files.isEmpty())
        emit done(outcome.text());
}

} // namespace Workbench
