// SPDX-License-Identifier: LGPL-3.0-or-later

#include "eventfetch.h"

#include <tellarix/client/remote/fdsnservice.h>

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
    IO::FdsnService service(address);
    setService(&service);
    const auto source = [&](const IO::EventReadHandler &handler, QString *error) {
        return service.readEvents(query, handler, error);
    };
    result = IO::importEvents(database, service.name(), source, progress);
    setService(nullptr);
    return result;
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
