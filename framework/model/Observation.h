#pragma once

#include <cstdint>

class IObserver;
class ISubject;

/// The tie between one subject and one observer, a link in the lists of both. Internal to those two classes.
struct Observation
{
    ISubject* subject = nullptr;
    IObserver* observer = nullptr;
    Observation* previousObserver = nullptr; // neighbours in the subject's list
    Observation* nextObserver = nullptr;
    Observation* previousSubject = nullptr; // neighbours in the observer's list
    Observation* nextSubject = nullptr;
    std::uint64_t serial = 0; // grows in the subject's list

    /// The tie of the two, or null. Takes as long as the shorter of the two lists.
    static Observation* find(const ISubject& subject, const IObserver& observer);
    static void tie(ISubject& subject, IObserver& observer);
    /// Takes the tie out of both lists and destroys it; running notifications skip it.
    static void cut(Observation* tie);
};
