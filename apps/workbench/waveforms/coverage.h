// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/timewindow.h>

#include <QHash>
#include <QVector>

namespace Norvu {
namespace Gui {
class Trace;
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

/** Where the rows of a view have data, to the second. */
class Coverage
{
public:
    /** Looks at all records of the view. */
    void collect(const Norvu::Gui::TraceView &view);
    void clear();
    /** Adds windows of records that have come into a row since, and forgets what the row no longer
     *  holds; summarize() follows. */
    void add(const Norvu::Gui::Trace *row, const QVector<Tellarix::Core::TimeWindow> &windows);
    /** Works out windows() and stretches() of all rows. */
    void summarize();

    /** False for rows that came later. */
    bool knows(const Norvu::Gui::Trace *row) const { return _rows.contains(row); }
    /** Whether any record of a row lies in a window. */
    bool hasData(const Norvu::Gui::Trace *row, const Tellarix::Core::TimeWindow &window) const;
    bool hasData(const Tellarix::Core::TimeWindow &window) const;

    /** Stretches that are worth looking at one by one, in time order. */
    const QVector<Tellarix::Core::TimeWindow> &stretches() const { return _stretches; }
    /** Where any row has data, in time order and disjoint. */
    const QVector<Tellarix::Core::TimeWindow> &windows() const { return _windows; }
    /** From the first to the last record; empty without any. */
    Tellarix::Core::TimeWindow extent() const;

private:
    QHash<const Norvu::Gui::Trace *, QVector<Tellarix::Core::TimeWindow>> _rows;
    QVector<Tellarix::Core::TimeWindow> _windows;
    QVector<Tellarix::Core::TimeWindow> _stretches;
};

} // namespace Workbench
