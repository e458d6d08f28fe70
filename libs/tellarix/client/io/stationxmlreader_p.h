// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/boundedxml_p.h>
#include <tellarix/client/io/inventoryreader.h>
#include <tellarix/core/datamodel/station.h>
#include <tellarix/core/datamodel/stream.h>

#include <string>
#include <vector>

namespace Tellarix {
namespace IO {

class SensorLocationIndex;

/** Reads StationXML 1.0 to 1.2. Elements of other namespaces, and those that the data model has no
 *  place for, are passed over. */
class StationXMLReader : private BoundedXml
{
public:
    StationXMLReader(QIODevice &device, const QString &name, const InventoryReadHandler &handler);

    bool read(std::vector<DataModel::NetworkPtr> &networks, QString *error);

private:
    bool isOurs() const override;

    void readRoot(std::vector<DataModel::NetworkPtr> &networks);
    bool readHead(DataModel::InventoryObject &object);
    DataModel::NetworkPtr readNetwork();
    DataModel::StationPtr readStation();
    void readChannel(SensorLocationIndex &locations);
    /** False if the element isn't one of a place. */
    bool readCoordinate(const QStringRef &name, DataModel::Coordinates &place);
    void keepPlace(DataModel::Coordinates &place);
    void readSampleRateRatio(DataModel::Stream &stream);
    void readResponse(DataModel::Stream &stream);
    void readSensitivity(DataModel::Stream &stream);
    std::string readName();
    double readValue();
    std::string attribute(const char *name) const;

    QString _namespace; /**< of the root */
};

} // namespace IO
} // namespace Tellarix
