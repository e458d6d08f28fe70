// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/eventwriter.h>
#include <tellarix/core/datamodel/event.h>

#include <QBuffer>
#include <QByteArray>
#include <QRandomGenerator>
#include <QVector>

/** Whole events out of nothing, and what tells two of them apart. */
namespace EventTesting {

using namespace Tellarix::DataModel;

inline std::optional<double> randomNumber(QRandomGenerator &random, double scale)
{
    return random.bounded(4) == 0 ? std::nullopt
                                  : std::optional<double>((random.generateDouble() - 0.5) * scale);
}

inline std::optional<int> randomCount(QRandomGenerator &random)
{
    return random.bounded(3) == 0 ? std::nullopt
                                  : std::optional<int>(static_cast<int>(random.bounded(500)));
}

inline std::string randomText(QRandomGenerator &random)
{
    static const char *const texts[] = {
        "", "Baja", "O'Higgins; 50 %", "\"L'Aquila\", <Italy> & so on", "日本海溝", "back\\slash"};
    return texts[random.bounded(6)];
}

inline RealQuantity randomQuantity(QRandomGenerator &random, double scale)
{
    Uncertainty uncertainty;
    uncertainty.symmetric = randomNumber(random, 1);
    uncertainty.lower = randomNumber(random, 1);
    uncertainty.upper = randomNumber(random, 1);
    uncertainty.confidenceLevel = randomNumber(random, 100);
    return {(random.generateDouble() - 0.5) * scale, uncertainty};
}

/** To the microsecond, from 1900 to 2040. */
inline Tellarix::Core::Time randomTime(QRandomGenerator &random)
{
    const Tellarix::Core::Time start(1900, 1, 1);
    return start + Tellarix::Core::TimeSpan::FromUSecs(
                       static_cast<int64_t>(random.generateDouble() * 4.4E15));
}

inline CreationInfo randomCreationInfo(QRandomGenerator &random)
{
    CreationInfo info;
    info.agencyID = randomText(random);
    info.author = randomText(random);
    if (random.bounded(2))
        info.creationTime = randomTime(random);
    if (random.bounded(2))
        info.modificationTime = randomTime(random);
    info.version = randomText(random);
    return info;
}

template <typename Solution>
void randomEvaluation(Solution &solution, QRandomGenerator &random)
{
    static const char *const modes[] = {"", "manual", "automatic"};
    solution.evaluationMode = modes[random.bounded(3)];
    solution.evaluationStatus = random.bounded(2) ? "reviewed" : "";
    solution.creationInfo = randomCreationInfo(random);
}

inline OriginPtr randomOrigin(QRandomGenerator &random, const std::string &id)
{
    const OriginPtr origin(new Origin);
    origin->publicID = id;
    origin->time = TimeQuantity(randomTime(random), randomQuantity(random, 1).uncertainty());
    origin->latitude = randomQuantity(random, 180);
    origin->longitude = randomQuantity(random, 360);
    if (random.bounded(4))
        origin->depth = randomQuantity(random, 1400);
    origin->quality = {randomCount(random),       randomCount(random),
                       randomCount(random),       randomNumber(random, 2),
                       randomNumber(random, 360), randomNumber(random, 180),
                       randomNumber(random, 180)};
    origin->methodID = randomText(random);
    origin->earthModelID = randomText(random);
    randomEvaluation(*origin, random);
    return origin;
}

inline MagnitudePtr randomMagnitude(QRandomGenerator &random, const std::string &id,
                                    const std::string &originID)
{
    const MagnitudePtr magnitude(new Magnitude);
    magnitude->publicID = id;
    magnitude->magnitude = randomQuantity(random, 16);
    magnitude->type = random.bounded(3) ? "Mw" : "";
    magnitude->originID = originID;
    magnitude->methodID = randomText(random);
    magnitude->stationCount = randomCount(random);
    magnitude->azimuthalGap = randomNumber(random, 360);
    randomEvaluation(*magnitude, random);
    return magnitude;
}

inline FocalMechanismPtr randomMechanism(QRandomGenerator &random, const std::string &id)
{
    const FocalMechanismPtr mechanism(new FocalMechanism);
    mechanism->publicID = id;
    for (auto *plane : {&mechanism->nodalPlane1, &mechanism->nodalPlane2}) {
        if (random.bounded(4))
            *plane = NodalPlane(random.bounded(360.0), random.bounded(90.0), random.bounded(180.0));
    }
    if (mechanism->nodalPlane1 || mechanism->nodalPlane2)
        mechanism->preferredPlane = 1 + static_cast<int>(random.bounded(2));
    mechanism->triggeringOriginID = randomText(random);
    mechanism->azimuthalGap = randomNumber(random, 360);
    mechanism->stationPolarityCount = randomCount(random);
    mechanism->misfit = randomNumber(random, 1);
    randomEvaluation(*mechanism, random);
    return mechanism;
}

/** An event with up to three solutions of each kind, of which one is preferred. */
inline EventPtr randomEvent(QRandomGenerator &random, const std::string &id)
{
    const EventPtr event(new Event);
    event->publicID = id;
    event->type = random.bounded(2) ? "earthquake" : "";
    event->typeCertainty = random.bounded(2) ? "suspected" : "";
    event->creationInfo = randomCreationInfo(random);
    event->descriptions.push_back({"near (" + randomText(random) + ")", "region name"});
    if (random.bounded(2))
        event->descriptions.push_back({"the great one", "earthquake name"});
    const auto named = [&](const char *kind, int i) { return id + '/' + kind + std::to_string(i); };
    for (int i = 1 + static_cast<int>(random.bounded(3)); i > 0; --i)
        event->origins.push_back(randomOrigin(random, named("origin", i)));
    for (int i = static_cast<int>(random.bounded(4)); i > 0; --i)
        event->magnitudes.push_back(
            randomMagnitude(random, named("magnitude", i), event->origins.front()->publicID));
    for (int i = static_cast<int>(random.bounded(3)); i > 0; --i)
        event->focalMechanisms.push_back(randomMechanism(random, named("mechanism", i)));
    event->preferredOriginID = event->origins.back()->publicID;
    if (!event->magnitudes.empty())
        event->preferredMagnitudeID = event->magnitudes.back()->publicID;
    if (!event->focalMechanisms.empty())
        event->preferredFocalMechanismID = event->focalMechanisms.back()->publicID;
    return event;
}

/** A file of @p events, empty if it can't be written. */
inline QByteArray write(const QString &form, const QVector<EventPtr> &events)
{
    QByteArray text;
    QBuffer buffer(&text);
    buffer.open(QIODevice::WriteOnly);
    const auto writer = Tellarix::IO::EventWriter::Create(form, buffer);
    bool ok = writer->begin();
    for (const EventPtr &event : events)
        ok = ok && writer->write(*event);
    return ok && writer->end() ? text : QByteArray();
}

} // namespace EventTesting
