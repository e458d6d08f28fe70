// SPDX-License-Identifier: LGPL-3.0-or-later

// Look-up of pixels for lanes of values. Included inside of what is compiled once for each
// instruction set, and so once for each of them.

#include <norvu/gui/pixeltable_p.h>

#include <cstdint>

#include <hwy/highway.h>

#if defined(NORVU_GUI_PIXELLOOKUP_INL_P_H) == defined(HWY_TARGET_TOGGLE)
#ifdef NORVU_GUI_PIXELLOOKUP_INL_P_H
#undef NORVU_GUI_PIXELLOOKUP_INL_P_H
#else
#define NORVU_GUI_PIXELLOOKUP_INL_P_H
#endif

HWY_BEFORE_NAMESPACE();
namespace Norvu {
namespace Gui {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/** Entries of the table for values in double. What no int can hold and what is no number has the
 *  first one. */
struct Indices
{
    using Tag = hn::ScalableTag<double>;
    using IndexTag = hn::Rebind<int32_t, Tag>;

    explicit Indices(const PixelTable &table)
        : minKey(hn::Set(Tag(), table.minKey)), scale(hn::Set(Tag(), table.scale)),
          last(hn::Set(Tag(), table.size - 1.0))
    {}

    void store(hn::VFromD<Tag> values, int32_t *indices) const
    {
        auto index = hn::Mul(hn::Sub(values, minKey), scale);
        index = hn::IfThenElseZero(hn::Lt(index, hn::Set(Tag(), 2147483648.0)), index);
        index = hn::Min(hn::Max(index, hn::Zero(Tag())), last);
        hn::StoreU(hn::DemoteTo(IndexTag(), index), IndexTag(), indices);
    }

    hn::VFromD<Tag> minKey;
    hn::VFromD<Tag> scale;
    hn::VFromD<Tag> last;
};

inline void storeIndices(const Indices &table, hn::VFromD<hn::ScalableTag<double>> values,
                         int32_t *indices)
{
    table.store(values, indices);
}

#if HWY_TARGET != HWY_SCALAR
inline void storeIndices(const Indices &table, hn::VFromD<hn::ScalableTag<float>> values,
                         int32_t *indices)
{
    const Indices::Tag tag;
    const hn::Rebind<float, Indices::Tag> half;
    table.store(hn::PromoteTo(tag, hn::LowerHalf(half, values)), indices);
    table.store(hn::PromoteTo(tag, hn::UpperHalf(half, values)), indices + hn::Lanes(tag));
}
#else
inline void storeIndices(const Indices &table, hn::VFromD<hn::ScalableTag<float>> values,
                         int32_t *indices)
{
    table.store(hn::PromoteTo(Indices::Tag(), values), indices);
}
#endif

/** Looks entries up by single loads: gathers are slow on many machines. */
inline void lookUp(const unsigned int *table, const int32_t *indices, int count,
                   unsigned int *pixels)
{
    constexpr int Unrolled = 8;
    int x = 0;
    for (; x + Unrolled <= count; x += Unrolled) {
        for (int i = 0; i < Unrolled; ++i)
            pixels[x + i] = table[static_cast<uint32_t>(indices[x + i])];
    }
    for (; x < count; ++x)
        pixels[x] = table[indices[x]];
}

} // namespace HWY_NAMESPACE
} // namespace Gui
} // namespace Norvu
HWY_AFTER_NAMESPACE();

#endif
