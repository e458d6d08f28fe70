// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/core/datamodel/network.h>

#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

class QIODevice;

namespace Tellarix {
namespace IO {

/** Forms in which stations come as files. */
enum class InventoryFormat
{
    Unknown,
    StationXML, /**< versions 1.0 to 1.2 */
    FdsnText    /**< "#Network|Station|...", then a network, station or channel epoch a line */
};

/** Tells a form by the first bytes of a file, whatever it is called. */
TELLARIX_CLIENT_API InventoryFormat inventoryFormatOf(const QByteArray &head);
/** Whether a file holds stations, by its first bytes. */
TELLARIX_CLIENT_API bool isInventoryFile(const QString &file);

/** What happens while stations are read. */
struct InventoryReadHandler
{
    /** Told now and then: bytes read, and bytes in all (-1 if unknown); false ends the reading.
     *  May be empty. */
    std::function<bool(qint64 done, qint64 total)> progress;
    /** Told of what could not be understood but doesn't spoil the rest; may be empty. */
    std::function<void(const QString &text)> warn;
};

/**
 * Reads the stations of a device in whatever known form it has. Beside the result it takes memory
 * that doesn't grow with the device: of a response only the overall gain is kept.
 *
 * A network or station that stands in the file several times, as epochs do, does so in the result.
 * Channels of one location code share a sensor location as long as they stand at the same place;
 * one without coordinates has none, and so those of its station.
 *
 * @param name      of the source, for messages
 * @param networks  gets what was read, or stays as it is
 * @param error     gets name, line and cause; may be null
 * @return false if the form is unknown, the text is malformed or cut off, or the handler ended it,
 *         in which case the error is empty
 */
TELLARIX_CLIENT_API bool readInventory(QIODevice &device, const QString &name,
                                       std::vector<DataModel::NetworkPtr> *networks,
                                       const InventoryReadHandler &handler = {},
                                       QString *error = nullptr);

/** What came of reading a file. */
struct TELLARIX_CLIENT_API InventoryFile
{
    /** Keeps a text, unless there are enough already. */
    void addWarning(const QString &text);

    bool ok{false};
    std::vector<DataModel::NetworkPtr> networks; /**< empty unless all could be read */
    QString error;        /**< names the file and the cause; empty if the reading was ended */
    QStringList warnings; /**< not more than the user can read */
};

/** Reads a file as readInventory() does. */
TELLARIX_CLIENT_API InventoryFile readInventoryFile(
    const QString &file, const std::function<bool(qint64 done, qint64 total)> &progress = {});

} // namespace IO
} // namespace Tellarix
