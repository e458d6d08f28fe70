// SPDX-License-Identifier: LGPL-3.0-or-later

#include "livesources.h"

#include "bench/bench.h"

#include <norvu/gui/trace.h>

#include <algorithm>
#include <utility>

using namespace Tellarix;
using Norvu::Gui::Trace;

namespace Workbench {

namespace {

constexpr int ArrivalMilliseconds = 250;
/** A server that comes and goes is told of that often. */
constexpr int MessageMilliseconds = 10000;
/** Messages that come together are told together. */
constexpr int FirstMessageMilliseconds = 100;
constexpr int OutageMilliseconds = 500;

} // namespace

LiveSources::LiveSources(Bench *bench, Norvu::Gui::TraceView *view, QObject *parent)
    : QObject(parent), _bench(bench), _view(view)
{
    _arrivalTimer.setSingleShot(true);
    _arrivalTimer.setInterval(ArrivalMilliseconds);
    _messageTimer.setSingleShot(true);
    connect(&_arrivalTimer, SIGNAL(timeout()), this, SIGNAL(arrived()));
    connect(&_messageTimer, SIGNAL(timeout()), this, SLOT(tell()));
    connect(&_outageTimer, SIGNAL(timeout()), this, SLOT(lookForOutages()));
    connect(this, SIGNAL(changed()), this, SLOT(lookForOutages()));
    _outageTimer.setInterval(OutageMilliseconds);
}

LiveSources::~LiveSources()
{
    blockSignals(true);
    remove(_sources);
}

void LiveSources::add(const QString &source)
{
    if (names().contains(source))
        return;
    auto *live = new LiveSource(source, _bench, _length, this);
    _sources.append(live);
    connect(live, SIGNAL(arrived()), this, SLOT(wait()));
    connect(live, SIGNAL(ended()), this, SLOT(removeEnded()));
    live->start(_view, _bench->dataWindow());
    emit changed();
}

QStringList LiveSources::names() const
{
    QStringList names;
    for (const LiveSource *source : _sources)
        names.append(source->source());
    return names;
}

QSet<const Trace *> LiveSources::rows() const
{
    QSet<const Trace *> rows;
    for (const LiveSource *source : _sources) {
        for (const Trace *row : source->rows())
            rows.insert(row);
    }
    return rows;
}

void LiveSources::setLength(Core::TimeSpan length)
{
    _length = length;
    for (LiveSource *source : std::as_const(_sources))
        source->setLength(length);
}

Core::TimeSpan LiveSources::longestLength() const
{
    Core::TimeSpan longest = _length;
    for (const LiveSource *source : _sources)
        longest = std::max(longest, source->length());
    return longest;
}

Core::TimeSpan LiveSources::askedLength() const
{
    return _sources.isEmpty() ? Core::TimeSpan() : _sources.last()->askedLength();
}

bool LiveSources::restoreRow(Trace *row)
{
    return std::any_of(_sources.begin(), _sources.end(),
                       [row](LiveSource *source) { return source->restoreRow(row); });
}

RowArrivals LiveSources::takeArrivals()
{
    RowArrivals arrivals;
    for (LiveSource *source : std::as_const(_sources)) {
        const RowArrivals some = source->takeArrivals();
        for (auto row = some.cbegin(); row != some.cend(); ++row)
            arrivals[row.key()] += row.value();
    }
    return arrivals;
}

QList<Trace *> LiveSources::takeNewRows()
{
    QList<Trace *> rows;
    for (LiveSource *source : std::as_const(_sources))
        rows += source->takeNewRows();
    return rows;
}

/** The first of many is waited for, so that the others are told along with it. */
void LiveSources::wait()
{
    if (!_arrivalTimer.isActive())
        _arrivalTimer.start();
    if (!_messageTimer.isActive())
        _messageTimer.start(FirstMessageMilliseconds);
}

void LiveSources::tell()
{
    QStringList messages;
    for (LiveSource *source : std::as_const(_sources))
        messages += source->takeMessages();
    if (messages.isEmpty())
        return;
    _messageTimer.start(MessageMilliseconds);
    emit problems(messages);
}

void LiveSources::lookForOutages()
{
    QStringList outages;
    for (const LiveSource *source : std::as_const(_sources))
        outages.append(source->outage());
    _sources.isEmpty() ? _outageTimer.stop() : _outageTimer.start();
    if (outages == _outages)
        return;
    _outages = outages;
    emit outagesChanged();
}

// End

void LiveSources::end(const QString &source)
{
    const auto found = std::find_if(_sources.begin(), _sources.end(), [&](const LiveSource *item) {
        return item->source() == source;
    });
    if (found != _sources.end())
        remove({*found});
}

void LiveSources::endAll()
{
    remove(_sources);
}

void LiveSources::endWithoutRows()
{
    QList<LiveSource *> lost;
    for (LiveSource *source : std::as_const(_sources)) {
        if (source->hasLostRows())
            lost.append(source);
    }
    remove(lost);
}

/** All are told before any is waited for. */
void LiveSources::remove(const QList<LiveSource *> &sources)
{
    if (sources.isEmpty())
        return;
    for (LiveSource *source : sources)
        source->close();
    emit arrived(); // What has come counts.
    QStringList messages;
    for (LiveSource *source : sources) {
        messages += source->takeMessages();
        _sources.removeOne(source);
    }
    qDeleteAll(sources);
    if (!messages.isEmpty())
        emit problems(messages);
    emit changed();
}

void LiveSources::removeEnded()
{
    auto *source = static_cast<LiveSource *>(sender());
    if (!_sources.contains(source))
        return;
    emit arrived();
    _sources.removeOne(source);
    const QStringList messages =
        source->takeMessages() + QStringList{tr("%1 has ended").arg(source->source())};
    // It is still telling that it has ended.
    source->deleteLater();
    emit problems(messages);
    emit changed();
}

} // namespace Workbench
