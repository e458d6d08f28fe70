// SPDX-License-Identifier: LGPL-3.0-or-later

#include "mainwindow.h"

#include "bench/darkpalette.h"
#include "bench/demonstration.h"
#include "bench/folderfiles.h"
#include "bench/jobs.h"
#include "bench/replay.h"
#include "bench/selection.h"
#include "bench/stations.h"
#include "bench/task.h"
#include "messagedock.h"
#include "shortcutsdialog.h"
#include "taskprogress.h"
#include "widgetgallery.h"

#include <tellarix/client/io/databaseaddress.h>
#include <tellarix/client/remote/httpaccounts.h>

#include <QAbstractSpinBox>
#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QSettings>
#include <QStatusBar>
#include <QTabWidget>
#include <QToolBar>
#include <QUrl>

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace Workbench {

namespace {

constexpr auto SettingsGroup = "Workbench";
constexpr int StatusMilliseconds = 20000;
constexpr int RecentCount = 12;
constexpr int RecentLength = 90; // in characters

QStringList localFiles(const QMimeData *data)
{
    QStringList files;
    for (const QUrl &url : data->urls()) {
        if (url.isLocalFile())
            files.append(url.toLocalFile());
    }
    return files;
}

/** The box that a widget is, or whose input it is; null for others. */
QWidget *boxOf(QObject *watched)
{
    for (QObject *object : {watched, watched->parent()}) {
        if (qobject_cast<QComboBox *>(object) || qobject_cast<QAbstractSpinBox *>(object))
            return static_cast<QWidget *>(object);
    }
    return nullptr;
}

/** A layout that changes may make the one around it change in turn. */
void settleLayout()
{
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
}

QString taskText(const Task &task)
{
    const Task::Progress progress = task.progress();
    if (task.unit().isEmpty() || progress.total <= 0)
        return task.name();
    return QCoreApplication::translate("Workbench::MainWindow", "%1 (%2 of %3 %4)")
        .arg(task.name())
        .arg(progress.done)
        .arg(progress.total)
        .arg(task.unit());
}

QString cutShortText(const QStringList &tasks)
{
    return QCoreApplication::translate("Workbench::MainWindow", "Cut short by quitting: %1")
        .arg(tasks.join(", "));
}

Qt::DockWidgetArea areaOf(PanelPlace place)
{
    switch (place) {
    case PanelPlace::Left:
        return Qt::LeftDockWidgetArea;
    case PanelPlace::Top:
        return Qt::TopDockWidgetArea;
    case PanelPlace::Bottom:
        return Qt::BottomDockWidgetArea;
    default:
        return Qt::RightDockWidgetArea;
    }
}

/** Texts that may be shown and stored: passwords for web services are known by these until the
 *  program ends. */
QStringList withoutPasswords(QStringList sources)
{
    for (QString &source : sources)
        source = Tellarix::IO::takePasswords(source);
    return sources;
}

/** What stands for a source among those that were opened last. */
QString rememberedText(const QString &source)
{
    if (QFileInfo::exists(source))
        return QFileInfo(source).absoluteFilePath();
    const auto database = Tellarix::IO::DatabaseAddress::Read(source);
    return database ? database->toString() : source;
}

} // namespace

MainWindow::MainWindow(const PanelRegistry &registry, QWidget *parent)
    : QMainWindow(parent), _stationFiles(&_bench), _panels(&_bench), _centre(new QTabWidget(this)),
      _messages(new MessageDock(this))
{
    setWindowTitle(tr("Norvu workbench"));
    setAcceptDrops(true);
    resize(1200, 800);
    _centre->setDocumentMode(true);
    _centre->setTabBarAutoHide(true);
    setCentralWidget(_centre);

    qApp->installEventFilter(this); // sees how panels are polished
    createMessages();
    createPanels(registry);
    createFileMenu();
    createViewMenu();
    for (const PanelParts &parts : _panels.parts()) {
        for (QMenu *menu : parts.menus)
            menuBar()->addMenu(menu);
    }
    addShortcutsHelp(this);
    if (_centre->currentWidget())
        _centre->currentWidget()->setFocus();
}

// Panels

void MainWindow::createPanels(const PanelRegistry &registry)
{
    _panels.make(registry, _messages->objectName());
    for (const PanelParts &parts : _panels.parts()) {
        Panel *panel = parts.panel;
        if (panel->description().place == PanelPlace::Centre)
            addTab(panel);
        else if (panel->description().place == PanelPlace::Window)
            addWindow(panel);
        else
            addDock(panel);
        _panels.call(panel, tr("it can't fill the status bar"),
                     [&] { panel->fillStatusBar(statusBar()); });
        for (QToolBar *bar : parts.toolBars)
            addToolBar(bar);
    }
}

void MainWindow::addTab(Panel *panel)
{
    _centre->addTab(panel, panel->description().icon, panel->description().title);
    connect(panel->toggleAction(), &QAction::triggered, panel, [this, panel] {
        _centre->setCurrentWidget(panel);
        panel->setFocus();
    });
}

/** It stays above this window, which can be used meanwhile. */
void MainWindow::addWindow(Panel *panel)
{
    panel->setParent(this, Qt::Dialog);
    panel->setWindowTitle(panel->description().title);
    addAction(panel->toggleAction());
    connect(panel->toggleAction(), &QAction::triggered, panel, [panel] {
        panel->show();
        panel->raise();
        panel->activateWindow();
        panel->setFocus();
    });
}

void MainWindow::addDock(Panel *panel)
{
    const PanelDescription &description = panel->description();
    auto *dock = new QDockWidget(description.title, this);
    dock->setObjectName(description.name);
    dock->setWidget(panel);
    dock->toggleViewAction()->setText(panel->toggleAction()->text());
    placeDock(dock, areaOf(description.place));
    _docks.insert(panel, dock);

    QAction *toggle = panel->toggleAction();
    connect(dock->toggleViewAction(), SIGNAL(toggled(bool)), toggle, SLOT(setChecked(bool)));
    connect(toggle, &QAction::triggered, dock, [dock, panel, toggle](bool show) {
        // One that lies behind another tab is wanted in front, not away.
        const bool isBehind = !show && dock->visibleRegion().isEmpty();
        dock->setVisible(show || isBehind);
        toggle->setChecked(show || isBehind);
        if (!show && !isBehind)
            return;
        dock->raise();
        panel->setFocus();
    });
    dock->setVisible(description.isShownAtFirst);
    toggle->setChecked(description.isShownAtFirst);
}

/** Docks of one area lie above each other, so that they leave the traces some room. */
void MainWindow::placeDock(QDockWidget *dock, Qt::DockWidgetArea area)
{
    addDockWidget(area, dock);
    for (QDockWidget *other : findChildren<QDockWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
        if (other != dock && dockWidgetArea(other) == area) {
            tabifyDockWidget(other, dock);
            return;
        }
    }
}

/** What docks take from the centre beyond half of the window they give back. */
void MainWindow::makeRoomInCentre(Qt::Orientation orientation)
{
    const auto extent = [orientation](const QWidget *widget) {
        return orientation == Qt::Horizontal ? widget->width() : widget->height();
    };
    const Qt::DockWidgetAreas areas = orientation == Qt::Horizontal
                                          ? Qt::LeftDockWidgetArea | Qt::RightDockWidgetArea
                                          : Qt::TopDockWidgetArea | Qt::BottomDockWidgetArea;
    QList<QDockWidget *> docks;
    for (QDockWidget *dock : findChildren<QDockWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
        const bool isBehind = isVisible() && dock->visibleRegion().isEmpty();
        if (!dock->isHidden() && !dock->isFloating() && !isBehind &&
            areas.testFlag(dockWidgetArea(dock)))
            docks.append(dock);
    }
    const int lack = extent(this) / 2 - extent(_centre);
    if (docks.isEmpty() || lack <= 0)
        return;
    QList<int> sizes;
    for (const QDockWidget *dock : docks)
        sizes.append(std::max(1, extent(dock) - lack / docks.size()));
    resizeDocks(docks, sizes, orientation);
}

void MainWindow::createMessages()
{
    placeDock(_messages, Qt::BottomDockWidgetArea);
    _messages->hide();
    connect(&_bench, SIGNAL(problemsTold(QStringList)), this, SLOT(tell(QStringList)));
    statusBar()->addPermanentWidget(new TaskProgress(_bench.tasks(), this));
    connect(&_bench, SIGNAL(statusShown(QString)), this, SLOT(showStatus(QString)));
    connect(&_bench, &Bench::openRequested, this,
            [this](const QStringList &sources) { open(sources); });
}

// Menus

void MainWindow::createFileMenu()
{
    QMenu *menu = menuBar()->addMenu(tr("&File"));
    menu->addAction(tr("&Open files…"), this, SLOT(askForFiles()), QKeySequence::Open);
    menu->addAction(tr("Open &folder…"), this, SLOT(askForFolder()), tr("Ctrl+Shift+O"));
    _recent = menu->addMenu(tr("Open &recent"));
    _recent->setToolTipsVisible(true);
    connect(_recent, SIGNAL(aboutToShow()), this, SLOT(fillRecent()));
    connect(_recent, SIGNAL(triggered(QAction *)), this, SLOT(openRecent(QAction *)));
    menu->addAction(tr("Open &URL…"), this, SLOT(askForUrl()), tr("Ctrl+L"));
    menu->addActions(panelActions(&PanelParts::openActions));
    menu->addAction(tr("Open the &demonstration"), this, SLOT(openDemonstration()));
    menu->addSeparator();
    menu->addActions(panelActions(&PanelParts::fileActions));
    menu->addSeparator();
    menu->addAction(tr("&Close all"), this, SLOT(closeAll()), QKeySequence::Close);
    menu->addAction(tr("&Quit"), this, SLOT(close()), tr("Ctrl+Q"));
}

void MainWindow::createViewMenu()
{
    QMenu *menu = menuBar()->addMenu(tr("&View"));
    menu->addActions(panelActions(&PanelParts::viewActions));

    _dark = menu->addAction(tr("Dar&k colours"));
    _dark->setCheckable(true);
    _dark->setChecked(hasDarkColors());
    connect(_dark, &QAction::toggled, _dark, [](bool on) { setDarkColors(on); });

    createPanelMenu(menu);
    menu->addAction(_messages->toggleViewAction());
}

void MainWindow::createPanelMenu(QMenu *viewMenu)
{
    QMenu *menu = viewMenu->addMenu(tr("Pan&els"));
    for (const PanelParts &parts : _panels.parts()) {
        const PanelPlace place = parts.panel->description().place;
        const bool isOnlyTab = place == PanelPlace::Centre && _centre->count() < 2;
        if (!isOnlyTab && !parts.openActions.contains(parts.panel->toggleAction()))
            menu->addAction(parts.panel->toggleAction());
    }
}

/** What the panels add to a menu, with separators between them. */
QList<QAction *> MainWindow::panelActions(QList<QAction *> PanelParts::*actions)
{
    QList<QAction *> all;
    for (const PanelParts &parts : _panels.parts()) {
        if (!all.isEmpty() && !(parts.*actions).isEmpty()) {
            auto *separator = new QAction(this);
            separator->setSeparator(true);
            all.append(separator);
        }
        all.append(parts.*actions);
    }
    return all;
}

// Problems and status

void MainWindow::tell(const QStringList &problems)
{
    if (!_interactive) {
        for (const QString &problem : problems)
            std::fprintf(stderr, "%s\n", qUtf8Printable(problem));
        return;
    }
    _messages->add(problems);
}

void MainWindow::showStatus(const QString &text)
{
    statusBar()->showMessage(text, StatusMilliseconds);
}

// Sources

Panel *MainWindow::panelFor(const QString &source) const
{
    const QVector<PanelParts> &all = _panels.parts();
    const auto parts = std::find_if(all.crbegin(), all.crend(), [&](const PanelParts &candidate) {
        bool can = false;
        _panels.call(candidate.panel, tr("it can't tell whether %1 is of its kind").arg(source),
                     [&] { can = candidate.panel->canOpen(source); });
        return can;
    });
    return parts == all.crend() ? nullptr : parts->panel;
}

/** Has each panel do something that can fail; whether all did it. */
bool MainWindow::haveAll(const QString &failure, const std::function<bool(Panel *)> &task)
{
    bool ok = true;
    for (const PanelParts &parts : _panels.parts()) {
        bool done = false;
        _panels.call(parts.panel, failure, [&] { done = task(parts.panel); });
        ok = ok && done;
    }
    return ok;
}

bool MainWindow::open(const QStringList &given)
{
    const QStringList sources = withoutPasswords(given);
    if (_interactive)
        remember(sources);
    QHash<Panel *, QStringList> shares;
    QStringList stationFiles;
    for (const QString &source : withFilesOfFolders(sources)) {
        const bool isOfStations = Tellarix::IO::isInventoryFile(source);
        (isOfStations ? stationFiles : shares[panelFor(source)]).append(source);
    }
    _stationFiles.open(stationFiles);

    bool ok = true;
    for (const QString &source : shares.value(nullptr)) {
        tell({tr("%1: there is no panel for it").arg(source)});
        ok = false;
    }
    const auto openShare = [&](Panel *panel) {
        return !shares.contains(panel) || panel->openSources(shares.value(panel));
    };
    return haveAll(tr("it can't open its sources"), openShare) && ok;
}

bool MainWindow::openRemembered()
{
    bool isAnyOpen = false;
    for (const PanelParts &parts : _panels.parts()) {
        _panels.call(parts.panel, tr("it can't open what it has remembered"),
                     [&] { isAnyOpen = parts.panel->openRemembered() || isAnyOpen; });
    }
    return isAnyOpen;
}

bool MainWindow::openDemonstration()
{
    addDemonstrationStations(_bench.stations());
    _bench.selection()->setEvent(demonstrationEvent());
    const bool ok = haveAll(tr("it can't open its part of the demonstration"), [](Panel *panel) {
        return panel->openDemonstration(demonstrationFolder());
    });
    _bench.showStatus(QString());
    return ok;
}

void MainWindow::closeAll()
{
    haveAll(tr("it can't close what it has opened"), [](Panel *panel) {
        panel->closeAll();
        return true;
    });
    _stationFiles.cancel();
    _bench.stations()->clear();
    _bench.selection()->clear();
    _messages->clear();
}

void MainWindow::askForFiles()
{
    QStringList filters;
    for (const PanelParts &parts : _panels.parts())
        filters.append(parts.fileFilters);
    filters.append(tr("Stations (*.xml *.txt)"));
    filters.append(tr("All files (*)"));

    QSettings settings;
    settings.beginGroup(SettingsGroup);
    const QStringList files = QFileDialog::getOpenFileNames(
        this, tr("Open files"), settings.value("folder").toString(), filters.join(";;"));
    if (files.isEmpty())
        return;
    settings.setValue("folder", QFileInfo(files.first()).absolutePath());
    open(files);
}

void MainWindow::askForFolder()
{
    QSettings settings;
    settings.beginGroup(SettingsGroup);
    const QString folder = QFileDialog::getExistingDirectory(this, tr("Open folder"),
                                                             settings.value("folder").toString());
    if (folder.isEmpty())
        return;
    settings.setValue("folder", folder);
    open({folder});
}

/** Puts sources at the head of those that were opened last. */
void MainWindow::remember(const QStringList &sources) const
{
    QSettings settings;
    settings.beginGroup(SettingsGroup);
    QStringList recent;
    for (const QString &source :
         withoutPasswords(sources + settings.value("recent").toStringList()))
        recent.append(rememberedText(source));
    recent.removeDuplicates();
    settings.setValue("recent", QStringList(recent.mid(0, RecentCount)));
}

void MainWindow::fillRecent()
{
    QSettings settings;
    settings.beginGroup(SettingsGroup);
    _recent->clear();
    for (const QString &source : settings.value("recent").toStringList())
        addRecent(source);
    if (_recent->isEmpty())
        _recent->addAction(tr("Nothing yet"))->setEnabled(false);
}

/** Requests of many streams are long: their middle is left out, and told by the tool tip. */
void MainWindow::addRecent(const QString &source)
{
    const int width = fontMetrics().averageCharWidth() * RecentLength;
    QString text = fontMetrics().elidedText(source, Qt::ElideMiddle, width);
    QAction *action = _recent->addAction(text.replace('&', "&&"));
    action->setData(source);
    action->setToolTip(source);
}

void MainWindow::openRecent(QAction *action)
{
    open({action->data().toString()});
}

void MainWindow::askForUrl()
{
    const QString url = QInputDialog::getText(this, tr("Open URL"),
                                              tr("URL of a record stream, for instance "
                                                 "archive:///data/archive"));
    if (!url.trimmed().isEmpty())
        open({url.trimmed()});
}

/** The wheel changes no box that isn't in use: it scrolls what lies around it. */
bool MainWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::Wheel && event->type() != QEvent::Polish)
        return QMainWindow::eventFilter(watched, event);
    QWidget *box = boxOf(watched);
    if (box && event->type() == QEvent::Wheel && !box->hasFocus()) {
        event->ignore();
        return true;
    }
    if (box && box->focusPolicy() == Qt::WheelFocus)
        box->setFocusPolicy(Qt::StrongFocus);
    return QMainWindow::eventFilter(watched, event);
}

/** A session that isn't the first begins as the one before has ended. */
void MainWindow::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    if (_hasLayoutOfUser)
        return;
    _hasLayoutOfUser = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            makeRoomInCentre(Qt::Horizontal);
            makeRoomInCentre(Qt::Vertical);
        },
        Qt::QueuedConnection);
}

/** The layout takes from the centre alone what a window loses. */
void MainWindow::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    if (event->size().width() < event->oldSize().width())
        makeRoomInCentre(Qt::Horizontal);
    if (event->size().height() < event->oldSize().height())
        makeRoomInCentre(Qt::Vertical);
}

void MainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (!localFiles(event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent *event)
{
    event->acceptProposedAction();
    open(localFiles(event->mimeData()));
}

// Session

QVector<PanelPicture> MainWindow::snapshots()
{
    QVector<PanelPicture> pictures;
    for (const PanelParts &parts : _panels.parts()) {
        Panel *panel = parts.panel;
        QDockWidget *dock = _docks.value(panel);
        const bool wasShown = !dock || dock->isVisible();
        if (dock) {
            dock->show();
            dock->raise();
        } else if (panel->description().place == PanelPlace::Centre)
            _centre->setCurrentWidget(panel);
        settleLayout();
        _panels.call(panel, tr("it gives no pictures"), [&] { pictures += panel->pictures(); });
        if (!wasShown)
            dock->hide();
    }
    pictures.append({"workbench.png", picturePlaying()});
    pictures.append({"widgets.png", widgetGallery()});
    return pictures;
}

/** The window with the panels of a new session, in the midst of a replay about the chosen event. */
QPixmap MainWindow::picturePlaying()
{
    QHash<QDockWidget *, bool> shown;
    for (auto dock = _docks.cbegin(); dock != _docks.cend(); ++dock) {
        shown.insert(*dock, (*dock)->isVisible());
        (*dock)->setVisible(dock.key()->description().isShownAtFirst);
        if (dock.key()->description().isShownAtFirst)
            (*dock)->raise();
    }
    const bool wasOn = _bench.replay()->isOn();
    _bench.replay()->setOn(true);
    settleLayout();
    const QPixmap picture = grab();
    _bench.replay()->setOn(wasOn);
    for (auto dock = shown.cbegin(); dock != shown.cend(); ++dock)
        dock.key()->setVisible(*dock);
    return picture;
}

void MainWindow::restoreSettings()
{
    QSettings settings;
    settings.beginGroup(SettingsGroup);
    restoreGeometry(settings.value("geometry").toByteArray());
    _hasLayoutOfUser = restoreState(settings.value("state").toByteArray());
    _messages->hide();
    if (settings.value("dark").toBool())
        _dark->setChecked(true);
    for (const PanelParts &parts : _panels.parts()) {
        Panel *panel = parts.panel;
        // A window that isn't shown yet doesn't tell that it has hidden a dock.
        if (const QDockWidget *dock = _docks.value(panel))
            panel->toggleAction()->setChecked(!dock->isHidden());
        else if (settings.value("shownInCentre") == panel->description().name)
            _centre->setCurrentWidget(panel);
        _panels.call(panel, tr("it can't restore its session"),
                     [&] { panel->restoreState(settings); });
    }
    const QStringList cutShort = settings.value("cutShort").toStringList();
    if (!cutShort.isEmpty())
        showStatus(cutShortText(cutShort));
}

void MainWindow::saveSettings() const
{
    QSettings settings;
    settings.beginGroup(SettingsGroup);
    settings.setValue("geometry", saveGeometry());
    settings.setValue("state", saveState());
    settings.setValue("dark", hasDarkColors());
    if (const auto *centre = qobject_cast<Panel *>(_centre->currentWidget()))
        settings.setValue("shownInCentre", centre->description().name);
    for (const PanelParts &parts : _panels.parts()) {
        _panels.call(parts.panel, tr("it can't keep its session"),
                     [&] { parts.panel->saveState(settings); });
    }
}

/** Programs that run don't outlive the workbench. */
void MainWindow::askToEndJobs()
{
    const int running = _bench.jobs()->runningCount();
    const int waiting = _bench.jobs()->waitingCount();
    QString text = running == 1 ? tr("One job is running") : tr("%1 jobs are running").arg(running);
    if (waiting > 0)
        text += waiting == 1 ? tr(", and one waits") : tr(", and %1 wait").arg(waiting);
    text += running + waiting == 1 ? tr(": stop it and quit?") : tr(": stop them and quit?");
    _mayEndJobs = QMessageBox::question(this, tr("Quit"), text, QMessageBox::Yes | QMessageBox::No,
                                        QMessageBox::No) == QMessageBox::Yes;
    if (_mayEndJobs)
        close();
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    // Asked behind this event: whoever watches it must see at once what comes of it.
    if (_interactive && !_mayEndJobs && _bench.jobs()->runningCount() > 0) {
        QMetaObject::invokeMethod(this, "askToEndJobs", Qt::QueuedConnection);
        event->ignore();
        return;
    }
    if (_interactive) {
        saveSettings();
        tellWhatIsCutShort();
    }
    QMainWindow::closeEvent(event);
}

/** On the terminal now, and in the next session to those who have none. */
void MainWindow::tellWhatIsCutShort() const
{
    QStringList names;
    for (const Task *task : _bench.tasks()->running())
        names.append(taskText(*task));
    QSettings settings;
    settings.beginGroup(SettingsGroup);
    settings.setValue("cutShort", names);
    if (!names.isEmpty())
        std::fprintf(stderr, "%s\n", qUtf8Printable(cutShortText(names)));
}

} // namespace Workbench
