// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/eventlistcolumns.h>

#include <tellarix/core/time.h>

#include <QColor>
#include <QList>
#include <QStandardItem>

#include <array>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>
#include <vector>

namespace Norvu {
namespace Gui {

/** How the rows of one load are written and coloured. */
struct EventStyle
{
    int locationDecimals;
    int depthDecimals;
    QColor automaticColor;
    QColor manualColor;
};

/** What is known of an event. */
struct EventValues
{
    Tellarix::Core::Time time;
    std::optional<double> magnitude;
    std::optional<double> latitude;
    std::optional<double> longitude;
    std::optional<double> depth;
    std::optional<int> phaseCount;
    /** Strike, dip and rake; a NodalPlane with its uncertainties would take ten times the room. */
    std::optional<std::array<float, 3>> plane;
    char status{'A'};
    bool isManual{false};
};

/** Texts of an event in UTF-8; null for an empty one. */
struct EventTexts
{
    const char *magnitudeType{nullptr};
    const char *publicID{nullptr};
    const char *type{nullptr};
    const char *region{nullptr};
};

struct EventBlock;

/**
 * Makes the rows of one load.
 *
 * What the items of a row answer from, and the items themselves, lie side by side for some rows in
 * blocks of memory: to take and free them one by one would cost more than all else about a row.
 * Qt takes memory of its own for every item; that is why blank rows are made ahead in a thread,
 * while the caller's waits for its database.
 *
 * The counts in a block are not thread-safe: rows and maker belong to one thread at a time.
 */
class EventRowMaker
{
public:
    /** @param expected  number of rows that will probably be asked for; there may be more */
    EventRowMaker(const EventStyle &style, int expected);
    ~EventRowMaker();
    EventRowMaker(const EventRowMaker &) = delete;
    EventRowMaker &operator=(const EventRowMaker &) = delete;

    /** An item for each column; the caller owns them. */
    QList<QStandardItem *> makeRow(const EventValues &values, const EventTexts &texts);

private:
    void makeAhead();
    EventBlock *nextBlock();

    const EventStyle _style;
    EventBlock *_block{nullptr};
    std::mutex _mutex; /**< guards what follows */
    std::condition_variable _changed;
    std::deque<EventBlock *> _ready;
    int _expected; /**< rows for which there is no block yet */
    bool _isEnding{false};
    std::thread _thread;
};

struct EventRecord;

/**
 * An item of the event list that answers from the record of its row.
 *
 * It looks like a plain item that holds its texts and values, but takes a fraction of the time and
 * memory. What is set goes before what the record says; a copy is a plain item.
 */
class EventItem : public QStandardItem
{
public:
    enum Role
    {
        SortRole = Qt::UserRole,
        TimeRole = Qt::UserRole + 1, /**< the origin time, in its column */
    };

    ~EventItem() override;

    QVariant data(int role) const override;
    void setData(const QVariant &value, int role) override;
    QStandardItem *clone() const override;
    int type() const override;

    /** @p item as one of this class that shows @p column and still has the values of its record;
     *  null if it isn't. */
    static const EventItem *from(const QStandardItem *item, int column);
    /** Whether this item goes before another of its column: the order of the values at SortRole,
     *  in which what has none goes last. */
    bool isLessThan(const EventItem &other) const;
    /**
     * Places of the rows of @p parent in the order of a column, the same for equal ones: to compare
     * numbers that lie side by side takes a fraction of the time that a walk to the items takes.
     * @return empty if some item of the column isn't one of this class as from() has it
     */
    static std::vector<int> places(const QStandardItem &parent, int column);

private:
    friend struct EventRecord;

    EventItem() = default;
    /** Gives the item's room back to its block. */
    static void operator delete(void *memory);

    int eventColumn() const;
    const EventRecord &record() const;
    double sortNumber() const;
    QVariant displayText() const;
    QVariant sortValue() const;
};

} // namespace Gui
} // namespace Norvu
