// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/eventwriter.h>

namespace Tellarix {
namespace IO {

/** Writes a line of CSV for each event. */
class EventCsvWriter : public EventWriter
{
public:
    explicit EventCsvWriter(QIODevice &device) : _device(device) {}

    bool begin() override;
    bool write(const DataModel::Event &event) override;
    bool end() override { return true; }

private:
    QIODevice &_device;
};

/** Writes a feature of GeoJSON (RFC 7946) for each event; its heights are metres, up. */
class EventGeoJsonWriter : public EventWriter
{
public:
    explicit EventGeoJsonWriter(QIODevice &device) : _device(device) {}

    bool begin() override;
    bool write(const DataModel::Event &event) override;
    bool end() override;

private:
    QIODevice &_device;
    bool _first{true};
};

} // namespace IO
} // namespace Tellarix
