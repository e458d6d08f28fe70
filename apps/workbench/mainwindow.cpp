// SPDX-License-Identifier: LGPL-3.0-or-later

#include "mainwindow.h"

#include "darkpalette.h"
#include "shortcutsdialog.h"
#include "spectrograms/gradientpanel.h"
#include "spectrograms/gradientsheet.h"
#include "spectrograms/spectrogrammenu.h"
#include "spectrograms/spectrogrampanel.h"
#include "spectrograms/spectrograms.h"
#include "waveforms/exportactions.h"
#include "waveforms/filterbox.h"
#include "waveforms/measuring.h"
#include "waveforms/overviewmenu.h"
#include "waveforms/waveformpanel.h"
#include "widgetgallery.h"

#include <norvu/gui/multitracewidget.h>
#include <norvu/gui/traceview.h>
#include <tellarix/client/demo/demonstration.h>
#include <tellarix/core/environment.h>

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDatabase>
#include <QInputDialog>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QSettings>
#include <QStatusBar>
#include <QToolBar>
#include <QUrl>

#include <cstdio>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr auto SettingsGroup = "Workbench";
constexpr int ProgressWidth = 220;
constexpr int ProblemTime = 15000;
constexpr int StatusMilliseconds = 20000;
constexpr int QuietRounds = 3;

QStringList localFiles(const QMimeData *data)
{
    QStringList files;
    for (const QUrl &url : data->urls()) {
        if (url.isLocalFile())
            files.append(url.toLocalFile());
    }
    return files;
}

QString demonstrationFolder()
{
    return QDir(QString::fromUtf8(Environment::Instance()->dataDir())).filePath("demonstration");
}

} // namespace

MainWindow::MainWindow(QWidget *parent) : QMainWindow(parent), _waveforms(new WaveformPanel(this))
{
    setWindowTitle(tr("Norvu workbench"));
    setCentralWidget(_waveforms);
    setAcceptDrops(true);
    resize(1200, 800);

    createMessageDock();
    createStatusBar();
    createFileMenu();
    createViewMenu();
    createFilterBar();
    createTraceMenu();
    createOverviewMenu();
    createSpectrogramMenu();
    addShortcutsHelp(this);
    _waveforms->view()->setFocus();
}

void MainWindow::createFileMenu()
{
    QMenu *menu = menuBar()->addMenu(tr("&File"));
    menu->addAction(tr("&Open files…"), this, SLOT(askForFiles()), QKeySequence::Open);
    menu->addAction(tr("Open &URL…"), this, SLOT(askForUrl()), tr("Ctrl+L"));
    menu->addAction(tr("Open the &demonstration"), this, SLOT(openDemonstration()));
    menu->addSeparator();
    addExports(menu);
    menu->addSeparator();
    menu->addAction(tr("&Close all"), this, SLOT(closeAll()), QKeySequence::Close);
    menu->addAction(tr("&Quit"), this, SLOT(close()), tr("Ctrl+Q"));
}

void MainWindow::addExports(QMenu *menu)
{
    _exports = new ExportActions(_waveforms->view(), this);
    menu->addActions(_exports->actions());
    connect(_exports, SIGNAL(failed(QStringList)), this, SLOT(tell(QStringList)));
    connect(_exports, &ExportActions::done, this,
            [this](const QString &text) { statusBar()->showMessage(text, StatusMilliseconds); });
}

void MainWindow::createViewMenu()
{
    QMenu *menu = menuBar()->addMenu(tr("&View"));
    menu->addAction(tr("Show &all data"), _waveforms, SLOT(showAllData()), tr("Ctrl+0"));
    menu->addAction(tr("&Next stretch of data"), _waveforms, SLOT(showNextStretch()),
                    QKeySequence::MoveToNextPage);
    menu->addAction(tr("&Previous stretch of data"), _waveforms, SLOT(showPreviousStretch()),
                    QKeySequence::MoveToPreviousPage);
    menu->addSeparator();
    menu->addActions(_waveforms->view()->controlActions());
    menu->addSeparator();

    QAction *compact = addToggle(menu, tr("&Compact rows"), tr("Ctrl+K"), SLOT(setCompact(bool)));
    connect(_waveforms, SIGNAL(compactChanged(bool)), compact, SLOT(setChecked(bool)));
    addToggle(menu, tr("Amplitude &rulers"), tr("Ctrl+R"), SLOT(setRulersShown(bool)));
    addToggle(menu, tr("&Local time"), tr("Ctrl+T"), SLOT(setLocalTimeShown(bool)));

    QAction *dark = menu->addAction(tr("&Dark colours"));
    dark->setCheckable(true);
    dark->setChecked(hasDarkColors());
    connect(dark, &QAction::toggled, dark, [](bool on) { setDarkColors(on); });

    menu->addAction(_messageDock->toggleViewAction());
}

QAction *MainWindow::addToggle(QMenu *menu, const QString &text, const QString &shortcut,
                               const char *slot)
{
    QAction *action = menu->addAction(text);
    action->setCheckable(true);
    action->setShortcut(shortcut);
    connect(action, SIGNAL(toggled(bool)), _waveforms, slot);
    return action;
}

void MainWindow::createFilterBar()
{
    _filterBox = new FilterBox(this);
    QToolBar *bar = addToolBar(tr("Filter"));
    bar->setObjectName("filter");
    bar->addWidget(_filterBox);

    connect(_filterBox, SIGNAL(filterChanged(QString)), this, SLOT(setFilter(QString)));
    connect(_filterBox, SIGNAL(filterEnabled(bool)), _waveforms->view(),
            SLOT(setFilterEnabled(bool)));
    connect(_waveforms->view(), SIGNAL(filteringProgress(int, int)), this,
            SLOT(showFilteringProgress(int, int)));
    connect(_filterBox, SIGNAL(problem(QString)), this, SLOT(showProblem(QString)));
}

void MainWindow::createTraceMenu()
{
    QMenu *menu = menuBar()->addMenu(tr("&Traces"));
    menu->addAction(_filterBox->toggleAction());
    menu->addAction(_filterBox->editAction());
    menu->addSeparator();
    // The view's tool bar, and those of its actions that stand in no menu yet.
    if (const auto *bar = _waveforms->view()->findChild<QToolBar *>())
        menu->addActions(bar->actions());
    menu->addSeparator();
    const QList<QAction *> shown = _waveforms->view()->controlActions();
    for (QAction *action : _waveforms->view()->actions()) {
        if (!shown.contains(action))
            menu->addAction(action);
    }
    menu->addAction(tr("Select by &pattern…"), _waveforms->view(), SLOT(selectPattern()));
    menu->addAction(tr("&Deselect by pattern…"), _waveforms->view(), SLOT(deselectPattern()));
}

void MainWindow::createOverviewMenu()
{
    _overview = new Norvu::Gui::MultiTraceWidget(_waveforms->view());
    _overviewMenu = new OverviewMenu(_waveforms->view(), _overview, this);
    menuBar()->addMenu(_overviewMenu);
}

void MainWindow::createSpectrogramMenu()
{
    Spectrograms *spectrograms = _waveforms->spectrograms();
    _spectrogramPanel = new SpectrogramPanel(spectrograms, this);
    connect(_spectrogramPanel, SIGNAL(problem(QString)), this, SLOT(showProblem(QString)));

    _spectrogramDock = new QDockWidget(tr("Spectrogram"), this);
    _spectrogramDock->setObjectName("spectrogram");
    _spectrogramDock->setWidget(_spectrogramPanel);
    addDockWidget(Qt::RightDockWidgetArea, _spectrogramDock);
    _spectrogramDock->hide();

    auto *menu = new SpectrogramMenu(spectrograms, this);
    menu->addSeparator();
    QAction *settings = _spectrogramDock->toggleViewAction();
    settings->setText(tr("Spectrogram se&ttings"));
    settings->setShortcut(tr("Ctrl+Shift+G"));
    menu->addAction(settings);
    menuBar()->addMenu(menu);

    auto *separator = new QAction(this);
    separator->setSeparator(true);
    QList<QAction *> rowActions{menu->selectedAction(), settings,
                                _waveforms->measuringTool()->measureAction(), separator};
    _waveforms->setRowActions(rowActions + _exports->actions());
}

void MainWindow::setFilter(const QString &text)
{
    tell(_waveforms->setFilter(text));
}

void MainWindow::showProblem(const QString &message)
{
    statusBar()->showMessage(message, ProblemTime);
}

void MainWindow::showFilteringProgress(int done, int total)
{
    _progressBar->setRange(0, total);
    _progressBar->setValue(done);
    _progressBar->setVisible(done < total);
}

void MainWindow::createMessageDock()
{
    _messages = new QPlainTextEdit(this);
    _messages->setReadOnly(true);
    _messages->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    _messages->setLineWrapMode(QPlainTextEdit::NoWrap);

    _messageDock = new QDockWidget(tr("Messages"), this);
    _messageDock->setObjectName("messages");
    _messageDock->setWidget(_messages);
    addDockWidget(Qt::BottomDockWidgetArea, _messageDock);
    _messageDock->hide();
}

void MainWindow::createStatusBar()
{
    _pointerLabel = new QLabel(this);
    _rangeLabel = new QLabel(this);
    _progressBar = new QProgressBar(this);
    _progressBar->setFormat(tr("Filtering: %v of %m rows"));
    _progressBar->setMaximumWidth(ProgressWidth);
    _progressBar->hide();
    _measurementLabel = new QLabel(this);
    // A long text must not keep the window from being made narrow.
    _measurementLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    _measurementLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
    statusBar()->addWidget(_pointerLabel);
    statusBar()->addWidget(_measurementLabel, 1);
    statusBar()->addPermanentWidget(_progressBar);
    statusBar()->addPermanentWidget(_rangeLabel);
    connect(_waveforms, SIGNAL(problems(QStringList)), this, SLOT(tell(QStringList)));
    connect(_waveforms, SIGNAL(pointerText(QString)), _pointerLabel, SLOT(setText(QString)));
    connect(_waveforms, SIGNAL(rangeText(QString)), _rangeLabel, SLOT(setText(QString)));
    connect(_waveforms->measuringTool(), SIGNAL(measured(QString)), this,
            SLOT(showMeasurement(QString)));
}

void MainWindow::showMeasurement(const QString &text)
{
    _measurementLabel->setText(text);
    // For where the status bar has no room for all of it.
    _measurementLabel->setToolTip(text);
}

void MainWindow::setTimeWindow(const Core::TimeWindow &window)
{
    _waveforms->setTimeWindow(window);
}

bool MainWindow::open(const QStringList &sources)
{
    const WaveformPanel::Outcome outcome = _waveforms->open(sources);
    tell(outcome.messages);
    return outcome.ok;
}

bool MainWindow::openDemonstration()
{
    const QString folder = demonstrationFolder();
    if (!Client::demonstrationIsComplete(folder)) {
        statusBar()->showMessage(tr("Writing the demonstration recordings…"));
        QString error;
        const bool written = Client::writeDemonstration(folder, &error);
        statusBar()->clearMessage();
        if (!written) {
            tell({error});
            return false;
        }
    }

    QHash<QString, double> distances;
    for (const Client::DemoStation &station : Client::demonstrationStations())
        distances.insert(station.network + '.' + station.station, station.distanceKm);
    _waveforms->setDistances(distances);

    QStringList files;
    for (const QString &file : Client::demonstrationFiles())
        files.append(QDir(folder).filePath(file));
    const bool opened = open(files);
    _waveforms->alignTo(Client::demonstrationOrigin().time);
    return opened;
}

void MainWindow::closeAll()
{
    _waveforms->clear();
    _messages->clear();
}

void MainWindow::askForFiles()
{
    QSettings settings;
    settings.beginGroup(SettingsGroup);
    const QStringList files = QFileDialog::getOpenFileNames(
        this, tr("Open waveform files"), settings.value("folder").toString(),
        tr("Waveforms (*.mseed *.msd *.mseed3 *.ms3 *.sac *.SAC);;All files (*)"));
    if (files.isEmpty())
        return;
    settings.setValue("folder", QFileInfo(files.first()).absolutePath());
    open(files);
}

void MainWindow::askForUrl()
{
    const QString url = QInputDialog::getText(this, tr("Open URL"),
                                              tr("URL of a record stream, for instance "
                                                 "archive:///data/archive"));
    if (!url.trimmed().isEmpty())
        open({url.trimmed()});
}

void MainWindow::tell(const QStringList &problems)
{
    if (problems.isEmpty())
        return;
    if (!_interactive) {
        for (const QString &problem : problems)
            std::fprintf(stderr, "%s\n", qUtf8Printable(problem));
        return;
    }
    for (const QString &problem : problems)
        _messages->appendPlainText(problem);
    _messageDock->show();
}

QVector<MainWindow::Snapshot> MainWindow::snapshots()
{
    QCoreApplication::processEvents();
    return {{"waveforms.png", grab()},
            {"overview.png", overviewPicture(false)},
            {"overview-horizontal.png", overviewPicture(true)},
            {"spectrogram.png", spectrogramPicture()},
            {"gradients.png", gradientSheet(palette(), devicePixelRatioF())},
            {"gradient-editor.png", gradientEditorPicture()},
            {"widgets.png", widgetGallery()}};
}

QPixmap MainWindow::overviewPicture(bool horizontal)
{
    _overviewMenu->setOverviewShown(true);
    _overviewMenu->setHorizontal(horizontal);
    _overviewMenu->setWigglesShown(true);
    QCoreApplication::processEvents();
    const QPixmap picture = grab();
    _overviewMenu->setOverviewShown(false);
    return picture;
}

QPixmap MainWindow::spectrogramPicture()
{
    Spectrograms *spectrograms = _waveforms->spectrograms();
    spectrograms->setAllShown(true);
    _spectrogramDock->show();
    // Rows say what they lack when they are painted, and get other sizes as their scales need them.
    for (int quiet = 0; quiet < QuietRounds; ++quiet) {
        grab();
        QCoreApplication::processEvents();
        if (spectrograms->isBusy())
            quiet = 0;
    }
    const QPixmap picture = grab();
    spectrograms->setAllShown(false);
    _spectrogramDock->hide();
    return picture;
}

QPixmap MainWindow::gradientEditorPicture()
{
    _spectrogramDock->show();
    QCoreApplication::processEvents();
    GradientPanel *panel = _spectrogramPanel->gradientPanel();
    const QPixmap picture = panel->grab(QRect(0, 0, panel->width(), panel->sizeHint().height()));
    _spectrogramDock->hide();
    return picture;
}

void MainWindow::restoreSettings()
{
    QSettings settings;
    settings.beginGroup(SettingsGroup);
    restoreGeometry(settings.value("geometry").toByteArray());
    restoreState(settings.value("state").toByteArray());
    _messageDock->hide();
    _filterBox->restoreHistory();
    _spectrogramPanel->restoreSettings();
}

void MainWindow::saveSettings() const
{
    QSettings settings;
    settings.beginGroup(SettingsGroup);
    settings.setValue("geometry", saveGeometry());
    settings.setValue("state", saveState());
    _filterBox->saveHistory();
    _spectrogramPanel->saveSettings();
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (_interactive)
        saveSettings();
    QMainWindow::closeEvent(event);
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

} // namespace Workbench
