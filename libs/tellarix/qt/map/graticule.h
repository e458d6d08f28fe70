// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>

#include <QString>
#include <QVector>

namespace Tellarix {
namespace Gui {
namespace Map {

class Projection;

/** A meridian or parallel that a map shows. */
struct GraticuleLine
{
    int pixel; /**< column or row */
    QString label;
};

/** The least round step of a graticule in degrees at which meridians are @p spacing pixels or more
 *  apart: 45, 30, 15, 10, 5, 2, 1, 0.5, 0.2, 0.1, ... */
TELLARIX_GUI_API double graticuleStep(double pixelPerDegree, double spacing);

/** "30°E", "0°", "180°", "7.5°W", with as many decimals as @p step has; of any turn. */
TELLARIX_GUI_API QString longitudeLabel(double longitude, double step);
/** "10°S", "0°", "7.5°N". */
TELLARIX_GUI_API QString latitudeLabel(double latitude, double step);

/** Multiples of @p step within the view and the globe, from left to right. */
TELLARIX_GUI_API QVector<GraticuleLine> meridians(const Projection &projection, double step);
/** From the bottom to the top; the poles aren't among them. */
TELLARIX_GUI_API QVector<GraticuleLine> parallels(const Projection &projection, double step);

} // namespace Map
} // namespace Gui
} // namespace Tellarix
