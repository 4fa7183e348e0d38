#include "../../support/ImageCheck.h"
#include "../../support/SceneTest.h"

#include <viewer/elements/ElementTypes.h>
#include <viewer/elements/MeshElement.h>

#include <Viewer3dModule/drawables/MeshNode3d.h>
#include <Viewer3dModule/host/Graphics3dItem.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>
#include <framework/model/FeatureElement.h>

#include <cmath>

namespace {

const glm::dvec3 wallOrigin(2.7e6, 1.2e6, 400.0);

/// Corners of a gable wall, metres from the wallOrigin.
const std::vector<glm::vec3> gable = {{0, 0, 0}, {8, 0, 0}, {8, 0, 3.125f}, {4, 0, 5.75f}, {0, 0, 3.125f}};

/// All vertices as one part of the kind, triangles as a fan.
std::unique_ptr<MeshNode3d> makeNode(const std::vector<glm::vec3>& positions, const glm::dvec3& place,
                                     MeshData::Part::Kind kind)
{
    MeshData data;
    data.origin = place;
    data.positions = positions;
    const auto count = static_cast<std::uint32_t>(positions.size());
    if (kind == MeshData::Part::Points)
        for (std::uint32_t i = 0; i < count; ++i)
            data.indices.push_back(i);
    else
        for (std::uint32_t i = 2; i < count; ++i)
            data.indices.insert(data.indices.end(), {0u, i - 1, i});
    MeshData::Part part;
    part.kind = kind;
    part.indexCount = static_cast<std::uint32_t>(data.indices.size());
    part.color = Qt::white;
    data.parts.push_back(part);
    return std::make_unique<MeshNode3d>(std::move(data));
}

} // namespace

/// Meshes in a scene that shows the viewer's elements.
class MeshItemTest : public SceneTest
{
protected:
    Graphics3dItem& add(std::unique_ptr<IDrawableNode3d> node)
    {
        auto element = std::make_unique<MeshElement>();
        element->setNode(std::move(node));
        return addElement(std::move(element));
    }
    Graphics3dItem& addElement(std::unique_ptr<CModelElement> element)
    {
        CModelElementManager* manager = project->getModel()->getCreateItemManager(element->getType());
        return *scene->getItems().at(manager->addItem(std::move(element))->getId());
    }
    Graphics3dItem& addGable() { return add(makeNode(gable, wallOrigin, MeshData::Part::Triangles)); }
    QImage frame() { return drawFrame(paintContext(64, 64)); }
    int pointPixels() { return countPixels(frame(), Qt::white); }
};

TEST_F(MeshItemTest, VerticesAreThoseOfTheMeshBeforeAndAfterTheFirstFrame)
{
    element_types::registerItems(*scene);
    Graphics3dItem& item = addGable();
    EXPECT_EQ(item.getVertices(), gable);
    frame();
    EXPECT_EQ(item.getVertices(), gable);
}

// The item's transform takes its vertices to the scene, and the scene's takes them to the model.
TEST_F(MeshItemTest, VerticesLeadToTheModelCoordinates)
{
    element_types::registerItems(*scene);
    Graphics3dItem& item = addGable();
    frame();
    ASSERT_NE(scene->modelToSceneTransform(), glm::dmat4(1.0)) << "far from the wallOrigin, so recentred";
    const std::vector<glm::vec3> vertices = item.getVertices();
    const InteractiveGraphicsItem& hostSide = item;
    const glm::dmat4 toModel = hostSide.sceneToModelTransform() * hostSide.getTransform();
    ASSERT_EQ(vertices.size(), gable.size());
    for (std::size_t i = 0; i < gable.size(); ++i) {
        const glm::dvec3 point(toModel * glm::dvec4(vertices[i], 1.0));
        // 8 m are 1000 scene units, of which floats keep 3e-5
        EXPECT_LT(glm::distance(point, wallOrigin + glm::dvec3(gable[i])), 1e-6) << i;
    }
}

TEST_F(MeshItemTest, SingleVerticesComeFromTheSameList)
{
    element_types::registerItems(*scene);
    Graphics3dItem& item = addGable();
    frame();
    EXPECT_EQ(item.getVertex(3), gable[3]);
    EXPECT_TRUE(std::isnan(item.getVertex(-1).x));
    EXPECT_TRUE(std::isnan(item.getVertex(static_cast<int>(gable.size())).z));
    EXPECT_EQ(item.getNodePoint(1), glm::dvec3(gable[1]));
    EXPECT_EQ(item.getNodePoints().size(), gable.size());
}

TEST_F(MeshItemTest, VerticesNeedNoContextOfTheCallers)
{
    element_types::registerItems(*scene);
    Graphics3dItem& item = addGable();
    frame();
    scene->doneCurrent();
    EXPECT_EQ(item.getVertices(), gable);
    EXPECT_EQ(QOpenGLContext::currentContext(), nullptr);
    scene->makeCurrent();
}

TEST_F(MeshItemTest, GlueMaskGoesByTheNumberOfVertices)
{
    element_types::registerItems(*scene);
    EXPECT_EQ(addGable().getNodePointsCount(), 5);
    EXPECT_EQ(addGable().getGlueMask(), 0x1DEu);
    EXPECT_EQ(add(makeNode({glm::vec3(0)}, wallOrigin, MeshData::Part::Points)).getGlueMask(), 0x300u);
}

TEST_F(MeshItemTest, MeshWithoutGeometryHasNoVertices)
{
    element_types::registerItems(*scene);
    Graphics3dItem& item = addElement(std::make_unique<MeshElement>());
    EXPECT_TRUE(item.getVertices().empty());
    EXPECT_EQ(item.getNodePointsCount(), 0);
    EXPECT_TRUE(std::isnan(item.getVertex(0).x));
}

/// Sizes of points.
class PointSizeTest : public MeshItemTest
{
protected:
    void addMeshPoint() { add(makeNode({glm::vec3(0)}, glm::dvec3(0.0), MeshData::Part::Points)); }
    Graphics3dItem& addFeaturePoint(const QVariant& markerSize = {})
    {
        auto element = std::make_unique<FeatureElement>();
        element->setProperty("marker-color", "white");
        if (markerSize.isValid()) element->setProperty("marker-size", markerSize);
        FeatureElement::Part part;
        part.points = {glm::dvec3(0.0)};
        element->setParts({part});
        return addElement(std::move(element));
    }
};

TEST_F(PointSizeTest, IsTwoPixelsOfMeshes)
{
    element_types::registerItems(*scene);
    addMeshPoint();
    EXPECT_EQ(pointPixels(), 2 * 2);
}

TEST_F(PointSizeTest, IsSixPixelsOfFeatures)
{
    element_types::registerItems(*scene);
    addFeaturePoint();
    EXPECT_EQ(pointPixels(), 6 * 6);
}

TEST_F(PointSizeTest, IsChosenForMeshes)
{
    element_types::registerItems(*scene, 20.0f);
    addMeshPoint();
    EXPECT_EQ(pointPixels(), 20 * 20);
}

TEST_F(PointSizeTest, IsChosenForMeshesWhoseGeometryComesLater)
{
    element_types::registerItems(*scene, 20.0f);
    Graphics3dItem& item = addElement(std::make_unique<MeshElement>());
    static_cast<MeshElement*>(item.getModelElement())
        ->setNode(makeNode({glm::vec3(0)}, glm::dvec3(0.0), MeshData::Part::Points));
    EXPECT_EQ(pointPixels(), 20 * 20);
}

TEST_F(PointSizeTest, IsChosenForFeaturesThatSayNone)
{
    element_types::registerItems(*scene, 20.0f);
    CModelElement* const element = addFeaturePoint().getModelElement();
    EXPECT_EQ(pointPixels(), 20 * 20);
    element->setProperty("marker-size", 12);
    EXPECT_EQ(pointPixels(), 12 * 12);
}

TEST_F(PointSizeTest, OfAFeaturesOwnWins)
{
    element_types::registerItems(*scene, 20.0f);
    addFeaturePoint(10);
    EXPECT_EQ(pointPixels(), 10 * 10);
}
