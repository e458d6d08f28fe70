// SPDX-License-Identifier: LGPL-3.0-or-later

#include "timechooser.h"

#include <norvu/gui/datetimeedit.h>

#include <QButtonGroup>
#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QScopedValueRollback>
#include <QSignalBlocker>
#include <QToolButton>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr auto ChoiceProperty = "choice";
constexpr auto WindowChoice = "window";
constexpr auto EventChoice = "event";
constexpr auto FirstChoice = "-1h";

Core::Time timeOf(const QDateTime &time)
{
    return Core::Time::FromUSecs(time.toMSecsSinceEpoch() * 1000);
}

QString eventText(const EventFacts &event)
{
    const QString text = QString::fromStdString(event.originTime.toString("%Y-%m-%d %H:%M:%S"));
    return event.magnitude ? QString("M %1, %2").arg(*event.magnitude, 0, 'f', 1).arg(text) : text;
}

/** What is on stands out, in dark colours too. */
void setOnColors(QAbstractButton &button, const QPalette &usual)
{
    QPalette palette = usual;
    if (button.isChecked()) {
        palette.setColor(QPalette::Button, usual.color(QPalette::Highlight));
        palette.setColor(QPalette::ButtonText, usual.color(QPalette::HighlightedText));
    }
    button.setPalette(palette);
}

} // namespace

TimeChooser::TimeChooser(QWidget *parent)
    : QWidget(parent), _buttons(new QButtonGroup(this)), _then(new QLabel(this)),
      _eventText(new QLabel(this)), _from(makeEdit()), _to(makeEdit())
{
    auto *choices = new QHBoxLayout;
    choices->setSpacing(2);
    choices->addWidget(addButton("-10min", tr("10 min"), tr("The last ten minutes")));
    choices->addWidget(addButton("-1h", tr("1 hour"), tr("The last hour")));
    choices->addWidget(addButton("-6h", tr("6 hours"), tr("The last six hours")));
    choices->addWidget(addButton("-1d", tr("1 day"), tr("The last day")));
    choices->addSpacing(6);
    choices->addWidget(_then);
    choices->addStretch();
    choices->addSpacing(6);
    _windowButton = addButton(WindowChoice, tr("Window"), tr("From a time to another one"));
    _eventButton = addButton(EventChoice, tr("Around the event"),
                             tr("From a minute before the chosen event until its waves have come "
                                "to the farthest station, at most half an hour"));
    choices->addWidget(_windowButton);
    choices->addWidget(_eventButton);

    auto *window = new QHBoxLayout;
    window->addWidget(_eventText, 1);
    window->addWidget(new QLabel(tr("UTC"), this));
    window->addWidget(_from);
    window->addWidget(new QLabel(tr("to"), this));
    window->addWidget(_to);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(choices);
    layout->addLayout(window);
    _eventText->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

    setLive(true);
    const Core::Time now = Core::Time::FromUSecs(Core::Time::GMT().seconds() * 1000000);
    _window = {now - Core::TimeSpan(3600), now};
    connect(_buttons, SIGNAL(buttonToggled(QAbstractButton *, bool)), this, SLOT(refresh()));
    setChoice(FirstChoice);
    refresh();
}

QToolButton *TimeChooser::addButton(const QString &choice, const QString &text, const QString &help)
{
    auto *button = new QToolButton(this);
    button->setText(text);
    button->setToolTip(help);
    button->setCheckable(true);
    button->setProperty(ChoiceProperty, choice);
    button->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Preferred);
    _buttons->addButton(button);
    return button;
}

Norvu::Gui::DateTimeEdit *TimeChooser::makeEdit()
{
    auto *edit = new Norvu::Gui::DateTimeEdit(this);
    edit->setDisplayFormat("yyyy-MM-dd HH:mm:ss");
    connect(edit, SIGNAL(dateTimeChanged(QDateTime)), this, SLOT(refresh()));
    return edit;
}

QString TimeChooser::choice() const
{
    return _buttons->checkedButton()
               ? _buttons->checkedButton()->property(ChoiceProperty).toString()
               : QString();
}

void TimeChooser::setChoice(const QString &choice)
{
    for (QAbstractButton *button : _buttons->buttons()) {
        if (button->property(ChoiceProperty) == choice && button->isEnabled())
            button->setChecked(true);
    }
}

void TimeChooser::suggestWindow(const Core::TimeWindow &window)
{
    if (choice() == WindowChoice || window.isEmpty())
        return;
    _window = window;
    refresh();
}

void TimeChooser::setLive(bool live)
{
    _then->setText(live ? tr("and then live") : tr("up to now: there is no live service"));
}

void TimeChooser::setEvent(const std::optional<EventFacts> &event, std::optional<double> farthestKm)
{
    const auto timed = event && event->originTime.valid() ? event : std::nullopt;
    if (timed == _event && farthestKm == _farthestKm)
        return;
    _event = timed;
    _farthestKm = farthestKm;
    if (!_event && choice() == EventChoice)
        setChoice(FirstChoice);
    refresh();
}

RequestTimes TimeChooser::times() const
{
    RequestTimes times;
    if (choice() == EventChoice && _event)
        times.window = windowAround(*_event, _farthestKm);
    else if (choice() == WindowChoice)
        times.window = _window;
    else
        times.span = choice();
    return times;
}

bool TimeChooser::isValid() const
{
    return choice() != WindowChoice || _window.startTime() < _window.endTime();
}

void TimeChooser::show(const Core::TimeWindow &window)
{
    const auto show = [](QDateTimeEdit *edit, Core::Time time) {
        edit->setDateTime(QDateTime::fromMSecsSinceEpoch(time.usecs() / 1000, Qt::UTC));
    };
    show(_from, window.startTime());
    show(_to, window.endTime());
}

void TimeChooser::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        updateColors();
}

void TimeChooser::updateColors()
{
    for (QAbstractButton *button : _buttons->buttons())
        setOnColors(*button, palette());
}

void TimeChooser::refresh()
{
    if (_isUpdating)
        return;
    const QScopedValueRollback<bool> updating(_isUpdating, true);
    const bool isWindow = choice() == WindowChoice;
    if (sender() == _from || sender() == _to)
        _window = {timeOf(_from->dateTime()), timeOf(_to->dateTime())};
    else
        show(times().span.isEmpty() ? times().window : _window);
    _from->setEnabled(isWindow);
    _to->setEnabled(isWindow);
    _eventButton->setEnabled(_event.has_value());
    _eventText->setText(_event ? eventText(*_event) : tr("No event is chosen"));
    _eventText->setToolTip(_event ? eventText(*_event) + '\n' + _event->region : QString());
    updateColors();
    emit changed();
}

} // namespace Workbench
