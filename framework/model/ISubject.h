#pragma once

#include <framework/HostFramework_export.h>
#include <framework/model/Ties.h>

#include <vector>

class IObserver;
struct Observation;

/// Something that others observe. Observers are not owned; either side may be destroyed first. Observers may
/// be added and removed while the subject notifies: removed ones are not told any more, added ones are told
/// from the next time on.
class HOSTFRAMEWORK_EXPORT ISubject
{
public:
    ISubject() = default;
    ISubject(const ISubject&) = delete;
    ISubject& operator=(const ISubject&) = delete;
    virtual ~ISubject();

    /// Null and observers that are there already are ignored.
    void addObserver(IObserver* observer);
    void removeObserver(IObserver* observer);
    /// Calls updateData(this) of every observer, in the order in which they were added. A notification that
    /// an observer causes by what it does runs at once, nested. The subject may be destroyed meanwhile.
    void notifyObservers();

    /// The observers, in the order in which they were added.
    std::vector<IObserver*> getObservers() const;

private:
    friend struct Observation;
    struct Notification;
    Ties<IObserver> m_observers;
};
