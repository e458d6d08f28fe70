// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>
#include <tellarix/core/datamodel/inventoryobject.h>

#include <limits>
#include <string>

namespace Tellarix {
namespace DataModel {

class SensorLocation;

/** A stream of waveforms: one component of a sensor, for some time. */
class TELLARIX_CORE_API Stream : public InventoryObject
{
public:
    /** @param code  channel code such as "BHZ" */
    explicit Stream(std::string code = std::string());
    ~Stream() override;

    /** Counts per gainUnit(); 0 if unknown. */
    double gain() const { return _gain; }
    void setGain(double gain) { _gain = gain; }
    /** Frequency for which the gain holds, in Hz; not-a-number if unknown. */
    double gainFrequency() const { return _gainFrequency; }
    void setGainFrequency(double frequency) { _gainFrequency = frequency; }
    /** Unit of the ground motion, such as "M/S"; may be known where the gain isn't. */
    const std::string &gainUnit() const { return _gainUnit; }
    void setGainUnit(const std::string &unit) { _gainUnit = unit; }
    /** The sampling frequency as a fraction, since periods such as 3 s have no finite decimals. */
    int samplingRateNumerator() const { return _samplingRateNumerator; }
    void setSamplingRateNumerator(int numerator) { _samplingRateNumerator = numerator; }
    int samplingRateDenominator() const { return _samplingRateDenominator; }
    void setSamplingRateDenominator(int denominator) { _samplingRateDenominator = denominator; }
    /** Numerator by denominator, in Hz; 0 if unknown, that is unless both are above 0. */
    double samplingFrequency() const;
    /** Sets the fraction that is nearest, which for numbers with few digits is the number itself. A
     *  frequency below 0, above 2^31 or that is no number counts as unknown. */
    void setSamplingFrequency(double frequency);
    /** Whether the frequency is known; a stream of messages has 0. */
    bool hasSamplingFrequency() const { return _samplingRateDenominator > 0; }
    /** Metres below the surface; not-a-number if unknown, as azimuth and dip. */
    double depth() const { return _depth; }
    void setDepth(double depth) { _depth = depth; }
    /** Degrees clockwise from north, and degrees down from the horizontal. */
    double azimuth() const { return _azimuth; }
    void setAzimuth(double azimuth) { _azimuth = azimuth; }
    double dip() const { return _dip; }
    void setDip(double dip) { _dip = dip; }

    /** The sensor location that the stream was added to, null if there is none. */
    SensorLocation *sensorLocation() const { return _location; }

private:
    friend class SensorLocation;

    std::string _gainUnit;
    double _gain{0};
    int _samplingRateNumerator{0};
    int _samplingRateDenominator{0};
    double _gainFrequency{std::numeric_limits<double>::quiet_NaN()};
    double _depth{std::numeric_limits<double>::quiet_NaN()};
    double _azimuth{std::numeric_limits<double>::quiet_NaN()};
    double _dip{std::numeric_limits<double>::quiet_NaN()};
    SensorLocation *_location{nullptr};
};

using StreamPtr = Core::SmartPointer<Stream>;

} // namespace DataModel
} // namespace Tellarix
