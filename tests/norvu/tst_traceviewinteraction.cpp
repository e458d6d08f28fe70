#include "traces.h"

#include <QBoxLayout>
#include <QLineEdit>
#include <QPainter>
#include <QPointer>
#include <QScrollArea>
#include <QScrollBar>

using namespace Norvu::Gui;
using namespace Traces;
using Tellarix::Gui::RecordWidget;

Q_DECLARE_METATYPE(QAbstractItemView::SelectionMode)

namespace {

const QStringList Rows{"A", "B", "C", "D", "E"};

/** Clicks into a row the way a pointer does: the event begins at its record widget. */
void click(TraceView &view, int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QTest::mouseClick(view.itemAt(row)->recordWidget(), Qt::LeftButton, modifiers);
}

QPoint centerOf(TraceView &view, int row)
{
    Trace *trace = view.itemAt(row);
    return trace->mapTo(&view, trace->rect().center());
}

void move(TraceView &view, const QPoint &position)
{
    QMouseEvent event(QEvent::MouseMove, position, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&view, &event);
}

/** Moves the pointer over the record widget of a row. */
void hover(TraceView &view, int row, const QPoint &position)
{
    QMouseEvent event(QEvent::MouseMove, position, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(view.itemAt(row)->recordWidget(), &event);
}

QScrollBar *scrollBar(TraceView &view)
{
    return view.findChild<QScrollArea *>()->verticalScrollBar();
}

bool hasInk(const QImage &before, const QImage &after, const QRect &area)
{
    return before.copy(area) != after.copy(area);
}

} // namespace

class TraceViewInteractionTest : public QObject
{
    Q_OBJECT

private slots:
    void clicksSelect_data();
    void clicksSelect();
    void clickBelowRowsDeselects();
    void clickElsewhereChangesNothing();
    void keysSelect_data();
    void keysSelect();
    void leavesOtherKeysToParent();
    void keysScrollWithoutCurrentRow();
    void selectionModes();
    void positionsWrapAround();
    void emptyViewIsSafe();
    void selectsByPattern_data();
    void selectsByPattern();
    void keysAskForPattern_data();
    void keysAskForPattern();
    void viewMayGoWhileAskingForPattern();
    void doubleClickActivatesCurrentRow();
    void dragMovesSelectedRows();
    void dragTakesUnselectedRowAlone();
    void leapStartsNoDrag();
    void removedRowLeavesDrag();
    void zoomsAndScrolls_data();
    void zoomsAndScrolls();
    void zoomsRowHeight();
    void shortcutsReachTheView();
    void crosshairFollowsPointer();
    void crosshairTellsTimeAndValue_data();
    void crosshairTellsTimeAndValue();
    void crosshairForgetsRemovedRow();
};

void TraceViewInteractionTest::clicksSelect_data()
{
    QTest::addColumn<QAbstractItemView::SelectionMode>("mode");
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<QStringList>("selected");
    QTest::addColumn<QStringList>("signalled");
    const auto extended = QAbstractItemView::ExtendedSelection;
    const auto single = QAbstractItemView::SingleSelection;
    const int none = Qt::NoModifier;
    const int control = Qt::ControlModifier;
    const int shift = Qt::ShiftModifier;

    // B is selected and current at first.
    QTest::newRow("another row") << extended << 3 << none << QStringList("D")
                                 << QStringList({"current B>D", "selection"});
    QTest::newRow("the same row") << extended << 1 << none << QStringList("B") << QStringList();
    QTest::newRow("Ctrl adds") << extended << 3 << control << QStringList({"B", "D"})
                               << QStringList({"current B>D", "selection"});
    QTest::newRow("Ctrl takes away")
        << extended << 1 << control << QStringList() << QStringList("selection");
    QTest::newRow("Shift down") << extended << 3 << shift << QStringList({"B", "C", "D"})
                                << QStringList({"current B>D", "selection"});
    QTest::newRow("Shift up") << extended << 0 << shift << QStringList({"A", "B"})
                              << QStringList({"current B>A", "selection"});
    QTest::newRow("Shift never deselects")
        << extended << 1 << shift << QStringList("B") << QStringList();
    QTest::newRow("single, Ctrl") << single << 3 << control << QStringList("D")
                                  << QStringList({"current B>D", "selection"});
    QTest::newRow("single, Shift")
        << single << 3 << shift << QStringList("D") << QStringList({"current B>D", "selection"});
    QTest::newRow("no selection") << QAbstractItemView::NoSelection << 3 << none << QStringList("B")
                                  << QStringList();
}

void TraceViewInteractionTest::clicksSelect()
{
    QFETCH(QAbstractItemView::SelectionMode, mode);
    QFETCH(int, row);
    QFETCH(int, modifiers);
    QFETCH(QStringList, selected);
    QFETCH(QStringList, signalled);
    TraceView view;
    show(view, Rows);
    view.setSelectionMode(mode);
    view.select(view.itemAt(1));
    SignalLog log(&view);

    click(view, row, Qt::KeyboardModifiers(modifiers));
    QCOMPARE(labels(view.selectedItems()), selected);
    QCOMPARE(log.take(), signalled);
    QCOMPARE(view.numberOfSelectedItems(), selected.size());
    QCOMPARE(view.emptySelection(), selected.isEmpty());
}

void TraceViewInteractionTest::clickBelowRowsDeselects()
{
    TraceView view;
    view.setItems({makeRow("A"), makeRow("B")});
    for (Trace *row : view.items())
        row->setFixedHeight(50);
    view.findChild<QScrollArea *>()->widget()->layout()->setAlignment(Qt::AlignTop);
    view.resize(500, 500);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    view.select(view.itemAt(0));
    SignalLog log(&view);

    const QPoint below = view.itemAt(1)->mapTo(&view, QPoint(50, 50 + 120));
    QTest::mouseClick(&view, Qt::LeftButton, Qt::ControlModifier, below);
    QCOMPARE(log.take(), QStringList());
    QTest::mouseClick(&view, Qt::LeftButton, Qt::NoModifier, below);
    QCOMPARE(log.take(), QStringList("selection"));
    QVERIFY(view.emptySelection());
    QVERIFY(view.currentItem() == view.itemAt(0));
}

void TraceViewInteractionTest::clickElsewhereChangesNothing()
{
    TraceView view;
    show(view, Rows);
    view.selectAll();
    SignalLog log(&view);
    QTest::mouseClick(&view, Qt::LeftButton, Qt::NoModifier, QPoint(20, view.height() - 2));
    QTest::mouseClick(view.itemAt(0)->recordWidget(), Qt::RightButton);
    QCOMPARE(log.take(), QStringList());
}

void TraceViewInteractionTest::keysSelect_data()
{
    QTest::addColumn<int>("current");
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<QStringList>("signalled");
    const int none = Qt::NoModifier;

    QTest::newRow("down") << 1 << int(Qt::Key_Down) << none
                          << QStringList({"current B>C", "selection"});
    QTest::newRow("down from the last")
        << 4 << int(Qt::Key_Down) << none << QStringList({"current E>A", "selection"});
    QTest::newRow("up from the first")
        << 0 << int(Qt::Key_Up) << none << QStringList({"current A>E", "selection"});
    QTest::newRow("home") << 3 << int(Qt::Key_Home) << none
                          << QStringList({"current D>A", "selection"});
    QTest::newRow("end") << 3 << int(Qt::Key_End) << none
                         << QStringList({"current D>E", "selection"});
    QTest::newRow("end at the end") << 4 << int(Qt::Key_End) << none << QStringList();
    QTest::newRow("space") << 2 << int(Qt::Key_Space) << none << QStringList("activated C");
    QTest::newRow("Ctrl+A") << 2 << int(Qt::Key_A) << int(Qt::ControlModifier)
                            << QStringList("selection");
    QTest::newRow("Ctrl+Shift+A") << 2 << int(Qt::Key_A)
                                  << int(Qt::ControlModifier | Qt::ShiftModifier) << QStringList();
}

void TraceViewInteractionTest::keysSelect()
{
    QFETCH(int, current);
    QFETCH(int, key);
    QFETCH(int, modifiers);
    QFETCH(QStringList, signalled);
    TraceView view;
    show(view, Rows);
    view.setCurrentItem(current);
    SignalLog log(&view);
    QTest::keyClick(&view, Qt::Key(key), Qt::KeyboardModifiers(modifiers));
    QCOMPARE(log.take(), signalled);
}

void TraceViewInteractionTest::leavesOtherKeysToParent()
{
    TraceView view;
    const QVector<QPair<int, bool>> keys{{Qt::Key_Plus, true}, {Qt::Key_Minus, true},
                                         {Qt::Key_A, true},    {Qt::Key_Space, true},
                                         {Qt::Key_Q, false},   {Qt::Key_PageDown, false}};
    view.setSelectionMode(QAbstractItemView::SingleSelection);
    for (const auto &key : keys) {
        QKeyEvent event(QEvent::KeyPress, key.first, Qt::NoModifier);
        QApplication::sendEvent(&view, &event);
        QCOMPARE(event.isAccepted(), key.second);
    }
}

void TraceViewInteractionTest::keysScrollWithoutCurrentRow()
{
    TraceView view;
    show(view, Rows);
    view.setMinimumRowHeight(100);
    view.resize(600, 250);
    QTRY_VERIFY(scrollBar(view)->maximum() > 250);
    SignalLog log(&view);

    QTest::keyClick(&view, Qt::Key_Down);
    QCOMPARE(scrollBar(view)->value(), view.itemAt(0)->height());
    QTest::keyClick(&view, Qt::Key_Up);
    QCOMPARE(scrollBar(view)->value(), 0);
    QTest::keyClick(&view, Qt::Key_End);
    QCOMPARE(scrollBar(view)->value(), scrollBar(view)->maximum());
    QTest::keyClick(&view, Qt::Key_Home);
    QCOMPARE(scrollBar(view)->value(), 0);
    QTest::keyClick(&view, Qt::Key_Space);
    QCOMPARE(log.take(), QStringList());

    view.setSelectedTrace(-1);
    QVERIFY(!view.itemAt(4)->visibleRegion().isEmpty());
    view.ensureVisible(view.itemAt(0));
    QCOMPARE(scrollBar(view)->value(), 0);
}

void TraceViewInteractionTest::selectionModes()
{
    TraceView view;
    view.setItems({makeRow("A"), makeRow("B")});
    view.selectAll();
    view.updateCurrentTrace(view.itemAt(1));
    SignalLog log(&view);
    view.setSelectionMode(QAbstractItemView::SingleSelection);
    QCOMPARE(log.take(), QStringList({"current B>-", "cleared", "selection"}));
    view.setSelectionMode(QAbstractItemView::SingleSelection);
    QCOMPARE(log.take(), QStringList("cleared"));
    view.selectAll();
    QVERIFY(view.emptySelection());
    view.select(nullptr);
    QCOMPARE(log.take(), QStringList());
}

void TraceViewInteractionTest::positionsWrapAround()
{
    TraceView view;
    view.setItems({makeRow("A"), makeRow("B"), makeRow("C")});
    const QVector<QPair<int, int>> positions{{-1, 2}, {3, 0}, {-7, 2}, {301, 1}};
    for (const auto &position : positions) {
        view.setSelectedTrace(position.first);
        QVERIFY(view.currentItem() == view.itemAt(position.second));
    }
    view.setCurrentItem(3);
    QVERIFY(view.currentItem() == view.itemAt(0));
    view.setCurrentItem(4);
    view.setCurrentItem(-1);
    QVERIFY(view.currentItem() == view.itemAt(0));
}

void TraceViewInteractionTest::emptyViewIsSafe()
{
    TraceView view;
    view.selectNextRow();
    view.selectPreviousRow();
    Trace stranger("stranger", Qt::black);
    view.updateCurrentTrace(&stranger);
    SignalLog log(&view);
    view.setCurrentItem(0);
    QCOMPARE(log.take(), QStringList("current stranger>-"));
}

void TraceViewInteractionTest::selectsByPattern_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QStringList>("selected");
    QTest::newRow("all") << "*" << QStringList({"APE", "ape", "APEX", "MTE"});
    QTest::newRow("whole label, case counts") << "APE" << QStringList("APE");
    QTest::newRow("one character") << "?PE" << QStringList("APE");
    QTest::newRow("character class") << "[MX]*" << QStringList("MTE");
    QTest::newRow("no match") << "" << QStringList();
}

void TraceViewInteractionTest::selectsByPattern()
{
    QFETCH(QString, pattern);
    QFETCH(QStringList, selected);
    TraceView view;
    view.setItems({makeRow("APE"), makeRow("ape"), makeRow("APEX"), makeRow("MTE")});
    SignalLog log(&view);
    view.selectMatching(pattern, true);
    QCOMPARE(labels(view.selectedItems()), selected);
    QCOMPARE(log.take(),
             QStringList(selected.isEmpty() ? QStringList() : QStringList("selection")));

    view.selectAll();
    view.selectMatching(pattern, false);
    QCOMPARE(view.numberOfSelectedItems(), 4 - selected.size());
}

void TraceViewInteractionTest::keysAskForPattern_data()
{
    QTest::addColumn<QAbstractItemView::SelectionMode>("mode");
    QTest::addColumn<int>("key");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<int>("answer");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QStringList>("selected");
    const auto extended = QAbstractItemView::ExtendedSelection;
    const int plus = Qt::Key_Plus;
    const int minus = Qt::Key_Minus;

    // B is selected and current at first.
    QTest::newRow("all as it comes")
        << extended << plus << QString() << int(Qt::Key_Return) << "Select pattern" << Rows;
    QTest::newRow("one more") << extended << plus << "D" << int(Qt::Key_Return) << "Select pattern"
                              << QStringList({"B", "D"});
    QTest::newRow("one less") << extended << minus << "[AB]" << int(Qt::Key_Return)
                              << "Deselect pattern" << QStringList();
    QTest::newRow("cancelled") << extended << plus << "D" << int(Qt::Key_Escape) << "Select pattern"
                               << QStringList("B");
    QTest::newRow("single selection") << QAbstractItemView::SingleSelection << plus << QString()
                                      << int(Qt::Key_Return) << QString() << QStringList("B");
}

void TraceViewInteractionTest::keysAskForPattern()
{
    QFETCH(QAbstractItemView::SelectionMode, mode);
    QFETCH(int, key);
    QFETCH(QString, typed);
    QFETCH(int, answer);
    QFETCH(QStringList, selected);
    TraceView view;
    show(view, Rows);
    view.setSelectionMode(mode);
    view.select(view.itemAt(1));
    SignalLog log(&view);

    QString title;
    QTimer timer;
    connect(&timer, &QTimer::timeout, [&] {
        // Keys reach the dialog as soon as its field has the focus.
        auto *field = qobject_cast<QLineEdit *>(QApplication::focusWidget());
        if (!field)
            return;
        timer.stop();
        title = field->window()->windowTitle();
        QTest::keyClicks(field, typed);
        QTest::keyClick(field, Qt::Key(answer));
    });
    timer.start(1);
    QTest::keyClick(&view, Qt::Key(key));
    QTEST(title, "title");
    QCOMPARE(labels(view.selectedItems()), selected);
    QCOMPARE(log.take().count("selection"), selected == QStringList("B") ? 0 : 1);
    QVERIFY(view.currentItem() == view.itemAt(1));
}

void TraceViewInteractionTest::viewMayGoWhileAskingForPattern()
{
    QPointer<TraceView> view(new TraceView);
    show(*view, Rows);
    QTimer::singleShot(0, view, [view] { delete view; });
    QKeyEvent event(QEvent::KeyPress, Qt::Key_Plus, Qt::NoModifier);
    QApplication::sendEvent(view, &event);
    QVERIFY(!view);
}

void TraceViewInteractionTest::doubleClickActivatesCurrentRow()
{
    TraceView view;
    show(view, Rows);
    click(view, 2);
    SignalLog log(&view);
    QTest::mouseDClick(&view, Qt::RightButton, Qt::NoModifier, centerOf(view, 2));
    QCOMPARE(log.take(), QStringList());
    QTest::mouseDClick(view.itemAt(2)->recordWidget(), Qt::LeftButton);
    QCOMPARE(log.take(), QStringList({"double C", "activated C"}));
}

void TraceViewInteractionTest::dragMovesSelectedRows()
{
    TraceView view;
    show(view, Rows);
    click(view, 0);
    click(view, 2, Qt::ControlModifier);
    SignalLog log(&view);

    const QPoint start = centerOf(view, 0);
    QTest::mousePress(&view, Qt::LeftButton, Qt::NoModifier, start);
    move(view, start + QPoint(0, 1));
    move(view, centerOf(view, 4));
    QCOMPARE(labels(view.items()), QStringList({"B", "D", "E", "A", "C"}));
    QTRY_COMPARE(labelsFromTop(view), labels(view.items()));
    QTest::mouseRelease(&view, Qt::LeftButton, Qt::NoModifier, centerOf(view, 1));
    QCOMPARE(log.take(), QStringList("current C>A"));
    QCOMPARE(labels(view.selectedItems()), QStringList({"A", "C"}));

    click(view, 1);
    QCOMPARE(labels(view.selectedItems()), QStringList("D"));
}

void TraceViewInteractionTest::dragTakesUnselectedRowAlone()
{
    TraceView view;
    show(view, Rows);
    click(view, 0);
    SignalLog log(&view);
    const QPoint start = centerOf(view, 3);
    QTest::mousePress(&view, Qt::LeftButton, Qt::NoModifier, start);
    move(view, start);
    move(view, centerOf(view, 1));
    QCOMPARE(labels(view.items()), QStringList({"A", "D", "B", "C", "E"}));
    QCOMPARE(log.take(), QStringList({"current A>D", "selection"}));
}

void TraceViewInteractionTest::leapStartsNoDrag()
{
    TraceView view;
    show(view, Rows);
    QTest::mousePress(&view, Qt::LeftButton, Qt::NoModifier, centerOf(view, 0));
    move(view, centerOf(view, 3));
    QCOMPARE(labels(view.items()), Rows);
    QTest::mouseRelease(&view, Qt::LeftButton, Qt::NoModifier, centerOf(view, 3));
    QCOMPARE(labels(view.selectedItems()), QStringList("D"));
}

void TraceViewInteractionTest::removedRowLeavesDrag()
{
    TraceView view;
    show(view, Rows);
    const QPoint start = centerOf(view, 0);
    QTest::mousePress(&view, Qt::LeftButton, Qt::NoModifier, start);
    move(view, start);
    view.removeItem(view.itemAt(0));
    move(view, centerOf(view, 2));
    QCOMPARE(view.count(), 4);
}

void TraceViewInteractionTest::zoomsAndScrolls_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<double>("tmin");
    QTest::addColumn<double>("tmax");
    QTest::newRow("zoom in") << "Increase horizontal scale" << 120.0 << 160.0;
    QTest::newRow("zoom out") << "Decrease horizontal scale" << 60.0 << 220.0;
    QTest::newRow("left") << "Scroll left" << 90.0 << 170.0;
    QTest::newRow("right") << "Scroll right" << 110.0 << 190.0;
}

void TraceViewInteractionTest::zoomsAndScrolls()
{
    QFETCH(QString, action);
    QFETCH(double, tmin);
    QFETCH(double, tmax);
    TraceView view;
    view.setTimeRange(100, 180);
    for (QAction *control : view.controlActions()) {
        if (control->text() == action)
            control->trigger();
    }
    QCOMPARE(view.tmin(), tmin);
    QCOMPARE(view.tmax(), tmax);
}

void TraceViewInteractionTest::zoomsRowHeight()
{
    TraceView view;
    view.resize(400, 100);
    view.setItems({makeRow("A")});
    view.verticalZoomOut();
    QCOMPARE(view.minimumRowHeight(), 16);
    view.setMinimumRowHeight(40);
    view.verticalZoomOut();
    QCOMPARE(view.minimumRowHeight(), 20);
    view.setMinimumRowHeight(31);
    view.verticalZoomOut();
    QCOMPARE(view.minimumRowHeight(), 16);
    view.setMinimumRowHeight(150);
    view.verticalZoomIn();
    QCOMPARE(view.minimumRowHeight(), 200);
    QCOMPARE(view.itemAt(0)->recordWidget()->minimumHeight(), 200);
}

void TraceViewInteractionTest::shortcutsReachTheView()
{
    TraceView view;
    show(view, Rows);
    view.setFocus();
    view.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&view));
    QTest::keyClick(&view, Qt::Key_Y, Qt::ShiftModifier);
    QCOMPARE(view.minimumRowHeight(), 32);
    QTest::keyClick(&view, Qt::Key_Right);
    QCOMPARE(view.tmin(), 75.0);
    QTest::keyClick(&view, Qt::Key_A, Qt::ControlModifier);
    QCOMPARE(view.numberOfSelectedItems(), 5);
    QTest::keyClick(&view, Qt::Key_Escape);
    QVERIFY(view.emptySelection());
    // Loading is a matter of the tool bar, which this view does without.
    SignalLog log(&view);
    QTest::keyClick(&view, Qt::Key_F5);
    QCOMPARE(log.take(), QStringList());
}

void TraceViewInteractionTest::crosshairFollowsPointer()
{
    TraceView view;
    show(view, Rows);
    QApplication::processEvents();
    RecordWidget *widget = view.itemAt(2)->recordWidget();
    const QPoint pointer(widget->canvasRect().center());
    const QPoint position = widget->mapTo(&view, pointer);
    const QRect column(position.x(), position.y() + 40, 1, 10);
    const QRect row(position.x() + 100, position.y(), 10, 1);

    hover(view, 2, pointer);
    const QImage before = view.grab().toImage();
    view.showCrosshair(true);
    const QImage shown = view.grab().toImage();
    QVERIFY(hasInk(before, shown, column));
    QVERIFY(hasInk(before, shown, row));
    QVERIFY(!hasInk(before, shown, column.translated(-1, 0)));

    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(widget, &leave);
    QCOMPARE(view.grab().toImage(), before);
}

void TraceViewInteractionTest::crosshairTellsTimeAndValue_data()
{
    QTest::addColumn<int>("depth"); // quarters of the slot's height
    QTest::addColumn<bool>("scaled");
    QTest::addColumn<QString>("value");
    QTest::newRow("top") << 0 << false << "90";
    QTest::newRow("three quarters down") << 3 << false << "15";
    QTest::newRow("in physical units") << 3 << true << "7.5";
}

void TraceViewInteractionTest::crosshairTellsTimeAndValue()
{
    QFETCH(int, depth);
    QFETCH(bool, scaled);
    QFETCH(QString, value);
    TraceView view;
    QFont font;
    font.setPixelSize(14); // points depend on what is painted on
    view.setFont(font);
    show(view, Rows);
    view.resize(700, 600);
    RecordWidget *widget = view.itemAt(2)->recordWidget();
    widget->setFixedHeight(40);
    view.setAllTracesNormalization(true);
    widget->setRecords(0, new Tellarix::RingBuffer(0), true);
    widget->setAmplRange(-10, 90);
    widget->setRecordScale(0, 0.5);
    widget->showScaledValues(scaled);
    widget->setAlignment(timeAt(3600));
    QApplication::processEvents();

    const QPoint pointer(widget->canvasRect().left() + 200, 10 * depth);
    hover(view, 2, pointer);
    QPixmap expected = view.grab();
    view.showCrosshair(true);
    const QImage shown = view.grab().toImage();

    const double seconds = 200 / view.timeScale()->scale();
    const QString time =
        QString::fromStdString((timeAt(3600) + Tellarix::Core::TimeSpan(seconds)).iso());
    const QPoint position = widget->mapTo(&view, pointer);
    QPainter painter(&expected);
    QColor color = view.palette().color(QPalette::Highlight);
    color.setAlpha(192);
    painter.setFont(font);
    painter.setPen(color);
    painter.setCompositionMode(QPainter::CompositionMode_Multiply);
    const QSize valueSize = painter.fontMetrics().boundingRect(value).size();
    const QSize timeSize = painter.fontMetrics().boundingRect(time).size();
    QRect valueRect(QPoint(), valueSize);
    valueRect.moveBottomRight(position - QPoint(16, 4));
    const QRect timeRect(position + QPoint(4, 16), timeSize);
    painter.drawText(valueRect, Qt::AlignCenter | Qt::TextDontClip, value);
    painter.drawText(timeRect, Qt::AlignCenter | Qt::TextDontClip, time);
    painter.end();
    QCOMPARE(shown.copy(valueRect), expected.copy(valueRect).toImage());
    QCOMPARE(shown.copy(timeRect), expected.copy(timeRect).toImage());
}

void TraceViewInteractionTest::crosshairForgetsRemovedRow()
{
    TraceView view;
    show(view, Rows);
    view.showCrosshair(true);
    hover(view, 0, QPoint(200, 10));
    view.removeItem(view.itemAt(0));
    view.grab();
    QCOMPARE(view.count(), 4);
}

QTEST_MAIN(TraceViewInteractionTest)
#include "tst_traceviewinteraction.moc"
