// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QDate>
#include <QDateTime>
#include <QTime>
#include <QWidget>

class QCalendarWidget;
class QHBoxLayout;
class QToolButton;

namespace Norvu {
namespace Gui {

class Menu;

/**
 * A month calendar below a row with hour, minute and second, each with a drop-down of its numbers.
 *
 * Setting a value from outside emits nothing, so that the widget can be tied to an input both ways.
 */
class NORVU_GUI_API CalendarWidget : public QWidget
{
    Q_OBJECT

public:
    explicit CalendarWidget(const QDateTime &dateTime, QWidget *parent = nullptr);

    const QDateTime &dateTime() const { return _dateTime; }
    /** Shows a value; emits nothing. */
    void setDateTime(const QDateTime &dateTime);

signals:
    /** The user chose another date or time. */
    void dateTimeChanged(const QDateTime &dateTime);

public slots:
    /**
     * Moves the value to the same day of another month; the value's date is invalid when that month
     * has no such day.
     */
    void onCurrentPageChanged(int year, int month);
    /** Replaces the date. */
    void setDate(const QDate &date);
    /** Shows the present time in UTC; emits nothing. */
    void setCurrentDateTime();
    /** Replaces one part of the time; numbers out of range are ignored. */
    void setHour(int hour);
    void setMin(int minute);
    void setSec(int second);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QHBoxLayout *createTimeRow();
    void addTimeButton(QHBoxLayout *row, QToolButton *&button, Menu *menu);
    Menu *createNumberMenu(int columns, const char *slot);
    void setTime(const QTime &time);
    void updateTimeButtons();

    QDateTime _dateTime;
    QCalendarWidget *_calendar = nullptr;
    QToolButton *_hourButton = nullptr;
    QToolButton *_minuteButton = nullptr;
    QToolButton *_secondButton = nullptr;
};

} // namespace Gui
} // namespace Norvu
