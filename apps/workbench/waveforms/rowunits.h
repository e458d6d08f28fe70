// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QString>

#include <optional>
#include <string>

namespace Tellarix {
class RecordSequence;
namespace DataModel {
class Inventory;
} // namespace DataModel
namespace Math {
namespace Filtering {
class FilterDefinition;
} // namespace Filtering
} // namespace Math
} // namespace Tellarix

namespace Workbench {

/** What samples stand for. */
struct SampleUnit
{
    double scale{1}; /**< value of a sample of 1 */
    QString text;    /**< empty for counts */
};

/** Text of a unit as files of stations name it, "m/s²" for "M/S**2"; an unknown one stays. */
QString unitText(const std::string &name);

/**
 * The unit that one gain gives to all samples of a sequence; none, if the gain of a record isn't
 * known, or isn't above 0, or differs from that of another.
 */
std::optional<SampleUnit> unitOf(const Tellarix::RecordSequence &records,
                                 const Tellarix::DataModel::Inventory &inventory);

/** The unit of samples behind a filter, which may integrate or differentiate; none where it is a
 *  ratio. */
std::optional<SampleUnit> unitBehind(const Tellarix::Math::Filtering::FilterDefinition &filter,
                                     const SampleUnit &unit);

} // namespace Workbench
