// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/archivewriter.h>

#include <tellarix/client/io/dayfilename.h>
#include <tellarix/client/io/filestream.h>
#include <tellarix/client/io/savefile.h>
#include <tellarix/client/remote/coveredtime_p.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <cctype>
#include <functional>
#include <string_view>
#include <tuple>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace Tellarix {
namespace IO {

namespace {

constexpr int64_t USecsPerDay = 86400LL * 1000000;
constexpr qint64 MostPending = 32 << 20; // bytes
constexpr size_t MostMoments = 2000000;
const Core::TimeSpan OneDay(86400.0);
// A record of a wrong rate may claim to last for centuries.
const Core::TimeSpan LongestLookedAt(400 * 86400.0);

Core::Time dayOf(Core::Time time)
{
    const int64_t usecs = time.usecs();
    const int64_t sinceMidnight = (usecs % USecsPerDay + USecsPerDay) % USecsPerDay;
    return time - Core::TimeSpan(static_cast<double>(sinceMidnight) * 1E-6);
}

/** Codes come from anywhere, and must not lead out of the tree. */
bool isName(const std::string &code)
{
    return std::all_of(code.begin(), code.end(), [](unsigned char character) {
        return std::isalnum(character) || character == '_' || character == '-';
    });
}

bool canBePath(const StreamCodes &codes)
{
    return !codes.network().empty() && !codes.station().empty() && !codes.channel().empty() &&
           isName(codes.network() + codes.station() + codes.location() + codes.channel());
}

bool replaceFile(const QString &path, const QByteArray &bytes, std::string *error)
{
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && writeWhole(file, bytes) && commitWhole(file))
        return true;
    *error = path.toStdString() + ": " + file.errorString().toStdString();
    return false;
}

/** Keeps other writers of the same folder away for as long as it lives. */
class FolderLock
{
public:
    explicit FolderLock(const QString &folder)
        : _descriptor(
              ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    {
        if (_descriptor >= 0)
            ::flock(_descriptor, LOCK_EX);
    }
    ~FolderLock()
    {
        if (_descriptor >= 0)
            ::close(_descriptor);
    }

    FolderLock(const FolderLock &) = delete;
    FolderLock &operator=(const FolderLock &) = delete;

private:
    const int _descriptor;
};

} // namespace

bool appendToFile(const std::string &path, const QByteArray &bytes, std::string *error)
{
    const QString name = QString::fromStdString(path);
    const FolderLock lock(QFileInfo(name).path());
    QFile file(name);
    const qint64 before = file.size();
    if (before == 0)
        return replaceFile(name, bytes, error);
    if (file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered) &&
        file.write(bytes) == bytes.size())
        return true;
    *error = path + ": " + file.errorString().toStdString();
    if (file.isOpen())
        file.resize(before);
    return false;
}

/** What a tree has of a stream. */
struct ArchiveWriter::Stream
{
    /** Start, number of samples, and their hash where the time alone says little. */
    using Moment = std::tuple<Core::Time, int, size_t>;

    static Moment momentOf(const Record &record)
    {
        size_t hash = 0;
        if (!record.hasEndTime() && record.data()) {
            const auto size = static_cast<size_t>(record.sampleCount()) *
                              static_cast<size_t>(record.data()->elementSize());
            hash = std::hash<std::string_view>()(
                {static_cast<const char *>(record.data()->data()), size});
        }
        return {record.startTime(), record.sampleCount(), hash};
    }

    bool holds(const Record &record) const
    {
        if (moments.count(momentOf(record)) > 0)
            return true;
        return !record.timeWindow().isEmpty() &&
               before.covers(record.timeWindow(), toleranceOf(record));
    }

    void addBefore(const Record &record)
    {
        if (record.timeWindow().isEmpty())
            moments.insert(momentOf(record));
        else
            before.add(record.timeWindow(), toleranceOf(record));
    }

    static Core::TimeSpan toleranceOf(const Record &record)
    {
        return Core::TimeSpan(0.5 / record.samplingFrequency());
    }

    CoveredTime before;        /**< what was there before the writer came */
    std::set<Moment> moments;  /**< of records written since, and of all without an end */
    std::set<Core::Time> days; /**< whose files were read */
};

ArchiveWriter::ArchiveWriter(std::string root) : _root(std::move(root))
{}

ArchiveWriter::~ArchiveWriter() = default;

ArchiveWriter::Outcome ArchiveWriter::add(const Record &record)
{
    if (!canBePath(*record.codes()))
        return fail(Outcome::Refused, record.streamID() + ": is no name for a file of an archive");
    std::unique_ptr<Stream> &stream = _streams[record.streamID()];
    if (!stream)
        stream = std::make_unique<Stream>();
    if (!load(record, *stream))
        return Outcome::Refused;
    if (stream->holds(record))
        return Outcome::Known;

    std::vector<PackedRecord> packed;
    if (!_packer.pack(record, &packed))
        return fail(Outcome::Refused, _packer.errorString());
    for (const PackedRecord &piece : packed) {
        _pending[path(record.codes(), piece.startTime)] += piece.bytes;
        _pendingSize += piece.bytes.size();
    }
    if (stream->moments.insert(Stream::momentOf(record)).second)
        ++_momentCount;
    if (_pendingSize > MostPending && !flush())
        return Outcome::Failed;
    forgetOld();
    return Outcome::Added;
}

bool ArchiveWriter::flush()
{
    for (auto file = _pending.begin(); file != _pending.end(); file = _pending.erase(file)) {
        const QString folder = QFileInfo(QString::fromStdString(file->first)).path();
        if (!QDir().mkpath(folder)) {
            _errorString = folder.toStdString() + ": can't be made";
            return false;
        }
        if (!appendToFile(file->first, file->second, &_errorString))
            return false;
        _pendingSize -= file->second.size();
        _written.insert(file->first);
    }
    return true;
}

ArchiveWriter::Outcome ArchiveWriter::fail(Outcome outcome, const std::string &reason)
{
    _errorString = reason;
    return outcome;
}

/** Reads the files in which samples of the record may be, before anything is written to them. */
bool ArchiveWriter::load(const Record &record, Stream &stream)
{
    const Core::Time first = dayOf(record.startTime()) - OneDay;
    const Core::Time last = std::min(dayOf(record.timeWindow().endTime()), first + LongestLookedAt);
    for (Core::Time day = first; day <= last; day = day + OneDay) {
        if (stream.days.count(day) == 0 && !loadDay(record, day, stream))
            return false;
        stream.days.insert(day);
    }
    return true;
}

bool ArchiveWriter::loadDay(const Record &record, Core::Time day, Stream &stream)
{
    const std::string name = path(record.codes(), day);
    if (QFileInfo(QString::fromStdString(name)).size() == 0)
        return true;
    FileStream file;
    // What is wrong with a file of before is told by whoever reads it.
    file.setMessageHandler([](const StreamMessage &) {});
    if (!file.setSource(name) || !file.open()) {
        _errorString = name + ": is left alone: " + file.failureCause();
        return false;
    }
    while (const RecordPtr found = file.next()) {
        if (found->streamID() == record.streamID())
            stream.addBefore(*found);
    }
    return true;
}

/** Bounds the memory; what is forgotten is read again where it is needed. */
void ArchiveWriter::forgetOld()
{
    if (_momentCount < MostMoments || !flush())
        return;
    _streams.clear();
    _momentCount = 0;
}

std::string ArchiveWriter::path(const StreamCodesCPtr &codes, Core::Time time) const
{
    DayFileName name;
    name.codes = codes;
    name.type = "D";
    name.day = dayOf(time);
    return _root + '/' + name.folder() + '/' + name.text();
}

} // namespace IO
} // namespace Tellarix
