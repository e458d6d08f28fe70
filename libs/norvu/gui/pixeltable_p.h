// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

namespace Norvu {
namespace Gui {

/** Pixels for values: entry trunc((value - minKey) * scale), limited to the table. */
struct PixelTable
{
    double minKey;
    double scale;
    int size;
    const unsigned int *pixels;
};

} // namespace Gui
} // namespace Norvu
