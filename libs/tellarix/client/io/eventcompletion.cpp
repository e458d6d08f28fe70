// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/eventcompletion_p.h>

#include <cstdio>

namespace Tellarix {
namespace IO {

namespace {

/** The same for the same origin, so that a second import finds the event again. */
std::string idFrom(const DataModel::Event &event)
{
    const DataModel::Origin *origin = event.preferredOrigin();
    if (!origin)
        return "event/" + event.region();
    char place[64];
    std::snprintf(place, sizeof(place), "/%.4f/%.4f", origin->latitude.value(),
                  origin->longitude.value());
    return "event/" + origin->time.value().iso() + place;
}

template <typename T>
void nameSolutions(const std::vector<Core::SmartPointer<T>> &solutions, const std::string &prefix)
{
    for (size_t i = 0; i < solutions.size(); ++i) {
        if (solutions[i]->publicID.empty())
            solutions[i]->publicID = prefix + std::to_string(i + 1);
    }
}

template <typename T>
void namePreferred(const T *solution, std::string *id)
{
    *id = solution ? solution->publicID : std::string();
}

} // namespace

bool completeEvent(DataModel::Event &event)
{
    const bool named = !event.publicID.empty();
    if (!named)
        event.publicID = idFrom(event);
    nameSolutions(event.origins, event.publicID + "/origin/");
    nameSolutions(event.magnitudes, event.publicID + "/magnitude/");
    nameSolutions(event.focalMechanisms, event.publicID + "/mechanism/");
    namePreferred(event.preferredOrigin(), &event.preferredOriginID);
    namePreferred(event.preferredMagnitude(), &event.preferredMagnitudeID);
    namePreferred(event.preferredFocalMechanism(), &event.preferredFocalMechanismID);
    return named;
}

} // namespace IO
} // namespace Tellarix
