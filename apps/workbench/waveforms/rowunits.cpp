// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowunits.h"

#include <tellarix/core/datamodel/inventory.h>
#include <tellarix/core/datamodel/stream.h>
#include <tellarix/core/math/filterdefinition.h>
#include <tellarix/core/records/record.h>
#include <tellarix/core/records/recordsequence.h>

#include <QStringList>

#include <algorithm>
#include <cstdlib>
#include <iterator>

using namespace Tellarix;
using Math::Filtering::FilterOutput;

namespace Workbench {

namespace {

struct UnitName
{
    const char *name; /**< in lower case */
    const char *text;
};

constexpr UnitName UnitNames[] = {
    {"m", "m"},        {"m/s", "m/s"},       {"m/s**2", "m/s²"},   {"m/s^2", "m/s²"},
    {"m/s/s", "m/s²"}, {"m/s2", "m/s²"},     {"m/(s**2)", "m/s²"}, {"nm", "nm"},
    {"nm/s", "nm/s"},  {"nm/s**2", "nm/s²"}, {"mm", "mm"},         {"mm/s", "mm/s"},
    {"pa", "Pa"},      {"hpa", "hPa"},       {"kpa", "kPa"},       {"v", "V"},
    {"rad", "rad"},    {"rad/s", "rad/s"},   {"t", "T"},           {"nt", "nT"},
    {"c", "°C"},       {"degc", "°C"},       {"celsius", "°C"},    {"a", "A"},
};

/** Each is the derivative of the one before it. */
const QStringList Derivatives{"m·s", "m", "m/s", "m/s²", "m/s³"};

QString derivative(const QString &unit, int times)
{
    // As in "nm/s".
    const bool hasPrefix = Derivatives.contains(unit.mid(1));
    const int index = Derivatives.indexOf(hasPrefix ? unit.mid(1) : unit);
    if (index >= 0 && index + times >= 0 && index + times < Derivatives.size())
        return (hasPrefix ? unit.left(1) : QString()) + Derivatives[index + times];
    const QString seconds = std::abs(times) == 1 ? "s" : QString("s^%1").arg(std::abs(times));
    return unit + (times > 0 ? "/" : "·") + seconds;
}

bool hasGain(const DataModel::Stream *stream)
{
    return stream && stream->gain() > 0 && !stream->gainUnit().empty();
}

} // namespace

QString unitText(const std::string &name)
{
    const QString text = QString::fromStdString(name);
    const QString lower = text.toLower().remove(' ');
    const auto known = std::find_if(std::begin(UnitNames), std::end(UnitNames),
                                    [&](const UnitName &unit) { return lower == unit.name; });
    return known == std::end(UnitNames) ? text : QString::fromUtf8(known->text);
}

std::optional<SampleUnit> unitOf(const RecordSequence &records,
                                 const DataModel::Inventory &inventory)
{
    if (records.isEmpty())
        return std::nullopt;
    const std::string &id = records.front()->streamID();
    const auto epochs = inventory.findStreams(id, records.timeWindow());
    const DataModel::Stream *first = epochs.empty() ? nullptr : epochs.front();
    if (!hasGain(first))
        return std::nullopt;
    const auto isLikeFirst = [&](const DataModel::Stream *stream) {
        return stream && stream->gain() == first->gain() && stream->gainUnit() == first->gainUnit();
    };
    // Where epochs differ, there may be no records of the others.
    const bool isSame = std::all_of(epochs.begin(), epochs.end(), isLikeFirst) ||
                        std::all_of(records.begin(), records.end(), [&](const RecordCPtr &record) {
                            return isLikeFirst(inventory.findStream(id, record->startTime()));
                        });
    if (!isSame)
        return std::nullopt;
    return SampleUnit{1 / first->gain(), unitText(first->gainUnit())};
}

std::optional<SampleUnit> unitBehind(const Math::Filtering::FilterDefinition &filter,
                                     const SampleUnit &unit)
{
    int derivatives = 0;
    for (const Math::Filtering::FilterStage &stage : filter.stages()) {
        const FilterOutput output = stage.filter->output;
        if (output == FilterOutput::NoUnit)
            return std::nullopt;
        derivatives += output == FilterOutput::Derivative ? 1 : 0;
        derivatives -= output == FilterOutput::Integral ? 1 : 0;
    }
    if (derivatives == 0)
        return unit;
    return SampleUnit{unit.scale, derivative(unit.text, derivatives)};
}

} // namespace Workbench
