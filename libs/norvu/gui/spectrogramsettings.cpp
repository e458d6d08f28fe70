// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/spectrogramsettings.h>

#include <tellarix/core/strings.h>

namespace Core = Tellarix::Core;

namespace Norvu {
namespace Gui {

namespace {

struct Axis
{
    const char *name;
    SpectrogramSettings::Mode mode;
    bool logarithmic;
};

constexpr Axis Axes[] = {
    {"periods_log", SpectrogramSettings::Periods, true},
    {"periods", SpectrogramSettings::Periods, false},
    {"freqs_log", SpectrogramSettings::Frequencies, true},
    {"freqs", SpectrogramSettings::Frequencies, false},
};

const Axis *findAxis(const std::string &name)
{
    for (const Axis &axis : Axes) {
        if (Core::compareNoCase(name, axis.name) == 0)
            return &axis;
    }
    return nullptr;
}

} // namespace

SpectrogramSettings::SpectrogramSettings()
    : lower(0), upper(0), mode(Periods), divisions(0), bands(0)
{}

bool SpectrogramSettings::fromString(const std::string &text)
{
    const size_t open = text.find('(');
    if (open == std::string::npos)
        return false;
    const Axis *axis = findAxis(Core::trimmed(text.substr(0, open)));
    if (!axis)
        return false;
    mode = axis->mode;
    logarithmic = axis->logarithmic;

    const size_t close = text.find(')', open);
    if (close == std::string::npos)
        return false;
    const auto tokens = Core::split(text.substr(open + 1, close - open - 1), ",", false);
    if (tokens.size() != 4)
        return false;
    return Core::fromString(lower, tokens[0]) && Core::fromString(upper, tokens[1]) &&
           Core::fromString(divisions, tokens[2]) && Core::fromString(bands, tokens[3]) &&
           lower > 0 && upper > 0 && divisions > 0 && bands > 0;
}

} // namespace Gui
} // namespace Norvu
