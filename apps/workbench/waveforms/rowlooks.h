// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QHash>
#include <QObject>
#include <QString>

namespace Norvu {
namespace Gui {
class Trace;
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class RowMargins;
class RowNames;

/** The way from an event to a station. */
struct EventPath
{
    double distanceKm{0};
    double azimuth{0}; /**< at the event, in degrees */

    bool operator==(const EventPath &other) const
    {
        return distanceKm == other.distanceKm && azimuth == other.azimuth;
    }
};

/** What is written on rows, and how much room they take. */
class RowLooks : public QObject
{
    Q_OBJECT

public:
    /** @param view  owns it */
    RowLooks(Norvu::Gui::TraceView *view, RowMargins *margins);

    /** Rows without a header line, their names beside the traces; as long as the user hasn't
     *  chosen, once there are many rows. */
    bool isCompact() const { return _compact; }
    bool isCompactChosen() const { return _isCompactChosen; }
    RowNames *names() const { return _names; }
    /** Makes rows compact if there are many, unless the user has chosen. */
    void followCount();

    /** Distances and azimuths by "NET.STA", shown beside the names; distances are sorted by. */
    void setPaths(const QHash<QString, EventPath> &paths);
    const QHash<QString, EventPath> &paths() const { return _paths; }

public slots:
    void setCompact(bool compact);
    /** Room that the overview needs at the left, beside that of the axes of rows; negative without
     *  it. */
    void setOverviewRoom(int pixels);
    /** Writes on a row what is known of it now. */
    void dress(Norvu::Gui::Trace *row);

signals:
    void compactChanged(bool compact);
    /** Rows have other distances. */
    void pathsChanged();

private:
    void applyCompact(bool compact);
    void dressAll();
    QString noteDistance(Norvu::Gui::Trace *row) const;

    Norvu::Gui::TraceView *_view;
    RowMargins *_margins;
    RowNames *_names;
    QHash<QString, EventPath> _paths;
    bool _compact{false};
    bool _isCompactChosen{false}; /**< by the user */
};

} // namespace Workbench
