// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/map/legend.h>

#include <QColor>

namespace Workbench {

/** How late the data of a station are. */
enum class DelayGrade
{
    Never, /**< nothing has come in live */
    Fresh,
    Late,
    Stale
};

/** Its colour, readable on land and water. */
QColor colorOf(DelayGrade grade);

/** The colours of stations by the delay of their data. */
class DelayLegend : public Tellarix::Gui::Map::Legend
{
    Q_OBJECT

public:
    explicit DelayLegend(QObject *parent = nullptr);

    void draw(const QRect &rect, QPainter &painter) override;
};

} // namespace Workbench
