// SPDX-License-Identifier: LGPL-3.0-or-later

#include "stationtree.h"

#include <tellarix/core/math/geo.h>

#include <algorithm>
#include <cmath>
#include <utility>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr int LevelBits = 2;

QString countText(int count, const QString &one, const QString &many)
{
    return count == 1 ? one : many.arg(count);
}

/** "BHE BHN BHZ", and the locations if there are several. */
QString channelsText(const ListedStation &station, const std::vector<int> &channels)
{
    QStringList texts;
    for (const int i : channels) {
        const ListedChannel &channel = station.channels[i];
        const QString code = QString::fromStdString(channel.isAny() ? "" : channel.code);
        if (!texts.contains(code))
            texts.append(code);
    }
    return texts.join(' ').trimmed();
}

QString placeText(const ListedStation &station)
{
    if (!station.site.isEmpty() || !station.hasPlace())
        return station.site;
    const auto degrees = [](double angle, const char *positive, const char *negative) {
        return QString::fromUtf8("%1° %2")
            .arg(std::abs(angle), 0, 'f', 3)
            .arg(angle < 0 ? negative : positive);
    };
    return degrees(station.latitude, "N", "S") + ", " + degrees(station.longitude, "E", "W");
}

QString kmText(double km)
{
    return StationTree::tr("%1 km").arg(km, 0, 'f', km < 10 ? 1 : 0);
}

} // namespace

StationTree::StationTree(QObject *parent) : QAbstractItemModel(parent)
{}

void StationTree::setListing(const ListingPtr &listing)
{
    _listing = listing;
    rebuild();
}

void StationTree::setFilter(const StationFilter &filter)
{
    _filter = filter;
    rebuild();
}

void StationTree::setCentre(const std::optional<StationPlace> &centre)
{
    if (centre == _centre)
        return;
    _centre = centre;
    if (_sortColumn == Distance)
        rebuild();
    else if (!_networks.empty())
        emit dataChanged(index(0, Distance), index(rowCount() - 1, Distance));
    emit headerDataChanged(Qt::Horizontal, Distance, Distance);
}

void StationTree::rebuild()
{
    beginResetModel();
    _shown = _listing ? filterStations(*_listing, _filter) : std::vector<ShownStation>();
    arrange();
    endResetModel();
    emit choiceChanged();
}

void StationTree::sort(int column, Qt::SortOrder order)
{
    _sortColumn = column;
    _sortOrder = order;
    rebuild();
}

/** Sorts stations within networks and these among each other, and notes where each begins. */
void StationTree::arrange()
{
    _networks.clear();
    _networkOf.assign(_shown.size(), 0);
    const bool isByDistance = _sortColumn == Distance && _centre;
    const bool isDescending = _sortOrder == Qt::DescendingOrder;
    std::vector<double> distances(_listing ? _listing->stations.size() : 0);
    std::map<std::string, double> nearest;
    for (const ShownStation &entry : _shown) {
        const ListedStation &listed = _listing->stations[entry.station];
        const double distance = isByDistance ? distanceKm(listed).value_or(1e9) : 0;
        distances[entry.station] = distance;
        const auto place = nearest.emplace(listed.network, distance).first;
        place->second = std::min(place->second, distance);
    }
    const auto keyOf = [&](const ShownStation &entry) {
        const ListedStation &listed = _listing->stations[entry.station];
        return std::make_tuple(nearest[listed.network], std::cref(listed.network),
                               distances[entry.station], entry.station);
    };
    if (isByDistance || isDescending)
        std::stable_sort(_shown.begin(), _shown.end(), [&](const auto &a, const auto &b) {
            return isDescending ? keyOf(b) < keyOf(a) : keyOf(a) < keyOf(b);
        });

    for (int i = 0; i < shownCount(); ++i) {
        if (i == 0 || station(i).network != station(i - 1).network)
            _networks.push_back({i, 0, 0});
        ++_networks.back().count;
        _networks.back().channels += static_cast<int>(_shown[i].channels.size());
        _networkOf[i] = static_cast<int>(_networks.size()) - 1;
    }
}

// What is shown and chosen

const ListedStation &StationTree::station(int shown) const
{
    return _listing->stations[_shown[shown].station];
}

std::vector<const ListedStation *> StationTree::shownStations() const
{
    std::vector<const ListedStation *> stations;
    for (int i = 0; i < shownCount(); ++i)
        stations.push_back(&station(i));
    return stations;
}

bool StationTree::isChosen(const ListedStation &station, const ListedChannel &channel) const
{
    const auto mark = _marks.find(station.id());
    return mark != _marks.end() &&
           (mark->second.isAll || mark->second.channels.count(channel.id()) > 0);
}

std::vector<std::string> StationTree::chosenStreams() const
{
    std::vector<std::string> streams;
    for (const ListedStation *station : chosenStations()) {
        for (const ListedChannel &channel : station->channels) {
            if (!isChosen(*station, channel) || !_filter.channels.match(channel))
                continue;
            for (const std::string &id : _filter.channels.requested(channel))
                streams.push_back(station->id() + '.' + id);
        }
    }
    return streams;
}

std::vector<const ListedStation *> StationTree::chosenStations() const
{
    std::vector<const ListedStation *> stations;
    if (!_listing || _marks.empty())
        return stations;
    for (const ListedStation &station : _listing->stations) {
        if (_marks.count(station.id()) == 0)
            continue;
        const bool isAny = std::any_of(
            station.channels.begin(), station.channels.end(), [&](const ListedChannel &channel) {
                return isChosen(station, channel) && _filter.channels.match(channel);
            });
        if (isAny)
            stations.push_back(&station);
    }
    return stations;
}

std::optional<double> StationTree::distanceKm(const ListedStation &station) const
{
    if (!_centre || !station.hasPlace())
        return std::nullopt;
    double km = 0;
    Math::Geo::delaziKm(_centre->latitude, _centre->longitude, station.latitude, station.longitude,
                        &km);
    return std::isfinite(km) ? std::make_optional(km) : std::nullopt;
}

std::optional<double> StationTree::farthestKm() const
{
    std::optional<double> farthest;
    for (const ListedStation *station : chosenStations()) {
        const auto distance = distanceKm(*station);
        if (!distance)
            return std::nullopt;
        farthest = std::max(farthest.value_or(0), *distance);
    }
    return farthest;
}

// Marks

void StationTree::markStation(int shown, bool on)
{
    if (on)
        _marks[station(shown).id()] = Mark();
    else
        _marks.erase(station(shown).id());
}

void StationTree::markChannel(int shown, int channel, bool on)
{
    const ListedStation &owner = station(shown);
    Mark mark;
    mark.isAll = false;
    for (const int i : _shown[shown].channels) {
        if (i == channel ? on : isChosen(owner, owner.channels[i]))
            mark.channels.insert(owner.channels[i].id());
    }
    if (mark.channels.empty())
        _marks.erase(owner.id());
    else
        _marks[owner.id()] = mark;
}

void StationTree::mark(const QModelIndexList &indices, bool on)
{
    for (const QModelIndex &index : indices) {
        if (!index.isValid() || index.column() != Code)
            continue;
        switch (levelOf(index)) {
        case NetworkLevel:
            for (int i = 0; i < _networks[index.row()].count; ++i)
                markStation(_networks[index.row()].first + i, on);
            break;
        case StationLevel:
            markStation(shownAt(index), on);
            break;
        case ChannelLevel:
            markChannel(shownAt(index), _shown[shownAt(index)].channels[index.row()], on);
            break;
        }
    }
    tellChoice();
}

void StationTree::markShown()
{
    for (int i = 0; i < shownCount(); ++i)
        markStation(i, true);
    tellChoice();
}

void StationTree::clearMarks()
{
    _marks.clear();
    tellChoice();
}

/** Views ask only for what they show, so it is no loss to tell of everything. */
void StationTree::tellChoice()
{
    if (!_networks.empty()) {
        emit dataChanged(index(0, Code), index(rowCount() - 1, Code), {Qt::CheckStateRole});
        // The rows of an open network don't hear of those above.
        for (int row = 0; row < rowCount(); ++row) {
            const QModelIndex network = index(row, Code);
            emit dataChanged(index(0, Code, network), index(rowCount(network) - 1, Code, network),
                             {Qt::CheckStateRole});
        }
    }
    emit choiceChanged();
}

Qt::CheckState StationTree::stateOf(int shown) const
{
    const auto mark = _marks.find(station(shown).id());
    if (mark == _marks.end())
        return Qt::Unchecked;
    if (mark->second.isAll)
        return Qt::Checked;
    const std::vector<int> &channels = _shown[shown].channels;
    const auto count = std::count_if(channels.begin(), channels.end(), [&](int channel) {
        return mark->second.channels.count(station(shown).channels[channel].id()) > 0;
    });
    if (count == 0)
        return Qt::Unchecked;
    return count == static_cast<int>(channels.size()) ? Qt::Checked : Qt::PartiallyChecked;
}

Qt::CheckState StationTree::stateOf(const QModelIndex &index) const
{
    if (levelOf(index) == StationLevel)
        return stateOf(shownAt(index));
    if (levelOf(index) == ChannelLevel) {
        const ShownStation &shown = _shown[shownAt(index)];
        const ListedStation &owner = _listing->stations[shown.station];
        const bool on = isChosen(owner, owner.channels[shown.channels[index.row()]]);
        return on ? Qt::Checked : Qt::Unchecked;
    }
    const NetworkRow &network = _networks[index.row()];
    const Qt::CheckState first = stateOf(network.first);
    for (int i = 1; i < network.count; ++i) {
        if (stateOf(network.first + i) != first)
            return Qt::PartiallyChecked;
    }
    return first;
}

// Rows. The id of an index holds its level, and the row of its network or the number of its
// station.

StationTree::Level StationTree::levelOf(const QModelIndex &index)
{
    return static_cast<Level>(index.internalId() & ((1 << LevelBits) - 1));
}

/** The number of the station that a row is or belongs to. */
int StationTree::shownAt(const QModelIndex &index) const
{
    const auto number = static_cast<int>(index.internalId() >> LevelBits);
    return levelOf(index) == StationLevel ? _networks[number].first + index.row() : number;
}

QModelIndex StationTree::index(int row, int column, const QModelIndex &parent) const
{
    if (row < 0 || column < 0 || column >= ColumnCount || row >= rowCount(parent))
        return {};
    if (!parent.isValid())
        return createIndex(row, column, static_cast<quintptr>(NetworkLevel));
    const bool isNetwork = levelOf(parent) == NetworkLevel;
    const auto number = static_cast<quintptr>(isNetwork ? parent.row() : shownAt(parent));
    return createIndex(row, column,
                       number << LevelBits | (isNetwork ? StationLevel : ChannelLevel));
}

QModelIndex StationTree::parent(const QModelIndex &index) const
{
    if (!index.isValid() || levelOf(index) == NetworkLevel)
        return {};
    const auto number = static_cast<int>(index.internalId() >> LevelBits);
    if (levelOf(index) == StationLevel)
        return createIndex(number, Code, static_cast<quintptr>(NetworkLevel));
    const int network = _networkOf[number];
    return createIndex(number - _networks[network].first, Code,
                       static_cast<quintptr>(network) << LevelBits | StationLevel);
}

int StationTree::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return static_cast<int>(_networks.size());
    if (parent.column() != Code || levelOf(parent) == ChannelLevel)
        return 0;
    return levelOf(parent) == NetworkLevel
               ? _networks[parent.row()].count
               : static_cast<int>(_shown[shownAt(parent)].channels.size());
}

int StationTree::columnCount(const QModelIndex &) const
{
    return ColumnCount;
}

QString StationTree::stationAt(const QModelIndex &index) const
{
    if (!index.isValid() || levelOf(index) == NetworkLevel)
        return {};
    return QString::fromStdString(station(shownAt(index)).id());
}

QModelIndex StationTree::indexOf(const QString &name) const
{
    const std::string id = name.toStdString();
    for (int i = 0; i < shownCount(); ++i) {
        if (station(i).id() == id)
            return index(i - _networks[_networkOf[i]].first, Code, index(_networkOf[i], Code));
    }
    return {};
}

QVariant StationTree::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    if (role == Qt::CheckStateRole && index.column() == Code)
        return stateOf(index);
    if (role == Qt::TextAlignmentRole && index.column() == Distance)
        return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    // Long names and many channels don't fit their columns.
    if (role == Qt::ToolTipRole && levelOf(index) == StationLevel)
        return data(index, Qt::DisplayRole);
    if (role != Qt::DisplayRole)
        return {};
    if (levelOf(index) == NetworkLevel)
        return networkText(index.row(), index.column());
    if (levelOf(index) == StationLevel)
        return stationText(shownAt(index), index.column());
    return channelText(shownAt(index), _shown[shownAt(index)].channels[index.row()],
                       index.column());
}

QVariant StationTree::networkText(int row, int column) const
{
    const NetworkRow &network = _networks[row];
    if (column == Code)
        return QString::fromStdString(station(network.first).network);
    if (column == Place)
        return countText(network.count, tr("1 station"), tr("%1 stations"));
    if (column == Channels)
        return countText(network.channels, tr("1 channel"), tr("%1 channels"));
    return {};
}

QVariant StationTree::stationText(int shown, int column) const
{
    const ListedStation &listed = station(shown);
    if (column == Code)
        return QString::fromStdString(listed.code);
    if (column == Place)
        return placeText(listed);
    if (column == Channels)
        return channelsText(listed, _shown[shown].channels);
    const auto distance = distanceKm(listed);
    return distance ? kmText(*distance) : QString();
}

QVariant StationTree::channelText(int shown, int number, int column) const
{
    const ListedChannel &channel = station(shown).channels[number];
    const std::string name = channel.location.empty() ? channel.code : channel.id();
    if (column == Code)
        return channel.isAny() ? tr("all that it has") : QString::fromStdString(name);
    if (column == Place && channel.rate > 0)
        return tr("%1 Hz").arg(channel.rate, 0, 'g', 6);
    if (column == Channels)
        return channel.isLive && channel.isArchived ? tr("live and past")
                                                    : (channel.isLive ? tr("live") : tr("past"));
    return {};
}

bool StationTree::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::CheckStateRole || !index.isValid())
        return false;
    emit boxClicked(index, value.toInt() != Qt::Unchecked);
    return true;
}

QVariant StationTree::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::TextAlignmentRole)
        return QVariant((section == Distance ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    if (role == Qt::ToolTipRole && section == Distance)
        return tr("From the chosen event");
    const QStringList titles{tr("Station"), tr("Place"), tr("Channels"), tr("Distance")};
    return role == Qt::DisplayRole ? titles.value(section) : QVariant();
}

Qt::ItemFlags StationTree::flags(const QModelIndex &index) const
{
    Qt::ItemFlags flags = QAbstractItemModel::flags(index);
    if (index.isValid() && index.column() == Code)
        flags |= Qt::ItemIsUserCheckable;
    if (index.isValid() && levelOf(index) == ChannelLevel)
        flags |= Qt::ItemNeverHasChildren;
    return flags;
}

} // namespace Workbench
