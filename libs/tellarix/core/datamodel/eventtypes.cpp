// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/datamodel/eventtypes.h>

#include <array>

namespace Tellarix {
namespace DataModel {

namespace {

constexpr std::array Names{
    "not existing",
    "not reported",
    "earthquake",
    "anthropogenic event",
    "collapse",
    "cavity collapse",
    "mine collapse",
    "building collapse",
    "explosion",
    "accidental explosion",
    "chemical explosion",
    "controlled explosion",
    "experimental explosion",
    "industrial explosion",
    "mining explosion",
    "quarry blast",
    "road cut",
    "blasting levee",
    "nuclear explosion",
    "induced or triggered event",
    "rock burst",
    "reservoir loading",
    "fluid injection",
    "fluid extraction",
    "crash",
    "plane crash",
    "train crash",
    "boat crash",
    "other event",
    "atmospheric event",
    "sonic boom",
    "sonic blast",
    "acoustic noise",
    "thunder",
    "avalanche",
    "snow avalanche",
    "debris avalanche",
    "hydroacoustic event",
    "ice quake",
    "slide",
    "landslide",
    "rockslide",
    "meteorite",
    "volcanic eruption",
};

} // namespace

int EEventTypeNames::count()
{
    return static_cast<int>(Names.size());
}

const char *EEventTypeNames::name(int index)
{
    return index >= 0 && index < count() ? Names[static_cast<size_t>(index)] : "";
}

int EEventTypeNames::indexOf(const std::string &name)
{
    for (int i = 0; i < count(); ++i) {
        if (name == Names[static_cast<size_t>(i)])
            return i;
    }
    return -1;
}

} // namespace DataModel
} // namespace Tellarix
