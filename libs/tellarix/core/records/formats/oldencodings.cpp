// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/formats/oldencodings_p.h>

#include <tellarix/core/records/formats/miniseed.h>
#include <tellarix/core/records/typedarray.h>

#include <QtGlobal>

#include <libmseed.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <type_traits>
#include <vector>

namespace Tellarix {
namespace Formats {

namespace {

// libmseed takes nothing but whole records: the samples are put into one of its own.
constexpr int RecordLength = 4096;
constexpr int DataOffset = 64;

struct RecordDeleter
{
    void operator()(MSRecord *record) const
    {
        record->record = nullptr; // a buffer of ours
        msr_free(&record);
    }
};
using RecordHolder = std::unique_ptr<MSRecord, RecordDeleter>;

/** Takes what libmseed would print or read from the environment out of play. */
void setUpLibmseed()
{
    static std::once_flag once;
    std::call_once(once, [] {
        const auto ignore = [](char *) {};
        ms_loginit(ignore, nullptr, ignore, nullptr);
        MS_UNPACKENCODINGFORMAT(-1);
        MS_UNPACKENCODINGFALLBACK(-1);
    });
}

RecordHolder makeRecord(int encoding)
{
    RecordHolder record(msr_init(nullptr));
    if (!record)
        return nullptr;
    record->fsdh = static_cast<fsdh_s *>(std::calloc(1, sizeof(fsdh_s)));
    if (!record->fsdh)
        return nullptr;
    record->fsdh->data_offset = DataOffset;
    record->reclen = RecordLength;
    record->encoding = static_cast<int8_t>(encoding);
    return record;
}

/** Big-endian samples, since libmseed does not get 24 bits of the other order right. */
std::vector<char> recordOf(std::string_view bytes, bool bigEndian, int sampleSize)
{
    std::vector<char> record(RecordLength);
    const auto begin = record.begin() + DataOffset;
    std::copy(bytes.begin(), bytes.end(), begin);
    const auto end = begin + static_cast<std::ptrdiff_t>(bytes.size());
    for (auto sample = begin; !bigEndian && sample != end; sample += sampleSize)
        std::reverse(sample, sample + sampleSize);
    return record;
}

/** Decodes all samples of a record; false if one of them is none. */
template <typename T>
bool decodeRecord(MSRecord &record, std::vector<char> &bytes, int count, T *target)
{
    record.record = bytes.data();
    record.samplecnt = count;
    const bool decoded = msr_unpack_data(&record, Q_BYTE_ORDER == Q_LITTLE_ENDIAN, 0) == count &&
                         record.sampletype == (std::is_same_v<T, float> ? 'f' : 'i');
    record.record = nullptr;
    if (decoded)
        std::memcpy(target, record.datasamples, static_cast<size_t>(count) * sizeof(T));
    return decoded;
}

template <typename T>
ArrayPtr decode(int encoding, std::string_view payload, bool bigEndian, int count)
{
    const RecordHolder record = makeRecord(encoding);
    Core::SmartPointer<TypedArray<T>> samples(new TypedArray<T>(count));
    const int sampleSize = static_cast<int>(oldSampleSize(encoding));
    int piece = (RecordLength - DataOffset) / sampleSize;
    int done = 0;
    while (record && piece > 0 && done < count) {
        piece = std::min(piece, count - done);
        const size_t position = static_cast<size_t>(done) * static_cast<size_t>(sampleSize);
        std::vector<char> bytes =
            recordOf(payload.substr(position, static_cast<size_t>(piece * sampleSize)), bigEndian,
                     sampleSize);
        // A bad sample spoils its piece: what lies before is found by halving.
        if (decodeRecord(*record, bytes, piece, samples->typedData() + done))
            done += piece;
        else
            piece /= 2;
    }
    if (done == 0)
        return nullptr;
    samples->resize(done);
    return samples;
}

bool isGeoscope(int encoding)
{
    return encoding == DE_GEOSCOPE24 || encoding == DE_GEOSCOPE163 || encoding == DE_GEOSCOPE164;
}

} // namespace

int64_t oldSampleSize(int encoding)
{
    switch (static_cast<MiniSeedEncoding>(encoding)) {
    case MiniSeedEncoding::Geoscope24:
        return 3;
    case MiniSeedEncoding::Geoscope16Exponent3:
    case MiniSeedEncoding::Geoscope16Exponent4:
    case MiniSeedEncoding::Cdsn:
    case MiniSeedEncoding::Sro:
    case MiniSeedEncoding::Dwwssn:
        return 2;
    default:
        return 0;
    }
}

ArrayPtr decodeOldSamples(int encoding, std::string_view payload, bool bigEndian, int count)
{
    // Its messages pass through memory that all threads share.
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);
    setUpLibmseed();
    return isGeoscope(encoding) ? decode<float>(encoding, payload, bigEndian, count)
                                : decode<int>(encoding, payload, bigEndian, count);
}

} // namespace Formats
} // namespace Tellarix
