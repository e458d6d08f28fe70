// SPDX-License-Identifier: LGPL-3.0-or-later

#include "answer.h"
#include "eventtesting.h"
#include "rowname.h"

#include <norvu/gui/eventfilterwidget.h>
#include <norvu/gui/eventlistview.h>
#include <norvu/gui/optionaldoublespinbox.h>

#include <QCheckBox>
#include <QHeaderView>
#include <QMenu>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>
#include <QtTest>

#include <atomic>
#include <memory>
#include <random>

using namespace EventTesting;
using namespace Norvu::Gui;

namespace {

Draft draft(const char *id, const char *time, double magnitude)
{
    Draft draft;
    draft.id = id;
    draft.time = time;
    draft.magnitude = magnitude;
    return draft;
}

/** Three events, of which one isn't an earthquake. */
std::vector<Draft> drafts()
{
    std::vector<Draft> drafts{draft("a", "2024-01-05 10:00:00.25", 9.5),
                              draft("b", "2024-01-06 10:00:00", 10.5),
                              draft("c", "2024-01-07 10:00:00", 4)};
    drafts[1].depth = std::nullopt;
    drafts[1].phases = std::nullopt;
    drafts[2].type = "not existing";
    drafts[2].longitude = 120;
    return drafts;
}

struct Bench
{
    Bench()
    {
        view.setTimeWindow(QDateTime(QDate(2024, 1, 1), QTime(0, 0)),
                           QDateTime(QDate(2024, 2, 1), QTime(0, 0)));
    }

    template <typename T>
    T *child(const char *name) const
    {
        return view.findChild<T *>(name);
    }
    void click(const char *button) { child<QToolButton>(button)->click(); }
    QString ids() const
    {
        QString ids;
        for (int row = 0; row < view.rowCount(); ++row)
            ids += QString::fromStdString(view.fromRow(row).publicID);
        return ids;
    }

    Catalogue catalogue{drafts()};
    EventListView view{catalogue.database.get()};
    QTreeView *tree{child<QTreeView>("treeView")};
};

/** Rows that a load may still take; the test lets it wait. */
std::atomic<int> rowsAllowed{1 << 30};

} // namespace

/** Stands in front of the library's own, which the worker asks once for each row. */
int Tellarix::IO::DatabaseInterface::fieldCount() const
{
    while (rowsAllowed <= 0)
        QThread::msleep(1);
    --rowsAllowed;
    return 16;
}

namespace {

const QDateTime Begin(QDate(2024, 1, 5), QTime(0, 0), Qt::UTC);
const QDateTime End(QDate(2024, 1, 6), QTime(0, 0), Qt::UTC);

QStringList textsOf(const QAbstractItemModel &model, int column)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts << model.index(row, column).data().toString();
    return texts;
}

QStringList idsOf(const QAbstractItemModel &model)
{
    return textsOf(model, 9);
}

struct Scene
{
    explicit Scene(const std::vector<Draft> &drafts = {})
        : catalogue(drafts), view(std::make_unique<EventListView>(catalogue.database.get()))
    {
        view->setTimeWindow(Begin, End);
        view->show();
        list = view->findChild<QTreeView *>();
        header = list->header();
    }

    template <typename T>
    T *child(const char *name) const
    {
        return view->findChild<T *>(name);
    }

    QStringList ids() const { return idsOf(*list->model()); }

    Catalogue catalogue;
    std::unique_ptr<EventListView> view;
    QTreeView *list;
    QHeaderView *header;
};

/** Does @p deed as soon as @p condition holds, in whatever loop runs then. */
template <typename Condition, typename Deed>
void when(QObject *context, Condition condition, Deed deed)
{
    auto *timer = new QTimer(context);
    QObject::connect(timer, &QTimer::timeout, context, [=] {
        if (!condition())
            return;
        timer->stop();
        deed();
    });
    timer->start(5);
}

QProgressDialog *dialog()
{
    auto *result = qobject_cast<QProgressDialog *>(QApplication::activeModalWidget());
    return result && result->isVisible() ? result : nullptr;
}

} // namespace

class EventListViewTest : public QObject
{
    Q_OBJECT

private slots:
    void loadsSortsAndHides()
    {
        Bench bench;
        bench.click("buttonLoadInterval");
        QCOMPARE(bench.ids().size(), 2);
        bench.tree->sortByColumn(1, Qt::AscendingOrder);
        QCOMPARE(bench.ids(), QString("ab")); // by number: as texts 10.5 would come first
        bench.child<QCheckBox>("hideFakeEvents")->click();
        QCOMPARE(bench.ids(), QString("cab"));

        const EventRow row = bench.view.fromRow(1);
        QCOMPARE(row.time.iso(), std::string("2024-01-05T10:00:00.250000Z"));
        QCOMPARE(row.magnitude.value_or(0), 9.5);
        QCOMPARE(row.phaseCount.value_or(0), 12);
        QCOMPARE(row.depth.value_or(0), 30.0);
        QCOMPARE(row.region, std::string("Here"));
        QVERIFY(!bench.view.fromRow(2).depth && !bench.view.fromRow(2).phaseCount);
        QVERIFY(!bench.view.currentEvent().time.valid());
        bench.click("buttonClear");
        QCOMPARE(bench.view.rowCount(), 0);
    }

    void leavesOutRowsForItsHost()
    {
        Bench bench;
        bench.click("buttonLoadInterval");
        const QSignalSpy changed(&bench.view, SIGNAL(rowsChanged()));
        bench.view.setRowFilter([](const EventRow &row) { return row.magnitude > 10; });
        QCOMPARE(bench.ids(), QString("b"));
        QCOMPARE(bench.view.unfilteredRows().size(), size_t(2)); // without the fake one
        QVERIFY(!bench.view.showEvent("a"));
        QVERIFY(!bench.view.showEvent("no such event"));

        bench.click("buttonLoadInterval"); // holds for later loads too
        QCOMPARE(bench.ids(), QString("b"));
        bench.view.setRowFilter(nullptr);
        QCOMPARE(bench.ids().size(), 2);
        QCOMPARE(changed.count(), 3);
        QVERIFY(bench.view.showEvent("a"));
        QCOMPARE(bench.view.currentEvent().publicID, std::string("a"));
        bench.view.clear();
        QVERIFY(!bench.view.showEvent("a"));
    }

    void narrowsTheLoadByItsFilter()
    {
        const std::tuple<const char *, QString, double, QString, bool> rows[] = {
            {"magnitude", "fromMagnitude", 10.0, "b", true},
            {"depth, which is unknown of one", "toDepth", 40.0, "ac", true},
            {"longitude: the button stays plain", "toLongitude", 100.0, "ab", false}};
        for (const auto &[name, input, value, ids, colored] : rows) {
            const RowName shown(name);
            Bench bench;
            auto *filter = bench.view.findChild<EventFilterWidget *>();
            filter->findChild<OptionalDoubleSpinBox *>(input)->setValue(value);
            bench.view.updateFilterButton();
            const auto *button = bench.child<QToolButton>("buttonFilter");
            const QBrush plain = QPalette().brush(QPalette::ButtonText);
            QCOMPARE(button->palette().brush(QPalette::ButtonText) != plain, colored);

            bench.child<QCheckBox>("hideFakeEvents")->setChecked(false);
            bench.view.loadInterval();
            bench.tree->sortByColumn(9, Qt::AscendingOrder);
            QCOMPARE(bench.ids(), ids);
        }
    }

    void tellsAnErrorAndCanLoadAgain()
    {
        Bench bench;
        bench.catalogue.execute("alter table Origin rename to Elsewhere");
        QString told;
        Answer<QMessageBox> answer([&](QMessageBox &box) {
            told = box.text();
            box.accept();
        });
        bench.view.loadInterval();
        QVERIFY2(told.startsWith("Error while executing query:\nselect count(*) from Origin"),
                 qPrintable(told));
        bench.catalogue.execute("alter table Elsewhere rename to Origin");
        bench.view.loadInterval();
        QCOMPARE(bench.view.rowCount(), 2);
    }

    void choosesColumnsFromTheHeader()
    {
        Bench bench;
        QHeaderView *header = bench.tree->header();
        QVERIFY(header->isSectionHidden(10));
        const auto choose = [&](const QString &text) {
            QTimer::singleShot(0, &bench.view, [text] {
                auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
                if (!menu)
                    return;
                for (QAction *action : menu->actions()) {
                    if (action->text() == text)
                        menu->setActiveAction(action);
                }
                QTest::keyClick(menu, Qt::Key_Return);
                menu->close(); // if the action could not be chosen
            });
            bench.view.showHeaderContextMenu(QPoint());
        };
        choose("Type"); // without a menu nothing happens
        QVERIFY(header->isSectionHidden(10));
        bench.view.setHeaderMenuEnabled(true);
        choose("Type");
        QVERIFY(!header->isSectionHidden(10));
        choose("Lat");
        QVERIFY(header->isSectionHidden(4));
        header->moveSection(0, 5);
        choose("Reset");
        QVERIFY(header->isSectionHidden(10) && !header->isSectionHidden(4));
        QCOMPARE(header->visualIndex(0), 0);

        for (int column = 1; column < 12; ++column)
            header->hideSection(column);
        choose("OT(GMT)"); // the last one stays, for without it there is no way back
        QVERIFY(!header->isSectionHidden(0));
    }

    void survivesItsEndWhileItLoads()
    {
        Catalogue catalogue(drafts());
        auto *view = new EventListView(catalogue.database.get());
        QTimer::singleShot(0, view, [view] { delete view; });
        view->setTimeWindow(QDateTime(QDate(2024, 1, 1), QTime(0, 0)),
                            QDateTime(QDate(2024, 2, 1), QTime(0, 0)));
        view->loadInterval();
    }

    void init() { rowsAllowed = 1 << 30; }

    /** Against plain items in a plain proxy. */
    void sortsLikePlainItems()
    {
        std::minstd_rand random(3);
        const char *const regions[] = {"", "a", "b", "ab", "\uff5e", "\U0001F30B", "\u00e9"};
        std::vector<Draft> events = drafts(60);
        for (Draft &draft : events) {
            draft.time = "2024-01-05 10:1" + std::to_string(random() % 3) + ":00." +
                         std::to_string(random() % 10);
            draft.magnitude = static_cast<double>(random() % 5) - 2;
            draft.latitude = static_cast<double>(random() % 5) - 2;
            if (random() % 3)
                draft.depth = static_cast<double>(random() % 4);
            else
                draft.depth.reset();
            draft.region = regions[random() % 7];
            draft.mode = random() % 2 ? "manual" : "automatic";
        }
        Scene scene(events);
        scene.catalogue.execute("UPDATE Origin SET time_value = '2024-01-05x' WHERE rowid % 7 = 0");
        scene.view->loadInterval();
        auto *proxy = qobject_cast<QSortFilterProxyModel *>(scene.list->model());
        const auto *source = qobject_cast<QStandardItemModel *>(proxy->sourceModel());
        QCOMPARE(source->rowCount(), 60);
        QStandardItemModel plain;
        for (int row = 0; row < source->rowCount(); ++row) {
            QList<QStandardItem *> items;
            for (int column = 0; column < 12; ++column)
                items << source->item(row, column)->clone();
            QCOMPARE(items[0]->type(), int(QStandardItem::Type));
            plain.appendRow(items);
        }
        QSortFilterProxyModel reference;
        reference.setSourceModel(&plain);
        reference.setSortRole(Qt::UserRole);
        for (int column = 0; column < 12; ++column) {
            for (const auto order : {Qt::AscendingOrder, Qt::DescendingOrder}) {
                for (QSortFilterProxyModel *sorted : {proxy, &reference}) {
                    sorted->sort(-1);
                    sorted->sort(column, order);
                }
                QCOMPARE(idsOf(*proxy), idsOf(reference));
                // This time by single comparisons.
                proxy->invalidate();
                reference.invalidate();
                QCOMPARE(idsOf(*proxy), idsOf(reference));
            }
        }
    }

    void keepsItemsThatAreChanged()
    {
        Scene scene(drafts(3));
        scene.view->loadInterval();
        auto *proxy = qobject_cast<QSortFilterProxyModel *>(scene.list->model());
        scene.header->setSortIndicator(1, Qt::AscendingOrder);
        proxy->setData(proxy->index(0, 1), 9.5, Qt::UserRole);
        QCOMPARE(scene.ids(), QStringList({"e1", "e2", "e0"}));
        QCOMPARE(proxy->index(2, 1).data().toString(), QString("0.0"));
    }

    void staysAliveWhileLoading()
    {
        Scene scene(drafts(4));
        QVERIFY(QTest::qWaitForWindowActive(scene.view.get()));
        auto *button = scene.child<QToolButton>("buttonLoadInterval");
        button->setFocus();
        rowsAllowed = 2;
        bool wasShown = false;
        QElapsedTimer timer;
        timer.start();
        when(
            scene.view.get(), [] { return dialog() && dialog()->value() == 2; },
            [&] {
                wasShown = timer.elapsed() >= 450; // timers may be early by a twentieth
                QCOMPARE(dialog()->maximum(), 4);
                QCOMPARE(dialog()->labelText(), QString("Loading events"));
                QVERIFY(!button->isEnabled() &&
                        !scene.child<QWidget>("buttonLoadDays")->isEnabled());
                // The rows belong to the other thread, whatever the user does.
                QCOMPARE(scene.view->rowCount(), 0);
                scene.child<QCheckBox>("hideFakeEvents")->toggle();
                scene.view->clear();
                scene.view->loadLastDays();
                scene.view->setTimeWindow(Begin, End);
                auto *cancel = dialog()->findChild<QPushButton *>();
                QTest::mouseClick(cancel, Qt::LeftButton);
                QVERIFY(!cancel->isEnabled() && dialog());
                rowsAllowed = 1 << 30;
            });
        QTest::keyClick(button, Qt::Key_Space);
        QVERIFY(wasShown);
        QVERIFY(!dialog());
        QVERIFY(scene.view->rowCount() == 2 || scene.view->rowCount() == 3);
        QVERIFY(button->isEnabled() && scene.view->focusWidget() == button);
    }

    void showsNoDialogForShortLoads()
    {
        Scene scene(drafts(4));
        bool wasShown = false;
        rowsAllowed = 3; // most of the time has gone, and still the end is near
        QTimer::singleShot(350, [&] {
            wasShown = dialog();
            rowsAllowed = 1 << 30;
        });
        scene.view->loadInterval();
        QVERIFY(!wasShown);
        QCOMPARE(scene.view->rowCount(), 4);
    }

    void endsWithTheProgram()
    {
        Scene scene(drafts(4));
        rowsAllowed = 1;
        bool hasEnded = false;
        QTimer::singleShot(0, [&] {
            scene.view->loadInterval();
            hasEnded = true;
        });
        QTimer::singleShot(50, [] {
            QCoreApplication::quit();
            rowsAllowed = 1 << 30;
        });
        QCoreApplication::exec();
        QVERIFY(hasEnded);
    }

    /** In a zone in which the hour from 2 to 3 was left out that night. */
    void takesDatesForUtc()
    {
        qputenv("TZ", "Europe/Berlin");
        tzset();
        std::vector<Draft> events = drafts(1);
        events[0].time = "2024-03-31 02:30:00";
        Scene scene(events);
        const QDateTime date(QDate(2024, 3, 31), QTime(2, 30), Qt::UTC);
        scene.view->setTimeWindow(date, date);
        scene.view->loadInterval();
        QCOMPARE(scene.view->rowCount(), 1);
        qunsetenv("TZ");
        tzset();
    }
};

QTEST_MAIN(EventListViewTest)
#include "tst_eventlistview.moc"
