// SPDX-License-Identifier: LGPL-3.0-or-later

#include "bench/bench.h"
#include "bench/selection.h"
#include "bench/stations.h"
#include "eventmaplayer.h"
#include "eventsonmap.h"
#include "mappanel.h"
#include "measurelayer.h"
#include "stationsonmap.h"

#include <norvu/gui/fontawesome5.h>
#include <norvu/gui/map/symbollayer.h>
#include <tellarix/qt/map/mapwidget.h>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QToolBar>

using namespace Tellarix;
using namespace Norvu::FontAwesome5;
using Gui::Map::MapWidget;

namespace Workbench {

namespace {

constexpr int NearKm[] = {30, 100, 300};

/** As programs read it: latitude and longitude in degrees. */
QString coordinatesOf(const QPointF &place)
{
    return QString("%1 %2").arg(place.y(), 0, 'f', 5).arg(place.x(), 0, 'f', 5);
}

} // namespace

QAction *MapPanel::addMapAction(const QString &text, QChar glyph, QObject *receiver,
                                const char *slot)
{
    auto *action = new QAction(iconSolid(glyph), text, this);
    connect(action, SIGNAL(triggered()), receiver, slot);
    _bar->addAction(action);
    _menu->addAction(action);
    return action;
}

QAction *MapPanel::addTool(const QString &text, QChar glyph)
{
    auto *action = new QAction(iconSolid(glyph), text, this);
    action->setCheckable(true);
    _bar->addAction(action);
    _menu->addAction(action);
    return action;
}

/** A choice that is kept under a name. */
QAction *MapPanel::addSwitch(const QString &name, const QString &text, bool on, QObject *receiver,
                             const char *slot)
{
    QAction *action = _menu->addAction(text);
    action->setCheckable(true);
    action->setChecked(on);
    connect(action, SIGNAL(toggled(bool)), receiver, slot);
    _switches.insert(name, action);
    return action;
}

void MapPanel::createActions()
{
    _bar = new QToolBar(this);
    _bar->setIconSize(QSize(1, 1) * fontMetrics().height());
    _menu = new QMenu(tr("&Map"), this);

    addMapAction(tr("Zoom &in"), chSearchPlus, _map, SLOT(zoomIn()));
    addMapAction(tr("Zoom &out"), chSearchMinus, _map, SLOT(zoomOut()));
    addMapAction(tr("&All events and stations"), chExpand, this, SLOT(showAll()));
    addMapAction(tr("&World"), chGlobe, _map, SLOT(showWorld()));
    QAction *back = addMapAction(tr("&Back"), chArrowLeft, _map, SLOT(back()));
    QAction *forward = addMapAction(tr("&Forward"), chArrowRight, _map, SLOT(forward()));
    const auto updateHistory = [this, back, forward] {
        back->setEnabled(_map->canGoBack());
        forward->setEnabled(_map->canGoForward());
    };
    connect(_map, &MapWidget::historyChanged, this, updateHistory);
    updateHistory();

    _bar->addSeparator();
    _menu->addSeparator();
    QAction *measure = addTool(tr("&Measure distances"), chRuler);
    connect(measure, SIGNAL(toggled(bool)), _measuring, SLOT(setActive(bool)));
    connect(_measuring, SIGNAL(activeChanged(bool)), measure, SLOT(setChecked(bool)));
    _limitAction = addTool(tr("List only what the map s&hows"), chFilter);
    connect(_limitAction, SIGNAL(toggled(bool)), this, SLOT(setLimitsList(bool)));
    _everywhereAction =
        _menu->addAction(tr("List events from &everywhere"), this, SLOT(listEverywhere()));
    _everywhereAction->setEnabled(false);

    _text->setTextFormat(Qt::PlainText);
    _text->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    _text->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    // Outside of the bar, which would put what doesn't fit into its overflow menu.
    _head->addWidget(_bar);
    _head->addWidget(_text, 1);
}

/** The menu of the menu bar; that of the events is made anew each time, as it is the layer's. */
void MapPanel::createMenu()
{
    _menu->addSeparator();
    QMenu *events = _menu->addMenu(tr("E&vents"));
    connect(events, &QMenu::aboutToShow, this, [this, events] {
        qDeleteAll(events->findChildren<QMenu *>(QString(), Qt::FindDirectChildrenOnly));
        events->clear();
        QMenu *choices = _events->layer()->menu(events);
        events->addActions(choices->actions());
    });
    addSwitch("eventLabels", tr("Labels of eve&nts"), true, _events, SLOT(setLabelsShown(bool)));
    addSwitch("stations", tr("&Stations"), true, _stations, SLOT(setShown(bool)));
    addSwitch("codes", tr("&Codes of stations"), true, _stations, SLOT(setCodes(bool)));
    addSwitch("delays", tr("Colour stations by dela&y"), false, _stations,
              SLOT(setColoredByDelay(bool)));
    addSwitch("shadows", tr("Sha&dows of stations"), true, _stations, SLOT(setShadows(bool)));
    _menu->addSeparator();
    addSwitch("borders", tr("Borders"), true, this, SLOT(updateBackground()));
    addSwitch("rivers", tr("Rivers"), true, this, SLOT(updateBackground()));
    addSwitch("towns", tr("&Towns"), true, this, SLOT(updateBackground()));
    addSwitch("graticule", tr("&Graticule"), true, this, SLOT(updateBackground()));
    QAction *legends =
        addSwitch("legends", tr("&Legends"), true, _events->layer(), SLOT(setLegendsShown(bool)));
    connect(legends, SIGNAL(toggled(bool)), _stations, SLOT(setLegendsShown(bool)));
    addSwitch("mercator", tr("Me&rcator projection"), false, this, SLOT(setMercator(bool)));
    _menu->addSeparator();
    _menu->addAction(tr("Export &picture of the map…"), this, SLOT(askForPicture()));
}

QList<QMenu *> MapPanel::menus() const
{
    return {_menu};
}

void MapPanel::setMercator(bool on)
{
    using namespace Gui::Map;
    _map->canvas()->setProjection(on ? static_cast<Projection *>(new Mercator) : new PlateCarree);
}

void MapPanel::listEverywhere()
{
    _limitAction->setChecked(false);
    bench()->selection()->setRegion(std::nullopt);
}

/** What can be done at a place of the map. */
void MapPanel::fillMenu(QMenu *menu, const QPointF &place)
{
    menu->addSeparator();
    menu->addAction(tr("Copy coordinates"), this,
                    [place] { QApplication::clipboard()->setText(coordinatesOf(place)); });
    menu->addAction(tr("Centre the map here"), _map, [this, place] { _map->showPlace(place); });
    addMeasureEntries(menu, place);

    QMenu *near = menu->addMenu(tr("List events near here"));
    for (const int km : NearKm) {
        near->addAction(tr("Within %1 km").arg(km), this, [this, place, km] {
            bench()->selection()->setRegion(Region::circle(place.y(), place.x(), km));
        });
    }
    menu->addAction(_everywhereAction);
}

void MapPanel::addMeasureEntries(QMenu *menu, const QPointF &place)
{
    const auto &event = bench()->selection()->chosenEvent();
    if (event && qIsFinite(event->latitude) && qIsFinite(event->longitude)) {
        const QPointF epicentre(event->longitude, event->latitude);
        menu->addAction(tr("Measure from the chosen event to here"), this,
                        [this, epicentre, place] { _measuring->measure(epicentre, place); });
    }
    const QStringList &stations = bench()->selection()->stations();
    const auto station =
        stations.isEmpty() ? std::nullopt : bench()->stations()->find(stations.first());
    if (station) {
        const QPointF from(station->longitude, station->latitude);
        menu->addAction(tr("Measure from %1 to here").arg(stations.first()), this,
                        [this, from, place] { _measuring->measure(from, place); });
    }
    if (_measuring->course())
        menu->addAction(tr("Remove the measured line"), _measuring, SLOT(clear()));
}

} // namespace Workbench
