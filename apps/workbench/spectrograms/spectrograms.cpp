// SPDX-License-Identifier: LGPL-3.0-or-later

#include "spectrograms.h"

#include "rowscale.h"
#include "spectrogramband.h"
#include "spectrogramrow.h"

#include <norvu/gui/gradients.h>
#include <norvu/gui/spectrogramproblem.h>
#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/core/records/recordsequence.h>

#include <QElapsedTimer>

#include <unistd.h>

#include <algorithm>
#include <numeric>
#include <set>

using namespace Tellarix;
using Norvu::Gui::SpectrogramSettings;
using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

namespace Workbench {

namespace {

/** What a spectrogram needs to be read. */
constexpr int RowHeight = 96;
/** What traces need below a picture that has a height of its own. */
constexpr int TraceHeight = 36;
constexpr auto DefaultAxis = "periods_log(0.1,30,10,64)";
/** More rows than a screen has pixels, and filters that take long. */
constexpr int MostBands = 2048;
/** Time after which the user interface has its turn: with a piece and a frame of the rows it makes
 * up no more than two frames of a screen. */
constexpr int TurnMilliseconds = 10;

size_t defaultMemoryLimit()
{
    constexpr size_t Fallback = size_t(1) << 30;
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGESIZE);
    if (pages <= 0 || pageSize <= 0)
        return Fallback;
    return static_cast<size_t>(pages) * static_cast<size_t>(pageSize) / 4;
}

} // namespace

Spectrograms::Spectrograms(TraceView *view)
    : RowAddition(view), _view(view), _gradient(Norvu::Gui::Gradients::Viridis),
      _memoryLimit(defaultMemoryLimit())
{
    setAxis(DefaultAxis);
    _timer.setSingleShot(true);
    connect(&_timer, SIGNAL(timeout()), this, SLOT(workOn()));
    // Once for any number of rows that are added one by one.
    _rowsTimer.setSingleShot(true);
    connect(&_rowsTimer, SIGNAL(timeout()), this, SLOT(updateRows()));
    connect(view, SIGNAL(layoutOrContentChanged()), &_rowsTimer, SLOT(start()));
    for (const char *signal : {SIGNAL(shownChanged()), SIGNAL(axisChanged()),
                               SIGNAL(colorsChanged()), SIGNAL(placeChanged())})
        connect(this, signal, this, SIGNAL(changed()));
}

SpectrogramRow *Spectrograms::rowOf(const Trace *trace) const
{
    return qobject_cast<SpectrogramRow *>(trace->recordWidget());
}

Gui::RecordWidget *Spectrograms::makeTraces() const
{
    return new SpectrogramRow;
}

int Spectrograms::rowHeight() const
{
    return _place == SpectrogramPlace::Above ? TraceHeight : RowHeight;
}

QWidget *Spectrograms::makeScale(Trace *trace, QWidget *parent) const
{
    const SpectrogramRow *row = rowOf(trace);
    return row ? new RowScale(row, parent) : nullptr;
}

QString Spectrograms::textAt(const Gui::RecordWidget *traces, const QPoint &position) const
{
    const auto *row = qobject_cast<const SpectrogramRow *>(traces);
    return row ? row->spectrogramText(position) : QString();
}

bool Spectrograms::areAmplitudesShown(const Gui::RecordWidget *traces) const
{
    const auto *row = qobject_cast<const SpectrogramRow *>(traces);
    return !row || row->areTracesShown();
}

void Spectrograms::finish(Gui::RecordWidget *traces)
{
    auto *row = qobject_cast<SpectrogramRow *>(traces);
    while (row && row->workOut(roomFor(row))) {
    }
}

void Spectrograms::followUnit(Trace *trace)
{
    if (SpectrogramRow *row = rowOf(trace))
        row->followUnit();
}

void Spectrograms::adopt(const QList<Trace *> &traces)
{
    for (const Trace *trace : traces) {
        if (SpectrogramRow *row = rowOf(trace))
            adopt(row);
    }
    applyPlace(traces);
    if (_shownInNewRows && !traces.isEmpty()) {
        updateColors();
        emit shownChanged();
    }
}

void Spectrograms::adopt(SpectrogramRow *row)
{
    row->setWanted(_shownInNewRows);
    row->setAxis(_axis);
    row->useFilteredRecords(_filtered);
    connect(row, SIGNAL(incomplete()), &_timer, SLOT(start()), Qt::UniqueConnection);
    connect(row, SIGNAL(amplitudeRangeChanged()), this, SLOT(updateColors()), Qt::UniqueConnection);
    connect(row, SIGNAL(rangeFitRequested()), this, SLOT(fitRange()), Qt::UniqueConnection);
}

QList<SpectrogramRow *> Spectrograms::wantedRows() const
{
    QList<SpectrogramRow *> rows;
    for (const Trace *trace : _view->items()) {
        SpectrogramRow *row = rowOf(trace);
        if (row && row->isWanted())
            rows.append(row);
    }
    return rows;
}

// Which rows

bool Spectrograms::isShown(const Trace *trace) const
{
    const SpectrogramRow *row = rowOf(trace);
    return row && row->isWanted();
}

bool Spectrograms::isAnyShown() const
{
    const QList<Trace *> traces = _view->items();
    return std::any_of(traces.begin(), traces.end(),
                       [this](const Trace *trace) { return isShown(trace); });
}

bool Spectrograms::areAllShown() const
{
    return _view->count() > 0 && wantedRows().size() == _view->count();
}

void Spectrograms::setShown(const QList<Trace *> &traces, bool shown)
{
    for (const Trace *trace : traces) {
        if (SpectrogramRow *row = rowOf(trace))
            row->setWanted(shown);
    }
    applyPlace(traces);
    updateColors();
    emit shownChanged();
}

void Spectrograms::setAllShown(bool shown)
{
    _shownInNewRows = shown;
    setShown(_view->items(), shown);
}

void Spectrograms::toggleSelected()
{
    QList<Trace *> traces = _view->selectedItems();
    if (traces.isEmpty() && _view->currentItem())
        traces.append(_view->currentItem());
    const bool areShown = std::all_of(traces.begin(), traces.end(),
                                      [this](const Trace *trace) { return isShown(trace); });
    setShown(traces, !areShown);
}

// Axis and records

QString Spectrograms::setAxis(const QString &text)
{
    const QString problem = Norvu::Gui::spectrogramSettingsProblem(text);
    if (!problem.isEmpty())
        return problem;
    SpectrogramSettings axis;
    axis.fromString(text.toStdString());
    if (axis.bands > MostBands)
        return tr("%1 bands: there can be %2 at most").arg(axis.bands).arg(MostBands);

    _axis = axis;
    _axisText = text;
    for (const Trace *trace : _view->items()) {
        if (SpectrogramRow *row = rowOf(trace))
            row->setAxis(axis);
    }
    emit axisChanged();
    return QString();
}

QStringList Spectrograms::rateProblems() const
{
    std::set<double> rates;
    for (const SpectrogramRow *row : wantedRows()) {
        const RecordSequence *records = row->records(row->currentRecords());
        if (records && !records->isEmpty())
            rates.insert(records->front()->samplingFrequency());
    }
    QStringList problems;
    for (const double rate : rates) {
        const QString problem = Norvu::Gui::spectrogramRateProblem(_axis, rate);
        if (!problem.isEmpty())
            problems.append(tr("Spectrograms of streams at %1 Hz: %2").arg(rate).arg(problem));
    }
    return problems;
}

void Spectrograms::setPlace(SpectrogramPlace place)
{
    if (place == _place)
        return;
    _place = place;
    applyPlace(_view->items());
    emit placeChanged();
}

void Spectrograms::applyPlace(const QList<Trace *> &traces)
{
    for (Trace *trace : traces) {
        SpectrogramRow *row = rowOf(trace);
        if (!row)
            continue;
        row->setPlace(_place);
        const bool hasBand = row->isWanted() && _place == SpectrogramPlace::Above;
        if (hasBand != (trace->upperWidget() != nullptr))
            trace->setUpperWidget(hasBand ? new SpectrogramBand(row, trace) : nullptr);
    }
}

void Spectrograms::useFilteredRecords(bool use)
{
    _filtered = use;
    for (const Trace *trace : _view->items()) {
        if (SpectrogramRow *row = rowOf(trace)) {
            row->release();
            row->useFilteredRecords(use);
            row->update();
        }
    }
}

// Working out

void Spectrograms::workOn()
{
    QElapsedTimer time;
    time.start();
    for (SpectrogramRow *row : wantedRows()) {
        while (row->isInSight() && row->workOut(roomFor(row))) {
            if (time.elapsed() >= TurnMilliseconds) {
                _timer.start();
                return;
            }
        }
    }
}

/** Rows find out as they are painted what is missing. */
void Spectrograms::updateRows()
{
    for (SpectrogramRow *row : wantedRows())
        row->update();
}

/** What the other rows leave. If it is not enough, those out of sight give theirs away, and those
 *  that have far more than they show begin anew. */
size_t Spectrograms::roomFor(const SpectrogramRow *row) const
{
    const QList<SpectrogramRow *> rows = wantedRows();
    const size_t used =
        std::accumulate(rows.begin(), rows.end(), size_t(0), [row](size_t sum, const auto *other) {
            return other == row ? sum : sum + other->memoryUsed();
        });
    size_t room = _memoryLimit > used ? _memoryLimit - used : 0;
    for (SpectrogramRow *other : rows) {
        if (row->memoryNeeded() <= static_cast<double>(room))
            break;
        if (other == row || (other->isInSight() && !other->isOversized()))
            continue;
        room += other->memoryUsed();
        other->release();
    }
    return room;
}

// Colours

void Spectrograms::setGradient(const Gui::Gradient &gradient, bool discrete)
{
    if (gradient.isEmpty())
        return;
    _gradient = gradient;
    _discrete = discrete;
    updateColors();
}

void Spectrograms::setColorRange(const ColorRange &range)
{
    if (range.mode == ColorRange::Fixed && !range.isValid())
        return;
    _range = range;
    updateColors();
}

void Spectrograms::fitRange()
{
    const QPair<double, double> shared = sharedRange();
    if (!(shared.first < shared.second))
        return;
    ColorRange range = _range;
    range.mode = ColorRange::Shared;
    const QPair<double, double> ends = range.endsFor(shared.first, shared.second);
    range.mode = ColorRange::Fixed;
    range.lower = ends.first;
    range.upper = ends.second;
    setColorRange(range);
    emit rangeFitted();
}

QPair<double, double> Spectrograms::currentRange() const
{
    const Trace *current = _view->currentItem();
    const QList<SpectrogramRow *> rows = wantedRows();
    if (rows.isEmpty())
        return {_range.lower, _range.upper};
    const SpectrogramRow *row = current && isShown(current) ? rowOf(current) : rows.first();
    return {row->colors().lower, row->colors().upper};
}

/** Range of all rows that there is something of; empty if there is nothing. */
QPair<double, double> Spectrograms::sharedRange() const
{
    QPair<double, double> shared(0, 0);
    bool isFirst = true;
    for (const SpectrogramRow *row : wantedRows()) {
        if (!row->hasPicture())
            continue;
        const QPair<double, double> range = row->amplitudeRange();
        shared.first = isFirst ? range.first : std::min(shared.first, range.first);
        shared.second = std::max(shared.second, range.second);
        isFirst = false;
    }
    return shared;
}

/** A row of which nothing has been worked out has colours, but no amplitudes. */
void Spectrograms::updateColors()
{
    const bool isShared = _range.mode == ColorRange::Shared;
    const QPair<double, double> shared = isShared ? sharedRange() : qMakePair(0.0, 0.0);
    for (SpectrogramRow *row : wantedRows()) {
        const QPair<double, double> range = isShared ? shared : row->amplitudeRange();
        const bool isKnown = _range.mode == ColorRange::Fixed || row->hasPicture();
        const QPair<double, double> ends =
            isKnown ? _range.endsFor(range.first, range.second) : qMakePair(0.0, 0.0);
        row->setColors({_gradient, _discrete, ends.first, ends.second, _range.logarithmic});
    }
    emit colorsChanged();
}

} // namespace Workbench
