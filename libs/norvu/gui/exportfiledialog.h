// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "ui_exportfiledialog.h"

#include <norvu/api.h>

#include <QDialog>

#include <functional>

namespace Norvu {
namespace Gui {

/**
 * Asks for a file and a script, lets a function of the caller write the file, runs the script on it
 * and shows on a list which of the two has been done.
 *
 * A file that is there already is replaced only after a question, unless it was chosen as such or
 * written before. The script gets the file's name as its only argument. Its exit code is not looked
 * at. Without a script the dialog closes once the file is written.
 */
class NORVU_GUI_API ExportFileDialog : public QDialog
{
    Q_OBJECT

public:
    /**
     * @param exporter  writes the file of the given name; false if it could not. It runs under the
     *                  wait cursor and must not be empty: std::bad_function_call is thrown then.
     * @param filter    name filter of the dialog that chooses the file
     */
    ExportFileDialog(std::function<bool(const QString &)> exporter, const QString &file,
                     const QString &filter, const QString &script, QWidget *parent = nullptr);

    QString filePath() const;
    QString scriptPath() const;

    /** Takes all marks off the list. */
    void reset();
    void exportFileDone();
    void exportFileFailed();
    void runScriptDone();
    void runScriptFailed();

public slots:
    void exportClicked();
    void selectFile();
    void selectScript();

private:
    bool mayWrite();
    bool writeFile();
    void runScript();

    Ui_ExportFileDialog _ui;
    QString _filter;
    std::function<bool(const QString &)> _exporter;
    QString _replaceable; /**< a file that was chosen or written here, and is not asked about */
};

} // namespace Gui
} // namespace Norvu
