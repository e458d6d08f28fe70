// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "bench/eventfacts.h"
#include "sourcerequest.h"

#include <QWidget>

#include <optional>

class QButtonGroup;
class QLabel;
class QToolButton;

namespace Norvu {
namespace Gui {
class DateTimeEdit;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

/** Asks for a time: the last hours and then live, a window, or that around an event. */
class TimeChooser : public QWidget
{
    Q_OBJECT

public:
    explicit TimeChooser(QWidget *parent = nullptr);

    RequestTimes times() const;
    /** False if a window ends before it begins. */
    bool isValid() const;

    /** The window that is asked for until the user sets another one. */
    void suggestWindow(const Tellarix::Core::TimeWindow &window);
    /** Whether the source has something live; else the last hours end with the present. */
    void setLive(bool live);
    /** The event around which is asked, and how far away the stations are. */
    void setEvent(const std::optional<EventFacts> &event, std::optional<double> farthestKm);

    /** For sessions: the span, "window" or "event". */
    QString choice() const;
    void setChoice(const QString &choice);

signals:
    void changed();

protected:
    void changeEvent(QEvent *event) override;

private slots:
    void refresh();

private:
    QToolButton *addButton(const QString &choice, const QString &text, const QString &help);
    Norvu::Gui::DateTimeEdit *makeEdit();
    void updateColors();
    void show(const Tellarix::Core::TimeWindow &window);

    QButtonGroup *_buttons;
    QLabel *_then;
    QToolButton *_windowButton;
    QToolButton *_eventButton;
    QLabel *_eventText;
    Norvu::Gui::DateTimeEdit *_from;
    Norvu::Gui::DateTimeEdit *_to;
    std::optional<EventFacts> _event;
    std::optional<double> _farthestKm;
    Tellarix::Core::TimeWindow _window; /**< the user's own */
    bool _isUpdating{false};
};

} // namespace Workbench
