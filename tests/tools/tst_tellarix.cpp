// SPDX-License-Identifier: LGPL-3.0-or-later

#include "toolrun.h"

#include <tellarix/core/records/formats/miniseedwriter.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/records/typedarray.h>

#include <QDir>
#include <QFile>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

using namespace Tellarix;

namespace {
const Core::Time Begin(2024, 5, 17, 10);

/** A stream of README.md of the recordings, as `--json` tells it. */
QJsonObject figures(const QRegularExpressionMatch &match, double rate)
{
    const auto number = [&](const char *name) -> QJsonValue {
        const QString text = match.captured(name);
        return text == "-" ? QJsonValue(QJsonValue::Null) : QJsonValue(text.toDouble());
    };
    return {
        {"id", match.captured("id")},
        {"records", number("records")},
        {"samples", number("samples")},
        {"rate", rate},
        {"start", match.captured("start")},
        {"end", match.captured("end")},
        {"gaps", std::max(0, match.captured("segments").toInt() - 1)},
        {"overlaps", 0},
        {"min", number("min")},
        {"max", number("max")},
        {"mean", number("mean")},
    };
}

} // namespace

class TestTellarix : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY2(QFile::exists(program()), qPrintable(program()));

        QFile file(path("two.mseed"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        Formats::MiniSeedWriter writer(&file);
        const auto write = [&](const char *id, double start, std::vector<int> samples) {
            const RecordPtr record =
                new Record(StreamCodes::FromID(id), Begin + Core::TimeSpan(start), 2,
                           new IntArray(static_cast<int>(samples.size()), samples.data()));
            QVERIFY(writer.write(*record));
        };
        write("XD.ZEL..HHZ", 0, {-3, 4, 8, 2});
        write("XD.ALB.00.HHN", 0, {1, 2});
        write("XD.ZEL..HHZ", 10, {0, 1});
    }

    void rejectsWrongUsage()
    {
        const QString file = path("two.mseed");
        const std::pair<QStringList, QString> rows[] = {
            {{}, "no command"},
            {{"recrods"}, "recrods"},
            {{"records", "--jsn", file}, "jsn"},
            {{"records"}, "no file"},
            {{"records", "--streams", "XD.ALB..HHZ,A.B.C", file}, "A.B.C"},
            {{"records", "--from", "yesterday", file}, "yesterday"},
            {{"records", "--to", "", file}, "--to"},
            {{"records", "--from", "2024-05-17", "--to", "2024-05-17", file}, "2024-05-17"},
            {{"demo"}, "no folder"},
        };
        for (const auto &[arguments, named] : rows) {
            const Run result = run(arguments);
            QCOMPARE(result.status, 2);
            QVERIFY2(result.errors.contains(named), qPrintable(result.errors));
            QCOMPARE(result.output, QString());
        }
    }

    void tellsStreamsAsJson()
    {
        const Run result = run({"records", "--json", path("two.mseed")});
        QCOMPARE(result.status, 0);
        QCOMPARE(result.errors, QString());
        const QJsonObject expected{{"id", "XD.ZEL..HHZ"},
                                   {"records", 2},
                                   {"samples", 6},
                                   {"rate", 2},
                                   {"start", "2024-05-17T10:00:00.000000Z"},
                                   {"end", "2024-05-17T10:00:10.500000Z"},
                                   {"gaps", 1},
                                   {"overlaps", 0},
                                   {"min", -3},
                                   {"max", 8},
                                   {"mean", 2}};
        QCOMPARE(result.json().size(), 2);
        QCOMPARE(result.json()[1].toObject(), expected);
        QVERIFY2(result.output.contains("\"min\": -3,"), qPrintable(result.output));
    }

    void tellsStreamsAsAlignedTable()
    {
        const Run result = run({"records", "file://" + path("two.mseed")});
        QCOMPARE(result.status, 0);
        const QStringList lines = result.output.trimmed().split('\n');
        QCOMPARE(lines.size(), 3);
        for (const QString &line : lines)
            QCOMPARE(line.size(), lines.first().size());
        QCOMPARE(
            lines[1].split(' ', Qt::SkipEmptyParts),
            QString("XD.ALB.00.HHN 1 2 2 2024-05-17T10:00:00.000000Z 2024-05-17T10:00:00.500000Z "
                    "0 0 1 2 1.5")
                .split(' '));
    }

    void limitsStreamsAndTimes()
    {
        const QString alb = "XD.ALB.00.HHN";
        const QString zel = "XD.ZEL..HHZ";
        const struct
        {
            QStringList options;
            QStringList ids;
            int samples;
        } rows[] = {
            {{"--streams", "XX.*.*.*, XD.A*.0?.*"}, {alb}, 2},
            {{"--streams", "XD.ZEL.00.HHZ"}, {}, 0},
            {{"--from", "2024-05-17T10:00:05"}, {zel}, 2},
            {{"--to", "2024-05-17T10:00:05"}, {alb, zel}, 6},
        };
        for (const auto &row : rows) {
            const Run result = run(QStringList{"records", "--json"} + row.options +
                                   QStringList(path("two.mseed")));
            QCOMPARE(result.status, 0);
            QStringList ids;
            int samples = 0;
            for (const QJsonValue &stream : result.json()) {
                ids.append(stream["id"].toString());
                samples += stream["samples"].toInt();
            }
            QCOMPARE(ids, row.ids);
            QCOMPARE(samples, row.samples);
        }
    }

    void readsOnBehindFaults()
    {
        QVERIFY(QFile::copy(path("two.mseed"), path("cut.mseed")));
        QVERIFY(QFile::resize(path("cut.mseed"), 1100));
        const std::pair<QString, QString> rows[] = {{path("missing.mseed"), "missing.mseed: "},
                                                    {"gopher://host/x", "gopher"},
                                                    {path("cut.mseed"), "cut.mseed: byte 1024: "}};
        for (const auto &[source, named] : rows) {
            const Run result = run({"records", "--json", source, path("two.mseed")});
            QCOMPARE(result.status, 1);
            QVERIFY2(result.errors.contains(named), qPrintable(result.errors));
            int records = 0;
            for (const QJsonValue &stream : result.json())
                records += stream["records"].toInt();
            QCOMPARE(records, 3);
        }
    }

    void interruptEndsReading()
    {
        QProcess writer;
        QProcess process;
        writer.setStandardOutputProcess(&process);
        writer.start("sh", {"-c", QString("cat '%1'; exec sleep 60").arg(path("two.mseed"))});
        process.start(program(), {"records", "--json", "file://-"});
        QVERIFY(process.waitForStarted());
        QVERIFY(!process.waitForFinished(500));

        QCOMPARE(::kill(static_cast<pid_t>(process.processId()), SIGINT), 0);
        QVERIFY(process.waitForFinished(10000));
        QCOMPARE(process.exitCode(), 128 + SIGINT);
        const QByteArray output = process.readAllStandardOutput();
        QCOMPARE(QJsonDocument::fromJson(output).array().size(), 2);
        writer.kill();
        writer.waitForFinished();
    }

    void agreesWithPublishedFigures()
    {
        const QString data = QString::fromLocal8Bit(qgetenv("NORVU_TEST_DATA"));
        QFile readme(data + "/README.md");
        if (data.isEmpty() || !readme.open(QIODevice::ReadOnly))
            QSKIP("NORVU_TEST_DATA names no folder of recordings");

        const QRegularExpression fileLine("^- \\*\\*(mseed/\\S+)\\*\\*");
        const QRegularExpression streamLine(
            "`(?<id>[^`]+)`: (?<records>\\d+) rec, (?<samples>\\d+) samples, (?:(?<rate>\\d+) "
            "Hz.*, )?"
            "(?<start>\\S+Z) to (?<end>\\S+Z), min (?<min>\\S+), max (?<max>\\S+), mean "
            "(?<mean>[^\\s,]+)"
            "(?:, (?<segments>\\d+) segments)?");
        QMap<QString, QMap<QString, QJsonObject>> expected;
        QString file;
        while (!readme.atEnd()) {
            const QString line = QString::fromUtf8(readme.readLine());
            if (fileLine.match(line).hasMatch())
                file = fileLine.match(line).captured(1);
            const QRegularExpressionMatch match = streamLine.match(line);
            if (!match.hasMatch() || !file.startsWith("mseed/"))
                continue;
            const QJsonObject stream = figures(match, match.captured("rate").toDouble());
            expected[file][stream["id"].toString()] = stream;
        }
        QVERIFY(expected.size() >= 9);

        for (auto item = expected.cbegin(); item != expected.cend(); ++item) {
            const QJsonArray found = run({"records", "--json", data + '/' + item.key()}).json();
            QCOMPARE(found.size(), item->size());
            for (const QJsonValue &value : found) {
                QJsonObject stream = value.toObject();
                QJsonObject figure = item->value(stream["id"].toString());
                if (!figure["mean"].isNull()) {
                    const double mean = figure["mean"].toDouble();
                    QVERIFY(std::abs(stream["mean"].toDouble() - mean) <= 5E-9 * std::abs(mean));
                    stream.remove("mean");
                    figure.remove("mean");
                }
                if (figure["rate"].toDouble() == 0 && !figure["min"].isNull())
                    figure["rate"] = stream["rate"];
                QCOMPARE(stream, figure);
            }
        }
    }

    void writesDemonstration()
    {
        const QString folder = path("new/demo");
        const Run result = run({"demo", folder});
        QVERIFY2(result.status == 0, qPrintable(result.errors));
        const QStringList files = QDir(folder).entryList({"*.mseed"});
        QCOMPARE(files.size(), 20);
        for (const QString &file : files)
            QVERIFY(result.output.contains(folder + '/' + file));

        const QString impossible = path("two.mseed") + "/demo";
        const Run failed = run({"demo", impossible});
        QCOMPARE(failed.status, 1);
        QVERIFY2(failed.errors.contains(impossible), qPrintable(failed.errors));
    }

private:
    QString path(const QString &name) const { return _folder.filePath(name); }

    QTemporaryDir _folder;
};

QTEST_GUILESS_MAIN(TestTellarix)
#include "tst_tellarix.moc"
