// SPDX-License-Identifier: LGPL-3.0-or-later

#include "datastrip.h"

#include "coverage.h"

#include <norvu/gui/traceview.h>
#include <tellarix/qt/records/timescale.h>

#include <QCoreApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr int Margin = 3;
constexpr int SmallestPart = 10;
constexpr int EndReach = 3;
constexpr double ShortestWindow = 0.01;
constexpr int DataAlpha = 160;
constexpr int PartAlpha = 70;

QColor withAlpha(QColor color, int alpha)
{
    color.setAlpha(alpha);
    return color;
}

} // namespace

Core::TimeWindow movedWindow(const Core::TimeWindow &window, WindowPart part, Core::TimeSpan way,
                             const Core::TimeWindow &extent)
{
    const Core::TimeSpan shortest(ShortestWindow);
    Core::Time start = window.startTime();
    Core::Time end = window.endTime();
    switch (part) {
    case WindowPart::Start:
        return {std::min(std::max(start + way, extent.startTime()), end - shortest), end};
    case WindowPart::End:
        return {start, std::max(std::min(end + way, extent.endTime()), start + shortest)};
    case WindowPart::Whole:
        way = std::min(std::max(way, extent.startTime() - end), extent.endTime() - start);
        return {start + way, end + way};
    case WindowPart::None:
        break;
    }
    return window;
}

DataStrip::DataStrip(Norvu::Gui::TraceView *view, const Coverage *coverage, QWidget *parent)
    : QWidget(parent), _view(view), _coverage(coverage)
{
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
    setToolTip(tr("Where there are data, and what is in view: drag it to pan, its ends to zoom"));
    connect(view, SIGNAL(displayChanged(double, double, double)), this, SLOT(update()));
}

QSize DataStrip::sizeHint() const
{
    return {100, fontMetrics().height() + 2 * Margin};
}

QRect DataStrip::track() const
{
    const QWidget *scale = _view->timeScale();
    const int left = mapFromGlobal(scale->mapToGlobal(QPoint(0, 0))).x();
    return {left, Margin, std::max(1, scale->width()), height() - 2 * Margin};
}

double DataStrip::mapTime(const Core::Time &time) const
{
    const Core::TimeWindow extent = _coverage->extent();
    const double length = std::max(ShortestWindow, extent.length().length());
    return track().left() + (time - extent.startTime()).length() / length * track().width();
}

Core::Time DataStrip::unmapTime(double x) const
{
    const Core::TimeWindow extent = _coverage->extent();
    const double length = std::max(ShortestWindow, extent.length().length());
    return extent.startTime() + Core::TimeSpan((x - track().left()) / track().width() * length);
}

QRect DataStrip::visiblePart() const
{
    const QRect area = track();
    const Core::TimeWindow visible = _view->visibleTimeWindow();
    const auto inArea = [&](const Core::Time &time) {
        return std::clamp<double>(mapTime(time), area.left(), area.right() + 1);
    };
    double first = inArea(visible.startTime());
    double last = inArea(visible.endTime());
    const double missing = std::max(0.0, SmallestPart - (last - first));
    first = std::clamp<double>(first - missing / 2, area.left(), area.right() + 1 - SmallestPart);
    last = std::max(first + SmallestPart, last);
    return {static_cast<int>(first), area.top() - 1, static_cast<int>(last - first),
            area.height() + 2};
}

void DataStrip::paintEvent(QPaintEvent *)
{
    if (_coverage->windows().isEmpty())
        return;
    QPainter painter(this);
    painter.fillRect(track(), palette().color(QPalette::AlternateBase));
    drawData(painter);
    drawPart(painter);
}

/** Windows that share a pixel are drawn once. */
void DataStrip::drawData(QPainter &painter) const
{
    const QColor color = withAlpha(palette().color(QPalette::Text), DataAlpha);
    const QRect area = track().adjusted(0, 2, 0, -2);
    int drawn = area.left() - 1;
    for (const Core::TimeWindow &window : _coverage->windows()) {
        const int first = std::max(drawn + 1, static_cast<int>(mapTime(window.startTime())));
        const int last = std::min(area.right(), static_cast<int>(mapTime(window.endTime())));
        if (last < first)
            continue;
        painter.fillRect(QRect(QPoint(first, area.top()), QPoint(last, area.bottom())), color);
        drawn = last;
    }
}

void DataStrip::drawPart(QPainter &painter) const
{
    const QColor color = palette().color(QPalette::Highlight);
    const QRect part = visiblePart();
    painter.fillRect(part, withAlpha(color, PartAlpha));
    painter.setPen(color);
    painter.drawRect(part.adjusted(0, 0, -1, -1));
    for (const int x : {part.left(), part.right() - 2})
        painter.fillRect(x, part.top(), EndReach, part.height(), color);
}

WindowPart DataStrip::partAt(int x) const
{
    const QRect part = visiblePart();
    if (x < part.left() - EndReach || x > part.right() + EndReach)
        return WindowPart::None;
    if (x < part.left() + EndReach)
        return WindowPart::Start;
    return x > part.right() - EndReach ? WindowPart::End : WindowPart::Whole;
}

void DataStrip::updateCursor(WindowPart part)
{
    if (part == WindowPart::None || _coverage->windows().isEmpty())
        unsetCursor();
    else if (part == WindowPart::Whole)
        setCursor(_dragged == part ? Qt::ClosedHandCursor : Qt::OpenHandCursor);
    else
        setCursor(Qt::SplitHCursor);
}

void DataStrip::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || _coverage->windows().isEmpty())
        return;
    if (partAt(event->x()) == WindowPart::None) {
        const Core::TimeSpan half = _view->visibleTimeWindow().length() / 2.0;
        const Core::Time middle = unmapTime(event->x());
        emit windowRequested({middle - half, middle + half});
        _dragged = WindowPart::Whole;
    } else
        _dragged = partAt(event->x());
    _dragWindow = _view->visibleTimeWindow();
    _dragX = event->x();
    updateCursor(_dragged);
}

void DataStrip::mouseMoveEvent(QMouseEvent *event)
{
    if (_dragged == WindowPart::None) {
        updateCursor(partAt(event->x()));
        return;
    }
    const Core::TimeSpan way = unmapTime(event->x()) - unmapTime(_dragX);
    emit windowRequested(movedWindow(_dragWindow, _dragged, way, _coverage->extent()));
}

void DataStrip::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    _dragged = WindowPart::None;
    updateCursor(partAt(event->x()));
}

/** Zooms about the middle of the view. */
void DataStrip::wheelEvent(QWheelEvent *event)
{
    Gui::TimeScale *scale = _view->timeScale();
    const QPointF middle(scale->width() / 2.0, scale->height() / 2.0);
    QWheelEvent sent(middle, scale->mapToGlobal(middle.toPoint()), event->pixelDelta(),
                     event->angleDelta(), event->buttons(), Qt::NoModifier, event->phase(),
                     event->inverted());
    QCoreApplication::sendEvent(scale, &sent);
    event->accept();
}

} // namespace Workbench
