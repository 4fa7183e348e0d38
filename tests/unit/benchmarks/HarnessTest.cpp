#include <benchmarks/harness/Options.h>
#include <benchmarks/harness/PairedRuns.h>
#include <benchmarks/harness/ResultTable.h>
#include <benchmarks/harness/comparePictures.h>
#include <benchmarks/harness/quantileOf.h>

#include <gtest/gtest.h>

#include <QtCore/QProcess>

#include <stdexcept>

namespace {

Result pairedResult(const QString& key, qint64 size, double ratio)
{
    Result result;
    result.key = key;
    result.work = QStringLiteral("lines");
    result.size = size;
    result.goal = 1.1;
    result.processor = {10.0 * ratio, 10.0, ratio, ratio - 0.05, ratio + 0.05};
    result.wall = {5.0 * ratio, 5.0, ratio, ratio, ratio};
    result.pairs = 7;
    return result;
}

Result memoryResult(double bytes)
{
    Result result;
    result.kind = Result::Single;
    result.key = QStringLiteral("M");
    result.size = 100000;
    result.goal = 700.0;
    result.unit = QStringLiteral("B");
    result.processor.ours = bytes;
    return result;
}

Result growthResult(const QString& key, qint64 size, double microseconds)
{
    Result result;
    result.kind = Result::Growth;
    result.key = key;
    result.size = size;
    result.unit = QStringLiteral("µs");
    result.processor.ours = microseconds;
    return result;
}

QString documentWith(const std::vector<Result>& results)
{
    const QString empty = "# Title\n<!-- results: begin -->\nold\n<!-- results: end -->\nrest\n";
    return ResultTable::replaceTables(empty,
                                      ResultTable::toMarkdown(results, {"driver", "processor", "day", "id"}));
}

PairedRuns::Side lasting(std::vector<double> wall, double processor, std::string& order, char name)
{
    auto next = std::make_shared<std::size_t>(0);
    return [wall = std::move(wall), processor, next, &order, name] {
        order += name;
        return Lap{wall[(*next)++ % wall.size()], processor};
    };
}

QImage picture(int covered, int different = 0)
{
    QImage image(100, 100, QImage::Format_RGBA8888);
    image.fill(Qt::black);
    for (int i = 0; i < covered; ++i)
        image.setPixelColor(i % 100, i / 100, i < different ? QColor(200, 0, 0) : QColor(100, 100, 100));
    return image;
}

std::string refusalOf(const QStringList& arguments)
{
    try {
        Options::of(arguments);
    } catch (const std::invalid_argument& wrong) {
        return wrong.what();
    }
    return {};
}

} // namespace

TEST(Quantiles, LieBetweenTheSortedValues)
{
    EXPECT_DOUBLE_EQ(quantileOf({3.0, 1.0, 2.0}, 0.5), 2.0);
    EXPECT_DOUBLE_EQ(quantileOf({4.0, 1.0, 2.0, 3.0}, 0.5), 2.5);
    EXPECT_DOUBLE_EQ(quantileOf({4.0, 1.0, 2.0, 3.0, 5.0}, 0.25), 2.0);
    EXPECT_DOUBLE_EQ(quantileOf({7.0}, 0.75), 7.0);
    EXPECT_DOUBLE_EQ(quantileOf({}, 0.5), 0.0);
}

TEST(PairedRunsTest, TakeTurnsAndDropTheWarmUps)
{
    std::string order;
    const PairedRuns runs(lasting({90.0, 2.0, 4.0, 3.0}, 1.0, order, 'o'),
                          lasting({80.0, 1.0, 1.0, 2.0}, 2.0, order, 'p'), {1, 3, 3, 0.0});
    EXPECT_EQ(order, "op"
                     "op"
                     "po"
                     "op");
    EXPECT_EQ(runs.pairs(), 3);
    EXPECT_DOUBLE_EQ(runs.wall().ours, 3.0);
    EXPECT_DOUBLE_EQ(runs.wall().plain, 1.0);
    EXPECT_DOUBLE_EQ(runs.wall().ratio, 2.0); // of 2, 4 and 1.5
    EXPECT_DOUBLE_EQ(runs.wall().low, 1.75);
    EXPECT_DOUBLE_EQ(runs.wall().high, 3.0);
    EXPECT_DOUBLE_EQ(runs.processor().ratio, 0.5);
}

TEST(PairedRunsTest, OneSideAloneIsAskedFor)
{
    std::string order;
    const PairedRuns runs(lasting({5.0}, 4.0, order, 'o'), lasting({6.0}, 4.0, order, 'p'),
                          {1, 2, 2, 0.0, PairedRuns::PlainAlone});
    EXPECT_EQ(order, "ppp");
    EXPECT_DOUBLE_EQ(runs.wall().ours, 6.0);
}

TEST(PairedRunsTest, OneSideHasNoRatio)
{
    std::string order;
    const PairedRuns runs(lasting({5.0}, 4.0, order, 'o'), {0, 2, 2, 0.0});
    EXPECT_EQ(order, "oo");
    EXPECT_DOUBLE_EQ(runs.wall().ours, 5.0);
    EXPECT_DOUBLE_EQ(runs.wall().ratio, 0.0);
}

TEST(ResultTableTest, FiguresAreReadAsTheyWereWritten)
{
    const QString document = documentWith({pairedResult("B1", 1000, 1.25), pairedResult("B1", 100000, 2.0),
                                           memoryResult(1740.0), growthResult("drawn", 1000, 3.0)});
    EXPECT_TRUE(document.startsWith("# Title\n"));
    EXPECT_TRUE(document.endsWith("\nrest\n"));
    EXPECT_FALSE(document.contains("old"));
    const ResultTable::Figures expected = {
        {{"B1", 1000}, 1.25}, {{"B1", 100000}, 2.0}, {{"M", 100000}, 1740.0}};
    EXPECT_EQ(ResultTable::figuresOf(document), expected);
    EXPECT_TRUE(ResultTable::replaceTables("no marks", "tables").isNull());
}

TEST(ResultTableTest, GoalsAreMetOrMissed)
{
    EXPECT_TRUE(pairedResult("B1", 1000, 1.1).isMet());
    EXPECT_FALSE(pairedResult("B1", 1000, 1.11).isMet());
    EXPECT_FALSE(memoryResult(701.0).isMet());
    Result wrong = pairedResult("B1", 1000, 0.5);
    wrong.problem = "the picture is empty";
    EXPECT_FALSE(wrong.isMet());
    EXPECT_TRUE(documentWith({wrong}).contains("| the picture is empty |"));
    EXPECT_TRUE(documentWith({pairedResult("B1", 1000, 1.2)}).contains("| 1.10 | missed |"));
}

TEST(ResultTableTest, GrowthTellsThePowersOfAllStepsAndOfTheLastOne)
{
    // ten times the items, each in twice the time: the whole takes 20 times as long, 10 to the power 1.30;
    // a hundred times the items, each in two thirds of the time: 66.7 times as long, 100 to the power 0.91
    const QString table = documentWith({growthResult("drawn", 1000, 9.0), growthResult("drawn", 10000, 3.0),
                                        growthResult("drawn", 100000, 6.0)});
    EXPECT_TRUE(table.contains("| 100,000 | power | of the last step |")) << qPrintable(table);
    EXPECT_TRUE(table.contains("|---|---|--:|--:|--:|--:|--:|")) << qPrintable(table);
    EXPECT_TRUE(table.contains("| drawn |  | 9.00 | 3.00 | 6.00 | 0.91 | 1.30 |")) << qPrintable(table);
}

TEST(ResultTableTest, OneSizeHasNoPower)
{
    const QString table = documentWith({growthResult("drawn", 1000, 9.0)});
    EXPECT_TRUE(table.contains("| drawn |  | 9.00 | – | – |")) << qPrintable(table);
}

TEST(ResultTableTest, WhatHasNoRecordIsNamed)
{
    const ResultTable::Figures recorded = {{{"B1", 1000}, 1.0}};
    const std::vector<Result> results = {pairedResult("B1", 1000, 1.0), pairedResult("B1", 10000, 1.0),
                                         growthResult("drawn", 1000, 9.0), memoryResult(700.0)};
    EXPECT_EQ(ResultTable::unrecorded(results, recorded), QStringList({"B1/10000", "M/100000"}));
    EXPECT_TRUE(ResultTable::isAnyCompared(results, recorded));
    EXPECT_FALSE(ResultTable::isAnyCompared({results.begin() + 1, results.end()}, recorded));
    EXPECT_FALSE(ResultTable::isAnyCompared({growthResult("B1", 1000, 1.0)}, recorded))
        << "times are the machine's";
}

TEST(ResultTableTest, OnlyWhatIsMoreThanATenthAboveIsAFinding)
{
    const ResultTable::Figures recorded = {{{"B1", 1000}, 1.0}, {{"M", 100000}, 1000.0}};
    EXPECT_TRUE(
        ResultTable::findings({pairedResult("B1", 1000, 1.09), memoryResult(1099.0)}, recorded).isEmpty());
    EXPECT_EQ(ResultTable::findings({pairedResult("B1", 1000, 1.11), memoryResult(1101.0)}, recorded),
              QStringList({"B1/1000: 1.11, more than a tenth above the recorded 1.00",
                           "M/100000: 1101.00, more than a tenth above the recorded 1000.00"}));
    EXPECT_TRUE(ResultTable::findings({pairedResult("B2", 1000, 9.0)}, recorded).isEmpty())
        << "nothing is recorded";
    Result wrong = pairedResult("B1", 1000, 0.5);
    wrong.problem = "the picture is empty";
    EXPECT_EQ(ResultTable::findings({wrong}, recorded), QStringList("B1/1000: the picture is empty"));
}

TEST(Pictures, AreTheSameUpToTheShareThatIsAllowed)
{
    EXPECT_EQ(comparePictures(picture(1000), picture(1000), 0.0), QString());
    EXPECT_EQ(comparePictures(picture(1000), picture(1000, 5), 0.005), QString());
    EXPECT_EQ(comparePictures(picture(1000), picture(1000, 6), 0.005),
              QStringLiteral("the pictures differ in 6 of 1000 covered pixels"));
    EXPECT_EQ(comparePictures(picture(0), picture(0), 0.005), QStringLiteral("the picture is empty"));
    EXPECT_EQ(comparePictures(picture(0), picture(1000), 0.005), QStringLiteral("the picture is empty"));
    EXPECT_EQ(comparePictures(picture(9), QImage(), 0.0),
              QStringLiteral("the pictures are of different sizes"));
}

TEST(Pictures, ShowTheOneItemThatHasAColour)
{
    const QColor color(200, 0, 0);
    EXPECT_EQ(pixelsOf(picture(1000, 30), color), 30);
    EXPECT_EQ(pixelsOf(picture(1000, 30), QColor(202, 2, 2)), 30);
    EXPECT_EQ(pixelsOf(picture(1000, 30), QColor(203, 0, 0)), 0);
    EXPECT_EQ(compareColored(picture(1000, 35), picture(1000, 30), color), QString()) << "3 and 2 more";
    EXPECT_EQ(compareColored(picture(1000, 36), picture(1000, 30), color),
              QStringLiteral("of #c80000 our picture shows 36 pixels, the plain one 30"));
    EXPECT_FALSE(compareColored(picture(1000, 24), picture(1000, 30), color).isEmpty());
    EXPECT_FALSE(compareColored(picture(1000, 0), picture(1000, 2), color).isEmpty());
    EXPECT_FALSE(compareColored(picture(1000, 0), picture(1000, 0), color).isEmpty());
}

TEST(BenchmarkOptions, AreReadOrRefusedWithALine)
{
    const Options options = Options::of({"--quick", "--filter", "B1/", "--document", "d.md", "--check"});
    EXPECT_TRUE(options.isQuick && options.checks && !options.writes);
    EXPECT_EQ(options.filter, "B1/");
    EXPECT_EQ(Options::of({"--child", "memory", "10"}).child, QStringList({"memory", "10"}));
    EXPECT_EQ(refusalOf({"--fast"}), "unknown option '--fast'");
    EXPECT_EQ(refusalOf({"--filter"}), "--filter needs a value");
    EXPECT_EQ(refusalOf({"--filter", "("}), "'(' is no regular expression");
    EXPECT_EQ(Options::of({"--alone", "plain"}).sides, PairedRuns::PlainAlone);
    EXPECT_EQ(refusalOf({"--alone", "both"}), "--alone takes ours or plain");
    EXPECT_EQ(refusalOf({"--check"}), "--document is missing");
    EXPECT_EQ(refusalOf({"--write", "--quick", "--document", "d.md"}),
              "--write records a whole run and goes with no other option");
}

TEST(BenchmarkScript, RefusesWhatItDoesNotKnowBeforeItDoesAnything)
{
    QProcess script;
    script.start(QStringLiteral(V3D_SOURCE_DIR "/benchmark.sh"), {"--quick", "--fast"});
    ASSERT_TRUE(script.waitForFinished());
    EXPECT_EQ(script.exitCode(), 2);
    EXPECT_EQ(script.readAllStandardError().count('\n'), 1);
    EXPECT_EQ(script.readAllStandardOutput(), QByteArray());
}
