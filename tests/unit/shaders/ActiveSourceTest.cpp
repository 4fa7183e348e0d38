#include <tests/support/ProgramList.h>

#include <Viewer3dModule/shaders/ShaderPreprocessor.h>
#include <Viewer3dModule/shaders/activeSource.h>

#include <gtest/gtest.h>

#include <QtCore/QDir>

TEST(ActiveSource, CodeStaysAsItIs)
{
    for (const char* source :
         {"", "\n", "int a;", "int a;\n  int b = 4 / 2;\n\tint c = a/b;\n", "#version 430\nint a;\n"})
        EXPECT_EQ(activeSource(source), source);
}

TEST(ActiveSource, CommentsGoAndLinesKeepTheirNumbers)
{
    EXPECT_EQ(activeSource("int a; // one\n// two\n  // three\nint b;\n"), "int a; \n\n\nint b;\n");
    EXPECT_EQ(activeSource("int/**/a;\n/* one\n two */int b;\nint c; /* three\n\n*/\nint d;\n"),
              "int a;\n int b;\n\nint c;  \n\n\nint d;\n");
    EXPECT_EQ(activeSource("int a; // no /* comment\nint b; /* nor // this */ int c;\n"),
              "int a; \nint b;   int c;\n");
    EXPECT_EQ(activeSource("// the end"), "");
    EXPECT_EQ(activeSource("// goes \\\n on\nint a;\n"), "\n\nint a;\n");
    EXPECT_EQ(activeSource("int a; /* has no end\nint b;\n"), "int a; /* has no end\nint b;\n");
}

TEST(ActiveSource, BlankLinesAreEmpty)
{
    EXPECT_EQ(activeSource("   \n\t\nint a;\n  \n"), "\n\nint a;\n\n");
}

TEST(ActiveSource, MacrosStayWhole)
{
    EXPECT_EQ(activeSource("#define A(x) \\\n    x + \\\n    1 // why\nint a;\n"),
              "#define A(x) \\\n    x + \\\n    1 \nint a;\n");
    EXPECT_EQ(activeSource("#define A /* one\n two */ 1\nint a;\n"), "#define A   1\n\nint a;\n");
    EXPECT_EQ(activeSource("#ifdef B\n#define A \\\n 1\n#endif\nint a;\n"), "#ifdef B\n\n\n#endif\nint a;\n");
}

TEST(ActiveSource, BranchesThatAreNotTakenGo)
{
    const QByteArray source = "#ifdef A\nint a;\n#else\nint b;\n#endif\n"
                              "#ifndef A\nint c;\n#else\nint d;\n#endif\nint e;\n";
    EXPECT_EQ(activeSource(source),
              "#ifdef A\n\n#else\nint b;\n#endif\n#ifndef A\nint c;\n#else\n\n#endif\nint e;\n");
    EXPECT_EQ(activeSource("#define A\n" + source),
              "#define A\n#ifdef A\nint a;\n#else\n\n#endif\n#ifndef A\n\n#else\nint d;\n#endif\nint e;\n");
    EXPECT_EQ(activeSource("#define A 1\n#undef A\n" + source),
              "#define A 1\n#undef A\n" + activeSource(source));
    EXPECT_EQ(activeSource("#define AB\n#define B A\n" + source),
              "#define AB\n#define B A\n" + activeSource(source));
}

TEST(ActiveSource, ConditionsWithinThemGoAsWell)
{
    EXPECT_EQ(
        activeSource("#ifdef A\n#ifndef B\n#define C\nint a;\n#else\nint b;\n#endif\n#if D\nint c;\n#elif E\n"
                     "#endif\nint d;\n#endif\n#ifdef C\nint e;\n#endif\nint f;\n"),
        "#ifdef A\n\n\n\n\n\n\n\n\n\n\n\n#endif\n#ifdef C\n\n#endif\nint f;\n");
    EXPECT_EQ(activeSource("#define A\n  # ifdef A\n#ifdef B\nint a;\n#endif\nint b;\n#endif\n"),
              "#define A\n  # ifdef A\n#ifdef B\n\n#endif\nint b;\n#endif\n");
}

TEST(ActiveSource, OfOtherConditionsAllBranchesStay)
{
    for (const char* source :
         {"#if A > 1\nint a;\n#elif B\nint b;\n#else\nint c;\n#endif\n",
          "#ifdef GL_ES\nint a;\n#else\nint b;\n#endif\n",
          "#ifndef __VERSION__\nint a;\n#else\nint b;\n#endif\n",
          // and of those on names that such a branch may have defined
          "#if A\n#define B\n#endif\n#ifdef B\nint a;\n#else\nint b;\n#endif\n",
          "#define B\n#if A\n#undef B\n#endif\n#ifndef B\nint a;\n#else\nint b;\n#endif\n"})
        EXPECT_EQ(activeSource(source), source);
}

TEST(ActiveSource, AnElifEndsABranchThatIsTaken)
{
    EXPECT_EQ(activeSource("#define A\n#ifdef A\nint a;\n#elif B\nint b;\n#else\nint c;\n#endif\nint d;\n"),
              "#define A\n#ifdef A\nint a;\n#elif B\n\n#else\n\n#endif\nint d;\n");
    const QByteArray unknown = "#elif B\nint b;\n#else\nint c;\n#endif\n";
    EXPECT_EQ(activeSource("#ifdef A\nint a;\n" + unknown), "#ifdef A\n\n" + unknown);
}

TEST(ActiveSource, EndsThatBeginNowhereStay)
{
    for (const char* source : {"#endif\nint a;\n", "#else\nint a;\n", "#ifdef\nint a;\n#endif\nint b;\n"})
        EXPECT_TRUE(activeSource(source).contains(source[1] == 'i' ? "int b;" : "int a;")) << source;
}

TEST(ActiveSource, WordsMayBeContinued)
{
    EXPECT_EQ(activeSource("#define \\\nA\n#ifdef \\\nA\nint a;\n#else\nint b;\n#endif\n"),
              "#define \\\nA\n#ifdef \\\nA\nint a;\n#else\n\n#endif\n");
    EXPECT_EQ(activeSource("#def\\\nine AB\n\\\n#ifndef A\\\nB\nint a;\n#endif\n"),
              "#def\\\nine AB\n\\\n#ifndef A\\\nB\n\n#endif\n");
    EXPECT_EQ(activeSource("#\v\fifdef\fA\nint a;\n#endif\n"), "#\v\fifdef\fA\n\n#endif\n");
}

TEST(ActiveSource, OwnSourcesLoseMuchOfTheirTextAndNoLine)
{
    mapShaderPrefix();
    const QStringList files =
        QDir(QStringLiteral("shader:Viewer3dModule")).entryList({QStringLiteral("*.glsl")});
    ASSERT_GT(files.size(), 40);
    int wholeSize = 0, activeSize = 0;
    for (const QString& file : files) {
        const QByteArray whole =
            preprocessShader(QStringLiteral("shader:Viewer3dModule/") + file, {"RX_COLORS_ONLY"}).toUtf8();
        const QByteArray active = activeSource(whole);
        EXPECT_EQ(active.count('\n'), whole.count('\n')) << qPrintable(file);
        EXPECT_LT(active.size(), whole.size()) << qPrintable(file);
        EXPECT_FALSE(active.contains("//")) << qPrintable(file);
        EXPECT_EQ(activeSource(active), active) << qPrintable(file);
        wholeSize += whole.size();
        activeSize += active.size();
    }
    EXPECT_LT(activeSize, wholeSize / 2);
}
