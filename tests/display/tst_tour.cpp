// SPDX-License-Identifier: LGPL-3.0-or-later

#include "../workbench/openwindow.h"
#include "bench/historybox.h"
#include "mainwindow.h"
#include "user.h"
#include "waveforms/datastrip.h"
#include "waveforms/rowlooks.h"
#include "waveforms/rowvisibility.h"
#include "waveforms/waveforms.h"

#include <norvu/gui/multitracewidget.h>
#include <tellarix/qt/records/timescale.h>

#include <QAbstractButton>
#include <QClipboard>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTabWidget>

using namespace WaveformTesting;
using namespace Workbench;

namespace {

constexpr int Rounds = 50;

/** A window that shows nothing yet, and what steps look at in it. */
struct Desk
{
    Desk() : waveforms(window.findChild<Waveforms *>()), view(waveforms->view())
    {
        window.resize(1400, 900);
        window.show();
    }

    double length() const { return view->tmax() - view->tmin(); }
    double start() const { return (view->visibleTimeWindow().startTime() - Start).length(); }
    Gui::RecordWidget *row(int index) const { return view->itemAt(index)->recordWidget(); }
    bool isIdle() { return window.bench()->tasks()->running().isEmpty(); }
    bool hasFocusIn(const QWidget *part) const
    {
        const QWidget *focus = QApplication::focusWidget();
        return focus && (focus == part || part->isAncestorOf(focus));
    }
    QWidget *overview() const { return window.findChild<Norvu::Gui::MultiTraceWidget *>(); }

    MainWindow window;
    Waveforms *waveforms;
    TraceView *view;
};

/** Opens a file as a user does who knows its name. */
void openByUrl(User &user, Desk &desk, const QString &file, int rows)
{
    user.press("ctrl+l");
    user.sees("a dialog for the URL", [] {
        const QWidget *dialog = QApplication::activeModalWidget();
        return dialog && dialog->isActiveWindow() && dialog->findChild<QLineEdit *>()->hasFocus();
    });
    user.type(file);
    user.press("Return");
    user.sees(QString("%1 rows").arg(rows),
              [&] { return desk.view->count() == rows && desk.isIdle(); });
}

} // namespace

/** The ways of an analyst, with keys and mouse of a real display under a window manager. */
class TestTour : public QObject, private Recordings
{
    Q_OBJECT

private slots:
    void init() { QSettings().clear(); }

    /** However often it is started: no dialog takes the activation along. */
    void keysWorkOnceAFileIsLoaded()
    {
        for (int round = 1; round <= Rounds; ++round) {
            QSettings().clear();
            Desk desk;
            const QStringList missed = User::takes([&](User &user) {
                user.sees("an active window", [&] { return desk.window.isActiveWindow(); });
                openByUrl(user, desk, _first, 2);
                const double start = User::ask([&] { return desk.start(); });
                const bool wasCompact =
                    User::ask([&] { return desk.waveforms->looks()->isCompact(); });
                user.press("o");
                user.sees("the overview", [&] { return desk.overview()->isVisible(); });
                user.press("Next");
                user.sees("the next stretch", [&] { return desk.start() > start + Year / 2; });
                user.press("ctrl+k");
                user.sees("the other form of rows",
                          [&] { return desk.waveforms->looks()->isCompact() != wasCompact; });
            });
            QVERIFY2(missed.isEmpty(),
                     qPrintable(QString("round %1: %2").arg(round).arg(missed.join(", "))));
        }
    }

    void viewStaysAndLeadsBack()
    {
        verify([this](User &user, Desk &desk) {
            openByUrl(user, desk, _first, 2);
            user.press("Next");
            user.sees("the second stretch", [&] { return desk.start() > Year / 2; });
            user.press("greater");
            const double before = User::ask([&] { return desk.start(); });
            openByUrl(user, desk, _second, 3);
            user.sees("the view as it was", [&] { return std::abs(desk.start() - before) < 1; });
            openByUrl(user, desk, _elsewhere, 4);
            user.sees("the new data", [&] { return desk.start() < -Year / 2; });
            user.sees("only the row with data", [&] { return !desk.row(0)->isVisible(); });
            user.press("alt+Left");
            user.sees("the view before", [&] { return std::abs(desk.start() - before) < 1; });
            user.press("ctrl+0");
            user.press("Next");
            user.sees("the first stretch of all data",
                      [&] { return desk.start() < -Year / 2 && desk.length() < 1000; });
        });
    }

    void inputsGiveTheKeyboardBack()
    {
        verify([this](User &user, Desk &desk) {
            openByUrl(user, desk, _first, 2);
            auto *filter = desk.window.findChild<HistoryBox *>();
            user.press("ctrl+f");
            user.sees("the filter box in use", [&] { return desk.hasFocusIn(filter); });
            user.type("bandpass(1, 30)");
            user.press("Return");
            user.sees("the rows in use again", [&] { return desk.hasFocusIn(desk.view); });
            user.sees("rows that say why they stay raw",
                      [&] { return desk.row(0)->areTracesPale(); });
            user.moveTo(filter, {0.5, 0.5});
            user.wheel(-3);
            user.press("o");
            user.sees("the overview", [&] { return desk.overview()->isVisible(); });
            user.sees("the filter as it was",
                      [&] { return filter->currentText() == "bandpass(1, 30)"; });
            user.press("ctrl+f");
            user.sees("the filter box in use", [&] { return desk.hasFocusIn(filter); });
            user.press("Escape");
            user.sees("the rows in use", [&] { return desk.hasFocusIn(desk.view); });

            User::ask([&] { return desk.window.bench()->tell({"a message"}), true; });
            auto *messages = desk.window.findChild<QWidget *>("messages");
            user.sees("the messages", [&] { return messages->isVisible(); });
            user.click(messages);
            user.press("o");
            user.sees("no overview any more", [&] { return !desk.overview()->isVisible(); });
        });
    }

    void timeFollowsTheMouse()
    {
        verify([this](User &user, Desk &desk) {
            openByUrl(user, desk, _first, 2);
            const double length = User::ask([&] { return desk.length(); });
            user.moveTo(desk.row(0), {0.7, 0.5});
            user.wheel(3, "ctrl");
            user.sees("less time", [&] { return desk.length() < 0.8 * length; });
            const double start = User::ask([&] { return desk.start(); });
            user.wheel(-2, "shift");
            user.sees("later times", [&] { return desk.start() > start; });
            user.press("ctrl+0");
            user.press("Next");
            user.sees("a whole stretch", [&] { return std::abs(desk.length() - length) < 5; });

            user.drag(desk.row(0), {0.5, 0.5}, {0.8, 0.5}, "shift");
            user.sees("a selected span",
                      [&] { return !desk.row(1)->selectedTimeWindow().isEmpty(); });
            user.press("Return");
            user.sees("the span alone", [&] { return desk.length() < 0.5 * length; });
            user.press("alt+Left");
            user.sees("all of it", [&] { return desk.length() > 0.9 * length; });

            auto *strip = desk.window.findChild<DataStrip *>();
            user.drag(strip, {0.01, 0.5}, {0.9, 0.5});
            user.sees("late times", [&] { return desk.start() > Year / 2; });
            user.press("ctrl+g");
            user.sees("a dialog for the time", [] { return QApplication::activeModalWidget(); });
            user.type("2024-01-05 10:12");
            user.press("Return");
            user.sees("that time", [&] {
                return desk.view->visibleTimeWindow().contains(Start + Core::TimeSpan(48));
            });
        });
    }

    void rowsAreAtHand()
    {
        verify([this](User &user, Desk &desk) {
            openByUrl(user, desk, _first, 2);
            openByUrl(user, desk, _second, 3);
            user.click(desk.row(1));
            user.press("ctrl+c");
            user.sees("the id of the stream",
                      [] { return QGuiApplication::clipboard()->text() == "XX.BBB..HHZ"; });
            user.press("ctrl+h");
            user.sees("a row less", [&] { return !desk.row(1)->isVisible(); });
            user.click(desk.waveforms->visibility()->notice());
            user.sees("all rows", [&] { return desk.row(1)->isVisible(); });
            user.click(desk.row(0));
            user.press("shift+Delete");
            user.sees("two rows", [&] { return desk.view->count() == 2; });
        });
    }

private:
    static void verify(const std::function<void(User &, Desk &)> &steps)
    {
        Desk desk;
        const QStringList missed = User::takes([&](User &user) {
            user.sees("an active window", [&] { return desk.window.isActiveWindow(); });
            steps(user, desk);
        });
        QVERIFY2(missed.isEmpty(), qPrintable(missed.join(", ")));
    }

    const QString _first = first();
    const QString _second = write("second.mseed", {"XX.CCC..HHZ"}, {0, Year});
    const QString _elsewhere = write("elsewhere.mseed", {"XX.DDD..HHZ"}, {-Year});
};

QTEST_MAIN(TestTour)
#include "tst_tour.moc"
