#pragma once

class IObserver;
class ISubject;

/// The tie between one subject and one observer, a link in the lists of both: whoever knows the first link of
/// a list finds the last one as the link before it. Internal to those two classes.
struct Observation
{
    ISubject* subject = nullptr;
    IObserver* observer = nullptr;
    Observation* previousObserver = nullptr; // in the subject's list; the last one for the first
    Observation* nextObserver = nullptr;     // null for the last one
    Observation* previousSubject = nullptr;  // likewise in the observer's list
    Observation* nextSubject = nullptr;

    /// The tie of the two, or null. Takes as long as the shorter of the two lists.
    static Observation* find(const ISubject& subject, const IObserver& observer);
    static void tie(ISubject& subject, IObserver& observer);
    /// Takes the tie out of both lists and destroys it; running notifications skip it.
    static void cut(Observation* tie);
};
