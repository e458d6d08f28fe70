// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/boundedxml_p.h>
#include <tellarix/client/io/eventreader.h>

#include <optional>
#include <string>

namespace Tellarix {
namespace IO {

/**
 * Reads QuakeML 1.2, basic event description. Elements of other namespaces, and those that the data
 * model has no place for, are passed over.
 */
class QuakeMLReader : private BoundedXml
{
public:
    QuakeMLReader(QIODevice &device, const QString &name, const EventReadHandler &handler);

    bool read(QString *error);

private:
    /** Kinds of numbers: lengths are metres in QuakeML, and km with us. */
    enum Kind
    {
        Plain,
        Length
    };

    bool isOurs() const override;

    void readRoot();
    void readEventParameters();
    void readEvent();
    void handOver(const DataModel::EventPtr &event);
    DataModel::EventDescription readDescription();
    DataModel::OriginPtr readOrigin();
    void readQuality(DataModel::OriginQuality &quality);
    DataModel::MagnitudePtr readMagnitude();
    DataModel::FocalMechanismPtr readFocalMechanism();
    void readNodalPlanes(DataModel::FocalMechanism &mechanism);
    std::optional<DataModel::NodalPlane> readNodalPlane();
    DataModel::CreationInfo readCreationInfo();
    std::optional<DataModel::RealQuantity> readRealQuantity(Kind kind = Plain);
    std::optional<DataModel::TimeQuantity> readTimeQuantity();
    bool readUncertainty(const QStringRef &name, Kind kind, DataModel::Uncertainty &uncertainty);

    std::optional<double> readNumber(Kind kind = Plain);
    std::optional<int> readCount();
    std::string publicIDAttribute() const;

    const EventReadHandler &_handler;
};

} // namespace IO
} // namespace Tellarix
