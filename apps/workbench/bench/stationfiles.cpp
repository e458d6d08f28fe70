// SPDX-License-Identifier: LGPL-3.0-or-later

#include "stationfiles.h"

#include "bench.h"
#include "stations.h"

#include <QFileInfo>
#include <QMetaObject>

#include <utility>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr int ProgressSteps = 1000;

} // namespace

StationFiles::StationFiles(Bench *bench, QObject *parent) : QObject(parent), _bench(bench)
{}

StationFiles::~StationFiles()
{
    cancel();
    if (_thread.joinable())
        _thread.join();
}

void StationFiles::open(const QStringList &files)
{
    _waiting += files;
    if (!_task)
        readNext();
}

void StationFiles::cancel()
{
    _waiting.clear();
    if (_task)
        _task->cancel();
}

void StationFiles::readNext()
{
    if (_waiting.isEmpty())
        return;
    _file = _waiting.takeFirst();
    Task *task = _bench->tasks()->start(tr("Reading %1").arg(QFileInfo(_file).fileName()),
                                        QString(), Task::Canceling::Possible);
    _task = task;
    if (_thread.joinable())
        _thread.join();
    _thread = std::thread([this, file = _file, task] { read(file, task); });
}

/** In the thread of the file; the object and its task outlive it. */
void StationFiles::read(const QString &file, Task *task)
{
    IO::InventoryFile result = IO::readInventoryFile(file, [task](qint64 done, qint64 total) {
        if (total > 0)
            task->setProgress(static_cast<int>(done * ProgressSteps / total), ProgressSteps);
        return !task->isCanceled();
    });
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        _result = std::move(result);
    }
    QMetaObject::invokeMethod(this, "endReading", Qt::QueuedConnection);
}

void StationFiles::endReading()
{
    IO::InventoryFile result;
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        std::swap(result, _result);
    }
    Task *task = _task;
    _task = nullptr;
    if (task->isCanceled()) {
        _waiting.clear();
    } else {
        _bench->tell(result.warnings);
        if (result.ok)
            takeIn(std::move(result.networks));
        else
            _bench->tell({result.error});
    }
    readNext();
    task->finish(result.error);
}

void StationFiles::takeIn(std::vector<DataModel::NetworkPtr> networks)
{
    int count = 0;
    for (const DataModel::NetworkPtr &network : networks)
        count += network->stationCount();
    const QFileInfo file(_file);
    _bench->stations()->setSource(file.absoluteFilePath(), std::move(networks));
    _bench->showStatus(tr("%1: epochs of stations: %2").arg(file.fileName()).arg(count));
}

} // namespace Workbench
