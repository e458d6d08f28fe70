// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/forward.h>
#include <tellarix/core/timewindow.h>

#include <vector>

namespace Tellarix {

/**
 * The samples of a sequence whose times lie in a window, its end not included.
 *
 * Records that lie wholly in the window are shared; of others a copy of the samples inside is made,
 * bit by bit and in their own type. Gaps stay gaps, and what overlaps is kept from all records.
 *
 * @return records in the order of the sequence, each with at least one sample; none for a window
 *         that is empty or invalid
 */
TELLARIX_CORE_API std::vector<RecordCPtr> cutRecords(const RecordSequence &records,
                                                     const Core::TimeWindow &window);

/** Records that follow each other sample by sample. */
using RecordStretch = std::vector<RecordCPtr>;

/**
 * Divides records at gaps, overlaps and changes of codes, sampling frequency or sample type.
 *
 * Where a record should begin is counted from the start of its stretch, so that small deviations
 * never add up: a clock that drifts ends a stretch once it is off by more than the tolerance.
 *
 * @param records    in ascending order of their start times
 * @param tolerance  deviation in samples up to which a record goes on where the last one ended
 */
TELLARIX_CORE_API std::vector<RecordStretch>
gaplessStretches(const std::vector<RecordCPtr> &records, double tolerance = 0.5);

/**
 * One record of all samples of a stretch, from the start of its first record; that record itself
 * if it is the only one. Null for an empty stretch.
 */
TELLARIX_CORE_API RecordCPtr joinedRecord(const RecordStretch &stretch);

} // namespace Tellarix
