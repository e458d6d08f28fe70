// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "stationlisting.h"

#include <tellarix/core/time.h>

#include <QHash>
#include <QString>

#include <memory>

namespace Workbench {

/** The last listing of each source: for the session, and for a day on disk. */
class ListingStore
{
public:
    using ListingPtr = std::shared_ptr<const StationListing>;

    /** @param folder  where they are kept; that of the user's caches if it is empty */
    explicit ListingStore(const QString &folder = QString());

    /** Null if there is none, or only one on disk that is older than a day or damaged. */
    ListingPtr find(const QString &key, Tellarix::Core::Time now);
    /** What can't be written is known for the session only. */
    void set(const QString &key, const ListingPtr &listing);

private:
    QString pathOf(const QString &key) const;

    QString _folder;
    QHash<QString, ListingPtr> _listings;
};

} // namespace Workbench
