#include <tests/support/ProgramList.h>

#include <Viewer3dModule/shaders/ShaderPreprocessor.h>
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

StorageLimits inFragments(const char* source)
{
    return storageDeclared(QString::fromLatin1(source), GL_FRAGMENT_SHADER);
}

void expectStorage(const StorageLimits& found, const StorageLimits& wanted)
{
    EXPECT_EQ(found.bindings, wanted.bindings);
    EXPECT_EQ(found.fragmentBlocks, wanted.fragmentBlocks);
    EXPECT_EQ(found.geometryBlocks, wanted.geometryBlocks);
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

TEST(StorageDeclared, SourceWithoutStorageNeedsNone)
{
    expectStorage(inFragments(""), storage(0, 0, 0));
    expectStorage(inFragments("layout(binding = 5) uniform sampler2D tex;\nint buffer_size;\n"
                              "layout(std430) buffer;\nvoid main() { int framebuffer = 1; }\n"),
                  storage(0, 0, 0));
}

TEST(StorageDeclared, HighestBindingAndNumberOfBlocksAreRead)
{
    const char* source = "layout(std430, binding = 9) readonly buffer one\n{\n    int a[];\n};\n"
                         "readonly layout(binding=3,std430) buffer two { int b[]; };\n"
                         "layout(std430) coherent restrict buffer three { int c; } named;\n";
    expectStorage(inFragments(source), storage(10, 3, 0));
    expectStorage(storageDeclared(source, GL_GEOMETRY_SHADER), storage(10, 0, 3));
    expectStorage(storageDeclared(source, GL_VERTEX_SHADER), storage(10, 0, 0));
}

TEST(StorageDeclared, BlockWithoutABindingIsAtTheFirst)
{
    expectStorage(inFragments("buffer alone { int a; };"), storage(1, 1, 0));
}

TEST(StorageDeclared, BindingOfAnotherDeclarationIsNotTheBlocks)
{
    expectStorage(inFragments("layout(binding = 7) uniform sampler2D tex;\nbuffer b { int a; };"),
                  storage(1, 1, 0));
}

TEST(StorageDeclared, CommentsDeclareNothing)
{
    expectStorage(inFragments("// layout(binding = 9) buffer one { int a; };\n"
                              "/* layout(binding = 8) buffer two\n { int b; }; */\n"
                              "layout(binding = /* not 7 */ 2) buffer three { int c; };\n"),
                  storage(3, 1, 0));
}

TEST(StorageDeclared, ConditionsOnNamesAreFollowed)
{
    const QString source = "#define A\n"
                           "#ifdef A\nlayout(binding = 1) buffer b1 { int a1; };\n"
                           "#ifdef B\nlayout(binding = 7) buffer b7 { int a7; };\n#endif\n"
                           "#else\nlayout(binding = 9) buffer b9 { int a9; };\n#endif\n"
                           "#ifndef A\nlayout(binding = 8) buffer b8 { int a8; };\n"
                           "#else\nlayout(binding = 2) buffer b2 { int a2; };\n#endif\n"
                           "#undef A\n"
                           "#ifdef A\nlayout(binding = 6) buffer b6 { int a6; };\n#endif\n"
                           "layout(binding = 0) buffer b0 { int a0; };\n";
    expectStorage(storageDeclared(source, GL_FRAGMENT_SHADER), storage(3, 3, 0));
    expectStorage(storageDeclared("#define B\n" + source, GL_FRAGMENT_SHADER), storage(8, 4, 0));
}

TEST(StorageDeclared, BranchesOfOtherConditionsAllCount)
{
    expectStorage(inFragments("#if FIRST > 2\nlayout(binding = 4) buffer a { int x; };\n"
                              "#elif SECOND\nlayout(binding = 6) buffer b { int y; };\n"
                              "#else\nlayout(binding = 5) buffer c { int z; };\n#endif\n"),
                  storage(7, 3, 0));
}

TEST(StorageDeclared, BodiesOfMacrosDoNotCount)
{
    expectStorage(inFragments("#define INIT(NAME) \\\n    layout(binding = 12) buffer NAME \\\n"
                              "    { int NAME##_data[]; };\nbuffer b { int a; };\n"),
                  storage(1, 1, 0));
}

TEST(StorageDeclared, StagesAreAddedAndTheHighestBindingKept)
{
    expectStorage(storageOfBoth(storage(3, 2, 1), storage(10, 4, 8)), storage(10, 6, 9));
    expectStorage(storageOfBoth(storage(10, 2, 1), storage(3, 4, 8)), storage(10, 6, 9));
}

TEST(StorageDeclared, OwnSourcesDeclareTheirBlocks)
{
    mapShaderPrefix();
    const auto declared = [](const char* name, unsigned stage, const std::vector<std::string>& defines) {
        return storageDeclared(preprocessShader(shaderPath(name), defines), stage);
    };
    expectStorage(declared("common.vertex", GL_VERTEX_SHADER, {}), storage(0, 0, 0));
    expectStorage(declared("mono.fragment", GL_FRAGMENT_SHADER, {}), storage(10, 2, 0));
    expectStorage(declared("mono.fragment", GL_FRAGMENT_SHADER, {"RX_USE_SPHERE_FENCE"}), storage(10, 2, 0));
    expectStorage(declared("mono.fragment", GL_FRAGMENT_SHADER, {"RX_USE_SWEPT_FENCE"}), storage(11, 3, 0));
    // Drivers without storage in geometry stages draw solid lines all the same where these have no texture.
    expectStorage(declared("SolidRegularLines.geom", GL_GEOMETRY_SHADER, {"RX_USE_PER_VERTEX_NORMAL"}),
                  storage(0, 0, 0));
    expectStorage(declared("SolidRegularLines.geom", GL_GEOMETRY_SHADER, {"RX_USE_PER_VERTEX_TEX_COORDS"}),
                  storage(12, 0, 1));
}
