// SPDX-License-Identifier: LGPL-3.0-or-later

#include "pointerreport.h"

#include "bench/rowaddition.h"
#include "bench/tracerows.h"
#include "timetext.h"

#include <norvu/gui/multitracewidget.h>
#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/core/records/numericarray.h>
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

QString PointerReport::timeAndSample(const Gui::RecordWidget &traces, const Core::Time &time) const
{
    const int slot = traces.currentRecords();
    const RecordSequence *records = traces.displayedRecords(slot);
    const std::optional<double> sample = records ? sampleAt(*records, time) : std::nullopt;
    const double *scale = traces.areScaledValuesShown() ? traces.recordScale(slot) : nullptr;
    const QString text = timeText(time, 1 / traces.timeScale());
    return sample ? text + "  ·  " +
                        tr("sample %1")
                            .arg(valueText(*sample * (scale ? *scale : 1), traces.recordUnit(slot)))
                  : text;
}

QString PointerReport::textAt(const Gui::RecordWidget &traces, const QPoint &position) const
{
    if (!traces.canvasRect().contains(position))
        return QString();
    QString text = timeAndSample(traces, traces.unmapTime(position.x()));
    const RecordSequence *records = traces.displayedRecords(traces.currentRecords());
    if (records && !records->isEmpty())
        text += "  ·  " + tr("pointer at %1")
                              .arg(valueText(TraceView::crosshairValue(&traces, position.y()),
                                             traces.recordUnit(traces.currentRecords())));
    const RowAddition *addition = _rows->addition();
    const QString added = addition ? addition->textAt(&traces, position) : QString();
    return added.isEmpty() ? text : text + "  ·  " + added;
}

/** Rows are told apart as long as they don't overlap. */
QString PointerReport::textInOverview(const MultiTraceWidget &overview,
                                      const QPoint &position) const
{
    if (overview.orientation() == Qt::Horizontal)
        return QString();
    const Gui::TimeScale *scale = _view->timeScale();
    const int x = scale->mapFromGlobal(overview.mapToGlobal(position)).x();
    const Core::Time time = scale->timeAt(scale->pixelToValue(x));
    const int y = position.y() - Trace::Padding();
    for (const Trace *row : _view->items()) {
        const Gui::RecordWidget *traces = row->recordWidget();
        const auto *info = traces->traceInfo(0, traces->displayedRecords(0) != traces->records(0));
        if (info && !row->isTakenOut() && y >= info->pos && y < info->pos + info->height)
            return row->label() + "  " + timeAndSample(*traces, time);
    }
    return timeText(time, 1 / scale->scale());
}

} // namespace Workbench
