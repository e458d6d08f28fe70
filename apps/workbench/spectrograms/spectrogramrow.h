// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "amplitudecolors.h"
#include "picturepen.h"
#include "piecewisespectrogram.h"
#include "rowhint.h"
#include "spectrogramplace.h"

#include <norvu/gui/spectrogramaxis.h>

#include <QPointer>

namespace Workbench {

/** A row of traces with the picture of their spectrogram: its place, its colours, and what is to be
 * told about it. */
class SpectrogramRow : public PiecewiseSpectrogram
{
    Q_OBJECT

public:
    explicit SpectrogramRow(QWidget *parent = nullptr);

    void setPlace(SpectrogramPlace place);
    /** Has the spectrogram painted by @p band, a neighbour above this widget, as long as it lives.
     */
    void setBand(QWidget *band);
    /** To be called when the band has another place or size. */
    void followBand();
    /** Paints what belongs into the band; the painter's origin is that of this widget. */
    void paintBand(QPainter &painter);
    /** Where the picture stands, in coordinates of this widget. */
    QRect pictureRect() const { return spectrogramRect(); }
    /** Whether traces can be seen: not where the picture stands in their place. */
    bool areTracesShown() const;
    /** Whether anything of the row, or its band, can be seen. */
    bool isInSight() const;

    void setColors(const AmplitudeColors &colors);
    const AmplitudeColors &colors() const { return _colors; }
    /** Smallest and largest amplitude in the picture, in the unit; (0, 0) without one. */
    QPair<double, double> amplitudeRange() const;
    /** Takes over the unit of the row, or its scale, if it is another. */
    void followUnit();
    /** Unit of amplitudes. */
    QString unit() const;
    /** What is under the pointer, empty where there is no spectrogram. */
    QString spectrogramText(const QPoint &point) const;

signals:
    void colorsChanged();
    /** The picture has another place or size. */
    void pictureMoved();
    /** The user wants colours in which the picture can be seen. */
    void rangeFitRequested();

protected:
    QRect spectrogramRect() const override;
    void customPaintTracesBegin(QPainter &painter) override;
    void customPaintTracesEnd(QPainter &painter) override;
    void drawSpectrogram(QPainter &painter) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void applyColors();
    double unitFactor() const;
    QColor quietColor() const;
    bool coversTraces() const;
    void updateTracePen();
    void hideTraces(bool hide);
    void updateHint();
    void drawAlignment(QPainter &painter) const;

    AmplitudeColors _colors;
    ColorTable _table;
    RowHint _hint;
    SpectrogramPlace _place{SpectrogramPlace::Behind};
    PicturePen _pen;
    bool _hidesTraces{false};
    QPointer<QWidget> _band;
};

} // namespace Workbench
