#pragma once

#include <QColor>

namespace Norvu {
namespace Gui {

// Signal colours that are told apart on light and on dark backgrounds.

constexpr QColor red(0xdb, 0x28, 0x28);
constexpr QColor blue(0x21, 0x85, 0xd0);

} // namespace Gui
} // namespace Norvu
