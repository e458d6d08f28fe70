// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "scalecolumn.h"

#include <norvu/gui/spectrogramaxis.h>
#include <tellarix/qt/gradient.h>

#include <QImage>
#include <QWidget>

namespace Workbench {

/** The colours of a bar and the amplitudes that they stand for. */
struct ColorScale
{
    Tellarix::Gui::Gradient gradient;
    bool discrete{false}; /**< one colour from stop to stop */
    double lower{0};      /**< amplitude of the first stop */
    double upper{0};      /**< amplitude of the last one */
    bool logarithmic{false};

    /** Length of the bar, if from the first to the last stop it is 1: the last one of discrete
     *  colours takes as much room as the one before. */
    double length() const;
    /** Ticks along the bar; none if the amplitudes can't be drawn. */
    QVector<Norvu::Gui::RoundTick> ticks(double minimumDistance) const;
    /** The bar, one pixel wide and @p height pixels high, with the first colour at the bottom; null
     *  without colours. */
    QImage image(int height) const;
};

/**
 * Stands right of a row with a spectrogram: the axis of periods or frequencies, and beside it a bar
 * that tells which colour means which amplitude. Ticks of the axis stand at the lines of the
 * picture. It shows as many numbers and units as fit into its height.
 */
class SpectrogramScale : public QWidget
{
    Q_OBJECT

public:
    explicit SpectrogramScale(QWidget *parent = nullptr);

    /** Shows the axis of a spectrogram; nothing stands there for an empty one. */
    void setAxis(const Norvu::Gui::SpectrogramAxis &axis);
    /**
     * Sets the colour bar.
     * @param gradient      its keys are stretched over the amplitudes; no bar without stops
     * @param discrete      one colour from stop to stop
     * @param lower, upper  amplitudes of the first and the last colour
     * @param logarithmic   equal ratios of amplitudes take equal heights
     * @param unit          of the amplitudes, a text for the user
     */
    void setColors(const Tellarix::Gui::Gradient &gradient, bool discrete, double lower,
                   double upper, bool logarithmic, const QString &unit);
    /** Whether there is a colour bar; there is at the start. */
    void setColorBarVisible(bool visible);
    /** Where the picture stands, in pixels from the upper edge; a height below 1, as at the start,
     *  stands for the whole widget. */
    void setPictureArea(int top, int height);

    /** Places of the numbers from the top down. */
    const QVector<Tellarix::Gui::RulerLabel> &axisLabels() const { return _axisColumn.labels(); }
    const QVector<Tellarix::Gui::RulerLabel> &colorLabels() const { return _colorColumn.labels(); }
    /** The colours within their frame; empty if there is no bar. */
    QRect colorBarRect() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    bool hasColorBar() const;
    QRect pictureRect() const;
    int barLeft() const;
    void changeContent();
    void updateToolTip();
    void updateWidth();
    void arrange();
    void drawBaseline(QPainter &painter) const;
    void drawColorBar(QPainter &painter) const;

    Norvu::Gui::SpectrogramAxis _axis;
    ColorScale _colors;
    QString _amplitudeUnit;
    bool _colorBarVisible{true};
    int _pictureTop{0};
    int _pictureHeight{0};
    ScaleColumn _axisColumn;
    ScaleColumn _colorColumn;
    int _axisWidth{0};
    int _colorWidth{0};
    int _contentWidth{0}; /**< that of the hint */
};

} // namespace Workbench
