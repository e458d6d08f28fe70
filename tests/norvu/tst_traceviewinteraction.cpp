// SPDX-License-Identifier: LGPL-3.0-or-later

#include "pointer.h"
#include "rowname.h"
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

void dragTo(TraceView &view, const QPoint &position)
{
    Pointer::move(view, position, Qt::LeftButton);
}

} // namespace

class TraceViewInteractionTest : public QObject
{
    Q_OBJECT

private slots:
    void clicksSelect()
    {
        const auto extended = QAbstractItemView::ExtendedSelection;
        const auto single = QAbstractItemView::SingleSelection;
        const int none = Qt::NoModifier;
        const int control = Qt::ControlModifier;
        const int shift = Qt::ShiftModifier;
        const QStringList changed{"current B>D", "selection"};
        const std::tuple<const char *, QAbstractItemView::SelectionMode, int, int, QStringList,
                         QStringList>
            rows[] = {// B is selected and current at first.
                      {"another row", extended, 3, none, {"D"}, changed},
                      {"the same row", extended, 1, none, {"B"}, {}},
                      {"Ctrl adds", extended, 3, control, {"B", "D"}, changed},
                      {"Ctrl takes away", extended, 1, control, {}, {"selection"}},
                      {"Shift down", extended, 3, shift, {"B", "C", "D"}, changed},
                      {"Shift never deselects", extended, 1, shift, {"B"}, {}},
                      {"single, Shift", single, 3, shift, {"D"}, changed},
                      {"no selection", QAbstractItemView::NoSelection, 3, none, {"B"}, {}}};
        for (const auto &[name, mode, row, modifiers, selected, signalled] : rows) {
            const RowName shown(name);
            TraceView view;
            show(view, Rows);
            view.setSelectionMode(mode);
            view.select(view.itemAt(1));
            SignalLog log(&view);

            click(view, row, Qt::KeyboardModifiers(modifiers));
            QCOMPARE(labels(view.selectedItems()), selected);
            QCOMPARE(log.take(), signalled);
        }
    }

    void keysSelect()
    {
        const int none = Qt::NoModifier;
        const std::tuple<const char *, int, int, int, QStringList> rows[] = {
            {"down from the last", 4, int(Qt::Key_Down), none,
             QStringList({"current E>A", "selection"})},
            {"end", 3, int(Qt::Key_End), none, QStringList({"current D>E", "selection"})},
            {"end at the end", 4, int(Qt::Key_End), none, QStringList()},
            {"space", 2, int(Qt::Key_Space), none, QStringList("activated C")},
            {"Ctrl+A", 2, int(Qt::Key_A), int(Qt::ControlModifier), QStringList("selection")},
            {"Ctrl+Shift+A", 2, int(Qt::Key_A), int(Qt::ControlModifier | Qt::ShiftModifier),
             QStringList()}};
        for (const auto &[name, current, key, modifiers, signalled] : rows) {
            const RowName shown(name);
            TraceView view;
            show(view, Rows);
            view.setCurrentItem(current);
            SignalLog log(&view);
            QTest::keyClick(&view, Qt::Key(key), Qt::KeyboardModifiers(modifiers));
            QCOMPARE(log.take(), signalled);
        }
    }

    void selectsByPattern()
    {
        const QVector<QPair<QString, QStringList>> patterns{
            {"APE", {"APE"}}, {"?P*", {"APE", "APEX"}}, {"[MX]*", {"MTE"}}, {"", {}}};
        TraceView view;
        view.setItems({makeRow("APE"), makeRow("ape"), makeRow("APEX"), makeRow("MTE")});
        for (const auto &[pattern, selected] : patterns) {
            view.clearSelection();
            SignalLog log(&view);
            view.selectMatching(pattern, true);
            QCOMPARE(labels(view.selectedItems()), selected);
            QCOMPARE(log.take().count("selection"), selected.isEmpty() ? 0 : 1);
            view.selectAll();
            view.selectMatching(pattern, false);
            QCOMPARE(view.numberOfSelectedItems(), 4 - selected.size());
        }
    }

    void keysAskForPattern()
    {
        const auto extended = QAbstractItemView::ExtendedSelection;
        const int plus = Qt::Key_Plus;
        const int minus = Qt::Key_Minus;
        const std::tuple<const char *, QAbstractItemView::SelectionMode, int, QString, int, QString,
                         QStringList>
            rows[] = {// B is selected and current at first.
                      {"all as it comes", extended, plus, QString(), int(Qt::Key_Return),
                       "Select pattern", Rows},
                      {"one more", extended, plus, "D", int(Qt::Key_Return), "Select pattern",
                       QStringList({"B", "D"})},
                      {"one less", extended, minus, "[AB]", int(Qt::Key_Return), "Deselect pattern",
                       QStringList()},
                      {"cancelled", extended, plus, "D", int(Qt::Key_Escape), "Select pattern",
                       QStringList("B")},
                      {"single selection", QAbstractItemView::SingleSelection, plus, QString(),
                       int(Qt::Key_Return), QString(), QStringList("B")}};
        for (const auto &[name, mode, key, typed, answer, title, selected] : rows) {
            const RowName shown(name);
            TraceView view;
            show(view, Rows);
            view.setSelectionMode(mode);
            view.select(view.itemAt(1));
            SignalLog log(&view);
            QString told;
            QTimer timer;
            connect(&timer, &QTimer::timeout, [&] {
                // Keys reach the dialog as soon as its field has the focus.
                auto *field = qobject_cast<QLineEdit *>(QApplication::focusWidget());
                if (!field)
                    return;
                timer.stop();
                told = field->window()->windowTitle();
                QTest::keyClicks(field, typed);
                QTest::keyClick(field, Qt::Key(answer));
            });
            timer.start(1);
            QTest::keyClick(&view, Qt::Key(key));
            QCOMPARE(told, title);
            QCOMPARE(labels(view.selectedItems()), selected);
            QCOMPARE(log.take().count("selection"), selected == QStringList("B") ? 0 : 1);
            QVERIFY(view.currentItem() == view.itemAt(1));
        }
    }

    void viewMayGoWhileAskingForPattern()
    {
        QPointer<TraceView> view(new TraceView);
        show(*view, Rows);
        QTimer::singleShot(0, view, [view] { delete view; });
        QKeyEvent event(QEvent::KeyPress, Qt::Key_Plus, Qt::NoModifier);
        QApplication::sendEvent(view, &event);
        QVERIFY(!view);
    }

    void clickBesideRowsDeselects()
    {
        TraceView view;
        show(view, {"A", "B"});
        for (Trace *row : view.items())
            row->setFixedHeight(50);
        view.findChild<QScrollArea *>()->widget()->layout()->setAlignment(Qt::AlignTop);
        view.resize(500, 500);
        view.select(view.itemAt(0));
        QApplication::processEvents();
        SignalLog log(&view);

        const QPoint below = view.itemAt(1)->mapTo(&view, QPoint(50, 50 + 120));
        QTest::mouseClick(&view, Qt::LeftButton, Qt::ControlModifier, below);
        QTest::mouseClick(&view, Qt::LeftButton, Qt::NoModifier, QPoint(20, view.height() - 2));
        QTest::mouseClick(view.itemAt(0)->recordWidget(), Qt::RightButton);
        QCOMPARE(log.take(), QStringList());
        QTest::mouseClick(&view, Qt::LeftButton, Qt::NoModifier, below);
        QCOMPARE(log.take(), QStringList("selection"));
        QVERIFY(view.emptySelection());
        QVERIFY(view.currentItem() == view.itemAt(0));

        // A drag from there takes the selected rows along.
        view.select(view.itemAt(0));
        QTest::mousePress(&view, Qt::LeftButton, Qt::NoModifier, below);
        dragTo(view, below - QPoint(0, 1));
        dragTo(view, centerOf(view, 1));
        QCOMPARE(labels(view.items()), QStringList({"B", "A"}));
    }

    void rowsAboveAreDeselectedBeforeTheCurrentOneIsTold()
    {
        TraceView view;
        show(view, Rows);
        QStringList selected;
        connect(&view, &TraceView::currentItemChanged, this,
                [&] { selected = labels(view.selectedItems()); });
        view.selectAll();
        view.select(view.itemAt(2));
        QCOMPARE(selected, QStringList({"C", "D", "E"}));
        view.selectAll();
        click(view, 1);
        QCOMPARE(selected, QStringList({"B", "C", "D", "E"}));
    }

    void keysScrollWithoutCurrentRow()
    {
        TraceView view;
        show(view, Rows);
        view.setMinimumRowHeight(100);
        view.resize(600, 250);
        const QScrollBar *bar = view.findChild<QScrollArea *>()->verticalScrollBar();
        QTRY_VERIFY(bar->maximum() > 250);
        SignalLog log(&view);
        const QVector<QPair<Qt::Key, int>> keys{{Qt::Key_Down, view.itemAt(0)->height()},
                                                {Qt::Key_Up, 0},
                                                {Qt::Key_End, bar->maximum()},
                                                {Qt::Key_Home, 0}};
        for (const auto &[key, value] : keys) {
            QTest::keyClick(&view, key);
            QCOMPARE(bar->value(), value);
        }
        QCOMPARE(log.take(), QStringList());
        view.setSelectedTrace(-1);
        QVERIFY(!view.itemAt(4)->visibleRegion().isEmpty());
    }

    void dragMovesSelectedRows()
    {
        TraceView view;
        show(view, Rows);
        click(view, 0);
        click(view, 2, Qt::ControlModifier);
        SignalLog log(&view);

        const QPoint start = centerOf(view, 0);
        QTest::mousePress(&view, Qt::LeftButton, Qt::NoModifier, start);
        dragTo(view, start + QPoint(0, 1));
        dragTo(view, centerOf(view, 4));
        QCOMPARE(labels(view.items()), QStringList({"B", "D", "E", "A", "C"}));
        QTRY_COMPARE(labelsFromTop(view), labels(view.items()));
        QTest::mouseRelease(&view, Qt::LeftButton, Qt::NoModifier, centerOf(view, 1));
        QCOMPARE(log.take(), QStringList("current C>A"));
        QCOMPARE(labels(view.selectedItems()), QStringList({"A", "C"}));

        click(view, 1);
        QCOMPARE(labels(view.selectedItems()), QStringList("D"));
    }

    void leapsAndRemovedRowsAreNotDragged()
    {
        TraceView view;
        show(view, Rows);
        // A leap at once is no drag.
        QTest::mousePress(&view, Qt::LeftButton, Qt::NoModifier, centerOf(view, 0));
        dragTo(view, centerOf(view, 3));
        QCOMPARE(labels(view.items()), Rows);
        QTest::mouseRelease(&view, Qt::LeftButton, Qt::NoModifier, centerOf(view, 3));
        QCOMPARE(labels(view.selectedItems()), QStringList("D"));

        const QPoint start = centerOf(view, 0);
        QTest::mousePress(&view, Qt::LeftButton, Qt::NoModifier, start);
        dragTo(view, start);
        view.removeItem(view.itemAt(0));
        dragTo(view, centerOf(view, 2));
        QCOMPARE(view.count(), 4);
    }

    void shortcutsReachTheView()
    {
        TraceView view;
        show(view, Rows);
        view.setFocus();
        view.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&view));
        QTest::keyClick(&view, Qt::Key_Y, Qt::ShiftModifier);
        QCOMPARE(view.minimumRowHeight(), 32);
        view.setTimeRange(100, 180);
        const QVector<QPair<Qt::Key, QPair<double, double>>> keys{{Qt::Key_Right, {110, 190}},
                                                                  {Qt::Key_Left, {100, 180}}};
        for (const auto &[key, range] : keys) {
            QTest::keyClick(&view, key);
            QCOMPARE(qMakePair(view.tmin(), view.tmax()), range);
        }
        view.horizontalZoomIn();
        QCOMPARE(qMakePair(view.tmin(), view.tmax()), qMakePair(120.0, 160.0));
        QTest::keyClick(&view, Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(view.numberOfSelectedItems(), 5);
        QTest::keyClick(&view, Qt::Key_Escape);
        QVERIFY(view.emptySelection());
        // Loading is a matter of the tool bar, which this view does without.
        SignalLog log(&view);
        QTest::keyClick(&view, Qt::Key_F5);
        QCOMPARE(log.take(), QStringList());
    }

    void crosshairTellsTimeAndValue()
    {
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
        widget->showScaledValues(true);
        widget->setAlignment(timeAt(3600));
        QApplication::processEvents();

        // Three quarters down: 15 by 0.5.
        const QString value("7.5");
        const QPoint pointer(widget->canvasRect().left() + 200, 30);
        Pointer::move(*widget, pointer);
        const QPixmap before = view.grab();
        QPixmap expected = before;
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
        const QPoint far = position + QPoint(0, 60);
        const QPoint beside = position + QPoint(200, 0);
        for (const QPoint &point : {far, beside})
            QVERIFY(shown.pixel(point) != before.toImage().pixel(point));

        Pointer::leave(*widget);
        QCOMPARE(view.grab().toImage(), before.toImage());
    }
};

QTEST_MAIN(TraceViewInteractionTest)
#include "tst_traceviewinteraction.moc"
