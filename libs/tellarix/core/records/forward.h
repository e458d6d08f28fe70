// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/baseobject.h>

// Names for headers that hand records and filters on without a look at them.

namespace Tellarix {

class NumericArray;
class Record;
class RecordSequence;
class StreamCodes;

using ArrayPtr = Core::SmartPointer<NumericArray>;
using ArrayCPtr = Core::SmartPointer<const NumericArray>;
using RecordPtr = Core::SmartPointer<Record>;
using RecordCPtr = Core::SmartPointer<const Record>;
using StreamCodesCPtr = Core::SmartPointer<const StreamCodes>;

namespace Math {
namespace Filtering {

template <typename T>
class InPlaceFilter;

} // namespace Filtering
} // namespace Math
} // namespace Tellarix
