// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace Tellarix {
namespace Core {
namespace Generic {

/**
 * A factory by which a plug-in offers an implementation of the interface @p T under a service name.
 *
 * Each factory object stands in the pool of its interface for as long as it lives. Factories are
 * static objects of the plug-in as a rule; nothing here is guarded against concurrent calls.
 */
template <typename T>
class TELLARIX_CORE_API InterfaceFactoryInterface
{
public:
    using FactoryPool = std::vector<InterfaceFactoryInterface<T> *>;
    using ServiceNames = std::vector<std::string>;

    /** @param serviceName  null stands for an empty name */
    explicit InterfaceFactoryInterface(const char *serviceName)
        : _serviceName(serviceName ? serviceName : "")
    {
        RegisterFactory(this);
    }
    virtual ~InterfaceFactoryInterface() { UnregisterFactory(this); }

    InterfaceFactoryInterface(const InterfaceFactoryInterface &) = delete;
    InterfaceFactoryInterface &operator=(const InterfaceFactoryInterface &) = delete;

    const std::string &serviceName() const { return _serviceName; }

    /** A new object made by the factory of that name, owned by the caller; null if there is none.
     */
    static T *Create(const char *serviceName)
    {
        InterfaceFactoryInterface *factory = Find(serviceName);
        return factory ? factory->create() : nullptr;
    }
    static T *Create(const std::string &serviceName) { return Create(serviceName.c_str()); }

    /** The first factory of that name, or null; null for a null name. */
    static InterfaceFactoryInterface *Find(const char *serviceName)
    {
        if (!serviceName)
            return nullptr;
        const FactoryPool &pool = Pool();
        const auto found = std::find_if(pool.begin(), pool.end(), [&](const auto *factory) {
            return factory->serviceName() == serviceName;
        });
        return found == pool.end() ? nullptr : *found;
    }

    /** The names of all registered factories in order of registration; owned by the caller. */
    static std::unique_ptr<ServiceNames> Services()
    {
        auto names = std::make_unique<ServiceNames>();
        for (const InterfaceFactoryInterface *factory : Pool())
            names->push_back(factory->serviceName());
        return names;
    }

    static unsigned int ServiceCount() { return static_cast<unsigned int>(Pool().size()); }

    /** Adds a factory to the pool; false if it is null or already there. */
    static bool RegisterFactory(InterfaceFactoryInterface *factory)
    {
        FactoryPool &pool = Pool();
        if (!factory || std::find(pool.begin(), pool.end(), factory) != pool.end())
            return false;
        pool.push_back(factory);
        return true;
    }

    /** Removes a factory from the pool; false if it is not there. */
    static bool UnregisterFactory(InterfaceFactoryInterface *factory)
    {
        FactoryPool &pool = Pool();
        const auto found = std::find(pool.begin(), pool.end(), factory);
        if (found == pool.end())
            return false;
        pool.erase(found);
        return true;
    }

    /** The factories of this interface, built at first use. */
    static FactoryPool &Pool();

protected:
    virtual T *create() const = 0;

private:
    std::string _serviceName;
};

/** The factory of one implementation: makes each object with `new Implementation`. */
template <typename T, typename Implementation>
class InterfaceFactory : public InterfaceFactoryInterface<T>
{
public:
    using InterfaceFactoryInterface<T>::InterfaceFactoryInterface;

protected:
    T *create() const override { return new Implementation; }
};

} // namespace Generic
} // namespace Core
} // namespace Tellarix

/**
 * Announces behind an interface, at global scope, that a library holds its pool and factory
 * interface: a plug-in then takes them from there. @p API is the library's export macro.
 */
#define TELLARIX_DECLARE_INTERFACE_POOL(API, INTERFACE)                                            \
    namespace Tellarix {                                                                           \
    namespace Core {                                                                               \
    namespace Generic {                                                                            \
    template <>                                                                                    \
    API InterfaceFactoryInterface<INTERFACE>::FactoryPool &                                        \
    InterfaceFactoryInterface<INTERFACE>::Pool();                                                  \
    extern template class InterfaceFactoryInterface<INTERFACE>;                                    \
    }                                                                                              \
    }                                                                                              \
    }

/**
 * Defines the pool and the factory interface of an interface. It stands in exactly one source, at
 * global scope, so that host and plug-ins share one pool. @p API is the library's export macro.
 */
#define TELLARIX_DEFINE_INTERFACE_POOL(API, INTERFACE)                                             \
    namespace Tellarix {                                                                           \
    namespace Core {                                                                               \
    namespace Generic {                                                                            \
    template <>                                                                                    \
    API InterfaceFactoryInterface<INTERFACE>::FactoryPool &                                        \
    InterfaceFactoryInterface<INTERFACE>::Pool()                                                   \
    {                                                                                              \
        static FactoryPool pool;                                                                   \
        return pool;                                                                               \
    }                                                                                              \
    template class InterfaceFactoryInterface<INTERFACE>;                                           \
    }                                                                                              \
    }                                                                                              \
    }
