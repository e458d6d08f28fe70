// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/recordformat.h>
#include <tellarix/core/records/formats/miniseed.h>
#include <tellarix/core/records/formats/recordscanner.h>

#include <optional>

namespace Tellarix {
namespace IO {

/** miniSEED 2 and 3, also mixed. */
RecordFormat miniSeedFormat();

class MiniSeedReader : public RecordReader
{
public:
    explicit MiniSeedReader(RecordInput &input);

    /** False if there is no record near the beginning of a file; a pipe is not looked at. */
    bool begin(std::string &cause) override;
    RecordPtr next() override;
    int64_t originOffset() const override { return _originOffset; }

private:
    bool readMore();
    RecordPtr decodeFound();

    RecordInput &_input;
    int64_t _bytesRead{0};
    Formats::RecordScanner _scanner;
    std::optional<Formats::RecordScanner::Step> _heldStep; /**< taken by begin() */
    Formats::MiniSeedDecoder _decoder;
    int64_t _originOffset{-1};
};

} // namespace IO
} // namespace Tellarix
