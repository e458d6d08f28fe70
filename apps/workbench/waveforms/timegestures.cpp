// SPDX-License-Identifier: LGPL-3.0-or-later

#include "timegestures.h"

#include "timetext.h"

#include <norvu/gui/multitracewidget.h>
#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/records/timescale.h>

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>
#include <cstdlib>

using namespace Tellarix;
using Norvu::Gui::MultiTraceWidget;
using Norvu::Gui::Trace;

namespace Workbench {

TimeGestures::TimeGestures(Norvu::Gui::TraceView *view)
    : QObject(view), _view(view), _scale(view->timeScale()),
      _scrollArea(view->findChild<QScrollArea *>()),
      _zoom(new QAction(tr("&Zoom to the selected span"), this)),
      _label(new QLabel(_scrollArea->viewport()))
{
    _zoom->setShortcuts({Qt::Key_Return, Qt::Key_Enter});
    _zoom->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    _zoom->setEnabled(false);
    view->addAction(_zoom);
    _label->setAutoFillBackground(true);
    _label->setBackgroundRole(QPalette::ToolTipBase);
    _label->setForegroundRole(QPalette::ToolTipText);
    _label->setMargin(2);
    _label->setAttribute(Qt::WA_TransparentForMouseEvents);
    _label->hide();
    _scrollArea->viewport()->installEventFilter(this);
    view->timeScale()->installEventFilter(this);

    connect(_zoom, SIGNAL(triggered()), this, SLOT(zoomToSelected()));
    connect(view->timeScale(), SIGNAL(selectionChanging(double, double)), this,
            SLOT(showSelected()));
    connect(view->timeScale(), SIGNAL(selectionChanged(double, double)), this,
            SLOT(showSelected()));
    connect(view, SIGNAL(layoutOrContentChanged()), this, SLOT(showSelected()));
    connect(view, SIGNAL(alignmentChanged(Tellarix::Core::Time)), this, SLOT(showSelected()));
    connect(view, SIGNAL(displayChanged(double, double, double)), this, SLOT(placeLabel()));
    connect(view, SIGNAL(itemSelectionCleared()), this, SLOT(clearSelected()));
}

void TimeGestures::watch(MultiTraceWidget *overview, Gui::TimeScale *turned)
{
    _overview = overview;
    _turned = turned;
    _overview->installEventFilter(this);
}

Core::TimeWindow TimeGestures::span() const
{
    const Gui::TimeScale *scale = _view->timeScale();
    return scale->hasSelection() ? Core::TimeWindow(scale->timeAt(scale->selectionLower()),
                                                    scale->timeAt(scale->selectionUpper()))
                                 : Core::TimeWindow();
}

void TimeGestures::showSelected()
{
    const Core::TimeWindow window = span();
    if (window.isEmpty() && !_zoom->isEnabled())
        return;
    for (const Trace *row : _view->items())
        row->recordWidget()->setSelectedTimeWindow(window);
    _zoom->setEnabled(!window.isEmpty());
    placeLabel();
}

/** At the top of the span, where it is in sight. */
void TimeGestures::placeLabel()
{
    const Gui::TimeScale *scale = _view->timeScale();
    const double first = std::max(0.0, scale->valueToPixel(scale->selectionLower()));
    const double last =
        std::min<double>(scale->width(), scale->valueToPixel(scale->selectionUpper()));
    _label->setVisible(scale->hasSelection() && first < last && currentScale() == scale);
    if (_label->isHidden())
        return;
    _label->setText(spanText(span().length().length(), 1 / scale->scale()));
    _label->adjustSize();
    const QPoint middle(static_cast<int>((first + last) / 2), 0);
    const int x = _scrollArea->viewport()->mapFromGlobal(scale->mapToGlobal(middle)).x();
    _label->move(x - _label->width() / 2, 2);
    _label->raise();
}

void TimeGestures::zoomToSelected()
{
    const Core::TimeWindow window = span();
    if (window.isEmpty())
        return;
    clearSelected();
    emit zoomRequested(window);
}

void TimeGestures::clearSelected()
{
    _view->timeScale()->setSelection(0, 0);
    showSelected();
}

bool TimeGestures::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == _overview)
        return filterOverviewEvent(event);
    const bool isScale = watched == _scale;
    switch (event->type()) {
    case QEvent::MouseButtonDblClick:
        return doubleClick(*static_cast<QMouseEvent *>(event));
    case QEvent::Wheel:
        return !isScale &&
               turnWheel(*static_cast<QWidget *>(watched), *static_cast<QWheelEvent *>(event));
    case QEvent::MouseButtonPress:
        return !isScale && press(*static_cast<QMouseEvent *>(event));
    case QEvent::MouseMove:
        return !isScale && move(*static_cast<QMouseEvent *>(event));
    case QEvent::MouseButtonRelease:
        return !isScale && release(*static_cast<QMouseEvent *>(event));
    default:
        return false;
    }
}

bool TimeGestures::filterOverviewEvent(QEvent *event)
{
    switch (event->type()) {
    case QEvent::Wheel:
        return turnWheel(*_overview, *static_cast<QWheelEvent *>(event));
    case QEvent::MouseButtonPress:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
        return dragOverview(*static_cast<QMouseEvent *>(event));
    default:
        return false;
    }
}

/** A press selects a row; from there on the overview would select whatever row comes by. */
bool TimeGestures::dragOverview(const QMouseEvent &event)
{
    if (event.type() == QEvent::MouseButtonPress && event.button() == Qt::LeftButton) {
        _drag = Drag::Pressed;
        _pressed = event.globalPos();
        _pressedLower = _view->tmin();
        _pressedUpper = _view->tmax();
    }
    if (event.type() == QEvent::MouseButtonRelease && event.button() == Qt::LeftButton) {
        _drag = Drag::None;
        _overview->unsetCursor();
    }
    if (event.type() != QEvent::MouseMove || _drag == Drag::None ||
        !event.buttons().testFlag(Qt::LeftButton))
        return false;

    const int way = (event.globalPos() - _pressed).manhattanLength();
    if (_drag == Drag::Pressed && way >= QApplication::startDragDistance()) {
        _drag = Drag::Pans;
        _overview->setCursor(Qt::ClosedHandCursor);
    }
    if (_drag == Drag::Pans) {
        // The whole way since the press, so that nothing adds up.
        const double moved = _overview->secondsAt(_overview->mapFromGlobal(event.globalPos())) -
                             _overview->secondsAt(_overview->mapFromGlobal(_pressed));
        emit _view->timeScale()->rangeChangeRequested(_pressedLower - moved, _pressedUpper - moved);
    }
    return true;
}

/** Whether the scroll bar moves that a wheel which turns in a direction belongs to. */
bool TimeGestures::hasRowsToScroll(Qt::Orientation wheel) const
{
    const QScrollBar *bar = wheel == Qt::Vertical ? _scrollArea->verticalScrollBar()
                                                  : _scrollArea->horizontalScrollBar();
    return bar->maximum() > bar->minimum();
}

Gui::TimeScale *TimeGestures::currentScale() const
{
    const bool isTurned =
        _overview && _overview->isActive() && _overview->orientation() == Qt::Horizontal;
    return isTurned ? _turned : _view->timeScale();
}

/** The time scale zooms by what is turned up and down, and pans by what is turned sideways. */
bool TimeGestures::turnWheel(const QWidget &widget, QWheelEvent &event)
{
    QPoint angle = event.angleDelta();
    QPoint pixels = event.pixelDelta();
    const bool isSideways = std::abs(angle.x()) > std::abs(angle.y());
    const bool isOverview = _overview && _overview->isActive();
    const bool isFree = isOverview && !hasRowsToScroll(isSideways ? Qt::Horizontal : Qt::Vertical);
    if (event.modifiers() & Qt::ControlModifier) {
        angle.setX(0);
    } else if (!isSideways && (isFree || event.modifiers() & Qt::ShiftModifier)) {
        angle = {angle.y(), 0};
        pixels = {pixels.y(), 0};
    } else if (!isSideways || (isOverview && !isFree)) {
        return false;
    }
    Gui::TimeScale *scale = currentScale();
    const QPoint global = widget.mapToGlobal(event.position().toPoint());
    QWheelEvent sent(scale->mapFromGlobal(global), global, pixels, angle, event.buttons(),
                     Qt::NoModifier, event.phase(), event.inverted());
    QCoreApplication::sendEvent(scale, &sent);
    event.accept(); // or it would go on to what lies around
    return true;
}

bool TimeGestures::press(const QMouseEvent &event)
{
    const bool begins = event.button() == Qt::LeftButton && event.modifiers() == Qt::ShiftModifier;
    _drag = begins ? Drag::Pressed : Drag::None;
    _pressed = event.globalPos();
    return false;
}

bool TimeGestures::move(const QMouseEvent &event)
{
    if (_drag == Drag::None || !event.buttons().testFlag(Qt::LeftButton))
        return false;
    const int way = (event.globalPos() - _pressed).manhattanLength();
    if (_drag == Drag::Pressed && way >= QApplication::startDragDistance()) {
        _drag = Drag::Selects;
        sendToScale(QEvent::MouseButtonPress, _pressed);
    }
    if (_drag == Drag::Selects)
        sendToScale(QEvent::MouseMove, event.globalPos());
    return true;
}

bool TimeGestures::release(const QMouseEvent &event)
{
    const bool selects = _drag == Drag::Selects && event.button() == Qt::LeftButton;
    if (event.button() == Qt::LeftButton)
        _drag = Drag::None;
    if (selects)
        sendToScale(QEvent::MouseButtonRelease, event.globalPos());
    return selects;
}

bool TimeGestures::doubleClick(const QMouseEvent &event)
{
    const Gui::TimeScale *scale = _view->timeScale();
    const double value = scale->pixelToValue(scale->mapFromGlobal(event.globalPos()).x());
    if (event.button() != Qt::LeftButton || !span().contains(scale->timeAt(value)))
        return false;
    zoomToSelected();
    return true;
}

void TimeGestures::sendToScale(QEvent::Type type, const QPoint &globalPosition)
{
    Gui::TimeScale *scale = _view->timeScale();
    const QPoint position(scale->mapFromGlobal(globalPosition).x(), scale->height() / 2);
    const bool isMove = type == QEvent::MouseMove;
    const bool isRelease = type == QEvent::MouseButtonRelease;
    QMouseEvent event(type, position, globalPosition, isMove ? Qt::NoButton : Qt::LeftButton,
                      isRelease ? Qt::NoButton : Qt::LeftButton, Qt::ShiftModifier);
    QCoreApplication::sendEvent(scale, &event);
}

} // namespace Workbench
