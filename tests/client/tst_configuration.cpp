#include <tellarix/client/configuration.h>

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using Tellarix::Client::Configuration;

class TestConfiguration : public QObject
{
    Q_OBJECT

private slots:
    void laterLayersWinKeyByKey();
    void readsFileValues_data();
    void readsFileValues();
    void numbersAreReadWhole_data();
    void numbersAreReadWhole();
    void brokenFilesChangeNothing_data();
    void brokenFilesChangeNothing();
    void namesValueOfWrongType();

private:
    QString file(const QString &name, const QByteArray &content);

    QTemporaryDir _folder;
};

QString TestConfiguration::file(const QString &name, const QByteArray &content)
{
    QFile target(_folder.filePath(name));
    if (!target.open(QIODevice::WriteOnly) || target.write(content) != content.size())
        qFatal("can't write %s", qPrintable(target.fileName()));
    return target.fileName();
}

void TestConfiguration::laterLayersWinKeyByKey()
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

void TestConfiguration::readsFileValues_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("expected");

    QTest::newRow("plain") << QByteArray("[k]\nv=file:///tmp/x.mseed\n") << "file:///tmp/x.mseed";
    QTest::newRow("commas don't make it empty")
        << QByteArray("[k]\nv=https://host/q?a=1,2\n") << "https://host/q?a=1,2";
    QTest::newRow("UTF-8") << QByteArray("[k]\nv=Z\xc3\xbcrich\n") << QString::fromUtf8("Zürich");
    QTest::newRow("empty") << QByteArray("[k]\nv=\n") << "";
    QTest::newRow("later line wins") << QByteArray("[k]\nv=1\nv=2\n") << "2";
}

void TestConfiguration::readsFileValues()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, expected);

    Configuration configuration;
    QVERIFY(configuration.readFile(file("value.ini", content)));
    QVERIFY(configuration.contains("k/v"));
    QCOMPARE(configuration.string("k/v"), expected);
}

void TestConfiguration::numbersAreReadWhole_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("isNumber");
    QTest::addColumn<bool>("isInteger");
    QTest::addColumn<bool>("isBoolean");

    QTest::newRow("integer") << QVariant("12") << true << true << false;
    QTest::newRow("fraction") << QVariant("1.5") << true << false << false;
    QTest::newRow("number with unit") << QVariant("12 s") << false << false << false;
    QTest::newRow("list of numbers") << QVariant(QStringList{"1", "2"}) << false << false << false;
    QTest::newRow("empty") << QVariant("") << false << false << false;
    QTest::newRow("word") << QVariant("on") << false << false << true;
    QTest::newRow("default of its own type") << QVariant(2.5) << true << false << false;
    QTest::newRow("truth") << QVariant(true) << false << false << true;
}

void TestConfiguration::numbersAreReadWhole()
{
    QFETCH(QVariant, value);

    Configuration configuration;
    configuration.setDefault("k", value);
    double number = -7;
    int integer = -7;
    bool truth = false;
    QTEST(configuration.number("k", number), "isNumber");
    QTEST(configuration.integer("k", integer), "isInteger");
    QTEST(configuration.boolean("k", truth), "isBoolean");
    if (!configuration.number("k", number))
        QCOMPARE(number, -7.0);
}

void TestConfiguration::brokenFilesChangeNothing_data()
{
    QTest::addColumn<QString>("fileName");

    QTest::newRow("missing") << _folder.filePath("missing.ini");
    QTest::newRow("folder") << _folder.path();
    QTest::newRow("not an INI file") << file("broken.ini", "[a]\nx=new\nthis line says nothing\n");
}

void TestConfiguration::brokenFilesChangeNothing()
{
    QFETCH(QString, fileName);

    Configuration configuration;
    QVERIFY(configuration.readFile(file("good.ini", "[a]\nx=old\n")));
    QString error;
    QVERIFY(!configuration.readFile(fileName, &error));
    QVERIFY2(error.startsWith(fileName + ": "), qPrintable(error));
    QVERIFY(error.size() > fileName.size() + 5);
    QCOMPARE(configuration.string("a/x"), QString("old"));
}

void TestConfiguration::namesValueOfWrongType()
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

QTEST_GUILESS_MAIN(TestConfiguration)
#include "tst_configuration.moc"
