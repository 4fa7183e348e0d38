#include <viewer/cli/CommandLine.h>
#include <viewer/cli/CommandParser.h>
#include <viewer/cli/UsageError.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

namespace {

RenderOptions parseRender(const QStringList& arguments)
{
    return std::get<RenderOptions>(
        parseCommandLine(QStringList{"render", "a.obj", "-o", "a.png"} + arguments));
}

/// What the wrong arguments are answered with; empty when they are not refused.
QString refusal(const QStringList& arguments)
{
    try {
        parseCommandLine(arguments);
    } catch (const UsageError& error) {
        return error.text();
    }
    return {};
}

QString renderRefusal(const QStringList& arguments)
{
    return refusal(QStringList{"render", "a.obj", "-o", "a.png"} + arguments);
}

} // namespace

TEST(CommandLine, NoArgumentsOpenAnEmptyWindow)
{
    EXPECT_TRUE(std::get<WindowOptions>(parseCommandLine({})).files.isEmpty());
}

TEST(CommandLine, FilesOpenInAWindow)
{
    const Command command = parseCommandLine({"one.obj", "folder/two.ply"});
    EXPECT_EQ(std::get<WindowOptions>(command).files, QStringList({"one.obj", "folder/two.ply"}));
}

TEST(CommandLine, RenderHasItsDefaults)
{
    const RenderOptions options = parseRender({});
    EXPECT_EQ(options.files, QStringList("a.obj"));
    EXPECT_EQ(options.output, "a.png");
    EXPECT_FALSE(options.camera.size);
    EXPECT_EQ(options.camera.view, StandardView::Iso);
    EXPECT_EQ(options.camera.projection, IProjection::Central);
    EXPECT_FALSE(options.camera.position);
    EXPECT_FALSE(options.background.isValid());
}

TEST(CommandLine, RenderTakesAllItsOptions)
{
    const RenderOptions options = parseRender(
        {"b.ply", "--size", "640x480", "--view=left", "--projection", "parallel", "--background", "#102030"});
    EXPECT_EQ(options.files, QStringList({"a.obj", "b.ply"}));
    EXPECT_EQ(options.camera.size, QSize(640, 480));
    EXPECT_EQ(options.camera.view, StandardView::Left);
    EXPECT_EQ(options.camera.projection, IProjection::Parallel);
    EXPECT_EQ(options.background, QColor(0x10, 0x20, 0x30));
}

TEST(CommandLine, EyeTakesNegativeAndLargeNumbersExactly)
{
    const RenderOptions options =
        parseRender({"--eye", "-2700000.001,1200000.0005,-4e2", "--target", "0,0,0", "--up", "0,1,0"});
    ASSERT_TRUE(options.camera.position);
    EXPECT_EQ(options.camera.position->eye, glm::dvec3(-2700000.001, 1200000.0005, -400.0));
    EXPECT_EQ(options.camera.position->target, glm::dvec3(0.0));
    EXPECT_EQ(options.camera.position->up, glm::dvec3(0.0, 1.0, 0.0));
}

TEST(CommandLine, EveryStandardViewHasItsName)
{
    const QStringList names = {"iso", "top", "bottom", "front", "back", "left", "right"};
    for (int i = 0; i < names.size(); ++i)
        EXPECT_EQ(parseRender({"--view", names[i]}).camera.view, static_cast<StandardView>(i));
}

TEST(CommandLine, WrongViewNamesTheRightOnes)
{
    EXPECT_EQ(renderRefusal({"--view", "north"}),
              "--view north: one of iso, top, bottom, front, back, left, right is wanted");
}

TEST(CommandLine, WrongProjectionNamesTheRightOnes)
{
    EXPECT_EQ(renderRefusal({"--projection", "fisheye"}),
              "--projection fisheye: one of central, parallel is wanted");
}

TEST(CommandLine, UnknownOptionNamesTheNearest)
{
    EXPECT_EQ(renderRefusal({"--siez", "1x1"}), "unknown option --siez; did you mean --size?");
    EXPECT_EQ(renderRefusal({"--back", "red"}), "unknown option --back; did you mean --background?");
}

TEST(CommandLine, UnknownOptionWithoutANearOneTellsTheUsage)
{
    EXPECT_EQ(renderRefusal({"--zzzzzzzzzz"}),
              "unknown option --zzzzzzzzzz; usage: viewer3d render FILES... -o OUT.png [OPTIONS]");
}

TEST(CommandLine, DepthHasTheCameraOfRenderAndItsOwnFiles)
{
    const DepthOptions options = std::get<DepthOptions>(
        parseCommandLine({"depth", "a.obj", "-o", "a.TIFF", "--preview", "a.png", "--json", "c.json",
                          "--size", "640x480", "--view", "left", "--point-size", "3"}));
    EXPECT_EQ(options.files, QStringList("a.obj"));
    EXPECT_EQ(options.map.output, "a.TIFF");
    EXPECT_EQ(options.map.preview, "a.png");
    EXPECT_EQ(options.map.cameraFile, "c.json");
    EXPECT_EQ(options.map.outputs(), QStringList({"a.TIFF", "a.png", "c.json"}));
    EXPECT_EQ(options.map.camera.size, QSize(640, 480));
    EXPECT_EQ(options.map.camera.view, StandardView::Left);
    EXPECT_EQ(options.pointSize, 3.0f);
}

TEST(CommandLine, DepthWritesOneFileUnlessAskedForMore)
{
    const DepthOptions options = std::get<DepthOptions>(parseCommandLine({"depth", "a.obj", "-o", "a.pfm"}));
    EXPECT_EQ(options.map.outputs(), QStringList("a.pfm"));
    EXPECT_FALSE(options.pointSize);
}

TEST(CommandLine, DepthFromAboveHasAWorldFileBesideTiff)
{
    for (const auto& [output, world] : {std::pair("a.tif", "a.tfw"), {"a.tiff", "a.tfw"}, {"a.pfm", ""}}) {
        const Command command = parseCommandLine(
            {"depth", "a.obj", "-o", output, "--view", "top", "--projection", "parallel", "--gsd", "0.5"});
        EXPECT_EQ(std::get<DepthOptions>(command).map.worldFile(), world);
    }
}

TEST(CommandLine, DepthOfSeveralCamerasMakesNamesOfPatterns)
{
    const QStringList start = {"depth", "a.obj", "--cameras", "list.json"};
    const DepthOptions options = std::get<DepthOptions>(
        parseCommandLine(start + QStringList{"-o", "{name}.tif", "--json", "out/{name}.json"}));
    EXPECT_EQ(options.cameras, "list.json");
    EXPECT_EQ(options.map.output, "{name}.tif");
    EXPECT_EQ(options.map.cameraFile, "out/{name}.json");
    EXPECT_EQ(std::get<DepthOptions>(parseCommandLine(start)).map.output, "");
    EXPECT_EQ(refusal(start + QStringList{"-o", "a.tif"}),
              "--output a.tif: of several cameras the names need {name}, for example --output {name}.pfm");
    EXPECT_EQ(refusal(start + QStringList{"-o", "{name}.tif", "--preview", "a.png"}),
              "--preview a.png: of several cameras the names need {name}, for example --preview {name}.png");
    EXPECT_EQ(refusal(start + QStringList{"--size", "3x3"}),
              "--cameras and --size exclude each other; the list says it for each camera");
}

TEST(CommandLine, DepthHasNoBackground)
{
    EXPECT_TRUE(refusal({"depth", "a.obj", "-o", "a.pfm", "--background", "red"})
                    .startsWith("unknown option --background"));
}

TEST(CommandLine, OptionsThatAreNotThereYetAreUnknown)
{
    EXPECT_EQ(renderRefusal({"--contours", "x"}),
              "unknown option --contours; usage: viewer3d render FILES... -o OUT.png [OPTIONS]");
}

TEST(CommandLine, CommandsThatAreNotThereYetAreUnknown)
{
    for (const char* command : {"slice", "convert"})
        EXPECT_TRUE(refusal({command, "a.obj"}).contains("is neither a command nor a file")) << command;
}

TEST(CommandLine, MistypedCommandNamesTheNearest)
{
    EXPECT_EQ(refusal({"redner", "a.obj"}), "redner is neither a command nor a file; did you mean render?");
}

// Options that the command would have do not distract from what is wrong.
TEST(CommandLine, MistypedCommandNamesTheNearestWhateverFollows)
{
    const QString expected = "rendr is neither a command nor a file; did you mean render?";
    EXPECT_EQ(refusal({"rendr", "x.obj", "-o", "y.png"}), expected);
    EXPECT_EQ(refusal({"rendr", "--size", "640x480"}), expected);
    EXPECT_EQ(refusal({"rendr", "--nonsense"}), expected);
    EXPECT_EQ(refusal({"rendr", "--help"}), expected);
}

TEST(CommandLine, WordThatIsNearNoCommandGetsTheListOfThem)
{
    EXPECT_EQ(refusal({"something", "-o", "y.png"}),
              "something is neither a command nor a file; the commands are render, depth, select, export, "
              "info, plugins");
}

TEST(CommandLine, WordThatIsAFileIsAFile)
{
    const QTemporaryDir folder;
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QFile(folder.filePath("rendr")).open(QIODevice::WriteOnly));
    ASSERT_TRUE(QDir::setCurrent(folder.path()));
    const Command command = parseCommandLine({"rendr", "x.obj"});
    const QString refused = refusal({"rendr", "x.obj", "-o", "y.png"});
    QDir::setCurrent(before);
    EXPECT_EQ(std::get<WindowOptions>(command).files, QStringList({"rendr", "x.obj"}));
    EXPECT_EQ(refused, "unknown option -o; usage: viewer3d [FILES...] [OPTIONS]");
}

TEST(CommandLine, WordsWithADotOrASlashAreFilesEvenWhereThereAreNone)
{
    for (const char* word : {"rendr.obj", "./rendr", "rendr/"})
        EXPECT_EQ(refusal({word, "-o", "y.png"}), "unknown option -o; usage: viewer3d [FILES...] [OPTIONS]")
            << word;
}

TEST(CommandLine, MissingValueIsRefused)
{
    EXPECT_TRUE(renderRefusal({"--size"}).contains("--size"));
}

TEST(CommandLine, OptionGivenTwiceIsRefused)
{
    EXPECT_EQ(renderRefusal({"--view", "top", "--view", "left"}), "--view is given 2 times; give it once");
}

TEST(CommandLine, RenderNeedsFilesAndOutput)
{
    EXPECT_TRUE(refusal({"render", "-o", "a.png"}).contains("no files"));
    EXPECT_TRUE(refusal({"render", "a.obj"}).contains("no output"));
}

TEST(CommandLine, OutputMustBePng)
{
    EXPECT_EQ(refusal({"render", "a.obj", "-o", "a.jpg"}),
              "-o a.jpg: render writes PNG and TIFF; the name must end in .png or .tif or .tiff");
}

class WrongSize : public ::testing::TestWithParam<const char*>
{
};

TEST_P(WrongSize, IsRefusedWithTheReason)
{
    const QString text = renderRefusal({"--size", GetParam()});
    EXPECT_TRUE(text.startsWith(QString("--size %1: ").arg(GetParam()))) << qPrintable(text);
}

INSTANTIATE_TEST_SUITE_P(CommandLine, WrongSize,
                         ::testing::Values("0x100", "100x0", "-5x100", "1000001x1", "1x1000001",
                                           "65537x65536", "100000x100000", "100", "100x", "axb", "1x2x3",
                                           "99999999999x1", "1.5x2"));

TEST(CommandLine, SizeBeyondTheLimitIsRefusedWithTheMemoryThatItWouldTake)
{
    EXPECT_EQ(
        renderRefusal({"--size", "100000x100000"}),
        "--size 100000x100000: such a picture takes 37.3 GiB of memory wherever it is opened, 4 bytes a "
        "pixel; at most 16 GiB can be asked for");
}

TEST(CommandLine, LargeSizesAreTaken)
{
    for (const QSize& size : {QSize(1, 1), QSize(20000, 20000), QSize(65536, 65536), QSize(1000000, 1)})
        EXPECT_EQ(parseRender({"--size", QString("%1x%2").arg(size.width()).arg(size.height())}).camera.size,
                  size);
}

TEST(CommandLine, GsdBelongsToAPictureFromAbove)
{
    const QStringList above = {"--view", "top", "--projection", "parallel"};
    EXPECT_EQ(parseRender(above + QStringList{"--gsd", "0.05"}).camera.gsd, 0.05);
    const QString expected = "--gsd belongs to a picture from above: --view top and --projection parallel";
    EXPECT_EQ(renderRefusal({"--gsd", "1"}), expected);
    EXPECT_EQ(renderRefusal({"--gsd", "1", "--view", "top"}), expected);
    EXPECT_EQ(renderRefusal({"--gsd", "1", "--projection", "parallel"}), expected);
    EXPECT_EQ(renderRefusal({"--gsd", "1", "--view", "bottom", "--projection", "parallel"}), expected);
    EXPECT_EQ(
        renderRefusal({"--gsd", "1", "--projection", "parallel", "--eye", "0,0,9", "--target", "0,0,0"}),
        expected);
}

TEST(CommandLine, FieldOfViewIsThatOfACentralProjection)
{
    EXPECT_FALSE(parseRender({}).camera.fov);
    EXPECT_DOUBLE_EQ(parseRender({"--fov", "60"}).camera.fov.value(), 3.14159265358979323846 / 3.0);
    EXPECT_EQ(renderRefusal({"--fov", "60", "--projection", "parallel"}),
              "--fov belongs to the central projection");
    for (const char* angle : {"0", "-5", "170.5", "180"})
        EXPECT_EQ(renderRefusal({"--fov", angle}),
                  QString("--fov %1: degrees are wanted, at least 0.01 and at most 170").arg(angle));
}

TEST(CommandLine, GsdIsALength)
{
    const QStringList above = {"--view", "top", "--projection", "parallel", "--gsd"};
    for (const char* length : {"0", "-1", "1e13"})
        EXPECT_TRUE(renderRefusal(above + QStringList(length)).contains("the length of a pixel is wanted"))
            << length;
    for (const char* length : {"nan", "inf", "1m", ""})
        EXPECT_EQ(renderRefusal(above + QStringList(length)),
                  QString("--gsd %1: a number is wanted").arg(length));
}

TEST(CommandLine, CamerasMakeNamesOfAPattern)
{
    const RenderOptions options = std::get<RenderOptions>(
        parseCommandLine({"render", "a.obj", "--cameras", "list.json", "-o", "out/{name}.png"}));
    EXPECT_EQ(options.cameras, "list.json");
    EXPECT_EQ(options.output, "out/{name}.png");
    EXPECT_EQ(refusal({"render", "a.obj", "--cameras", "list.json", "-o", "a.png"}),
              "-o a.png: of several cameras the names need {name}, for example -o {name}.png");
    EXPECT_EQ(refusal({"render", "a.obj", "--cameras", "list.json", "-o", "{name}.jpg"}),
              "-o {name}.jpg: render writes PNG and TIFF; the name must end in .png or .tif or .tiff");
}

TEST(CommandLine, CamerasMayNameTheirOutputsThemselves)
{
    EXPECT_EQ(std::get<RenderOptions>(parseCommandLine({"render", "a.obj", "--cameras", "list.json"})).output,
              "");
    EXPECT_EQ(refusal({"render", "a.obj", "--cameras", ""}), "--cameras wants the name of a file");
    EXPECT_EQ(refusal({"render", "a.obj", "--cameras", "l.json", "-o", ""}),
              "render: no output; add -o OUT.png");
}

TEST(CommandLine, CamerasExcludeTheOptionsOfOne)
{
    for (const char* option : {"size", "view", "projection", "eye", "target", "up", "fov", "gsd"})
        EXPECT_EQ(
            refusal({"render", "a.obj", "--cameras", "l.json", QString("--") + option, "1"}),
            QString("--cameras and --%1 exclude each other; the list says it for each camera").arg(option));
}

TEST(CommandLine, WrongPointsAreRefused)
{
    for (const char* point : {"1,2", "1,2,3,4", "a,b,c", "1,,3", "", "nan,0,0", "inf,0,0", "1;2;3"})
        EXPECT_TRUE(renderRefusal({"--eye", point, "--target", "0,0,0"}).contains("three numbers are wanted"))
            << point;
}

TEST(CommandLine, PointsBeyondAnySenseAreRefused)
{
    for (const char* point : {"1e300,0,0", "0,-1e13,0", "0,0,1.1e12"})
        EXPECT_EQ(renderRefusal({"--eye", point, "--target", "0,0,0"}),
                  QString("--eye %1: coordinates go to 1e12 at most").arg(point));
    EXPECT_EQ(renderRefusal({"--eye", "1e12,0,0", "--target", "0,0,0"}), "");
}

TEST(CommandLine, EyeAndTargetBelongTogether)
{
    EXPECT_TRUE(renderRefusal({"--eye", "1,2,3"}).contains("belong together"));
    EXPECT_TRUE(renderRefusal({"--target", "1,2,3"}).contains("belong together"));
    EXPECT_TRUE(renderRefusal({"--up", "0,0,1"}).contains("belong together"));
}

TEST(CommandLine, EyeAtTheTargetIsRefused)
{
    EXPECT_EQ(renderRefusal({"--eye", "1,2,3", "--target", "1,2,3"}),
              "--eye and --target are the same point; they must differ");
}

TEST(CommandLine, UpAlongTheViewIsRefused)
{
    EXPECT_TRUE(renderRefusal({"--eye", "0,0,5", "--target", "0,0,0", "--up", "0,0,-2"})
                    .contains("must point elsewhere"));
    EXPECT_TRUE(
        renderRefusal({"--eye", "0,0,5", "--target", "0,0,0", "--up", "0,0,0"}).contains("has no direction"));
}

TEST(CommandLine, LookingStraightDownNorthIsUp)
{
    const RenderOptions options = parseRender({"--eye", "0,0,5", "--target", "0,0,0"});
    EXPECT_EQ(options.camera.position->up, glm::dvec3(0.0, 1.0, 0.0));
}

TEST(CommandLine, ViewAndEyeExcludeEachOther)
{
    EXPECT_TRUE(renderRefusal({"--view", "top", "--eye", "1,2,3", "--target", "0,0,0"})
                    .contains("exclude each other"));
}

TEST(CommandLine, WrongColourIsRefused)
{
    EXPECT_TRUE(renderRefusal({"--background", "greeen"}).startsWith("--background greeen: no such colour"));
}

TEST(CommandLine, PointSizeIsTakenByPicturesAndTheWindow)
{
    EXPECT_FALSE(parseRender({}).pointSize);
    EXPECT_EQ(parseRender({"--point-size", "2.5"}).pointSize, 2.5f);
    EXPECT_EQ(parseRender({"--point-size=255"}).pointSize, 255.0f);
    EXPECT_FALSE(std::get<WindowOptions>(parseCommandLine({"a.ply"})).pointSize);
    for (const QStringList& arguments :
         {QStringList{"--point-size", "4", "a.ply"}, {"a.ply", "--point-size", "4"}}) {
        const WindowOptions options = std::get<WindowOptions>(parseCommandLine(arguments));
        EXPECT_EQ(options.pointSize, 4.0f);
        EXPECT_EQ(options.files, QStringList("a.ply"));
    }
}

TEST(CommandLine, PointSizeThatNothingCanBeDrawnInIsRefused)
{
    for (const QString size : {"0", "-3", "nan", "-nan", "inf", "255.5", "1e9", "big", "3px", "", "%1"}) {
        const QString expected =
            QString("--point-size ") + size + ": a number of pixels is wanted, more than 0 and at most 255";
        EXPECT_EQ(renderRefusal({"--point-size", size}), expected);
        EXPECT_EQ(refusal({"a.ply", "--point-size", size}), expected);
    }
}

TEST(CommandLine, PointSizeWantsAValueOnce)
{
    EXPECT_EQ(renderRefusal({"--point-size"}),
              "Missing value after '--point-size'. See: viewer3d render --help");
    EXPECT_EQ(refusal({"--point-size"}), "Missing value after '--point-size'. See: viewer3d --help");
    EXPECT_EQ(renderRefusal({"--point-size", "3", "--point-size", "4"}),
              "--point-size is given 2 times; give it once");
}

TEST(CommandLine, MistypedCommandIsFoundBehindOptionsToo)
{
    EXPECT_EQ(refusal({"--point-size", "3", "rendr", "a.ply"}),
              "rendr is neither a command nor a file; did you mean render?");
}

TEST(CommandLine, HelpOfTheWindowNamesItsOptions)
{
    const QString text = std::get<HelpRequest>(parseCommandLine({"--help"})).text;
    EXPECT_TRUE(text.contains("--point-size PIXELS")) << qPrintable(text);
}

TEST(CommandLine, InfoTakesFilesAndJson)
{
    const InfoOptions options = std::get<InfoOptions>(parseCommandLine({"info", "a.obj", "--json"}));
    EXPECT_EQ(options.files, QStringList("a.obj"));
    EXPECT_TRUE(options.json);
    EXPECT_TRUE(refusal({"info"}).contains("no files"));
}

TEST(CommandLine, EveryCommandHasHelp)
{
    for (const QStringList& arguments : {QStringList{"--help"},
                                         {"render", "--help"},
                                         {"select", "--help"},
                                         {"info", "--help"},
                                         {"plugins", "--help"},
                                         {"-h"}}) {
        const QString text = std::get<HelpRequest>(parseCommandLine(arguments)).text;
        EXPECT_TRUE(text.startsWith("Usage: viewer3d ")) << qPrintable(text);
    }
}

TEST(CommandLine, HelpNamesEveryOption)
{
    const QString text = std::get<HelpRequest>(parseCommandLine({"render", "--help"})).text;
    for (const char* option : {"-o", "--size", "--view", "--projection", "--eye", "--target", "--up",
                               "--background", "--point-size", "--fov", "--gsd", "--cameras", "--help"})
        EXPECT_TRUE(text.contains(option)) << option;
}

TEST(CommandLine, VersionIsTold)
{
    const QString text = std::get<HelpRequest>(parseCommandLine({"--version"})).text;
    EXPECT_TRUE(QRegularExpression("^viewer3d \\d+\\.\\d+\\.\\d+\n$").match(text).hasMatch())
        << qPrintable(text);
}

TEST(NearestWord, TakesTheFewestMistakes)
{
    EXPECT_EQ(nearestWord("rendre", {"info", "render", "plugins"}), "render");
    EXPECT_EQ(nearestWord("backgruond", {"back", "background"}), "background");
    EXPECT_EQ(nearestWord("something", {"info", "render"}), "");
}

// --- select

namespace {

SelectOptions parseSelect(const QStringList& arguments)
{
    return std::get<SelectOptions>(parseCommandLine(QStringList{"select", "a.obj"} + arguments));
}

} // namespace

TEST(SelectOptions, TakeARectangleOrAPolygon)
{
    const QPolygonF rectangle = parseSelect({"--rect", "10,20.5,30,40"}).area;
    EXPECT_EQ(rectangle, QPolygonF({{10.0, 20.5}, {40.0, 20.5}, {40.0, 60.5}, {10.0, 60.5}}));
    const QPolygonF polygon = parseSelect({"--polygon", "-1,2,3,4,5,-6.5"}).area;
    EXPECT_EQ(polygon, QPolygonF({{-1.0, 2.0}, {3.0, 4.0}, {5.0, -6.5}}));
}

TEST(SelectOptions, LookThroughThingsAndTakeWhatIsTouchedAtFirst)
{
    const SelectOptions usual = parseSelect({"--rect", "0,0,1,1"});
    EXPECT_EQ(usual.mode, SelectionMode::Through);
    EXPECT_EQ(usual.rule, SelectionRule::Touching);
    EXPECT_FALSE(usual.json);
    const SelectOptions other = parseSelect(
        {"--rect", "0,0,1,1", "--mode", "visible", "--rule", "inside", "--json", "--view", "top"});
    EXPECT_EQ(other.mode, SelectionMode::Visible);
    EXPECT_EQ(other.rule, SelectionRule::Inside);
    EXPECT_TRUE(other.json);
    EXPECT_EQ(other.camera.view, StandardView::Top);
}

TEST(SelectOptions, BadAreasAreRefused)
{
    const auto refusal = [](const QStringList& arguments) {
        try {
            parseSelect(arguments);
        } catch (const UsageError& error) {
            return error.text();
        }
        return QString();
    };
    EXPECT_TRUE(refusal({}).startsWith("select: no area; "));
    EXPECT_TRUE(refusal({"--rect", "0,0,1,1", "--polygon", "0,0,1,1,2,0"}).contains("exclude each other"));
    for (const char* text : {"", "1,2,3", "1,2,3,4,5", "1,2,x,4", "1,2,nan,4", "1,2,inf,4"})
        EXPECT_TRUE(refusal({"--rect", text}).contains("x,y,w,h in pixels is wanted")) << text;
    EXPECT_TRUE(refusal({"--rect", "1,2,0,4"}).contains("more than 0"));
    EXPECT_TRUE(refusal({"--rect", "1,2,3,-4"}).contains("more than 0"));
    EXPECT_TRUE(refusal({"--rect", "1,2,3,1e7"}).contains("1000000 at most"));
    for (const char* text : {"1,2,3,4", "1,2,3,4,5", "1,2,3,4,5,6,7", "a,2,3,4,5,6"})
        EXPECT_TRUE(refusal({"--polygon", text}).contains("three or more points")) << text;
    EXPECT_EQ(refusal({"--rect", "0,0,1,1", "--mode", "seen"}),
              "--mode seen: one of through, visible is wanted");
    EXPECT_EQ(refusal({"--rect", "0,0,1,1", "--rule", "in"}), "--rule in: one of touching, inside is wanted");
}

TEST(ReadingOptions, AreTakenByEveryCommandThatReadsFiles)
{
    const auto reading = [](const QStringList& arguments) {
        return std::visit(
            [](const auto& options) {
                if constexpr (std::is_same_v<std::decay_t<decltype(options)>, PluginsOptions> ||
                              std::is_same_v<std::decay_t<decltype(options)>, HelpRequest>)
                    return ReadingOptions();
                else
                    return options.reading;
            },
            parseCommandLine(arguments + QStringList{"--lod", "1.2", "--ground-height", "-7.5"}));
    };
    for (const QStringList& arguments :
         {QStringList{"render", "a.json", "-o", "a.png"}, QStringList{"depth", "a.json", "-o", "a.pfm"},
          QStringList{"select", "a.json", "--rect", "0,0,9,9"},
          QStringList{"export", "a.json", "-o", "a.ply"}, QStringList{"info", "a.json"},
          QStringList{"a.json"}}) {
        EXPECT_EQ(reading(arguments).lod, 1.2) << qPrintable(arguments[0]);
        EXPECT_EQ(reading(arguments).groundHeight, -7.5) << qPrintable(arguments[0]);
    }
    const auto window = std::get<WindowOptions>(parseCommandLine({"a.json"}));
    EXPECT_EQ(window.reading.lod, std::nullopt);
    EXPECT_EQ(window.reading.groundHeight, 0.0);
}

TEST(ReadingOptions, RefuseWhatIsNoNumber)
{
    for (const char* value : {"fine", "-1", "nan", "1e9", ""})
        EXPECT_THROW(parseCommandLine({"info", "a.json", "--lod", value}), UsageError) << value;
    for (const char* value : {"high", "inf", "1e13"})
        EXPECT_THROW(parseCommandLine({"info", "a.json", "--ground-height", value}), UsageError) << value;
}
