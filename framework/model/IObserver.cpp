#include <framework/model/IObserver.h>

#include <framework/model/Observation.h>

IObserver::~IObserver()
{
    while (m_first)
        Observation::cut(m_first);
}

std::vector<ISubject*> IObserver::getSubjects() const
{
    std::vector<ISubject*> subjects;
    for (const Observation* tie = m_first; tie; tie = tie->nextSubject)
        subjects.push_back(tie->subject);
    return subjects;
}
