// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/eventwriter.h>

#include <tellarix/client/io/eventlistwriter_p.h>
#include <tellarix/client/io/quakemlwriter_p.h>

#include <QFileInfo>

namespace Tellarix {
namespace IO {

EventWriter::~EventWriter() = default;

std::unique_ptr<EventWriter> EventWriter::Create(const QString &form, QIODevice &device)
{
    if (form == "quakeml")
        return std::make_unique<QuakeMLWriter>(device);
    if (form == "csv")
        return std::make_unique<EventCsvWriter>(device);
    if (form == "geojson")
        return std::make_unique<EventGeoJsonWriter>(device);
    return nullptr;
}

QString EventWriter::FormOf(const QString &file)
{
    const QString suffix = QFileInfo(file).suffix().toLower();
    if (suffix == "xml" || suffix == "qml")
        return "quakeml";
    if (suffix == "json" || suffix == "geojson")
        return "geojson";
    return suffix == "csv" ? suffix : QString();
}

} // namespace IO
} // namespace Tellarix
