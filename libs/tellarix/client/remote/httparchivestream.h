// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/dayfilename.h>
#include <tellarix/client/io/recordstream.h>

#include <QUrl>

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace Tellarix {
namespace IO {

class HttpArchiveListing;
class HttpClient;
class JoinedReader;
class ServerOutage;
struct JoinedMonitor;

/**
 * Records of a tree of day files behind a web server or in an object store,
 * "archive+https://[USER@]HOST[:PORT]/PATH" or "archive+http://...". The tree is that of
 * ArchiveStream.
 *
 * | option        | default | meaning                                                         |
 * |---------------|---------|-----------------------------------------------------------------|
 * | type          | D       | type of the day files: D, E, L ...                              |
 * | files         | 4       | files that are read side by side                                |
 * | pause         | 2       | seconds for which a server that is away is waited for first,    |
 * |               |         | doubled for each further time                                   |
 * | longest-pause | 60      | seconds up to which pauses grow                                 |
 * | patience      | 14400   | seconds after which a server that is away is given up           |
 *
 * Files of streams without wildcards, in a window with both ends, are asked for by name. All else
 * needs folders that can be listed: as pages of links, or as the XML lists of object stores.
 * Streams are delivered one after another in the order of their ids, the files of each in the order
 * of time. Of large files only the part that is needed is fetched, if the server knows ranges. A
 * file that isn't there is no fault; what can't be read is told and left out.
 *
 * A server that can't be reached, keeps silent or is overloaded although it has answered before is
 * waited for; a line tells so, and another when it is back. One that has never answered since
 * open() is given up after a second or two: the address may as well be wrong.
 */
class TELLARIX_CLIENT_API HttpArchiveStream : public RecordStream
{
public:
    /** @param scheme  "https" or "http" */
    explicit HttpArchiveStream(const char *scheme);
    ~HttpArchiveStream() override;

    bool setSource(const std::string &source) override;
    /** Finds the files; fails where a folder has to be listed and can't be. */
    bool open() override;
    RecordPtr next() override;
    void close() override;

    std::string originName() const override { return _originName; }
    int64_t originOffset() const override { return _originOffset; }
    double progress() const override { return _progress; }
    std::string outage() const override;

private:
    struct File
    {
        DayFileName name;
        QUrl url;
        bool operator<(const File &other) const;
    };
    struct Reading;

    bool findFiles(const Request &request, HttpArchiveListing &listing);
    bool findInYear(const Request &request, int year, HttpArchiveListing &listing);
    bool findInChannel(const Request &request, int year, const std::string &folder,
                       HttpArchiveListing &listing);
    bool matching(HttpArchiveListing &listing, const std::string &folder,
                  const std::string &pattern, const std::string &ending,
                  std::vector<std::string> &names);
    bool years(const Request &request, HttpArchiveListing &listing, std::vector<int> &result);
    bool addFile(const DayFileName &name);

    void startReading();
    bool endReading(Reading &reading);
    void endReaders();
    void pass(const StreamMessage &message);
    void tellAlike();
    bool accepts(const Record &record, const File &file);
    void tellOutage(const std::string &text);
    StreamMessage messageOfServer(StreamMessage::Severity severity, const std::string &text) const;

    const QString _scheme;
    QUrl _root;
    std::string _type;
    int _sideBySide{4};
    std::unique_ptr<ServerOutage> _outage;
    std::vector<StreamMessage> _notices; /**< of the server, not of a file */

    std::set<File> _files; /**< those that were not begun yet */
    size_t _fileCount{0};
    std::shared_ptr<JoinedMonitor> _monitor;
    std::deque<std::shared_ptr<Reading>> _readings; /**< in the order of the files */
    HttpClient *_lister{nullptr};                   /**< while open() needs it */
    std::set<std::string> _strangers; /**< foreign streams of the file that were told */
    std::set<std::string> _causes;    /**< why files could not be read */
    size_t _alike{0};                 /**< files that could not be read for one of these */
    std::string _originName;
    int64_t _originOffset{-1};
    std::atomic<double> _progress{-1};
};

} // namespace IO
} // namespace Tellarix
