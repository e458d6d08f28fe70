// SPDX-License-Identifier: LGPL-3.0-or-later

#include "sourcequeue.h"

#include "bench/bench.h"
#include "bench/task.h"
#include "bench/tracerows.h"

#include <utility>

namespace Workbench {

namespace {

constexpr int AdvanceMilliseconds = 100;
constexpr int ProgressSteps = 1000;

} // namespace

SourceQueue::SourceQueue(Bench *bench, Norvu::Gui::TraceView *view, QObject *parent)
    : QObject(parent), _bench(bench), _view(view)
{
    _timer.setInterval(AdvanceMilliseconds);
    connect(&_timer, SIGNAL(timeout()), this, SLOT(advance()));
}

SourceQueue::~SourceQueue()
{
    delete _loader;
}

bool SourceQueue::add(const QString &source, QString *error)
{
    if (!SourceLoader::isUsable(source.toStdString(), error))
        return false;
    _waiting.append(source);
    return true;
}

void SourceQueue::begin()
{
    if (_loader || _waiting.isEmpty())
        return;
    const QString unit = _waiting.size() > 1 ? tr("files") : QString();
    _task = _bench->tasks()->start(tr("Loading"), unit, Task::Canceling::Possible);
    connect(_task, SIGNAL(cancelRequested()), this, SLOT(cancel()));
    _timer.start();
    startNext();
}

int SourceQueue::recordCount() const
{
    return _doneRecords + (_loader ? _loader->waveformCount() : 0);
}

QVector<Tellarix::Core::TimeWindow> SourceQueue::arrivals() const
{
    return _loader ? _doneArrivals + _loader->arrivals() : _doneArrivals;
}

void SourceQueue::startNext()
{
    _loader = new SourceLoader(_waiting.takeFirst(), _bench->rows()->addition(), this);
    connect(_loader, SIGNAL(ended()), this, SLOT(endSource()));
    _loader->setSkipped(_skipped);
    _loader->start(_view, _bench->dataWindow());
    advance();
}

void SourceQueue::advance()
{
    if (!_loader || !_task)
        return;
    const int count = _doneCount + 1 + _waiting.size();
    const double share = _loader->progress();
    if (!_task->unit().isEmpty())
        _task->setProgress(_doneCount, count);
    else
        _task->setProgress(static_cast<int>((_doneCount + share) * ProgressSteps),
                           share < 0 ? 0 : count * ProgressSteps);
    emit advanced();
}

void SourceQueue::gatherProblems()
{
    const QString source = _loader->source();
    _problems += _loader->messages();
    if (_loader->textCount() > 0)
        _problems.append(tr("%1: records of text (%2), which can't be drawn")
                             .arg(source)
                             .arg(_loader->textCount()));
    if (_loader->waveformCount() == 0) {
        if (_loader->messages().isEmpty() && _loader->textCount() == 0)
            _problems.append(tr("%1: no waveforms in it").arg(source));
        _empty.append(source);
    }
}

void SourceQueue::endSource()
{
    gatherProblems();
    ++_doneCount;
    _doneRecords += _loader->waveformCount();
    _doneArrivals += _loader->arrivals();
    // It is still telling that it has ended.
    _loader->deleteLater();
    _loader.clear();
    if (_waiting.isEmpty())
        end();
    else
        startNext();
}

void SourceQueue::cancel()
{
    if (!_loader)
        return;
    QStringList cut = _waiting;
    cut.prepend(_loader->source());
    _waiting.clear();
    _loader->stop();
    _doneRecords += _loader->waveformCount();
    _doneArrivals += _loader->arrivals();
    _problems += _loader->messages();
    _problems.append(tr("Loading was cancelled; not whole: %1").arg(cut.join(", ")));
    _loader->deleteLater();
    _loader.clear();
    end();
}

void SourceQueue::end()
{
    _timer.stop();
    _doneCount = _doneRecords = 0;
    const QStringList problems = std::exchange(_problems, QStringList());
    const QStringList empty = std::exchange(_empty, QStringList());
    const QPointer<Task> task = std::exchange(_task, nullptr);
    emit ended(problems);
    _doneArrivals.clear();
    if (task)
        task->finish(empty.isEmpty() ? QString() : tr("No waveforms in %1").arg(empty.join(", ")));
}

} // namespace Workbench
