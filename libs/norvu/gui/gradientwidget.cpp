// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/gradientwidget.h>

#include <QContextMenuEvent>
#include <QCursor>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace Norvu {
namespace Gui {

namespace {

constexpr int SmallestBar = 4;
constexpr int SmallestBarHint = 16;
constexpr int CellSize = 8;
constexpr double HandleScale = 0.75;
constexpr int DarkBelow = 128;

} // namespace

GradientWidget::GradientWidget(Tellarix::Gui::Gradient *gradient, QWidget *parent,
                               Qt::WindowFlags f)
    : QWidget(parent, f), _gradient(gradient)
{
    setAttribute(Qt::WA_MouseTracking);
    setFocusPolicy(Qt::StrongFocus);
    _handleSize = static_cast<int>(fontMetrics().ascent() * HandleScale);
    setMinimumHeight(_handleSize + SmallestBarHint);
}

void GradientWidget::setInterpolation(bool on)
{
    _discrete = !on;
    update();
}

void GradientWidget::setUnit(const QString &unit)
{
    _unit = unit;
    update();
}

void GradientWidget::keyChanged(double, double newKey)
{
    clearHoverHandle();
    _currentHandle = mapKeyToIndex(newKey);
}

// Geometry

int GradientWidget::barHeight() const
{
    return std::max(SmallestBar, height() - _handleSize);
}

double GradientWidget::keySpan() const
{
    if (_gradient->isEmpty())
        return 0;

    const double span = _gradient->lastKey() - _gradient->firstKey();
    if (!_discrete || _gradient->size() < 2)
        return span;
    // The last step gets room of its own.
    return span + std::next(_gradient->constBegin()).key() - _gradient->firstKey();
}

int GradientWidget::mapKeyToPos(double key) const
{
    const double span = keySpan();
    if (!(span > 0))
        return 0;
    // Keys at the ends of what a double holds give no number or an infinite one.
    const double x = (key - _gradient->firstKey()) * rightEdge() / span;
    return static_cast<int>(std::min<double>(std::max(0.0, x), rightEdge()));
}

int GradientWidget::mapKeyToIndex(double key) const
{
    const auto stop = _gradient->constFind(key);
    if (stop == _gradient->constEnd())
        return -1;
    return static_cast<int>(std::distance(_gradient->constBegin(), stop));
}

Tellarix::Gui::Gradient::iterator GradientWidget::mapIndexToIterator(int index)
{
    return std::next(_gradient->begin(), qBound(0, index, _gradient->size()));
}

double GradientWidget::mapPosToKey(int x) const
{
    if (_gradient->isEmpty())
        return 0.0;
    if (rightEdge() <= 0)
        return _gradient->firstKey();
    return x * keySpan() / rightEdge() + _gradient->firstKey();
}

int GradientWidget::findHandle(const QPoint &pos, bool checkHeight) const
{
    if (_gradient->isEmpty() || rightEdge() < 0)
        return -1;
    if (checkHeight && pos.y() <= barHeight())
        return -1;

    const double half = (height() - barHeight()) * 0.5;
    int index = 0;
    for (auto stop = _gradient->constBegin(); stop != _gradient->constEnd(); ++stop, ++index) {
        const int x = mapKeyToPos(stop.key());
        if (x - half <= pos.x() && pos.x() <= x + half)
            return index;
    }
    return -1;
}

// Changes

void GradientWidget::deleteHandle(int index)
{
    if (index < 0 || index >= _gradient->size())
        return;

    const double key = mapIndexToIterator(index).key();
    const QPointer<GradientWidget> alive(this);
    emit pointRemoved(key);
    if (!alive)
        return;
    _gradient->remove(key);
    clearHoverHandle();
    _currentHandle = -1;
}

void GradientWidget::deleteCurrent()
{
    if (_currentHandle != -1)
        deleteHandle(_currentHandle);
}

void GradientWidget::setHoverHandle(int handle)
{
    if (handle == _hoverHandle)
        return;

    _hoverHandle = handle;
    if (_hoverHandle >= 0)
        setCursor(Qt::PointingHandCursor);
    else
        unsetCursor();
    update();
}

void GradientWidget::clearHoverHandle()
{
    _hoverHandle = -1;
    unsetCursor();
    update();
}

void GradientWidget::hoverAtPointer()
{
    const QPoint pointer = mapFromGlobal(QCursor::pos());
    setHoverHandle(rect().contains(pointer) ? findHandle(pointer, true) : -1);
}

void GradientWidget::dragTo(int x)
{
    const auto stop = _gradient->find(_dragKey);
    if (stop == _gradient->end())
        return;

    const auto value = *stop;
    const double newKey = mapPosToKey(x);
    if (std::isfinite(newKey) && !_gradient->contains(newKey)) {
        _gradient->erase(stop);
        _gradient->setColorAt(newKey, value.first, value.second);
        _dragKey = newKey;
    }
    _currentHandle = mapKeyToIndex(_dragKey);
    _hoverHandle = _currentHandle;
    update();
    const QPointer<GradientWidget> alive(this);
    emit pointClicked(_dragKey, value.first);
    if (alive)
        emit gradientChanged();
}

void GradientWidget::requestPoint(int x)
{
    double key = mapPosToKey(x);
    // All of the bar has the key of a single stop, which must not be replaced.
    if (_gradient->size() == 1)
        key += 1.0;

    const QPointer<GradientWidget> alive(this);
    emit pointDoubleClicked(key, _gradient->colorAt(key, false), false);
    if (!alive)
        return;
    _currentHandle = mapKeyToIndex(key);
    hoverAtPointer();
    update();
}

// Mouse

void GradientWidget::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    if (_hoverHandle == -1) {
        _hoverHandle = findHandle(event->pos(), true);
        if (_hoverHandle == -1)
            return;
        setCursor(Qt::PointingHandCursor);
    }

    _dragging = false;
    if (_hoverHandle >= _gradient->size())
        return;
    if (event->modifiers() == Qt::ControlModifier) {
        deleteHandle(_hoverHandle);
        return;
    }

    const auto stop = mapIndexToIterator(_hoverHandle);
    _currentHandle = _hoverHandle;
    _dragging = true;
    _dragKey = stop.key();
    update();
    emit pointClicked(stop.key(), stop->first);
}

void GradientWidget::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        _dragging = false;
}

void GradientWidget::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    if (_hoverHandle == -1) {
        requestPoint(event->x());
        return;
    }
    if (_hoverHandle >= _gradient->size())
        return;

    const auto stop = mapIndexToIterator(_hoverHandle);
    _currentHandle = _hoverHandle;
    update();
    emit pointDoubleClicked(stop.key(), stop->first, true);
}

void GradientWidget::mouseMoveEvent(QMouseEvent *event)
{
    if (_dragging)
        dragTo(qRound(event->localPos().x()));
    else
        setHoverHandle(findHandle(event->pos(), true));
}

void GradientWidget::leaveEvent(QEvent *)
{
    clearHoverHandle();
}

void GradientWidget::contextMenuEvent(QContextMenuEvent *event)
{
    // The pointer leaves for the menu, and the handle below it is forgotten.
    const int handle = _hoverHandle;
    const int x = event->x();
    const bool isOnStop = handle >= 0 && handle < _gradient->size();
    const double key = isOnStop ? mapIndexToIterator(handle).key() : 0.0;

    const QPointer<GradientWidget> alive(this);
    QMenu menu;
    menu.addAction(handle == -1 ? tr("Add") : tr("Remove"));
    const bool chosen = menu.exec(event->globalPos()) != nullptr;
    if (!alive || !chosen)
        return;

    // Stops may have come or gone meanwhile.
    if (handle == -1)
        requestPoint(x);
    else if (isOnStop)
        deleteHandle(mapKeyToIndex(key));
}

// Keyboard

void GradientWidget::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Space) {
        QWidget::keyPressEvent(event);
        return;
    }

    event->accept();
    if (_hoverHandle < 0 || _hoverHandle >= _gradient->size())
        return;
    const auto stop = mapIndexToIterator(_hoverHandle);
    _currentHandle = _hoverHandle;
    update();
    emit pointClicked(stop.key(), stop->first);
}

void GradientWidget::focusInEvent(QFocusEvent *event)
{
    if (_hoverHandle != 0 && !_gradient->isEmpty()) {
        if (event->reason() == Qt::TabFocusReason)
            _hoverHandle = 0;
        else if (event->reason() == Qt::BacktabFocusReason)
            _hoverHandle = _gradient->size() - 1;
    }
    update();
}

void GradientWidget::focusOutEvent(QFocusEvent *)
{
    clearHoverHandle();
}

bool GradientWidget::focusNextPrevChild(bool next)
{
    if (_hoverHandle < 0 && _gradient->isEmpty())
        return false;

    const int last = _gradient->size() - 1;
    if (_hoverHandle < 0)
        _hoverHandle = next ? 0 : last;
    else if (next && _hoverHandle < last)
        ++_hoverHandle;
    else
        --_hoverHandle;
    update();
    return _hoverHandle >= 0;
}

// Painting

void GradientWidget::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    drawCheckerboard(painter);
    if (_gradient->isEmpty())
        return;
    drawBar(painter);
    drawStrip(painter);
    drawHandles(painter);
    if (hasFocus())
        drawFocusFrame(painter);
}

void GradientWidget::drawCheckerboard(QPainter &painter) const
{
    const QRect bar(0, 0, width(), barHeight());
    for (int row = 0; row * CellSize < bar.height(); ++row) {
        for (int column = 0; column * CellSize < bar.width(); ++column) {
            const QRect cell(column * CellSize, row * CellSize, CellSize, CellSize);
            painter.fillRect(cell & bar, ((column ^ row) & 1) == 0 ? Qt::black : Qt::white);
        }
    }
}

void GradientWidget::drawBar(QPainter &painter) const
{
    const double span = keySpan();
    const double firstKey = _gradient->firstKey();
    const double step = rightEdge() > 0 ? 1.0 / rightEdge() : 0.0;
    const int bar = barHeight();
    for (int x = 0; x <= rightEdge(); ++x) {
        const double key = x * span * step + firstKey;
        painter.fillRect(x, 0, 1, bar, _gradient->colorAt(key, _discrete));
    }
}

void GradientWidget::drawStrip(QPainter &painter) const
{
    // On the background of a dark palette black handles can't be seen, as if there were no stops.
    if (palette().color(QPalette::Window).lightness() < DarkBelow)
        painter.fillRect(rect().adjusted(0, barHeight(), 0, 0), palette().light());
}

void GradientWidget::drawHandles(QPainter &painter) const
{
    painter.setRenderHint(QPainter::Antialiasing);
    const int extent = height() - barHeight();
    const int half = static_cast<int>(extent * 0.5);
    const QPolygon triangle({QPoint(0, 0), QPoint(half, extent - 1), QPoint(-half, extent - 1)});
    const QPen hoverPen(palette().highlight(), 2.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin);

    int index = 0;
    for (auto stop = _gradient->constBegin(); stop != _gradient->constEnd(); ++stop, ++index) {
        painter.setPen(index == _hoverHandle ? hoverPen : QPen(Qt::black));
        painter.setBrush(index == _currentHandle ? Qt::white : Qt::black);
        painter.drawPolygon(triangle.translated(mapKeyToPos(stop.key()), barHeight()));
    }
}

void GradientWidget::drawFocusFrame(QPainter &painter) const
{
    painter.setPen(palette().color(QPalette::Highlight));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(0, 0, rightEdge(), barHeight() - 1);
}

} // namespace Gui
} // namespace Norvu
