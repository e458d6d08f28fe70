// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>

namespace Tellarix {
namespace Core {

/**
 * Base of all objects that are held by an intrusive, thread-safe reference count.
 *
 * An object starts with a count of zero; the first SmartPointer that takes it owns it. Copying an
 * object does not copy its count.
 */
class TELLARIX_CORE_API BaseObject
    : public boost::intrusive_ref_counter<BaseObject, boost::thread_safe_counter>
{
public:
    BaseObject() = default;
    BaseObject(const BaseObject &) = default;
    BaseObject &operator=(const BaseObject &) = default;
    virtual ~BaseObject();
};

/** Counted pointer to an object derived from BaseObject. */
template <typename T>
using SmartPointer = boost::intrusive_ptr<T>;

} // namespace Core
} // namespace Tellarix
