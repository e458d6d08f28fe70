// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/time.h>

#include <string>

namespace Tellarix {
namespace DataModel {

/** Who made a solution, and when; what is unknown is empty. */
struct CreationInfo
{
    std::string agencyID;
    std::string author;
    Core::Time creationTime;
    Core::Time modificationTime;
    std::string version;

    bool operator==(const CreationInfo &other) const
    {
        return agencyID == other.agencyID && author == other.author &&
               creationTime == other.creationTime && modificationTime == other.modificationTime &&
               version == other.version;
    }
};

} // namespace DataModel
} // namespace Tellarix
