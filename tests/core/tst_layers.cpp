#include <QDirIterator>
#include <QRegularExpression>
#include <QtTest>

namespace {

const QStringList QtGuiModules{"QtGui",  "QtWidgets", "QWidget", "QPainter",     "QPen",
                               "QColor", "QPixmap",   "QImage",  "QApplication", "QGuiApplication"};

QString sourcePath(const QString &path)
{
    return QString(NORVU_SOURCE_DIR) + '/' + path;
}

QStringList forbiddenIncludes(const QString &file, const QStringList &forbidden)
{
    static const QRegularExpression include("^\\s*#\\s*include\\s*[<\"]([^>\"]+)[>\"]");

    QStringList found;
    QFile source(file);
    if (!source.open(QIODevice::ReadOnly))
        return {file + ": can't be read"};
    for (int number = 1; !source.atEnd(); ++number) {
        const QString name = include.match(source.readLine()).captured(1);
        for (const QString &prefix : forbidden) {
            if (name == prefix || name.startsWith(prefix + '/'))
                found.append(QString("%1:%2: %3").arg(file).arg(number).arg(name));
        }
    }
    return found;
}

} // namespace

/** Includes point one way: core <- client <- qt <- norvu <- tools and apps. */
class TestLayers : public QObject
{
    Q_OBJECT

private slots:
    void includesPointOneWay_data();
    void includesPointOneWay();
};

void TestLayers::includesPointOneWay_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QStringList>("forbidden");

    const QStringList programs{"apps", "tools"};
    QTest::newRow("core") << "libs/tellarix/core"
                          << QStringList{"tellarix/client", "tellarix/qt", "norvu"} + programs +
                                 QtGuiModules;
    QTest::newRow("client") << "libs/tellarix/client"
                            << QStringList{"tellarix/qt", "norvu"} + programs + QtGuiModules;
    QTest::newRow("qt") << "libs/tellarix/qt" << QStringList{"norvu"} + programs;
    QTest::newRow("norvu") << "libs/norvu" << programs;
    QTest::newRow("tool") << "tools" << QStringList{"tellarix/qt", "norvu"} + QtGuiModules;
}

void TestLayers::includesPointOneWay()
{
    QFETCH(QString, folder);
    QFETCH(QStringList, forbidden);

    QStringList found;
    int files = 0;
    QDirIterator it(sourcePath(folder), {"*.h", "*.cpp"}, QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        found += forbiddenIncludes(it.next(), forbidden);
        ++files;
    }
    QVERIFY(files > 0);
    QVERIFY2(found.isEmpty(), qPrintable(found.join('\n')));
}

QTEST_GUILESS_MAIN(TestLayers)
#include "tst_layers.moc"
