#pragma once

#include <framework/HostFramework_export.h>

#include <cstddef>
#include <utility>

namespace ksp {

template <typename T>
class GuardedPtr;

/// Base of objects that are watched without being owned: a GuardedPtr to such an object reads null once this
/// base of it is destroyed. That is after the destructors of the derived classes: while these run, watchers
/// still get the object, of which parts are gone already. A copy is an object of its own, with watchers of
/// its own. Being watched costs an allocation at the first watcher, not being watched a pointer.
class HOSTFRAMEWORK_EXPORT CGuardedObject
{
public:
    CGuardedObject() = default;
    CGuardedObject(const CGuardedObject&) {}
    CGuardedObject& operator=(const CGuardedObject&) { return *this; }
    virtual ~CGuardedObject()
    {
        if (!m_guard) return;
        m_guard->object = nullptr;
        leave(m_guard);
    }

private:
    template <typename T>
    friend class GuardedPtr;
    /// What the object and its watchers share; goes with the last of them.
    struct Guard
    {
        const CGuardedObject* object;
        std::size_t users;
    };

    /// A further user of the object's guard.
    static Guard* join(const CGuardedObject* object)
    {
        if (!object) return nullptr;
        if (!object->m_guard) object->m_guard = new Guard{object, 1};
        return join(object->m_guard);
    }
    static Guard* join(Guard* guard)
    {
        if (guard) ++guard->users;
        return guard;
    }
    static void leave(Guard* guard)
    {
        if (guard && --guard->users == 0) delete guard;
    }

    mutable Guard* m_guard = nullptr; // none before the first watcher
};

/// Pointer to an object derived from CGuardedObject (not virtually); null once the object is gone. Not
/// thread-safe: an object and its watchers belong to one thread at a time.
template <typename T>
class GuardedPtr
{
public:
    GuardedPtr() = default;
    GuardedPtr(T* object)
        : m_guard(CGuardedObject::join(object))
    {
    }
    GuardedPtr(const GuardedPtr& other)
        : m_guard(CGuardedObject::join(other.m_guard))
    {
    }
    GuardedPtr(GuardedPtr&& other) noexcept
        : m_guard(std::exchange(other.m_guard, nullptr))
    {
    }
    GuardedPtr& operator=(GuardedPtr other) noexcept
    {
        std::swap(m_guard, other.m_guard);
        return *this;
    }
    ~GuardedPtr() { CGuardedObject::leave(m_guard); }

    T* get() const { return m_guard ? const_cast<T*>(static_cast<const T*>(m_guard->object)) : nullptr; }
    T* operator->() const { return get(); }
    explicit operator bool() const { return m_guard && m_guard->object; }

private:
    CGuardedObject::Guard* m_guard = nullptr;
};

} // namespace ksp
