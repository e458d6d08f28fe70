// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/core/time.h>

#include <QString>

#include <functional>
#include <string>

namespace Tellarix {
namespace IO {

struct CacheSegment;

/** Where and how long records of remote sources are kept. */
struct TELLARIX_CLIENT_API CacheSettings
{
    CacheSettings();

    QString folder;         /**< "tellarix/records" in the user's folder of caches */
    double mostMB{2048};    /**< what was not read for longest goes first */
    double ageDays{30};     /**< after that a source is asked again, and files go */
    double emptyHours{24};  /**< how long it holds that a source has nothing */
    double lateMinutes{60}; /**< before the present, in which data may still come */

    /** What new streams begin with, which programs read from the keys "cache/folder", "cache/size",
     *  "cache/age", "cache/empty" and "cache/late"; any thread may call both. */
    static CacheSettings Defaults();
    static void SetDefaults(const CacheSettings &settings);
};

/**
 * The files that hold the records of one source, each for a stream or a pattern and a day, below
 * "HASH/YEAR.DAY" in the folder of the cache; "HASH/source" tells the address without password.
 *
 * Any number of processes may use a folder. Segments are appended under a lock on the file, whole
 * or not at all, and a reader passes over one that isn't complete. The first thing that fails is
 * kept as failure(), and from then on nothing is written.
 */
class TELLARIX_CLIENT_API CacheFolder
{
public:
    using Visitor = std::function<void(CacheSegment &)>;

    CacheFolder(CacheSettings settings, const std::string &url);

    const CacheSettings &settings() const { return _settings; }

    /**
     * Calls @p visitor for each segment, the oldest first; those that are out of date by @p now are
     * passed over, as are the stretches of others.
     * @param name  id of a stream, or a pattern
     * @return false if the file was damaged; then it has been removed
     */
    bool read(const std::string &name, Core::Time day, Core::Time now, bool withRecords,
              const Visitor &visitor);
    /** Adds a segment; false if that was not possible. */
    bool append(const std::string &name, Core::Time day, const CacheSegment &segment);

    /** Removes what is too old, or too much, of all sources, unless another process is at it or was
     *  less than @p pause ago. */
    void sweep(Core::Time now, Core::TimeSpan pause = Core::TimeSpan()) const;

    /** What did not work, or what was damaged; empty if nothing. */
    const std::string &failure() const { return _failure; }

private:
    QString pathOf(const std::string &name, Core::Time day) const;
    bool isValid(const CacheSegment &segment, bool isEmpty, Core::Time now) const;
    bool prepare(const QString &path);
    bool appendTo(const QString &path, const CacheSegment &segment);
    bool fail(const QString &path, const QString &cause);

    CacheSettings _settings;
    std::string _source;
    QString _folder; /**< of the source */
    std::string _failure;
    bool _writes{true};
};

/** The URL without the password that may stand in it. */
TELLARIX_CLIENT_API std::string withoutPassword(const std::string &url);

} // namespace IO
} // namespace Tellarix
