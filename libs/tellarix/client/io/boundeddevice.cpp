// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/boundeddevice_p.h>

namespace Tellarix {
namespace IO {

BoundedDevice::BoundedDevice(QIODevice &source, qint64 limit) : _source(source), _limit(limit)
{
    setOpenMode(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

qint64 BoundedDevice::readData(char *data, qint64 maxSize)
{
    if (_sinceMark > _limit) {
        _exceeded = true;
        return -1;
    }
    const qint64 size = _source.read(data, maxSize);
    if (size > 0) {
        _sinceMark += size;
        _done += size;
    }
    return size;
}

} // namespace IO
} // namespace Tellarix
