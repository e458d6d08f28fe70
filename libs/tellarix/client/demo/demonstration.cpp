// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/demo/demonstration.h>

#include <tellarix/client/demo/seismogram_p.h>
#include <tellarix/client/io/savefile.h>
#include <tellarix/client/io/stationxmlwriter.h>
#include <tellarix/core/parallel.h>
#include <tellarix/core/records/formats/miniseedwriter.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/records/typedarray.h>

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <atomic>
#include <functional>
#include <mutex>

namespace Tellarix {
namespace Client {

namespace {

/** Changes whenever the files do. */
const char ManifestTitle[] = "tellarix demonstration 2\n";
const auto ManifestName = QStringLiteral("demonstration.manifest");
constexpr uint64_t Seed = 20240517;

QString tr(const char *text)
{
    return QCoreApplication::translate("Tellarix::Client::Demonstration", text);
}

bool failed(const QString &reason, QString *error)
{
    if (error)
        *error = reason;
    return false;
}

QString fileName(const DemoStation &station)
{
    return QStringLiteral("%1.%2.mseed").arg(station.network, station.station);
}

/** Samples that are written in one go, between two times of the recording in seconds. */
struct Segment
{
    double begin;
    double end;
    int copies{1};
};

std::vector<Segment> segments(DemoStation::Flaw flaw)
{
    switch (flaw) {
    case DemoStation::Flaw::Gap:
        return {{0, 205}, {219.5, DemoSeconds}};
    case DemoStation::Flaw::Overlap:
        return {{0, 420}, {420, 432, 2}, {427, DemoSeconds}};
    case DemoStation::Flaw::None:
    case DemoStation::Flaw::Noise:
        break;
    }
    return {{0, DemoSeconds}};
}

RecordPtr recordOf(const StreamCodesCPtr &codes, const std::vector<int> &samples,
                   const Segment &segment)
{
    const auto first = static_cast<int>(segment.begin * DemoSamplingFrequency);
    const auto last = static_cast<int>(segment.end * DemoSamplingFrequency);
    const Core::Time start =
        demonstrationOrigin().time + Core::TimeSpan(segment.begin - DemoSecondsBeforeOrigin);
    return new Record(codes, start, DemoSamplingFrequency,
                      new IntArray(last - first, samples.data() + first));
}

/** The miniSEED records of a segment, by a writer of their own: what a writer packed before shows
 * in the next records, and copies have to be alike. */
bool pack(const Record &record, QByteArray *bytes, QString *error)
{
    QBuffer buffer(bytes);
    buffer.open(QIODevice::WriteOnly);
    Formats::MiniSeedWriter writer(&buffer);
    return writer.write(record) || failed(QString::fromStdString(writer.errorString()), error);
}

bool writeRecordings(const DemoStation &station, const DemoSeismogram &seismogram,
                     QIODevice &device, QString *error)
{
    for (size_t i = 0; i < seismogram.size(); ++i) {
        const StreamCodesCPtr codes =
            new StreamCodes(station.network.toStdString(), station.station.toStdString(),
                            station.location.toStdString(),
                            DemoStation::Channels().at(static_cast<int>(i)).toStdString());
        for (const Segment &segment : segments(station.flaw)) {
            QByteArray bytes;
            if (!pack(*recordOf(codes, seismogram[i], segment), &bytes, error))
                return false;
            bytes = bytes.repeated(segment.copies);
            if (device.write(bytes) != bytes.size())
                return failed(device.errorString(), error);
        }
    }
    return true;
}

bool save(const QString &path, QString *error,
          const std::function<bool(QIODevice &, QString *)> &write)
{
    QSaveFile file(path);
    QString reason;
    if (!file.open(QIODevice::WriteOnly))
        return failed(QStringLiteral("%1: %2").arg(path, file.errorString()), error);
    if (!write(file, &reason))
        return failed(QStringLiteral("%1: %2").arg(path, reason), error);
    if (!IO::commitWhole(file))
        return failed(QStringLiteral("%1: %2").arg(path, file.errorString()), error);
    return true;
}

bool writeStation(const QDir &folder, const DemoStation &station, uint64_t seed, QString *error)
{
    return save(folder.filePath(fileName(station)), error, [&](QIODevice &device, QString *reason) {
        return writeRecordings(station, synthesizeSeismogram(station, seed), device, reason);
    });
}

bool writeStations(const QDir &folder, QString *error)
{
    const QVector<DemoStation> stations = demonstrationStations();
    std::atomic<bool> complete{true};
    std::mutex errorMutex;
    Core::parallelFor(stations.size(), [&](int i) {
        QString reason;
        if (!complete ||
            writeStation(folder, stations[i], Seed + static_cast<uint64_t>(i), &reason))
            return;
        const std::lock_guard<std::mutex> lock(errorMutex);
        complete = failed(reason, error);
    });
    return complete;
}

bool writeStationFile(const QDir &folder, QString *error)
{
    return save(folder.filePath(demonstrationStationFile()), error,
                [](QIODevice &device, QString *reason) {
                    // The same bytes every time: it is no older than what it belongs to.
                    return IO::writeStationXML(device, {demonstrationNetwork()}, "tellarix demo",
                                               demonstrationOrigin().time) ||
                           failed(device.errorString(), reason);
                });
}

/** Names and sizes of the files as they are now. */
QByteArray manifest(const QDir &folder)
{
    QByteArray text(ManifestTitle);
    for (const QString &name : demonstrationFiles() + QStringList{demonstrationStationFile()}) {
        const QFileInfo file(folder.filePath(name));
        text += name.toUtf8() + ' ' + QByteArray::number(file.exists() ? file.size() : -1) + '\n';
    }
    return text;
}

} // namespace

QStringList demonstrationFiles()
{
    QStringList names;
    for (const DemoStation &station : demonstrationStations())
        names.append(fileName(station));
    return names;
}

QString demonstrationStationFile()
{
    return QStringLiteral("stations.xml");
}

bool writeDemonstration(const QString &folder, QString *error)
{
    if (!QDir().mkpath(folder))
        return failed(tr("%1: the folder can't be made").arg(folder), error);

    const QDir target(folder);
    return writeStations(target, error) && writeStationFile(target, error) &&
           save(target.filePath(ManifestName), error, [&](QIODevice &device, QString *reason) {
               const QByteArray text = manifest(target);
               return device.write(text) == text.size() || failed(device.errorString(), reason);
           });
}

bool demonstrationIsComplete(const QString &folder)
{
    const QDir target(folder);
    QFile file(target.filePath(ManifestName));
    return file.open(QIODevice::ReadOnly) && file.readAll() == manifest(target);
}

} // namespace Client
} // namespace Tellarix
