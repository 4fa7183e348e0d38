#include <framework/model/ISubject.h>

#include <framework/model/IObserver.h>
#include <framework/model/Observation.h>

namespace {

using Link = Observation* Observation::*;

template <Link Previous, Link Next>
void append(Observation*& first, Observation* tie)
{
    tie->*Previous = first ? first->*Previous : tie;
    (first ? first->*Previous->*Next : first) = tie;
    first->*Previous = tie;
}

template <Link Previous, Link Next>
void takeOut(Observation*& first, Observation* tie)
{
    Observation* const next = tie->*Next;
    if (Observation* nextOrFirst = next ? next : first) nextOrFirst->*Previous = tie->*Previous;
    (tie == first ? first : tie->*Previous->*Next) = next;
}

} // namespace

// A run through the observers that were there when it began. The cursor stands on the next one to tell and
// the end on the last one; where one of them leaves, Observation::cut moves them. Runs that others cause lie
// within.
struct ISubject::Notification
{
    explicit Notification(const ISubject& of)
        : outer(innermost)
        , cursor(of.m_first)
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
    while (m_first)
        Observation::cut(m_first);
}

void ISubject::addObserver(IObserver* observer)
{
    if (observer && !Observation::find(*this, *observer)) Observation::tie(*this, *observer);
}

void ISubject::removeObserver(IObserver* observer)
{
    if (Observation* tie = observer ? Observation::find(*this, *observer) : nullptr) Observation::cut(tie);
}

void ISubject::notifyObservers()
{
    Notification run(*this);
    while (IObserver* observer = run.takeNext())
        observer->updateData(this);
}

std::vector<IObserver*> ISubject::getObservers() const
{
    std::vector<IObserver*> observers;
    for (const Observation* tie = m_first; tie; tie = tie->nextObserver)
        observers.push_back(tie->observer);
    return observers;
}

Observation* Observation::find(const ISubject& subject, const IObserver& observer)
{
    Observation* ofSubject = subject.m_first;
    Observation* ofObserver = observer.m_first;
    while (ofSubject && ofObserver) {
        if (ofSubject->observer == &observer) return ofSubject;
        if (ofObserver->subject == &subject) return ofObserver;
        ofSubject = ofSubject->nextObserver;
        ofObserver = ofObserver->nextSubject;
    }
    return nullptr;
}

void Observation::tie(ISubject& subject, IObserver& observer)
{
    auto* tie = new Observation;
    tie->subject = &subject;
    tie->observer = &observer;
    append<&Observation::previousObserver, &Observation::nextObserver>(subject.m_first, tie);
    append<&Observation::previousSubject, &Observation::nextSubject>(observer.m_first, tie);
}

void Observation::cut(Observation* tie)
{
    for (ISubject::Notification* run = ISubject::Notification::innermost; run; run = run->outer)
        run->skip(tie);
    takeOut<&Observation::previousObserver, &Observation::nextObserver>(tie->subject->m_first, tie);
    takeOut<&Observation::previousSubject, &Observation::nextSubject>(tie->observer->m_first, tie);
    delete tie;
}
