// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/typedarray.h>
#include <tellarix/qt/records/recordstreamthread.h>

#include <QSignalSpy>
#include <QtTest>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
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
        return true;
    }

    RecordPtr next() override
    {
        std::unique_lock<std::mutex> lock(_mutex);
        if (behaviour->throws)
            throw std::runtime_error("out of paper");
        while (_left == 0 && behaviour->blocksBehindLast && !_closed)
            _wake.wait(lock);
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
        const std::lock_guard<std::mutex> lock(_mutex);
        _closed = true;
        _wake.notify_all();
    }

private:
    std::mutex _mutex;
    std::condition_variable _wake;
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

    void deliversInOrderAndFinishesBehindTheLast()
    {
        for (const int count : {0, 50000}) {
            RecordStreamThread thread("test://" + std::to_string(count));
            Receiver receiver;
            attach(thread, receiver);
            // Called in the reader's thread, at the moment when it says that it has finished.
            std::atomic<int> takenAtEnd{-1};
            QObject::connect(
                &thread, &QThread::finished, &thread, [&] { takenAtEnd = receiver.numbers.size(); },
                Qt::DirectConnection);

            behaviour->produced = 0;
            QVERIFY(thread.connect());
            thread.start();
            QTRY_VERIFY_WITH_TIMEOUT(thread.isFinished(), 20000);
            QCOMPARE(takenAtEnd.load(), count);
            QCOMPARE(receiver.numbers, firstNumbers(count));
        }
    }

    void countsReferencesExactly()
    {
        const std::pair<int, bool> cases[] = {{0, false}, {2, false}, {2, true}};
        for (const auto &[receivers, blocked] : cases) {
            behaviour = std::make_unique<Behaviour>();
            behaviour->keepsRecords = true;
            RecordStreamThread thread("test://20");
            QVector<RecordPtr> adopted;
            for (int i = 0; i < receivers; ++i)
                QObject::connect(&thread, &RecordStreamThread::receivedRecord, this,
                                 [&](Record *record) { adopted.append(RecordPtr(record, false)); });
            thread.blockSignals(blocked);

            QVERIFY(thread.connect());
            thread.start();
            QTRY_VERIFY(thread.isFinished());
            const int taken = blocked ? 0 : receivers;
            QCOMPARE(adopted.size(), 20 * taken);
            for (const RecordPtr &record : behaviour->kept)
                QCOMPARE(int(record->use_count()), 1 + taken);
        }
    }

    void waitsForSlowOwner()
    {
        // Many records or few large ones.
        const int cases[][3] = {{4, 4096, 4097}, {1000000, 15, 18}};
        for (const auto &[samples, least, most] : cases) {
            behaviour = std::make_unique<Behaviour>();
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
    }

    void stopsAtOnce()
    {
        behaviour->blocksBehindLast = true;
        // The stop comes while next() is blocked or while the queue is full.
        for (const int count : {10, 5000}) {
            RecordStreamThread thread("test://" + std::to_string(count));
            Receiver receiver;
            attach(thread, receiver);
            QVERIFY(thread.connect());
            thread.start();
            if (count == 10)
                QTRY_COMPARE(receiver.numbers.size(), 10);
            else
                QThread::msleep(50);

            QElapsedTimer elapsed;
            elapsed.start();
            thread.stop(true);
            QVERIFY(thread.isFinished());
            QVERIFY(elapsed.elapsed() < 2000);

            // What still waited is gone.
            const int taken = receiver.numbers.size();
            QCoreApplication::processEvents();
            QCOMPARE(receiver.numbers.size(), taken);
        }
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
        for (const bool first : {true, false}) {
            behaviour->produced = 0;
            receiver.numbers.clear();
            QVERIFY(thread.connect());
            if (first) {
                thread.setTimeWindow(window);
                QVERIFY(thread.addStream("GE", "APE", "", "BHZ"));
            }
            thread.start();
            QTRY_VERIFY(thread.isFinished());
            QCOMPARE(receiver.numbers, firstNumbers(100));
            QCOMPARE(behaviour->streams, first ? 1 : 0);
            QCOMPARE(behaviour->window, first ? window : Core::TimeWindow());
        }
    }

    void tellsWhyItCannotConnect()
    {
        const QPair<QString, QString> cases[] = {{"nowhere://x", "nowhere"},
                                                 {"test://-1", "never negative"}};
        for (const auto &[url, part] : cases) {
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
    }

    void reportsFailuresOfRunningStream()
    {
        behaviour->throws = true;
        for (const bool opens : {true, false}) {
            behaviour->failsToOpen = !opens;
            RecordStreamThread thread("test://5");
            QSignalSpy messages(&thread, &RecordStreamThread::messageReceived);
            QVERIFY(thread.connect());
            thread.start();
            QTRY_VERIFY(thread.isFinished());
            QCOMPARE(thread.messages(),
                     QStringList{opens ? "test://5: out of paper" : "test: closed on Sundays"});
            QTRY_COMPARE(messages.size(), 1);
            QVERIFY(messages[0][1].toBool());
        }
    }
};

QTEST_MAIN(RecordStreamThreadTest)
#include "tst_recordstreamthread.moc"
