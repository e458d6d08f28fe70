// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QList>
#include <QMap>
#include <QPair>

#include <string>

namespace Norvu {
namespace Gui {

class Trace;

/** Which row and slot the records of a stream belong to. */
class StreamBindings
{
public:
    /** Binds a stream id, in place of what it was bound to. */
    void bind(const std::string &id, Trace *row, int slot);
    /** False if it isn't bound. */
    bool unbind(const std::string &id);
    /** Unbinds all streams of a row. */
    void unbind(const Trace *row);
    void clear();

    /** Null for a stream that isn't bound, and @p slot, which may be null, is left alone. */
    Trace *find(const std::string &id, int *slot) const;
    /** Ids and slots in ascending order of the ids. */
    QList<QPair<std::string, int>> of(const Trace *row) const;

private:
    QMap<std::string, QPair<Trace *, int>> _bindings;
};

} // namespace Gui
} // namespace Norvu
