// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/map/annotatedsymbol.h>

namespace Norvu {
namespace Gui {
namespace Map {

AnnotatedSymbol::AnnotatedSymbol() = default;

AnnotatedSymbol::AnnotatedSymbol(double longitude, double latitude) : Symbol(longitude, latitude)
{}

AnnotatedSymbol::~AnnotatedSymbol()
{
    delete _annotation;
}

void AnnotatedSymbol::setAnnotation(const QString &text, Annotations *annotations)
{
    if (text.isEmpty()) {
        // The item lets go of the pointer itself.
        delete _annotation;
    } else if (_annotation) {
        _annotation->text = text;
    } else if (annotations) {
        _annotation = annotations->add(text);
        _annotation->holder = &_annotation;
    }
}

QString AnnotatedSymbol::annotation() const
{
    return _annotation ? _annotation->text : QString();
}

bool AnnotatedSymbol::setAnnotationHighlight(bool highlighted)
{
    if (!_annotation || _annotation->highlighted == highlighted)
        return false;

    _annotation->highlighted = highlighted;
    return true;
}

bool AnnotatedSymbol::isAnnotationHighlighted() const
{
    return _annotation && _annotation->highlighted;
}

void AnnotatedSymbol::calculateMapPosition(const Tellarix::Gui::Map::Canvas *canvas)
{
    Symbol::calculateMapPosition(canvas);
    if (_annotation)
        _annotation->visible = isVisible() && !isClipped();
}

void AnnotatedSymbol::layerVisibilityChanged(bool visible)
{
    if (_annotation)
        _annotation->visible = visible && isVisible() && !isClipped();
}

QPoint AnnotatedSymbol::annotationOffset() const
{
    return QPoint(0, 0);
}

void AnnotatedSymbol::customDraw(const Tellarix::Gui::Map::Canvas *, QPainter &painter)
{
    if (!_annotation || !_annotation->visible)
        return;

    const AnnotationStyle *style = _annotation->style;
    _annotation->rect =
        style ? style->itemRect(painter, *_annotation, position() + annotationOffset()) : QRect();
}

} // namespace Map
} // namespace Gui
} // namespace Norvu
