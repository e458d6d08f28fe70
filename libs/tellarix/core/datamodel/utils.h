// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>
#include <tellarix/core/datamodel/inventoryobject.h>
#include <tellarix/core/datamodel/waveformstreamid.h>

#include <string>

namespace Tellarix {
namespace DataModel {

class Stream;

/** Codes of a stream and of what it belongs to; codes of missing parents, and all codes without a
 *  stream, are empty. */
TELLARIX_CORE_API WaveformStreamID waveformStreamID(const Stream *stream);

/**
 * Id of a stream as records carry it, "NET.STA.LOC.CHA".
 *
 * @param emptyCode      stands in for an empty location code
 * @param keepEmptyCode  keeps the place of a location code that is still empty, as in
 *                       "NET.STA..CHA"; otherwise it is left out
 * @return an empty text without a stream
 */
TELLARIX_CORE_API std::string id(const Stream *stream, const std::string &emptyCode = std::string(),
                                 bool keepEmptyCode = true);

/** Where the sensor of a stream stands: its sensor location where that is known, else its station.
 *  The elevation of a place that has none is that of the station. */
TELLARIX_CORE_API Coordinates coordinates(const Stream *stream);

} // namespace DataModel
} // namespace Tellarix
