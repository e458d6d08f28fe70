// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/recordstream.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Tellarix {
namespace IO {

/** What the reader of a format knows of the file, or pipe, that it reads. */
class TELLARIX_CLIENT_API RecordInput
{
public:
    virtual ~RecordInput();

    /**
     * Reads what is there, from the first byte of the file on: at least a byte, at most @p size.
     * @return 0 at the end, on errors, which have been told, and once the stream was closed
     */
    virtual size_t read(char *target, size_t size) = 0;
    /** Reads up to @p size bytes behind those of @p bytes; false when read() gives 0. */
    bool readBehind(std::string &bytes, size_t size = 256 * 1024);

    /** Bytes of the whole file; -1 for a pipe, whose bytes may come slowly. */
    virtual int64_t size() const = 0;
    /** The stream was closed, by any thread: nothing else is wanted. */
    virtual bool isClosed() const = 0;
    /** True if records with these codes and times are asked for; others can be left out. */
    virtual bool isRequested(const StreamCodes &codes,
                             const Core::TimeWindow &recordWindow) const = 0;
    /** Tells of damage, or of what its reader ought to know.
     *  @param offset  byte at which it begins; -1 if it concerns the whole file */
    virtual void tell(StreamMessage::Severity severity, int64_t offset,
                      const std::string &cause) = 0;
};

/** Makes records of one file. It is told no two things at once. */
class TELLARIX_CLIENT_API RecordReader
{
public:
    virtual ~RecordReader();

    /**
     * Reads as much as it takes to know whether there is something to read; called once, first.
     * @param cause  why false is returned, as in "SAC file is not evenly spaced"
     */
    virtual bool begin(std::string &cause);
    /** The next record; null at the end. Damage is told to the input, and skipped. */
    virtual RecordPtr next() = 0;
    /** The byte of the file at which the last record began; -1 if that has no meaning. */
    virtual int64_t originOffset() const { return -1; }
};

/** A format of files with records. */
struct TELLARIX_CLIENT_API RecordFormat
{
    /** What becomes of a file that none of the formats recognizes. */
    enum class Search
    {
        None,
        BehindDamage, /**< the reader's begin() looks for a record farther on */
    };

    std::string name;                  /**< for users, as in "miniSEED" */
    std::vector<std::string> suffixes; /**< of file names, without a dot; for dialogs */
    size_t signatureSize; /**< bytes from the first on that are enough for recognizes */
    std::function<bool(std::string_view firstBytes)> recognizes;
    std::function<std::unique_ptr<RecordReader>(RecordInput &)> makeReader;
    Search search{Search::None};
};

using RecordFormatCPtr = std::shared_ptr<const RecordFormat>;

/** All formats, in the order in which files are compared with them: first miniSEED and SAC, then
 *  those that are offered, in the order in which they came. */
TELLARIX_CLIENT_API std::vector<RecordFormatCPtr> recordFormats();

/**
 * Offers a format for as long as it lives: a static object of the reader's source, or a member of a
 * plug-in. Of those with one name the first stands. Files that are open are read to the end.
 *
 * One without a name, recognizes or makeReader is told to the log "tellarix.io" and not offered.
 */
class TELLARIX_CLIENT_API RecordFormatOffer
{
public:
    explicit RecordFormatOffer(RecordFormat format);
    ~RecordFormatOffer();

    RecordFormatOffer(const RecordFormatOffer &) = delete;
    RecordFormatOffer &operator=(const RecordFormatOffer &) = delete;
};

} // namespace IO
} // namespace Tellarix
