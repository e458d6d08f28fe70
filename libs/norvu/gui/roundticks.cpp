// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/roundticks.h>

#include <tellarix/qt/records/ruler.h>

#include <algorithm>
#include <cmath>

namespace Norvu {
namespace Gui {

namespace {

constexpr double Slack = 1E-9;
constexpr double LeastDistance = 0.001;
/** Minor ticks may stand so much closer than labelled ones. */
constexpr double MinorShare = 0.25;
/** Digits of values on the finest level. */
constexpr int MostDigits = 10;

int exponentOf(double value)
{
    return static_cast<int>(std::floor(std::log10(value) + Slack));
}

/** Value of @p digit times ten to @p exponent, rounded once. */
double decimal(int digit, int exponent)
{
    return exponent < 0 ? digit / std::pow(10.0, -exponent) : digit * std::pow(10.0, exponent);
}

/** 5, 2 and 1 times powers of ten, the first one below ten to @p exponent. */
double descendingStep(int exponent, int index)
{
    constexpr int Digits[] = {5, 2, 1};
    return decimal(Digits[index % 3], exponent - 1 - index / 3);
}

/** An axis and its levels of round values, from coarse to fine. */
class Levels
{
public:
    Levels(double lower, double upper, bool logarithmic)
        : _lower(lower), _upper(upper), _logarithmic(logarithmic)
    {}

    /** From 0 at the lower end to 1 at the upper one. */
    double shareOf(double value) const
    {
        const double share = _logarithmic ? std::log(value / _lower) / std::log(_upper / _lower)
                                          : (value - _lower) / (_upper - _lower);
        return std::clamp(share, 0.0, 1.0);
    }

    int count() const
    {
        constexpr int DigitLevels = 3;
        if (_logarithmic && _upper >= 10 * _lower)
            return DigitLevels;
        const double largest = std::max(std::abs(_lower), std::abs(_upper));
        const int places = MostDigits + firstExponent() - exponentOf(largest);
        return 3 * std::max(0, places) + (_logarithmic ? DigitLevels : 0);
    }

    /** Values of a level in ascending order; none if there are thousands. */
    QVector<double> values(int level) const
    {
        if (!_logarithmic)
            return multiples(level);
        switch (level) {
        case 0:
            return digits({1});
        case 1:
            return digits({1, 2, 5});
        case 2:
            return digits({1, 2, 3, 4, 5, 6, 7, 8, 9});
        default:
            return multiples(level - 3);
        }
    }

private:
    /** The first multiples are those that an axis has one of at most, or half a digit. */
    int firstExponent() const
    {
        return _logarithmic ? exponentOf(_lower) : exponentOf(_upper - _lower) + 2;
    }

    QVector<double> multiples(int index) const
    {
        return Tellarix::Gui::tickValues(_lower, _upper, descendingStep(firstExponent(), index), 0);
    }

    QVector<double> digits(std::initializer_list<int> wanted) const
    {
        QVector<double> result;
        for (int exponent = exponentOf(_lower); exponent <= exponentOf(_upper); ++exponent) {
            for (const int digit : wanted) {
                const double value = decimal(digit, exponent);
                if (value >= _lower * (1 - Slack) && value <= _upper * (1 + Slack))
                    result.append(value);
            }
        }
        return result;
    }

    double _lower;
    double _upper;
    bool _logarithmic;
};

bool fits(const Levels &levels, double value, const QVector<double> &others, double distance)
{
    const double share = levels.shareOf(value);
    return std::all_of(others.begin(), others.end(), [&](double other) {
        return std::abs(levels.shareOf(other) - share) >= distance * (1 - Slack);
    });
}

bool haveRoom(const Levels &levels, const QVector<double> &values, double distance)
{
    for (int i = 1; i < values.size(); ++i) {
        if (!fits(levels, values[i], {values[i - 1]}, distance))
            return false;
    }
    return true;
}

/** Adds to @p kept those of @p values that have room beside the others, from below. */
QVector<double> joined(const Levels &levels, QVector<double> kept, const QVector<double> &values,
                       double distance)
{
    for (const double value : values) {
        if (fits(levels, value, kept, distance))
            kept.append(value);
    }
    std::sort(kept.begin(), kept.end());
    return kept;
}

/** The finest level that has room, else what has room of the coarsest one where two values do, else
 *  a single value. */
QVector<double> labelledValues(const Levels &levels, double distance)
{
    QVector<double> best;
    QVector<double> single;
    for (int i = 0; i < levels.count(); ++i) {
        const QVector<double> values = levels.values(i);
        const bool isRicher = values.size() > best.size();
        if (single.isEmpty())
            single = values.mid(values.size() / 2, 1);
        if (isRicher && haveRoom(levels, values, distance)) {
            best = values;
        } else if (best.size() > 1) {
            if (isRicher)
                return best;
        } else {
            for (const QVector<double> &kept : {best, QVector<double>()}) {
                const QVector<double> some = joined(levels, kept, values, distance);
                if (some.size() > 1)
                    return some;
            }
        }
    }
    return best.isEmpty() ? single : best;
}

bool holds(const QVector<double> &values, double wanted)
{
    return std::any_of(values.begin(), values.end(), [=](double value) {
        return std::abs(value - wanted) <= Slack * std::abs(wanted);
    });
}

/** Values of the finest level with room that passes over none of the labelled ones. */
QVector<double> minorValues(const Levels &levels, const QVector<double> &labelled, double distance)
{
    QVector<double> best;
    for (int i = 0; i < levels.count(); ++i) {
        const QVector<double> values = levels.values(i);
        const bool holdsAll = std::all_of(labelled.begin(), labelled.end(),
                                          [&](double value) { return holds(values, value); });
        if (holdsAll && haveRoom(levels, values, distance))
            best = values;
        else if (values.size() > 1 / distance + 1)
            break;
    }
    return best;
}

} // namespace

QVector<RoundTick> roundTicks(double begin, double end, bool logarithmic, double minimumDistance)
{
    const double lower = std::min(begin, end);
    const double upper = std::max(begin, end);
    const bool isUsable = std::isfinite(upper - lower) && lower < upper &&
                          (!logarithmic || (lower > 0 && std::isfinite(upper / lower)));
    if (!isUsable)
        return {};

    const double distance = std::max(LeastDistance, minimumDistance);
    const Levels levels(lower, upper, logarithmic);
    const QVector<double> labelled = labelledValues(levels, distance);
    QVector<double> values = minorValues(levels, labelled, MinorShare * distance);
    if (values.isEmpty())
        values = labelled;

    QVector<RoundTick> ticks;
    for (const double value : values) {
        const double share = levels.shareOf(value);
        ticks.append({value, begin < end ? share : 1 - share,
                      holds(labelled, value) ? roundNumberText(value) : QString()});
    }
    if (begin > end)
        std::reverse(ticks.begin(), ticks.end());
    return ticks;
}

QString roundNumberText(double value)
{
    const double magnitude = std::abs(value);
    // Half a digit of the tenth place, so that noise about a power of ten doesn't add an exponent.
    constexpr double Least = 0.001 * (1 - 1E-10);
    constexpr double Most = 1E6 * (1 - 1E-10);
    if (!std::isfinite(value) || magnitude == 0 || (magnitude >= Least && magnitude < Most))
        return QString::number(value, 'g', MostDigits);

    const QString text = QString::number(value, 'e', MostDigits - 1);
    const int behindMantissa = text.indexOf('e');
    QString mantissa = text.left(behindMantissa);
    while (mantissa.endsWith('0'))
        mantissa.chop(1);
    if (mantissa.endsWith('.'))
        mantissa.chop(1);
    return mantissa + 'e' + QString::number(text.mid(behindMantissa + 1).toInt());
}

} // namespace Gui
} // namespace Norvu
