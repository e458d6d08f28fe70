// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/inventoryreader.h>

#include <tellarix/client/io/stationtablereader_p.h>
#include <tellarix/client/io/stationxmlreader_p.h>

#include <QFile>
#include <QFileInfo>

namespace Tellarix {
namespace IO {

namespace {

constexpr int HeadSize = 64 << 10; // a comment may come first
constexpr int MostWarnings = 100;

/** The text of a file's head in one byte a character, as far as it is ASCII. */
QByteArray narrowed(QByteArray text)
{
    if (text.startsWith("\xEF\xBB\xBF"))
        text.remove(0, 3);
    if (text.startsWith("\xFF\xFE") || text.startsWith("\xFE\xFF"))
        text.remove(0, 2).replace('\0', "");
    return text.trimmed();
}

bool readKnown(QIODevice &device, const QString &name, std::vector<DataModel::NetworkPtr> &networks,
               const InventoryReadHandler &handler, QString *error)
{
    switch (inventoryFormatOf(device.peek(HeadSize))) {
    case InventoryFormat::StationXML:
        return StationXMLReader(device, name, handler).read(networks, error);
    case InventoryFormat::FdsnText:
        return StationTableReader(device, name, handler).read(networks, error);
    case InventoryFormat::Unknown:
        break;
    }
    *error = QString("%1: neither StationXML nor a table of stations").arg(name);
    return false;
}

} // namespace

InventoryFormat inventoryFormatOf(const QByteArray &head)
{
    const QByteArray text = narrowed(head);
    if (text.startsWith('<') && text.contains("FDSNStationXML"))
        return InventoryFormat::StationXML;
    const int end = text.indexOf('\n');
    const QByteArray line = text.left(end < 0 ? text.size() : end).toLower().replace(' ', "");
    if (line.startsWith("#network|"))
        return InventoryFormat::FdsnText;
    return InventoryFormat::Unknown;
}

bool isInventoryFile(const QString &name)
{
    QFile file(name);
    // A pipe would lose what is looked at here.
    return QFileInfo(name).isFile() && file.open(QIODevice::ReadOnly) &&
           inventoryFormatOf(file.peek(HeadSize)) != InventoryFormat::Unknown;
}

bool readInventory(QIODevice &device, const QString &name,
                   std::vector<DataModel::NetworkPtr> *networks,
                   const InventoryReadHandler &handler, QString *error)
{
    QString fault;
    std::vector<DataModel::NetworkPtr> result;
    bool read = readKnown(device, name, result, handler, &fault);
    // A device that breaks looks like one that ends.
    const auto *file = qobject_cast<QFileDevice *>(&device);
    if (file && file->error() != QFileDevice::NoError) {
        fault = QString("%1: %2").arg(name, file->errorString());
        read = false;
    }
    if (read)
        *networks = std::move(result);
    if (error)
        *error = fault;
    return read;
}

void InventoryFile::addWarning(const QString &text)
{
    if (warnings.size() < MostWarnings)
        warnings.append(text);
    else if (warnings.size() == MostWarnings)
        warnings.append("... and more of the kind");
}

InventoryFile readInventoryFile(const QString &name,
                                const std::function<bool(qint64 done, qint64 total)> &progress)
{
    InventoryFile result;
    QFile file(name);
    // A pipe that nobody writes to would be waited for without end.
    if (QFileInfo(name).exists() && !QFileInfo(name).isFile()) {
        result.error = QString("%1: is no file").arg(name);
        return result;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        result.error = QString("%1: %2").arg(name, file.errorString());
        return result;
    }
    const auto warn = [&](const QString &text) { result.addWarning(text); };
    result.ok = readInventory(file, name, &result.networks, {progress, warn}, &result.error);
    return result;
}

} // namespace IO
} // namespace Tellarix
