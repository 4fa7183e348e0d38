#include <framework/model/IObserver.h>

#include <framework/model/Observation.h>

IObserver::~IObserver()
{
    Observation::untieAll(*this);
}

std::vector<ISubject*> IObserver::getSubjects() const
{
    std::vector<ISubject*> subjects;
    if (ISubject* only = m_subjects.only()) subjects.push_back(only);
    for (const Observation* tie = m_subjects.first(); tie; tie = tie->nextSubject)
        subjects.push_back(tie->subject);
    return subjects;
}
