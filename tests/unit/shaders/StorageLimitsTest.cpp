#include <Viewer3dModule/shaders/StorageLimits.h>

#include <gtest/gtest.h>

namespace {

StorageLimits storage(int bindings, int fragmentBlocks, int geometryBlocks)
{
    StorageLimits limits;
    limits.bindings = bindings;
    limits.fragmentBlocks = fragmentBlocks;
    limits.geometryBlocks = geometryBlocks;
    return limits;
}

} // namespace

TEST(StorageLimits, NothingIsMissingUpToTheLimits)
{
    EXPECT_EQ(missingStorage(storage(0, 0, 0), storage(0, 0, 0)), QString());
    EXPECT_EQ(missingStorage(storage(12, 2, 1), storage(12, 2, 1)), QString());
    EXPECT_EQ(missingStorage(storage(12, 2, 1), storage(96, 16, 16)), QString());
}

TEST(StorageLimits, TheLimitThatIsTooLowIsNamed)
{
    EXPECT_EQ(missingStorage(storage(10, 2, 0), storage(8, 8, 0)),
              "the driver's GL_MAX_SHADER_STORAGE_BUFFER_BINDINGS is 8, the program needs 10");
    EXPECT_EQ(missingStorage(storage(10, 2, 0), storage(16, 1, 0)),
              "the driver's GL_MAX_FRAGMENT_SHADER_STORAGE_BLOCKS is 1, the program needs 2");
    EXPECT_EQ(missingStorage(storage(12, 2, 1), storage(16, 8, 0)),
              "the driver's GL_MAX_GEOMETRY_SHADER_STORAGE_BLOCKS is 0, the program needs 1");
}

TEST(StorageLimits, OneLineTellsTheFirstOfSeveral)
{
    const QString line = missingStorage(storage(12, 2, 1), storage(0, 0, 0));
    EXPECT_TRUE(line.contains("BUFFER_BINDINGS"));
    EXPECT_FALSE(line.contains(QLatin1Char('\n')));
}
