// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/streamcodes.h>
#include <tellarix/core/timewindow.h>

#include <QString>

#include <vector>

class QCommandLineParser;

namespace Tellarix {
namespace Tool {

const auto FromOption = QStringLiteral("from");
const auto ToOption = QStringLiteral("to");
const auto StreamsOption = QStringLiteral("streams");

/** Whether what lies at the end of a window is in it: then it may be a single moment. */
enum class WindowEnd
{
    Excluded,
    Included
};

/** Reads --from and --to, times or "-6h" before now; false with the reason in @p error if they are
 * no window. */
bool readWindow(const QCommandLineParser &parser, WindowEnd end, Core::TimeWindow *window,
                QString *error);

/** Reads --streams, patterns "NET.STA.LOC.CHA" with commas between them; none without the option.
 *  False with the reason in @p error if one has not these parts. */
bool readStreams(const QCommandLineParser &parser, std::vector<StreamCodesCPtr> *streams,
                 QString *error);

} // namespace Tool
} // namespace Tellarix
