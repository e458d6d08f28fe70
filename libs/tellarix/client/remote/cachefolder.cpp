// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/cachefolder.h>

#include <tellarix/client/io/savefile.h>
#include <tellarix/client/remote/cachesegment_p.h>

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>
#include <QUrl>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include <sys/file.h>
#include <unistd.h>

namespace Tellarix {
namespace IO {

namespace {

constexpr double BytesPerMB = 1024 * 1024;
constexpr double SecondsPerDay = 86400;
constexpr int HashLength = 20;
constexpr int LockTries = 25;
constexpr std::chrono::milliseconds LockPause(2);
// After a sweep there is room for a while.
constexpr double SweptShare = 0.9;

std::mutex defaultsMutex;

CacheSettings &defaults()
{
    static CacheSettings settings;
    return settings;
}

/** An exclusive lock on an open file, released when it is closed; false if others hold it. */
bool lockFile(const QFile &file, int tries)
{
    for (; ::flock(file.handle(), LOCK_EX | LOCK_NB) != 0; --tries) {
        if (errno != EINTR && (errno != EWOULDBLOCK || tries <= 1))
            return false;
        std::this_thread::sleep_for(LockPause);
    }
    return true;
}

/** Appends all of @p bytes or nothing. */
bool appendWhole(QFile &file, const QByteArray &bytes, QString &reason)
{
    const qint64 size = file.size();
    if (file.seek(size) && writeWhole(file, bytes) && file.flush())
        return true;
    reason = file.errorString();
    file.resize(size);
    return false;
}

} // namespace

CacheSettings::CacheSettings()
    : folder(QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
             QStringLiteral("/tellarix/records"))
{}

CacheSettings CacheSettings::Defaults()
{
    const std::lock_guard<std::mutex> lock(defaultsMutex);
    return defaults();
}

void CacheSettings::SetDefaults(const CacheSettings &settings)
{
    const std::lock_guard<std::mutex> lock(defaultsMutex);
    defaults() = settings;
}

std::string withoutPassword(const std::string &url)
{
    const size_t begin = url.find("://");
    const size_t end = begin == std::string::npos ? begin : url.find_first_of("/?#", begin + 3);
    const size_t at = end == 0 ? end : url.rfind('@', end);
    if (begin == std::string::npos || at == std::string::npos || at < begin)
        return url;
    const size_t colon = url.find(':', begin + 3);
    return colon < at ? url.substr(0, colon) + url.substr(at) : url;
}

CacheFolder::CacheFolder(CacheSettings settings, const std::string &url)
    : _settings(std::move(settings)), _source(withoutPassword(url))
{
    const QByteArray hash =
        QCryptographicHash::hash(QByteArray::fromStdString(_source), QCryptographicHash::Sha1);
    _folder = _settings.folder + '/' + QString::fromLatin1(hash.toHex().left(HashLength));
}

bool CacheFolder::read(const std::string &name, Core::Time day, Core::Time now, bool withRecords,
                       const Visitor &visitor)
{
    QFile file(pathOf(name, day));
    if (!file.open(QIODevice::ReadOnly))
        return true;
    // The time of the file is that of its last use.
    if (withRecords)
        file.setFileTime(QDateTime::currentDateTimeUtc(), QFileDevice::FileModificationTime);

    CacheReading reading;
    CacheSegment segment;
    while ((reading = readCacheSegment(file, withRecords, segment)) == CacheReading::Segment) {
        if (!isValid(segment, false, now))
            continue;
        segment.stretches.erase(std::remove_if(segment.stretches.begin(), segment.stretches.end(),
                                               [&](const AskedTime &stretch) {
                                                   return !isValid(segment, stretch.isEmpty, now);
                                               }),
                                segment.stretches.end());
        visitor(segment);
    }
    if (reading != CacheReading::Damaged)
        return true;
    QFile::remove(file.fileName());
    if (_failure.empty())
        _failure = file.fileName().toStdString() + ": is damaged, and fetched again";
    return false;
}

bool CacheFolder::append(const std::string &name, Core::Time day, const CacheSegment &segment)
{
    const QString path = pathOf(name, day);
    return _writes && prepare(path) && appendTo(path, segment);
}

void CacheFolder::sweep(Core::Time now, Core::TimeSpan pause) const
{
    QFile lock(_settings.folder + QStringLiteral("/sweep.lock"));
    const QFileInfo before(lock.fileName());
    if (before.exists() &&
        before.lastModified().toSecsSinceEpoch() + pause.seconds() > now.seconds())
        return;
    if (!lock.open(QIODevice::ReadWrite) || !lockFile(lock, 1))
        return;
    lock.setFileTime(QDateTime::currentDateTimeUtc(), QFileDevice::FileModificationTime);

    struct Entry
    {
        qint64 used;
        qint64 size;
        QString path;
    };
    std::vector<Entry> entries;
    double total = 0;
    QDirIterator files(_settings.folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next();
        if (path.endsWith(QLatin1String(".records")) || path.endsWith(QLatin1String(".asked"))) {
            const QFileInfo info = files.fileInfo();
            entries.push_back({info.lastModified().toSecsSinceEpoch(), info.size(), path});
            total += static_cast<double>(info.size());
        }
    }
    std::sort(entries.begin(), entries.end(),
              [](const Entry &a, const Entry &b) { return a.used < b.used; });

    const double most = _settings.mostMB * BytesPerMB;
    const bool isTooMuch = total > most;
    const double oldest = now.toDouble() - _settings.ageDays * SecondsPerDay;
    for (const Entry &entry : entries) {
        if (static_cast<double>(entry.used) >= oldest && (!isTooMuch || total <= most * SweptShare))
            break;
        QFile::remove(entry.path);
        total -= static_cast<double>(entry.size);
        // Goes only if nothing else is in it.
        QDir().rmdir(QFileInfo(entry.path).path());
    }
}

QString CacheFolder::pathOf(const std::string &name, Core::Time day) const
{
    const bool isPattern = name.find_first_of("*?") != std::string::npos;
    // Codes of damaged records may be anything, also a way out of the folder.
    const QString fileName =
        QString::fromLatin1(QUrl::toPercentEncoding(QString::fromStdString(name)));
    return _folder + QString::fromStdString(day.toString("/%Y.%j/")) + fileName +
           QLatin1String(isPattern ? ".asked" : ".records");
}

bool CacheFolder::isValid(const CacheSegment &segment, bool isEmpty, Core::Time now) const
{
    const double life = isEmpty ? _settings.emptyHours * 3600 : _settings.ageDays * SecondsPerDay;
    // A clock that was set back leaves visits in the future.
    return segment.asked <= now && segment.asked + Core::TimeSpan(life) > now;
}

/** Makes the folders for a file. */
bool CacheFolder::prepare(const QString &path)
{
    const QString folder = QFileInfo(path).path();
    if (QFileInfo(folder).isDir())
        return true;
    const bool isNew = !QFileInfo(_folder).isDir();
    if (!QDir().mkpath(folder))
        return fail(folder, QStringLiteral("can't be made"));
    if (!isNew)
        return true;
    // What a user may see at a source others of the machine may not.
    QFile::setPermissions(_folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QSaveFile source(_folder + QStringLiteral("/source"));
    return (source.open(QIODevice::WriteOnly) &&
            writeWhole(source, QByteArray::fromStdString(_source + '\n')) && commitWhole(source)) ||
           fail(source.fileName(), source.errorString());
}

bool CacheFolder::appendTo(const QString &path, const CacheSegment &segment)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::Unbuffered))
        return fail(path, file.errorString());
    // Whoever holds it for longer is stuck: this is a cache, the source can be asked again.
    if (!lockFile(file, LockTries))
        return false;

    CacheSegment before;
    CacheReading reading;
    bool isValidStart = true;
    bool isFirst = true;
    while ((reading = readCacheSegment(file, false, before)) == CacheReading::Segment) {
        if (isFirst)
            isValidStart = isValid(before, false, segment.asked);
        isFirst = false;
    }
    // Behind the last whole segment; from the start where the first is out of date.
    QString reason = file.errorString();
    if (file.resize(isValidStart ? file.pos() : 0) && appendWhole(file, segment.bytes(), reason))
        return true;
    return fail(path, reason);
}

bool CacheFolder::fail(const QString &path, const QString &cause)
{
    _writes = false;
    if (_failure.empty())
        _failure = (path + ": " + cause + "; goes on without keeping records").toStdString();
    return false;
}

} // namespace IO
} // namespace Tellarix
