// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/numericarray.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/timewindow.h>

#include <QMetaType>

#include <stdexcept>

namespace Tellarix {

/** Thrown where a record is asked for a value that it doesn't have. */
class TELLARIX_CORE_API RecordError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
    ~RecordError() override;
};

/**
 * A block of evenly spaced samples of one stream, immutable once it is made.
 *
 * Making a record builds the pyramid of its samples, so that no view has to scan them. The end
 * time is the time of the sample that would follow the last one.
 */
class TELLARIX_CORE_API Record : public Core::BaseObject
{
public:
    /**
     * @param codes              codes of the stream, not null
     * @param startTime          time of the first sample
     * @param samplingFrequency  in Hz; 0 for text and other data without a rate
     * @param data               the samples; shared, and not to be changed any more; may be null
     * @param timingQuality      0 to 100 percent, -1 if unknown
     */
    Record(StreamCodesCPtr codes, Core::Time startTime, double samplingFrequency, ArrayPtr data,
           int timingQuality = -1);
    ~Record() override;

    const StreamCodesCPtr &codes() const { return _codes; }
    const std::string &networkCode() const { return _codes->network(); }
    const std::string &stationCode() const { return _codes->station(); }
    const std::string &locationCode() const { return _codes->location(); }
    const std::string &channelCode() const { return _codes->channel(); }
    /** "NET.STA.LOC.CHA" */
    const std::string &streamID() const { return _codes->id(); }

    Core::Time startTime() const { return _startTime; }
    /** Start plus sample count / sampling frequency. Throws RecordError if hasEndTime() is false.
     */
    Core::Time endTime() const;
    /** False for samples without a rate, an end that no time can hold or an invalid start. */
    bool hasEndTime() const { return _endTime.valid(); }
    /** Time of the last sample; the start time without samples or end. */
    Core::Time lastSampleTime() const { return sampleTime(sampleCount() - 1); }
    /** Start and end; without an end both are the start. */
    Core::TimeWindow timeWindow() const;

    double samplingFrequency() const { return _samplingFrequency; }
    int timingQuality() const { return _timingQuality; }
    int sampleCount() const { return _data ? _data->size() : 0; }
    DataType dataType() const { return _data ? _data->dataType() : DataType::Int; }
    /** The samples, null if the record has none. */
    const NumericArray *data() const { return _data.get(); }
    ArrayCPtr dataArray() const { return _data; }
    /** Minimum, maximum and sum of all samples, known since the record was made. */
    const SampleSummary &summary() const { return _summary; }
    /** First and last sample, rounded and cut to the range of float; 0 without samples. Known since
     *  the record was made, so that what looks at a record need not look at its samples. */
    float firstValue() const { return _firstValue; }
    float lastValue() const { return _lastValue; }

    /** Time of a sample, rounded to microseconds; the start time without a usable rate. */
    Core::Time sampleTime(int index) const;
    /**
     * Index of the first sample whose sampleTime() is not before @p time, from 0 to sampleCount();
     * without a usable rate all samples stand at the start time.
     */
    int sampleIndex(Core::Time time) const;

    /** A record of the same codes, start, rate and quality with other samples. */
    Core::SmartPointer<Record> withData(ArrayPtr data) const;

private:
    int _timingQuality;
    StreamCodesCPtr _codes;
    Core::Time _startTime;
    Core::Time _endTime;
    double _samplingFrequency;
    ArrayPtr _data;
    SampleSummary _summary;
    float _firstValue{0};
    float _lastValue{0};
};

using RecordPtr = Core::SmartPointer<Record>;
using RecordCPtr = Core::SmartPointer<const Record>;

} // namespace Tellarix

Q_DECLARE_METATYPE(Tellarix::Record *)
Q_DECLARE_METATYPE(Tellarix::RecordCPtr)
