// SPDX-License-Identifier: LGPL-3.0-or-later

#include "fakestream.h"
#include "rowname.h"

#include <tellarix/client/remote/joinedstream.h>
#include <tellarix/core/records/record.h>

#include <QtTest>

#include <future>

using namespace Tellarix;
using Tellarix::IO::RecordStream;
using Tellarix::IO::RecordStreamPtr;

namespace {
const std::string Url = "joined://?past=fake%3A%2F%2Fpast&live=fake%3A%2F%2Flive";

/** A record of a stream: seconds after a base within the last hour, and samples at 1 Hz. */
struct Piece
{
    const char *id;
    int start;
    int count;
};

} // namespace

class TestJoinedStream : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        _past = FakeSource::Make("past");
        _live = FakeSource::Make("live");
        _live->isLive = true;
        _messages.clear();
        _base = Core::Time::FromUSecs(Core::Time::GMT().seconds() * 1000000) - Core::TimeSpan(3000);
    }

    void refusesSources()
    {
        const std::pair<std::string, const char *> rows[] = {
            {"joined://here", "joined://: the sources are given as"},
            {"joined://?past=fake%3A%2F%2Fpast", "joined://: live: no URL given"},
            {"joined://?past=none%3A%2F%2F&live=fake%3A%2F%2Flive", "joined://: past: Unknown"},
            {Url + "&overlap=-1", "joined://: overlap=-1 is no number"},
            {Url + "&colour=red", "joined://: unknown option \"colour\""},
        };
        for (const auto &[url, reason] : rows) {
            std::string error;
            QVERIFY(!RecordStream::Create(url, &error));
            QVERIFY2(QString::fromStdString(error).startsWith(reason), error.c_str());
        }
    }

    void isAsLiveAsItsLiveSource()
    {
        QVERIFY(RecordStream::Create(Url)->isLive());
        QVERIFY(RecordStream::Create("cached://?source=fake%3A%2F%2Flive")->isLive());
        QVERIFY(!RecordStream::Create("cached://?source=fake%3A%2F%2Fpast")->isLive());
    }

    void joinsAtTheSeam()
    {
        using Pieces = QVector<Piece>;
        const char *const a = "XX.A..BHZ";
        const char *const b = "XX.B..BHZ";
        const std::tuple<const char *, Pieces, Pieces, QStringList> rows[] = {
            {"nothing of the past", {}, {{a, 0, 9}}, {"A 0 9"}},
            {"nothing live", {{a, 0, 9}}, {}, {"A 0 9"}},
            {"the same",
             {{a, 0, 9}, {a, 9, 9}},
             {{a, 9, 9}, {a, 18, 9}},
             {"A 0 9", "A 9 9", "A 18 9"}},
            {"parts",
             {{a, 0, 9}, {a, 9, 9}},
             {{a, 0, 3}, {a, 7, 5}, {a, 18, 1}},
             {"A 0 9", "A 9 9", "A 18 1"}},
            {"overlapping, but longer", {{a, 0, 9}}, {{a, 5, 5}, {a, 5, 4}}, {"A 0 9", "A 5 5"}},
            {"gap",
             {{a, 0, 9}, {a, 20, 9}},
             {{a, 8, 13}, {a, 9, 2}},
             {"A 0 9", "A 20 9", "A 8 13", "A 9 2"}},
            {"disordered past",
             {{a, 20, 9}, {a, 0, 9}, {a, 9, 11}},
             {{a, 5, 20}},
             {"A 20 9", "A 0 9", "A 9 11"}},
            {"other stream", {{a, 0, 9}}, {{b, 0, 9}}, {"A 0 9", "B 0 9"}},
            {"doubled by one source",
             {{a, 0, 9}, {a, 0, 9}},
             {{a, 9, 9}, {a, 9, 9}},
             {"A 0 9", "A 0 9", "A 9 9", "A 9 9"}}};
        for (const auto &[name, past, live, records] : rows) {
            const RowName shown(name);
            init();
            _past->isLive = true;
            put(*_live, live);
            const RecordStreamPtr stream = opened();
            // All that is live has come before anything of the past.
            const size_t count = size_t(live.size());
            QTRY_COMPARE(taken(*_live), count);
            put(*_past, past);
            _past->change([](FakeSource &source) { source.isLive = false; });
            _live->change([](FakeSource &source) { source.isLive = false; });
            QCOMPARE(readAll(*stream), records);
            QCOMPARE(_messages, QStringList());
        }
    }

    void asksForTheSeamAgain()
    {
        using Pieces = QVector<Piece>;
        const char *const a = "XX.A..BHZ";
        const char *const b = "XX.B..BHZ";
        const QString brought = "source of the past: has brought what was missing at the seam";
        const QString again = "source of the past: lags behind; XX.A..BHZ from ";
        // It believes at once that there is nothing.
        const QTemporaryDir folder;
        const QString cached =
            "&past=" + QUrl::toPercentEncoding("cached://?source=fake%3A%2F%2Fpast&late=0&folder=" +
                                               folder.path());
        const std::tuple<const char *, QString, Pieces, QStringList, QString> rows[] = {
            {"whole", "", {{a, 1000, 1000}}, {"A 1000 1000"}, brought},
            {"over the borders",
             "",
             {{a, 900, 200}, {a, 1100, 950}},
             {"A 900 200", "A 1100 950"},
             brought},
            {"behind a cache", cached, {{a, 1000, 1000}}, {"A 1000 1000"}, brought},
            {"doubled",
             "",
             {{a, 1000, 500}, {a, 1000, 500}, {b, 1000, 1000}, {a, 1200, 800}},
             {"A 1000 500", "A 1200 800"},
             brought},
            {"in part", "", {{a, 1500, 100}}, {"A 1500 100"}, again},
            {"too old", "&lag=500", {}, {}, "has not come, and is not asked for any more"}};
        for (const auto &[name, options, pieces, records, end] : rows) {
            const RowName shown(name);
            init();
            put(*_past, {{a, 0, 1000}});
            put(*_live, {{a, 2000, 10}, {a, 2010, 10}});
            const RecordStreamPtr stream = made("&overlap=1000&again=0.01" + options.toStdString());
            QVERIFY(stream->open());
            for (const char *record : {"A 0 1000", "A 2000 10", "A 2010 10"})
                QCOMPARE(describe(*stream->next()), QString(record));
            auto next = std::async(std::launch::async, [&] { return stream->next(); });
            QTRY_VERIFY(opens(*_past) > (options.contains("lag") ? 1 : 3));
            put(*_past, pieces);
            for (const QString &record : records) {
                QCOMPARE(describe(*next.get()), record);
                next = std::async(std::launch::async, [&] { return stream->next(); });
            }
            QTRY_VERIFY2(lastMessage().contains(end), qPrintable(lastMessage()));
            const int count = opens(*_past);
            if (end == again)
                QTRY_VERIFY(opens(*_past) > count + 1);
            stream->close();
            QVERIFY(!next.get());
        }
    }

    void dividesWindows()
    {
        const double now = _base.toDouble() + 3000;
        const std::tuple<double, double, QString, QString> rows[] = {
            {-9000, 0, "-9000 3000", "1000 open"},
            {2000, 0, "2000 3000", "2000 open"},
            {-9000, 2500, "-9000 2500", "1000 2500"},
            {-9000, 500, "-9000 500", ""},
            {4000, 5000, "", "4000 5000"},
        };
        for (const auto &[from, to, past, live] : rows) {
            const IO::JoinedWindows windows({at(from), to == 0 ? Core::Time() : at(to)},
                                            Core::Time(now), Core::TimeSpan(2000.0));
            QCOMPARE(windows.hasPast ? text(windows.past) : QString(), past);
            QCOMPARE(windows.hasLive ? text(windows.live) : QString(), live);
        }
    }

    void goesOnWithTheOther()
    {
        const std::tuple<const char *, bool, bool, QString> rows[] = {
            {"past", true, false, "source of the past: no archive"},
            {"live", false, true, "live source: no server"},
            {"both", true, true, ""}};
        for (const auto &[name, pastFails, liveFails, message] : rows) {
            const RowName shown(name);
            init();
            _past->openError = pastFails ? "no archive" : "";
            _live->openError = liveFails ? "no server" : "";
            _live->isLive = false;
            put(*_past, {{"XX.A..BHZ", 0, 9}});
            put(*_live, {{"XX.A..BHZ", 9, 9}});
            if (message.isEmpty()) {
                const RecordStreamPtr stream = made();
                QVERIFY(!stream->open());
                QCOMPARE(stream->errorString(), std::string("no archive; no server"));
                QVERIFY(!stream->next());
                continue;
            }
            QCOMPARE(readAll(*opened()), QStringList(pastFails ? "A 9 9" : "A 0 9"));
            QCOMPARE(_messages, QStringList(message));
        }
    }

    void holdsSoMuchOfWhatIsLive()
    {
        QVector<Piece> pieces;
        QStringList records;
        for (int i = 0; i < 100; ++i) {
            pieces << Piece{"XX.A..BHZ", i * 20, 20};
            records << QStringLiteral("A %1 20").arg(i * 20);
        }
        put(*_live, pieces);
        _live->isLive = false;
        _past->isLive = true;
        const RecordStreamPtr stream = made("&hold=0.003");
        QVERIFY(stream->open());
        QTRY_VERIFY(taken(*_live) >= 4);
        auto first = std::async(std::launch::async, [&] { return stream->next(); });
        QCOMPARE(first.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
        QVERIFY(taken(*_live) < 20);
        _past->change([](FakeSource &source) { source.isLive = false; });
        const QStringList begin(describe(*first.get()));
        QCOMPARE(begin + readAll(*stream), records);
    }

private:
    Core::Time at(double seconds) const { return _base + Core::TimeSpan(seconds); }

    QString text(const Core::TimeWindow &window) const
    {
        const auto seconds = [&](Core::Time time) {
            return time.valid() ? QString::number((time - _base).length()) : QString("open");
        };
        return seconds(window.startTime()) + ' ' + seconds(window.endTime());
    }

    void put(FakeSource &source, const QVector<Piece> &pieces) const
    {
        source.change([&](FakeSource &changed) {
            for (const Piece &piece : pieces)
                changed.records.push_back(fakeRecord(piece.id, at(piece.start), piece.count));
        });
    }

    static size_t taken(FakeSource &source)
    {
        const std::lock_guard<std::mutex> lock(source.mutex);
        return source.opened > 0 && !source.records.empty() ? source.taken : 0;
    }

    static int opens(FakeSource &source)
    {
        const std::lock_guard<std::mutex> lock(source.mutex);
        return source.opened;
    }

    RecordStreamPtr made(const std::string &options = std::string())
    {
        const RecordStreamPtr stream = RecordStream::Create(Url + options);
        stream->addStream("XX", "*", "*", "BHZ", {at(-9000), Core::Time()});
        stream->setMessageHandler([this](const IO::StreamMessage &message) {
            const std::lock_guard<std::mutex> lock(_messagesMutex);
            _messages << QString::fromStdString(message.text());
        });
        return stream;
    }

    RecordStreamPtr opened()
    {
        const RecordStreamPtr stream = made();
        return stream->open() ? stream : nullptr;
    }

    QString describe(const Record &record) const
    {
        return QStringLiteral("%1 %2 %3")
            .arg(record.stationCode().c_str())
            .arg((record.startTime() - _base).length())
            .arg(record.sampleCount());
    }

    QStringList readAll(RecordStream &stream) const
    {
        QStringList records;
        while (const RecordPtr record = stream.next())
            records << describe(*record);
        return records;
    }

    QString lastMessage()
    {
        const std::lock_guard<std::mutex> lock(_messagesMutex);
        return _messages.isEmpty() ? QString() : _messages.last();
    }

    std::shared_ptr<FakeSource> _past;
    std::shared_ptr<FakeSource> _live;
    Core::Time _base;
    std::mutex _messagesMutex;
    QStringList _messages;
};

QTEST_GUILESS_MAIN(TestJoinedStream)
#include "tst_joinedstream.moc"
