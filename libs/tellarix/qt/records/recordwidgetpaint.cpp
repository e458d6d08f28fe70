// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/recordwidget.h>

#include <tellarix/core/parallel.h>
#include <tellarix/qt/records/recordrow_p.h>
#include <tellarix/qt/records/rowaxis_p.h>
#include <tellarix/qt/records/rowgrid_p.h>
#include <tellarix/qt/records/rowlook_p.h>
#include <tellarix/qt/records/rowmarks_p.h>
#include <tellarix/qt/records/rowpointer_p.h>
#include <tellarix/qt/records/rowtraces_p.h>
#include <tellarix/qt/scheme.h>

#include <QPainter>
#include <QResizeEvent>

#include <algorithm>
#include <utility>

namespace Tellarix {
namespace Gui {

void RecordWidget::paintEvent(QPaintEvent *)
{
    if (_preparation && isDirty())
        _preparation();
    const QRect canvas = canvasRect();
    _row->prepare(canvas);

    QPainter painter(this);
    const RowLook look(*this, canvas);
    const auto paintHook = [&](void (RecordWidget::*hook)(QPainter &), const QPoint &origin) {
        painter.save();
        painter.setClipRect(canvas);
        painter.translate(origin);
        (this->*hook)(painter);
        painter.restore();
    };

    if (autoFillBackground())
        painter.fillRect(canvas, Scheme::Current().records.background);
    paintHook(&RecordWidget::drawCustomBackground, canvas.topLeft());
    drawStretches(painter, *_row, look);
    drawGrid(painter, *_row, look);
    paintHook(&RecordWidget::customPaintTracesBegin, QPoint());
    drawTraces(painter, *_row, look);
    paintHook(&RecordWidget::customPaintTracesEnd, QPoint());
    drawMarkers(painter, *_markers, _pointer->currentMarker, this, look);
    drawSlotTexts(painter, *_row, look);
    drawSelection(painter, *_row, _pointer->selection, look);
    if (_pointer->isCursorShown)
        drawCursor(painter, *_row, _pointer->cursorTime, look);
    drawFrame(painter, *_row, look);
    drawAxes(painter, *_row, look);
}

void RecordWidget::drawCustomBackground(QPainter &)
{}

void RecordWidget::customPaintTracesBegin(QPainter &)
{}

void RecordWidget::customPaintTracesEnd(QPainter &)
{}

// Traces

bool RecordWidget::areTracesPale() const
{
    return _row->isPale;
}

void RecordWidget::setTracesPale(bool pale)
{
    if (pale == _row->isPale)
        return;

    _row->isPale = pale;
    updateCanvas();
}

bool RecordWidget::isDirty() const
{
    return _row->isDirty();
}

void RecordWidget::setDirty()
{
    _row->forgetExtrema();
    _row->forgetStretches();
    _row->forgetTraces();
}

void RecordWidget::setPreparation(std::function<void()> preparation)
{
    _preparation = std::move(preparation);
}

void RecordWidget::prepare(const QVector<RecordWidget *> &widgets)
{
    // Shared by all of them, and to be made by this thread.
    Scheme::Current();

    QVector<RecordWidget *> outdated;
    std::copy_if(widgets.begin(), widgets.end(), std::back_inserter(outdated),
                 [](const RecordWidget *widget) { return widget->isDirty(); });
    Core::parallelFor(outdated.size(),
                      [&](int i) { outdated[i]->_row->prepare(outdated[i]->canvasRect()); });
}

// Size and look

/** Slots, amplitudes or their layout have changed. */
void RecordWidget::updateAll()
{
    _row->forgetTraces();
    update();
    emit traceUpdated(this);
}

/** Only what the canvas shows has changed. */
void RecordWidget::updateCanvas()
{
    update(canvasRect());
}

QSize RecordWidget::sizeHint() const
{
    const QFontMetrics metrics = fontMetrics();
    return QSize((_row->axis.drawn ? _row->axis.width : 0) + 20 * metrics.averageCharWidth(),
                 4 * metrics.height());
}

void RecordWidget::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    _row->forgetTraces();
    if (canvasWidth() <= 0)
        return;

    _laidOut = true;
    if (_rangeAwaitsSize)
        showTimeRange(tmin(), tmax());
}

void RecordWidget::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    switch (event->type()) {
    case QEvent::FontChange:
    case QEvent::StyleChange:
    case QEvent::EnabledChange:
    case QEvent::PaletteChange:
        update();
        break;
    default:
        break;
    }
}

} // namespace Gui
} // namespace Tellarix
