#include "NodeItem.h"

#include "tests/support/ImageCheck.h"
#include "tests/support/SceneTest.h"

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawables/GroupNode3d.h>
#include <Viewer3dModule/drawables/MeshNode3d.h>
#include <Viewer3dModule/drawers/DrawerType.h>

#include <glm/gtc/matrix_transform.hpp>

// What nodes tell of their vertices and take as the size of their points.
namespace {

const std::vector<glm::vec3> corners = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0.25f, 0.25f, 1}};

/// A pyramid: its faces share no normals, so that vertices get copies.
MeshData pyramid(const glm::dvec3& origin = glm::dvec3(0.0))
{
    MeshData data;
    data.origin = origin;
    data.positions = corners;
    data.indices = {0, 2, 1, 0, 1, 3, 1, 2, 3, 2, 0, 3};
    MeshData::Part part;
    part.indexCount = 12;
    data.parts.push_back(part);
    return data;
}

MeshData onePoint(const glm::dvec3& origin)
{
    MeshData data;
    data.origin = origin;
    data.positions = {glm::vec3(0.0f)};
    data.indices = {0};
    MeshData::Part part;
    part.kind = MeshData::Part::Points;
    part.indexCount = 1;
    part.color = Qt::white;
    data.parts.push_back(part);
    return data;
}

} // namespace

class NodeVerticesTest : public SceneTest
{
protected:
    IDrawableNode3d& show(std::unique_ptr<IDrawableNode3d> node)
    {
        auto item = std::make_unique<NodeItem>(std::move(node));
        IDrawableNode3d& shown = *item->node;
        item->setTransform(glm::mat4(glm::translate(glm::dmat4(1.0), shown.getOrigin())), false);
        scene->addLocalItem(std::move(item));
        return shown;
    }
    int pointPixels() { return countPixels(drawFrame(paintContext(64, 64)), Qt::white); }
};

TEST_F(NodeVerticesTest, AreThoseOfTheDataBeforeTheUploadAndAfterIt)
{
    const IDrawableNode3d& node = show(std::make_unique<MeshNode3d>(pyramid()));
    EXPECT_EQ(node.getVertexCount(), 4);
    EXPECT_EQ(node.getVertices(), corners);
    drawFrame(paintContext(8, 8));
    EXPECT_EQ(node.getVertexCount(), 4);
    EXPECT_EQ(node.getVertices(), corners);
}

TEST_F(NodeVerticesTest, CannotBeReadBackWithoutAContext)
{
    const IDrawableNode3d& node = show(std::make_unique<MeshNode3d>(pyramid()));
    drawFrame(paintContext(8, 8));
    scene->doneCurrent();
    EXPECT_TRUE(node.getVertices().empty());
    EXPECT_EQ(node.getVertexCount(), 4);
}

TEST_F(NodeVerticesTest, EmptyMeshHasNone)
{
    const MeshNode3d node{MeshData()};
    EXPECT_TRUE(node.getVertices().empty());
    EXPECT_EQ(node.getVertexCount(), 0);
}

TEST_F(NodeVerticesTest, GroupHasThoseOfItsChildrenAboutItsOwnOrigin)
{
    std::vector<std::unique_ptr<IDrawableNode3d>> children;
    children.push_back(std::make_unique<MeshNode3d>(onePoint({2.7e6, 1.2e6, 400.0})));
    children.push_back(std::make_unique<MeshNode3d>(pyramid({2.7e6 + 8.0, 1.2e6 - 4.0, 400.5})));
    const GroupNode3d group(std::move(children));
    EXPECT_EQ(group.getVertexCount(), 5);
    EXPECT_EQ(group.getVertices(),
              (std::vector<glm::vec3>{
                  {0, 0, 0}, {8, -4, 0.5f}, {9, -4, 0.5f}, {8, -3, 0.5f}, {8.25f, -3.75f, 1.5f}}));
}

TEST_F(NodeVerticesTest, PointsAreTwoPixelsWideUntilToldOtherwise)
{
    IDrawableNode3d& node = show(std::make_unique<MeshNode3d>(onePoint(glm::dvec3(0.0))));
    EXPECT_EQ(pointPixels(), 2 * 2);
    node.setPointSize(10.0f);
    EXPECT_EQ(pointPixels(), 10 * 10);
}

TEST_F(NodeVerticesTest, SizeOfPointsReachesTheChildrenOfAGroup)
{
    std::vector<std::unique_ptr<IDrawableNode3d>> children;
    children.push_back(std::make_unique<MeshNode3d>(onePoint({-0.5, 0.0, 0.0})));
    children.push_back(std::make_unique<MeshNode3d>(onePoint({0.5, 0.0, 0.0})));
    show(std::make_unique<GroupNode3d>(std::move(children))).setPointSize(6.0f);
    EXPECT_EQ(pointPixels(), 2 * 6 * 6);
}
