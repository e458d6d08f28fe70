// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QByteArray>
#include <QJsonValue>

#include <cmath>
#include <optional>
#include <string>

namespace Tellarix {
namespace IO {

// Fields of lists: what is unknown is empty in CSV, and null in JSON.

/** With as many digits as it takes to get the same number back. */
QByteArray numberText(const std::optional<double> &value);
/** A field of CSV (RFC 4180). */
QByteArray quotedIfNeeded(const std::string &text);

QJsonValue orNull(const std::string &text);

template <typename T>
QJsonValue orNull(const std::optional<T> &value)
{
    // There is no number in JSON for what is none.
    return value && std::isfinite(static_cast<double>(*value)) ? QJsonValue(*value) : QJsonValue();
}

} // namespace IO
} // namespace Tellarix
