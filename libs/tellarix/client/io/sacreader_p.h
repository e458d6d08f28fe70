// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/recordformat.h>
#include <tellarix/core/records/formats/sac.h>

namespace Tellarix {
namespace IO {

/** Binary SAC of either byte order. */
RecordFormat sacFormat();

/** A SAC file is one record. */
class SacReader : public RecordReader
{
public:
    explicit SacReader(RecordInput &input) : _input(input) {}

    bool begin(std::string &cause) override;
    RecordPtr next() override;
    int64_t originOffset() const override { return _isRead ? 0 : -1; }

private:
    RecordInput &_input;
    std::string _bytes;
    Formats::SacHeader _header;
    bool _isRead{false};
};

} // namespace IO
} // namespace Tellarix
