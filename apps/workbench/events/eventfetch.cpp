// SPDX-License-Identifier: LGPL-3.0-or-later

#include "eventfetch.h"

#include <tellarix/client/remote/fdsnservice.h>

#include <algorithm>
#include <vector>

using namespace Tellarix;

namespace Workbench {

IO::EventImportResult EventFetch::into(const IO::DatabaseInterfacePtr &database, const QString &url,
                                       const Progress &progress)
{
    IO::EventImportResult result;
    IO::FdsnAddress address;
    if (!address.parse(url, &result.error))
        return result;
    IO::FdsnEventQuery query;
    query.words = address.words();
    // All of it first: a database must not be locked while a server is waited for.
    std::vector<DataModel::EventPtr> events;
    QStringList warnings;
    IO::EventReadHandler collector;
    collector.take = [&](const DataModel::EventPtr &event) {
        events.push_back(event);
        return true;
    };
    collector.progress = progress;
    collector.warn = [&](const QString &text) { warnings.append(text); };
    IO::FdsnService service(address);
    setService(&service);
    const bool isComplete = service.readEvents(query, collector, &result.error);
    setService(nullptr);
    if (!isComplete)
        return result;

    const auto source = [&](const IO::EventReadHandler &handler, QString *) {
        for (const QString &warning : warnings)
            handler.warn(warning);
        return std::all_of(events.begin(), events.end(), [&](const DataModel::EventPtr &event) {
            return handler.progress(0, 0) && handler.take(event);
        });
    };
    return IO::importEvents(database, service.name(), source, progress);
}

void EventFetch::setService(IO::FdsnService *service)
{
    const std::lock_guard<std::mutex> lock(_mutex);
    _service = service;
    if (_service && _isCanceled)
        _service->cancel();
}

void EventFetch::cancel()
{
    const std::lock_guard<std::mutex> lock(_mutex);
    _isCanceled = true;
    if (_service)
        _service->cancel();
}

} // namespace Workbench
