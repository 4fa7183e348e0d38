#include "ViewerProcess.h"

#include "../../support/ImageCheck.h"

#include <viewer/cli/CommandLine.h>
#include <viewer/cli/UsageError.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtGui/QImage>

// The documents tell what is so.

namespace {

QString document(const QString& name)
{
    QFile file(QStringLiteral(V3D_SOURCE_DIR "/") + name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(name);
    return QString::fromUtf8(file.readAll());
}

} // namespace

TEST(Documents, ReadmeListsThePackagesOfTheOneList)
{
    const QString readme = document("README.md");
    int packages = 0;
    for (const QString& line : document("cmake/dependencies.txt").split('\n', Qt::SkipEmptyParts)) {
        if (line.startsWith('#')) continue;
        const QString package = line.section(' ', 1, 1, QString::SectionSkipEmpty);
        const QString purpose = line.section(' ', 2, -1, QString::SectionSkipEmpty);
        const QString kind = line.section(' ', 0, 0);
        const QString use = kind == "run" ? QStringLiteral("build and run") : kind;
        const QString row = QStringLiteral("| `%1` | %2 | %3 |\n").arg(package, use, purpose);
        EXPECT_TRUE(readme.contains(row)) << qPrintable(row);
        ++packages;
    }
    EXPECT_EQ(readme.count(QRegularExpression("^\\| `[a-z0-9+.-]+` \\| (build and run|tests|benchmarks) \\|",
                                              QRegularExpression::MultilineOption)),
              packages);
}

TEST(Documents, LinksLeadSomewhere)
{
    for (const QString name : {"README.md", "CONTRIBUTING.md", "docs/user-guide.md", "docs/architecture.md",
                               "docs/extending.md", "docs/shaders.md"}) {
        const QDir folder = QFileInfo(QStringLiteral(V3D_SOURCE_DIR "/") + name).dir();
        auto links = QRegularExpression("\\]\\(([^)#]+)\\)").globalMatch(document(name));
        EXPECT_TRUE(links.hasNext()) << qPrintable(name);
        while (links.hasNext()) {
            const QString target = links.next().captured(1);
            EXPECT_TRUE(QFileInfo::exists(folder.filePath(target))) << qPrintable(name + ": " + target);
        }
    }
}

TEST(Documents, CommandOfTheReadmePictureIsRight)
{
    const QRegularExpression pattern("^    \\./run\\.sh (render .*)$", QRegularExpression::MultilineOption);
    const QRegularExpressionMatch match = pattern.match(document("README.md"));
    ASSERT_TRUE(match.hasMatch());
    const QStringList arguments = match.captured(1).remove('\'').split(' ', Qt::SkipEmptyParts);
    const RenderOptions options = std::get<RenderOptions>(parseCommandLine(arguments));
    EXPECT_EQ(QImage(QStringLiteral(V3D_SOURCE_DIR "/docs/images/town.png")).size(),
              options.camera.size.value_or(CameraOptions::usualSize));
}

// The picture shows the town as the command draws it now.
TEST_F(ViewerTest, ReadmePictureIsWhatItsCommandDraws)
{
    const QRegularExpression pattern("^    \\./run\\.sh (render .*)$", QRegularExpression::MultilineOption);
    const QString command = pattern.match(document("README.md")).captured(1);
    const ViewerRun run = runProgram(
        "bash", {"-c", QString("cd '%1' && '%2' %3")
                           .arg(V3D_SOURCE_DIR, viewerProgram(),
                                QString(command).replace("-o town.png", "-o '" + path("town.png") + "'"))});
    ASSERT_EQ(run.status, 0) << run.error.constData();
    // another driver may draw edges and shades a little otherwise; what lies elsewhere differs by far more
    checkImage("readme_town", QImage(path("town.png")), QImage(V3D_SOURCE_DIR "/docs/images/town.png"),
               {48, 9216});
}

// Likewise the guide's pictures of fences, of which one is drawn.
TEST_F(ViewerTest, FencePicturesOfTheUserGuideAreWhatTheirCommandsDraw)
{
    const QRegularExpression pattern("^    \\./run\\.sh (render .*-o (fence-[a-z]+\\.png) .*)$",
                                     QRegularExpression::MultilineOption);
    auto commands = pattern.globalMatch(document("docs/user-guide.md"));
    int count = 0;
    for (; commands.hasNext(); ++count) {
        const QRegularExpressionMatch match = commands.next();
        const QString name = match.captured(2);
        const QFileInfo picture(QStringLiteral(V3D_SOURCE_DIR "/docs/images/") + name);
        EXPECT_TRUE(picture.exists() && picture.size() < 150'000) << qPrintable(name);
        const QString line = QString(match.captured(1)).remove('\'');
        const auto options = std::get<RenderOptions>(parseCommandLine(line.split(' ', Qt::SkipEmptyParts)));
        EXPECT_TRUE(QFileInfo::exists(QStringLiteral(V3D_SOURCE_DIR "/") + options.fence))
            << qPrintable(name);
        if (count != 0) continue;
        const ViewerRun run = runProgram(
            "bash", {"-c", QString("cd '%1' && '%2' %3")
                               .arg(V3D_SOURCE_DIR, viewerProgram(),
                                    match.captured(1).replace("-o " + name, "-o '" + path(name) + "'"))});
        ASSERT_EQ(run.status, 0) << run.error.constData();
        // as for the README's picture
        checkImage("guide_fence", QImage(path(name)), QImage(picture.filePath()), {48, 5000});
    }
    EXPECT_EQ(count, 4);
}

class DocumentedOptions : public ::testing::TestWithParam<const char*>
{
};

TEST_P(DocumentedOptions, AreAllOfTheHelp)
{
    const QString guide = document("docs/user-guide.md");
    const QString help = std::get<HelpRequest>(parseCommandLine({GetParam(), "--help"})).text;
    auto options = QRegularExpression("--[a-z][a-z-]+").globalMatch(help);
    while (options.hasNext()) {
        const QString option = options.next().captured();
        EXPECT_TRUE(option == "--help" || option == "--output" ||
                    guide.contains(QRegularExpression(option + "(?![a-z-])")))
            << qPrintable(option);
    }
}

INSTANTIATE_TEST_SUITE_P(Documents, DocumentedOptions,
                         ::testing::Values("render", "depth", "select", "export"),
                         [](const auto& command) { return std::string(command.param); });

// Whole commands of the guide, as they stand there; FILES... and such are none.
TEST_F(ViewerTest, CommandsOfTheUserGuideWork)
{
    const QRegularExpression pattern("^    viewer3d ((depth|select) house[^\\n]*)$",
                                     QRegularExpression::MultilineOption);
    write("house.obj", "v 0 0 0\nv 1 0 0\nv 0 0 1\nf 1 2 3\n");
    int count = 0;
    auto commands = pattern.globalMatch(document("docs/user-guide.md"));
    for (; commands.hasNext(); ++count) {
        const QString command = commands.next().captured(1);
        const ViewerRun run = runProgram(
            "bash", {"-c", QString("cd '%1' && '%2' %3").arg(path("."), viewerProgram(), command)});
        EXPECT_EQ(run.status, 0) << qPrintable(command) << run.error.constData();
        auto names = QRegularExpression("\\bhouse\\.[a-z]+\\b").globalMatch(command);
        while (names.hasNext()) {
            const QString name = names.next().captured();
            EXPECT_TRUE(QFileInfo::exists(path(name))) << qPrintable(name);
        }
    }
    EXPECT_GE(count, 1);
}
