// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/recordstream.h>
#include <tellarix/core/records/formats/miniseed.h>
#include <tellarix/core/records/formats/recordscanner.h>

#include <atomic>
#include <optional>

namespace Tellarix {
namespace IO {

/**
 * Records of a file, "file://PATH", or of standard input, "file://-".
 *
 * Reads miniSEED 2 and 3, also mixed, and SAC, told apart by what is in the file. The path is taken
 * as it stands, without percent-encoding. Records come in the order of the file. Pipes are read
 * as their bytes arrive.
 *
 * A file that is damaged all over is told by 1000 messages and one that counts the others. close()
 * also ends a read that finds nothing to deliver.
 */
class TELLARIX_CLIENT_API FileStream : public RecordStream
{
public:
    FileStream();
    ~FileStream() override;

    /** Also fails if there is no such file, or it is a directory, not readable or empty. */
    bool setSource(const std::string &source) override;
    /** Fails also if the file is neither miniSEED nor SAC; for pipes that shows in next(). */
    bool open() override;
    RecordPtr next() override;
    void close() override;

    std::string originName() const override { return _name; }
    int64_t originOffset() const override { return _originOffset; }
    double progress() const override;

    /** The errorString() without the name of the file in front. */
    const std::string &failureCause() const { return _failureCause; }

private:
    enum class Format
    {
        Unknown,
        MiniSeed,
        Sac,
    };

    bool failAt(const std::string &cause);
    bool openFile();
    void closeFile();

    void detectFormat();
    bool checkFormat();
    bool findFirstRecord();

    bool isReading() const { return !_atEnd && !_closed; }
    bool readMore();
    bool waitForBytes() const;

    RecordPtr nextMiniSeed();
    RecordPtr decodeFound();
    RecordPtr nextSac();
    void reportAt(StreamMessage::Severity severity, int64_t offset, const std::string &cause);
    void reportLeftOut();

    std::string _path;
    std::string _failureCause;
    std::string _name; /**< the path as messages give it */
    bool _regular{true};
    int _file{-1};
    const int _wakeUp; /**< event descriptor that close() makes readable */
    std::atomic<int64_t> _size{-1};
    std::atomic<int64_t> _position{0};
    std::atomic<bool> _closed{true};
    Format _format{Format::Unknown};
    Formats::RecordScanner _scanner;
    std::optional<Formats::RecordScanner::Step> _heldStep; /**< taken while the format was found */
    Formats::MiniSeedDecoder _decoder;
    bool _atEnd{false};
    int64_t _originOffset{-1};
    int64_t _messages{0};
    int64_t _faultsLeftOut{0};
    int64_t _notesLeftOut{0};
};

} // namespace IO
} // namespace Tellarix
