#include <framework/model/ISubject.h>

#include <framework/model/IObserver.h>
#include <framework/model/Observation.h>

namespace {

using Link = Observation* Observation::*;

template <Link Previous, Link Next, class Other>
void append(Ties<Other>& ties, Observation* tie)
{
    Observation* first = ties.first();
    tie->*Previous = first ? first->*Previous : tie;
    if (first)
        first->*Previous->*Next = tie;
    else
        ties.setFirst(tie);
    ties.first()->*Previous = tie;
}

template <Link Previous, Link Next, class Other>
void takeOut(Ties<Other>& ties, const Observation* tie)
{
    Observation* const first = ties.first();
    Observation* const next = tie->*Next;
    if (Observation* nextOrFirst = next ? next : first) nextOrFirst->*Previous = tie->*Previous;
    if (tie == first)
        ties.setFirst(next);
    else
        tie->*Previous->*Next = next;
}

} // namespace

// A run through the observers that were there when it began. The cursor stands on the next one to tell and
// the end on the last one; where one of them leaves, Observation::cut moves them. Runs that others cause lie
// within.
struct ISubject::Notification
{
    explicit Notification(const ISubject& of)
        : outer(innermost)
        , cursor(of.m_observers.first())
        , end(cursor ? cursor->previousObserver : nullptr)
    {
        innermost = this;
    }
    ~Notification() { innermost = outer; }
    Notification(const Notification&) = delete;
    Notification& operator=(const Notification&) = delete;

    IObserver* takeNext()
    {
        if (!cursor) return nullptr;
        IObserver* observer = cursor->observer;
        advance();
        return observer;
    }
    void skip(const Observation* tie)
    {
        if (cursor == tie) advance();
        if (end == tie) end = tie->previousObserver;
    }
    void advance() { cursor = cursor == end ? nullptr : cursor->nextObserver; }

    static thread_local Notification* innermost;
    Notification* outer;
    Observation* cursor; // null: all are told
    const Observation* end;
};

thread_local ISubject::Notification* ISubject::Notification::innermost = nullptr;

ISubject::~ISubject()
{
    Observation::untieAll(*this);
}

void ISubject::addObserver(IObserver* observer)
{
    if (observer && !Observation::areTied(*this, *observer)) Observation::tie(*this, *observer);
}

void ISubject::removeObserver(IObserver* observer)
{
    if (observer) Observation::untie(*this, *observer);
}

void ISubject::notifyObservers()
{
    if (IObserver* only = m_observers.only()) {
        only->updateData(this);
        return;
    }
    Notification run(*this);
    while (IObserver* observer = run.takeNext())
        observer->updateData(this);
}

std::vector<IObserver*> ISubject::getObservers() const
{
    std::vector<IObserver*> observers;
    if (IObserver* only = m_observers.only()) observers.push_back(only);
    for (const Observation* tie = m_observers.first(); tie; tie = tie->nextObserver)
        observers.push_back(tie->observer);
    return observers;
}

void Observation::tie(ISubject& subject, IObserver& observer)
{
    if (subject.m_observers.isNone() && observer.m_subjects.isNone()) {
        subject.m_observers.setOnly(observer);
        observer.m_subjects.setOnly(subject);
        return;
    }
    if (IObserver* only = subject.m_observers.only()) {
        untieOnly(subject, *only);
        link(subject, *only);
    }
    if (ISubject* only = observer.m_subjects.only()) {
        untieOnly(*only, observer);
        link(*only, observer);
    }
    link(subject, observer);
}

void Observation::untie(ISubject& subject, IObserver& observer)
{
    if (subject.m_observers.only() == &observer)
        untieOnly(subject, observer);
    else if (Observation* tie = find(subject, observer))
        cut(tie);
}

bool Observation::areTied(const ISubject& subject, const IObserver& observer)
{
    return subject.m_observers.only() == &observer || find(subject, observer);
}

void Observation::untieAll(ISubject& subject)
{
    if (IObserver* only = subject.m_observers.only()) untieOnly(subject, *only);
    while (Observation* first = subject.m_observers.first())
        cut(first);
}

void Observation::untieAll(IObserver& observer)
{
    if (ISubject* only = observer.m_subjects.only()) untieOnly(*only, observer);
    while (Observation* first = observer.m_subjects.first())
        cut(first);
}

Observation* Observation::find(const ISubject& subject, const IObserver& observer)
{
    Observation* ofSubject = subject.m_observers.first();
    Observation* ofObserver = observer.m_subjects.first();
    while (ofSubject && ofObserver) {
        if (ofSubject->observer == &observer) return ofSubject;
        if (ofObserver->subject == &subject) return ofObserver;
        ofSubject = ofSubject->nextObserver;
        ofObserver = ofObserver->nextSubject;
    }
    return nullptr;
}

void Observation::link(ISubject& subject, IObserver& observer)
{
    auto* tie = new Observation;
    tie->subject = &subject;
    tie->observer = &observer;
    append<&Observation::previousObserver, &Observation::nextObserver>(subject.m_observers, tie);
    append<&Observation::previousSubject, &Observation::nextSubject>(observer.m_subjects, tie);
}

void Observation::untieOnly(ISubject& subject, IObserver& observer)
{
    subject.m_observers.setNone();
    observer.m_subjects.setNone();
}

void Observation::cut(Observation* tie)
{
    for (ISubject::Notification* run = ISubject::Notification::innermost; run; run = run->outer)
        run->skip(tie);
    takeOut<&Observation::previousObserver, &Observation::nextObserver>(tie->subject->m_observers, tie);
    takeOut<&Observation::previousSubject, &Observation::nextSubject>(tie->observer->m_subjects, tie);
    delete tie;
}
