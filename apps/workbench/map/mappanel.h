// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "bench/panel.h"
#include "bench/picture.h"

#include <norvu/gui/map/annotations.h>
#include <norvu/gui/map/annotationstyle.h>

#include <QHash>
#include <QTimer>

class QHBoxLayout;
class QLabel;
class QPainter;
class QToolBar;

namespace Norvu {
namespace Gui {
namespace Map {
class AnnotationLayer;
} // namespace Map
} // namespace Gui
} // namespace Norvu

namespace Tellarix {
namespace Gui {
namespace Map {
class MapWidget;
} // namespace Map
} // namespace Gui
} // namespace Tellarix

namespace Workbench {

class EventsOnMap;
class HoverLayer;
class MeasureLayer;
class StationsOnMap;

/** A map of the events of the list and of the stations, with their labels, scale and legends. */
class MapPanel : public Panel
{
    Q_OBJECT

public:
    explicit MapPanel(Bench *bench);
    ~MapPanel() override;

    Tellarix::Gui::Map::MapWidget *map() const { return _map; }
    EventsOnMap *events() const { return _events; }
    StationsOnMap *stations() const { return _stations; }
    MeasureLayer *measuring() const { return _measuring; }
    /** What the line above the map says of what is under the mouse. */
    QString hoveredText() const;

    /** Writes the map as it is shown; see writePicture() of bench/picture.h. */
    bool writeTo(const QString &file, QString *error);

    QList<QMenu *> menus() const override;
    void saveState(QSettings &settings) const override;
    void restoreState(QSettings &settings) override;
    QVector<PanelPicture> pictures() override;
    void closeAll() override;

public slots:
    /** Shows all events and stations, or the world if there are none. */
    void showAll();
    /** Whether the list leaves out what the map doesn't show. */
    void setLimitsList(bool limits);
    void askForPicture();

protected:
    void changeEvent(QEvent *event) override;

private slots:
    void updateColors();
    void updateBackground();
    void tellPlace(const QPointF &place);
    void tellNothing();
    void tellHovered();
    void centre(double longitude, double latitude);
    void showChosen();
    void followView();
    void limitList();
    void listEverywhere();
    void followRegion();
    void setMercator(bool on);
    void fillMenu(QMenu *menu, const QPointF &place);

private:
    void createLayers();
    void createActions();
    void createMenu();
    QAction *addMapAction(const QString &text, QChar glyph, QObject *receiver, const char *slot);
    QAction *addTool(const QString &text, QChar glyph);
    QAction *addSwitch(const QString &name, const QString &text, bool on, QObject *receiver,
                       const char *slot);
    void addMeasureEntries(QMenu *menu, const QPointF &place);
    bool isOn(const QString &name) const;
    QRectF shownRegion() const;
    void paintMap(QPainter &painter, const QSize &size);
    Picture pictureOf(const QSize &size);

    Norvu::Gui::AnnotationStyle _labelStyle;
    Norvu::Gui::Annotations _annotations; /**< before whatever has labels in it */
    Tellarix::Gui::Map::MapWidget *_map;
    StationsOnMap *_stations{nullptr};
    EventsOnMap *_events{nullptr};
    MeasureLayer *_measuring{nullptr};
    HoverLayer *_hover{nullptr};
    QToolBar *_bar{nullptr};
    QHBoxLayout *_head;
    QLabel *_text;
    QMenu *_menu{nullptr};
    QAction *_limitAction{nullptr};
    QAction *_everywhereAction{nullptr};
    QHash<QString, QAction *> _switches; /**< by the name under which they are kept */
    QTimer _viewTimer;
    bool _worldErrorTold{false};
};

} // namespace Workbench
