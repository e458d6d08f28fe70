// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/client/io/recordstream.h>
#include <tellarix/core/records/numericarray.h>
#include <tellarix/core/time.h>

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

namespace Tellarix {
namespace IO {

/** Facts about all records of one stream. */
struct StreamSummary
{
    std::string id; /**< "NET.STA.LOC.CHA" */
    int64_t records{0};
    int64_t samples{0};
    double samplingFrequency{0}; /**< of the earliest samples in Hz; 0 without a rate */
    Core::Time firstSampleTime;
    Core::Time lastSampleTime;
    int64_t gaps{0};
    int64_t overlaps{0};
    SampleSummary values; /**< empty for text */
    double mean{0};       /**< of the finite samples, more exact than the one of the summary */
};

/** What a StreamSummarizer found out. */
struct StreamSummaries
{
    std::vector<StreamSummary> streams; /**< in ascending order of their ids */
    /** Duplicates, overlaps, records out of order and changes of rate, each with the place of the
     *  record that it concerns, in the order in which the records came. */
    std::vector<StreamMessage> notes;
};

/**
 * Collects facts about streams record by record, in any order, without keeping samples: a record
 * costs some 80 bytes.
 *
 * A gap or an overlap is a difference of more than half a sample between the latest end of the
 * records before and the start of a record, in the order of time. A record with the bounds of one
 * that came earlier does not count, be it a true duplicate or one with other samples.
 */
class TELLARIX_CLIENT_API StreamSummarizer
{
public:
    /**
     * @param originName    file or address that the record comes from, for notes
     * @param originOffset  byte at which it begins there, -1 if unknown
     */
    void add(const Record &record, const std::string &originName = std::string(),
             int64_t originOffset = -1);

    StreamSummaries result() const;

private:
    struct Entry
    {
        int64_t start;
        int64_t end; /**< the start for a record without samples or rate */
        double samplingFrequency;
        double sum;
        double minimum;
        double maximum;
        uint64_t contentHash;
        int64_t originOffset;
        uint32_t origin;
        int32_t samples;
        int32_t finiteSamples;

        bool isSpan() const { return end > start; }
        bool hasValuesOf(const Entry &other) const;
    };
    using Order = std::vector<const Entry *>;

    /** Neither of two entries comes first if one of them is enough: same bounds, or same text. */
    struct Differs
    {
        bool operator()(const Entry *a, const Entry *b) const;
    };

    struct Stream
    {
        std::vector<Entry> entries;
        Core::Time firstSampleTime;
        Core::Time lastSampleTime;
    };

    struct Note
    {
        const Entry *entry;
        std::string cause;
    };
    using Notes = std::vector<Note>;

    uint32_t originIndex(const std::string &name);
    static Entry entryOf(const Record &record);
    static StreamSummary summarize(const std::string &id, const Stream &stream, Notes &notes);
    static Order withoutDuplicates(const Stream &stream, Notes &notes);
    static void addTotals(const Order &records, StreamSummary &summary);
    static void noteDisorder(const Order &records, Notes &notes);
    static void countGaps(Order records, StreamSummary &summary, Notes &notes);
    std::vector<StreamMessage> messages(Notes notes) const;

    std::map<std::string, Stream> _streams;
    std::vector<std::string> _origins;
    std::unordered_map<std::string, uint32_t> _originIndices;
};

} // namespace IO
} // namespace Tellarix
