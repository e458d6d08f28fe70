// SPDX-License-Identifier: LGPL-3.0-or-later

#include "waveforms/waveformpanel.h"

#include "spectrograms/spectrograms.h"
#include "waveformtesting.h"

#include <tellarix/core/records/formats/miniseedwriter.h>
#include <tellarix/qt/records/timescale.h>

using namespace WaveformTesting;
using Workbench::WaveformPanel;

namespace {

bool writeMinutes(const QString &path, const std::vector<std::string> &streams)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    Formats::MiniSeedWriter writer(&file);
    return std::all_of(streams.begin(), streams.end(), [&](const std::string &stream) {
        return writer.write(*sawTooth(stream, 0, 20, 1200));
    });
}

/** The first and the last pixel of a widget, as seen from the panel. */
QPair<int, int> ends(const WaveformPanel &panel, const QWidget *widget, const QRect &rect)
{
    return {widget->mapTo(&panel, rect.topLeft()).x(), widget->mapTo(&panel, rect.topRight()).x()};
}

} // namespace

class TestWaveformPanel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void tracesEndAtTimeScale_data();
    void tracesEndAtTimeScale();
    void marginsGoWithTheLastSpectrogram();

private:
    QTemporaryDir _folder;
    QString _file;
};

void TestWaveformPanel::initTestCase()
{
    _file = _folder.filePath("minutes.mseed");
    QVERIFY(writeMinutes(_file, {"XX.AAA..HHZ", "XX.BBB..HHZ", "XX.CCC..HHZ"}));
}

void TestWaveformPanel::tracesEndAtTimeScale_data()
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

void TestWaveformPanel::tracesEndAtTimeScale()
{
    QFETCH(bool, rulers);
    QFETCH(QVector<int>, spectrograms);
    QFETCH(bool, compact);

    WaveformPanel panel;
    panel.resize(900, 500);
    panel.show();
    QVERIFY(panel.open({_file}).ok);
    panel.setCompact(compact);
    panel.setRulersShown(rulers);
    QList<Trace *> rows;
    for (const int index : spectrograms)
        rows.append(panel.view()->itemAt(index));
    panel.spectrograms()->setShown(rows, true);

    const QWidget *scale = panel.view()->timeScale();
    for (const Trace *row : panel.view()->items()) {
        const auto *traces = row->recordWidget();
        QTRY_COMPARE(ends(panel, traces, traces->canvasRect()), ends(panel, scale, scale->rect()));
        QCOMPARE(traces->rightTime(), panel.view()->visibleTimeWindow().endTime());
    }
    QCOMPARE(panel.view()->extraSpacing() > 0, rulers || !spectrograms.isEmpty());
}

void TestWaveformPanel::marginsGoWithTheLastSpectrogram()
{
    WaveformPanel panel;
    panel.resize(900, 500);
    panel.show();
    QVERIFY(panel.open({_file}).ok);
    auto *view = panel.view();
    const int height = view->minimumRowHeight();
    panel.spectrograms()->setShown({view->itemAt(1)}, true);
    QVERIFY(view->extraSpacing() > 0 && view->minimumRowHeight() > height);

    view->removeItem(view->itemAt(0));
    QVERIFY(view->extraSpacing() > 0);
    view->removeItem(view->itemAt(0));
    QCOMPARE(view->extraSpacing(), 0);
    QCOMPARE(view->minimumRowHeight(), height);
}

QTEST_MAIN(TestWaveformPanel)
#include "tst_waveformpanel.moc"
