// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>

#include <string>

namespace Tellarix {
namespace Core {

/** Version of the framework. */
class TELLARIX_CORE_API FrameworkVersion
{
public:
    constexpr FrameworkVersion(int major, int minor, int patch)
        : _major(major), _minor(minor), _patch(patch)
    {}

    /** "major.minor.patch" */
    std::string toString() const;

private:
    int _major;
    int _minor;
    int _patch;
};

/** The version of the framework that the program runs with. */
extern TELLARIX_CORE_API const FrameworkVersion CurrentVersion;

} // namespace Core
} // namespace Tellarix
