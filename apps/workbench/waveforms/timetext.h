// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/time.h>

#include <QString>

namespace Workbench {

/**
 * The first time in a text: a date as 2024-01-05, one with a time of the day behind it, such as
 * stands in lists of events, or a time of the day alone.
 *
 * @param day  whose date counts for a time of the day alone
 * @return an invalid time if there is none
 */
Tellarix::Core::Time timeInText(const QString &text, const Tellarix::Core::Time &day);

/** A time as it can be typed again, to the second. */
QString timeText(const Tellarix::Core::Time &time);

/** A time with as many decimals as steps of @p seconds need, up to microseconds. */
QString timeText(const Tellarix::Core::Time &time, double seconds);

/** A length as "0.0125 s", "12.5 s", "1:05:00" or "2d 03:00", likewise. */
QString spanText(double length, double seconds);

} // namespace Workbench
