// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/records/recordpolyline.h>

namespace Tellarix {
namespace Gui {

/** What a record widget knows and caches of one slot, once for raw and once for filtered data. */
struct TraceInfo
{
    bool dirty{true};  /**< the rest must be worked out again before it is drawn */
    double amplMin{0}; /**< extrema of the samples that count for the range */
    double amplMax{0};
    double offset{0}; /**< mean of these samples, about which amplitudes are magnified */
    double absMax{0}; /**< larger distance of the extrema from the offset */
    double yMin{0};   /**< amplitude range that is shown, offset subtracted */
    double yMax{0};
    double fyMin{0}; /**< the same with the amplitude scale applied */
    double fyMax{0};
    double yOffset{0}; /**< what is subtracted of each sample */
    int pos{0};        /**< position and extent in pixels, for views that lay out rows */
    int height{0};
    RecordPolylinePtr poly;
};

} // namespace Gui
} // namespace Tellarix
