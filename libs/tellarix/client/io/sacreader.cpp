// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/sacreader_p.h>

#include <tellarix/core/records/record.h>

#include <algorithm>

namespace Tellarix {
namespace IO {

RecordFormat sacFormat()
{
    return {"SAC", {"sac"}, Formats::SacHeaderSize, Formats::beginsLikeSac, [](RecordInput &input) {
                return std::make_unique<SacReader>(input);
            }};
}

bool SacReader::begin(std::string &cause)
{
    while (_bytes.size() < Formats::SacHeaderSize && _input.readBehind(_bytes)) {
    }
    std::string warning;
    return Formats::parseSacHeader(_bytes, _header, cause, warning);
}

RecordPtr SacReader::next()
{
    if (_isRead)
        return RecordPtr();
    _isRead = true;
    const size_t size = static_cast<size_t>(_header.fileSize());
    while (_bytes.size() < size && _input.readBehind(_bytes)) {
    }
    if (_input.isClosed())
        return RecordPtr();

    std::string cause;
    const RecordPtr record = Formats::decodeSac(_bytes, cause);
    if (!cause.empty())
        _input.tell(StreamMessage::Severity::Fault, 0, cause);
    // The rest of a file need not be read for that.
    const int64_t there = std::max(_input.size(), static_cast<int64_t>(_bytes.size()));
    if (there > _header.fileSize())
        _input.tell(StreamMessage::Severity::Fault, _header.fileSize(),
                    std::to_string(there - _header.fileSize()) + " bytes that belong to nothing");
    const bool isWanted = record && _input.isRequested(*record->codes(), record->timeWindow());
    return isWanted ? record : RecordPtr();
}

} // namespace IO
} // namespace Tellarix
