// SPDX-License-Identifier: LGPL-3.0-or-later

#include "waveformpanel.h"

#include "bench/bench.h"
#include "bench/stations.h"
#include "bench/streamstates.h"
#include "bench/task.h"
#include "bench/tracerows.h"
#include "exportactions.h"
#include "filterbox.h"
#include "filtertuning.h"
#include "frequencyaxis.h"
#include "livefollow.h"
#include "livemenu.h"
#include "livesources.h"
#include "measuring.h"
#include "navigation.h"
#include "overviewaxes.h"
#include "overviewmenu.h"
#include "pointerreport.h"
#include "rowcolors.h"
#include "rowcommands.h"
#include "rowfilters.h"
#include "rowgroups.h"
#include "rowlooks.h"
#include "roworder.h"
#include "rowvisibility.h"
#include "selectionlink.h"
#include "timecursor.h"
#include "timegestures.h"
#include "viewhistory.h"
#include "waveforms.h"

#include <norvu/gui/multitracewidget.h>
#include <norvu/gui/traceview.h>
#include <tellarix/client/demo/demonstration.h>
#include <tellarix/client/demo/demostation.h>
#include <tellarix/client/io/recordformat.h>
#include <tellarix/client/remote/httpaccounts.h>

#include <QAction>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QLabel>
#include <QMenu>
#include <QPointF>
#include <QSettings>
#include <QStatusBar>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr auto SettingsGroup = "waveforms";
constexpr auto LivePictureSource = "demonstration://live#streams=*.*.*.HHZ&from=-9min";
constexpr double LivePictureSeconds = 500;
constexpr int LongestPictureMilliseconds = 10000;
constexpr int PictureStepMilliseconds = 50;

/** The tools of a view's bar under names that say all in a menu; one that stands in another menu
 *  too is left out. */
QList<QAction *> namedTools(const QToolBar &bar)
{
    const QHash<QString, QString> names{
        {"Clean", WaveformPanel::tr("Remove emp&ty traces")},
        {"Reset", WaveformPanel::tr("&Reset selected traces")},
        {"Norm all", WaveformPanel::tr("One amplitude range for &all traces")},
        {"Norm visibile", WaveformPanel::tr("Amplitude range of what is &visible")},
    };
    QList<QAction *> tools;
    for (QAction *tool : bar.actions()) {
        if (tool->toolTip() == "Resets the view")
            continue;
        tool->setText(names.value(tool->text(), tool->text()));
        tools.append(tool);
    }
    return tools;
}

} // namespace

WaveformPanel::WaveformPanel(Bench *bench)
    : Panel(bench, {"waveforms", tr("Waveforms"), tr("&Waveforms"), {}, {}, PanelPlace::Centre}),
      _waveforms(new Waveforms(bench, this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(_waveforms);
    setFocusProxy(_waveforms->view());

    new SelectionLink(bench, _waveforms);
    new TimeCursor(bench, _waveforms->view());
    connect(_waveforms, SIGNAL(problems(QStringList)), bench, SLOT(tell(QStringList)));
    createFilterBar();
    createViewActions();
    createTraceMenu();
    createOverviewMenu();
    createExports();
    _liveMenu = new LiveMenu(_waveforms->live(), _waveforms->follow(), this);
}

// Menus and bars

QList<QAction *> WaveformPanel::menuActions(Menu menu) const
{
    switch (menu) {
    case Menu::File:
        return _exports->actions();
    case Menu::View:
        return _viewActions;
    case Menu::Open:
        break;
    }
    return {};
}

QList<QMenu *> WaveformPanel::menus() const
{
    return {_traceMenu, _overviewMenu, _liveMenu};
}

QList<QToolBar *> WaveformPanel::toolBars() const
{
    return {_filterBar};
}

void WaveformPanel::createFilterBar()
{
    _filterBox = new FilterBox(this);
    _filterBar = new QToolBar(tr("Filter"), this);
    _filterBar->setObjectName("filter");
    _filterBar->addWidget(_filterBox);

    _tuning = new FilterTuning(_filterBox, _waveforms->filters(), _waveforms->view(), this);
    _filterBox->addTool(_tuning->axisAction());
    static_cast<QVBoxLayout *>(layout())->insertWidget(0, _tuning->axis());
    _remembered.insert("frequencyAxis", _tuning->axisAction());

    connect(_filterBox, SIGNAL(filterChanged(QString)), this, SLOT(setFilter(QString)));
    connect(_tuning, SIGNAL(filterWanted(QString)), this, SLOT(adjustFilter(QString)));
    connect(_tuning, SIGNAL(left()), _waveforms->view(), SLOT(setFocus()));
    connect(_filterBox, SIGNAL(filterEnabled(bool)), _waveforms->view(),
            SLOT(setFilterEnabled(bool)));
    connect(_filterBox, SIGNAL(filterEnabled(bool)), _waveforms->filters(), SLOT(update()));
    connect(_waveforms->filters(), SIGNAL(misfits(QStringList)), _filterBox,
            SLOT(showMisfits(QStringList)));
    connect(_filterBox, SIGNAL(left()), _waveforms->view(), SLOT(setFocus()));
    connect(_filterBox, SIGNAL(problem(QString)), bench(), SLOT(showStatus(QString)));
    connect(_waveforms->view(), SIGNAL(filteringProgress(int, int)), this,
            SLOT(showFilteringProgress(int, int)));
}

void WaveformPanel::createViewActions()
{
    addViewAction(tr("Show &all data"), tr("Ctrl+0"), SLOT(showAllData()));
    addViewAction(tr("&Next stretch of data"), QKeySequence::MoveToNextPage,
                  SLOT(showNextStretch()));
    addViewAction(tr("&Previous stretch of data"), QKeySequence::MoveToPreviousPage,
                  SLOT(showPreviousStretch()));
    addViewAction(tr("&Go to time…"), tr("Ctrl+G"), SLOT(askForTime()));
    _viewActions.append(_waveforms->gestures()->zoomAction());
    _viewActions.append(_waveforms->navigation()->history()->backAction());
    _viewActions.append(_waveforms->navigation()->history()->forwardAction());
    _viewActions.append(makeSeparator());
    _viewActions.append(_waveforms->view()->controlActions());
    _viewActions.append(makeSeparator());
    _viewActions.append(_waveforms->visibility()->hideEmptyAction());
    _viewActions.append(_waveforms->visibility()->hiddenMenu()->menuAction());
    _viewActions.append(_waveforms->colors()->action());
    auto *compact = new QAction(tr("Co&mpact rows"), this);
    compact->setCheckable(true);
    compact->setShortcut(tr("Ctrl+K"));
    connect(_waveforms->looks(), SIGNAL(compactChanged(bool)), compact, SLOT(setChecked(bool)));
    connect(compact, SIGNAL(triggered(bool)), _waveforms->looks(), SLOT(setCompact(bool)));
    _viewActions.append(compact);
    addViewToggle(tr("Amplitude &rulers"), tr("Ctrl+R"), SLOT(setRulersShown(bool)), "rulers");
    addViewToggle(tr("&Local time"), tr("Ctrl+T"), SLOT(setLocalTimeShown(bool)), "localTime");
    _remembered.insert("hideEmpty", _waveforms->visibility()->hideEmptyAction());
    _remembered.insert("colors", _waveforms->colors()->action());
    _remembered.insert("grouped", _waveforms->order()->groupAction());
}

QAction *WaveformPanel::addViewAction(const QString &text, const QKeySequence &key,
                                      const char *slot)
{
    auto *action = new QAction(text, this);
    action->setShortcut(key);
    connect(action, SIGNAL(triggered()), _waveforms->navigation(), slot);
    _viewActions.append(action);
    return action;
}

QAction *WaveformPanel::addViewToggle(const QString &text, const QKeySequence &key,
                                      const char *slot, const QString &name)
{
    auto *action = new QAction(text, this);
    action->setCheckable(true);
    action->setShortcut(key);
    if (!name.isEmpty())
        _remembered.insert(name, action);
    connect(action, SIGNAL(toggled(bool)), _waveforms, slot);
    _viewActions.append(action);
    return action;
}

QAction *WaveformPanel::makeSeparator()
{
    auto *separator = new QAction(this);
    separator->setSeparator(true);
    return separator;
}

void WaveformPanel::createTraceMenu()
{
    Norvu::Gui::TraceView *view = _waveforms->view();
    _traceMenu = new QMenu(tr("&Traces"), this);
    _traceMenu->addAction(_filterBox->toggleAction());
    _traceMenu->addAction(_filterBox->editAction());
    _traceMenu->addAction(_tuning->axisAction());
    _traceMenu->addActions(_tuning->cornerActions());
    _traceMenu->addSeparator();
    // The view's tool bar, and those of its actions that stand in no menu yet.
    if (const auto *bar = view->findChild<QToolBar *>())
        _traceMenu->addActions(namedTools(*bar));
    _traceMenu->addSeparator();
    const QList<QAction *> shown = view->controlActions();
    for (QAction *action : view->actions()) {
        if (!shown.contains(action) && !_viewActions.contains(action) &&
            action != _waveforms->order()->groupAction())
            _traceMenu->addAction(action);
    }
    _traceMenu->addMenu(_waveforms->order()->menu());
    _traceMenu->addAction(tr("Select by &pattern…"), view, SLOT(selectPattern()));
    _traceMenu->addAction(tr("&Deselect by pattern…"), view, SLOT(deselectPattern()));
}

void WaveformPanel::createOverviewMenu()
{
    _overview = new Norvu::Gui::MultiTraceWidget(_waveforms->view());
    connect(_waveforms->visibility(), SIGNAL(changed()), _overview, SLOT(updateDisplay()));
    auto *axes = new OverviewAxes(_waveforms->view(), _overview);
    layout()->addWidget(axes->notice());
    layout()->setAlignment(axes->notice(), Qt::AlignCenter);
    connect(_waveforms->looks(), SIGNAL(pathsChanged()), axes, SLOT(update()));
    connect(_waveforms->visibility(), SIGNAL(changed()), axes, SLOT(update()));
    connect(axes, SIGNAL(roomRequired(int)), _waveforms->looks(), SLOT(setOverviewRoom(int)));
    connect(_remembered.value("localTime"), SIGNAL(toggled(bool)), axes,
            SLOT(setLocalTimeShown(bool)));
    _waveforms->visibility()->watch(_overview);
    _waveforms->visibility()->watch(axes->timeScale());
    _waveforms->gestures()->watch(_overview, axes->timeScale());
    _waveforms->pointer()->watch(_overview);
    _overviewMenu = new OverviewMenu(_waveforms->view(), _overview, axes, this);
    connect(_overviewMenu, SIGNAL(changed()), _waveforms->measuringTool(), SLOT(followContents()));
}

void WaveformPanel::createExports()
{
    _exports = new ExportActions(_waveforms->view(), bench()->rows(), this);
    connect(_exports, SIGNAL(failed(QStringList)), bench(), SLOT(tell(QStringList)));
    connect(_exports, SIGNAL(done(QString)), bench(), SLOT(showStatus(QString)));

    const QList<QAction *> tools =
        _waveforms->commands()->rowActions() +
        QList<QAction *>{makeSeparator(), _waveforms->measuringTool()->measureAction(),
                         makeSeparator()};
    _waveforms->setRowActions(tools + _exports->actions());
}

// Status bar

void WaveformPanel::fillStatusBar(QStatusBar *bar)
{
    _pointerLabel = new QLabel(bar);
    _rangeLabel = new QLabel(bar);
    _measurementLabel = new QLabel(bar);
    const int gap = 2 * fontMetrics().averageCharWidth();
    _pointerLabel->setContentsMargins(gap / 2, 0, gap, 0);
    // A long text must not keep the window from being made narrow.
    _measurementLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    _measurementLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
    bar->addWidget(_pointerLabel);
    bar->addWidget(_measurementLabel, 1);
    bar->addPermanentWidget(_rangeLabel);
    connect(bar, SIGNAL(messageChanged(QString)), this, SLOT(updateRangeLabel()));
    connect(_waveforms, SIGNAL(pointerText(QString)), this, SLOT(showPointer(QString)));
    connect(_waveforms->navigation(), SIGNAL(rangeText(QString)), _rangeLabel,
            SLOT(setText(QString)));
    connect(_waveforms->measuringTool(), SIGNAL(measured(QString)), this,
            SLOT(showMeasurement(QString)));
}

void WaveformPanel::showMeasurement(const QString &text)
{
    _measurementLabel->setText(text);
    // For where the status bar has no room for all of it.
    _measurementLabel->setToolTip(text);
    updateRangeLabel();
}

void WaveformPanel::showPointer(const QString &text)
{
    _pointerLabel->setText(text);
    updateRangeLabel();
}

/** What is under the pointer, what is measured and what is told for a while go before the range,
 *  which the time scale tells too. */
void WaveformPanel::updateRangeLabel()
{
    const QString told = static_cast<const QStatusBar *>(_rangeLabel->parent())->currentMessage();
    const int before =
        std::max(fontMetrics().horizontalAdvance(told),
                 _pointerLabel->sizeHint().width() + _measurementLabel->sizeHint().width());
    const bool isAlone =
        told.isEmpty() && _pointerLabel->text().isEmpty() && _measurementLabel->text().isEmpty();
    const int spare = 4 * fontMetrics().averageCharWidth();
    _rangeLabel->setVisible(isAlone || before + _rangeLabel->sizeHint().width() + spare <=
                                           _rangeLabel->parentWidget()->width());
}

void WaveformPanel::setFilter(const QString &text)
{
    bench()->tell(_waveforms->filters()->setFilter(text));
}

/** Rows and box tell what doesn't fit; messages would be many. */
void WaveformPanel::adjustFilter(const QString &text)
{
    _waveforms->filters()->setFilter(text);
}

void WaveformPanel::showFilteringProgress(int done, int total)
{
    if (!_filtering && done < total)
        _filtering = bench()->tasks()->start(tr("Filtering"), tr("rows"));
    if (!_filtering)
        return;
    _filtering->setProgress(done, total);
    if (done >= total) {
        _filtering->finish();
        _filtering.clear();
    }
}

// Session

void WaveformPanel::saveState(QSettings &settings) const
{
    _filterBox->saveHistory();
    settings.beginGroup(SettingsGroup);
    for (auto toggle = _remembered.begin(); toggle != _remembered.end(); ++toggle)
        settings.setValue(toggle.key(), toggle.value()->isChecked());
    settings.setValue("order", _waveforms->order()->name());
    if (_waveforms->looks()->isCompactChosen())
        settings.setValue("compact", _waveforms->looks()->isCompact());
    settings.setValue("filter", _filterBox->appliedText());
    settings.setValue("filtered", _filterBox->isFilterEnabled());
    _liveMenu->saveState(settings);
    settings.setValue("livePlaces", livePlaces());
    settings.endGroup();
}

/** Where the stations of the rows stand, if live sources are to be opened again: these tell records
 *  and nothing else. Longitude and latitude by "NET.STA". */
QVariantMap WaveformPanel::livePlaces() const
{
    QVariantMap places;
    if (_liveMenu->sourcesToRemember().isEmpty())
        return places;
    for (const Norvu::Gui::Trace *row : _waveforms->view()->items()) {
        const QString station = stationOf(*row);
        if (const auto place = bench()->stations()->find(station))
            places.insert(station, QPointF(place->longitude, place->latitude));
    }
    return places;
}

void WaveformPanel::restoreState(QSettings &settings)
{
    _filterBox->restoreHistory();
    settings.beginGroup(SettingsGroup);
    for (auto toggle = _remembered.begin(); toggle != _remembered.end(); ++toggle)
        toggle.value()->setChecked(
            settings.value(toggle.key(), toggle.value()->isChecked()).toBool());
    _waveforms->order()->setName(settings.value("order").toString());
    if (settings.contains("compact"))
        _waveforms->looks()->setCompact(settings.value("compact").toBool());
    const QString filter = settings.value("filter").toString();
    if (!filter.isEmpty()) {
        _filterBox->apply(filter);
        _filterBox->toggleAction()->setChecked(settings.value("filtered").toBool());
    }
    _liveMenu->restoreState(settings);
    _livePlaces = settings.value("livePlaces").toMap();
    settings.endGroup();
}

QVector<PanelPicture> WaveformPanel::pictures()
{
    return {{"waveforms.png", window()->grab()},
            {"overview.png", overviewPicture(false)},
            {"overview-horizontal.png", overviewPicture(true)},
            {"live.png", livePicture()}};
}

/** Rows of their own, which follow the demonstration as if it came in now. */
QPixmap WaveformPanel::livePicture()
{
    Bench ownBench;
    Waveforms rows(&ownBench);
    rows.resize(window()->size());
    rows.setAttribute(Qt::WA_DontShowOnScreen);
    rows.show();
    rows.open({LivePictureSource});
    QElapsedTimer time;
    time.start();
    // Until the past is there: what comes in now comes every five seconds.
    while (time.elapsed() < LongestPictureMilliseconds &&
           rows.coverage().extent().length().length() < LivePictureSeconds)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, PictureStepMilliseconds);
    emit ownBench.streamStates()->updated();
    // Names, and then the time scale below the traces, get their width.
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    return rows.grab();
}

QPixmap WaveformPanel::overviewPicture(bool horizontal)
{
    _overviewMenu->setOverviewShown(true);
    _overviewMenu->setHorizontal(horizontal);
    _overviewMenu->setWigglesShown(true);
    QCoreApplication::processEvents();
    const QPixmap picture = window()->grab();
    _overviewMenu->setOverviewShown(false);
    return picture;
}

// Sources

QStringList WaveformPanel::fileFilters() const
{
    QStringList patterns;
    for (const auto &format : Tellarix::IO::recordFormats()) {
        for (const std::string &suffix : format->suffixes) {
            const QString pattern = "*." + QString::fromStdString(suffix);
            patterns << pattern.toLower() << pattern.toUpper();
        }
    }
    patterns.removeDuplicates();
    return {tr("Waveforms (%1)").arg(patterns.join(' '))};
}

bool WaveformPanel::canOpen(const QString &) const
{
    return true;
}

bool WaveformPanel::openSources(const QStringList &sources)
{
    return _waveforms->open(sources);
}

bool WaveformPanel::openDemonstration(const QString &folder)
{
    if (!Client::demonstrationIsComplete(folder)) {
        bench()->showStatus(tr("Writing the demonstration recordings…"));
        QString error;
        if (!Client::writeDemonstration(folder, &error)) {
            bench()->tell({error});
            return false;
        }
    }

    QStringList files;
    for (const QString &file : Client::demonstrationFiles())
        files.append(QDir(folder).filePath(file));
    const bool opened = openSources(files);
    _waveforms->alignTo(Client::demonstrationOrigin().time);
    return opened;
}

bool WaveformPanel::openRemembered()
{
    QStringList sources = _liveMenu->rememberedSources();
    for (QString &source : sources)
        source = IO::takePasswords(source);
    QHash<QString, StationPlace> places;
    for (auto place = _livePlaces.cbegin(); place != _livePlaces.cend(); ++place) {
        const QPointF degrees = place.value().toPointF();
        places.insert(place.key(), {degrees.y(), degrees.x()});
    }
    if (!sources.isEmpty()) {
        bench()->stations()->add(places);
        openSources(sources);
    }
    return !sources.isEmpty();
}

void WaveformPanel::closeAll()
{
    _waveforms->clear();
}

} // namespace Workbench
