#pragma once

#include <framework/HostFramework_export.h>
#include <framework/model/Ties.h>

#include <vector>

class ISubject;
struct Observation;

/// Is told when a subject that it observes has changed. Leaves its subjects when it is destroyed.
class HOSTFRAMEWORK_EXPORT IObserver
{
public:
    IObserver() = default;
    IObserver(const IObserver&) = delete;
    IObserver& operator=(const IObserver&) = delete;
    virtual ~IObserver();

    /// The subject has changed.
    virtual void updateData(ISubject* subject) = 0;

    /// What this observer observes, in the order in which it was added.
    std::vector<ISubject*> getSubjects() const;

private:
    friend class ISubject;
    friend struct Observation;
    Ties<ISubject> m_subjects;
};
