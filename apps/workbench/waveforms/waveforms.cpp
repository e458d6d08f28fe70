// SPDX-License-Identifier: LGPL-3.0-or-later

#include "waveforms.h"

#include "bench/bench.h"
#include "bench/memory.h"
#include "bench/rowaddition.h"
#include "bench/streamstates.h"
#include "bench/tracerows.h"
#include "currentrow.h"
#include "datastretches.h"
#include "datastrip.h"
#include "livefollow.h"
#include "livesources.h"
#include "measuring.h"
#include "navigation.h"
#include "outagenotice.h"
#include "pointerreport.h"
#include "rowcolors.h"
#include "rowcommands.h"
#include "rowdelays.h"
#include "rowfilters.h"
#include "rowgroups.h"
#include "rowlooks.h"
#include "rowmargins.h"
#include "roworder.h"
#include "rowvisibility.h"
#include "sourcequeue.h"
#include "timegestures.h"
#include "viewhistory.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/core/records/ringbuffer.h>
#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/records/timescale.h>

#include <QAbstractButton>
#include <QContextMenuEvent>
#include <QLabel>
#include <QMenu>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

using namespace Tellarix;
using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

namespace Workbench {

namespace {

/** Of live data, what is shown at first where no past is asked for. */
const Core::TimeSpan LiveWindow(600.0);
/** From the present, in s. */
constexpr double FarAlignment = 30 * 86400.0;

/** Times relative to a day close to the data keep all their digits, however far it is zoomed in.
 *  The line at what rows are aligned to means nothing until an event is chosen: it stays out of
 *  sight a day before. */
Core::Time dayBefore(const Core::Time &time)
{
    const Core::TimeFields fields = time.fields();
    return Core::Time(fields.year, fields.month, fields.day) - Core::TimeSpan(86400);
}

} // namespace

Waveforms::Waveforms(Bench *bench, QWidget *parent)
    : QWidget(parent), _bench(bench), _view(new TraceView(this, Qt::WindowFlags(), nullptr, true)),
      _margins(new RowMargins(_view, bench->rows())), _measuringTool(new MeasuringTool(_view)),
      _queue(new SourceQueue(bench, _view, this)), _live(new LiveSources(bench, _view, this)),
      _follow(new LiveFollow(_view, bench->streamStates())), _groups(new RowGroups(_view)),
      _visibility(new RowVisibility(_view, &_coverage, _groups)), _order(new RowOrder(_view)),
      _commands(new RowCommands(_view, _visibility)), _colors(new RowColors(_view)),
      _looks(new RowLooks(_view, _margins)), _filters(new RowFilters(bench, _view)),
      _navigation(new Navigation(bench, _view, &_coverage, _visibility)),
      _gestures(new TimeGestures(_view)), _strip(new DataStrip(_view, &_coverage, this)),
      _outages(new OutageNotice(_live, _queue, this)), _hint(new QLabel(this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(_view);
    layout->addWidget(_strip);
    layout->addWidget(_visibility->notice(), 0, Qt::AlignCenter);
    layout->addWidget(_follow->notice(), 0, Qt::AlignCenter);
    layout->addWidget(_outages);
    _hint->setAlignment(Qt::AlignCenter);
    _hint->setWordWrap(true);
    _hint->setTextFormat(Qt::PlainText);
    _hint->setBackgroundRole(QPalette::Base);
    _hint->setAutoFillBackground(true);
    updateHint();

    _bench->rows()->setView(_view);
    _pointer = new PointerReport(_bench->rows());
    connect(_pointer, SIGNAL(changed(QString)), this, SIGNAL(pointerText(QString)));
    _view->setBackgroundFiltering(true);
    connectTime();
    connectRows();
    connectLive();
    new CurrentRow(_view);
    connect(_view, SIGNAL(loadDataRequested()), this, SLOT(reload()));
    connect(_queue, SIGNAL(advanced()), this, SLOT(showArrivals()));
    connect(_queue, SIGNAL(ended(QStringList)), this, SLOT(endLoad(QStringList)));
}

void Waveforms::connectTime()
{
    _visibility->watch(_view->timeScale());
    _visibility->watch(_strip);
    connect(_strip, SIGNAL(windowRequested(Tellarix::Core::TimeWindow)), _navigation,
            SLOT(showWindow(Tellarix::Core::TimeWindow)));
    connect(_gestures, SIGNAL(zoomRequested(Tellarix::Core::TimeWindow)), _navigation,
            SLOT(leapTo(Tellarix::Core::TimeWindow)));
}

void Waveforms::connectRows()
{
    connect(_order->groupAction(), SIGNAL(toggled(bool)), _groups, SLOT(setOn(bool)));
    connect(_commands, SIGNAL(closed(QStringList)), this, SLOT(forgetClosedRows(QStringList)));
    connect(_filters, SIGNAL(fitted(Norvu::Gui::Trace *)), _looks,
            SLOT(dress(Norvu::Gui::Trace *)));
}

void Waveforms::connectLive()
{
    new RowDelays(_view, _looks->names(), _bench->streamStates());
    connect(_live, SIGNAL(arrived()), this, SLOT(showLiveArrivals()));
    connect(_live, SIGNAL(changed()), this, SLOT(followLiveSources()));
    connect(_live, SIGNAL(problems(QStringList)), this, SIGNAL(problems(QStringList)));
    connect(_outages, SIGNAL(changed()), this, SLOT(updateHint()));
    connect(_follow, SIGNAL(changed()), this, SLOT(followPresent()));
    // Zooming out ends where there are data, or will be any.
    _navigation->setAwaitedWindow([this] {
        const Core::Time now = _bench->streamStates()->now();
        return _live->isEmpty() ? Core::TimeWindow()
                                : Core::TimeWindow(now - _live->longestLength(), now);
    });
}

void Waveforms::updateHint()
{
    _hint->setText(!_outages->text().isEmpty() ? _outages->text()
                   : isLoading()               ? tr("Loading…")
                   : !_live->isEmpty()
                       ? tr("Waiting for live data…")
                       : tr("Nothing is open.\n\nOpen files (Ctrl+O), a folder (Ctrl+Shift+O), "
                            "a source (Ctrl+U) or a URL (Ctrl+L),\ndrop files here, or look at "
                            "the demonstration in the menu File."));
    _hint->setVisible(stretches().isEmpty());
    _hint->raise();
}

void Waveforms::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    _hint->setGeometry(rect());
}

bool Waveforms::open(const QStringList &sources)
{
    QStringList ending;
    for (const QString &source : sources) {
        if (!LiveSource::isLive(source, _bench->dataWindow())) {
            ending.append(source);
            continue;
        }
        _isLiveAwaited = true;
        _live->add(source);
    }
    if (ending.isEmpty())
        return true;

    _sources += ending;
    _sources.removeDuplicates();
    if (!isLoading())
        _load = Load();
    _load.isShown = true;
    _queue->setSkipped({}); // whoever opens something wants to see all of it
    return load(ending);
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

// Live data

void Waveforms::followLiveSources()
{
    _follow->setLive(!_live->isEmpty());
    _visibility->keep(_live->rows());
    updateHint();
}

void Waveforms::followPresent()
{
    _navigation->history()->setPaused(_follow->isFollowing());
    _visibility->keep(_follow->isFollowing() ? _live->rows() : QSet<const Trace *>());
}

void Waveforms::showLiveArrivals()
{
    const RowArrivals arrivals = _live->takeArrivals();
    adoptLiveRows(_live->takeNewRows());
    for (Trace *row : _view->items()) {
        const auto windows = arrivals.constFind(row);
        if (windows != arrivals.constEnd())
            _coverage.add(row, *windows);
    }
    _coverage.summarize();
    _strip->update();
    if (!_isLiveAwaited || stretches().isEmpty() || arrivals.isEmpty())
        return;
    _isLiveAwaited = false;
    const Core::Time now = _bench->streamStates()->now();
    _navigation->history()->keep();
    if (std::abs((_view->timeScale()->alignment() - now).length()) > FarAlignment)
        _view->setAlignment(dayBefore(now));
    const Core::TimeSpan asked = _live->askedLength();
    _follow->start(asked > Core::TimeSpan() ? asked : std::min(LiveWindow, _live->longestLength()));
    updateHint();
}

/** New rows come to look like the others, one by one while sources begin. */
void Waveforms::adoptLiveRows(const QList<Trace *> &rows)
{
    if (rows.isEmpty())
        return;
    for (Trace *row : rows) {
        _load.others.insert(row);
        _load.dressed.insert(row);
        adoptRow(row);
        _view->subscribedToData(row);
    }
    if (_bench->rows()->addition())
        _bench->rows()->addition()->adopt(rows);
    _filters->update();
    _margins->update();
    _looks->followCount();
    _order->sort();
    _view->updateToolbar();
    if (_follow->isFollowing())
        _visibility->keep(_live->rows());
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
        _view->setAlignment(dayBefore(stretches().first().startTime()));
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
    _navigation->leapTo(withMargins(arrivals.first()));
}

void Waveforms::endLoad(const QStringList &messages)
{
    const QList<Trace *> rows = dressNewRows();
    markLoaded();
    for (const Trace *row : rows)
        _closed.remove(row->label());
    if (_bench->rows()->addition())
        _bench->rows()->addition()->adopt(rows);
    _filters->update();
    _margins->update();
    _looks->followCount();
    if (_load.isShown) {
        _order->sort();
        _load.isFirst ? showFirstStretch() : showNewData();
    } else
        collectCoverage();
    if (_load.alignment.valid())
        alignTo(_load.alignment);
    _load = Load();
    _navigation->history()->keep();
    _navigation->updateRangeText();
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
        adoptRow(row);
        _filters->fit(row);
        _load.dressed.insert(row);
    }
    if (_load.dressed.size() != before) {
        _margins->update();
        _looks->followCount();
    }
    return newRows;
}

void Waveforms::adoptRow(Trace *row)
{
    _order->adopt(row);
    _colors->adopt(row);
    _pointer->watch(row->recordWidget());
    _looks->dress(row);
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
    _queue->setSkipped(_closed);
    load(_sources);
}

/** Rows that were reset have lost their sequences, but still know their streams. */
void Waveforms::prepareResetRows()
{
    for (Trace *row : _view->items()) {
        if (_live->restoreRow(row))
            continue;
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
    _live->endAll();
    _isLiveAwaited = false;
    _sources.clear();
    _closed.clear();
    _view->clear();
    returnFreeMemory();
    // What threads still held for rows is free a bit later.
    QTimer::singleShot(1000, this, [] { returnFreeMemory(); });
    _coverage.clear();
    _strip->update();
    updateHint();
    _navigation->history()->clear();
    _looks->setPaths(QHash<QString, EventPath>());
    _navigation->updateRangeText();
}

void Waveforms::setLocalTimeShown(bool show)
{
    _view->timeScale()->setLocalTimeShown(show);
}

void Waveforms::setRulersShown(bool show)
{
    _margins->setRulersShown(show);
}

void Waveforms::forgetClosedRows(const QStringList &streams)
{
    _closed += QSet<QString>(streams.begin(), streams.end());
    _live->endWithoutRows();
    collectCoverage();
    _navigation->updateRangeText();
    returnFreeMemory();
}

void Waveforms::collectCoverage()
{
    _coverage.collect(*_view);
    _strip->update();
    updateHint();
    _visibility->update();
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
