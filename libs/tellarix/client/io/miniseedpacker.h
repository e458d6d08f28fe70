// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/core/records/formats/miniseedwriter.h>
#include <tellarix/core/records/record.h>

#include <QBuffer>
#include <QByteArray>

#include <memory>
#include <string>
#include <vector>

namespace Tellarix {
namespace IO {

/** A miniSEED record as it stands in a file. */
struct PackedRecord
{
    QByteArray bytes;
    Core::Time startTime;
};

/**
 * Turns Records into miniSEED, each into one miniSEED record of 512 to 4096 bytes as far as its
 * samples fit into that, else into several of 4096. Encodings are those of MiniSeedWriter, which
 * keep times, rates, samples and timing quality; other flags of the header are not kept.
 */
class TELLARIX_CLIENT_API MiniSeedPacker
{
public:
    MiniSeedPacker();
    ~MiniSeedPacker();

    /** False with an errorString() if the format can't hold the record. */
    bool pack(const Record &record, std::vector<PackedRecord> *result);
    const std::string &errorString() const { return _errorString; }

private:
    bool append(const QByteArray &bytes, const Record &record, std::vector<PackedRecord> *result);

    QBuffer _buffer;
    std::vector<std::unique_ptr<Formats::MiniSeedWriter>> _writers; /**< for each length */
    std::string _errorString;
};

} // namespace IO
} // namespace Tellarix
