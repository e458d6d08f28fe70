// SPDX-License-Identifier: LGPL-3.0-or-later

#include "eventtesting.h"

#include <norvu/gui/eventlistview.h>

#include <QCheckBox>
#include <QDateTimeEdit>
#include <QHeaderView>
#include <QProgressDialog>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>

#include <atomic>
#include <memory>
#include <random>

using namespace EventTesting;
using namespace Norvu::Gui;

namespace {

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

class EventListLoadingTest : public QObject
{
    Q_OBJECT

private slots:
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

    void endsLoadWithEscape()
    {
        Scene scene(drafts(4));
        rowsAllowed = 1;
        when(scene.view.get(), dialog, [] {
            QTest::keyClick(dialog(), Qt::Key_Escape);
            rowsAllowed = 1 << 30;
        });
        scene.view->loadInterval();
        QVERIFY(scene.view->rowCount() < 4);
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

QTEST_MAIN(EventListLoadingTest)
#include "tst_eventlistloading.moc"
