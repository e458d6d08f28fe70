// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/recordsequence.h>

namespace Tellarix {

/** A sequence that keeps a fixed number of records, or all of them. */
class TELLARIX_CORE_API RingBuffer : public RecordSequence
{
public:
    /**
     * @param capacity   number of records to keep; the oldest go first, and a full buffer takes no
     * record that is older than all; 0 and below keeps all
     * @param tolerance  in samples, as in RecordSequence
     */
    explicit RingBuffer(int capacity, double tolerance = 0.5);

    int capacity() const { return _capacity; }

    bool feed(const Record *record) override;
    RecordSequence *clone() const override;

private:
    int _capacity;
};

} // namespace Tellarix
