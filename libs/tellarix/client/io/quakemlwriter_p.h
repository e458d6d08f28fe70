// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/eventwriter.h>

#include <QXmlStreamWriter>

namespace Tellarix {
namespace IO {

/** Writes QuakeML 1.2, basic event description. */
class QuakeMLWriter : public EventWriter
{
public:
    explicit QuakeMLWriter(QIODevice &device);

    bool begin() override;
    bool write(const DataModel::Event &event) override;
    bool end() override;

private:
    /** Makes the text of a number; null for one as it is. */
    using NumberText = std::string (*)(double);

    void writeOrigin(const DataModel::Origin &origin);
    void writeQuality(const DataModel::OriginQuality &quality);
    void writeMagnitude(const DataModel::Magnitude &magnitude);
    void writeFocalMechanism(const DataModel::FocalMechanism &mechanism);
    void writeNodalPlane(const char *name, const std::optional<DataModel::NodalPlane> &plane);
    void writeCreationInfo(const DataModel::CreationInfo &info);
    void writeEvaluation(const std::string &mode, const std::string &status);
    void writeQuantity(const char *name, const DataModel::RealQuantity &quantity,
                       NumberText text = nullptr);
    void writeQuantity(const char *name, const DataModel::TimeQuantity &quantity);
    void writeUncertainty(const DataModel::Uncertainty &uncertainty, NumberText text = nullptr);
    void writeText(const char *name, const std::string &text);
    void writeTime(const char *name, Core::Time time);
    void writeNumber(const char *name, const std::optional<double> &value,
                     NumberText text = nullptr);
    void writeCount(const char *name, const std::optional<int> &value);
    void openNamed(const char *name, const std::string &publicID);

    QXmlStreamWriter _xml;
};

} // namespace IO
} // namespace Tellarix
