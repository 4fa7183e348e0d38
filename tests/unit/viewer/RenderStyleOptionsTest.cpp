#include <viewer/cli/CommandLine.h>
#include <viewer/cli/UsageError.h>

#include <gtest/gtest.h>

// Eye-dome lighting and colours by height on the command line.

namespace {

RenderOptions parse(const QStringList& arguments)
{
    return std::get<RenderOptions>(
        parseCommandLine(QStringList{"render", "a.obj", "-o", "a.png"} + arguments));
}

QString styleRefusal(const QStringList& arguments)
{
    try {
        parse(arguments);
    } catch (const UsageError& error) {
        return error.text();
    }
    return {};
}

} // namespace

TEST(RenderStyleOptions, AreOffAtFirst)
{
    const RenderOptions options = parse({});
    EXPECT_EQ(options.eyeDome, EyeDomeShading::Off);
    EXPECT_FALSE(options.elevation.isAsked);
    EXPECT_FALSE(options.elevation.isDiscrete);
    EXPECT_FALSE(options.elevation.hasLegend);
}

TEST(RenderStyleOptions, EyeDomeShadings)
{
    EXPECT_EQ(parse({"--edl", "off"}).eyeDome, EyeDomeShading::Off);
    EXPECT_EQ(parse({"--edl", "positive"}).eyeDome, EyeDomeShading::Positive);
    EXPECT_EQ(parse({"--edl", "Negative"}).eyeDome, EyeDomeShading::Negative);
    EXPECT_EQ(styleRefusal({"--edl", "on"}), "--edl on: one of off, positive, negative is wanted");
    EXPECT_EQ(styleRefusal({"--edl", "off", "--edl", "positive"}), "--edl is given 2 times; give it once");
}

TEST(RenderStyleOptions, ElevationNeedsNoFile)
{
    EXPECT_TRUE(parse({"--elevation"}).elevation.isAsked);
    EXPECT_TRUE(parse({"--elevation"}).elevation.file.isEmpty());
    // what follows is an input, an option or nothing
    const RenderOptions options = parse({"--elevation", "town.ply"});
    EXPECT_EQ(options.files, QStringList({"a.obj", "town.ply"}));
    EXPECT_TRUE(options.elevation.file.isEmpty());
    EXPECT_TRUE(parse({"--elevation", "--legend"}).elevation.hasLegend);
}

TEST(RenderStyleOptions, ElevationTakesAFile)
{
    for (const QStringList& arguments :
         {QStringList{"--elevation", "levels.txt"}, {"--elevation=levels.txt"}}) {
        const RenderOptions options = parse(arguments);
        EXPECT_TRUE(options.elevation.isAsked);
        EXPECT_EQ(options.elevation.file, "levels.txt");
        EXPECT_EQ(options.files, QStringList("a.obj"));
    }
    EXPECT_EQ(parse({"--elevation=x=y.csv"}).elevation.file, "x=y.csv");
    EXPECT_EQ(styleRefusal({"--elevation="}), "--elevation= wants the name of a file");
    EXPECT_EQ(styleRefusal({"--elevation", "--elevation=b.txt"}),
              "--elevation is given 2 times; give it once");
}

TEST(RenderStyleOptions, NothingIsAnOptionAfterTwoDashes)
{
    const RenderOptions options = parse({"--", "--elevation"});
    EXPECT_EQ(options.files, QStringList({"a.obj", "--elevation"}));
    EXPECT_FALSE(options.elevation.isAsked);
}

TEST(RenderStyleOptions, BelongToElevation)
{
    const RenderOptions options = parse({"--elevation", "--discrete", "--legend"});
    EXPECT_TRUE(options.elevation.isDiscrete);
    EXPECT_TRUE(options.elevation.hasLegend);
    EXPECT_EQ(styleRefusal({"--discrete"}), "--discrete belongs to --elevation; add that");
    EXPECT_EQ(styleRefusal({"--legend"}), "--legend belongs to --elevation; add that");
}

TEST(RenderStyleOptions, MistypedOnesAreNamed)
{
    EXPECT_EQ(styleRefusal({"--elevatoin"}), "unknown option --elevatoin; did you mean --elevation?");
}

TEST(RenderStyleOptions, HelpShowsWhatMayBeLeftOut)
{
    const QString help = std::get<HelpRequest>(parseCommandLine({"render", "--help"})).text;
    EXPECT_TRUE(help.contains("  --elevation[=LEVELS.txt]  ")) << help.toStdString();
    EXPECT_TRUE(help.contains("  --edl NAME  ")) << help.toStdString();
}

TEST(RenderStyleOptions, LabelsShowNamesOrAnotherProperty)
{
    EXPECT_FALSE(parse({}).labels);
    EXPECT_EQ(parse({"--labels"}).labels, QString("name"));
    EXPECT_EQ(parse({"--labels", "owner"}).labels, QString("owner"));
    EXPECT_EQ(parse({"--labels=addr.street"}).labels, QString("addr.street"));
    EXPECT_EQ(parse({"--labels", "--edl", "off"}).labels, QString("name"));
    for (const char* file : {"b.geojson", "./b", "town/roads"}) {
        const RenderOptions options = parse({"--labels", file});
        EXPECT_EQ(options.labels, QString("name"));
        EXPECT_EQ(options.files, QStringList({"a.obj", file}));
    }
    EXPECT_EQ(styleRefusal({"--labels="}), "--labels= wants a word");
    EXPECT_EQ(styleRefusal({"--labels", "--labels=b"}), "--labels is given 2 times; give it once");
}
