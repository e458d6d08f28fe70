#include <tellarix/core/records/record.h>
#include <tellarix/core/records/typedarray.h>
#include <tellarix/qt/records/recordstreamthread.h>

#include <QMutex>
#include <QSignalSpy>
#include <QWaitCondition>
#include <QtTest>

#include <atomic>
#include <memory>
#include <stdexcept>

using namespace Tellarix;
using Tellarix::Gui::RecordStreamThread;

namespace {

const StreamCodesCPtr Codes(new StreamCodes("GE", "APE", "", "BHZ"));

RecordPtr makeRecord(int number, int samples = 4)
{
    ArrayPtr data(new TypedArray<int>(samples));
    return RecordPtr(new Record(Codes, Core::Time::FromUSecs(number * 1000000LL), 4, data));
}

int numberOf(const Record *record)
{
    return static_cast<int>(record->startTime().seconds());
}

/** What the next stream does, and what became of it. */
struct Behaviour
{
    int samples{4};
    int faults{0};
    bool blocksBehindLast{false};
    bool failsToOpen{false};
    bool throws{false};
    bool keepsRecords{false};
    std::vector<RecordPtr> kept;
    std::atomic<int> produced{0};
    Core::TimeWindow window;
    int streams{0};
};
std::unique_ptr<Behaviour> behaviour;

/** A source "test://COUNT" of numbered records. */
class TestStream : public IO::RecordStream
{
public:
    bool setSource(const std::string &source) override
    {
        _left = std::atoi(source.c_str());
        return _left >= 0 || fail("test: a count is never negative");
    }

    bool open() override
    {
        behaviour->window = requestedWindow();
        behaviour->streams = static_cast<int>(requests().size());
        if (behaviour->failsToOpen)
            return fail("test: closed on Sundays");
        for (int i = 0; i < behaviour->faults; ++i)
            report({IO::StreamMessage::Severity::Fault, "test", i, "broken"});
        return true;
    }

    RecordPtr next() override
    {
        QMutexLocker lock(&_mutex);
        if (behaviour->throws)
            throw std::runtime_error("out of paper");
        while (_left == 0 && behaviour->blocksBehindLast && !_closed)
            _wake.wait(&_mutex);
        if (_left == 0 || _closed)
            return nullptr;
        --_left;
        const RecordPtr record = makeRecord(behaviour->produced++, behaviour->samples);
        if (behaviour->keepsRecords)
            behaviour->kept.push_back(record);
        return record;
    }

    void close() override
    {
        QMutexLocker lock(&_mutex);
        _closed = true;
        _wake.wakeAll();
    }

    double progress() const override { return 0.25; }

private:
    QMutex _mutex;
    QWaitCondition _wake;
    int _left{0};
    bool _closed{false};
};

const IO::RecordStreamScheme TestScheme("test", [] { return IO::RecordStreamPtr(new TestStream); });

} // namespace

/** Takes records as applications do. */
class Receiver : public QObject
{
    Q_OBJECT

public:
    QVector<int> numbers;
    std::function<void()> reaction;

public slots:
    void take(Tellarix::Record *pointer)
    {
        const RecordPtr record(pointer, false);
        numbers.append(numberOf(record.get()));
        if (reaction)
            reaction();
    }
};

class RecordStreamThreadTest : public QObject
{
    Q_OBJECT

private:
    static QVector<int> firstNumbers(int count)
    {
        QVector<int> result;
        for (int i = 0; i < count; ++i)
            result.append(i);
        return result;
    }
    static void attach(RecordStreamThread &thread, Receiver &receiver)
    {
        QVERIFY(QObject::connect(&thread, SIGNAL(receivedRecord(Tellarix::Record *)), &receiver,
                                 SLOT(take(Tellarix::Record *))));
    }

private slots:
    void init() { behaviour = std::make_unique<Behaviour>(); }

    void deliversInOrderAndFinishesBehindTheLast_data()
    {
        QTest::addColumn<int>("count");
        QTest::newRow("none") << 0;
        QTest::newRow("one") << 1;
        QTest::newRow("many times the queue") << 50000;
    }
    void deliversInOrderAndFinishesBehindTheLast()
    {
        QFETCH(int, count);
        RecordStreamThread thread("test://" + std::to_string(count));
        Receiver receiver;
        attach(thread, receiver);
        // Called in the reader's thread, at the moment when it says that it has finished.
        std::atomic<int> takenAtEnd{-1};
        QObject::connect(
            &thread, &QThread::finished, &thread, [&] { takenAtEnd = receiver.numbers.size(); },
            Qt::DirectConnection);

        QVERIFY(thread.connect());
        thread.start();
        QTRY_VERIFY_WITH_TIMEOUT(thread.isFinished(), 20000);
        QCOMPARE(takenAtEnd.load(), count);
        QCOMPARE(receiver.numbers, firstNumbers(count));
        QCOMPARE(thread.progress(), 0.25);
    }

    void countsReferencesExactly_data()
    {
        QTest::addColumn<int>("receivers");
        for (int i = 0; i <= 2; ++i)
            QTest::addRow("%d receivers", i) << i;
    }
    void countsReferencesExactly()
    {
        QFETCH(int, receivers);
        behaviour->keepsRecords = true;
        RecordStreamThread thread("test://20");
        QVector<RecordPtr> adopted;
        for (int i = 0; i < receivers; ++i)
            QObject::connect(&thread, &RecordStreamThread::receivedRecord, this,
                             [&](Record *record) { adopted.append(RecordPtr(record, false)); });

        QVERIFY(thread.connect());
        thread.start();
        QTRY_VERIFY(thread.isFinished());
        QCOMPARE(adopted.size(), 20 * receivers);
        QCOMPARE(behaviour->kept.size(), size_t(20));
        for (const RecordPtr &record : behaviour->kept)
            QCOMPARE(int(record->use_count()), 1 + receivers);
        adopted.clear();
        for (const RecordPtr &record : behaviour->kept)
            QCOMPARE(int(record->use_count()), 1);
    }

    void waitsForSlowOwner_data()
    {
        QTest::addColumn<int>("samples");
        QTest::addColumn<int>("least");
        QTest::addColumn<int>("most");
        QTest::newRow("many records") << 4 << 4096 << 4097;
        QTest::newRow("large records") << 1000000 << 15 << 18;
    }
    void waitsForSlowOwner()
    {
        QFETCH(int, samples);
        QFETCH(int, least);
        QFETCH(int, most);
        behaviour->samples = samples;
        RecordStreamThread thread("test://10000");
        QVERIFY(thread.connect());
        thread.start();

        // Without an event loop nobody takes anything: the reader fills the queue and pauses.
        int before = -1;
        while (before != behaviour->produced || before < least) {
            before = behaviour->produced;
            QThread::msleep(50);
        }
        QVERIFY2(before >= least && before <= most, QByteArray::number(before));
        thread.stop(true);
    }

    void leavesRoomForOtherEvents()
    {
        RecordStreamThread thread("test://2000");
        Receiver receiver;
        attach(thread, receiver);
        receiver.reaction = [] { QThread::usleep(200); };
        int ticks = 0;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, this, [&] { ++ticks; });

        QVERIFY(thread.connect());
        timer.start(5);
        thread.start();
        QTRY_COMPARE_WITH_TIMEOUT(receiver.numbers.size(), 2000, 20000);
        QVERIFY2(ticks > 10, QByteArray::number(ticks));
    }

    void stopsAtOnce_data()
    {
        QTest::addColumn<bool>("blocked");
        QTest::newRow("while next() is blocked") << true;
        QTest::newRow("while the queue is full") << false;
    }
    void stopsAtOnce()
    {
        QFETCH(bool, blocked);
        behaviour->blocksBehindLast = true;
        const int count = blocked ? 10 : 5000;
        RecordStreamThread thread("test://" + std::to_string(count));
        Receiver receiver;
        attach(thread, receiver);
        QVERIFY(thread.connect());
        thread.start();
        if (blocked)
            QTRY_COMPARE(receiver.numbers.size(), 10);
        else
            QThread::msleep(50);

        QElapsedTimer elapsed;
        elapsed.start();
        thread.stop(true);
        QVERIFY(thread.isFinished());
        QVERIFY(elapsed.elapsed() < 2000);

        // What still waited is gone, and a further stop does nothing.
        const int taken = receiver.numbers.size();
        thread.stop(true);
        QCoreApplication::processEvents();
        QCOMPARE(receiver.numbers.size(), taken);
    }

    void canBeStoppedByReceiver()
    {
        RecordStreamThread thread("test://50000");
        Receiver receiver;
        attach(thread, receiver);
        receiver.reaction = [&] {
            if (receiver.numbers.size() == 100)
                thread.stop(true);
        };
        QVERIFY(thread.connect());
        thread.start();
        QTRY_VERIFY(thread.isFinished());
        QCOMPARE(receiver.numbers, firstNumbers(100));
    }

    void canBeDeletedByReceiver()
    {
        auto *thread = new RecordStreamThread("test://5000");
        Receiver receiver;
        attach(*thread, receiver);
        receiver.reaction = [&] { delete thread; };
        QVERIFY(thread->connect());
        thread->start();
        QTRY_COMPARE(receiver.numbers.size(), 1);
        QCoreApplication::processEvents();
        QCOMPARE(receiver.numbers.size(), 1);
    }

    void startsAgain()
    {
        RecordStreamThread thread("test://100");
        Receiver receiver;
        attach(thread, receiver);
        const Core::TimeWindow window(Core::Time(2024, 1, 1), Core::Time(2024, 1, 2));
        for (int round = 1; round <= 3; ++round) {
            behaviour->produced = 0;
            receiver.numbers.clear();
            QVERIFY(thread.connect());
            if (round == 1) {
                thread.setTimeWindow(window);
                QVERIFY(thread.addStream("GE", "APE", "", "BHZ"));
            }
            thread.start();
            QTRY_VERIFY(thread.isFinished());
            QCOMPARE(receiver.numbers, firstNumbers(100));
            QCOMPARE(behaviour->streams, round == 1 ? 1 : 0);
            QCOMPARE(behaviour->window, round == 1 ? window : Core::TimeWindow());
            thread.stop(true);
        }
    }

    void tellsWhyItCannotConnect_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("part");
        QTest::newRow("unknown scheme") << "nowhere://x"
                                        << "nowhere";
        QTest::newRow("bad source") << "test://-1"
                                    << "never negative";
        QTest::newRow("missing file") << "file:///no/such/file"
                                      << "/no/such/file";
    }
    void tellsWhyItCannotConnect()
    {
        QFETCH(QString, url);
        QFETCH(QString, part);
        RecordStreamThread thread(url.toStdString());
        QVERIFY(!thread.connect());
        QVERIFY2(thread.errorString().contains(part), qPrintable(thread.errorString()));
        QVERIFY(!thread.addStream("GE", "APE", "", "BHZ"));

        // Started nevertheless it ends with a message.
        thread.start();
        QTRY_VERIFY(thread.isFinished());
        QCOMPARE(thread.messages().size(), 1);
        QVERIFY(thread.messages().first().contains(url));
    }

    void reportsFailuresOfRunningStream_data()
    {
        QTest::addColumn<bool>("opens");
        QTest::addColumn<QString>("message");
        QTest::newRow("can't be opened") << false << "test: closed on Sundays";
        QTest::newRow("throws") << true << "test://5: out of paper";
    }
    void reportsFailuresOfRunningStream()
    {
        QFETCH(bool, opens);
        QFETCH(QString, message);
        behaviour->failsToOpen = !opens;
        behaviour->throws = true;
        RecordStreamThread thread("test://5");
        QSignalSpy messages(&thread, &RecordStreamThread::messageReceived);
        QVERIFY(thread.connect());
        thread.start();
        QTRY_VERIFY(thread.isFinished());
        QCOMPARE(thread.messages(), QStringList{message});
        QTRY_COMPARE(messages.size(), 1);
        QVERIFY(messages[0][1].toBool());
    }

    void boundsMessages()
    {
        behaviour->faults = 5000;
        RecordStreamThread thread("test://1");
        QVERIFY(thread.connect());
        thread.start();
        QTRY_VERIFY(thread.isFinished());
        QCOMPARE(thread.messages().size(), 1001);
        QCOMPARE(thread.messages().first(), QStringLiteral("test: byte 0: broken"));
        QVERIFY(thread.messages().last().contains("4000"));
    }
};

QTEST_MAIN(RecordStreamThreadTest)
#include "tst_recordstreamthread.moc"
