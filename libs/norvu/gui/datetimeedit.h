// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QDateTimeEdit>

namespace Norvu {
namespace Gui {

class CalendarWidget;

/**
 * A date and time input in UTC with a button inside the box that drops down a calendar.
 *
 * Values are taken by their date and clock time and are never converted: whatever the time zone of
 * a value that is set, dateTime() has the same digits, in UTC.
 */
class NORVU_GUI_API DateTimeEdit : public QDateTimeEdit
{
    Q_OBJECT

public:
    explicit DateTimeEdit(QWidget *parent = nullptr);

public slots:
    /** Shows the edit's value in the calendar. */
    void selfDateTimeChanged(const QDateTime &dateTime);
    /** Takes over the calendar's value. */
    void calDateTimeChanged(const QDateTime &dateTime);

private:
    void keepDigitsInUtc();
    void addCalendarButton();

    CalendarWidget *_calendarWidget = nullptr;
};

} // namespace Gui
} // namespace Norvu
