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
    void noticesWrongIncludes();
    void includesPointOneWay();
};

void LayersTest::noticesWrongIncludes()
{
    const struct
    {
        int layer;
        const char *line;
        bool isWrong;
    } rows[] = {{0, "#include <tellarix/client/application.h>", true},
                {0, "  # include \"../qt/scheme.h\"", true},
                {0, "#include <tellarix/core/time.h>", false},
                {0, "#include <QColor>", true},
                {0, "#include <QCoreApplication>", false},
                {0, "// #include <QColor>", false},
                {1, "#include <QtWidgets/qapplication.h>", true},
                {2, "#include \"norvu/gui/trace.h\"", true},
                {2, "#include \"scheme_norvu.h\"", false},
                {2, "#include <QWidget>", false}};
    for (const auto &row : rows) {
        const Layer &layer = Layers[row.layer];
        const QString name = QString(layer.folder) + "/time.h";
        const QString found = wrongIncludes(layer, name, QString("\n") + row.line).value(0);
        QVERIFY2(row.isWrong ? found.startsWith(name + ":2: ") : found.isEmpty(), row.line);
    }
}

void LayersTest::includesPointOneWay()
{
    const QDir root(QStringLiteral(NORVU_SOURCE_DIR));
    QStringList wrong;
    for (const Layer &layer : Layers) {
        QDirIterator sources(root.filePath(layer.folder), {"*.h", "*.hpp", "*.cpp"}, QDir::Files,
                             QDirIterator::Subdirectories);
        QVERIFY2(sources.hasNext(), layer.folder);
        while (sources.hasNext()) {
            QFile file(sources.next());
            QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.errorString()));
            wrong += wrongIncludes(layer, root.relativeFilePath(file.fileName()), file.readAll());
        }
    }
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join('\n')));
}

QTEST_APPLESS_MAIN(LayersTest)
#include "tst_layers.moc"
