// SPDX-License-Identifier: LGPL-3.0-or-later

#include "pointer.h"
#include "recordwidgettest.h"

#include <tellarix/qt/records/recordmarker.h>

using namespace Tellarix;
using Gui::RecordMarker;
using Gui::RecordWidget;

namespace {

/** A marker of one colour that tells when it is deleted. */
class TestMarker : public RecordMarker
{
public:
    TestMarker(double seconds, const QColor &color, int *deleted = nullptr)
        : RecordMarker(at(seconds)), _deleted(deleted)
    {
        setColor(color);
    }
    ~TestMarker() override
    {
        if (_deleted)
            ++*_deleted;
    }

private:
    int *_deleted;
};

/** Writes down signals in the order in which they come. */
class SignalLog : public QObject
{
public:
    explicit SignalLog(RecordWidget *widget)
    {
        const auto timed = [this](const char *name) {
            return [this, name](Core::Time a, Core::Time b) { add(name, a, b); };
        };
        const auto marked = [this](const char *name) {
            return [this, name](RecordWidget *, RecordMarker *marker) {
                add(name, marker->time(), marker->correctedTime());
            };
        };
        connect(widget, &RecordWidget::selectedTimeRangeChanged, this, timed("selecting"));
        connect(widget, &RecordWidget::selectedTimeRange, this, timed("selected"));
        connect(widget, &RecordWidget::timeClicked, this,
                [this](Core::Time time) { _lines << "clicked " + text(time); });
        connect(widget, &RecordWidget::cursorMoved, this,
                [this](RecordWidget *, Core::Time time) { _lines << "cursor " + text(time); });
        connect(widget, &RecordWidget::currentMarkerChanged, this,
                [this](RecordWidget *, RecordMarker *marker) {
                    _lines << "current " + (marker ? text(marker->time()) : "none");
                });
        connect(widget, &RecordWidget::markerMoving, this, marked("moving"));
        connect(widget, &RecordWidget::markerMoved, this, marked("moved"));
    }

    QStringList take() { return std::exchange(_lines, QStringList()); }

private:
    static QString text(Core::Time time)
    {
        return time.valid() ? QString::number((time - at(0)).length()) : QStringLiteral("-");
    }
    void add(const char *name, Core::Time a, Core::Time b)
    {
        _lines << QStringLiteral("%1 %2 %3").arg(name, text(a), text(b));
    }

    QStringList _lines;
};

/** A parent that counts what its child leaves to it. */
class MouseCounter : public QWidget
{
public:
    int events{0};

protected:
    void mousePressEvent(QMouseEvent *) override { ++events; }
    void mouseMoveEvent(QMouseEvent *) override { ++events; }
    void mouseReleaseEvent(QMouseEvent *) override { ++events; }
};

} // namespace

class TestRecordWidgetInteraction : public QObject
{
    Q_OBJECT

private slots:
    void selectsByDragging()
    {
        TestWidget widget;
        widget.setSelectionEnabled(true);
        widget.setDrawAxis(true);
        widget.setAxisWidth(20);
        SignalLog log(&widget);
        Pointer::drag(widget, {{40, 50}, {60, 50}, {80, 60}});
        QCOMPARE(log.take(), (QStringList{"selecting 10 20", "selecting 10 30", "selected 10 30"}));
        // What becomes of the range is up to whoever asked for it.
        QVERIFY(!widget.selectedTimeWindow().valid());
        // Beyond the canvas the range ends at its edge.
        Pointer::drag(widget, {{100, 50}, {60, 50}, {-30, 50}});
        QCOMPARE(log.take(), (QStringList{"selecting 40 20", "selecting 40 0", "selected 0 40"}));
        Pointer::drag(widget, {{40, 50}, {41, 50}});
        QCOMPARE(log.take(), QStringList{"clicked 10"});
        QTest::mouseClick(&widget, Qt::RightButton, Qt::NoModifier, {40, 50});
        widget.setSelectionEnabled(false);
        Pointer::drag(widget, {{40, 50}, {80, 50}});
        QCOMPARE(log.take(), QStringList());
    }

    void leavesUnusedEventsToTheParent()
    {
        MouseCounter parent;
        parent.resize(200, 100);
        parent.setMouseTracking(true);
        TestWidget widget;
        widget.setParent(&parent);
        parent.show();
        // Press, move and release reach the parent unless they select.
        Pointer::drag(widget, {{20, 50}, {40, 50}});
        QCOMPARE(parent.events, 3);
        widget.setSelectionEnabled(true);
        Pointer::drag(widget, {{20, 50}, {40, 50}});
        QCOMPARE(parent.events, 3);
        widget.setMouseTracking(true);
        Pointer::move(widget, {70, 50});
        QCOMPARE(parent.events, 4);
    }

    void movesCursorWithThePointer()
    {
        TestWidget widget;
        widget.setDrawAxis(true);
        widget.setAxisWidth(20);
        SignalLog log(&widget);
        Pointer::move(widget, {40, 50});
        QCOMPARE(log.take(), QStringList());

        widget.setCursorShown(true);
        const QRgb bare = picture(widget).pixel(40, 50);
        Pointer::move(widget, {40, 50});
        Pointer::move(widget, {40, 51});
        Pointer::move(widget, {42, 50});
        QVERIFY(picture(widget).pixel(42, 50) != bare);
        QCOMPARE(picture(widget).pixel(40, 50), bare);
        Pointer::move(widget, {10, 50});
        Pointer::move(widget, {60, 50});
        Pointer::leave(widget);
        QCOMPARE(log.take(),
                 (QStringList{"cursor 10", "cursor 11", "cursor -", "cursor 20", "cursor -"}));
        widget.setCursorTime(at(30));
        QCOMPARE(log.take(), QStringList());
        QVERIFY(picture(widget).pixel(80, 50) != bare);
    }

    void tellsWhatIsUnderThePointer()
    {
        TestWidget widget;
        QCOMPARE(widget.statusText({20, 0}), QString("2024-01-05 00:00:10.000"));
        widget.install({record(0, {-100, 100})});
        widget.setRecordScale(0, 0.5);
        widget.setRecordUnit(0, "nm/s");
        QCOMPARE(widget.statusText({20, 0}), QString("2024-01-05 00:00:10.000  105 nm/s"));
        widget.showScaledValues(true);
        QCOMPARE(widget.statusText({20, 99}), QString("2024-01-05 00:00:10.000  -52.5 nm/s"));
        QCOMPARE(widget.statusText({-1, 50}), QString());
    }

    void ownsMarkers()
    {
        int deleted = 0;
        auto *taken = new TestMarker(3, Qt::blue, &deleted);
        {
            RecordWidget widget;
            RecordWidget other;
            QVERIFY(widget.addMarker(new TestMarker(1, Qt::blue, &deleted)));
            QVERIFY(widget.addMarker(new TestMarker(2, Qt::blue, &deleted)));
            QVERIFY(widget.addMarker(taken));
            QVERIFY(!widget.addMarker(taken));
            QVERIFY(!other.addMarker(taken));
            QVERIFY(widget.takeMarker(taken));
            QVERIFY(taken->parent() == nullptr);
            QVERIFY(widget.removeMarker(0));
            QVERIFY(!widget.removeMarker(1));
            QCOMPARE(deleted, 1);
        }
        QCOMPARE(deleted, 2);
        delete taken;
    }

    void survivesMarkersDeletedOutside()
    {
        TestWidget widget;
        auto *marker = new TestMarker(10, Qt::blue);
        widget.addMarker(marker);
        widget.setCurrentMarker(marker);
        SignalLog log(&widget);
        delete marker;
        QCOMPARE(widget.markerCount(), 0);
        QVERIFY(!widget.currentMarker());
        QCOMPARE(log.take(), QStringList{"current none"});
        picture(widget);
    }

    void findsMarkers()
    {
        TestWidget widget;
        auto *first = new TestMarker(20, Qt::blue);
        auto *second = new TestMarker(22, Qt::blue);
        widget.addMarker(first);
        widget.addMarker(second);
        QCOMPARE(widget.markerAt({41, 50}), first);
        QCOMPARE(widget.markerAt({43, 50}), second);
        QVERIFY(widget.markerAt({42, 50}) == second);
        first->setHidden(true);
        QCOMPARE(widget.markerAt({41, 50}), second);
        second->setAlignment(Qt::AlignBottom);
        QVERIFY(!widget.markerAt({44, 20}));
        QCOMPARE(widget.markerAt({44, 80}), second);
    }

    void drawsMarkers()
    {
        const QColor own = Qt::blue;
        const QColor moved = Qt::magenta;
        const struct
        {
            Qt::Alignment alignment;
            bool movable;
            double movedTo;
            QColor color;
            QRect ink; // the frame covers the outermost rows
        } cases[] = {
            {{}, false, 20, own, QRect(40, 1, 1, 98)},
            {Qt::AlignTop, false, 20, own, QRect(40, 1, 1, 49)},
            {Qt::AlignBottom, false, 20, own, QRect(40, 51, 1, 48)},
            {Qt::AlignTop, true, 30, moved, QRect(60, 1, 1, 98)},
            {Qt::AlignTop, false, 30, own, QRect(60, 1, 1, 49)},
            {{}, false, 130, own, QRect()},
        };
        for (const auto &item : cases) {
            TestWidget widget;
            auto *marker = new TestMarker(20, own);
            marker->setModifiedColor(moved);
            marker->setAlignment(item.alignment);
            marker->setMovable(item.movable);
            marker->setCorrectedTime(at(item.movedTo));
            widget.addMarker(marker);
            QCOMPARE(inkRect(picture(widget), item.color), item.ink);

            const QRgb bare = picture(widget).pixel(40, 20);
            marker->setMoveCopyEnabled(true);
            if (item.movedTo != 20)
                QVERIFY(picture(widget).pixel(40, 20) != bare);
            marker->setEnabled(false);
            QCOMPARE(inkRect(picture(widget), item.color), QRect());
        }
    }

    void dragsMovableMarkers()
    {
        TestWidget widget;
        widget.setSelectionEnabled(true);
        auto *marker = new TestMarker(20, Qt::blue);
        marker->setMovable(true);
        widget.addMarker(marker);
        SignalLog log(&widget);

        // The grip beside the line stays: the marker doesn't jump under the pointer.
        Pointer::drag(widget, {{41, 50}, {61, 50}, {81, 50}});
        QCOMPARE(log.take(),
                 (QStringList{"current 20", "moving 20 30", "moving 20 40", "moved 20 40"}));
        QVERIFY(marker->isModified());
        Pointer::drag(widget, {{80, 50}, {400, 50}});
        QCOMPARE(marker->correctedTime(), at(99.5));
        marker->reset();
        log.take();
        Pointer::drag(widget, {{40, 50}, {41, 50}});
        QCOMPARE(log.take(), QStringList{"clicked 20"});
        QVERIFY(!marker->isModified());
    }

    void copesWithMarkerThatVanishesWhileDragged()
    {
        TestWidget widget;
        auto *marker = new TestMarker(20, Qt::blue);
        marker->setMovable(true);
        widget.addMarker(marker);
        QTest::mousePress(&widget, Qt::LeftButton, Qt::NoModifier, {40, 50});
        widget.clearMarkers();
        SignalLog log(&widget);
        Pointer::move(widget, {60, 50}, Qt::LeftButton);
        QTest::mouseRelease(&widget, Qt::LeftButton, Qt::NoModifier, {60, 50});
        QCOMPARE(log.take(), QStringList());
    }
};

QTEST_MAIN(TestRecordWidgetInteraction)
#include "tst_recordwidgetinteraction.moc"
