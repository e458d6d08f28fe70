// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/map/annotatedsymbol.h>
#include <norvu/gui/map/imageshadow.h>

#include <QPixmap>
#include <QPoint>

class QIcon;
class QImage;

namespace Norvu {
namespace Gui {
namespace Map {

/**
 * A picture that stands on its place like a pin, with a soft shadow on the ground to its right.
 *
 * The shadow is made when it is first painted. Many symbols of one picture should share it: make
 * the others from the first one, or use copyShadow().
 */
class NORVU_GUI_API ImageSymbol : public AnnotatedSymbol
{
public:
    /** Without a picture; nothing is painted. */
    ImageSymbol(double longitude, double latitude);
    ImageSymbol(const QImage &image, double longitude, double latitude);
    ImageSymbol(const QPixmap &image, double longitude, double latitude);
    ImageSymbol(const QIcon &icon, const QSize &size, double longitude, double latitude);
    /** Shares picture and shadow with another symbol, but not its label. */
    ImageSymbol(const ImageSymbol &other, double longitude, double latitude);

    const QPixmap &image() const { return _image; }
    /** Another picture, whose shadow is to be made. */
    void setImage(const QPixmap &image);

    /** A shadow of the caller's. @param offset  its pixel that lies at the place of the symbol */
    void setShadow(const QPixmap &shadow, const QPoint &offset);
    void setShadow(const QImage &shadow, const QPoint &offset);
    void copyShadow(const ImageSymbol &other);
    /** Makes the shadow of the picture, in about the time of painting some hundred symbols. */
    void generateShadow();

    /**
     * The shadow of a picture: flattened to 70 % of its width and half of its height, slanted to
     * the right, dark grey with 63 % of the picture's alpha, blurred and trimmed.
     * @param shadow  null without a picture
     * @param offset  pixel of the shadow at the picture's foot, the middle of its bottom edge
     */
    static void generateShadow(QImage &shadow, QPoint &offset, const QImage &image);
    /** The same on pixmaps; for the GUI thread. */
    static void generateShadow(QPixmap &shadow, QPoint &offset, const QPixmap &image);

    /** Whether a pixel is in the box of the picture's size whose top left corner is the place:
     * right of and below it, not where the picture is painted. */
    bool isInside(int x, int y) const override;
    void drawShadow(QPainter &painter) override;
    /** 4 pixels above the picture. */
    QPoint annotationOffset() const override;

protected:
    void customDraw(const Tellarix::Gui::Map::Canvas *canvas, QPainter &painter) override;

private:
    QPixmap _image;
    QPixmap _shadow;
    QPoint _shadowOffset;
};

} // namespace Map
} // namespace Gui
} // namespace Norvu
