// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/timescale.h>

#include <QDateTime>
#include <QFontMetricsF>
#include <QtMath>

#include <algorithm>
#include <cmath>

namespace Tellarix {
namespace Gui {

namespace {

constexpr double Minute = 60;
constexpr double Hour = 3600;
constexpr double Day = 86400;
constexpr double Year = 365.2425 * Day; // on the mean, in whole seconds
/** From here on ticks stand at the beginnings of years. */
constexpr double LongestInDays = 100 * Day;
constexpr int64_t USecsPerSecond = 1000000;
constexpr int64_t USecsPerDay = 86400 * USecsPerSecond;
constexpr double LeastSpacing = 1E-6; // times are whole microseconds

struct TimeStep
{
    double major;
    double minor;
};

constexpr TimeStep ClockSteps[] = {
    {1, 0.2},
    {2, 0.5},
    {5, 1},
    {10, 2},
    {15, 5},
    {30, 10},
    {Minute, 10},
    {2 * Minute, 30},
    {5 * Minute, 60},
    {10 * Minute, 120},
    {15 * Minute, 300},
    {30 * Minute, 600},
    {Hour, 600},
    {2 * Hour, 1800},
    {3 * Hour, Hour},
    {6 * Hour, Hour},
    {12 * Hour, 3 * Hour},
    {Day, 6 * Hour},
};

/** Decimals of seconds that tell ticks of this distance apart, 0 to 6. */
int decimalsOf(double spacing)
{
    if (!(spacing > 0) || spacing >= 1)
        return 0;
    return qBound(0, qCeil(-std::log10(spacing) - 1E-9), 6);
}

int64_t floorModulo(int64_t value, int64_t divisor)
{
    const int64_t rest = value % divisor;
    return rest < 0 ? rest + divisor : rest;
}

QString twoDigits(int64_t number)
{
    return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
}

QString dateText(const Core::TimeFields &fields)
{
    return QStringLiteral("%1-%2-%3")
        .arg(fields.year, 4, 10, QLatin1Char('0'))
        .arg(twoDigits(fields.month), twoDigits(fields.day));
}

/** The year that begins at a tick, which stands up to two days beside the first of January. */
QString yearText(const Core::Time &time)
{
    constexpr double HalfYear = 183 * Day;
    return QString::number((time + Core::TimeSpan(HalfYear)).fields().year);
}

QString fractionText(int64_t usecs, int decimals)
{
    if (decimals <= 0)
        return QString();
    const QString digits = QStringLiteral("%1").arg(usecs, 6, 10, QLatin1Char('0'));
    return QLatin1Char('.') + digits.left(decimals);
}

QString clockText(const Core::TimeFields &fields, double spacing)
{
    const QString text = twoDigits(fields.hour) + QLatin1Char(':') + twoDigits(fields.minute);
    if (spacing >= Minute)
        return text;
    return text + QLatin1Char(':') + twoDigits(fields.second) +
           fractionText(fields.usec, decimalsOf(spacing));
}

/** The time on clocks where the user is, with the name of the zone. */
QString localTimeText(Core::Time time, double spacing)
{
    const qint64 msecs = time.usecs() / 1000 - (time.usecs() % 1000 < 0 ? 1 : 0);
    const QDateTime local = QDateTime::fromMSecsSinceEpoch(msecs, Qt::LocalTime);
    // Its date is often another one than that of UTC.
    const QString format = spacing >= Day      ? QStringLiteral("yyyy-MM-dd HH:mm")
                           : spacing >= Minute ? QStringLiteral("MM-dd HH:mm")
                                               : QStringLiteral("MM-dd HH:mm:ss");
    const QString fraction =
        fractionText(floorModulo(time.usecs(), USecsPerSecond), decimalsOf(spacing));
    return local.toString(format) + fraction + QLatin1Char(' ') + local.timeZoneAbbreviation();
}

/** The text with each digit replaced by the widest one, so that its width does not depend on
 *  where the view happens to be. */
QString widestForm(QString text, const QFontMetricsF &metrics)
{
    QChar widest = QLatin1Char('0');
    for (char digit = '1'; digit <= '9'; ++digit) {
        if (metrics.horizontalAdvance(QLatin1Char(digit)) > metrics.horizontalAdvance(widest))
            widest = QLatin1Char(digit);
    }
    for (QChar &character : text) {
        if (character.isDigit())
            character = widest;
    }
    return text;
}

/** Splits tenths, hundredths, ... of seconds into days, hours, minutes and seconds. */
struct SpanFields
{
    SpanFields(double seconds, int decimals)
    {
        int64_t unit = 1;
        for (int i = 0; i < decimals; ++i)
            unit *= 10;
        const int64_t units = std::llround(std::abs(seconds) * static_cast<double>(unit));
        isZero = units == 0;
        usecs = units % unit * (USecsPerSecond / unit);
        const int64_t whole = units / unit;
        days = whole / 86400;
        hours = whole / 3600 % 24;
        minutes = whole / 60 % 60;
        secs = whole % 60;
    }

    bool isZero;
    int64_t days;
    int64_t hours;
    int64_t minutes;
    int64_t secs;
    int64_t usecs;
};

} // namespace

void roundTimeDistance(double distance, double &major, double &minor)
{
    major = 0;
    minor = 0;
    if (!std::isfinite(distance) || distance <= 0)
        return;

    if (distance <= 0.5) {
        major = std::max(roundTickDistance(distance), LeastSpacing);
        minor = std::max(roundTickDistance(0.19 * major), LeastSpacing);
        return;
    }
    for (const TimeStep &step : ClockSteps) {
        if (distance <= step.major * (1 + 1E-9)) {
            major = step.major;
            minor = step.minor;
            return;
        }
    }

    const double days = roundTickDistance(distance / Day);
    major = days * Day;
    minor = days == 2 ? 0.5 * Day : roundTickDistance(0.19 * days) * Day;
}

QString timeSpanText(double seconds, double spacing)
{
    constexpr double LongestSpan = 9E11; // in microseconds the limit of 64 bits is near
    if (!std::isfinite(seconds))
        return QString();
    if (std::abs(seconds) > LongestSpan)
        return QStringLiteral("%1d").arg(seconds / Day, 0, 'g', 6);

    const int decimals = decimalsOf(spacing);
    const SpanFields span(seconds, decimals);
    if (span.isZero)
        return QStringLiteral("0s");

    const QString sign = seconds < 0 ? QStringLiteral("-") : QStringLiteral("+");
    const QString fraction = fractionText(span.usecs, decimals);
    const QString minutesAndSeconds =
        twoDigits(span.minutes) + QLatin1Char(':') + twoDigits(span.secs) + fraction;
    if (span.days > 0) {
        const QString days = QStringLiteral("%1%2d").arg(sign).arg(span.days);
        if (spacing >= Day && span.hours == 0)
            return days;
        if (spacing >= Minute)
            return QStringLiteral("%1 %2:%3")
                .arg(days, twoDigits(span.hours), twoDigits(span.minutes));
        return QStringLiteral("%1 %2:%3").arg(days, twoDigits(span.hours), minutesAndSeconds);
    }
    if (span.hours > 0)
        return QStringLiteral("%1%2:%3").arg(sign).arg(span.hours).arg(minutesAndSeconds);
    if (span.minutes > 0)
        return QStringLiteral("%1%2:%3%4")
            .arg(sign)
            .arg(span.minutes)
            .arg(twoDigits(span.secs), fraction);
    return QStringLiteral("%1%2%3s").arg(sign).arg(span.secs).arg(fraction);
}

TimeScale::TimeScale(QWidget *parent, Qt::WindowFlags flags, Position position)
    : Ruler(parent, flags, position)
{
    updateSpacing();
}

void TimeScale::setAbsoluteTimeEnabled(bool enable, bool absoluteDate)
{
    if (enable == _absoluteTime && absoluteDate == _absoluteDate)
        return;
    _absoluteTime = enable;
    _absoluteDate = absoluteDate;
    updateGeometry();
    update();
    updateSpacing();
}

void TimeScale::setLocalTimeShown(bool show)
{
    if (show == _localTime)
        return;
    _localTime = show;
    updateGeometry();
    update();
    updateSpacing();
}

void TimeScale::setAlignment(Core::Time alignment)
{
    if (alignment == _alignment)
        return;
    _alignment = alignment;
    update();
    updateSpacing();
}

int TimeScale::lineCount() const
{
    if (!_absoluteTime)
        return 1;
    return 1 + (_absoluteDate ? 1 : 0) + (_localTime ? 1 : 0);
}

int TimeScale::dateLine() const
{
    return _absoluteTime && _absoluteDate ? 1 : -1;
}

int TimeScale::localTimeLine() const
{
    return _absoluteTime && _localTime ? lineCount() - 1 : -1;
}

bool TimeScale::getTickText(double value, double nextValue, int line, QString &text) const
{
    const double spacing = std::abs(nextValue - value);
    if (_absoluteTime)
        return absoluteText(timeAt(value - offset()), spacing, line, text);
    if (line != 0)
        return false;
    text = timeSpanText(value, spacing);
    return true;
}

bool TimeScale::absoluteText(Core::Time time, double spacing, int line, QString &text) const
{
    if (line < 0 || line >= lineCount())
        return false;

    const Core::TimeFields fields = time.fields();
    if (spacing >= Year) {
        text = line == 0 ? yearText(time) : QString();
    } else if (line == 0) {
        text = spacing >= Day ? dateText(fields) : clockText(fields, spacing);
    } else if (line == localTimeLine()) {
        text = localTimeText(time, spacing);
    } else {
        const bool isMidnight = floorModulo(time.usecs(), USecsPerDay) == 0;
        text = spacing < Day && isMidnight ? dateText(fields) : QString();
    }
    return true;
}

void TimeScale::chooseSpacing(double minimumPixels, double &major, double &minor) const
{
    constexpr double LeastMinorPixels = 4;
    const double distance = minimumPixels / scale();
    if (_absoluteTime && std::isfinite(distance) && distance > LongestInDays) {
        const double years = std::max(1.0, roundTickDistance(distance / Year));
        major = years * Year;
        minor = years == 1 ? Year / 4 : std::max(1.0, roundTickDistance(0.19 * years)) * Year;
    } else
        roundTimeDistance(distance, major, minor);
    if (minor * scale() < LeastMinorPixels)
        minor = major;
}

double TimeScale::labelExtent(double major) const
{
    if (isVertical())
        return Ruler::labelExtent(major);

    const QFontMetricsF metrics(font());
    double extent = 0;
    for (const double value : {lower(), upper()}) {
        for (int line = 0; line < lineCount(); ++line) {
            QString text;
            if (_absoluteTime)
                absoluteText(timeAt(value), major, line, text);
            else
                text = timeSpanText(value, major);
            extent = std::max(extent, metrics.horizontalAdvance(widestForm(text, metrics)));
        }
    }
    return extent;
}

double TimeScale::alignedOffset(double major) const
{
    if (!_absoluteTime)
        return 0;

    if (major >= Year) {
        const auto length = static_cast<int64_t>(major) * USecsPerSecond;
        const Core::Time beginning(2000, 1, 1);
        return static_cast<double>(floorModulo(_alignment.usecs() - beginning.usecs(), length)) /
               USecsPerSecond;
    }

    // Modulo whole days the offset stays small enough to be exact far below a microsecond.
    constexpr double MostDays = 1E8;
    const auto days = static_cast<int64_t>(qBound(1.0, std::round(major / Day), MostDays));
    return static_cast<double>(floorModulo(_alignment.usecs(), days * USecsPerDay)) /
           USecsPerSecond;
}

QVector<RulerLabel> TimeScale::labels(int line) const
{
    QVector<RulerLabel> result = Ruler::labels(line);
    if (line != dateLine() || majorSpacing() <= 0 || majorSpacing() >= Day)
        return result;

    RulerLabel label;
    label.text = dateText(timeAt(lower()).fields());
    if (!isVertical()) {
        // Behind the dates at midnights, which go before it where room is scarce.
        label.extent = QFontMetricsF(font()).horizontalAdvance(label.text);
        result.append(label);
        return result;
    }

    const double first = std::min(lower(), upper());
    const double last = std::max(lower(), upper());
    const QVector<double> ticks = tickValues(first, last, majorSpacing(), offset());
    if (result.isEmpty() && !ticks.isEmpty()) {
        // Below the lowest tick itself there is seldom room.
        const bool isLowest = ticks.size() == 1 || upper() < lower();
        const double tick = ticks[isLowest ? 0 : 1];
        label.extent = QFontMetricsF(font()).height();
        label.text = dateText(timeAt(tick).fields());
        label.position = valueToPixel(tick) + label.extent;
        result.append(label);
    }
    return result;
}

} // namespace Gui
} // namespace Tellarix
