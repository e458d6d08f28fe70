// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "delaylegend.h"

#include <QColor>
#include <QHash>
#include <QObject>
#include <QTimer>

namespace Norvu {
namespace Gui {
class Annotations;
namespace Map {
class Symbol;
class SymbolLayer;
} // namespace Map
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class Bench;
class StationMark;

/**
 * Stations on a map: where they stand, their codes, and by colour whether there are data of them in
 * the rows, or how late they are. Chosen stations are those of all panels; a click chooses one,
 * with Ctrl one more.
 */
class StationsOnMap : public QObject
{
    Q_OBJECT

public:
    /** @param annotations  take the codes; they outlive the object */
    StationsOnMap(Bench *bench, Norvu::Gui::Annotations *annotations, QObject *parent);
    ~StationsOnMap() override;

    Norvu::Gui::Map::SymbolLayer *layer() const { return _layer; }
    /** Code and state of what is under the mouse, for the user; empty if there is nothing. */
    QString hoveredText() const;
    const StationMark *hovered() const { return _hovered; }

public slots:
    void setShown(bool shown);
    void setShadows(bool shown);
    void setCodes(bool shown);
    /** Colours stations by the delay of what comes in live from them. */
    void setColoredByDelay(bool on);
    void setLegendsShown(bool shown);

signals:
    void hoveredChanged();

private slots:
    void rebuild();
    void updateStates();
    void followSelection();
    void hover(Norvu::Gui::Map::Symbol *symbol);
    void choose(Norvu::Gui::Map::Symbol *symbol);

private:
    enum class State
    {
        NoRow,
        Waiting,
        Present,
        Missing
    };

    /** Of the stream of a station that is the least late. */
    struct Delay
    {
        DelayGrade grade{DelayGrade::Never};
        double seconds{0};
    };

    QHash<QString, State> statesOfRows() const;
    void updateDelays();
    QString stateText(const QString &station) const;
    static QColor colorOf(State state);
    static QString textOf(State state);

    Bench *_bench;
    Norvu::Gui::Annotations *_annotations;
    Norvu::Gui::Map::SymbolLayer *_layer;
    QHash<QString, StationMark *> _marks; /**< by "NET.STA", owned by the layer */
    QHash<QString, State> _states;
    QHash<QString, Delay> _delays;
    DelayLegend *_legend;
    bool _byDelay{false};
    const StationMark *_hovered{nullptr};
    QTimer _stateTimer;
    bool _codes{true};
};

} // namespace Workbench
