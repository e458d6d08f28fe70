// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QSet>

class QObject;

namespace Norvu {
namespace Gui {

/** Counts the rows that are filtered in the background, from the first to the last of them. */
class FilteringCount
{
public:
    void add(const QObject *traces)
    {
        _running.insert(traces);
        ++_total;
    }
    /** False if it wasn't being filtered. */
    bool remove(const QObject *traces) { return _running.remove(traces); }
    /** Counts anew from what is running still. @return how many there were */
    int restart()
    {
        const int previous = _total;
        _total = _running.size();
        return previous;
    }

    bool isIdle() const { return _running.isEmpty(); }
    int total() const { return _total; }
    int done() const { return _total - _running.size(); }

private:
    QSet<const QObject *> _running;
    int _total{0};
};

} // namespace Gui
} // namespace Norvu
