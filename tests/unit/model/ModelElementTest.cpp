#include "ModelFixtures.h"

#include <framework/ksp/CFileException.h>

#include <array>

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

TEST(ModelElement, ChangeOfWhatItDependsOnIsNotPassedOn)
{
    PointElement base, dependent;
    base.addObserver(&dependent);
    Observer observer;
    dependent.addObserver(&observer);
    base.setName("n");
    EXPECT_EQ(observer.calls, 0);
}

TEST(ModelElement, ManyPathsToAnElementMakeAChangeNoMoreWork)
{
    // 40 layers of two, each of which depends on both below: 2^40 paths from the first to the last
    class Counting : public PointElement
    {
    public:
        void updateData(ISubject* subject) override
        {
            PointElement::updateData(subject);
            ++told;
        }
        int told = 0;
    };
    std::vector<std::array<Counting, 2>> layers(40);
    for (std::size_t i = 1; i < layers.size(); ++i) {
        for (Counting& below : layers[i - 1]) {
            for (Counting& above : layers[i])
                below.addObserver(&above);
        }
    }
    layers[0][0].setName("n");
    EXPECT_EQ(layers[1][0].told, 1);
    EXPECT_EQ(layers[2][0].told, 0);
}

TEST(ModelElement, LongChainOfDependenciesTakesNoStack)
{
    std::vector<PointElement> chain(1000000);
    for (std::size_t i = 1; i < chain.size(); ++i)
        chain[i - 1].addObserver(&chain[i]);
    chain[0].setName("n");
    EXPECT_EQ(chain[0].getName(), "n");
}

TEST(ModelElement, MayKeepWhatItDerivesFromAnother)
{
    class Shadow : public PointElement
    {
    public:
        void updateData(ISubject* subject) override
        {
            setName(static_cast<CModelElement*>(subject)->getName());
        }
    };
    PointElement base;
    Shadow shadow;
    base.addObserver(&shadow);
    Observer observer;
    shadow.addObserver(&observer);
    base.setName("n");
    EXPECT_EQ(shadow.getName(), "n");
    EXPECT_EQ(observer.calls, 1);
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

TEST(ModelElement, FailedLoadingLeavesItAsItWas)
{
    CQtArchive archive; // an element whose second property is of an unknown kind
    QString name("new");
    QString key("p");
    archive.beginObject();
    archive.value(name);
    archive.writeBool(false);
    archive.writeUInt(2);
    archive.value(key);
    archive.writeUInt(1); // a truth value
    archive.writeBool(true);
    archive.value(key);
    archive.writeUInt(99);
    archive.endObject(1);
    archive.finish();

    PointElement element(5);
    element.setName("old");
    element.setProperty("mine", 1);
    EXPECT_THROW(load(element, archive.data()), ksp::CFileException);
    EXPECT_EQ(element.getName(), "old");
    EXPECT_TRUE(element.isVisible());
    EXPECT_THAT(element.getPropertyNames(), ElementsAre("mine"));
}

TEST(ModelElement, FailureAtTheEndOfItsFrameLeavesItAsItWas)
{
    CQtArchive archive; // version 0, which nobody writes
    QString name("new");
    archive.beginObject();
    archive.value(name);
    archive.writeBool(false);
    archive.writeUInt(0);
    archive.finish();

    PointElement element;
    element.setName("old");
    element.setProperty("mine", 1);
    EXPECT_THROW(load(element, archive.data()), ksp::CFileException);
    EXPECT_EQ(element.getName(), "old");
    EXPECT_TRUE(element.isVisible());
    EXPECT_THAT(element.getPropertyNames(), ElementsAre("mine"));
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
