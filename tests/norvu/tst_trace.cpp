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
#include "rowname.h"

#include <QLabel>
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

    void descriptionGivesWay()
    {
        ShownTrace trace(QSize(300, 120));
        trace.setLabel(QStringLiteral("XX.AAA..HHZ"));
        const QSize least = trace.minimumSizeHint();
        const QImage before = trace.grab().toImage();
        trace.setDescription(QString(200, 'x'));
        QCOMPARE(trace.minimumSizeHint(), least);
        QTRY_VERIFY(trace.grab().toImage() != before);
        QCOMPARE(trace.labelText(), "<b>XX.AAA..HHZ</b> " + QString(200, 'x'));
        trace.setDescription(QStringLiteral("<i>slanted</i>"));
        QVERIFY(trace.minimumSizeHint().width() >= least.width());
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

    void setsSymmetricAmplitudeRange()
    {
        const float mean = 0.1f, half = 3.0f - mean;
        const std::tuple<const char *, RecordCPtr, double, double> rows[] = {
            // mean 0.1, and the sample farthest from it is 3
            {"double, deeper than high", RecordCPtr(record<double>(-1)), -0.1 - 2.9, -0.1 + 2.9},
            {"float", RecordCPtr(record<float>()), double(mean - half), double(mean + half)},
            {"integer", RecordCPtr(record<int>()), -50.0, 70.0}};
        for (const auto &[name, record, lower, upper] : rows) {
            const RowName shown(name);
            Trace trace(QStringLiteral("A"), Qt::red);
            trace.recordWidget()->setAmplRange(-50, 70);
            trace.setRecord(record.get(), true, false, 0);
            QCOMPARE(trace.recordWidget()->amplRange(), qMakePair(-50.0, 70.0));
            trace.setRecord(record.get(), true, true, 0);
            QCOMPARE(trace.recordWidget()->amplRange(), qMakePair(lower, upper));
        }
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
};

QTEST_MAIN(TraceTest)
#include "tst_trace.moc"
