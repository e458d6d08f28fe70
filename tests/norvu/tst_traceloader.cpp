// SPDX-License-Identifier: LGPL-3.0-or-later

#include "answer.h"
#include "client/fakestream.h"
#include "interference.h"
#include "rowname.h"
#include "traces.h"

#include <norvu/gui/tracefileloader.h>
#include <norvu/gui/traceloader.h>

#include <tellarix/core/records/formats/miniseedwriter.h>
#include <tellarix/core/records/timewindowbuffer.h>
#include <tellarix/qt/records/recordstreamthread.h>

#include <QMessageBox>
#include <QProgressDialog>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTimer>

using namespace Norvu::Gui;
using namespace Traces;
using Tellarix::RecordPtr;

namespace {

/** What "fake://" leads to. */
const std::shared_ptr<FakeSource> source = FakeSource::Named("");

/** Counts the records that it is told of. */
struct CountingWidget : Tellarix::Gui::RecordWidget
{
    void fed(int slot, const Tellarix::Record *record) override
    {
        ++count;
        RecordWidget::fed(slot, record);
    }

    int count{0};
};

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
    const Answer<QMessageBox> answer([&text](QMessageBox &box) {
        text = box.windowTitle() + ": " + box.text();
        box.accept();
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
    void init()
    {
        FakeSource::Make("");
        source->ignoresWindows = true;
    }

    void loadsBoundStreams()
    {
        TraceView view;
        auto *widget = new CountingWidget;
        view.setItems({new Trace("A", widget, Qt::black), makeRow("B"), makeRow("unbound")});
        view.bindItem("XX.A.00.BHZ", view.itemAt(0), 0);
        view.bindItem("XX.B..BHZ", view.itemAt(1), 0);
        source->records = {makeRecord("XX.A.00.BHZ", 0, 10), makeRecord("XX.unknown..BHZ", 0, 10),
                           makeRecord("XX.A.00.BHZ", 10, 20), makeRecord("XX.A.00.BHZ", 200, 210)};

        TraceLoader loader("fake://");
        QVERIFY(loader.load(&view, window(0, 100)));
        QCOMPARE(source->asked, QStringList({"XX.A.00.BHZ 0 100", "XX.B..BHZ 0 100"}));
        QVERIFY(widget->records(0)->timeWindow() == window(0, 20));
        QCOMPARE(widget->count, 3); // also of the one that the sequence didn't take
        QVERIFY(view.itemAt(1)->recordWidget()->records(0)->isEmpty());
        QCOMPARE(colors(view), QList<QColor>({Qt::green, Qt::red, Qt::red}));
        QCOMPARE(view.emptyDataSlots(), 3);
        QVERIFY(!loader.wasCancelled());
    }

    void putsRecordsIntoSlots()
    {
        const std::tuple<const char *, int, Tellarix::Core::TimeWindow, Tellarix::Core::TimeWindow>
            rows[] = {{"of their binding", -1, window(20, 30), window(0, 10)},
                      {"that is the target", 2, Tellarix::Core::TimeWindow(), window(0, 30)}};
        for (const auto &[name, target, first, third] : rows) {
            const RowName shown(name);
            init();
            TraceView view;
            view.setItems({makeRow("A"), makeRow("subscribed")});
            view.bindItem("XX.A..BHZ", view.itemAt(0), 0);
            view.bindItem("XX.A..BHE", view.itemAt(0), 2);
            view.bindItem("XX.S..BHE", view.itemAt(1), 0);
            view.subscribedToData(view.itemAt(1));
            // A record without a rate has no end.
            const Tellarix::RecordPtr endless(
                new Tellarix::Record(Tellarix::StreamCodes::FromID("XX.A..BHZ"), timeAt(0), 0,
                                     new Tellarix::IntArray(5)));
            source->records = {makeRecord("XX.A..BHE", 0, 10), makeRecord("XX.A..BHZ", 20, 30),
                               endless};

            TraceLoader loader("fake://");
            loader.setTargetSlot(target);
            QVERIFY(loader.load(&view, window(0, 100)));
            QCOMPARE(source->asked, QStringList({"XX.A..BHE 0 100", "XX.A..BHZ 0 100"}));
            const auto *widget = view.itemAt(0)->recordWidget();
            const auto windowOf = [widget](int slot) {
                const auto *records = widget->records(slot);
                return records->isEmpty() ? Tellarix::Core::TimeWindow() : records->timeWindow();
            };
            QCOMPARE(windowOf(0), first);
            QCOMPARE(windowOf(2), third);
        }
    }

    void tellsWhatCanNotBeLoaded()
    {
        TraceView view;
        bool isLoaded = true;
        TraceFileLoader fileLoader("/no/such/file.mseed");
        QCOMPARE(messageOf([&] { isLoaded = fileLoader.load(&view, window(0, 1)); }),
                 QString("Error: Could not open file:///no/such/file.mseed"));
        QVERIFY(!isLoaded);

        QTemporaryFile file;
        QVERIFY(file.open() && file.write(QByteArray(5000, 'x')) == 5000 && file.flush());
        TraceFileLoader otherFormat(file.fileName().toStdString());
        QCOMPARE(
            messageOf([&] { isLoaded = otherFormat.load(&view, Tellarix::Core::TimeWindow()); }),
            "Error: Could not open file://" + file.fileName());
        QVERIFY(!isLoaded);

        TraceLoader loader("fake://refused");
        QVERIFY(loader.load(&view, window(0, 1)));
        view.addItem(makeRow("A"));
        view.bindItem("XX.A..BHZ", view.itemAt(0), 0);
        QCOMPARE(messageOf([&] { isLoaded = loader.load(&view, window(0, 1)); }),
                 QString("Error: Could not connect to fake://refused"));
        QVERIFY(!isLoaded);
    }

    void readsNothingWithoutStreamToAskFor()
    {
        TraceView view;
        view.setItems({makeRow("A"), makeRow("B"), makeRow("requested")});
        view.bindItem("XX.A.BHZ", view.itemAt(0), 0);
        view.bindItem("XX.B..BHZ", view.itemAt(1), 5000);
        view.bindItem("XX.R..BHZ", view.itemAt(2), 0);
        view.subscribedToData(view.itemAt(2));
        feed(view.itemAt(2), 0, makeRecord("XX.R..BHZ", 0, 10));
        source->records = {makeRecord("XX.R..BHZ", 10, 20)};
        QTest::ignoreMessage(QtWarningMsg, "Invalid stream id: XX.A.BHZ");
        QTest::ignoreMessage(QtWarningMsg, "Failed to allocate trace");
        TraceLoader loader("fake://");
        QVERIFY(loader.load(&view, window(0, 100)));
        QCOMPARE(source->asked, QStringList());
        QCOMPARE(view.itemAt(2)->recordWidget()->records(0)->size(), 1);
        QCOMPARE(colors(view), QList<QColor>({Qt::red, Qt::red, Qt::green}));
    }

    void showsProgressAndEndsByCancel()
    {
        TraceView view;
        view.setItems({makeRow("A"), makeRow("B")});
        view.bindItem("XX.A..BHZ", view.itemAt(0), 0);
        view.bindItem("XX.B..BHZ", view.itemAt(1), 0);
        source->records = {makeRecord("XX.A..BHZ", 0, 10)};
        source->isLive = true;
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
    }

    void viewAndLoaderMayGoMeanwhile()
    {
        for (const QString goes : {"row", "view", "loader"}) {
            auto *view = new TraceView;
            const QPointer<TraceView> presentView(view);
            view->addItem(makeRow("A"));
            view->bindItem("XX.A..BHZ", view->itemAt(0), 0);
            source->isLive = true;
            auto *loader = new TraceLoader("fake://");
            const QPointer<TraceLoader> presentLoader(loader);
            Interference interference(view->itemAt(0)->recordWidget(),
                                      SIGNAL(traceUpdated(Tellarix::Gui::RecordWidget *)), [&] {
                                          if (goes == "row")
                                              view->clear();
                                      });
            whenLoading(
                qApp, [] { return true; },
                [&](QProgressDialog *dialog) {
                    if (goes == "loader")
                        delete loader;
                    else if (goes == "view")
                        delete view;
                    if (goes != "loader")
                        QTest::keyClick(dialog, Qt::Key_Escape);
                });
            QVERIFY2(loader->load(view, window(0, 100)), qPrintable(goes));
            QVERIFY2(interference.done, qPrintable(goes));
            delete presentLoader;
            delete presentView;
        }
    }

    void newRowMayGoAtOnce()
    {
        struct Loader : TraceFileLoader
        {
            Loader() : TraceFileLoader(new Tellarix::Gui::RecordStreamThread("fake://")) {}
        };
        source->records = {makeRecord("XX.A..BHZ", 0, 10)};
        TraceView view;
        Interference interference(&view, SIGNAL(layoutOrContentChanged()), [&] { view.clear(); });
        QVERIFY(Loader().load(&view, Tellarix::Core::TimeWindow()));
        QVERIFY(interference.done);
        QCOMPARE(view.count(), 0);
    }

    void releasesRecords()
    {
        TraceLoader loader("fake://");
        {
            TraceView view;
            view.addItem(makeRow("A"));
            view.bindItem("XX.A..BHZ", view.itemAt(0), 0);
            source->records = {makeRecord("XX.A..BHZ", 0, 10), makeRecord("XX.B..BHZ", 0, 10)};
            QVERIFY(loader.load(&view, window(0, 100)));
            QCOMPARE(source->records[0]->use_count(), 2u);
        }
        QCOMPARE(source->records[0]->use_count(), 1u);
        QCOMPARE(source->records[1]->use_count(), 1u);
    }

    void readsFileIntoNewRows()
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
        loader.setTargetSlot(-1);
        QVERIFY(loader.load(&view, Tellarix::Core::TimeWindow()));
        QCOMPARE(view.count(), 0);
        loader.setTargetSlot(3);
        QVERIFY(loader.load(&view, Tellarix::Core::TimeWindow()));
        QCOMPARE(labels(view.items()), QStringList({"XX.A.00.BHZ", "XX.B..BHN"}));
        QVERIFY(view.itemAt(0)->recordWidget()->records(0) == nullptr);
        QVERIFY(view.itemAt(0)->recordWidget()->records(3) != nullptr);
        QCOMPARE(view.itemAt(1)->data(TraceChannelCode).toString(), QString("BHN"));
        QVERIFY(view.coveredTimeWindow() == window(1000, 1200));
        QVERIFY(view.itemBoundTo("XX.B..BHN") == view.itemAt(1));
        QCOMPARE(colors(view), QList<QColor>({Qt::green, Qt::green}));
        QVERIFY(view.itemAt(0)->recordWidget()->alignment() == timeAt(1000));
        QCOMPARE(loader.messages().size(), 1);
    }
};

QTEST_MAIN(TraceLoaderTest)
#include "tst_traceloader.moc"
