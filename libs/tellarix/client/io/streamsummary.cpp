// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/streamsummary.h>

#include <tellarix/core/records/record.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <set>
#include <string_view>
#include <tuple>

namespace Tellarix {
namespace IO {

namespace {

/** Difference of two rates, relative to the first, that clocks show without a change of rate. */
constexpr double RateTolerance = 1E-4;

uint64_t hashOf(const NumericArray &samples)
{
    const auto size =
        static_cast<size_t>(samples.size()) * static_cast<size_t>(samples.elementSize());
    return std::hash<std::string_view>()({static_cast<const char *>(samples.data()), size});
}

std::string format(const char *form, double a, double b = 0)
{
    char text[160];
    std::snprintf(text, sizeof text, form, a, b);
    return text;
}

double toSeconds(int64_t usecs)
{
    return static_cast<double>(usecs) * 1E-6;
}

} // namespace

bool StreamSummarizer::Entry::hasValuesOf(const Entry &other) const
{
    // The same numbers may be stored as integers here and as floating point numbers there.
    return contentHash == other.contentHash ||
           std::tie(finiteSamples, minimum, maximum, sum) ==
               std::tie(other.finiteSamples, other.minimum, other.maximum, other.sum);
}

bool StreamSummarizer::Differs::operator()(const Entry *a, const Entry *b) const
{
    // Any number of messages can bear the same time.
    const auto content = [](const Entry *entry) {
        return entry->isSpan() ? uint64_t(0) : entry->contentHash;
    };
    return std::make_tuple(a->start, a->end, a->samples, content(a)) <
           std::make_tuple(b->start, b->end, b->samples, content(b));
}

void StreamSummarizer::add(const Record &record, const std::string &originName,
                           int64_t originOffset)
{
    Entry entry = entryOf(record);
    entry.origin = originIndex(originName);
    entry.originOffset = originOffset;

    Stream &stream = _streams[record.streamID()];
    if (stream.entries.empty() || record.startTime() < stream.firstSampleTime)
        stream.firstSampleTime = record.startTime();
    stream.lastSampleTime = std::max(stream.lastSampleTime, record.lastSampleTime());
    stream.entries.push_back(entry);
}

StreamSummaries StreamSummarizer::result() const
{
    StreamSummaries result;
    Notes notes;
    for (const auto &item : _streams)
        result.streams.push_back(summarize(item.first, item.second, notes));
    result.notes = messages(std::move(notes));
    return result;
}

uint32_t StreamSummarizer::originIndex(const std::string &name)
{
    // Records of one file come one after the other.
    if (!_origins.empty() && _origins.back() == name)
        return static_cast<uint32_t>(_origins.size() - 1);
    const auto [entry, isNew] =
        _originIndices.emplace(name, static_cast<uint32_t>(_origins.size()));
    if (isNew)
        _origins.push_back(name);
    return entry->second;
}

StreamSummarizer::Entry StreamSummarizer::entryOf(const Record &record)
{
    const bool isText = record.dataType() == DataType::Char;
    const SampleSummary &summary = record.summary();

    Entry entry = {};
    entry.samplingFrequency = isText ? 0 : record.samplingFrequency();
    entry.start = record.startTime().usecs();
    entry.end = record.hasEndTime() && !isText ? record.endTime().usecs() : entry.start;
    entry.samples = record.sampleCount();
    entry.finiteSamples = isText ? 0 : static_cast<int32_t>(summary.count);
    if (entry.finiteSamples > 0) {
        entry.sum = summary.sum;
        entry.minimum = summary.minimum;
        entry.maximum = summary.maximum;
    }
    entry.contentHash = record.sampleCount() > 0 ? hashOf(*record.data()) : 0;
    return entry;
}

StreamSummary StreamSummarizer::summarize(const std::string &id, const Stream &stream, Notes &notes)
{
    StreamSummary summary;
    summary.id = id;
    summary.firstSampleTime = stream.firstSampleTime;
    summary.lastSampleTime = stream.lastSampleTime;

    const size_t firstNote = notes.size();
    const Order kept = withoutDuplicates(stream, notes);
    addTotals(kept, summary);
    noteDisorder(kept, notes);
    countGaps(kept, summary, notes);
    for (size_t i = firstNote; i < notes.size(); ++i)
        notes[i].cause.insert(0, id + ": ");
    return summary;
}

StreamSummarizer::Order StreamSummarizer::withoutDuplicates(const Stream &stream, Notes &notes)
{
    Order kept;
    std::set<const Entry *, Differs> seen;
    for (const Entry &entry : stream.entries) {
        const auto [original, isNew] = seen.insert(&entry);
        if (isNew || entry.samples == 0) {
            kept.push_back(&entry);
            continue;
        }
        notes.push_back({&entry, entry.hasValuesOf(**original)
                                     ? "duplicate of an earlier record, not counted"
                                     : "same times as an earlier record, but other samples; "
                                       "not counted"});
    }
    return kept;
}

void StreamSummarizer::addTotals(const Order &records, StreamSummary &summary)
{
    // Sums of records are whole numbers as a rule: the wider type keeps the mean of years exact.
    long double sum = 0;
    for (const Entry *record : records) {
        summary.samples += record->samples;
        summary.values.add({record->minimum, record->maximum, record->sum, record->finiteSamples});
        sum += static_cast<long double>(record->sum);
    }
    summary.records = static_cast<int64_t>(records.size());
    summary.values.sum = static_cast<double>(sum);
    if (summary.values.count > 0)
        summary.mean = static_cast<double>(sum / static_cast<long double>(summary.values.count));
}

void StreamSummarizer::noteDisorder(const Order &records, Notes &notes)
{
    const Entry *previous = nullptr;
    for (const Entry *record : records) {
        if (previous && previous->origin == record->origin && record->start < previous->start) {
            notes.push_back({record, format("out of order: starts %g s before the record of its "
                                            "stream in front of it",
                                            toSeconds(previous->start - record->start))});
        }
        previous = record;
    }
}

void StreamSummarizer::countGaps(Order records, StreamSummary &summary, Notes &notes)
{
    std::stable_sort(records.begin(), records.end(),
                     [](const Entry *a, const Entry *b) { return a->start < b->start; });

    const Entry *previous = nullptr; // in the order of time
    const Entry *latest = nullptr;   // the one with the latest end so far
    for (const Entry *record : records) {
        if (!record->isSpan())
            continue;
        if (!previous) {
            summary.samplingFrequency = record->samplingFrequency;
            previous = latest = record;
            continue;
        }

        const double difference = toSeconds(record->start - latest->end);
        const double tolerance = 0.5 / latest->samplingFrequency;
        if (difference > tolerance) {
            ++summary.gaps;
        } else if (difference < -tolerance) {
            ++summary.overlaps;
            notes.push_back(
                {record, format(record->end <= latest->end
                                    ? "overlap: lies wholly, %g s, within earlier records"
                                    : "overlap: starts %g s before the end of earlier records",
                                toSeconds(std::min(latest->end, record->end) - record->start))});
        }
        const double change = record->samplingFrequency - previous->samplingFrequency;
        if (std::abs(change) > RateTolerance * previous->samplingFrequency) {
            notes.push_back(
                {record, format("sampling frequency changes from %g Hz to %g Hz",
                                previous->samplingFrequency, record->samplingFrequency)});
        }
        previous = record;
        if (record->end > latest->end)
            latest = record;
    }
}

std::vector<StreamMessage> StreamSummarizer::messages(Notes notes) const
{
    std::stable_sort(notes.begin(), notes.end(), [](const Note &a, const Note &b) {
        return std::tie(a.entry->origin, a.entry->originOffset) <
               std::tie(b.entry->origin, b.entry->originOffset);
    });

    std::vector<StreamMessage> result;
    result.reserve(notes.size());
    for (Note &note : notes) {
        StreamMessage message;
        message.severity = StreamMessage::Severity::Note;
        message.source = _origins[note.entry->origin];
        message.offset = note.entry->originOffset;
        message.cause = std::move(note.cause);
        result.push_back(std::move(message));
    }
    return result;
}

} // namespace IO
} // namespace Tellarix
