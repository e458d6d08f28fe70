// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/seedlinkprotocol.h>

#include <algorithm>
#include <cctype>

namespace Tellarix {
namespace IO {

namespace {

using Packet = SeedLinkPacket;

constexpr size_t HeaderSize = 8;
constexpr size_t LongestLine = 1024;
constexpr int64_t InfoRecordLength = 512;
constexpr size_t LongestMissingHeader = 4096;
constexpr size_t LocationLength = 2;
constexpr size_t ChannelLength = 3;
const char *const AllStreams = "?????";
// Servers look for the beginning of a window by one packet, and end it by one; streams that come
// later than others, and records that reach across, need some room.
const Core::TimeSpan Margin(60.0);

bool beginsWith(std::string_view text, std::string_view beginning)
{
    return text.substr(0, beginning.size()) == beginning;
}

/** True if @p bytes are a part of @p word or go on behind it. */
bool mayBe(std::string_view bytes, std::string_view word)
{
    return beginsWith(word, bytes.substr(0, word.size()));
}

bool isEqualNoCase(std::string_view text, std::string_view upper)
{
    return text.size() == upper.size() &&
           std::equal(text.begin(), text.end(), upper.begin(), [](char a, char b) {
               return std::toupper(static_cast<unsigned char>(a)) == b;
           });
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

bool parseSequence(std::string_view digits, uint32_t &sequence)
{
    sequence = 0;
    for (const char c : digits) {
        if (hexDigit(c) < 0)
            return false;
        sequence = sequence * 16 + static_cast<uint32_t>(hexDigit(c));
    }
    return true;
}

Packet lost(std::string_view bytes)
{
    Packet packet;
    packet.kind = Packet::Kind::Lost;
    packet.cause = "\"" + printable(bytes.substr(0, HeaderSize)) + "\" is no header of a packet";
    return packet;
}

Packet parseWord(std::string_view bytes)
{
    Packet packet;
    for (const auto &[word, kind] :
         {std::make_pair(std::string_view("END"), Packet::Kind::End),
          std::make_pair(std::string_view("ERROR"), Packet::Kind::Error)}) {
        if (!mayBe(bytes, word))
            continue;
        if (bytes.size() >= word.size()) {
            packet.kind = kind;
            packet.size = word.size();
            // Where there is no flow yet, it is a line.
            const SeedLinkReply line = parseSeedLinkReply(bytes);
            packet.size = std::max(packet.size, line.size);
        }
        return packet;
    }
    return lost(bytes);
}

/** Sets the record behind the header of a packet, as soon as all of it is there. */
void parseRecord(Packet &packet, std::string_view bytes, size_t lastLength, int64_t usualLength)
{
    using Formats::Finding;
    const std::string_view record = bytes.substr(HeaderSize);
    // A chain of blockettes that leads astray must not make us wait for long.
    const bool complete = record.size() >= LongestMissingHeader;
    Finding finding = Formats::parseMiniSeedHeader(record, complete, packet.header);
    if (finding == Finding::Incomplete)
        return;

    Formats::MiniSeedHeader &header = packet.header;
    if (finding == Finding::Record && header.length == 0 && !header.setLength(usualLength))
        finding = Finding::Damaged;
    if (finding == Finding::Record && header.length > static_cast<int64_t>(SeedLinkMaxRecord)) {
        header.cause = "record of " + std::to_string(header.length) + " bytes is too long";
        finding = Finding::Damaged;
    }
    const bool isSound = finding == Finding::Record;
    const size_t length = isSound ? static_cast<size_t>(header.length) : lastLength;
    if (record.size() < length)
        return;

    packet.size = HeaderSize + length;
    packet.kind = isSound ? Packet::Kind::Record : Packet::Kind::Damaged;
    packet.record = record.substr(0, length);
    if (!isSound)
        packet.cause = header.cause.empty() ? "is no miniSEED record" : header.cause;
}

/** An answer lies as text in records of the common length. */
void parseInfo(Packet &packet, std::string_view bytes)
{
    packet.isLast = bytes[HeaderSize - 1] != '*';
    parseRecord(packet, bytes, InfoRecordLength, InfoRecordLength);
    if (packet.kind != Packet::Kind::Record)
        return;

    const Formats::MiniSeedHeader &header = packet.header;
    packet.kind = Packet::Kind::Info;
    const std::string_view codes = header.identifier;
    packet.isRefused = codes.size() >= 10 && codes.substr(7, 3) == "ERR";
    const auto begin = std::min(static_cast<size_t>(header.dataOffset), packet.record.size());
    packet.text = packet.record.substr(begin, static_cast<size_t>(header.sampleCount));
}

/** The patterns of @p length characters that together let through what @p pattern does; none if
 *  that is always longer. */
std::vector<std::string> fixedPatterns(const std::string &pattern, size_t length)
{
    const size_t firstStar = pattern.find('*');
    const std::string begin = pattern.substr(0, firstStar);
    if (firstStar == std::string::npos)
        return begin.size() > length
                   ? std::vector<std::string>()
                   : std::vector<std::string>{begin + std::string(length - begin.size(), '-')};

    const size_t lastStar = pattern.rfind('*');
    const std::string end = pattern.substr(lastStar + 1);
    const std::string middle = pattern.substr(firstStar, lastStar - firstStar);
    const auto stars = static_cast<size_t>(std::count(middle.begin(), middle.end(), '*'));
    const size_t fixed = begin.size() + end.size();
    std::vector<std::string> patterns;
    // What ends in a certain way may be shorter than there is room for.
    for (size_t size = length; size >= fixed + middle.size() - stars; --size) {
        patterns.push_back(begin + std::string(size - fixed, '?') + end +
                           std::string(length - size, '-'));
        if (end.empty() || size == 0)
            break;
    }
    return patterns;
}

bool isCode(const std::string &pattern)
{
    return std::all_of(pattern.begin(), pattern.end(), [](unsigned char c) {
        return std::isalnum(c) || c == '*' || c == '?' || c == '_';
    });
}

Core::TimeWindow unitedWindow(const Core::TimeWindow &a, const Core::TimeWindow &b)
{
    Core::TimeWindow window;
    // Without a beginning one wants the present only, which any other window leads up to.
    if (a.startTime().valid() && b.startTime().valid())
        window.setStartTime(std::min(a.startTime(), b.startTime()));
    else
        window.setStartTime(a.startTime().valid() ? a.startTime() : b.startTime());
    if (a.endTime().valid() && b.endTime().valid())
        window.setEndTime(std::max(a.endTime(), b.endTime()));
    return window;
}

} // namespace

SeedLinkReply parseSeedLinkReply(std::string_view bytes)
{
    SeedLinkReply reply;
    const size_t end = bytes.substr(0, LongestLine).find('\n');
    if (end == std::string_view::npos) {
        if (bytes.size() >= LongestLine)
            reply.kind = SeedLinkReply::Kind::TooLong;
        return reply;
    }

    std::string_view line = bytes.substr(0, end);
    while (!line.empty() && (line.back() == '\r' || line.back() == ' '))
        line.remove_suffix(1);
    reply.size = end + 1;
    const std::string_view word = line.substr(0, line.find_first_of(" \r"));
    if (isEqualNoCase(word, "OK"))
        reply.kind = SeedLinkReply::Kind::Ok;
    else
        reply.kind =
            isEqualNoCase(word, "ERROR") ? SeedLinkReply::Kind::Error : SeedLinkReply::Kind::Text;
    if (reply.kind == SeedLinkReply::Kind::Error)
        line.remove_prefix(std::min(line.size(), word.size() + 1));
    reply.text = printable(line);
    return reply;
}

SeedLinkPacket parseSeedLinkPacket(std::string_view bytes, size_t lastLength)
{
    Packet packet;
    if (bytes.empty())
        return packet;
    if (bytes[0] == 'E')
        return parseWord(bytes);
    if (!mayBe(bytes, "SL"))
        return lost(bytes);
    if (bytes.size() < HeaderSize)
        return packet;

    const bool isInfo = beginsWith(bytes, "SLINFO ") && (bytes[7] == '*' || bytes[7] == ' ');
    if (isInfo)
        parseInfo(packet, bytes);
    else if (parseSequence(bytes.substr(2, 6), packet.sequence))
        parseRecord(packet, bytes, lastLength, InfoRecordLength);
    else
        return lost(bytes);
    return packet;
}

std::string seedLinkTime(Core::Time time)
{
    return time.toString("%Y,%m,%d,%H,%M,%S");
}

std::vector<std::string> seedLinkSelectors(const std::string &location, const std::string &channel,
                                           char type)
{
    std::vector<std::string> selectors;
    if (!isCode(location) || !isCode(channel))
        return selectors;
    for (const std::string &place : fixedPatterns(location, LocationLength)) {
        for (const std::string &code : fixedPatterns(channel, ChannelLength))
            selectors.push_back(place + code + (type ? std::string(".") + type : std::string()));
    }
    return selectors;
}

bool SeedLinkBlock::hasWildcards() const
{
    return (network + station).find_first_of("*?") != std::string::npos;
}

bool addToSeedLinkBlocks(std::vector<SeedLinkBlock> &blocks, const SeedLinkBlock &station,
                         const std::string &location, const std::string &channel, char type)
{
    const std::vector<std::string> selectors = seedLinkSelectors(location, channel, type);
    if (selectors.empty() || !isCode(station.network + station.station) ||
        station.network.empty() || station.station.empty())
        return false;

    const auto known = std::find_if(blocks.begin(), blocks.end(), [&](const SeedLinkBlock &block) {
        return block.id() == station.id();
    });
    const bool isNew = known == blocks.end();
    SeedLinkBlock &block = isNew ? blocks.emplace_back(station) : *known;
    if (!isNew)
        block.window = unitedWindow(block.window, station.window);
    // All streams of the station are asked for by no selector.
    const bool hadAll = !isNew && block.selectors.empty();
    if (hadAll || selectors.front() == AllStreams) {
        block.selectors.clear();
        return true;
    }
    for (const std::string &selector : selectors) {
        if (std::find(block.selectors.begin(), block.selectors.end(), selector) ==
            block.selectors.end())
            block.selectors.push_back(selector);
    }
    return true;
}

std::string seedLinkStart(const SeedLinkPosition &position, bool fetch)
{
    const std::string command = fetch ? "FETCH" : "DATA";
    if (position.sequence) {
        char digits[8];
        std::snprintf(digits, sizeof digits, "%06X", *position.sequence % SeedLinkSequences);
        return command + ' ' + digits;
    }
    const Core::TimeWindow &window = position.window;
    if (!window.startTime().valid() && !window.endTime().valid())
        return command;

    const Core::Time begin =
        window.startTime().valid() ? window.startTime() - Margin : Core::Time(1970, 1, 1);
    std::string line = "TIME " + seedLinkTime(begin);
    if (window.endTime().valid())
        line += ' ' + seedLinkTime(window.endTime() + Margin);
    return line;
}

std::string printable(std::string_view text, size_t length)
{
    std::string result(text.substr(0, length));
    for (char &c : result)
        c = c >= ' ' && c <= '~' ? c : '?';
    return text.size() > length ? result + "..." : result;
}

} // namespace IO
} // namespace Tellarix
