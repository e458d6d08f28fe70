// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/spectrogram.h>

#include <tellarix/core/time.h>

#include <cstdint>
#include <vector>

namespace Tellarix {
class Record;
}

namespace Norvu {
namespace Gui {

/**
 * The spectrogram of one stretch of records without gaps and with one sampling frequency.
 *
 * It sees to neither: whoever feeds it begins a new one at a gap, an overlap or a change of rate,
 * and for another column interval, as times don't follow when data is dropped.
 */
template <typename T>
class NORVU_GUI_API RecordSpectrogram : public Spectrogram<T>
{
public:
    RecordSpectrogram();
    explicit RecordSpectrogram(const SpectrogramSettings &settings);
    ~RecordSpectrogram() override;

    /**
     * Appends the samples of a record. The first one sets start time and sampling frequency; the
     * rate of later ones is not looked at. A null record or one without an end, which has no rate,
     * is passed over.
     */
    void feed(const Tellarix::Record *record);
    /** As feed() of each, but faster: many short records count as one big block, which all
     *  processors share. */
    void feed(const std::vector<const Tellarix::Record *> &records);

    /** Time of column 0; invalid before the first record. */
    const Tellarix::Core::Time &startTime() const { return _startTime; }
    /** End of the last record, or of the last column once the data was trimmed. */
    const Tellarix::Core::Time &endTime() const { return _endTime; }
    /** Column of a time, truncated toward zero: less than a column before the start is column 0,
     *  what lies further before it is negative. */
    int mapTime(const Tellarix::Core::Time &time) const;

    /** Keeps the columns from @p start up to @p end. */
    void trim(const Tellarix::Core::Time &start, const Tellarix::Core::Time &end);
    /** As in the base; start and end time follow by whole columns. */
    void trimData(int first, int last, int *firstKept) override;
    /** Forgets the times, so that the next record begins a new stretch. */
    void resetted() override;

private:
    bool begin(const Tellarix::Record *record);

    bool _started{false};
    Tellarix::Core::Time _origin; /**< of the first record */
    int64_t _dropped{0};          /**< columns since then that were trimmed away */
    Tellarix::Core::Time _startTime;
    Tellarix::Core::Time _endTime;
};

extern template class RecordSpectrogram<float>;
extern template class RecordSpectrogram<double>;

} // namespace Gui
} // namespace Norvu
