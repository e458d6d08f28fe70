// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>
#include <tellarix/qt/map/symbol.h>

#include <QColor>
#include <QImage>

namespace Tellarix {
namespace Gui {

/**
 * The epicentre of an event: a disc whose size follows from the magnitude and whose colour follows
 * from the depth by the scheme's depth gradient.
 */
class TELLARIX_GUI_API OriginSymbol : public Map::Symbol
{
public:
    /** @param depth  in km; without a finite one the disc is grey */
    OriginSymbol(double longitude, double latitude, double depth,
                 Map::Decorator *decorator = nullptr);

    bool isInside(int x, int y) const override;

    /** 0 if it is unknown. */
    double preferredMagnitudeValue() const { return _magnitude; }
    /** What is no finite number is unknown. */
    void setPreferredMagnitudeValue(double magnitude);
    double depth() const { return _depth; }
    void setDepth(double depth);

    /** From 0, where nothing is to be seen, to 1, as it is at first. */
    void setOpacity(double opacity);
    double opacity() const { return _opacity; }
    /** Nothing is left to be seen of it; never so while it is selected. */
    bool isFaded() const { return _opacity <= 0 && !_selected; }

    /** Selected symbols are opaque, with a ring in the highlight's colour. */
    void setSelected(bool selected) { _selected = selected; }
    bool isSelected() const { return _selected; }

    /** Diameter for a magnitude in pixels; at least the scheme's smallest. */
    static int diameterOf(double magnitude);

protected:
    void customDraw(const Map::Canvas *canvas, QPainter &painter) override;

private:
    void updateSize();

    double _depth;
    double _magnitude{0};
    double _opacity{1};
    QColor _color;
    QImage _disc; /**< shared with symbols that look the same */
    int _discDiameter{-1};
    bool _selected{false};
};

} // namespace Gui
} // namespace Tellarix
