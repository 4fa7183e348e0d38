#pragma once

class IObserver;
class ISubject;

/// The tie between one subject and one observer of which either has others, too: a link in the lists of both.
/// Whoever knows the first link of a list finds the last one as the link before it. Internal to those two
/// classes.
struct Observation
{
    ISubject* subject = nullptr;
    IObserver* observer = nullptr;
    Observation* previousObserver = nullptr; // in the subject's list; the last one for the first
    Observation* nextObserver = nullptr;     // null for the last one
    Observation* previousSubject = nullptr;  // likewise in the observer's list
    Observation* nextSubject = nullptr;

    /// Of two that are not tied.
    static void tie(ISubject& subject, IObserver& observer);
    /// Unties the two, if they are tied; running notifications skip the observer.
    static void untie(ISubject& subject, IObserver& observer);
    static bool areTied(const ISubject& subject, const IObserver& observer);
    /// Unties one side from all.
    static void untieAll(ISubject& subject);
    static void untieAll(IObserver& observer);

private:
    /// Takes as long as the shorter of the two lists.
    static Observation* find(const ISubject& subject, const IObserver& observer);
    static void link(ISubject& subject, IObserver& observer);
    static void untieOnly(ISubject& subject, IObserver& observer);
    static void cut(Observation* tie);
};
