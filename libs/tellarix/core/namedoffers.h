// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <algorithm>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Tellarix {
namespace Core {

/**
 * What is offered under names by objects that come and go, as those of plug-ins do.
 *
 * Of several with one name the first stands, until it goes. Any thread may call any operation.
 */
template <typename T>
class NamedOffers
{
public:
    /** @param owner  for remove(); null for what stays */
    void add(const void *owner, const std::string &name, T what)
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        _offers.push_back({owner, name, std::move(what)});
    }

    void remove(const void *owner)
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        const auto isOwned = [owner](const Offer &offer) { return offer.owner == owner; };
        _offers.erase(std::remove_if(_offers.begin(), _offers.end(), isOwned), _offers.end());
    }

    std::optional<T> find(const std::string &name) const
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        const auto first = std::find_if(_offers.begin(), _offers.end(),
                                        [&name](const Offer &offer) { return offer.name == name; });
        return first == _offers.end() ? std::nullopt : std::optional<T>(first->what);
    }

    /** Names and what stands under them, in the order in which they came. */
    std::vector<std::pair<std::string, T>> all() const
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        std::vector<std::pair<std::string, T>> standing;
        for (const Offer &offer : _offers) {
            const auto hasName = [&offer](const auto &entry) { return entry.first == offer.name; };
            if (std::none_of(standing.begin(), standing.end(), hasName))
                standing.emplace_back(offer.name, offer.what);
        }
        return standing;
    }

private:
    struct Offer
    {
        const void *owner;
        std::string name;
        T what;
    };

    mutable std::mutex _mutex;
    std::vector<Offer> _offers;
};

} // namespace Core
} // namespace Tellarix
