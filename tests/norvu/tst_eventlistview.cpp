// SPDX-License-Identifier: LGPL-3.0-or-later

#include "answer.h"
#include "eventtesting.h"

#include <norvu/gui/eventfilterwidget.h>
#include <norvu/gui/eventlistview.h>
#include <norvu/gui/optionaldoublespinbox.h>

#include <QCheckBox>
#include <QDateTimeEdit>
#include <QHeaderView>
#include <QMenu>
#include <QMessageBox>
#include <QSpinBox>
#include <QToolButton>
#include <QTreeView>
#include <QtTest>

using namespace EventTesting;
using Norvu::Gui::EventFilterWidget;
using Norvu::Gui::EventListView;
using Norvu::Gui::EventRow;
using Norvu::Gui::OptionalDoubleSpinBox;

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

} // namespace

class TestEventListView : public QObject
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

    void narrowsTheLoadByItsFilter_data()
    {
        QTest::addColumn<QString>("input");
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("ids");
        QTest::addColumn<bool>("colored");
        QTest::newRow("magnitude") << "fromMagnitude" << 10.0 << "b" << true;
        QTest::newRow("depth, which is unknown of one") << "toDepth" << 40.0 << "ac" << true;
        QTest::newRow("longitude: the button stays plain")
            << "toLongitude" << 100.0 << "ab" << false;
    }

    void narrowsTheLoadByItsFilter()
    {
        QFETCH(QString, input);
        QFETCH(double, value);
        Bench bench;
        auto *filter = bench.view.findChild<EventFilterWidget *>();
        filter->findChild<OptionalDoubleSpinBox *>(input)->setValue(value);
        bench.view.updateFilterButton();
        const auto *button = bench.child<QToolButton>("buttonFilter");
        const QBrush plain = QPalette().brush(QPalette::ButtonText);
        QTEST(button->palette().brush(QPalette::ButtonText) != plain, "colored");

        bench.child<QCheckBox>("hideFakeEvents")->setChecked(false);
        bench.view.loadInterval();
        bench.tree->sortByColumn(9, Qt::AscendingOrder);
        QTEST(bench.ids(), "ids");
    }

    void loadsTheLastDays()
    {
        Bench bench;
        bench.view.loadLastDays(7);
        QCOMPARE(bench.child<QSpinBox>("spinDays")->value(), 7);
        const auto start = bench.child<QDateTimeEdit>("dateTimeEditStart")->dateTime();
        const auto end = bench.child<QDateTimeEdit>("dateTimeEditEnd")->dateTime();
        QCOMPARE(start.daysTo(end), 7);
        QCOMPARE(bench.view.rowCount(), 0);
        bench.view.loadLastDays(0);
        QCOMPARE(bench.child<QSpinBox>("spinDays")->value(), 1);
    }

    void tellsThatThereIsNoDatabase()
    {
        EventListView view(nullptr);
        QString told;
        Answer<QMessageBox> answer([&](QMessageBox &box) {
            told = box.windowTitle() + ": " + box.text();
            box.accept();
        });
        view.loadInterval();
        QCOMPARE(told, QString("Error: No database connection available"));
        QVERIFY(view.findChild<QToolButton *>("buttonLoadInterval")->isEnabled());
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
};

QTEST_MAIN(TestEventListView)
#include "tst_eventlistview.moc"
