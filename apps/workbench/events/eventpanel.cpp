// SPDX-License-Identifier: LGPL-3.0-or-later

#include "eventpanel.h"

#include "bench/bench.h"
#include "bench/demonstration.h"
#include "bench/jobs.h"
#include "bench/selection.h"
#include "databasedialog.h"
#include "emptyreason.h"
#include "eventexport.h"

#include <norvu/gui/eventfilterwidget.h>
#include <norvu/gui/eventlistview.h>
#include <norvu/gui/exportfiledialog.h>
#include <norvu/gui/fontawesome5.h>
#include <tellarix/client/demo/democatalogue.h>
#include <tellarix/client/io/eventarchive.h>

#include <QAction>
#include <QApplication>
#include <QDateTimeEdit>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QSettings>
#include <QTemporaryDir>
#include <QToolButton>
#include <QTreeView>
#include <QUrl>

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
constexpr int IdColumn = 9;

EventSummary summaryOf(const EventRow &row)
{
    EventSummary event;
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

QDateTime dateTime(Core::Time time)
{
    return QDateTime::fromMSecsSinceEpoch(time.usecs() / 1000, Qt::UTC);
}

Core::Time timeOf(const QDateTimeEdit &edit)
{
    const QDate date = edit.date();
    const QTime time = edit.time();
    return Core::Time(date.year(), date.month(), date.day(), time.hour(), time.minute(),
                      time.second());
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
      _reason(new QLabel(this))
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
    connect(bench->selection(), SIGNAL(eventChanged()), this, SLOT(followSelection()));
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
    _importAction = addAction(tr("&Import events…"), SLOT(importFiles()));
    _exportAction = addAction(tr("E&xport events…"), SLOT(exportShown()));
    _scriptAction = addAction(tr("Run a scri&pt on the events…"), SLOT(runScript()));
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
    _importAction->setEnabled(isOpen && !_catalogue->isTemporary() && !_catalogue->isImporting());
    _exportAction->setEnabled(hasRows);
    _scriptAction->setEnabled(hasRows);
    _showAllAction->setEnabled(isOpen);
    if (_list)
        _list->buttonExport()->setEnabled(hasRows);
}

// The database and its list

void EventPanel::showDatabase()
{
    if (_list) {
        _headerState = tree()->header()->saveState();
        delete _list;
        _list = nullptr;
    }
    _count->clear();
    _reason->hide();
    if (_catalogue->database()) {
        _title->setText(_catalogue->isTemporary()
                            ? tr("%1 (looked at, not stored)").arg(_catalogue->title())
                            : _catalogue->title());
        makeList();
        showAll();
    } else {
        _title->setText(tr("No event database is open."));
        _reason->setText(tr("Open one by File > Open event database, or drop a QuakeML or CSV file "
                            "here."));
        _reason->show();
    }
    updateActions();
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
    for (auto *edit : _list->findChildren<QDateTimeEdit *>())
        edit->setMinimumDate(QDate(1, 1, 1));
    static_cast<QVBoxLayout *>(layout())->insertWidget(1, _list, 1);

    connect(_list, SIGNAL(eventSelected()), this, SLOT(choose()));
    connect(_list, SIGNAL(exportEvents(QAbstractItemModel *)), this,
            SLOT(exportList(QAbstractItemModel *)));
    // These come behind the list's own connections, when the load has ended.
    for (const char *name : {"buttonLoadInterval", "buttonLoadDays", "buttonClear"})
        connect(_list->findChild<QToolButton *>(name), SIGNAL(clicked()), this, SLOT(tellCount()));
    connect(_list->findChild<QWidget *>("hideFakeEvents"), SIGNAL(toggled(bool)), this,
            SLOT(tellCount()));
}

QTreeView *EventPanel::tree() const
{
    return _list->findChild<QTreeView *>("treeView");
}

/** All of a catalogue, or the last weeks of one that would take long to read. */
void EventPanel::showAll()
{
    const Core::TimeWindow extent = _catalogue->extent();
    if (_list && extent.valid()) {
        Core::Time begin = extent.startTime();
        if (IO::EventArchive(_catalogue->database()).count({}) > MostShownAtOnce)
            begin =
                std::max(begin, extent.endTime() - Core::TimeSpan(DaysOfLargeOnes * SecondsPerDay));
        _list->setTimeWindow(dateTime(begin), dateTime(extent.endTime()));
        _list->loadInterval();
    }
    tellCount();
    followSelection();
}

/** Shows what an import has stored, without taking away the interval that the user looks at. */
void EventPanel::reload()
{
    if (!_list || _catalogue->isTemporary() || _list->rowCount() == 0) {
        showAll();
        return;
    }
    _list->loadInterval();
    tellCount();
    followSelection();
}

Core::TimeWindow EventPanel::shownWindow() const
{
    return {timeOf(*_list->findChild<QDateTimeEdit *>("dateTimeEditStart")),
            timeOf(*_list->findChild<QDateTimeEdit *>("dateTimeEditEnd"))};
}

QString EventPanel::emptyReason() const
{
    return _reason->isHidden() ? QString() : _reason->text();
}

void EventPanel::tellCount()
{
    if (!_list)
        return;
    const int count = _list->rowCount();
    _count->setText(tr("%1 events").arg(QLocale(QLocale::English).toString(count)));
    // Whoever has cleared the list knows why it is empty.
    const bool isCleared = sender() && sender()->objectName() == "buttonClear";
    _reason->setVisible(count == 0 && !isCleared);
    if (count == 0 && !isCleared)
        _reason->setText(
            explainEmptyList(_catalogue->database(), shownWindow(), _catalogue->extent(),
                             _list->findChild<Norvu::Gui::EventFilterWidget *>()->filter()));
    updateActions();
}

// The chosen event

void EventPanel::choose()
{
    const EventRow row = _list->currentEvent();
    if (row.time.valid())
        bench()->selection()->setEvent(summaryOf(row));
}

void EventPanel::followSelection()
{
    const auto &event = bench()->selection()->chosenEvent();
    if (!_list || !event)
        return;
    QAbstractItemModel *model = tree()->model();
    if (tree()->currentIndex().isValid() &&
        tree()->currentIndex().siblingAtColumn(IdColumn).data().toString() == event->publicID)
        return;
    for (int row = 0; row < model->rowCount(); ++row) {
        const QModelIndex index = model->index(row, IdColumn);
        if (index.data().toString() == event->publicID) {
            tree()->setCurrentIndex(model->index(row, 0));
            tree()->scrollTo(model->index(row, 0), QAbstractItemView::PositionAtCenter);
            return;
        }
    }
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
        openAddress(dialog.url(), schema);
}

bool EventPanel::openAddress(const QString &url, Catalogue::Schema schema)
{
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const bool ok = _catalogue->open(url, schema);
    QApplication::restoreOverrideCursor();
    if (!ok)
        return false;
    // Passwords are typed anew rather than kept in a file of settings.
    const QString address = _catalogue->title();
    _recent.removeAll(address);
    _recent.prepend(address);
    _recent = _recent.mid(0, MostRecent);
    return true;
}

QStringList EventPanel::fileFilters() const
{
    return {tr("Events (*.xml *.qml *.csv *.txt *.sqlite *.db)")};
}

bool EventPanel::canOpen(const QString &source) const
{
    if (Catalogue::isAddress(source))
        return true;
    const QString suffix = QFileInfo(source).suffix().toLower();
    return suffix == "sqlite" || suffix == "db" || Catalogue::isEventFile(source);
}

bool EventPanel::openSources(const QStringList &sources)
{
    QStringList files;
    bool ok = true;
    for (const QString &source : sources) {
        if (Catalogue::isAddress(source))
            ok = openAddress(source, Catalogue::Schema::Expected) && ok;
        else if (Catalogue::isEventFile(source))
            files.append(source);
        else
            ok = openAddress("sqlite://" +
                                 QUrl::toPercentEncoding(QFileInfo(source).absoluteFilePath(), "/"),
                             Catalogue::Schema::Expected) &&
                 ok;
    }
    return openFiles(files) && ok;
}

/** Files are looked at; it takes "Import" to store them. */
bool EventPanel::openFiles(const QStringList &files)
{
    if (files.isEmpty())
        return true;
    QStringList names;
    for (const QString &file : files)
        names.append(QFileInfo(file).fileName());
    if (_catalogue->isImporting()) {
        bench()->tell({tr("%1: an import still runs; open it again then").arg(names.join(", "))});
        return false;
    }
    if (!_catalogue->openTemporary(names.join(", ")))
        return false;
    _catalogue->import(files);
    return true;
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
    const QString file = demonstrationDatabase(folder);
    QString error;
    if (!QDir().mkpath(folder) || !Client::writeDemonstrationCatalogue(file, &error)) {
        bench()->tell({error.isEmpty() ? tr("%1: the folder can't be made").arg(folder) : error});
        return false;
    }
    return _catalogue->open("sqlite://" + QUrl::toPercentEncoding(file, "/"),
                            Catalogue::Schema::Expected);
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

void EventPanel::exportList(QAbstractItemModel *model)
{
    QString problem;
    const auto write = [&](const QString &file) {
        const bool ok = writeEvents(_catalogue->database(), model, file, &problem);
        if (!ok)
            bench()->tell({problem});
        return ok;
    };
    if (_exportFile.isEmpty())
        _exportFile = QDir::home().filePath("events.xml");
    Norvu::Gui::ExportFileDialog dialog(write, _exportFile, eventExportFilter(), _exportScript,
                                        window());
    if (dialog.exec() == QDialog::Accepted)
        bench()->showStatus(tr("%1 events exported").arg(model->rowCount()));
    _exportFile = dialog.filePath();
    _exportScript = dialog.scriptPath();
}

/** The listed events go to a file of their own, and a job runs the script on it. */
void EventPanel::runScript()
{
    const QString script = QFileDialog::getOpenFileName(window(), tr("Script to run on the events"),
                                                        QFileInfo(_exportScript).path());
    if (script.isEmpty())
        return;
    _exportScript = script;
    if (!_scriptFiles)
        _scriptFiles = std::make_unique<QTemporaryDir>();
    const QString file = _scriptFiles->filePath(QString("events-%1.xml").arg(++_scriptCount));
    QString error;
    if (!writeEvents(_catalogue->database(), tree()->model(), file, &error)) {
        bench()->tell({error});
        return;
    }
    bench()->jobs()->add(
        tr("%1 on %2 events").arg(QFileInfo(script).fileName(), QString::number(_list->rowCount())),
        QString("\"%1\" \"%2\"").arg(script, file));
    bench()->showStatus(tr("A job was started; see the panel of jobs"));
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
