// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/map/annotatedsymbol.h>

namespace Workbench {

/** A label above something round that another layer paints. */
class PlaceLabel : public Norvu::Gui::Map::AnnotatedSymbol
{
public:
    /** @param diameter  of what it stands above, in pixels */
    PlaceLabel(double longitude, double latitude, int diameter)
        : AnnotatedSymbol(longitude, latitude)
    {
        setSize(QSize(diameter, diameter));
    }

    bool isInside(int, int) const override { return false; }
    void drawShadow(QPainter &) override {}

protected:
    QPoint annotationOffset() const override { return {0, -size().height() / 2 - Gap}; }

private:
    static constexpr int Gap = 3;
};

} // namespace Workbench
