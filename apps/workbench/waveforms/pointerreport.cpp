// SPDX-License-Identifier: LGPL-3.0-or-later

#include "pointerreport.h"

#include "bench/rowaddition.h"
#include "bench/tracerows.h"
#include "timetext.h"

#include <norvu/gui/multitracewidget.h>
#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/core/records/numericarray.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/recordsequence.h>
#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/records/timescale.h>

#include <QMouseEvent>

#include <algorithm>
#include <cmath>

using namespace Tellarix;
using Norvu::Gui::MultiTraceWidget;
using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

namespace Workbench {

namespace {

constexpr int Digits = 6;
const QString Separator = QStringLiteral("  ·  ");

double shownScale(const Gui::RecordWidget &traces, int slot)
{
    const double *scale = traces.areScaledValuesShown() ? traces.recordScale(slot) : nullptr;
    return scale ? *scale : 1;
}

QString valueText(double value, const QString &unit)
{
    return QString::number(value, 'g', Digits) + ' ' +
           (unit.isEmpty() ? PointerReport::tr("counts") : unit);
}

} // namespace

std::optional<double> sampleAt(const RecordSequence &records, const Core::Time &time)
{
    const int index = records.firstEndingAfter(time);
    if (index >= records.size())
        return std::nullopt;
    const Record *record = records.at(index);
    if (!record->data() || record->sampleCount() == 0 || record->samplingFrequency() <= 0 ||
        time < record->startTime())
        return std::nullopt;
    const double distance = (time - record->startTime()).length() * record->samplingFrequency();
    const int nearest =
        std::min(static_cast<int>(std::lround(distance)), record->sampleCount() - 1);
    return record->data()->value(nearest);
}

PointerReport::PointerReport(TraceRows *rows)
    : QObject(rows->view()), _rows(rows), _view(rows->view())
{}

void PointerReport::watch(Gui::RecordWidget *traces)
{
    traces->installEventFilter(this);
}

void PointerReport::watch(MultiTraceWidget *overview)
{
    overview->setMouseTracking(true);
    overview->installEventFilter(this);
}

bool PointerReport::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Leave)
        emit changed(QString());
    if (event->type() != QEvent::MouseMove)
        return false;
    const QPoint position = static_cast<QMouseEvent *>(event)->pos();
    if (const auto *traces = qobject_cast<Gui::RecordWidget *>(watched))
        emit changed(textAt(*traces, position));
    else if (const auto *overview = qobject_cast<MultiTraceWidget *>(watched))
        emit changed(textInOverview(*overview, position));
    return false;
}

QString PointerReport::timeAndSample(const Gui::RecordWidget &traces, int slot,
                                     const Core::Time &time, double secondsPerPixel) const
{
    const RecordSequence *records = traces.displayedRecords(slot);
    const std::optional<double> sample = records ? sampleAt(*records, time) : std::nullopt;
    const QString text = timeText(time, secondsPerPixel);
    return sample ? text + Separator +
                        tr("sample %1")
                            .arg(valueText(*sample * shownScale(traces, slot),
                                           traces.recordUnit(slot)))
                  : text;
}

QString PointerReport::heightText(double value, const QString &unit) const
{
    return Separator + tr("pointer at %1").arg(valueText(value, unit));
}

QString PointerReport::textAt(const Gui::RecordWidget &traces, const QPoint &position) const
{
    const RowAddition *addition = _rows->addition();
    const QString added = addition ? addition->textAt(&traces, position) : QString();
    const bool isInCanvas = traces.canvasRect().contains(position);
    if (!isInCanvas && added.isEmpty())
        return QString();
    const int slot = traces.currentRecords();
    QString text =
        timeAndSample(traces, slot, traces.unmapTime(position.x()), 1 / traces.timeScale());
    const RecordSequence *records = traces.displayedRecords(slot);
    const bool hasAmplitude = isInCanvas && (!addition || addition->areAmplitudesShown(&traces));
    if (hasAmplitude && records && !records->isEmpty())
        text +=
            heightText(TraceView::crosshairValue(&traces, position.y()), traces.recordUnit(slot));
    return added.isEmpty() ? text : text + Separator + added;
}

QString PointerReport::textInOverview(const MultiTraceWidget &overview,
                                      const QPoint &position) const
{
    if (!overview.drawingArea().contains(position))
        return QString();
    const double seconds = overview.secondsAt(position);
    const double secondsPerPixel = overview.secondsAt(position + QPoint(1, 1)) - seconds;
    const Trace *row = overview.rowAt(position);
    if (!row)
        return timeText(_view->timeScale()->timeAt(seconds), secondsPerPixel);
    const Gui::RecordWidget &traces = *row->recordWidget();
    return row->label() + "  " +
           timeAndSample(traces, 0, traces.alignment() + Core::TimeSpan(seconds), secondsPerPixel) +
           heightText(overview.sampleValueAt(row, position) * shownScale(traces, 0),
                      traces.recordUnit(0));
}

} // namespace Workbench
