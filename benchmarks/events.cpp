// SPDX-License-Identifier: LGPL-3.0-or-later

// The event list: 100,000 events from an SQLite file through the row statement into the list's
// model, and freed again. Beside it, in the same run, Qt's query model fetches all rows of the same
// statement, and plain standard items are filled from it; the ratios are printed. Then the same
// with the view and its dialog, the count, and sorting by each column.

#include "benchmarking.h"

#include <norvu/gui/eventlistcolumns.h>
#include <norvu/gui/eventlistview.h>
#include <norvu/gui/eventlistworkerthread.h>
#include <norvu/gui/eventstatements.h>

#include <tellarix/client/io/eventarchive.h>
#include <tellarix/core/strings.h>

#include <QApplication>
#include <QHeaderView>
#include <QProgressDialog>
#include <QSqlDatabase>
#include <QSqlQueryModel>
#include <QStandardItemModel>
#include <QTemporaryDir>

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <memory>

using namespace Benchmarking;
using namespace Norvu::Gui;
using namespace Tellarix;
using Columns = EEventListColumnsNames;

namespace {

constexpr int Events = 100000;
constexpr int Rounds = 5;

IO::DatabaseInterface *database = nullptr;

/** Events of two years: every field is there in most of them, mechanisms in one of five. */
DataModel::EventPtr makeEvent(int number, std::minstd_rand &random)
{
    // With as many digits as catalogues have.
    const auto between = [&random](double low, double high, double step = 1) {
        return std::round(std::uniform_real_distribution<>(low, high)(random) / step) * step;
    };
    const std::string id = "demo:example.net/event/" + std::to_string(2024000000 + number);
    const DataModel::EventPtr event(new DataModel::Event);
    event->publicID = id;
    event->type = number % 50 ? "earthquake" : "not existing";
    event->descriptions = {{"Region " + std::to_string(random() % 700), "region name"}};

    const DataModel::OriginPtr origin(new DataModel::Origin);
    origin->publicID = id + "/origin";
    // Archives grow in the order of time, with some late events.
    const double seconds = 630.0 * number + (number % 100 ? 0 : between(0, 86400.0));
    origin->time = Midnight + Core::TimeSpan(seconds);
    origin->latitude = between(-90, 90, 0.0001);
    origin->longitude = between(-180, 180, 0.0001);
    if (number % 20)
        origin->depth = between(0, 600, 0.1);
    origin->quality.usedPhaseCount = static_cast<int>(random() % 300);
    origin->evaluationMode = number % 3 ? "automatic" : "manual";
    if (number % 4 == 0)
        origin->evaluationStatus = "confirmed";
    event->origins = {origin};
    event->preferredOriginID = origin->publicID;

    const DataModel::MagnitudePtr magnitude(new DataModel::Magnitude);
    magnitude->publicID = id + "/magnitude";
    magnitude->magnitude = between(0, 8, 0.01);
    magnitude->type = number % 2 ? "ML" : "Mw";
    event->magnitudes = {magnitude};
    event->preferredMagnitudeID = magnitude->publicID;

    if (number % 5 == 0) {
        const DataModel::FocalMechanismPtr mechanism(new DataModel::FocalMechanism);
        mechanism->publicID = id + "/mechanism";
        mechanism->nodalPlane1 =
            DataModel::NodalPlane(between(0, 360), between(0, 90), between(-180, 180));
        event->focalMechanisms = {mechanism};
        event->preferredFocalMechanismID = mechanism->publicID;
    }
    return event;
}

IO::DatabaseInterfacePtr makeDatabase(const QString &folder)
{
    const IO::DatabaseInterfacePtr result =
        IO::DatabaseInterface::Open("sqlite:///" + folder + "/events.db");
    IO::EventArchive::createSchema(*result);
    IO::EventArchive archive(result);
    std::minstd_rand random(5);
    result->beginTransaction();
    for (int i = 0; i < Events; ++i)
        archive.write(*makeEvent(i, random));
    result->commit();
    return result;
}

EventQuery allEvents()
{
    EventQuery query;
    query.begin = Midnight;
    query.end = Midnight + Core::TimeSpan(3 * 365 * 86400.0);
    return query;
}

void showAllEvents(EventListView &view)
{
    view.setTimeWindow(QDateTime(QDate(2024, 1, 5), QTime(0, 0), Qt::UTC),
                       QDateTime(QDate(2027, 1, 5), QTime(0, 0), Qt::UTC));
}

std::unique_ptr<EventListWorkerThread> makeWorker(QStandardItemModel &model)
{
    auto worker =
        std::make_unique<EventListWorkerThread>(database, model.invisibleRootItem(), nullptr);
    EventQuery query = allEvents();
    worker->setTimeWindow(query.begin, query.end);
    return worker;
}

/** Loads all events; the seconds from the count on, which the plain forms don't ask for. */
double load(QStandardItemModel &model)
{
    const auto worker = makeWorker(model);
    QElapsedTimer timer;
    QObject::connect(
        worker.get(), &EventListWorkerThread::eventCountChanged, worker.get(),
        [&timer] { timer.start(); }, Qt::DirectConnection);
    worker->start();
    worker->wait();
    return static_cast<double>(timer.nsecsElapsed()) * 1E-9;
}

/** A plain item for each field: texts, sort values, colours and alignments of their own. */
double loadPlain(QStandardItemModel &model)
{
    QElapsedTimer timer;
    timer.start();
    const auto addItem = [](QList<QStandardItem *> &row, const QString &text,
                            const QVariant &sortValue, int alignment) {
        auto *item = new QStandardItem;
        item->setData(alignment, Qt::TextAlignmentRole);
        item->setEditable(false);
        item->setData(text, Qt::DisplayRole);
        if (sortValue.isValid())
            item->setData(sortValue, Qt::UserRole);
        row.append(item);
    };
    const auto addText = [&](QList<QStandardItem *> &row, int field) {
        const QString text = QString::fromUtf8(database->field(field));
        addItem(row, text, text, Qt::AlignLeft | Qt::AlignVCenter);
    };
    const auto addNumber = [&](QList<QStandardItem *> &row, int field, int decimals) {
        double value = 0;
        const char *text = database->field(field);
        const bool ok = text && Core::fromString(value, text);
        addItem(row, ok ? QString::number(value, 'f', decimals) : QStringLiteral("-"),
                ok ? QVariant(value) : QVariant(), Qt::AlignCenter);
    };

    database->beginQuery(eventRowStatement(*database, allEvents()));
    while (database->fetchRow()) {
        QList<QStandardItem *> row;
        Core::Time time = database->stringToTime(database->field(0));
        int microseconds = 0;
        if (Core::fromString(microseconds, database->field(1)))
            time.setUSecs(microseconds);
        const QString timeText = QString::fromStdString(time.toString("%F %T"));
        addItem(row, timeText, timeText, Qt::AlignRight | Qt::AlignVCenter);
        row.last()->setData(QVariant::fromValue(time), Qt::UserRole + 1);
        addNumber(row, 2, 1);
        addText(row, 3);
        addNumber(row, 4, 0);
        addNumber(row, 5, 2);
        addNumber(row, 6, 2);
        addNumber(row, 7, 0);
        const bool isManual = qstrcmp(database->field(9), "manual") == 0;
        addItem(row, isManual ? "M" : "A", isManual ? 'M' : 'A', Qt::AlignCenter);
        row.last()->setData(QColor(isManual ? Qt::darkGreen : Qt::red), Qt::ForegroundRole);
        float angle = 0;
        const char *strike = database->field(10);
        const bool hasPlane = strike && Core::fromString(angle, strike);
        addItem(row, hasPlane ? QString() : QStringLiteral("-"), QVariant(), Qt::AlignCenter);
        if (hasPlane)
            row.last()->setToolTip(QString("Strike: %1\nDip   : %1\nRake  : %1").arg(angle));
        row.last()->setSizeHint(QSize(24, 24));
        addText(row, 13);
        addText(row, 14);
        addText(row, 15);
        model.appendRow(row);
    }
    database->endQuery();
    return static_cast<double>(timer.nsecsElapsed()) * 1E-9;
}

void fetchWithQueryModel()
{
    QSqlQueryModel model;
    model.setQuery(QString::fromStdString(eventRowStatement(*database, allEvents())),
                   database->connection());
    while (model.canFetchMore())
        model.fetchMore();
}

double megabytesInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd) * 1E-6;
}

struct Measured
{
    double seconds{1E9}; /**< the fastest round */
    double megabytes{0};
};

/** Fills and frees a model once more. */
void addRound(Measured &measured, double (*fill)(QStandardItemModel &))
{
    const double before = megabytesInUse();
    auto model = std::make_unique<QStandardItemModel>(0, Columns::Count);
    const double filling = fill(*model);
    measured.megabytes = megabytesInUse() - before;
    measured.seconds = std::min(measured.seconds, filling + secondsOf([&] { model.reset(); }));
}

/** Load and release in turn with the two plain forms: the machine may be busy with other things. */
void loadAndFree(benchmark::State &state)
{
    for (auto _ : state) {
        Measured ours;
        Measured plain;
        double queryModel = 1E9;
        for (int i = 0; i < Rounds; ++i) {
            queryModel = std::min(queryModel, secondsOf(fetchWithQueryModel));
            addRound(plain, loadPlain);
            addRound(ours, load);
        }
        state.SetIterationTime(ours.seconds);
        state.counters["query_model_ms"] = queryModel * 1E3;
        state.counters["plain_items_ms"] = plain.seconds * 1E3;
        state.counters["of_query_model"] = ours.seconds / queryModel;
        state.counters["of_plain_items"] = ours.seconds / plain.seconds;
        state.counters["megabytes"] = ours.megabytes;
        state.counters["memory_of_plain_items"] = ours.megabytes / plain.megabytes;
    }
}

/** The same through the view, with signals, dialog, filter and sort; the worker alone beside it. */
void loadInView(benchmark::State &state)
{
    EventListView view(database);
    view.resize(1200, 600);
    view.show();
    showAllEvents(view);
    double worker = 1E9;
    double whole = 1E9;
    for (auto _ : state) {
        for (int i = 0; i < Rounds; ++i) {
            QStandardItemModel model(0, Columns::Count);
            worker = std::min(worker, secondsOf([&] { load(model); }));
            model.clear();
            whole = std::min(whole, secondsOf([&] { view.loadInterval(); }));
            view.clear();
        }
        state.SetIterationTime(whole);
    }
    state.counters["of_worker"] = whole / worker;
}

/** Makes five rows of each event, so that a load takes long enough for its dialog; and back. */
void repeatEvents(bool isRepeated)
{
    if (!isRepeated) {
        database->execute("DROP TABLE EventDescription");
        database->execute("ALTER TABLE Described RENAME TO EventDescription");
        return;
    }
    database->execute("ALTER TABLE EventDescription RENAME TO Described");
    database->execute("CREATE TABLE EventDescription AS SELECT Described.* FROM Described, "
                      "(VALUES (1), (2), (3), (4), (5))");
    database->execute("CREATE INDEX Repeated ON EventDescription (_parent_oid, type)");
}

/** What a load in a view looks like from the outside. */
class LoadWatch : public QObject
{
public:
    explicit LoadWatch(EventListView &view) : _view(view) { startTimer(2); }

    double secondsOfRows{0}; /**< from the count to the end of the thread */
    int rowsBehindDialog{0}; /**< progress signals while it could be seen */
    double longestGap{0};    /**< between two turns of the event loop meanwhile, seconds */

protected:
    void timerEvent(QTimerEvent *) override
    {
        if (!_worker)
            watch(_view.findChild<EventListWorkerThread *>());
        const auto *dialog = _view.findChild<QProgressDialog *>();
        const bool isVisible = dialog && dialog->isVisible();
        if (_isVisible && isVisible)
            longestGap = std::max(longestGap, static_cast<double>(_turn.nsecsElapsed()) * 1E-9);
        _turn.start();
        _isVisible = isVisible;
    }

private:
    void watch(EventListWorkerThread *worker)
    {
        if (!worker)
            return;
        _worker = worker;
        connect(
            worker, &EventListWorkerThread::eventCountChanged, this, [this] { _rows.start(); },
            Qt::DirectConnection);
        connect(
            worker, &EventListWorkerThread::progressChanged, this,
            [this] { rowsBehindDialog += _isVisible; }, Qt::DirectConnection);
        connect(
            worker, &QThread::finished, this,
            [this] { secondsOfRows = static_cast<double>(_rows.nsecsElapsed()) * 1E-9; },
            Qt::DirectConnection);
    }

    EventListView &_view;
    const EventListWorkerThread *_worker{nullptr};
    QElapsedTimer _rows;
    QElapsedTimer _turn;
    std::atomic<bool> _isVisible{false};
};

/** Half a million rows, most of them while the dialog can be seen; the worker alone beside it. */
void loadBehindDialog(benchmark::State &state)
{
    repeatEvents(true);
    EventListView view(database);
    view.show();
    showAllEvents(view);
    double worker = 1E9;
    double watched = 1E9;
    for (auto _ : state) {
        for (int i = 0; i < 3; ++i) {
            QStandardItemModel model(0, Columns::Count);
            worker = std::min(worker, load(model));
            model.clear();
            LoadWatch watch(view);
            view.loadInterval();
            view.clear();
            watched = std::min(watched, watch.secondsOfRows);
            state.counters["signals_seen"] = watch.rowsBehindDialog;
            state.counters["longest_gap_ms"] = watch.longestGap * 1E3;
        }
        state.SetIterationTime(watched);
    }
    state.counters["of_worker"] = watched / worker;
    repeatEvents(false);
}

void count(benchmark::State &state)
{
    const std::string statement = eventCountStatement(*database, allEvents());
    for (auto _ : state) {
        database->beginQuery(statement);
        database->fetchRow();
        benchmark::DoNotOptimize(database->field(0));
        database->endQuery();
    }
}

void sortBy(benchmark::State &state)
{
    static EventListView *view = nullptr;
    static QAbstractItemModel *rows = nullptr;
    if (!view) {
        view = new EventListView(database);
        showAllEvents(*view);
        view->loadInterval();
        QObject::connect(view, &EventListView::exportEvents,
                         [](QAbstractItemModel *model) { rows = model; });
        view->exportClicked();
    }
    const auto column = static_cast<int>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        rows->sort(column == Columns::PublicID ? Columns::Latitude : Columns::PublicID);
        state.ResumeTiming();
        rows->sort(column);
    }
    state.SetLabel(Columns::name(column));
}

} // namespace

BENCHMARK(loadAndFree)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(loadInView)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(loadBehindDialog)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(count)->Unit(benchmark::kMillisecond);
BENCHMARK(sortBy)->DenseRange(0, Columns::Count - 1)->Iterations(3)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    const QTemporaryDir folder;
    const IO::DatabaseInterfacePtr events = makeDatabase(folder.path());
    database = events.get();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
