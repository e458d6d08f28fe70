// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/time.h>

#include <optional>

namespace Tellarix {
namespace DataModel {

/** How far a value may be off, in the unit of the value; what is unknown is unset. */
struct Uncertainty
{
    std::optional<double> symmetric;
    std::optional<double> lower; /**< below the value, if the two sides differ */
    std::optional<double> upper;
    std::optional<double> confidenceLevel; /**< percent */

    bool operator==(const Uncertainty &other) const
    {
        return symmetric == other.symmetric && lower == other.lower && upper == other.upper &&
               confidenceLevel == other.confidenceLevel;
    }
};

/** A measured number with its uncertainty. */
class RealQuantity
{
public:
    RealQuantity() = default;
    RealQuantity(double value) : _value(value) {}
    RealQuantity(double value, const Uncertainty &uncertainty)
        : _value(value), _uncertainty(uncertainty)
    {}

    double value() const { return _value; }
    void setValue(double value) { _value = value; }
    const Uncertainty &uncertainty() const { return _uncertainty; }
    void setUncertainty(const Uncertainty &uncertainty) { _uncertainty = uncertainty; }

    bool operator==(const RealQuantity &other) const
    {
        return _value == other._value && _uncertainty == other._uncertainty;
    }

private:
    double _value{0};
    Uncertainty _uncertainty;
};

/** A measured time with its uncertainty in seconds. */
class TimeQuantity
{
public:
    TimeQuantity() = default;
    TimeQuantity(Core::Time value) : _value(value) {}
    TimeQuantity(Core::Time value, const Uncertainty &uncertainty)
        : _value(value), _uncertainty(uncertainty)
    {}

    Core::Time value() const { return _value; }
    void setValue(Core::Time value) { _value = value; }
    const Uncertainty &uncertainty() const { return _uncertainty; }
    void setUncertainty(const Uncertainty &uncertainty) { _uncertainty = uncertainty; }

    bool operator==(const TimeQuantity &other) const
    {
        return _value == other._value && _uncertainty == other._uncertainty;
    }

private:
    Core::Time _value;
    Uncertainty _uncertainty;
};

} // namespace DataModel
} // namespace Tellarix
