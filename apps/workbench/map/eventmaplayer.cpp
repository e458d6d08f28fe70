// SPDX-License-Identifier: LGPL-3.0-or-later

#include "eventmaplayer.h"

#include "bench/gradientpicture.h"
#include "depthlegend.h"
#include "magnitudelegend.h"

#include <norvu/gui/gradients.h>

#include <QActionGroup>
#include <QMenu>
#include <QSettings>

namespace Workbench {

namespace {

namespace Gradients = Norvu::Gui::Gradients;

const QSize PictureSize(64, 14);

} // namespace

EventMapLayer::EventMapLayer(QObject *parent)
    : EventsHeatmapLayer(parent), _ownGradient(heatmapGradient())
{
    addLegend(new MagnitudeLegend(this));
    addLegend(new DepthLegend(this));
    // The base tells of its modes by asking for an update.
    connect(this, SIGNAL(updateRequested(QFlags<Tellarix::Gui::Map::Layer::UpdateHint>)), this,
            SLOT(followModes()));
    setLogarithm(true);
    setViewMode(Symbols, true);
}

void EventMapLayer::followModes()
{
    if (viewModes() == _followedModes)
        return;

    _followedModes = viewModes();
    for (Tellarix::Gui::Map::Legend *legend : legends()) {
        if (qobject_cast<MagnitudeLegend *>(legend) || qobject_cast<DepthLegend *>(legend))
            legend->setEnabled(_followedModes.testFlag(Symbols));
    }
    emit modesChanged();
}

void EventMapLayer::setShown(bool symbols, bool heatmap)
{
    setViewMode(Symbols, symbols);
    setViewMode(Heatmap, heatmap);
}

void EventMapLayer::setLegendsShown(bool shown)
{
    for (Tellarix::Gui::Map::Legend *legend : legends())
        legend->setVisible(shown);
}

void EventMapLayer::setGradientName(const QString &name)
{
    const Tellarix::Gui::Gradient *gradient =
        name.isEmpty() ? &_ownGradient : Gradients::Registry.value(name);
    if (!gradient)
        return;

    _gradientName = name;
    setHeatmapGradient(*gradient, false);
}

void EventMapLayer::setMultiplied(bool on)
{
    _multiplied = on;
    setCompositionMode(on);
}

void EventMapLayer::setLogarithm(bool on)
{
    _logarithm = on;
    setLogarithmic(on);
}

QMenu *EventMapLayer::menu(QMenu *parent) const
{
    QMenu *menu = EventsHeatmapLayer::menu(parent);
    menu->setTitle(name());

    QMenu *gradients = menu->addMenu(tr("Heatmap gradient"));
    auto *group = new QActionGroup(gradients);
    group->addAction(addGradient(gradients, QString(), tr("Map")));
    for (const QString &name : Gradients::Registry.keys())
        group->addAction(addGradient(gradients, name, name));

    const auto addSwitch = [&](const QString &text, bool on, const char *slot) {
        QAction *action = menu->addAction(text);
        action->setCheckable(true);
        action->setChecked(on);
        connect(action, SIGNAL(triggered(bool)), this, slot);
    };
    addSwitch(tr("Logarithm of the density"), _logarithm, SLOT(setLogarithm(bool)));
    addSwitch(tr("Multiply with the map"), _multiplied, SLOT(setMultiplied(bool)));
    return menu;
}

QAction *EventMapLayer::addGradient(QMenu *menu, const QString &name, const QString &text) const
{
    const Tellarix::Gui::Gradient &gradient =
        name.isEmpty() ? _ownGradient : *Gradients::Registry.value(name);
    const QPixmap picture =
        gradientPicture(gradient, false, PictureSize, menu->devicePixelRatioF(), menu->palette());
    QAction *action = menu->addAction(picture, text);
    action->setCheckable(true);
    action->setChecked(name == _gradientName);
    auto *layer = const_cast<EventMapLayer *>(this);
    connect(action, &QAction::triggered, layer, [layer, name] { layer->setGradientName(name); });
    return action;
}

void EventMapLayer::saveState(QSettings &settings) const
{
    settings.setValue("gradient", _gradientName);
    settings.setValue("multiplied", _multiplied);
    settings.setValue("logarithm", _logarithm);
    settings.setValue("symbols", viewModes().testFlag(Symbols));
    settings.setValue("heatmap", viewModes().testFlag(Heatmap));
}

void EventMapLayer::restoreState(const QSettings &settings)
{
    setGradientName(settings.value("gradient").toString());
    setMultiplied(settings.value("multiplied").toBool());
    setLogarithm(settings.value("logarithm", true).toBool());
    const bool heatmap = settings.value("heatmap").toBool();
    // Without either there would be nothing to see, and nobody would know why.
    setShown(!heatmap || settings.value("symbols", true).toBool(), heatmap);
}

} // namespace Workbench
