// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/strings.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <type_traits>

namespace Tellarix {
namespace Core {
namespace {

constexpr char WhiteSpace[] = " \t\n\r\v\f";

/** Lower case of ASCII letters, whatever the locale. */
int lower(char c)
{
    return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : static_cast<unsigned char>(c);
}

/** @p text without white space at both ends. */
std::string_view trimmedView(std::string_view text)
{
    const size_t first = std::min(text.find_first_not_of(WhiteSpace), text.size());
    const size_t last = text.find_last_not_of(WhiteSpace);
    return text.substr(first, last == std::string_view::npos ? 0 : last + 1 - first);
}

template <typename T>
bool readNumber(T &value, std::string_view text)
{
    const std::string_view number = trimmedView(text);
    const char *first = number.data();
    const char *last = first + number.size();
    // The library reads no plus sign, and must not see the minus of "+-1" either.
    if (number.size() > 1 && first[0] == '+' && first[1] != '-')
        ++first;

    T read{};
    const auto [end, error] = std::from_chars(first, last, read);
    if (error != std::errc() || end != last)
        return false;
    if constexpr (std::is_floating_point_v<T>) {
        if (!std::isfinite(read))
            return false;
    }

    value = read;
    return true;
}

} // namespace

std::string &trim(std::string &text)
{
    const auto last = text.find_last_not_of(WhiteSpace);
    text.erase(last == std::string::npos ? 0 : last + 1);
    text.erase(0, text.find_first_not_of(WhiteSpace));
    return text;
}

std::string trimmed(const std::string &text)
{
    std::string copy(text);
    return trim(copy);
}

int compareNoCase(const std::string &a, const std::string &b)
{
    const size_t common = std::min(a.size(), b.size());
    for (size_t i = 0; i < common; ++i) {
        const int difference = lower(a[i]) - lower(b[i]);
        if (difference)
            return difference;
    }
    return static_cast<int>(a.size() > b.size()) - static_cast<int>(a.size() < b.size());
}

std::vector<std::string> split(const std::string &text, const char *separators, bool compressEmpty)
{
    std::vector<std::string> tokens;
    size_t begin = 0;
    while (true) {
        const size_t end = std::min(text.find_first_of(separators, begin), text.size());
        if (end > begin || !compressEmpty)
            tokens.push_back(text.substr(begin, end - begin));
        if (end == text.size())
            return tokens;
        begin = end + 1;
    }
}

template <>
bool fromString(int &value, std::string_view text)
{
    return readNumber(value, text);
}

template <>
bool fromString(long long &value, std::string_view text)
{
    return readNumber(value, text);
}

template <>
bool fromString(float &value, std::string_view text)
{
    return readNumber(value, text);
}

template <>
bool fromString(double &value, std::string_view text)
{
    return readNumber(value, text);
}

template <>
bool fromString(bool &value, std::string_view text)
{
    const std::string word(trimmedView(text));
    const auto isWord = [&](const char *other) { return compareNoCase(word, other) == 0; };
    const bool yes = isWord("true") || isWord("yes") || isWord("on") || isWord("1");
    if (!yes && !isWord("false") && !isWord("no") && !isWord("off") && !isWord("0"))
        return false;

    value = yes;
    return true;
}

bool wildcardMatch(const std::string &pattern, const std::string &text)
{
    size_t p = 0;
    size_t t = 0;
    size_t star = std::string::npos;
    size_t resume = 0;

    // Only the last star has to be tried again: what an earlier one could take, this one can too.
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            resume = t;
        } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == text[t])) {
            ++p;
            ++t;
        } else if (star != std::string::npos) {
            p = star + 1;
            t = ++resume;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == std::string::npos;
}

} // namespace Core
} // namespace Tellarix
