// SPDX-License-Identifier: LGPL-3.0-or-later

// Writes files from which the fuzzers of file formats begin: small ones, and large ones of about
// 1 MB, which they would not come to by themselves.

#include "core/seedbytes.h"

#include <tellarix/core/records/formats/miniseedwriter.h>
#include <tellarix/core/records/formats/sac.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/records/typedarray.h>

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdio>
#include <random>

using namespace Tellarix;

namespace {

constexpr int Megabyte = 1000000; // less than the fuzzers' limit of 1 << 20

RecordPtr makeRecord(int count)
{
    std::mt19937 random(1);
    std::vector<int> samples(static_cast<size_t>(count));
    for (int &sample : samples)
        sample = static_cast<int>(random() % 2000) - 1000;
    return new Record(StreamCodes::FromID("XX.ABC.00.HHZ"), Core::Time(2024, 2, 29), 100,
                      new IntArray(count, samples.data()), 90);
}

QByteArray miniSeed2(int count, bool compressed)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    Formats::MiniSeedWriter writer(&buffer);
    writer.setCompressed(compressed);
    writer.write(*makeRecord(count));
    return bytes;
}

/** Records without blockette 1000, as which nothing tells their length but what follows. */
QByteArray withoutLength(QByteArray bytes)
{
    for (int offset = 0; offset < bytes.size(); offset += 512)
        bytes[offset + 39] = 0;
    return bytes;
}

QByteArray miniSeed3(int samples)
{
    Seed3 record;
    record.encoding = 0;
    record.sampleCount = static_cast<uint32_t>(samples);
    record.payload = QByteArray(samples, 'x');
    return record.bytes();
}

QByteArray sac(int count)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    std::string error;
    Formats::writeSac(buffer, *makeRecord(count), error);
    return bytes;
}

bool write(const QDir &directory, const char *name, const QByteArray &bytes)
{
    QFile file(directory.filePath(name));
    QDir().mkpath(QFileInfo(file).path());
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s DIRECTORY\n", argv[0]);
        return 2;
    }
    const QDir directory(QFile::decodeName(argv[1]));
    const std::pair<const char *, QByteArray> seeds[] = {
        {"small/steim2", miniSeed2(300, true)},
        {"small/int32", miniSeed2(300, false)},
        {"small/without-length", withoutLength(miniSeed2(300, true))},
        {"small/version3", miniSeed3(100) + miniSeed3(300)},
        {"small/headers3", greedyHeaders(25)},
        {"small/sac", sac(30)},
        {"large/steim2", miniSeed2(Megabyte * 2 / 5, true)},
        {"large/without-length", withoutLength(miniSeed2(Megabyte * 2 / 5, true))},
        {"large/version3", miniSeed3(200).repeated(Megabyte / 260)},
        {"large/headers3", greedyHeaders(Megabyte / 40)},
        {"large/sac", sac(Megabyte / 5)},
    };
    for (const auto &[name, bytes] : seeds) {
        if (bytes.size() > 1 << 20 || !write(directory, name, bytes)) {
            std::fprintf(stderr, "%s: can't be written\n", name);
            return 1;
        }
    }
    return 0;
}
