// SPDX-License-Identifier: LGPL-3.0-or-later

#include <QtTest>

namespace {
/** A part of the source tree and what it must not include. */
struct Layer
{
    QString folder;
    QString forbidden; /**< folders below "libs" or "apps/workbench", or of the project; with "|" */
    bool knowsWindows; /**< may include QtGui and QtWidgets */
};

const Layer Layers[] = {
    {"libs/tellarix/core", "tellarix/client|tellarix/qt|norvu|apps|tools", false},
    {"libs/tellarix/client", "tellarix/qt|norvu|apps|tools", false},
    {"libs/tellarix/qt", "norvu|apps|tools", true},
    {"libs/norvu", "apps|tools", true},
    {"tools/tellarix", "tellarix/qt|norvu|apps", false},
    {"tools/guidepage", "tellarix|norvu|apps", true},
    {"apps", "tools", true},
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
    const QRegularExpression folders(
        QStringLiteral("^(libs/|apps/workbench/)?(%1)/").arg(layer.forbidden));
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

QStringList wrongIncludes(const Layer &layer)
{
    const QDir root(QStringLiteral(NORVU_SOURCE_DIR));
    QDirIterator sources(root.filePath(layer.folder), {"*.h", "*.hpp", "*.cpp"}, QDir::Files,
                         QDirIterator::Subdirectories);
    QStringList wrong;
    if (!sources.hasNext())
        wrong << layer.folder + " is empty";
    while (sources.hasNext()) {
        QFile file(sources.next());
        if (!file.open(QIODevice::ReadOnly))
            wrong << file.fileName() + ": " + file.errorString();
        wrong += wrongIncludes(layer, root.relativeFilePath(file.fileName()), file.readAll());
    }
    return wrong;
}

} // namespace

/** Includes point one way: core <- client <- qt <- norvu <- apps, and client <- tools. */
class LayersTest : public QObject
{
    Q_OBJECT

private slots:
    void includesPointOneWay()
    {
        QCOMPARE(wrongIncludes(Layers[0], "libs/tellarix/core/a.h", "\n  # include \"../qt/b.h\"")
                     .size(),
                 1);
        QCOMPARE(wrongIncludes(Layers[1], "libs/tellarix/client/a.h", "#include <QColor>").size(),
                 1);
        QStringList wrong;
        for (const Layer &layer : Layers)
            wrong += wrongIncludes(layer);
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join('\n')));
    }

    /** Panels of the workbench share a bench, and only panels.cpp knows all of them. */
    void panelsDoNotKnowEachOther()
    {
        const QDir workbench(QStringLiteral(NORVU_SOURCE_DIR "/apps/workbench"));
        QStringList panels = workbench.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        QVERIFY(panels.removeOne("bench") && panels.size() > 1);
        QCOMPARE(wrongIncludes({"", "map|jobs", true}, "apps/workbench/bench/a.h",
                               "#include \"map/a.h\"\n#include \"../jobs/a.h\"\n"
                               "#include <tellarix/qt/map/a.h>")
                     .size(),
                 2);
        QStringList wrong = wrongIncludes({"apps/workbench/bench", panels.join('|'), true});
        for (const QString &panel : panels) {
            QStringList others = panels;
            others.removeOne(panel);
            wrong += wrongIncludes({"apps/workbench/" + panel, others.join('|'), true});
        }
        for (const QString &name : workbench.entryList({"*.h", "*.cpp"}, QDir::Files)) {
            QFile file(workbench.filePath(name));
            QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.errorString()));
            if (name != "panels.cpp")
                wrong += wrongIncludes({"", panels.join('|'), true}, "apps/workbench/" + name,
                                       file.readAll());
        }
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join('\n')));
    }
};

QTEST_APPLESS_MAIN(LayersTest)
#include "tst_layers.moc"
