// SPDX-License-Identifier: LGPL-3.0-or-later

#include "traces.h"

#include <QAction>
#include <QToolBar>

using namespace Norvu::Gui;
using namespace Traces;
using Tellarix::Gui::RecordWidget;

namespace {

/** Requests data for its rows and writes down how. */
class RequestingView : public TraceView
{
public:
    using TraceView::TraceView;

    QStringList requests;
    bool isReady{true};

protected:
    bool beginDataRequest() override
    {
        requests << "begin";
        return isReady;
    }
    void requestData(Trace *row) override { requests << row->label(); }
    void endDataRequest() override { requests << "end"; }
};

} // namespace

class TraceViewBindingsTest : public QObject
{
    Q_OBJECT

private slots:
    void bindsOneRowAndSlotToAnId()
    {
        using Bindings = QList<QPair<std::string, int>>;
        TraceView view;
        view.setItems({makeRow("A"), makeRow("B")});
        Trace *first = view.itemAt(0);
        Trace *second = view.itemAt(1);
        QVERIFY(view.bindItem("XX.A..BHZ", first, 2));
        QVERIFY(view.bindItem("XX.A..BHE", first, 0));
        QVERIFY(view.bindItem("XX.A..BHN", first, 1));
        QCOMPARE(view.bindingsFor(first),
                 Bindings({{"XX.A..BHE", 0}, {"XX.A..BHN", 1}, {"XX.A..BHZ", 2}}));
        QCOMPARE(view.bindingsFor(second), Bindings());

        QVERIFY(view.bindItem("XX.A..BHE", second, 5));
        QCOMPARE(view.bindingsFor(second), Bindings({{"XX.A..BHE", 5}}));
        QVERIFY(view.unbind("XX.A..BHZ"));
        QVERIFY(!view.unbind("XX.A..BHZ"));
        QCOMPARE(view.bindingsFor(first), Bindings({{"XX.A..BHN", 1}}));
        view.clearBindings(first);
        QCOMPARE(view.bindingsFor(first), Bindings());

        int slot = 42;
        QVERIFY(view.itemBoundTo("XX.A..BHZ", &slot) == nullptr);
        QCOMPARE(slot, 42);
        QVERIFY(view.itemBoundTo("XX.A..BHE", &slot) == second);
        QCOMPARE(slot, 5);
    }

    void requestsRowsThatWait()
    {
        RequestingView view;
        view.setItems({makeRow("A", makeRecord("XX.A..BHZ", 0, 10)), makeRow("B"), makeRow("C")});
        view.bindItem("XX.A..BHZ", view.itemAt(0), 0);
        view.subscribedToData(view.itemAt(1));
        SignalLog log(&view);

        view.isReady = false;
        view.loadData();
        QCOMPARE(log.take(), QStringList("load"));
        QCOMPARE(view.emptyDataSlots(), 2);
        view.isReady = true;
        view.loadData();
        view.loadData();
        QCOMPARE(view.requests, QStringList({"begin", "begin", "A", "C", "end"}));
        QCOMPARE(view.emptyDataSlots(), 0);

        view.requests.clear();
        view.select(view.itemAt(0));
        view.resetSelectedTraces();
        QCOMPARE(view.itemAt(0)->recordWidget()->slotCount(), 0);
        QVERIFY(view.itemBoundTo("XX.A..BHZ") == view.itemAt(0));
        view.loadData();
        QCOMPARE(view.requests, QStringList({"begin", "A", "end"}));
        view.resetDataStateOfAllTraces();
        QCOMPARE(view.emptyDataSlots(), 3);
        view.clearDataSlot(0);
        QCOMPARE(view.emptyDataSlots(), 3);
    }

    void loadActionFollowsRowsThatWait()
    {
        RequestingView view(nullptr, Qt::WindowFlags(), nullptr, true);
        QAction *load = view.findChild<QToolBar *>()->actions().value(0);
        QCOMPARE(load->text(), QString("Load data"));
        QVERIFY(!load->isEnabled());
        view.setItems({makeRow("A"), makeRow("B")});
        QVERIFY(load->isEnabled());
        load->trigger();
        QCOMPARE(view.requests, QStringList({"begin", "A", "B", "end"}));
        QVERIFY(!load->isEnabled());
        view.subscribedToData(view.itemAt(0));
        QTest::ignoreMessage(QtWarningMsg, "[TRACEVIEW] Semaphore error: empty data slots < 0: -1");
        view.updateToolbar();
        view.removeLoadActions();
        view.updateToolbar();
    }

    void cleansRowsWithoutRecordsInFirstSlot()
    {
        TraceView view;
        Trace *other = makeRow("other slot");
        feed(other, 1, makeRecord("XX.A..BHZ", 0, 10));
        Trace *empty = makeRow("empty sequence");
        empty->recordWidget()->setRecords(0, new Tellarix::RingBuffer(0), true);
        view.setItems(
            {makeRow("none"), makeRow("kept", makeRecord("XX.B..BHZ", 0, 10)), other, empty});
        view.subscribedToData(other);
        view.bindItem("XX.A..BHZ", other, 1);
        SignalLog log(&view);

        view.cleanTraces();
        QCOMPARE(labels(view.items()), QStringList("kept"));
        QCOMPARE(view.emptyDataSlots(), 1);
        QVERIFY(view.itemBoundTo("XX.A..BHZ") == nullptr);
        QCOMPARE(log.take(), QStringList());
    }

    void copySharesRecords()
    {
        TraceView source;
        Trace *row = makeRow("A", makeRecord("XX.A..BHZ", 0, 10));
        feed(row, 2, makeRecord("XX.A..BHE", 0, 10));
        row->recordWidget()->setRecordScale(2, 0.25);
        row->recordWidget()->setRecordLabel(2, "east");
        row->setDescription("on the island");
        source.setItems({makeRow("empty"), row});
        row->setMetaData(4, nullptr);

        TraceView view;
        view.addItem(makeRow("before"));
        QVERIFY(view.copyDataFrom(&source));
        QCOMPARE(labels(view.items()), QStringList({"before", "A"}));
        const RecordWidget *copy = view.itemAt(1)->recordWidget();
        QVERIFY(copy->records(0) == row->recordWidget()->records(0));
        QVERIFY(!copy->ownsRecords(0));
        QVERIFY(copy->records(1) == nullptr);
        QVERIFY(copy->recordScale(0) == nullptr);
        QCOMPARE(*copy->recordScale(2), 0.25);
        QCOMPARE(copy->recordLabel(2), QString("east"));
        QCOMPARE(view.itemAt(1)->labelText(), row->labelText());
        QCOMPARE(view.itemAt(1)->metaDataCount(), 5);
    }

    void copyOfWindowOwnsRecords()
    {
        TraceView view;
        {
            TraceView source;
            Trace *row = makeRow("A");
            for (int i = 0; i < 10; ++i)
                feed(row, 0, makeRecord("XX.A..BHZ", 10 * i, 10 * i + 10));
            source.addItem(row);
            QVERIFY(!view.copyDataFrom(&source, window(100, 200)));
            QCOMPARE(view.count(), 0);
            QVERIFY(view.copyDataFrom(&source, window(25, 50)));
        }
        const RecordWidget *copy = view.itemAt(0)->recordWidget();
        QVERIFY(copy->ownsRecords(0));
        QVERIFY(copy->records(0)->timeWindow() == window(20, 50));
    }
};

QTEST_MAIN(TraceViewBindingsTest)
#include "tst_traceviewbindings.moc"
