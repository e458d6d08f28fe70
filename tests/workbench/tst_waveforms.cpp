// SPDX-License-Identifier: LGPL-3.0-or-later

#include "waveforms/rowlooks.h"
#include "waveforms/waveforms.h"

#include "bench/tracerows.h"
#include "spectrograms/spectrograms.h"
#include "waveformtesting.h"

#include <tellarix/qt/records/timescale.h>

#include <QScrollArea>
#include <QScrollBar>

using namespace WaveformTesting;
using namespace Workbench;

namespace {

/** Waveforms of a file, with spectrograms. */
struct Desk
{
    explicit Desk(const QString &file) : panel(&bench), spectrograms(new Spectrograms(panel.view()))
    {
        bench.rows()->setAddition(spectrograms);
        panel.resize(900, 500);
        panel.show();
        openAll(panel, bench, {file});
    }

    Bench bench;
    Waveforms panel;
    Spectrograms *spectrograms;
};

/** The first and the last pixel of a widget, as seen from the panel. */
QPair<int, int> ends(const Waveforms &panel, const QWidget *widget, const QRect &rect)
{
    return {widget->mapTo(&panel, rect.topLeft()).x(), widget->mapTo(&panel, rect.topRight()).x()};
}

} // namespace

class TestWaveforms : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void tracesEndAtTimeScale_data();
    void tracesEndAtTimeScale();
    void marginsGoWithTheLastSpectrogram();
    void keepsCurrentRowInSight();

private:
    QTemporaryDir _folder;
    QString _file;
};

void TestWaveforms::initTestCase()
{
    _file = writeRecords(_folder.filePath("minutes.mseed"), {sawTooth("XX.AAA..HHZ", 0, 20, 1200),
                                                             sawTooth("XX.BBB..HHZ", 0, 20, 1200),
                                                             sawTooth("XX.CCC..HHZ", 0, 20, 1200)});
    QVERIFY(!_file.isEmpty());
}

void TestWaveforms::tracesEndAtTimeScale_data()
{
    QTest::addColumn<bool>("rulers");
    QTest::addColumn<QVector<int>>("spectrograms");
    QTest::addColumn<bool>("compact");

    const QVector<int> none, one{1}, all{0, 1, 2};
    QTest::newRow("plain") << false << none << false;
    QTest::newRow("rulers") << true << none << false;
    QTest::newRow("spectrograms") << false << all << false;
    QTest::newRow("spectrogram of one row") << false << one << false;
    QTest::newRow("both") << true << all << false;
    QTest::newRow("both, compact") << true << one << true;
}

void TestWaveforms::tracesEndAtTimeScale()
{
    QFETCH(bool, rulers);
    QFETCH(QVector<int>, spectrograms);
    QFETCH(bool, compact);

    Desk desk(_file);
    Waveforms &panel = desk.panel;
    panel.looks()->setCompact(compact);
    panel.setRulersShown(rulers);
    QList<Trace *> rows;
    for (const int index : spectrograms)
        rows.append(panel.view()->itemAt(index));
    desk.spectrograms->setShown(rows, true);

    const QWidget *scale = panel.view()->timeScale();
    for (const Trace *row : panel.view()->items()) {
        const auto *traces = row->recordWidget();
        QTRY_COMPARE(ends(panel, traces, traces->canvasRect()), ends(panel, scale, scale->rect()));
        QCOMPARE(traces->rightTime(), panel.view()->visibleTimeWindow().endTime());
    }
    QCOMPARE(panel.view()->extraSpacing() > 0, rulers || !spectrograms.isEmpty());
}

void TestWaveforms::marginsGoWithTheLastSpectrogram()
{
    Desk desk(_file);
    Waveforms &panel = desk.panel;
    auto *view = panel.view();
    const int height = view->minimumRowHeight();
    desk.spectrograms->setShown({view->itemAt(1)}, true);
    QVERIFY(view->extraSpacing() > 0 && view->minimumRowHeight() > height);

    view->removeItem(view->itemAt(0));
    QVERIFY(view->extraSpacing() > 0);
    view->removeItem(view->itemAt(0));
    QCOMPARE(view->extraSpacing(), 0);
    QCOMPARE(view->minimumRowHeight(), height);
}

void TestWaveforms::keepsCurrentRowInSight()
{
    Desk desk(_file);
    auto *view = desk.panel.view();
    const int low = view->minimumRowHeight();
    auto *bar = view->findChild<QScrollArea *>()->verticalScrollBar();
    view->setMinimumRowHeight(view->height());
    QTRY_VERIFY(view->itemAt(1)->y() > view->height());
    bar->setValue(view->itemAt(1)->y() + 5);
    QCoreApplication::processEvents();
    view->setMinimumRowHeight(2 * view->height());
    QTRY_VERIFY(view->itemAt(1)->y() > 2 * view->height());
    QTRY_COMPARE(bar->value(), view->itemAt(1)->y() + 5);

    view->setMinimumRowHeight(20);
    view->select(view->itemAt(2));
    QCoreApplication::processEvents();
    const auto isWhole = [view](int row) {
        const QWidget *widget = view->itemAt(row);
        return widget->visibleRegion().boundingRect().height() >= widget->height() - 1;
    };
    QTRY_VERIFY(isWhole(0) && isWhole(2));

    // Numbers at a ruler need higher rows.
    desk.panel.setRulersShown(true);
    QVERIFY(view->minimumRowHeight() > 20);
    desk.panel.setRulersShown(false);
    QCOMPARE(view->minimumRowHeight(), 20);

    view->setMinimumRowHeight(view->height() / 2);
    QTRY_VERIFY(!isWhole(0));
    QTRY_VERIFY(isWhole(2));
    // What the user has scrolled away stays away.
    bar->setValue(0);
    QCoreApplication::processEvents();
    view->setMinimumRowHeight(view->height());
    QTRY_VERIFY(bar->maximum() > view->height());
    QCoreApplication::processEvents();
    QCOMPARE(bar->value(), 0);
    view->setMinimumRowHeight(low);
}

QTEST_MAIN(TestWaveforms)
#include "tst_waveforms.moc"
