// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/demo/democatalogue.h>
#include <tellarix/client/demo/demonstration.h>
#include <tellarix/client/demo/demostation.h>
#include <tellarix/client/io/databaseaddress.h>
#include <tellarix/client/io/eventarchive.h>
#include <tellarix/client/io/recordstream.h>
#include <tellarix/client/io/streamsummary.h>
#include <tellarix/core/datamodel/inventory.h>
#include <tellarix/core/datamodel/stream.h>
#include <tellarix/core/records/record.h>

#include <QtTest>

#include <cmath>
#include <map>
#include <thread>

using namespace Tellarix;
using Client::DemoArrival;
using Client::DemoStation;

namespace {
/** The samples of one channel beside each other; gaps and overlaps are not put right. */
struct Recording
{
    Core::Time start;
    double samplingFrequency{0};
    std::vector<double> samples;

    /** Root mean square in a window less its mean. */
    double level(Core::Time begin, double seconds) const
    {
        const auto first = static_cast<size_t>((begin - start).length() * samplingFrequency);
        const auto count = static_cast<size_t>(seconds * samplingFrequency);
        double sum = 0;
        double squares = 0;
        for (size_t i = first; i < first + count; ++i) {
            sum += samples.at(i);
            squares += samples.at(i) * samples.at(i);
        }
        const double n = static_cast<double>(count);
        return std::sqrt(squares / n - sum / n * (sum / n));
    }
};

std::vector<RecordPtr> recordsOf(const QString &fileName)
{
    const IO::RecordStreamPtr stream = IO::RecordStream::Create(fileName.toStdString());
    std::vector<RecordPtr> records;
    if (!stream || !stream->open())
        return records;
    while (const RecordPtr record = stream->next())
        records.push_back(record);
    return records;
}

Recording recording(const std::vector<RecordPtr> &records, const QString &channel)
{
    Recording result;
    for (const RecordPtr &record : records) {
        if (record->channelCode() != channel.toStdString())
            continue;
        if (result.samples.empty())
            result.start = record->startTime();
        result.samplingFrequency = record->samplingFrequency();
        for (int i = 0; i < record->sampleCount(); ++i)
            result.samples.push_back(record->data()->value(i));
    }
    return result;
}

Core::Time onset(const DemoStation &station, char wave)
{
    for (const DemoArrival &arrival : Client::demonstrationArrivals(station)) {
        if (arrival.phase.startsWith(wave) && arrival.phase.endsWith('g'))
            return arrival.time;
    }
    return Core::Time();
}

QByteArray content(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class DemonstrationTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QString error;
        QVERIFY2(Client::writeDemonstration(_folder.path(), &error), qPrintable(error));
        _stations = Client::demonstrationStations();
    }

    void comesInLive()
    {
        const IO::RecordStreamPtr stream =
            IO::RecordStream::Create("demonstration://live#streams=*.*.*.HHZ&from=-1min");
        QVERIFY(stream && stream->isLive() && stream->open());
        const Core::Time now = Core::Time::GMT();
        std::map<std::string, Core::Time> ends;
        for (int i = 0; i < 150; ++i) {
            const RecordPtr record = stream->next();
            Core::Time &end = ends[record->streamID()];
            QVERIFY(!end.valid() || record->startTime() == end);
            end = record->endTime();
            QVERIFY(end <= now && end > now - Core::TimeSpan(70.0));
        }
        QCOMPARE(ends.size(), size_t(_stations.size() - 1)); // one has fallen silent
        std::thread closer([&stream] { stream->close(); });
        while (stream->next())
            ;
        closer.join();

        const IO::RecordStreamPtr past =
            IO::RecordStream::Create("demonstration://live#from=-2min&to=-1min");
        QVERIFY(past && !past->isLive());
        QVERIFY(!IO::RecordStream::Create("demonstration://dead"));
    }

    void travelTimesFollowCrustAndMantle()
    {
        DemoStation station = _stations.first();
        const auto travelTimes = [&](double distanceKm) {
            station.distanceKm = distanceKm;
            std::map<QString, double> result;
            for (const DemoArrival &arrival : Client::demonstrationArrivals(station))
                result[arrival.phase] =
                    (arrival.time - Client::demonstrationOrigin().time).length();
            return result;
        };

        auto near = travelTimes(40);
        QVERIFY(near.count("Pn") == 0);
        auto far = travelTimes(300);
        const double depth = Client::demonstrationOrigin().depthKm;
        QVERIFY(std::abs(far["Pg"] - std::hypot(300, depth) / 6.0) < 1E-5);
        QVERIFY(std::abs(far["SmS"] - std::hypot(300, 60 - depth) / 3.46) < 1E-5);
        QVERIFY(far["Pn"] < far["Pg"] && far["Pg"] < far["PmP"] && far["PmP"] < far["Sn"]);
        // Along the mantle a further 8 km take a second.
        QVERIFY(std::abs(travelTimes(308)["Pn"] - far["Pn"] - 1) < 1E-5);
        QCOMPARE(Client::demonstrationArrivals(station).first().phase, QString("Pn"));
    }

    void wavesArriveWhenComputed()
    {
        for (int i = 0; i < _stations.size(); ++i) {
            const DemoStation &station = _stations[i];
            const std::vector<RecordPtr> records = recordsOf(file(i));
            const Core::Time p = onset(station, 'P');
            const Core::Time s = onset(station, 'S');
            const Core::Time first = Client::demonstrationArrivals(station).first().time;
            for (const QString &channel : DemoStation::Channels()) {
                const Recording trace = recording(records, channel);
                QVERIFY(trace.start == Client::demonstrationOrigin().time - Core::TimeSpan(120));
                QCOMPARE(trace.samplingFrequency, 100.0);

                const double quiet = trace.level(first - Core::TimeSpan(20), 19.9);
                const double before = trace.level(first - Core::TimeSpan(1.5), 1.5);
                const QByteArray name = (station.station + ' ' + channel).toLatin1();
                QVERIFY2(before < 3 * quiet, name);
                QVERIFY2(trace.level(p, 3) > 5 * quiet, name);
                QVERIFY2(trace.level(s, 4) > 1.5 * trace.level(s - Core::TimeSpan(2.2), 2), name);
            }
        }
    }

    void flawsAreInTheRecordings()
    {
        std::map<DemoStation::Flaw, int> stations;
        for (int i = 0; i < _stations.size(); ++i) {
            const DemoStation::Flaw flaw = _stations[i].flaw;
            ++stations[flaw];
            IO::StreamSummarizer summarizer;
            for (const RecordPtr &record : recordsOf(file(i)))
                summarizer.add(*record);
            const IO::StreamSummaries summaries = summarizer.result();
            QCOMPARE(summaries.streams.size(), size_t(3));
            for (const IO::StreamSummary &stream : summaries.streams) {
                QCOMPARE(static_cast<int>(stream.gaps), flaw == DemoStation::Flaw::Gap ? 1 : 0);
                QCOMPARE(stream.overlaps > 0, flaw == DemoStation::Flaw::Overlap);
                if (flaw == DemoStation::Flaw::Gap)
                    QCOMPARE(static_cast<int>(stream.samples), 90000 - 1450);
            }
            const bool hasDuplicates =
                std::any_of(summaries.notes.begin(), summaries.notes.end(), [](const auto &note) {
                    return note.cause.find("duplicate") != std::string::npos;
                });
            QCOMPARE(hasDuplicates, flaw == DemoStation::Flaw::Overlap);
        }
        QCOMPARE(stations[DemoStation::Flaw::Gap], 1);
        QCOMPARE(stations[DemoStation::Flaw::Overlap], 1);
        QCOMPARE(stations[DemoStation::Flaw::Noise], 1);
    }

    void sameBytesEveryTime()
    {
        const QTemporaryDir second;
        QVERIFY(Client::writeDemonstration(second.path()));
        for (const QString &name : Client::demonstrationFiles()) {
            const QByteArray bytes = content(_folder.filePath(name));
            QVERIFY2(bytes == content(second.filePath(name)), qPrintable(name));
        }
    }

    void incompleteFoldersAreNoticed()
    {
        const QTemporaryDir folder;
        QVERIFY(!Client::demonstrationIsComplete(folder.path()));
        QVERIFY(Client::writeDemonstration(folder.path()));
        QVERIFY(Client::demonstrationIsComplete(folder.path()));

        QFile cut(folder.filePath(Client::demonstrationFiles().at(7)));
        QVERIFY(cut.resize(cut.size() / 2));
        QVERIFY(!Client::demonstrationIsComplete(folder.path()));
    }

private:
    QString file(int station) const
    {
        return _folder.filePath(Client::demonstrationFiles().at(station));
    }

    QTemporaryDir _folder;
    QVector<DemoStation> _stations;

private slots:
    void isPlausible()
    {
        const auto events = Client::demonstrationCatalogue();
        QVERIFY(events.size() > 5000);
        QSet<QString> ids;
        double excess = 0;
        int large = 0;
        Core::Time last;
        for (const DataModel::EventPtr &event : events) {
            ids.insert(event->publicID.c_str());
            const DataModel::Origin &origin = *event->preferredOrigin();
            const double magnitude = event->preferredMagnitude()->magnitude.value();
            QVERIFY(!last.valid() || origin.time.value() >= last);
            last = origin.time.value();
            QVERIFY(std::abs(origin.latitude.value()) <= 90);
            QVERIFY(std::abs(origin.longitude.value()) <= 180);
            QVERIFY(origin.depth->value() >= 0 && origin.depth->value() < 700);
            QVERIFY(!event->region().empty());
            QVERIFY(magnitude < 5.5 || !event->focalMechanisms.empty());
            if (magnitude > 4.95) {
                excess += magnitude - 4.95;
                ++large;
            }
        }
        QCOMPARE(ids.size(), static_cast<int>(events.size()));
        // The estimate of Aki (1965); its error is about b by the root of the count.
        const double b = std::log10(std::exp(1.0)) / (excess / large);
        QVERIFY2(std::abs(b - 1) < 4 / std::sqrt(large), qPrintable(QString::number(b)));
    }

    void remakesWhatIsNotWhole()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath("50% demo.sqlite");
        IO::DatabaseAddress address = IO::DatabaseAddress::OfFile(file);
        const auto make = [&] {
            QString error;
            return Client::writeDemonstrationCatalogue(file, &error) ? QString() : error;
        };
        const auto count = [&] {
            const auto database = IO::DatabaseInterface::Open(address.toString());
            return IO::EventArchive(database).count({});
        };
        QCOMPARE(make(), QString());
        const auto size = static_cast<int>(Client::demonstrationCatalogue().size());
        QCOMPARE(count(), size);
        const QDateTime made = QFileInfo(file).lastModified();
        QCOMPARE(make(), QString());
        QCOMPARE(QFileInfo(file).lastModified(), made);

        for (const char *damage :
             {"DELETE FROM Event WHERE _oid = 9", "PRAGMA user_version = 0", "DROP TABLE Origin"}) {
            auto database = IO::DatabaseInterface::Open(address.toString());
            QVERIFY(database->execute(damage));
            database.reset();
            QCOMPARE(make(), QString());
            QCOMPARE(count(), size);
        }
        QVERIFY(QFile::resize(file, 5000));
        QCOMPARE(make(), QString());
        address.isReadOnly = true;
        QCOMPARE(count(), size);
        QVERIFY(!IO::DatabaseInterface::Open(address.toString())->execute("DELETE FROM Event"));

        QVERIFY(QFile::remove(file) && QDir().mkpath(file + "/in the way"));
        QVERIFY2(make().startsWith(file + ": Is a directory"), qPrintable(make()));
    }
};

QTEST_GUILESS_MAIN(DemonstrationTest)
#include "tst_demonstration.moc"
