#include "traces.h"

#include <norvu/gui/tracefileloader.h>
#include <norvu/gui/traceloader.h>

#include <tellarix/client/io/recordstream.h>
#include <tellarix/core/records/formats/miniseedwriter.h>
#include <tellarix/core/records/timewindowbuffer.h>

#include <QMessageBox>
#include <QProgressDialog>
#include <QTemporaryDir>
#include <QTimer>

#include <atomic>
#include <condition_variable>
#include <mutex>

using namespace Norvu::Gui;
using namespace Traces;
using Tellarix::RecordPtr;

namespace {

/** Delivers the records that the test lays out and waits behind them if it is told to. */
class FakeStream : public Tellarix::IO::RecordStream
{
public:
    static std::vector<RecordPtr> records;
    static QStringList streams;
    static Tellarix::Core::TimeWindow window;
    static std::atomic<bool> waits;
    static std::atomic<bool> isOpen;

    bool setSource(const std::string &source) override
    {
        return source == "unreachable" ? fail("no such host") : true;
    }
    bool addStream(const std::string &network, const std::string &station,
                   const std::string &location, const std::string &channel,
                   const Tellarix::Core::TimeWindow &) override
    {
        streams << QString::fromStdString(network + "/" + station + "/" + location + "/" + channel);
        return true;
    }
    bool open() override
    {
        isOpen = true;
        return true;
    }
    RecordPtr next() override
    {
        window = requestedWindow();
        if (_index < records.size())
            return records[_index++];

        std::unique_lock<std::mutex> lock(_mutex);
        _closed.wait(lock, [this] { return _isClosed || !waits; });
        return nullptr;
    }
    void close() override
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        _isClosed = true;
        isOpen = false;
        _closed.notify_all();
    }

private:
    size_t _index{0};
    std::mutex _mutex;
    std::condition_variable _closed;
    bool _isClosed{false};
};

std::vector<RecordPtr> FakeStream::records;
QStringList FakeStream::streams;
Tellarix::Core::TimeWindow FakeStream::window;
std::atomic<bool> FakeStream::waits{false};
std::atomic<bool> FakeStream::isOpen{false};

const Tellarix::IO::RecordStreamScheme FakeScheme("fake", [] {
    return Tellarix::IO::RecordStreamPtr(new FakeStream);
});

QList<QColor> colors(const TraceView &view)
{
    QList<QColor> result;
    for (const Trace *row : view.items())
        result << row->color();
    return result;
}

/** Text of the message box that @p action brings up. */
template <typename Action>
QString messageOf(Action action)
{
    QString text;
    QTimer::singleShot(0, [&text] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box)
            return;
        text = box->windowTitle() + ": " + box->text();
        box->accept();
    });
    action();
    return text;
}

/** Makes a condition and a deed of the modal run: the deed is done as soon as the condition holds.
 */
template <typename Condition, typename Deed>
void whenLoading(QObject *context, Condition condition, Deed deed)
{
    auto *timer = new QTimer(context);
    QObject::connect(timer, &QTimer::timeout, context, [=] {
        auto *dialog = qobject_cast<QProgressDialog *>(QApplication::activeModalWidget());
        if (!dialog || !condition())
            return;
        timer->stop();
        deed(dialog);
    });
    timer->start(5);
}

} // namespace

class TraceLoaderTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void loadsBoundStreams();
    void putsRecordsIntoSlotOfBinding();
    void putsRecordsIntoTargetSlot();
    void leavesRequestedRowsAlone();
    void warnsOfInvalidStreamIds();
    void emptyViewIsLoadedAtOnce();
    void tellsWhatCanNotBeConnected();
    void showsProgressAndEndsByCancel();
    void dropsRecordsWithoutEnd();
    void releasesRecords();
    void readsFileIntoNewRows();
    void fileRowsNeedTargetSlot();
    void tellsWhatCanNotBeOpened();
};

void TraceLoaderTest::init()
{
    FakeStream::records.clear();
    FakeStream::streams.clear();
    FakeStream::waits = false;
}

void TraceLoaderTest::loadsBoundStreams()
{
    TraceView view;
    view.setItems({makeRow("A"), makeRow("B"), makeRow("unbound")});
    view.bindItem("XX.A.00.BHZ", view.itemAt(0), 0);
    view.bindItem("XX.B..BHZ", view.itemAt(1), 0);
    FakeStream::records = {makeRecord("XX.A.00.BHZ", 0, 10), makeRecord("XX.unknown..BHZ", 0, 10),
                           makeRecord("XX.A.00.BHZ", 10, 20), makeRecord("XX.A.00.BHZ", 200, 210)};

    TraceLoader loader("fake://");
    QVERIFY(loader.load(&view, window(0, 100)));
    QCOMPARE(FakeStream::streams, QStringList({"XX/A/00/BHZ", "XX/B//BHZ"}));
    QVERIFY(FakeStream::window == window(0, 100));
    QVERIFY(view.itemAt(0)->recordWidget()->records(0)->timeWindow() == window(0, 20));
    QVERIFY(view.itemAt(1)->recordWidget()->records(0)->isEmpty());
    QCOMPARE(colors(view), QList<QColor>({Qt::green, Qt::red, Qt::red}));
    QCOMPARE(view.emptyDataSlots(), 3);
    QVERIFY(!loader.wasCancelled());

    FakeStream::records = {makeRecord("XX.B..BHZ", 0, 10)};
    QVERIFY(loader.load(&view, window(0, 100)));
    QCOMPARE(colors(view), QList<QColor>({Qt::red, Qt::green, Qt::red}));
}

void TraceLoaderTest::putsRecordsIntoSlotOfBinding()
{
    TraceView view;
    view.addItem(makeRow("A"));
    view.bindItem("XX.A..BHZ", view.itemAt(0), 0);
    view.bindItem("XX.A..BHE", view.itemAt(0), 2);
    FakeStream::records = {makeRecord("XX.A..BHE", 0, 10), makeRecord("XX.A..BHZ", 20, 30)};

    TraceLoader loader("fake://");
    loader.setTargetSlot(-1);
    QVERIFY(loader.load(&view, window(0, 100)));
    const auto *widget = view.itemAt(0)->recordWidget();
    QVERIFY(widget->records(0)->timeWindow() == window(20, 30));
    QVERIFY(widget->records(2)->timeWindow() == window(0, 10));
}

void TraceLoaderTest::putsRecordsIntoTargetSlot()
{
    TraceView view;
    view.addItem(makeRow("A"));
    view.bindItem("XX.A..BHZ", view.itemAt(0), 0);
    view.bindItem("XX.A..BHE", view.itemAt(0), 1);
    FakeStream::records = {makeRecord("XX.A..BHZ", 0, 10), makeRecord("XX.A..BHE", 20, 30)};

    TraceLoader loader("fake://");
    loader.setTargetSlot(1);
    QVERIFY(loader.load(&view, window(0, 100)));
    const auto *widget = view.itemAt(0)->recordWidget();
    QVERIFY(widget->records(0)->isEmpty());
    QVERIFY(widget->records(1)->timeWindow() == window(0, 30));
    QCOMPARE(colors(view), QList<QColor>({Qt::green}));
}

void TraceLoaderTest::leavesRequestedRowsAlone()
{
    TraceView view;
    view.setItems({makeRow("A", makeRecord("XX.A..BHZ", 0, 10)), makeRow("B")});
    view.bindItem("XX.A..BHZ", view.itemAt(0), 0);
    view.bindItem("XX.B..BHZ", view.itemAt(1), 0);
    view.subscribedToData(view.itemAt(0));

    TraceLoader loader("fake://");
    QVERIFY(loader.load(&view, window(0, 100)));
    QCOMPARE(FakeStream::streams, QStringList("XX/B//BHZ"));
    QVERIFY(!view.itemAt(0)->recordWidget()->records(0)->isEmpty());
}

void TraceLoaderTest::warnsOfInvalidStreamIds()
{
    TraceView view;
    view.setItems({makeRow("A"), makeRow("B")});
    view.bindItem("XX.A.BHZ", view.itemAt(0), 0);
    view.bindItem("XX.B..BHZ", view.itemAt(1), 5000);
    QTest::ignoreMessage(QtWarningMsg, "Invalid stream id: XX.A.BHZ");
    QTest::ignoreMessage(QtWarningMsg, "Failed to allocate trace");
    FakeStream::waits = true;
    QList<QColor> waiting;
    whenLoading(
        &view, [] { return FakeStream::isOpen.load(); },
        [&](QProgressDialog *) {
            waiting = colors(view);
            FakeStream::waits = false;
            QApplication::activeModalWidget()->close();
        });

    TraceLoader loader("fake://");
    QVERIFY(loader.load(&view, window(0, 100)));
    QCOMPARE(FakeStream::streams, QStringList());
    QVERIFY(view.itemAt(0)->recordWidget()->records(0)->isEmpty());
    QCOMPARE(waiting, QList<QColor>({Qt::black, Qt::black}));
}

void TraceLoaderTest::emptyViewIsLoadedAtOnce()
{
    TraceView view;
    TraceLoader loader("fake://unreachable");
    QVERIFY(loader.load(&view, window(0, 100)));
}

void TraceLoaderTest::tellsWhatCanNotBeConnected()
{
    TraceView view;
    view.addItem(makeRow("A"));
    view.bindItem("XX.A..BHZ", view.itemAt(0), 0);
    TraceLoader loader("fake://unreachable");
    bool isLoaded = true;
    const QString message = messageOf([&] { isLoaded = loader.load(&view, window(0, 1)); });
    QCOMPARE(message, QString("Error: Could not connect to fake://unreachable"));
    QVERIFY(!isLoaded);
    QCOMPARE(colors(view), QList<QColor>({Qt::black}));
}

void TraceLoaderTest::showsProgressAndEndsByCancel()
{
    TraceView view;
    view.setItems({makeRow("A"), makeRow("B")});
    view.bindItem("XX.A..BHZ", view.itemAt(0), 0);
    view.bindItem("XX.B..BHZ", view.itemAt(1), 0);
    FakeStream::records = {makeRecord("XX.A..BHZ", 0, 10)};
    FakeStream::waits = true;
    TraceLoader loader("fake://");
    QString label;
    QList<QColor> waiting;
    QSignalSpy updates(view.itemAt(1)->recordWidget(),
                       SIGNAL(traceUpdated(Tellarix::Gui::RecordWidget *)));
    QVERIFY(updates.isValid());
    int updateCount = 0;
    whenLoading(
        &view, [&] { return !view.itemAt(0)->recordWidget()->records(0)->isEmpty(); },
        [&](QProgressDialog *dialog) {
            label = dialog->labelText();
            waiting = colors(view);
            // Of two ticks of the clock only the first one finds news.
            updates.clear();
            QMetaObject::invokeMethod(&loader, "timeout");
            QMetaObject::invokeMethod(&loader, "timeout");
            updateCount = updates.count();
            QTest::keyClick(dialog, Qt::Key_Escape);
        });

    QVERIFY(loader.load(&view, window(0, 100)));
    QCOMPARE(label, QString("Loading waveforms"));
    QCOMPARE(updateCount, 1);
    QCOMPARE(waiting, QList<QColor>({Qt::yellow, Qt::yellow}));
    QCOMPARE(colors(view), QList<QColor>({Qt::green, Qt::red}));
    QVERIFY(loader.wasCancelled());
    QVERIFY(!FakeStream::isOpen);
}

void TraceLoaderTest::dropsRecordsWithoutEnd()
{
    TraceView view;
    view.addItem(makeRow("A"));
    view.bindItem("XX.A..BHZ", view.itemAt(0), 0);
    Tellarix::Core::SmartPointer<Tellarix::IntArray> samples(new Tellarix::IntArray(5));
    FakeStream::records = {RecordPtr(
        new Tellarix::Record(Tellarix::StreamCodes::FromID("XX.A..BHZ"), timeAt(0), 0, samples))};
    QVERIFY(!FakeStream::records[0]->hasEndTime());

    TraceLoader loader("fake://");
    QVERIFY(loader.load(&view, window(0, 100)));
    QVERIFY(view.itemAt(0)->recordWidget()->records(0)->isEmpty());
}

void TraceLoaderTest::releasesRecords()
{
    TraceLoader loader("fake://");
    {
        TraceView view;
        view.addItem(makeRow("A"));
        view.bindItem("XX.A..BHZ", view.itemAt(0), 0);
        FakeStream::records = {makeRecord("XX.A..BHZ", 0, 10), makeRecord("XX.B..BHZ", 0, 10)};
        QVERIFY(loader.load(&view, window(0, 100)));
        QCOMPARE(FakeStream::records[0]->use_count(), 2u);
    }
    QCOMPARE(FakeStream::records[0]->use_count(), 1u);
    QCOMPARE(FakeStream::records[1]->use_count(), 1u);
}

void TraceLoaderTest::readsFileIntoNewRows()
{
    QTemporaryDir folder;
    const QString name = folder.filePath("two streams.mseed");
    QFile file(name);
    QVERIFY(file.open(QIODevice::WriteOnly));
    Tellarix::Formats::MiniSeedWriter writer(&file);
    QVERIFY(writer.write(*makeRecord("XX.A.00.BHZ", 1000, 1100)));
    QVERIFY(writer.write(*makeRecord("XX.B..BHN", 1050, 1200)));
    file.write("this is no record");
    file.close();

    TraceView view;
    view.setAlignment(timeAt(1000));
    TraceFileLoader loader(name.toStdString());
    QVERIFY(loader.parent() == nullptr);
    QVERIFY(loader.load(&view, Tellarix::Core::TimeWindow()));
    QCOMPARE(labels(view.items()), QStringList({"XX.A.00.BHZ", "XX.B..BHN"}));
    QCOMPARE(view.itemAt(0)->data(TraceLocationCode).toString(), QString("00"));
    QCOMPARE(view.itemAt(1)->data(TraceChannelCode).toString(), QString("BHN"));
    QVERIFY(view.coveredTimeWindow() == window(1000, 1200));
    QVERIFY(view.itemBoundTo("XX.B..BHN") == view.itemAt(1));
    QCOMPARE(colors(view), QList<QColor>({Qt::green, Qt::green}));
    QVERIFY(view.itemAt(0)->recordWidget()->alignment() == timeAt(1000));
    QCOMPARE(loader.messages().size(), 1);
}

void TraceLoaderTest::fileRowsNeedTargetSlot()
{
    QTemporaryDir folder;
    QFile file(folder.filePath("one.mseed"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(Tellarix::Formats::MiniSeedWriter(&file).write(*makeRecord("XX.A..BHZ", 0, 50)));
    file.close();

    TraceView view;
    TraceFileLoader loader(file.fileName().toStdString());
    loader.setTargetSlot(-1);
    QVERIFY(loader.load(&view, Tellarix::Core::TimeWindow()));
    QCOMPARE(view.count(), 0);

    loader.setTargetSlot(3);
    QVERIFY(loader.load(&view, Tellarix::Core::TimeWindow()));
    QCOMPARE(view.count(), 1);
    QVERIFY(view.itemAt(0)->recordWidget()->records(3) != nullptr);
    QVERIFY(view.itemAt(0)->recordWidget()->records(0) == nullptr);
}

void TraceLoaderTest::tellsWhatCanNotBeOpened()
{
    TraceView view;
    TraceFileLoader loader("/no/such/file.mseed");
    bool isLoaded = true;
    const QString message = messageOf([&] { isLoaded = loader.load(&view, window(0, 1)); });
    QCOMPARE(message, QString("Error: Could not open file:///no/such/file.mseed"));
    QVERIFY(!isLoaded);
}

QTEST_MAIN(TraceLoaderTest)
#include "tst_traceloader.moc"
