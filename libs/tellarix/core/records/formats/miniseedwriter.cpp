// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/formats/miniseedwriter.h>

#include <tellarix/core/records/typedarray.h>

#include <QIODevice>

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

    /** Forgets fixed header and blockettes of what was packed before. */
    void clear()
    {
        msr_free_blktchain(_record);
        std::free(_record->fsdh);
        _record->fsdh = nullptr;
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
    if (record.sampleCount() == 0 || !record.startTime().valid())
        return fail(record, "record has no samples or start time");

    Template &pack = *_template;
    pack.clear();
    pack->reclen = _recordLength;
    pack->starttime = record.startTime().usecs();
    pack->samprate = std::max(0.0, record.samplingFrequency());
    if (!setCodes(record))
        return false;
    setSamples(record);
    return this->pack(record);
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
        if (field.code.size() > field.size)
            return fail(record, std::string(field.name) + " code \"" + field.code +
                                    "\" is longer than " + std::to_string(field.size) +
                                    " characters");
        std::strcpy(field.target, field.code.c_str());
    }
    return true;
}

void MiniSeedWriter::setSamples(const Record &record)
{
    Template &pack = *_template;
    // libmseed takes the samples by a pointer to non-const, but only reads them.
    pack->datasamples = const_cast<void *>(record.data()->data());
    pack->numsamples = pack->samplecnt = record.sampleCount();
    switch (record.dataType()) {
    case DataType::Char:
        pack->sampletype = 'a';
        pack->encoding = DE_ASCII;
        break;
    case DataType::Int: {
        const int *samples = static_cast<const int *>(record.data()->data());
        pack->sampletype = 'i';
        pack->encoding =
            _compressed && fitsSteim2(samples, record.sampleCount()) ? DE_STEIM2 : DE_INT32;
        break;
    }
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

bool MiniSeedWriter::pack(const Record &record)
{
    Template &pack = *_template;
    // 0 is what the format's writers put down for a quality that is not known.
    blkt_1001_s extension{};
    extension.timing_qual = static_cast<uint8_t>(std::clamp(record.timingQuality(), 0, 100));
    if (record.timingQuality() >= 0 || needsMicroseconds(record))
        msr_addblockette(pack.get(), reinterpret_cast<char *>(&extension), sizeof extension, 1001,
                         0);
    blkt_100_s actualRate{};
    actualRate.samprate = static_cast<float>(record.samplingFrequency());
    if (needsActualRate(record.samplingFrequency()))
        msr_addblockette(pack.get(), reinterpret_cast<char *>(&actualRate), sizeof actualRate, 100,
                         0);

    _deviceFailed = false;
    int64_t packedSamples = 0;
    const int packedRecords =
        msr_pack(pack.get(), &MiniSeedWriter::writeRecord, this, &packedSamples, 1, 0);
    pack->datasamples = nullptr;
    if (_deviceFailed)
        return fail(record, _device->errorString().toStdString());
    if (packedRecords < 0 || packedSamples != record.sampleCount())
        return fail(record, "samples can't be encoded as miniSEED");
    return true;
}

bool MiniSeedWriter::fail(const Record &record, const std::string &cause)
{
    _errorString = record.streamID() + ": " + cause;
    return false;
}

void MiniSeedWriter::writeRecord(char *record, int length, void *writer)
{
    auto *self = static_cast<MiniSeedWriter *>(writer);
    if (self->_deviceFailed)
        return;
    if (self->_device->write(record, length) != length)
        self->_deviceFailed = true;
    else
        ++self->_recordCount;
}

} // namespace Formats
} // namespace Tellarix
