#pragma once

#include <framework/HostFramework_export.h>

#include <memory>

namespace ksp {

/// Base of objects that are watched without being owned and that are no QObject: a GuardedPtr to such an
/// object reads null once this base of it is destroyed. That is after the destructors of the derived classes:
/// while these run, watchers still get the object, of which parts are gone already. A copy is an object of
/// its own, with watchers of its own.
class HOSTFRAMEWORK_EXPORT CGuardedObject
{
public:
    CGuardedObject() = default;
    CGuardedObject(const CGuardedObject&) {}
    CGuardedObject& operator=(const CGuardedObject&) { return *this; }
    virtual ~CGuardedObject() = default;

    /// Expires when this base of the object is destroyed.
    std::weak_ptr<const void> guard() const { return m_guard; }

private:
    std::shared_ptr<const void> m_guard = std::make_shared<char>();
};

/// Pointer to an object derived from CGuardedObject; null once the object is gone. Not thread-safe.
template <typename T>
class GuardedPtr
{
public:
    GuardedPtr() = default;
    GuardedPtr(T* object)
        : m_object(object)
        , m_guard(object ? object->guard() : std::weak_ptr<const void>())
    {
    }

    T* get() const { return m_guard.expired() ? nullptr : m_object; }
    T* operator->() const { return get(); }
    explicit operator bool() const { return get() != nullptr; }

private:
    T* m_object = nullptr;
    std::weak_ptr<const void> m_guard;
};

} // namespace ksp
