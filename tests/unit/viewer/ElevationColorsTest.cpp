#include <viewer/ElevationColors.h>

#include <framework/ksp/CommonError.h>

#include <QtCore/QBuffer>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

namespace {

ElevationColors readText(const QByteArray& text, bool isDiscrete = false)
{
    QBuffer buffer;
    buffer.setData(text);
    buffer.open(QIODevice::ReadOnly);
    return ElevationColors::read(buffer, isDiscrete);
}

QString refusal(const QByteArray& text, bool isDiscrete = false)
{
    try {
        readText(text, isDiscrete);
    } catch (const ksp::CommonError& error) {
        return error.text();
    }
    return {};
}

QByteArray manyLevels(int count)
{
    QByteArray text;
    for (int i = 0; i < count; ++i)
        text += QByteArray::number(i) + " red\n";
    return text;
}

} // namespace

TEST(ElevationColors, FileOfPairs)
{
    const ElevationColors colors = readText("# metres above the sea\n\n  -3.5\tred  # the lake\n"
                                            "0 #00ff00\r\n1.25e2 #800000ff");
    const ElevationColors::Levels expected = {
        {-3.5, QColor(255, 0, 0)}, {0.0, QColor(0, 255, 0)}, {125.0, QColor(0, 0, 255, 128)}};
    EXPECT_EQ(colors.levels(), expected);
    EXPECT_FALSE(colors.isDiscrete());
    EXPECT_TRUE(readText("1 red", true).isDiscrete());
}

TEST(ElevationColors, ByteOrderMarkIsNoHeight)
{
    EXPECT_EQ(readText("\xEF\xBB\xBF"
                       "7 red\n")
                  .levels()
                  .front()
                  .first,
              7.0);
}

TEST(ElevationColors, BadLinesAreNamed)
{
    EXPECT_EQ(refusal("1 red\nblue\n"),
              "line 2: a height and a colour are wanted, for example 350.5 #40a060");
    EXPECT_EQ(refusal("1 red blue\n"), "line 1: a height and a colour are wanted, for example 350.5 #40a060");
    EXPECT_EQ(refusal("# one\nhigh red\n"), "line 2: \"high\" is no height");
    EXPECT_EQ(refusal("inf red\n"), "line 1: \"inf\" is no height");
    EXPECT_EQ(refusal("nan red\n"), "line 1: \"nan\" is no height");
    EXPECT_EQ(refusal("1,5 red\n"), "line 1: \"1,5\" is no height");
    EXPECT_EQ(refusal("1 bleu\n"), "line 1: \"bleu\" is no colour; a name or #rrggbb is wanted");
    EXPECT_EQ(refusal("1 red\n2 green\n2 blue\n"), "line 3: the heights must ascend, and 2 is not above 2");
    EXPECT_EQ(refusal("1.5 red\n-2 green\n"), "line 2: the heights must ascend, and -2 is not above 1.5");
    EXPECT_EQ(refusal(QByteArray(1001, 'x')), "line 1: the line is too long");
    EXPECT_EQ(refusal(""), "there are no levels in it");
    EXPECT_EQ(refusal("# nothing\n"), "there are no levels in it");
}

TEST(ElevationColors, AsManyAsTheShadersHold)
{
    EXPECT_EQ(readText(manyLevels(256)).levels().size(), 256u);
    EXPECT_EQ(refusal(manyLevels(257)), "line 257: there are more than 256 levels");
    EXPECT_EQ(readText(manyLevels(128), true).levels().size(), 128u);
    EXPECT_EQ(refusal(manyLevels(129), true), "line 129: there are more than 128 levels");
}

TEST(ElevationColors, ErrorsNameTheFile)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("levels.txt");
    const auto refusalOf = [&path] {
        try {
            ElevationColors::read(path, false);
        } catch (const ksp::CommonError& error) {
            return error.text();
        }
        return QString();
    };
    EXPECT_EQ(refusalOf(), path + ": cannot be read: No such file or directory");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("x y");
    file.close();
    EXPECT_EQ(refusalOf(), path + ": line 1: \"x\" is no height");
}

TEST(ElevationColors, BetweenLevelsAndBeyondThem)
{
    const ElevationColors colors = readText("10 #000000\n20 #0a6400\n40 #ffffff\n");
    EXPECT_EQ(colors.at(-100.0), QColor(0, 0, 0));
    EXPECT_EQ(colors.at(10.0), QColor(0, 0, 0));
    EXPECT_EQ(colors.at(15.0), QColor(5, 50, 0));
    EXPECT_EQ(colors.at(20.0), QColor(10, 100, 0));
    EXPECT_EQ(colors.at(30.0), QColor(133, 178, 128)); // halves go up
    EXPECT_EQ(colors.at(40.0), QColor(255, 255, 255));
    EXPECT_EQ(colors.at(1e9), QColor(255, 255, 255));
}

TEST(ElevationColors, DiscreteLevelsHoldUpToTheNext)
{
    const ElevationColors colors = readText("10 red\n20 lime\n40 blue\n", true);
    EXPECT_EQ(colors.at(-100.0), QColor(255, 0, 0));
    EXPECT_EQ(colors.at(19.999), QColor(255, 0, 0));
    EXPECT_EQ(colors.at(20.0), QColor(0, 255, 0));
    EXPECT_EQ(colors.at(39.999), QColor(0, 255, 0));
    EXPECT_EQ(colors.at(40.0), QColor(0, 0, 255));
    EXPECT_EQ(colors.at(1e9), QColor(0, 0, 255));
}

TEST(ElevationColors, BuiltInTableCoversTheRange)
{
    const ElevationColors smooth = ElevationColors::over(300.0, 390.0, false);
    ASSERT_EQ(smooth.levels().size(), 7u);
    EXPECT_EQ(smooth.levels().front().first, 300.0);
    EXPECT_EQ(smooth.levels().back().first, 390.0);
    EXPECT_DOUBLE_EQ(smooth.levels()[1].first, 315.0);

    const ElevationColors steps = ElevationColors::over(300.0, 370.0, true);
    ASSERT_EQ(steps.levels().size(), 7u);
    EXPECT_EQ(steps.levels().front().first, 300.0);
    EXPECT_DOUBLE_EQ(steps.levels().back().first, 360.0); // up to 370
    EXPECT_TRUE(steps.isDiscrete());
}

TEST(ElevationColors, OneHeightGetsARange)
{
    const ElevationColors colors = ElevationColors::over(5.0, 5.0, false);
    EXPECT_EQ(colors.levels().front().first, 4.5);
    EXPECT_EQ(colors.levels().back().first, 5.5);
}
