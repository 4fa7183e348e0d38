// The fence as an element: what it holds, tells and stores. No context is needed.
#include <Viewer3dModule/fences/Frustum3D.h>
#include <Viewer3dModule/fences/PrismFence.h>
#include <Viewer3dModule/fences/SphereFence.h>
#include <Viewer3dModule/host/Fence3dItem.h>

#include <framework/gmx/IFence3D.h>
#include <framework/ksp/CFileException.h>
#include <framework/model/IObserver.h>

#include <gtest/gtest.h>

namespace {

using ksp::CFileException;

std::shared_ptr<Frustum3D> setFrustum(Fence3dItem& item)
{
    const auto fence = std::dynamic_pointer_cast<Frustum3D>(item.getCreateFence(Fence3DObject::Frustum3D));
    fence->setFence({0.0, 0.0, 0.0}, {0.0, 0.0, 1.0}, 1.0, 1.0, 4.0,
                    {{-1.0, -1.0, 1.0}, {1.0, -1.0, 1.0}, {0.0, 1.0, 1.0}, {-1.0, -1.0, 1.0}},
                    glm::dmat4(1.0));
    return fence;
}

std::shared_ptr<SphereFence> setSphere(Fence3dItem& item)
{
    const auto fence =
        std::dynamic_pointer_cast<SphereFence>(item.getCreateFence(Fence3DObject::SphereFence));
    fence->setFence({1.0, 2.0, 3.0}, 4.0);
    return fence;
}

std::shared_ptr<PrismFence> setPrism(Fence3dItem& item)
{
    const auto fence = std::dynamic_pointer_cast<PrismFence>(item.getCreateFence(Fence3DObject::PrismFence));
    fence->prism().setFence({0.0, 0.0, 0.0}, {0.0, 0.0, 2.0}, 1.0, 1.0, 4.0,
                            {{-1.0, -1.0, 1.0}, {1.0, -1.0, 1.0}, {0.0, 1.0, 1.0}, {-1.0, -1.0, 1.0}});
    return fence;
}

QByteArray stored(Fence3dItem& item)
{
    CQtArchive archive;
    item.serialize(archive);
    return archive.data();
}

void load(Fence3dItem& item, const QByteArray& bytes)
{
    CQtArchive archive(bytes);
    item.serialize(archive);
}

class Counter : public IObserver
{
public:
    void updateData(ISubject*) override { ++count; }
    int count = 0;
};

TEST(FenceElement, HasNoFenceAtFirst)
{
    const Fence3dItem item;
    EXPECT_EQ(item.getType(), 0x36FF1100);
    EXPECT_EQ(item.getFenceType(), 0);
    EXPECT_TRUE(item.empty());
    EXPECT_FALSE(item.isInteractionMode());
    EXPECT_EQ(item.getFence(), nullptr);
    EXPECT_EQ(item.getIFence3D(glm::dmat4(1.0)), nullptr);
}

TEST(FenceElement, MakesTheFenceThatIsAskedForOnce)
{
    Fence3dItem item;
    const auto frustum = item.getCreateFence(Fence3DObject::Frustum3D);
    ASSERT_TRUE(std::dynamic_pointer_cast<Frustum3D>(frustum));
    EXPECT_EQ(item.getFenceType(), 1);
    EXPECT_EQ(item.getCreateFence(Fence3DObject::Frustum3D), frustum);
    const auto sphere = item.getCreateFence(Fence3DObject::SphereFence);
    ASSERT_TRUE(std::dynamic_pointer_cast<SphereFence>(sphere));
    EXPECT_EQ(item.getFenceType(), 2);
    EXPECT_EQ(item.getFence(), sphere);
    const auto prism = item.getCreateFence(Fence3DObject::PrismFence);
    ASSERT_TRUE(std::dynamic_pointer_cast<PrismFence>(prism));
    EXPECT_EQ(item.getFenceType(), 3);
    EXPECT_EQ(prism->getType(), Fence3DObject::PrismFence);
}

TEST(FenceElement, ANewFenceIsEmptyUntilItIsSet)
{
    Fence3dItem item;
    item.getCreateFence(Fence3DObject::Frustum3D);
    EXPECT_TRUE(item.empty());
    setFrustum(item);
    EXPECT_FALSE(item.empty());
    item.getCreateFence(Fence3DObject::SphereFence);
    EXPECT_TRUE(item.empty());
    EXPECT_EQ(item.getIFence3D(glm::dmat4(1.0)), nullptr);
    setSphere(item);
    EXPECT_FALSE(item.empty());
    item.getCreateFence(Fence3DObject::PrismFence);
    EXPECT_TRUE(item.empty());
    setPrism(item);
    EXPECT_FALSE(item.empty());
}

TEST(FenceElement, APrismIsAFenceAsItIsAPrism)
{
    Fence3dItem item;
    const auto fence = setPrism(item);
    EXPECT_TRUE(fence->contains({0.0, 0.0, 1.0}));
    EXPECT_TRUE(fence->contains({0.0, 0.0, 4.0})); // of height 3, from the points' height on
    EXPECT_FALSE(fence->contains({0.0, 0.0, 4.1}));
    EXPECT_FALSE(fence->contains({0.9, 0.9, 2.0}));
    const auto forHost = item.getIFence3D(glm::dmat4(1.0));
    ASSERT_TRUE(forHost);
    EXPECT_TRUE(forHost->contains({0.0, 0.0, 1.0}));
    EXPECT_FALSE(forHost->contains({0.0, 0.0, 0.9}));
    fence->prism().reset();
    EXPECT_TRUE(item.empty());
}

TEST(FenceElement, ANumberThatIsNoTypeChangesNothing)
{
    Fence3dItem item;
    EXPECT_EQ(item.getCreateFence(static_cast<Fence3DObject::Type>(0)), nullptr);
    const auto fence = setSphere(item);
    EXPECT_EQ(item.getFence(), fence);
}

TEST(FenceElement, GivesTheHostTheFenceInItsFrame)
{
    Fence3dItem item;
    setSphere(item);
    glm::dmat4 modelToScene(2.0);
    modelToScene[3] = {-2.0, -4.0, -6.0, 1.0}; // the centre goes to the origin
    const auto fence = item.getIFence3D(modelToScene);
    ASSERT_TRUE(fence);
    EXPECT_TRUE(fence->contains({8.0, 0.0, 0.0}));
    EXPECT_FALSE(fence->contains({8.1, 0.0, 0.0}));
}

TEST(FenceElement, ResetRemovesTheFenceAndTellsSo)
{
    Fence3dItem item;
    Counter counter;
    item.addObserver(&counter);
    item.reset();
    EXPECT_EQ(counter.count, 0);
    const auto fence = setSphere(item);
    item.reset();
    EXPECT_EQ(counter.count, 1);
    EXPECT_TRUE(item.empty());
    EXPECT_EQ(item.getFenceType(), 0);
    EXPECT_FALSE(fence->empty()); // who holds it keeps it
    item.removeObserver(&counter);
}

TEST(FenceElement, InteractionModeTellsItsChanges)
{
    Fence3dItem item;
    Counter counter;
    item.addObserver(&counter);
    item.setInteractionMode(true);
    item.setInteractionMode(true);
    EXPECT_EQ(counter.count, 1);
    EXPECT_TRUE(item.isInteractionMode());
    item.setInteractionMode(false);
    EXPECT_EQ(counter.count, 2);
    item.removeObserver(&counter);
}

TEST(FenceElement, ComesBackFromTheArchive)
{
    Fence3dItem none, frustum, sphere, prism;
    none.setName("none");
    setFrustum(frustum);
    setSphere(sphere);
    setPrism(prism);
    for (Fence3dItem* source : {&none, &frustum, &sphere, &prism}) {
        Fence3dItem item;
        setSphere(item);
        item.setInteractionMode(true);
        load(item, stored(*source));
        EXPECT_EQ(item.getFenceType(), source->getFenceType());
        EXPECT_EQ(item.getName(), source->getName());
        EXPECT_TRUE(item.isInteractionMode()); // not stored
        EXPECT_EQ(stored(item), stored(*source));
    }
}

TEST(FenceElement, AReadFenceIsANewOne)
{
    Fence3dItem source, item;
    setSphere(source);
    const auto before = setSphere(item);
    before->setFence({0.0, 0.0, 0.0}, 1.0);
    load(item, stored(source));
    EXPECT_NE(item.getFence(), before);
    EXPECT_EQ(before->getRadius(), 1.0);
}

TEST(FenceElement, EveryTruncationIsRefusedAndLeavesTheElement)
{
    Fence3dItem source, item;
    setFrustum(source);
    const auto before = setSphere(item);
    item.setName("before");
    const QByteArray bytes = stored(source);
    for (int size = 0; size < bytes.size(); ++size) {
        EXPECT_THROW(load(item, bytes.left(size)), CFileException) << size;
        EXPECT_EQ(item.getFence(), before);
    }
    EXPECT_EQ(item.getName(), "before");
}

/// An element whose fence is of this kind, then nothing.
QByteArray withKind(std::int32_t kind)
{
    class Base : public CModelElement
    {
        int getType() const override { return 0; }
    } base;
    CQtArchive archive;
    base.serialize(archive);
    archive.beginObject();
    archive.writeInt(kind);
    archive.endObject(1);
    archive.finish();
    return archive.data();
}

TEST(FenceElement, AnUnknownKindIsRefused)
{
    Fence3dItem item;
    const auto before = setSphere(item);
    for (const std::int32_t kind : {4, -1, 0x7FFFFFFF}) {
        try {
            load(item, withKind(kind));
            ADD_FAILURE() << kind;
        } catch (const CFileException& error) {
            EXPECT_EQ(error.code(), CFileException::Damaged);
        }
        EXPECT_EQ(item.getFence(), before);
    }
    load(item, withKind(0));
    EXPECT_EQ(item.getFence(), nullptr);
}

TEST(FenceElement, AFenceThatIsMissingIsRefused)
{
    Fence3dItem item;
    const auto before = setFrustum(item);
    EXPECT_THROW(load(item, withKind(1)), CFileException);
    EXPECT_THROW(load(item, withKind(2)), CFileException);
    EXPECT_THROW(load(item, withKind(3)), CFileException);
    EXPECT_EQ(item.getFence(), before);
}

} // namespace
