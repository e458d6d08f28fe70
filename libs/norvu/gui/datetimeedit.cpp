// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/datetimeedit.h>

#include <norvu/gui/boxbutton_p.h>
#include <norvu/gui/calendarwidget.h>
#include <norvu/gui/customwidgetmenu.h>
#include <norvu/gui/fontawesome5.h>

#include <QFontMetrics>
#include <QHBoxLayout>
#include <QToolButton>

namespace Norvu {
namespace Gui {

DateTimeEdit::DateTimeEdit(QWidget *parent) : QDateTimeEdit(parent)
{
    // In local time, an hour that summer time skips could not be entered.
    keepDigitsInUtc();
    setDisplayFormat(QStringLiteral("yyyy-MM-dd hh:mm:ss UTC"));
    addCalendarButton();

    connect(_calendarWidget, SIGNAL(dateTimeChanged(QDateTime)), this,
            SLOT(calDateTimeChanged(QDateTime)));
    connect(this, SIGNAL(dateTimeChanged(QDateTime)), this, SLOT(selfDateTimeChanged(QDateTime)));
}

/** Goes over to UTC, which moves value and limits by the offset of local time, and gives them back
 *  what they showed. */
void DateTimeEdit::keepDigitsInUtc()
{
    const auto inUtc = [](QDateTime time) {
        time.setTimeSpec(Qt::UTC);
        return time;
    };
    const QDateTime value = inUtc(dateTime());
    const QDateTime least = inUtc(minimumDateTime());
    const QDateTime most = inUtc(maximumDateTime());
    setTimeSpec(Qt::UTC);
    setDateTimeRange(least, most);
    setDateTime(value);
}

void DateTimeEdit::addCalendarButton()
{
    const int blank = fontMetrics().horizontalAdvance(QLatin1Char(' '));
    auto calendar = BoxButton::addTo(this, QStringLiteral("QDateTimeEdit"), QStringLiteral("cal"),
                                     FontAwesome5::font(), blank);
    calendar.setGlyph(FontAwesome5::chCalendarAlt);

    auto *menu = new CustomWidgetMenu(this);
    auto *layout = new QHBoxLayout(menu);
    layout->setContentsMargins(2, 2, 2, 2);
    _calendarWidget = new CalendarWidget(dateTime(), menu);
    layout->addWidget(_calendarWidget);
    calendar.button->setMenu(menu);
}

void DateTimeEdit::selfDateTimeChanged(const QDateTime &dateTime)
{
    _calendarWidget->setDateTime(dateTime);
}

void DateTimeEdit::calDateTimeChanged(const QDateTime &dateTime)
{
    setDateTime(dateTime);
}

} // namespace Gui
} // namespace Norvu
