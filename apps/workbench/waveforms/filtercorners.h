// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/math/filterparser.h>

#include <QString>
#include <QVector>

#include <set>

namespace Workbench {

/** Frequencies in Hz, both above 0. */
struct FrequencyRange
{
    double lower{0.01};
    double upper{50};
};

/**
 * The corner frequencies that are moved by hand: those of the filter in which the text cursor
 * stands, else of the first that has any. Blanks, other filters and other numbers of a text stay as
 * they are written.
 *
 * Corners are moved to three significant digits, stay a little apart, and below @p nyquist in Hz;
 * 0 knows no such bound.
 */
class FilterCorners
{
public:
    FilterCorners() = default;
    FilterCorners(const QString &text, int cursor);

    /** False for a text that is no filter: there is nothing that could be moved, or added to. */
    bool isFilter() const { return _isFilter; }
    const QString &text() const { return _text; }
    /** Name of the filter that has the corners. */
    QString name() const;
    /** In Hz, in the order of the filter's parameters; empty if no filter has corners. */
    const QVector<double> &frequencies() const { return _frequencies; }

    /** The text with one corner elsewhere. */
    QString moved(int corner, double frequency, double nyquist) const;
    /** The text with all corners times a factor, or less if the band would come to its bound. */
    QString shifted(double factor, double nyquist) const;
    /** The text with a band whose corners lie farther apart, each by a factor; below 1 closer. One
     *  corner alone stays. */
    QString widened(double factor, double nyquist) const;
    /** The text with a new band-pass before all else. */
    QString withBand(double one, double other, double nyquist) const;
    /** Where the text cursor stands in one of those texts. */
    int cursorIn(const QString &changed) const;

private:
    QString withFrequencies(const QVector<double> &frequencies) const;
    FrequencyRange bounds(int corner, double nyquist) const;

    QString _text;
    int _cursor{0};
    bool _isFilter{false};
    size_t _stage{0};
    Tellarix::Math::Filtering::FilterPlace _place;
    std::vector<size_t> _parameters; /**< those that are corners */
    QVector<double> _frequencies;
};

/** What an axis has to show: all corners, and the range up to the Nyquist frequencies of streams
 *  with these sampling frequencies in Hz. */
FrequencyRange shownFrequencies(const QVector<double> &corners, const std::set<double> &rates);

/**
 * Gain of a filter's Butterworth stages at frequencies in Hz; others are taken as 1.
 * @return empty for a text without such a stage, or with one that the sampling frequency doesn't
 *         suit
 */
QVector<double> filterGains(const QString &text, double samplingFrequency,
                            const QVector<double> &frequencies);

} // namespace Workbench
