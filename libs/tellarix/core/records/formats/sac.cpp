// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/formats/sac.h>

#include <tellarix/core/records/formats/bytes_p.h>
#include <tellarix/core/records/formats/writing_p.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/records/typedarray.h>

#include <QIODevice>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <vector>

namespace Tellarix {
namespace Formats {

namespace {

// Byte offsets of the header fields that count here.
constexpr size_t DeltaOffset = 0;
constexpr size_t DepMinOffset = 4;
constexpr size_t DepMaxOffset = 8;
constexpr size_t BeginOffset = 20;
constexpr size_t EndOffset = 24;
constexpr size_t DepMeanOffset = 56 * 4;
constexpr size_t YearOffset = 70 * 4;
constexpr size_t DayOffset = 71 * 4;
constexpr size_t HourOffset = 72 * 4;
constexpr size_t MinuteOffset = 73 * 4;
constexpr size_t SecondOffset = 74 * 4;
constexpr size_t MillisecondOffset = 75 * 4;
constexpr size_t VersionOffset = 76 * 4;
constexpr size_t SampleCountOffset = 79 * 4;
constexpr size_t FileTypeOffset = 85 * 4;
constexpr size_t ZeroTypeOffset = 87 * 4;
constexpr size_t EvenlySpacedOffset = 105 * 4;
constexpr size_t PositivePolarityOffset = 106 * 4;
constexpr size_t OverwritableOffset = 107 * 4;
constexpr size_t DistancesOffset = 108 * 4;
constexpr size_t UnusedLogicalOffset = 109 * 4;
constexpr size_t StationOffset = 440;
constexpr size_t EventNameOffset = 448;
constexpr size_t HoleOffset = 464;
constexpr size_t ChannelOffset = 600;
constexpr size_t NetworkOffset = 608;

constexpr size_t CodeSize = 8;
constexpr size_t SampleSize = 4;
constexpr size_t FooterSize = 22 * 8;
constexpr int Undefined = -12345;
constexpr int TimeSeries = 1;
constexpr int ZeroIsBegin = 9;
const char *const UndefinedText = "-12345";

bool isVersion(int32_t number)
{
    return number == 6 || number == 7;
}

int defined(int value, int fallback)
{
    return value == Undefined ? fallback : value;
}

std::string code(std::string_view bytes, size_t offset)
{
    const std::string text = trimmedField(bytes.substr(offset, CodeSize));
    return text == UndefinedText ? std::string() : text;
}

/** A number of few decimal digits. */
struct RoundNumber
{
    double value;
    int digits;
};

/** The number of fewest digits next to @p value for which @p fits is true; @p value if none is. */
template <typename Fits>
RoundNumber roundest(double value, Fits fits)
{
    constexpr int MostDigits = 9; // tell any two numbers of single precision apart
    char text[40];
    for (int digits = 1; digits <= MostDigits; ++digits) {
        const auto written = std::to_chars(text, text + sizeof text, value,
                                           std::chars_format::scientific, digits - 1);
        double rounded = value;
        std::from_chars(text, written.ptr, rounded);
        if (fits(rounded))
            return {rounded, digits};
    }
    return {value, MostDigits + 1};
}

/**
 * The sampling frequency that an interval in single precision stands for. Of the roundest frequency
 * and the roundest interval that give it, the one of fewer digits was meant: 99.9 Hz and not
 * 0.01001001 s, but 0.3 s and not 3.333333 Hz.
 */
double frequencyOfInterval(float interval)
{
    constexpr double Precision = 1E-14;
    const RoundNumber frequency = roundest(
        1.0 / interval, [&](double value) { return static_cast<float>(1 / value) == interval; });
    const RoundNumber seconds =
        roundest(interval, [&](double value) { return static_cast<float>(value) == interval; });
    // Where both say the same, the frequency is free of the error of a division.
    const bool isSame = std::abs(frequency.value * seconds.value - 1) < Precision;
    return frequency.digits <= seconds.digits || isSame ? frequency.value : 1 / seconds.value;
}

Core::Time referenceTime(const NumberReader &numbers, std::string &error, std::string &warning)
{
    const int year = numbers.at<int32_t>(YearOffset);
    const int day = numbers.at<int32_t>(DayOffset);
    if (year == Undefined || day == Undefined) {
        warning = "file has no reference time, 1970-01-01 is taken";
        return Core::Time::FromUSecs(0);
    }

    const int hour = defined(numbers.at<int32_t>(HourOffset), 0);
    const int minute = defined(numbers.at<int32_t>(MinuteOffset), 0);
    const int second = defined(numbers.at<int32_t>(SecondOffset), 0);
    const int millisecond = defined(numbers.at<int32_t>(MillisecondOffset), 0);
    Core::Time time;
    if (year >= MinYear && year <= MaxYear && millisecond >= 0 && millisecond < 1000)
        time = Core::Time::FromDayOfYear(year, day, hour, minute, second, millisecond * 1000);
    if (!time.valid()) {
        char text[96];
        std::snprintf(text, sizeof text,
                      "reference time is out of range: year %d, day %d, %02d:%02d:%02d.%03d", year,
                      day, hour, minute, second, millisecond);
        error = text;
    }
    return time;
}

bool checkType(const NumberReader &numbers, std::string &error)
{
    const int type = defined(numbers.at<int32_t>(FileTypeOffset), TimeSeries);
    if (type != TimeSeries) {
        error = "SAC file is no time series (type " + std::to_string(type) + ")";
        return false;
    }
    if (numbers.at<int32_t>(EvenlySpacedOffset) == 0) {
        error = "SAC file is not evenly spaced";
        return false;
    }
    return true;
}

struct Timing
{
    double samplingFrequency;
    double begin;
};

Timing readTiming(std::string_view bytes, const NumberReader &numbers, const SacHeader &header)
{
    if (header.version == 7 && static_cast<int64_t>(bytes.size()) >= header.fileSize()) {
        const size_t footer = SacHeaderSize + static_cast<size_t>(header.sampleCount) * SampleSize;
        return {1.0 / numbers.at<double>(footer), numbers.at<double>(footer + 8)};
    }
    return {frequencyOfInterval(numbers.at<float>(DeltaOffset)),
            shortestDouble(numbers.at<float>(BeginOffset))};
}

/** Puts numbers and texts into a header in which everything else is undefined. */
class HeaderWriter
{
public:
    HeaderWriter()
    {
        for (size_t offset = 0; offset < YearOffset; offset += 4)
            put<float>(offset, Undefined);
        for (size_t offset = YearOffset; offset < StationOffset; offset += 4)
            put<int32_t>(offset, Undefined);
        for (size_t offset = StationOffset; offset < SacHeaderSize; offset += CodeSize)
            putCode(offset, UndefinedText);
        // The name of the event takes two fields.
        putCode(EventNameOffset + CodeSize, std::string());
    }

    template <typename T>
    void put(size_t offset, T value)
    {
        qToLittleEndian<T>(&value, 1, _bytes.data() + offset);
    }

    void putCode(size_t offset, const std::string &code)
    {
        std::fill_n(_bytes.data() + offset, CodeSize, ' ');
        std::copy(code.begin(), code.end(), _bytes.data() + offset);
    }

    const std::vector<char> &bytes() const { return _bytes; }

private:
    std::vector<char> _bytes = std::vector<char>(SacHeaderSize);
};

void putTimes(HeaderWriter &header, const Record &record)
{
    const Core::TimeFields fields = record.startTime().fields();
    header.put<int32_t>(YearOffset, fields.year);
    header.put<int32_t>(DayOffset, fields.dayOfYear);
    header.put<int32_t>(HourOffset, fields.hour);
    header.put<int32_t>(MinuteOffset, fields.minute);
    header.put<int32_t>(SecondOffset, fields.second);
    header.put<int32_t>(MillisecondOffset, fields.usec / 1000);
    header.put<int32_t>(ZeroTypeOffset, ZeroIsBegin);

    const double begin = (fields.usec % 1000) * 1E-6;
    const double interval = 1.0 / record.samplingFrequency();
    header.put<float>(DeltaOffset, static_cast<float>(interval));
    header.put<float>(BeginOffset, static_cast<float>(begin));
    header.put<float>(EndOffset, static_cast<float>(begin + (record.sampleCount() - 1) * interval));
}

void putSummary(HeaderWriter &header, const SampleSummary &summary)
{
    if (summary.isEmpty())
        return;
    header.put<float>(DepMinOffset, static_cast<float>(summary.minimum));
    header.put<float>(DepMaxOffset, static_cast<float>(summary.maximum));
    header.put<float>(DepMeanOffset, static_cast<float>(summary.mean()));
}

bool putCodes(HeaderWriter &header, const Record &record, std::string &error)
{
    const struct
    {
        size_t offset;
        const std::string &code;
    } codes[] = {{NetworkOffset, record.networkCode()},
                 {StationOffset, record.stationCode()},
                 {HoleOffset, record.locationCode()},
                 {ChannelOffset, record.channelCode()}};
    for (const auto &entry : codes) {
        const std::string fault = entry.code == UndefinedText
                                      ? "code -12345 stands for none in the format"
                                      : faultOfCode("code", entry.code, CodeSize);
        if (!fault.empty()) {
            error = record.streamID() + ": " + fault;
            return false;
        }
        if (!entry.code.empty())
            header.putCode(entry.offset, entry.code);
    }
    return true;
}

} // namespace

int64_t SacHeader::fileSize() const
{
    return static_cast<int64_t>(SacHeaderSize) + sampleCount * static_cast<int64_t>(SampleSize) +
           (version == 7 ? static_cast<int64_t>(FooterSize) : 0);
}

bool beginsLikeSac(std::string_view bytes)
{
    if (bytes.size() < SacHeaderSize)
        return false;
    // One plausible number is little evidence: the logical fields are 0, 1 or undefined.
    for (const bool bigEndian : {false, true}) {
        const NumberReader numbers(bytes, bigEndian);
        const int32_t evenlySpaced = numbers.at<int32_t>(EvenlySpacedOffset);
        if (isVersion(numbers.at<int32_t>(VersionOffset)) &&
            (evenlySpaced == 0 || evenlySpaced == 1 || evenlySpaced == Undefined))
            return true;
    }
    return false;
}

bool parseSacHeader(std::string_view bytes, SacHeader &header, std::string &error,
                    std::string &warning)
{
    warning.clear();
    if (!beginsLikeSac(bytes)) {
        error = "no SAC header";
        return false;
    }

    SacHeader result;
    result.bigEndian = !isVersion(NumberReader(bytes, false).at<int32_t>(VersionOffset));
    const NumberReader numbers(bytes, result.bigEndian);
    result.version = numbers.at<int32_t>(VersionOffset);
    result.sampleCount = numbers.at<int32_t>(SampleCountOffset);
    if (!checkType(numbers, error))
        return false;
    if (result.sampleCount <= 0) {
        error = "SAC file has no samples";
        return false;
    }

    const Core::Time reference = referenceTime(numbers, error, warning);
    if (!reference.valid())
        return false;
    const Timing timing = readTiming(bytes, numbers, result);
    // Written so that not-a-number fails as well.
    if (!(timing.samplingFrequency > 0 && timing.samplingFrequency <= MaxSamplingFrequency)) {
        error = "sampling interval is out of range";
        return false;
    }
    result.startTime = reference;
    if (timing.begin != Undefined)
        result.startTime += Core::TimeSpan(timing.begin);
    result.samplingFrequency = timing.samplingFrequency;
    result.network = code(bytes, NetworkOffset);
    result.station = code(bytes, StationOffset);
    result.location = code(bytes, HoleOffset);
    result.channel = code(bytes, ChannelOffset);
    header = result;
    return true;
}

RecordPtr decodeSac(std::string_view bytes, std::string &cause)
{
    SacHeader header;
    std::string warning;
    if (!parseSacHeader(bytes, header, cause, warning))
        return RecordPtr();

    cause = warning;
    const int64_t there = static_cast<int64_t>((bytes.size() - SacHeaderSize) / SampleSize);
    const int64_t count = std::min(there, header.sampleCount);
    if (count < header.sampleCount)
        cause = "file is cut off: it holds " + std::to_string(count) + " of " +
                std::to_string(header.sampleCount) + " samples";
    else if (header.version == 7 && static_cast<int64_t>(bytes.size()) < header.fileSize())
        cause = "file is cut off: its double precision footer is missing";
    if (count == 0)
        return RecordPtr();

    Core::SmartPointer<FloatArray> samples(new FloatArray(static_cast<int>(count)));
    copyNumbers(bytes.data() + SacHeaderSize, header.bigEndian, static_cast<size_t>(count),
                samples->typedData());
    const StreamCodesCPtr codes(
        new StreamCodes(header.network, header.station, header.location, header.channel));
    return RecordPtr(new Record(codes, header.startTime, header.samplingFrequency, samples));
}

bool writeSac(QIODevice &device, const Record &record, std::string &error)
{
    std::string fault = faultOfRecord(record);
    if (fault.empty() && record.samplingFrequency() == 0)
        fault = "record has no sampling frequency";
    if (!fault.empty()) {
        error = record.streamID() + ": " + fault;
        return false;
    }

    HeaderWriter header;
    if (!putCodes(header, record, error))
        return false;
    putTimes(header, record);
    putSummary(header, record.summary());
    header.put<int32_t>(VersionOffset, 6);
    header.put<int32_t>(SampleCountOffset, record.sampleCount());
    header.put<int32_t>(FileTypeOffset, TimeSeries);
    for (const size_t offset : {EvenlySpacedOffset, OverwritableOffset, DistancesOffset})
        header.put<int32_t>(offset, 1);
    for (const size_t offset : {PositivePolarityOffset, UnusedLogicalOffset})
        header.put<int32_t>(offset, 0);

    std::vector<float> samples(static_cast<size_t>(record.sampleCount()));
    record.data()->convert(0, record.sampleCount(), samples.data());
    qToLittleEndian<float>(samples.data(), static_cast<qsizetype>(samples.size()), samples.data());
    std::vector<char> file = header.bytes();
    const auto *sampleBytes = reinterpret_cast<const char *>(samples.data());
    file.insert(file.end(), sampleBytes, sampleBytes + samples.size() * SampleSize);
    const auto size = static_cast<qint64>(file.size());
    if (device.write(file.data(), size) != size) {
        error = record.streamID() + ": " + device.errorString().toStdString();
        return false;
    }
    return true;
}

} // namespace Formats
} // namespace Tellarix
