// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>
#include <norvu/gui/roundticks.h>
#include <norvu/gui/spectrogrambands.h>

#include <QString>
#include <QVector>

namespace Norvu {
namespace Gui {

/**
 * The axis of the picture of a spectrogram: which period or frequency stands at which height.
 *
 * Positions count from 0 at the bottom edge of the picture to 1 at its top. Row 0 of the matrix
 * stands at 0 and row r at r / rows(); between two rows the picture is interpolated, above the last
 * one it stays as it is. A row is named by the centre of its band, on the logarithmic or linear
 * axis.
 */
class NORVU_GUI_API SpectrogramAxis
{
public:
    /** An empty axis. */
    SpectrogramAxis() = default;
    /** The axis of @p settings; empty if they make no bands, or bands that are not finite. */
    explicit SpectrogramAxis(const SpectrogramSettings &settings);

    bool isEmpty() const { return rows() < 1; }
    int rows() const { return _bands.count; }
    /** Periods in seconds instead of frequencies in Hz. */
    bool hasPeriods() const { return _bands.hasPeriods; }
    bool isLogarithmic() const { return _bands.isLogarithmic; }
    /** "s" or "Hz"; empty for an empty axis. */
    QString unit() const;

    /** The bands of the rows. */
    const SpectrogramBands &bands() const { return _bands; }

    /** Centres of the bands of the first and the last row; not a number if the axis is empty. */
    double firstValue() const { return valueOfRow(0); }
    double lastValue() const { return valueOfRow(rows() - 1); }
    /** Whether all rows stand for the same value: there is one of them, or they cover each other.
     */
    bool isSingleValue() const { return !isEmpty() && firstValue() == lastValue(); }

    /** Value at a position, limited to those of the first and the last row; not a number if the
     *  axis is empty. */
    double valueAt(double position) const;
    /** Position of a value, beyond 0 and 1 too; 0.5 if all rows have the same value, not a number
     *  if the value has no logarithm or the axis is empty. */
    double positionOf(double value) const;

    /**
     * Ticks at round values, as roundTicks() places them, from the bottom up. If all rows have the
     * same value, there is one tick with three digits of it, in the middle.
     * @param minimumDistance  of labelled ticks, as a share of the height of the picture
     */
    QVector<RoundTick> ticks(double minimumDistance) const;

private:
    double valueOfRow(double row) const;

    SpectrogramBands _bands;
};

} // namespace Gui
} // namespace Norvu
