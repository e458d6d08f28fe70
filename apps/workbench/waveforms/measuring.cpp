// SPDX-License-Identifier: LGPL-3.0-or-later

#include "measuring.h"

#include "measuringoverlay.h"

#include <norvu/gui/multitracewidget.h>
#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/qt/records/recordwidget.h>

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>

#include <algorithm>
#include <cmath>

using namespace Tellarix;
using Norvu::Gui::MultiTraceWidget;
using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;
using Tellarix::Gui::RecordWidget;

namespace Workbench {

namespace {

// Farther away a line is nowhere near the picture.
constexpr double FarthestPixel = 1 << 20;

QString durationText(double seconds)
{
    return seconds < 1 ? QString::number(seconds, 'g', 4) : QString::number(seconds, 'f', 3);
}

/** Five digits, but whole counts up to a billion. */
QString amplitudeText(double value, const QString &unit)
{
    const double magnitude = std::abs(value);
    const bool isLarge = magnitude >= 1E4 && magnitude < 1E9;
    const QString number = QString::number(value, isLarge ? 'f' : 'g', isLarge ? 0 : 5);
    return unit.isEmpty() ? number : number + QChar(0x202f) + unit;
}

double shownScale(const RecordWidget &widget, int slot)
{
    const double *scale = widget.areScaledValuesShown() ? widget.recordScale(slot) : nullptr;
    return scale ? *scale : 1.0;
}

/** The point of a rectangle that is nearest to a point. */
QPoint pointInside(const QRect &rect, const QPoint &point)
{
    return {std::max(rect.left(), std::min(point.x(), rect.right())),
            std::max(rect.top(), std::min(point.y(), rect.bottom()))};
}

QRect mappedRect(const QWidget *widget, const QRect &rect, const QWidget *target)
{
    return {target->mapFromGlobal(widget->mapToGlobal(rect.topLeft())), rect.size()};
}

} // namespace

QVector<QPair<QString, QString>> measurementEntries(const Measurement &measurement,
                                                    const QString &unit)
{
    const QChar narrowSpace(0x202f);
    QVector<QPair<QString, QString>> entries{
        {MeasuringTool::tr("Δt"), durationText(measurement.span.length()) + narrowSpace + 's'}};
    if (measurement.frequency > 0)
        entries.append({MeasuringTool::tr("1/Δt"),
                        QString::number(measurement.frequency, 'g', 4) + narrowSpace + "Hz"});
    if (measurement.count > 0) {
        entries.append(
            {MeasuringTool::tr("peak to peak"), amplitudeText(measurement.peakToPeak, unit)});
        entries.append({MeasuringTool::tr("RMS"), amplitudeText(measurement.rms, unit)});
    }
    return entries;
}

QString measurementWarning(const Measurement &measurement)
{
    if (measurement.count == 0)
        return MeasuringTool::tr("no data");
    return measurement.hasGap ? MeasuringTool::tr("with a gap in the data") : QString();
}

MeasuringTool::MeasuringTool(TraceView *view)
    : QObject(view), _view(view), _scrollArea(view->findChild<QScrollArea *>()),
      _overlay(new MeasuringOverlay(_scrollArea->viewport())),
      _measureAction(new QAction(tr("&Measure"), this)),
      _copyAction(new QAction(tr("Copy mea&surement"), this))
{
    _measureAction->setCheckable(true);
    _measureAction->setShortcut(tr("M"));
    _measureAction->setToolTip(tr("Measure durations and amplitudes by dragging over the traces"));
    _copyAction->setShortcut(tr("Ctrl+Shift+C"));
    _copyAction->setEnabled(false);
    view->addActions({_measureAction, _copyAction});
    _overlay->hide();
    _overlay->installEventFilter(this);

    connect(_measureAction, SIGNAL(toggled(bool)), this, SLOT(turn(bool)));
    connect(_copyAction, SIGNAL(triggered()), this, SLOT(copy()));
    connect(view, SIGNAL(displayChanged(double, double, double)), this, SLOT(updateMarks()));
    connect(view, SIGNAL(alignmentChanged(Tellarix::Core::Time)), this, SLOT(updateMarks()));
    connect(_scrollArea->verticalScrollBar(), SIGNAL(valueChanged(int)), this, SLOT(updateMarks()));
    connect(_scrollArea->horizontalScrollBar(), SIGNAL(valueChanged(int)), this,
            SLOT(updateMarks()));
}

MeasuringTool::~MeasuringTool() = default;

bool MeasuringTool::isOn() const
{
    return _measureAction->isChecked();
}

void MeasuringTool::setOn(bool on)
{
    _measureAction->setChecked(on);
}

void MeasuringTool::turn(bool on)
{
    _isDragging = false;
    if (on) {
        watchRows();
        _scrollArea->viewport()->setCursor(Qt::CrossCursor);
    } else {
        ignoreRows();
        _scrollArea->viewport()->unsetCursor();
        setMeasured(nullptr);
    }
    // What was measured can still be copied, but is no news any more.
    if (!on)
        emit measured(QString());
    _overlay->setVisible(on);
    _overlay->raise();
}

void MeasuringTool::followContents()
{
    _isDragging = false;
    if (isOn()) {
        ignoreRows();
        watchRows();
    }
    if (_row)
        _pointer = overview() ? overview()->rowRect(_row).center()
                              : _row->recordWidget()->canvasRect().center();
    _overlay->raise();
    updateMarks();
}

/** The overview while it stands in the place of the rows, else null. */
MultiTraceWidget *MeasuringTool::overview() const
{
    return qobject_cast<MultiTraceWidget *>(_scrollArea->widget());
}

bool MeasuringTool::isTurned() const
{
    return overview() && overview()->orientation() == Qt::Horizontal;
}

void MeasuringTool::watchRows()
{
    // The contents tell of rows that come later.
    _contents = _scrollArea->widget();
    _contents->installEventFilter(this);
    for (const Trace *row : _view->items())
        row->recordWidget()->installEventFilter(this);
}

void MeasuringTool::ignoreRows()
{
    if (_contents)
        _contents->removeEventFilter(this);
    _contents = nullptr;
    for (const Trace *row : _view->items())
        row->recordWidget()->removeEventFilter(this);
}

bool MeasuringTool::eventFilter(QObject *watched, QEvent *event)
{
    auto *widget = qobject_cast<QWidget *>(watched);
    if (watched == _contents) {
        if (event->type() == QEvent::ChildPolished)
            watchRows();
        else if (event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest)
            updateMarks();
        if (!overview())
            return false;
        // The overview itself hears of its size only behind its filters.
        if (event->type() == QEvent::Resize)
            QTimer::singleShot(0, this, SLOT(updateMarks()));
    }

    if (watched == _overlay && event->type() == QEvent::Resize)
        updateMarks();
    if (!widget || watched == _overlay)
        return false;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        return press(widget, static_cast<QMouseEvent *>(event));
    case QEvent::MouseMove:
        return move(static_cast<QMouseEvent *>(event));
    case QEvent::MouseButtonRelease:
        return release(static_cast<QMouseEvent *>(event));
    default:
        return false;
    }
}

bool MeasuringTool::move(QMouseEvent *event)
{
    _isDragging = _isDragging && event->buttons().testFlag(Qt::LeftButton);
    if (_isDragging)
        dragTo(event->globalPos());
    return _isDragging;
}

bool MeasuringTool::release(QMouseEvent *event)
{
    const bool wasDragging = _isDragging;
    if (event->button() == Qt::LeftButton)
        _isDragging = false;
    return wasDragging;
}

bool MeasuringTool::press(const QWidget *widget, const QMouseEvent *event)
{
    const auto *traces = qobject_cast<const RecordWidget *>(widget);
    const QRect canvas = traces ? traces->canvasRect() : overview()->drawingArea();
    if (event->button() != Qt::LeftButton || !canvas.contains(event->pos()))
        return _isDragging;

    _isDragging = true;
    _anchor = secondsAt(rowAt(event->globalPos()), event->globalPos());
    setMeasured(nullptr);
    return true;
}

/** Seconds relative to a row's alignment, at the nearest point where traces are. */
double MeasuringTool::secondsAt(const Trace *row, const QPoint &globalPosition) const
{
    if (const MultiTraceWidget *widget = overview())
        return widget->secondsAt(
            pointInside(widget->drawingArea(), widget->mapFromGlobal(globalPosition)));
    if (!row)
        return 0;
    const RecordWidget *widget = row->recordWidget();
    const QPoint inside = pointInside(widget->canvasRect(), widget->mapFromGlobal(globalPosition));
    return (widget->unmapTime(inside.x()) - widget->alignment()).length();
}

Trace *MeasuringTool::rowAt(const QPoint &globalPosition) const
{
    if (const MultiTraceWidget *widget = overview()) {
        Trace *row = widget->rowAt(
            pointInside(widget->drawingArea(), widget->mapFromGlobal(globalPosition)));
        return row ? row : _row;
    }
    const QList<Trace *> rows = _view->items();
    const auto row = std::find_if(rows.begin(), rows.end(), [&](const Trace *candidate) {
        const int y = candidate->mapFromGlobal(globalPosition).y();
        return candidate->isVisible() && y >= 0 && y < candidate->height();
    });
    return row == rows.end() ? _row : *row;
}

void MeasuringTool::dragTo(const QPoint &globalPosition)
{
    Trace *row = rowAt(globalPosition);
    if (!row)
        return;

    _end = secondsAt(row, globalPosition);
    _pointer = overview() ? overview()->mapFromGlobal(globalPosition)
                          : row->recordWidget()->mapFromGlobal(globalPosition);
    setMeasured(row);
}

/** Measures a row between the cursors; null takes the cursors away, but the last values stay. */
void MeasuringTool::setMeasured(Trace *row)
{
    if (row != _row) {
        if (_row) {
            disconnect(_row->recordWidget(), nullptr, this, nullptr);
            disconnect(_row, nullptr, this, nullptr);
        }
        _row = row;
        if (row) {
            connect(row->recordWidget(), SIGNAL(traceUpdated(Tellarix::Gui::RecordWidget *)), this,
                    SLOT(remeasure()));
            connect(row, SIGNAL(destroyed()), this, SLOT(forgetRow()));
        }
    }
    if (row) {
        const Core::Time alignment = row->recordWidget()->alignment();
        _window = Core::TimeWindow(alignment + Core::TimeSpan(std::min(_anchor, _end)),
                                   alignment + Core::TimeSpan(std::max(_anchor, _end)));
        remeasure();
    }
    updateMarks();
}

void MeasuringTool::forgetRow()
{
    _row = nullptr;
    updateMarks();
}

int MeasuringTool::measuredSlot() const
{
    // The overview shows the first slot alone.
    if (overview())
        return 0;
    const RecordWidget *widget = _row->recordWidget();
    if (widget->drawMode() == RecordWidget::InRows) {
        for (int i = 0; i < widget->slotCount(); ++i) {
            const int depth = _pointer.y() - widget->streamYPos(i);
            if (depth >= 0 && depth < widget->streamHeight(i))
                return i;
        }
    }
    return widget->currentRecords();
}

QString MeasuringTool::unit() const
{
    const QString unit = _row->recordWidget()->recordUnit(measuredSlot());
    return unit.isEmpty() ? tr("counts") : unit;
}

void MeasuringTool::remeasure()
{
    if (!_row)
        return;

    const RecordWidget *widget = _row->recordWidget();
    const RecordSequence *records = widget->displayedRecords(measuredSlot());
    _measurement = Measurement();
    _measurement.span = _window.length();
    if (records)
        _measurement = measure(*records, _window, shownScale(*widget, measuredSlot()));

    QString text = _row->label();
    for (const auto &entry : measurementEntries(_measurement, unit()))
        text += QStringLiteral("   ") + entry.first + QChar(0xa0) + entry.second;
    const QString warning = measurementWarning(_measurement);
    if (!warning.isEmpty())
        text += QStringLiteral("   ") + warning;
    _copyAction->setEnabled(true);
    if (text == _text)
        return;

    _text = text;
    emit measured(text);
    if (!_isDragging)
        updateMarks();
}

MeasuringTool::Places MeasuringTool::placesInRows() const
{
    const RecordWidget *widget = _row->recordWidget();
    const QWidget *contents = _scrollArea->widget();
    const QRect canvas = mappedRect(widget, widget->canvasRect(), _overlay);
    const QRect rows = mappedRect(contents, contents->rect(), _overlay);
    const int left = canvas.left() - widget->canvasOffset();
    return {QRect(canvas.left(), rows.top(), canvas.width(), rows.height()), canvas,
            left + double(widget->mapTime(_window.startTime())),
            left + double(widget->mapTime(_window.endTime()))};
}

MeasuringTool::Places MeasuringTool::placesInOverview() const
{
    const MultiTraceWidget *widget = overview();
    const QPoint origin = mappedRect(widget, widget->rect(), _overlay).topLeft();
    const int start = isTurned() ? origin.y() : origin.x();
    const auto pixelOf = [&](const Core::Time &time) {
        const double seconds = (time - _row->recordWidget()->alignment()).length();
        return start + std::clamp(widget->pixelOf(seconds), -FarthestPixel, FarthestPixel);
    };
    return {widget->drawingArea().translated(origin), widget->rowRect(_row).translated(origin),
            pixelOf(_window.startTime()), pixelOf(_window.endTime())};
}

void MeasuringTool::updateMarks()
{
    MeasuringMarks marks;
    if (_row && isOn()) {
        const Places places = overview() ? placesInOverview() : placesInRows();
        const QWidget *pointed = overview() ? static_cast<QWidget *>(overview())
                                            : static_cast<QWidget *>(_row->recordWidget());
        const QPoint pointer = _overlay->mapFromGlobal(pointed->mapToGlobal(_pointer));
        const int first = static_cast<int>(std::floor(places.first));
        const int last = static_cast<int>(std::floor(places.last));
        marks.row = places.row;
        marks.area = places.area & _overlay->rect();
        marks.isTurned = isTurned();
        marks.anchor = _anchor <= _end ? first : last;
        marks.end = _anchor <= _end ? last : first;
        marks.pointer = isTurned() ? pointer.x() : pointer.y();
        marks.title = _row->label();
        // A panel without its row would seem to belong to another one.
        if (places.row.intersects(_overlay->rect()))
            marks.entries = measurementEntries(_measurement, unit());
        marks.warning = measurementWarning(_measurement);
    }
    _overlay->setMarks(marks);
}

void MeasuringTool::copy() const
{
    if (_text.isEmpty())
        return;

    QGuiApplication::clipboard()->setText(
        tr("%1\tfrom %2\tto %3")
            .arg(QString(_text).replace("   ", "\t"),
                 QString::fromStdString(_window.startTime().iso()),
                 QString::fromStdString(_window.endTime().iso())));
}

} // namespace Workbench
