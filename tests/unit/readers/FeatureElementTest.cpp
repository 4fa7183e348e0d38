#include <framework/ksp/CFileException.h>
#include <framework/model/COrdinaryItemCreator.h>
#include <framework/model/FeatureElement.h>

#include <gtest/gtest.h>

#include <cstring>

namespace {

using FeaturePart = FeatureElement::Part;

FeatureElement makeFeature()
{
    FeatureElement element;
    element.setName("plot");
    element.setSourceId("a-7");
    element.setProperty("area", 12.5);
    FeaturePart ring;
    ring.kind = FeaturePart::Ring;
    ring.points = {{2700000.123, 1200000.456, 400.0}, {1, 2, 3}, {4, 5, 6}};
    FeaturePart hole = ring;
    hole.hole = true;
    element.setParts({ring, hole});
    return element;
}

QByteArray store(FeatureElement& element)
{
    CQtArchive archive;
    element.serialize(archive);
    return archive.data();
}

class Watcher : public IObserver
{
public:
    void updateData(ISubject*) override { ++count; }
    int count = 0;
};

} // namespace

TEST(FeatureElement, TypeIsThatOfItsCreator)
{
    EXPECT_EQ(FeatureElement().getType(), 0x36FFD100);
    EXPECT_EQ(COrdinaryItemCreator<FeatureElement>().getType(), FeatureElement::Type);
}

TEST(FeatureElement, ComesBackFromAnArchive)
{
    FeatureElement stored = makeFeature();
    FeatureElement loaded;
    CQtArchive archive(store(stored));
    loaded.serialize(archive);
    EXPECT_EQ(loaded.getName(), "plot");
    EXPECT_EQ(loaded.getSourceId(), "a-7");
    EXPECT_EQ(loaded.getProperty("area"), QVariant(12.5));
    ASSERT_EQ(loaded.getParts().size(), 2u);
    EXPECT_EQ(loaded.getParts()[0].kind, FeaturePart::Ring);
    EXPECT_FALSE(loaded.getParts()[0].hole);
    EXPECT_TRUE(loaded.getParts()[1].hole);
    EXPECT_EQ(loaded.getParts()[0].points, stored.getParts()[0].points);
}

TEST(FeatureElement, EveryTruncationOfAnArchiveIsRefused)
{
    FeatureElement stored = makeFeature();
    const QByteArray bytes = store(stored);
    for (int size = 0; size < bytes.size(); ++size) {
        EXPECT_THROW(
            {
                CQtArchive archive(bytes.left(size));
                FeatureElement().serialize(archive);
            },
            ksp::CFileException)
            << size;
    }
}

TEST(FeatureElement, UnknownKindOfPartIsRefused)
{
    CQtArchive writer;
    FeatureElement base;
    base.CModelElement::serialize(writer);
    QString id;
    writer.beginObject();
    writer.value(id);
    writer.writeUInt(1);
    writer.writeUInt(3);
    writer.writeBool(false);
    writer.writeUInt(0);
    writer.endObject(1);
    writer.finish();
    CQtArchive reader(writer.data());
    FeatureElement element;
    EXPECT_THROW(element.serialize(reader), ksp::CFileException);
}

TEST(FeatureElement, BoundsHoldAllPoints)
{
    const gmx::BoundingBox box = makeFeature().getBounds();
    EXPECT_EQ(box.getMin(), glm::dvec3(1, 2, 3));
    EXPECT_EQ(box.getMax(), glm::dvec3(2700000.123, 1200000.456, 400.0));
    EXPECT_TRUE(FeatureElement().getBounds().isNull());
}

TEST(FeatureElement, SettersTellTheObservers)
{
    FeatureElement element;
    Watcher watcher;
    element.addObserver(&watcher);
    element.setParts({});
    element.setSourceId("a");
    element.setSourceId("a");
    EXPECT_EQ(watcher.count, 2);
}
