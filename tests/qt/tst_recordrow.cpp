// SPDX-License-Identifier: LGPL-3.0-or-later

#include "recordwidgettest.h"

#include <tellarix/qt/records/recordmarker.h>
#include <tellarix/qt/records/recordmarkers_p.h>
#include <tellarix/qt/records/recordrow_p.h>
#include <tellarix/qt/records/rowpointer_p.h>

using namespace Tellarix;
using Gui::PointerDrag;
using Gui::RecordRow;
using Gui::RecordWidget;

/** What a row is made of, without any widget. */
class TestRecordRow : public QObject
{
    Q_OBJECT

private slots:
    void pixelsLeadBackToTimes();
    void slotsShareTheCanvas();
    void overlaidSlotsShareOneRange();
    void filterTellsOfItsJobs();
    void dragBeginsBeyondAClick();
};

void TestRecordRow::pixelsLeadBackToTimes()
{
    Gui::RowTimes times;
    times.alignment = at(0);
    times.tmin = -10;
    times.pixelsPerSecond = 4;
    for (const int x : {-7, 0, 1, 39, 40, 41, 100000})
        QCOMPARE(times.xOf(times.timeAt(x)), x);
    QCOMPARE(times.timeAt(40), at(0));

    // Sums with pixels of times that are far away don't overflow.
    QCOMPARE(times.xOf(1E300), 1 << 30);
    QCOMPARE(times.xOf(-1E300), -(1 << 30));
}

void TestRecordRow::slotsShareTheCanvas()
{
    Gui::RecordSlots slotsOfRow;
    slotsOfRow.resize(4);
    slotsOfRow.at(1)->visible = false;
    slotsOfRow.mode = RecordWidget::InRows;
    const QRect canvas(10, 5, 100, 50);
    int top = canvas.top();
    for (const int slot : {0, 2, 3}) {
        const QRect area = slotsOfRow.rectOf(slot, canvas);
        QCOMPARE(area.top(), top);
        QCOMPARE(slotsOfRow.slotAt(area.top(), canvas), slot);
        QCOMPARE(slotsOfRow.slotAt(area.bottom(), canvas), slot);
        top = area.bottom() + 1;
    }
    QCOMPARE(top, canvas.bottom() + 1);
    QVERIFY(slotsOfRow.rectOf(1, canvas).isEmpty());
    QCOMPARE(slotsOfRow.slotAt(top, canvas), -1);
}

void TestRecordRow::overlaidSlotsShareOneRange()
{
    RecordRow row([](int) {});
    row.items.resize(2);
    row.items.at(0)->setRaw(sequence({record(0, {0, 10})}).release(), true);
    row.items.at(1)->setRaw(sequence({record(0, {-4, 4})}).release(), true);
    row.items.at(1)->scale = -5;
    row.showsScaledValues = true;
    row.items.mode = RecordWidget::Overlaid;

    // Values from -20 to 20, with a margin of half a unit on both sides; the mean of the means.
    const Gui::ShownRange first = row.rangeOf(0);
    QCOMPARE(first.lower, -21.0);
    QCOMPARE(first.upper, 21.0);
    QCOMPARE(first.offset, 2.5);
    QCOMPARE(row.rangeOf(1).upper, 4.2);
    for (const int y : {0, 13, 99})
        QCOMPARE(first.yOf(first.valueAt(y, 100), 100), y);
}

void TestRecordRow::filterTellsOfItsJobs()
{
    using Announcement = Gui::SlotFilter::Announcement;
    int finished = -1;
    RecordRow row([&finished](int slot) { finished = slot; });
    row.items.resize(1);
    row.items.at(0)->setRaw(sequence({record(0, Samples(600000, 1))}).release(), true);
    row.filter.setInBackground(true);
    row.filter.setFilter(std::make_unique<Integrator>().get());
    row.filter.setEnabled(true);
    QCOMPARE(row.filter.announcement(), Announcement::Started);
    QCOMPARE(row.filter.announcement(), Announcement::None);
    QVERIFY(row.filter.isAwaited(*row.items.at(0)));
    QCOMPARE(row.shownRecords(0), row.items.at(0)->raw);

    QTRY_COMPARE(finished, 0);
    QVERIFY(row.filter.finishJob(0));
    QVERIFY(row.shownRecords(0) != row.items.at(0)->raw);
    QCOMPARE(row.filter.announcement(), Announcement::Finished);
}

void TestRecordRow::dragBeginsBeyondAClick()
{
    Gui::RecordMarkers markers;
    auto *marker = new Gui::RecordMarker(at(50));
    markers.add(marker);
    marker->setAlignment(Qt::AlignTop);
    const auto xOf = [](const Core::Time &time) { return int((time - at(0)).length()); };
    QCOMPARE(markers.nearest({47, 10}, 3, 100, xOf), marker);
    QVERIFY(!markers.nearest({46, 10}, 3, 100, xOf) && !markers.nearest({50, 60}, 3, 100, xOf));

    PointerDrag drag;
    drag.press({48, 10});
    drag.grab(marker, 50);
    drag.moveTo({50, 10}, true);
    QCOMPARE(drag.kind(), PointerDrag::Press);
    drag.moveTo({51, 10}, true);
    QCOMPARE(drag.kind(), PointerDrag::Marker);
    QCOMPARE(drag.lineX(51), 53);
    drag.press({48, 10});
    drag.moveTo({60, 10}, false);
    QCOMPARE(drag.kind(), PointerDrag::Press);
    drag.moveTo({60, 10}, true);
    QCOMPARE(drag.kind(), PointerDrag::Select);
}

QTEST_MAIN(TestRecordRow)
#include "tst_recordrow.moc"
