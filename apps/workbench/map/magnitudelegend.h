// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/map/legend.h>

namespace Workbench {

/** The sizes of origins by magnitude. */
class MagnitudeLegend : public Tellarix::Gui::Map::Legend
{
    Q_OBJECT

public:
    explicit MagnitudeLegend(QObject *parent = nullptr);

    void draw(const QRect &rect, QPainter &painter) override;
};

} // namespace Workbench
