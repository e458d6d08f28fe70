// SPDX-License-Identifier: LGPL-3.0-or-later

#include "crosshair_p.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>

#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/records/timescale.h>

#include <QPainter>

namespace Norvu {
namespace Gui {

using Tellarix::Gui::RecordWidget;

namespace {

constexpr int LineStart = 100;

/** Traces below a text would make it hard to read. */
constexpr int PlateAlpha = 208;

void drawText(QPainter &painter, const QRect &rect, const QString &text, QColor plate)
{
    const QPainter::CompositionMode mode = painter.compositionMode();
    plate.setAlpha(PlateAlpha);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.fillRect(rect, plate);
    painter.setCompositionMode(mode);
    painter.drawText(rect, Qt::AlignCenter | Qt::TextDontClip, text);
}

void drawTexts(QPainter &painter, const QPoint &position, const QString &value, const QString &time,
               const QColor &plate)
{
    const QSize valueSize = painter.fontMetrics().boundingRect(value).size() - QSize(1, 1);
    const QSize timeSize = painter.fontMetrics().boundingRect(time).size() - QSize(1, 1);
    const QPoint valueEnd = position - QPoint(16, 4);
    const QPoint timeStart = position + QPoint(4, 16);
    drawText(painter, QRect(valueEnd - QPoint(valueSize.width(), valueSize.height()), valueEnd),
             value, plate);
    drawText(painter, QRect(timeStart, timeStart + QPoint(timeSize.width(), timeSize.height())),
             time, plate);
}

} // namespace

Crosshair::Crosshair(const Tellarix::Gui::TimeScale *timeScale, QWidget *view)
    : QWidget(view), _timeScale(timeScale)
{
    setEnabled(false);
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void Crosshair::setShown(bool show)
{
    if (show == _isShown)
        return;

    _isShown = show;
    update();
}

void Crosshair::track(const QWidget *traces, const QPoint &position)
{
    _position = mapFromGlobal(traces->mapToGlobal(position));
    _row = qobject_cast<const Trace *>(traces->parentWidget());
    if (_isShown)
        update();
}

void Crosshair::leave()
{
    _row = nullptr;
    _position = QPoint(-1, -1);
    if (_isShown)
        update();
}

void Crosshair::forget(const Trace *row)
{
    if (_row == row)
        leave();
}

void Crosshair::paintEvent(QPaintEvent *)
{
    if (!_isShown || _position.x() < 0)
        return;

    // Its own is that of a disabled widget.
    const QPalette palette = parentWidget()->palette();
    QColor color = palette.color(QPalette::Highlight);
    color.setAlpha(192);
    // Multiplied into a dark background a line would vanish; screening is the same for light.
    const bool isDark = palette.color(QPalette::Base).lightness() < 128;
    if (isDark)
        color = color.lighter(160);

    QPainter painter(this);
    painter.setPen(color);
    painter.setCompositionMode(isDark ? QPainter::CompositionMode_Screen
                                      : QPainter::CompositionMode_Multiply);
    painter.drawLine(LineStart, _position.y(), parentWidget()->width(), _position.y());
    painter.drawLine(_position.x(), 0, _position.x(), parentWidget()->height());
    drawTexts(painter, _position, valueText(), timeText(), palette.color(QPalette::Base));
}

QString Crosshair::timeText() const
{
    const QPoint position = _timeScale->mapFromGlobal(mapToGlobal(_position));
    const double seconds = position.x() / _timeScale->scale() + _timeScale->lower();
    const Tellarix::Core::Time alignment =
        _row ? _row->recordWidget()->alignment() : _timeScale->alignment();
    return QString((alignment + Tellarix::Core::TimeSpan(seconds)).iso().c_str());
}

QString Crosshair::valueText() const
{
    double value = 0.0;
    if (_row) {
        const RecordWidget *widget = _row->recordWidget();
        value =
            TraceView::crosshairValue(widget, widget->mapFromGlobal(mapToGlobal(_position)).y());
    }
    return QString::number(value, 'g', 6);
}

} // namespace Gui
} // namespace Norvu
