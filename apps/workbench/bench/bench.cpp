// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bench.h"

#include "jobs.h"
#include "mapview.h"
#include "replay.h"
#include "selection.h"
#include "shownevents.h"
#include "stations.h"
#include "streamstates.h"
#include "task.h"
#include "tracerows.h"

namespace Workbench {

Bench::Bench(QObject *parent)
    : QObject(parent), _selection(new Selection(this)), _shownEvents(new ShownEvents(this)),
      _stations(new Stations(this)), _streamStates(new StreamStates(this)), _tasks(new Tasks(this)),
      _jobs(new Jobs(this)), _rows(new TraceRows(this)), _mapView(new MapView(this)),
      _replay(new Replay(this))
{}

void Bench::tell(const QStringList &problems)
{
    if (!problems.isEmpty())
        emit problemsTold(problems);
}

void Bench::open(const QStringList &sources)
{
    emit openRequested(sources);
}

void Bench::importEvents(const QStringList &sources)
{
    emit eventImportRequested(sources);
}

void Bench::showStatus(const QString &text)
{
    emit statusShown(text);
}

} // namespace Workbench
