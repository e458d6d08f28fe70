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
    void leavesOutWhatDoesNotFit()
    {
        const struct
        {
            QString name, cause;
            bool runs;
        } rows[] = {
            {"other", "is made for version 4.2 of the framework, and this is 5.0", false},
            {"nameless", "have no \"name\"", false},
            {"listless", "is no list", false}, // of programs
            {"stranger", "", false},           // to another program
            {"unresolved", "definedNowhere", false},
            {"text", "ELF", false},
            {"link", "not found", false},
            {"refusing", "needs a key", true},
            {"throwing", "out of luck", true},
        };
        for (const auto &[name, cause, runs] : rows) {
            qunsetenv(HasRun);
            const QTemporaryDir folder;
            const QString fileName = folder.filePath(name + ".so");
            QFile file(fileName);
            if (name == "text")
                QVERIFY(file.open(QIODevice::WriteOnly) && file.write(QByteArray(9000, 'x')));
            else if (name == "link")
                QVERIFY(QFile::link("/nowhere/at/all", fileName));
            else
                QVERIFY(QFile::copy(pluginFile(name), fileName));
            file.close();

            Client::Plugins plugins;
            plugins.loadFolder(folder.path(), "prog");
            QVERIFY2(plugins.loaded().isEmpty(), qPrintable(name));
            QVERIFY2(qEnvironmentVariableIsSet(HasRun) == runs, qPrintable(name));
            QVERIFY2(!offersScheme(), qPrintable(name));
            QCOMPARE(plugins.problems().size(), cause.isEmpty() ? 0 : 1);
            const QString told = plugins.problems().join(' ');
            QVERIFY2(cause.isEmpty() || (told.startsWith(fileName + ": ") && told.contains(cause)),
                     qPrintable(told));
        }
    }

    void looksIntoNoNamelessFolder()
    {
        const QTemporaryDir folder;
        QVERIFY(QFile::copy(pluginFile("good"), folder.filePath("good.so")));
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(folder.path()));
        Client::Plugins plugins;
        plugins.loadFolder("", "prog");
        QVERIFY(QDir::setCurrent(before));
        QVERIFY(plugins.loaded().isEmpty());
        QCOMPARE(plugins.problems().size(), 1);
    }

    void tellsAFolderThatCannotBeRead()
    {
        const QTemporaryDir folder;
        const bool isRoot = ::geteuid() == 0; // who may read any
        QVERIFY(QFile::setPermissions(folder.path(), QFile::Permissions()));
        if (isRoot)
            QCOMPARE(::setresuid(65534, 65534, 0), 0);
        Client::Plugins plugins;
        plugins.loadFolder(folder.path(), "prog");
        if (isRoot)
            QCOMPARE(::setresuid(0, 0, 0), 0);
        QVERIFY(QFile::setPermissions(folder.path(), QFile::ReadOwner | QFile::ExeOwner));
        QVERIFY(plugins.problems().value(0).contains("can't be read"));
    }
};

QTEST_GUILESS_MAIN(PluginsTest)
#include "tst_plugins.moc"
