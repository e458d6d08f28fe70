// SPDX-License-Identifier: LGPL-3.0-or-later

#include "mainwindow.h"
#include "shortcutsdialog.h"
#include "waveforms/waveforms.h"

#include <norvu/gui/traceview.h>

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QShortcut>
#include <QtTest>

using namespace Workbench;

namespace {

QStringList listedKeys(const QVector<ShortcutGroup> &groups)
{
    QStringList keys;
    for (const ShortcutGroup &group : groups) {
        for (const Shortcut &shortcut : group.shortcuts)
            keys.append(shortcut.keys.split(", "));
    }
    return keys;
}

} // namespace

class TestShortcuts : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qputenv("XDG_CONFIG_HOME", QDir::tempPath().toLocal8Bit()); }

    void everyShortcutStandsInMenuAndTable()
    {
        MainWindow window;
        const QVector<ShortcutGroup> groups = actionShortcuts(window);
        QStringList expected;
        for (const QAction *action : window.findChildren<QAction *>()) {
            for (const QKeySequence &keys : action->shortcuts())
                expected.append(keys.toString(QKeySequence::NativeText));
        }
        QVERIFY(expected.size() > 20);
        QStringList listed = listedKeys(groups);
        expected.sort();
        listed.sort();
        QCOMPARE(listed, expected);
        for (const ShortcutGroup &group : groups)
            QVERIFY(group.title != "In no menu");
        // Shortcuts without an action would be missing.
        QVERIFY(window.findChildren<QShortcut *>().isEmpty());
    }

    void noShortcutIsGivenTwice()
    {
        // A key of one widget and the same key of the window are ambiguous as well, and an action
        // takes a key away from a widget that handles it by itself.
        MainWindow window;
        QStringList keys =
            listedKeys(actionShortcuts(window)) + listedKeys({viewShortcuts().first()});
        keys.sort();
        QStringList twice;
        for (int i = 1; i < keys.size(); ++i) {
            if (keys[i] == keys[i - 1])
                twice.append(keys[i]);
        }
        QVERIFY2(twice.isEmpty(), qPrintable(twice.join(", ")));
    }

    /** In menus that have no more entries than there are letters. */
    void noLetterOfAMenuIsGivenTwice()
    {
        MainWindow window;
        QStringList twice;
        for (const QMenu *menu : window.findChildren<QMenu *>()) {
            QSet<QString> letters;
            if (menu->title() == "&File" || menu->title() == "&Traces")
                continue;
            for (const QAction *action : menu->actions()) {
                const QString letter = QKeySequence::mnemonic(action->text()).toString();
                if (letter.isEmpty() || !action->isVisible())
                    continue;
                if (letters.contains(letter))
                    twice.append(menu->title() + " > " + action->text());
                letters.insert(letter);
            }
        }
        QVERIFY2(twice.isEmpty(), qPrintable(twice.join(", ")));
    }

    void groupsByMenu()
    {
        QMainWindow window;
        QMenu *menu = window.menuBar()->addMenu("&Fish && chips");
        QAction *shared = menu->addAction("&Cook…");
        shared->setShortcuts({QKeySequence("Ctrl+1"), QKeySequence("F7")});
        menu->addAction("Without a key");
        menu->addMenu("Sub")->addAction("&Inner")->setShortcut(QKeySequence("Ctrl+2"));
        window.menuBar()->addMenu("Second")->addAction(shared);
        auto *stray = new QAction("Stray", &window);
        stray->setShortcut(QKeySequence("Ctrl+3"));

        QStringList texts;
        for (const ShortcutGroup &group : actionShortcuts(window)) {
            for (const Shortcut &shortcut : group.shortcuts)
                texts.append(group.title + ": " + shortcut.keys + ": " + shortcut.text);
        }
        QCOMPARE(texts, QStringList({"Fish & chips: Ctrl+1, F7: Cook",
                                     "Fish & chips: Ctrl+2: Inner", "In no menu: Ctrl+3: Stray"}));
    }

    void opensOneTable()
    {
        MainWindow window;
        window.setInteractive(false);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QTest::keyClick(window.findChild<Waveforms *>()->view(), Qt::Key_F1);
        auto *dialog = window.findChild<ShortcutsDialog *>();
        QVERIFY(dialog && dialog->isVisible());

        auto *help = window.menuBar()->findChild<QMenu *>("menuHelp");
        help->actions().first()->trigger();
        QCOMPARE(window.findChildren<ShortcutsDialog *>().size(), 1);
        dialog->close();
        QTRY_VERIFY(window.findChildren<ShortcutsDialog *>().isEmpty());
    }
};

QTEST_MAIN(TestShortcuts)
#include "tst_shortcuts.moc"
