#include "ViewerProcess.h"

#include <viewer/FileOpener.h>
#include <viewer/Host.h>

#include <framework/model/CProject.h>

#include <QtCore/QBuffer>
#include <QtCore/QFileInfo>
#include <QtGui/QImage>

#include <sys/stat.h>

namespace {

const QByteArray triangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";

} // namespace

/// Work that fails: one line that names the file, exit status 1, nothing written.
class Failure : public ViewerTest
{
protected:
    void expectRefused(const QString& file, const QString& reason)
    {
        const ViewerRun run = runViewer({"render", file, "-o", path("out.png")});
        EXPECT_EQ(run.status, 1);
        ASSERT_EQ(run.errorLines().size(), 1) << run.error.constData();
        ASSERT_FALSE(reason.isEmpty()) << "any line holds that";
        const QString line = run.errorLines().first();
        EXPECT_TRUE(line.startsWith("viewer3d: " + file + ": ")) << qPrintable(line);
        EXPECT_TRUE(line.contains(reason)) << qPrintable(line);
        EXPECT_TRUE(run.out.isEmpty());
        EXPECT_FALSE(QFileInfo::exists(path("out.png")));
#ifdef __SANITIZE_ADDRESS__ // starting up alone takes longer
        EXPECT_LT(run.seconds, 5.0);
#else
        EXPECT_LT(run.seconds, 1.0);
#endif
    }
};

TEST_F(Failure, MissingFile)
{
    expectRefused(path("none.obj"), "there is no such file");
}

TEST_F(Failure, Folder)
{
    QDir(path(".")).mkdir("folder.obj");
    expectRefused(path("folder.obj"), "is a folder");
}

TEST_F(Failure, EmptyFile)
{
    expectRefused(write("empty.ply", ""), "is empty");
}

TEST_F(Failure, UnknownFormatNamesTheKnownOnes)
{
    expectRefused(write("notes.odt", "hello"), "unknown file format; readable are: ");
}

TEST_F(Failure, NothingToDraw)
{
    expectRefused(write("comment.obj", "# nothing\n"), "has no vertices");
}

TEST_F(Failure, DamagedFile)
{
    expectRefused(
        write("bad.ply", "ply\nformat ascii 1.0\nelement vertex 2147483648\nproperty float x\nend_header\n"),
        "2147483648");
}

TEST_F(Failure, DamagedProject)
{
    expectRefused(write("bad.v3d", "V3DA this is no project"), "archive");
}

TEST_F(Failure, TwoProjects)
{
    const QString one = write("one.v3d", "x"), two = write("two.v3d", "x");
    const ViewerRun run = runViewer({"info", one, two});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.error.contains("only one project can be open")) << run.error.constData();
}

TEST_F(Failure, OneBadFileAmongGoodOnesStopsAll)
{
    const QString good = write("good.obj", triangle);
    const ViewerRun run = runViewer({"render", good, path("none.obj"), "-o", path("out.png")});
    EXPECT_EQ(run.status, 1);
    EXPECT_FALSE(QFileInfo::exists(path("out.png")));
}

TEST_F(Failure, OldPictureStaysAsItWas)
{
    write("out.png", "old picture");
    const ViewerRun run = runViewer({"render", path("none.obj"), "-o", path("out.png")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(read("out.png"), "old picture");
}

TEST_F(Failure, OutputFolderThatIsNotThere)
{
    const QString file = write("good.obj", triangle);
    const ViewerRun run = runViewer({"render", file, "-o", path("nowhere/out.png")});
    EXPECT_EQ(run.status, 1);
    ASSERT_EQ(run.errorLines().size(), 1) << run.error.constData();
    EXPECT_TRUE(
        run.errorLines().first().startsWith("viewer3d: " + path("nowhere/out.png") + ": cannot be written"));
    EXPECT_TRUE(run.error.contains("there is no folder"));
}

TEST_F(Failure, OutputThatIsAFolder)
{
    QDir(path(".")).mkdir("out.png");
    const ViewerRun run = runViewer({"render", write("good.obj", triangle), "-o", path("out.png")});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.error.contains("it is a folder")) << run.error.constData();
}

TEST_F(Failure, OutputThatIsNoRegularFile)
{
    ASSERT_EQ(mkfifo(qPrintable(path("out.png")), 0600), 0);
    const ViewerRun run = runViewer({"render", write("good.obj", triangle), "-o", path("out.png")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errorLines(),
              QStringList("viewer3d: " + path("out.png") + ": cannot be written: it is no regular file"));
    ASSERT_TRUE(QFile::link("/dev/null", path("null.png")));
    EXPECT_EQ(runViewer({"render", path("good.obj"), "-o", path("null.png")}).status, 1);
}

/// The output is one of the files that are read, one way or another: it stays as it was.
class OutputIsInput : public Failure
{
protected:
    void expectKept(const QString& input, const QString& kept, const QString& output)
    {
        const QByteArray before = read(kept);
        ASSERT_FALSE(before.isEmpty());
        const ViewerRun run = runViewer({"render", input, "-o", output});
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.errorLines(), QStringList("viewer3d: " + output +
                                                ": cannot be written: it is one of the files that are read"));
        EXPECT_EQ(read(kept), before);
    }
    /// A picture of one pixel.
    QByteArray pixel() const
    {
        QImage image(1, 1, QImage::Format_RGB32);
        image.fill(Qt::red);
        QByteArray bytes;
        QBuffer buffer(&bytes);
        EXPECT_TRUE(image.save(&buffer, "png"));
        return bytes;
    }
    void writeTextured(const QByteArray& name, const QByteArray& options)
    {
        write("house.obj", "mtllib my house.mtl\nusemtl m\n" + triangle);
        write("my house.mtl", "newmtl m\nmap_Kd " + options + name + "\n");
        write("roof tiles.png", pixel());
    }
};

TEST_F(OutputIsInput, ThroughALink)
{
    write("good.obj", triangle);
    ASSERT_TRUE(QFile::link(path("good.obj"), path("link.png")));
    expectKept(path("good.obj"), "good.obj", path("link.png"));
}

TEST_F(OutputIsInput, AsTheTextureOfAnObj)
{
    writeTextured("roof tiles.png", "");
    expectKept(path("house.obj"), "roof tiles.png", path("roof tiles.png"));
}

TEST_F(OutputIsInput, AsATextureThatLaysElsewhereOnce)
{
    writeTextured("C:\\pictures\\roof tiles.png", "");
    expectKept(path("house.obj"), "roof tiles.png", path("roof tiles.png"));
}

TEST_F(OutputIsInput, AsTheTextureOfAMeshOfAProject)
{
    writeTextured("roof tiles.png", "");
    Host host(Host::Settings::InMemory);
    const auto project = host.createProject();
    FileOpener opener(host, *project, nullptr);
    opener.open({path("house.obj")}, ksp::StagedProgress::dummy());
    opener.save(path("saved.v3d"), ksp::StagedProgress::dummy());
    expectKept(path("saved.v3d"), "roof tiles.png", path("roof tiles.png"));
}

TEST_F(OutputIsInput, AsThePictureOfAGltf)
{
    write("roof tiles.png", pixel());
    write("data.bin", QByteArray(36, '\0'));
    write("house.gltf", R"({"asset":{"version":"2.0"},"images":[{"uri":"roof%20tiles.png"}],
        "buffers":[{"uri":"data.bin","byteLength":36}],"bufferViews":[{"buffer":0,"byteLength":36}],
        "accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3"}],
        "meshes":[{"primitives":[{"attributes":{"POSITION":0}}]}],"nodes":[{"mesh":0}],"scenes":[{"nodes":[0]}]})");
    expectKept(path("house.gltf"), "roof tiles.png", path("roof tiles.png"));
}

TEST_F(OutputIsInput, AsTheTextureOfACity)
{
    write("roof tiles.png", pixel());
    write("city.json",
          R"({"type":"CityJSON","version":"2.0","transform":{"scale":[1,1,1],"translate":[0,0,0]},
        "appearance":{"textures":[{"type":"PNG","image":"roof tiles.png"}],"vertices-texture":[[0,0],[1,0],[0,1]]},
        "CityObjects":{"a":{"type":"Building","geometry":[{"type":"MultiSurface","lod":"2","boundaries":[[[0,1,2]]],
            "texture":{"t":{"values":[[[0,0,1,2]]]}}}]}},"vertices":[[0,0,0],[1,0,0],[0,1,0]]})");
    expectKept(path("city.json"), "roof tiles.png", path("roof tiles.png"));
}

TEST_F(OutputIsInput, AsTheWorldFileOfAPicture)
{
    write("plan.png", pixel());
    write("plan.pgw", "1\n0\n0\n-1\n0\n0\n");
    ASSERT_TRUE(QFile::link(path("plan.pgw"), path("link.png")));
    expectKept(path("plan.png"), "plan.pgw", path("link.png"));
}

TEST_F(OutputIsInput, AndAPictureBesideIsNone)
{
    writeTextured("roof tiles.png", "");
    write("other.png", "old");
    EXPECT_EQ(runViewer({"render", path("house.obj"), "-o", path("other.png")}).status, 0);
}

// The kernel's own folders can be written by nobody, whoever runs the tests.
TEST_F(Failure, OutputInAFolderThatCannotBeWritten)
{
    const ViewerRun run = runViewer({"render", write("good.obj", triangle), "-o", "/proc/out.png"});
    EXPECT_EQ(run.status, 1);
    ASSERT_EQ(run.errorLines().size(), 1) << run.error.constData();
    EXPECT_TRUE(run.errorLines().first().startsWith("viewer3d: /proc/out.png: cannot be written"));
}

TEST_F(Failure, WrongOptionHasAStatusOfItsOwn)
{
    const ViewerRun run = runViewer({"render", "a.obj", "-o", path("out.png"), "--siez", "1x1"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.errorLines(), QStringList("viewer3d: unknown option --siez; did you mean --size?"));
}

TEST_F(Failure, UnknownCommandHasTheSameStatus)
{
    const ViewerRun run = runViewer({"select", "a.obj"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.errorLines().size(), 1);
}

TEST_F(Failure, MistypedCommandIsNamedAndNotItsOptions)
{
    const ViewerRun run = runViewer({"rendr", write("good.obj", triangle), "-o", path("out.png")});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.errorLines(),
              QStringList("viewer3d: rendr is neither a command nor a file; did you mean render?"));
    EXPECT_FALSE(QFileInfo::exists(path("out.png")));
}

TEST_F(Failure, WindowOfAMissingFileDoesNotOpen)
{
    const ViewerRun run = runViewer({path("none.obj")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errorLines(), QStringList("viewer3d: " + path("none.obj") + ": there is no such file"));
}

// What the machine lacks: one line and exit status 1, whatever Qt would do.
struct Lack
{
    const char* name;
    Environment environment;
    QString reason;
};

class MachineLacks : public ViewerTest, public ::testing::WithParamInterface<Lack>
{
};

TEST_P(MachineLacks, OneLineSaysSo)
{
    const QString file = write("good.obj", triangle);
    for (const QStringList& arguments : {QStringList{"render", file, "-o", path("out.png")}, {file}}) {
        const ViewerRun run = runViewer(arguments, GetParam().environment);
        EXPECT_EQ(run.status, 1);
        ASSERT_EQ(run.errorLines().size(), 1) << run.error.constData();
        EXPECT_TRUE(run.errorLines().first().startsWith("viewer3d: " + GetParam().reason))
            << run.error.constData();
        EXPECT_FALSE(QFileInfo::exists(path("out.png")));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Failure, MachineLacks,
    ::testing::Values(
        Lack{"display", {{"DISPLAY", QString()}, {"WAYLAND_DISPLAY", QString()}}, "there is no display"},
        Lack{"reachableDisplay",
             {{"DISPLAY", ":99999"}},
             "there is no usable display (could not connect to display :99999)"},
        Lack{"displayWithASensibleName",
             {{"DISPLAY", "foo"}},
             "there is no usable display (could not connect to display foo)"},
        Lack{"platform",
             {{"QT_QPA_PLATFORM", "nonsense"}},
             "there is no usable display (Could not find the Qt platform plugin \"nonsense\""},
        Lack{"waylandPlatform",
             {{"DISPLAY", QString()}, {"WAYLAND_DISPLAY", "none"}, {"QT_QPA_PLATFORM", QString()}},
             "there is no usable display"},
        Lack{"openGL",
             {{"DISPLAY", QString()}, {"QT_QPA_PLATFORM", "offscreen"}},
             "there is no OpenGL on this display"},
        Lack{"openGL43",
             {{"MESA_GL_VERSION_OVERRIDE", "3.3"}},
             "the OpenGL driver of this display offers no 4.3 core profile"}),
    [](const auto& lack) { return std::string(lack.param.name); });

TEST_F(Failure, WhatQtHasToSayStaysOutOfStandardError)
{
    const QString file = write("good.obj", triangle);
    const ViewerRun run =
        runViewer({"render", file, "-o", path("out.png")}, {{"XDG_RUNTIME_DIR", QString()}});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.error, "");
}

TEST_F(Failure, StandardOutputThatTakesNothing)
{
    const QString file = write("good.obj", triangle);
    for (const auto& [redirection, reason] :
         {std::pair(">/dev/full", "No space left on device"), {">&-", "Bad file descriptor"}}) {
        for (const QString& command : {"info '" + file + "'", QString("plugins"), QString("--help")}) {
            const ViewerRun run = runProgram(
                "sh", {"-c", QString("exec '%1' %2 %3").arg(viewerProgram(), command, redirection)});
            EXPECT_EQ(run.status, 1) << qPrintable(command) << redirection;
            EXPECT_EQ(run.errorLines(),
                      QStringList(QString("viewer3d: standard output cannot be written: ") + reason));
        }
    }
}

/// The program with libraries and plug-ins of its own, so that plug-ins can be damaged.
class Installation : public Failure
{
protected:
    void SetUp() override
    {
        Failure::SetUp();
        const QDir folder(path("."));
        for (const char* name : {"bin", "lib/viewer3d/plugins"})
            ASSERT_TRUE(folder.mkpath(name));
        ASSERT_TRUE(QFile::copy(viewerProgram(), path("bin/viewer3d")));
        const QDir libraries(V3D_BINARY_DIR "/lib");
        for (const QString& name : libraries.entryList({"lib*.so.?.?"}))
            ASSERT_TRUE(QFile::copy(libraries.filePath(name), path("lib/" + name)));
        for (const char* name : {"libViewer3dModule.so", "reader_obj.so"})
            ASSERT_TRUE(QFile::copy(libraries.filePath(QString("viewer3d/plugins/") + name), plugin(name)));
    }
    QString plugin(const QString& name) const { return path("lib/viewer3d/plugins/" + name); }
    ViewerRun start(const QStringList& arguments) const
    {
        return runProgram(path("bin/viewer3d"), arguments, {{"LD_LIBRARY_PATH", path("lib")}});
    }
};

TEST_F(Installation, Works)
{
    // one library under two names, as it is installed
    ASSERT_TRUE(QFile::remove(plugin("libViewer3dModule.so")));
    const QString library = QDir(path("lib")).entryList({"libViewer3dModule.so.?.?"}).value(0);
    ASSERT_TRUE(QFile::link("../../" + library, plugin("libViewer3dModule.so")));
    const ViewerRun run = start({"info", write("good.obj", triangle)});
    EXPECT_EQ(run.status, 0) << run.error.constData();
}

TEST_F(Installation, WithoutTheModuleListsItsPluginsAllTheSame)
{
    QFile::remove(plugin("libViewer3dModule.so"));
    const ViewerRun run = start({"plugins"});
    EXPECT_EQ(run.status, 0) << run.error.constData();
    EXPECT_TRUE(run.out.contains("reader_obj.so")) << run.out.constData();
    EXPECT_FALSE(run.out.contains("libViewer3dModule.so"));
    const ViewerRun work = start({"info", write("good.obj", triangle)});
    EXPECT_EQ(work.status, 1);
    ASSERT_EQ(work.errorLines().size(), 1) << work.error.constData();
    EXPECT_TRUE(work.error.startsWith("viewer3d: the plug-in Viewer3dModule cannot be loaded: looked in "))
        << work.error.constData();
}

TEST_F(Installation, WithADamagedModuleTellsTheReason)
{
    write("lib/viewer3d/plugins/libViewer3dModule.so", "no library");
    const ViewerRun run = start({"plugins"});
    EXPECT_EQ(run.status, 0) << run.error.constData();
    EXPECT_TRUE(run.out.contains("libViewer3dModule.so: not a shared library")) << run.out.constData();
    const ViewerRun work = start({"info", write("good.obj", triangle)});
    EXPECT_EQ(work.status, 1);
    EXPECT_EQ(work.errorLines(), QStringList("viewer3d: the plug-in Viewer3dModule cannot be loaded: " +
                                             plugin("libViewer3dModule.so") + ": not a shared library"));
}
