// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/recordsequence.h>

namespace Tellarix {

/** A sequence that keeps the records that overlap a fixed time window. */
class TELLARIX_CORE_API TimeWindowBuffer : public RecordSequence
{
public:
    /**
     * @param window     records that do not overlap it are not taken, save records without
     *                   an extent that lie in it; an invalid one takes all
     * @param tolerance  in samples, as in RecordSequence
     */
    explicit TimeWindowBuffer(const Core::TimeWindow &window, double tolerance = 0.5);

    const Core::TimeWindow &storedWindow() const { return _window; }
    /** Moves the window and drops records that lie outside of the new one. */
    void setStoredWindow(const Core::TimeWindow &window);

    bool feed(const Record *record) override;
    RecordSequence *clone() const override;

private:
    Core::TimeWindow _window;
};

} // namespace Tellarix
