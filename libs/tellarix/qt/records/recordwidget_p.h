// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/records/filteredrecords_p.h>
#include <tellarix/qt/records/filterjob_p.h>
#include <tellarix/qt/records/recordwidget.h>

#include <cmath>
#include <optional>

namespace Tellarix {
namespace Gui {

/** Extrema of the samples that count for the automatic range, worked out on demand. */
struct RecordWidget::Extrema
{
    bool known{false};
    bool empty{true}; /**< no finite sample; the rest means nothing */
    double minimum{0};
    double maximum{0};
    double mean{0};
};

/** Amplitudes at bottom and top of a slot; a descending range turns the trace over. */
struct RecordWidget::ShownRange
{
    bool empty{true}; /**< nothing to show: automatic, but without finite samples */
    double lower{-1};
    double upper{1};
    double offset{0};

    /** Pixel of the offset below the top of a slot. */
    int offsetY(int height) const
    {
        return static_cast<int>(std::lround((upper - offset) / (upper - lower) * (height - 1)));
    }
};

struct RecordWidget::Slot
{
    Slot() = default;
    ~Slot() { setRaw(nullptr, false); }
    Slot(const Slot &) = delete;
    Slot &operator=(const Slot &) = delete;

    void setRaw(RecordSequence *sequence, bool own)
    {
        filtered.reset();
        job.reset();
        if (ownsRaw && raw != sequence)
            delete raw;
        raw = sequence;
        ownsRaw = own && sequence != nullptr;
    }

    RecordSequence *raw{nullptr};
    bool ownsRaw{false};
    std::unique_ptr<FilteredRecords> filtered;
    std::unique_ptr<FilterJob> job; /**< makes the next filtered records in the background */

    std::optional<double> scale;
    std::optional<QPen> pen;
    QString label;
    QString id;
    QString unit;
    bool visible{true};

    // First for raw, then for filtered records.
    TraceInfo traces[2];
    Extrema extrema[2];

    bool stretchesKnown{false};
    std::vector<Core::TimeWindow> gaps;
    std::vector<Core::TimeWindow> overlaps;
    Core::Time drawnStart; /**< where the records began when the slot was painted */
};

/** Colours of one paint: the scheme's, or on a highlighted background the palette's. */
struct RecordWidget::Look
{
    bool highlighted;
    QColor text;
    QColor background; /**< what is behind the traces, as far as the widget can know */
    QPen frame;
    QPen gridMajor;
    QPen gridMinor;
};

} // namespace Gui
} // namespace Tellarix
