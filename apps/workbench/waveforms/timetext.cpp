// SPDX-License-Identifier: LGPL-3.0-or-later

#include "timetext.h"

#include <tellarix/qt/records/timescale.h>

#include <QByteArray>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr auto DatePattern = R"((\d{4})[-/](\d{1,2})[-/](\d{1,2}))";
constexpr auto ClockPattern = R"((\d{1,2}):(\d{2})(?::(\d{2}(?:[.,]\d+)?))?)";
constexpr int MostDecimals = 6;

/** Hours, minutes and seconds from the three groups of a match that begin at @p group.
 *  @return seconds of the day; negative if there are none, or more than a day has */
double secondsOfDay(const QRegularExpressionMatch &match, int group)
{
    const int hour = match.captured(group).toInt();
    const int minute = match.captured(group + 1).toInt();
    const double second = match.captured(group + 2).replace(',', '.').toDouble();
    return hour < 24 && minute < 60 && second < 61 ? hour * 3600 + minute * 60 + second : -1;
}

int decimalsOf(double seconds)
{
    if (!(seconds > 0))
        return MostDecimals;
    return std::clamp(static_cast<int>(std::ceil(-std::log10(seconds))), 0, MostDecimals);
}

} // namespace

Core::Time timeInText(const QString &text, const Core::Time &day)
{
    static const QRegularExpression dated(
        QString("%1(?:\\s*[T\\s]\\s*%2)?").arg(DatePattern, ClockPattern));
    static const QRegularExpression clock(QString("^\\s*%1\\s*$").arg(ClockPattern));

    QRegularExpressionMatch match = dated.match(text);
    if (match.hasMatch()) {
        const QString date = QString("%1-%2-%3")
                                 .arg(match.captured(1))
                                 .arg(match.captured(2), 2, '0')
                                 .arg(match.captured(3), 2, '0');
        Core::Time time;
        const double seconds = match.captured(4).isEmpty() ? 0 : secondsOfDay(match, 4);
        if (seconds < 0 || !time.fromString(date.toStdString()))
            return Core::Time();
        return time + Core::TimeSpan(seconds);
    }
    match = clock.match(text);
    const double seconds = match.hasMatch() ? secondsOfDay(match, 1) : -1;
    if (seconds < 0 || !day.valid())
        return Core::Time();
    const Core::TimeFields fields = day.fields();
    return Core::Time(fields.year, fields.month, fields.day) + Core::TimeSpan(seconds);
}

QString timeText(const Core::Time &time)
{
    return timeText(time, 1);
}

QString timeText(const Core::Time &time, double seconds)
{
    const int decimals = decimalsOf(seconds);
    QByteArray format = "%Y-%m-%d %H:%M:%S";
    if (decimals > 0)
        format += ".%" + QByteArray::number(decimals) + "f";
    return QString::fromStdString(time.toString(format.constData()));
}

QString spanText(double length, double seconds)
{
    if (length < 60)
        return QString::number(length, 'f', decimalsOf(seconds)) + QChar(0x202f) + 's';
    const QString text = Gui::timeSpanText(length, seconds);
    return text.startsWith('+') ? text.mid(1) : text;
}

} // namespace Workbench
