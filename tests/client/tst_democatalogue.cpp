// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/demo/democatalogue.h>
#include <tellarix/client/demo/demostation.h>
#include <tellarix/client/io/databaseaddress.h>
#include <tellarix/client/io/eventarchive.h>
#include <tellarix/core/math/geo.h>

#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>

using namespace Tellarix;

class TestDemoCatalogue : public QObject
{
    Q_OBJECT

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

    void holdsTheRecordedEarthquakeAndItsAftershocks()
    {
        const Client::DemoOrigin recorded = Client::demonstrationOrigin();
        const Core::Time before = recorded.time - Core::TimeSpan(30 * 86400.0);
        const Core::Time after = recorded.time + Core::TimeSpan(30 * 86400.0);
        int counts[2] = {0, 0};
        bool found = false;
        for (const DataModel::EventPtr &event : Client::demonstrationCatalogue()) {
            const DataModel::Origin &origin = *event->preferredOrigin();
            const Core::Time time = origin.time.value();
            if (event->publicID == Client::demonstrationEventID()) {
                found = true;
                QCOMPARE(time.iso(), recorded.time.iso());
                QCOMPARE(origin.latitude.value(), recorded.latitude);
                QCOMPARE(event->preferredMagnitude()->magnitude.value(), recorded.magnitude);
                continue;
            }
            double distance = 0;
            Math::Geo::delaziKm(recorded.latitude, recorded.longitude, origin.latitude.value(),
                                origin.longitude.value(), &distance);
            if (distance < 30 && time > before && time < after)
                ++counts[time > recorded.time];
        }
        QVERIFY(found);
        QVERIFY2(counts[1] > 20 * counts[0] && counts[1] > 300,
                 qPrintable(QString::number(counts[1])));
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

QTEST_GUILESS_MAIN(TestDemoCatalogue)
#include "tst_democatalogue.moc"
