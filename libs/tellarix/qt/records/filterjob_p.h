// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/records/filteredrecords_p.h>

#include <QObject>

#include <memory>

namespace Tellarix {
namespace Gui {

/**
 * Brings filtered records up to date with a sequence in a thread of the pool of filters.
 *
 * The records of the sequence are noted when the job is made; what becomes of the sequence later
 * is of no matter. A job that is deleted stops at the next record and frees what it has made in its
 * own thread.
 */
class FilterJob : public QObject
{
    Q_OBJECT

public:
    /** Starts at once. */
    FilterJob(std::unique_ptr<FilteredRecords> filtered, const RecordSequence &raw);
    ~FilterJob() override;

    /** The filtered records, to be taken once when finished() was sent. */
    std::unique_ptr<FilteredRecords> takeResult();

    /** Frees the many records of a long sequence in a thread of the pool. */
    static void Discard(std::unique_ptr<FilteredRecords> filtered);

signals:
    void finished();

private:
    class Task;

    std::shared_ptr<Task> _task;
};

} // namespace Gui
} // namespace Tellarix
