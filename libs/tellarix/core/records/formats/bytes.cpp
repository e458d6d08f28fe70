// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/formats/bytes_p.h>

#include <charconv>

namespace Tellarix {
namespace Formats {

double shortestDouble(float value)
{
    if (!std::isfinite(value))
        return value;

    char text[64];
    const auto written = std::to_chars(text, text + sizeof text, value);
    double result = value;
    std::from_chars(text, written.ptr, result);
    return result;
}

std::string trimmedField(std::string_view field)
{
    field = field.substr(0, field.find('\0'));
    const size_t first = field.find_first_not_of(' ');
    if (first == std::string_view::npos)
        return std::string();
    return std::string(field.substr(first, field.find_last_not_of(' ') - first + 1));
}

} // namespace Formats
} // namespace Tellarix
