// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/calendarwidget.h>

#include <norvu/gui/menu.h>
#include <norvu/gui/toolbutton.h>

#include <QButtonGroup>
#include <QCalendarWidget>
#include <QGridLayout>
#include <QLabel>
#include <QPaintEvent>
#include <QPainter>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStyle>
#include <QStyleOptionButton>

namespace Norvu {
namespace Gui {

namespace {

constexpr int NumberRows = 6;
constexpr int HourColumns = 4;
constexpr int MinuteColumns = 10;

QString twoDigits(int number)
{
    return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
}

QLabel *createColon()
{
    auto *label = new QLabel(QStringLiteral(":"));
    label->setForegroundRole(QPalette::HighlightedText);
    return label;
}

/** A flat button that shows, as a menu item does, that the mouse or the focus is on it. */
class NumberButton : public QPushButton
{
public:
    explicit NumberButton(int number) : QPushButton(twoDigits(number))
    {
        setFlat(true);
        setAttribute(Qt::WA_Hover);
        // The return key clicks as well.
        setAutoDefault(true);
        // Styles make a push button wide enough for a word.
        setFixedWidth(2 * fontMetrics().horizontalAdvance(text()));
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QStyleOptionButton option;
        initStyleOption(&option);
        QPainter painter(this);
        if (option.state & (QStyle::State_MouseOver | QStyle::State_HasFocus)) {
            painter.fillRect(rect(), option.palette.highlight());
            option.palette.setBrush(QPalette::ButtonText, option.palette.highlightedText());
        }
        style()->drawControl(QStyle::CE_PushButton, &option, &painter, this);
    }
};

QTime timeOrMidnight(const QDateTime &dateTime)
{
    return dateTime.time().isValid() ? dateTime.time() : QTime(0, 0);
}

} // namespace

CalendarWidget::CalendarWidget(const QDateTime &dateTime, QWidget *parent) : QWidget(parent)
{
    _calendar = new QCalendarWidget;
    connect(_calendar, SIGNAL(clicked(QDate)), this, SLOT(setDate(QDate)));
    // The day that was reached with the arrow keys, when the return key is pressed.
    connect(_calendar, SIGNAL(activated(QDate)), this, SLOT(setDate(QDate)));
    connect(_calendar, SIGNAL(currentPageChanged(int, int)), this,
            SLOT(onCurrentPageChanged(int, int)));

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(1, 1, 1, 1);
    layout->setSpacing(0);
    layout->addLayout(createTimeRow());
    layout->addWidget(_calendar, 1);
    setDateTime(dateTime);
}

QHBoxLayout *CalendarWidget::createTimeRow()
{
    auto *now = new QToolButton;
    now->setAutoRaise(true);
    now->setToolTip(tr("set current time"));
    now->setIcon(style()->standardIcon(QStyle::SP_ArrowRight));
    connect(now, SIGNAL(clicked()), this, SLOT(setCurrentDateTime()));

    auto *spacer = new QToolButton;
    spacer->setAutoRaise(true);
    spacer->setEnabled(false);
    spacer->setFixedWidth(now->sizeHint().width());

    auto *row = new QHBoxLayout;
    row->setSpacing(0);
    row->addWidget(now);
    row->addStretch();
    addTimeButton(row, _hourButton, createNumberMenu(HourColumns, SLOT(setHour(int))));
    row->addWidget(createColon());
    addTimeButton(row, _minuteButton, createNumberMenu(MinuteColumns, SLOT(setMin(int))));
    row->addWidget(createColon());
    addTimeButton(row, _secondButton, createNumberMenu(MinuteColumns, SLOT(setSec(int))));
    row->addStretch();
    row->addWidget(spacer);
    return row;
}

void CalendarWidget::addTimeButton(QHBoxLayout *row, QToolButton *&button, Menu *menu)
{
    button = new ToolButton;
    button->setAutoRaise(true);
    button->setPopupMode(QToolButton::InstantPopup);
    button->setMenu(menu);
    row->addWidget(button);
    connect(menu, &Menu::aboutToShow, button, [button, menu] {
        if (auto *present = menu->buttonGroup()->button(button->text().toInt()))
            present->setFocus();
    });
}

Menu *CalendarWidget::createNumberMenu(int columns, const char *slot)
{
    auto *menu = new Menu(this);
    auto *grid = new QGridLayout(menu);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(0);
    for (int number = 0; number < NumberRows * columns; ++number) {
        auto *button = new NumberButton(number);
        menu->buttonGroup()->addButton(button, number);
        grid->addWidget(button, number / columns, number % columns);
    }
    connect(menu->buttonGroup(), SIGNAL(buttonClicked(int)), menu, SLOT(close()));
    connect(menu->buttonGroup(), SIGNAL(buttonClicked(int)), this, slot);
    return menu;
}

void CalendarWidget::setDateTime(const QDateTime &dateTime)
{
    _dateTime = dateTime;
    {
        // Selecting a day of another month turns the page, which is no choice of the user.
        const QSignalBlocker blocker(_calendar);
        _calendar->setSelectedDate(_dateTime.date());
    }
    updateTimeButtons();
}

void CalendarWidget::onCurrentPageChanged(int year, int month)
{
    setDate(QDate(year, month, _calendar->selectedDate().day()));
}

void CalendarWidget::setDate(const QDate &date)
{
    _dateTime.setDate(date);
    emit dateTimeChanged(_dateTime);
}

void CalendarWidget::setCurrentDateTime()
{
    setDateTime(QDateTime::currentDateTime().toUTC());
}

void CalendarWidget::setHour(int hour)
{
    const QTime time = timeOrMidnight(_dateTime);
    setTime(QTime(hour, time.minute(), time.second()));
}

void CalendarWidget::setMin(int minute)
{
    const QTime time = timeOrMidnight(_dateTime);
    setTime(QTime(time.hour(), minute, time.second()));
}

void CalendarWidget::setSec(int second)
{
    const QTime time = timeOrMidnight(_dateTime);
    setTime(QTime(time.hour(), time.minute(), second));
}

void CalendarWidget::setTime(const QTime &time)
{
    if (!time.isValid())
        return;

    _dateTime.setTime(time);
    updateTimeButtons();
    emit dateTimeChanged(_dateTime);
}

void CalendarWidget::updateTimeButtons()
{
    const QTime time = timeOrMidnight(_dateTime);
    _hourButton->setText(twoDigits(time.hour()));
    _minuteButton->setText(twoDigits(time.minute()));
    _secondButton->setText(twoDigits(time.second()));
}

void CalendarWidget::paintEvent(QPaintEvent *event)
{
    QPainter(this).fillRect(event->rect(), palette().color(QPalette::Highlight));
}

} // namespace Gui
} // namespace Norvu
