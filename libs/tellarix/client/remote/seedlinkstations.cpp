// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/seedlinkstations.h>

#include <tellarix/client/io/boundedxml_p.h>

#include <QIODevice>

#include <algorithm>
#include <cstring>

namespace Tellarix {
namespace IO {

namespace {

constexpr size_t MostEntries = 1000000;
// About 200 MB of text.
constexpr size_t MostPieces = 400000;

/** The text of an answer, whose pieces are fetched as they are read. */
class AnswerDevice : public QIODevice
{
public:
    explicit AnswerDevice(SeedLinkSession &session) : _session(session)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    bool hasFailed() const { return _failed; }
    /** Reads up to the end of the answer, which needn't be that of the text. */
    bool finish()
    {
        while (!_isLast) {
            if (!fetch())
                return false;
        }
        return true;
    }
    /** Why it has failed. */
    std::string cause() const
    {
        return _pieces > MostPieces ? "the list has no end" : _session.cause();
    }
    bool isSequential() const override { return true; }

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        while (_piece.empty() && !_isLast) {
            if (!fetch())
                return -1;
        }
        const size_t size = std::min(_piece.size(), static_cast<size_t>(maxSize));
        std::memcpy(data, _piece.data(), size);
        _piece.erase(0, size);
        return size > 0 || maxSize == 0 ? static_cast<qint64>(size) : -1;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    bool fetch()
    {
        _failed = _failed || ++_pieces > MostPieces ||
                  _session.readInfo(_piece, _isLast) != SeedLinkSession::Outcome::Done;
        return !_failed;
    }

    SeedLinkSession &_session;
    std::string _piece;
    size_t _pieces{0};
    bool _isLast{false};
    bool _failed{false};
};

/** Times stand with slashes and a blank in place of the signs of ISO 8601. */
Core::Time listedTime(const QXmlStreamAttributes &attributes, const char *name)
{
    QString text = attributes.value(QLatin1String(name)).toString();
    return Core::Time::FromString(text.replace('/', '-').toStdString());
}

class ListReader : private BoundedXml
{
public:
    ListReader(QIODevice &device, const SeedLinkStationHandler &handler)
        : BoundedXml(device, QStringLiteral("list of stations"), {}, {}), _handler(handler)
    {}

    bool read(QString *error)
    {
        if (enterRoot()) {
            forEachChild([this](const QStringRef &name) {
                if (name == QLatin1String("station"))
                    readStation();
                else
                    skip();
            });
            leaveRoot();
        }
        return result(error);
    }

private:
    bool isOurs() const override { return true; }

    std::string attribute(const char *name) const
    {
        return xml().attributes().value(QLatin1String(name)).trimmed().toString().toStdString();
    }

    void readStation()
    {
        SeedLinkStation station;
        station.network = attribute("network");
        station.code = attribute("name");
        station.name = attribute("description");
        forEachChild([&](const QStringRef &name) {
            if (name == QLatin1String("stream"))
                station.streams.push_back({attribute("location"), attribute("seedname"),
                                           attribute("type"),
                                           listedTime(xml().attributes(), "begin_time"),
                                           listedTime(xml().attributes(), "end_time")});
            skip();
            count();
        });
        count();
        if (!station.code.empty() && isGoing() && !_handler(station))
            end();
    }

    void count()
    {
        if (++_entries > MostEntries)
            rememberFault(QStringLiteral("more than %1 entries").arg(MostEntries));
    }

    const SeedLinkStationHandler &_handler;
    size_t _entries{0};
};

} // namespace

bool readSeedLinkStations(SeedLinkSession &session, const std::string &level,
                          const SeedLinkStationHandler &handler, std::string *error)
{
    QString fault;
    AnswerDevice device(session);
    const bool sent = session.send("INFO " + level);
    const bool read = sent && ListReader(device, handler).read(&fault);
    if (read && device.finish())
        return true;
    if (error)
        *error = !sent || device.hasFailed() ? device.cause() : fault.toStdString();
    return false;
}

bool SeedLinkStations::setSource(const std::string &source)
{
    if (!parseSeedLinkAddress(source, _address, _errorString))
        return false;
    _session.setAddress(_address);
    return true;
}

bool SeedLinkStations::read(bool withStreams)
{
    std::vector<SeedLinkStation> stations;
    const auto keep = [&](const SeedLinkStation &station) {
        stations.push_back(station);
        return true;
    };
    std::string cause;
    _isConnected = _session.open() == SeedLinkSession::Outcome::Done;
    if (!_isConnected)
        cause = _session.cause();
    const bool done =
        _isConnected &&
        readSeedLinkStations(_session, withStreams ? "STREAMS" : "STATIONS", keep, &cause);
    _session.connection().drop();
    if (done)
        _stations = std::move(stations);
    else
        _errorString = _address.name() + ": " + cause;
    return done;
}

bool SeedLinkStations::readAll()
{
    const bool isDone = read(true);
    // Where there is no connection, another question is of no use.
    return isDone || (_isConnected && !_session.connection().isEnded() && read(false));
}

} // namespace IO
} // namespace Tellarix
