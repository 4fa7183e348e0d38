#include "ModelFixtures.h"

#include <framework/ksp/CFileException.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

QByteArray stored(CModelElement& element)
{
    CQtArchive archive;
    element.serialize(archive);
    return archive.data();
}

void load(CModelElement& element, const QByteArray& bytes)
{
    CQtArchive archive(bytes);
    element.serialize(archive);
}

} // namespace

TEST(ModelElement, StartsVisibleNamelessAndAlone)
{
    PointElement element;
    EXPECT_EQ(element.getId(), 0);
    EXPECT_EQ(element.getName(), QString());
    EXPECT_TRUE(element.isVisible());
    EXPECT_FALSE(element.isHighlighted());
    EXPECT_EQ(element.getManager(), nullptr);
    EXPECT_EQ(element.getOwner(), nullptr);
    EXPECT_THAT(element.getPropertyNames(), IsEmpty());
}

TEST(ModelElement, OwnerIsGuarded)
{
    auto owner = std::make_unique<PointElement>();
    PointElement part(owner.get());
    EXPECT_EQ(part.getOwner(), owner.get());
    owner.reset();
    EXPECT_EQ(part.getOwner(), nullptr);
}

TEST(ModelElement, SettersNotifyOnlyWhenTheyChangeSomething)
{
    PointElement element;
    Observer observer;
    element.addObserver(&observer);
    element.setName("");
    element.setVisible(true);
    element.setHighlighted(false);
    EXPECT_EQ(observer.calls, 0);
    element.setName("a");
    element.setVisible(false);
    element.setHighlighted(true);
    EXPECT_EQ(observer.calls, 3);
    element.setName("a");
    element.setVisible(false);
    element.setHighlighted(true);
    EXPECT_EQ(observer.calls, 3);
}

TEST(ModelElement, PropertiesKeepTheirOrder)
{
    PointElement element;
    element.setProperty("height", 12.5);
    element.setProperty("colour", "red");
    element.setProperty("floors", 3);
    element.setProperty("height", 13.0);
    EXPECT_THAT(element.getPropertyNames(), ElementsAre("height", "colour", "floors"));
    EXPECT_EQ(element.getProperty("height"), QVariant(13.0));
    element.setProperty("colour", QVariant());
    EXPECT_THAT(element.getPropertyNames(), ElementsAre("height", "floors"));
    EXPECT_FALSE(element.getProperty("colour").isValid());
}

TEST(ModelElement, PropertyWithoutNameIsRefused)
{
    PointElement element;
    EXPECT_FALSE(element.setProperty("", 1));
    EXPECT_TRUE(element.setProperty("x", 1));
    EXPECT_THAT(element.getPropertyNames(), ElementsAre("x"));
}

TEST(ModelElement, PropertyChangesNotify)
{
    PointElement element;
    Observer observer;
    element.addObserver(&observer);
    element.setProperty("x", 1);
    EXPECT_EQ(observer.calls, 1);
    element.setProperty("x", 1);
    element.setProperty("none", QVariant());
    EXPECT_EQ(observer.calls, 1);
    element.setProperty("x", "1"); // another type is another value
    EXPECT_EQ(observer.calls, 2);
    EXPECT_EQ(element.getProperty("x").userType(), int(QMetaType::QString));
    element.setProperty("x", QVariant());
    EXPECT_EQ(observer.calls, 3);
}

TEST(ModelElement, AllPropertiesAtOnce)
{
    PointElement element;
    element.setProperty("old", 1);
    Observer observer;
    element.addObserver(&observer);
    element.setProperties({{"a", 1}, {"", 2}, {"b", 3}, {"a", 4}, {"c", QVariant()}});
    EXPECT_EQ(observer.calls, 1);
    EXPECT_THAT(element.getPropertyNames(), ElementsAre("a", "b"));
    EXPECT_EQ(element.getProperty("a"), QVariant(4));
}

TEST(ModelElement, CopyIsAnElementOfItsOwn)
{
    PointElement owner, subject;
    PointElement original(&owner);
    Observer observer;
    original.addObserver(&observer);
    subject.addObserver(&original);
    original.setName("n");
    original.setVisible(false);
    original.setHighlighted(true);
    original.setProperty("p", 7);

    const PointElement copy(original);
    EXPECT_EQ(copy.getName(), "n");
    EXPECT_FALSE(copy.isVisible());
    EXPECT_TRUE(copy.isHighlighted());
    EXPECT_EQ(copy.getProperty("p"), QVariant(7));
    EXPECT_EQ(copy.getId(), 0);
    EXPECT_EQ(copy.getOwner(), nullptr);
    EXPECT_THAT(copy.getObservers(), IsEmpty());
    EXPECT_THAT(copy.getSubjects(), IsEmpty());
}

TEST(ModelElement, AssignmentKeepsTheTargetsTies)
{
    PointElement source, subject, target;
    source.setName("n");
    Observer observer;
    target.addObserver(&observer);
    subject.addObserver(&target);
    target = source;
    EXPECT_EQ(target.getName(), "n");
    EXPECT_THAT(target.getObservers(), ElementsAre(&observer));
    EXPECT_THAT(target.getSubjects(), ElementsAre(&subject));
    EXPECT_EQ(observer.calls, 0);
}

TEST(ModelElement, PassesAChangeOnToItsObservers)
{
    PointElement base, dependent;
    base.addObserver(&dependent);
    Observer observer;
    dependent.addObserver(&observer);
    base.setName("n");
    EXPECT_EQ(observer.calls, 1);
    EXPECT_EQ(observer.lastSubject, &dependent);
}

TEST(ModelElement, ChangesDoNotGoRoundInCircles)
{
    PointElement a, b;
    a.addObserver(&b);
    b.addObserver(&a);
    Observer ofA, ofB;
    a.addObserver(&ofA);
    b.addObserver(&ofB);
    a.setName("n");
    EXPECT_EQ(ofB.calls, 1);
    EXPECT_EQ(ofA.calls, 2); // its own change and that of b, which it depends on
    a.setName("m");
    EXPECT_EQ(ofB.calls, 2);
}

TEST(ModelElement, ElementThatObservesItselfIsToldOnce)
{
    PointElement a;
    a.addObserver(&a);
    Observer observer;
    a.addObserver(&observer);
    a.setName("n");
    EXPECT_EQ(observer.calls, 2);
}

TEST(ModelElement, MayDieWhileItPassesAChangeOn)
{
    PointElement base;
    auto dependent = std::make_unique<PointElement>();
    base.addObserver(dependent.get());
    Observer observer([&] { dependent.reset(); });
    dependent->addObserver(&observer);
    base.setName("n");
    EXPECT_EQ(observer.calls, 1);
    EXPECT_THAT(base.getObservers(), IsEmpty());
}

TEST(ModelElement, ArchiveRoundTrip)
{
    PointElement element(42);
    element.setName(QString::fromUtf8("точка 1"));
    element.setVisible(false);
    element.setHighlighted(true);
    element.setProperties(
        {{"z", 1.5}, {"a", QString("text")}, {"n", QVariant::fromValue(nullptr)}, {"i", 7}});

    PointElement loaded;
    loaded.setProperty("before", 1);
    load(loaded, stored(element));
    EXPECT_EQ(loaded.getName(), QString::fromUtf8("точка 1"));
    EXPECT_FALSE(loaded.isVisible());
    EXPECT_FALSE(loaded.isHighlighted());
    EXPECT_THAT(loaded.getPropertyNames(), ElementsAre("z", "a", "n", "i"));
    EXPECT_EQ(loaded.getProperty("z"), QVariant(1.5));
    EXPECT_EQ(loaded.getProperty("a"), QVariant("text"));
    EXPECT_TRUE(loaded.getProperty("n").isValid());
    EXPECT_TRUE(loaded.getProperty("n").isNull());
    EXPECT_EQ(loaded.getProperty("i"), QVariant(7));
    EXPECT_EQ(loaded.number, 42);
}

TEST(ModelElement, LoadingTellsNobody)
{
    PointElement element, loaded;
    element.setName("n");
    Observer observer;
    loaded.addObserver(&observer);
    load(loaded, stored(element));
    EXPECT_EQ(observer.calls, 0);
}

TEST(ModelElement, EveryTruncationOfAnElementIsRefused)
{
    PointElement element(5);
    element.setName("name");
    element.setProperties({{"a", 1}, {"b", QVariantList{1, "two", QVariantMap{{"c", 3.0}}}}});
    const QByteArray whole = stored(element);
    for (int size = 0; size < whole.size(); ++size) {
        PointElement loaded;
        EXPECT_THROW(load(loaded, whole.left(size)), ksp::CFileException) << size;
    }
}

TEST(ModelElement, ManyPropertiesLoadInLinearTime)
{
    std::vector<std::pair<QString, QVariant>> properties;
    for (int i = 0; i < 100000; ++i)
        properties.emplace_back(QString::number(i), i);
    PointElement element, loaded;
    element.setProperties(properties);
    load(loaded, stored(element));
    EXPECT_EQ(loaded.getPropertyNames().size(), 100000);
    EXPECT_EQ(loaded.getProperty("99999"), QVariant(99999));
}
