// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/eventimport.h>

#include <functional>
#include <mutex>

namespace Tellarix {
namespace IO {
class FdsnService;
} // namespace IO
} // namespace Tellarix

namespace Workbench {

/** Fetches the events of web services into a database, in a thread that may wait for them. */
class EventFetch
{
public:
    using Progress = std::function<bool(qint64 done, qint64 total)>;

    /** Asks the service of an address with the words in it, and stores all that comes or nothing.
     *  It has no error text if it was ended. */
    Tellarix::IO::EventImportResult into(const Tellarix::IO::DatabaseInterfacePtr &database,
                                         const QString &address, const Progress &progress);

    /** Ends what goes on, and what is begun later. Any thread may call it. */
    void cancel();

private:
    void setService(Tellarix::IO::FdsnService *service);

    std::mutex _mutex;
    Tellarix::IO::FdsnService *_service{nullptr}; /**< that is being asked */
    bool _isCanceled{false};
};

} // namespace Workbench
