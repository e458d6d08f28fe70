// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/datamodel/stream.h>

#include <utility>

namespace Tellarix {
namespace DataModel {

Stream::Stream(std::string code) : InventoryObject(std::move(code))
{}

Stream::~Stream() = default;

double Stream::samplingFrequency() const
{
    if (_samplingRateNumerator <= 0 || _samplingRateDenominator <= 0)
        return 0;

    return static_cast<double>(_samplingRateNumerator) / _samplingRateDenominator;
}

} // namespace DataModel
} // namespace Tellarix
