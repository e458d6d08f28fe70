// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/recordwidget.h>

#include <tellarix/qt/records/recordmarker.h>
#include <tellarix/qt/records/recordwidget_p.h>
#include <tellarix/qt/scheme.h>

#include <QMouseEvent>
#include <QPointer>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace Tellarix {
namespace Gui {

namespace {

// Smaller movements between press and release are a click of an unsteady hand.
constexpr int ClickDistance = 3;
constexpr int StatusDigits = 6;

bool isClick(const QPoint &press, const QPoint &release)
{
    return (release - press).manhattanLength() < ClickDistance;
}

} // namespace

// Markers

bool RecordWidget::addMarker(RecordMarker *marker)
{
    if (marker == nullptr || marker->_parent != nullptr)
        return false;

    marker->_parent = this;
    _markers.emplace_back(marker);
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

bool RecordWidget::owns(const RecordMarker *marker) const
{
    return std::any_of(_markers.begin(), _markers.end(),
                       [marker](const auto &item) { return item.get() == marker; });
}

/** Gives a marker up without deleting it. */
void RecordWidget::detachMarker(RecordMarker *marker)
{
    const auto it = std::find_if(_markers.begin(), _markers.end(),
                                 [marker](const auto &item) { return item.get() == marker; });
    if (it == _markers.end())
        return;

    it->release();
    _markers.erase(it);
    marker->_parent = nullptr;
    if (_dragMarker == marker) {
        _dragMarker = nullptr;
        _drag = Drag::None;
    }
    updateCanvas();
    if (_currentMarker == marker)
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
    const std::vector<std::unique_ptr<RecordMarker>> markers = std::exchange(_markers, {});
    for (const auto &marker : markers)
        marker->_parent = nullptr;
    if (std::exchange(_dragMarker, nullptr) != nullptr)
        _drag = Drag::None;
    updateCanvas();
    setCurrentMarker(nullptr);
}

RecordMarker *RecordWidget::marker(int index) const
{
    return index >= 0 && index < markerCount() ? _markers[static_cast<size_t>(index)].get()
                                               : nullptr;
}

RecordMarker *RecordWidget::marker(const QString &text) const
{
    const auto it = std::find_if(_markers.begin(), _markers.end(),
                                 [&text](const auto &item) { return item->text() == text; });
    return it != _markers.end() ? it->get() : nullptr;
}

void RecordWidget::setCurrentMarker(RecordMarker *marker)
{
    if (marker == _currentMarker || (marker != nullptr && marker->_parent != this))
        return;

    _currentMarker = marker;
    updateCanvas();
    emit currentMarkerChanged(this, marker);
}

RecordMarker *RecordWidget::markerAt(const QPoint &position, int tolerance) const
{
    if (!canvasRect().contains(position))
        return nullptr;

    RecordMarker *nearest = nullptr;
    int distance = tolerance;
    for (const auto &marker : _markers) {
        const bool spansHeight = marker->isMovable() && marker->isModified();
        const bool inOtherHalf =
            (marker->alignment() == Qt::AlignTop && position.y() >= height() / 2) ||
            (marker->alignment() == Qt::AlignBottom && position.y() <= height() / 2);
        if (marker->isHidden() || (inOtherHalf && !spansHeight))
            continue;
        // At the same distance the one that is painted last is the one that is seen.
        const int own = std::abs(mapTime(marker->correctedTime()) - position.x());
        if (own <= distance) {
            distance = own;
            nearest = marker.get();
        }
    }
    return nearest;
}

void RecordWidget::updateMarker(const RecordMarker &)
{
    updateCanvas();
}

// Selection and cursor

void RecordWidget::setSelectionEnabled(bool enable)
{
    _selectionEnabled = enable;
    if (!enable)
        giveUpSelecting();
}

void RecordWidget::giveUpSelecting()
{
    if (_drag != Drag::Select)
        return;

    _drag = Drag::None;
    const Core::Time start = unmapTime(_dragStart.x());
    emit selectedTimeRangeChanged(start, start);
}

void RecordWidget::setSelectedTimeWindow(const Core::TimeWindow &window)
{
    if (window == _selection)
        return;

    _selection = window;
    updateCanvas();
}

void RecordWidget::setCursorShown(bool show)
{
    if (show == _cursorShown)
        return;

    _cursorShown = show;
    if (show)
        setMouseTracking(true);
    updateCursor();
}

void RecordWidget::setCursorTime(const Core::Time &time)
{
    if (time == _cursorTime)
        return;

    updateCursor();
    _cursorTime = time;
    updateCursor();
}

void RecordWidget::updateCursor()
{
    if (!_cursorTime.valid())
        return;
    // Columns of one picture must not show different amplitude ranges.
    update(std::exchange(_fedArea, QRegion()));
    const QRect canvas = canvasRect();
    update(QRect(mapTime(_cursorTime), canvas.top(), 1, canvas.height()) & canvas);
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

    const int slot = _drawMode == Single ? _currentSlot : slotAtY(position.y());
    const RecordSequence *sequence = displayedRecords(slot);
    if (sequence == nullptr || sequence->isEmpty())
        return text;
    const double value = unmapAmplitude(slot, position.y()) * shownFactor(slot);
    text += QStringLiteral("  ") + QString::number(value, 'g', StatusDigits);
    const QString unit = recordUnit(slot);
    return unit.isEmpty() ? text : text + QLatin1Char(' ') + unit;
}

// Mouse

int RecordWidget::clampedToCanvas(int x) const
{
    const QRect canvas = canvasRect();
    return std::max(canvas.left(), std::min(x, canvas.right()));
}

void RecordWidget::mousePressEvent(QMouseEvent *event)
{
    event->ignore();
    if (event->button() != Qt::LeftButton || !canvasRect().contains(event->pos()))
        return;

    _drag = Drag::Press;
    _dragStart = event->pos();
    const QPointer<RecordWidget> alive(this);
    const bool isGrabbed = grabMarker(event->pos());
    // Events that a widget leaves alone go on to its parent, which a deleted one can't name.
    event->setAccepted(!alive || isGrabbed || _selectionEnabled);
}

/** Makes the marker at a position the current one; true if the pointer can move it. */
bool RecordWidget::grabMarker(const QPoint &position)
{
    _dragMarker = nullptr;
    RecordMarker *marker = markerAt(position);
    if (marker == nullptr)
        return false;

    const QPointer<RecordWidget> alive(this);
    setCurrentMarker(marker);
    if (!alive || !owns(marker) || !marker->isMovable() || !marker->isEnabled())
        return false;
    _dragMarker = marker;
    _dragGrip = position.x() - mapTime(marker->correctedTime());
    return true;
}

void RecordWidget::mouseMoveEvent(QMouseEvent *event)
{
    const QPointer<RecordWidget> alive(this);
    hover(event->pos());
    event->setAccepted(!alive);
    if (!alive || !event->buttons().testFlag(Qt::LeftButton) || _drag == Drag::None)
        return;

    if (_drag == Drag::Press && !isClick(_dragStart, event->pos())) {
        if (_dragMarker != nullptr)
            _drag = Drag::Marker;
        else if (_selectionEnabled)
            _drag = Drag::Select;
    }
    if (_dragMarker == nullptr && !_selectionEnabled)
        return;
    event->accept();
    dragTo(event->pos());
}

void RecordWidget::dragTo(const QPoint &position)
{
    if (_drag == Drag::Marker) {
        _dragMarker->setCorrectedTime(unmapTime(clampedToCanvas(position.x() - _dragGrip)));
        emit markerMoving(this, _dragMarker);
    } else if (_drag == Drag::Select) {
        emit selectedTimeRangeChanged(unmapTime(_dragStart.x()),
                                      unmapTime(clampedToCanvas(position.x())));
    }
}

void RecordWidget::mouseReleaseEvent(QMouseEvent *event)
{
    event->ignore();
    if (event->button() != Qt::LeftButton || _drag == Drag::None)
        return;

    const Drag drag = _drag;
    RecordMarker *marker = _dragMarker;
    _drag = Drag::None;
    _dragMarker = nullptr;
    event->setAccepted(marker != nullptr || _selectionEnabled);
    const QPointer<RecordWidget> alive(this);
    if (drag == Drag::Marker) {
        emit markerMoved(this, marker);
    } else if (drag == Drag::Select) {
        const auto [start, end] =
            std::minmax({unmapTime(_dragStart.x()), unmapTime(clampedToCanvas(event->pos().x()))});
        emit selectedTimeRange(start, end);
    } else if (isClick(_dragStart, event->pos())) {
        emit timeClicked(unmapTime(_dragStart.x()));
    }
    if (!alive)
        event->accept();
}

void RecordWidget::leaveEvent(QEvent *event)
{
    QWidget::leaveEvent(event);
    if (!_cursorShown || !_cursorTime.valid())
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
    if (_cursorShown) {
        const Core::Time time = onCanvas ? unmapTime(position.x()) : Core::Time();
        if (time != _cursorTime) {
            const QPointer<RecordWidget> alive(this);
            setCursorTime(time);
            emit cursorMoved(this, time);
            if (!alive)
                return;
        }
    }

    const RecordMarker *marker = _markers.empty() ? nullptr : markerAt(position);
    const bool canMove =
        _dragMarker != nullptr || (marker != nullptr && marker->isMovable() && marker->isEnabled());
    if (canMove == _pointerShape)
        return;
    _pointerShape = canMove;
    if (canMove)
        setCursor(Qt::SizeHorCursor);
    else
        unsetCursor();
}

} // namespace Gui
} // namespace Tellarix
