// SPDX-License-Identifier: LGPL-3.0-or-later

#include "democommand.h"

#include <tellarix/client/demo/demonstration.h>

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>

namespace Tellarix {
namespace Tool {

QString DemoCommand::summary() const
{
    return tr("Write demonstration data.");
}

void DemoCommand::describe(QCommandLineParser &parser) const
{
    parser.setApplicationDescription(
        tr("Writes the recordings of a made-up regional earthquake on twenty stations, about 10 MB "
           "of\nminiSEED, one file per station. One station has a gap, one sent some seconds twice "
           "and one\nis noisy."));
    parser.addPositionalArgument(tr("DIR"), tr("The folder to write to; it is made if need be."),
                                 tr("DIR"));
}

bool DemoCommand::readArguments(const QCommandLineParser &, const QStringList &arguments,
                                QString *error)
{
    if (arguments.size() != 1) {
        *error = arguments.isEmpty() ? tr("no folder given")
                                     : tr("one folder wanted, but %1 given").arg(arguments.size());
        return false;
    }
    _folder = arguments.first();
    return true;
}

int DemoCommand::run()
{
    QString error;
    if (!Client::writeDemonstration(_folder, &error)) {
        printError(error);
        return 1;
    }

    const QDir folder(_folder);
    const QStringList files = Client::demonstrationFiles();
    const QVector<Client::DemoStation> stations = Client::demonstrationStations();
    qint64 size = 0;
    QString output;
    for (int i = 0; i < files.size(); ++i) {
        size += QFileInfo(folder.filePath(files[i])).size();
        output +=
            tr("%1  %2 km\n").arg(folder.filePath(files[i])).arg(stations[i].distanceKm, 5, 'f', 1);
    }
    const QString stationFile = folder.filePath(Client::demonstrationStationFile());
    size += QFileInfo(stationFile).size();
    output += stationFile + QLatin1Char('\n');
    output += tr("%1 files, %2 MB\n")
                  .arg(files.size() + 1)
                  .arg(static_cast<double>(size) / 1E6, 0, 'f', 1);
    return printOutput(output) ? 0 : 1;
}

} // namespace Tool
} // namespace Tellarix
