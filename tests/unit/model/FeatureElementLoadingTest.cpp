#include <framework/ksp/CFileException.h>
#include <framework/model/FeatureElement.h>

#include <gtest/gtest.h>

namespace {

/// What is stored of a feature, up to its parts.
void writeBeginning(CQtArchive& archive, QString name, QString sourceId)
{
    FeatureElement element;
    element.setName(name);
    element.CModelElement::serialize(archive);
    archive.beginObject();
    archive.value(sourceId);
}

FeatureElement makeFeature()
{
    FeatureElement element;
    element.setName("old");
    element.setSourceId("a-7");
    FeatureElement::Part part;
    part.points = {{1, 2, 3}};
    element.setParts({part});
    element.setHighlighted(true);
    return element;
}

} // namespace

TEST(FeatureElementLoading, FailureLeavesItAsItWas)
{
    for (const bool endsEarly : {true, false}) {
        CQtArchive out;
        writeBeginning(out, "new", "b-8");
        out.writeUInt(endsEarly ? 5 : 0);
        if (endsEarly) out.endObject(1); // else of version 0, which is found at the end of the frame
        out.finish();

        FeatureElement element = makeFeature();
        CQtArchive in(out.data());
        EXPECT_THROW(element.serialize(in), ksp::CFileException);
        EXPECT_EQ(element.getName(), "old");
        EXPECT_EQ(element.getSourceId(), "a-7");
        EXPECT_EQ(element.getParts().size(), 1u);
    }
}

TEST(FeatureElementLoading, WhatIsNotStoredStays)
{
    CQtArchive out;
    writeBeginning(out, "new", "b-8");
    out.writeUInt(0);
    out.endObject(1);
    out.finish();

    FeatureElement element = makeFeature();
    CQtArchive in(out.data());
    element.serialize(in);
    EXPECT_EQ(element.getName(), "new");
    EXPECT_EQ(element.getSourceId(), "b-8");
    EXPECT_TRUE(element.getParts().empty());
    EXPECT_TRUE(element.isHighlighted());
}
