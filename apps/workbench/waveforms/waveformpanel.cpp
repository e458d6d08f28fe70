// SPDX-License-Identifier: LGPL-3.0-or-later

#include "waveformpanel.h"

#include "datastretches.h"
#include "measuring.h"
#include "rowmargin.h"
#include "sourceloader.h"
#include "spectrograms/spectrogramrow.h"
#include "spectrograms/spectrograms.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/core/math/filterparser.h>
#include <tellarix/core/records/ringbuffer.h>
#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/records/timescale.h>

#include <QContextMenuEvent>
#include <QEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QVBoxLayout>

#include <algorithm>
#include <set>

using namespace Tellarix;
using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

namespace Workbench {

namespace {

/** From so many rows on, header lines would take more room than traces. */
constexpr int ManyRows = 12;
constexpr int CompactPadding = 1;
constexpr int NormalRowHeight = 48;
constexpr int SpectrogramRowHeight = 96;

QString stationOf(const Trace *row)
{
    return row->data(Norvu::Gui::TraceNetworkCode).toString() + '.' +
           row->data(Norvu::Gui::TraceStationCode).toString();
}

/** Times relative to the day of the data keep all their digits, however far it is zoomed in. */
Core::Time dayOf(const Core::Time &time)
{
    const Core::TimeFields fields = time.fields();
    return Core::Time(fields.year, fields.month, fields.day);
}

/** The different sampling frequencies of all rows in ascending order. */
std::set<double> samplingFrequencies(const TraceView &view)
{
    std::set<double> rates;
    for (const Trace *row : view.items()) {
        const RecordSequence *records = row->recordWidget()->records(0);
        if (records && !records->isEmpty())
            rates.insert(records->front()->samplingFrequency());
    }
    return rates;
}

QString timeText(const Core::Time &time)
{
    return QString::fromStdString(time.toString("%Y-%m-%d %H:%M:%S"));
}

} // namespace

WaveformPanel::WaveformPanel(QWidget *parent)
    : QWidget(parent), _view(new TraceView(this, Qt::WindowFlags(), nullptr, true)),
      _measuringTool(new MeasuringTool(_view)), _spectrograms(new Spectrograms(_view))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(_view);

    _view->setBackgroundFiltering(true);
    connect(_view, SIGNAL(loadDataRequested()), this, SLOT(reload()));
    connect(_view, SIGNAL(displayChanged(double, double, double)), this, SLOT(updateRangeText()));
    connect(_view, SIGNAL(layoutOrContentChanged()), this, SLOT(updateMarginsOfRest()));
    connect(_spectrograms, SIGNAL(shownChanged()), this, SLOT(updateMargins()));
    connect(_spectrograms, SIGNAL(axisChanged()), this, SLOT(updateMargins()));
}

WaveformPanel::Outcome WaveformPanel::open(const QStringList &sources)
{
    Outcome outcome;
    const int before = _view->count();
    for (const QString &source : sources)
        load(source, outcome);
    _sources += sources;
    _sources.removeDuplicates();
    markLoaded();

    adoptRows(before);
    if (before == 0 && _view->count() >= ManyRows)
        setCompact(true);
    _view->sortView();

    collectStretches();
    if (!_stretches.isEmpty()) {
        if (before == 0)
            _view->setAlignment(dayOf(_stretches.first().startTime()));
        _view->setVisibleTimeWindow(withMargins(_stretches.first()));
    }
    updateRangeText();
    return outcome;
}

/** Makes the rows from position @p first on, which a loader has appended, look like the others. */
void WaveformPanel::adoptRows(int first)
{
    const QList<Trace *> rows = _view->items().mid(first);
    for (Trace *row : rows)
        dress(row);
    _spectrograms->adopt(rows);
    updateMargins();
}

void WaveformPanel::load(const QString &source, Outcome &outcome)
{
    SourceLoader loader(source.toStdString());
    QString error;
    if (!loader.isUsable(&error)) {
        outcome.ok = false;
        outcome.messages.append(error);
        return;
    }
    if (!loader.load(_view, _window))
        outcome.ok = false;
    outcome.messages += loader.messages();
    if (loader.textCount() > 0)
        outcome.messages.append(tr("%1: records of text (%2), which can't be drawn")
                                    .arg(source)
                                    .arg(loader.textCount()));
    if (loader.waveformCount() == 0) {
        outcome.ok = false;
        outcome.messages.append(tr("%1: no waveforms in it").arg(source));
    }
}

QStringList WaveformPanel::setFilter(const QString &text)
{
    const std::string definition = text.toStdString();
    QStringList problems;
    for (const double rate : samplingFrequencies(*_view)) {
        const std::string problem = Math::Filtering::filterProblem(definition, rate);
        if (!problem.empty())
            problems.append(tr("Streams at %1 Hz: %2").arg(rate).arg(problem.c_str()));
    }
    _view->setFilter(Math::Filtering::parseFilter<double>(definition).release());
    return problems;
}

void WaveformPanel::alignTo(const Core::Time &time)
{
    const Core::TimeWindow visible = _view->visibleTimeWindow();
    _view->setAlignment(time);
    _view->setVisibleTimeWindow(visible);
}

void WaveformPanel::reload()
{
    prepareResetRows();
    const int before = _view->count();
    Outcome outcome;
    for (const QString &source : _sources)
        load(source, outcome);
    adoptRows(before);
    markLoaded();
    collectStretches();
    updateRangeText();
    emit problems(outcome.messages);
}

/** Rows that were reset have lost their sequences, but still know their streams. */
void WaveformPanel::prepareResetRows()
{
    for (Trace *row : _view->items()) {
        for (const auto &binding : _view->bindingsFor(row)) {
            if (!row->recordWidget()->records(binding.second))
                row->recordWidget()->setRecords(binding.second, new RingBuffer(-1, 0.5), true);
        }
    }
}

void WaveformPanel::markLoaded()
{
    for (Trace *row : _view->items()) {
        if (!row->isDataRequested())
            _view->subscribedToData(row);
    }
    _view->updateToolbar();
}

void WaveformPanel::clear()
{
    _sources.clear();
    _view->clear();
    _stretches.clear();
    _distancesKm.clear();
    updateRangeText();
}

void WaveformPanel::dress(Trace *row)
{
    Gui::RecordWidget *widget = row->recordWidget();
    widget->installEventFilter(this);

    QString name = row->label();
    const auto distance = _distancesKm.constFind(stationOf(row));
    if (distance != _distancesKm.constEnd()) {
        const QString text = tr("%1 km").arg(*distance, 0, 'f', 1);
        row->setData(Norvu::Gui::TraceDistance, *distance);
        row->setDescription(text);
        name += "  " + text;
    }

    widget->setRecordLabel(0, _compact ? name : QString());
    row->setHeaderVisible(!_compact);
    if (_compact)
        row->setVerticalPadding(CompactPadding, 0);
    else
        row->restoreVerticalSpacing();
}

void WaveformPanel::setCompact(bool compact)
{
    if (compact == _compact)
        return;

    _compact = compact;
    setRowHeight(compact ? fontMetrics().height() + 2 * Trace::Padding() : NormalRowHeight);
    for (Trace *row : _view->items())
        dress(row);
    emit compactChanged(compact);
}

void WaveformPanel::setLocalTimeShown(bool show)
{
    _view->timeScale()->setLocalTimeShown(show);
}

void WaveformPanel::setRulersShown(bool show)
{
    if (show == _rulersShown)
        return;

    _rulersShown = show;
    updateMargins();
}

void WaveformPanel::updateMargins()
{
    for (Trace *row : _view->items())
        updateMargin(row);
    if (_spectrograms->isAnyShown() != _hasSpectrograms) {
        const int height = _hasSpectrograms ? _plainRowHeight : _view->minimumRowHeight();
        _hasSpectrograms = !_hasSpectrograms;
        setRowHeight(height);
    }
    updateMarginWidths();
}

/** The last row with a spectrogram may have been taken away. */
void WaveformPanel::updateMarginsOfRest()
{
    if (_hasSpectrograms && !_spectrograms->isAnyShown())
        updateMargins();
}

/** Traces, and the time scale below them, end at the same pixel. */
void WaveformPanel::updateMarginWidths()
{
    int scaleWidth = 0;
    for (const Trace *row : _view->items()) {
        if (const auto *margin = static_cast<RowMargin *>(row->extraWidget()))
            scaleWidth = std::max(scaleWidth, margin->scaleWidth());
    }
    int width = 0;
    for (Trace *row : _view->items()) {
        if (auto *margin = static_cast<RowMargin *>(row->extraWidget())) {
            margin->setScaleWidth(scaleWidth);
            width = margin->sizeHint().width() + Trace::Spacing();
        }
    }
    if (width == _view->extraSpacing())
        return;
    _view->setExtraSpacing(width);
    _view->setTimeRange(_view->tmin(), _view->tmax());
}

void WaveformPanel::updateMargin(Trace *row)
{
    const bool hasScale = _spectrograms->isAnyShown();
    if (!_rulersShown && !hasScale) {
        row->setExtraWidget(nullptr);
        return;
    }
    if (!row->extraWidget()) {
        row->setExtraWidget(new RowMargin(row));
        connect(row->extraWidget(), SIGNAL(scaleWidthChanged()), this, SLOT(updateMarginWidths()));
    }
    auto *margin = static_cast<RowMargin *>(row->extraWidget());
    margin->setRulerShown(_rulersShown);
    margin->setScaleShown(hasScale);
}

/** Spectrograms need some room to be read. */
void WaveformPanel::setRowHeight(int plainHeight)
{
    _plainRowHeight = plainHeight;
    _view->setMinimumRowHeight(_hasSpectrograms ? std::max(plainHeight, SpectrogramRowHeight)
                                                : plainHeight);
}

void WaveformPanel::collectStretches()
{
    QVector<Core::TimeWindow> windows;
    for (const Trace *row : _view->items()) {
        const Gui::RecordWidget *widget = row->recordWidget();
        for (int slot = 0; slot < widget->slotCount(); ++slot) {
            if (!widget->records(slot))
                continue;
            for (const RecordSpan &span : widget->records(slot)->spans())
                windows.append(Core::TimeWindow(span.start, span.end));
        }
    }
    _stretches = dataStretches(windows);
}

void WaveformPanel::showAllData()
{
    _view->setCoveredTimeRange();
}

void WaveformPanel::showNextStretch()
{
    showNeighbour(1);
}

void WaveformPanel::showPreviousStretch()
{
    showNeighbour(-1);
}

void WaveformPanel::showNeighbour(int step)
{
    const int index = neighbouringStretch(_stretches, _view->visibleTimeWindow(), step);
    if (index >= 0)
        _view->setVisibleTimeWindow(withMargins(_stretches[index]));
}

void WaveformPanel::updateRangeText()
{
    if (_view->count() == 0) {
        emit rangeText(QString());
        return;
    }
    const Core::TimeWindow visible = _view->visibleTimeWindow();
    QString text =
        tr("%1 to %2 UTC").arg(timeText(visible.startTime()), timeText(visible.endTime()));
    if (_stretches.size() > 1) {
        for (int i = 0; i < _stretches.size(); ++i) {
            if (_stretches[i].overlaps(visible)) {
                text += tr("  ·  stretch %1 of %2").arg(i + 1).arg(_stretches.size());
                break;
            }
        }
    }
    emit rangeText(text);
}

void WaveformPanel::contextMenuEvent(QContextMenuEvent *event)
{
    const QList<Trace *> rows = _view->items();
    const auto row = std::find_if(rows.begin(), rows.end(), [event](const Trace *item) {
        return item->visibleRegion().contains(item->mapFromGlobal(event->globalPos()));
    });
    if (row == rows.end())
        return;
    if (!(*row)->isSelected())
        _view->select(*row);
    QMenu::exec(_rowActions, event->globalPos(), nullptr, this);
}

QString WaveformPanel::textAt(Gui::RecordWidget *widget, const QPoint &position) const
{
    const QString text = widget->statusText(position);
    const auto *row = qobject_cast<SpectrogramRow *>(widget);
    const QString spectrogram = row ? row->spectrogramText(position) : QString();
    return spectrogram.isEmpty() ? text : text + "  ·  " + spectrogram;
}

bool WaveformPanel::eventFilter(QObject *watched, QEvent *event)
{
    auto *widget = qobject_cast<Gui::RecordWidget *>(watched);
    if (widget && event->type() == QEvent::MouseMove) {
        const QPoint position = static_cast<QMouseEvent *>(event)->pos();
        emit pointerText(textAt(widget, position));
    } else if (widget && event->type() == QEvent::Leave) {
        emit pointerText(QString());
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace Workbench
