#include "ViewerProcess.h"

#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

class Info : public ViewerTest
{
protected:
    QJsonObject info(const QStringList& files)
    {
        const ViewerRun run = runViewer(QStringList{"info", "--json"} + files);
        EXPECT_EQ(run.status, 0) << run.error.constData();
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(run.out, &error);
        EXPECT_EQ(error.error, QJsonParseError::NoError) << qPrintable(error.errorString());
        return document.object();
    }
};

TEST_F(Info, TellsCountsAndBoundsInModelCoordinates)
{
    const QString file =
        write("house.obj", "o wall\nv 2700000.001 1200000.002 400.003\nv 2700001 1200000 400\n"
                           "v 2700000 1200001 401.5\nf 1 2 3\n");
    const QJsonObject root = info({file});
    ASSERT_EQ(root["elements"].toArray().size(), 1);
    const QJsonObject element = root["elements"].toArray()[0].toObject();
    EXPECT_EQ(element["type"].toString(), "mesh");
    EXPECT_EQ(element["name"].toString(), "wall");
    EXPECT_EQ(element["file"].toString(), file);
    EXPECT_EQ(element["triangles"].toInt(), 1);
    EXPECT_EQ(element["lines"].toInt(-1), 0);
    EXPECT_EQ(element["points"].toInt(-1), 0);
    EXPECT_GT(element["id"].toInt(), 0);
    const QJsonArray min = root["bounds"].toObject()["min"].toArray();
    const QJsonArray max = root["bounds"].toObject()["max"].toArray();
    EXPECT_NEAR(min[0].toDouble(), 2700000.0, 1e-6);
    EXPECT_NEAR(min[1].toDouble(), 1200000.0, 1e-6);
    EXPECT_NEAR(min[2].toDouble(), 400.0, 1e-6);
    EXPECT_NEAR(max[0].toDouble(), 2700001.0, 1e-6);
    EXPECT_NEAR(max[1].toDouble(), 1200001.0, 1e-6);
    EXPECT_NEAR(max[2].toDouble(), 401.5, 1e-6);
}

TEST_F(Info, ListsTheSamples)
{
    const QJsonObject root = info(sampleFiles());
    int meshes = 0, features = 0;
    QStringList names;
    for (const QJsonValue& value : root["elements"].toArray()) {
        meshes += value.toObject()["type"].toString() == "mesh";
        features += value.toObject()["type"].toString() == "feature";
        names.append(value.toObject()["name"].toString());
    }
    EXPECT_GT(meshes, 47); // a house is an element
    EXPECT_GT(features, 60);
    for (const char* name : {"St_Marys_Church", "Main Street", "Plot St Mary's Church", "IMG_0001"})
        EXPECT_TRUE(names.contains(name)) << name;
    EXPECT_GT(root["triangles"].toInt(), 60'000);
    const QJsonArray min = root["bounds"].toObject()["min"].toArray();
    EXPECT_NEAR(min[0].toDouble(), 611840.0, 1.0);
    EXPECT_NEAR(min[1].toDouble(), 5070880.0, 1.0);
}

TEST_F(Info, TextHasALineAnElementAndTheTotal)
{
    const QString file = write("two.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0.125\no a\nf 1 2 3\no b\nf 1 3 2\n");
    const ViewerRun run = runViewer({"info", file});
    EXPECT_EQ(run.status, 0);
    const QList<QByteArray> lines = run.out.trimmed().split('\n');
    ASSERT_EQ(lines.size(), 3) << run.out.constData();
    EXPECT_TRUE(lines[0].endsWith("mesh \"a\": 0 points, 0 lines, 1 triangles; from 0 0 0 to 1 1 0.125"));
    EXPECT_EQ(lines[2], "2 elements: 0 points, 0 lines, 2 triangles; from 0 0 0 to 1 1 0.125");
}

// Names come from files: they neither end their own quotes nor make lines of their own.
TEST_F(Info, NamesCannotForgeLines)
{
    const QString file = write("forged.geojson", R"({"type":"Feature",
        "properties":{"name":"a\": 9 points\n2 mesh \"b\u001b[2J\\"},"geometry":{"type":"Point","coordinates":[1,2]}})");
    const ViewerRun run = runViewer({"info", file});
    EXPECT_EQ(run.status, 0) << run.error.constData();
    const QList<QByteArray> lines = run.out.trimmed().split('\n');
    ASSERT_EQ(lines.size(), 2) << run.out.constData();
    EXPECT_EQ(lines[0].mid(lines[0].indexOf(' ')), " feature \"a\\\": 9 points\\n2 mesh \\\"b\\x1b[2J\\\\\": "
                                                   "1 points, 0 lines, 0 triangles; from 1 2 0 to 1 2 0");
}

TEST_F(Info, SameFileTwiceIsThereTwice)
{
    const QString file = write("t.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    const QJsonObject root = info({file, file});
    EXPECT_EQ(root["elements"].toArray().size(), 2);
    EXPECT_EQ(root["triangles"].toInt(), 2);
}

/// Names of files that shells, parsers and messages trip over.
class OddName : public Info, public ::testing::WithParamInterface<const char*>
{
};

TEST_P(OddName, IsReadAndNamedAsItIs)
{
    const QString name = QString::fromUtf8(GetParam());
    write(name, "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    const QString program = viewerProgram();
    const auto run = [&](const QString& command, const QString& file) {
        return runProgram("sh", {"-c", QString("cd \"$1\" && \"$2\" %1 -- \"$3\"").arg(command), "sh",
                                 path("."), program, file});
    };
    const ViewerRun good = run("info --json", name);
    EXPECT_EQ(good.status, 0) << good.error.constData();
    const QJsonObject element =
        QJsonDocument::fromJson(good.out).object()["elements"].toArray()[0].toObject();
    EXPECT_EQ(QFileInfo(element["file"].toString()).fileName(), name);
    const ViewerRun bad = run("info", name + ".ply");
    EXPECT_EQ(bad.status, 1);
    EXPECT_EQ(bad.errorLines(),
              QStringList("viewer3d: " + QString(name).replace('\n', "\\n") + ".ply: there is no such file"));
}

INSTANTIATE_TEST_SUITE_P(Info, OddName,
                         ::testing::Values("two  blanks .obj", " blank first.obj",
                                           "Gr\u00fc\u00dfe \u5854.obj", "new\nline.obj", "--dash.obj",
                                           "-o.obj", "quote\"'.obj", "100%1.obj"));

TEST_F(Info, CityObjectsHaveTypesParentsAndAttributes)
{
    const QString file = write("a.city.json", R"({"type":"CityJSON","version":"2.0","CityObjects":{
        "b-1":{"type":"Building","children":["p"],"attributes":{"name":"Mill","year":1898,"old":null}},
        "p":{"type":"BuildingPart","parents":["b-1"]}},"vertices":[]})");
    const QJsonObject root = info({file});
    const QJsonObject mill = root["elements"][0].toObject(), part = root["elements"][1].toObject();
    EXPECT_EQ(mill["type"], "city object");
    EXPECT_EQ(mill["objectType"], "Building");
    EXPECT_EQ(mill["source"], "b-1");
    EXPECT_EQ(mill["attributes"].toObject(), (QJsonObject{{"name", "Mill"}, {"year", 1898}, {"old", {}}}));
    EXPECT_EQ(part["name"], "p");
    EXPECT_EQ(part["parents"].toArray(), QJsonArray{"b-1"});
}

TEST_F(Info, EmptyNameIsShownInQuotes)
{
    const ViewerRun run = runViewer({"info", ""});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.errorLines(), QStringList("viewer3d: \"\": there is no such file"));
}

TEST_F(Info, NeedsNoDisplay)
{
    const ViewerRun run =
        runViewer({"info", write("t.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n")}, {{"DISPLAY", QString()}});
    EXPECT_EQ(run.status, 0) << run.error.constData();
}

TEST_F(Info, PluginsAreListed)
{
    const ViewerRun run = runViewer({"plugins"});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(run.out.contains("libViewer3dModule.so: Viewer3dModule")) << run.out.constData();
    EXPECT_TRUE(QRegularExpression("opens: .*geojson.*obj.*ply.*v3d").match(run.out).hasMatch());
}
