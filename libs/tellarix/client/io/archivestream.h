// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/dayfilename.h>
#include <tellarix/client/io/filestream.h>

#include <atomic>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace Tellarix {
namespace IO {

/**
 * Records of a tree of day files, "archive://ROOT" or, for another type than D (waveforms),
 * "archive://ROOT?type=L".
 *
 * A file of the tree is YEAR/NET/STA/CHA.TYPE/NET.STA.LOC.CHA.TYPE.YEAR.DAY, the day being that of
 * the year in three digits. A record belongs to the day of its first sample and may run past
 * midnight, so the file of the day before a time window is read as well. Streams are delivered one
 * after another in the order of their ids, the files of each in the order of time. What can't be
 * read, or is a pipe or another thing than a file, is told and left out.
 */
class TELLARIX_CLIENT_API ArchiveStream : public RecordStream
{
public:
    ~ArchiveStream() override;

    /** Also fails if there is no such directory. */
    bool setSource(const std::string &source) override;
    /** Lists the files that hold requested streams and times. */
    bool open() override;
    RecordPtr next() override;
    void close() override;

    std::string originName() const override;
    int64_t originOffset() const override;
    double progress() const override { return _progress; }

private:
    struct DayFile
    {
        DayFileName name;
        std::string path;
    };
    using Pattern = const std::string Request::*;

    bool checkRoot();
    void listYear(const std::string &directory);
    void listChannel(const std::string &directory);
    bool isRequestedYear(int year) const;
    bool matchesAny(Pattern pattern, const std::string &code) const;
    /** Names in a directory, those of subdirectories or of files; a failure is told. */
    std::vector<std::string> entries(const std::string &directory, bool directories) const;

    bool openCurrent();
    void setFile(const Core::SmartPointer<FileStream> &file);
    void requestOf(const DayFile &file, FileStream &stream) const;
    bool accepts(const Record &record);

    std::string _root;
    std::string _type{"D"};
    std::vector<DayFile> _files;
    size_t _current{0};
    Core::SmartPointer<FileStream> _file;
    std::mutex _fileMutex;            /**< close() comes from any thread */
    std::set<std::string> _strangers; /**< foreign streams of the file that were told */
    std::atomic<bool> _closed{true};
    std::atomic<double> _progress{-1};
};

} // namespace IO
} // namespace Tellarix
