// SPDX-License-Identifier: LGPL-3.0-or-later

#include "recordwidgettest.h"

#include <tellarix/core/records/timewindowbuffer.h>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace Tellarix;
using Gui::RecordWidget;

namespace {

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

using Records = std::vector<RecordPtr>;

/** Counts how many of its kind have been deleted. */
class CountedBuffer : public RingBuffer
{
public:
    explicit CountedBuffer(int &deleted) : RingBuffer(0), _deleted(deleted) {}
    ~CountedBuffer() override { ++_deleted; }

private:
    int &_deleted;
};

/** Writes down which sequences the widget announces. */
class AnnouncingWidget : public TestWidget
{
public:
    QVector<QPair<int, RecordSequence *>> announced;

protected:
    void changedRecords(int slot, RecordSequence *sequence) override
    {
        announced.append({slot, sequence});
    }
};

/** The running sums that one pass over records in order of time gives; a gap begins anew. */
Samples referenceSums(Records records)
{
    std::stable_sort(records.begin(), records.end(), [](const RecordPtr &a, const RecordPtr &b) {
        return a->startTime() < b->startTime();
    });
    Samples result;
    double sum = 0;
    const Record *previous = nullptr;
    for (const RecordPtr &item : records) {
        const bool isContinued = previous != nullptr &&
                                 previous->samplingFrequency() == item->samplingFrequency() &&
                                 std::abs((item->startTime() - previous->endTime()).length()) *
                                         item->samplingFrequency() <=
                                     0.5;
        if (!isContinued)
            sum = 0;
        for (int i = 0; i < item->sampleCount(); ++i) {
            const double sample = item->data()->value(i);
            sum = std::isfinite(sample) ? sum + sample : 0;
            result.push_back(std::isfinite(sample) ? sum : sample);
        }
        previous = item.get();
    }
    return result;
}

/** Shows the widget and waits until nothing is left to paint. */
void showAndSettle(TestWidget &widget)
{
    widget.show();
    QRegion painted;
    QTRY_COMPARE((painted += widget.takePainted()).boundingRect(), widget.rect());
    QCoreApplication::processEvents();
    widget.takePainted();
    widget.paintCount = 0;
}

bool isSame(const Samples &a, const Samples &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](double x, double y) {
        return x == y || (std::isnan(x) && std::isnan(y));
    });
}

} // namespace

class TestRecordWidgetRecords : public QObject
{
    Q_OBJECT

private slots:
    void deletesOwnedSequences()
    {
        int deleted = 0;
        CountedBuffer borrowed(deleted);
        {
            RecordWidget widget;
            widget.setRecords(0, new CountedBuffer(deleted), true);
            widget.setRecords(0, new CountedBuffer(deleted), true);
            QCOMPARE(deleted, 1);
            widget.setRecords(0, &borrowed, false);
            QCOMPARE(deleted, 2);
            widget.setRecords(0, nullptr);
            widget.setRecords(3, new CountedBuffer(deleted), true);
            QCOMPARE(widget.slotCount(), 4);
            widget.setSlotCount(3);
            QCOMPARE(deleted, 3);
            widget.setRecords(1, new CountedBuffer(deleted), true);
        }
        QCOMPARE(deleted, 4);

        // Installed again a sequence stays, and its owner changes.
        auto *buffer = new CountedBuffer(deleted);
        {
            RecordWidget widget;
            widget.setRecords(0, buffer, true);
            widget.setRecords(0, buffer, true);
            widget.setRecords(0, buffer, false);
        }
        QCOMPARE(deleted, 4);
        delete buffer;
    }

    void refusesSlotsThatCannotBeMeant()
    {
        RecordWidget widget;
        RingBuffer buffer(0);
        QVERIFY(!widget.setRecords(-1, &buffer, true));
        QVERIFY(!widget.setRecords(1000000, &buffer, true));
        QVERIFY(!widget.setSlotCount(-1));
        QVERIFY(widget.setRecords(7, nullptr));
        QCOMPARE(widget.slotCount(), 0);
        QVERIFY(!widget.recordScale(-1));
    }

    void announcesDisplayedRecords()
    {
        AnnouncingWidget widget;
        widget.install({record(0, {1, 2, 3})}, 1);
        RecordSequence *raw = widget.records(1);
        QCOMPARE(widget.announced, (decltype(widget.announced){{1, raw}}));

        Integrator filter;
        widget.setFilter(&filter);
        QCOMPARE(widget.announced.size(), 1);
        widget.enableFiltering(true);
        QCOMPARE(widget.announced.size(), 2);
        QCOMPARE(widget.announced.last().second, widget.filteredRecords(1));
        widget.setFilter(nullptr);
        QCOMPARE(widget.announced.last().second, raw);
        widget.setSlotCount(1);
        QCOMPARE(widget.announced.last(), (QPair<int, RecordSequence *>(1, nullptr)));
    }

    void filtersAsInOnePass()
    {
        const double infinity = std::numeric_limits<double>::infinity();
        const Records cases[] = {
            {record(0, {1, 2}), record(2.4, {3, 4}), record(7, {3, 4})},
            {record(0, {1, 2}), record(2.6, {3, 4}), record(4.6, {3, 4}, 2)},
            {record(0, {1, 2, 3}), record(2, {4, 5, 6})},
            {record(0, {1, 2}), record(4, {5, 6}), record(6, {7}), record(2, {3, 4})},
            {record(0, {1, 2}), record(9, {5, 6}), record(2, {3, 4}), record(4, {8})},
            {record(0, {1, 2}), record(2, {3, 4}), record(4, {5, 6}), record(1, Samples(7, 9))},
            {record(0, {1, NaN, 2, 3, infinity}), record(5, {4, NaN})},
            {record(0, {1, 2}), record(2, {}), record(2, {3})},
        };
        const Integrator filter;
        for (const Records &records : cases) {
            TestWidget fedWidget;
            fedWidget.setFilter(&filter);
            fedWidget.enableFiltering(true);
            fedWidget.install({});
            for (const RecordPtr &item : records)
                fedWidget.feed(item);

            TestWidget installedWidget;
            installedWidget.install(records);
            installedWidget.enableFiltering(true);
            installedWidget.setFilter(&filter);

            const Samples expected = referenceSums(records);
            QVERIFY(isSame(samplesOf(fedWidget.filteredRecords(0)), expected));
            QVERIFY(isSame(samplesOf(installedWidget.filteredRecords(0)), expected));
        }
    }

    void filteredRecordsFollowTrimming()
    {
        const Integrator filter;
        TestWidget widget;
        widget.setFilter(&filter);
        widget.enableFiltering(true);
        widget.setRecords(0, new RingBuffer(2));
        for (int i = 0; i < 5; ++i)
            widget.feed(record(2 * i, {1, 1}));
        // The sums go on although the first records are gone.
        QCOMPARE(samplesOf(widget.filteredRecords(0)), (Samples{7, 8, 9, 10}));

        auto *buffer = new TimeWindowBuffer(window(0, 20));
        widget.setRecords(0, buffer);
        for (int i = 0; i < 5; ++i)
            widget.feed(record(2 * i, {1, 1}));
        buffer->setStoredWindow(window(3, 6));
        QCOMPARE(widget.filteredRecords(0)->size(), buffer->size());
        buffer->clear();
        QVERIFY(widget.filteredRecords(0)->isEmpty());
    }

    void filteredRecordsCatchUp()
    {
        const Integrator filter;
        TestWidget widget;
        widget.setFilter(&filter);
        widget.enableFiltering(true);
        widget.install({record(0, {1, 1})});
        widget.enableFiltering(false);
        for (int i = 1; i < 4; ++i)
            widget.feed(record(2 * i, {1, 1}));
        widget.enableFiltering(true);
        QCOMPARE(samplesOf(widget.displayedRecords(0)), (Samples{1, 2, 3, 4, 5, 6, 7, 8}));
        QCOMPARE(widget.amplitudeRange(0).second, 8 + 0.05 * 3.5);
    }

    void repaintsOnlyTouchedColumns()
    {
        TestWidget widget;
        widget.install({record(0, zigzag(20, -10, 10))});
        showAndSettle(widget);

        widget.feed(record(20, zigzag(10, -9, 9)));
        QRegion painted;
        QTRY_VERIFY(!(painted += widget.takePainted()).isEmpty());
        QVERIFY2(painted.boundingRect().left() >= 36, "repaints columns before the record");
        QVERIFY2(painted.boundingRect().right() <= 62, "repaints columns behind the record");
        QVERIFY(painted.contains(QRect(40, 0, 20, 100)));

        // A gap is shaded from the record before it.
        widget.feed(record(60, zigzag(10, -9, 9)));
        painted = QRegion();
        QTRY_VERIFY(!(painted += widget.takePainted()).isEmpty());
        QVERIFY(painted.contains(QRect(60, 0, 80, 100)));
        QVERIFY(painted.boundingRect().left() >= 56);

        // Nothing shows of a record out of view.
        widget.install({record(0, zigzag(20, -10, 10)), record(500, zigzag(10, -9, 9))});
        showAndSettle(widget);
        widget.feed(record(510, zigzag(10, -9, 9)));
        QCoreApplication::processEvents();
        QVERIFY(widget.takePainted().isEmpty());
    }

    void paintsManyRecordsTogether()
    {
        TestWidget widget;
        widget.install({record(0, zigzag(20, -10, 10))});
        showAndSettle(widget);
        for (int i = 0; i < 60; ++i) {
            widget.feed(record(20 + i, {0}));
            QCoreApplication::processEvents();
        }
        QVERIFY(widget.paintCount < 10);
        QRegion painted;
        QTRY_VERIFY((painted += widget.takePainted()).contains(QRect(40, 0, 120, 100)));
        QVERIFY(painted.boundingRect().left() >= 36);
    }

    void repaintsAllWhenTheRangeGrows()
    {
        TestWidget widget;
        widget.install({record(0, zigzag(20, -10, 10))});
        showAndSettle(widget);
        QSignalSpy updated(&widget, SIGNAL(traceUpdated(Tellarix::Gui::RecordWidget *)));
        QVERIFY(updated.isValid());

        widget.feed(record(20, {11}));
        QRegion painted;
        QTRY_COMPARE((painted += widget.takePainted()).boundingRect(), widget.rect());
        QCOMPARE(updated.count(), 1);
    }
};

QTEST_MAIN(TestRecordWidgetRecords)
#include "tst_recordwidgetrecords.moc"
