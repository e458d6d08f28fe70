// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>
#include <norvu/gui/map/heatmapdensity.h>
#include <norvu/gui/map/heatmappainting.h>

#include <tellarix/qt/gradient.h>
#include <tellarix/qt/map/eventlayer.h>

#include <QFlags>
#include <QPointer>
#include <QVector>

#include <map>
#include <string>
#include <vector>

namespace Norvu {
namespace Gui {
namespace Map {

class HeatMapLegend;

/**
 * Shows events by their symbols, by their density, or by both.
 *
 * Each event adds a disc to the density whose radius follows from its magnitude. The density is
 * scaled so that its maximum has the last colour of the gradient, and painted into the canvas's
 * buffer; what it stands for is in the layer's legend.
 */
class NORVU_GUI_API EventsHeatmapLayer : public Tellarix::Gui::EventLayer
{
    Q_OBJECT

public:
    enum ViewMode
    {
        Symbols = 1,
        Heatmap = 2
    };
    Q_DECLARE_FLAGS(ViewModes, ViewMode)

    /** What the radius of a disc follows from. */
    enum HeatmapMode : int
    {
        Default = 0,                  /**< grows exponentially with the magnitude */
        WellsCoppersmith = 1,         /**< the area of the rupture */
        AmplifiedWellsCoppersmith = 2 /**< 100 times this area */
    };

    /** A layer that shows nothing: see setViewMode(). */
    explicit EventsHeatmapLayer(QObject *parent = nullptr);
    ~EventsHeatmapLayer() override;

    ViewModes viewModes() const { return _viewModes; }
    void setViewMode(ViewMode mode, bool enabled);

    HeatmapMode heatmapMode() const { return _heatmapMode; }
    /** Ignores modes that are not allowed. */
    void setHeatmapMode(HeatmapMode mode);
    /** What can be chosen, in the order of the menu. If the present mode isn't among them, the
     *  first one comes in its place; without any the present one stays. */
    void setAllowedHeatmapModes(QVector<HeatmapMode> modes);

    /**
     * Without stops the colours stay as they are, but there is no legend.
     *
     * Densities are stretched to keys from 0 to the last one of the gradient. Where the colour of
     * key 0 isn't wholly transparent, the map is painted all over.
     *
     * @param discrete  bands of one colour from stop to stop
     */
    void setHeatmapGradient(const Tellarix::Gui::Gradient &gradient, bool discrete = false);
    const Tellarix::Gui::Gradient &heatmapGradient() const { return _gradient; }

    /** Multiplies the colours, laid on white, with the map; else they are laid over it by alpha. */
    void setCompositionMode(bool multiply);
    /** Shows the natural logarithm of the density. */
    void setLogarithmic(bool logarithmic);

    void draw(const Tellarix::Gui::Map::Canvas *canvas, QPainter &painter) override;
    void setVisible(bool visible) override;
    void calculateMapPosition(const Tellarix::Gui::Map::Canvas *canvas) override;
    /** False while the symbols are off. */
    bool isInside(const QMouseEvent *event, const QPointF &place) override;
    /** Paints the density into the buffer's pixels, not by the painter. */
    void bufferUpdated(Tellarix::Gui::Map::Canvas *canvas, QPainter &painter) override;
    /** View modes and heat map modes; the caller's unless @p parent isn't null. */
    QMenu *menu(QMenu *parent) const override;

public slots:
    void setViewModeHeatmap(bool state);
    void setViewModeSymbols(bool state);
    /** Takes the mode from the data of the action that sends the signal. */
    void toggleHeatmapMode(bool);

private:
    bool hasDensity() const;
    void generateLUT();
    void enableLegend();
    void showScale(float maximum);
    void repaintDensity();
    std::vector<DensityDisc> discs(const Tellarix::Gui::Map::Canvas &canvas) const;
    int radiusOf(double magnitude, float pixelPerDegree) const;

    std::map<HeatmapMode, std::string> _modeNames;
    QVector<float> _density;
    Tellarix::Gui::Gradient _gradient;
    QPointer<HeatMapLegend> _legend; /**< whoever has taken it may have deleted it */
    bool _discrete{false};
    DensityTable _lut;
    int _lutZeroAlpha{0};
    ViewModes _viewModes;
    HeatmapMode _heatmapMode{Default};
    QVector<HeatmapMode> _allowedModes{Default, WellsCoppersmith, AmplifiedWellsCoppersmith};
    bool _multiply{false};
    bool _logarithmic{false};
};

Q_DECLARE_OPERATORS_FOR_FLAGS(EventsHeatmapLayer::ViewModes)

} // namespace Map
} // namespace Gui
} // namespace Norvu
