#include <norvu/gui/trace.h>
#include <norvu/gui/tracelabel.h>

#include <tellarix/core/datamodel/network.h>
#include <tellarix/core/datamodel/sensorlocation.h>
#include <tellarix/core/datamodel/station.h>
#include <tellarix/core/datamodel/stream.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/typedarray.h>
#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/records/timescale.h>

#include "ink.h"

#include <QGridLayout>
#include <QLabel>
#include <QPointer>
#include <QtTest>

#include <memory>

using namespace Tellarix;
using Norvu::Gui::Trace;
using Norvu::Gui::TraceLabel;

namespace {

const Core::Time Start(2024, 1, 5, 10, 0, 0);

/** Ten seconds of 2 Hz samples from Start on: three, then zeros, with one -1 among them; all of
 *  them times @p sign. */
template <typename T>
RecordPtr record(int sign = 1)
{
    Core::SmartPointer<TypedArray<T>> samples(new TypedArray<T>(20));
    std::fill(samples->typedData(), samples->typedData() + 20, T(0));
    samples->typedData()[0] = T(3 * sign);
    samples->typedData()[10] = T(-sign);
    const StreamCodesCPtr codes(new StreamCodes("XX", "ABC", "", "BHZ"));
    return RecordPtr(new Record(codes, Start, 2.0, samples));
}

/** A chain of inventory objects, each held by its parent. */
DataModel::NetworkPtr network(DataModel::Stream *stream)
{
    DataModel::NetworkPtr result(new DataModel::Network("GE"));
    auto *station = new DataModel::Station("APE");
    auto *location = new DataModel::SensorLocation("00");
    result->add(station);
    station->add(location);
    location->add(stream);
    return result;
}

QRect barInk(const Trace &trace, QWidget &view)
{
    return Ink::rectOfColor(Ink::picture(view), trace.color());
}

} // namespace

class TraceTest : public QObject
{
    Q_OBJECT

private slots:
    void showsLabelAndDescription();
    void paintsColorBar_data();
    void paintsColorBar();
    void keepsDataByKey();
    void keepsStreamsBySlot();
    void namesStreams();
    void alignsTracesWithLabelWidth_data();
    void alignsTracesWithLabelWidth();
    void clearsVerticalSpacing();
    void replacesExtraWidget();
    void showsRecord();
    void clearsSlotByNullRecord();
    void setsSymmetricAmplitudeRange_data();
    void setsSymmetricAmplitudeRange();
    void fitsRecordWhenResized();
    void followsTimeAxis();
    void keepsAxisAndTracesTogether();
    void looksSelected();
    void framesFocusedStaticRow();
    void reportsClicks();
    void clonesLabelOnly();
    void resetsSlots();
    void arrangesLabelItems_data();
    void arrangesLabelItems();
};

void TraceTest::showsLabelAndDescription()
{
    Trace trace(QString(), Qt::red);
    QCOMPARE(trace.labelText(), QString());
    trace.setDescription(QStringLiteral("plain"));
    QCOMPARE(trace.labelText(), QStringLiteral("plain"));
    trace.setLabel(QString());
    QCOMPARE(trace.labelText(), QStringLiteral("<b></b>"));

    trace.setLabel(QStringLiteral("GE %2 APE"));
    QCOMPARE(trace.labelText(), QStringLiteral("<b>GE %2 APE</b>"));
    trace.setDescription(QStringLiteral("12.5 km"));
    QCOMPARE(trace.labelText(), QStringLiteral("<b>GE %2 APE</b> 12.5 km"));
    trace.setLabel(QStringLiteral("B"));
    QCOMPARE(trace.labelText(), QStringLiteral("<b>B</b>"));
}

void TraceTest::paintsColorBar_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("painted");

    QTest::newRow("hidden") << 0 << 0;
    QTest::newRow("negative") << -3 << 0;
    QTest::newRow("too narrow") << 4 << 0;
    QTest::newRow("one column") << 5 << 1;
    QTest::newRow("wide") << 12 << 8;
}

void TraceTest::paintsColorBar()
{
    QFETCH(int, width);
    QFETCH(int, painted);

    Trace trace(QStringLiteral("A"), QColor(250, 10, 20));
    trace.setColorBarWidth(width);
    trace.resize(400, 100);
    const QRect ink = barInk(trace, trace);
    QCOMPARE(ink.width(), painted);
    if (painted == 0)
        return;

    QCOMPARE(ink.left(), Trace::Padding() + 2);
    QVERIFY(ink.top() <= Trace::Padding() && ink.height() > 60);
    trace.setColor(QColor(10, 200, 30));
    QCOMPARE(barInk(trace, trace), ink);
}

void TraceTest::keepsDataByKey()
{
    Trace trace(QStringLiteral("A"), Qt::red);
    QVERIFY(!trace.data(4).isValid());
    trace.setData(4, 2.5);
    trace.setData(17, QStringLiteral("x"));
    trace.setData(4, 3.5);
    QCOMPARE(trace.data(4), QVariant(3.5));
    QCOMPARE(trace.data(17), QVariant(QStringLiteral("x")));
}

void TraceTest::keepsStreamsBySlot()
{
    DataModel::Stream stream("BHZ");
    Trace trace(QStringLiteral("A"), Qt::red);
    QVERIFY(!trace.setMetaData(-1, &stream));
    QCOMPARE(trace.metaDataCount(), 0);
    QVERIFY(trace.setMetaData(3, &stream));
    QCOMPARE(trace.metaDataCount(), 4);
    QCOMPARE(trace.metaData(3), &stream);
    for (int slot : {-1, 0, 2, 4})
        QVERIFY(!trace.metaData(slot));
}

void TraceTest::namesStreams()
{
    auto *stream = new DataModel::Stream("BHZ");
    const DataModel::NetworkPtr tree = network(stream);
    Trace trace(QStringLiteral("A"), Qt::red);
    trace.setData(Norvu::Gui::TraceNetworkCode, QStringLiteral("XX"));
    trace.setData(Norvu::Gui::TraceStationCode, QString::fromUtf8("ÄB"));
    trace.setData(Norvu::Gui::TraceChannelCode, QStringLiteral("HHN"));
    trace.setMetaData(1, stream);

    QCOMPARE(trace.waveformID(1).id(), std::string("GE.APE.00.BHZ"));
    QCOMPARE(trace.waveformID(0).id(), std::string("XX.\xC3\x84"
                                                   "B..HHN"));
    QCOMPARE(trace.waveformID(-1).id(), trace.waveformID(7).id());
}

void TraceTest::alignsTracesWithLabelWidth_data()
{
    QTest::addColumn<int>("bar");

    QTest::newRow("without bar") << 0;
    QTest::newRow("with bar") << 6;
    QTest::newRow("with wide bar") << 20;
}

void TraceTest::alignsTracesWithLabelWidth()
{
    QFETCH(int, bar);

    Trace trace(QStringLiteral("A"), Qt::red);
    trace.setColorBarWidth(bar);
    trace.setTimeAxisEnabled(true, false);
    trace.resize(600, 160);
    trace.show();
    QVERIFY(QTest::qWaitForWindowExposed(&trace));

    const int expected = Trace::Padding() + Trace::FixedLabelWidth(bar);
    const Gui::RecordWidget *widget = trace.recordWidget();
    QCOMPARE(widget->x() + widget->canvasRect().left(), expected);
    QCOMPARE(trace.timeAxis()->x(), expected);
    QCOMPARE(trace.timeAxis()->geometry().right(), widget->geometry().right());
}

void TraceTest::clearsVerticalSpacing()
{
    Trace trace(QStringLiteral("A"), Qt::red);
    trace.resize(400, 100);
    trace.show();
    QVERIFY(QTest::qWaitForWindowExposed(&trace));
    const QRect before = trace.recordWidget()->geometry();

    trace.setHeaderVisible(false);
    trace.clearVerticalSpacing();
    QTRY_COMPARE(trace.recordWidget()->geometry(), trace.rect());
    trace.setHeaderVisible(true);
    trace.restoreVerticalSpacing();
    QTRY_COMPARE(trace.recordWidget()->geometry(), before);
}

void TraceTest::replacesExtraWidget()
{
    Trace trace(QStringLiteral("A"), Qt::red);
    QPointer<QWidget> first(new QWidget), second(new QWidget);
    auto *grid = qobject_cast<QGridLayout *>(trace.layout());
    trace.setExtraWidget(first);
    QCOMPARE(grid->itemAtPosition(1, 3)->widget(), first.data());
    trace.setExtraWidget(first);
    QVERIFY(first);
    trace.setExtraWidget(second);
    QVERIFY(!first);
    QCOMPARE(trace.extraWidget(), second.data());
    trace.setExtraWidget(nullptr);
    QVERIFY(!second);
    QVERIFY(!grid->itemAtPosition(1, 3));
}

void TraceTest::showsRecord()
{
    Trace trace(QStringLiteral("A"), Qt::red);
    trace.resize(600, 120);
    trace.setAlignment(Start - Core::TimeSpan(5.0));
    trace.setTimeAxisEnabled(true, false);
    trace.setExtraWidget(new QLabel(QStringLiteral("beside the traces")));
    trace.setRecord(record<double>().get(), false, false, 2);
    trace.show();
    QVERIFY(QTest::qWaitForWindowExposed(&trace));

    const Gui::RecordWidget *widget = trace.recordWidget();
    QCOMPARE(widget->slotCount(), 3);
    QCOMPARE(widget->records(2)->size(), 1);
    QVERIFY(widget->ownsRecords(2));
    QCOMPARE(widget->tmin(), 5.0);
    QCOMPARE(widget->tmax(), 15.0);
    QCOMPARE(trace.timeAxis()->lower(), 5.0);
    // ticks stay below the samples although the axis is wider
    QCOMPARE(trace.timeAxis()->scale(), widget->timeScale());
    QVERIFY(trace.timeAxis()->width() > widget->canvasWidth() + 20);
    QVERIFY(qAbs(10 * widget->timeScale() - widget->canvasWidth()) <= 1);
}

void TraceTest::clearsSlotByNullRecord()
{
    Trace trace(QStringLiteral("A"), Qt::red);
    trace.setRecord(record<double>().get(), false, false, 0);
    QVERIFY(trace.recordWidget()->records(0));
    trace.setRecord(nullptr, true, false, 0);
    QVERIFY(!trace.recordWidget()->records(0));

    const double before = trace.recordWidget()->tmin();
    trace.resize(700, 120);
    trace.show();
    QVERIFY(QTest::qWaitForWindowExposed(&trace));
    QCOMPARE(trace.recordWidget()->tmin(), before);
}

void TraceTest::setsSymmetricAmplitudeRange_data()
{
    QTest::addColumn<RecordCPtr>("record");
    QTest::addColumn<double>("lower");
    QTest::addColumn<double>("upper");

    // mean 0.1, and the sample farthest from it is 3
    QTest::newRow("double") << RecordCPtr(record<double>()) << 0.1 - 2.9 << 0.1 + 2.9;
    QTest::newRow("double, deeper than high")
        << RecordCPtr(record<double>(-1)) << -0.1 - 2.9 << -0.1 + 2.9;
    const float mean = 0.1f, half = 3.0f - mean;
    QTest::newRow("float") << RecordCPtr(record<float>()) << double(mean - half)
                           << double(mean + half);
    QTest::newRow("integer") << RecordCPtr(record<int>()) << -50.0 << 70.0;
}

void TraceTest::setsSymmetricAmplitudeRange()
{
    QFETCH(RecordCPtr, record);
    QFETCH(double, lower);
    QFETCH(double, upper);

    Trace trace(QStringLiteral("A"), Qt::red);
    trace.recordWidget()->setAmplRange(-50, 70);
    trace.setRecord(record.get(), true, false, 0);
    QCOMPARE(trace.recordWidget()->amplRange(), qMakePair(-50.0, 70.0));
    trace.setRecord(record.get(), true, true, 0);
    QCOMPARE(trace.recordWidget()->amplRange(), qMakePair(lower, upper));
}

void TraceTest::fitsRecordWhenResized()
{
    for (const bool fit : {true, false}) {
        Trace trace(QStringLiteral("A"), Qt::red);
        trace.setAlignment(Start);
        trace.resize(500, 120);
        trace.show();
        QVERIFY(QTest::qWaitForWindowExposed(&trace));
        trace.setRecord(record<double>().get(), fit, false, 0);
        const double scale = trace.recordWidget()->timeScale();
        trace.resize(900, 120);
        QTRY_VERIFY(trace.recordWidget()->canvasWidth() > 500);
        QCOMPARE(trace.recordWidget()->timeScale() > 1.5 * scale, fit);
        const int right = trace.recordWidget()->mapCanvasTime(Start + Core::TimeSpan(10.0));
        QCOMPARE(qAbs(right - trace.recordWidget()->canvasWidth()) <= 1, fit);
    }
}

void TraceTest::followsTimeAxis()
{
    Trace trace(QStringLiteral("A"), Qt::red);
    trace.resize(600, 160);
    trace.show();
    QVERIFY(QTest::qWaitForWindowExposed(&trace));
    trace.setTimeAxisEnabled(true, true);
    Gui::TimeScale *axis = trace.timeAxis();
    trace.setTimeAxisEnabled(true, false);
    QCOMPARE(trace.timeAxis(), axis);
    QTRY_VERIFY(axis->width() > 300);
    trace.setDisplay(0, 100, axis->width() / 100.0);

    const QPointF middle(axis->width() / 2.0, 5);
    QWheelEvent wheel(middle, axis->mapToGlobal(middle.toPoint()), QPoint(), QPoint(0, 120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(axis, &wheel);
    QVERIFY(axis->upper() - axis->lower() < 99);
    QCOMPARE(trace.recordWidget()->tmin(), axis->lower());
    QCOMPARE(trace.recordWidget()->timeScale(), axis->scale());

    QPointer<QWidget> guard(axis);
    trace.setTimeAxisEnabled(false, false);
    QVERIFY(!guard);
    QVERIFY(!trace.timeAxis());
}

void TraceTest::keepsAxisAndTracesTogether()
{
    Trace trace(QStringLiteral("A"), Qt::red);
    trace.resize(700, 160);
    trace.setTimeAxisEnabled(true, false);
    trace.setAlignment(Start);
    trace.setDisplay(-20, 80, 5);
    trace.show();
    QVERIFY(QTest::qWaitForWindowExposed(&trace));

    QCOMPARE(trace.timeAxis()->alignment(), Start);
    QCOMPARE(trace.timeAxis()->scale(), 5.0);
    const int inWidget = trace.recordWidget()->x() + trace.recordWidget()->mapTime(30.0);
    const int inAxis = trace.timeAxis()->x() + qRound(trace.timeAxis()->valueToPixel(30.0));
    QVERIFY(qAbs(inWidget - inAxis) <= 1);

    // Grid lines stand at the ticks, also at those of a later range.
    trace.setDisplay(-20, 0, 25);
    const QImage shown = Ink::picture(*trace.recordWidget());
    const Gui::TimeScale *axis = trace.timeAxis();
    trace.recordWidget()->setGridSpacing(axis->majorSpacing(), axis->minorSpacing(),
                                         axis->offset());
    QCOMPARE(Ink::picture(*trace.recordWidget()), shown);

    trace.setSpacing(150);
    QTRY_COMPARE(trace.timeAxis()->x(), Trace::Padding() + 150);
    QCOMPARE(trace.recordWidget()->axisWidth(), 150);
}

void TraceTest::looksSelected()
{
    Trace trace(QStringLiteral("A"), Qt::red);
    QPalette palette = trace.palette();
    palette.setColor(QPalette::Highlight, QColor(20, 60, 220));
    trace.setPalette(palette);
    trace.resize(300, 100);
    const auto highlighted = [&] {
        return !Ink::rectOfColor(Ink::picture(trace), QColor(20, 60, 220)).isEmpty();
    };

    QVERIFY(!highlighted());
    QVERIFY(!trace.setSelected(false));
    QVERIFY(trace.setSelected(true));
    QVERIFY(!trace.setSelected(true));
    QVERIFY(trace.isSelected());
    QCOMPARE(trace.backgroundRole(), QPalette::Highlight);
    QCOMPARE(trace.foregroundRole(), QPalette::HighlightedText);
    QVERIFY(highlighted());

    trace.setStatic(true);
    QVERIFY(!trace.hasMouseTracking());
    QVERIFY(!highlighted());
    QVERIFY(trace.setSelected(false));
    QCOMPARE(trace.backgroundRole(), QPalette::Window);
}

void TraceTest::framesFocusedStaticRow()
{
    Trace trace(QStringLiteral("A"), Qt::red);
    trace.setStatic(true);
    trace.setFocusPolicy(Qt::StrongFocus);
    trace.setAutoFillBackground(true);
    QPalette palette = trace.palette();
    palette.setColor(QPalette::Window, QColor(10, 20, 30));
    palette.setColor(QPalette::Base, QColor(200, 210, 220));
    trace.setPalette(palette);
    trace.resize(300, 100);
    trace.show();
    trace.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&trace));
    const auto cornerColor = [&] { return Ink::picture(trace).pixelColor(150, 97); };

    trace.clearFocus();
    QCOMPARE(cornerColor(), QColor(10, 20, 30));
    trace.setFocus();
    QVERIFY(trace.hasFocus());
    QCOMPARE(cornerColor(), QColor(200, 210, 220));
}

void TraceTest::reportsClicks()
{
    Trace trace(QStringLiteral("A"), Qt::red);
    trace.resize(300, 100);
    int clicks = 0;
    connect(&trace, &Trace::clicked, this,
            [&](QMouseEvent *event) { clicks += event->button() == Qt::RightButton ? 1 : 0; });
    QTest::mouseClick(&trace, Qt::RightButton, Qt::NoModifier, QPoint(1, 1));
    QCOMPARE(clicks, 1);
}

void TraceTest::clonesLabelOnly()
{
    DataModel::Stream stream("BHZ");
    QWidget parent;
    Trace trace(QStringLiteral("A"), Qt::red, &parent);
    trace.setData(1, QStringLiteral("x"));
    trace.setMetaData(0, &stream);
    const std::unique_ptr<Trace> copy(trace.clone());
    QCOMPARE(copy->label(), QStringLiteral("A"));
    QCOMPARE(copy->color(), QColor(Qt::black));
    QVERIFY(!copy->parent());
    QVERIFY(!copy->data(1).isValid());
    QCOMPARE(copy->metaDataCount(), 0);
}

void TraceTest::resetsSlots()
{
    DataModel::Stream stream("BHZ");
    Trace trace(QStringLiteral("A"), Qt::red);
    trace.setRecord(record<float>().get(), true, false, 1);
    trace.setMetaData(1, &stream);
    trace.setData(4, 1.0);
    trace.reset();
    QCOMPARE(trace.recordWidget()->slotCount(), 0);
    QCOMPARE(trace.metaDataCount(), 0);
    QCOMPARE(trace.data(4), QVariant(1.0));
    QCOMPARE(trace.label(), QStringLiteral("A"));
}

void TraceTest::arrangesLabelItems_data()
{
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<int>("height");
    QTest::addColumn<QVector<QPoint>>("cells"); // x of text and index of its row

    const QStringList six{"HHH", "HHH", "HHH", "HHH", "HHH", "HHH"};
    QTest::newRow("one") << QStringList{"HHH", "", ""} << 60 << QVector<QPoint>{{0, 0}};
    QTest::newRow("all") << six << 120
                         << QVector<QPoint>{{0, 0}, {50, 0}, {0, 1}, {50, 1}, {0, 2}, {0, 3}};
    QTest::newRow("second missing, third beside first")
        << QStringList{"HHH", "", "HHH"} << 60 << QVector<QPoint>{{0, 0}, {}, {50, 0}};
    QTest::newRow("too low for its letters")
        << six << 24 << QVector<QPoint>{{0, 0}, {50, 0}, {0, 1}, {50, 1}, {0, 2}, {0, 3}};
}

void TraceTest::arrangesLabelItems()
{
    QFETCH(QStringList, texts);
    QFETCH(int, height);
    QFETCH(QVector<QPoint>, cells);

    TraceLabel label(3);
    label.resize(200, height);
    const int ascent = label.fontMetrics().ascent();
    int rows = 0;
    for (int i = 0; i < texts.size(); ++i) {
        label.setText(texts[i], i);
        label.setColor(QColor(255, 40 * i, 0), i);
        label.setWidth(50, i);
    }
    for (const QPoint &cell : cells)
        rows = qMax(rows, cell.y() + 1);

    // letters and gaps as tall as fit, the whole of it in the middle
    const int fontSize = qMin(ascent, height / rows);
    const int gap = qMin(4, (height - fontSize * rows) / (rows + 1));
    const int top = (height - (rows + 1) * gap - fontSize * rows) / 2;
    const QImage image = Ink::picture(label);
    for (int i = 0; i < cells.size(); ++i) {
        const QRect cell(cells[i].x(), top + cells[i].y() * (gap + fontSize), 50, fontSize);
        const auto isInk = [&](QRgb pixel) { return pixel == QColor(255, 40 * i, 0).rgb(); };
        const QRect ink = Ink::rectOf(image, image.rect(), isInk);
        if (texts[i].isEmpty() || fontSize < 10)
            QVERIFY(ink.isEmpty() || cell.contains(ink));
        else
            QVERIFY2(!ink.isEmpty() && cell.contains(ink), QByteArray::number(i));
    }

    label.setLabelEnabled(false);
    for (int i = 0; i < texts.size(); ++i)
        QVERIFY(Ink::rectOfColor(Ink::picture(label), QColor(255, 40 * i, 0)).isEmpty());
}

QTEST_MAIN(TraceTest)
#include "tst_trace.moc"
