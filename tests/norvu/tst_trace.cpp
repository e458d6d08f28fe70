// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/trace.h>
#include <norvu/gui/tracelabel.h>
#include <tellarix/core/records/recordsequence.h>

#include <tellarix/core/datamodel/network.h>
#include <tellarix/core/datamodel/sensorlocation.h>
#include <tellarix/core/datamodel/station.h>
#include <tellarix/core/datamodel/stream.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/typedarray.h>
#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/records/timescale.h>

#include "ink.h"
#include "pointer.h"

#include <QGridLayout>
#include <QLabel>
#include <QPointer>
#include <QtTest>

using namespace Tellarix;
using Norvu::Gui::Trace;
using Norvu::Gui::TraceLabel;

namespace {

/** A red row in a window of its own. */
struct ShownTrace : Trace
{
    explicit ShownTrace(const QSize &size) : Trace(QStringLiteral("A"), Qt::red)
    {
        resize(size);
        show();
        if (!QTest::qWaitForWindowExposed(this))
            qFatal("The window of the row does not come up");
    }
};

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

} // namespace

class TraceTest : public QObject
{
    Q_OBJECT

private slots:
    void paintsColorBar()
    {
        // Narrower than its margins it is not there, beyond them as wide as what is left.
        for (const int width : {-3, 4, 12}) {
            Trace trace(QStringLiteral("A"), QColor(250, 10, 20));
            trace.setColorBarWidth(width);
            trace.resize(400, 100);
            const QRect ink = Ink::rectOfColor(Ink::picture(trace), trace.color());
            QCOMPARE(ink.width(), qMax(0, width - 4));
            QVERIFY(ink.isNull() || (ink.left() == Trace::Padding() + 2 && ink.height() > 60));
        }
    }

    void namesStreams()
    {
        auto *stream = new DataModel::Stream("BHZ");
        const DataModel::NetworkPtr tree = network(stream);
        Trace trace(QStringLiteral("A"), Qt::red);
        trace.setData(Norvu::Gui::TraceNetworkCode, QStringLiteral("XX"));
        trace.setData(Norvu::Gui::TraceStationCode, QString::fromUtf8("ÄB"));
        trace.setData(Norvu::Gui::TraceChannelCode, QStringLiteral("HHN"));
        QVERIFY(!trace.setMetaData(-1, stream));
        QVERIFY(trace.setMetaData(1, stream));

        QCOMPARE(trace.waveformID(1).id(), std::string("GE.APE.00.BHZ"));
        QCOMPARE(trace.waveformID(0).id(), std::string("XX.\xC3\x84"
                                                       "B..HHN"));
        QCOMPARE(trace.waveformID(-1).id(), trace.waveformID(7).id());
    }

    void replacesExtraWidget()
    {
        ShownTrace trace(QSize(400, 120));
        trace.setTimeAxisEnabled(true);
        trace.setVerticalPadding(1, 2);
        const auto right = [&trace] { return trace.recordWidget()->geometry().right(); };
        QTRY_COMPARE(trace.timeAxis()->geometry().right(), right());
        const int before = right();
        QCOMPARE(before, 399 - Trace::Padding());

        QPointer<QWidget> first(new QWidget), second(new QWidget);
        second->setFixedWidth(40);
        const auto grid = [&trace] { return qobject_cast<QGridLayout *>(trace.layout()); };
        trace.setExtraWidget(first);
        QCOMPARE(grid()->itemAtPosition(1, 3)->widget(), first.data());
        trace.setExtraWidget(first);
        QVERIFY(first);
        trace.setExtraWidget(second);
        QVERIFY(!first);
        QTRY_COMPARE(right(), before - 40 - Trace::Spacing());
        trace.setExtraWidget(nullptr);
        QVERIFY(!second);
        QVERIFY(!grid()->itemAtPosition(1, 3));
        QTRY_COMPARE(right(), before);
        QCOMPARE(trace.timeAxis()->geometry().right(), before);
        QCOMPARE(grid()->verticalSpacing(), 2);
        QCOMPARE(grid()->contentsMargins(), QMargins(Trace::Padding(), 1, Trace::Padding(), 1));
    }

    void showsRecord()
    {
        ShownTrace trace(QSize(600, 120));
        trace.setAlignment(Start - Core::TimeSpan(5.0));
        trace.setTimeAxisEnabled(true, false);
        trace.setExtraWidget(new QLabel(QStringLiteral("beside the traces")));
        QApplication::processEvents();
        trace.setRecord(record<double>().get(), false, false, 2);

        const Gui::RecordWidget *widget = trace.recordWidget();
        QCOMPARE(widget->records(2)->size(), 1);
        QVERIFY(widget->ownsRecords(2));
        QCOMPARE(widget->tmin(), 5.0);
        QCOMPARE(widget->tmax(), 15.0);
        QCOMPARE(trace.timeAxis()->lower(), 5.0);
        // ticks stay below the samples although the axis is wider
        QCOMPARE(trace.timeAxis()->scale(), widget->timeScale());
        QVERIFY(trace.timeAxis()->width() > widget->canvasWidth() + 20);
        QVERIFY(qAbs(10 * widget->timeScale() - widget->canvasWidth()) <= 1);

        trace.setRecord(nullptr, true, false, 2);
        QVERIFY(!widget->records(2));
        trace.resize(700, 120);
        QCOMPARE(widget->tmin(), 5.0);
    }

    void setsSymmetricAmplitudeRange_data()
    {
        QTest::addColumn<RecordCPtr>("record");
        QTest::addColumn<double>("lower");
        QTest::addColumn<double>("upper");

        // mean 0.1, and the sample farthest from it is 3
        QTest::newRow("double, deeper than high")
            << RecordCPtr(record<double>(-1)) << -0.1 - 2.9 << -0.1 + 2.9;
        const float mean = 0.1f, half = 3.0f - mean;
        QTest::newRow("float") << RecordCPtr(record<float>()) << double(mean - half)
                               << double(mean + half);
        QTest::newRow("integer") << RecordCPtr(record<int>()) << -50.0 << 70.0;
    }

    void setsSymmetricAmplitudeRange()
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

    void fitsRecordWhenResized()
    {
        for (const bool fit : {true, false}) {
            ShownTrace trace(QSize(500, 120));
            trace.setAlignment(Start);
            trace.setRecord(record<double>().get(), fit, false, 0);
            const Gui::RecordWidget *widget = trace.recordWidget();
            trace.resize(900, 120);
            QTRY_VERIFY(widget->canvasWidth() > 500);
            const int right = widget->mapCanvasTime(Start + Core::TimeSpan(10.0));
            QCOMPARE(qAbs(right - widget->canvasWidth()) <= 1, fit);
        }
    }

    void followsTimeAxis()
    {
        ShownTrace trace(QSize(600, 160));
        trace.setDisplay(10, 70, 2);
        trace.setTimeAxisEnabled(true, true);
        QPointer<Gui::TimeScale> axis(trace.timeAxis());
        QCOMPARE(axis->lower(), 10.0);
        QCOMPARE(axis->upper(), 70.0);
        // Once it is seen the traces' scale counts, or ticks would stand below other samples.
        QTRY_COMPARE(axis->width(), trace.recordWidget()->canvasWidth());
        QCOMPARE(axis->scale(), 2.0);
        QCOMPARE(axis->lower(), 10.0);
        trace.setDisplay(0, 100, axis->width() / 100.0);

        Pointer::turnWheel(*axis, {axis->width() / 2.0, 5}, {0, 120});
        QVERIFY(axis->upper() - axis->lower() < 99);
        QCOMPARE(trace.recordWidget()->tmin(), axis->lower());
        QCOMPARE(trace.recordWidget()->timeScale(), axis->scale());
        trace.setTimeAxisEnabled(false, false);
        QVERIFY(!axis);
    }

    void keepsAxisAndTracesTogether()
    {
        ShownTrace trace(QSize(700, 160));
        trace.setTimeAxisEnabled(true, false);
        trace.setAlignment(Start);
        trace.setDisplay(-20, 80, 5);
        QApplication::processEvents();

        const Gui::TimeScale *axis = trace.timeAxis();
        Gui::RecordWidget *widget = trace.recordWidget();
        QCOMPARE(axis->alignment(), Start);
        QCOMPARE(axis->geometry().right(), widget->geometry().right());
        const int inAxis = axis->x() + qRound(axis->valueToPixel(30.0));
        QVERIFY(qAbs(widget->x() + widget->mapTime(30.0) - inAxis) <= 1);

        // Grid lines stand at the ticks, also at those of a later range.
        trace.setDisplay(-20, 0, 25);
        const QImage shown = Ink::picture(*widget);
        widget->setGridSpacing(axis->majorSpacing(), axis->minorSpacing(), axis->offset());
        QCOMPARE(Ink::picture(*widget), shown);

        for (const int bar : {20, 6, 0}) {
            trace.setColorBarWidth(bar);
            const int left = Trace::Padding() + Trace::FixedLabelWidth(bar);
            QTRY_COMPARE(axis->x(), left);
            QCOMPARE(widget->x() + widget->canvasRect().left(), left);
        }
        trace.setSpacing(150);
        QTRY_COMPARE(axis->x(), Trace::Padding() + 150);
        QCOMPARE(widget->axisWidth(), 150);
    }

    void showsDescriptionBesideLabel()
    {
        Trace trace(QString(), Qt::red);
        trace.setDescription(QStringLiteral("plain"));
        QCOMPARE(trace.labelText(), QStringLiteral("plain"));
        trace.setLabel(QStringLiteral("GE %2 APE"));
        trace.setDescription(QStringLiteral("12.5 km"));
        QCOMPARE(trace.labelText(), QStringLiteral("<b>GE %2 APE</b> 12.5 km"));
        trace.setLabel(QStringLiteral("B"));
        QCOMPARE(trace.labelText(), QStringLiteral("<b>B</b>"));
    }

    void looksSelectedUnlessStatic()
    {
        Trace trace(QStringLiteral("A"), Qt::red);
        QPalette palette = trace.palette();
        palette.setColor(QPalette::Highlight, QColor(20, 60, 220));
        trace.setPalette(palette);
        trace.resize(300, 100);
        const auto isHighlighted = [&] {
            return !Ink::rectOfColor(Ink::picture(trace), QColor(20, 60, 220)).isEmpty();
        };
        QVERIFY(!isHighlighted());
        QVERIFY(trace.setSelected(true));
        QVERIFY(!trace.setSelected(true));
        QVERIFY(isHighlighted());
        trace.setStatic(true);
        QVERIFY(!isHighlighted());
    }

    void arrangesLabelItems_data()
    {
        QTest::addColumn<QStringList>("texts");
        QTest::addColumn<int>("height");
        QTest::addColumn<QVector<QPoint>>("cells"); // x of text and index of its row

        const QStringList six{"HHH", "HHH", "HHH", "HHH", "HHH", "HHH"};
        QTest::newRow("all") << six << 120
                             << QVector<QPoint>{{0, 0}, {50, 0}, {0, 1}, {50, 1}, {0, 2}, {0, 3}};
        QTest::newRow("second missing, third beside first")
            << QStringList{"HHH", "", "HHH"} << 60 << QVector<QPoint>{{0, 0}, {}, {50, 0}};
        QTest::newRow("too low for its letters")
            << six << 24 << QVector<QPoint>{{0, 0}, {50, 0}, {0, 1}, {50, 1}, {0, 2}, {0, 3}};
    }

    void arrangesLabelItems()
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
    }
};

QTEST_MAIN(TraceTest)
#include "tst_trace.moc"
