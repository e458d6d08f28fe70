// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <string>

namespace Tellarix {
namespace IO {

/**
 * Reads a text in metres as km. The decimal point is moved before the number is made: a division
 * would round once more, and a depth would not come back as it was written.
 * @return false, leaving @p km alone, if the text is no number
 */
bool kmFromMetres(double &km, const std::string &text);

/** The text in metres that kmFromMetres() reads as these km. */
std::string metresFromKm(double km);

} // namespace IO
} // namespace Tellarix
