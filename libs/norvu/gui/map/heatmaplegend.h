// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <tellarix/qt/gradient.h>
#include <tellarix/qt/map/legend.h>

#include <QImage>
#include <QString>
#include <QVector>

namespace Norvu {
namespace Gui {
namespace Map {

/** A number of the legend, above the colour that it stands for. */
struct StringAtPos
{
    QString text;
    double key{0}; /**< of the gradient's stop */
    int pos{-1};   /**< x of the tick in pixels, from the legend's left edge */
    int width{-1}; /**< of the text in pixels */
};

/** How the numbers of a legend grow from stop to stop. */
enum class LegendScale
{
    Linear,
    Logarithmic /**< by the same factor for the same distance of keys */
};

/** Numbers from @p min at the first stop of a gradient to @p max at the last, with one decimal and
 *  without a place. None for a gradient that spans no range of keys. */
NORVU_GUI_API QVector<StringAtPos> legendLabels(const Tellarix::Gui::Gradient &gradient, double min,
                                                double max, LegendScale scale);

/**
 * Puts two or more labels of known widths at equal distances.
 * @param height  of a line of text
 * @return size of the whole legend
 */
NORVU_GUI_API QSize placeLabels(QVector<StringAtPos> &labels, int height);

/** The colours, without their transparency, from the first of two or more labels to the last: each
 *  piece between two labels is stretched to their distance. */
NORVU_GUI_API QImage legendStrip(const Tellarix::Gui::Gradient &gradient,
                                 const QVector<StringAtPos> &labels, int height);

/** Colour bar of a density map: a strip of its gradient with the density at each stop. */
class NORVU_GUI_API HeatMapLegend : public Tellarix::Gui::Map::Legend
{
    Q_OBJECT

public:
    explicit HeatMapLegend(QObject *parent = nullptr);

    /**
     * Shows a gradient, and enables the legend. Null and a gradient that spans no range of keys
     * disable it.
     *
     * The same gradient object with the same numbers as before changes nothing, even if its colours
     * are others by now.
     *
     * @param gradient  has to live as long as the legend
     * @param min, max  densities at the first and the last stop; above 0 for a logarithmic scale
     */
    void setGradient(const Tellarix::Gui::Gradient *gradient, double min, double max,
                     LegendScale scale = LegendScale::Linear);
    /** Whether there is something to show. */
    bool hasGradient() const { return !_labels.isEmpty(); }
    const QVector<StringAtPos> &labels() const { return _labels; }

    void draw(const QRect &rect, QPainter &painter) override;

private:
    void drawHeader(const QRect &rect, QPainter &painter) const;
    void drawLabel(int index, int left, int top, QPainter &painter) const;

    const Tellarix::Gui::Gradient *_gradient{nullptr};
    double _min{-1.0};
    double _max{-1.0};
    LegendScale _scale{LegendScale::Linear};
    QVector<StringAtPos> _labels;
    QImage _image;
};

} // namespace Map
} // namespace Gui
} // namespace Norvu
