// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/streamsummary.h>

#include <QString>

#include <vector>

namespace Tellarix {
namespace Tool {

/** A JSON array with one object per stream; values of text streams are null. */
QString jsonText(const std::vector<IO::StreamSummary> &streams);
/** A table with aligned columns and a header line; "no records" without streams. */
QString tableText(const std::vector<IO::StreamSummary> &streams);

} // namespace Tool
} // namespace Tellarix
