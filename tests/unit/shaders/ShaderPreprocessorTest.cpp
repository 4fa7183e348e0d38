#include <Viewer3dModule/shaders/ShaderPreprocessor.h>

#include <gtest/gtest.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTextStream>

namespace {

class ShaderPreprocessorTest : public ::testing::Test
{
protected:
    /// Writes a file and returns its path.
    QString write(const QString& name, const QByteArray& content)
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return file.fileName();
    }
    QString path(const QString& name) const { return m_folder.filePath(name); }
    QByteArray include(const QString& name) const { return "//#include \"" + path(name).toUtf8() + "\"\n"; }

private:
    QTemporaryDir m_folder;
};

TEST_F(ShaderPreprocessorTest, FileWithoutIncludesComesOutAsItIs)
{
    const QString file = write("a.glsl", "#version 430 core\n\n  int a; // x\n");
    EXPECT_EQ(preprocessShader(file, {}), "#version 430 core\n\n  int a; // x\n");
}

TEST_F(ShaderPreprocessorTest, LinesEndWithOneLineFeedWhateverTheFileHas)
{
    const QString file = write("a.glsl", "one\r\ntwo\nthree");
    EXPECT_EQ(preprocessShader(file, {}), "one\ntwo\nthree\n");
}

TEST_F(ShaderPreprocessorTest, DefinesFollowTheVersionLineInOrder)
{
    const QString file = write("a.glsl", "// head\n#version 430 core\nint a;\n");
    EXPECT_EQ(preprocessShader(file, {"RX_B", "RX_A 2"}),
              "// head\n#version 430 core\n#define RX_B\n#define RX_A 2\nint a;\n");
}

TEST_F(ShaderPreprocessorTest, FileWithoutVersionLineReceivesNoDefines)
{
    const QString file = write("a.glsl", "int a;\n");
    EXPECT_EQ(preprocessShader(file, {"RX_A"}), "int a;\n");
}

TEST_F(ShaderPreprocessorTest, VersionMustStartTheLineInLowerCase)
{
    const QString file = write("a.glsl", " #version 430\n#VERSION 430\n//#version 430\n");
    EXPECT_EQ(preprocessShader(file, {"RX_A"}), " #version 430\n#VERSION 430\n//#version 430\n");
}

TEST_F(ShaderPreprocessorTest, IncludeTakesThePlaceOfItsLine)
{
    write("b.glsl", "int b;\n");
    const QString file = write("a.glsl", "int a;\n" + include("b.glsl") + "int c;\n");
    EXPECT_EQ(preprocessShader(file, {}), "int a;\nint b;\nint c;\n");
}

TEST_F(ShaderPreprocessorTest, NestedIncludesExpandDepthFirst)
{
    write("d.glsl", "int d;\n");
    write("b.glsl", "int b1;\n" + include("d.glsl") + "int b2;\n");
    write("c.glsl", "int c;\n");
    const QString file = write("a.glsl", include("b.glsl") + include("c.glsl") + "int a;\n");
    EXPECT_EQ(preprocessShader(file, {}), "int b1;\nint d;\nint b2;\nint c;\nint a;\n");
}

TEST_F(ShaderPreprocessorTest, FileIncludedTwiceComesTwice)
{
    write("b.glsl", "int b;\n");
    const QString file = write("a.glsl", include("b.glsl") + include("b.glsl"));
    EXPECT_EQ(preprocessShader(file, {}), "int b;\nint b;\n");
}

TEST_F(ShaderPreprocessorTest, IncludedVersionLineGetsNoDefines)
{
    write("b.glsl", "#version 430\nint b;\n");
    const QString file = write("a.glsl", "#version 430\n" + include("b.glsl"));
    EXPECT_EQ(preprocessShader(file, {"RX_A"}), "#version 430\n#define RX_A\n#version 430\nint b;\n");
}

TEST_F(ShaderPreprocessorTest, IncludeLineMayBeIndentedUnquotedAndFollowedByAnything)
{
    write("b.glsl", "int b;\n");
    const QByteArray name = path("b.glsl").toUtf8();
    const QByteArray forms[] = {"   //#include   \"" + name + "\"\n", "//#include " + name + "\n",
                                "//#include \"" + name + "\" and more\n",
                                "//#include \"" + name + "\"//more\n"};
    for (const QByteArray& form : forms) {
        const QString file = write("a.glsl", form);
        EXPECT_TRUE(doesContainInclude(file)) << form.constData();
        EXPECT_EQ(preprocessShader(file, {}), "int b;\n") << form.constData();
    }
}

TEST_F(ShaderPreprocessorTest, OtherLinesAreNoIncludes)
{
    const QByteArray lines[] = {"//#include\n",
                                "// #include \"b.glsl\"\n",
                                "//#includes \"b.glsl\"\n",
                                "//#INCLUDE \"b.glsl\"\n",
                                "#include \"b.glsl\"\n",
                                "x //#include \"b.glsl\"\n",
                                "//#include \"\"\n",
                                "//#include ab\n"};
    for (const QByteArray& line : lines) {
        const QString file = write("a.glsl", line);
        EXPECT_FALSE(doesContainInclude(file)) << line.constData();
        EXPECT_EQ(preprocessShader(file, {}), QString::fromUtf8(line)) << line.constData();
    }
}

TEST_F(ShaderPreprocessorTest, ThreeCharactersNameAFile)
{
    const QString file = write("a.glsl", "//#include abc\n//#include \"\"\"\nint a;\n");
    EXPECT_TRUE(doesContainInclude(file));
    EXPECT_EQ(preprocessShader(file, {}), "int a;\n");
}

TEST_F(ShaderPreprocessorTest, MissingFilesContributeNothingAndAreNotReported)
{
    const QString file = write("a.glsl", "int a;\n" + include("missing.glsl"));
    EXPECT_EQ(preprocessShader(file, {}), "int a;\n");
    EXPECT_EQ(preprocessShader(path("missing.glsl"), {"RX_A"}), "");
    EXPECT_FALSE(doesContainInclude(path("missing.glsl")));
}

TEST_F(ShaderPreprocessorTest, IncludeIsFoundOnAnyLine)
{
    EXPECT_TRUE(doesContainInclude(write("a.glsl", "#version 430\nint a;\n" + include("b.glsl"))));
    EXPECT_FALSE(doesContainInclude(write("b.glsl", "#version 430\nint a;\n")));
    EXPECT_FALSE(doesContainInclude(write("empty.glsl", "")));
}

TEST_F(ShaderPreprocessorTest, SourceIsAppendedToTheStream)
{
    QString text;
    QTextStream stream(&text, QIODevice::ReadWrite);
    stream << "before\n";
    appendShaderSource(write("a.glsl", "int a;\n"), stream, {});
    stream << "after\n";
    stream.flush();
    EXPECT_EQ(text, "before\nint a;\nafter\n");
}

} // namespace
