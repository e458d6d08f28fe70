// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>
#include <tellarix/qt/map/worlddata.h>

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QVector>

#include <functional>

namespace Tellarix {
namespace Gui {
namespace Map {

class Projection;

/** A town that a map shows. */
struct CityLabel
{
    const WorldPlace *place; /**< of those that were given */
    QPointF dot;             /**< pixel */
    QRectF text;             /**< room of the name */
};

/**
 * Chooses the towns to show and places their names beside their dots: on the right, left, above or
 * below, the first that is free, within the canvas. More important towns choose first; those for
 * whose name there is no room are left out.
 *
 * @param places       most important first
 * @param highestRank  less important towns are left out
 * @param occupied     rooms that are taken already, in pixels
 * @param textSize     room that a town's name needs; called for towns in view only
 */
TELLARIX_GUI_API QVector<CityLabel>
layoutCities(const QVector<WorldPlace> &places, const Projection &projection, int highestRank,
             const QVector<QRectF> &occupied,
             const std::function<QSizeF(const WorldPlace &)> &textSize);

} // namespace Map
} // namespace Gui
} // namespace Tellarix
