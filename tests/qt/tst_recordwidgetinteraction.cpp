#include "recordwidgettest.h"

#include <tellarix/qt/records/recordlabel.h>
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
    Q_OBJECT

public:
    explicit SignalLog(RecordWidget *widget)
    {
        connect(widget,
                SIGNAL(selectedTimeRangeChanged(Tellarix::Core::Time, Tellarix::Core::Time)), this,
                SLOT(selecting(Tellarix::Core::Time, Tellarix::Core::Time)));
        connect(widget, SIGNAL(selectedTimeRange(Tellarix::Core::Time, Tellarix::Core::Time)), this,
                SLOT(selected(Tellarix::Core::Time, Tellarix::Core::Time)));
        connect(widget, SIGNAL(clickedOnTime(Tellarix::Core::Time)), this,
                SLOT(clicked(Tellarix::Core::Time)));
        connect(widget, SIGNAL(cursorUpdated(Tellarix::Gui::RecordWidget *, Tellarix::Core::Time)),
                this, SLOT(cursor(Tellarix::Gui::RecordWidget *, Tellarix::Core::Time)));
        connect(widget,
                SIGNAL(currentMarkerChanged(Tellarix::Gui::RecordWidget *,
                                            Tellarix::Gui::RecordMarker *)),
                this, SLOT(current(Tellarix::Gui::RecordWidget *, Tellarix::Gui::RecordMarker *)));
        connect(widget,
                SIGNAL(markerMoving(Tellarix::Gui::RecordWidget *, Tellarix::Gui::RecordMarker *)),
                this, SLOT(moving(Tellarix::Gui::RecordWidget *, Tellarix::Gui::RecordMarker *)));
        connect(widget,
                SIGNAL(markerMoved(Tellarix::Gui::RecordWidget *, Tellarix::Gui::RecordMarker *)),
                this, SLOT(moved(Tellarix::Gui::RecordWidget *, Tellarix::Gui::RecordMarker *)));
    }

    QStringList take() { return std::exchange(_lines, QStringList()); }

private slots:
    void selecting(Tellarix::Core::Time a, Tellarix::Core::Time b) { add("selecting", a, b); }
    void selected(Tellarix::Core::Time a, Tellarix::Core::Time b) { add("selected", a, b); }
    void clicked(Tellarix::Core::Time time) { _lines << "clicked " + text(time); }
    void cursor(Tellarix::Gui::RecordWidget *, Tellarix::Core::Time time)
    {
        _lines << "cursor " + text(time);
    }
    void current(Tellarix::Gui::RecordWidget *, Tellarix::Gui::RecordMarker *marker)
    {
        _lines << "current " + (marker ? text(marker->time()) : "none");
    }
    void moving(Tellarix::Gui::RecordWidget *, Tellarix::Gui::RecordMarker *marker)
    {
        add("moving", marker->time(), marker->correctedTime());
    }
    void moved(Tellarix::Gui::RecordWidget *, Tellarix::Gui::RecordMarker *marker)
    {
        add("moved", marker->time(), marker->correctedTime());
    }

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

/** Presses at the first point and drags over the others; releases at the last. */
void drag(QWidget &widget, const QVector<QPoint> &way)
{
    QTest::mousePress(&widget, Qt::LeftButton, Qt::NoModifier, way.first());
    for (int i = 1; i < way.size(); ++i) {
        QMouseEvent move(QEvent::MouseMove, way[i], widget.mapToGlobal(way[i]), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&widget, &move);
    }
    QTest::mouseRelease(&widget, Qt::LeftButton, Qt::NoModifier, way.last());
}

void moveTo(QWidget &widget, const QPoint &position)
{
    QMouseEvent move(QEvent::MouseMove, position, widget.mapToGlobal(position), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&widget, &move);
}

/** A parent that counts what its child leaves to it. */
class MouseCounter : public QWidget
{
public:
    int presses{0};
    int moves{0};
    int releases{0};

protected:
    void mousePressEvent(QMouseEvent *) override { ++presses; }
    void mouseMoveEvent(QMouseEvent *) override { ++moves; }
    void mouseReleaseEvent(QMouseEvent *) override { ++releases; }
};

} // namespace

class TestRecordWidgetInteraction : public QObject
{
    Q_OBJECT

private slots:
    void selectsByDragging();
    void ordersReversedSelection();
    void clicksWithoutSelecting();
    void leavesUnusedEventsToTheParent();
    void showsSelectedWindow();
    void movesCursorWithThePointer();
    void tellsWhatIsUnderThePointer();
    void ownsMarkers();
    void survivesMarkersDeletedOutside();
    void findsMarkers();
    void drawsMarkers_data();
    void drawsMarkers();
    void dragsMovableMarkers();
    void leavesFixedMarkersAlone();
    void copesWithMarkerThatVanishesWhileDragged();
    void copiesMarkersWithoutTheirWidget();
    void labelsGrow();
};

void TestRecordWidgetInteraction::selectsByDragging()
{
    TestWidget widget;
    widget.setSelectionEnabled(true);
    SignalLog log(&widget);
    drag(widget, {{20, 50}, {40, 50}, {60, 60}});
    QCOMPARE(log.take(), (QStringList{"selecting 10 20", "selecting 10 30", "selected 10 30"}));
    // What becomes of the range is up to whoever asked for it.
    QVERIFY(!widget.selectedTimeWindow().valid());
}

void TestRecordWidgetInteraction::ordersReversedSelection()
{
    TestWidget widget;
    widget.setSelectionEnabled(true);
    widget.setDrawAxis(true);
    widget.setAxisWidth(20);
    SignalLog log(&widget);
    // Beyond the canvas the range ends at its edge.
    drag(widget, {{100, 50}, {60, 50}, {-30, 50}});
    QCOMPARE(log.take(), (QStringList{"selecting 40 20", "selecting 40 0", "selected 0 40"}));
}

void TestRecordWidgetInteraction::clicksWithoutSelecting()
{
    TestWidget widget;
    widget.setSelectionEnabled(true);
    SignalLog log(&widget);
    drag(widget, {{20, 50}, {21, 50}});
    QCOMPARE(log.take(), QStringList{"clicked 10"});
    QTest::mouseClick(&widget, Qt::RightButton, Qt::NoModifier, {20, 50});
    QCOMPARE(log.take(), QStringList());
    widget.setSelectionEnabled(false);
    drag(widget, {{20, 50}, {80, 50}});
    QCOMPARE(log.take(), QStringList());
}

void TestRecordWidgetInteraction::leavesUnusedEventsToTheParent()
{
    MouseCounter parent;
    parent.resize(200, 100);
    parent.setMouseTracking(true);
    TestWidget widget;
    widget.setParent(&parent);
    parent.show();
    drag(widget, {{20, 50}, {40, 50}, {60, 50}});
    QCOMPARE(parent.presses, 1);
    QCOMPARE(parent.moves, 2);
    QCOMPARE(parent.releases, 1);

    widget.setSelectionEnabled(true);
    drag(widget, {{20, 50}, {40, 50}, {60, 50}});
    QCOMPARE(parent.presses, 1);
    QCOMPARE(parent.moves, 2);
    QCOMPARE(parent.releases, 1);
    widget.setMouseTracking(true);
    moveTo(widget, {70, 50});
    QCOMPARE(parent.moves, 3);
}

void TestRecordWidgetInteraction::showsSelectedWindow()
{
    TestWidget widget;
    const QRgb bare = picture(widget).pixel(50, 50);
    widget.setSelectedTimeWindow(window(20, 30));
    const QImage image = picture(widget);
    QCOMPARE(image.pixel(38, 50), bare);
    QVERIFY(image.pixel(50, 50) != bare);
    QCOMPARE(image.pixel(62, 50), bare);
    widget.setSelectedTimeWindow(Core::TimeWindow());
    QCOMPARE(picture(widget).pixel(50, 50), bare);
}

void TestRecordWidgetInteraction::movesCursorWithThePointer()
{
    TestWidget widget;
    widget.setDrawAxis(true);
    widget.setAxisWidth(20);
    SignalLog log(&widget);
    moveTo(widget, {40, 50});
    QCOMPARE(log.take(), QStringList());

    widget.setCursorShown(true);
    const QRgb bare = picture(widget).pixel(40, 50);
    moveTo(widget, {40, 50});
    moveTo(widget, {40, 51});
    moveTo(widget, {42, 50});
    QVERIFY(picture(widget).pixel(42, 50) != bare);
    QCOMPARE(picture(widget).pixel(40, 50), bare);
    moveTo(widget, {10, 50});
    moveTo(widget, {60, 50});
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&widget, &leave);
    QCOMPARE(log.take(),
             (QStringList{"cursor 10", "cursor 11", "cursor -", "cursor 20", "cursor -"}));
    widget.setCursorTime(at(30));
    QCOMPARE(log.take(), QStringList());
    QVERIFY(picture(widget).pixel(80, 50) != bare);
}

void TestRecordWidgetInteraction::tellsWhatIsUnderThePointer()
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

void TestRecordWidgetInteraction::ownsMarkers()
{
    int deleted = 0;
    auto *taken = new TestMarker(3, Qt::blue, &deleted);
    {
        RecordWidget widget;
        RecordWidget other;
        QVERIFY(!widget.addMarker(nullptr));
        QVERIFY(widget.addMarker(new TestMarker(1, Qt::blue, &deleted)));
        QVERIFY(widget.addMarker(new TestMarker(2, Qt::blue, &deleted)));
        QVERIFY(widget.addMarker(taken));
        QVERIFY(!widget.addMarker(taken));
        QVERIFY(!other.addMarker(taken));
        QVERIFY(!other.takeMarker(taken));
        QVERIFY(widget.takeMarker(taken));
        QVERIFY(taken->parent() == nullptr);
        QVERIFY(widget.removeMarker(0));
        QVERIFY(!widget.removeMarker(1));
        QCOMPARE(deleted, 1);
        QCOMPARE(widget.marker(0)->time(), at(2));
        QVERIFY(!widget.marker(1));
    }
    QCOMPARE(deleted, 2);
    delete taken;
}

void TestRecordWidgetInteraction::survivesMarkersDeletedOutside()
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
    QVERIFY(!inkRect(picture(widget), Qt::blue).isValid());
}

void TestRecordWidgetInteraction::findsMarkers()
{
    TestWidget widget;
    auto *first = new TestMarker(20, Qt::blue);
    auto *second = new TestMarker(22, Qt::blue);
    widget.addMarker(first);
    widget.addMarker(second);
    QCOMPARE(widget.markerAt({41, 50}), first);
    QCOMPARE(widget.markerAt({43, 50}), second);
    QVERIFY(widget.markerAt({42, 50}) == second);
    QVERIFY(!widget.markerAt({36, 50}));
    QCOMPARE(widget.markerAt({36, 50}, 5), first);
    first->setHidden(true);
    QCOMPARE(widget.markerAt({41, 50}), second);
    second->setAlignment(Qt::AlignBottom);
    QVERIFY(!widget.markerAt({44, 20}));
    QCOMPARE(widget.markerAt({44, 80}), second);
    first->setText("P");
    QCOMPARE(widget.marker("P"), first);
    QVERIFY(!widget.marker("S"));
}

void TestRecordWidgetInteraction::drawsMarkers_data()
{
    QTest::addColumn<Qt::Alignment>("alignment");
    QTest::addColumn<bool>("movable");
    QTest::addColumn<double>("movedTo");
    QTest::addColumn<QColor>("color");
    QTest::addColumn<QRect>("ink");

    // The frame covers the outermost rows.
    using A = Qt::Alignment;
    const QColor own = Qt::blue;
    const QColor moved = Qt::magenta;
    QTest::newRow("whole height") << A() << false << 20.0 << own << QRect(40, 1, 1, 98);
    QTest::newRow("upper half") << A(Qt::AlignTop) << false << 20.0 << own << QRect(40, 1, 1, 49);
    QTest::newRow("lower half") << A(Qt::AlignBottom) << false << 20.0 << own
                                << QRect(40, 51, 1, 48);
    QTest::newRow("moved") << A(Qt::AlignTop) << true << 30.0 << moved << QRect(60, 1, 1, 98);
    QTest::newRow("moved, but fixed")
        << A(Qt::AlignTop) << false << 30.0 << own << QRect(60, 1, 1, 49);
    QTest::newRow("out of view") << A() << false << 130.0 << own << QRect();
}

void TestRecordWidgetInteraction::drawsMarkers()
{
    QFETCH(Qt::Alignment, alignment);
    QFETCH(bool, movable);
    QFETCH(double, movedTo);
    QFETCH(QColor, color);
    QFETCH(QRect, ink);

    TestWidget widget;
    auto *marker = new TestMarker(20, Qt::blue);
    marker->setModifiedColor(Qt::magenta);
    marker->setAlignment(alignment);
    marker->setMovable(movable);
    marker->setCorrectedTime(at(movedTo));
    widget.addMarker(marker);
    QCOMPARE(inkRect(picture(widget), color), ink);

    const QRgb bare = picture(widget).pixel(40, 20);
    marker->setMoveCopyEnabled(true);
    if (movedTo != 20 && alignment != Qt::AlignBottom)
        QVERIFY(picture(widget).pixel(40, 20) != bare);
    marker->setHidden(true);
    QCOMPARE(inkRect(picture(widget), color), QRect());
    marker->setHidden(false);
    marker->setEnabled(false);
    QCOMPARE(inkRect(picture(widget), color), QRect());
}

void TestRecordWidgetInteraction::dragsMovableMarkers()
{
    TestWidget widget;
    widget.setSelectionEnabled(true);
    auto *marker = new TestMarker(20, Qt::blue);
    marker->setMovable(true);
    widget.addMarker(marker);
    SignalLog log(&widget);

    // The grip beside the line stays: the marker doesn't jump under the pointer.
    drag(widget, {{41, 50}, {61, 50}, {81, 50}});
    QCOMPARE(log.take(),
             (QStringList{"current 20", "moving 20 30", "moving 20 40", "moved 20 40"}));
    QVERIFY(marker->isModified());
    QCOMPARE(widget.currentMarker(), marker);
    drag(widget, {{80, 50}, {400, 50}});
    QCOMPARE(marker->correctedTime(), at(99.5));
    marker->reset();
    QVERIFY(!marker->isModified());

    log.take();
    drag(widget, {{40, 50}, {41, 50}});
    QCOMPARE(log.take(), QStringList{"clicked 20"});
    QVERIFY(!marker->isModified());
}

void TestRecordWidgetInteraction::leavesFixedMarkersAlone()
{
    TestWidget widget;
    widget.setSelectionEnabled(true);
    auto *marker = new TestMarker(20, Qt::blue);
    widget.addMarker(marker);
    SignalLog log(&widget);
    drag(widget, {{40, 50}, {60, 50}});
    QCOMPARE(log.take(), (QStringList{"current 20", "selecting 20 30", "selected 20 30"}));

    marker->setMovable(true);
    marker->setEnabled(false);
    drag(widget, {{40, 50}, {60, 50}});
    QVERIFY(!marker->isModified());
}

void TestRecordWidgetInteraction::copesWithMarkerThatVanishesWhileDragged()
{
    TestWidget widget;
    auto *marker = new TestMarker(20, Qt::blue);
    marker->setMovable(true);
    widget.addMarker(marker);
    QTest::mousePress(&widget, Qt::LeftButton, Qt::NoModifier, {40, 50});
    widget.clearMarkers();
    SignalLog log(&widget);
    QMouseEvent move(QEvent::MouseMove, QPoint(60, 50), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QCoreApplication::sendEvent(&widget, &move);
    QTest::mouseRelease(&widget, Qt::LeftButton, Qt::NoModifier, {60, 50});
    QCOMPARE(log.take(), QStringList());
}

void TestRecordWidgetInteraction::copiesMarkersWithoutTheirWidget()
{
    TestWidget widget;
    auto *marker = new RecordMarker(at(20), "P");
    marker->setColor(Qt::blue);
    marker->setCorrectedTime(at(25));
    widget.addMarker(marker);
    const std::unique_ptr<RecordMarker> copy(marker->clone());
    QVERIFY(!copy->parent());
    QCOMPARE(copy->text(), QString("P"));
    QVERIFY(copy->isModified());
    *marker = RecordMarker(at(30), "S");
    QCOMPARE(marker->parent(), &widget);
    QCOMPARE(marker->correctedTime(), at(30));
}

void TestRecordWidgetInteraction::labelsGrow()
{
    Gui::StandardRecordLabel label(1);
    label.setText("GE", 0);
    const int width = label.sizeHint().width();
    label.setText("APE", 3);
    QCOMPARE(label.itemCount(), 4);
    QVERIFY(label.sizeHint().width() > width);
    QCOMPARE(label.text(1), QString());
    QCOMPARE(label.text(-1), QString());
    label.setText("lost", -1);
    label.setColor(Qt::red, 3);
    QCOMPARE(label.effectiveColor(3), QColor(Qt::red));
    label.setLabelEnabled(false);
    QCOMPARE(label.effectiveColor(3), QColor(160, 160, 160));

    label.setLabelEnabled(true);
    label.setWidth(50, 0);
    label.resize(200, 30);
    QVERIFY(inkRect(picture(label), Qt::red).left() >= 50);
}

QTEST_MAIN(TestRecordWidgetInteraction)
#include "tst_recordwidgetinteraction.moc"
