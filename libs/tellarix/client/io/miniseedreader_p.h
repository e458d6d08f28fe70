// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/miniseedbatch_p.h>
#include <tellarix/client/io/recordformat.h>
#include <tellarix/core/records/formats/miniseed.h>
#include <tellarix/core/records/formats/recordscanner.h>

#include <deque>
#include <memory>
#include <optional>

namespace Tellarix {
namespace IO {

/** miniSEED 2 and 3, also mixed. */
RecordFormat miniSeedFormat();

/** Finds records in the reader's thread. Those of all but small files are decoded in others, some
 *  batches ahead; they come in the order of the file, with what is told of them. */
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
    bool find(FoundRecord &found, bool &pauses);
    bool findRecord(FoundRecord &found);
    RecordPtr deliver(const FoundRecord &found, DecodedRecord &decoded);

    RecordPtr nextAlone();
    RecordPtr nextOfBatches();
    void finishFront();
    void lookAhead();
    void fill(MiniSeedBatch &batch);

    RecordInput &_input;
    int64_t _bytesRead{0};
    Formats::RecordScanner _scanner;
    std::optional<Formats::RecordScanner::Step> _heldStep; /**< taken by begin() */
    Formats::MiniSeedDecoder _decoder;
    bool _atEnd{false}; /**< of what the scanner finds */
    int64_t _originOffset{-1};
    FoundRecord _found;
    DecodedRecord _decoded;
    using Batches = std::deque<std::unique_ptr<MiniSeedBatch>>;
    Batches _ahead; /**< the first one is being delivered */
    bool _isFrontDone{false};
    Batches _spare;
};

} // namespace IO
} // namespace Tellarix
