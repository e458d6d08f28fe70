// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>
#include <tellarix/core/datamodel/inventoryobject.h>
#include <tellarix/core/datamodel/network.h>

#include <string>
#include <unordered_map>
#include <vector>

namespace Tellarix {
namespace DataModel {

class Station;
class Stream;

/**
 * Epochs of things that share a code, told apart by time.
 *
 * Epochs may overlap and repeat. Where several cover a time the one that starts last is in force,
 * and of those that start together the one that was given last. Made from n epochs in n log n
 * steps; an answer takes log n.
 */
template <typename T>
class EpochSequence
{
public:
    EpochSequence() = default;
    explicit EpochSequence(const std::vector<const T *> &epochs);

    /** The epoch in force at a time, null if there is none; without a valid time the one that
     * starts last. */
    const T *find(Core::Time time) const;
    /** Those in force within a window, one after the other; null for a stretch without any. */
    std::vector<const T *> find(const Core::TimeWindow &window) const;

private:
    /** From a time to that of the next piece. */
    struct Piece
    {
        Core::Time begin;
        const T *epoch;
    };

    typename std::vector<Piece>::const_iterator nextPiece(Core::Time time) const;

    std::vector<Piece> _pieces;
    const T *_last{nullptr};
};

/**
 * The stations of networks, found by their codes and a time.
 *
 * Networks and all below them are not to be changed any more; an inventory is a value, which
 * threads may read side by side. It is made in some tenths of a second for 100,000
 * streams.
 */
class TELLARIX_CORE_API Inventory
{
public:
    Inventory() = default;
    /** @param networks  may repeat each other's codes, as epochs do */
    explicit Inventory(std::vector<NetworkPtr> networks);

    const std::vector<NetworkPtr> &networks() const { return _networks; }

    /** The epoch of a stream "NET.STA.LOC.CHA" at a time, null if none covers it; without a valid
     *  time the one that starts last. */
    const Stream *findStream(const std::string &id, Core::Time time) const;
    /** The epochs of a stream that are in force within a window, one after the other; null stands
     * for a stretch that none covers. */
    std::vector<const Stream *> findStreams(const std::string &id,
                                            const Core::TimeWindow &window) const;
    /** The same for a station "NET.STA". */
    const Station *findStation(const std::string &id, Core::Time time) const;
    /** Where a station "NET.STA" stands at a time; all unknown if no epoch covers it. */
    Coordinates coordinates(const std::string &id, Core::Time time) const;

    /** Ids of all stations in ascending order. */
    std::vector<std::string> stationIDs() const;
    /** All epochs of streams in the order of ids, then of starts. */
    std::vector<const Stream *> streams() const;

private:
    std::vector<NetworkPtr> _networks;
    std::unordered_map<std::string, EpochSequence<Station>> _stations;
    std::unordered_map<std::string, EpochSequence<Stream>> _streams;
};

} // namespace DataModel
} // namespace Tellarix
