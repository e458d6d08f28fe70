// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "task.h"

#include <tellarix/client/io/inventoryreader.h>

#include <QObject>
#include <QPointer>
#include <QStringList>

#include <mutex>
#include <thread>
#include <vector>

namespace Workbench {

class Bench;

/** Reads files of stations in the background, one after the other, for the bench's stations. */
class StationFiles : public QObject
{
    Q_OBJECT

public:
    explicit StationFiles(Bench *bench, QObject *parent = nullptr);
    /** Cancels what is being read, and waits for it. */
    ~StationFiles() override;

    /** Takes files in; one that was taken in before is read anew. Of one that can't be read
     *  nothing is taken, and the cause is told. */
    void open(const QStringList &files);
    /** Gives up what hasn't been taken in. */
    void cancel();

private:
    void readNext();
    void read(const QString &file, Task *task);
    Q_INVOKABLE void endReading();
    void takeIn(std::vector<Tellarix::DataModel::NetworkPtr> networks);

    Bench *_bench;
    QStringList _waiting;
    QString _file; /**< the one that is being read */
    QPointer<Task> _task;
    std::thread _thread;
    std::mutex _mutex;
    Tellarix::IO::InventoryFile _result; /**< of the thread, until it is taken in */
};

} // namespace Workbench
