// SPDX-License-Identifier: LGPL-3.0-or-later

#include "multitracewidget.h"

#include "multitracewiggles_p.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>

#include <tellarix/qt/records/recordwidget.h>

#include <QAction>
#include <QMouseEvent>
#include <QScrollArea>
#include <QTimerEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace Norvu {
namespace Gui {

using Tellarix::Gui::RecordWidget;

namespace {

constexpr float AmpScaleStep = 0.5f;
constexpr double OverlapStep = 0.1;
// Records that arrive mark their row dirty, but nobody tells of them.
constexpr int RefreshInterval = 250;
// Placed rows are as high, in lines of text, unless the area is lower.
constexpr int PlacedLines = 2;

} // namespace

MultiTraceWidget::MultiTraceWidget(TraceView *view, Qt::WindowFlags f)
    : QWidget(view, f), _view(view)
{
    connect(view, SIGNAL(displayChanged(double, double, double)), this, SLOT(updateDisplay()));
    connect(view, SIGNAL(layoutOrContentChanged()), this, SLOT(updateDisplay()));
    connect(view, SIGNAL(itemSelectionChanged()), this, SLOT(update()));

    addShortcut(Qt::CTRL + Qt::Key_Up, tr("Increase amplitudes"), SLOT(increaseAmpScale()));
    addShortcut(Qt::CTRL + Qt::Key_Down, tr("Decrease amplitudes"), SLOT(decreaseAmpScale()));
    addShortcut(Qt::CTRL + Qt::SHIFT + Qt::Key_Up, tr("Increase overlap"), SLOT(increaseOverlap()));
    addShortcut(Qt::CTRL + Qt::SHIFT + Qt::Key_Down, tr("Decrease overlap"),
                SLOT(decreaseOverlap()));

    hide();
    updateMinimumSize();
}

MultiTraceWidget::~MultiTraceWidget()
{
    if (!isActive())
        return;

    // A view that is being destroyed takes this widget along: it is no TraceView any more then and
    // has no place for its rows.
    const QObject *ancestor = this;
    while (ancestor && !qobject_cast<const TraceView *>(ancestor))
        ancestor = ancestor->parent();
    if (ancestor)
        setActive(false);
    else
        delete _replacedWidget;
}

void MultiTraceWidget::addShortcut(const QKeySequence &keys, const QString &text, const char *slot)
{
    auto *action = new QAction(text, this);
    action->setShortcut(keys);
    connect(action, SIGNAL(triggered(bool)), this, slot);
    addAction(action);
}

Qt::Orientation MultiTraceWidget::orientation() const
{
    return _horizontal ? Qt::Horizontal : Qt::Vertical;
}

void MultiTraceWidget::increaseAmpScale()
{
    setAmpScale(_ampScale + AmpScaleStep);
}

void MultiTraceWidget::decreaseAmpScale()
{
    setAmpScale(std::max(_ampScale - AmpScaleStep, 1.0f));
}

void MultiTraceWidget::setAmpScale(float scale)
{
    if (scale == _ampScale)
        return;

    _ampScale = scale;
    setDirty();
    update();
}

void MultiTraceWidget::increaseOverlap()
{
    setOverlap(std::min(_overlap + OverlapStep, 1.0));
}

void MultiTraceWidget::decreaseOverlap()
{
    setOverlap(std::max(_overlap - OverlapStep, 0.0));
}

void MultiTraceWidget::setOverlap(double overlap)
{
    if (overlap == _overlap)
        return;

    _overlap = overlap;
    setDirty();
    update();
}

void MultiTraceWidget::setActive(bool active)
{
    if (active == isActive())
        return;

    QScrollArea *scrollArea = _view->_scrollArea;
    if (active) {
        _replacedWidget = scrollArea->takeWidget();
        scrollArea->setWidget(this);
        _dirty = true;
        show();
        _refreshTimer.start(RefreshInterval, this);
    } else {
        scrollArea->takeWidget();
        scrollArea->setWidget(std::exchange(_replacedWidget, nullptr));
        setParent(_view);
        hide();
        _refreshTimer.stop();
    }
    setRowsDirty();
}

void MultiTraceWidget::setOrientation(Qt::Orientation orientation)
{
    _horizontal = orientation == Qt::Horizontal;
    setDirty();
    updateMinimumSize();
    update();
}

void MultiTraceWidget::updateMinimumSize()
{
    // Placed rows may cover each other.
    const int rows = _placement ? 0 : countSignificantItems() * fontMetrics().ascent();
    setMinimumSize(_horizontal ? rows : 0, _horizontal ? 0 : rows);
}

void MultiTraceWidget::setPlacement(Placement placement)
{
    _placement = std::move(placement);
    updateMinimumSize();
    updateDisplay();
}

void MultiTraceWidget::setTurnedTimeScale(Tellarix::Gui::TimeScale *scale)
{
    if (scale == _turnedScale)
        return;

    if (_turnedScale)
        disconnect(_turnedScale, nullptr, this, nullptr);
    _turnedScale = scale;
    if (scale)
        connect(scale, SIGNAL(changedInterval(double, double, double)), this, SLOT(update()));
    updateDisplay();
}

void MultiTraceWidget::setWigglesShown(bool show)
{
    if (show == _wiggles)
        return;

    _wiggles = show;
    setDirty();
    update();
}

void MultiTraceWidget::updateDisplay()
{
    setDirty();
    update();
}

void MultiTraceWidget::setDirty()
{
    setRowsDirty();
    _dirty = true;
    _labelWidth = -1;
}

void MultiTraceWidget::setRowsDirty()
{
    for (int i = 0; i < _view->count(); ++i)
        _view->itemAt(i)->recordWidget()->setDirty();
}

bool MultiTraceWidget::hasDirtyRow() const
{
    for (int i = 0; i < _view->count(); ++i) {
        const RecordWidget::TraceInfo *info = drawnInfo(_view->itemAt(i)->recordWidget());
        if (info && info->dirty)
            return true;
    }
    return false;
}

bool MultiTraceWidget::isLayoutOutdated() const
{
    if (_dirty)
        return true;

    // A row may have got its first records, or lost its last ones.
    for (int i = 0; i < _view->count(); ++i) {
        const RecordWidget *widget = _view->itemAt(i)->recordWidget();
        const RecordWidget::TraceInfo *info = drawnInfo(widget);
        if (info && info->dirty && (info->height > 0) != isDrawn(*_view->itemAt(i)))
            return true;
    }
    return false;
}

/** Rows that the host has hidden, or has no place for, take no room here either. */
bool MultiTraceWidget::isDrawn(const Trace &row) const
{
    return !row.isTakenOut() && row.recordWidget()->displayedRecords(0) != nullptr &&
           (!_placement || _placement(row));
}

int MultiTraceWidget::countSignificantItems() const
{
    // Displayed records: filtered ones alone would hide rows that are still being filtered, and all
    // rows while filtering is on without a filter.
    int count = 0;
    for (int i = 0; i < _view->count(); ++i) {
        const RecordWidget *widget = _view->itemAt(i)->recordWidget();
        if (widget->traceInfo(0, false) && isDrawn(*_view->itemAt(i)))
            ++count;
    }
    return count;
}

void MultiTraceWidget::updateLayout(int size) const
{
    const double share = 1.0 - _overlap;
    double rowSize = size / ((countSignificantItems() - 1) * share + 1);
    if (_placement)
        rowSize = std::max<double>(rowSize, std::min(size, PlacedLines * fontMetrics().height()));
    double offset = 0;
    for (int i = 0; i < _view->count(); ++i) {
        const RecordWidget *widget = _view->itemAt(i)->recordWidget();
        RecordWidget::TraceInfo *info = drawnInfo(widget);
        if (!info)
            continue;

        const bool isShown = isDrawn(*_view->itemAt(i));
        const int height = isShown ? static_cast<int>(rowSize) : -1;
        // The polyline holds for one height only.
        info->dirty |= height != info->height;
        info->height = height;
        if (isShown && _placement) {
            info->pos =
                static_cast<int>(std::lround(*_placement(*_view->itemAt(i)) * size)) - height / 2;
        } else if (isShown) {
            info->pos = static_cast<int>(offset);
            offset += share * rowSize;
        }
    }
    _dirty = false;
}

int MultiTraceWidget::labelWidth() const
{
    if (_labelWidth >= 0)
        return _labelWidth;

    QFont labelFont = font();
    labelFont.setWeight(QFont::Bold);
    const QFontMetrics metrics(labelFont);
    _labelWidth = 0;
    for (int i = 0; i < _view->count(); ++i) {
        if (isDrawn(*_view->itemAt(i)))
            _labelWidth =
                std::max(_labelWidth, metrics.horizontalAdvance(_view->itemAt(i)->label()));
    }
    return _labelWidth;
}

/** Room of labels before the traces. */
int MultiTraceWidget::labelSpacing() const
{
    return hasTurnedScale() ? labelWidth() + Trace::Padding() : _view->rulerSpacing();
}

QRect MultiTraceWidget::drawingArea() const
{
    const int start = labelSpacing() + Trace::Padding();
    const int end = hasTurnedScale() ? 0 : _view->extraSpacing();
    const QRect room = contentsRect();
    return _horizontal ? room.adjusted(0, start, 0, -end)
                       : room.adjusted(start, Trace::Padding(), -end - Trace::Padding(), 0);
}

/** Pixels of a second. */
double MultiTraceWidget::timeScalePixels() const
{
    const Tellarix::Gui::TimeScale &scale = *_view->timeScale();
    if (!_horizontal)
        return scale.scale();
    const int height = drawingArea().height() - (_turnedScale ? 0 : _view->rulerSpacing());
    return height / (scale.upper() - scale.lower());
}

double MultiTraceWidget::secondsAt(const QPoint &point) const
{
    const QPoint inArea = point - drawingArea().topLeft();
    return _view->timeScale()->lower() +
           (_horizontal ? inArea.y() : inArea.x()) / timeScalePixels();
}

double MultiTraceWidget::pixelOf(double seconds) const
{
    const QPoint start = drawingArea().topLeft();
    return (_horizontal ? start.y() : start.x()) +
           (seconds - _view->timeScale()->lower()) * timeScalePixels();
}

QRect MultiTraceWidget::rowRect(const Trace *row) const
{
    const QRect area = drawingArea();
    if (_dirty)
        updateLayout(_horizontal ? area.width() : area.height());
    const RecordWidget::TraceInfo *info = drawnInfo(row->recordWidget());
    if (!info || info->height <= 0 || !isDrawn(*row))
        return {};
    return _horizontal ? QRect(area.left() + info->pos, area.top(), info->height, area.height())
                       : QRect(area.left(), area.top() + info->pos, area.width(), info->height);
}

Trace *MultiTraceWidget::rowAt(const QPoint &point) const
{
    if (Trace *nearest = traceAt(point))
        return nearest;
    for (int i = 0; i < _view->count(); ++i) {
        if (rowRect(_view->itemAt(i)).contains(point))
            return _view->itemAt(i);
    }
    return nullptr;
}

double MultiTraceWidget::sampleValueAt(const Trace *row, const QPoint &point) const
{
    const QRect rect = rowRect(row);
    if (rect.isEmpty())
        return 0;
    const RecordWidget::TraceInfo &info = *drawnInfo(row->recordWidget());
    const int depth = _horizontal ? rect.right() - point.x() : point.y() - rect.top();
    return info.fyMax - depth * (info.fyMax - info.fyMin) / std::max(1, info.height - 1) +
           info.yOffset;
}

void MultiTraceWidget::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;

    _mousePressed = true;
    selectAtPoint(event->pos());
    event->accept();
}

void MultiTraceWidget::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;

    _mousePressed = false;
    event->accept();
}

void MultiTraceWidget::mouseMoveEvent(QMouseEvent *event)
{
    if (!_mousePressed)
        return;

    selectAtPoint(event->pos());
    event->accept();
}

void MultiTraceWidget::selectAtPoint(const QPoint &point)
{
    if (Trace *nearest = traceAt(point))
        _view->select(nearest);
}

/** The row whose trace is nearest to a point of the widget, null if none is there. */
Trace *MultiTraceWidget::traceAt(const QPoint &point) const
{
    const QPoint inArea = point - drawingArea().topLeft();
    const int stack = _horizontal ? inArea.x() : inArea.y();
    const int time = _horizontal ? inArea.y() : inArea.x();

    Trace *nearest = nullptr;
    double smallest = 0;
    for (int i = 0; i < _view->count(); ++i) {
        Trace *row = _view->itemAt(i);
        // What was drawn is kept for raw data too.
        const RecordWidget::TraceInfo *info = row->recordWidget()->traceInfo(0, false);
        if (!info || row->isTakenOut() || (_placement && !_placement(*row)))
            continue;
        // Magnified traces leave their rows, so that all of them compete.
        if (_ampScale <= 1.0f && (stack < info->pos || stack > info->pos + info->height))
            continue;

        const auto *trace = dynamic_cast<const WiggledTrace *>(info->poly.get());
        double amplitude = 0;
        if (!trace || !trace->amplitudeAt(time, amplitude))
            continue;
        const double distance = std::abs(amplitude - (stack - info->pos));
        if (!nearest || distance < smallest) {
            nearest = row;
            smallest = distance;
        }
    }
    return nearest;
}

void MultiTraceWidget::resizeEvent(QResizeEvent *)
{
    setDirty();
}

void MultiTraceWidget::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != _refreshTimer.timerId()) {
        QWidget::timerEvent(event);
        return;
    }
    if (isVisible() && hasDirtyRow())
        update();
}

} // namespace Gui
} // namespace Norvu
