#include <QDirIterator>
#include <QFile>
#include <QLibraryInfo>
#include <QRegularExpression>
#include <QtTest>

namespace {

/** A part of the source tree and what it must not include. */
struct Layer
{
    const char *folder;
    const char *forbidden; /**< regular expression on paths below "libs" or the project's folder */
    bool knowsWindows;     /**< may include QtGui and QtWidgets */
};

constexpr Layer Layers[] = {
    {"libs/tellarix/core", "tellarix/client|tellarix/qt|norvu|apps|tools", false},
    {"libs/tellarix/client", "tellarix/qt|norvu|apps|tools", false},
    {"libs/tellarix/qt", "norvu|apps|tools", true},
    {"libs/norvu", "apps|tools", true},
};

const Layer *layerOf(const QString &folder)
{
    const auto found = std::find_if(std::begin(Layers), std::end(Layers), [&](const Layer &layer) {
        return folder == QLatin1String(layer.folder);
    });
    return found == std::end(Layers) ? nullptr : found;
}

bool isOfWindows(const QString &path)
{
    const QDir headers(QLibraryInfo::location(QLibraryInfo::HeadersPath));
    for (const QString module : {"QtGui", "QtWidgets", "QtSvg", "QtPrintSupport"}) {
        if (path.startsWith(module + '/') || headers.exists(module + '/' + path))
            return true;
    }
    return false;
}

bool isForbidden(const Layer &layer, const QString &path)
{
    const QRegularExpression folders(QStringLiteral("(^|/)(%1)/").arg(layer.forbidden));
    return folders.match(path).hasMatch() || (!layer.knowsWindows && isOfWindows(path));
}

/** The lines of a source that include what the layer must not, as "name:line: path". */
QStringList wrongIncludes(const Layer &layer, const QString &name, const QString &source)
{
    static const QRegularExpression include(QStringLiteral("^\\s*#\\s*include\\s*[<\"]([^>\"]+)"));

    QStringList wrong;
    const QStringList lines = source.split('\n');
    for (int i = 0; i < lines.size(); ++i) {
        QString path = include.match(lines[i]).captured(1);
        if (path.startsWith('.'))
            path = QDir::cleanPath(QFileInfo(name).path() + '/' + path);
        if (!path.isEmpty() && isForbidden(layer, path))
            wrong << QStringLiteral("%1:%2: %3").arg(name).arg(i + 1).arg(path);
    }
    return wrong;
}

} // namespace

/** Includes point one way: core <- client <- qt <- norvu <- programs. */
class LayersTest : public QObject
{
    Q_OBJECT

private slots:
    void noticesWrongIncludes_data();
    void noticesWrongIncludes();
    void includesPointOneWay_data();
    void includesPointOneWay();
};

void LayersTest::noticesWrongIncludes_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("line");
    QTest::addColumn<bool>("isWrong");

    const auto row = [](const char *folder, const char *line, bool isWrong) {
        QTest::addRow("%s: %s", folder, line) << QString(folder) << QString(line) << isWrong;
    };
    row("libs/tellarix/core", "#include <tellarix/client/application.h>", true);
    row("libs/tellarix/core", "  # include \"../qt/scheme.h\"", true);
    row("libs/tellarix/core", "#include <tellarix/core/time.h>", false);
    row("libs/tellarix/core", "#include <QtGui/QColor>", true);
    row("libs/tellarix/core", "#include <QColor>", true);
    row("libs/tellarix/core", "#include <QCoreApplication>", false);
    row("libs/tellarix/core", "// #include <QColor>", false);
    row("libs/tellarix/client", "#include <tellarix/qt/scheme.h>", true);
    row("libs/tellarix/client", "#include <QtWidgets/qapplication.h>", true);
    row("libs/tellarix/client", "#include <tellarix/core/time.h>", false);
    row("libs/tellarix/qt", "#include \"norvu/gui/trace.h\"", true);
    row("libs/tellarix/qt", "#include \"scheme_norvu.h\"", false);
    row("libs/tellarix/qt", "#include <QWidget>", false);
    row("libs/norvu", "#include <apps/workbench/mainwindow.h>", true);
}

void LayersTest::noticesWrongIncludes()
{
    QFETCH(QString, folder);
    QFETCH(QString, line);
    QFETCH(bool, isWrong);
    const Layer *layer = layerOf(folder);
    QVERIFY(layer);
    const QString name = folder + "/time.h";
    const QString found = wrongIncludes(*layer, name, "\n" + line).value(0);
    QCOMPARE(found.startsWith(name + ":2: "), isWrong);
    QCOMPARE(found.isEmpty(), !isWrong);
}

void LayersTest::includesPointOneWay_data()
{
    QTest::addColumn<QString>("folder");
    for (const Layer &layer : Layers)
        QTest::newRow(layer.folder) << QString(layer.folder);
}

void LayersTest::includesPointOneWay()
{
    QFETCH(QString, folder);
    const QDir root(QStringLiteral(NORVU_SOURCE_DIR));
    const Layer *layer = layerOf(folder);
    QVERIFY(layer);

    int files = 0;
    QStringList wrong;
    QDirIterator sources(root.filePath(folder), {"*.h", "*.hpp", "*.cpp"}, QDir::Files,
                         QDirIterator::Subdirectories);
    while (sources.hasNext()) {
        QFile file(sources.next());
        QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.errorString()));
        wrong += wrongIncludes(*layer, root.relativeFilePath(file.fileName()), file.readAll());
        ++files;
    }
    QVERIFY2(files > 0, "no sources found");
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join('\n')));
}

QTEST_APPLESS_MAIN(LayersTest)
#include "tst_layers.moc"
