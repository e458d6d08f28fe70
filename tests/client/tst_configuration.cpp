// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/configuration.h>

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using Tellarix::Client::Configuration;

class TestConfiguration : public QObject
{
    Q_OBJECT

private slots:
    void laterLayersWinKeyByKey()
    {
        const QString first = file("first.ini", "[a]\nx=file1\ny=file1\nz=file1\n");
        const QString second = file("second.ini", "[a]\nx=file2\ny=file2\n");

        Configuration configuration;
        configuration.setOverride("a/x", "flag");
        QVERIFY(configuration.readFile(first));
        QVERIFY(configuration.readFile(second));
        configuration.setDefault("a/z", "default");
        configuration.setDefault("a/d", "default");

        QCOMPARE(configuration.string("a/x"), QString("flag"));
        QCOMPARE(configuration.string("a/y"), QString("file2"));
        QCOMPARE(configuration.string("a/z"), QString("file1"));
        QCOMPARE(configuration.string("a/d"), QString("default"));
        QCOMPARE(configuration.keys(), QStringList({"a/d", "a/x", "a/y", "a/z"}));
        QCOMPARE(configuration.origin("a/y"), second);
        QCOMPARE(configuration.origin("a/x"), QString("command line"));
        QVERIFY(!configuration.value("a/unknown").isValid());
    }

    void readsFileValues()
    {
        const std::pair<QByteArray, QString> rows[] = {
            {"v=https://host/q?a=1,2", "https://host/q?a=1,2"},
            {"v=Z\xc3\xbcrich", QString::fromUtf8("Zürich")},
            {"v=", ""},
            {"v=1\nv=2", "2"},
            {"v=a;b ; c#d", "a;b ; c#d"},
            {"  ; v=1\r\n;[x]\r\nv= ;a;\r\n#v=2;", ";a;"},
            {"v=\"a;b\";c\\\";d, e;f", "a;b;c\";d,e;f"},
            {"v=a;\\\r\n b;c\nw=1", "a; b;c"},
            {"v=\"a\n;b\"\nw=;", "a\n;b"}};
        for (const auto &[line, expected] : rows) {
            Configuration configuration;
            QVERIFY(configuration.readFile(file("value.ini", "[k]\n" + line + '\n')));
            QVERIFY(configuration.contains("k/v"));
            QCOMPARE(configuration.string("k/v"), expected);
        }
    }

    void numbersAreReadWhole()
    {
        const struct
        {
            QVariant value;
            bool isNumber, isInteger, isBoolean;
        } rows[] = {{"12", true, true, false},     {"1.5", true, false, false},
                    {"12 s", false, false, false}, {QStringList{"1", "2"}, false, false, false},
                    {"", false, false, false},     {"on", false, false, true},
                    {2.5, true, false, false}};
        for (const auto &row : rows) {
            Configuration configuration;
            configuration.setDefault("k", row.value);
            double number = -7;
            int integer = -7;
            bool truth = false;
            QCOMPARE(configuration.number("k", number), row.isNumber);
            QCOMPARE(number != -7, row.isNumber);
            QCOMPARE(configuration.integer("k", integer), row.isInteger);
            QCOMPARE(configuration.boolean("k", truth), row.isBoolean);
        }
    }

    void brokenFilesChangeNothing()
    {
        for (const QString &fileName :
             {_folder.filePath("missing.ini"), _folder.path(),
              file("broken.ini", "[a]\nx=new\nthis line says nothing\n")}) {
            Configuration configuration;
            QVERIFY(configuration.readFile(file("good.ini", "[a]\nx=old\n")));
            QString error;
            QVERIFY(!configuration.readFile(fileName, &error));
            QVERIFY2(error.startsWith(fileName + ": "), qPrintable(error));
            QCOMPARE(configuration.string("a/x"), QString("old"));
        }
    }

    void namesValueOfWrongType()
    {
        Configuration schema;
        schema.setDefault("a/count", "integer");
        schema.setDefault("a/unset", "number");
        schema.setDefault("a/name", "text");
        Configuration configuration;
        configuration.setDefault("a/name", "5");
        QVERIFY(configuration.readFile(file("types.ini", "[a]\ncount=3\n")));
        QVERIFY(configuration.conformsTo(schema));

        const QString fileName = file("wrong.ini", "[a]\ncount=many\n");
        QVERIFY(configuration.readFile(fileName));
        QString error;
        QVERIFY(!configuration.conformsTo(schema, &error));
        for (const QString &part : {fileName, QString("a/count"), QString("many")})
            QVERIFY2(error.contains(part), qPrintable(error));
    }

private:
    QString file(const QString &name, const QByteArray &content)
    {
        QFile target(_folder.filePath(name));
        if (!target.open(QIODevice::WriteOnly) || target.write(content) != content.size())
            qFatal("can't write %s", qPrintable(target.fileName()));
        return target.fileName();
    }

    QTemporaryDir _folder;
};

QTEST_GUILESS_MAIN(TestConfiguration)
#include "tst_configuration.moc"
