// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/formats/miniseedwriter.h>

#include <tellarix/core/records/formats/writing_p.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/typedarray.h>

#include <QIODevice>
#include <QtEndian>

#include <libmseed.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <mutex>

namespace Tellarix {
namespace Formats {

namespace {

constexpr int64_t SmallestUnit = 100; // of a start time without blockette 1001, in microseconds
constexpr int MostSamples = 65535;    // the header counts the samples of a record in 16 bits
constexpr size_t SampleCountOffset = 30;

/** Keeps libmseed from printing: what goes wrong is told by this library's own messages. */
void silenceLibmseed()
{
    static std::once_flag once;
    std::call_once(once, [] {
        const auto ignore = [](char *) {};
        ms_loginit(ignore, nullptr, ignore, nullptr);
    });
}

/** True if no step between neighbouring samples needs more than the 30 bits of Steim2. */
bool fitsSteim2(const int *samples, int count)
{
    constexpr int64_t Limit = int64_t(1) << 29;
    for (int i = 1; i < count; ++i) {
        const int64_t step = int64_t(samples[i]) - samples[i - 1];
        if (step < -Limit || step >= Limit)
            return false;
    }
    return true;
}

const int *intsOf(const Record &record)
{
    return static_cast<const int *>(record.data()->data());
}

bool isPowerOfTwo(int number)
{
    return number > 0 && (number & (number - 1)) == 0;
}

bool needsMicroseconds(const Record &record)
{
    if (record.startTime().usecs() % SmallestUnit != 0)
        return true;
    if (record.samplingFrequency() <= 0)
        return false;
    const double units = 1E6 / SmallestUnit / record.samplingFrequency();
    return units != std::floor(units);
}

/** True if the header's two 16-bit numbers can't express a sampling frequency. */
bool needsActualRate(double samplingFrequency)
{
    int16_t factor = 0;
    int16_t multiplier = 0;
    if (samplingFrequency <= 0)
        return false;
    if (ms_genfactmult(samplingFrequency, &factor, &multiplier) != 0)
        return true;
    return std::abs(ms_nomsamprate(factor, multiplier) / samplingFrequency - 1.0) > 1E-9;
}

} // namespace

/** The libmseed record that holds what is to be packed. */
class MiniSeedWriter::Template
{
public:
    Template() : _record(msr_init(nullptr))
    {
        silenceLibmseed();
        _record->dataquality = 'D';
        _record->byteorder = 1;
        _record->sequence_number = 1;
    }

    ~Template()
    {
        _record->datasamples = nullptr;
        msr_free(&_record);
    }

    Template(const Template &) = delete;
    Template &operator=(const Template &) = delete;

    MSRecord *operator->() { return _record; }
    MSRecord *get() { return _record; }

    /** Forgets fixed header, blockettes and last sample of what was packed before. */
    void clear()
    {
        msr_free_blktchain(_record);
        std::free(_record->fsdh);
        std::free(_record->ststate);
        _record->fsdh = nullptr;
        _record->ststate = nullptr;
    }

    /** Points to @p count samples of a record, from index @p first on. */
    void setSamples(const Record &record, int first, int count)
    {
        const char *samples = static_cast<const char *>(record.data()->data());
        const auto offset =
            static_cast<size_t>(first) * static_cast<size_t>(record.data()->elementSize());
        // libmseed takes the samples by a pointer to non-const, but only reads them.
        _record->datasamples = const_cast<char *>(samples + offset);
        _record->numsamples = _record->samplecnt = count;
        _record->starttime = record.sampleTime(first).usecs();
        // The sample before is the one at the end of the last record that was kept.
        if (_record->ststate && first > 0 && record.dataType() == DataType::Int)
            _record->ststate->lastintsample = intsOf(record)[first - 1];
    }

    /** Bytes before the samples: fixed header, blockette 1000 and what was added. */
    int headerSize() const
    {
        constexpr int FixedSize = 48 + 8;
        int size = FixedSize;
        for (const BlktLink *link = _record->blkts; link; link = link->next)
            size += link->blkt_type == 1000 ? 0 : 4 + link->blktdatalen;
        return size;
    }

    /** True if a frame of Steim's fits behind the header; frames stand at multiples of 64. */
    bool holdsFrame() const { return (headerSize() + 63) / 64 * 64 + 64 <= _record->reclen; }

    /** The most samples that may come to lie in a record. */
    int mostSamplesPerRecord() const
    {
        const int room = _record->reclen - headerSize();
        if (_record->encoding == DE_STEIM2)
            return room / 4 * 7;
        return room / ms_samplesize(_record->sampletype);
    }

private:
    MSRecord *_record;
};

MiniSeedWriter::MiniSeedWriter(QIODevice *device, int recordLength)
    : _device(device), _recordLength(recordLength), _template(std::make_unique<Template>())
{}

MiniSeedWriter::~MiniSeedWriter() = default;

bool MiniSeedWriter::write(const Record &record)
{
    if (!isPowerOfTwo(_recordLength) || _recordLength < MINRECLEN || _recordLength > MAXRECLEN)
        return fail(record, "record length of " + std::to_string(_recordLength) +
                                " bytes is no power of two from 128 to 1048576");
    const std::string fault = faultOfRecord(record);
    if (!fault.empty())
        return fail(record, fault);

    _template->clear();
    if (!setCodes(record))
        return false;
    addBlockettes(record);
    setEncoding(record);
    _packed.clear();
    for (int first = 0; first < record.sampleCount();) {
        const int count = packSome(record, first);
        if (count <= 0)
            return fail(record, "samples can't be encoded as miniSEED");
        first += count;
    }
    return flush(record);
}

bool MiniSeedWriter::setCodes(const Record &record)
{
    struct Field
    {
        const char *name;
        const std::string &code;
        size_t size;
        char *target;
    };
    const Field fields[] = {
        {"network", record.networkCode(), 2, (*_template)->network},
        {"station", record.stationCode(), 5, (*_template)->station},
        {"location", record.locationCode(), 2, (*_template)->location},
        {"channel", record.channelCode(), 3, (*_template)->channel},
    };
    for (const Field &field : fields) {
        const std::string fault =
            faultOfCode(field.name + std::string(" code"), field.code, field.size);
        if (!fault.empty())
            return fail(record, fault);
        std::strcpy(field.target, field.code.c_str());
    }
    return true;
}

void MiniSeedWriter::addBlockettes(const Record &record)
{
    MSRecord *pack = _template->get();
    pack->reclen = _recordLength;
    pack->samprate = record.samplingFrequency();
    // 0 is what the format's writers put down for a quality that is not known.
    blkt_1001_s extension{};
    extension.timing_qual = static_cast<uint8_t>(std::clamp(record.timingQuality(), 0, 100));
    if (record.timingQuality() >= 0 || needsMicroseconds(record))
        msr_addblockette(pack, reinterpret_cast<char *>(&extension), sizeof extension, 1001, 0);
    blkt_100_s actualRate{};
    actualRate.samprate = static_cast<float>(record.samplingFrequency());
    if (needsActualRate(record.samplingFrequency()))
        msr_addblockette(pack, reinterpret_cast<char *>(&actualRate), sizeof actualRate, 100, 0);
}

void MiniSeedWriter::setEncoding(const Record &record)
{
    Template &pack = *_template;
    switch (record.dataType()) {
    case DataType::Char:
        pack->sampletype = 'a';
        pack->encoding = DE_ASCII;
        break;
    case DataType::Int:
        pack->sampletype = 'i';
        pack->encoding =
            _compressed && pack.holdsFrame() && fitsSteim2(intsOf(record), record.sampleCount())
                ? DE_STEIM2
                : DE_INT32;
        break;
    case DataType::Float:
        pack->sampletype = 'f';
        pack->encoding = DE_FLOAT32;
        break;
    case DataType::Double:
        pack->sampletype = 'd';
        pack->encoding = DE_FLOAT64;
        break;
    }
}

/**
 * Packs samples from index @p first on: all that are left where no miniSEED record can hold more
 * than the header counts, else those of one or more records.
 * @return number of samples packed, 0 if that failed
 */
int MiniSeedWriter::packSome(const Record &record, int first)
{
    Template &pack = *_template;
    const int left = record.sampleCount() - first;
    const bool mayOverflow = pack.mostSamplesPerRecord() > MostSamples;
    const int count = mayOverflow ? std::min(left, MostSamples) : left;
    pack.setSamples(record, first, count);

    const size_t before = _packed.size();
    int64_t packedSamples = 0;
    const int records =
        msr_pack(pack.get(), &MiniSeedWriter::keepRecord, this, &packedSamples, 1, 0);
    pack->datasamples = nullptr;
    if (records <= 0 || packedSamples != count)
        return 0;
    if (count == left || records == 1)
        return count;

    // The last record is not full: its samples join those behind them.
    const size_t last =
        before + static_cast<size_t>(records - 1) * static_cast<size_t>(_recordLength);
    const int samplesOfLast = qFromBigEndian<quint16>(_packed.data() + last + SampleCountOffset);
    _packed.resize(last);
    return count - samplesOfLast;
}

bool MiniSeedWriter::flush(const Record &record)
{
    const auto size = static_cast<qint64>(_packed.size());
    if (_device->write(_packed.data(), size) != size)
        return fail(record, _device->errorString().toStdString());
    _recordCount += size / _recordLength;
    return true;
}

bool MiniSeedWriter::fail(const Record &record, const std::string &cause)
{
    _errorString = record.streamID() + ": " + cause;
    return false;
}

void MiniSeedWriter::keepRecord(char *record, int length, void *writer)
{
    static_cast<MiniSeedWriter *>(writer)->_packed.append(record, static_cast<size_t>(length));
}

} // namespace Formats
} // namespace Tellarix
