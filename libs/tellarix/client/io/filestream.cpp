// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/filestream.h>

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tellarix {
namespace IO {

namespace {

const RecordStreamScheme fileScheme("file", [] { return RecordStreamPtr(new FileStream); });

// Formats that want more to be recognized get more.
constexpr size_t FirstBytes = 4096;
constexpr int MaxMessages = 1000;
// Without a descriptor to be woken by, close() is looked for so often.
constexpr int PollMSecs = 50;

const char *const StandardInput = "-";

std::string systemError()
{
    return std::strerror(errno);
}

/** "neither miniSEED nor SAC", "neither miniSEED, SAC nor text" */
std::string noneOf(const std::vector<RecordFormatCPtr> &formats)
{
    std::string text;
    for (size_t i = 0; i < formats.size(); ++i)
        text += (i == 0 ? "neither " : i + 1 == formats.size() ? " nor " : ", ") + formats[i]->name;
    return text;
}

} // namespace

/** What a reader sees of the stream. */
class FileStream::Input : public RecordInput
{
public:
    explicit Input(FileStream &stream) : _stream(stream) {}

    size_t read(char *target, size_t size) override { return _stream.read(target, size); }
    int64_t size() const override { return _stream._size; }
    bool isClosed() const override { return _stream._closed; }
    bool isRequested(const StreamCodes &codes, const Core::TimeWindow &recordWindow) const override
    {
        return _stream.isRequested(codes, recordWindow);
    }
    void tell(StreamMessage::Severity severity, int64_t offset, const std::string &cause) override
    {
        _stream.reportAt(severity, offset, cause);
    }

private:
    FileStream &_stream;
};

FileStream::FileStream()
    : _wakeUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), _input(new Input(*this))
{}

FileStream::~FileStream()
{
    closeFile();
    if (_wakeUp >= 0)
        ::close(_wakeUp);
}

bool FileStream::setSource(const std::string &source)
{
    if (source.empty())
        return fail("No file name given");

    _path = source;
    _name = source == StandardInput ? "standard input" : source;
    if (source == StandardInput)
        return true;

    struct stat status;
    if (::stat(_path.c_str(), &status) != 0)
        return failAt(systemError());
    if (S_ISDIR(status.st_mode))
        return failAt("is a directory");
    if (::access(_path.c_str(), R_OK) != 0)
        return failAt(systemError());
    if (S_ISREG(status.st_mode) && status.st_size == 0)
        return failAt("file is empty");
    return true;
}

bool FileStream::open()
{
    closeFile();
    _closed = false;
    if (!setSource(_path) || !openFile()) {
        _closed = true;
        return false;
    }

    _atEnd = false;
    _messages = _faultsLeftOut = _notesLeftOut = 0;
    _position = 0;
    _firstBytes.clear();
    _firstBytesUsed = 0;
    _reader.reset();
    // A pipe may have nothing to say yet.
    std::string cause;
    if (!_regular || makeReader(cause))
        return true;
    closeFile();
    _closed = true;
    return failAt(cause);
}

RecordPtr FileStream::next()
{
    std::string cause;
    if (!_reader && isReading() && !makeReader(cause) && !_closed)
        reportAt(StreamMessage::Severity::Fault, 0, cause);

    RecordPtr record;
    if (!_closed && _reader)
        record = _reader->next();
    if (!record) {
        // What a reader leaves is nothing that is yet to come.
        if (!_closed && _regular)
            _position = static_cast<int64_t>(_size);
        reportLeftOut();
        closeFile();
    }
    return record;
}

void FileStream::close()
{
    _closed = true;
    const uint64_t one = 1;
    // Fails only if the descriptor is readable already.
    const ssize_t written = ::write(_wakeUp, &one, sizeof one);
    Q_UNUSED(written)
}

double FileStream::progress() const
{
    const int64_t size = _size;
    if (size <= 0)
        return -1;
    return std::min(1.0, static_cast<double>(_position) / static_cast<double>(size));
}

bool FileStream::failAt(const std::string &cause)
{
    _failureCause = cause;
    return fail(_name + ": " + cause);
}

bool FileStream::openFile()
{
    uint64_t wakeUps;
    const ssize_t drained = ::read(_wakeUp, &wakeUps, sizeof wakeUps);
    Q_UNUSED(drained)

    // Without O_NONBLOCK a pipe that nobody writes to yet would block here.
    _file = _path == StandardInput ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                   : ::open(_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat status;
    if (_file < 0 || ::fstat(_file, &status) != 0)
        return failAt(systemError());
    _regular = S_ISREG(status.st_mode);
    _size = _regular ? static_cast<int64_t>(status.st_size) : -1;
    if (_regular)
        ::posix_fadvise(_file, 0, 0, POSIX_FADV_SEQUENTIAL);
    return true;
}

void FileStream::closeFile()
{
    if (_file >= 0)
        ::close(_file);
    _file = -1;
    _atEnd = true;
}

/** The reader for what is in the file; there is none if the cause says why. */
bool FileStream::makeReader(std::string &cause)
{
    const std::vector<RecordFormatCPtr> formats = recordFormats();
    const RecordFormatCPtr format = recognizedFormat(formats);
    rewind();
    if (format)
        return beginWith(*format, cause);

    for (const RecordFormatCPtr &candidate : formats) {
        if (candidate->search != RecordFormat::Search::BehindDamage)
            continue;
        if (beginWith(*candidate, cause))
            return true;
        if (!_regular)
            break; // What was read is gone.
        rewind();
    }
    cause = noneOf(formats);
    return false;
}

/** Reads as few bytes as it takes; null if no format has these first bytes. */
RecordFormatCPtr FileStream::recognizedFormat(const std::vector<RecordFormatCPtr> &formats)
{
    size_t enough = 0;
    for (const RecordFormatCPtr &format : formats)
        enough = std::max(enough, format->signatureSize);

    const size_t most = std::max(enough, FirstBytes);
    _firstBytes.resize(most);
    size_t size = 0;
    RecordFormatCPtr found;
    while (!found && size < enough) {
        const size_t count = readFile(&_firstBytes[size], most - size);
        if (count == 0)
            break;
        size += count;
        const std::string_view bytes(_firstBytes.data(), size);
        const auto format = std::find_if(
            formats.begin(), formats.end(),
            [bytes](const RecordFormatCPtr &candidate) { return candidate->recognizes(bytes); });
        found = format == formats.end() ? nullptr : *format;
    }
    _firstBytes.resize(size);
    return found;
}

bool FileStream::beginWith(const RecordFormat &format, std::string &cause)
{
    _reader = format.makeReader(*_input);
    if (!_reader)
        cause = "no reader could be made for " + format.name;
    else if (!_reader->begin(cause))
        _reader.reset();
    return _reader != nullptr;
}

/** Lets a reader begin with the first byte of a file. A pipe has its first bytes kept. */
void FileStream::rewind()
{
    if (!_regular)
        return;
    _firstBytes.clear();
    _atEnd = ::lseek(_file, 0, SEEK_SET) != 0;
    _position = 0;
}

size_t FileStream::read(char *target, size_t size)
{
    const size_t known = std::min(size, _firstBytes.size() - _firstBytesUsed);
    if (known == 0)
        return readFile(target, size);
    std::memcpy(target, _firstBytes.data() + _firstBytesUsed, known);
    _firstBytesUsed += known;
    return known;
}

/** Reads what is there, at least a byte; 0 at the end, after close() and on errors. */
size_t FileStream::readFile(char *target, size_t size)
{
    if (!isReading() || (!_regular && !waitForBytes()))
        return 0;

    ssize_t count;
    do {
        count = ::read(_file, target, size);
    } while (count < 0 && (errno == EINTR || (errno == EAGAIN && waitForBytes())));
    if (_closed)
        return 0;
    if (count < 0)
        reportAt(StreamMessage::Severity::Fault, _position, "reading failed: " + systemError());
    if (count <= 0) {
        _atEnd = true;
        return 0;
    }
    _position += count;
    return static_cast<size_t>(count);
}

/** Waits until bytes or the end have come; false if the stream was closed meanwhile. */
bool FileStream::waitForBytes() const
{
    pollfd descriptors[] = {{_file, POLLIN, 0}, {_wakeUp, POLLIN, 0}};
    while (!_closed) {
        if (::poll(descriptors, 2, _wakeUp < 0 ? PollMSecs : -1) > 0 &&
            descriptors[0].revents != 0 && !_closed)
            return true;
    }
    return false;
}

void FileStream::reportAt(StreamMessage::Severity severity, int64_t offset,
                          const std::string &cause)
{
    if (_messages++ < MaxMessages)
        report({severity, _name, offset, cause});
    else
        ++(severity == StreamMessage::Severity::Fault ? _faultsLeftOut : _notesLeftOut);
}

void FileStream::reportLeftOut()
{
    const int64_t count = _faultsLeftOut + _notesLeftOut;
    if (count == 0)
        return;
    const auto severity =
        _faultsLeftOut > 0 ? StreamMessage::Severity::Fault : StreamMessage::Severity::Note;
    report({severity, _name, -1,
            std::to_string(count) + " further messages, of which " +
                std::to_string(_faultsLeftOut) + " tell of something that could not be read"});
    _faultsLeftOut = _notesLeftOut = 0;
}

} // namespace IO
} // namespace Tellarix
