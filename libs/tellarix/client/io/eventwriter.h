// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/core/datamodel/event.h>

#include <QString>

#include <memory>

class QIODevice;

namespace Tellarix {
namespace IO {

/**
 * Writes events one after the other: begin, any number of events, end.
 *
 * QuakeML holds all that an event has but for when it was last changed. CSV and GeoJSON hold a line
 * or feature for each event with its preferred origin and magnitude; events without an origin have
 * no feature.
 */
class TELLARIX_CLIENT_API EventWriter
{
public:
    /** Form names are "quakeml", "csv" and "geojson"; null for any other. */
    static std::unique_ptr<EventWriter> Create(const QString &form, QIODevice &device);

    /** The form that a file's name asks for by its suffix; empty if none does. */
    static QString FormOf(const QString &file);

    virtual ~EventWriter();

    /** False when the device takes no more; its errorString() tells why. */
    virtual bool begin() = 0;
    virtual bool write(const DataModel::Event &event) = 0;
    virtual bool end() = 0;
};

} // namespace IO
} // namespace Tellarix
