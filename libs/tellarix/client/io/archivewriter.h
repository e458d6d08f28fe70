// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/client/io/miniseedpacker.h>
#include <tellarix/core/records/record.h>

#include <QByteArray>

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace Tellarix {
namespace IO {

/**
 * Writes bytes behind those of a file, or makes it, all or nothing: a file that is new or empty
 * appears as a whole; of one that can't take all, what was written is cut off again.
 */
TELLARIX_CLIENT_API bool appendToFile(const std::string &path, const QByteArray &bytes,
                                      std::string *error);

/**
 * Adds records to a tree of day files, which ArchiveStream reads.
 *
 * What the tree holds already is not written again: records that lie wholly within what was there
 * of their stream before the writer came, and such with the same start and number of samples. One
 * that reaches beyond that is written whole.
 *
 * Bytes are held until flush(), which writes them by appendToFile().
 */
class TELLARIX_CLIENT_API ArchiveWriter
{
public:
    enum class Outcome
    {
        Added,
        Known,   /**< is there already */
        Refused, /**< can't be kept in such a tree; errorString() says why */
        Failed   /**< the tree can't be written; so does errorString() */
    };

    /** @param root  folder of the tree; it is made if need be */
    explicit ArchiveWriter(std::string root);
    /** Forgets what wasn't flushed. */
    ~ArchiveWriter();

    ArchiveWriter(const ArchiveWriter &) = delete;
    ArchiveWriter &operator=(const ArchiveWriter &) = delete;

    Outcome add(const Record &record);
    /** False with an errorString(); what could not be written is held for the next time. */
    bool flush();

    const std::string &errorString() const { return _errorString; }
    /** Files that were written to. */
    size_t fileCount() const { return _written.size(); }

private:
    struct Stream;

    Outcome fail(Outcome outcome, const std::string &reason);
    bool load(const Record &record, Stream &stream);
    bool loadDay(const Record &record, Core::Time day, Stream &stream);
    void forgetOld();
    std::string path(const StreamCodesCPtr &codes, Core::Time time) const;

    std::string _root;
    MiniSeedPacker _packer;
    std::string _errorString;
    std::map<std::string, std::unique_ptr<Stream>> _streams;
    size_t _momentCount{0};
    std::map<std::string, QByteArray> _pending; /**< by the path of the file */
    qint64 _pendingSize{0};
    std::set<std::string> _written;
};

} // namespace IO
} // namespace Tellarix
