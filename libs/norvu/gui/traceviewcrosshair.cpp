// SPDX-License-Identifier: LGPL-3.0-or-later

#include "traceview.h"

#include <norvu/gui/trace.h>

#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/records/timescale.h>

#include <QMouseEvent>
#include <QPainter>
#include <QScrollArea>

namespace Norvu {
namespace Gui {

using Tellarix::Gui::RecordWidget;

namespace {

constexpr int LineStart = 100;

void drawTexts(QPainter &painter, const QPoint &position, const QString &value, const QString &time)
{
    const QSize valueSize = painter.fontMetrics().boundingRect(value).size() - QSize(1, 1);
    const QSize timeSize = painter.fontMetrics().boundingRect(time).size() - QSize(1, 1);
    const QPoint valueEnd = position - QPoint(16, 4);
    const QPoint timeStart = position + QPoint(4, 16);
    const int flags = Qt::AlignCenter | Qt::TextDontClip;
    painter.drawText(QRect(valueEnd - QPoint(valueSize.width(), valueSize.height()), valueEnd),
                     flags, value);
    painter.drawText(QRect(timeStart, timeStart + QPoint(timeSize.width(), timeSize.height())),
                     flags, time);
}

} // namespace

bool TraceView::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == _crosshairOverlay) {
        if (event->type() != QEvent::Paint)
            return false;
        paintCrosshair();
        return true;
    }
    if (watched == _scrollArea->viewport()) {
        if (event->type() == QEvent::Resize) {
            placeCrosshairOverlay();
            alignTimeScale();
        }
        return false;
    }
    if (watched == _timeScale) {
        if (event->type() == QEvent::Resize)
            setTimeRange(_tmin, _tmax);
        return QFrame::eventFilter(watched, event);
    }

    if (event->type() == QEvent::MouseMove)
        trackCrosshair(qobject_cast<QWidget *>(watched), static_cast<QMouseEvent *>(event)->pos());
    else if (event->type() == QEvent::Leave)
        hideCrosshair();
    return false;
}

void TraceView::placeCrosshairOverlay()
{
    const QWidget *viewport = _scrollArea->viewport();
    _crosshairOverlay->setGeometry(QRect(viewport->mapTo(this, QPoint(0, 0)), viewport->size()));
}

void TraceView::showCrosshair(bool show)
{
    if (show == _showCrosshair)
        return;

    _showCrosshair = show;
    _crosshairOverlay->update();
}

void TraceView::trackCrosshair(const QWidget *widget, const QPoint &position)
{
    if (!widget)
        return;

    _crosshairPos = _crosshairOverlay->mapFromGlobal(widget->mapToGlobal(position));
    _crosshairRow = qobject_cast<Trace *>(widget->parentWidget());
    if (_showCrosshair)
        _crosshairOverlay->update();
}

void TraceView::hideCrosshair()
{
    _crosshairRow = nullptr;
    _crosshairPos = QPoint(-1, -1);
    if (_showCrosshair)
        _crosshairOverlay->update();
}

void TraceView::paintCrosshair()
{
    if (!_showCrosshair || _crosshairPos.x() < 0)
        return;

    QColor color = palette().color(QPalette::Highlight);
    color.setAlpha(192);
    // Multiplied into a dark background a line would vanish; screening is the same for light.
    const bool isDark = palette().color(QPalette::Base).lightness() < 128;

    if (isDark)
        color = color.lighter(160);

    QPainter painter(_crosshairOverlay);
    painter.setPen(color);
    painter.setCompositionMode(isDark ? QPainter::CompositionMode_Screen
                                      : QPainter::CompositionMode_Multiply);
    painter.drawLine(LineStart, _crosshairPos.y(), width(), _crosshairPos.y());
    painter.drawLine(_crosshairPos.x(), 0, _crosshairPos.x(), height());
    drawTexts(painter, _crosshairPos, crosshairValueText(), crosshairTimeText());
}

double TraceView::crosshairValue(const RecordWidget *widget, int y)
{
    for (int slot = 0; slot < widget->slotCount(); ++slot) {
        const int height = widget->streamHeight(slot);
        const int depth = y - widget->streamYPos(slot);
        if (depth < 0 || depth >= height)
            continue;

        const QPair<double, double> range = widget->amplitudeRange(slot);
        const double extent = range.second - range.first;
        return (extent - depth * extent / height + range.first) * widget->shownFactor(slot);
    }
    return 0.0;
}

QString TraceView::crosshairTimeText() const
{
    const QPoint position =
        _timeScale->mapFromGlobal(_crosshairOverlay->mapToGlobal(_crosshairPos));
    const double seconds = position.x() / _timeScale->scale() + _timeScale->lower();
    const Tellarix::Core::Time alignment =
        _crosshairRow ? _crosshairRow->recordWidget()->alignment() : _timeScale->alignment();
    return QString((alignment + Tellarix::Core::TimeSpan(seconds)).iso().c_str());
}

QString TraceView::crosshairValueText() const
{
    double value = 0.0;
    if (_crosshairRow) {
        const RecordWidget *widget = _crosshairRow->recordWidget();
        value = crosshairValue(
            widget, widget->mapFromGlobal(_crosshairOverlay->mapToGlobal(_crosshairPos)).y());
    }
    return QString::number(value, 'g', 6);
}

} // namespace Gui
} // namespace Norvu
