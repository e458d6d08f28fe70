// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/ruler.h>

#include <QMouseEvent>
#include <QPointer>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace Tellarix {
namespace Gui {

namespace {

constexpr double ZoomPerNotch = 1.25;
constexpr double WheelUnitsPerNotch = 120; // eighths of a degree, 15 degrees
constexpr double PanPixelsPerNotch = 60;
constexpr double HandleReach = 5;
constexpr double ClickReach = 2;

} // namespace

double Ruler::pixelAlong(const QPointF &position) const
{
    return isVertical() ? position.y() : position.x();
}

double Ruler::boundedValueAt(double pixel) const
{
    return qBound(std::min(_lower, _upper), pixelToValue(pixel), std::max(_lower, _upper));
}

Ruler::Handle Ruler::handleAt(double pixel) const
{
    if (!_selectionHandles || !hasSelection())
        return Handle::None;

    const double toLower = std::abs(pixel - valueToPixel(_selectionLower));
    const double toUpper = std::abs(pixel - valueToPixel(_selectionUpper));
    if (std::min(toLower, toUpper) > HandleReach)
        return Handle::None;
    return toLower < toUpper ? Handle::Lower : Handle::Upper;
}

void Ruler::wheelEvent(QWheelEvent *event)
{
    const QPoint turn = event->angleDelta();
    if (!_interactive || rulerLength() <= 0 || turn.isNull()) {
        event->ignore();
        return;
    }
    event->accept();
    if (_drag != Drag::None)
        return;

    if (std::abs(turn.x()) > std::abs(turn.y())) {
        panBy(event->pixelDelta().x() != 0 ? event->pixelDelta().x()
                                           : turn.x() / WheelUnitsPerNotch * PanPixelsPerNotch);
        return;
    }

    // The limits act on the factor, so that they leave the value under the pointer in its place.
    const double width = _upper - _lower;
    const double wanted = width * std::pow(ZoomPerNotch, -turn.y() / WheelUnitsPerNotch);
    const double factor = limitedWidth(wanted) / width;
    const double value = pixelToValue(pixelAlong(event->position()));
    if (factor != 1)
        requestRange(value - (value - _lower) * factor, value + (_upper - value) * factor);
}

void Ruler::mousePressEvent(QMouseEvent *event)
{
    const double pixel = pixelAlong(event->localPos());
    const bool isLeft = event->button() == Qt::LeftButton;
    const bool isSelecting =
        event->button() == Qt::MiddleButton || (isLeft && (event->modifiers() & Qt::ShiftModifier));
    const Handle handle = isLeft ? handleAt(pixel) : Handle::None;

    if (_drag != Drag::None)
        event->accept();
    else if (handle != Handle::None)
        beginDrag(Drag::MoveHandle, pixel,
                  handle == Handle::Lower ? _selectionUpper : _selectionLower);
    else if (_rangeSelection && isSelecting)
        beginDrag(Drag::Select, pixel, boundedValueAt(pixel));
    else if (_interactive && isLeft && !isSelecting)
        beginDrag(Drag::Pan, pixel, 0);
    else
        event->ignore();
}

void Ruler::mouseMoveEvent(QMouseEvent *event)
{
    const double pixel = pixelAlong(event->localPos());
    switch (_drag) {
    case Drag::None:
        setHovered(handleAt(pixel));
        event->ignore();
        break;
    case Drag::Pan:
        panTo(pixel);
        break;
    case Drag::Select:
    case Drag::MoveHandle:
        selectTo(pixel);
        break;
    }
}

void Ruler::mouseReleaseEvent(QMouseEvent *event)
{
    if (_drag == Drag::None) {
        event->ignore();
        return;
    }
    if (event->buttons() & (Qt::LeftButton | Qt::MiddleButton))
        return;

    const double pixel = pixelAlong(event->localPos());
    const QPointer<Ruler> alive(this);
    if (_drag != Drag::Pan)
        finishSelection(pixel);
    if (!alive)
        return;
    _drag = Drag::None;
    setHovered(handleAt(pixel));
    updateCursor();
}

void Ruler::leaveEvent(QEvent *event)
{
    QWidget::leaveEvent(event);
    if (_drag == Drag::None)
        setHovered(Handle::None);
}

void Ruler::beginDrag(Drag drag, double pixel, double anchorValue)
{
    _drag = drag;
    _dragPixel = pixel;
    _dragAnchor = anchorValue;
    _dragLower = _lower;
    _dragUpper = _upper;
    updateCursor();
}

/** Asks for the range at the press, moved by the whole way since, so that nothing adds up. */
void Ruler::panTo(double pixel)
{
    const double unitsPerPixel = (_dragUpper - _dragLower) / std::max(1, rulerLength());
    const double way = (isVertical() ? pixel - _dragPixel : _dragPixel - pixel) * unitsPerPixel;
    requestRange(_dragLower + way, _dragUpper + way);
}

void Ruler::panBy(double pixels)
{
    const double way = direction() * (isVertical() ? pixels : -pixels) / _scale;
    requestRange(_lower + way, _upper + way);
}

void Ruler::selectTo(double pixel)
{
    const double value = boundedValueAt(pixel);
    setSelection(std::min(value, _dragAnchor), std::max(value, _dragAnchor));
    emit selectionChanging(std::min(value, _dragAnchor), std::max(value, _dragAnchor));
}

void Ruler::finishSelection(double pixel)
{
    const bool isClick = std::abs(pixel - _dragPixel) < ClickReach;
    if (isClick && _drag == Drag::Select)
        setSelection(_dragAnchor, _dragAnchor);
    emit selectionChanged(hasSelection() ? _selectionLower : _dragAnchor,
                          hasSelection() ? _selectionUpper : _dragAnchor);
}

void Ruler::setHovered(Handle handle)
{
    if (handle == _hovered)
        return;
    _hovered = handle;
    updateCursor();
    update();
}

void Ruler::updateCursor()
{
    const Qt::CursorShape along = isVertical() ? Qt::SplitVCursor : Qt::SplitHCursor;
    if (_drag == Drag::Pan)
        setCursor(Qt::ClosedHandCursor);
    else if (_drag != Drag::None || _hovered != Handle::None)
        setCursor(along);
    else if (_interactive)
        setCursor(Qt::OpenHandCursor);
    else
        unsetCursor();
}

void Ruler::requestRange(double lower, double upper)
{
    if (std::isfinite(lower) && std::isfinite(upper) && (upper - lower) * direction() > 0)
        emit rangeChangeRequested(lower, upper);
}

} // namespace Gui
} // namespace Tellarix
