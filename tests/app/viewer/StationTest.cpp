#include "ViewerProcess.h"

#include "../../support/GlObjects.h"
#include "../../support/SceneTest.h"

#include <viewer/ElementSummary.h>
#include <viewer/FileOpener.h>
#include <viewer/Host.h>
#include <viewer/InputFiles.h>
#include <viewer/ModelFolder.h>
#include <viewer/elements/ElementTypes.h>
#include <viewer/elements/LabelDrawer.h>
#include <viewer/elements/NameDrawer.h>
#include <viewer/elements/NameItem.h>

#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/scene/SelectionOptions.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>
#include <framework/model/StationElement.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace {

/// Writes a model of two pictures, taken from (1, 2, 10) and (-1, 2, 10), and two points.
class ColmapModelTest : public ViewerTest
{
protected:
    QString writeModel(const QByteArray& points = "1 0 0 0 255 0 0 0.5\n2 0 4 0 0 255 0 0.5\n")
    {
        QDir(path(".")).mkdir("block");
        write("block/cameras.txt", "3 SIMPLE_PINHOLE 640 480 500 320 240\n");
        write("block/images.txt",
              "# comment\n5 1 0 0 0 -1 -2 -10 3 a.jpg\n0 0 1\n8 1 0 0 0 1 -2 -10 3 b.jpg\n\n");
        write("block/points3D.txt", points);
        return path("block");
    }
};

QJsonArray jsonElementsOf(const ViewerRun& run)
{
    EXPECT_EQ(run.status, 0) << run.error.constData();
    return QJsonDocument::fromJson(run.out).object()["elements"].toArray();
}

} // namespace

class StationItemTest : public SceneTest
{
protected:
    static constexpr int Side = 64;

    void SetUp() override
    {
        SceneTest::SetUp();
        element_types::registerItems(*scene);
    }
    /// At the middle of a pixel, where the matrices are identities.
    StationElement& add(int x, int y, const QString& name)
    {
        auto station = std::make_unique<StationElement>();
        station->setName(name);
        const glm::dvec3 center((x + 0.5) * 2.0 / Side - 1.0, 1.0 - (y + 0.5) * 2.0 / Side, 0.25);
        station->setPose({glm::dquat(1.0, 0.0, 0.0, 0.0), -center});
        return static_cast<StationElement&>(*manager().addItem(std::move(station)));
    }
    CModelElementManager& manager()
    {
        return *project->getModel()->getCreateItemManager(element_types::Station);
    }
    QImage picture() { return drawFrame(paintContext(Side, Side)).convertToFormat(QImage::Format_RGB32); }
    /// The box of what is not black.
    static QRect coveredBy(const QImage& image)
    {
        QRect box;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (image.pixelColor(x, y) != Qt::black) box |= QRect(x, y, 1, 1);
        return box;
    }
};

TEST_F(StationItemTest, IsACameraWithItsLensOnThePlace)
{
    add(30, 40, "a");
    const QImage image = picture();
    // the sign has 20 x 15 pixels, its lens is the eleventh from the left and the ninth from above
    EXPECT_EQ(coveredBy(image), QRect(20, 32, 20, 15));
    EXPECT_EQ(image.pixelColor(30, 40), QColor(120, 190, 255)) << "glass";
    EXPECT_EQ(image.pixelColor(23, 40), QColor(40, 44, 60)) << "body";
    EXPECT_GT(image.pixelColor(20, 40).red(), 200) << "rim";
}

TEST_F(StationItemTest, FollowsItsElement)
{
    StationElement& station = add(30, 40, "a");
    picture();
    StationElement::Pose pose = station.getPose();
    pose.translation.x -= 8 * 2.0 / Side; // the centre moves to the right
    station.setPose(pose);
    EXPECT_EQ(coveredBy(picture()), QRect(28, 32, 20, 15));
    station.setVisible(false);
    EXPECT_TRUE(coveredBy(picture()).isEmpty());
}

TEST_F(StationItemTest, IsSelectedByItsSign)
{
    const StationElement& left = add(14, 30, "left");
    const StationElement& right = add(48, 30, "right");
    const auto selected = [this](const QRectF& rect) {
        return scene->selectItems(paintContext(Side, Side), rect, SelectionOptions());
    };
    EXPECT_EQ(selected({6, 26, 3, 3}), std::vector<LONGID>{left.getId()});
    EXPECT_EQ(selected({50, 20, 9, 9}), std::vector<LONGID>{right.getId()});
    EXPECT_TRUE(selected({26, 20, 9, 30}).empty()) << "between them";
}

TEST_F(StationItemTest, ShowsThatItIsChosen)
{
    StationElement& station = add(30, 40, "a");
    const QImage before = picture();
    station.setHighlighted(true);
    EXPECT_EQ(coveredBy(picture()), coveredBy(before));
    EXPECT_NE(picture().pixelColor(30, 40), before.pixelColor(30, 40));
}

TEST_F(StationItemTest, DepthMapsDoNotSeeIt)
{
    add(30, 40, "a");
    PaintContext context = paintContext(Side, Side);
    context.depthOnly = true;
    EXPECT_TRUE(coveredBy(drawFrame(context)).isEmpty());
}

TEST_F(StationItemTest, HasItsNameAboveIt)
{
    LabelDrawer::addTo(*scene, "name");
    LabelDrawer& labels = *LabelDrawer::find(*scene);
    StationElement& station = add(30, 50, "gg");
    add(10, 20, {});
    ASSERT_EQ(labels.names().getItems().size(), 1u) << "one has no name";
    const auto& name = static_cast<const NameItem&>(*labels.names().getItems()[0]);
    EXPECT_EQ(name.text(), "gg");
    const auto written = [&] {
        RenderTarget target(*gl, QSize(Side, Side));
        target.bind();
        target.clear(QColor(0, 0, 0));
        labels.write(paintContext(Side, Side), glm::dmat4(1.0), QSize(Side, Side), {});
        return coveredBy(target.image());
    };
    // the sign's top row is 8 pixels above the lens; one row is free between it and the rim of the letters
    const QRect rect = written();
    EXPECT_EQ(rect.bottom(), 50 - 8 - 2);
    EXPECT_NEAR(rect.left() + rect.width() / 2.0, 30.5, 1.5);
    station.setName("gggg");
    EXPECT_NEAR(written().width(), 2 * rect.width(), 4);
    StationElement::Pose pose = station.getPose();
    pose.translation.y -= 20 * 2.0 / Side; // the centre moves up
    station.setPose(pose);
    EXPECT_EQ(written().bottom(), rect.bottom() - 20);
    station.setVisible(false);
    EXPECT_TRUE(written().isNull());
    station.setVisible(true);
    station.setName({});
    EXPECT_TRUE(labels.names().getItems().empty());
}

TEST_F(StationItemTest, AllShareOneTextureThatTheLastOneFrees)
{
    StationElement& first = add(14, 30, "a");
    StationElement& second = add(48, 30, "b");
    picture();
    const auto textures = [this] { return GlObjects::count(*gl).textures; };
    const int both = textures();
    manager().removeItem(first.getId());
    EXPECT_EQ(textures(), both);
    manager().removeItem(second.getId());
    EXPECT_EQ(textures(), both - 1);
    add(30, 30, "c");
    EXPECT_EQ(picture().pixelColor(30, 30), QColor(120, 190, 255)) << "made anew";
}

TEST_F(ColmapModelTest, FolderAndAnyOfItsFilesAreTheModel)
{
    const QString folder = writeModel();
    const QStringList read = {folder + "/images.txt", folder + "/points3D.txt"};
    for (const QString& name :
         {QString(), QString("/cameras.txt"), QString("/images.txt"), QString("/points3D.txt")})
        EXPECT_EQ(ModelFolder::inputs({folder + name}), read) << qPrintable(name);
    EXPECT_EQ(ModelFolder::inputs({"a.obj", folder + "/cameras.txt", "a.obj", folder + "/images.txt"}),
              QStringList({"a.obj"}) + read + QStringList({"a.obj"}));
    QFile::remove(folder + "/cameras.txt");
    EXPECT_EQ(ModelFolder::inputs({folder, read[0]}), QStringList({folder, read[0]}));
}

TEST_F(ColmapModelTest, ModelWithoutPointsHasItsStations)
{
    const QString folder = writeModel("# no points\n\n");
    EXPECT_EQ(ModelFolder::inputs({folder}), QStringList(folder + "/images.txt"));
    write("block/points3D.txt", "");
    EXPECT_EQ(ModelFolder::inputs({folder}), QStringList(folder + "/images.txt"));
}

TEST_F(ColmapModelTest, OtherFoldersAreRefusedWithTheReason)
{
    const QString folder = writeModel();
    const auto errorOf = [](const QString& of) { return QString::fromUtf8(runViewer({"info", of}).error); };
    QFile::remove(folder + "/cameras.txt");
    EXPECT_TRUE(
        errorOf(folder).contains("is a folder, but not with cameras.txt, images.txt and points3D.txt"));
    write("block/images.bin", "x");
    EXPECT_TRUE(errorOf(folder).contains("readable are those that are exported as text"));
}

TEST_F(ColmapModelTest, NothingIsWrittenOverItsFiles)
{
    const QString folder = writeModel();
    for (const char* name : {"cameras.txt", "images.txt", "points3D.txt"})
        EXPECT_TRUE(InputFiles({folder}).contain(folder + "/" + name)) << name;
    EXPECT_FALSE(InputFiles({folder}).contain(write("block/other.txt", "x")));
}

TEST_F(ColmapModelTest, ProjectKeepsStationsAndFindsItsPoints)
{
    Host host(Host::Settings::InMemory);
    const std::unique_ptr<CProject> project = host.createProject();
    FileOpener opener(host, *project, nullptr);
    opener.open({writeModel()}, ksp::StagedProgress::dummy());
    opener.save(path("block.v3d"), ksp::StagedProgress::dummy());
    project->clear();
    opener.open({path("block.v3d")}, ksp::StagedProgress::dummy());
    const CProjectModel& model = *project->getModel();
    ASSERT_EQ(model.getElementsCount(), 3);
    EXPECT_EQ(ElementSummary::of(*model.getItemManager(element_types::Mesh)->getItems()[0]).points, 2u);
    const auto& station =
        dynamic_cast<StationElement&>(*model.getItemManager(element_types::Station)->getItems()[1]);
    EXPECT_EQ(station.getName(), "b.jpg");
    EXPECT_EQ(station.getCenter(), glm::dvec3(-1, 2, 10));
    EXPECT_EQ(station.getCamera().model, "SIMPLE_PINHOLE");
}

TEST_F(ColmapModelTest, InfoTellsOfCamerasAndPoints)
{
    const QJsonArray elements = jsonElementsOf(runViewer({"info", "--json", writeModel()}));
    ASSERT_EQ(elements.size(), 3);
    const QJsonObject points = elements[0].toObject();
    EXPECT_EQ(points["type"].toString(), "mesh");
    EXPECT_EQ(points["name"].toString(), "block");
    EXPECT_EQ(points["points"].toInt(), 2);
    const QJsonObject station = elements[1].toObject();
    EXPECT_EQ(station["type"].toString(), "station");
    EXPECT_EQ(station["name"].toString(), "a.jpg");
    EXPECT_EQ(station["position"].toArray(), (QJsonArray{1.0, 2.0, 10.0}));
    EXPECT_EQ(station["rotation"].toArray(), (QJsonArray{1.0, 0.0, 0.0, 0.0}));
    const QJsonObject camera = station["camera"].toObject();
    EXPECT_EQ(camera["model"].toString(), "SIMPLE_PINHOLE");
    EXPECT_EQ(camera["size"].toArray(), (QJsonArray{640, 480}));
    EXPECT_EQ(camera["parameters"].toArray(), (QJsonArray{500, 320, 240}));
    EXPECT_EQ(elements[2].toObject()["name"].toString(), "b.jpg");
}

TEST_F(ColmapModelTest, SelectNamesStations)
{
    const QStringList view = {"--size", "100x100",  "--projection", "parallel", "--eye",
                              "0,2,30", "--target", "0,2,0",        "--up",     "0,1,0"};
    const ViewerRun run =
        runViewer(QStringList{"select", writeModel(), "--json", "--rect", "0,0,100,100"} + view);
    QStringList names;
    for (const QJsonValue& element : jsonElementsOf(run))
        names.append(element.toObject()["type"].toString() + " " + element.toObject()["name"].toString());
    names.sort();
    EXPECT_EQ(names, QStringList({"mesh block", "station a.jpg", "station b.jpg"}));
}
