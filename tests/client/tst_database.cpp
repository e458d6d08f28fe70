// SPDX-License-Identifier: LGPL-3.0-or-later

#include <client/databasetesting.h>

using namespace Tellarix;
using namespace DatabaseTesting;

class DatabaseTest : public QObject
{
    Q_OBJECT

private slots:
    void makesTablesOnce_data() { addBackends(); }
    void makesTablesOnce()
    {
        const Scratch scratch;
        SKIP_WITHOUT_SERVER(scratch);
        const auto database = scratch.open();
        QVERIFY(database);
        QString error;
        QVERIFY(!IO::EventArchive::checkSchema(*database, &error));
        qInfo() << error;
        QVERIFY2(IO::EventArchive::createSchema(*database, &error), qPrintable(error));
        QVERIFY2(IO::EventArchive::checkSchema(*database, &error), qPrintable(error));
        QVERIFY(!IO::EventArchive::createSchema(*database, &error));
        qInfo() << error;
    }
};

QTEST_GUILESS_MAIN(DatabaseTest)
#include "tst_database.moc"
