// SPDX-License-Identifier: LGPL-3.0-or-later

#include "gainfilter.h"
#include "gradienttesting.h"
#include "interference.h"
#include "rowname.h"
#include "traces.h"

#include <norvu/gui/calendarwidget.h>
#include <norvu/gui/gradienteditor.h>
#include <norvu/gui/tabbar.h>
#include <norvu/gui/tabwidget.h>
#include <norvu/gui/vruler.h>

#include <QAbstractButton>
#include <QDialog>
#include <QLineEdit>
#include <QMenu>
#include <QTableWidget>

#include <memory>

using namespace Norvu::Gui;
using namespace Traces;
using Tellarix::Gui::RecordWidget;

namespace {

const char *const Current = SIGNAL(currentItemChanged(Trace *, Trace *));
const char *const Selection = SIGNAL(itemSelectionChanged());
const char *const Cleared = SIGNAL(itemSelectionCleared());
const char *const Layout = SIGNAL(layoutOrContentChanged());
const char *const Display = SIGNAL(displayChanged(double, double, double));
const char *const Progress = SIGNAL(filteringProgress(int, int));
const char *const Updated = SIGNAL(traceUpdated(Tellarix::Gui::RecordWidget *));
const char *const Cursor =
    SIGNAL(cursorMoved(Tellarix::Gui::RecordWidget *, const Tellarix::Core::Time &));
const char *const Range = SIGNAL(rangeChanged(double, double));
const char *const Scaled = SIGNAL(scaleChanged(double));
const char *const Ticks = SIGNAL(changedInterval(double, double, double));

// Views

/** What is done to a view whose first row is selected and current. */
struct ViewAction
{
    const char *signal; /**< in which the receiver acts; of the view, the row or their parts */
    const char *name;
    int row; /**< on which the receiver acts */
    std::function<void(TraceView &)> act;
};

const QVector<QPair<const char *, std::function<void(TraceView &, int)>>> viewDeeds{
    {"row removed", [](TraceView &view, int row) { view.removeItem(view.itemAt(row)); }},
    {"row deleted", [](TraceView &view, int row) { delete view.itemAt(row); }},
    {"rows removed", [](TraceView &view, int) { view.clear(); }},
    {"view deleted", [](TraceView &view, int) { delete &view; }},
};

QPoint centerOf(TraceView &view, int row)
{
    return view.itemAt(row)->mapTo(&view, view.itemAt(row)->rect().center());
}

template <Qt::KeyboardModifier Modifier>
void click(TraceView &view)
{
    dragMouse(&view, centerOf(view, 1), centerOf(view, 1), Qt::LeftButton, Modifier);
}

void drag(TraceView &view)
{
    dragMouse(&view, centerOf(view, 1), centerOf(view, 1) + QPoint(0, 1));
}

void press(QWidget *widget, Qt::Key key)
{
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
    QCoreApplication::sendEvent(widget, &event);
}

void addFilteredRow(TraceView &view)
{
    view.blockSignals(true);
    view.setBackgroundFiltering(true);
    view.setFilter(new GainFilter(2));
    view.blockSignals(false);
    view.addItem(makeRow("E", makeRecord("XX.E..BHZ", 0, 100)));
}

void clean(TraceView &view)
{
    view.clearDataSlot(0);
    view.cleanTraces();
}

void selectBySpace(TraceView &view)
{
    view.itemAt(0)->setSelected(false);
    press(&view, Qt::Key_Space);
}

void hover(TraceView &view)
{
    RecordWidget *widget = view.itemAt(1)->recordWidget();
    widget->setCursorShown(true);
    sendMouse(widget, QEvent::MouseMove, widget->canvasRect().center(), Qt::NoButton);
}

using V = TraceView &;
const std::vector<ViewAction> viewActions{
    {Current, "click", 1, click<Qt::NoModifier>},
    {Selection, "click", 1, click<Qt::NoModifier>},
    {Current, "Ctrl and click", 1, click<Qt::ControlModifier>},
    {Current, "Shift and click", 1, click<Qt::ShiftModifier>},
    {Current, "drag", 1, drag},
    {Selection, "drag", 1, drag},
    {SIGNAL(itemDoubleClicked(Trace *)), "double click", 0,
     [](V v) { sendMouse(&v, QEvent::MouseButtonDblClick, centerOf(v, 0), Qt::LeftButton); }},
    {Current, "down key", 1, [](V v) { press(&v, Qt::Key_Down); }},
    {Selection, "space key", 0, selectBySpace},
    {Current, "select", 1, [](V v) { v.select(v.itemAt(1)); }},
    {Current, "clear selection", 0, [](V v) { v.clearSelection(); }},
    {Cleared, "clear selection", 0, [](V v) { v.clearSelection(); }},
    {Current, "remove", 0, [](V v) { v.removeItem(v.itemAt(0)); }},
    {Current, "clear", 1, [](V v) { v.clear(); }},
    {Cleared, "clear", 1, [](V v) { v.clear(); }},
    {Current, "clean", 0, clean},
    {Layout, "set rows", 0,
     [](V v) {
         v.setItems({makeRow("E"), makeRow("F")});
     }},
    {Progress, "add row", 1, addFilteredRow},
    {SIGNAL(distanceValuesRequired()), "sort", 1, [](V v) { v.sortView(); }},
    {SIGNAL(loadDataRequested()), "load", 1, [](V v) { v.loadData(); }},
    {Updated, "time range", 1, [](V v) { v.setTimeRange(0, 50); }},
    {Range, "time range", 1, [](V v) { v.setTimeRange(0, 50); }},
    {Display, "reset view", 1, [](V v) { v.resetView(); }},
    {Ticks, "alignment", 1, [](V v) { v.setAlignment(timeAt(1234)); }},
    {Updated, "filter", 1, [](V v) { v.setFilter(new GainFilter(2)); }},
    {Updated, "common range", 0, [](V v) { v.setAllTracesNormalization(true); }},
    {Updated, "reset rows", 0, [](V v) { v.resetSelectedTraces(); }},
    {Updated, "clear slot", 0, [](V v) { v.clearDataSlot(0); }},
    {Updated, "update records", 0, [](V v) { v.updateRecords(); }},
    {SIGNAL(clicked(QMouseEvent *)), "release over row", 1,
     [](V v) {
         sendMouse(v.itemAt(1), QEvent::MouseButtonRelease, {5, 5}, Qt::LeftButton);
     }},
    {Cursor, "hover", 1, hover},
};

TraceView *makeView()
{
    auto *view = new TraceView;
    for (const char *label : {"A", "B", "C", "D"})
        view->addItem(makeRow(label, makeRecord("XX.A..BHZ", 0, 100)));
    view->resize(600, 400);
    view->show();
    QCoreApplication::processEvents();
    view->setFilterEnabled(true);
    view->setCurrentItem(0);
    return view;
}

QObject *senderOf(TraceView &view, const ViewAction &action)
{
    Trace *row = view.itemAt(action.row);
    const QByteArray signature = QMetaObject::normalizedSignature(action.signal + 1);
    for (QObject *object : {static_cast<QObject *>(&view), static_cast<QObject *>(row),
                            static_cast<QObject *>(row->recordWidget())}) {
        if (object->metaObject()->indexOfSignal(signature) >= 0)
            return object;
    }
    return view.timeScale();
}

// Rows, bars and tabs

template <typename Widget>
const std::function<void(Widget &)> Delete;

QObject *recordsOf(Trace &row)
{
    return row.recordWidget();
}

QObject *axisOf(Trace &row)
{
    return row.timeAxis();
}

void removeAxis(Trace &row)
{
    row.setTimeAxisEnabled(false);
}

using R = Trace &;
const std::vector<Case<Trace>> rowCases{
    {"record", Updated, [](R r) { r.setRecord(makeRecord("XX.A..BHZ", 0, 9).get()); },
     Delete<Trace>, recordsOf},
    {"reset", Updated, [](R r) { r.reset(); }, Delete<Trace>, recordsOf},
    {"display", Scaled, [](R r) { r.setDisplay(0, 9, 7); }, removeAxis, axisOf},
    {"time range", Range, [](R r) { r.setTimeRange(0, 9); }, Delete<Trace>, axisOf},
    {"alignment", Ticks, [](R r) { r.setAlignment(timeAt(1234)); }, Delete<Trace>, axisOf},
};

const std::vector<Case<CalendarWidget>> calendarCases{
    {"hour", SIGNAL(dateTimeChanged(QDateTime)), [](CalendarWidget &edit) { edit.setHour(3); }},
};

void dragStop(GradientWidget &bar)
{
    dragMouse(&bar, {0, bar.height() - 2}, {30, bar.height() - 2});
}

const std::vector<Case<GradientWidget>> barCases{
    {"stop clicked", SIGNAL(pointClicked(qreal, QColor)), dragStop},
    {"stop moved", SIGNAL(gradientChanged()), dragStop},
    {"stop removed", SIGNAL(pointRemoved(qreal)), [](GradientWidget &bar) { bar.deleteHandle(0); }},
};

void tearOff(TabWidget &tabs)
{
    auto *bar = tabs.findChild<TabBar *>();
    dragMouse(bar, bar->tabRect(1).center(), {20, 200});
}

void bringBack(TabWidget &tabs)
{
    tabs.blockSignals(true);
    tearOff(tabs);
    tabs.blockSignals(false);
    tabs.widgetAt(1)->close();
}

void deletePage(TabWidget &tabs)
{
    delete tabs.widgetAt(1);
}

const std::vector<Case<TabWidget>> tabCases{
    {"tear off", SIGNAL(detached(QWidget *)), tearOff},
    {"tear off, page goes", SIGNAL(detached(QWidget *)), tearOff, deletePage},
    {"tear off, page goes before", SIGNAL(currentChanged(int)), tearOff, deletePage},
    {"bring back", SIGNAL(attached(QWidget *)), bringBack},
    {"bring back, page goes before", SIGNAL(currentChanged(int)), bringBack, deletePage},
};

// Gradient editors

template <typename T>
T *part(const GradientEditor &editor, const char *name)
{
    return editor.findChild<T *>(QString::fromLatin1(name));
}

void click(GradientEditor &editor, const char *name)
{
    QTest::mouseClick(part<QAbstractButton>(editor, name), Qt::LeftButton);
}

void enter(GradientEditor &editor, const char *name, const QString &text)
{
    part<QLineEdit>(editor, name)->setText(text);
    press(part<QLineEdit>(editor, name), Qt::Key_Return);
}

void enterNoNumber(GradientEditor &editor)
{
    part<QLineEdit>(editor, "editKey")->setText("high");
    editor.valueUpdated();
}

void addStop(GradientEditor &editor)
{
    auto *bar = editor.findChild<GradientWidget *>();
    sendMouse(bar, QEvent::MouseButtonDblClick, {bar->width() / 2, 2}, Qt::LeftButton);
}

using E = GradientEditor &;
const QVector<QPair<const char *, std::function<void(GradientEditor &)>>> editorActions{
    {"value", [](E e) { enter(e, "editKey", "0.7"); }},
    {"unit", [](E e) { enter(e, "editUnit", "m"); }},
    {"steps", [](E e) { click(e, "checkInterpolation"); }},
    {"removal", [](E e) { e.findChild<GradientWidget *>()->deleteHandle(1); }},
    {"no number", enterNoNumber},
    {"color", [](E e) { click(e, "btnColor"); }},
    {"tag", [](E e) { click(e, "btnTag"); }},
    {"table", [](E e) { click(e, "btnList"); }},
    {"new stop", addStop},
};

} // namespace

/** Receivers of a signal may delete or change its sender. */
class ReentrancyTest : public QObject
{
    Q_OBJECT

private slots:
    void view()
    {
        for (const ViewAction &item : viewActions) {
            for (int deed = 0; deed < viewDeeds.size(); ++deed) {
                const RowName shown(item.name);
                const QPointer<TraceView> view(makeView());
                Interference interference(senderOf(*view, item), item.signal,
                                          [&] { viewDeeds[deed].second(*view, item.row); });
                item.act(*view);
                QVERIFY2(interference.done, viewDeeds[deed].first);
                QCOMPARE(view.isNull(), deed == 3);
                if (!view)
                    continue;
                QCOMPARE(view->emptyDataSlots(), view->count());
                QVERIFY(!view->currentItem() || view->items().contains(view->currentItem()));
                QCoreApplication::processEvents();
                view->grab();
                delete view;
            }
        }
    }

    void viewForgetsRowsThatOthersDelete()
    {
        const std::unique_ptr<TraceView> view(makeView());
        view->bindItem("XX.A..BHZ", view->itemAt(0), 0);
        SignalLog log(view.get());
        delete view->itemAt(0);
        QVERIFY(!view->currentItem() && !view->itemBoundTo("XX.A..BHZ"));
        QCOMPARE(labels(view->items()), QStringList({"B", "C", "D"}));
        QCOMPARE(log.take(), QStringList());
        QCoreApplication::processEvents();
        QCOMPARE(log.take(), QStringList({"current ->-", "layout"}));
    }

    void row_data() { addRows(rowCases); }

    void row()
    {
        auto *row = makeRow("A", makeRecord("XX.A..BHZ", 0, 9));
        row->setTimeAxisEnabled(true);
        row->timeAxis()->setAbsoluteTimeEnabled(true);
        row->resize(500, 100);
        row->show();
        run(rowCases, row);
    }

    void amplitudeRulerOutlivesItsRecords()
    {
        VRuler ruler;
        ruler.resize(50, 200);
        auto *shown = new RecordWidget;
        Interference interference(&ruler, Range, [&] { delete shown; });
        ruler.updateScale(shown);
        QVERIFY(interference.done);
    }

    void calendar_data() { addRows(calendarCases); }

    void calendar() { run(calendarCases, new CalendarWidget(QDateTime::currentDateTimeUtc())); }

    void gradientBar_data() { addRows(barCases); }

    void gradientBar()
    {
        auto gradient = GradientTesting::gradientOf({{0, Qt::red}, {1, Qt::blue}});
        auto *bar = new GradientWidget(&gradient);
        bar->resize(200, 40);
        run(barCases, bar);
    }

    void menuRemovesTheStopThatItWasOpenedOn()
    {
        auto gradient = GradientTesting::gradientOf({{0, Qt::red}, {1, Qt::blue}});
        GradientWidget bar(&gradient);
        bar.resize(200, 40);
        const QPoint position = GradientTesting::handleOf(bar, gradient, 1);
        Pointer::move(bar, position);
        QTimer::singleShot(0, [&] {
            gradient.setColorAt(0.5, Qt::green);
            QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Down);
            QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Return);
        });
        QContextMenuEvent event(QContextMenuEvent::Mouse, position, bar.mapToGlobal(position));
        QApplication::sendEvent(&bar, &event);
        QCOMPARE(gradient.keys(), QList<double>({0, 0.5}));
    }

    void gradientEditor()
    {
        for (const auto &action : editorActions) {
            for (const bool isDeleted : {true, false})
                changeEditor(action.first, action.second, isDeleted);
        }
    }

private:
    static void changeEditor(const char *name, const std::function<void(GradientEditor &)> &act,
                             bool isDeleted)
    {
        const RowName shown(name);
        const auto other = GradientTesting::gradientOf({{5, Qt::black}});
        const QPointer<GradientEditor> editor(new GradientEditor);
        editor->setGradient(GradientTesting::gradientOf({{0, Qt::red}, {1, Qt::blue}}));
        editor->show();
        editor->pointClicked(1, Qt::blue);
        const auto deed = [&] { isDeleted ? delete editor : editor->setGradient(other); };
        Interference interference(editor, SIGNAL(gradientChanged()), deed);
        QTimer timer;
        connect(&timer, &QTimer::timeout, [&] {
            const QPointer<QDialog> dialog(
                qobject_cast<QDialog *>(QApplication::activeModalWidget()));
            if (!dialog)
                return;
            timer.stop();
            if (auto *table = dialog->findChild<QTableWidget *>())
                table->item(0, 2)->setText("low");
            interference.done = true;
            deed();
            if (dialog)
                dialog->accept();
        });
        timer.start(0);
        act(*editor);
        QVERIFY(interference.done);
        QCOMPARE(editor.isNull(), isDeleted);
        // Of what was begun before, only a new stop goes into another gradient.
        if (editor && qstrcmp(name, "new stop") != 0)
            QCOMPARE(editor->gradient(), other);
        delete editor;
    }
private slots:
    void tabsLeaveNullAlone()
    {
        TabWidget tabs;
        tabs.addTab(new QWidget, "A");
        tabs.addWidget(nullptr);
        tabs.removeWidget(nullptr);
        QCOMPARE(tabs.addTab(nullptr, "B"), -1);
        QCOMPARE(tabs.insertTab(0, nullptr, "B"), -1);
        QCOMPARE(tabs.insertWidget(0, nullptr), -1);
        QCOMPARE(tabs.widgetCount(), 1);
    }

    void tabs_data() { addRows(tabCases); }

    void tabs()
    {
        auto *tabs = new TabWidget;
        for (const char *name : {"A", "B", "C"})
            tabs->addTab(new QWidget, name);
        tabs->setCurrentIndex(1);
        tabs->resize(400, 150);
        tabs->show();
        QCoreApplication::processEvents();
        run(tabCases, tabs);
    }

    void endingTabsTearNothingOff()
    {
        auto *tabs = new TabWidget;
        const QPointer<QWidget> pages[] = {new QWidget, new QWidget, new QWidget};
        tabs->insertWidget(0, pages[0]);
        tabs->insertWidget(1, pages[1]);
        tabs->addTab(pages[2], "C");
        // The end of one page takes another one along, and wants the third to stay.
        connect(pages[0], &QObject::destroyed, [&] {
            delete pages[1];
            tabs->detach(0, {200, 200});
        });
        delete tabs;
        QVERIFY(!pages[0] && !pages[1] && !pages[2]);
    }
};

QTEST_MAIN(ReentrancyTest)
#include "tst_reentrancy.moc"
