// SPDX-License-Identifier: LGPL-3.0-or-later

#include "mappanel.h"

#include "bench/bench.h"
#include "bench/darkpalette.h"
#include "bench/exportfile.h"
#include "bench/mapview.h"
#include "bench/picture.h"
#include "bench/selection.h"
#include "bench/shownevents.h"
#include "bench/stations.h"
#include "eventmaplayer.h"
#include "eventsonmap.h"
#include "hoverlayer.h"
#include "measurelayer.h"
#include "stationmark.h"
#include "stationsonmap.h"

#include <norvu/gui/fontawesome5.h>
#include <norvu/gui/map/annotationlayer.h>
#include <norvu/gui/map/scalelayer.h>
#include <norvu/gui/map/symbollayer.h>
#include <tellarix/core/math/geo.h>
#include <tellarix/qt/map/background.h>
#include <tellarix/qt/map/mapwidget.h>
#include <tellarix/qt/map/originsymbol.h>
#include <tellarix/qt/scheme.h>

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QEvent>
#include <QLabel>
#include <QPainter>
#include <QSettings>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

using namespace Tellarix;
using Gui::Map::MapWidget;

namespace Workbench {

namespace {

/** After the last move of the map, in ms. */
constexpr int ViewDelay = 150;
const QSize PictureSize(1200, 700);
constexpr auto SettingsGroup = "map";

QString placeText(const QPointF &place)
{
    return QString("%1° %2, %3° %4")
        .arg(std::abs(place.y()), 0, 'f', 3)
        .arg(place.y() < 0 ? "S" : "N")
        .arg(std::abs(place.x()), 0, 'f', 3)
        .arg(place.x() < 0 ? "W" : "E");
}

/** The smallest box around places, which may reach across the date line; with some room. */
QRectF regionOf(QVector<QPointF> places)
{
    if (places.isEmpty())
        return QRectF();

    std::sort(places.begin(), places.end(),
              [](const QPointF &a, const QPointF &b) { return a.x() < b.x(); });
    // The widest stretch of longitudes without a place is what is left out.
    double widest = places.first().x() + 360 - places.last().x();
    double left = places.first().x();
    double bottom = places.first().y();
    double top = bottom;
    for (int i = 1; i < places.size(); ++i) {
        const double gap = places[i].x() - places[i - 1].x();
        if (gap > widest) {
            widest = gap;
            left = places[i].x();
        }
        bottom = std::min(bottom, places[i].y());
        top = std::max(top, places[i].y());
    }
    constexpr double LeastDegrees = 1;
    const double width = std::max(360 - widest, LeastDegrees);
    const double height = std::max(top - bottom, LeastDegrees);
    constexpr double Room = 0.08;
    return QRectF(left, bottom, width, height)
        .adjusted(-Room * width, -Room * height, Room * width, Room * height);
}

} // namespace

MapPanel::MapPanel(Bench *bench)
    : Panel(bench, {"map", tr("Map"), tr("&Map"), tr("Ctrl+Shift+M"),
                    Norvu::FontAwesome5::iconSolid(Norvu::FontAwesome5::chGlobe), PanelPlace::Right,
                    true}),
      _map(new MapWidget(this)), _head(new QHBoxLayout), _text(new QLabel(this))
{
    createLayers();
    createActions();
    createMenu();
    updateColors();

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    _head->setContentsMargins(0, 0, fontMetrics().height() / 2, 0);
    layout->addLayout(_head);
    layout->addWidget(_map, 1);
    setFocusProxy(_map);
    bench->mapView()->setMap(
        _map, [this](QPainter &painter, const QSize &size) { paintMap(painter, size); });

    connect(bench->mapView(), SIGNAL(coveredHeightChanged(int)), _map->canvas(),
            SLOT(setCoveredHeight(int)));
    connect(_map, SIGNAL(placeHovered(QPointF)), this, SLOT(tellPlace(QPointF)));
    connect(_map, SIGNAL(placeLeft()), this, SLOT(tellNothing()));
    connect(_map, SIGNAL(menuRequested(QMenu *, QPointF)), this, SLOT(fillMenu(QMenu *, QPointF)));
    connect(_map, &MapWidget::viewChanged, &_viewTimer, [this] { _viewTimer.start(); });
    connect(bench->selection(), SIGNAL(eventChanged()), this, SLOT(showChosen()));
    connect(bench->selection(), SIGNAL(regionChanged()), this, SLOT(followRegion()));
    _viewTimer.setSingleShot(true);
    _viewTimer.setInterval(ViewDelay);
    connect(&_viewTimer, SIGNAL(timeout()), this, SLOT(followView()));
}

MapPanel::~MapPanel()
{
    // Their symbols have to go before the annotations and the canvas that they stand on.
    delete _stations;
    delete _events;
}

// What is shown

void MapPanel::createLayers()
{
    _annotations.setStyle(&_labelStyle);
    _stations = new StationsOnMap(bench(), &_annotations, this);
    _events = new EventsOnMap(bench(), &_annotations, this);
    _measuring = new MeasureLayer(this);
    _hover = new HoverLayer(&_labelStyle, this);

    Gui::Map::Canvas *canvas = _map->canvas();
    canvas->addLayer(_events->layer());
    canvas->addLayer(_events->labels());
    canvas->addLayer(_stations->layer());
    canvas->addLayer(new Norvu::Gui::Map::AnnotationLayer(canvas, &_annotations));
    canvas->addLayer(new Norvu::Gui::Map::ScaleLayer(canvas, Qt::AlignLeft | Qt::AlignTop));
    canvas->addLayer(_measuring);
    canvas->addLayer(_hover);

    connect(_stations, SIGNAL(hoveredChanged()), this, SLOT(tellHovered()));
    connect(bench()->selection(), SIGNAL(hoveredEventChanged()), this, SLOT(tellHovered()));
    connect(bench()->shownEvents(), SIGNAL(changed()), this, SLOT(tellHovered()));
    connect(_events, SIGNAL(activated(double, double)), this, SLOT(centre(double, double)));
    connect(_measuring, &MeasureLayer::courseChanged, this, [this] {
        if (const auto course = _measuring->course())
            _text->setText(course->text());
    });
}

void MapPanel::updateColors()
{
    const Gui::Scheme &scheme = Gui::Scheme::Current();
    const QPalette palette = QApplication::palette();
    _labelStyle.setPalette(false, {scheme.legend.text, QPen(Qt::NoPen), scheme.legend.background});
    _labelStyle.setPalette(true, {palette.color(QPalette::HighlightedText), QPen(Qt::NoPen),
                                  palette.color(QPalette::Highlight)});
    updateBackground();
}

/** Land and water in the present colours. */
void MapPanel::updateBackground()
{
    using namespace Gui::Map;
    const auto world = WorldData::installed();
    BackgroundContents contents;
    contents.graticule = isOn("graticule");
    contents.cities = isOn("towns");
    contents.borders = isOn("borders");
    contents.rivers = isOn("rivers");
    _map->canvas()->setBackground(
        std::make_shared<Background>(Gui::Scheme::Current().map, world, font(), contents));
    if (!world->error().isEmpty() && !_worldErrorTold) {
        _worldErrorTold = true;
        bench()->tell({world->error()});
    }
}

bool MapPanel::isOn(const QString &name) const
{
    const QAction *action = _switches.value(name);
    return !action || action->isChecked();
}

void MapPanel::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange)
        updateColors();
    Panel::changeEvent(event);
}

QString MapPanel::hoveredText() const
{
    return _text->text();
}

void MapPanel::tellPlace(const QPointF &place)
{
    if (_measuring->course())
        return;

    QStringList parts{placeText(place)};
    if (_stations->hovered())
        parts << _stations->hoveredText();
    else if (const EventFacts *event = _events->hovered())
        parts << EventsOnMap::textOf(*event);
    // The start of a text that is too long would be cut off.
    const QFontMetrics metrics = _text->fontMetrics();
    const QString whole = parts.join("   ");
    const bool fits = metrics.horizontalAdvance(whole) <= _text->width();
    _text->setText(fits ? whole : metrics.elidedText(parts.last(), Qt::ElideRight, _text->width()));
}

void MapPanel::tellNothing()
{
    _text->clear();
}

void MapPanel::tellHovered()
{
    constexpr int Gap = 6;
    if (const StationMark *station = _stations->hovered()) {
        _hover->show(station->location(), station->size() * 2 + Gap, _stations->hoveredText());
    } else if (const EventFacts *event = _events->hovered()) {
        const int diameter = Gui::OriginSymbol::diameterOf(event->magnitude.value_or(0));
        _hover->show({event->longitude, event->latitude}, diameter / 2 + Gap,
                     EventsOnMap::textOf(*event));
    } else
        _hover->hide();
}

void MapPanel::centre(double longitude, double latitude)
{
    _map->showPlace({longitude, latitude});
}

/** Brings the chosen event into sight, without moving a map that shows it. */
void MapPanel::showChosen()
{
    const auto &event = bench()->selection()->chosenEvent();
    if (event && std::isfinite(event->longitude) && std::isfinite(event->latitude) &&
        !Region::box(shownRegion()).contains(event->latitude, event->longitude))
        centre(event->longitude, event->latitude);
}

void MapPanel::showAll()
{
    QVector<QPointF> places;
    for (const EventFacts &event : bench()->shownEvents()->all()) {
        if (std::isfinite(event.longitude) && std::isfinite(event.latitude))
            places.append({Gui::Map::nearestTurn(event.longitude, 0), event.latitude});
    }
    for (const StationPlace &station : bench()->stations()->all())
        places.append({Gui::Map::nearestTurn(station.longitude, 0), station.latitude});

    if (places.isEmpty())
        _map->showWorld();
    else
        _map->showRegion(regionOf(places));
}

void MapPanel::closeAll()
{
    _measuring->setActive(false);
    _limitAction->setChecked(false);
}

// What the list leaves out

QRectF MapPanel::shownRegion() const
{
    const Gui::Map::View &view = _map->canvas()->view();
    const Gui::Map::Projection *projection = _map->canvas()->projection();
    const double width = std::min(360.0, view.size.width() / view.pixelPerDegree);
    const double limit = projection->maximumLatitude();
    QPointF place;
    const double top =
        projection->unproject(place, QPointF(view.size.width() / 2, 0)) ? place.y() : limit;
    const double bottom =
        projection->unproject(place, QPointF(view.size.width() / 2, view.size.height() - 1))
            ? place.y()
            : -limit;
    // Events at a pole are not lost to a projection that can't show them.
    const double lowest = bottom <= -limit ? -90 : bottom;
    const double highest = top >= limit ? 90 : top;
    return QRectF(view.center.x() - width / 2, lowest, width, highest - lowest);
}

void MapPanel::setLimitsList(bool limits)
{
    _limitAction->setChecked(limits);
    if (limits)
        limitList();
    else
        bench()->selection()->setRegion(std::nullopt);
}

void MapPanel::followView()
{
    _events->setLabelRegion(Region::box(shownRegion()));
    bench()->mapView()->setRegion(Region::box(shownRegion()));
    limitList();
}

void MapPanel::limitList()
{
    if (_limitAction->isChecked())
        bench()->selection()->setRegion(Region::box(shownRegion()));
}

/** Another region than that of the map is no longer that of the map. */
void MapPanel::followRegion()
{
    const auto &region = bench()->selection()->region();
    _everywhereAction->setEnabled(region.has_value());
    if (_limitAction->isChecked() && region != Region::box(shownRegion()) && !_viewTimer.isActive())
        _limitAction->setChecked(false);
}

// Pictures and session

/** Pictures of the map's own size, of which a film has many, need no background of their own. */
void MapPanel::paintMap(QPainter &painter, const QSize &size)
{
    Gui::Map::Canvas *canvas = _map->canvas();
    canvas->setCoveredHeight(0);
    if (size != canvas->size())
        _map->renderTo(painter, size);
    else {
        painter.save();
        canvas->setAsynchronous(false);
        canvas->draw(painter);
        canvas->setAsynchronous(true);
        painter.restore();
    }
    canvas->setCoveredHeight(bench()->mapView()->coveredHeight());
}

/** The map as it is shown, for a size in pixels. */
Picture MapPanel::pictureOf(const QSize &size)
{
    return {tr("Map"), size, 1, _map->logicalDpiX(),
            [this, size](QPainter &painter) { _map->renderTo(painter, size); }};
}

bool MapPanel::writeTo(const QString &file, QString *error)
{
    return writePicture(pictureOf(_map->size()), file, error);
}

void MapPanel::askForPicture()
{
    const QString file = askForExportFile(window(), tr("Export map"), tr("map"), pictureFilters());
    if (file.isEmpty())
        return;

    QString error;
    if (writeTo(file, &error))
        bench()->showStatus(tr("Wrote the map to %1").arg(QDir::toNativeSeparators(file)));
    else
        bench()->tell({error});
}

QVector<PanelPicture> MapPanel::pictures()
{
    const auto picture = [this] {
        QString error;
        return QPixmap::fromImage(imageOf(pictureOf(PictureSize), &error));
    };
    EventMapLayer *events = _events->layer();
    const auto modes = events->viewModes();
    const bool wasDark = hasDarkColors();
    showAll();

    QVector<PanelPicture> pictures;
    events->setShown(true, false);
    pictures.append({"map.png", picture()});
    events->setShown(false, true);
    pictures.append({"heatmap.png", picture()});
    events->setShown(true, false);
    setDarkColors(!wasDark);
    pictures.append({wasDark ? "map-light.png" : "map-dark.png", picture()});
    setDarkColors(wasDark);
    events->setShown(modes.testFlag(EventMapLayer::Symbols),
                     modes.testFlag(EventMapLayer::Heatmap));
    return pictures;
}

void MapPanel::saveState(QSettings &settings) const
{
    settings.beginGroup(SettingsGroup);
    settings.setValue("centre", _map->canvas()->center());
    settings.setValue("pixelPerDegree", _map->canvas()->view().pixelPerDegree);
    for (auto entry = _switches.begin(); entry != _switches.end(); ++entry)
        settings.setValue(entry.key(), entry.value()->isChecked());
    _events->layer()->saveState(settings);
    settings.endGroup();
}

void MapPanel::restoreState(QSettings &settings)
{
    settings.beginGroup(SettingsGroup);
    for (auto entry = _switches.begin(); entry != _switches.end(); ++entry)
        entry.value()->setChecked(settings.value(entry.key(), entry.value()->isChecked()).toBool());
    _events->layer()->restoreState(settings);
    const double scale = settings.value("pixelPerDegree").toDouble();
    if (scale > 0)
        _map->canvas()->setView(settings.value("centre").toPointF(), scale);
    settings.endGroup();
}

} // namespace Workbench
