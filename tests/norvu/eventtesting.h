// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/eventarchive.h>

#include <QTemporaryDir>
#include <QtTest>

/** What the tests of the event list share. */
namespace EventTesting {

using namespace Tellarix;

/** What an event of a test has. */
struct Draft
{
    std::string id{};
    std::string time{"2024-01-05 10:11:12"};
    double latitude{10};
    double longitude{20};
    std::optional<double> depth{30.0};
    double magnitude{4};
    std::string type{"earthquake"};
    std::string region{"Here"};
    std::string status{};
    std::string mode{"automatic"};
    std::optional<int> phases{12};
    std::optional<DataModel::NodalPlane> plane{};
};

/** Events with magnitudes 0, 1, 2, ... one minute apart. */
inline std::vector<Draft> drafts(int count)
{
    std::vector<Draft> result(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
        Draft &draft = result[static_cast<size_t>(i)];
        draft.id = "e" + std::to_string(i);
        draft.magnitude = i;
        draft.time = "2024-01-05 10:" + std::to_string(10 + i) + ":00";
    }
    return result;
}

inline DataModel::EventPtr makeEvent(const Draft &draft)
{
    const DataModel::EventPtr event(new DataModel::Event);
    event->publicID = draft.id;
    event->type = draft.type;
    if (!draft.region.empty())
        event->descriptions = {{draft.region, "region name"}};
    const DataModel::OriginPtr origin(new DataModel::Origin);
    event->preferredOriginID = origin->publicID = draft.id + "/o";
    origin->time = Core::Time::FromString(draft.time);
    origin->latitude = draft.latitude;
    origin->longitude = draft.longitude;
    if (draft.depth)
        origin->depth = *draft.depth;
    origin->quality.usedPhaseCount = draft.phases;
    origin->evaluationStatus = draft.status;
    origin->evaluationMode = draft.mode;
    event->origins = {origin};
    const DataModel::MagnitudePtr magnitude(new DataModel::Magnitude);
    event->preferredMagnitudeID = magnitude->publicID = draft.id + "/m";
    magnitude->magnitude = draft.magnitude;
    magnitude->type = "Mw";
    event->magnitudes = {magnitude};
    if (draft.plane) {
        const DataModel::FocalMechanismPtr mechanism(new DataModel::FocalMechanism);
        event->preferredFocalMechanismID = mechanism->publicID = draft.id + "/f";
        mechanism->nodalPlane1 = draft.plane;
        event->focalMechanisms = {mechanism};
    }
    return event;
}

/** A database of its own with some events. */
class Catalogue
{
public:
    explicit Catalogue(const std::vector<Draft> &drafts)
        : database(IO::DatabaseInterface::Open("sqlite:///" + _folder.path() + "/events.db"))
    {
        IO::EventArchive::createSchema(*database);
        IO::EventArchive archive(database);
        for (const Draft &draft : drafts)
            archive.write(*makeEvent(draft));
    }

    void execute(const char *statement)
    {
        QVERIFY2(database->execute(statement), qPrintable(database->lastError()));
    }

private:
    QTemporaryDir _folder;

public:
    IO::DatabaseInterfacePtr database;
};

} // namespace EventTesting
