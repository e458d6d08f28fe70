// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/timewindow.h>
#include <tellarix/qt/records/amplitudescale_p.h>
#include <tellarix/qt/records/recordwidget.h>

#include <QPen>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace Tellarix {
namespace Gui {

class FilteredRecords;
class FilterJob;

/** The records of one stream in a row, what is set for them, and what is worked out of them. */
struct TELLARIX_GUI_API RecordSlot
{
    RecordSlot();
    ~RecordSlot();
    RecordSlot(const RecordSlot &) = delete;
    RecordSlot &operator=(const RecordSlot &) = delete;

    /** Replaces the raw records; what was filtered of the former ones goes. */
    void setRaw(RecordSequence *sequence, bool own);
    /** Finds gaps and overlaps, unless they are known. */
    void findStretches();
    void forgetTraces();
    void forgetExtrema();

    RecordSequence *raw{nullptr};
    bool ownsRaw{false};
    std::unique_ptr<FilteredRecords> filtered;
    std::unique_ptr<FilteredRecords> former; /**< of the filter before, while there is a job */
    std::unique_ptr<FilterJob> job; /**< makes the next filtered records in the background */

    std::optional<double> scale;
    std::optional<QPen> pen;
    QString label;
    QString id;
    QString unit;
    bool visible{true};

    // First for raw, then for filtered records.
    TraceInfo traces[2];
    TraceExtrema extrema[2];

    bool stretchesKnown{false};
    std::vector<Core::TimeWindow> gaps;
    std::vector<Core::TimeWindow> overlaps;
    Core::Time drawnStart; /**< where the records began when the slot was painted */
};

/** The slots of a row, and which of them lie where in its canvas. */
class TELLARIX_GUI_API RecordSlots
{
public:
    using DrawMode = RecordWidget::DrawMode;
    using Items = std::vector<std::unique_ptr<RecordSlot>>;
    /** More can't be meant. */
    static constexpr int Maximum = 4096;

    RecordSlots();
    ~RecordSlots();

    int size() const { return static_cast<int>(_items.size()); }
    /** Null if there is no such slot. */
    RecordSlot *at(int slot) const;
    /** Adds empty slots at the end or removes slots there with what they own. */
    void resize(int count);
    Items::const_iterator begin() const { return _items.begin(); }
    Items::const_iterator end() const { return _items.end(); }

    bool isDrawn(int slot) const;
    /** Slots that are drawn, from the top down. */
    QVector<int> drawn() const;
    /** Where a slot lies in @p canvas; empty for one that isn't drawn. */
    QRect rectOf(int slot, const QRect &canvas) const;
    /** The first slot drawn at a y, -1 if there is none. */
    int slotAt(int y, const QRect &canvas) const;
    /** The pen set for a slot, otherwise one of the scheme. */
    QPen penOf(int slot) const;

    DrawMode mode{DrawMode::Single};
    int current{0};

private:
    Items _items;
};

} // namespace Gui
} // namespace Tellarix
