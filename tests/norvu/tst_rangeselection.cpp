// SPDX-License-Identifier: LGPL-3.0-or-later

#include "ink.h"
#include "pointer.h"

#include <norvu/gui/rangeselectionrecordwidget.h>

#include <QtTest>

using namespace Norvu::Gui;
using Tellarix::Core::Time;
using Tellarix::Core::TimeSpan;

namespace {

const Time Start(2024, 1, 5);

/** A widget of 200 x 60 pixels that shows 100 s, and what its band adds to its picture. */
template <typename... Arguments>
class Selecting : public RangeSelectionRecordWidget
{
public:
    explicit Selecting(const Arguments &...arguments) : RangeSelectionRecordWidget(arguments...)
    {
        resize(200, 60);
        setAlignment(Start);
        setTimeScale(2);
        QPalette colors = palette();
        colors.setColor(QPalette::Highlight, QColor(0, 0, 255));
        setPalette(colors);
        _empty = Ink::picture(*this);
    }

    QRect bandRect() { return Ink::rectOfDifference(_empty, Ink::picture(*this)); }

private:
    QImage _empty;
};

} // namespace

class RangeSelectionTest : public QObject
{
    Q_OBJECT

private slots:
    void showsBandWhileDragging()
    {
        Selecting<Tellarix::DataModel::WaveformStreamID> widget{
            Tellarix::DataModel::WaveformStreamID()};
        QSignalSpy spy(&widget,
                       SIGNAL(selectedTimeRange(Tellarix::Core::Time, Tellarix::Core::Time)));
        QVERIFY(spy.isValid());

        QTest::mousePress(&widget, Qt::LeftButton, Qt::NoModifier, QPoint(50, 30));
        QVERIFY(widget.bandRect().isEmpty());
        Pointer::move(widget, QPoint(120, 30), Qt::LeftButton);
        const QRect band = widget.bandRect();
        QCOMPARE(band.left(), 50);
        QCOMPARE(band.right(), 120);
        QVERIFY(band.height() >= widget.height() - 2);
        // Blue with an alpha of 64, laid on once.
        const QImage picture = Ink::picture(widget);
        QVERIFY(std::abs(qRed(picture.pixel(85, 20)) - qRed(picture.pixel(20, 20)) * 191 / 255) <=
                2);

        widget.setDrawSelection(false);
        QVERIFY(widget.bandRect().isEmpty());
        widget.setDrawSelection(true);

        QTest::mouseRelease(&widget, Qt::LeftButton, Qt::NoModifier, QPoint(120, 30));
        QVERIFY(widget.bandRect().isEmpty());
        QCOMPARE(spy.count(), 1);
        QVERIFY(spy[0][0].value<Time>() == Start + TimeSpan(25.0));
        QVERIFY(spy[0][1].value<Time>() == Start + TimeSpan(60.0));

        widget.onChangingTimeRange(Start + TimeSpan(40.0), Start + TimeSpan(40.0));
        QVERIFY(widget.bandRect().isEmpty());
    }

    void bandGoesWithGivenUpDrag()
    {
        for (const bool hides : {false, true}) {
            Selecting<> widget;
            QSignalSpy spy(&widget,
                           SIGNAL(selectedTimeRange(Tellarix::Core::Time, Tellarix::Core::Time)));
            widget.show();
            QTest::mousePress(&widget, Qt::LeftButton, Qt::NoModifier, QPoint(50, 30));
            Pointer::move(widget, QPoint(120, 30), Qt::LeftButton);
            QVERIFY(!widget.bandRect().isEmpty());
            hides ? widget.hide() : widget.setSelectionEnabled(false);
            QVERIFY(widget.bandRect().isEmpty());
            QTest::mouseRelease(&widget, Qt::LeftButton, Qt::NoModifier, QPoint(120, 30));
            QCOMPARE(spy.count(), 0);
        }
    }

    void bandStandsBesideAxis()
    {
        Selecting<> widget;
        widget.setDrawAxis(true);
        widget.setAxisWidth(60);
        const QImage before = Ink::picture(widget);
        widget.onChangingTimeRange(Start + TimeSpan(10.0), Start + TimeSpan(30.0));
        const QRect band = Ink::rectOfDifference(before, Ink::picture(widget));
        QCOMPARE(band.left(), 80);
        QCOMPARE(band.width(), 41);
    }
};

QTEST_MAIN(RangeSelectionTest)
#include "tst_rangeselection.moc"
