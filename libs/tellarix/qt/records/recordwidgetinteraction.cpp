// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/recordwidget.h>

#include <tellarix/core/records/recordsequence.h>
#include <tellarix/qt/records/pacedupdate_p.h>
#include <tellarix/qt/records/recordmarker.h>
#include <tellarix/qt/records/recordmarkers_p.h>
#include <tellarix/qt/records/recordrow_p.h>
#include <tellarix/qt/records/rowpointer_p.h>
#include <tellarix/qt/scheme.h>

#include <QMouseEvent>
#include <QPointer>

#include <algorithm>
#include <utility>

namespace Tellarix {
namespace Gui {

namespace {

constexpr int StatusDigits = 6;

int clampedTo(const QRect &canvas, int x)
{
    return std::max(canvas.left(), std::min(x, canvas.right()));
}

/** Times of a selection from where the button was pressed to a pixel of the canvas. */
std::pair<Core::Time, Core::Time> draggedTimes(const RecordWidget &widget, const QPoint &start,
                                               const QPoint &end)
{
    return {widget.unmapTime(start.x()), widget.unmapTime(clampedTo(widget.canvasRect(), end.x()))};
}

} // namespace

// Markers

bool RecordWidget::addMarker(RecordMarker *marker)
{
    if (marker == nullptr || marker->_parent != nullptr)
        return false;

    marker->_parent = this;
    _markers->add(marker);
    updateCanvas();
    return true;
}

bool RecordWidget::takeMarker(RecordMarker *marker)
{
    if (marker == nullptr || marker->_parent != this)
        return false;

    detachMarker(marker);
    return true;
}

/** Gives a marker up without deleting it. */
void RecordWidget::detachMarker(RecordMarker *marker)
{
    if (!_markers->release(marker))
        return;

    marker->_parent = nullptr;
    if (_pointer->drag.marker() == marker)
        _pointer->drag.end();
    updateCanvas();
    if (_pointer->currentMarker == marker)
        setCurrentMarker(nullptr);
}

bool RecordWidget::removeMarker(int index)
{
    RecordMarker *item = marker(index);
    if (item == nullptr)
        return false;

    detachMarker(item);
    delete item;
    return true;
}

void RecordWidget::clearMarkers()
{
    const RecordMarkers::Items markers = _markers->takeAll();
    for (const auto &marker : markers)
        marker->_parent = nullptr;
    if (_pointer->drag.marker() != nullptr)
        _pointer->drag.end();
    updateCanvas();
    setCurrentMarker(nullptr);
}

int RecordWidget::markerCount() const
{
    return _markers->size();
}

RecordMarker *RecordWidget::marker(int index) const
{
    return _markers->at(index);
}

RecordMarker *RecordWidget::marker(const QString &text) const
{
    return _markers->find(text);
}

RecordMarker *RecordWidget::currentMarker() const
{
    return _pointer->currentMarker;
}

void RecordWidget::setCurrentMarker(RecordMarker *marker)
{
    if (marker == _pointer->currentMarker || (marker != nullptr && marker->_parent != this))
        return;

    _pointer->currentMarker = marker;
    updateCanvas();
    emit currentMarkerChanged(this, marker);
}

RecordMarker *RecordWidget::markerAt(const QPoint &position, int tolerance) const
{
    if (!canvasRect().contains(position))
        return nullptr;
    return _markers->nearest(position, tolerance, height(),
                             [this](const Core::Time &time) { return mapTime(time); });
}

// Selection and cursor

bool RecordWidget::isSelectionEnabled() const
{
    return _pointer->canSelect;
}

void RecordWidget::setSelectionEnabled(bool enable)
{
    _pointer->canSelect = enable;
    if (!enable)
        giveUpSelecting();
}

void RecordWidget::giveUpSelecting()
{
    if (_pointer->drag.kind() != PointerDrag::Select)
        return;

    _pointer->drag.end();
    const Core::Time start = unmapTime(_pointer->drag.start().x());
    emit selectedTimeRangeChanged(start, start);
}

const Core::TimeWindow &RecordWidget::selectedTimeWindow() const
{
    return _pointer->selection;
}

void RecordWidget::setSelectedTimeWindow(const Core::TimeWindow &window)
{
    if (window == _pointer->selection)
        return;

    _pointer->selection = window;
    updateCanvas();
}

void RecordWidget::setCursorShown(bool show)
{
    if (show == _pointer->isCursorShown)
        return;

    _pointer->isCursorShown = show;
    if (show)
        setMouseTracking(true);
    updateCursor();
}

Core::Time RecordWidget::cursorTime() const
{
    return _pointer->cursorTime;
}

void RecordWidget::setCursorTime(const Core::Time &time)
{
    if (time == _pointer->cursorTime)
        return;

    updateCursor();
    _pointer->cursorTime = time;
    updateCursor();
}

void RecordWidget::updateCursor()
{
    if (!_pointer->cursorTime.valid())
        return;
    // Columns of one picture must not show different amplitude ranges.
    _fedUpdate->flush();
    const QRect canvas = canvasRect();
    update(QRect(mapTime(_pointer->cursorTime), canvas.top(), 1, canvas.height()) & canvas);
}

QString RecordWidget::statusText(const QPoint &position) const
{
    if (!canvasRect().contains(position))
        return {};

    const int decimals = Scheme::Current().precision.cursorTime;
    const QByteArray fraction =
        decimals > 0 ? ".%" + QByteArray::number(std::min(decimals, 6)) + "f" : QByteArray();
    const QByteArray format = "%Y-%m-%d %H:%M:%S" + fraction;
    QString text = QString::fromStdString(unmapTime(position.x()).toString(format.constData()));

    const int slot =
        drawMode() == Single ? currentRecords() : _row->items.slotAt(position.y(), canvasRect());
    const RecordSequence *sequence = displayedRecords(slot);
    if (sequence == nullptr || sequence->isEmpty())
        return text;
    const double value = unmapAmplitude(slot, position.y()) * shownFactor(slot);
    text += QStringLiteral("  ") + QString::number(value, 'g', StatusDigits);
    const QString unit = recordUnit(slot);
    return unit.isEmpty() ? text : text + QLatin1Char(' ') + unit;
}

// Mouse

void RecordWidget::mousePressEvent(QMouseEvent *event)
{
    event->ignore();
    if (event->button() != Qt::LeftButton || !canvasRect().contains(event->pos()))
        return;

    _pointer->drag.press(event->pos());
    const QPointer<RecordWidget> alive(this);
    const bool isGrabbed = grabMarker(event->pos());
    // Events that a widget leaves alone go on to its parent, which a deleted one can't name.
    event->setAccepted(!alive || isGrabbed || isSelectionEnabled());
}

/** Makes the marker at a position the current one; true if the pointer can move it. */
bool RecordWidget::grabMarker(const QPoint &position)
{
    RecordMarker *marker = markerAt(position);
    if (marker == nullptr)
        return false;

    const QPointer<RecordWidget> alive(this);
    setCurrentMarker(marker);
    if (!alive || !_markers->contains(marker) || !marker->isMovable() || !marker->isEnabled())
        return false;
    _pointer->drag.grab(marker, mapTime(marker->correctedTime()));
    return true;
}

void RecordWidget::mouseMoveEvent(QMouseEvent *event)
{
    const QPointer<RecordWidget> alive(this);
    hover(event->pos());
    event->setAccepted(!alive);
    if (!alive || !event->buttons().testFlag(Qt::LeftButton) ||
        _pointer->drag.kind() == PointerDrag::None)
        return;

    _pointer->drag.moveTo(event->pos(), isSelectionEnabled());
    if (_pointer->drag.marker() == nullptr && !isSelectionEnabled())
        return;
    event->accept();
    dragTo(event->pos());
}

void RecordWidget::dragTo(const QPoint &position)
{
    RecordMarker *marker = _pointer->drag.marker();
    if (_pointer->drag.kind() == PointerDrag::Marker) {
        const int x = clampedTo(canvasRect(), _pointer->drag.lineX(position.x()));
        marker->setCorrectedTime(unmapTime(x));
        emit markerMoving(this, marker);
    } else if (_pointer->drag.kind() == PointerDrag::Select) {
        const auto [start, end] = draggedTimes(*this, _pointer->drag.start(), position);
        emit selectedTimeRangeChanged(start, end);
    }
}

void RecordWidget::mouseReleaseEvent(QMouseEvent *event)
{
    event->ignore();
    if (event->button() != Qt::LeftButton || _pointer->drag.kind() == PointerDrag::None)
        return;

    const PointerDrag drag = _pointer->drag;
    _pointer->drag.end();
    event->setAccepted(drag.marker() != nullptr || isSelectionEnabled());
    const QPointer<RecordWidget> alive(this);
    if (drag.kind() == PointerDrag::Marker) {
        emit markerMoved(this, drag.marker());
    } else if (drag.kind() == PointerDrag::Select) {
        const auto [first, second] = draggedTimes(*this, drag.start(), event->pos());
        emit selectedTimeRange(std::min(first, second), std::max(first, second));
    } else if (drag.isClick(event->pos())) {
        emit timeClicked(unmapTime(drag.start().x()));
    }
    if (!alive)
        event->accept();
}

void RecordWidget::leaveEvent(QEvent *event)
{
    QWidget::leaveEvent(event);
    if (!_pointer->isCursorShown || !_pointer->cursorTime.valid())
        return;
    setCursorTime(Core::Time());
    emit cursorMoved(this, Core::Time());
}

void RecordWidget::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    // The release of the button goes elsewhere.
    giveUpSelecting();
}

void RecordWidget::hover(const QPoint &position)
{
    const bool onCanvas = canvasRect().contains(position);
    if (_pointer->isCursorShown) {
        const Core::Time time = onCanvas ? unmapTime(position.x()) : Core::Time();
        if (time != _pointer->cursorTime) {
            const QPointer<RecordWidget> alive(this);
            setCursorTime(time);
            emit cursorMoved(this, time);
            if (!alive)
                return;
        }
    }

    const RecordMarker *marker = _markers->isEmpty() ? nullptr : markerAt(position);
    const bool canMove = _pointer->drag.marker() != nullptr ||
                         (marker != nullptr && marker->isMovable() && marker->isEnabled());
    if (canMove == _pointer->hasMoveShape)
        return;
    _pointer->hasMoveShape = canMove;
    if (canMove)
        setCursor(Qt::SizeHorCursor);
    else
        unsetCursor();
}

} // namespace Gui
} // namespace Tellarix
