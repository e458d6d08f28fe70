// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "ui_shortcutsdialog.h"

#include <QDialog>
#include <QString>
#include <QVector>

class QMainWindow;

namespace Workbench {

/** A key or gesture and what it does. */
struct Shortcut
{
    QString keys; /**< as the user reads them; several are separated by ", " */
    QString text;
};

/** Shortcuts that belong together, under the title of their menu. */
struct ShortcutGroup
{
    QString title;
    QVector<Shortcut> shortcuts;
};

/**
 * The actions of a window that have a shortcut: by menu, entries of submenus with their menu, each
 * action once; those that stand in no menu come last.
 */
QVector<ShortcutGroup> actionShortcuts(const QMainWindow &window);

/** Keys and mouse gestures of rows and time scale, which are no actions. */
QVector<ShortcutGroup> viewShortcuts();

/** Shows all shortcuts of a window in a table that can be searched. */
class ShortcutsDialog : public QDialog
{
    Q_OBJECT

public:
    explicit ShortcutsDialog(const QMainWindow &window, QWidget *parent = nullptr);

private slots:
    void showMatching(const QString &text);

private:
    void addGroup(const ShortcutGroup &group);

    Ui_ShortcutsDialog _ui;
};

/**
 * Adds "Keyboard shortcuts" (F1) to the Help menu of a window, which is made if there is none. The
 * table is gathered when it is asked for, and there is one at a time.
 */
void addShortcutsHelp(QMainWindow *window);

} // namespace Workbench
