// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowname.h"

#include <norvu/gui/tabbar.h>
#include <norvu/gui/tabwidget.h>

#include <QLineEdit>
#include <QMouseEvent>
#include <QtTest>

using namespace Norvu::Gui;

namespace {

/** A tab widget of 500 x 300 pixels with a page for each name, and what it tells. */
struct Tabs
{
    explicit Tabs(const QString &names = "ABCD")
    {
        for (const QChar name : names)
            widget.addTab(newPage(name), name);
        QObject::connect(&widget, &TabWidget::detached,
                         [this](QWidget *page) { log << "detached " + page->objectName(); });
        QObject::connect(&widget, &TabWidget::attached,
                         [this](QWidget *page) { log << "attached " + page->objectName(); });
        widget.setGeometry(300, 100, 500, 300);
        widget.show();
        if (!QTest::qWaitForWindowExposed(&widget))
            qFatal("The window of the tabs does not come up");
    }

    QWidget *newPage(const QString &name)
    {
        auto *page = new QWidget;
        page->setObjectName(name);
        pages.insert(name, page);
        return page;
    }

    TabBar *bar() { return widget.findChild<TabBar *>(); }
    QWidget *page(const QString &name) { return pages.value(name); }
    QPoint centerOf(int tab) { return bar()->tabRect(tab).center(); }

    QString tabNames()
    {
        QString names;
        for (int i = 0; i < widget.count(); ++i)
            names += widget.widget(i)->objectName();
        return names;
    }

    QString pageNames()
    {
        QString names;
        for (int i = 0; i < widget.widgetCount(); ++i)
            names += widget.widgetAt(i)->objectName();
        return names;
    }

    void detach(const QString &names)
    {
        for (const QChar name : names)
            widget.detach(widget.indexOf(page(name)), QPoint(400, 500));
        log.clear();
    }

    void send(QEvent::Type type, const QPoint &position)
    {
        const bool isMove = type == QEvent::MouseMove;
        const bool isDown = type != QEvent::MouseButtonRelease;
        QMouseEvent event(type, position, bar()->mapToGlobal(position),
                          isMove ? Qt::NoButton : Qt::LeftButton,
                          isDown ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(bar(), &event);
        QApplication::processEvents();
    }

    /** Presses at the first position and moves through the others in small steps. */
    void drag(const QVector<QPoint> &positions)
    {
        constexpr int Steps = 12;
        send(QEvent::MouseButtonPress, positions.first());
        for (int i = 1; i < positions.size(); ++i) {
            const QPoint way = positions[i] - positions[i - 1];
            for (int step = 1; step <= Steps; ++step)
                send(QEvent::MouseMove, positions[i - 1] + way * step / Steps);
        }
    }

    void dragAndDrop(const QVector<QPoint> &positions)
    {
        drag(positions);
        send(QEvent::MouseButtonRelease, positions.last());
    }

    TabWidget widget;
    QStringList log;
    QHash<QString, QPointer<QWidget>> pages;
};

} // namespace

class TabWidgetTest : public QObject
{
    Q_OBJECT

private slots:
    void draggingOutTearsOff()
    {
        Tabs tabs;
        const QPoint start = tabs.centerOf(1);
        const QPoint end = start + QPoint(30, 150);
        tabs.drag({start, end});
        const QSize size = tabs.page("B")->size();
        const QPoint position = tabs.bar()->mapToGlobal(end);
        QCOMPARE(tabs.bar()->cursor().shape(), Qt::OpenHandCursor);
        QCOMPARE(tabs.widget.count(), 4);
        tabs.send(QEvent::MouseButtonRelease, end);

        QWidget *page = tabs.page("B");
        QCOMPARE(tabs.log, QStringList("detached B"));
        QCOMPARE(tabs.tabNames(), QString("ACD"));
        QCOMPARE(tabs.pageNames(), QString("ABCD"));
        QVERIFY(page->isWindow() && page->isVisible());
        QCOMPARE(page->windowTitle(), QString("B"));
        QCOMPARE(page->geometry(),
                 QRect(QPoint(position.x() - size.width() / 2, position.y() + 10), size));
        QCOMPARE(tabs.bar()->cursor().shape(), Qt::ArrowCursor);
    }

    void movesTabAndTearsItOff()
    {
        Tabs tabs;
        const QPoint start = tabs.centerOf(0);
        const QPoint below = tabs.centerOf(2) + QPoint(0, 120);
        tabs.drag({start, tabs.centerOf(2), below});
        QCOMPARE(tabs.tabNames(), QString("BCAD"));
        QCOMPARE(tabs.pageNames(), QString("BCAD"));

        tabs.send(QEvent::MouseButtonRelease, below);
        QCOMPARE(tabs.log, QStringList("detached A"));
        QCOMPARE(tabs.tabNames(), QString("BCD"));
    }

    void moveGoesOnAfterComingBack()
    {
        Tabs tabs;
        const QPoint start = tabs.centerOf(1);
        const QPoint beside(tabs.bar()->tabRect(3).right() + 5, 5);
        tabs.dragAndDrop({beside, beside + QPoint(0, 150)});
        tabs.dragAndDrop({start, start + QPoint(0, 120), start});
        QCOMPARE(tabs.tabNames(), QString("ABCD"));
        tabs.dragAndDrop({start, start + QPoint(0, 120), start, tabs.centerOf(2)});
        QCOMPARE(tabs.tabNames(), QString("ACBD"));
        QCOMPARE(tabs.pageNames(), QString("ACBD"));
        QCOMPARE(tabs.log, QStringList());
    }

    void pagesReturnToTheirPlace()
    {
        const std::tuple<const char *, QString, QString, QString> rows[] = {
            {"between two", "C", "C", "ABCD"},
            {"all before it are gone", "ABC", "C", "CD"},
            {"neighbours, the last torn off first", "BC", "CB", "ABCD"},
            {"neighbours, the first torn off first", "BC", "BC", "ACBD"},
            {"all, in any order", "ABCD", "CADB", "BDAC"},
        };
        for (const auto &[name, detached, closed, expected] : rows) {
            const RowName shown(name);
            Tabs tabs;
            tabs.detach(detached);
            for (const QChar tab : closed) {
                QWidget *page = tabs.page(tab);
                QVERIFY(!page->close());
                QVERIFY(!page->isWindow() && page->isVisible());
                QCOMPARE(tabs.widget.currentWidget(), page);
                QCOMPARE(tabs.widget.tabText(tabs.widget.currentIndex()), QString(tab));
                QCOMPARE(tabs.log.takeLast(), "attached " + QString(tab));
            }
            QCOMPARE(tabs.tabNames(), expected);
        }
    }

    void hidesWithoutTabs()
    {
        Tabs tabs("AB");
        tabs.detach("A");
        QVERIFY(tabs.widget.isVisible());
        tabs.detach("B");
        QVERIFY(tabs.widget.isHidden());
        QVERIFY(tabs.page("A")->isVisible());
        tabs.page("B")->close();
        QVERIFY(tabs.widget.isVisible());
    }

    void f11TogglesFullScreenOfDetachedPages()
    {
        Tabs tabs("AB");
        auto *editor = new QLineEdit(tabs.page("B"));
        tabs.widget.setCurrentIndex(1);
        editor->setFocus();
        QTest::keyClick(editor, Qt::Key_F11);
        QVERIFY(!tabs.page("B")->isFullScreen());

        tabs.detach("B");
        for (const bool isFull : {true, false}) {
            QTest::keyClick(editor, Qt::Key_F11);
            QCOMPARE(tabs.page("B")->isFullScreen(), isFull);
        }
    }

    void insertsBeforeTab()
    {
        const std::tuple<QString, QString, int, QString, QString> rows[] = {
            {"", "E", -1, "ABCDE", "ABCDE"},
            {"AC", "E", 1, "BED", "ABCED"},
            {"B", "B", 2, "ACBD", "ACBD"},
            {"", "C", 0, "CABD", "CABD"},
            {"", "A", 2, "BCAD", "BCAD"}};
        for (const auto &[detached, name, index, tabNames, pageNames] : rows) {
            Tabs tabs;
            tabs.detach(detached);
            QWidget *known = tabs.page(name);
            QWidget *page = known ? known : tabs.newPage(name);
            QCOMPARE(tabs.widget.insertTab(index, page, name), tabNames.indexOf(name));
            QCOMPARE(tabs.tabNames(), tabNames);
            QCOMPARE(tabs.pageNames(), pageNames);
            QVERIFY(!page->isWindow() && tabs.log.isEmpty());
        }
    }

    void listsPagesWithoutTabs()
    {
        Tabs tabs;
        QWidget *page = tabs.newPage("E");
        QCOMPARE(tabs.widget.insertWidget(2, page), 2);
        QCOMPARE(tabs.widget.insertWidget(0, page), -1);
        QCOMPARE(tabs.widget.insertWidget(9, tabs.newPage("F")), 5);
        QCOMPARE(tabs.pageNames(), QString("ABECDF"));
        QCOMPARE(tabs.tabNames(), QString("ABCD"));
        page->show();
        QVERIFY(page->isWindow());
        page->close();
        QCOMPARE(tabs.tabNames(), QString("ABECD"));

        // Added pages are tied to the tabs, but not listed.
        tabs.log.clear();
        tabs.widget.addWidget(tabs.newPage("G"));
        QCOMPARE(tabs.pageNames(), QString("ABECDF"));
        tabs.page("G")->close();
        QCOMPARE(tabs.tabNames(), QString("ABECDG"));
        QCOMPARE(tabs.log, QStringList("attached G"));
        tabs.widget.addWidget(tabs.newPage("H"));
        tabs.widget.insertTab(0, tabs.page("H"), "H");
        QTest::keyClick(tabs.page("H"), Qt::Key_F11);
        QVERIFY(!tabs.page("H")->isFullScreen());
        delete tabs.page("H");

        tabs.detach("B");
        QCOMPARE(tabs.widget.addTab(tabs.page("B"), "back"), 5);
        QCOMPARE(tabs.log, QStringList("attached B"));
        QCOMPARE(tabs.tabNames(), QString("AECDGB"));
    }

    void outlivesItsPages()
    {
        QPointer<QWidget> detached;
        QPointer<QWidget> removed;
        {
            Tabs tabs("ABCDEF");
            tabs.detach("ABCD");
            delete tabs.page("A");
            delete tabs.page("F");
            removed = tabs.page("E");
            tabs.widget.removeWidget(removed);
            tabs.widget.removeWidget(tabs.page("B"));
            tabs.widget.removeWidget(&tabs.widget);
            QCOMPARE(tabs.pageNames(), QString("CD"));
            QVERIFY(removed);
            QVERIFY(!tabs.page("B"));
            tabs.page("C")->close();
            QCOMPARE(tabs.tabNames(), QString("C"));
            detached = tabs.page("D");
            detached->setParent(nullptr, detached->windowFlags());
        }
        QVERIFY(detached.isNull());
        delete removed;
    }
};

QTEST_MAIN(TabWidgetTest)
#include "tst_tabwidget.moc"
