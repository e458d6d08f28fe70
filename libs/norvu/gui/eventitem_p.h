// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/eventlistcolumns.h>

#include <tellarix/core/datamodel/focalmechanism.h>
#include <tellarix/core/time.h>

#include <QColor>
#include <QStandardItem>

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

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

/**
 * What the items of a row share: the values of one event, from which they make their texts when
 * these are asked for.
 *
 * Its count is not thread-safe: the items of a row belong to one thread at a time.
 */
struct EventRecord : public boost::intrusive_ref_counter<EventRecord, boost::thread_unsafe_counter>
{
    using Column = EEventListColumnsNames::Column;

    std::shared_ptr<const EventStyle> style;
    Tellarix::Core::Time time;
    std::optional<double> magnitude;
    std::optional<double> latitude;
    std::optional<double> longitude;
    std::optional<double> depth;
    std::optional<int> phaseCount;
    /** Strike, dip and rake; NodalPlane with its uncertainties would take ten times the room. */
    std::optional<std::array<float, 3>> plane;
    char status{'A'};
    bool isManual{false};

    /** Takes the text of a column; those of a row are taken once each. */
    void setText(Column column, const char *text);
    /** The text of a column of texts, in UTF-8; "" in others. */
    std::string_view text(int column) const;
    Tellarix::DataModel::NodalPlane nodalPlane() const;

private:
    struct Piece
    {
        uint32_t begin{0};
        uint32_t size{0};
    };

    std::string _texts; // One block of memory is taken and freed faster than four.
    std::array<Piece, 4> _pieces;
};

using EventRecordPtr = boost::intrusive_ptr<EventRecord>;

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

    EventItem(EventRecordPtr record, int column);
    ~EventItem() override;

    QVariant data(int role) const override;
    void setData(const QVariant &value, int role) override;
    QStandardItem *clone() const override;
    void write(QDataStream &out) const override;
    int type() const override;

    /** @p item as one of this class that shows @p column and still has the values of its record;
     *  null if it isn't. */
    static const EventItem *from(const QStandardItem *item, int column);
    /** Whether this item goes before another of its column: the order of the values at SortRole,
     *  in which what has none goes last. */
    bool isLessThan(const EventItem &other) const;

private:
    QVariant displayText() const;
    QVariant sortValue() const;

    EventRecordPtr _record;
    uint8_t _column;
    bool _isChanged{false};
};

} // namespace Gui
} // namespace Norvu
