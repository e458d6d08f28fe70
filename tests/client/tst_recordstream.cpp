// SPDX-License-Identifier: LGPL-3.0-or-later

#include "core/seedbytes.h"
#include "seedrecord.h"

#include <tellarix/client/io/recordformat.h>
#include <tellarix/client/io/recordstream.h>
#include <tellarix/core/records/formats/sac.h>

#include <QtTest>

#include <future>
#include <tuple>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Tellarix;
using Tellarix::IO::RecordStream;
using Tellarix::IO::RecordStreamPtr;
using Tellarix::IO::StreamMessage;

namespace {
Core::Time time(const char *iso)
{
    return Core::Time::FromString(iso);
}

Core::TimeWindow window(const char *start, const char *end)
{
    return Core::TimeWindow(time(start), time(end));
}

QByteArray seed(const char *id, const char *start, int count = 100)
{
    return seedRecord(id, time(start), count);
}

QByteArray sac(int count)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    std::string error;
    Formats::writeSac(buffer,
                      Record(StreamCodes::FromID("XX.SAC..BHZ"), time("2024-03-01T00:00:00Z"), 20,
                             new FloatArray(count, std::vector<float>(size_t(count)).data())),
                      error);
    return bytes;
}

/** A version 3 record without samples, 40 bytes long. */
QByteArray emptyRecord()
{
    Seed3 record;
    record.identifier.clear();
    record.payload.clear();
    record.sampleCount = 0;
    return record.bytes();
}

/** The most memory that the process has had so far, in bytes. */
int64_t peakMemory()
{
    rusage usage;
    ::getrusage(RUSAGE_SELF, &usage);
    return int64_t(usage.ru_maxrss) * 1024;
}

/** One record of as many samples as there are bytes; begin() wants an x among them. */
class ByteReader : public IO::RecordReader
{
public:
    explicit ByteReader(IO::RecordInput &input) : _input(input) {}

    bool begin(std::string &cause) override
    {
        while (_input.readBehind(_bytes, 3)) {
        }
        cause = "no x";
        return _bytes.find('x') != std::string::npos;
    }
    RecordPtr next() override
    {
        if (_bytes.empty())
            return RecordPtr();
        const std::string bytes = std::exchange(_bytes, std::string());
        return new Record(StreamCodes::FromID("XX.B..BHZ"), time("2024-01-01"), 1,
                          new CharArray(int(bytes.size()), bytes.data()));
    }

private:
    IO::RecordInput &_input;
    std::string _bytes;
};

QString isoStart(const Record &record)
{
    return QString::fromStdString(record.startTime().toString("%Y-%m-%dT%H:%M:%S"));
}

} // namespace

class TestRecordStream : public QObject
{
    Q_OBJECT

private slots:
    void closesFilesOfArchives()
    {
        QByteArray damaged = seed("XX.A..HHZ", "2024-01-01T12:00:00Z");
        damaged[52] = 31;
        write("2024/XX/A/HHZ.D/XX.A..HHZ.D.2024.001", damaged.repeated(10));
        const RecordStreamPtr reader = stream("archive://" + _directory->path().toStdString());
        int messages = 0;
        reader->setMessageHandler([&](const StreamMessage &) {
            ++messages;
            reader->close();
        });

        QVERIFY(reader->open());
        QVERIFY(!reader->next());
        QCOMPARE(messages, 1);
    }

    void init()
    {
        _directory.reset(new QTemporaryDir);
        QVERIFY(_directory->isValid());
        _messages.clear();
    }

    void refusesSources()
    {
        QByteArray uneven = sac(10);
        uneven[105 * 4] = 0;
        write("empty", QByteArray());
        write("text", "hello");
        write("uneven", uneven);
        // Others of these names change nothing, neither while they are there nor when they go.
        const auto makeNothing = [] { return RecordStreamPtr(); };
        const IO::RecordStreamScheme nothing("nothing", makeNothing);
        const IO::RecordStreamScheme second("file", makeNothing);
        {
            const IO::RecordStreamScheme gone("archive", makeNothing);
        }
        QStringList known;
        for (const std::string &scheme : RecordStream::Schemes())
            known << QString::fromStdString(scheme);
        QVERIFY(known.contains("archive") && known.contains("nothing"));
        const std::pair<QString, QString> rows[] = {
            {"file://%1/none", "%1/none: No such file or directory"},
            {"file://%1", "%1: is a directory"},
            {"%1/empty", "%1/empty: file is empty"},
            {"archive://%1/none", "%1/none: No such file or directory"},
            {"archive://%1/empty", "%1/empty: is not a directory"},
            {"archive://%1?type=X", "%1: unknown type \"X\" of day files"},
            {"%1/text", "%1/text: neither miniSEED nor SAC"},
            {"%1/uneven", "%1/uneven: SAC file is not evenly spaced"},
            {"foo://bar", "Unknown record stream scheme \"foo\" (known: " + known.join(", ") + ")"},
            {"nothing://", "No record stream could be made for the scheme \"nothing\""},
        };
        for (const auto &[url, expected] : rows) {
            std::string error;
            const RecordStreamPtr stream = RecordStream::Create(
                QString(url).replace("%1", _directory->path()).toStdString(), &error);
            if (stream && !stream->open())
                error = stream->errorString();
            QCOMPARE(QString::fromStdString(error).toLower(),
                     QString(expected).replace("%1", _directory->path()).toLower());
        }
    }

    void recipesListAllSchemes()
    {
        QFile page(NORVU_SOURCE_DIR "/docs/extending.md");
        QVERIFY(page.open(QIODevice::ReadOnly));
        const QByteArray text = page.readAll();
        for (const std::string &scheme : RecordStream::Schemes()) {
            // One line stands for all that are cached.
            const bool isListed = text.contains('`' + QByteArray::fromStdString(scheme) + "://");
            QVERIFY2(isListed || scheme.rfind("cached+", 0) == 0, scheme.c_str());
        }
    }

    void readsOfferedFormats()
    {
        const std::string known = write("known", "bytes with x in them");
        const std::string searched = write("searched", QByteArray(5000, 'y') + "x");
        const std::string foreign = write("foreign", "yy");
        const auto makeReader = [](IO::RecordInput &input) {
            return std::make_unique<ByteReader>(input);
        };
        const auto isBytes = [](std::string_view bytes) { return bytes.substr(0, 5) == "bytes"; };
        {
            const IO::RecordFormatOffer offer(
                {"bytes", {}, 5, isBytes, makeReader, IO::RecordFormat::Search::BehindDamage});
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression("\"none\" is not offered"));
            const IO::RecordFormatOffer unread({"none", {}, 1, isBytes, nullptr});
            const std::pair<std::string, int> rows[] = {{known, 20}, {searched, 5001}};
            for (const auto &[file, count] : rows) {
                const RecordStreamPtr reader = stream(file);
                QVERIFY2(reader->open(), reader->errorString().c_str());
                const RecordPtr record = reader->next();
                QCOMPARE(record ? record->sampleCount() : 0, count);
                QVERIFY(!reader->next());
            }
            QVERIFY(readAll(*stream(foreign)).first().endsWith("neither miniSEED, SAC nor bytes"));
        }
        QVERIFY(readAll(*stream(known)).first().endsWith("neither miniSEED nor SAC"));
    }

    void deliversRequestedRecords()
    {
        const QString a0 = "XX.A..BHZ 2024-01-01T00:00:00";
        const QString a1 = "XX.A..BHZ 2024-01-01T01:00:00";
        const QString b0 = "XX.B.00.BHN 2024-01-01T00:00:00";
        const QString b1 = "XX.B.00.BHN 2024-01-01T01:00:00";
        const QString log = "YY.A..LOG 2024-01-01T00:30:00";
        // Codes and, it may be, a window of each request.
        using Requests = QVector<QVector<const char *>>;
        const std::tuple<Requests, Core::TimeWindow, QStringList> rows[] = {
            {{}, {}, {a0, b0, log, a1, b1}},
            {{{"XX", "*", "--", "BH?"}}, {}, {a0, a1}},
            {{{"*", "?", "*", "BH?"}}, {}, {a0, b0, a1, b1}},
            // A window that begins with the end of a record.
            {{}, window("2024-01-01T00:01:40Z", "2024-01-01T01:00:00Z"), {log}},
            // A record without an end at the start of the window.
            {{}, window("2024-01-01T00:30:00Z", "2024-01-01T00:30:01Z"), {log}},
            {{{"XX", "A", "*", "*", "2024-01-01T00:50:00Z", "2024-01-02"}, {"XX", "B", "*", "*"}},
             window("2024-01-01", "2024-01-01T00:10:00Z"),
             {b0, a1}},
        };
        QByteArray text;
        QBuffer buffer(&text);
        buffer.open(QIODevice::WriteOnly);
        Formats::MiniSeedWriter(&buffer).write(Record(StreamCodes::FromID("YY.A..LOG"),
                                                      time("2024-01-01T00:30:00Z"), 0,
                                                      new CharArray(5, "hello")));
        const std::string file =
            write("file", seed("XX.A..BHZ", "2024-01-01T00:00:00Z") +
                              seed("XX.B.00.BHN", "2024-01-01T00:00:00Z") + text +
                              seed("XX.A..BHZ", "2024-01-01T01:00:00Z") +
                              seed("XX.B.00.BHN", "2024-01-01T01:00:00Z"));
        for (const auto &[requests, common, records] : rows) {
            const RecordStreamPtr reader = stream(file);
            reader->setTimeWindow(common);
            for (const auto &codes : requests)
                reader->addStream(codes[0], codes[1], codes[2], codes[3],
                                  codes.size() > 4 ? window(codes[4], codes[5])
                                                   : Core::TimeWindow());
            QCOMPARE(readAll(*reader), records);
            QCOMPARE(_messages, QStringList());
            QCOMPARE(reader->progress(), 1.0);
        }
    }

    void tellsWhatIsDamaged()
    {
        const QByteArray sound = seed("XX.A..BHZ", "2024-01-01T00:00:00Z");
        QByteArray encoding = sound;
        encoding[52] = 31;
        QByteArray empty = sound;
        empty[30] = empty[31] = 0;
        const std::tuple<QByteArray, int, QString> rows[] = {
            {QByteArray(700000, 'x') + sound + sound, 2, "byte 0: 700000 bytes that are no record"},
            {sound + encoding + sound, 2, "byte 512: XX.A..BHZ: unsupported encoding 31"},
            {sound + empty + sound, 2, "byte 512: XX.A..BHZ: record has no samples (note)"},
            {sac(100).left(632 + 42), 1, "byte 0: file is cut off: it holds 10 of 100 samples"},
            {sac(10) + QByteArray(700000, 'x'), 1, "byte 672: 700000 bytes that belong to nothing"},
        };
        for (const auto &[bytes, records, message] : rows) {
            _messages.clear();
            QCOMPARE(readAll(*stream(write("file", bytes))).size(), records);
            QCOMPARE(_messages, QStringList("file: " + message));
        }
    }

    void takesNoMemoryForWhatIsMissing()
    {
        const std::pair<QByteArray, QString> rows[] = {
            {changed<int32_t>(sac(1).left(632), 79 * 4, 1 << 27),
             "file: byte 0: file is cut off: it holds 0 of 134217728 samples"},
            {changed<uint32_t>(emptyRecord(), 36, 130000000),
             "file: byte 0: record of 130000040 bytes is cut off after 40 bytes"},
        };
        for (const auto &[bytes, message] : rows) {
            _messages.clear();
            const int64_t before = peakMemory();
            QCOMPARE(readAll(*stream(write("file", bytes))), QStringList());
            QVERIFY(peakMemory() - before < 32 * 1024 * 1024);
            QCOMPARE(_messages, QStringList(message));
        }
    }

    void tellsSoManyThingsAtMost()
    {
        const QByteArray damaged =
            QByteArray(seed("XX.A..BHZ", "2024-01-01T00:00:00Z")).replace(52, 1, QByteArray(1, 31));
        readAll(*stream(write("file", emptyRecord().repeated(2000) + damaged.repeated(5))));

        QCOMPARE(_messages.size(), 1001);
        QCOMPARE(_messages.last(), QString("file: 1005 further messages, of which 5 tell of "
                                           "something that could not be read"));
    }

    void readsLongFilesAgain()
    {
        // Long enough for several threads, which must keep records and messages in order.
        constexpr int Records = 9000;
        const QByteArray bytesOfTwo = seed("XX.A..BHZ", "2024-01-01T00:00:00Z") +
                                      seed("XX.B..BHZ", "2024-01-01T00:00:00Z", 90);
        QByteArray bytes = bytesOfTwo.repeated(Records / 2);
        // Records that straddle the blocks of reading, and a damaged one in the midst of them.
        bytes.insert(700 * 512, QByteArray(13, 'x'));
        const RecordStreamPtr reader = stream(write("file", bytes));

        QVERIFY(reader->open());
        QVERIFY(reader->next());
        reader->close();
        QVERIFY(!reader->next());
        QVERIFY(reader->open());
        int count = 0;
        while (const RecordPtr next = reader->next()) {
            QCOMPARE(reader->originOffset(), int64_t(count * 512 + (count >= 700 ? 13 : 0)));
            QCOMPARE(next->sampleCount(), count % 2 ? 90 : 100);
            QCOMPARE(next->stationCode(), std::string(count % 2 ? "B" : "A"));
            QCOMPARE(_messages.size(), count >= 700 ? 1 : 0);
            ++count;
        }
        QCOMPARE(count, Records);
        QCOMPARE(_messages, QStringList("file: byte 358400: 13 bytes that are no record"));
    }

    void deliversFromPipesAtOnceUntilClosed()
    {
        const std::string bytes = seed("XX.A..BHZ", "2024-01-01T00:00:00Z").toStdString();
        const QByteArray name = QFile::encodeName(path("pipe"));
        QCOMPARE(::mkfifo(name.constData(), 0600), 0);
        const RecordStreamPtr reader = stream(name.toStdString());
        QVERIFY(reader->open());
        const int pipe = ::open(name.constData(), O_WRONLY);
        QVERIFY(pipe >= 0);

        // The pipe stays open: a reader that waited for more would never come back.
        for (int i = 0; i < 2; ++i) {
            auto record = std::async(std::launch::async, [&] { return reader->next(); });
            QCOMPARE(::write(pipe, bytes.data(), 200), ssize_t(200));
            QCOMPARE(record.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
            QCOMPARE(::write(pipe, bytes.data() + 200, 312), ssize_t(312));
            const bool inTime =
                record.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
            if (!inTime)
                reader->close();
            QVERIFY(inTime);
            QCOMPARE(record.get()->sampleCount(), 100);
        }

        auto blocked = std::async(std::launch::async, [&] { return reader->next(); });
        QCOMPARE(blocked.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
        reader->close();
        QCOMPARE(blocked.wait_for(std::chrono::seconds(10)), std::future_status::ready);
        QVERIFY(!blocked.get());
        ::close(pipe);
        QCOMPARE(_messages, QStringList());
    }

    void readsDayFiles()
    {
        write("2023/XX/A/HHZ.D/XX.A..HHZ.D.2023.365", seed("XX.A..HHZ", "2023-12-31T23:59:00Z"));
        write("2024/XX/A/HHZ.D/XX.A..HHZ.D.2024.060", seed("XX.A..HHZ", "2024-02-29T12:00:00Z"));
        write("2024/XX/B/HHZ.D/XX.B.00.HHZ.D.2024.001",
              seed("XX.B.00.HHZ", "2024-01-01T12:00:00Z"));
        write("2024/XX/B/LOG.L/XX.B.00.LOG.L.2024.001",
              seed("XX.B.00.LOG", "2024-01-01T12:00:00Z"));
        write("2024/XX/B/HHZ.D/notes.txt", "not a day file");
        write("readme", "not a year");
        const QString a1 = "XX.A..HHZ 2023-12-31T23:59:00";
        const QString a3 = "XX.A..HHZ 2024-02-29T12:00:00";
        const QString b2 = "XX.B.00.HHZ 2024-01-01T12:00:00";
        const std::tuple<const char *, Core::TimeWindow, QStringList> rows[] = {
            {"*", Core::TimeWindow(), {a1, a3, b2}},
            // A record that runs past midnight and the year.
            {"*", window("2024-01-01T00:00:00Z", "2024-01-01T00:10:00Z"), {a1}},
            {"*", window("2024-02-29", "2024-03-01"), {a3}},
            {"*", window("2024-03-01", "2024-03-02"), {}},
            {"--", window("2024-01-01", "2024-12-31"), {a1, a3}},
        };
        for (const auto &[location, common, records] : rows) {
            const RecordStreamPtr reader = stream("archive://" + _directory->path().toStdString());
            reader->setTimeWindow(common);
            reader->addStream("XX", "*", location, "HHZ");
            QCOMPARE(readAll(*reader), records);
            QCOMPARE(_messages, QStringList());
        }
    }

    void goesOnAfterBrokenDayFiles()
    {
        const QByteArray sound = seed("XX.A..HHZ", "2024-01-03T12:00:00Z");
        const QString folder = "2024/XX/A/HHZ.D/XX.A..HHZ.D.2024.00";
        write(folder + '1', QByteArray());
        write(folder + '2', "nonsense");
        write(folder + '3', sound + sound.left(77));
        write(folder + '4', seed("XX.B..HHZ", "2024-01-04T13:00:00Z") +
                                seed("XX.A..HHZ", "2024-01-04T12:00:00Z"));
        // Nobody writes to it: reading would take for ever.
        QCOMPARE(::mkfifo(QFile::encodeName(path(folder + '5')).constData(), 0600), 0);

        const RecordStreamPtr reader = stream("archive://" + _directory->path().toStdString());
        reader->addStream("XX", "A", "*", "*");

        QCOMPARE(readAll(*reader),
                 QStringList({"XX.A..HHZ 2024-01-03T12:00:00", "XX.A..HHZ 2024-01-04T12:00:00"}));
        QCOMPARE(
            _messages,
            QStringList({folder + "1: file is empty", folder + "2: neither miniSEED nor SAC",
                         folder + "3: byte 512: record of 512 bytes is cut off after 77 bytes",
                         folder + "4: byte 0: file holds records of XX.B..HHZ, which are skipped",
                         folder + "5: is not a regular file"}));
    }

private:
    QString path(const QString &name) const { return _directory->filePath(name); }

    std::string write(const QString &name, const QByteArray &bytes) const
    {
        QDir().mkpath(QFileInfo(path(name)).path());
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("Can't write %s", qPrintable(name));
        return path(name).toStdString();
    }

    RecordStreamPtr stream(const std::string &url)
    {
        std::string error;
        const RecordStreamPtr stream = RecordStream::Create(url, &error);
        if (!stream)
            qFatal("%s", error.c_str());
        stream->setMessageHandler([this](const StreamMessage &message) {
            QString text = QString::fromStdString(message.text()).remove(_directory->path() + '/');
            if (message.severity == StreamMessage::Severity::Note)
                text += " (note)";
            _messages << text;
        });
        return stream;
    }

    /** Ids and start times of all that a stream delivers. */
    QStringList readAll(RecordStream &stream)
    {
        QStringList records;
        if (!stream.open()) {
            records << QString::fromStdString(stream.errorString());
            return records;
        }
        while (const RecordPtr record = stream.next())
            records << QString::fromStdString(record->streamID()) + ' ' + isoStart(*record);
        return records;
    }

    QScopedPointer<QTemporaryDir> _directory;
    QStringList _messages;
};

QTEST_GUILESS_MAIN(TestRecordStream)

#include "tst_recordstream.moc"
