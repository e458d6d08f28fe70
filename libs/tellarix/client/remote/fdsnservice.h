// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/eventreader.h>
#include <tellarix/client/io/inventoryreader.h>
#include <tellarix/client/remote/fdsnaddress.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/timewindow.h>

#include <QMap>

#include <memory>
#include <optional>
#include <vector>

class QFile;

namespace Tellarix {
namespace IO {

/** A part of the Earth, in degrees; what is unset bounds nothing. */
struct FdsnArea
{
    std::optional<double> south, north;
    std::optional<double> west, east; /**< across 180 degrees if west is greater than east */
    std::optional<double> latitude, longitude; /**< centre of a circle */
    std::optional<double> minimumRadius, maximumRadius;
};

/** Which events are wanted; what is unset or empty bounds nothing. */
struct FdsnEventQuery
{
    Core::TimeWindow window; /**< of origin times; either end may be unset */
    FdsnArea area;
    std::optional<double> minimumDepthKm, maximumDepthKm;
    std::optional<double> minimumMagnitude, maximumMagnitude;
    QMap<QString, QString> words; /**< further ones as the service has them; they come first */
};

/** Which channels are wanted. */
struct FdsnStationQuery
{
    std::vector<StreamCodesCPtr> streams; /**< patterns; all if empty */
    Core::TimeWindow window;              /**< in which a channel is in force; may be open */
    FdsnArea area;
    QMap<QString, QString> words; /**< level is "channel" if it is not among them */
};

using FdsnWords = QMap<QString, QString>;

/** The words of one request, or of two for an area across 180 degrees, which servers treat in
 *  different ways. */
TELLARIX_CLIENT_API std::vector<FdsnWords> fdsnWords(const FdsnEventQuery &query);
TELLARIX_CLIENT_API std::vector<FdsnWords> fdsnWords(const FdsnStationQuery &query);

/**
 * Events and stations of a data centre's web services.
 *
 * An answer is kept in a temporary file and read from there, so that it can be asked for again if
 * it breaks off. Used by one thread, but for cancel().
 */
class TELLARIX_CLIENT_API FdsnService
{
public:
    explicit FdsnService(const FdsnAddress &address, const HttpSettings &settings = HttpSettings());
    ~FdsnService();

    /** The address as messages name it. */
    QString name() const { return _address.name(); }
    /**
     * Reads all events, page by page.
     * @param error  gets server and cause; empty if it was ended by the handler or cancel()
     * @return as readEvents() does; true if there are none
     */
    bool readEvents(const FdsnEventQuery &query, const EventReadHandler &handler, QString *error);
    /** Reads all channels, as IO::readInventory() does; @p networks gets none if there are none. */
    bool readInventory(const FdsnStationQuery &query, std::vector<DataModel::NetworkPtr> *networks,
                       const InventoryReadHandler &handler, QString *error);

    /** Ends what runs, and all that is begun later. Any thread may call it. */
    void cancel();

    /** Events that are asked for at once. */
    static constexpr int PageSize = 5000;

private:
    class Private;
    enum class Arrival
    {
        Body,
        Nothing,
        Refused, /**< the server doesn't understand the request */
        Failed
    };
    using Progress = std::function<bool(qint64 done, qint64 total)>;

    Arrival fetch(const HttpRequest &request, QFile &file, const Progress &progress,
                  QString *error);
    Arrival readPage(const FdsnWords &words, const EventReadHandler &handler, QString *error);
    bool readPages(const FdsnWords &words, const EventReadHandler &handler, QString *error);
    bool mayTryAgain(int tries);

    FdsnAddress _address;
    std::unique_ptr<Private> _private;
};

} // namespace IO
} // namespace Tellarix
