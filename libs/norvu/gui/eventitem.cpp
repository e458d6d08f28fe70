// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/eventitem_p.h>

#include <tellarix/core/datamodel/focalmechanism.h>
#include <tellarix/qt/texts.h>

#include <QSize>
#include <QTextStream>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <iterator>
#include <limits>
#include <new>
#include <string>

namespace Norvu {
namespace Gui {

/** What the items of a row share, and the room for them. */
struct EventRecord
{
    /** What leads to the record lies beside the item, and so is there still when the item has been
     *  destroyed. */
    struct Slot
    {
        uint8_t column{0};
        bool isChanged{false};
        alignas(EventItem) char item[sizeof(EventItem)];
    };

    static Slot &slotOf(const void *item)
    {
        const char *slot = static_cast<const char *>(item) - offsetof(Slot, item);
        return *reinterpret_cast<Slot *>(const_cast<char *>(slot));
    }

    static EventRecord &of(const void *item)
    {
        Slot *slot = &slotOf(item);
        return *reinterpret_cast<EventRecord *>(reinterpret_cast<char *>(slot - slot->column) -
                                                offsetof(EventRecord, places));
    }

    void makeItems()
    {
        for (size_t column = 0; column < std::size(places); ++column) {
            places[column].column = static_cast<uint8_t>(column);
            ::new (places[column].item) EventItem;
        }
    }

    QStandardItem *item(int column)
    {
        return std::launder(reinterpret_cast<EventItem *>(places[column].item));
    }

    void setTexts(const EventTexts &newTexts);
    /** The text of a column of texts, "" in others. */
    std::string_view text(int column) const;

    EventBlock *block{nullptr};
    EventValues values;
    std::array<size_t, 5> textEnds{}; /**< in the texts of the block, with where the first begins */
    int itemCount{EEventListColumnsNames::Count};
    Slot places[EEventListColumnsNames::Count];
};

/** Rows that were made and will be freed together. */
struct EventBlock
{
    static constexpr int RowCount = 64;

    /** With blank items in all rows. */
    explicit EventBlock(const EventStyle &style_) : style(style_)
    {
        for (EventRecord &row : rows) {
            row.block = this;
            row.makeItems();
        }
    }

    /** A row that nobody has had; null if there is none. */
    EventRecord *take() { return taken < RowCount ? &rows[taken++] : nullptr; }

    /** Tells that nobody will take any more rows. */
    void finish()
    {
        for (int i = taken; i < RowCount; ++i) {
            for (int column = 0; column < EEventListColumnsNames::Count; ++column)
                rows[i].item(column)->~QStandardItem();
        }
        isFinished = true;
        if (freed == taken)
            delete this;
    }

    void freeRow()
    {
        if (++freed == taken && isFinished)
            delete this;
    }

    const EventStyle style;
    std::string texts;
    int taken{0};
    int freed{0};
    bool isFinished{false};
    EventRecord rows[RowCount];
};

namespace {

using Columns = EEventListColumnsNames;
using Tellarix::Core::Time;

constexpr int FlagsRole = Qt::UserRole - 1; // where QStandardItem::flags() looks
constexpr auto Flags =
    Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled;
constexpr int Roles[] = {Qt::DisplayRole,     Qt::ToolTipRole,    Qt::TextAlignmentRole,
                         Qt::ForegroundRole,  Qt::SizeHintRole,   FlagsRole,
                         EventItem::SortRole, EventItem::TimeRole};

constexpr size_t BlocksAhead = 16;

QString missing()
{
    return QStringLiteral("-");
}

int alignmentOf(int column)
{
    switch (column) {
    case Columns::OriginTime:
    case Columns::Latitude:
    case Columns::Longitude:
    case Columns::Depth:
        return Qt::AlignRight | Qt::AlignVCenter;
    case Columns::Magnitude:
    case Columns::PhaseCount:
    case Columns::Status:
    case Columns::Mechanism:
        return Qt::AlignCenter;
    default:
        return Qt::AlignLeft | Qt::AlignVCenter;
    }
}

/** Where the record has the text of a column; -1 for columns of values. */
int textIndex(int column)
{
    switch (column) {
    case Columns::MagnitudeType:
        return 0;
    case Columns::PublicID:
        return 1;
    case Columns::EventType:
        return 2;
    case Columns::Region:
        return 3;
    default:
        return -1;
    }
}

std::string_view viewOf(const char *text)
{
    return text ? text : "";
}

std::string timeText(Time time)
{
    return time.toString("%F %T");
}

/** Whether the texts of such times have the order of the times: years have four digits. */
bool hasPlainYear(Time time)
{
    static const Time first(0, 1, 1);
    static const Time end(10000, 1, 1);
    return time >= first && time < end;
}

/** Whole seconds, rounded down. */
int64_t secondOf(Time time)
{
    constexpr int64_t UsecsPerSecond = 1000000;
    const int64_t usecs = time.usecs();
    return usecs / UsecsPerSecond - (usecs % UsecsPerSecond < 0 ? 1 : 0);
}

/** The order of the times' texts, which end with the second. */
bool isEarlier(Time a, Time b)
{
    return hasPlainYear(a) && hasPlainYear(b) ? secondOf(a) < secondOf(b)
                                              : timeText(a) < timeText(b);
}

/** The order of the texts in UTF-16, as QString compares them. */
bool isLess(std::string_view a, std::string_view b)
{
    const size_t common = std::min(a.size(), b.size());
    const auto [left, right] = std::mismatch(a.begin(), a.begin() + common, b.begin());
    if (left == a.begin() + common)
        return a.size() < b.size();

    // Bytes have the order of the characters, but UTF-16 puts those beyond U+FFFF, which begin with
    // 0xf0 and above, before U+E000 to U+FFFF, which begin with 0xee and 0xef.
    const auto rank = [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte == 0xee || byte == 0xef ? byte + 0x100 : byte;
    };
    return rank(*left) < rank(*right);
}

template <typename T>
QVariant variantOf(const std::optional<T> &value)
{
    return value ? QVariant(*value) : QVariant();
}

QString coordinateText(const std::optional<double> &value, int decimals, char negative,
                       char positive)
{
    if (!value)
        return missing();

    return QString::number(std::abs(*value), 'f', decimals) + QLatin1Char(' ') +
           QLatin1Char(*value < 0 ? negative : positive);
}

QString mechanismText(const std::array<float, 3> &angles)
{
    Tellarix::DataModel::NodalPlane plane;
    plane.setStrike(Tellarix::DataModel::RealQuantity(angles[0]));
    plane.setDip(Tellarix::DataModel::RealQuantity(angles[1]));
    plane.setRake(Tellarix::DataModel::RealQuantity(angles[2]));
    const struct
    {
        const char *label;
        double angle;
    } lines[] = {{"Strike", plane.strike().value()},
                 {"Dip", plane.dip().value()},
                 {"Rake", plane.rake().value()}};
    constexpr int LabelWidth = 6;

    QString text;
    QTextStream stream(&text);
    stream.setFieldAlignment(QTextStream::AlignLeft);
    for (const auto &line : lines) {
        if (&line != lines)
            stream << '\n';
        stream.setFieldWidth(LabelWidth);
        stream << line.label;
        stream.setFieldWidth(0);
        stream << ": " << line.angle << Tellarix::Gui::degrees;
    }
    return text;
}

QVariant statusColor(const EventRecord &record)
{
    return record.values.isManual ? record.block->style.manualColor
                                  : record.block->style.automaticColor;
}

} // namespace

void EventRecord::setTexts(const EventTexts &newTexts)
{
    const char *const pieces[] = {newTexts.magnitudeType, newTexts.publicID, newTexts.type,
                                  newTexts.region};
    textEnds[0] = block->texts.size();
    for (size_t i = 0; i < std::size(pieces); ++i) {
        block->texts.append(viewOf(pieces[i]));
        textEnds[i + 1] = block->texts.size();
    }
}

std::string_view EventRecord::text(int column) const
{
    const int index = textIndex(column);
    if (index < 0)
        return {};

    const size_t begin = textEnds[static_cast<size_t>(index)];
    return std::string_view(block->texts)
        .substr(begin, textEnds[static_cast<size_t>(index) + 1] - begin);
}

EventRowMaker::EventRowMaker(const EventStyle &style, int expected)
    : _style(style), _expected(expected)
{
    if (expected > EventBlock::RowCount)
        _thread = std::thread([this] { makeAhead(); });
}

EventRowMaker::~EventRowMaker()
{
    if (_thread.joinable()) {
        {
            const std::lock_guard<std::mutex> lock(_mutex);
            _isEnding = true;
        }
        _changed.notify_all();
        _thread.join();
    }
    for (EventBlock *block : _ready)
        block->finish();
    if (_block)
        _block->finish();
}

QList<QStandardItem *> EventRowMaker::makeRow(const EventValues &values, const EventTexts &texts)
{
    EventRecord *record = _block ? _block->take() : nullptr;
    if (!record) {
        if (_block)
            _block->finish();
        _block = nextBlock();
        record = _block->take();
    }
    record->values = values;
    record->setTexts(texts);

    QList<QStandardItem *> items;
    items.reserve(Columns::Count);
    for (int column = 0; column < Columns::Count; ++column)
        items.append(record->item(column));
    return items;
}

void EventRowMaker::makeAhead()
{
    std::unique_lock<std::mutex> lock(_mutex);
    while (!_isEnding && _expected > 0) {
        if (_ready.size() == BlocksAhead) {
            _changed.wait(lock);
            continue;
        }
        _expected -= EventBlock::RowCount;
        lock.unlock();
        auto *block = new EventBlock(_style);
        lock.lock();
        _ready.push_back(block);
    }
}

EventBlock *EventRowMaker::nextBlock()
{
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        if (!_ready.empty()) {
            EventBlock *block = _ready.front();
            _ready.pop_front();
            _changed.notify_all();
            return block;
        }
        _expected -= EventBlock::RowCount;
    }
    return new EventBlock(_style);
}

EventItem::~EventItem() = default;

void EventItem::operator delete(void *memory)
{
    EventRecord &record = EventRecord::of(memory);
    if (--record.itemCount == 0)
        record.block->freeRow();
}

int EventItem::eventColumn() const
{
    return EventRecord::slotOf(this).column;
}

const EventRecord &EventItem::record() const
{
    return EventRecord::of(this);
}

QVariant EventItem::data(int role) const
{
    if (EventRecord::slotOf(this).isChanged) {
        const QVariant own = QStandardItem::data(role);
        if (own.isValid())
            return own;
    }

    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return displayText();
    case SortRole:
        return sortValue();
    case Qt::TextAlignmentRole:
        return alignmentOf(eventColumn());
    case FlagsRole:
        return static_cast<int>(Flags);
    case TimeRole:
        return eventColumn() == Columns::OriginTime ? QVariant::fromValue(record().values.time)
                                                    : QVariant();
    case Qt::ForegroundRole:
        return eventColumn() == Columns::Status ? statusColor(record()) : QVariant();
    case Qt::ToolTipRole:
        return eventColumn() == Columns::Mechanism && record().values.plane
                   ? mechanismText(*record().values.plane)
                   : QVariant();
    case Qt::SizeHintRole:
        return eventColumn() == Columns::Mechanism ? QSize(24, 24) : QVariant();
    default:
        return {};
    }
}

void EventItem::setData(const QVariant &value, int role)
{
    EventRecord::slotOf(this).isChanged = true;
    QStandardItem::setData(value, role);
}

QStandardItem *EventItem::clone() const
{
    std::unique_ptr<QStandardItem> copy(QStandardItem::clone()); // what was set beyond the record
    for (const int role : Roles) {
        const QVariant value = data(role);
        if (value.isValid())
            copy->setData(value, role);
    }
    return copy.release();
}

int EventItem::type() const
{
    return UserType + 1;
}

const EventItem *EventItem::from(const QStandardItem *item, int column)
{
    if (!item || item->type() != UserType + 1)
        return nullptr;

    const auto *event = static_cast<const EventItem *>(item);
    const EventRecord::Slot &slot = EventRecord::slotOf(event);
    return slot.column == column && !slot.isChanged ? event : nullptr;
}

bool EventItem::isLessThan(const EventItem &other) const
{
    const int column = eventColumn();
    if (column == Columns::OriginTime)
        return isEarlier(record().values.time, other.record().values.time);
    if (textIndex(column) >= 0)
        return isLess(record().text(column), other.record().text(column));
    return sortNumber() < other.sortNumber();
}

/** The places of values in their order; equal ones share the first of theirs. */
template <typename T, typename Less>
std::vector<int> placesOf(const std::vector<T> &values, Less isLess)
{
    std::vector<std::pair<T, int>> order;
    order.reserve(values.size());
    for (size_t i = 0; i < values.size(); ++i)
        order.emplace_back(values[i], static_cast<int>(i));
    std::sort(order.begin(), order.end(),
              [&](const auto &a, const auto &b) { return isLess(a.first, b.first); });

    std::vector<int> places(values.size());
    int place = 0;
    for (size_t i = 0; i < order.size(); ++i) {
        if (i > 0 && isLess(order[i - 1].first, order[i].first))
            place = static_cast<int>(i);
        places[static_cast<size_t>(order[i].second)] = place;
    }
    return places;
}

std::vector<int> EventItem::places(const QStandardItem &parent, int column)
{
    std::vector<const EventItem *> items;
    items.reserve(static_cast<size_t>(parent.rowCount()));
    for (int row = 0; row < parent.rowCount(); ++row) {
        items.push_back(from(parent.child(row, column), column));
        if (!items.back())
            return {};
    }

    const auto isPlain = [column](const EventItem *item) {
        return column != Columns::OriginTime || hasPlainYear(item->record().values.time);
    };
    if (!std::all_of(items.begin(), items.end(), isPlain))
        return placesOf(items, [](auto *a, auto *b) { return a->isLessThan(*b); });

    if (textIndex(column) >= 0) {
        std::vector<std::string_view> texts;
        texts.reserve(items.size());
        for (const EventItem *item : items)
            texts.push_back(item->record().text(column));
        return placesOf(texts, [](auto a, auto b) { return isLess(a, b); });
    }
    std::vector<double> numbers;
    numbers.reserve(items.size());
    for (const EventItem *item : items)
        numbers.push_back(item->sortNumber());
    return placesOf(numbers, std::less<>());
}

/** The value to sort by in a column of values; those that are missing go last. */
double EventItem::sortNumber() const
{
    constexpr double Last = std::numeric_limits<double>::infinity();
    const EventValues &event = record().values;
    switch (eventColumn()) {
    case Columns::OriginTime:
        return static_cast<double>(secondOf(event.time));
    case Columns::Magnitude:
        return event.magnitude.value_or(Last);
    case Columns::PhaseCount:
        return event.phaseCount ? *event.phaseCount : Last;
    case Columns::Latitude:
        return event.latitude.value_or(Last);
    case Columns::Longitude:
        return event.longitude.value_or(Last);
    case Columns::Depth:
        return event.depth.value_or(Last);
    case Columns::Status:
        return event.status;
    default:
        return Last;
    }
}

QVariant EventItem::displayText() const
{
    const EventValues &event = record().values;
    switch (eventColumn()) {
    case Columns::OriginTime:
        return QString::fromStdString(timeText(event.time));
    case Columns::Magnitude:
        return event.magnitude ? QString::number(*event.magnitude, 'f', 1) : missing();
    case Columns::PhaseCount:
        return event.phaseCount ? QString::number(*event.phaseCount) : missing();
    case Columns::Latitude:
        return coordinateText(event.latitude, record().block->style.locationDecimals, 'S', 'N');
    case Columns::Longitude:
        return coordinateText(event.longitude, record().block->style.locationDecimals, 'W', 'E');
    case Columns::Depth:
        return event.depth
                   ? Tellarix::Gui::depthToString(*event.depth, record().block->style.depthDecimals)
                   : missing();
    case Columns::Status:
        return QString(QLatin1Char(event.status));
    case Columns::Mechanism:
        return event.plane ? QVariant() : missing();
    default: {
        const std::string_view text = record().text(eventColumn());
        return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
    }
    }
}

QVariant EventItem::sortValue() const
{
    const EventValues &event = record().values;
    switch (eventColumn()) {
    case Columns::Magnitude:
        return variantOf(event.magnitude);
    case Columns::PhaseCount:
        return variantOf(event.phaseCount);
    case Columns::Latitude:
        return variantOf(event.latitude);
    case Columns::Longitude:
        return variantOf(event.longitude);
    case Columns::Depth:
        return variantOf(event.depth);
    case Columns::Status:
        return static_cast<int>(event.status);
    case Columns::Mechanism:
        return {};
    default:
        return displayText();
    }
}

} // namespace Gui
} // namespace Norvu
