#include "ModelFixtures.h"

#include <framework/ksp/CFileException.h>
#include <framework/model/CFilterElement.h>
#include <framework/model/CProjectModel.h>

namespace {

class FilterElement : public testing::Test
{
protected:
    CProjectModel model{nullptr};
    CModelElement* first = model.getCreateItemManager(0x101)->addItem(std::make_unique<PointElement>());
    CModelElement* second = model.getCreateItemManager(0x101)->addItem(std::make_unique<PointElement>());
    CFilterElement filter;
};

} // namespace

TEST_F(FilterElement, AcceptsEverythingAtFirst)
{
    EXPECT_EQ(filter.getType(), 0x36FF9100);
    EXPECT_EQ(CFilterElement::Type, 0x36FF9100);
    EXPECT_TRUE(filter.isTypeAccepted(0x101));
    EXPECT_TRUE(filter.isAccepted(*first));
}

TEST_F(FilterElement, TypesAndElementsAreIndependent)
{
    filter.setTypeAccepted(0x101, false);
    EXPECT_FALSE(filter.isTypeAccepted(0x101));
    EXPECT_TRUE(filter.isTypeAccepted(0x102));
    EXPECT_TRUE(filter.isAccepted(*first));
    filter.setTypeAccepted(0x101, true);
    EXPECT_TRUE(filter.isTypeAccepted(0x101));
}

TEST_F(FilterElement, RejectsSingleElements)
{
    filter.setElementAccepted(first->getId(), false);
    EXPECT_FALSE(filter.isAccepted(*first));
    EXPECT_TRUE(filter.isAccepted(*second));
    filter.setElementAccepted(first->getId(), true);
    EXPECT_TRUE(filter.isAccepted(*first));
}

TEST_F(FilterElement, ConditionComesOnTop)
{
    first->setName("house");
    second->setName("house");
    filter.setElementAccepted(second->getId(), false);
    filter.setCondition([](const CModelElement& element) { return element.getName() == "house"; });
    EXPECT_TRUE(filter.isAccepted(*first));
    EXPECT_FALSE(filter.isAccepted(*second));
    first->setName("road");
    EXPECT_FALSE(filter.isAccepted(*first));
    filter.setCondition({});
    EXPECT_TRUE(filter.isAccepted(*first));
}

TEST_F(FilterElement, SettersNotifyOnlyWhenTheyChangeSomething)
{
    Observer observer;
    filter.addObserver(&observer);
    filter.setTypeAccepted(5, true);
    filter.setElementAccepted(5, true);
    filter.setCondition({});
    EXPECT_EQ(observer.calls, 0);
    filter.setTypeAccepted(5, false);
    filter.setTypeAccepted(5, false);
    filter.setElementAccepted(5, false);
    filter.setElementAccepted(5, false);
    EXPECT_EQ(observer.calls, 2);
    filter.setCondition([](const CModelElement&) { return true; });
    filter.setCondition({});
    EXPECT_EQ(observer.calls, 4);
}

TEST_F(FilterElement, ArchiveRoundTripWithoutTheCondition)
{
    filter.setName("f");
    filter.setTypeAccepted(-7, false);
    filter.setTypeAccepted(0x36FF1C00, false);
    filter.setElementAccepted(second->getId(), false);
    filter.setCondition([](const CModelElement&) { return false; });
    CQtArchive out;
    filter.serialize(out);

    CFilterElement loaded;
    loaded.setTypeAccepted(1, false);
    loaded.setElementAccepted(first->getId(), false);
    CQtArchive in(out.data());
    loaded.serialize(in);
    EXPECT_EQ(loaded.getName(), "f");
    EXPECT_FALSE(loaded.isTypeAccepted(-7));
    EXPECT_FALSE(loaded.isTypeAccepted(0x36FF1C00));
    EXPECT_TRUE(loaded.isTypeAccepted(1));
    EXPECT_TRUE(loaded.isAccepted(*first));
    EXPECT_FALSE(loaded.isAccepted(*second));
}

TEST_F(FilterElement, FailedLoadingLeavesItAsItWas)
{
    CFilterElement other;
    other.setName("new");
    CQtArchive out; // the part of every element, then types, then more elements than there is room for
    other.CModelElement::serialize(out);
    out.beginObject();
    out.writeUInt(1);
    out.writeInt(7);
    out.writeUInt(1000);
    out.endObject(1);
    out.finish();

    filter.setName("old");
    filter.setTypeAccepted(5, false);
    CQtArchive in(out.data());
    EXPECT_THROW(filter.serialize(in), ksp::CFileException);
    EXPECT_EQ(filter.getName(), "old");
    EXPECT_FALSE(filter.isTypeAccepted(5));
    EXPECT_TRUE(filter.isTypeAccepted(7));
}

TEST_F(FilterElement, LoadingLeavesWhatIsNotStored)
{
    CFilterElement other;
    CQtArchive out;
    other.serialize(out);
    filter.setHighlighted(true);
    filter.setCondition([](const CModelElement&) { return false; });
    CQtArchive in(out.data());
    filter.serialize(in);
    EXPECT_TRUE(filter.isHighlighted());
    EXPECT_FALSE(filter.isAccepted(*first));
}
