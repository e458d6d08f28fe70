// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/recordformat.h>

#include <tellarix/client/io/miniseedreader_p.h>
#include <tellarix/client/io/sacreader_p.h>
#include <tellarix/core/logging.h>
#include <tellarix/core/namedoffers.h>

namespace Tellarix {
namespace IO {

namespace {

struct Registry : Core::NamedOffers<RecordFormatCPtr>
{
    Registry()
    {
        for (const RecordFormat &format : {miniSeedFormat(), sacFormat()})
            add(nullptr, format.name, std::make_shared<RecordFormat>(format));
    }
};

// Static objects of other sources offer formats: it has to exist before them.
Registry &registry()
{
    static Registry instance;
    return instance;
}

} // namespace

RecordInput::~RecordInput() = default;

bool RecordInput::readBehind(std::string &bytes, size_t size)
{
    const size_t before = bytes.size();
    bytes.resize(before + size);
    const size_t count = read(&bytes[before], size);
    bytes.resize(before + count);
    return count > 0;
}

RecordReader::~RecordReader() = default;

bool RecordReader::begin(std::string &)
{
    return true;
}

std::vector<RecordFormatCPtr> recordFormats()
{
    std::vector<RecordFormatCPtr> formats;
    for (auto &[name, format] : registry().all())
        formats.push_back(std::move(format));
    return formats;
}

RecordFormatOffer::RecordFormatOffer(RecordFormat format)
{
    if (format.name.empty() || !format.recognizes || !format.makeReader) {
        qCWarning(Log::io,
                  "File format \"%s\" is not offered: it lacks a name, a signature or a "
                  "reader",
                  format.name.c_str());
        return;
    }
    const std::string name = format.name;
    registry().add(this, name, std::make_shared<RecordFormat>(std::move(format)));
}

RecordFormatOffer::~RecordFormatOffer()
{
    registry().remove(this);
}

} // namespace IO
} // namespace Tellarix
