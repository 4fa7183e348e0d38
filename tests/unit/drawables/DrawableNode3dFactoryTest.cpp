#include "tests/support/LogTrap.h"
#include "tests/support/TestItems.h"

#include <Viewer3dModule/drawables/DrawableNode3dFactory.h>
#include <Viewer3dModule/drawables/ObjFile3DGraphicsItem.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <framework/ksp/CommonError.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

/// Notes the instance counts that it is drawn with.
class TestNode : public IDrawableNode3d
{
public:
    void draw(const PaintContext&, int instances) override { drawn.push_back(instances); }
    std::vector<int> drawn;
};

// The factory lives as long as the process: every test has extensions of its own.
QString freshExtension()
{
    static int number = 0;
    return QStringLiteral("test%1").arg(++number);
}

/// Creators that note their calls.
class DrawableNode3dFactoryTest : public ::testing::Test
{
protected:
    DrawableNode3dFactory::Creator creator(const QString& name, bool succeeds = false)
    {
        return [this, name, succeeds](QString path, ksp::StagedProgress) -> std::unique_ptr<IDrawableNode3d> {
            calls += name;
            lastPath = path;
            if (!succeeds) return nullptr;
            return std::make_unique<TestNode>();
        };
    }
    void add(const QString& name, int position, bool succeeds = false)
    {
        factory.registerNodeCreator({extension}, creator(name, succeeds), position);
    }
    std::unique_ptr<IDrawableNode3d> load(const QString& path)
    {
        return factory.createDrawableNode3d(path, ksp::StagedProgress::dummy());
    }
    std::unique_ptr<IDrawableNode3d> load() { return load(QStringLiteral("a file.") + extension); }

    DrawableNode3dFactory& factory = DrawableNode3dFactory::instance();
    QString extension = freshExtension();
    QString calls;
    QString lastPath;
};

} // namespace

TEST_F(DrawableNode3dFactoryTest, IsOneObject)
{
    EXPECT_EQ(&DrawableNode3dFactory::instance(), &factory);
}

TEST_F(DrawableNode3dFactoryTest, TheCaseOfTheSuffixDoesNotMatter)
{
    add("a", -1, true);
    EXPECT_NE(load("x/one." + extension), nullptr);
    EXPECT_EQ(lastPath, "x/one." + extension);
    EXPECT_NE(load("x/two." + extension.toUpper()), nullptr);
    EXPECT_EQ(lastPath, "x/two." + extension.toUpper()) << "the path is passed on as it is";
    EXPECT_EQ(calls, "aa");
}

TEST_F(DrawableNode3dFactoryTest, TheLastDotBeginsTheSuffix)
{
    add("a", -1, true);
    EXPECT_NE(load("archive.tar." + extension), nullptr);
    EXPECT_EQ(load(extension + ".unknown"), nullptr);
    EXPECT_EQ(LogTrap::take(), QStringList{"unknown file format"});
}

TEST_F(DrawableNode3dFactoryTest, AFileWithoutADotIsOfUnknownFormat)
{
    EXPECT_EQ(load("README"), nullptr);
    EXPECT_EQ(LogTrap::take(), QStringList{"unknown file format"});
}

// Registers the empty extension for the rest of the process on a copy, so that other tests do not see it.
TEST_F(DrawableNode3dFactoryTest, AnEmptyExtensionTakesFilesWithoutADot)
{
    DrawableNode3dFactory copy = factory;
    copy.registerNodeCreator({QString("")}, creator("a", true), -1);
    EXPECT_NE(copy.createDrawableNode3d("README", ksp::StagedProgress::dummy()), nullptr);
    EXPECT_FALSE(factory.isExtensionSupported(""));
}

TEST_F(DrawableNode3dFactoryTest, TheSecondIsTriedOnlyWhenTheFirstFails)
{
    add("a", 99, false);
    add("b", 99, true);
    EXPECT_NE(load(), nullptr);
    EXPECT_EQ(calls, "ab");

    extension = freshExtension();
    calls.clear();
    add("a", 99, true);
    add("b", 99, true);
    EXPECT_NE(load(), nullptr);
    EXPECT_EQ(calls, "a");
}

TEST_F(DrawableNode3dFactoryTest, AllFailingGivesNothingAndNoMessage)
{
    add("a", 99);
    add("b", 99);
    EXPECT_EQ(load(), nullptr);
    EXPECT_EQ(calls, "ab");
}

TEST_F(DrawableNode3dFactoryTest, ThePositionDecidesTheOrderOfTrial)
{
    add("a", 99);
    add("b", 99);
    add("c", 0);
    load();
    EXPECT_EQ(calls, "cab");
    calls.clear();
    add("d", -5);
    load();
    EXPECT_EQ(calls, "dcab");
    calls.clear();
    add("e", 99);
    load();
    EXPECT_EQ(calls, "dcabe");
    calls.clear();
    add("f", 2);
    load();
    EXPECT_EQ(calls, "dcfabe");
    calls.clear();
    add("g", 6);
    load();
    EXPECT_EQ(calls, "dcfabeg");
}

TEST_F(DrawableNode3dFactoryTest, OneCreatorServesAllItsExtensions)
{
    const QString other = freshExtension();
    factory.registerNodeCreator({extension, other}, creator("a", true), 0);
    EXPECT_NE(load("x." + extension), nullptr);
    EXPECT_NE(load("x." + other), nullptr);
}

TEST_F(DrawableNode3dFactoryTest, TellsWhichExtensionsAreSupported)
{
    EXPECT_FALSE(factory.isExtensionSupported(extension));
    add("a", 0);
    EXPECT_TRUE(factory.isExtensionSupported(extension));
    EXPECT_TRUE(factory.isExtensionSupported(extension.toUpper()));
    const std::vector<QString> all = factory.getExtensions();
    EXPECT_TRUE(std::is_sorted(all.begin(), all.end()));
    EXPECT_EQ(std::count(all.begin(), all.end(), extension), 1);
}

TEST_F(DrawableNode3dFactoryTest, AnExtensionRegisteredInCapitalsIsNeverFound)
{
    factory.registerNodeCreator({extension.toUpper()}, creator("a", true), 0);
    EXPECT_FALSE(factory.isExtensionSupported(extension.toUpper()));
}

// Each trial covers 0.9 of what the progress has left of 100: 90 - 0.9 * percentage.
TEST_F(DrawableNode3dFactoryTest, EachTrialIsAStageOfTheProgress)
{
    std::vector<double> percentages;
    ksp::StagedProgress whole(
        [&percentages](double percentage, const QString&) { percentages.push_back(percentage); });
    whole.setPercentage(20.0);
    const auto reporting = [](QString, ksp::StagedProgress progress) -> std::unique_ptr<IDrawableNode3d> {
        progress.setPercentage(50.0);
        return nullptr;
    };
    factory.registerNodeCreator({extension}, reporting, 99);
    factory.registerNodeCreator({extension}, reporting, 99);
    percentages.clear();
    factory.createDrawableNode3d("x." + extension, whole);
    // 20; stage of 72 to 92; stage of 90 - 82.8 = 7.2 to 99.2; halves of each on the way.
    ASSERT_EQ(percentages.size(), 4u);
    EXPECT_NEAR(percentages[0], 56.0, 1e-9);
    EXPECT_NEAR(percentages[1], 92.0, 1e-9);
    EXPECT_NEAR(percentages[2], 95.6, 1e-9);
    EXPECT_NEAR(percentages[3], 99.2, 1e-9);
}

TEST_F(DrawableNode3dFactoryTest, ATrialsStageEndsWithIt)
{
    std::vector<ksp::StagedProgress> kept;
    factory.registerNodeCreator(
        {extension},
        [&kept](QString, ksp::StagedProgress progress) -> std::unique_ptr<IDrawableNode3d> {
            kept.push_back(progress);
            return std::make_unique<TestNode>();
        },
        0);
    ksp::StagedProgress whole = ksp::StagedProgress::dummy();
    factory.createDrawableNode3d("x." + extension, whole);
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_NEAR(whole.getPercentage(), 90.0, 1e-9) << "although somebody holds the stage";
}

TEST_F(DrawableNode3dFactoryTest, WhatACreatorThrowsPassesThrough)
{
    factory.registerNodeCreator(
        {extension},
        [](QString, ksp::StagedProgress) -> std::unique_ptr<IDrawableNode3d> {
            throw ksp::CommonError(QStringLiteral("line 3: no number"));
        },
        0);
    EXPECT_THROW(load(), ksp::CommonError);
}

TEST_F(DrawableNode3dFactoryTest, ACreatorMayRegisterOthers)
{
    factory.registerNodeCreator(
        {extension},
        [this](QString, ksp::StagedProgress) -> std::unique_ptr<IDrawableNode3d> {
            for (int i = 0; i < 100; ++i)
                add("b", 0);
            return nullptr;
        },
        0);
    add("a", 99);
    load();
    EXPECT_EQ(calls, "a");
}

using ObjFile3DGraphicsItemTest = DrawableNode3dFactoryTest;

TEST_F(ObjFile3DGraphicsItemTest, LoadsItsFileAtOnce)
{
    add("a", 0, true);
    const ObjFile3DGraphicsItem item("some." + extension);
    EXPECT_EQ(calls, "a");
    EXPECT_EQ(lastPath, "some." + extension);
    EXPECT_NE(item.getNode(), nullptr);
    EXPECT_EQ(item.getError(), nullptr);
    EXPECT_TRUE(item.isVisible());
}

TEST_F(ObjFile3DGraphicsItemTest, DrawsTheNodeOnceThroughTheContextsDrawer)
{
    add("a", 0, true);
    ObjFile3DGraphicsItem item("some." + extension);
    auto* node = dynamic_cast<TestNode*>(item.getNode());
    ASSERT_NE(node, nullptr);
    PaintContext context;
    item.drawElement(context);
    EXPECT_TRUE(node->drawn.empty()) << "there is no drawer";
    TestDrawer drawer;
    context.drawer = &drawer;
    item.drawElement(context);
    EXPECT_EQ(node->drawn, std::vector<int>{1});
}

TEST_F(ObjFile3DGraphicsItemTest, KeepsWhatAReaderThrew)
{
    factory.registerNodeCreator(
        {extension},
        [](QString, ksp::StagedProgress) -> std::unique_ptr<IDrawableNode3d> {
            throw ksp::CommonError(QStringLiteral("line 3: no number"));
        },
        0);
    const ObjFile3DGraphicsItem item("some." + extension);
    EXPECT_EQ(item.getNode(), nullptr);
    ASSERT_NE(item.getError(), nullptr);
    EXPECT_THROW(std::rethrow_exception(item.getError()), ksp::CommonError);
}

TEST_F(ObjFile3DGraphicsItemTest, AFileThatNobodyReadsLeavesAnItemThatDrawsNothing)
{
    add("a", 0);
    ObjFile3DGraphicsItem item("some." + extension);
    EXPECT_EQ(item.getNode(), nullptr);
    EXPECT_EQ(item.getError(), nullptr);
    item.drawElement(PaintContext());
}
