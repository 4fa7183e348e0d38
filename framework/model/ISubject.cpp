#include <framework/model/ISubject.h>

#include <framework/model/IObserver.h>
#include <framework/model/Observation.h>

// A run through the observers. The cursor stands on the next one to tell, which Observation::cut moves when
// that one leaves; observers that came after the run began have a serial beyond the limit.
struct ISubject::Notification
{
    explicit Notification(ISubject* of)
        : subject(of)
        , outer(of->m_notification)
        , cursor(of->m_first)
        , limit(of->m_nextSerial)
    {
        of->m_notification = this;
    }
    ~Notification()
    {
        if (subject) subject->m_notification = outer;
    }
    Notification(const Notification&) = delete;
    Notification& operator=(const Notification&) = delete;

    IObserver* takeNext()
    {
        if (!subject || !cursor || cursor->serial >= limit) return nullptr;
        IObserver* observer = cursor->observer;
        cursor = cursor->nextObserver;
        return observer;
    }

    ISubject* subject; // null: destroyed
    Notification* outer;
    Observation* cursor;
    std::uint64_t limit;
};

ISubject::~ISubject()
{
    while (m_first)
        Observation::cut(m_first);
    for (Notification* run = m_notification; run; run = run->outer)
        run->subject = nullptr;
}

void ISubject::addObserver(IObserver* observer)
{
    if (observer && !Observation::find(*this, *observer)) Observation::tie(*this, *observer);
}

void ISubject::removeObserver(IObserver* observer)
{
    if (Observation* tie = observer ? Observation::find(*this, *observer) : nullptr) Observation::cut(tie);
}

// GCC does not see that the run takes itself off the subject, or that the subject is gone.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdangling-pointer"
#endif
void ISubject::notifyObservers()
{
    Notification run(this);
    while (IObserver* observer = run.takeNext())
        observer->updateData(this);
}
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif

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
    tie->serial = subject.m_nextSerial++;
    tie->previousObserver = subject.m_last;
    (subject.m_last ? subject.m_last->nextObserver : subject.m_first) = tie;
    subject.m_last = tie;
    tie->previousSubject = observer.m_last;
    (observer.m_last ? observer.m_last->nextSubject : observer.m_first) = tie;
    observer.m_last = tie;
}

void Observation::cut(Observation* tie)
{
    ISubject& s = *tie->subject;
    IObserver& o = *tie->observer;
    for (ISubject::Notification* run = s.m_notification; run; run = run->outer) {
        if (run->cursor == tie) run->cursor = tie->nextObserver;
    }
    (tie->previousObserver ? tie->previousObserver->nextObserver : s.m_first) = tie->nextObserver;
    (tie->nextObserver ? tie->nextObserver->previousObserver : s.m_last) = tie->previousObserver;
    (tie->previousSubject ? tie->previousSubject->nextSubject : o.m_first) = tie->nextSubject;
    (tie->nextSubject ? tie->nextSubject->previousSubject : o.m_last) = tie->previousSubject;
    delete tie;
}
