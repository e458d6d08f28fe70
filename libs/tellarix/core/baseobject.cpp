// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/baseobject.h>

namespace Tellarix {
namespace Core {

// Stands here so that there is one virtual table and dynamic casts work across libraries.
BaseObject::~BaseObject() = default;

} // namespace Core
} // namespace Tellarix
