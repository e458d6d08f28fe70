// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bench/historybox.h"
#include "waveforms/filtercorners.h"
#include "waveforms/frequencyaxis.h"

#include "openwindow.h"
#include "pointer.h"

#include <QLineEdit>
#include <QSettings>

#include <cmath>

using namespace WaveformTesting;
using namespace Workbench;

class TestFilterCorners : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qputenv("XDG_CONFIG_HOME", _folder.path().toLocal8Bit()); }

    void movesCornersInText()
    {
        using Corners = FilterCorners;
        const struct
        {
            const char *text; // the text cursor is at "^"
            std::function<QString(const Corners &)> change;
            const char *expected;
        } rows[] = {
            {"bandpass(0.7,2) | stalta(1, 60)^",
             [](const Corners &c) { return c.moved(0, 1.23456, 50); },
             "bandpass(1.23,2) | stalta(1, 60)^"},
            {"lowpass(8)|highpass( ^0.5 )", [](const Corners &c) { return c.moved(0, 0.125, 50); },
             "lowpass(8)|highpass( ^0.125 )"},
            {"lowpass(8)|highpass(0.5)", [](const Corners &c) { return c.moved(0, 60, 50); },
             "lowpass(49.9)|highpass(0.5)"},
            // In order, also where a name turns them round.
            {"bandpass(upper=2, lower=1)^", [](const Corners &c) { return c.moved(0, 5, 50); },
             "bandpass(upper=2, lower=1.9)^"},
            {"bandpass(1, 2)", [](const Corners &c) { return c.moved(0, 5, 50); },
             "bandpass(1.9, 2)"},
            {"bandpass(1, 2)", [](const Corners &c) { return c.moved(1, 0.1, 0); },
             "bandpass(1, 1.05)"},
            {"bandpass(1, 2)", [](const Corners &c) { return c.moved(2, 3, 0); }, "bandpass(1, 2)"},
            {"bandpass(10, 40)", [](const Corners &c) { return c.shifted(2, 50); },
             "bandpass(12.5, 49.9)"},
            {"bandpass(30, 60)", [](const Corners &c) { return c.shifted(1.5, 50); },
             "bandpass(30, 60)"},
            {"bandpass(30, 60)", [](const Corners &c) { return c.shifted(0.5, 50); },
             "bandpass(15, 30)"},
            {"bandstop(1, 2, 3)", [](const Corners &c) { return c.widened(2, 3); },
             "bandstop(0.5, 2.99, 3)"},
            {"bandpass(1, 1.06)", [](const Corners &c) { return c.widened(0.9, 50); },
             "bandpass(1, 1.06)"},
            {"^ stalta(1, 60)", [](const Corners &c) { return c.withBand(5, 0.5, 2); },
             "bandpass(0.5, 1.99) | ^ stalta(1, 60)"},
            {"none", [](const Corners &c) { return c.withBand(3, 3, 50); }, "bandpass(2.85, 3)"},
        };
        for (const auto &row : rows) {
            QString text = row.text;
            const int cursor = text.indexOf('^');
            const Corners corners(text.remove('^'), std::max(0, cursor));
            QString changed = row.change(corners);
            if (cursor >= 0)
                changed.insert(corners.cursorIn(changed), '^');
            QCOMPARE(changed, QString(row.expected));
        }
        QVERIFY(!FilterCorners("bandpass(1", 0).isFilter());
    }

    void gainsFallBeyondCorners()
    {
        const QVector<double> gains =
            filterGains("bandpass(1, 4) | integrate() | lowpass(4)", 100, {0.1, 2, 4, 20, 60});
        QVERIFY(gains[0] < 1E-3 && std::abs(gains[1] - 1) < 0.01 && gains[3] < 1E-4);
        QVERIFY(std::abs(gains[2] - 0.5) < 1E-6 && gains[4] == 0);
        QVERIFY(filterGains("lowpass(60)", 100, {1}).isEmpty());
    }

    void handlesAreDragged();
    void keysMoveHandlesAndBand();
    void rowsFollowThroughoutADrag();

private:
    QString write(const QString &name, double rate, int count)
    {
        return writeRecords(_folder.filePath(name), {sawTooth("XX.AAA..HHZ", 0, rate, count)});
    }

    QTemporaryDir _folder;
};

/** A window with the axis open, and its parts. */
struct AxisWindow : OpenWindow
{
    explicit AxisWindow(const QStringList &files)
        : OpenWindow(files), axis(window.findChild<FrequencyAxis *>()),
          box(window.findChild<HistoryBox *>())
    {
        window.activateWindow();
        if (!QTest::qWaitForWindowActive(&window))
            qFatal("The window isn't active");
        QTest::keyClick(view, Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
    }
    QPointF at(double frequency) const { return {axis->mapFrequency(frequency), 10}; }
    void enter(const QString &text)
    {
        box->setEditText(text);
        QTest::keyClick(box, Qt::Key_Return);
    }

    FrequencyAxis *axis;
    HistoryBox *box;
};

void TestFilterCorners::handlesAreDragged()
{
    QSettings().clear();
    AxisWindow window({write("drag.mseed", 100, 2000)});
    QVERIFY(window.axis->isVisible() && window.axis->hasFocus());

    // The first drag makes a band, whose upper corner goes along.
    Pointer::drag(*window.axis, {window.at(1), window.at(2), window.at(8)});
    QVERIFY(window.view->isFilterEnabled() && window.view->hasFilter());
    FilterCorners corners(window.box->currentText(), 0);
    QCOMPARE(corners.name(), QString("bandpass"));
    QVERIFY(std::abs(corners.frequencies()[0] - 1) < 0.1);
    QVERIFY(std::abs(corners.frequencies()[1] - 8) < 0.5);

    // A handle that is met keeps its distance to the pointer; the range stays until the end.
    window.enter("demean(30) | lowpass( 4 )");
    const FrequencyRange range = window.axis->range();
    const QPointF beside = window.at(4) + QPointF(3, 0);
    Pointer::drag(*window.axis, {beside, QPointF(9999, 10), QPointF(-9999, 10), beside});
    QCOMPARE(window.box->currentText(), QString("demean(30) | lowpass( 4 )"));
    QCOMPARE(window.axis->range().lower, range.lower);
    Pointer::drag(*window.axis, {window.at(4), QPointF(9999, 10)});
    QCOMPARE(window.box->currentText(), QString("demean(30) | lowpass( 49.9 )"));

    // What is no filter is left to the user.
    window.box->setEditText("lowpass(");
    Pointer::drag(*window.axis, {window.at(1), window.at(8)});
    QCOMPARE(window.box->currentText(), QString("lowpass("));
}

void TestFilterCorners::keysMoveHandlesAndBand()
{
    QSettings().clear();
    AxisWindow window({write("keys.mseed", 100, 2000)});
    const auto press = [&](Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
        return window.box->currentText();
    };
    window.enter("bandpass(1, 4) | lowpass(9)");
    window.box->lineEdit()->setCursorPosition(3);
    window.axis->setFocus();
    QCOMPARE(press(Qt::Key_Right), QString("bandpass(1.05, 4) | lowpass(9)"));
    QCOMPARE(press(Qt::Key_Tab), QString("bandpass(1.05, 4) | lowpass(9)"));
    QCOMPARE(press(Qt::Key_Left, Qt::ShiftModifier), QString("bandpass(1.05, 2) | lowpass(9)"));
    press(Qt::Key_Backtab);
    QCOMPARE(press(Qt::Key_Left), QString("bandpass(1, 2) | lowpass(9)"));
    press(Qt::Key_Escape);
    QVERIFY(window.view->isAncestorOf(QApplication::focusWidget()) || window.view->hasFocus());

    // From anywhere; the view keeps its window.
    const auto visible = window.view->visibleTimeWindow();
    QCOMPARE(press(Qt::Key_Period), QString("bandpass(1.26, 2.52) | lowpass(9)"));
    QCOMPARE(press(Qt::Key_Comma), QString("bandpass(1, 2) | lowpass(9)"));
    QCOMPARE(press(Qt::Key_Period, Qt::ControlModifier),
             QString("bandpass(0.891, 2.24) | lowpass(9)"));
    QVERIFY(window.view->visibleTimeWindow() == visible);
    QTRY_VERIFY(window.row(0)->filter() && window.isIdle());

    // The way back: only where the user stopped goes to the texts used last.
    QTRY_VERIFY(window.box->findText("bandpass(0.891, 2.24) | lowpass(9)") >= 0);
    QVERIFY(window.box->findText("bandpass(1.26, 2.52) | lowpass(9)") < 0);
    QVERIFY(window.box->findText("bandpass(1, 4) | lowpass(9)") >= 0);
    QCOMPARE(window.box->lineEdit()->cursorPosition(), 3);
    window.window.setInteractive(true);
    QVERIFY(window.window.close());
    MainWindow next;
    next.restoreSettings();
    QVERIFY(!next.findChild<FrequencyAxis *>()->isHidden());
}

/** More samples than can be filtered between two moves of the mouse. */
void TestFilterCorners::rowsFollowThroughoutADrag()
{
    QSettings().clear();
    AxisWindow window({write("long.mseed", 100, 3000000)});
    window.enter("lowpass(4)");
    QTRY_VERIFY(window.row(0)->filteredRecords(0) && window.isIdle());
    const QPointF start = window.at(4);
    QSignalSpy progress(window.view, SIGNAL(filteringProgress(int, int)));
    QTest::mousePress(window.axis, Qt::LeftButton, Qt::NoModifier, start.toPoint());
    for (int i = 1; i <= 40; ++i) {
        Pointer::move(*window.axis, start - QPointF(i, 0), Qt::LeftButton);
        // Never back to raw traces.
        QVERIFY(window.row(0)->displayedRecords(0) != window.row(0)->records(0));
    }
    const auto begun = [&] {
        return std::count_if(progress.begin(), progress.end(),
                             [](const QList<QVariant> &sent) { return sent[0].toInt() == 0; });
    };
    QVERIFY2(begun() >= 1 && begun() < 20, qPrintable(QString::number(begun())));
    QTRY_VERIFY(begun() >= 2);
    QTest::mouseRelease(window.axis, Qt::LeftButton, Qt::NoModifier,
                        (start - QPointF(40, 0)).toPoint());

    // The last text is what rows show in the end.
    QTRY_VERIFY(window.row(0)->filteredRecords(0) && window.isIdle());
    const auto shown = window.row(0)->filteredRecords(0)->amplitudeRange();
    window.view->setFilter(
        Math::Filtering::parseFilter<double>(window.box->currentText().toStdString()).release());
    QTRY_VERIFY(window.row(0)->filteredRecords(0) && window.isIdle());
    QVERIFY(window.row(0)->filteredRecords(0)->amplitudeRange() == shown);
}

QTEST_MAIN(TestFilterCorners)
#include "tst_filtercorners.moc"
