// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bench/darkpalette.h"
#include "bench/historybox.h"
#include "waveforms/rowcolors.h"
#include "waveforms/rowgroups.h"
#include "waveforms/rowlooks.h"
#include "waveforms/rowname.h"
#include "waveforms/roworder.h"
#include "waveforms/rowvisibility.h"

#include "openwindow.h"
#include "pointer.h"

#include <norvu/gui/datetimeedit.h>
#include <norvu/gui/multitracewidget.h>
#include <tellarix/qt/records/timescale.h>

#include <QAbstractButton>
#include <QAction>
#include <QClipboard>
#include <QLineEdit>
#include <QMenu>

using namespace WaveformTesting;
using namespace Workbench;

namespace {

QStringList shownLabels(const TraceView &view)
{
    QStringList labels;
    for (const Trace *row : view.items()) {
        if (row->isVisible())
            labels.append(row->label());
    }
    return labels;
}

/** Ink of traces in a strip of a row's canvas. */
bool hasInk(Gui::RecordWidget *row, const QRect &strip)
{
    const QImage picture = row->grab(strip).toImage();
    for (int x = 0; x < picture.width(); ++x) {
        for (int y = 0; y < picture.height(); ++y) {
            if (picture.pixelColor(x, y).lightness() < 100)
                return true;
        }
    }
    return false;
}

} // namespace

/** Which rows are shown, where, and what they look like. */
class TestRows : public QObject, private Recordings
{
    Q_OBJECT

private slots:
    void rowsWithoutDataGiveWay()
    {
        OpenWindow window({first(), write("old.mseed", {"XX.OLD..HHZ"}, {-Year}),
                           write("both.mseed", {"XX.ZZZ..HHZ"}, {-Year, Year})});
        const QStringList early{"XX.OLD..HHZ", "XX.ZZZ..HHZ"};
        const QStringList late{"XX.AAA..HHZ", "XX.BBB..HHZ", "XX.ZZZ..HHZ"};
        QAbstractButton *notice = window.waveforms->visibility()->notice();
        QCOMPARE(shownLabels(*window.view), early);
        QVERIFY(notice->isVisible() && notice->text().startsWith("2 rows without data here"));
        for (int i = 0; i < 2; ++i)
            QTest::keyClick(window.view, Qt::Key_PageDown);
        QCOMPARE(shownLabels(*window.view), late);

        // Arrows pass over what isn't shown, and the overview has no room for it.
        window.view->select(window.view->itemAt(1));
        QTest::keyClick(window.view, Qt::Key_Down);
        QCOMPARE(window.view->currentItem()->label(), late.last());
        QTest::keyClick(window.view, Qt::Key_O);
        auto *overview = window.window.findChild<Norvu::Gui::MultiTraceWidget *>();
        overview->grab();
        QVERIFY(3 * (window.row(0)->traceInfo(0, false)->height + 4) >= overview->height());
        QTest::keyClick(window.view, Qt::Key_O);

        QTest::mouseClick(notice, Qt::LeftButton);
        QCOMPARE(shownLabels(*window.view).size(), 4);
        QVERIFY(!notice->isVisible());
        // Between the stretches all rows are as good as each other.
        QTest::keyClick(window.view, Qt::Key_D, Qt::ControlModifier);
        QCOMPARE(shownLabels(*window.view), late);
        window.view->setVisibleTimeWindow(WaveformTesting::window(0.4 * Year, 0.5 * Year));
        QCoreApplication::processEvents();
        QCOMPARE(shownLabels(*window.view), late);
    }

    void rowsStayWhileTheTimeScaleIsDragged()
    {
        OpenWindow window({write("chain.mseed", {"XX.AAA..HHZ"}, {0}),
                           write("link.mseed", {"XX.BBB..HHZ"}, {90})});
        QWidget *scale = window.view->timeScale();
        window.view->setVisibleTimeWindow(WaveformTesting::window(0, 80));
        QTRY_COMPARE(shownLabels(*window.view), QStringList{"XX.AAA..HHZ"});
        QTest::mousePress(scale, Qt::LeftButton, Qt::NoModifier, {scale->width() / 2, 5});
        Pointer::move(*scale, {0.1 * scale->width(), 5}, Qt::LeftButton);
        QVERIFY(window.view->visibleTimeWindow().endTime() > Start + Core::TimeSpan(95));
        QTest::qWait(50); // nothing is to come of it
        QCOMPARE(shownLabels(*window.view), QStringList{"XX.AAA..HHZ"});
        QTest::mouseRelease(scale, Qt::LeftButton, Qt::NoModifier, {scale->width() / 10, 5});
        QTRY_COMPARE(shownLabels(*window.view), QStringList({"XX.AAA..HHZ", "XX.BBB..HHZ"}));
    }

    void rowsThatFilterDoesNotFitSaySo()
    {
        OpenWindow window({write("fast.mseed", {"XX.FAST..HHZ"}, {0}, 100),
                           write("slow.mseed", {"XX.SLOW..LHZ"}, {0}, 1)});
        auto *box = window.window.findChild<HistoryBox *>();
        const QColor plain = box->lineEdit()->palette().color(QPalette::Text);
        const auto apply = [&](const char *text) {
            QTest::keyClick(&window.window, Qt::Key_F, Qt::ControlModifier);
            QTest::keyClicks(box->lineEdit(), text); // in the place of the former one
            QTest::keyClick(box, Qt::Key_Return);
            QCoreApplication::processEvents();
        };
        QVERIFY(box->toolTip().contains("<b>bandpass(lower, upper, order=4)</b>"));
        apply("bandpass(1, 8)");
        QTRY_VERIFY(window.row(0)->filteredRecords(0));
        const Gui::RecordWidget *slow = window.row(1);
        QCOMPARE(slow->displayedRecords(0), slow->records(0));
        QVERIFY(slow->areTracesPale() &&
                window.view->itemAt(1)->labelText().contains("Not filtered: "));
        QTest::keyClick(window.view, Qt::Key_K, Qt::ControlModifier);
        QVERIFY(slow->toolTip().startsWith("Not filtered: "));
        QVERIFY(slow->recordLabel(0).isEmpty()); // would lie over the trace
        QCOMPARE(slow->findChild<RowName *>()->text(),
                 QString("XX.SLOW..LHZ  raw: Nyquist 0.5 Hz"));
        QVERIFY(!window.row(0)->areTracesPale() && window.row(0)->toolTip().isEmpty());
        QTest::keyClick(window.view, Qt::Key_K, Qt::ControlModifier);
        QVERIFY(slow->toolTip().isEmpty());
        QVERIFY(box->lineEdit()->palette().color(QPalette::Text) != plain);
        QVERIFY(box->toolTip().contains("Streams at 1 Hz"));

        // What comes later is looked at too.
        window.open(write("slower.mseed", {"XX.SLOW..MHZ"}, {0}, 2));
        QVERIFY(window.row(2)->areTracesPale() && !window.row(2)->filter());
        QTest::keyClick(window.view, Qt::Key_F);
        QVERIFY(!slow->areTracesPale() &&
                !window.view->itemAt(1)->labelText().contains("Not filtered"));
        apply("lowpass(0.1)");
        QTRY_VERIFY(slow->filteredRecords(0));
        QVERIFY(!slow->areTracesPale());
        QCOMPARE(box->lineEdit()->palette().color(QPalette::Text), plain);
    }

    void namesStandBesideTraces()
    {
        OpenWindow window({write("wide.mseed", {"XX.LONGN.00.HHZ", "XX.B..HHZ"}, {0})});
        QTest::keyClick(window.view, Qt::Key_K, Qt::ControlModifier);
        QVERIFY(window.waveforms->looks()->isCompact());
        QTRY_VERIFY(window.view->nameWidth() > 0);
        const auto *scale = window.view->timeScale();
        for (int i = 0; i < 2; ++i) {
            Gui::RecordWidget *row = window.row(i);
            const QRect canvas = row->canvasRect();
            QTRY_COMPARE(row->mapTo(window.view, canvas.topLeft()).x(),
                         scale->mapTo(window.view, QPoint(0, 0)).x());
            QVERIFY(hasInk(row, {0, 0, window.view->nameWidth(), row->height()}));
            QVERIFY(row->recordLabel(0).isEmpty());
        }

        // A row that is loaded again keeps its name.
        window.view->select(window.view->itemAt(1));
        window.view->resetSelectedTraces();
        QTest::keyClick(window.view, Qt::Key_F5);
        QTRY_VERIFY(!window.waveforms->isLoading());
        QVERIFY(!window.row(1)->records(0)->isEmpty());
        window.view->clearSelection();
        QVERIFY(hasInk(window.row(1), {0, 0, 60, window.row(1)->height()}));
        // In a narrow window they give way to the traces, as scales beside pictures do.
        QTest::keyClick(window.view, Qt::Key_S);
        window.window.resize(1400, 500);
        QTRY_VERIFY(window.view->extraSpacing() > 30);
        window.window.resize(700, 500);
        QTRY_VERIFY(window.view->extraSpacing() < 30);
        QTRY_VERIFY(4 * window.view->nameWidth() <= window.view->width());
        QTest::keyClick(window.view, Qt::Key_S);
        QTest::keyClick(window.view, Qt::Key_K, Qt::ControlModifier);
        QCOMPARE(window.view->nameWidth(), 0);
    }

    void compactFollowsNumberOfRows()
    {
        QStringList many;
        for (int i = 0; i < 12; ++i)
            many.append(QString("XX.S%1..HHZ").arg(i));
        const QString file = write("many.mseed", many, {0});
        OpenWindow window({first()});
        QVERIFY(!window.waveforms->looks()->isCompact());
        window.open(file);
        QVERIFY(window.waveforms->looks()->isCompact());
        QTRY_COMPARE(window.row(0)->parentWidget()->height(),
                     window.row(13)->parentWidget()->height());

        // What the user has chosen stays.
        QTest::keyClick(window.view, Qt::Key_K, Qt::ControlModifier);
        QVERIFY(!window.waveforms->looks()->isCompact());
        window.open(write("more.mseed", {"XX.MORE..HHZ"}, {0}));
        QVERIFY(!window.waveforms->looks()->isCompact());
    }

    void rowsAreSorted()
    {
        const std::pair<const char *, const char *> rows[] = {
            {"opened", "YY.AAA..HHZ XX.BBB..HHN XX.BBB..HHZ XX.AAA..HHN"},
            {"name", "XX.AAA..HHN XX.BBB..HHN XX.BBB..HHZ YY.AAA..HHZ"},
            {"station", "XX.AAA..HHN YY.AAA..HHZ XX.BBB..HHN XX.BBB..HHZ"},
            {"component", "XX.AAA..HHN XX.BBB..HHN XX.BBB..HHZ YY.AAA..HHZ"}};
        const QString file =
            write("first4.mseed", {"YY.AAA..HHZ", "XX.BBB..HHN", "XX.BBB..HHZ"}, {0});
        for (const auto &[order, labels] : rows) {
            OpenWindow window({file});
            for (QAction *action : window.waveforms->order()->menu()->actions()) {
                if (action->data() == order)
                    action->trigger();
            }
            // Rows that come later find their places.
            window.open(write("last4.mseed", {"XX.AAA..HHN"}, {0}));
            QCOMPARE(shownLabels(*window.view).join(' '), QString(labels));
        }
    }

    void selectedRowsAreHiddenAndClosed()
    {
        const QString file = write("abc.mseed", {"XX.AAA..HHZ", "XX.BBB..HHZ", "XX.CCC..HHZ"}, {0});
        OpenWindow window({file});
        const auto press = [&](int row, const QKeySequence &keys) {
            QTest::mouseClick(window.row(row), Qt::LeftButton, Qt::NoModifier,
                              window.row(row)->canvasRect().center());
            QTest::keySequence(window.view, keys);
        };
        press(1, QKeySequence("Ctrl+C"));
        QCOMPARE(QGuiApplication::clipboard()->text(), QString("XX.BBB..HHZ"));
        QTest::keySequence(window.view, QKeySequence("Ctrl+H"));
        QCOMPARE(shownLabels(*window.view), QStringList({"XX.AAA..HHZ", "XX.CCC..HHZ"}));
        QCOMPARE(window.waveforms->visibility()->notice()->text().section(" –", 0, 0),
                 QString("1 row hidden"));
        // Each can be called back by its name.
        QTest::keyClick(window.view, Qt::Key_Home);
        QTest::keySequence(window.view, QKeySequence("Ctrl+H"));
        QMenu *hidden = window.waveforms->visibility()->hiddenMenu();
        emit hidden->aboutToShow();
        for (QAction *action : hidden->actions()) {
            if (action->text() == "XX.AAA..HHZ")
                action->trigger();
        }
        QCOMPARE(shownLabels(*window.view), QStringList({"XX.AAA..HHZ", "XX.CCC..HHZ"}));
        // What is hidden isn't closed along with all others, and what is closed stays so.
        for (const char *keys : {"Ctrl+A", "Shift+Del", "F5"})
            QTest::keySequence(window.view, QKeySequence(keys));
        QTRY_VERIFY(!window.waveforms->isLoading());
        QCOMPARE(window.view->count(), 1);
        QTest::keySequence(window.view, QKeySequence("Ctrl+Shift+H"));
        QCOMPARE(shownLabels(*window.view), QStringList{"XX.BBB..HHZ"});
        window.open(file);
        QCOMPARE(window.view->count(), 3);
    }

    void stationsAreGroupedAndFolded()
    {
        OpenWindow window(
            {write("first6.mseed", {"XX.AAA..HHE", "XX.AAA..HHZ", "XX.BBB..HHZ"}, {0})});
        window.waveforms->order()->setName("component");
        QTest::keyClick(window.view, Qt::Key_G);
        window.open(write("last6.mseed", {"XX.BBB..HHE"}, {0}));
        const QStringList all{"XX.AAA..HHE", "XX.AAA..HHZ", "XX.BBB..HHE", "XX.BBB..HHZ"};
        QCOMPARE(shownLabels(*window.view), all);
        const auto titles = [&] {
            QStringList texts;
            for (const Trace *row : window.view->items()) {
                auto *title = qobject_cast<QAbstractButton *>(row->heading());
                texts.append(title && title->isVisible() ? title->text().section(' ', 0, 0) : "");
            }
            return texts.join(' ');
        };
        QCOMPARE(titles(), QString("XX.AAA  XX.BBB "));

        QTest::mouseClick(window.view->itemAt(2)->heading(), Qt::LeftButton);
        QCOMPARE(shownLabels(*window.view), all.mid(0, 3));
        QVERIFY(!window.waveforms->visibility()->notice()->isVisible());
        QTest::keySequence(window.view, QKeySequence("Ctrl+Alt+G"));
        QCOMPARE(shownLabels(*window.view), QStringList({all[0], all[2]}));
        // The title goes to the row that stands for the station now.
        window.view->select(window.view->itemAt(0));
        QTest::keySequence(window.view, QKeySequence("Ctrl+H"));
        QCOMPARE(shownLabels(*window.view), QStringList({all[1], all[2]}));
        QCOMPARE(titles(), QString(" XX.AAA XX.BBB "));
        window.view->select(window.view->itemAt(2));
        QTest::keySequence(window.view, QKeySequence("Shift+G"));
        QCOMPARE(shownLabels(*window.view), all.mid(1));
        QTest::keyClick(window.view, Qt::Key_G);
        QCOMPARE(titles().trimmed(), QString());
    }

    void componentsHaveColors()
    {
        OpenWindow window({write("zne.mseed", {"XX.AAA..HHE", "XX.AAA..HHZ", "XX.BBB..HHZ"}, {0})});
        window.window.grab();
        const QColor plain = window.row(0)->recordPen(0).color();
        QAction *colors = window.waveforms->colors()->action();
        colors->trigger();
        window.window.grab(); // painting keeps them
        QVERIFY(window.row(0)->recordPen(0).color() != window.row(1)->recordPen(0).color());
        QCOMPARE(window.row(1)->recordPen(0), window.row(2)->recordPen(0));
        // They stand out from either background.
        const QColor onLight = window.row(1)->recordPen(0).color();
        auto *time = window.window.findChild<Norvu::Gui::DateTimeEdit *>();
        time->grab(); // with its own style sheet it has taken over the colours
        setDarkColors(true);
        QVERIFY(time->palette().color(QPalette::Base).lightness() < 128);
        const QColor onDark = window.row(1)->recordPen(0).color();
        setDarkColors(false);
        QVERIFY(onDark.lightness() > onLight.lightness() + 50);
        colors->trigger();
        QCOMPARE(window.row(1)->recordPen(0).color(), plain);
    }
};

QTEST_MAIN(TestRows)
#include "tst_rows.moc"
