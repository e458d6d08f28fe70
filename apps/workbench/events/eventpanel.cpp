// SPDX-License-Identifier: LGPL-3.0-or-later

#include "eventpanel.h"

#include "bench/bench.h"
#include "bench/demonstration.h"
#include "bench/jobs.h"
#include "bench/selection.h"
#include "bench/shownevents.h"
#include "databasedialog.h"
#include "emptyreason.h"
#include "eventexport.h"

#include <norvu/gui/eventfilterwidget.h>
#include <norvu/gui/eventlistview.h>
#include <norvu/gui/exportfiledialog.h>
#include <norvu/gui/fontawesome5.h>

#include <QAction>
#include <QDateTime>
#include <QDir>
#include <QEventLoop>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QScopedValueRollback>
#include <QSettings>
#include <QTemporaryDir>
#include <QToolButton>
#include <QTreeView>

#include <limits>

using namespace Tellarix;

namespace Workbench {

namespace {

using Norvu::Gui::EventListView;
using Norvu::Gui::EventRow;

constexpr int MostRecent = 10;
/** Catalogues up to this size are shown whole when they are opened, larger ones by their end. */
constexpr int MostShownAtOnce = 100000;
constexpr double DaysOfLargeOnes = 30;
constexpr double SecondsPerDay = 86400;

EventFacts factsOf(const EventRow &row)
{
    EventFacts event;
    event.publicID = QString::fromStdString(row.publicID);
    event.originTime = row.time;
    // Not at 0, 0: rows would get distances from there.
    event.latitude = row.latitude.value_or(std::numeric_limits<double>::quiet_NaN());
    event.longitude = row.longitude.value_or(std::numeric_limits<double>::quiet_NaN());
    event.depthKm = row.depth;
    event.magnitude = row.magnitude;
    event.region = QString::fromStdString(row.region);
    return event;
}

QString number(int value)
{
    return QLocale(QLocale::English).toString(value);
}

QDateTime dateTime(Core::Time time)
{
    return QDateTime::fromMSecsSinceEpoch(time.usecs() / 1000, Qt::UTC);
}

QString demonstrationDatabase(const QString &folder)
{
    return QDir(folder).filePath("events.sqlite");
}

} // namespace

EventPanel::EventPanel(Bench *bench)
    : Panel(bench, {"events", tr("Events"), tr("&Events"), tr("Ctrl+Shift+L"),
                    Norvu::FontAwesome5::iconSolid(Norvu::FontAwesome5::chListAlt),
                    PanelPlace::Bottom, true}),
      _catalogue(new Catalogue(bench, this)), _title(new QLabel(this)), _count(new QLabel(this)),
      _reason(new QLabel(this)), _threads(bench->tasks())
{
    auto *head = new QHBoxLayout;
    head->addWidget(_title, 1);
    head->addWidget(_count);
    _title->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    _title->setTextFormat(Qt::PlainText);
    _reason->setWordWrap(true);
    _reason->setMargin(fontMetrics().height() / 2);
    _reason->hide();

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(head);
    layout->addWidget(_reason);

    createActions();
    connect(_catalogue, SIGNAL(opened()), this, SLOT(showDatabase()));
    connect(_catalogue, SIGNAL(imported()), this, SLOT(reload()));
    connect(_catalogue, SIGNAL(busyChanged()), this, SLOT(updateActions()));
    connect(bench, &Bench::eventImportRequested, _catalogue, &Catalogue::import);
    connect(bench->selection(), SIGNAL(eventChanged()), this, SLOT(followSelection()));
    connect(bench->selection(), SIGNAL(regionChanged()), this, SLOT(followRegion()));
    showDatabase();
}

EventPanel::~EventPanel() = default;

// Actions

QAction *EventPanel::addAction(const QString &text, const char *slot)
{
    auto *action = new QAction(text, this);
    connect(action, SIGNAL(triggered()), this, slot);
    _actions.append(action);
    return action;
}

void EventPanel::createActions()
{
    addAction(tr("Open event data&base…"), SLOT(openDatabase()))->setShortcut(tr("Ctrl+B"));
    addAction(tr("&New event database…"), SLOT(makeDatabase()));
    _importAction = addAction(tr("I&mport events…"), SLOT(importFiles()));
    _exportAction = addAction(tr("E&xport events…"), SLOT(exportShown()));
    _scriptAction = addAction(tr("Run a script on the e&vents…"), SLOT(runScript()));
    _showAllAction = addAction(tr("Show the whole ca&talogue"), SLOT(showAll()));
}

QList<QAction *> EventPanel::menuActions(Menu menu) const
{
    return menu == Menu::File ? _actions : QList<QAction *>();
}

void EventPanel::updateActions()
{
    const bool isOpen = _catalogue->database() != nullptr;
    const bool hasRows = _list && _list->rowCount() > 0;
    const bool canStore = isOpen && !_catalogue->database()->isReadOnly() &&
                          _catalogue->origin() != Catalogue::Origin::Files;
    _importAction->setEnabled(canStore && !_catalogue->isBusy());
    bench()->setEventStore(canStore ? _catalogue->address() : QString());
    _exportAction->setEnabled(hasRows && !_exporting);
    _scriptAction->setEnabled(hasRows && !_exporting);
    _showAllAction->setEnabled(isOpen);
    if (_list)
        _list->buttonExport()->setEnabled(hasRows && !_exporting);
}

// The database and its list

void EventPanel::showDatabase()
{
    if (_list) {
        _headerState = tree()->header()->saveState();
        delete _list;
        _list = nullptr;
    }
    shareRows();
    tellNothing();
    showTitle();
    if (_catalogue->database()) {
        if (_catalogue->origin() == Catalogue::Origin::Address)
            remember(_catalogue->database()->address());
        makeList();
        showAll();
    } else {
        _reason->setText(tr("Open one by File > Open event database, or drop a QuakeML or CSV file "
                            "here."));
        _reason->show();
    }
    updateActions();
}

void EventPanel::showTitle()
{
    const QStringList files = _catalogue->files();
    QString text = _catalogue->address();
    if (!_catalogue->database())
        text = tr("No event database is open.");
    else if (files.size() == 1)
        text = tr("%1 (looked at, not stored)").arg(files.first());
    else if (!files.isEmpty())
        text = tr("%1 sources (looked at, not stored): %2").arg(files.size()).arg(files.join(", "));
    _title->setText(text);
    _title->setToolTip(files.join('\n'));
}

/** Passwords are typed anew rather than kept in a file of settings. */
void EventPanel::remember(const QString &address)
{
    _recent.removeAll(address);
    _recent.prepend(address);
    _recent = _recent.mid(0, MostRecent);
}

void EventPanel::makeList()
{
    _list = new EventListView(_catalogue->database().get(), this);
    _list->setHeaderMenuEnabled(true);
    setFocusProxy(tree());
    _list->buttonExport()->show();
    if (auto *button = qobject_cast<QToolButton *>(_list->buttonExport())) {
        button->setFont(Norvu::FontAwesome5::fontSolid());
        button->setText(Norvu::FontAwesome5::chSave);
        button->setToolTip(tr("Export the events of the list"));
    }
    if (!_headerState.isEmpty())
        tree()->header()->restoreState(_headerState);
    // Catalogues of historical earthquakes reach further back than the inputs do by themselves.
    _list->setEarliestDate(QDate(100, 1, 1)); // the inputs know none before
    static_cast<QVBoxLayout *>(layout())->insertWidget(1, _list, 1);

    connect(_list, SIGNAL(eventSelected()), this, SLOT(choose()));
    connect(_list, SIGNAL(exportEvents(QAbstractItemModel *)), this,
            SLOT(exportList(QAbstractItemModel *)));
    connect(_list, SIGNAL(rowsChanged()), this, SLOT(shareRows()));
    connect(_list, SIGNAL(rowsChanged()), this, SLOT(tellRows()));
    connect(_list, SIGNAL(cleared()), this, SLOT(shareRows()));
    connect(_list, SIGNAL(cleared()), this, SLOT(tellNothing()));
    followRegion();
    tree()->setMouseTracking(true);
    tree()->viewport()->installEventFilter(this);
    connect(tree(), &QTreeView::entered, this, [this](const QModelIndex &index) {
        bench()->selection()->setHoveredEvent(
            QString::fromStdString(_list->fromRow(index.row()).publicID));
    });
}

bool EventPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Leave)
        bench()->selection()->setHoveredEvent(QString());
    return Panel::eventFilter(watched, event);
}

QTreeView *EventPanel::tree() const
{
    return _list->table();
}

/** All of a catalogue, or the last weeks of one that would take long to read. */
void EventPanel::showAll()
{
    const Core::TimeWindow extent = _catalogue->extent();
    if (!_list || !extent.valid()) {
        tellRows();
        return;
    }
    Core::Time begin = extent.startTime();
    if (_catalogue->eventCount() > MostShownAtOnce)
        begin = std::max(begin, extent.endTime() - Core::TimeSpan(DaysOfLargeOnes * SecondsPerDay));
    _list->setTimeWindow(dateTime(begin), dateTime(extent.endTime()));
    _list->loadInterval();
}

/** Shows what an import has stored, without taking away the interval that the user looks at. */
void EventPanel::reload()
{
    showTitle();
    if (!_list || _catalogue->origin() == Catalogue::Origin::Files || _list->rowCount() == 0)
        showAll();
    else
        _list->loadInterval();
}

QString EventPanel::emptyReason() const
{
    return _reason->isHidden() ? QString() : _reason->text();
}

/** Lets other panels show the events too. */
void EventPanel::shareRows()
{
    if (_isLimiting)
        return;
    QVector<EventFacts> events;
    if (_list) {
        for (const EventRow &row : _list->unfilteredRows())
            events.append(factsOf(row));
    }
    bench()->shownEvents()->set(std::move(events));
}

/** Leaves out what lies elsewhere; other panels go on showing it. */
void EventPanel::followRegion()
{
    if (!_list)
        return;
    const QScopedValueRollback<bool> limiting(_isLimiting, true);
    const std::optional<Region> &region = bench()->selection()->region();
    if (!region) {
        _list->setRowFilter(nullptr);
        return;
    }
    _list->setRowFilter([region](const EventRow &row) {
        return row.latitude && row.longitude && region->contains(*row.latitude, *row.longitude);
    });
}

void EventPanel::tellRows()
{
    if (!_list)
        return;
    tellNothing();
    const int count = _list->rowCount();
    const int all = bench()->shownEvents()->all().size();
    const std::optional<Region> &region = bench()->selection()->region();
    if (region)
        _count->setText(tr("%1 of %2 events, %3").arg(number(count), number(all), region->text()));
    else
        _count->setText(tr("%1 events").arg(number(count)));
    if (count == 0 && all > 0) {
        _reason->setText(
            tr("None of the %1 events lies where the map limits the list to.").arg(number(all)));
        _reason->show();
    } else if (count == 0)
        askWhyEmpty();
    followSelection();
    updateActions();
}

void EventPanel::tellNothing()
{
    if (_asking)
        _asking->cancel();
    _count->clear();
    _reason->hide();
    updateActions();
}

void EventPanel::askWhyEmpty()
{
    const auto work = [this, database = _catalogue->database(), window = _list->timeWindow(),
                       extent = _catalogue->extent(),
                       filter = _list->filter()](TaskThreads::Reporter &) -> TaskThreads::Finish {
        const QString reason = explainEmptyList(database, window, extent, filter);
        return [this, reason] {
            _reason->setText(reason);
            _reason->show();
            return QString();
        };
    };
    _asking = _threads.start(tr("Counting events"), TaskThreads::Canceling::DropsWork, work);
}

// The chosen event

void EventPanel::choose()
{
    const EventRow row = _list->currentEvent();
    if (row.time.valid())
        bench()->selection()->showEvent(factsOf(row));
}

void EventPanel::followSelection()
{
    const auto &event = bench()->selection()->chosenEvent();
    if (!_list || !event)
        return;
    const std::string id = event->publicID.toStdString();
    if (_list->currentEvent().publicID != id)
        _list->showEvent(id);
}

// Opening

void EventPanel::openDatabase()
{
    askForDatabase(Catalogue::Schema::Expected);
}

void EventPanel::makeDatabase()
{
    askForDatabase(Catalogue::Schema::Created);
}

void EventPanel::askForDatabase(Catalogue::Schema schema)
{
    DatabaseDialog dialog(schema, _recent, window());
    if (dialog.exec() == QDialog::Accepted && !dialog.url().isEmpty())
        _catalogue->open(dialog.url(), schema);
}

QStringList EventPanel::fileFilters() const
{
    return {tr("Events (*.xml *.qml *.csv *.txt *.sqlite *.db)")};
}

bool EventPanel::canOpen(const QString &source) const
{
    if (Catalogue::isAddress(source) || Catalogue::isService(source))
        return true;
    const QString suffix = QFileInfo(source).suffix().toLower();
    return suffix == "sqlite" || suffix == "db" || Catalogue::isEventFile(source);
}

/** Files and services of events are looked at together, and it takes "Import" to store them; of
 * databases there is one at a time, and of both what was named last. */
bool EventPanel::openSources(const QStringList &sources)
{
    QStringList files;
    QStringList others;
    for (const QString &source : sources) {
        const bool isLookedAt = Catalogue::isService(source) ||
                                (!Catalogue::isAddress(source) && Catalogue::isEventFile(source));
        (isLookedAt ? files : others).append(source);
    }
    if (!others.isEmpty() && others.last() == sources.last()) {
        const QString last = others.takeLast();
        _catalogue->open(Catalogue::isAddress(last) ? last : Catalogue::addressOf(last),
                         Catalogue::Schema::Expected);
        others = files + others;
    } else
        _catalogue->look(files);
    for (const QString &source : std::as_const(others))
        bench()->tell({tr("%1: not opened, since one catalogue is shown at a time").arg(source)});
    return others.isEmpty();
}

void EventPanel::importFiles()
{
    const QStringList files =
        QFileDialog::getOpenFileNames(window(), tr("Import events"), QString(),
                                      tr("Events (*.xml *.qml *.csv *.txt);;All files (*)"));
    _catalogue->import(files);
    updateActions();
}

bool EventPanel::openDemonstration(const QString &folder)
{
    _catalogue->openDemonstration(demonstrationDatabase(folder));
    return true;
}

void EventPanel::closeAll()
{
    _catalogue->close();
}

// Exporting

void EventPanel::exportShown()
{
    _list->exportClicked();
}

TaskThreads::Work EventPanel::writing(const ListedEvents &events, const QString &file,
                                      const std::function<void()> &done)
{
    return [this, database = _catalogue->database(), events, file,
            done](TaskThreads::Reporter &reporter) -> TaskThreads::Finish {
        const auto progress = [&](int count, int total) {
            reporter.setProgress(count, total);
            return !reporter.isCanceled();
        };
        QString error;
        if (writeEvents(database, events, file, progress, &error))
            return [done] {
                done();
                return QString();
            };
        return [this, error] {
            bench()->tell({error});
            return error;
        };
    };
}

/** The dialog waits for the end, while the rest of the window goes on. */
bool EventPanel::writeBehindDialog(const ListedEvents &events, const QString &file)
{
    const auto isWritten = std::make_shared<bool>(false);
    const auto work = writing(events, file, [isWritten] { *isWritten = true; });
    _exporting = _threads.start(tr("Exporting events"), TaskThreads::Canceling::DropsWork, work);
    QEventLoop loop;
    connect(_exporting, SIGNAL(finished()), &loop, SLOT(quit()));
    updateActions();
    loop.exec();
    _exporting.clear();
    updateActions();
    return *isWritten;
}

void EventPanel::exportList(QAbstractItemModel *model)
{
    if (_exporting)
        return;
    if (_exportFile.isEmpty())
        _exportFile = QDir::home().filePath("events.xml");
    const auto write = [this, events = listedEvents(model)](const QString &file) {
        return writeBehindDialog(events, file);
    };
    _exportDialog = std::make_unique<Norvu::Gui::ExportFileDialog>(
        write, _exportFile, eventExportFilter(), _exportScript, window());
    connect(_exportDialog.get(), SIGNAL(finished(int)), this, SLOT(endExport(int)));
    _exportDialog->show();
}

void EventPanel::endExport(int result)
{
    if (_exporting)
        _exporting->cancel();
    else if (result == QDialog::Accepted)
        bench()->showStatus(tr("%1 was written").arg(_exportDialog->filePath()));
    _exportFile = _exportDialog->filePath();
    _exportScript = _exportDialog->scriptPath();
}

/** The listed events go to a file of their own, and a job runs the script on it. */
void EventPanel::runScript()
{
    const QString script = QFileDialog::getOpenFileName(window(), tr("Script to run on the events"),
                                                        QFileInfo(_exportScript).path());
    if (script.isEmpty() || !_list)
        return;
    _exportScript = script;
    if (!_scriptFiles)
        _scriptFiles = std::make_unique<QTemporaryDir>();
    const QString file = _scriptFiles->filePath(QString("events-%1.xml").arg(++_scriptCount));
    const ListedEvents events = listedEvents(tree()->model());
    const auto start = [=, count = events.count()] {
        bench()->jobs()->add(
            tr("%1 on %2 events").arg(QFileInfo(script).fileName(), QString::number(count)),
            QString("\"%1\" \"%2\"").arg(script, file));
        bench()->showStatus(tr("A job was started; see the panel of jobs"));
    };
    _threads.start(tr("Exporting events"), TaskThreads::Canceling::DropsWork,
                   writing(events, file, start));
}

// State and pictures

void EventPanel::saveState(QSettings &settings) const
{
    settings.beginGroup("events");
    settings.setValue("databases", _recent);
    settings.setValue("header", _list ? tree()->header()->saveState() : _headerState);
    settings.setValue("exportFile", _exportFile);
    settings.setValue("exportScript", _exportScript);
    settings.endGroup();
}

void EventPanel::restoreState(QSettings &settings)
{
    settings.beginGroup("events");
    _recent = settings.value("databases").toStringList();
    _headerState = settings.value("header").toByteArray();
    _exportFile = settings.value("exportFile").toString();
    _exportScript = settings.value("exportScript").toString();
    settings.endGroup();
    if (_list && !_headerState.isEmpty())
        tree()->header()->restoreState(_headerState);
}

QVector<PanelPicture> EventPanel::pictures()
{
    QVector<PanelPicture> pictures = Panel::pictures();
    Norvu::Gui::EventFilterWidget filter(nullptr);
    filter.ensurePolished();
    pictures.append({"event-filter.png", filter.grab()});
    Norvu::Gui::ExportFileDialog dialog([](const QString &) { return true; },
                                        QDir::home().filePath("events.xml"), eventExportFilter(),
                                        QString());
    dialog.ensurePolished();
    pictures.append({"export.png", dialog.grab()});
    return pictures;
}

} // namespace Workbench
