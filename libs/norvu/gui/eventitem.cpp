// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/eventitem_p.h>

#include <tellarix/qt/texts.h>

#include <QSize>
#include <QTextStream>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace Norvu {
namespace Gui {

namespace {

using Columns = EEventListColumnsNames;
using Tellarix::Core::Time;

constexpr int FlagsRole = Qt::UserRole - 1; // where QStandardItem::flags() looks
constexpr auto Flags =
    Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled;
constexpr int Roles[] = {Qt::DisplayRole,     Qt::ToolTipRole,    Qt::TextAlignmentRole,
                         Qt::ForegroundRole,  Qt::SizeHintRole,   FlagsRole,
                         EventItem::SortRole, EventItem::TimeRole};

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

/** The order of the times' texts, which end with the second. */
bool isEarlier(Time a, Time b)
{
    if (!hasPlainYear(a) || !hasPlainYear(b))
        return timeText(a) < timeText(b);

    constexpr int64_t ToPositive = 62167219200; // seconds from the year 0 to 1970
    constexpr int64_t UsecsPerSecond = 1000000;
    const auto second = [](Time time) {
        return (time.usecs() + ToPositive * UsecsPerSecond) / UsecsPerSecond;
    };
    return second(a) < second(b);
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
bool isLess(const std::optional<T> &a, const std::optional<T> &b)
{
    return a && (!b || *a < *b);
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

QString mechanismText(const Tellarix::DataModel::NodalPlane &plane)
{
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

} // namespace

void EventRecord::setText(Column column, const char *text)
{
    const size_t size = text ? std::strlen(text) : 0;
    constexpr size_t Limit = std::numeric_limits<uint32_t>::max();
    Piece &piece = _pieces[static_cast<size_t>(textIndex(column))];
    piece.begin = static_cast<uint32_t>(_texts.size());
    // A text beyond what can be addressed stays out.
    piece.size = size < Limit - _texts.size() ? static_cast<uint32_t>(size) : 0;
    _texts.append(text ? text : "", piece.size);
}

std::string_view EventRecord::text(int column) const
{
    const int index = textIndex(column);
    if (index < 0)
        return {};

    const Piece &piece = _pieces[static_cast<size_t>(index)];
    return std::string_view(_texts).substr(piece.begin, piece.size);
}

Tellarix::DataModel::NodalPlane EventRecord::nodalPlane() const
{
    Tellarix::DataModel::NodalPlane result;
    if (plane) {
        const auto &[strike, dip, rake] = *plane;
        result.setStrike(Tellarix::DataModel::RealQuantity(strike));
        result.setDip(Tellarix::DataModel::RealQuantity(dip));
        result.setRake(Tellarix::DataModel::RealQuantity(rake));
    }
    return result;
}

EventItem::EventItem(EventRecordPtr record, int column)
    : _record(std::move(record)), _column(static_cast<uint8_t>(column))
{}

EventItem::~EventItem() = default;

QVariant EventItem::data(int role) const
{
    if (_isChanged) {
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
        return alignmentOf(_column);
    case FlagsRole:
        return static_cast<int>(Flags);
    case TimeRole:
        return _column == Columns::OriginTime ? QVariant::fromValue(_record->time) : QVariant();
    case Qt::ForegroundRole:
        if (_column == Columns::Status)
            return _record->isManual ? _record->style->manualColor : _record->style->automaticColor;
        return {};
    case Qt::ToolTipRole:
        return _column == Columns::Mechanism && _record->plane
                   ? mechanismText(_record->nodalPlane())
                   : QVariant();
    case Qt::SizeHintRole:
        return _column == Columns::Mechanism ? QSize(24, 24) : QVariant();
    default:
        return {};
    }
}

void EventItem::setData(const QVariant &value, int role)
{
    _isChanged = true;
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

void EventItem::write(QDataStream &out) const
{
    const std::unique_ptr<QStandardItem> plain(clone());
    plain->write(out);
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
    return event->_column == column && !event->_isChanged ? event : nullptr;
}

bool EventItem::isLessThan(const EventItem &other) const
{
    const EventRecord &a = *_record;
    const EventRecord &b = *other._record;
    switch (_column) {
    case Columns::OriginTime:
        return isEarlier(a.time, b.time);
    case Columns::Magnitude:
        return isLess(a.magnitude, b.magnitude);
    case Columns::PhaseCount:
        return isLess(a.phaseCount, b.phaseCount);
    case Columns::Latitude:
        return isLess(a.latitude, b.latitude);
    case Columns::Longitude:
        return isLess(a.longitude, b.longitude);
    case Columns::Depth:
        return isLess(a.depth, b.depth);
    case Columns::Status:
        return a.status < b.status;
    case Columns::Mechanism:
        return false;
    default:
        return isLess(a.text(_column), b.text(_column));
    }
}

QVariant EventItem::displayText() const
{
    const EventRecord &event = *_record;
    switch (_column) {
    case Columns::OriginTime:
        return QString::fromStdString(timeText(event.time));
    case Columns::Magnitude:
        return event.magnitude ? QString::number(*event.magnitude, 'f', 1) : missing();
    case Columns::PhaseCount:
        return event.phaseCount ? QString::number(*event.phaseCount) : missing();
    case Columns::Latitude:
        return coordinateText(event.latitude, event.style->locationDecimals, 'S', 'N');
    case Columns::Longitude:
        return coordinateText(event.longitude, event.style->locationDecimals, 'W', 'E');
    case Columns::Depth:
        return event.depth ? Tellarix::Gui::depthToString(*event.depth, event.style->depthDecimals)
                           : missing();
    case Columns::Status:
        return QString(QLatin1Char(event.status));
    case Columns::Mechanism:
        return event.plane ? QVariant() : missing();
    default: {
        const std::string_view text = event.text(_column);
        return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
    }
    }
}

QVariant EventItem::sortValue() const
{
    const EventRecord &event = *_record;
    switch (_column) {
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
