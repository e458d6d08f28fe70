// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/filestream.h>

#include <tellarix/core/records/formats/sac.h>

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

// Small enough to stay in the second-level cache between reading and decoding.
constexpr size_t BlockSize = 256 * 1024;
// What is no record within so many bytes from the start makes the file one of another format.
constexpr int64_t MaxGarbage = 16 * 1024 * 1024;
constexpr int MaxMessages = 1000;
// Without a descriptor to be woken by, close() is looked for so often.
constexpr int PollMSecs = 50;

const char *const StandardInput = "-";

std::string systemError()
{
    return std::strerror(errno);
}

} // namespace

FileStream::FileStream() : _wakeUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
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
    _originOffset = -1;
    _format = Format::Unknown;
    _heldStep.reset();
    _scanner.reset();
    _scanner.setLookAhead(_regular);
    if (!_regular)
        return true;

    detectFormat();
    if (checkFormat())
        return true;
    closeFile();
    _closed = true;
    return false;
}

RecordPtr FileStream::next()
{
    if (_format == Format::Unknown && isReading())
        detectFormat();

    RecordPtr record;
    if (!_closed)
        record = _format == Format::Sac ? nextSac() : nextMiniSeed();
    if (!record) {
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

void FileStream::detectFormat()
{
    for (;;) {
        const std::string_view bytes = _scanner.pending();
        if (Formats::beginsLikeMiniSeed(bytes))
            _format = Format::MiniSeed;
        else if (Formats::beginsLikeSac(bytes))
            _format = Format::Sac;
        if (_format != Format::Unknown || bytes.size() >= Formats::SacHeaderSize)
            break;
        if (!readMore())
            break;
    }
    if (_format == Format::Unknown && (!_regular || findFirstRecord()))
        _format = Format::MiniSeed;
}

/** True if the file can be read as what it is; otherwise there is an errorString(). */
bool FileStream::checkFormat()
{
    if (_format == Format::Unknown)
        return failAt("neither miniSEED nor SAC");
    if (_format == Format::MiniSeed)
        return true;

    Formats::SacHeader header;
    std::string cause;
    std::string warning;
    return Formats::parseSacHeader(_scanner.pending(), header, cause, warning) || failAt(cause);
}

/** Looks for records behind a damaged beginning. */
bool FileStream::findFirstRecord()
{
    using Step = Formats::RecordScanner::Step;
    while (!_closed) {
        const Step step = _scanner.next();
        if (step == Step::Pause)
            continue;
        if (step != Step::NeedsBytes) {
            _heldStep = step;
            return step == Step::Record || !_scanner.pending().empty();
        }
        if (_position > MaxGarbage)
            return false;
        if (!readMore())
            _scanner.finish();
    }
    return true;
}

/**
 * Reads what is there, at least a byte; false at the end, after close() and on errors. Blocks of
 * one size, however many bytes are wanted: a damaged header may want any number of them.
 */
bool FileStream::readMore()
{
    if (!isReading() || (!_regular && !waitForBytes()))
        return false;

    char *target = _scanner.reserve(BlockSize);
    ssize_t count;
    do {
        count = ::read(_file, target, BlockSize);
    } while (count < 0 && (errno == EINTR || (errno == EAGAIN && waitForBytes())));
    if (_closed)
        return false;
    if (count < 0)
        reportAt(StreamMessage::Severity::Fault, _position, "reading failed: " + systemError());
    if (count <= 0) {
        _atEnd = true;
        return false;
    }
    _scanner.commit(static_cast<size_t>(count));
    _position += count;
    return true;
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

RecordPtr FileStream::nextMiniSeed()
{
    using Step = Formats::RecordScanner::Step;
    while (!_closed) {
        const Step step = _heldStep ? *_heldStep : _scanner.next();
        _heldStep.reset();
        switch (step) {
        case Step::Record:
            if (const RecordPtr record = decodeFound())
                return record;
            break;
        case Step::Fault:
            reportAt(StreamMessage::Severity::Fault, _scanner.offset(), _scanner.cause());
            break;
        case Step::Note:
            reportAt(StreamMessage::Severity::Note, _scanner.offset(), _scanner.cause());
            break;
        case Step::NeedsBytes:
            if (!readMore())
                _scanner.finish();
            break;
        case Step::Pause:
            break;
        case Step::End:
            return RecordPtr();
        }
    }
    return RecordPtr();
}

/** The record that the scanner stands at; null if it is not requested or can't be read. */
RecordPtr FileStream::decodeFound()
{
    const Formats::MiniSeedHeader &header = _scanner.header();
    const StreamCodes &codes = *_decoder.codes(header);
    if (!isRequested(codes, header.timeWindow()))
        return RecordPtr();

    const auto tell = [&](StreamMessage::Severity severity, const std::string &cause) {
        reportAt(severity, _scanner.offset(), codes.id() + ": " + cause);
    };
    if (!header.cause.empty())
        tell(StreamMessage::Severity::Fault, header.cause);
    if (header.sampleCount == 0) {
        tell(StreamMessage::Severity::Note, "record has no samples");
        return RecordPtr();
    }

    std::string cause;
    const RecordPtr record = _decoder.decode(header, _scanner.record(), cause);
    if (!cause.empty())
        tell(StreamMessage::Severity::Fault, cause);
    if (record)
        _originOffset = _scanner.offset();
    return record;
}

RecordPtr FileStream::nextSac()
{
    // A SAC file is one record.
    if (_originOffset == 0 || _scanner.pending().empty())
        return RecordPtr();

    Formats::SacHeader header;
    std::string cause;
    std::string warning;
    if (!Formats::parseSacHeader(_scanner.pending(), header, cause, warning)) {
        reportAt(StreamMessage::Severity::Fault, 0, cause);
        return RecordPtr();
    }
    _originOffset = 0;
    const size_t size = static_cast<size_t>(header.fileSize());
    while (_scanner.pending().size() < size && readMore()) {
    }
    if (_closed)
        return RecordPtr();

    const RecordPtr record = Formats::decodeSac(_scanner.pending(), cause);
    if (!cause.empty())
        reportAt(StreamMessage::Severity::Fault, 0, cause);
    // The rest of a file need not be read for that.
    const int64_t there = std::max<int64_t>(_size, static_cast<int64_t>(_scanner.pending().size()));
    if (there > header.fileSize())
        reportAt(StreamMessage::Severity::Fault, header.fileSize(),
                 std::to_string(there - header.fileSize()) + " bytes that belong to nothing");
    if (_regular)
        _position = there;
    return record && isRequested(*record->codes(), record->timeWindow()) ? record : RecordPtr();
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
