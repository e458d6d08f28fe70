// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/map/eventsheatmaplayer.h>

#include <QString>

class QAction;
class QSettings;

namespace Workbench {

/** Events by symbols or as a heat map, with all choices of it in one menu, which are kept. */
class EventMapLayer : public Norvu::Gui::Map::EventsHeatmapLayer
{
    Q_OBJECT

public:
    /** Shows symbols, and no heat map. Its logarithm is taken, since a swarm would leave nothing to
     *  be seen of all other events. */
    explicit EventMapLayer(QObject *parent = nullptr);

    /** Adds to the base's menu: gradient, logarithm and composition. */
    QMenu *menu(QMenu *parent) const override;

    void saveState(QSettings &settings) const;
    void restoreState(const QSettings &settings);

public slots:
    /** @param name  of a ready-made gradient; empty for the heat map's own, any other is ignored */
    void setGradientName(const QString &name);
    void setMultiplied(bool on);
    void setLogarithm(bool on);
    void setShown(bool symbols, bool heatmap);
    void setLegendsShown(bool shown);

signals:
    /** Other view modes than before. */
    void modesChanged();

private slots:
    void followModes();

private:
    QAction *addGradient(QMenu *menu, const QString &name, const QString &text) const;

    Tellarix::Gui::Gradient _ownGradient;
    QString _gradientName;
    ViewModes _followedModes;
    bool _multiplied{false};
    bool _logarithm{false};
};

} // namespace Workbench
