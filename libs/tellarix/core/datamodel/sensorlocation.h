// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>
#include <tellarix/core/datamodel/inventoryobject.h>

#include <string>
#include <vector>

namespace Tellarix {
namespace DataModel {

class Station;
class Stream;

/** A place of a station at which sensors stand; its code is often empty. */
class TELLARIX_CORE_API SensorLocation : public InventorySite
{
public:
    explicit SensorLocation(std::string code = std::string());
    ~SensorLocation() override;

    /** The station that the location was added to, null if there is none. */
    Station *station() const { return _station; }

    /** Adds a stream that has no sensor location yet; false for null or one that has. */
    bool add(Stream *stream);
    int streamCount() const { return static_cast<int>(_streams.size()); }
    Stream *stream(int index) const { return _streams[index].get(); }
    /** The first stream of this code, null if there is none. */
    Stream *findStream(const std::string &code) const;

private:
    friend class Station;

    Station *_station{nullptr};
    std::vector<Core::SmartPointer<Stream>> _streams;
};

using SensorLocationPtr = Core::SmartPointer<SensorLocation>;

} // namespace DataModel
} // namespace Tellarix
