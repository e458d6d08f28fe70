// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bench/mapview.h"
#include "bench/replay.h"
#include "bench/selection.h"
#include "bench/shownevents.h"
#include "bench/stations.h"
#include "bench/tracerows.h"
#include "events/eventpanel.h"
#include "map/eventmaplayer.h"
#include "map/eventsonmap.h"
#include "map/mappanel.h"
#include "openwindow.h"
#include "player/playerpanel.h"
#include "waveforms/timecursor.h"

#include <norvu/gui/eventlistview.h>
#include <norvu/gui/multitracewidget.h>
#include <tellarix/qt/map/mapwidget.h>
#include <tellarix/qt/scheme.h>

#include <QAction>
#include <QTreeView>

using namespace WaveformTesting;
using namespace Workbench;

namespace {

const QByteArray Events = "time,latitude,longitude,depth,mag,magType,id,place,type\n"
                          "2024-01-05T10:13:00Z,10,20,30,4,mb,a,Here,earthquake\n"
                          "2024-01-05T10:16:00Z,40,60,31,5,mb,b,There,earthquake\n"
                          "2024-01-05T10:19:00Z,-30,-20,32,6,Mw,c,Elsewhere,earthquake\n";

/** How often the selection told of each thing since the last question. */
class Signals
{
public:
    explicit Signals(const Selection *selection)
    {
        const std::pair<const char *, void (Selection::*)()> all[] = {
            {"event", &Selection::eventChanged},
            {"window", &Selection::timeWindowChanged},
            {"time", &Selection::timeChanged},
            {"stations", &Selection::stationsChanged}};
        for (const auto &[name, signal] : all) {
            const QString told = name;
            QObject::connect(selection, signal, [this, told] { ++_counts[told]; });
        }
    }

    /** Once nothing is under way any more; for each thing that was told of, how often. */
    QString take()
    {
        for (int i = 0; i < 5; ++i)
            QCoreApplication::processEvents();
        QStringList texts;
        for (auto count = _counts.cbegin(); count != _counts.cend(); ++count)
            texts << count.key() + ' ' + QString::number(*count);
        _counts.clear();
        return texts.join(", ");
    }

private:
    QMap<QString, int> _counts;
};

/** A window with ten minutes of two stations, and three events in them. */
struct Desk
{
    explicit Desk(const QTemporaryDir &folder)
        : open({writeRecords(
              folder.filePath("rows.mseed"),
              {sawTooth("XX.AAA..HHZ", 0, 20, 12000), sawTooth("XX.BBB..HHZ", 0, 20, 12000)})}),
          bench(*open.window.bench()), selection(*bench.selection()), told(&selection),
          list(open.window.findChild<EventPanel *>()), map(open.window.findChild<MapPanel *>()),
          player(open.window.findChild<PlayerPanel *>())
    {
        open.window.resize(1400, 900);
        bench.stations()->add({{"XX.AAA", {12, 22}}, {"XX.BBB", {42, 62}}});
        list->openSources({writeText(folder.filePath("events.csv"), Events)});
        (void)QTest::qWaitFor([this] { return bench.shownEvents()->all().size() == 3; });
        (void)QTest::qWaitFor([this] { return open.isIdle(); });
        map->showAll();
        map->grab();
        told.take();
    }

    QPoint pixel(double longitude, double latitude) const
    {
        QPoint pixel;
        map->map()->canvas()->projection()->project(pixel, QPointF(longitude, latitude));
        return pixel;
    }
    void clickMap(const QPoint &pixel)
    {
        map->grab(); // symbols find their pixels when they are painted
        QWindow *window = open.window.windowHandle();
        const QPoint position = map->map()->mapTo(&open.window, pixel);
        QTest::mouseMove(window, position + QPoint(40, 40));
        QTest::mouseMove(window, position);
        QTest::mouseClick(window, Qt::LeftButton, {}, position);
    }
    void chooseInList(const char *id)
    {
        QTreeView *tree = list->list()->table();
        for (int row = 0; row < tree->model()->rowCount(); ++row) {
            const QModelIndex index = tree->model()->index(row, 0);
            if (list->list()->fromRow(row).publicID.find(id) != std::string::npos) {
                tree->setCurrentIndex(index);
                QTest::keyClick(tree, Qt::Key_Return);
            }
        }
    }

    /** The last sign of the id of the event that each panel shows as chosen. */
    QString chosen() const
    {
        const QString inSelection = selection.chosenEvent()->publicID;
        const QString inList = QString::fromStdString(list->list()->currentEvent().publicID);
        const QString onMap = QString::fromStdString(map->events()->layer()->selectedEvent());
        return inSelection == inList && inSelection == onMap ? inSelection.right(1) : "none";
    }

    OpenWindow open;
    Bench &bench;
    Selection &selection;
    Signals told;
    EventPanel *list;
    MapPanel *map;
    PlayerPanel *player;
};

} // namespace

class TestOneSelection : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void eventsAreChosenOnce();
    void stationsAreChosenOnce();
    void timeIsOneCursor();
    void distancesKeepTheirOrder();

private:
    QTemporaryDir _folder;
};

void TestOneSelection::initTestCase()
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, _folder.path());
}

void TestOneSelection::eventsAreChosenOnce()
{
    Desk desk(_folder);
    const auto alignment = [&] { return desk.open.row(0)->alignment(); };
    const Core::Time day(2024, 1, 5, 10);
    desk.chooseInList("a");
    QCOMPARE(desk.told.take(), QString("event 1, window 1"));
    QCOMPARE(desk.chosen(), QString("a"));
    QCOMPARE(alignment(), day + Core::TimeSpan(13 * 60));
    desk.clickMap(desk.pixel(60, 40));
    QCOMPARE(desk.told.take(), QString("event 1, window 1"));
    QCOMPARE(desk.chosen(), QString("b"));
    QCOMPARE(alignment(), day + Core::TimeSpan(16 * 60));
    desk.player->showNext();
    QCOMPARE(desk.told.take(), QString("event 1, window 1"));
    QCOMPARE(desk.chosen(), QString("c"));
    QCOMPARE(alignment(), day + Core::TimeSpan(19 * 60));
    QTest::keyClick(desk.open.view, Qt::Key_Left, Qt::AltModifier);
    QCOMPARE(desk.told.take(), QString("window 1"));
    QVERIFY(desk.open.view->visibleTimeWindow().contains(day + Core::TimeSpan(15.5 * 60)));
    QTest::keyClick(desk.open.view, Qt::Key_Right, Qt::AltModifier);
    QCOMPARE(desk.told.take(), QString("window 1"));

    desk.bench.replay()->setOn(true);
    QCOMPARE(desk.told.take(), QString("time 1"));
    desk.chooseInList("a");
    QCOMPARE(desk.told.take(), QString("event 1, time 1, window 1"));
    desk.player->showNext();
    QCOMPARE(desk.told.take(), QString("event 1, time 1, window 1"));
    QCOMPARE(desk.chosen(), QString("b"));
    desk.bench.replay()->setOn(false);
    QCOMPARE(desk.told.take(), QString("time 1"));
    QCOMPARE(desk.chosen(), QString("b"));
}

void TestOneSelection::stationsAreChosenOnce()
{
    Desk desk(_folder);
    desk.clickMap(desk.pixel(62, 42) + QPoint(0, -8));
    QCOMPARE(desk.told.take(), QString("stations 1"));
    QCOMPARE(desk.open.view->selectedItems(), QList<Trace *>{desk.open.view->itemAt(1)});
    QTest::mouseClick(desk.open.row(0), Qt::LeftButton, Qt::ControlModifier, QPoint(300, 15));
    QCOMPARE(desk.told.take(), QString("stations 1"));
    QCOMPARE(desk.selection.stations(), QStringList({"XX.AAA", "XX.BBB"}));
}

void TestOneSelection::timeIsOneCursor()
{
    Desk desk(_folder);
    const auto *cursor = desk.open.window.findChild<TimeCursor *>();
    const Gui::RecordWidget *row = desk.open.row(0);
    const QPoint click(row->canvasRect().left() + row->canvasRect().width() / 3, 15);
    QTest::mouseClick(desk.open.row(0), Qt::LeftButton, {}, click);
    QCOMPARE(desk.told.take(), QString("stations 1, time 1"));
    const Core::Time time = desk.selection.time();
    QVERIFY(desk.open.view->visibleTimeWindow().contains(time));
    const auto lineIn = [&](const QWidget *widget) {
        return QRect(widget->mapFromGlobal(cursor->mapToGlobal(cursor->line().topLeft())),
                     cursor->line().size());
    };
    QVERIFY(std::abs(lineIn(row).x() - click.x()) <= 1);
    QCOMPARE(desk.open.window.grab().toImage().pixelColor(
                 cursor->mapTo(&desk.open.window, QPoint(cursor->line().x(), 1))),
             Gui::Scheme::Current().records.cursor);

    // The overview has the same time scale, across or down.
    auto *overview = desk.open.window.findChild<Norvu::Gui::MultiTraceWidget *>();
    overview->setActive(true);
    desk.told.take();
    QVERIFY(!cursor->line().isEmpty());
    for (const Qt::Orientation orientation : {Qt::Vertical, Qt::Horizontal}) {
        overview->setOrientation(orientation);
        const QPoint middle = overview->rect().center();
        QTest::mouseClick(overview, Qt::LeftButton, {}, middle);
        desk.told.take();
        const QRect line = lineIn(overview);
        if (orientation == Qt::Vertical)
            QVERIFY(std::abs(line.x() - middle.x()) <= 1 && line.width() == 1);
        else
            QVERIFY(std::abs(line.y() - middle.y()) <= 1 && line.height() == 1);
    }
    overview->setActive(false);
    desk.told.take();

    // Rows follow a moment only where there are data.
    const Core::TimeWindow before = desk.open.view->visibleTimeWindow();
    desk.selection.setTime(Core::Time(2020, 1, 1));
    QCOMPARE(desk.told.take(), QString("time 1"));
    QVERIFY(cursor->line().isEmpty());
    QCOMPARE(desk.open.view->visibleTimeWindow(), before);
    QTest::keyClick(desk.open.view, Qt::Key_Escape);
    QVERIFY(!desk.selection.time().valid());
}

void TestOneSelection::distancesKeepTheirOrder()
{
    Desk desk(_folder);
    const auto first = [&] { return stationOf(*desk.open.view->itemAt(0)); };
    desk.chooseInList("b");
    QCOMPARE(first(), QString("XX.AAA")); // in the order of names, as the user has it
    desk.open.view->sortView();
    QCOMPARE(first(), QString("XX.BBB"));
    desk.chooseInList("a");
    QCOMPARE(first(), QString("XX.AAA"));
}

QTEST_MAIN(TestOneSelection)
#include "tst_oneselection.moc"
