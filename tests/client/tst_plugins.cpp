// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/recordstream.h>
#include <tellarix/client/plugins.h>

#include <QtTest>

#include <unistd.h>

using namespace Tellarix;

namespace {

constexpr auto HasRun = "TELLARIX_TEST_HAS_RUN";

QString pluginFile(const QString &name)
{
    return QStringLiteral(NORVU_TEST_PLUGINS "/%1.so").arg(name);
}

bool offersScheme()
{
    const std::vector<std::string> schemes = IO::RecordStream::Schemes();
    return std::find(schemes.begin(), schemes.end(), "test") != schemes.end();
}

} // namespace

class PluginsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        _folder.reset(new QTemporaryDir);
        qunsetenv(HasRun);
    }

    void leavesOutWhatDoesNotFit_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("cause");
        QTest::addColumn<bool>("runs");
        QTest::newRow("other version")
            << "other"
            << "is made for version 4.2 of the framework, and this is 5.0" << false;
        QTest::newRow("no name") << "nameless"
                                 << "have no \"name\"" << false;
        QTest::newRow("program, not in a list") << "listless"
                                                << "is no list" << false;
        QTest::newRow("of another program") << "stranger" << QString() << false;
        QTest::newRow("unresolved symbol") << "unresolved"
                                           << "definedNowhere" << false;
        QTest::newRow("no shared object") << "text"
                                          << "ELF" << false;
        QTest::newRow("broken link") << "link"
                                     << "not found" << false;
        QTest::newRow("refuses") << "refusing"
                                 << "needs a key" << true;
        QTest::newRow("throws") << "throwing"
                                << "out of luck" << true;
    }

    void leavesOutWhatDoesNotFit()
    {
        QFETCH(QString, name);
        QFETCH(QString, cause);
        const QString fileName = _folder->filePath(name + ".so");
        QFile file(fileName);
        if (name == "text")
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(QByteArray(9000, 'x')));
        else if (name == "link")
            QVERIFY(QFile::link("/nowhere/at/all", fileName));
        else
            QVERIFY(QFile::copy(pluginFile(name), fileName));
        file.close();

        Client::Plugins plugins;
        plugins.loadFolder(_folder->path(), "prog");
        QVERIFY(plugins.loaded().isEmpty());
        QTEST(qEnvironmentVariableIsSet(HasRun), "runs");
        QVERIFY(!offersScheme());
        QCOMPARE(plugins.problems().size(), cause.isEmpty() ? 0 : 1);
        for (const QString &problem : plugins.problems()) {
            QVERIFY2(problem.startsWith(fileName + ": ") && problem.contains(cause),
                     qPrintable(problem));
        }
    }

    void looksIntoNoNamelessFolder()
    {
        QVERIFY(QFile::copy(pluginFile("good"), _folder->filePath("good.so")));
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(_folder->path()));
        Client::Plugins plugins;
        plugins.loadFolder("", "prog");
        QVERIFY(QDir::setCurrent(before));
        QVERIFY(plugins.loaded().isEmpty());
        QCOMPARE(plugins.problems().size(), 1);
    }

    void tellsAFolderThatCannotBeRead()
    {
        const bool isRoot = ::geteuid() == 0; // who may read any
        QVERIFY(QFile::setPermissions(_folder->path(), QFile::Permissions()));
        if (isRoot)
            QCOMPARE(::setresuid(65534, 65534, 0), 0);
        Client::Plugins plugins;
        plugins.loadFolder(_folder->path(), "prog");
        if (isRoot)
            QCOMPARE(::setresuid(0, 0, 0), 0);
        QVERIFY(QFile::setPermissions(_folder->path(), QFile::ReadOwner | QFile::ExeOwner));
        QVERIFY(plugins.problems().value(0).contains("can't be read"));
    }

private:
    QScopedPointer<QTemporaryDir> _folder;
};

QTEST_GUILESS_MAIN(PluginsTest)
#include "tst_plugins.moc"
