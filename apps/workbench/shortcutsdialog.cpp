// SPDX-License-Identifier: LGPL-3.0-or-later

#include "shortcutsdialog.h"

#include <QAction>
#include <QCoreApplication>
#include <QHeaderView>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QSet>

namespace Workbench {

namespace {

constexpr auto HelpMenu = "menuHelp";

QString tr(const char *text)
{
    return QCoreApplication::translate("Workbench::ShortcutsDialog", text);
}

/** A text of a menu without the marks of its mnemonic and of a dialog that follows. */
QString plainText(QString text)
{
    text.replace("&&", QChar(QChar::ObjectReplacementCharacter));
    text.remove('&');
    text.replace(QChar(QChar::ObjectReplacementCharacter), "&");
    if (text.endsWith(QChar(0x2026)))
        text.chop(1);
    return text;
}

QString keysOf(const QAction &action)
{
    QStringList keys;
    for (const QKeySequence &sequence : action.shortcuts()) {
        if (!sequence.isEmpty())
            keys.append(sequence.toString(QKeySequence::NativeText));
    }
    return keys.join(", ");
}

/** Lists each action that has a shortcut, once. */
class Collector
{
public:
    void addMenu(const QMenu &menu)
    {
        ShortcutGroup group{plainText(menu.title()), {}};
        addActions(menu.actions(), group);
        finish(group);
    }

    void addRest(const QList<QAction *> &actions, const QString &title)
    {
        ShortcutGroup group{title, {}};
        addActions(actions, group);
        finish(group);
    }

    const QVector<ShortcutGroup> &groups() const { return _groups; }

private:
    void addActions(const QList<QAction *> &actions, ShortcutGroup &group)
    {
        for (const QAction *action : actions) {
            if (action->menu())
                addActions(action->menu()->actions(), group);
            else if (!_seen.contains(action) && !keysOf(*action).isEmpty())
                group.shortcuts.append({keysOf(*action), plainText(action->text())});
            _seen.insert(action);
        }
    }

    void finish(const ShortcutGroup &group)
    {
        if (!group.shortcuts.isEmpty())
            _groups.append(group);
    }

    QSet<const QAction *> _seen;
    QVector<ShortcutGroup> _groups;
};

bool matches(const QTreeWidgetItem &item, const QString &text)
{
    return item.text(0).contains(text, Qt::CaseInsensitive) ||
           item.text(1).contains(text, Qt::CaseInsensitive);
}

void showShortcuts(QMainWindow *window)
{
    auto *dialog = window->findChild<ShortcutsDialog *>();
    if (!dialog) {
        dialog = new ShortcutsDialog(*window, window);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
    }
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}

} // namespace

QVector<ShortcutGroup> actionShortcuts(const QMainWindow &window)
{
    Collector collector;
    const auto *menuBar = qobject_cast<const QMenuBar *>(window.menuWidget());
    if (menuBar) {
        for (const QAction *action : menuBar->actions()) {
            if (action->menu())
                collector.addMenu(*action->menu());
        }
    }
    collector.addRest(window.findChildren<QAction *>(), tr("In no menu"));
    return collector.groups();
}

QVector<ShortcutGroup> viewShortcuts()
{
    return {
        {tr("Keys in the rows"),
         {{tr("Up"), tr("Select the row above")},
          {tr("Down"), tr("Select the row below")},
          {tr("Home"), tr("Go to the first row")},
          {tr("End"), tr("Go to the last row")},
          {tr("Space"), tr("Select the current row alone")},
          {tr("+"), tr("Select rows by a pattern of names")},
          {tr("-"), tr("Deselect rows by a pattern of names")}}},
        {tr("Mouse in the rows"),
         {{tr("Click"), tr("Select a row alone")},
          {tr("Ctrl+click"), tr("Select or deselect a row")},
          {tr("Shift+click"), tr("Select the rows up to this one")},
          {tr("Drag"), tr("Move the selected rows, or measure")},
          {tr("Wheel"), tr("Scroll through the rows")},
          {tr("Ctrl+wheel"), tr("Zoom in and out about the pointer")},
          {tr("Shift+wheel, wheel sideways"), tr("Move through time")},
          {tr("Shift+drag"), tr("Select a time range")},
          {tr("Double click"), tr("Zoom to the selected time range")}}},
        {tr("Mouse on the time scale"),
         {{tr("Wheel"), tr("Zoom in and out about the pointer")},
          {tr("Wheel sideways"), tr("Move through time")},
          {tr("Drag"), tr("Move through time")},
          {tr("Shift+drag, middle drag"), tr("Select a time range")},
          {tr("Shift+click"), tr("Clear the selected time range")},
          {tr("Drag a handle"), tr("Change the selected time range")}}},
        {tr("On the frequency axis"),
         {{tr("Left, Right"), tr("Move the chosen corner by 5 %")},
          {tr("Shift+Left, Shift+Right"), tr("Move the chosen corner by an octave")},
          {tr("Tab"), tr("Choose the next corner")},
          {tr("Esc"), tr("Go back to the rows")},
          {tr("Click"), tr("Bring the nearest corner there")},
          {tr("Drag"), tr("Move the nearest corner, or draw a new band")}}},
    };
}

ShortcutsDialog::ShortcutsDialog(const QMainWindow &window, QWidget *parent) : QDialog(parent)
{
    _ui.setupUi(this);
    for (const QVector<ShortcutGroup> &groups : {actionShortcuts(window), viewShortcuts()}) {
        for (const ShortcutGroup &group : groups)
            addGroup(group);
    }
    _ui.table->resizeColumnToContents(0);
    _ui.table->header()->resizeSection(0, _ui.table->columnWidth(0) +
                                              fontMetrics().horizontalAdvance("MM"));
    connect(_ui.searchEdit, SIGNAL(textChanged(QString)), this, SLOT(showMatching(QString)));
}

void ShortcutsDialog::addGroup(const ShortcutGroup &group)
{
    auto *heading = new QTreeWidgetItem(_ui.table, {group.title});
    QFont bold = font();
    bold.setBold(true);
    heading->setFont(0, bold);
    heading->setFirstColumnSpanned(true);
    heading->setFlags(Qt::ItemIsEnabled);
    heading->setExpanded(true);
    for (const Shortcut &shortcut : group.shortcuts)
        new QTreeWidgetItem(heading, {shortcut.keys, shortcut.text});
}

void ShortcutsDialog::showMatching(const QString &text)
{
    for (int i = 0; i < _ui.table->topLevelItemCount(); ++i) {
        QTreeWidgetItem *heading = _ui.table->topLevelItem(i);
        bool isAnyShown = false;
        for (int j = 0; j < heading->childCount(); ++j) {
            const bool isShown = matches(*heading->child(j), text);
            heading->child(j)->setHidden(!isShown);
            isAnyShown |= isShown;
        }
        heading->setHidden(!isAnyShown);
    }
}

void addShortcutsHelp(QMainWindow *window)
{
    auto *menu = window->menuBar()->findChild<QMenu *>(HelpMenu);
    if (!menu) {
        menu = window->menuBar()->addMenu(tr("&Help"));
        menu->setObjectName(HelpMenu);
    }
    QAction *action = menu->addAction(tr("&Keyboard shortcuts"));
    action->setShortcut(QKeySequence(Qt::Key_F1));
    QObject::connect(action, &QAction::triggered, window, [window] { showShortcuts(window); });
}

} // namespace Workbench
