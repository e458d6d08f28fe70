// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/records/amplitudescale_p.h>
#include <tellarix/qt/records/recordslots_p.h>
#include <tellarix/qt/records/rowtimes_p.h>
#include <tellarix/qt/records/slotfilter_p.h>

#include <functional>

namespace Tellarix {
namespace Gui {

/** The column of a row in which the amplitude axes stand. */
struct AxisColumn
{
    using Position = RecordWidget::AxisPosition;

    bool drawn{false};
    Position position{Position::AxisLeft};
    int width{0};   /**< of the column, in pixels */
    int spacing{0}; /**< the part of it between axis and canvas */

    /** What the column leaves of the area of a row. */
    QRect canvasOf(const QRect &area) const;
};

/** Lines behind the traces of a row. */
struct RowGrid
{
    double major{0}; /**< distance of labelled ticks in seconds; 0 draws no lines at times */
    double minor{0};
    double offset{0}; /**< added to a time before ticks are placed */
    double lower{0};  /**< amplitudes at bottom and top; if they are equal, the axis decides */
    double upper{0};
};

/**
 * What a record widget shows, apart from the widget: slots, filter, times and amplitudes.
 *
 * Polylines are kept for each slot and built again, from the levels of its sequence, once they are
 * forgotten because data, range or size have changed.
 */
struct TELLARIX_GUI_API RecordRow
{
    /** @param jobFinished  see SlotFilter */
    explicit RecordRow(std::function<void(int)> jobFinished);

    RecordSlots items;
    SlotFilter filter;
    RowTimes times;
    AmplitudeScale amplitudes;
    AxisColumn axis;
    RowGrid grid;
    bool showsScaledValues{false};
    bool isPale{false}; /**< draws all traces as palely as raw data that wait for filtered ones */

    /** The records that a slot shows; null without any, or without such a slot. */
    RecordSequence *shownRecords(int slot) const;
    /** Factor from samples to values at the axis; 1 without a scale that can be used. */
    double shownFactor(int slot) const;
    const TraceExtrema &extremaOf(RecordSlot &slot) const;
    /** Amplitude range of a slot; overlaid slots share one. */
    ShownRange rangeOf(int slot) const;
    /** What is kept of the records that a slot shows. */
    TraceInfo &shownTrace(RecordSlot &slot) const;

    /** True if some trace is to be built before it is drawn. */
    bool isDirty() const;
    /** Builds what is outdated of the slots that are drawn, for this canvas. */
    void prepare(const QRect &canvas);
    void forgetTraces();
    void forgetExtrema();
    void forgetStretches();

private:
    TraceExtrema commonExtrema() const;
    void buildTrace(int slot, const QRect &canvas);
};

/**
 * Window in which a record that was fed to @p raw changes the picture: the record, the lines from
 * and to its neighbours, and gaps that it opens or closes.
 */
TELLARIX_GUI_API Core::TimeWindow touchedWindow(const RecordSequence &raw, const Record &record);

} // namespace Gui
} // namespace Tellarix
