// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>

#include <string>
#include <string_view>
#include <vector>

namespace Tellarix {
namespace Core {

/** Removes white space at both ends of @p text, in place. */
TELLARIX_CORE_API std::string &trim(std::string &text);
/** Copy of @p text without white space at both ends. */
TELLARIX_CORE_API std::string trimmed(const std::string &text);

/** Compares without regard to ASCII case: below, equal to or above 0, as strcmp does. */
TELLARIX_CORE_API int compareNoCase(const std::string &a, const std::string &b);

/**
 * Splits @p text at any of the characters in @p separators.
 * @param compressEmpty  leaves empty tokens out when true
 * @return at least one token unless tokens were left out
 */
TELLARIX_CORE_API std::vector<std::string> split(const std::string &text, const char *separators,
                                                 bool compressEmpty = true);

/**
 * Reads a whole text as a number in C notation; white space around it is allowed.
 * @return false, leaving @p value alone, if the text is empty, no (finite) number, has something
 *         behind it or is out of range
 */
template <typename T>
bool fromString(T &value, std::string_view text);

template <>
TELLARIX_CORE_API bool fromString(int &value, std::string_view text);
template <>
TELLARIX_CORE_API bool fromString(long long &value, std::string_view text);
template <>
TELLARIX_CORE_API bool fromString(float &value, std::string_view text);
template <>
TELLARIX_CORE_API bool fromString(double &value, std::string_view text);
/** "true", "yes", "on", "1" and their opposites, without regard to case. */
template <>
TELLARIX_CORE_API bool fromString(bool &value, std::string_view text);

/** Matches @p text against a pattern of `*` and `?` as stream selections use them. */
TELLARIX_CORE_API bool wildcardMatch(const std::string &pattern, const std::string &text);

} // namespace Core
} // namespace Tellarix
