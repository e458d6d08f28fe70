// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/databaseinterface.h>
#include <tellarix/client/io/eventarchive.h>

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>

#include <memory>

/** Ends a test of whose row there is no server. */
#define SKIP_WITHOUT_SERVER(scratch)                                                               \
    if (!(scratch).isThere())                                                                      \
    QSKIP(qPrintable((scratch).absence()))

/** Opens an empty database with tables for the row of a test. */
#define OPEN_WITH_TABLES(database)                                                                 \
    const Scratch scratch;                                                                         \
    SKIP_WITHOUT_SERVER(scratch);                                                                  \
    auto database = scratch.openWithTables();                                                      \
    QVERIFY(database)

namespace DatabaseTesting {

using namespace Tellarix;

/** Adds the rows "sqlite", "postgresql" and "mariadb". */
inline void addBackends()
{
    QTest::addColumn<QString>("backend");
    for (const char *backend : {"sqlite", "postgresql", "mariadb"})
        QTest::newRow(backend) << QString(backend);
}

/** An empty database of its own for the running row of a test, which goes with the object. */
class Scratch
{
public:
    explicit Scratch(QString backend = QTest::currentDataTag()) : _backend(std::move(backend))
    {
        static int count = 0;
        _name = QString("test_%1_%2").arg(QCoreApplication::applicationPid()).arg(++count);
        if (_backend == "sqlite")
            _folder = std::make_unique<QTemporaryDir>();
        else if (isThere())
            tell("CREATE DATABASE " + _name);
    }
    ~Scratch()
    {
        const QString force = _backend == "postgresql" ? " WITH (FORCE)" : "";
        if (!_folder && isThere())
            tell("DROP DATABASE " + _name + force);
    }

    bool isThere() const { return _folder || !server().isEmpty(); }
    QString absence() const
    {
        return QString("no server: %1 is not set (see scripts/database-servers)").arg(variable());
    }

    /** The address of the new database; without arguments as it is. */
    QString url(const QString &password = {}) const
    {
        if (_folder)
            return "sqlite://" + _folder->filePath("events.db");
        QUrl url(server());
        url.setPath('/' + _name);
        if (!password.isEmpty())
            url.setPassword(password);
        return url.toString(QUrl::FullyEncoded);
    }

    IO::DatabaseInterfacePtr open() const
    {
        QString error;
        const auto database = IO::DatabaseInterface::Open(url(), &error);
        if (!database)
            qWarning("%s", qPrintable(error));
        return database;
    }
    /** The same with its tables. */
    IO::DatabaseInterfacePtr openWithTables() const
    {
        const auto database = open();
        QString error;
        if (!database || IO::EventArchive::createSchema(*database, &error))
            return database;
        qWarning("%s", qPrintable(error));
        return nullptr;
    }

private:
    QString variable() const { return "NORVU_TEST_" + _backend.toUpper(); }
    QString server() const { return qEnvironmentVariable(qPrintable(variable())); }

    void tell(const QString &statement) const
    {
        QString error;
        const auto database = IO::DatabaseInterface::Open(server(), &error);
        if (!database)
            qWarning("%s", qPrintable(error));
        else if (!database->execute(statement.toStdString()))
            qWarning("%s", qPrintable(database->lastError()));
    }

    const QString _backend;
    QString _name;
    std::unique_ptr<QTemporaryDir> _folder;
};

/** The fields of all rows of a statement, "NULL" for null, or the error in place of a row. */
inline QStringList rowsOf(IO::DatabaseInterface &database, const std::string &statement)
{
    QStringList rows;
    if (!database.beginQuery(statement))
        return {database.lastError()};
    while (database.fetchRow()) {
        QStringList fields;
        for (int i = 0; i < database.fieldCount(); ++i)
            fields << (database.field(i) ? QString::fromUtf8(database.field(i)) : "NULL");
        rows << fields.join('|');
    }
    if (!database.lastError().isEmpty())
        rows << database.lastError();
    database.endQuery();
    return rows;
}

/** What event lists ask for of a time window, or how many they are. */
inline std::string listStatement(const IO::DatabaseInterface &database, Core::Time begin,
                                 Core::Time end, bool isCount = false)
{
    const char *const fields =
        "Origin.time_value,Origin.time_value_ms,Magnitude.magnitude_value,Magnitude.type,"
        "Origin.quality_usedPhaseCount,Origin.latitude_value,Origin.longitude_value,"
        "Origin.depth_value,Origin.evaluationStatus,Origin.evaluationMode,"
        "FocalMechanism.nodalPlanes_nodalPlane1_strike_value,"
        "FocalMechanism.nodalPlanes_nodalPlane1_dip_value,"
        "FocalMechanism.nodalPlanes_nodalPlane1_rake_value,PEvent.publicID,Event.type,"
        "EventDescription.text";
    return std::string("select ") + (isCount ? "count(*)" : fields) +
           " from Origin, PublicObject as POrigin,Magnitude, PublicObject as PMagnitude,"
           "PublicObject as PEvent,Event LEFT JOIN PublicObject as PFocalMechanism on "
           "Event.preferredFocalMechanismID = PFocalMechanism.publicID"
           " LEFT JOIN FocalMechanism on PFocalMechanism._oid = FocalMechanism._oid"
           " LEFT JOIN EventDescription on EventDescription._parent_oid=Event._oid and "
           "EventDescription.type='region name' where POrigin.publicID=Event.preferredOriginID"
           "   and PMagnitude._oid = Magnitude._oid and "
           "Event.preferredMagnitudeID = PMagnitude.publicID   and Origin.time_value >= '" +
           database.timeToString(begin) + "' and Origin.time_value <= '" +
           database.timeToString(end) +
           "' and Magnitude.magnitude_value >= '-2.5' and Origin._oid=POrigin._oid "
           "and Event._oid=PEvent._oid";
}

} // namespace DatabaseTesting
