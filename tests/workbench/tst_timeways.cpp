// SPDX-License-Identifier: LGPL-3.0-or-later

#include "waveforms/datastrip.h"

#include "openwindow.h"
#include "pointer.h"
#include "rowname.h"

#include <tellarix/qt/records/timescale.h>

#include <QClipboard>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QScrollArea>
#include <QStatusBar>

using namespace WaveformTesting;
using namespace Workbench;

namespace {

bool isNear(const Core::TimeWindow &a, const Core::TimeWindow &b, double tolerance = 0.02)
{
    const double pixel = tolerance * b.length().length();
    return std::abs((a.startTime() - b.startTime()).length()) < pixel &&
           std::abs((a.endTime() - b.endTime()).length()) < pixel;
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

} // namespace

/** The ways of an analyst through time, by keys and mouse. */
class TestTimeWays : public QObject, private Recordings
{
    Q_OBJECT

private slots:
    void viewStaysWithFilesThatShowInIt()
    {
        OpenWindow window({first()});
        const Core::TimeWindow chosen = WaveformTesting::window(Year + 20, Year + 50);
        window.view->setVisibleTimeWindow(chosen);
        window.open(write("same.mseed", {"XX.CCC..HHZ"}, {0, Year}));
        QCOMPARE(window.view->count(), 3);
        QVERIFY(isNear(window.view->visibleTimeWindow(), chosen));
    }

    void viewGoesToFilesFromElsewhere()
    {
        OpenWindow window({first()});
        QTest::keyClick(window.view, Qt::Key_PageDown);
        const Core::TimeWindow before = window.view->visibleTimeWindow();
        const Core::TimeWindow later = WaveformTesting::window(2 * Year, 2 * Year + 2 * Minute);
        window.open(write("later.mseed", {"XX.CCC..HHZ"}, {2 * Year}));
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

    void pagesFromAllData()
    {
        OpenWindow window({first()});
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

    void wheelOverTracesZoomsAndPans()
    {
        OpenWindow window({first()});
        Gui::RecordWidget *row = window.row(0);
        const QPointF point(row->canvasRect().left() + row->canvasWidth() / 4.0,
                            row->height() / 2.0);
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

    void spanIsZoomedTo_data()
    {
        QTest::addColumn<QString>("way");
        for (const char *way : {"return", "double click", "escape"})
            QTest::newRow(way) << way;
    }

    void spanIsZoomedTo()
    {
        QFETCH(QString, way);
        OpenWindow window({first()});
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
        const auto *label =
            window.view->findChild<QScrollArea *>()->viewport()->findChild<QLabel *>(
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

    void shiftAndClickSelectRows()
    {
        OpenWindow window(
            {write("three.mseed", {"XX.AAA..HHZ", "XX.BBB..HHZ", "XX.CCC..HHZ"}, {0})});
        const QPoint middle = window.row(0)->canvasRect().center();
        QTest::mouseClick(window.row(0), Qt::LeftButton, Qt::NoModifier, middle);
        QTest::mouseClick(window.row(2), Qt::LeftButton, Qt::ShiftModifier, middle);
        QCOMPARE(window.view->numberOfSelectedItems(), 3);
        QVERIFY(!window.view->timeScale()->hasSelection());
    }

    void zoomingOutEndsAtAllData()
    {
        OpenWindow window({first()});
        const Core::TimeWindow all = WaveformTesting::window(0, Year + 2 * Minute);
        for (int i = 0; i < 40; ++i)
            QTest::keyClick(window.view, Qt::Key_Less);
        QVERIFY(isNear(window.view->visibleTimeWindow(), all));
        Gui::TimeScale *scale = window.view->timeScale();
        for (int i = 0; i < 10; ++i)
            Pointer::turnWheel(*scale, {10, 5}, {0, -240});
        QVERIFY(isNear(window.view->visibleTimeWindow(), all));
    }

    void stripPansAndZooms()
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
        QVERIFY(
            isNear(window.view->visibleTimeWindow(), WaveformTesting::window(4000, 5000), 0.08));
        drag(strip->visiblePart().right(), x(7000));
        QVERIFY(
            isNear(window.view->visibleTimeWindow(), WaveformTesting::window(4000, 7000), 0.08));
        drag(strip->visiblePart().left(), x(5000));
        QVERIFY(
            isNear(window.view->visibleTimeWindow(), WaveformTesting::window(5000, 7000), 0.08));
        // A press beside it brings it there.
        drag(x(9000), x(9000));
        QVERIFY(
            isNear(window.view->visibleTimeWindow(), WaveformTesting::window(8000, 10000), 0.08));
        // It doesn't leave the data altogether.
        drag(x(9000), x(90000));
        QVERIFY(window.view->visibleTimeWindow().startTime() <= Start + Core::TimeSpan(10000));
    }

    void goesToTime()
    {
        const std::tuple<const char *, const char *, const char *, double> rows[] = {
            {"event that was copied", "smi:x/1\t2024-01-05T10:12:12.5Z\t4.2", "", 60.5},
            {"date and time", "", "2024/1/5 10:12", 48},
            {"time of the day", "", "10:13:00", 108},
            {"date", "nothing", "2024-01-06", 49728},
            {"no time", "", "tomorrow", -1},
            {"no such hour", "", "25:00", -1},
            {"no such date", "", "2024-02-31", -1}};
        for (const auto &[name, copied, typed, seconds] : rows) {
            const RowName shown(name);
            OpenWindow window({first()});
            const Core::TimeWindow before = window.view->visibleTimeWindow();
            QGuiApplication::clipboard()->setText(copied);
            QTest::keyClick(window.view, Qt::Key_G, Qt::ControlModifier);
            auto *dialog = window.window.findChild<QInputDialog *>();
            QVERIFY(dialog && dialog->isVisible());
            if (*typed)
                dialog->setTextValue(typed);
            QTest::keyClick(dialog->findChild<QLineEdit *>(), Qt::Key_Return);
            const Core::TimeSpan half = before.length() / 2.0;
            const Core::Time middle = Start + Core::TimeSpan(seconds);
            QVERIFY(isNear(window.view->visibleTimeWindow(),
                           seconds < 0 ? before : Core::TimeWindow(middle - half, middle + half)));
        }
    }

    void tellsWhatIsUnderThePointer()
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
        QVERIFY2(text.startsWith("2024-01-05 10:11:14.9") ||
                     text.startsWith("2024-01-05 10:11:15.0"),
                 qPrintable(text));
        QVERIFY2(text.endsWith("sample -700 counts  ·  pointer at " + height), qPrintable(text));
        // Between the stretches there is no sample; seconds are told as far as a pixel goes.
        window.view->setVisibleTimeWindow(WaveformTesting::window(0, 40000));
        QCOMPARE(textAt(*row, row->canvasRect().right(), y).indexOf("sample"), -1);
        QVERIFY(!textAt(*row, row->canvasRect().right(), y).section("  ", 0, 0).contains('.'));
    }
};

QTEST_MAIN(TestTimeWays)
#include "tst_timeways.moc"
