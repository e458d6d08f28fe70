// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/boundeddevice_p.h>

#include <utility>

namespace Tellarix {
namespace IO {

BoundedDevice::BoundedDevice(QIODevice &source, qint64 limit, std::function<bool(qint64)> goesOn)
    : _source(source), _limit(limit), _goesOn(std::move(goesOn))
{
    setOpenMode(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

qint64 BoundedDevice::readData(char *data, qint64 maxSize)
{
    if (_sinceMark > _limit) {
        _exceeded = true;
        return -1;
    }
    if (!_goesOn(_done))
        return -1;
    const qint64 size = _source.read(data, maxSize);
    if (size > 0) {
        _sinceMark += size;
        _done += size;
    }
    return size;
}

} // namespace IO
} // namespace Tellarix
