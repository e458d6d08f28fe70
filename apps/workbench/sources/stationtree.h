// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "bench/stations.h"
#include "stationfilter.h"
#include "stationlisting.h"

#include <QAbstractItemModel>

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace Workbench {

/**
 * Networks, stations and channels of a listing, as far as a filter shows them, with marks of what
 * the user has chosen.
 *
 * A station that is marked is chosen with all channels that fit the patterns, whatever these become
 * later; one of which channels were marked is chosen with these, as far as they fit. What the
 * search or the region hides stays marked. Marks are kept by codes, over listings too.
 */
class StationTree : public QAbstractItemModel
{
    Q_OBJECT

public:
    enum Column
    {
        Code,
        Place,
        Channels,
        Distance,
        ColumnCount
    };

    using ListingPtr = std::shared_ptr<const StationListing>;

    explicit StationTree(QObject *parent = nullptr);

    /** Null without one. */
    const ListingPtr &listing() const { return _listing; }
    void setListing(const ListingPtr &listing);
    const StationFilter &filter() const { return _filter; }
    void setFilter(const StationFilter &filter);
    /** From where distances are shown. */
    void setCentre(const std::optional<StationPlace> &centre);

    /** Stations that the filter shows, in the order of rows. */
    int shownCount() const { return static_cast<int>(_shown.size()); }
    std::vector<const ListedStation *> shownStations() const;
    /** Chosen streams as NET.STA.LOC.CHA, in the order of ids. */
    std::vector<std::string> chosenStreams() const;
    std::vector<const ListedStation *> chosenStations() const;
    /** Distance of the farthest chosen station, if it is known of all. */
    std::optional<double> farthestKm() const;

    void mark(const QModelIndexList &indices, bool on);
    /** Marks what is shown, or takes all marks away. */
    void markShown();
    void clearMarks();

    /** "NET.STA" of a row, also for channels; empty for networks. */
    QString stationAt(const QModelIndex &index) const;
    /** The row of a station "NET.STA"; not valid if it isn't shown. */
    QModelIndex indexOf(const QString &station) const;

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &index) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    /** By codes, or by distances where they are known, for the nearest station of a network. */
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

signals:
    void choiceChanged();
    /** The box of a row was clicked. */
    void boxClicked(const QModelIndex &index, bool on);

private:
    /** What is chosen of a station; stations without a mark aren't. */
    struct Mark
    {
        bool isAll{true};
        std::set<std::string> channels; /**< "LOC.CHA", unless all */
    };

    /** A run of stations in _shown. */
    struct NetworkRow
    {
        int first;
        int count;
        int channels;
    };

    enum Level
    {
        NetworkLevel,
        StationLevel,
        ChannelLevel
    };

    static Level levelOf(const QModelIndex &index);
    int shownAt(const QModelIndex &index) const;
    const ListedStation &station(int shown) const;
    bool isChosen(const ListedStation &station, const ListedChannel &channel) const;
    Qt::CheckState stateOf(int shown) const;
    Qt::CheckState stateOf(const QModelIndex &index) const;
    std::optional<double> distanceKm(const ListedStation &station) const;
    QVariant networkText(int row, int column) const;
    QVariant stationText(int shown, int column) const;
    QVariant channelText(int shown, int channel, int column) const;
    void markStation(int shown, bool on);
    void markChannel(int shown, int channel, bool on);
    void tellChoice();
    void rebuild();
    void arrange();

    ListingPtr _listing;
    StationFilter _filter;
    std::optional<StationPlace> _centre;
    std::map<std::string, Mark> _marks; /**< by "NET.STA" */
    std::vector<ShownStation> _shown;
    std::vector<NetworkRow> _networks;
    std::vector<int> _networkOf; /**< rows of networks for _shown */
    int _sortColumn{Code};
    Qt::SortOrder _sortOrder{Qt::AscendingOrder};
};

} // namespace Workbench
