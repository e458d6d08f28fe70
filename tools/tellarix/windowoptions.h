// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/timewindow.h>

#include <QString>

class QCommandLineParser;

namespace Tellarix {
namespace Tool {

const auto FromOption = QStringLiteral("from");
const auto ToOption = QStringLiteral("to");

/** Reads --from and --to; false with the reason in @p error if they are no window. */
bool readWindow(const QCommandLineParser &parser, Core::TimeWindow *window, QString *error);

} // namespace Tool
} // namespace Tellarix
