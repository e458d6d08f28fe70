// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/map/annotatedsymbol.h>

#include <QColor>

namespace Norvu {
namespace Gui {
namespace Map {

/** The epicentre of an event: a circle whose size follows from the magnitude and whose colour
 *  follows from the depth by the scheme's depth gradient. It has no shadow. */
class NORVU_GUI_API OriginSymbol : public AnnotatedSymbol
{
public:
    OriginSymbol();
    /** @param depth      in km
     *  @param decorator  shared; see setDecorator() */
    OriginSymbol(double longitude, double latitude, double depth,
                 Tellarix::Gui::Map::Decorator *decorator = nullptr);

    /** Diameter for a magnitude in pixels; at least the scheme's smallest. */
    static int getSize(double magnitude);

    void setPreferredMagnitudeValue(double magnitude);
    double preferredMagnitudeValue() const { return _preferredMagnitudeValue; }
    /** In km. Takes the colour of the depth, and no other fill colour. */
    void setDepth(double depth);
    double depth() const { return _depth; }

    /** Of the outline, until the next depth; and of the inside without a colour of its own. */
    void setColor(const QColor &color) { _color = color; }
    const QColor &color() const { return _color; }
    /** Of the inside, until the next depth; an invalid one removes it. */
    void setFillColor(const QColor &color) { _fillColor = color; }
    const QColor &fillColor() const { return _fillColor; }
    /** Takes the colour of the depth again. */
    void setDefaultColor();
    /** Not filled, the inside is translucent, or, with the scheme's filled outlines, in the brush
     *  that the painter happens to have. */
    void setFilled(bool filled) { _filled = filled; }
    bool isFilled() const { return _filled; }

    /** Takes the size of the magnitude and the scheme. */
    void updateSize();
    /** Takes the colour of the depth and the scheme, and no other fill colour. */
    void depthColorCoding();

    /** Whether a pixel is in the square about the circle. */
    bool isInside(int x, int y) const override;
    void drawShadow(QPainter &painter) override;
    QPoint annotationOffset() const override;

protected:
    void customDraw(const Tellarix::Gui::Map::Canvas *canvas, QPainter &painter) override;

private:
    void init();
    void setBrush(QPainter &painter) const;

    QColor _color;
    QColor _fillColor;
    bool _filled{false};
    double _preferredMagnitudeValue{0};
    double _depth{0};
};

} // namespace Map
} // namespace Gui
} // namespace Norvu
