// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bench/historybox.h"
#include "waveforms/rowlooks.h"
#include "waveforms/roworder.h"
#include "waveforms/rowvisibility.h"

#include "openwindow.h"

#include <QAction>
#include <QDockWidget>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QSettings>
#include <QStatusBar>

using namespace WaveformTesting;
using namespace Workbench;

/** What begins and ends a session. */
class TestSession : public QObject, private Recordings
{
    Q_OBJECT

private slots:
    void remembersHowItLooks()
    {
        QSettings().clear();
        {
            MainWindow window;
            window.show();
            QVERIFY(QTest::qWaitForWindowActive(&window));
            // Entries of panels stand where they belong, and once.
            const QList<QAction *> menus = window.menuBar()->actions();
            QVERIFY(menus[1]->menu()->actions().size() > 10);
            for (QAction *entry : menus[1]->menu()->actions())
                QVERIFY2(!menus[0]->menu()->actions().contains(entry), qPrintable(entry->text()));
            auto *waveforms = window.findChild<Waveforms *>();
            for (const char *keys : {"Ctrl+K", "Ctrl+R", "Ctrl+D"})
                QTest::keySequence(waveforms->view(), QKeySequence(keys));
            waveforms->order()->setName("component");
            auto *filter = window.findChild<HistoryBox *>();
            filter->setEditText("bandpass(1, 3)");
            QTest::keyClick(filter, Qt::Key_Return);
            QVERIFY(window.close());
        }
        MainWindow window;
        window.restoreSettings();
        const auto *waveforms = window.findChild<Waveforms *>();
        QVERIFY(waveforms->looks()->isCompact() &&
                !waveforms->visibility()->hideEmptyAction()->isChecked());
        QCOMPARE(waveforms->order()->name(), QString("component"));
        QCOMPARE(window.findChild<HistoryBox *>()->currentText(), QString("bandpass(1, 3)"));
        QVERIFY(waveforms->view()->hasFilter() && waveforms->view()->isFilterEnabled());
    }

    void opensFoldersAndRecentFiles()
    {
        QSettings().clear();
        QVERIFY(QDir(folder().path()).mkpath("archive/deep"));
        write("archive/one.mseed", {"XX.ONE..HHZ"}, {0});
        write("archive/deep/two.mseed", {"XX.TWO..HHZ"}, {0});
        QFile document(folder().filePath("archive/README.md"));
        QVERIFY(document.open(QIODevice::WriteOnly) && document.write("Two stations.\n") > 0);
        document.close();
        {
            MainWindow window;
            QSignalSpy progress(window.bench()->tasks(), SIGNAL(started(Workbench::Task *)));
            window.show();
            openAll(window, *window.bench(), {folder().filePath("archive")});
            QCOMPARE(window.findChild<Waveforms *>()->view()->count(), 2);
            QCOMPARE(progress.count(), 1);
            QVERIFY(!window.findChild<QDockWidget *>("messages")->isVisible());
        }
        MainWindow window;
        window.show();
        QMenu *recent = nullptr;
        for (QMenu *menu : window.findChildren<QMenu *>()) {
            if (menu->title() == "Open &recent")
                recent = menu;
        }
        QVERIFY(recent);
        emit recent->aboutToShow();
        QCOMPARE(recent->actions().size(), 1);
        recent->actions().first()->trigger();
        QTRY_COMPARE(window.findChild<Waveforms *>()->view()->count(), 2);
        QTRY_VERIFY(window.bench()->tasks()->running().isEmpty());
    }

    void quitsWhileLoading()
    {
        const QString file = write("big.mseed", {"XX.BIG..HHZ"}, {0}, 100, 20000);
        MainWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QVERIFY(window.open({file, file, first()}));
        QVERIFY(window.findChild<Waveforms *>()->isLoading());
        QTest::keySequence(&window, QKeySequence("Ctrl+Q"));
        QVERIFY(!window.isVisible() && !QApplication::activeModalWidget());

        MainWindow next;
        next.restoreSettings();
        QCOMPARE(next.statusBar()->currentMessage(),
                 QString("Cut short by quitting: Loading (0 of 3 files)"));
        QSettings().clear();
    }

    void tellsWhatToOpen()
    {
        OpenWindow window({first()});
        QLabel *hint = nullptr;
        for (QLabel *label :
             window.waveforms->findChildren<QLabel *>(QString(), Qt::FindDirectChildrenOnly)) {
            if (label->text().contains("Ctrl+O"))
                hint = label;
        }
        QVERIFY(hint && !hint->isVisible());
        QTest::keySequence(window.view, QKeySequence(QKeySequence::Close));
        QVERIFY(hint->isVisible());
        QCOMPARE(hint->size(), window.waveforms->size());
    }
};

QTEST_MAIN(TestSession)
#include "tst_session.moc"
