// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/boundeddevice_p.h>
#include <tellarix/client/io/eventreader.h>

#include <QXmlStreamReader>

#include <optional>
#include <string>
#include <vector>

namespace Tellarix {
namespace IO {

/**
 * Reads QuakeML 1.2, basic event description. Elements of other namespaces, and those that the data
 * model has no place for, are passed over.
 */
class QuakeMLReader
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

    /** Calls a function for each child element of the current one, by its local name. */
    template <typename Function>
    void forEachChild(Function function);
    /** Whether the current element belongs to the event description. */
    bool isOurs() const;

    void skip();
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

    std::string readText();
    std::optional<double> readNumber(Kind kind = Plain);
    std::optional<int> readCount();
    Core::Time readTime();
    std::string publicIDAttribute() const;

    void warn(const QString &text);
    void rememberFault(const QString &text);
    QString place() const;

    BoundedDevice _device;
    qint64 _total;
    QString _name;
    const EventReadHandler &_handler;
    QXmlStreamReader _xml;
    std::vector<QString> _elements; /**< from the root to the current one */
    QString _fault;                 /**< the first one, with its place */
    bool _ended{false};             /**< by the handler */
};

} // namespace IO
} // namespace Tellarix
