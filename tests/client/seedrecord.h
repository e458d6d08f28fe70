// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/formats/miniseedwriter.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/records/typedarray.h>

#include <QBuffer>

#include <vector>

/** A miniSEED record of @p length bytes with small integers. */
inline QByteArray seedRecord(const std::string &id, Tellarix::Core::Time start, int count = 100,
                             double samplingFrequency = 1, int length = 512)
{
    std::vector<int> samples;
    for (int i = 0; i < count; ++i)
        samples.push_back(i % 7);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    Tellarix::Formats::MiniSeedWriter(&buffer, length)
        .write(Tellarix::Record(Tellarix::StreamCodes::FromID(id), start, samplingFrequency,
                                new Tellarix::IntArray(count, samples.data())));
    return bytes;
}
