// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "core/seedbytes.h"
#include "seedrecord.h"

#include <tellarix/core/records/formats/miniseed.h>
#include <tellarix/core/strings.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <deque>
#include <list>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace SeedLinkTesting {

using namespace Tellarix;

/** How a server misbehaves. */
enum class Fault
{
    None,
    SilentFromStart, /**< takes connections and says nothing */
    EndlessLine,     /**< greets without a line end */
    WebPage,         /**< is another kind of server */
    RefusesAll,      /**< ERROR to each station */
    RefusesWildcards,
    IgnoresWildcards, /**< takes them for names */
    RefusesStreams,   /**< to list them */
    StallsInFlow,     /**< says nothing any more once data flow, INFO neither */
    Drips,            /**< sends the second packet of a connection byte by byte */
    CutsInPacket,     /**< breaks off in the middle of the second packet of a connection */
    Garbage,          /**< sends bytes that are no packet behind the first one */
    DamagedRecord     /**< a damaged record between two sound ones */
};

/**
 * A SeedLink server with a ring of packets in threads of its own, on a port of the loopback that
 * the system chooses. Everything may be called at any time. stop() is its sudden death; start()
 * takes the same port again, with the ring as it is.
 */
class SeedLinkServer
{
public:
    ~SeedLinkServer() { stop(); }

    bool start()
    {
        _stopping = false;
        _listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const int one = 1;
        ::setsockopt(_listener, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(_port);
        socklen_t size = sizeof address;
        auto *plain = reinterpret_cast<sockaddr *>(&address);
        if (::bind(_listener, plain, size) != 0 || ::listen(_listener, 16) != 0 ||
            ::getsockname(_listener, plain, &size) != 0)
            return false;
        _port = ntohs(address.sin_port);
        _acceptor = std::thread([this] { accept(); });
        return true;
    }

    void stop()
    {
        _stopping = true;
        if (_acceptor.joinable())
            _acceptor.join();
        for (std::thread &thread : _threads)
            thread.join();
        _threads.clear();
        if (_listener >= 0)
            ::close(_listener);
        _listener = -1;
    }

    std::string address() const { return "127.0.0.1:" + std::to_string(_port); }
    std::string url() const { return "seedlink://" + address(); }
    void setFault(Fault fault) { _fault = fault; }
    int connections() const { return _connections; }
    int keepAlives() const { return _keepAlives; }
    /** Puts a record into the ring. */
    void add(const QByteArray &record)
    {
        Packet packet;
        packet.bytes = record.toStdString();
        Formats::MiniSeedHeader header;
        Formats::parseMiniSeedHeader(packet.bytes, true, header);
        packet.codes = Formats::MiniSeedDecoder().codes(header);
        packet.window = header.timeWindow();
        const std::lock_guard<std::mutex> lock(_mutex);
        _ring.push_back(packet);
        if (_ring.size() <= _capacity)
            return;
        _ring.pop_front();
        ++_first;
    }

    void setCapacity(size_t capacity)
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        _capacity = capacity;
    }

    /** Counts the packets that are there from @p number on; while it is stopped. */
    void setFirstNumber(uint32_t number)
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        _shift = number - static_cast<uint32_t>(_first);
    }

    /** All lines that clients have sent. */
    std::vector<std::string> lines() const
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        return _lines;
    }

private:
    struct Packet
    {
        std::string bytes;
        StreamCodesCPtr codes;
        Core::TimeWindow window;
    };

    struct Block
    {
        std::string network;
        std::string station;
        std::vector<std::string> selectors;
        Core::TimeWindow window;
        size_t next{0}; /**< of all packets ever */
        bool ends{false};
        bool isDone{false};
    };

    struct Client
    {
        int socket{-1};
        std::string input;
        std::vector<Block> blocks;
        bool isFlowing{false};
        bool isBatch{false};
        int sent{0};
    };

    void accept()
    {
        while (!_stopping) {
            pollfd descriptor{_listener, POLLIN, 0};
            if (::poll(&descriptor, 1, 5) <= 0)
                continue;
            const int socket = ::accept4(_listener, nullptr, nullptr, SOCK_CLOEXEC);
            ++_connections;
            _threads.emplace_back([this, socket] {
                Client client;
                client.socket = socket;
                serve(client);
                ::close(socket);
            });
        }
    }

    void serve(Client &client)
    {
        while (!_stopping) {
            pollfd descriptor{client.socket, POLLIN, 0};
            if (::poll(&descriptor, 1, 2) > 0) {
                char piece[4096];
                const ssize_t count = ::recv(client.socket, piece, sizeof piece, 0);
                if (count <= 0)
                    return;
                client.input.append(piece, static_cast<size_t>(count));
            }
            size_t end = 0;
            while ((end = client.input.find("\r\n")) != std::string::npos) {
                const std::string line = client.input.substr(0, end);
                client.input.erase(0, end + 2);
                if (!answer(client, line))
                    return;
            }
            if (client.isFlowing && !flow(client))
                return;
        }
    }

    /** In two pieces, so that a death in between cuts. */
    bool send(const Client &client, const std::string &bytes)
    {
        for (const std::string &piece :
             {bytes.substr(0, bytes.size() / 3), bytes.substr(bytes.size() / 3)}) {
            for (size_t sent = 0; sent < piece.size();) {
                const ssize_t count = ::send(client.socket, piece.data() + sent,
                                             piece.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
                if (_stopping || (count < 0 && errno != EAGAIN))
                    return false;
                if (count < 0)
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
                sent += count > 0 ? static_cast<size_t>(count) : 0;
            }
        }
        return true;
    }

    bool reply(const Client &client, bool ok, const std::string &reason = std::string())
    {
        return client.isBatch || send(client, ok ? "OK\r\n" : "ERROR" + reason + "\r\n");
    }

    bool answer(Client &client, const std::string &line)
    {
        const std::vector<std::string> words = Core::split(line, " ");
        {
            const std::lock_guard<std::mutex> lock(_mutex);
            _lines.push_back(line);
        }
        if (words.empty() || _fault == Fault::SilentFromStart ||
            (_fault == Fault::StallsInFlow && client.isFlowing))
            return true;
        if (words[0] == "HELLO") {
            if (_fault == Fault::EndlessLine)
                return send(client, std::string(100000, 'x'));
            if (_fault == Fault::WebPage)
                return send(client, "HTTP/1.1 400 Bad Request\r\n\r\n<html></html>");
            return send(client, "SeedLink v3.1 (tests) :: SLPROTO:3.1\r\nLoopback\r\n");
        }
        if (words[0] == "BYE")
            return false;
        if (words[0] == "INFO")
            return info(client, words.back());
        if (words[0] == "BATCH") {
            const bool sent = reply(client, true);
            client.isBatch = true;
            return sent;
        }
        if (words[0] == "END")
            return client.isFlowing = true;
        return reply(client, request(client, words),
                     "\r"
                     "not taken");
    }

    bool request(Client &client, const std::vector<std::string> &words)
    {
        if (words[0] == "STATION" && words.size() == 3) {
            const bool hasWildcards =
                (words[1] + words[2]).find_first_of("*?") != std::string::npos;
            if (_fault == Fault::RefusesAll || (_fault == Fault::RefusesWildcards && hasWildcards))
                return false;
            Block block;
            block.station = words[1];
            block.network = words[2];
            client.blocks.push_back(block);
            return true;
        }
        if (client.blocks.empty())
            return false;
        Block &block = client.blocks.back();
        if (words[0] == "SELECT" && words.size() == 2)
            block.selectors.push_back(words[1]);
        else if (words[0] == "TIME" && words.size() > 1)
            return setWindow(block, words);
        else if (words[0] == "DATA" || words[0] == "FETCH")
            setNext(block, words);
        else
            return false;
        return true;
    }

    static bool setWindow(Block &block, const std::vector<std::string> &words)
    {
        const char *const form = "%Y,%m,%d,%H,%M,%S";
        block.window.setStartTime(Core::Time::FromString(words[1], form));
        if (words.size() > 2)
            block.window.setEndTime(Core::Time::FromString(words[2], form));
        return block.window.startTime().valid() &&
               (words.size() < 3 || block.window.endTime().valid());
    }

    /** From a number on that the ring has, else with the next new packet. */
    void setNext(Block &block, const std::vector<std::string> &words)
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        block.ends = words[0] == "FETCH";
        block.next = _first + (words.size() == 1 && block.ends ? 0 : _ring.size());
        for (size_t i = 0; i < _ring.size() && words.size() > 1; ++i) {
            if (numberOf(_first + i) == std::stoul(words[1], nullptr, 16))
                block.next = _first + i;
        }
    }

    uint32_t numberOf(size_t index) const
    {
        return (static_cast<uint32_t>(index) + _shift) & 0xFFFFFF;
    }

    static std::string header(const std::string &prefix, uint32_t number)
    {
        char digits[16];
        std::snprintf(digits, sizeof digits, "%06X", number);
        return prefix + digits;
    }

    bool flow(Client &client)
    {
        bool isDone = true;
        for (Block &block : client.blocks) {
            std::string bytes;
            while (!block.isDone && !_stopping && take(block, bytes)) {
                if (!bytes.empty() && !sendPacket(client, bytes))
                    return false;
            }
            isDone = isDone && block.isDone;
        }
        if (isDone)
            send(client, "END");
        return !isDone;
    }

    /** The next packet of a block; empty if it isn't one that was asked for, false if there is none
     *  yet. */
    bool take(Block &block, std::string &bytes)
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        bytes.clear();
        block.next = std::max(block.next, _first);
        if (block.next >= _first + _ring.size()) {
            block.isDone = block.ends;
            return false;
        }
        const Packet &packet = _ring[block.next - _first];
        const uint32_t number = numberOf(block.next++);
        if (!matches(block, *packet.codes) || (block.window.startTime().valid() &&
                                               packet.window.endTime() <= block.window.startTime()))
            return true;
        if (block.window.endTime().valid() && packet.window.startTime() > block.window.endTime())
            block.isDone = true;
        else
            bytes = header("SL", number) + packet.bytes;
        return true;
    }

    bool matches(const Block &block, const StreamCodes &codes) const
    {
        if (_fault == Fault::IgnoresWildcards && block.station != codes.station())
            return false;
        if (!Core::wildcardMatch(block.station, codes.station()) ||
            !Core::wildcardMatch(block.network, codes.network()))
            return false;
        std::string text = codes.location();
        text.resize(2, '-');
        text += codes.channel();
        return block.selectors.empty() ||
               std::any_of(block.selectors.begin(), block.selectors.end(),
                           [&](const std::string &selector) {
                               return Core::wildcardMatch(selector.substr(0, 5), text);
                           });
    }

    bool sendPacket(Client &client, const std::string &bytes)
    {
        if (_fault == Fault::StallsInFlow && client.sent > 0)
            return true;
        ++client.sent;
        for (size_t i = 0; _fault == Fault::Drips && client.sent == 2 && i < bytes.size(); ++i) {
            if (!send(client, bytes.substr(i, 1)))
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        if (_fault == Fault::CutsInPacket && client.sent == 2)
            return send(client, bytes.substr(0, 200)) && false;
        if (_fault == Fault::Garbage && client.sent == 2)
            return send(client, std::string(5000, 'x'));
        if (_fault == Fault::DamagedRecord && client.sent == 2) {
            std::string damaged = bytes;
            damaged.replace(8 + 20, 4, "\xFF\xFF\xFF\xFF"); // year and day
            return send(client, damaged);
        }
        return send(client, bytes);
    }

    bool info(Client &client, const std::string &level)
    {
        std::string text = "<?xml version=\"1.0\"?><seedlink software=\"tests\">";
        const bool isRefused = _fault == Fault::RefusesStreams && level == "STREAMS";
        if (level == "ID")
            ++_keepAlives;
        const std::lock_guard<std::mutex> lock(_mutex);
        std::vector<std::string> stations;
        for (const Packet &packet : _ring) {
            const std::string names = " name=\"" + packet.codes->station() + "\" network=\"" +
                                      packet.codes->network() + '"';
            if (level == "ID" || isRefused ||
                std::count(stations.begin(), stations.end(), names) > 0)
                continue;
            stations.push_back(names);
            text += "<station" + names + " description=\"Station of tests\">";
            if (level == "STREAMS")
                text += "<stream location=\"" + packet.codes->location() + "\" seedname=\"" +
                        packet.codes->channel() + "\" type=\"D\" begin_time=\"" +
                        packet.window.startTime().toString("%Y/%m/%d %H:%M:%S") + "\"/>";
            text += "</station>";
        }
        text += "</seedlink>";
        for (size_t i = 0; i < text.size(); i += PieceSize) {
            const std::string mark = i + PieceSize < text.size() ? "*" : " ";
            if (!send(client, "SLINFO " + mark + infoRecord(text.substr(i, PieceSize), isRefused)))
                return false;
        }
        return true;
    }

    static std::string infoRecord(const std::string &text, bool isError)
    {
        BytesWriter record(512, true);
        record.putText(0, isError ? "000000D INFO   ERRSL" : "000000D INFO   INFSL");
        record.put<quint16>(20, 2024);
        record.put<quint16>(22, 1);
        record.put<quint16>(30, static_cast<quint16>(text.size()));
        record.put<quint8>(39, 1);
        record.put<quint16>(44, 64);
        record.put<quint16>(46, 48);
        record.put<quint16>(48, 1000);
        record.put<quint8>(53, 1);
        record.put<quint8>(54, 9);
        record.putText(64, QByteArray::fromStdString(text));
        return record.bytes().toStdString();
    }

    static constexpr size_t PieceSize = 448;

    uint16_t _port{0};
    int _listener{-1};
    std::thread _acceptor;
    std::list<std::thread> _threads; /**< the acceptor's, up to its end */
    std::atomic<bool> _stopping{false};
    std::atomic<Fault> _fault{Fault::None};
    std::atomic<int> _connections{0};
    std::atomic<int> _keepAlives{0};

    mutable std::mutex _mutex;
    std::deque<Packet> _ring;
    size_t _capacity{10000};
    size_t _first{0}; /**< of all packets ever, the first in the ring */

    uint32_t _shift{1};
    std::vector<std::string> _lines;
};

} // namespace SeedLinkTesting
