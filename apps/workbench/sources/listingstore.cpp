// SPDX-License-Identifier: LGPL-3.0-or-later

#include "listingstore.h"

#include <tellarix/client/io/savefile.h>

#include <QCryptographicHash>
#include <QDir>
#include <QSaveFile>
#include <QStandardPaths>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr double LongestAge = 86400; // in seconds
constexpr qint64 LargestFile = 256 << 20;

} // namespace

ListingStore::ListingStore(const QString &folder)
    : _folder(!folder.isEmpty()
                  ? folder
                  : QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
                        "/tellarix/stations")
{}

QString ListingStore::pathOf(const QString &key) const
{
    const QByteArray hash = QCryptographicHash::hash(key.toUtf8(), QCryptographicHash::Sha1);
    return QDir(_folder).filePath(QString::fromLatin1(hash.toHex()));
}

ListingStore::ListingPtr ListingStore::find(const QString &key, Core::Time now)
{
    const ListingPtr known = _listings.value(key);
    QFile file(pathOf(key));
    if (known || file.size() > LargestFile || !file.open(QFile::ReadOnly))
        return known;
    auto listing = std::make_shared<StationListing>();
    const bool isRead = readListing(file.readAll(), listing.get());
    if (!isRead || (now - listing->time).length() > LongestAge || listing->time > now) {
        file.remove();
        return nullptr;
    }
    _listings.insert(key, listing);
    return listing;
}

void ListingStore::set(const QString &key, const ListingPtr &listing)
{
    _listings.insert(key, listing);
    QDir().mkpath(_folder);
    QSaveFile file(pathOf(key));
    if (file.open(QSaveFile::WriteOnly) && IO::writeWhole(file, listingBytes(*listing)))
        IO::commitWhole(file);
}

} // namespace Workbench
