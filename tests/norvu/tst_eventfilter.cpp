// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowname.h"

#include <norvu/gui/calendarwidget.h>
#include <norvu/gui/customwidgetmenu.h>
#include <norvu/gui/datetimeedit.h>
#include <norvu/gui/eventfilterwidget.h>
#include <norvu/gui/menu.h>
#include <norvu/gui/optionaldoublespinbox.h>

#include <QAbstractButton>
#include <QButtonGroup>
#include <QCalendarWidget>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QToolButton>
#include <QWindow>
#include <QtTest>

#include <functional>

using namespace Norvu::Gui;

namespace {

QVector<std::optional<double>> bounds(const EventFilterWidget &form)
{
    const EventFilter f = form.filter();
    return {f.fromLatitude, f.toLatitude, f.fromLongitude, f.toLongitude,
            f.fromDepth,    f.toDepth,    f.fromMagnitude, f.toMagnitude};
}

QToolButton *resetButton(const OptionalDoubleSpinBox &box)
{
    return box.findChild<QToolButton *>(QStringLiteral("reset"));
}

QDateTime utc(int year, int month, int day, int hour = 0, int minute = 0, int second = 0)
{
    return QDateTime(QDate(year, month, day), QTime(hour, minute, second), Qt::UTC);
}

/** The buttons of hour, minute and second. */
QList<QToolButton *> timeButtons(const CalendarWidget &calendar)
{
    QList<QToolButton *> buttons;
    for (auto *button :
         calendar.findChildren<QToolButton *>(QString(), Qt::FindDirectChildrenOnly)) {
        if (button->menu())
            buttons << button;
    }
    return buttons;
}

/** Their texts as one. */
QString shownTime(const CalendarWidget &calendar)
{
    QStringList texts;
    for (const auto *button : timeButtons(calendar))
        texts << button->text();
    return texts.join(QLatin1Char(':'));
}

Menu *numberMenu(const CalendarWidget &calendar, int index)
{
    return qobject_cast<Menu *>(timeButtons(calendar).at(index)->menu());
}

/** Clicks through the window system, as a user does: popups are asked first. */
void clickInWindow(QWidget *target)
{
    QWidget *window = target->window();
    QTest::mouseClick(window->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      target->mapTo(window, target->rect().center()));
}

/** Opens the drop-down of a button with the mouse and does @p actions while it is open. */
void clickForMenu(QToolButton *button, const std::function<void()> &actions)
{
    QWidget *window = button->window();
    const QPoint position = button->mapTo(window, button->rect().center());
    // A drop-down runs an event loop of its own from the press on, and is there at the release.
    QTimer::singleShot(0, button, [=] {
        QTest::mouseRelease(window->windowHandle(), Qt::LeftButton, Qt::NoModifier, position);
        actions();
        button->menu()->close();
    });
    QTest::mousePress(window->windowHandle(), Qt::LeftButton, Qt::NoModifier, position);
}

} // namespace

class EventFilterTest : public QObject
{
    Q_OBJECT

private slots:
    void takesBoundsInTabOrder()
    {
        EventFilterWidget form;
        const QVector<std::optional<double>> unset(8);
        QCOMPARE(bounds(form), unset);

        form.show();
        QVERIFY(QTest::qWaitForWindowActive(&form));
        form.findChild<OptionalDoubleSpinBox *>("fromLatitude")->setFocus();
        const char *const typed[] = {"-12.34567", "89.9999", "-179.5", "180",
                                     "-998.5",    "99.99",   "-9.9",   "20"};
        for (const char *text : typed) {
            auto *box = qobject_cast<OptionalDoubleSpinBox *>(form.focusWidget());
            QVERIFY(box);
            QCOMPARE(box->text(), QString("Unset"));
            box->selectAll();
            QTest::keyClicks(box, text);
            QTest::keyClick(box, Qt::Key_Tab);
        }
        // What has more digits than the box can't be typed.
        QCOMPARE(bounds(form), (QVector<std::optional<double>>{-12.3456, 89.9999, -179.5, 180.0,
                                                               -998.5, 99.99, -9.9, 20.0}));
    }

    void leavesMinimumUnset()
    {
        const std::tuple<const char *, QString, double, double> rows[] = {
            {"latitude", "fromLatitude", -90.0, -89.0},
            {"longitude", "toLongitude", -180.0, -179.0},
            {"depth", "fromDepth", -999.0, -998.0},
            {"magnitude", "toMagnitude", -10.0, -9.5}};
        for (const auto &[row, name, minimum, next] : rows) {
            const RowName shown(row);
            EventFilterWidget form;
            auto *box = form.findChild<OptionalDoubleSpinBox *>(name);
            box->stepUp();
            QCOMPARE(box->value(), next);
            QCOMPARE(bounds(form).count(std::nullopt), 7);
            box->setValue(minimum);
            QCOMPARE(bounds(form).count(std::nullopt), 8);
        }
    }

    void tellsValueFromUnset()
    {
        OptionalDoubleSpinBox box;
        box.setRange(-90, 90);
        // The first one rounds to the minimum, which stands for no value.
        for (const double value : {-89.999, -89.99}) {
            box.setValue(45);
            box.setValue(value);
            const bool isValid = value > -89.995;
            QCOMPARE(box.isValid(), isValid);
            QCOMPARE(resetButton(box)->isEnabled(), isValid);
            QCOMPARE(box.text() == QStringLiteral("Unset"), !isValid);
        }
    }

    void resetsWithButton()
    {
        OptionalDoubleSpinBox box;
        box.setRange(-10, 10);
        box.setValue(5);
        box.resize(200, 30);
        box.show();
        QVERIFY(QTest::qWaitForWindowExposed(&box));
        QSignalSpy changed(&box, SIGNAL(valueChanged(double)));

        // Through the window, so that the button has to lie above the box's edit.
        const QPoint center = resetButton(box)->mapTo(&box, resetButton(box)->rect().center());
        QTest::mouseClick(box.windowHandle(), Qt::LeftButton, Qt::NoModifier, center);
        QCOMPARE(box.value(), -10.0);
        QCOMPARE(changed.size(), 1);
        QVERIFY(!box.isValid() && !resetButton(box)->isEnabled());
    }

    void initTestCase()
    {
        // A zone whose summer time skips the hour from 02:00 to 03:00 of 28 March 2021.
        qputenv("TZ", "Europe/Berlin");
        tzset();
    }

    void convertsNothing()
    {
        for (const char *zone : {"Asia/Tokyo", "America/New_York", "Europe/Berlin"}) {
            qputenv("TZ", zone);
            tzset();
            const DateTimeEdit edit;
            const QDateTimeEdit plain;
            for (const auto &time :
                 {&QDateTimeEdit::minimumDateTime, &QDateTimeEdit::maximumDateTime}) {
                QCOMPARE((edit.*time)().timeSpec(), Qt::UTC);
                QCOMPARE((edit.*time)().date(), (plain.*time)().date());
                QCOMPARE((edit.*time)().time(), (plain.*time)().time());
            }
            QCOMPARE(edit.text(), QStringLiteral("2000-01-01 00:00:00 UTC"));
            QCOMPARE(edit.findChild<CalendarWidget *>()->dateTime(), utc(2000, 1, 1));
        }
    }

    void tiesEditAndCalendarTogether()
    {
        DateTimeEdit edit;
        // A local time is not converted, nor moved out of the hour that summer time skips.
        edit.setDateTime(QDateTime(QDate(2021, 7, 1), QTime(10, 5, 9)));
        QCOMPARE(edit.text(), QStringLiteral("2021-07-01 10:05:09 UTC"));
        edit.setDateTime(utc(2021, 3, 28, 2, 30));
        QCOMPARE(edit.text(), QStringLiteral("2021-03-28 02:30:00 UTC"));
        edit.setDateTime(utc(2021, 7, 31, 23, 59, 58));
        auto *calendar = edit.findChild<CalendarWidget *>();
        QCOMPARE(calendar->dateTime(), edit.dateTime());
        QSignalSpy edited(&edit, SIGNAL(dateTimeChanged(QDateTime)));
        QSignalSpy picked(calendar, SIGNAL(dateTimeChanged(QDateTime)));
        QVERIFY(edited.isValid() && picked.isValid());

        edit.show();
        QVERIFY(QTest::qWaitForWindowActive(&edit));
        edit.setSelectedSection(QDateTimeEdit::YearSection);
        QTest::keyClicks(&edit, QStringLiteral("2022"));
        QCOMPARE(calendar->dateTime(), utc(2022, 7, 31, 23, 59, 58));
        QCOMPARE(calendar->findChild<QCalendarWidget *>()->selectedDate(), QDate(2022, 7, 31));
        QCOMPARE(picked.size(), 0);

        edited.clear();
        calendar->setHour(4);
        QCOMPARE(edit.text(), QStringLiteral("2022-07-31 04:59:58 UTC"));
        QCOMPARE(edited.size(), 1);
        QCOMPARE(picked.size(), 1);
    }

    void dropsDownCalendar()
    {
        DateTimeEdit edit;
        edit.setDateTime(utc(2021, 7, 14, 10));
        edit.show();
        QVERIFY(QTest::qWaitForWindowActive(&edit));
        auto *button = edit.findChild<QToolButton *>(QStringLiteral("cal"));
        auto *menu = edit.findChild<CustomWidgetMenu *>();
        auto *calendar = edit.findChild<CalendarWidget *>();
        QCOMPARE(button->menu(), static_cast<QMenu *>(menu));

        bool wasOpen = false;
        clickForMenu(button, [&] {
            wasOpen = menu->isVisible() && menu->rect().contains(calendar->geometry());
            // The day is chosen with the keys of the month's table, which the drop-down must leave
            // it.
            auto *days = calendar->findChild<QWidget *>(QStringLiteral("qt_calendar_calendarview"));
            days->setFocus();
            QTest::keyClick(menu->windowHandle(), Qt::Key_Right);
            QTest::keyClick(menu->windowHandle(), Qt::Key_Return);
        });
        QVERIFY(wasOpen);
        QCOMPARE(edit.dateTime(), utc(2021, 7, 15, 10));
    }

    void staysOpenWhileTimeIsPicked()
    {
        DateTimeEdit edit;
        edit.setDateTime(utc(2021, 7, 14, 10, 20, 30));
        edit.show();
        auto *menu = edit.findChild<CustomWidgetMenu *>();
        auto *calendar = edit.findChild<CalendarWidget *>();
        menu->popup(QPoint(10, 10));
        QVERIFY(QTest::qWaitForWindowExposed(menu));

        Menu *minutes = numberMenu(*calendar, 1);
        bool wasOpen = false;
        bool wasClosed = false;
        clickForMenu(timeButtons(*calendar).at(1), [&] {
            wasOpen = minutes->isVisible() && menu->isVisible();
            clickInWindow(minutes->buttonGroup()->button(47));
            wasClosed = !minutes->isVisible();
        });
        QVERIFY(wasOpen && wasClosed);
        QVERIFY(menu->isVisible());
        QCOMPARE(edit.dateTime(), utc(2021, 7, 14, 10, 47, 30));

        // A click beside all buttons is a miss and no reason to close.
        clickInWindow(calendar->findChild<QLabel *>());
        QVERIFY(menu->isVisible());
        QTest::mouseClick(menu->windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(-5, -5));
        QVERIFY(!menu->isVisible());
    }

    void picksPartsOfTime()
    {
        const std::tuple<int, int, const char *> parts[] = {
            {24, 7, "07:20:30"}, {60, 0, "07:00:30"}, {60, 59, "07:00:59"}};
        CalendarWidget calendar(utc(2021, 7, 14, 10, 20, 30).addMSecs(250));
        QSignalSpy changed(&calendar, SIGNAL(dateTimeChanged(QDateTime)));
        int index = 0;
        for (const auto &[count, number, text] : parts) {
            const QButtonGroup &numbers = *numberMenu(calendar, index++)->buttonGroup();
            QCOMPARE(numbers.buttons().size(), count);
            numbers.button(number)->click();
            QCOMPARE(shownTime(calendar), QString(text));
            QCOMPARE(changed.size(), index);
            QCOMPARE(changed.last().first().toDateTime(), calendar.dateTime());
        }
        calendar.setHour(24);
        calendar.setSec(-1);
        QCOMPARE(calendar.dateTime(), utc(2021, 7, 14, 7, 0, 59));
    }

    void keepsEditOnDayThatDoesNotExist()
    {
        DateTimeEdit edit;
        const QDateTime last = utc(2021, 1, 31, 10, 20, 30);
        edit.setDateTime(last);
        auto *calendar = edit.findChild<CalendarWidget *>();
        QSignalSpy changed(calendar, SIGNAL(dateTimeChanged(QDateTime)));
        // Into another month, which turns the page of the month's table.
        calendar->setDateTime(utc(2023, 2, 3, 4, 5, 6));
        QCOMPARE(calendar->findChild<QCalendarWidget *>()->monthShown(), 2);
        calendar->setDateTime(last);
        QCOMPARE(changed.size(), 0);

        calendar->findChild<QCalendarWidget *>()->showNextMonth();
        QCOMPARE(changed.size(), 1);
        QVERIFY(!calendar->dateTime().isValid());
        QCOMPARE(edit.dateTime(), last);
        calendar->setDate(QDate(2021, 2, 14));
        QCOMPARE(edit.dateTime(), utc(2021, 2, 14, 10, 20, 30));
    }
};

QTEST_MAIN(EventFilterTest)
#include "tst_eventfilter.moc"
