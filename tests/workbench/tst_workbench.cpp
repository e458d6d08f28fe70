// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bench/historybox.h"
#include "spectrograms/spectrograms.h"
#include "waveforms/navigation.h"
#include "waveforms/rowlooks.h"

#include "openwindow.h"
#include "pointer.h"

#include <tellarix/client/io/eventarchive.h>
#include <tellarix/qt/records/timescale.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QDockWidget>
#include <QMenu>
#include <QProcess>
#include <QSpinBox>

#include <cmath>

using namespace WaveformTesting;
using namespace Workbench;

namespace {

constexpr double Rate = 20;

struct Outcome
{
    int exitCode;
    QString errors;
};

Outcome runWorkbench(const QStringList &arguments)
{
    QProcess process;
    process.start(NORVU_PROGRAMS "/norvu-workbench", arguments);
    process.waitForFinished(60000);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardError())};
}

} // namespace

class TestWorkbench : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qputenv("XDG_DATA_HOME", _folder.path().toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", _folder.path().toLocal8Bit());
        // A minute of each station, and another one a day later.
        std::vector<RecordCPtr> records;
        for (const char *stream : {"XX.AAA..HHZ", "XX.BBB..HHZ", "XX.CCC..HHZ"}) {
            for (const double start : {0, 86400})
                records.push_back(sawTooth(stream, start, Rate, static_cast<int>(60 * Rate)));
        }
        _file = writeRecords(_folder.filePath("some.mseed"), records);
        QVERIFY(!_file.isEmpty());
    }

    void writesPicture()
    {
        const QString pictures = _folder.filePath("pictures");
        const Outcome outcome = runWorkbench({"--snapshot", pictures, _file});
        QCOMPARE(outcome.exitCode, 0);

        for (const char *name : {"waveforms", "overview", "overview-horizontal", "spectrogram"})
            QCOMPARE(QImage(pictures + '/' + name + ".png").size(), QSize(1600, 900));
        for (const char *name : {"gradients", "gradient-editor", "sources", "widgets"})
            QVERIFY2(QImage(pictures + '/' + name + ".png").width() > 200, name);
        // Every row shows its spectrogram over the whole minute.
        const QImage spectrogram(pictures + "/spectrogram.png");
        int dark = 0;
        for (int x = 0; x < 800; ++x)
            dark += spectrogram.pixelColor(x, 160).lightness() < 100;
        QVERIFY2(dark > 400, qPrintable(QString::number(dark)));
    }

    void tellsWhatCannotBeOpened_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("message");

        const QString pictures = _folder.filePath("pictures");
        QTest::newRow("missing file")
            << QStringList{"--snapshot", pictures, "/missing.mseed", _file} << 1
            << "/missing.mseed";
        QTest::newRow("unknown scheme")
            << QStringList{"--snapshot", pictures, "nonsense://host"} << 1 << "nonsense";
        const QString broken =
            writeText(_folder.filePath("broken.xml"),
                      "<q:quakeml xmlns:q=\"http://quakeml.org/xmlns/quakeml/1.2\" "
                      "xmlns=\"http://quakeml.org/xmlns/bed/1.2\">\n"
                      "<eventParameters publicID=\"smi:local/1\">\n<event ");
        QTest::newRow("truncated events") << QStringList{"--snapshot", pictures, broken} << 1
                                          << "Nothing was stored of broken.xml";
        // Its list can't be loaded, which a box tells.
        const QString address = "sqlite://" + _folder.filePath("damaged.sqlite");
        const IO::DatabaseInterfacePtr database = IO::DatabaseInterface::Open(address);
        DataModel::Event event;
        event.publicID = "a";
        const DataModel::OriginPtr origin(new DataModel::Origin);
        origin->time.setValue(Core::Time(2020, 1, 1));
        event.origins.push_back(origin);
        QVERIFY(IO::EventArchive::createSchema(*database) &&
                IO::EventArchive(database).write(event) &&
                database->execute("drop table Magnitude"));
        QTest::newRow("damaged database")
            << QStringList{"--snapshot", pictures, address} << 1 << "Magnitude";
        QTest::newRow("no folder") << QStringList{_file, "--snapshot"} << 2 << "--snapshot";
        QTest::newRow("unknown option") << QStringList{"--nonsense"} << 2 << "nonsense";
    }

    void tellsWhatCannotBeOpened()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QFETCH(QString, message);

        const Outcome outcome = runWorkbench(arguments);
        QCOMPARE(outcome.exitCode, exitCode);
        QVERIFY2(outcome.errors.contains(message), qPrintable(outcome.errors));
    }

    void needsDisplayForWindows()
    {
        QProcess process;
        QProcessEnvironment environment;
        environment.insert("PATH", qEnvironmentVariable("PATH"));
        process.setProcessEnvironment(environment);
        process.start(NORVU_PROGRAMS "/norvu-workbench", {_file});
        QVERIFY(process.waitForFinished(10000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 2);
        QVERIFY(process.readAllStandardError().contains("--snapshot"));
    }

    void makesRowForEachStream()
    {
        const OpenWindow window({_file});
        QStringList labels;
        for (const Norvu::Gui::Trace *row : window.view->items())
            labels.append(row->label());
        QCOMPARE(labels, QStringList({"XX.AAA..HHZ", "XX.BBB..HHZ", "XX.CCC..HHZ"}));
    }

    void wheelZoomsAboutPointer()
    {
        const OpenWindow window({_file});
        auto *view = window.view;
        Gui::TimeScale *scale = view->timeScale();
        const QPoint pointer(scale->width() / 4, scale->height() / 2);
        const double span = view->tmax() - view->tmin();
        const double before = scale->pixelToValue(pointer.x());
        Pointer::turnWheel(*scale, pointer, {0, 120});

        QVERIFY(view->tmax() - view->tmin() < 0.95 * span);
        QVERIFY(std::abs(scale->pixelToValue(pointer.x()) - before) < 1E-3 * span);
        for (const Norvu::Gui::Trace *row : view->items()) {
            QCOMPARE(row->recordWidget()->tmin(), view->tmin());
            QCOMPARE(row->recordWidget()->timeScale(), scale->scale());
        }
    }

    void goesFromStretchToStretch()
    {
        const OpenWindow window({_file});
        auto *panel = window.waveforms;
        QCOMPARE(panel->stretches().size(), 2);
        QVERIFY(panel->view()->visibleTimeWindow().contains(Start));
        panel->navigation()->showNextStretch();
        QVERIFY(panel->view()->visibleTimeWindow().contains(Start + Core::TimeSpan(86400)));
        panel->navigation()->showNextStretch();
        QVERIFY(panel->view()->visibleTimeWindow().contains(Start + Core::TimeSpan(86400)));
        panel->navigation()->showAllData();
        QVERIFY(panel->view()->visibleTimeWindow().contains(
            Core::TimeWindow(Start, Start + Core::TimeSpan(86400))));
    }

    void reloadsResetRows()
    {
        const OpenWindow window({_file});
        auto *view = window.view;
        Norvu::Gui::Trace *row = view->itemAt(1);
        view->select(row);
        view->resetSelectedTraces();
        QCOMPARE(row->recordWidget()->slotCount(), 0);
        view->loadData();
        QTRY_VERIFY(!window.waveforms->isLoading());
        QCOMPARE(row->recordWidget()->records(0)->size(),
                 view->itemAt(0)->recordWidget()->records(0)->size());
    }

    void rowMenuSwitchesItsRow()
    {
        const OpenWindow window({_file});

        auto *panel = window.waveforms;
        panel->view()->select(panel->view()->itemAt(0));
        Norvu::Gui::Trace *row = panel->view()->itemAt(1);
        QTimer::singleShot(0, [] {
            auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            QVERIFY(menu);
            menu->actions().first()->trigger();
            menu->close();
        });
        const QPoint point = row->recordWidget()->rect().center();
        QContextMenuEvent event(QContextMenuEvent::Mouse, point,
                                row->recordWidget()->mapToGlobal(point));
        QCoreApplication::sendEvent(row->recordWidget(), &event);

        for (Norvu::Gui::Trace *item : panel->view()->items())
            QCOMPARE(panel->findChild<Spectrograms *>()->isShown(item), item == row);
    }

    /** Keys and menus work while data come, no dialog takes the activation along, and what is there
     *  stays when the load is cancelled. */
    void keysWorkWhileLoading()
    {
        std::vector<RecordCPtr> records;
        for (int i = 0; i < 60000; ++i)
            records.push_back(sawTooth(i % 2 ? "XX.AAA..HHZ" : "XX.BBB..HHZ", i / 2, Rate, 20));
        const QString file = writeRecords(_folder.filePath("many.mseed"), records);
        MainWindow window;
        window.setInteractive(false);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        auto *panel = window.findChild<Waveforms *>();
        QVERIFY(window.open({file, file, file}));
        QTRY_VERIFY(panel->view()->visibleTimeWindow().contains(Start));
        QVERIFY(panel->isLoading());
        QVERIFY(!QApplication::activeModalWidget() && window.isActiveWindow());
        QTest::keyClick(&window, Qt::Key_K, Qt::ControlModifier);
        QVERIFY(panel->looks()->isCompact());
        const Core::TimeWindow chosen(Start, Start + Core::TimeSpan(7));
        panel->view()->setVisibleTimeWindow(chosen);

        Task *task = window.bench()->tasks()->running().value(0);
        QVERIFY(task && task->isCanceled() == false);
        QSignalSpy problems(window.bench(), SIGNAL(problemsTold(QStringList)));
        task->cancel();
        QVERIFY(!panel->isLoading());
        QCOMPARE(problems.count(), 1);
        // None of the files that it ended is told to be empty.
        const QString told = problems.value(0).value(0).toStringList().join('\n');
        QVERIFY2(told.contains("not whole: ") && !told.contains("no waveforms"), qPrintable(told));
        QCOMPARE(panel->view()->count(), 2);
        // The user has gone elsewhere meanwhile.
        QVERIFY(
            std::abs((panel->view()->visibleTimeWindow().endTime() - chosen.endTime()).length()) <
            1);
    }

    void inputsGiveTheKeyboardBack()
    {
        OpenWindow window({_file});
        QVERIFY(QTest::qWaitForWindowActive(&window.window));
        auto *input = window.window.findChild<HistoryBox *>();
        const struct
        {
            const char *text;
            Qt::Key key;
            bool leaves;
        } cases[] = {{"bandpass(1, 2", Qt::Key_Return, false},
                     {"bandpass(1, 2)", Qt::Key_Return, true},
                     {"x", Qt::Key_Escape, true}};
        for (const auto &item : cases) {
            QTest::keyClick(&window.window, Qt::Key_F, Qt::ControlModifier);
            QVERIFY(input->hasFocus());
            input->setEditText(item.text);
            QTest::keyClick(input, item.key);
            QCoreApplication::processEvents(); // the same Return arrives more than once
            QCOMPARE(input->hasFocus(), !item.leaves);
            QCOMPARE(window.view->hasFocus(), item.leaves);
        }

        // The wheel changes no box by the way, and a click into messages is no choice of them.
        auto *box = window.window.findChild<QSpinBox *>();
        const int value = box->value();
        Pointer::turnWheel(*box, box->rect().center(), {0, 120});
        QCOMPARE(box->value(), value);
        box->ensurePolished();
        QCOMPARE(box->focusPolicy(), Qt::StrongFocus);
        auto *messages = window.window.findChild<QDockWidget *>("messages");
        messages->show();
        QTest::mouseClick(messages->widget()->findChild<QWidget *>("qt_scrollarea_viewport"),
                          Qt::LeftButton);
        QVERIFY(window.view->hasFocus());
    }

private:
    QTemporaryDir _folder;
    QString _file;
};

QTEST_MAIN(TestWorkbench)
#include "tst_workbench.moc"
