// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/timewindow.h>

#include <QObject>
#include <QVector>

namespace Workbench {

class Bench;
class Waveforms;
struct EventFacts;

/**
 * The window that shows an event: from a minute before its origin to five minutes after it, or to a
 * minute after its slowest S waves have come to @p farthestKm, if this is later.
 *
 * @param farthestKm  epicentral distance of the farthest station; 0 without any
 */
Tellarix::Core::TimeWindow eventWindow(const EventFacts &event, double farthestKm);

/**
 * @p window without what lies behind the last of @p stretches in it, but for the minute about
 * @p moment. Of a trigger's recording some minutes are all there is.
 */
Tellarix::Core::TimeWindow upToLastData(const Tellarix::Core::TimeWindow &window,
                                        const QVector<Tellarix::Core::TimeWindow> &stretches,
                                        const Tellarix::Core::Time &moment);

/**
 * Keeps waveforms and the bench's selection together.
 *
 * A chosen event gives rows their distances and, if there are data of it, the alignment and the
 * window that is shown; rows in the order of distances are put into that of the new ones, and
 * everything else stays as the user has set it. A
 * chosen window is shown, a chosen time is brought into sight if there are data, and rows of chosen
 * stations are selected. What the user does with rows and time scale is chosen in turn.
 */
class SelectionLink : public QObject
{
    Q_OBJECT

public:
    /** @param waveforms  owns the link */
    SelectionLink(Bench *bench, Waveforms *waveforms);

private slots:
    void updateDistances();
    void followEvent();
    void followTime();
    void followTimeWindow();
    void followStations();
    void chooseTimeWindow();
    void chooseStations();
    void forgetTimeWindow();

private:
    bool hasData(const Tellarix::Core::TimeWindow &window) const;
    void sortByDistance();
    void showEvent(const EventFacts &event);
    QStringList selectedStations() const;

    Bench *_bench;
    Waveforms *_waveforms;
    bool _isFollowing{false}; /**< what changes in the meantime is no choice of the user */
};

} // namespace Workbench
