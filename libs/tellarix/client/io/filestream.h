// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/recordformat.h>

#include <atomic>
#include <memory>

namespace Tellarix {
namespace IO {

/**
 * Records of a file, "file://PATH", or of standard input, "file://-".
 *
 * Reads what recordFormats() know, told apart by what is in the file. The path is taken as it
 * stands, without percent-encoding. Records come in the order of the file. Pipes are read as their
 * bytes arrive.
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
    /** Fails also if the file is of no known format; for pipes that shows in next(). */
    bool open() override;
    RecordPtr next() override;
    void close() override;

    std::string originName() const override { return _name; }
    int64_t originOffset() const override { return _reader ? _reader->originOffset() : -1; }
    double progress() const override;

    /** The errorString() without the name of the file in front. */
    const std::string &failureCause() const { return _failureCause; }

private:
    class Input;

    bool failAt(const std::string &cause);
    bool openFile();
    void closeFile();

    bool makeReader(std::string &cause);
    RecordFormatCPtr recognizedFormat(const std::vector<RecordFormatCPtr> &formats);
    bool beginWith(const RecordFormat &format, std::string &cause);
    void rewind();

    bool isReading() const { return !_atEnd && !_closed; }
    size_t read(char *target, size_t size);
    size_t readFile(char *target, size_t size);
    bool waitForBytes() const;

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
    std::string _firstBytes; /**< by which the format was found */
    size_t _firstBytesUsed{0};
    bool _atEnd{false};
    std::unique_ptr<Input> _input;
    std::unique_ptr<RecordReader> _reader;
    int64_t _messages{0};
    int64_t _faultsLeftOut{0};
    int64_t _notesLeftOut{0};
};

} // namespace IO
} // namespace Tellarix
