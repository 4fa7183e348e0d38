#include "ModelFixtures.h"

#include <framework/model/ISubject.h>

#include <chrono>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Subject : ISubject
{
};

// Writes its letter down when it is told.
struct Letter : IObserver
{
    Letter(char letter, std::string& out, std::function<void()> reaction = {})
        : m_letter(letter)
        , m_out(out)
        , m_reaction(std::move(reaction))
    {
    }
    void updateData(ISubject*) override
    {
        m_out += m_letter;
        if (m_reaction) m_reaction();
    }

private:
    char m_letter;
    std::string& m_out;
    std::function<void()> m_reaction;
};

} // namespace

TEST(Subject, TellsObserversInOrderOfAddition)
{
    std::string told;
    Subject subject;
    Letter a('a', told), b('b', told), c('c', told);
    subject.addObserver(&b);
    subject.addObserver(&c);
    subject.addObserver(&a);
    subject.notifyObservers();
    EXPECT_EQ(told, "bca");
    EXPECT_THAT(subject.getObservers(), ElementsAre(&b, &c, &a));
}

TEST(Subject, HandsItselfToTheObserver)
{
    Subject subject;
    Observer observer;
    subject.addObserver(&observer);
    subject.notifyObservers();
    EXPECT_EQ(observer.lastSubject, &subject);
}

TEST(Subject, IgnoresNullAndDoubledObservers)
{
    Subject subject;
    Observer observer;
    subject.addObserver(nullptr);
    subject.removeObserver(nullptr);
    subject.addObserver(&observer);
    subject.addObserver(&observer);
    subject.notifyObservers();
    EXPECT_EQ(observer.calls, 1);
    subject.removeObserver(&observer);
    EXPECT_THAT(subject.getObservers(), IsEmpty());
    EXPECT_THAT(observer.getSubjects(), IsEmpty());
}

TEST(Subject, RemovingAStrangerChangesNothing)
{
    Subject subject, other;
    Observer observer, stranger;
    subject.addObserver(&observer);
    other.addObserver(&stranger);
    subject.removeObserver(&stranger);
    EXPECT_THAT(subject.getObservers(), ElementsAre(&observer));
    EXPECT_THAT(other.getObservers(), ElementsAre(&stranger));
}

TEST(Subject, ObserverKnowsItsSubjectsInOrder)
{
    Subject first, second, third;
    Observer observer;
    second.addObserver(&observer);
    first.addObserver(&observer);
    third.addObserver(&observer);
    first.removeObserver(&observer);
    EXPECT_THAT(observer.getSubjects(), ElementsAre(&second, &third));
}

TEST(Subject, ObserverThatDiesLeaves)
{
    Subject first, second;
    {
        Observer observer;
        first.addObserver(&observer);
        second.addObserver(&observer);
    }
    EXPECT_THAT(first.getObservers(), IsEmpty());
    EXPECT_THAT(second.getObservers(), IsEmpty());
    first.notifyObservers();
}

TEST(Subject, SubjectThatDiesLeavesItsObservers)
{
    Observer observer;
    Subject stays;
    {
        Subject goes;
        goes.addObserver(&observer);
        stays.addObserver(&observer);
    }
    EXPECT_THAT(observer.getSubjects(), ElementsAre(&stays));
}

TEST(Subject, ObserverMayLeaveWhileItIsTold)
{
    std::string told;
    Subject subject;
    Letter* self = nullptr;
    Letter a('a', told), b('b', told, [&] { subject.removeObserver(self); }), c('c', told);
    self = &b;
    for (IObserver* observer :
         {static_cast<IObserver*>(&a), static_cast<IObserver*>(&b), static_cast<IObserver*>(&c)})
        subject.addObserver(observer);
    subject.notifyObservers();
    subject.notifyObservers();
    EXPECT_EQ(told, "abcac");
}

TEST(Subject, ObserversThatDieWhileItNotifiesAreNotTold)
{
    std::string told;
    Subject subject;
    auto b = std::make_unique<Letter>('b', told);
    auto c = std::make_unique<Letter>('c', told);
    Letter a('a', told, [&] {
        c.reset();
        b.reset();
    });
    Letter d('d', told);
    subject.addObserver(&a);
    subject.addObserver(b.get());
    subject.addObserver(c.get());
    subject.addObserver(&d);
    subject.notifyObservers();
    EXPECT_EQ(told, "ad");
}

TEST(Subject, ObserversAddedWhileItNotifiesAreToldNextTime)
{
    std::string told;
    Subject subject;
    Letter b('b', told), c('c', told);
    Letter a('a', told, [&] { subject.addObserver(&b); });
    subject.addObserver(&a);
    subject.addObserver(&c);
    subject.notifyObservers();
    EXPECT_EQ(told, "ac");
    subject.notifyObservers();
    EXPECT_EQ(told, "acacb");
}

TEST(Subject, ObserverThatLeavesAndComesBackIsToldNextTime)
{
    std::string told;
    Subject subject;
    Letter b('b', told);
    Letter a('a', told, [&] {
        subject.removeObserver(&b);
        subject.addObserver(&b);
    });
    subject.addObserver(&a);
    subject.addObserver(&b);
    subject.notifyObservers();
    EXPECT_EQ(told, "a");
}

TEST(Subject, AllMayLeaveWhileItNotifies)
{
    std::string told;
    Subject subject;
    std::vector<std::unique_ptr<Letter>> others;
    Letter a('a', told, [&] {
        others.clear();
        subject.removeObserver(&a);
    });
    subject.addObserver(&a);
    for (int i = 0; i < 5; ++i) {
        others.push_back(std::make_unique<Letter>('x', told));
        subject.addObserver(others.back().get());
    }
    subject.notifyObservers();
    EXPECT_EQ(told, "a");
    EXPECT_THAT(subject.getObservers(), IsEmpty());
}

TEST(Subject, MayDieWhileItNotifies)
{
    std::string told;
    auto subject = std::make_unique<Subject>();
    Letter a('a', told, [&] { subject.reset(); }), b('b', told);
    subject->addObserver(&a);
    subject->addObserver(&b);
    subject->notifyObservers();
    EXPECT_EQ(told, "a");
    EXPECT_THAT(b.getSubjects(), IsEmpty());
}

TEST(Subject, MayDieInANestedNotification)
{
    std::string told;
    auto subject = std::make_unique<Subject>();
    int depth = 0;
    Letter a('a', told, [&] {
        if (++depth < 3)
            subject->notifyObservers();
        else
            subject.reset();
    });
    Letter b('b', told);
    subject->addObserver(&a);
    subject->addObserver(&b);
    subject->notifyObservers();
    EXPECT_EQ(told, "aaa");
}

TEST(Subject, NestedNotificationRunsAtOnce)
{
    std::string told;
    Subject subject;
    bool again = true;
    Letter a('a', told, [&] {
        if (std::exchange(again, false)) subject.notifyObservers();
    });
    Letter b('b', told);
    subject.addObserver(&a);
    subject.addObserver(&b);
    subject.notifyObservers();
    EXPECT_EQ(told, "aabb"); // a (a b) b
}

TEST(Subject, ObserverThatLeavesInANestedNotificationIsNotToldByTheOuterOne)
{
    std::string told;
    Subject subject;
    int calls = 0;
    Letter b('b', told);
    Letter a('a', told, [&] {
        if (++calls == 1)
            subject.notifyObservers();
        else
            subject.removeObserver(&b);
    });
    subject.addObserver(&a);
    subject.addObserver(&b);
    subject.notifyObservers();
    EXPECT_EQ(told, "aa");
}

TEST(Subject, TwoThatHaveEachOtherOnlyMayFindOthersAndLoseThem)
{
    Subject subject, other;
    Observer observer, second;
    for (int round = 0; round < 2; ++round) {
        subject.addObserver(&observer);
        EXPECT_THAT(subject.getObservers(), ElementsAre(&observer));
        EXPECT_THAT(observer.getSubjects(), ElementsAre(&subject));
        subject.addObserver(&second);
        EXPECT_THAT(subject.getObservers(), ElementsAre(&observer, &second));
        EXPECT_THAT(observer.getSubjects(), ElementsAre(&subject));
        other.addObserver(&observer);
        EXPECT_THAT(observer.getSubjects(), ElementsAre(&subject, &other));
        subject.removeObserver(&observer);
        EXPECT_THAT(subject.getObservers(), ElementsAre(&second));
        EXPECT_THAT(observer.getSubjects(), ElementsAre(&other));
        subject.removeObserver(&second);
        other.removeObserver(&observer);
    }
    subject.notifyObservers();
    EXPECT_EQ(observer.calls + second.calls, 0);
}

TEST(Subject, TwoPairsMayBeTiedAcross)
{
    Subject subjects[2];
    Observer observers[2];
    subjects[0].addObserver(&observers[0]);
    subjects[1].addObserver(&observers[1]);
    subjects[0].addObserver(&observers[1]);
    EXPECT_THAT(subjects[0].getObservers(), ElementsAre(&observers[0], &observers[1]));
    EXPECT_THAT(subjects[1].getObservers(), ElementsAre(&observers[1]));
    EXPECT_THAT(observers[1].getSubjects(), ElementsAre(&subjects[1], &subjects[0]));
    for (Subject& subject : subjects)
        subject.notifyObservers();
    EXPECT_EQ(observers[0].calls, 1);
    EXPECT_EQ(observers[1].calls, 2);
}

TEST(Subject, TheOnlyObserverMayGoAndBringOthersWhileItIsTold)
{
    auto subject = std::make_unique<Subject>();
    Observer late;
    Observer only([&] {
        subject->addObserver(&late);
        subject->removeObserver(&only);
    });
    subject->addObserver(&only);
    subject->notifyObservers();
    EXPECT_EQ(only.calls, 1);
    EXPECT_EQ(late.calls, 0);
    EXPECT_THAT(subject->getObservers(), ElementsAre(&late));
    EXPECT_THAT(only.getSubjects(), IsEmpty());
    Observer destroyer([&] { subject.reset(); });
    subject->removeObserver(&late);
    subject->addObserver(&destroyer);
    subject->notifyObservers();
    EXPECT_THAT(destroyer.getSubjects(), IsEmpty());
}

TEST(Subject, StaysUsableAfterAnObserverThrew)
{
    Subject subject;
    bool angry = true;
    Observer a([&] {
        if (angry) throw std::runtime_error("no");
    });
    Observer b;
    subject.addObserver(&a);
    subject.addObserver(&b);
    EXPECT_THROW(subject.notifyObservers(), std::runtime_error);
    angry = false;
    subject.removeObserver(&a);
    subject.notifyObservers();
    EXPECT_EQ(b.calls, 1);
}

// Takes minutes when leaving a subject or an observer looks through all that the other one has.
TEST(Subject, StarsOfManyTiesAreBuiltAndTakenDownInLinearTime)
{
    constexpr int count = 200000;
    const auto start = std::chrono::steady_clock::now();
    {
        Subject hub;
        std::vector<std::unique_ptr<Observer>> spokes;
        for (int i = 0; i < count; ++i) {
            spokes.push_back(std::make_unique<Observer>());
            hub.addObserver(spokes.back().get());
        }
        hub.notifyObservers();
        EXPECT_EQ(spokes.back()->calls, 1);
        for (auto& spoke : spokes)
            spoke.reset();
        EXPECT_THAT(hub.getObservers(), IsEmpty());
    }
    {
        Observer hub;
        std::vector<std::unique_ptr<Subject>> spokes;
        for (int i = 0; i < count; ++i) {
            spokes.push_back(std::make_unique<Subject>());
            spokes.back()->addObserver(&hub);
        }
        for (auto& spoke : spokes)
            spoke->removeObserver(&hub);
        EXPECT_THAT(hub.getSubjects(), IsEmpty());
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}
