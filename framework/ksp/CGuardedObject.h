#pragma once

#include <framework/HostFramework_export.h>

#include <cstddef>
#include <cstdint>
#include <utility>

namespace ksp {

class Watcher;

/// Base of objects that are watched without being owned: a GuardedPtr to such an object reads null once this
/// base of it is destroyed. That is after the destructors of the derived classes: while these run, watchers
/// still get the object, of which parts are gone already. A copy is an object of its own, with watchers of
/// its own. Being watched takes a pointer, and an allocation from the second watcher on.
class HOSTFRAMEWORK_EXPORT CGuardedObject
{
public:
    CGuardedObject() = default;
    CGuardedObject(const CGuardedObject&) {}
    CGuardedObject& operator=(const CGuardedObject&) { return *this; }
    virtual ~CGuardedObject()
    {
        if (m_watch != 0) leaveWatchers();
    }

private:
    friend class Watcher;
    void leaveWatchers();

    mutable std::uintptr_t m_watch = 0; // see Watcher
};

/// What all GuardedPtr have in common. The only watcher of an object and the object know each other; where
/// there are more, they share a guard, which goes with the last of them.
class HOSTFRAMEWORK_EXPORT Watcher
{
protected:
    Watcher() = default;
    explicit Watcher(const CGuardedObject* object)
    {
        if (object) watch(*object);
    }
    Watcher(const Watcher& other)
        : Watcher(other.watched())
    {
    }
    Watcher(Watcher&& other) noexcept { takeOver(other); }
    Watcher& operator=(Watcher&& other) noexcept
    {
        if (this == &other) return *this;
        if (m_watch != 0) leave();
        takeOver(other);
        return *this;
    }
    ~Watcher()
    {
        if (m_watch != 0) leave();
    }

    /// Null once it is gone.
    const CGuardedObject* watched() const
    {
        if (isMarked(m_watch)) return at<const CGuardedObject>(m_watch);
        return m_watch != 0 ? at<Guard>(m_watch)->object : nullptr;
    }

private:
    friend class CGuardedObject;
    struct Guard
    {
        const CGuardedObject* object;
        std::size_t users; // the object is one of them
    };

    // Both ends keep an address in one word: the mark, an odd one, says that it is the other end's, else it
    // is the guard's; 0 is none.
    static constexpr std::uintptr_t mark = 1;
    static bool isMarked(std::uintptr_t word) { return (word & mark) != 0; }
    template <typename T>
    static T* at(std::uintptr_t word)
    {
        return reinterpret_cast<T*>(word & ~mark);
    }
    template <typename T>
    static std::uintptr_t marked(const T* end)
    {
        return reinterpret_cast<std::uintptr_t>(end) | mark;
    }

    void watch(const CGuardedObject& object);
    void takeOver(Watcher& other) noexcept
    {
        m_watch = std::exchange(other.m_watch, 0);
        if (isMarked(m_watch)) at<const CGuardedObject>(m_watch)->m_watch = marked(this);
    }
    void leave();
    static void leave(Guard* guard)
    {
        if (--guard->users == 0) delete guard;
    }

    mutable std::uintptr_t m_watch = 0; // changes with the other watchers
};

/// Pointer to an object derived from CGuardedObject (not virtually); null once the object is gone. Not
/// thread-safe: an object and its watchers belong to one thread at a time.
template <typename T>
class GuardedPtr : private Watcher
{
public:
    GuardedPtr() = default;
    GuardedPtr(T* object)
        : Watcher(object)
    {
    }
    GuardedPtr(const GuardedPtr& other) = default;
    GuardedPtr(GuardedPtr&& other) noexcept = default;
    GuardedPtr& operator=(GuardedPtr other) noexcept
    {
        Watcher::operator=(std::move(other));
        return *this;
    }

    T* get() const { return const_cast<T*>(static_cast<const T*>(watched())); }
    T* operator->() const { return get(); }
    explicit operator bool() const { return watched() != nullptr; }
};

} // namespace ksp
