// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bench/darkpalette.h"
#include "bench/historybox.h"
#include "waveforms/datastrip.h"
#include "waveforms/rowcolors.h"
#include "waveforms/rowgroups.h"
#include "waveforms/rowlooks.h"
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
#include <QDockWidget>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QScrollArea>
#include <QSettings>
#include <QStatusBar>

using namespace WaveformTesting;
using namespace Workbench;

namespace {

constexpr double Minute = 60;
constexpr double Year = 365 * 86400;

bool isNear(const Core::TimeWindow &a, const Core::TimeWindow &b, double tolerance = 0.02)
{
    const double pixel = tolerance * b.length().length();
    return std::abs((a.startTime() - b.startTime()).length()) < pixel &&
           std::abs((a.endTime() - b.endTime()).length()) < pixel;
}

QStringList shownLabels(const TraceView &view)
{
    QStringList labels;
    for (const Trace *row : view.items()) {
        if (row->isVisible())
            labels.append(row->label());
    }
    return labels;
}

/** What the status bar tells of the time in view. */
QString rangeText(const OpenWindow &window)
{
    QString text;
    for (const QLabel *label : window.window.statusBar()->findChildren<QLabel *>()) {
        if (label->text().contains(" UTC"))
            text = label->text();
    }
    return text;
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

/** The ways of an analyst at the waveforms, by keys and mouse. */
class TestWaveformTour : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void viewStaysWithFilesThatShowInIt();
    void viewGoesToFilesFromElsewhere();
    void rowsWithoutDataGiveWay();
    void rowsStayWhileTheTimeScaleIsDragged();
    void pagesFromAllData();
    void rowsThatFilterDoesNotFitSaySo();
    void namesStandBesideTraces();
    void compactFollowsNumberOfRows();
    void wheelOverTracesZoomsAndPans();
    void spanIsZoomedTo_data();
    void spanIsZoomedTo();
    void shiftAndClickSelectRows();
    void zoomingOutEndsAtAllData();
    void stripPansAndZooms();
    void goesToTime_data();
    void goesToTime();
    void tellsWhatIsUnderThePointer();
    void rowsAreSorted_data();
    void rowsAreSorted();
    void selectedRowsAreHiddenAndClosed();
    void stationsAreGroupedAndFolded();
    void componentsHaveColors();
    void remembersHowItLooks();
    void opensFoldersAndRecentFiles();
    void quitsWhileLoading();
    void tellsWhatToOpen();

private:
    /** Opens one more file, and waits until it is there. */
    void openMore(OpenWindow &window, const QString &file)
    {
        openAll(window.window, *window.window.bench(), {file});
    }
    QString write(const QString &name, const QStringList &streams, const QVector<double> &starts,
                  double rate = 20, double seconds = 2 * Minute)
    {
        std::vector<RecordCPtr> records;
        for (const QString &stream : streams) {
            for (const double start : starts)
                records.push_back(
                    sawTooth(stream.toStdString(), start, rate, static_cast<int>(seconds * rate)));
        }
        return writeRecords(_folder.filePath(name), records);
    }

    QTemporaryDir _folder;
    QString _first;
};

void TestWaveformTour::initTestCase()
{
    qputenv("XDG_CONFIG_HOME", _folder.path().toLocal8Bit());
    _first = write("first.mseed", {"XX.AAA..HHZ", "XX.BBB..HHZ"}, {0, Year});
    QVERIFY(!_first.isEmpty());
}

void TestWaveformTour::viewStaysWithFilesThatShowInIt()
{
    OpenWindow window({_first});
    const Core::TimeWindow chosen = WaveformTesting::window(Year + 20, Year + 50);
    window.view->setVisibleTimeWindow(chosen);
    openMore(window, write("same.mseed", {"XX.CCC..HHZ"}, {0, Year}));
    QCOMPARE(window.view->count(), 3);
    QVERIFY(isNear(window.view->visibleTimeWindow(), chosen));
}

void TestWaveformTour::viewGoesToFilesFromElsewhere()
{
    OpenWindow window({_first});
    QTest::keyClick(window.view, Qt::Key_PageDown);
    const Core::TimeWindow before = window.view->visibleTimeWindow();
    const Core::TimeWindow later = WaveformTesting::window(2 * Year, 2 * Year + 2 * Minute);
    openMore(window, write("later.mseed", {"XX.CCC..HHZ"}, {2 * Year}));
    QVERIFY(isNear(window.view->visibleTimeWindow(), later));

    QTest::keyClick(window.view, Qt::Key_Left, Qt::AltModifier);
    QVERIFY(isNear(window.view->visibleTimeWindow(), before));
    QTest::keyClick(window.view, Qt::Key_Right, Qt::AltModifier);
    QVERIFY(isNear(window.view->visibleTimeWindow(), later));
    // Whoever goes elsewhere from the middle of the history begins a new one there.
    QTest::keyClick(window.view, Qt::Key_Left, Qt::AltModifier);
    QTest::keyClick(window.view, Qt::Key_PageUp);
    QTest::keyClick(window.view, Qt::Key_Right, Qt::AltModifier);
    QVERIFY(isNear(window.view->visibleTimeWindow(), WaveformTesting::window(0, 2 * Minute)));
}

void TestWaveformTour::rowsWithoutDataGiveWay()
{
    OpenWindow window({_first, write("old.mseed", {"XX.OLD..HHZ"}, {-Year}),
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

void TestWaveformTour::rowsStayWhileTheTimeScaleIsDragged()
{
    OpenWindow window(
        {write("chain.mseed", {"XX.AAA..HHZ"}, {0}), write("link.mseed", {"XX.BBB..HHZ"}, {90})});
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

void TestWaveformTour::pagesFromAllData()
{
    OpenWindow window({_first});
    const Core::TimeWindow stretches[] = {WaveformTesting::window(0, 2 * Minute),
                                          WaveformTesting::window(Year, Year + 2 * Minute)};
    QTest::keyClick(window.view, Qt::Key_0, Qt::ControlModifier);
    QTest::keyClick(window.view, Qt::Key_PageDown);
    QVERIFY(isNear(window.view->visibleTimeWindow(), stretches[0]));
    QVERIFY(rangeText(window).endsWith("stretch 1 of 2"));
    QTest::keyClick(window.view, Qt::Key_0, Qt::ControlModifier);
    QVERIFY(rangeText(window).endsWith("stretches 1 to 2 of 2"));
    QTest::keyClick(window.view, Qt::Key_PageUp);
    QVERIFY(isNear(window.view->visibleTimeWindow(), stretches[1]));
}

void TestWaveformTour::rowsThatFilterDoesNotFitSaySo()
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
    QVERIFY(!window.row(0)->areTracesPale() && window.row(0)->toolTip().isEmpty());
    QTest::keyClick(window.view, Qt::Key_K, Qt::ControlModifier);
    QVERIFY(slow->toolTip().isEmpty());
    QVERIFY(box->lineEdit()->palette().color(QPalette::Text) != plain);
    QVERIFY(box->toolTip().contains("Streams at 1 Hz"));

    // What comes later is looked at too.
    openMore(window, write("slower.mseed", {"XX.SLOW..MHZ"}, {0}, 2));
    QVERIFY(window.row(2)->areTracesPale() && !window.row(2)->filter());
    QTest::keyClick(window.view, Qt::Key_F);
    QVERIFY(!slow->areTracesPale() &&
            !window.view->itemAt(1)->labelText().contains("Not filtered"));
    apply("lowpass(0.1)");
    QTRY_VERIFY(slow->filteredRecords(0));
    QVERIFY(!slow->areTracesPale());
    QCOMPARE(box->lineEdit()->palette().color(QPalette::Text), plain);
}

void TestWaveformTour::namesStandBesideTraces()
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
    QTest::keyClick(window.view, Qt::Key_K, Qt::ControlModifier);
    QCOMPARE(window.view->nameWidth(), 0);
}

void TestWaveformTour::compactFollowsNumberOfRows()
{
    QStringList many;
    for (int i = 0; i < 12; ++i)
        many.append(QString("XX.S%1..HHZ").arg(i));
    const QString file = write("many.mseed", many, {0});
    OpenWindow window({_first});
    QVERIFY(!window.waveforms->looks()->isCompact());
    openMore(window, file);
    QVERIFY(window.waveforms->looks()->isCompact());
    QTRY_COMPARE(window.row(0)->parentWidget()->height(), window.row(13)->parentWidget()->height());

    // What the user has chosen stays.
    QTest::keyClick(window.view, Qt::Key_K, Qt::ControlModifier);
    QVERIFY(!window.waveforms->looks()->isCompact());
    openMore(window, write("more.mseed", {"XX.MORE..HHZ"}, {0}));
    QVERIFY(!window.waveforms->looks()->isCompact());
}

void TestWaveformTour::wheelOverTracesZoomsAndPans()
{
    OpenWindow window({_first});
    Gui::RecordWidget *row = window.row(0);
    const QPointF point(row->canvasRect().left() + row->canvasWidth() / 4.0, row->height() / 2.0);
    const auto timeAtPoint = [&] { return row->unmapTime(static_cast<int>(point.x())); };
    const double length = window.view->tmax() - window.view->tmin();
    const Core::Time before = timeAtPoint();
    // Rows leave the wheel to what lies around them; only the system's own events go there.
    QWidget *area = window.view->findChild<QScrollArea *>()->viewport();
    const QPointF pointer = row->mapTo(area, point.toPoint());

    Pointer::turnWheel(*area, pointer, {0, 240}, Qt::ControlModifier);
    const double zoomed = window.view->tmax() - window.view->tmin();
    QVERIFY(zoomed < 0.7 * length);
    QVERIFY(std::abs((timeAtPoint() - before).length()) < 0.01 * length);
    const double start = window.view->tmin();
    Pointer::turnWheel(*area, pointer, {0, -120}, Qt::ShiftModifier);
    const double panned = window.view->tmin();
    QVERIFY(panned > start);
    Pointer::turnWheel(*area, pointer, {120, 10}, Qt::NoModifier);
    QVERIFY(window.view->tmin() < panned);
    QCOMPARE(qRound(window.view->tmax() - window.view->tmin()), qRound(zoomed));
    // Without a modifier it scrolls rows.
    const double left = window.view->tmin();
    Pointer::turnWheel(*area, pointer, {0, -120});
    QCOMPARE(window.view->tmin(), left);
}

void TestWaveformTour::spanIsZoomedTo_data()
{
    QTest::addColumn<QString>("way");
    for (const char *way : {"return", "double click", "escape"})
        QTest::newRow(way) << way;
}

void TestWaveformTour::spanIsZoomedTo()
{
    QFETCH(QString, way);
    OpenWindow window({_first});
    Gui::RecordWidget *row = window.row(0);
    const auto at = [&](double seconds) {
        return QPoint(row->mapTime(Start + Core::TimeSpan(seconds)), row->height() / 2);
    };
    QTest::mousePress(row, Qt::LeftButton, Qt::ShiftModifier, at(30));
    for (const double seconds : {40, 60})
        Pointer::move(*row, at(seconds), Qt::LeftButton);
    QTest::mouseRelease(row, Qt::LeftButton, Qt::ShiftModifier, at(60));

    const Core::TimeWindow chosen = WaveformTesting::window(30, 60);
    for (int i = 0; i < 2; ++i)
        QVERIFY(isNear(window.row(i)->selectedTimeWindow(), chosen));
    const auto *label = window.view->findChild<QScrollArea *>()->viewport()->findChild<QLabel *>(
        QString(), Qt::FindDirectChildrenOnly);
    QVERIFY(label->isVisible() &&
            std::abs(label->text().split(QChar(0x202f))[0].toDouble() - 30) < 0.5);
    QVERIFY(window.view->selectedItems().isEmpty());

    const Core::TimeWindow before = window.view->visibleTimeWindow();
    if (way == "double click")
        QTest::mouseDClick(row, Qt::LeftButton, Qt::NoModifier, at(45));
    else
        QTest::keyClick(window.view, way == "return" ? Qt::Key_Return : Qt::Key_Escape);
    QVERIFY(isNear(window.view->visibleTimeWindow(), way == "escape" ? before : chosen));
    QVERIFY(window.row(1)->selectedTimeWindow().isEmpty() && !label->isVisible());
    QTest::keyClick(window.view, Qt::Key_Left, Qt::AltModifier);
    QVERIFY(isNear(window.view->visibleTimeWindow(), before));
}

void TestWaveformTour::shiftAndClickSelectRows()
{
    OpenWindow window({write("three.mseed", {"XX.AAA..HHZ", "XX.BBB..HHZ", "XX.CCC..HHZ"}, {0})});
    const QPoint middle = window.row(0)->canvasRect().center();
    QTest::mouseClick(window.row(0), Qt::LeftButton, Qt::NoModifier, middle);
    QTest::mouseClick(window.row(2), Qt::LeftButton, Qt::ShiftModifier, middle);
    QCOMPARE(window.view->numberOfSelectedItems(), 3);
    QVERIFY(!window.view->timeScale()->hasSelection());
}

void TestWaveformTour::zoomingOutEndsAtAllData()
{
    OpenWindow window({_first});
    const Core::TimeWindow all = WaveformTesting::window(0, Year + 2 * Minute);
    for (int i = 0; i < 40; ++i)
        QTest::keyClick(window.view, Qt::Key_Less);
    QVERIFY(isNear(window.view->visibleTimeWindow(), all));
    Gui::TimeScale *scale = window.view->timeScale();
    for (int i = 0; i < 10; ++i)
        Pointer::turnWheel(*scale, {10, 5}, {0, -240});
    QVERIFY(isNear(window.view->visibleTimeWindow(), all));
}

void TestWaveformTour::stripPansAndZooms()
{
    OpenWindow window({write("long.mseed", {"XX.AAA..HHZ"}, {0}, 1, 1000),
                       write("end.mseed", {"XX.BBB..HHZ"}, {9000}, 1, 1000)});
    auto *strip = window.window.findChild<DataStrip *>();
    const auto x = [&](double seconds) {
        return static_cast<int>(strip->mapTime(Start + Core::TimeSpan(seconds)));
    };
    // Data stand where they lie, under the time scale.
    const QImage picture = strip->grab().toImage();
    const auto colorAt = [&](double seconds) {
        return picture.pixelColor(x(seconds), strip->height() / 2);
    };
    QVERIFY(colorAt(9500).lightness() + 50 < colorAt(5000).lightness());
    QCOMPARE(strip->mapToGlobal(QPoint(x(0), 0)).x(),
             window.view->timeScale()->mapToGlobal(QPoint(0, 0)).x());

    const auto drag = [&](int from, int to) {
        QTest::mousePress(strip, Qt::LeftButton, Qt::NoModifier, {from, strip->height() / 2});
        Pointer::move(*strip, QPointF(to, strip->height() / 2), Qt::LeftButton);
        QTest::mouseRelease(strip, Qt::LeftButton, Qt::NoModifier, {to, strip->height() / 2});
    };
    window.view->setVisibleTimeWindow(WaveformTesting::window(0, 1000));
    drag(x(500), x(4500));
    QVERIFY(isNear(window.view->visibleTimeWindow(), WaveformTesting::window(4000, 5000), 0.08));
    drag(strip->visiblePart().right(), x(7000));
    QVERIFY(isNear(window.view->visibleTimeWindow(), WaveformTesting::window(4000, 7000), 0.08));
    drag(strip->visiblePart().left(), x(5000));
    QVERIFY(isNear(window.view->visibleTimeWindow(), WaveformTesting::window(5000, 7000), 0.08));
    // A press beside it brings it there.
    drag(x(9000), x(9000));
    QVERIFY(isNear(window.view->visibleTimeWindow(), WaveformTesting::window(8000, 10000), 0.08));
    // It doesn't leave the data altogether.
    drag(x(9000), x(90000));
    QVERIFY(window.view->visibleTimeWindow().startTime() <= Start + Core::TimeSpan(10000));
}

void TestWaveformTour::goesToTime_data()
{
    QTest::addColumn<QString>("copied");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<double>("seconds");
    QTest::newRow("event that was copied") << "smi:x/1\t2024-01-05T10:12:12.5Z\t4.2"
                                           << "" << 60.5;
    QTest::newRow("date and time") << ""
                                   << "2024/1/5 10:12" << 48.0;
    QTest::newRow("time of the day") << ""
                                     << "10:13:00" << 108.0;
    QTest::newRow("date") << "nothing"
                          << "2024-01-06" << 49728.0;
    QTest::newRow("no time") << ""
                             << "tomorrow" << -1.0;
    QTest::newRow("no such hour") << ""
                                  << "25:00" << -1.0;
    QTest::newRow("no such date") << ""
                                  << "2024-02-31" << -1.0;
}

void TestWaveformTour::goesToTime()
{
    QFETCH(QString, copied);
    QFETCH(QString, typed);
    QFETCH(double, seconds);
    OpenWindow window({_first});
    const Core::TimeWindow before = window.view->visibleTimeWindow();
    QGuiApplication::clipboard()->setText(copied);
    QTest::keyClick(window.view, Qt::Key_G, Qt::ControlModifier);
    auto *dialog = window.window.findChild<QInputDialog *>();
    QVERIFY(dialog && dialog->isVisible());
    if (!typed.isEmpty())
        dialog->setTextValue(typed);
    QTest::keyClick(dialog->findChild<QLineEdit *>(), Qt::Key_Return);
    const Core::TimeSpan half = before.length() / 2.0;
    const Core::Time middle = Start + Core::TimeSpan(seconds);
    QVERIFY(isNear(window.view->visibleTimeWindow(),
                   seconds < 0 ? before : Core::TimeWindow(middle - half, middle + half)));
}

void TestWaveformTour::tellsWhatIsUnderThePointer()
{
    OpenWindow window({write("saw.mseed", {"XX.AAA..HHZ"}, {0}, 1)});
    QSignalSpy texts(window.waveforms, SIGNAL(pointerText(QString)));
    Gui::RecordWidget *row = window.row(0);
    const auto textAt = [&](QWidget &widget, int x, int y) {
        Pointer::move(widget, QPointF(x, y));
        return texts.isEmpty() ? QString() : texts.takeLast().value(0).toString();
    };
    window.view->setVisibleTimeWindow(WaveformTesting::window(0, 10));
    const int x = row->mapTime(Start + Core::TimeSpan(3));
    const int y = row->canvasRect().top() + 3;
    const QString height =
        QString::number(Norvu::Gui::TraceView::crosshairValue(row, y), 'g', 6) + " counts";
    const QString text = textAt(*row, x, y);
    QVERIFY2(text.startsWith("2024-01-05 10:11:14.9") || text.startsWith("2024-01-05 10:11:15.0"),
             qPrintable(text));
    QVERIFY2(text.endsWith("sample -700 counts  ·  pointer at " + height), qPrintable(text));
    // Between the stretches there is no sample; seconds are told as far as a pixel goes.
    window.view->setVisibleTimeWindow(WaveformTesting::window(0, 40000));
    QCOMPARE(textAt(*row, row->canvasRect().right(), y).indexOf("sample"), -1);
    QVERIFY(!textAt(*row, row->canvasRect().right(), y).section("  ", 0, 0).contains('.'));
}

void TestWaveformTour::rowsAreSorted_data()
{
    QTest::addColumn<QString>("order");
    QTest::addColumn<QString>("labels");
    QTest::newRow("as opened") << "opened"
                               << "YY.AAA..HHZ XX.BBB..HHN XX.BBB..HHZ XX.AAA..HHN";
    QTest::newRow("name") << "name"
                          << "XX.AAA..HHN XX.BBB..HHN XX.BBB..HHZ YY.AAA..HHZ";
    QTest::newRow("station") << "station"
                             << "XX.AAA..HHN YY.AAA..HHZ XX.BBB..HHN XX.BBB..HHZ";
    QTest::newRow("component") << "component"
                               << "XX.AAA..HHN XX.BBB..HHN XX.BBB..HHZ YY.AAA..HHZ";
}

void TestWaveformTour::rowsAreSorted()
{
    QFETCH(QString, order);
    QFETCH(QString, labels);
    OpenWindow window({write("first4.mseed", {"YY.AAA..HHZ", "XX.BBB..HHN", "XX.BBB..HHZ"}, {0})});
    for (QAction *action : window.waveforms->order()->menu()->actions()) {
        if (action->data() == order)
            action->trigger();
    }
    // Rows that come later find their places.
    openMore(window, write("last4.mseed", {"XX.AAA..HHN"}, {0}));
    QCOMPARE(shownLabels(*window.view), labels.split(' '));
}

void TestWaveformTour::selectedRowsAreHiddenAndClosed()
{
    OpenWindow window({write("abc.mseed", {"XX.AAA..HHZ", "XX.BBB..HHZ", "XX.CCC..HHZ"}, {0})});
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
    // What is hidden isn't closed along with all others.
    QTest::keySequence(window.view, QKeySequence("Ctrl+A"));
    QTest::keySequence(window.view, QKeySequence("Shift+Del"));
    QCOMPARE(window.view->count(), 1);
    QTest::keySequence(window.view, QKeySequence("Ctrl+Shift+H"));
    QCOMPARE(shownLabels(*window.view), QStringList{"XX.BBB..HHZ"});
}

void TestWaveformTour::stationsAreGroupedAndFolded()
{
    OpenWindow window({write("first6.mseed", {"XX.AAA..HHE", "XX.AAA..HHZ", "XX.BBB..HHZ"}, {0})});
    window.waveforms->order()->setName("component");
    QTest::keyClick(window.view, Qt::Key_G);
    openMore(window, write("last6.mseed", {"XX.BBB..HHE"}, {0}));
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

void TestWaveformTour::componentsHaveColors()
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

void TestWaveformTour::remembersHowItLooks()
{
    QSettings().clear();
    {
        MainWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
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

void TestWaveformTour::opensFoldersAndRecentFiles()
{
    QSettings().clear();
    QVERIFY(QDir(_folder.path()).mkpath("archive/deep"));
    write("archive/one.mseed", {"XX.ONE..HHZ"}, {0});
    write("archive/deep/two.mseed", {"XX.TWO..HHZ"}, {0});
    QFile document(_folder.filePath("archive/README.md"));
    QVERIFY(document.open(QIODevice::WriteOnly) && document.write("Two stations.\n") > 0);
    document.close();
    {
        MainWindow window;
        QSignalSpy progress(window.bench()->tasks(), SIGNAL(started(Workbench::Task *)));
        window.show();
        openAll(window, *window.bench(), {_folder.filePath("archive")});
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

void TestWaveformTour::quitsWhileLoading()
{
    const QString file = write("big.mseed", {"XX.BIG..HHZ"}, {0}, 100, 20000);
    MainWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QVERIFY(window.open({file, file, _first}));
    QVERIFY(window.findChild<Waveforms *>()->isLoading());
    QTest::keySequence(&window, QKeySequence("Ctrl+Q"));
    QVERIFY(!window.isVisible() && !QApplication::activeModalWidget());

    MainWindow next;
    next.restoreSettings();
    QCOMPARE(next.statusBar()->currentMessage(),
             QString("Cut short by quitting: Loading (0 of 3 files)"));
    QSettings().clear();
}

void TestWaveformTour::tellsWhatToOpen()
{
    OpenWindow window({_first});
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

QTEST_MAIN(TestWaveformTour)
#include "tst_waveformtour.moc"
