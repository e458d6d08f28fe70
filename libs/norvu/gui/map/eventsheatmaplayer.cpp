// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/gradients.h>
#include <norvu/gui/map/eventsheatmaplayer.h>
#include <norvu/gui/map/heatmaplegend.h>

#include <tellarix/qt/map/canvas.h>

#include <QAction>
#include <QMenu>

#include <cmath>

namespace Norvu {
namespace Gui {
namespace Map {

namespace {

/** Low densities stay see-through, and the colour is full before the end of the scale. */
Tellarix::Gui::Gradient defaultGradient()
{
    Tellarix::Gui::Gradient gradient;
    gradient.setColorAt(0.0, QColor(0, 0, 0, 0));
    gradient.setColorAt(0.065, QColor(0, 0, 255, 51));
    gradient.setColorAt(0.168, QColor(0, 255, 255, 102));
    gradient.setColorAt(0.331, QColor(0, 255, 0, 153));
    gradient.setColorAt(0.59, QColor(255, 255, 0, 204));
    gradient.setColorAt(0.88, QColor(255, 0, 0, 255));
    gradient.setColorAt(1.0, QColor(255, 0, 0, 255));
    return gradient;
}

} // namespace

EventsHeatmapLayer::EventsHeatmapLayer(QObject *parent)
    : EventLayer(parent),
      _modeNames{{Default, QT_TRANSLATE_NOOP("QObject", "Default")},
                 {WellsCoppersmith, QT_TRANSLATE_NOOP("QObject", "Wells && Coppersmith")},
                 {AmplifiedWellsCoppersmith, QT_TRANSLATE_NOOP("QObject", "Amplified W&&C")}},
      _gradient(defaultGradient()), _legend(new HeatMapLegend(this))
{
    generateLUT();
    addLegend(_legend);
    _legend->setGradient(&_gradient, _lut._minKey, _lut._maxKey);
    // There is nothing yet that a legend could tell of.
    enableLegend();
}

EventsHeatmapLayer::~EventsHeatmapLayer() = default;

void EventsHeatmapLayer::setViewMode(ViewMode mode, bool enabled)
{
    if (enabled == _viewModes.testFlag(mode))
        return;

    _viewModes.setFlag(mode, enabled);
    enableLegend();
    emit updateRequested(mode == Symbols ? SymbolPositions : Buffer);
}

void EventsHeatmapLayer::setViewModeHeatmap(bool state)
{
    setViewMode(Heatmap, state);
}

void EventsHeatmapLayer::setViewModeSymbols(bool state)
{
    setViewMode(Symbols, state);
}

void EventsHeatmapLayer::setHeatmapMode(HeatmapMode mode)
{
    if (!_allowedModes.contains(mode))
        return;

    _heatmapMode = mode;
    if (_viewModes.testFlag(Heatmap))
        emit updateRequested(Buffer);
}

void EventsHeatmapLayer::setAllowedHeatmapModes(QVector<HeatmapMode> modes)
{
    _allowedModes = std::move(modes);
    // Without any mode there is no first one to change to.
    if (!_allowedModes.isEmpty() && !_allowedModes.contains(_heatmapMode))
        setHeatmapMode(_allowedModes.first());
}

void EventsHeatmapLayer::toggleHeatmapMode(bool)
{
    const auto *action = qobject_cast<QAction *>(sender());
    if (!action)
        return;

    switch (action->data().toInt()) {
    case WellsCoppersmith:
        return setHeatmapMode(WellsCoppersmith);
    case AmplifiedWellsCoppersmith:
        return setHeatmapMode(AmplifiedWellsCoppersmith);
    default:
        return setHeatmapMode(Default);
    }
}

void EventsHeatmapLayer::setHeatmapGradient(const Tellarix::Gui::Gradient &gradient, bool discrete)
{
    _gradient = gradient;
    _discrete = discrete;
    generateLUT();
    if (_legend) {
        // It knows the gradient by its place: without this, the colours of the former one could
        // stay.
        _legend->setGradient(nullptr, 0, 0);
        _legend->setGradient(&_gradient, _lut._minKey, _lut._maxKey);
    }
    enableLegend();
    repaintDensity();
}

void EventsHeatmapLayer::setCompositionMode(bool multiply)
{
    if (multiply == _multiply)
        return;

    _multiply = multiply;
    repaintDensity();
}

void EventsHeatmapLayer::setLogarithmic(bool logarithmic)
{
    if (logarithmic == _logarithmic)
        return;

    _logarithmic = logarithmic;
    repaintDensity();
}

/** Whether there is a density to paint. */
bool EventsHeatmapLayer::hasDensity() const
{
    return _viewModes.testFlag(Heatmap) && !_symbols.isEmpty() && _lut._size > 0;
}

void EventsHeatmapLayer::repaintDensity()
{
    if (!hasDensity() || !isVisible())
        return;

    // A repaint alone would show the density that is in the buffer already.
    setBufferOutdated();
    emit updateRequested(Repaint);
}

void EventsHeatmapLayer::generateLUT()
{
    if (fillTable(_lut, _gradient, _discrete))
        _lutZeroAlpha = qAlpha(_lut.at(0.0));
}

/** A legend that has nothing to show stays off. */
void EventsHeatmapLayer::enableLegend()
{
    if (_legend)
        _legend->setEnabled(_viewModes.testFlag(Heatmap) && _legend->hasGradient());
}

void EventsHeatmapLayer::setVisible(bool visible)
{
    const QPointer<EventsHeatmapLayer> alive(this);
    EventLayer::setVisible(visible);
    if (alive)
        emit updateRequested(_viewModes.testFlag(Heatmap) ? Buffer : SymbolPositions);
}

void EventsHeatmapLayer::draw(const Tellarix::Gui::Map::Canvas *canvas, QPainter &painter)
{
    if (_viewModes.testFlag(Symbols))
        EventLayer::draw(canvas, painter);
}

void EventsHeatmapLayer::calculateMapPosition(const Tellarix::Gui::Map::Canvas *canvas)
{
    if (_viewModes.testFlag(Symbols))
        EventLayer::calculateMapPosition(canvas);
}

bool EventsHeatmapLayer::isInside(const QMouseEvent *event, const QPointF &place)
{
    return _viewModes.testFlag(Symbols) && EventLayer::isInside(event, place);
}

int EventsHeatmapLayer::radiusOf(double magnitude, float pixelPerDegree) const
{
    if (_heatmapMode == Default)
        return exponentialRadius(magnitude, pixelPerDegree);
    return ruptureRadius(magnitude, _heatmapMode == WellsCoppersmith ? 1 : 100, pixelPerDegree);
}

std::vector<DensityDisc> EventsHeatmapLayer::discs(const Tellarix::Gui::Map::Canvas &canvas) const
{
    const float pixelPerDegree = canvas.pixelPerDegree();
    std::vector<DensityDisc> result;
    result.reserve(static_cast<size_t>(_symbols.size()));
    for (const Tellarix::Gui::OriginSymbol *symbol : _symbols) {
        QPoint pixel;
        if (canvas.projection()->project(pixel, symbol->location()))
            result.push_back({pixel.x(), pixel.y(),
                              radiusOf(symbol->preferredMagnitudeValue(), pixelPerDegree)});
    }
    return result;
}

void EventsHeatmapLayer::bufferUpdated(Tellarix::Gui::Map::Canvas *canvas, QPainter &)
{
    if (!hasDensity() || _modeNames.count(_heatmapMode) == 0)
        return;

    QImage &buffer = canvas->buffer();
    _density.resize(buffer.width() * buffer.height());
    const float maximum = computeDensity(
        _density.data(), buffer.width(), buffer.height(), discs(*canvas),
        _heatmapMode == Default ? DiscPrecision::Double : DiscPrecision::Single, _logarithmic);

    // A table that stayed flat would not come back when there is no gradient to fill it from.
    DensityTable table = _lut;
    if (_multiply)
        flattenOnWhite(table);
    paintDensity(buffer, _density.constData(),
                 {&table, densityScale(table, maximum), _multiply, _lutZeroAlpha > 0});
    showScale(maximum);
}

/** Tells the legend the densities that belong to the ends of the gradient. */
void EventsHeatmapLayer::showScale(float maximum)
{
    if (!_legend)
        return;

    // The density 0 belongs to key 0, wherever the gradient begins; the logarithm of a density
    // grows evenly with the key, and not the density itself. With keys that end at 0, or below,
    // all densities have one colour, and there is no scale to show.
    const double first = maximum * (_lut._minKey / _lut._maxKey);
    if (!(_lut._maxKey > 0))
        _legend->setGradient(nullptr, 0, 0);
    else if (_logarithmic)
        _legend->setGradient(&_gradient, std::exp(first), std::exp(static_cast<double>(maximum)),
                             LegendScale::Logarithmic);
    else
        _legend->setGradient(&_gradient, first, maximum);
}

QMenu *EventsHeatmapLayer::menu(QMenu *parent) const
{
    auto *menu = new QMenu(parent);
    const auto addMode = [&](const QString &text, ViewMode mode, const char *slot) {
        QAction *action = menu->addAction(text);
        action->setCheckable(true);
        action->setChecked(_viewModes.testFlag(mode));
        connect(action, SIGNAL(triggered(bool)), this, slot);
    };
    addMode(tr("heatmap"), Heatmap, SLOT(setViewModeHeatmap(bool)));
    addMode(tr("symbols"), Symbols, SLOT(setViewModeSymbols(bool)));

    QMenu *modes = menu->addMenu(tr("Heatmap mode"));
    for (const HeatmapMode mode : _allowedModes) {
        // A mode that the layer doesn't know can't be named.
        const auto name = _modeNames.find(mode);
        if (name == _modeNames.end())
            continue;
        QAction *action = modes->addAction(QObject::tr(name->second.c_str()));
        action->setData(static_cast<int>(mode));
        action->setEnabled(mode != _heatmapMode);
        connect(action, SIGNAL(triggered(bool)), this, SLOT(toggleHeatmapMode(bool)));
    }
    return menu;
}

} // namespace Map
} // namespace Gui
} // namespace Norvu
