// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QIODevice>

#include <functional>

namespace Tellarix {
namespace IO {

/**
 * Passes the bytes of another device on, but not more than a limit between two marks: a text
 * without an end is refused before it fills the memory. Who reads is asked at every piece whether
 * to go on.
 */
class BoundedDevice : public QIODevice
{
public:
    /** @param goesOn  told the number of bytes so far; false ends the reading as an error does */
    BoundedDevice(QIODevice &source, qint64 limit, std::function<bool(qint64 done)> goesOn);

    /** Begins to count anew. */
    void mark() { _sinceMark = 0; }
    bool exceeded() const { return _exceeded; }
    qint64 done() const { return _done; }

protected:
    qint64 readData(char *data, qint64 maxSize) override;
    qint64 writeData(const char *, qint64) override { return -1; }
    bool isSequential() const override { return true; }

private:
    QIODevice &_source;
    qint64 _limit;
    const std::function<bool(qint64)> _goesOn;
    qint64 _sinceMark{0};
    qint64 _done{0};
    bool _exceeded{false};
};

} // namespace IO
} // namespace Tellarix
