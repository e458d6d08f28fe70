// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/datamodel/event.h>

#include <algorithm>

namespace Tellarix {
namespace DataModel {

namespace {

template <typename T>
T *preferred(const std::vector<Core::SmartPointer<T>> &solutions, const std::string &preferredID)
{
    if (solutions.empty())
        return nullptr;
    const auto named = std::find_if(solutions.begin(), solutions.end(), [&](const auto &solution) {
        return !preferredID.empty() && solution->publicID == preferredID;
    });
    if (named != solutions.end())
        return named->get();
    const auto manual = std::find_if(solutions.begin(), solutions.end(), [](const auto &solution) {
        return solution->evaluationMode == "manual";
    });
    return manual != solutions.end() ? manual->get() : solutions.front().get();
}

} // namespace

Event::~Event() = default;

Origin *Event::preferredOrigin() const
{
    return preferred(origins, preferredOriginID);
}

Magnitude *Event::preferredMagnitude() const
{
    return preferred(magnitudes, preferredMagnitudeID);
}

FocalMechanism *Event::preferredFocalMechanism() const
{
    return preferred(focalMechanisms, preferredFocalMechanismID);
}

std::string Event::description(const std::string &descriptionType) const
{
    for (const EventDescription &description : descriptions) {
        if (description.type == descriptionType)
            return description.text;
    }
    return std::string();
}

} // namespace DataModel
} // namespace Tellarix
