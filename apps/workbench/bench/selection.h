// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "eventfacts.h"
#include "region.h"

#include <tellarix/core/timewindow.h>

#include <QObject>
#include <QStringList>

namespace Workbench {

/**
 * What the user looks at, in all panels.
 *
 * Panels set what was chosen in them, and follow what was chosen elsewhere. A signal tells that
 * something is different from before; what it is now is asked for, since a panel may have set it
 * anew while others were still being told. Setting what is set already emits nothing, so panels may
 * set what they were told without running in circles.
 */
class Selection : public QObject
{
    Q_OBJECT

public:
    explicit Selection(QObject *parent = nullptr);

    /** The chosen event, if there is one. */
    const std::optional<EventFacts> &chosenEvent() const { return _event; }
    /** Public id of the event under the mouse, in whichever panel; empty without one. */
    const QString &hoveredEvent() const { return _hoveredEvent; }
    /** The moment under consideration, such as that of a replay; not valid without one. */
    const Tellarix::Core::Time &time() const { return _time; }
    /** What is shown along time axes; not valid while there is nothing. */
    const Tellarix::Core::TimeWindow &timeWindow() const { return _timeWindow; }
    /** Chosen stations as "NET.STA", in ascending order and each of them once. */
    const QStringList &stations() const { return _stations; }
    /** Where events are looked for; unset for everywhere. */
    const std::optional<Region> &region() const { return _region; }

public slots:
    /** What was picked on purpose, to be looked at: also what is chosen already is told again. */
    void showEvent(const Workbench::EventFacts &event);
    void setEvent(const Workbench::EventFacts &event);
    void clearEvent();
    void setHoveredEvent(const QString &publicID);
    void setTime(const Tellarix::Core::Time &time);
    /** An empty window counts as none. */
    void setTimeWindow(const Tellarix::Core::TimeWindow &window);
    /** In any order. */
    void setStations(QStringList stations);
    void setRegion(const std::optional<Workbench::Region> &region);
    /** Chooses nothing. */
    void clear();

signals:
    void eventChanged();
    /** The chosen event is to be brought into view, also if it was before and has been left since;
     *  behind eventChanged(). */
    void eventShown();
    void hoveredEventChanged();
    void timeChanged();
    void timeWindowChanged();
    void stationsChanged();
    void regionChanged();

private:
    std::optional<EventFacts> _event;
    QString _hoveredEvent;
    Tellarix::Core::Time _time;
    Tellarix::Core::TimeWindow _timeWindow;
    QStringList _stations;
    std::optional<Region> _region;
};

} // namespace Workbench
