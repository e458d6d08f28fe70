#include <norvu/gui/calendarwidget.h>
#include <norvu/gui/customwidgetmenu.h>
#include <norvu/gui/datetimeedit.h>
#include <norvu/gui/menu.h>

#include <QAbstractButton>
#include <QButtonGroup>
#include <QCalendarWidget>
#include <QLabel>
#include <QLayout>
#include <QToolButton>
#include <QWindow>
#include <QtTest>

#include <functional>

using namespace Norvu::Gui;

namespace {

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

QToolButton *nowButton(const CalendarWidget &calendar)
{
    for (auto *button : calendar.findChildren<QToolButton *>()) {
        if (button->toolTip() == QStringLiteral("set current time"))
            return button;
    }
    return nullptr;
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

class DateTimeEditTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void showsValueAsUtc_data();
    void showsValueAsUtc();
    void tiesEditAndCalendarTogether();
    void dropsDownCalendar();
    void staysOpenWhileTimeIsPicked();
    void picksTimeWithKeys();
    void picksPartsOfTime_data();
    void picksPartsOfTime();
    void emitsNothingWhenSet();
    void turnsPages_data();
    void turnsPages();
    void keepsEditOnDayThatDoesNotExist();
    void setsCurrentTimeInCalendarOnly();
};

void DateTimeEditTest::initTestCase()
{
    // A zone whose summer time skips the hour from 02:00 to 03:00 of 28 March 2021.
    qputenv("TZ", "Europe/Berlin");
    tzset();
}

void DateTimeEditTest::showsValueAsUtc_data()
{
    QTest::addColumn<QDateTime>("value");
    QTest::addColumn<QString>("text");

    QTest::newRow("UTC") << utc(2021, 7, 1, 10, 5, 9) << "2021-07-01 10:05:09 UTC";
    QTest::newRow("local time is not converted")
        << QDateTime(QDate(2021, 7, 1), QTime(10, 5, 9)) << "2021-07-01 10:05:09 UTC";
    QTest::newRow("hour that summer time skips")
        << utc(2021, 3, 28, 2, 30) << "2021-03-28 02:30:00 UTC";
}

void DateTimeEditTest::showsValueAsUtc()
{
    QFETCH(QDateTime, value);
    QFETCH(QString, text);

    DateTimeEdit edit;
    edit.setDateTime(value);
    QCOMPARE(edit.text(), text);
    QCOMPARE(edit.dateTime(), QDateTime(value.date(), value.time(), Qt::UTC));
}

void DateTimeEditTest::tiesEditAndCalendarTogether()
{
    DateTimeEdit edit;
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

void DateTimeEditTest::dropsDownCalendar()
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
        // The day is chosen with the keys of the month's table, which the drop-down must leave it.
        auto *days = calendar->findChild<QWidget *>(QStringLiteral("qt_calendar_calendarview"));
        days->setFocus();
        QTest::keyClick(menu->windowHandle(), Qt::Key_Right);
        QTest::keyClick(menu->windowHandle(), Qt::Key_Return);
    });
    QVERIFY(wasOpen);
    QCOMPARE(edit.dateTime(), utc(2021, 7, 15, 10));
}

void DateTimeEditTest::staysOpenWhileTimeIsPicked()
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

void DateTimeEditTest::picksTimeWithKeys()
{
    CalendarWidget calendar(utc(2021, 7, 14, 9, 20, 30));
    calendar.show();
    QVERIFY(QTest::qWaitForWindowActive(&calendar));
    QToolButton *hour = timeButtons(calendar).at(0);
    hour->setFocus();
    QTimer::singleShot(0, this, [hour] {
        // From 09 one to the right and one row down.
        for (auto key : {Qt::Key_Right, Qt::Key_Down, Qt::Key_Return})
            QTest::keyClick(hour->menu()->windowHandle(), key);
        hour->menu()->close();
    });
    QTest::keyClick(calendar.windowHandle(), Qt::Key_Space);
    QCOMPARE(calendar.dateTime(), utc(2021, 7, 14, 14, 20, 30));
}

void DateTimeEditTest::picksPartsOfTime_data()
{
    QTest::addColumn<int>("part");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("shown");

    QTest::newRow("hour") << 0 << 24 << 4 << 7 << "07:20:30";
    QTest::newRow("minute") << 1 << 60 << 10 << 0 << "10:00:30";
    QTest::newRow("second") << 2 << 60 << 10 << 59 << "10:20:59";
}

void DateTimeEditTest::picksPartsOfTime()
{
    QFETCH(int, part);
    QFETCH(int, count);
    QFETCH(int, columns);
    QFETCH(int, number);
    QFETCH(QString, shown);

    CalendarWidget calendar(utc(2021, 7, 14, 10, 20, 30).addMSecs(250));
    Menu *menu = numberMenu(calendar, part);
    menu->resize(menu->sizeHint());
    menu->layout()->activate();
    const QButtonGroup &numbers = *menu->buttonGroup();
    QCOMPARE(numbers.buttons().size(), count);
    QCOMPARE(numbers.button(7)->text(), QStringLiteral("07"));
    const QSize size = numbers.button(0)->size();
    QCOMPARE(numbers.button(columns)->pos(), QPoint(0, size.height()));
    QCOMPARE(numbers.button(count - 1)->geometry().bottomRight() + QPoint(1, 1),
             QPoint(columns * size.width(), 6 * size.height()));

    QSignalSpy changed(&calendar, SIGNAL(dateTimeChanged(QDateTime)));
    numbers.button(number)->click();
    const QDateTime expected(QDate(2021, 7, 14), QTime::fromString(shown), Qt::UTC);
    QCOMPARE(changed.size(), 1);
    QCOMPARE(changed.first().first().toDateTime(), expected);
    QCOMPARE(calendar.dateTime(), expected);
    QCOMPARE(shownTime(calendar), shown);

    calendar.setHour(24);
    calendar.setSec(-1);
    QCOMPARE(calendar.dateTime(), expected);
}

void DateTimeEditTest::emitsNothingWhenSet()
{
    CalendarWidget calendar(utc(2021, 1, 31));
    QSignalSpy changed(&calendar, SIGNAL(dateTimeChanged(QDateTime)));
    // Into another month, which turns the page of the month's table.
    calendar.setDateTime(utc(2023, 2, 3, 4, 5, 6));
    QCOMPARE(changed.size(), 0);
    QCOMPARE(shownTime(calendar), QStringLiteral("04:05:06"));
    QCOMPARE(calendar.dateTime(), utc(2023, 2, 3, 4, 5, 6));
    auto *days = calendar.findChild<QCalendarWidget *>();
    QCOMPARE(days->selectedDate(), QDate(2023, 2, 3));
    QCOMPARE(days->monthShown(), 2);
}

void DateTimeEditTest::turnsPages_data()
{
    QTest::addColumn<QDate>("selected");
    QTest::addColumn<QDate>("result");

    QTest::newRow("to a day that exists") << QDate(2021, 1, 28) << QDate(2021, 2, 28);
    QTest::newRow("over the year's end") << QDate(2021, 12, 31) << QDate(2022, 1, 31);
    QTest::newRow("to a day that doesn't exist") << QDate(2021, 1, 31) << QDate();
}

void DateTimeEditTest::turnsPages()
{
    QFETCH(QDate, selected);
    QFETCH(QDate, result);

    CalendarWidget calendar(QDateTime(selected, QTime(10, 20, 30), Qt::UTC));
    QSignalSpy changed(&calendar, SIGNAL(dateTimeChanged(QDateTime)));
    calendar.findChild<QCalendarWidget *>()->showNextMonth();
    QCOMPARE(changed.size(), 1);
    QCOMPARE(changed.first().first().toDateTime().date(), result);
    QCOMPARE(calendar.dateTime().isValid(), result.isValid());
}

void DateTimeEditTest::keepsEditOnDayThatDoesNotExist()
{
    DateTimeEdit edit;
    edit.setDateTime(utc(2021, 1, 31, 10, 20, 30));
    auto *calendar = edit.findChild<CalendarWidget *>();
    auto *days = calendar->findChild<QCalendarWidget *>();
    days->showNextMonth();
    QCOMPARE(edit.dateTime(), utc(2021, 1, 31, 10, 20, 30));

    calendar->setDate(QDate(2021, 2, 14));
    QCOMPARE(edit.dateTime(), utc(2021, 2, 14, 10, 20, 30));
}

void DateTimeEditTest::setsCurrentTimeInCalendarOnly()
{
    DateTimeEdit edit;
    const QDateTime old = utc(2021, 1, 31, 10, 20, 30);
    edit.setDateTime(old);
    auto *calendar = edit.findChild<CalendarWidget *>();
    nowButton(*calendar)->click();
    QCOMPARE(calendar->dateTime().timeSpec(), Qt::UTC);
    QVERIFY(qAbs(calendar->dateTime().secsTo(QDateTime::currentDateTimeUtc())) < 60);
    QCOMPARE(edit.dateTime(), old);
}

QTEST_MAIN(DateTimeEditTest)
#include "tst_datetimeedit.moc"
