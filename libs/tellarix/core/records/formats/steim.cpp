// SPDX-License-Identifier: LGPL-3.0-or-later

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tellarix/core/records/formats/steim.cpp"
#include <hwy/foreach_target.h>
// foreach_target.h has to come first: it compiles what follows for each set of instructions.
#include <hwy/highway.h>

#include <tellarix/core/records/formats/steim_p.h>

#include <QtEndian>

#include <algorithm>

#ifndef TELLARIX_STEIM_TABLES
#define TELLARIX_STEIM_TABLES

namespace Tellarix {
namespace Formats {
namespace {

constexpr int MaxDifferences = 8;

/** How the differences of a word lie in it: shifted left and then right, sign and all. */
struct WordLayout
{
    int count{-1}; /**< differences; -1 if the format has no such word */
    int width{32}; /**< bits of a difference */
    alignas(32) uint32_t leftShift[MaxDifferences]{};
    alignas(32) uint32_t mask[MaxDifferences]{};
};

/** Layouts by the two bits of the code (times 4) and the first two bits of the word itself. */
struct LayoutTable
{
    WordLayout layouts[16];

    void set(int code, int subcode, int count, int width, bool lowFirst = false)
    {
        WordLayout &layout = layouts[code * 4 + subcode];
        layout.count = count;
        layout.width = width;
        for (int i = 0; i < count; ++i) {
            const int rank = lowFirst ? i : count - 1 - i;
            layout.leftShift[i] = static_cast<uint32_t>(32 - width * (rank + 1));
            layout.mask[i] = 0xFFFFFFFF;
        }
    }

    void setForAll(int code, int count, int width, bool lowFirst = false)
    {
        for (int subcode = 0; subcode < 4; ++subcode)
            set(code, subcode, count, width, lowFirst);
    }
};

/** Differences of whole bytes stand in the order of memory, whatever the order of the words. */
LayoutTable makeTable(int version, bool bigEndian)
{
    LayoutTable table;
    table.setForAll(0, 0, 32);
    table.setForAll(1, 4, 8, !bigEndian);
    if (version == 1) {
        table.setForAll(2, 2, 16, !bigEndian);
        table.setForAll(3, 1, 32);
        return table;
    }
    table.set(2, 1, 1, 30);
    table.set(2, 2, 2, 15);
    table.set(2, 3, 3, 10);
    table.set(3, 0, 5, 6);
    table.set(3, 1, 6, 5);
    table.set(3, 2, 7, 4);
    return table;
}

const LayoutTable &tableOf(const SteimPayload &payload)
{
    static const LayoutTable tables[] = {makeTable(1, false), makeTable(1, true),
                                         makeTable(2, false), makeTable(2, true)};
    return tables[(payload.version == 1 ? 0 : 2) + (payload.bigEndian ? 1 : 0)];
}

inline uint32_t wordAt(const SteimPayload &payload, size_t offset)
{
    return payload.bigEndian ? qFromBigEndian<uint32_t>(payload.data + offset)
                             : qFromLittleEndian<uint32_t>(payload.data + offset);
}

inline const WordLayout &layoutOf(const LayoutTable &table, uint32_t codes, int word, uint32_t bits)
{
    return table.layouts[(codes >> (30 - 2 * word) & 3) * 4 + (bits >> 30)];
}

inline int difference(const WordLayout &layout, uint32_t bits, int index)
{
    return static_cast<int>(bits << layout.leftShift[index]) >> (32 - layout.width);
}

// The first frame begins with the first and the last sample.
inline int firstWord(size_t frame)
{
    return frame == 0 ? 3 : 1;
}

/** The difference that leads to the first sample, which is given itself: it says nothing. */
int firstDifference(const SteimPayload &payload, const LayoutTable &table)
{
    for (size_t frame = 0; frame < payload.size / SteimPayload::FrameSize; ++frame) {
        const size_t offset = frame * SteimPayload::FrameSize;
        const uint32_t codes = wordAt(payload, offset);
        for (int word = firstWord(frame); word <= SteimPayload::WordsPerFrame; ++word) {
            const uint32_t bits = wordAt(payload, offset + 4 * static_cast<size_t>(word));
            const WordLayout &layout = layoutOf(table, codes, word, bits);
            if (layout.count != 0)
                return layout.count > 0 ? difference(layout, bits, 0) : 0;
        }
    }
    return 0;
}

} // namespace
} // namespace Formats
} // namespace Tellarix

#endif // TELLARIX_STEIM_TABLES

HWY_BEFORE_NAMESPACE();
namespace Tellarix {
namespace Formats {
namespace HWY_NAMESPACE {

/** Adds up differences behind a base. Sums are unsigned since damaged data may overflow. */
class Summation
{
public:
    explicit Summation(uint32_t base);

    /** Writes MaxDifferences values, of which the layout's count mean something. */
    void write(const WordLayout &layout, uint32_t bits, int *samples);

#if HWY_ARCH_X86 && HWY_MAX_BYTES >= 32
private:
    using Tag = hwy::HWY_NAMESPACE::FixedTag<int32_t, MaxDifferences>;
    hwy::HWY_NAMESPACE::Vec<Tag> _base;
};

HWY_INLINE Summation::Summation(uint32_t base)
    : _base(hwy::HWY_NAMESPACE::Set(Tag(), static_cast<int32_t>(base)))
{}

HWY_INLINE void Summation::write(const WordLayout &layout, uint32_t bits, int *samples)
{
    namespace hn = hwy::HWY_NAMESPACE;
    const Tag tag;
    const hn::RebindToUnsigned<Tag> unsignedTag;
    const auto shifted =
        hn::And(hn::Shl(hn::Set(unsignedTag, bits), hn::Load(unsignedTag, layout.leftShift)),
                hn::Load(unsignedTag, layout.mask));
    auto sums = hn::ShiftRightSame(hn::BitCast(tag, shifted), 32 - layout.width);
    sums = hn::Add(sums, hn::ShiftLeftLanes<1>(tag, sums));
    sums = hn::Add(sums, hn::ShiftLeftLanes<2>(tag, sums));
    const auto lastOfHalves = hn::Broadcast<3>(sums);
    sums = hn::Add(sums, hn::ConcatLowerLower(tag, lastOfHalves, hn::Zero(tag)));
    hn::StoreU(hn::Add(sums, _base), tag, samples);
    const auto lastOfSums = hn::Broadcast<3>(sums);
    _base = hn::Add(_base, hn::ConcatUpperUpper(tag, lastOfSums, lastOfSums));
}
#else
private:
    uint32_t _base;
};

HWY_INLINE Summation::Summation(uint32_t base) : _base(base)
{}

HWY_INLINE void Summation::write(const WordLayout &layout, uint32_t bits, int *samples)
{
    for (int i = 0; i < layout.count; ++i) {
        _base += static_cast<uint32_t>(difference(layout, bits, i));
        samples[i] = static_cast<int>(_base);
    }
}
#endif

int64_t decodeFrames(const SteimPayload &payload, const LayoutTable &table, uint32_t base,
                     int64_t wanted, int *samples)
{
    Summation sum(base);
    int64_t count = 0;
    for (size_t frame = 0; frame < payload.size / SteimPayload::FrameSize; ++frame) {
        const size_t offset = frame * SteimPayload::FrameSize;
        const uint32_t codes = wordAt(payload, offset);
        for (int word = firstWord(frame); word <= SteimPayload::WordsPerFrame; ++word) {
            const uint32_t bits = wordAt(payload, offset + 4 * static_cast<size_t>(word));
            const WordLayout &layout = layoutOf(table, codes, word, bits);
            if (layout.count < 0)
                return count;
            if (wanted - count >= MaxDifferences) {
                sum.write(layout, bits, samples + count);
                count += layout.count;
                continue;
            }
            int last[MaxDifferences];
            sum.write(layout, bits, last);
            const int64_t room = std::min<int64_t>(layout.count, wanted - count);
            std::copy(last, last + room, samples + count);
            count += room;
            if (count == wanted)
                return count;
        }
    }
    return count;
}

} // namespace HWY_NAMESPACE
} // namespace Formats
} // namespace Tellarix
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace Tellarix {
namespace Formats {

HWY_EXPORT(decodeFrames);

int64_t decodeSteim(const SteimPayload &payload, int64_t count, int *samples)
{
    if (payload.size < SteimPayload::FrameSize)
        return 0;

    const LayoutTable &table = tableOf(payload);
    const uint32_t first = wordAt(payload, 4);
    const uint32_t base = first - static_cast<uint32_t>(firstDifference(payload, table));
    return HWY_DYNAMIC_DISPATCH(decodeFrames)(payload, table, base, count, samples);
}

int steimLastSample(const SteimPayload &payload)
{
    return static_cast<int>(wordAt(payload, 8));
}

} // namespace Formats
} // namespace Tellarix

#endif // HWY_ONCE
