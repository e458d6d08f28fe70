// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QString>

namespace Tellarix {
namespace Tool {

/** The lines of a text that a terminal of that size shows without breaking or scrolling; if some
 *  are left out, the last line counts them. */
QString fittedText(const QString &text, int rows, int columns);

/** A text at the end of a terminal that is written anew in its place. */
class TerminalTable
{
public:
    /** True if standard output is a terminal. */
    static bool IsPossible();

    /** Shows @p text instead of the one before; false if that can't be written. */
    bool show(const QString &text);
    /** Wipes it away, so that something else may be written. */
    bool clear();

private:
    QString wiping() const;

    int _lines{0};
};

} // namespace Tool
} // namespace Tellarix
