// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bench/bench.h"
#include "bench/tracerows.h"
#include "spectrograms/gradientpanel.h"
#include "spectrograms/spectrogrammenu.h"
#include "spectrograms/spectrogrampanel.h"
#include "spectrograms/spectrogramrow.h"
#include "spectrograms/spectrograms.h"
#include "waveformtesting.h"

#include <norvu/gui/gradients.h>
#include <tellarix/core/math/butterworth.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QtTest>

#include <cmath>

using namespace WaveformTesting;
using namespace Workbench;

namespace {

using Highpass = Math::Filtering::IIR::ButterworthHighpass<double>;

constexpr double Rate = 20;
constexpr double Seconds = 600;
constexpr int Bands = 16;
constexpr auto Axis = "periods_log(0.5,8,4,16)";

/** A minute of a sine, from @p start seconds on. */
RecordCPtr sine(double start, double period, double amplitude)
{
    std::vector<double> samples;
    for (int i = 0; i < static_cast<int>(60 * Rate); ++i)
        samples.push_back(amplitude * std::sin(2 * M_PI * (start + i / Rate) / period));
    return record("XX.AAA..BHZ", start, Rate, samples);
}

/** A view of three rows of ten minutes with amplitudes of 10, 100 and 1000. */
struct Desk
{
    Bench bench;
    TraceView view;
    SpectrogramPanel panel;
    Spectrograms *spectrograms;
    QVector<SpectrogramRow *> rows;

    Desk() : panel(withRows()), spectrograms(panel.spectrograms())
    {
        spectrograms->setAxis(Axis);
        for (const double amplitude : {10, 100, 1000})
            addSpectrogramRow(amplitude);
        view.setMinimumRowHeight(60);
        view.resize(600, 400);
        view.setAlignment(Start);
        view.show();
        show(0, Seconds);
    }

    Bench *withRows()
    {
        bench.rows()->setView(&view);
        return &bench;
    }

    void addSpectrogramRow(double amplitude)
    {
        auto *row = static_cast<SpectrogramRow *>(spectrograms->makeTraces());
        auto *trace = new Trace(QString::number(amplitude), row, Qt::black);
        auto *sequence = new RingBuffer(-1);
        for (double start = 0; start < Seconds; start += 60)
            sequence->feed(sine(start, 2, amplitude).get());
        row->setRecords(0, sequence, true);
        view.addItem(trace);
        spectrograms->adopt({trace});
        rows.append(row);
    }

    void show(double start, double end) { view.setVisibleTimeWindow(window(start, end)); }

    /** Paints until there is nothing left to work out, also of rows that gave memory away. */
    void settle()
    {
        for (int rests = 0; rests < 2; rests = spectrograms->isBusy() ? 0 : rests + 1) {
            view.grab();
            QCoreApplication::processEvents();
        }
        view.grab();
    }

    int completeRows() const
    {
        return static_cast<int>(
            std::count_if(rows.begin(), rows.end(), [](const SpectrogramRow *row) {
                return row->isComplete() && row->spectrogramSize() > 0;
            }));
    }
};

QPair<double, double> ends(const SpectrogramRow *row)
{
    return {row->colors().lower, row->colors().upper};
}

} // namespace

class TestSpectrograms : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void tableFollowsTheRange_data();
    void tableFollowsTheRange();
    void switchesRows();
    void finishesRowOutOfSight();
    void followsTheView();
    void keepsWhatPixelsNeed();
    void keepsPictureWhileZooming();
    void followsLiveRecords();
    void keepsWithinItsMemory();
    void restsWithoutMemory();
    void followsTheFilterOnlyIfWanted();
    void skipsRecordsWithoutRate();
    void changesTracesOnlyAboveThePicture();
    void standsAboveTheTraces();
    void tellsOfARangeThatHidesThePicture_data();
    void tellsOfARangeThatHidesThePicture();
    void growsFromLeftToRight();
    void rangesOfColors();
    void tellsWhatIsUnderThePointer();
    void refusesBadAxes_data();
    void refusesBadAxes();
    void tellsWhichBandsAreEmpty();
    void refusesBadRanges_data();
    void refusesBadRanges();
    void remembersSettings();
    void menuFollowsRestoredSettings();

private:
    QTemporaryDir _folder;
};

void TestSpectrograms::initTestCase()
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, _folder.path());
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, _folder.path());
}

void TestSpectrograms::tableFollowsTheRange_data()
{
    QTest::addColumn<bool>("logarithmic");
    QTest::addColumn<double>("amplitude");
    QTest::addColumn<int>("grey");

    QTest::newRow("linear, begin") << false << 1.0 << 0;
    QTest::newRow("linear, middle") << false << 50.5 << 127;
    QTest::newRow("linear, end") << false << 100.0 << 255;
    QTest::newRow("logarithmic, below") << true << 0.0 << 0;
    QTest::newRow("logarithmic, middle") << true << 10.0 << 127;
    QTest::newRow("logarithmic, beyond") << true << 1e6 << 255;
}

void TestSpectrograms::tableFollowsTheRange()
{
    QFETCH(bool, logarithmic);
    QFETCH(double, amplitude);
    QFETCH(int, grey);

    // Keys from 0 to 8 stand for amplitudes from 1 to 100, samples are a tenth of these.
    const AmplitudeColors colors{Norvu::Gui::Gradients::BlackWhite.rescaled(0, 8), false, 1, 100,
                                 logarithmic};
    ColorTable table;
    QVERIFY(colors.fillTable(table, 10));
    QVERIFY2(std::abs(qRed(table.at(amplitude / 10)) - grey) <= 1,
             qPrintable(QString::number(qRed(table.at(amplitude / 10)))));
}

void TestSpectrograms::switchesRows()
{
    Desk desk;
    desk.settle();
    QCOMPARE(desk.completeRows(), 0);

    QSignalSpy spy(desk.spectrograms, SIGNAL(shownChanged()));
    desk.spectrograms->setAllShown(true);
    desk.settle();
    QCOMPARE(desk.completeRows(), 3);
    QCOMPARE(spy.count(), 1);

    desk.view.setSelectedTrace(1);
    desk.spectrograms->toggleSelected();
    QVERIFY(!desk.spectrograms->areAllShown());
    QVERIFY(desk.spectrograms->isAnyShown());
    QCOMPARE(desk.rows[1]->spectrogramSize(), size_t(0));
    QVERIFY(desk.rows[0]->spectrogramSize() > 0);

    desk.spectrograms->setAllShown(false);
    QCOMPARE(desk.rows[0]->spectrogramSize(), size_t(0));
}

/** A picture of all rows must not lack those that are scrolled away. */
void TestSpectrograms::finishesRowOutOfSight()
{
    Desk desk;
    desk.view.setMinimumRowHeight(300);
    desk.spectrograms->setAllShown(true);
    desk.settle();
    QVERIFY(!desk.rows[2]->isComplete());
    desk.spectrograms->finish(desk.rows[2]);
    QVERIFY(desk.rows[2]->isComplete());
}

void TestSpectrograms::followsTheView()
{
    Desk desk;
    desk.show(0, 20);
    desk.spectrograms->setAllShown(true);
    desk.settle();
    const size_t size = desk.rows[0]->spectrogramSize();
    QVERIFY(size < static_cast<size_t>(Seconds * Rate * Bands * sizeof(float)) / 2);

    // Far on, back, and out to everything.
    for (const auto &shown : {qMakePair(400, 420), qMakePair(395, 415), qMakePair(0, 600)}) {
        desk.show(shown.first, shown.second);
        desk.settle();
        QCOMPARE(desk.completeRows(), 3);
    }
    desk.show(10000, 10020);
    desk.settle();
    QVERIFY(!desk.spectrograms->isBusy());
}

/** Memory goes with the pixels, not with the samples that are shown. */
void TestSpectrograms::keepsWhatPixelsNeed()
{
    Desk desk;
    desk.spectrograms->setAllShown(true);
    for (const double seconds : {5, 20, 100, 600, 100}) {
        desk.show(300 - seconds / 2, 300 + seconds / 2);
        desk.settle();
        QCOMPARE(desk.completeRows(), 3);
        const SpectrogramRow *row = desk.rows[0];
        const double columns = Rate / row->spectrogramColumnInterval() * seconds;
        QVERIFY2(columns >= std::min(row->canvasWidth(), static_cast<int>(Rate * seconds)) &&
                     columns < 8 * row->canvasWidth(),
                 qPrintable(QString::number(columns)));
    }
}

/** Until there are finer columns the old ones stay in the picture, if there is room for both. */
void TestSpectrograms::keepsPictureWhileZooming()
{
    Desk desk;
    desk.spectrograms->setAxis("periods_log(0.5,8,4,2048)"); // some minutes in several pieces
    desk.spectrograms->setAllShown(true);
    desk.settle();
    SpectrogramRow *row = desk.rows[0];
    const int interval = row->spectrogramColumnInterval();
    const double loudest = row->amplitudeRange().second;

    desk.show(200, 440);
    QVERIFY(row->workOut(size_t(1) << 30));
    QVERIFY(!row->isComplete());
    QVERIFY(row->spectrogramColumnInterval() < interval);
    QVERIFY(row->memoryUsed() > row->spectrogramSize());
    desk.settle();
    QVERIFY(row->isComplete());
    QCOMPARE(row->memoryUsed(), row->spectrogramSize());
    QVERIFY(row->amplitudeRange().second <= loudest);

    desk.show(0, Seconds);
    QVERIFY(row->workOut(static_cast<size_t>(row->memoryNeeded()) + row->memoryUsed() / 2));
    QVERIFY(!row->isComplete());
    QCOMPARE(row->memoryUsed(), row->spectrogramSize());
    desk.settle();

    // What was made of other records is no picture of these.
    auto *other = new RingBuffer(-1);
    other->feed(sine(200, 2, 10).get());
    row->setRecords(0, other, true);
    QVERIFY(!row->hasPicture());
}

void TestSpectrograms::followsLiveRecords()
{
    Desk desk;
    desk.show(500, 700);
    desk.spectrograms->setAllShown(true);
    desk.settle();
    SpectrogramRow *row = desk.rows[0];
    const size_t before = row->spectrogramSize();

    const auto next = sine(Seconds, 2, 5000);
    row->records(0)->feed(next.get());
    row->fed(0, next.get());
    const auto columns = static_cast<size_t>(60 * Rate / row->spectrogramColumnInterval());
    QCOMPARE(row->spectrogramSize() - before, columns * Bands * sizeof(float));
    // What is louder than all before changes the colours at once.
    QVERIFY(row->colors().upper > 1000);
    desk.settle();
    QVERIFY(row->isComplete());
}

void TestSpectrograms::keepsWithinItsMemory()
{
    Desk desk;
    desk.spectrograms->setAllShown(true);
    desk.settle();
    QCOMPARE(desk.completeRows(), 3);
    const size_t ofOne = desk.rows[0]->spectrogramSize();

    desk.spectrograms->setAllShown(false);
    desk.spectrograms->setMemoryLimit(2 * ofOne + ofOne / 20);
    desk.spectrograms->setAllShown(true);
    desk.settle();
    QCOMPARE(desk.completeRows(), 2);
    QVERIFY(!desk.rows[2]->isComplete());

    // With less to show there is room for all, also in what the others had before.
    desk.show(0, 4);
    desk.settle();
    QCOMPARE(desk.completeRows(), 3);
}

/** A row that can't be worked out says so once, and isn't painted over and over. */
void TestSpectrograms::restsWithoutMemory()
{
    Desk desk;
    desk.spectrograms->setMemoryLimit(1000);
    desk.spectrograms->setAllShown(true);
    desk.settle();
    QSignalSpy paints(desk.rows[0], SIGNAL(incomplete()));
    QVERIFY(paints.isValid());
    for (int i = 0; i < 20; ++i)
        QCoreApplication::processEvents();
    QVERIFY2(paints.count() < 3, qPrintable(QString::number(paints.count())));
}

void TestSpectrograms::followsTheFilterOnlyIfWanted()
{
    Desk desk;
    desk.spectrograms->setAllShown(true);
    double corner = 1;
    for (const bool isFiltering : {true, false}) {
        desk.view.setFilterEnabled(isFiltering);
        for (const bool isWanted : {false, true}) {
            desk.spectrograms->useFilteredRecords(isWanted);
            desk.view.setFilter(new Highpass(2, corner++));
            desk.settle();
            QCOMPARE(desk.completeRows(), 3);
            desk.view.setFilter(new Highpass(2, corner++));
            QCOMPARE(desk.completeRows(), isWanted ? 0 : 3);
        }
    }
}

void TestSpectrograms::skipsRecordsWithoutRate()
{
    Desk desk;
    auto *sequence = new RingBuffer(-1);
    sequence->feed(record("XX.AAA..BHZ", -60, 0, std::vector<double>(5)).get());
    sequence->feed(sine(0, 2, 10).get());
    desk.rows[0]->setRecords(0, sequence, true);
    QCOMPARE(desk.rows[0]->records(0)->size(), 2);
    desk.spectrograms->setAllShown(true);
    desk.settle();
    QCOMPARE(desk.completeRows(), 3);
}

/** Light traces could not be seen without the picture, be it not ready yet or too large. */
void TestSpectrograms::changesTracesOnlyAboveThePicture()
{
    Desk desk;
    const QPen plain = desk.rows[0]->recordPen(0);
    desk.spectrograms->setMemoryLimit(1000);
    desk.spectrograms->setAllShown(true);
    desk.settle();
    QCOMPARE(desk.rows[0]->recordPen(0), plain);

    desk.spectrograms->setMemoryLimit(size_t(1) << 30);
    desk.settle();
    QVERIFY(desk.rows[0]->recordPen(0).color().lightness() > plain.color().lightness());
    desk.rows[0]->hide();
    QCOMPARE(desk.rows[0]->recordPen(0), plain);
    desk.rows[0]->show();

    desk.spectrograms->setPlace(SpectrogramPlace::Above);
    desk.settle();
    QCOMPARE(desk.rows[0]->recordPen(0), plain);

    desk.spectrograms->setPlace(SpectrogramPlace::Instead);
    desk.settle();
    QVERIFY(!desk.rows[0]->isRecordVisible(0));
    desk.spectrograms->setAllShown(false);
    desk.settle();
    QVERIFY(desk.rows[0]->isRecordVisible(0));
}

/** The picture has a band of its own, in which the pointer tells what it does in the row. */
void TestSpectrograms::standsAboveTheTraces()
{
    Desk desk;
    desk.spectrograms->setPlace(SpectrogramPlace::Above);
    desk.spectrograms->setAllShown(true);
    desk.settle();
    SpectrogramRow *row = desk.rows[1];
    auto *band = desk.view.itemAt(1)->upperWidget();
    QVERIFY(band && band->geometry().bottom() < row->y() && row->height() >= 36);
    QCOMPARE(row->pictureRect().translated(row->pos()).bottom(), band->geometry().bottom());
    QCOMPARE(row->pictureRect().width(), row->canvasRect().width());

    const QImage picture = band->grab().toImage();
    QSet<QRgb> colors;
    for (int y = 0; y < picture.height(); ++y)
        colors.insert(picture.pixel(row->canvasRect().center().x(), y));
    QVERIFY(colors.size() > 10);
    const QImage traces = row->grab().toImage();
    colors.clear();
    for (int y = 0; y < traces.height(); ++y)
        colors.insert(traces.pixel(row->canvasRect().center().x(), y));
    QVERIFY(colors.size() < 10);

    const QPoint middle = row->pictureRect().center();
    QVERIFY(row->spectrogramText(middle).startsWith("period "));
    QVERIFY(row->spectrogramText(row->canvasRect().center()).isEmpty());
    row->setSelectionEnabled(true);
    QSignalSpy selected(row, SIGNAL(selectedTimeRange(Tellarix::Core::Time, Tellarix::Core::Time)));
    const QPoint start = middle + row->pos() - band->pos();
    QTest::mousePress(band, Qt::LeftButton, Qt::NoModifier, start);
    QMouseEvent drag(QEvent::MouseMove, start + QPoint(50, 0), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QCoreApplication::sendEvent(band, &drag);
    QTest::mouseRelease(band, Qt::LeftButton, Qt::NoModifier, start + QPoint(50, 0));
    QCOMPARE(selected.count(), 1);

    desk.spectrograms->setPlace(SpectrogramPlace::Behind);
    QVERIFY(!desk.view.itemAt(1)->upperWidget());
    QCOMPARE(row->pictureRect(), row->canvasRect());
}

void TestSpectrograms::tellsOfARangeThatHidesThePicture_data()
{
    QTest::addColumn<double>("lower");
    QTest::addColumn<double>("upper");
    QTest::addColumn<bool>("isTold");

    QTest::newRow("far above") << 1e5 << 1e9 << true;
    QTest::newRow("far below") << 1e-9 << 1e-6 << true;
    QTest::newRow("fits") << 1.0 << 1000.0 << false;
}

/** A click on what the row says gives all rows a range that fits. */
void TestSpectrograms::tellsOfARangeThatHidesThePicture()
{
    QFETCH(double, lower);
    QFETCH(double, upper);
    QFETCH(bool, isTold);

    Desk desk;
    desk.spectrograms->setColorRange({ColorRange::Fixed, lower, upper, true});
    desk.spectrograms->setAllShown(true);
    desk.settle();
    SpectrogramRow *row = desk.rows[1];
    QSignalSpy spy(desk.spectrograms, SIGNAL(rangeFitted()));
    QTest::mouseClick(row, Qt::LeftButton, Qt::NoModifier,
                      row->canvasRect().bottomRight() - QPoint(20, 8));
    QCOMPARE(spy.count(), isTold ? 1 : 0);
    QCOMPARE(desk.spectrograms->colorRange().mode, ColorRange::Fixed);
    if (isTold) {
        QVERIFY(desk.spectrograms->colorRange().upper > 900);
        QVERIFY(desk.spectrograms->colorRange().upper < 1300);
        QVERIFY(desk.spectrograms->colorRange().lower < 10);
        desk.settle();
        QTest::mouseClick(row, Qt::LeftButton, Qt::NoModifier,
                          row->canvasRect().bottomRight() - QPoint(20, 8));
        QCOMPARE(spy.count(), 1);
    }
}

/** Rows in sight alone are worked out, and each piece follows the one before. */
void TestSpectrograms::growsFromLeftToRight()
{
    Desk desk;
    desk.view.resize(600, 180);
    desk.spectrograms->setAxis("periods_log(0.5,8,4,2048)"); // ten minutes in several pieces
    desk.spectrograms->setAllShown(true);
    desk.settle();
    QCOMPARE(desk.completeRows(), 1);

    SpectrogramRow *row = desk.rows[2];
    int pieces = 0;
    Core::Time reached;
    for (; row->workOut(size_t(1) << 30); ++pieces) {
        QCOMPARE(row->spectrogramTimeWindow().startTime(), Start);
        QVERIFY(row->spectrogramTimeWindow().endTime() > reached);
        reached = row->spectrogramTimeWindow().endTime();
    }
    QVERIFY(pieces > 3);
}

void TestSpectrograms::rangesOfColors()
{
    Desk desk;
    desk.spectrograms->setAllShown(true);
    desk.settle();
    const double loudest = desk.rows[2]->amplitudeRange().second;
    QVERIFY(loudest > 900 && loudest < 1300);
    QVERIFY(ends(desk.rows[0]).second < 0.02 * loudest);
    QCOMPARE(ends(desk.rows[2]).second, loudest);

    ColorRange range;
    range.mode = ColorRange::Shared;
    range.logarithmic = false;
    desk.spectrograms->setColorRange(range);
    for (const SpectrogramRow *row : desk.rows)
        QCOMPARE(ends(row), qMakePair(desk.rows[0]->amplitudeRange().first, loudest));

    range = {ColorRange::Fixed, 3, 30, true};
    desk.spectrograms->setColorRange(range);
    for (const SpectrogramRow *row : desk.rows)
        QCOMPARE(ends(row), qMakePair(3.0, 30.0));

    // With gains known, ranges are in physical units.
    desk.rows[2]->setRecordScale(0, 0.01);
    range.mode = ColorRange::Automatic;
    desk.spectrograms->setColorRange(range);
    QCOMPARE(ends(desk.rows[2]).second, 0.01 * loudest);
}

void TestSpectrograms::tellsWhatIsUnderThePointer()
{
    Desk desk;
    desk.spectrograms->setAllShown(true);
    desk.settle();
    const SpectrogramRow *row = desk.rows[1];
    const int x = row->canvasRect().center().x();
    const QRegularExpression form("^period ([0-9.]+) s: ([0-9.]+) counts$");
    // Where a period is nearest to that of the sine, and its amplitude there.
    double nearest = 1000;
    double amplitude = 0;
    for (int y = row->canvasRect().top(); y <= row->canvasRect().bottom(); ++y) {
        const auto match = form.match(row->spectrogramText(QPoint(x, y)));
        QVERIFY2(match.hasMatch(), qPrintable(row->spectrogramText(QPoint(x, y))));
        const double period = match.captured(1).toDouble();
        if (std::abs(period - 2) < std::abs(nearest - 2)) {
            nearest = period;
            amplitude = match.captured(2).toDouble();
        }
    }
    QVERIFY2(std::abs(nearest - 2) < 0.1, qPrintable(QString::number(nearest)));
    QVERIFY2(std::abs(amplitude - 100) < 10, qPrintable(QString::number(amplitude)));
    QCOMPARE(row->spectrogramText(QPoint(0, -5)), QString());
}

void TestSpectrograms::refusesBadAxes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("part");

    QTest::newRow("no form") << "nonsense"
                             << "(";
    QTest::newRow("name") << "octaves(1,2,3,4)"
                          << "octaves";
    QTest::newRow("number") << "periods(1,2,x,4)"
                            << "divisions";
    QTest::newRow("too many bands") << "periods(1,2,3,1000000)"
                                    << "1000000";
}

void TestSpectrograms::refusesBadAxes()
{
    QFETCH(QString, text);
    QFETCH(QString, part);

    Desk desk;
    SpectrogramPanel &panel = desk.panel;
    QSignalSpy spy(&panel, SIGNAL(problem(QString)));
    auto *input = panel.findChild<QComboBox *>();
    input->setEditText(text);
    QTest::keyClick(input->lineEdit(), Qt::Key_Return);

    QCOMPARE(desk.spectrograms->axisText(), QString(Axis));
    QCOMPARE(input->currentText(), text);
    QCOMPARE(spy.count(), 1);
    QVERIFY2(spy.first().first().toString().contains(part),
             qPrintable(spy.first().first().toString()));

    // It stays as long as the input is wrong.
    desk.spectrograms->setAllShown(true);
    QCOMPARE(spy.last(), spy.first());
}

void TestSpectrograms::tellsWhichBandsAreEmpty()
{
    Desk desk;
    SpectrogramPanel &panel = desk.panel;
    QSignalSpy spy(&panel, SIGNAL(problem(QString)));
    desk.spectrograms->setAllShown(true);
    QCOMPARE(spy.takeLast().first().toString(), QString());

    desk.spectrograms->setAxis("periods(0.05,2,8,8)");
    desk.spectrograms->setAllShown(true);
    const QString message = spy.takeLast().first().toString();
    QVERIFY2(message.contains("20 Hz") && message.contains("of 8 bands"), qPrintable(message));

    desk.spectrograms->setAllShown(true);
    spy.clear();
    desk.addSpectrogramRow(5);
    QCOMPARE(spy.count(), 1);
}

void TestSpectrograms::refusesBadRanges_data()
{
    QTest::addColumn<QString>("lower");
    QTest::addColumn<QString>("upper");
    QTest::addColumn<QString>("part");

    QTest::newRow("no number") << "1"
                               << "many"
                               << "many";
    QTest::newRow("reversed") << "5"
                              << "2"
                              << "5 is not below 2";
    QTest::newRow("logarithm of 0") << "0"
                                    << "2"
                                    << "above 0";
    QTest::newRow("good") << "1"
                          << "2"
                          << "";
}

void TestSpectrograms::refusesBadRanges()
{
    QFETCH(QString, lower);
    QFETCH(QString, upper);
    QFETCH(QString, part);

    Desk desk;
    SpectrogramPanel &panel = desk.panel;
    const auto boxes = panel.findChildren<QComboBox *>();
    auto *mode = boxes[1];
    mode->setCurrentIndex(ColorRange::Fixed);
    const auto inputs = panel.findChildren<QLineEdit *>(QString(), Qt::FindDirectChildrenOnly);
    inputs[0]->setText(lower);
    inputs[1]->setText(upper);
    QSignalSpy spy(&panel, SIGNAL(problem(QString)));
    QMetaObject::invokeMethod(&panel, "applyRange");

    QCOMPARE(spy.count(), 1);
    const QString message = spy.first().first().toString();
    QVERIFY2(part.isEmpty() ? message.isEmpty() : message.contains(part), qPrintable(message));
    QCOMPARE(desk.spectrograms->colorRange().mode,
             part.isEmpty() ? ColorRange::Fixed : ColorRange::Automatic);
}

void TestSpectrograms::remembersSettings()
{
    QSettings settings(_folder.filePath("settings.ini"), QSettings::IniFormat);
    {
        Desk desk;
        desk.spectrograms->setAxis("freqs(1,8,4,12)");
        desk.panel.gradientPanel()->setGradientName("Inferno");
        desk.spectrograms->setPlace(SpectrogramPlace::Above);
        desk.panel.findChildren<QComboBox *>()[1]->setCurrentIndex(ColorRange::Shared);
        desk.panel.saveState(settings);
    }
    Desk desk;
    SpectrogramPanel &panel = desk.panel;
    panel.restoreState(settings);
    QCOMPARE(desk.spectrograms->axisText(), QString("freqs(1,8,4,12)"));
    QCOMPARE(panel.gradientPanel()->gradientName(), QString("Inferno"));
    QCOMPARE(desk.spectrograms->colorRange().mode, ColorRange::Shared);
    QCOMPARE(desk.spectrograms->place(), SpectrogramPlace::Above);

    desk.spectrograms->setAllShown(true);
    desk.settle();
    QCOMPARE(desk.rows[0]->colors().gradient, Norvu::Gui::Gradients::Inferno);
}

/** Shortcuts switch what is in force, also before the menu was open. */
void TestSpectrograms::menuFollowsRestoredSettings()
{
    Desk desk;
    const SpectrogramMenu menu(desk.spectrograms, nullptr);
    desk.spectrograms->setPlace(SpectrogramPlace::Behind);
    for (QAction *action : menu.actions()) {
        if (action->shortcut() == QKeySequence("Ctrl+Shift+S"))
            action->trigger();
    }
    QCOMPARE(desk.spectrograms->place(), SpectrogramPlace::Instead);
}

QTEST_MAIN(TestSpectrograms)
#include "tst_spectrograms.moc"
