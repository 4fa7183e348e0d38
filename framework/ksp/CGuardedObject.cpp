#include <framework/ksp/CGuardedObject.h>

namespace ksp {

void CGuardedObject::leaveWatchers()
{
    if (Watcher::isMarked(m_watch)) {
        Watcher::at<const Watcher>(m_watch)->m_watch = 0;
        return;
    }
    auto* guard = Watcher::at<Watcher::Guard>(m_watch);
    guard->object = nullptr;
    Watcher::leave(guard);
}

void Watcher::watch(const CGuardedObject& object)
{
    if (object.m_watch == 0) {
        object.m_watch = marked(this);
        m_watch = marked(&object);
        return;
    }
    if (isMarked(object.m_watch)) {
        auto* guard = new Guard{&object, 2};
        at<const Watcher>(object.m_watch)->m_watch = reinterpret_cast<std::uintptr_t>(guard);
        object.m_watch = reinterpret_cast<std::uintptr_t>(guard);
    }
    m_watch = object.m_watch;
    ++at<Guard>(m_watch)->users;
}

void Watcher::leave()
{
    if (isMarked(m_watch))
        at<const CGuardedObject>(m_watch)->m_watch = 0;
    else
        leave(at<Guard>(m_watch));
}

} // namespace ksp
