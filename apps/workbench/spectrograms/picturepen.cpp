// SPDX-License-Identifier: LGPL-3.0-or-later

#include "picturepen.h"

#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/scheme.h>

#include <algorithm>
#include <utility>

using namespace Tellarix;

namespace Workbench {

namespace {

/** Of a line that covers few pixels, and of one that fills the row. */
constexpr double ThinAlpha = 0.75;
constexpr double DenseAlpha = 0.3;
/** Samples of a pixel from which on noise fills the row. */
constexpr double DenseSamples = 16;

} // namespace

QPen penAbovePicture(const QColor &quiet, double samplesPerPixel)
{
    const bool isDark = Gui::contrastRatio(Qt::white, quiet) > Gui::contrastRatio(Qt::black, quiet);
    QColor color(isDark ? Qt::white : Qt::black);
    const double density = std::clamp(samplesPerPixel / DenseSamples, 0.0, 1.0);
    color.setAlphaF(ThinAlpha + density * (DenseAlpha - ThinAlpha));
    QPen pen(color, Gui::Scheme::Current().records.lineWidth);
    pen.setCosmetic(true);
    return pen;
}

void PicturePen::set(const QPen &pen)
{
    if (_isSet && _row->recordPen(_slot) == pen)
        return;
    if (!_isSet) {
        const QPen before = _row->recordPen(_slot);
        _row->removeRecordPen(_slot);
        if (before != _row->recordPen(_slot))
            _own = before;
    }
    _isSet = true;
    _row->setRecordPen(_slot, pen);
}

void PicturePen::restore()
{
    if (!_isSet)
        return;
    _isSet = false;
    _row->removeRecordPen(_slot);
    if (const auto pen = std::exchange(_own, std::nullopt))
        _row->setRecordPen(_slot, *pen);
}

} // namespace Workbench
