// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/recordstream.h>

#include <memory>
#include <string>

namespace Tellarix {
namespace IO {

/**
 * Records of a data centre, "fdsnws+https://[USER:PASSWORD@]HOST[:PORT][/BASE][?WORDS]" or the same
 * with http; see FdsnAddress.
 *
 * Streams and a window with both ends have to be asked for. They are fetched in pieces, of which
 * each is one request: the window is cut into stretches of 24 stream-hours, but from an hour to a
 * day (a pattern counts as 8 streams), the streams of a stretch into groups of 24. Some pieces are
 * fetched side by side; their records come in the order of stretches, within one as the server
 * sends them. At most 8 MB of samples of a piece wait for a slow reader, and pieces twice as many
 * as run side by side.
 *
 * What is too large for the server is asked for in smaller pieces, what breaks off from where it
 * did so, and when the server is overloaded or in trouble there is a pause before each further try.
 * With a login the restricted data are asked for.
 *
 * A server that can't be reached, keeps silent or is overloaded although it has answered before is
 * waited for, whatever the number of tries; a line tells so, and another when it is back. If it
 * still gives its version, though, the request is the trouble, and the number of tries counts. One
 * that has never answered since open() is tried again once only: the address may as well be wrong.
 *
 * | word           | default | meaning                                                        |
 * |----------------|---------|----------------------------------------------------------------|
 * | parallel       | 4       | requests side by side, 1 to 16                                 |
 * | timeout        | 60      | seconds without a byte after which a request has failed        |
 * | tries          | 8       | of a request that brings nothing though the server is there    |
 * | pause          | 2       | seconds before the second try, doubled for each further one    |
 * | longest-pause  | 60      | seconds up to which pauses grow                                |
 * | patience       | 14400   | seconds after which a server that is away is given up          |
 * | hours          |         | length of all stretches, in place of the rule above            |
 * | quality        |         | D, R, Q, M or B (the best), if the server has several          |
 * | minimum-length |         | seconds; the server leaves out shorter continuous parts        |
 */
class TELLARIX_CLIENT_API FdsnStream : public RecordStream
{
public:
    /** @param scheme  "fdsnws+https" or "fdsnws+http" */
    explicit FdsnStream(const std::string &scheme);
    ~FdsnStream() override;

    bool setSource(const std::string &source) override;
    /** Also fails if a code holds what none can. */
    bool addStream(const std::string &network, const std::string &station,
                   const std::string &location, const std::string &channel,
                   const Core::TimeWindow &window = Core::TimeWindow()) override;

    /** Fails without streams or window; the server is asked by next(). */
    bool open() override;
    RecordPtr next() override;
    void close() override;

    std::string originName() const override;
    double progress() const override;
    std::string outage() const override;

private:
    class Private;

    bool isStranger(const Record &record) const;
    bool accepts(const Record &record);
    void noteStranger(const Record &record);

    const std::string _scheme;
    std::unique_ptr<Private> _private;
};

} // namespace IO
} // namespace Tellarix
