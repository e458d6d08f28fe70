// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QSaveFile>

namespace Tellarix {
namespace IO {

/** Writes all of @p bytes; false with an errorString() of the file, which a part that could still
 *  be written alone doesn't set. */
inline bool writeWhole(QFileDevice &file, const QByteArray &bytes)
{
    for (qint64 written = 0; written < bytes.size();) {
        const qint64 count = file.write(bytes.constData() + written, bytes.size() - written);
        if (count <= 0)
            return false;
        written += count;
    }
    return true;
}

/** Replaces the file by what was written if all of that is on the disk. QSaveFile::commit() alone
 *  also does so if the last bytes, which are held back until then, found no room. */
inline bool commitWhole(QSaveFile &file)
{
    return file.flush() && file.commit();
}

} // namespace IO
} // namespace Tellarix
