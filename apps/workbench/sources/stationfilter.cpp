// SPDX-License-Identifier: LGPL-3.0-or-later

#include "stationfilter.h"

#include <tellarix/core/strings.h>

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr size_t ChannelLength = 3;

bool isVertical(const std::string &channel)
{
    return channel.size() == ChannelLength && channel.back() == 'Z';
}

/** The pattern of the vertical components among those that a pattern matches; empty if none. */
std::string verticalPattern(const std::string &pattern)
{
    if (pattern.find('*') != std::string::npos)
        return pattern == "*" ? "??Z" : pattern;
    const bool fits =
        pattern.size() == ChannelLength && (pattern.back() == '?' || pattern.back() == 'Z');
    return fits ? pattern.substr(0, ChannelLength - 1) + 'Z' : std::string();
}

/** A word that is looked for, in upper case. */
class SearchWord
{
public:
    explicit SearchWord(const QString &word)
        : _text(word), _pattern(word.toStdString()),
          _isPattern(word.contains('*') || word.contains('?'))
    {}

    bool matches(const ListedStation &station, const QString &site) const
    {
        const std::string id = station.id();
        if (!_isPattern)
            return QString::fromStdString(id).contains(_text, Qt::CaseInsensitive) ||
                   site.contains(_text);
        return Core::wildcardMatch(_pattern, station.code) || Core::wildcardMatch(_pattern, id) ||
               Core::wildcardMatch(_pattern, station.network) ||
               Core::wildcardMatch(_pattern, site.toStdString());
    }

private:
    QString _text;
    std::string _pattern;
    bool _isPattern;
};

} // namespace

ChannelPatterns::ChannelPatterns(const QString &text, bool verticalOnly)
    : _verticalOnly(verticalOnly)
{
    static const QRegularExpression separators("[,;\\s]+");
    for (const QString &part : text.toUpper().split(separators, Qt::SkipEmptyParts)) {
        const bool hasLocation = part.contains('.');
        _patterns.push_back({hasLocation ? part.section('.', 0, 0).toStdString() : "*",
                             part.section('.', hasLocation ? 1 : 0).toStdString()});
    }
    if (_patterns.empty())
        _patterns.push_back({"*", "*"});
}

bool ChannelPatterns::match(const ListedChannel &channel) const
{
    if (channel.isAny())
        return !requested(channel).empty();
    if (_verticalOnly && !isVertical(channel.code))
        return false;
    return _patterns.empty() ||
           std::any_of(_patterns.begin(), _patterns.end(), [&](const Pattern &pattern) {
               return Core::wildcardMatch(pattern.channel, channel.code) &&
                      Core::wildcardMatch(pattern.location, channel.location);
           });
}

std::vector<std::string> ChannelPatterns::requested(const ListedChannel &channel) const
{
    if (!channel.isAny())
        return {channel.id()};
    std::vector<std::string> ids;
    for (const Pattern &pattern : _patterns) {
        const std::string code = _verticalOnly ? verticalPattern(pattern.channel) : pattern.channel;
        if (!code.empty())
            ids.push_back(pattern.location + '.' + code);
    }
    return ids;
}

std::vector<ShownStation> filterStations(const StationListing &listing, const StationFilter &filter)
{
    std::vector<SearchWord> words;
    for (const QString &word : filter.search.toUpper().split(' ', Qt::SkipEmptyParts))
        words.emplace_back(word);

    std::vector<ShownStation> shown;
    for (size_t i = 0; i < listing.stations.size(); ++i) {
        const ListedStation &station = listing.stations[i];
        const QString site = words.empty() ? QString() : station.site.toUpper();
        const auto matches = [&](const SearchWord &word) { return word.matches(station, site); };
        const bool isIn =
            !filter.region || filter.region->contains(station.latitude, station.longitude);
        if (!isIn || !std::all_of(words.begin(), words.end(), matches))
            continue;
        ShownStation entry{static_cast<int>(i), {}};
        for (size_t k = 0; k < station.channels.size(); ++k) {
            if (filter.channels.match(station.channels[k]))
                entry.channels.push_back(static_cast<int>(k));
        }
        if (!entry.channels.empty())
            shown.push_back(std::move(entry));
    }
    return shown;
}

} // namespace Workbench
