// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/map/annotations.h>
#include <norvu/gui/map/symbol.h>

#include <QPoint>
#include <QString>

namespace Norvu {
namespace Gui {
namespace Map {

/** A symbol with a label, which it places while it is painted; an AnnotationLayer above paints the
 *  label. */
class NORVU_GUI_API AnnotatedSymbol : public Symbol
{
public:
    AnnotatedSymbol();
    AnnotatedSymbol(double longitude, double latitude);
    /** Takes its label along. */
    ~AnnotatedSymbol() override;
    Q_DISABLE_COPY(AnnotatedSymbol)

    /**
     * Sets the label; an empty text removes it.
     * @param annotations  gets the label if there is none yet, and is ignored otherwise; with null
     *                     no label is made
     */
    void setAnnotation(const QString &text, Annotations *annotations);
    QString annotation() const;
    /** False if nothing changes, or without a label. */
    bool setAnnotationHighlight(bool highlighted);
    bool isAnnotationHighlighted() const;

    void calculateMapPosition(const Tellarix::Gui::Map::Canvas *canvas) override;
    void layerVisibilityChanged(bool visible) override;

    /** From position() to the bottom centre of the label. */
    virtual QPoint annotationOffset() const;

protected:
    /** Places the label; subclasses call it first. */
    void customDraw(const Tellarix::Gui::Map::Canvas *canvas, QPainter &painter) override;

private:
    AnnotationItem *_annotation{nullptr};
};

} // namespace Map
} // namespace Gui
} // namespace Norvu
