#pragma once

#include <norvu/api.h>
#include <norvu/gui/roundticks.h>
#include <norvu/gui/spectrogramsettings.h>

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
    /** Corners of a band in Hz. */
    struct Band
    {
        double lower;
        double upper;
    };

    /** An empty axis. */
    SpectrogramAxis() = default;
    /** The axis of @p settings; empty if they make no bands, or bands that are not finite. */
    explicit SpectrogramAxis(const SpectrogramSettings &settings);

    bool isEmpty() const { return _rows < 1; }
    int rows() const { return _rows; }
    /** Periods in seconds instead of frequencies in Hz. */
    bool hasPeriods() const { return _hasPeriods; }
    bool isLogarithmic() const { return _logarithmic; }
    /** "s" or "Hz"; empty for an empty axis. */
    QString unit() const;

    /** Corners of the band of a row, 0 to rows() - 1, the lower one first. */
    Band band(int row) const;

    /** Centres of the bands of the first and the last row; not a number if the axis is empty. */
    double firstValue() const { return valueOfRow(0); }
    double lastValue() const { return valueOfRow(_rows - 1); }
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
    double toValue(double coordinate) const;

    int _rows{0};
    bool _hasPeriods{true};
    bool _logarithmic{false};
    // In the natural logarithm of the unit if the axis is logarithmic:
    double _begin{0}; /**< where the first band begins */
    double _width{0}; /**< of a band; negative if the axis descends */
    double _step{0};  /**< from band to band */
};

} // namespace Gui
} // namespace Norvu
