// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/map/legend.h>

namespace Workbench {

/** The colours of origins by depth: a bar from the surface down, with the depth of each colour. */
class DepthLegend : public Tellarix::Gui::Map::Legend
{
    Q_OBJECT

public:
    explicit DepthLegend(QObject *parent = nullptr);

    void draw(const QRect &rect, QPainter &painter) override;
};

} // namespace Workbench
