// SPDX-License-Identifier: LGPL-3.0-or-later

#include "waveforms.h"

#include "bench/bench.h"
#include "bench/rowaddition.h"
#include "bench/stations.h"
#include "bench/tracerows.h"
#include "datastretches.h"
#include "datastrip.h"
#include "measuring.h"
#include "pointerreport.h"
#include "rowcommands.h"
#include "rowmargins.h"
#include "rownames.h"
#include "rowunits.h"
#include "rowvisibility.h"
#include "sourcequeue.h"
#include "timegestures.h"
#include "timetext.h"
#include "viewhistory.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/core/math/filterparser.h>
#include <tellarix/core/records/ringbuffer.h>
#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/records/timescale.h>

#include <QAbstractButton>
#include <QAction>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QInputDialog>
#include <QLabel>
#include <QMenu>
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
/** Why a row isn't filtered. */
constexpr int MisfitKey = 6;

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

} // namespace

Waveforms::Waveforms(Bench *bench, QWidget *parent)
    : QWidget(parent), _bench(bench), _view(new TraceView(this, Qt::WindowFlags(), nullptr, true)),
      _margins(new RowMargins(_view, bench->rows())), _measuringTool(new MeasuringTool(_view)),
      _queue(new SourceQueue(bench, _view, this)), _history(new ViewHistory(_view)),
      _visibility(new RowVisibility(_view, &_coverage)), _names(new RowNames(_view)),
      _commands(new RowCommands(_view, _visibility)), _gestures(new TimeGestures(_view)),
      _strip(new DataStrip(_view, &_coverage, this)), _hint(new QLabel(this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(_view);
    layout->addWidget(_strip);
    layout->addWidget(_visibility->notice(), 0, Qt::AlignCenter);
    connectTime();
    _hint->setAlignment(Qt::AlignCenter);
    _hint->setWordWrap(true);
    _hint->setBackgroundRole(QPalette::Base);
    _hint->setAutoFillBackground(true);
    updateHint();

    _bench->rows()->setView(_view);
    _pointer = new PointerReport(_bench->rows());
    connect(_pointer, SIGNAL(changed(QString)), this, SIGNAL(pointerText(QString)));
    _view->setBackgroundFiltering(true);
    connect(_view, SIGNAL(loadDataRequested()), this, SLOT(reload()));
    connect(_view, SIGNAL(displayChanged(double, double, double)), this, SLOT(updateRangeText()));
    connect(_bench->stations(), SIGNAL(changed()), this, SLOT(updateUnits()));
    connect(_commands, SIGNAL(closed()), this, SLOT(collectCoverage()));
    connect(_queue, SIGNAL(advanced()), this, SLOT(showArrivals()));
    connect(_queue, SIGNAL(ended(QStringList)), this, SLOT(endLoad(QStringList)));
}

void Waveforms::updateHint()
{
    _hint->setText(isLoading()
                       ? tr("Loading…")
                       : tr("Nothing is open.\n\nOpen files (Ctrl+O), a folder "
                            "(Ctrl+Shift+O) or a URL (Ctrl+L), drop files here,\nor look at "
                            "the demonstration in the menu File."));
    _hint->setVisible(stretches().isEmpty());
    _hint->raise();
}

void Waveforms::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    _hint->setGeometry(rect());
}

void Waveforms::connectTime()
{
    _visibility->watch(_view->timeScale());
    _visibility->watch(_strip);
    connect(_strip, SIGNAL(windowRequested(Tellarix::Core::TimeWindow)), this,
            SLOT(showWindow(Tellarix::Core::TimeWindow)));
    connect(_gestures, SIGNAL(zoomRequested(Tellarix::Core::TimeWindow)), this,
            SLOT(leapTo(Tellarix::Core::TimeWindow)));

    // Whatever zooms out ends at all data.
    disconnect(_view->timeScale(), SIGNAL(rangeChangeRequested(double, double)), _view, nullptr);
    connect(_view->timeScale(), SIGNAL(rangeChangeRequested(double, double)), this,
            SLOT(showRange(double, double)));
    for (QAction *action : _view->controlActions()) {
        if (action->shortcut() != QKeySequence("<"))
            continue;
        disconnect(action, SIGNAL(triggered()), _view, nullptr);
        connect(action, SIGNAL(triggered()), this, SLOT(zoomOut()));
    }
}

bool Waveforms::open(const QStringList &sources)
{
    _sources += sources;
    _sources.removeDuplicates();
    if (!isLoading())
        _load = Load();
    _load.isShown = true;
    return load(sources);
}

bool Waveforms::isLoading() const
{
    return _queue->isLoading();
}

bool Waveforms::load(const QStringList &sources)
{
    if (!isLoading()) {
        const QList<Trace *> rows = _view->items();
        _load.others = _load.dressed = QSet<Trace *>(rows.begin(), rows.end());
        _load.isFirst = rows.isEmpty();
        if (!_load.isFirst)
            _load.window = _view->visibleTimeWindow();
    }
    QStringList messages;
    for (const QString &source : sources) {
        QString error;
        if (!_queue->add(source, &error))
            messages.append(error);
    }
    _queue->begin();
    updateHint();
    if (!messages.isEmpty())
        emit problems(messages);
    return messages.isEmpty();
}

/** Rows fill as records come. The first ones to come are brought into view, and again whenever
 *  there are twice as many, since it takes a look at all of them. */
void Waveforms::showArrivals()
{
    dressNewRows();
    const int count = _queue->recordCount();
    if (!_load.isShown || !_load.isFirst || count == 0 || count < 2 * _load.shownRecords)
        return;
    _load.shownRecords = count;
    _view->updateRecords();
    showFirstStretch();
}

bool Waveforms::hasUserMoved() const
{
    return _load.window.valid() && isOtherView(_load.window, _view->visibleTimeWindow());
}

void Waveforms::showFirstStretch()
{
    collectCoverage();
    if (stretches().isEmpty() || hasUserMoved())
        return;
    if (_load.isFirst)
        _view->setAlignment(dayOf(stretches().first().startTime()));
    _view->setVisibleTimeWindow(withMargins(stretches().first()));
    _visibility->update();
    _load.window = _view->visibleTimeWindow();
}

/** The view stays where there is something new, or where the user has gone meanwhile. */
void Waveforms::showNewData()
{
    collectCoverage();
    const auto arrivals = dataStretches(_queue->arrivals());
    const Core::TimeWindow visible = _view->visibleTimeWindow();
    const bool isInView = std::any_of(arrivals.begin(), arrivals.end(), [&](const auto &stretch) {
        return stretch.overlaps(visible);
    });
    if (arrivals.isEmpty() || isInView || hasUserMoved())
        return;
    leapTo(withMargins(arrivals.first()));
}

void Waveforms::endLoad(const QStringList &messages)
{
    const QList<Trace *> rows = dressNewRows();
    markLoaded();
    if (_bench->rows()->addition())
        _bench->rows()->addition()->adopt(rows);
    updateFilterFit();
    _margins->update();
    if (!_isCompactChosen)
        applyCompact(_view->count() >= ManyRows);
    if (_load.isShown) {
        _commands->sort();
        _load.isFirst ? showFirstStretch() : showNewData();
    } else
        collectCoverage();
    if (_load.alignment.valid())
        alignTo(_load.alignment);
    _load = Load();
    _history->keep();
    updateRangeText();
    if (!messages.isEmpty())
        emit problems(messages);
}

/** Makes the rows that a loader has appended look like the others, and returns all of them; the
 * user may have taken away some of either kind meanwhile. */
QList<Trace *> Waveforms::dressNewRows()
{
    QList<Trace *> newRows;
    const int before = _load.dressed.size();
    for (Trace *row : _view->items()) {
        if (_load.others.contains(row))
            continue;
        newRows.append(row);
        if (_load.dressed.contains(row))
            continue;
        _commands->adopt(row);
        dress(row);
        fitFilter(row);
        _load.dressed.insert(row);
    }
    if (_load.dressed.size() != before)
        _margins->update();
    return newRows;
}

QStringList Waveforms::filterProblems() const
{
    QStringList problems;
    for (const double rate : samplingFrequencies(*_view)) {
        const std::string problem = Math::Filtering::filterProblem(_filterText, rate);
        if (!problem.empty())
            problems.append(tr("Streams at %1 Hz: %2").arg(rate).arg(problem.c_str()));
    }
    return problems;
}

QStringList Waveforms::setFilter(const QString &text)
{
    const std::string definition = text.toStdString();
    _filterText = definition;
    _view->setFilter(Math::Filtering::parseFilter<double>(definition).release());
    _filter = Math::Filtering::FilterDefinition();
    Math::Filtering::parseFilterDefinition(definition, _filter);
    updateFilterFit();
    return filterProblems();
}

void Waveforms::updateFilterFit()
{
    for (Trace *row : _view->items())
        fitFilter(row);
    updateUnits();
    emit filterMisfits(filterProblems());
}

/** A filter that can't work at a row's sampling frequency would make a flat line of it. */
void Waveforms::fitFilter(Trace *row)
{
    Gui::RecordWidget *widget = row->recordWidget();
    const RecordSequence *records = widget->records(0);
    if (!records || records->isEmpty())
        return;
    const QString problem = QString::fromStdString(
        Math::Filtering::filterProblem(_filterText, records->front()->samplingFrequency()));
    const bool isRaw = !problem.isEmpty();
    if (isRaw && widget->filter())
        widget->setFilter(nullptr);
    else if (!isRaw && !widget->filter() && _view->hasFilter())
        widget->setFilter(Math::Filtering::parseFilter<double>(_filterText).get());
    const bool isTold = isRaw && _view->isFilterEnabled();
    widget->setTracesPale(isTold);
    row->setData(MisfitKey, isTold ? tr("Not filtered: %1").arg(problem) : QString());
    dress(row);
}

void Waveforms::alignTo(const Core::Time &time)
{
    const Core::TimeWindow visible = _view->visibleTimeWindow();
    _view->setAlignment(time);
    _view->setVisibleTimeWindow(visible);
    if (isLoading())
        _load.alignment = time;
}

void Waveforms::reload()
{
    prepareResetRows();
    load(_sources);
}

/** Rows that were reset have lost their sequences, but still know their streams. */
void Waveforms::prepareResetRows()
{
    for (Trace *row : _view->items()) {
        for (const auto &binding : _view->bindingsFor(row)) {
            if (!row->recordWidget()->records(binding.second))
                row->recordWidget()->setRecords(binding.second, new RingBuffer(-1, 0.5), true);
        }
    }
}

void Waveforms::markLoaded()
{
    for (Trace *row : _view->items()) {
        if (!row->isDataRequested())
            _view->subscribedToData(row);
    }
    _view->updateToolbar();
}

void Waveforms::clear()
{
    _queue->cancel();
    _sources.clear();
    _view->clear();
    _coverage.clear();
    _strip->update();
    updateHint();
    _history->clear();
    _paths.clear();
    updateRangeText();
}

void Waveforms::setPaths(const QHash<QString, EventPath> &paths)
{
    if (paths == _paths)
        return;

    _paths = paths;
    for (Trace *row : _view->items())
        dress(row);
    emit pathsChanged();
}

void Waveforms::dress(Trace *row)
{
    Gui::RecordWidget *widget = row->recordWidget();
    _pointer->watch(widget);

    QString name = row->label();
    QStringList texts;
    const auto path = _paths.constFind(stationOf(*row));
    if (path != _paths.constEnd()) {
        const QString distance = tr("%1 km").arg(path->distanceKm, 0, 'f', 1);
        row->setData(Norvu::Gui::TraceDistance, path->distanceKm);
        texts.append(distance + "  " + tr("%1°").arg(path->azimuth, 0, 'f', 0));
        name += "  " + distance;
    } else if (row->data(Norvu::Gui::TraceDistance).isValid()) {
        row->setData(Norvu::Gui::TraceDistance, QVariant());
    }

    // Only rows without a header have no other place for it than the traces, which are pale then.
    const QString misfit = row->data(MisfitKey).toString();
    if (!misfit.isEmpty())
        texts.append(misfit);
    row->setLabel(row->label()); // takes a description away
    if (!texts.isEmpty())
        row->setDescription(texts.join("  ·  "));
    widget->setRecordLabel(0, _compact ? misfit : QString());

    _names->setName(row, name);
    row->setHeaderVisible(!_compact);
    if (_compact)
        row->setVerticalPadding(CompactPadding, 0);
    else
        row->restoreVerticalSpacing();
}

void Waveforms::updateUnits()
{
    bool hasChanged = false;
    for (Trace *row : _view->items()) {
        if (!updateUnit(row))
            continue;
        hasChanged = true;
        if (_bench->rows()->addition())
            _bench->rows()->addition()->followUnit(row);
    }
    // One range for all rows is one in their units.
    if (hasChanged)
        _view->updateTraceNormalization();
}

/** False if the row's units stay as they are. */
bool Waveforms::updateUnit(Trace *row)
{
    Gui::RecordWidget *widget = row->recordWidget();
    bool hasChanged = false;
    for (int slot = 0; slot < widget->slotCount(); ++slot) {
        const RecordSequence *records = widget->records(slot);
        std::optional<SampleUnit> unit =
            records ? unitOf(*records, _bench->stations()->inventory()) : std::nullopt;
        if (unit && _view->isFilterEnabled() && widget->filter())
            unit = unitBehind(_filter, *unit);

        const double *scale = widget->recordScale(slot);
        const QString text = unit ? unit->text : QString();
        if (widget->recordUnit(slot) == text && (scale ? *scale : 1) == (unit ? unit->scale : 1))
            continue;
        hasChanged = true;
        widget->setRecordUnit(slot, text);
        if (unit)
            widget->setRecordScale(slot, unit->scale);
        else
            widget->removeRecordScale(slot);
    }
    widget->showScaledValues(true);
    return hasChanged;
}

void Waveforms::setCompact(bool compact)
{
    _isCompactChosen = true;
    applyCompact(compact);
}

void Waveforms::setOverviewRoom(int pixels)
{
    _names->setForeignWidth(pixels);
}

void Waveforms::applyCompact(bool compact)
{
    if (compact == _compact)
        return;

    _compact = compact;
    _names->setShown(compact);
    _margins->setRowHeight(compact ? fontMetrics().height() + 2 * Trace::Padding()
                                   : NormalRowHeight);
    for (Trace *row : _view->items())
        dress(row);
    emit compactChanged(compact);
}

void Waveforms::setLocalTimeShown(bool show)
{
    _view->timeScale()->setLocalTimeShown(show);
}

void Waveforms::setRulersShown(bool show)
{
    _margins->setRulersShown(show);
}

void Waveforms::collectCoverage()
{
    _coverage.collect(*_view);
    _strip->update();
    updateHint();
    _visibility->update();
}

void Waveforms::showAllData()
{
    _history->keep();
    _view->setCoveredTimeRange();
    _visibility->update();
}

void Waveforms::showNextStretch()
{
    showNeighbour(1);
}

void Waveforms::showPreviousStretch()
{
    showNeighbour(-1);
}

void Waveforms::showNeighbour(int step)
{
    const int index = neighbouringStretch(stretches(), _view->visibleTimeWindow(), step);
    if (index >= 0)
        leapTo(withMargins(stretches()[index]));
}

void Waveforms::showRange(double lower, double upper)
{
    const Gui::TimeScale *scale = _view->timeScale();
    showWindow({scale->timeAt(lower), scale->timeAt(upper)});
}

void Waveforms::showWindow(const Core::TimeWindow &window)
{
    const Core::TimeWindow extent = _coverage.extent();
    _view->setVisibleTimeWindow(limitedZoom(window, _view->visibleTimeWindow(),
                                            extent.isEmpty() ? extent : withMargins(extent)));
}

void Waveforms::zoomOut()
{
    const double half = (_view->tmax() - _view->tmin()) / 2;
    showRange(_view->tmin() - half, _view->tmax() + half);
}

void Waveforms::askForTime()
{
    const Core::Time start = _view->visibleTimeWindow().startTime();
    const Core::Time copied = timeInText(QGuiApplication::clipboard()->text(), Core::Time());
    auto *dialog = new QInputDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(tr("Go to time"));
    dialog->setLabelText(tr("Date, time of the day, or both (UTC):"));
    dialog->setTextValue(timeText(copied.valid() ? copied : start));
    connect(dialog, SIGNAL(textValueSelected(QString)), this, SLOT(goToTime(QString)));
    dialog->open();
}

void Waveforms::goToTime(const QString &text)
{
    const Core::TimeWindow visible = _view->visibleTimeWindow();
    const Core::Time time = timeInText(text, visible.startTime());
    if (!time.valid()) {
        _bench->showStatus(tr("\"%1\" is no time; write 2024-01-05 10:11:12").arg(text));
        return;
    }
    const Core::TimeSpan half = visible.length() / 2.0;
    leapTo({time - half, time + half});
    if (!_coverage.hasData(_view->visibleTimeWindow()))
        _bench->showStatus(tr("No waveforms about %1").arg(timeText(time)));
}

/** Shows a window far from the one before, with a way back. */
void Waveforms::leapTo(const Core::TimeWindow &window)
{
    _history->keep();
    _view->setVisibleTimeWindow(window);
    _visibility->update();
}

void Waveforms::updateRangeText()
{
    if (_view->count() == 0 || stretches().isEmpty()) {
        emit rangeText(QString());
        return;
    }
    const Core::TimeWindow visible = _view->visibleTimeWindow();
    // Seconds as soon as whole ones would tell both ends apart badly.
    const double resolution = std::min(1.0, visible.length().length() / 60);
    QString text = tr("%1 to %2 UTC")
                       .arg(timeText(visible.startTime(), resolution),
                            timeText(visible.endTime(), resolution));
    if (stretches().size() > 1) {
        for (int i = 0; i < stretches().size(); ++i) {
            if (stretches()[i].overlaps(visible)) {
                text += tr("  ·  stretch %1 of %2").arg(i + 1).arg(stretches().size());
                break;
            }
        }
    }
    emit rangeText(text);
}

void Waveforms::contextMenuEvent(QContextMenuEvent *event)
{
    const QList<Trace *> rows = _view->items();
    const auto row = std::find_if(rows.begin(), rows.end(), [event](const Trace *item) {
        return item->visibleRegion().contains(item->mapFromGlobal(event->globalPos()));
    });
    if (row == rows.end())
        return;
    if (!(*row)->isSelected())
        _view->select(*row);
    QMenu::exec(_bench->rows()->menuActions() + _rowActions, event->globalPos(), nullptr, this);
}

} // namespace Workbench
