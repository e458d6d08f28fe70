// SPDX-License-Identifier: LGPL-3.0-or-later

#include "traceview.h"

#include "crosshair_p.h"

#include <norvu/gui/trace.h>

#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/records/timescale.h>

#include <QMouseEvent>
#include <QScrollArea>

namespace Norvu {
namespace Gui {

using Tellarix::Gui::RecordWidget;

bool TraceView::eventFilter(QObject *watched, QEvent *event)
{
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

    const auto *traces = qobject_cast<QWidget *>(watched);
    if (event->type() == QEvent::MouseMove && traces)
        _crosshairOverlay->track(traces, static_cast<QMouseEvent *>(event)->pos());
    else if (event->type() == QEvent::Leave)
        _crosshairOverlay->leave();
    return false;
}

void TraceView::placeCrosshairOverlay()
{
    const QWidget *viewport = _scrollArea->viewport();
    _crosshairOverlay->setGeometry(QRect(viewport->mapTo(this, QPoint(0, 0)), viewport->size()));
}

void TraceView::showCrosshair(bool show)
{
    _crosshairOverlay->setShown(show);
}

bool TraceView::isCrosshairShown() const
{
    return _crosshairOverlay && _crosshairOverlay->isShown();
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

} // namespace Gui
} // namespace Norvu
