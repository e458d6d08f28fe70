// SPDX-License-Identifier: LGPL-3.0-or-later

// A scheme of record streams: "sine://5".

#include <tellarix/client/io/recordstream.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/typedarray.h>
#include <tellarix/core/strings.h>

#include <atomic>
#include <cmath>

using namespace Tellarix;

namespace {

/** "sine://HZ" is an hour of a sine of that frequency. */
class SineStream : public IO::RecordStream
{
public:
    bool setSource(const std::string &source) override
    {
        const bool isNumber = Core::fromString(_frequency, source);
        return (isNumber && _frequency > 0) || fail("\"" + source + "\" is no frequency");
    }
    bool open() override
    {
        _isClosed = false;
        _minute = 0;
        return true;
    }
    RecordPtr next() override
    {
        while (!_isClosed && _minute < 60) {
            const RecordPtr record = minute(_minute++);
            if (isRequested(*record->codes(), record->timeWindow()))
                return record;
        }
        return nullptr;
    }
    void close() override { _isClosed = true; } // any thread may call it

private:
    RecordPtr minute(int index) const
    {
        constexpr int Count = 6000;
        constexpr double Rate = 100;
        Core::SmartPointer<DoubleArray> samples(new DoubleArray(Count));
        for (int i = 0; i < Count; ++i)
            samples->typedData()[i] = 1000 * std::sin(2 * M_PI * _frequency * i / Rate);
        const Core::Time start = Core::Time(2024, 1, 5) + Core::TimeSpan(60.0 * index);
        return new Record(StreamCodes::FromID("XX.SINE..HHZ"), start, Rate, samples);
    }

    double _frequency{0};
    int _minute{0};
    std::atomic<bool> _isClosed{false};
};

const IO::RecordStreamScheme sineScheme("sine", [] { return new SineStream; });

} // namespace
