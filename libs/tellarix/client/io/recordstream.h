// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/core/baseobject.h>
#include <tellarix/core/records/forward.h>
#include <tellarix/core/timewindow.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace Tellarix {
namespace IO {

class RecordStream;
using RecordStreamPtr = Core::SmartPointer<RecordStream>;

/** Something that a stream could not read, or that its reader ought to know. */
struct TELLARIX_CLIENT_API StreamMessage
{
    enum class Severity
    {
        Note,  /**< nothing is lost */
        Fault, /**< something could not be read */
    };

    Severity severity{Severity::Fault};
    std::string source; /**< file name or address */
    int64_t offset{-1}; /**< byte at which it begins, -1 if it concerns the whole source */
    std::string cause;  /**< e.g. "record of 512 bytes is cut off after 94" */

    /** "SOURCE: byte OFFSET: CAUSE", without the offset if there is none. */
    std::string text() const;
};

/**
 * A source of records that is opened by a URL: set up, open, and then next() until it gives null.
 *
 * A stream is used by one thread, except for close(), which any thread may call and which makes a
 * blocked next() return soon. Damage is told to the message handler and skipped: whatever can be
 * read is delivered.
 */
class TELLARIX_CLIENT_API RecordStream : public Core::BaseObject
{
public:
    using MessageHandler = std::function<void(const StreamMessage &)>;

    /**
     * A stream for a URL "scheme://source"; a text without a scheme is taken for a file name. What
     * is wanted of it may stand behind `#`, see StreamRequest; such streams have that window,
     * whatever setTimeWindow() says.
     * @param error  set to the reason if null is returned; may be null
     * @return null if no such scheme is registered or its source is not well formed
     */
    static RecordStreamPtr Create(const std::string &url, std::string *error = nullptr);
    /** The registered schemes in alphabetical order. */
    static std::vector<std::string> Schemes();

    /** Sets the part of the URL behind "://"; false with an errorString() if it is not well
     *  formed. */
    virtual bool setSource(const std::string &source) = 0;
    /**
     * Asks for a stream; codes may hold `*` and `?`. Without any such call a stream gives all that
     * it has, if it can. A window of its own comes before the one of setTimeWindow().
     */
    virtual bool addStream(const std::string &network, const std::string &station,
                           const std::string &location, const std::string &channel,
                           const Core::TimeWindow &window = Core::TimeWindow());
    /** Limits what is delivered to records that overlap @p window; either end may be unset. */
    virtual bool setTimeWindow(const Core::TimeWindow &window);

    /** True if it goes on with what comes in from now on: next() then waits instead of ending.
     * Asked once streams and window are set. */
    virtual bool isLive() const { return false; }
    /**
     * Whether open() of a live source succeeds although its server can't be reached: next() then
     * waits for it. It fails if this isn't set before. A source that isn't live doesn't heed it: of
     * a server that has never answered, the address may as well be wrong.
     */
    void setPersistent(bool persistent) { _isPersistent = persistent; }
    bool isPersistent() const { return _isPersistent; }
    /** Opens the source; false with an errorString() if it can't be read at all. */
    virtual bool open() = 0;
    /** The next record; null at the end, after close() and when the source broke for good. */
    virtual RecordPtr next() = 0;
    /** Ends the stream; a next() that is blocked in another thread returns null soon. */
    virtual void close() = 0;

    /** Where the record that next() gave last came from: file and byte; -1 if that has no meaning.
     */
    virtual std::string originName() const { return std::string(); }
    virtual int64_t originOffset() const { return -1; }

    /** Share of the source that has been read, 0 to 1; negative if unknown. Any thread may ask. */
    virtual double progress() const { return -1; }

    /** Whom it waits for and why, e.g. "HOST:18000: Connection refused"; empty if the server is
     *  there, as far as is known. Any thread may ask. */
    virtual std::string outage() const { return std::string(); }

    /** Who is told about damage; without a handler it goes to the log "tellarix.io". */
    void setMessageHandler(MessageHandler handler) { _messageHandler = std::move(handler); }
    /** Why setSource, addStream or open failed. */
    const std::string &errorString() const { return _errorString; }

protected:
    struct Request
    {
        std::string network;
        std::string station;
        std::string location;
        std::string channel;
        Core::TimeWindow window;
    };

    /** True if the requests and time windows let a record with these codes and times through. */
    bool isRequested(const StreamCodes &codes, const Core::TimeWindow &recordWindow) const;
    const std::vector<Request> &requests() const { return _requests; }
    /** True if the codes of a stream match the patterns of a request. */
    static bool matches(const Request &request, const StreamCodes &codes);
    /** True if a record, which may have no length, meets a window of which any end may be unset. */
    static bool meets(const Core::TimeWindow &recordWindow, const Core::TimeWindow &window);
    /** The window of a request, or the common one if it has none of its own. */
    const Core::TimeWindow &windowOf(const Request &request) const;
    const Core::TimeWindow &requestedWindow() const { return _timeWindow; }

    /** isLive() of a stream for another URL that is asked for the same. */
    bool isLiveBy(const std::string &url) const;

    void report(StreamMessage message) const;
    /** Keeps the reason of a failure; always returns false. */
    bool fail(const std::string &reason);

private:
    const std::vector<size_t> &requestsFor(const StreamCodes &codes) const;

    std::vector<Request> _requests;
    /** Indices of the requests that a stream matches, by its id. */
    mutable std::unordered_map<std::string, std::vector<size_t>> _requestsOfStreams;
    Core::TimeWindow _timeWindow;
    MessageHandler _messageHandler;
    std::string _errorString;
    bool _isPersistent{false};
};

/**
 * Registers a scheme for as long as it lives: a static object of the stream's source, or a member
 * of a plug-in. Of those with one name the first stands.
 */
class TELLARIX_CLIENT_API RecordStreamScheme
{
public:
    using Maker = std::function<RecordStreamPtr()>;

    RecordStreamScheme(const std::string &scheme, Maker maker);
    ~RecordStreamScheme();

    RecordStreamScheme(const RecordStreamScheme &) = delete;
    RecordStreamScheme &operator=(const RecordStreamScheme &) = delete;
};

} // namespace IO
} // namespace Tellarix
