// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/recordstream.h>
#include <tellarix/client/io/streamrequest.h>
#include <tellarix/core/records/record.h>

#include <QtTest>

using namespace Tellarix;
using namespace Tellarix::IO;

namespace {

/** A stream that writes down what it is asked for. */
class Listener : public RecordStream
{
public:
    bool setSource(const std::string &source) override
    {
        asked = QString::fromStdString(source);
        return true;
    }
    bool addStream(const std::string &network, const std::string &station,
                   const std::string &location, const std::string &channel,
                   const Core::TimeWindow &window) override
    {
        asked += QString::fromStdString(" " + network + "." + station + "." + location + "." +
                                        channel + " " + window.startTime().iso() + " " +
                                        (window.endTime().valid() ? window.endTime().iso() : "-"));
        return true;
    }
    bool open() override { return true; }
    RecordPtr next() override { return RecordPtr(); }
    void close() override {}

    static QString asked;
};

QString Listener::asked;

} // namespace

class TestStreamRequest : public QObject
{
    Q_OBJECT

private slots:
    void readsTimes()
    {
        const Core::Time now(2024, 1, 5, 10, 11, 12);
        const std::pair<const char *, double> cases[] = {
            {"now", 0},        {"-6h", -21600}, {"+1.5d", 129600},
            {"-30min", -1800}, {"-2s", -2},     {"2024-01-05T10:11:13", 1}};
        for (const auto &[text, seconds] : cases) {
            Core::Time time;
            QVERIFY2(relativeTime(text, now, &time), text);
            QCOMPARE((time - now).length(), seconds);
        }
        for (const char *text : {"", "-", "-6", "-6w", "-h", "- 6h", "-1e99d", "-1.2.3h", "-0h",
                                 "-99999999999d", "yesterday"}) {
            Core::Time time = now;
            QVERIFY2(!relativeTime(text, now, &time) && time == now, text);
        }
    }

    void asksStreamsForWhatIsWanted()
    {
        const RecordStreamScheme scheme("listener", [] { return RecordStreamPtr(new Listener); });
        const std::pair<const char *, const char *> cases[] = {
            {"listener://h:1/p#1", "h:1/p#1"},
            {"listener://h#streams=A.B..C,A.*.00.B?Z&from=2024-01-05&to=2024-01-06T01:00:00",
             "h A.B..C 2024-01-05T00:00:00.000000Z 2024-01-06T01:00:00.000000Z "
             "A.*.00.B?Z 2024-01-05T00:00:00.000000Z 2024-01-06T01:00:00.000000Z"},
            {"listener://h#from=2024-01-05", "h *.*.*.* 2024-01-05T00:00:00.000000Z -"}};
        for (const auto &[url, asked] : cases) {
            QVERIFY(RecordStream::Create(url));
            QCOMPARE(Listener::asked.simplified(), QString(asked));
            StreamRequest request;
            std::string error;
            QVERIFY(StreamRequest::parse(url, &request, &error));
            QCOMPARE(request.text(), std::string(url));
        }
        for (const char *part : {"streams=A.B.C", "from=later", "streams=A.B..C&till=now"}) {
            std::string error;
            QVERIFY(!RecordStream::Create(std::string("listener://h#") + part, &error));
            QVERIFY2(!error.empty(), part);
        }
    }
};

QTEST_APPLESS_MAIN(TestStreamRequest)
#include "tst_streamrequest.moc"
