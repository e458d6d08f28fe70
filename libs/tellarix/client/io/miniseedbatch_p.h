// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/recordstream.h>
#include <tellarix/core/parallel.h>
#include <tellarix/core/records/formats/miniseed.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Tellarix {
namespace IO {

/** What decoding gives. Apart from what was found, so that the threads that decode and the one that
 *  reads share few lines of the cache. */
struct DecodedRecord
{
    RecordPtr record;
    std::string cause; /**< why there is no record, or what is doubtful about it */
};

/** A record that was found in a file, or something to tell, or both: then that is told first. */
struct FoundRecord
{
    void clear();
    /** Decodes the record, if there is one, whose bytes @p bytes begin with.
     *  @param memory  for its samples; null for memory of their own */
    void decode(std::string_view bytes, SampleMemory *memory, DecodedRecord &decoded) const;

    int64_t offset{0};
    StreamMessage::Severity severity{StreamMessage::Severity::Fault};
    std::string message; /**< empty if there is nothing to tell */

    Formats::MiniSeedHeader header; /**< without identifier */
    StreamCodesCPtr codes;          /**< null without a record */
    SampleMemoryPtr memory;         /**< that records of the stream share */
    size_t position{0};             /**< of the record in the bytes of its batch */
};

/**
 * Neighbouring records of a file, on their way from the scanner to the reader, which a thread of
 * the pool of decoders decodes meanwhile. Used again and again, so that no memory is asked for.
 */
class MiniSeedBatch
{
public:
    MiniSeedBatch();
    ~MiniSeedBatch();

    /** How many threads of that pool may decode at the same time, beside those that wait for them;
     *  at least 1. */
    static int ThreadCount();

    /** Room for what may be found next, cleared; it becomes part of the batch by add(). */
    FoundRecord &room();
    /** Adds what is in the room, with a copy of the bytes of its record. */
    void add(std::string_view record);
    bool isEmpty() const { return _content->count == 0; }
    /** Bytes of the records. */
    size_t byteCount() const { return _content->bytes.size(); }
    bool isFull() const;

    /** Has the records decoded. */
    void begin();
    /** Decodes what nobody has begun with; false if others still decode the rest. After begin(). */
    bool help();
    /** The next one, decoded, in the order of add(); null at the end, and then the batch is empty
     *  again. After begin(). */
    FoundRecord *next();
    /** What decoding the one of next() gave. */
    DecodedRecord &decoded() { return _content->decoded[_next - 1]; }

private:
    struct Content
    {
        void decode(int chunk);

        std::vector<char> bytes;
        std::vector<FoundRecord> found; /**< with places that are not in use */
        std::vector<DecodedRecord> decoded;
        size_t count{0};
    };

    std::shared_ptr<Content> _content;
    std::unique_ptr<Core::SharedCalls> _decoding;
    size_t _next{0};
};

} // namespace IO
} // namespace Tellarix
