// SPDX-License-Identifier: LGPL-3.0-or-later

#include "catoutput.h"

#include <tellarix/client/io/savefile.h>

#include <vector>

namespace Tellarix {
namespace Tool {

namespace {

constexpr int MostPending = 1 << 20; // bytes

} // namespace

CatOutput::~CatOutput() = default;

FileOutput::FileOutput(const QString &path, bool appends)
    : _path(path), _appends(appends), _file(path)
{}

bool FileOutput::open()
{
    if (_appends || _file.open(QIODevice::WriteOnly))
        return true;
    _errorString = tr("%1: %2").arg(_path, _file.errorString());
    return false;
}

CatOutput::Outcome FileOutput::add(const Record &record)
{
    std::vector<IO::PackedRecord> packed;
    if (!_packer.pack(record, &packed)) {
        _errorString = QString::fromStdString(_packer.errorString());
        return Outcome::Refused;
    }
    for (const IO::PackedRecord &piece : packed)
        _pending += piece.bytes;
    return _pending.size() < MostPending || write() ? Outcome::Added : Outcome::Failed;
}

bool FileOutput::flush()
{
    return !_appends || write();
}

bool FileOutput::finish()
{
    if (!write())
        return false;
    if (_appends || _size == 0 || IO::commitWhole(_file))
        return true;
    _errorString = tr("%1: %2").arg(_path, _file.errorString());
    return false;
}

QString FileOutput::summary(qint64 records, qint64) const
{
    if (_size == 0)
        return tr("no records; %1 was not written").arg(_path);
    return tr("%1: %2 records, %3 bytes").arg(_path).arg(records).arg(_size);
}

bool FileOutput::write()
{
    std::string error;
    if (_appends && !_pending.isEmpty() &&
        !IO::appendToFile(_path.toStdString(), _pending, &error)) {
        _errorString = QString::fromStdString(error);
        return false;
    }
    if (!_appends && !IO::writeWhole(_file, _pending)) {
        _errorString = tr("%1: %2").arg(_path, _file.errorString());
        return false;
    }
    _size += _pending.size();
    _pending.clear();
    return true;
}

ArchiveOutput::ArchiveOutput(const QString &root) : _root(root), _writer(root.toStdString())
{}

QString ArchiveOutput::summary(qint64 records, qint64 known) const
{
    return tr("%1: %2 records written to %3 files, %4 were there already")
        .arg(_root)
        .arg(records)
        .arg(_writer.fileCount())
        .arg(known);
}

} // namespace Tool
} // namespace Tellarix
