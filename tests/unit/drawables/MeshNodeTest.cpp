#include "tests/support/LogTrap.h"

#include <Viewer3dModule/drawables/GroupNode3d.h>
#include <Viewer3dModule/drawables/MeshNode3d.h>
#include <Viewer3dModule/drawables/MeshNormals.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/PaintContext.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

MeshData::Part part(MeshData::Part::Kind kind, std::uint32_t first, std::uint32_t count)
{
    MeshData::Part result;
    result.kind = kind;
    result.firstIndex = first;
    result.indexCount = count;
    return result;
}

MeshData triangles(std::vector<glm::vec3> positions, std::vector<std::uint32_t> indices)
{
    MeshData data;
    data.positions = std::move(positions);
    data.indices = std::move(indices);
    data.parts = {part(MeshData::Part::Triangles, 0, static_cast<std::uint32_t>(data.indices.size()))};
    return data;
}

void expectNear(const glm::vec3& actual, const glm::vec3& expected)
{
    EXPECT_LT(glm::distance(actual, expected), 1e-6f) << actual.x << " " << actual.y << " " << actual.z;
}

const float notANumber = std::numeric_limits<float>::quiet_NaN();

} // namespace

TEST(MeshNormals, AFlatFaceGivesItsNormal)
{
    MeshData data = triangles({{0, 0, 0}, {2, 0, 0}, {0, 2, 0}}, {0, 1, 2});
    completeNormals(data);
    ASSERT_EQ(data.normals.size(), 3u);
    for (const glm::vec3& normal : data.normals)
        expectNear(normal, {0, 0, 1});
}

// The corner is shared by a face of area 6 that looks along z and one of area 2 that looks along x.
TEST(MeshNormals, FacesCountByTheirAreas)
{
    MeshData data = triangles({{0, 0, 0}, {4, 0, 0}, {0, 3, 0}, {0, 0, 4}, {0, 1, 0}}, {0, 1, 2, 0, 4, 3});
    completeNormals(data);
    expectNear(data.normals[0], glm::normalize(glm::vec3(2, 0, 6)));
    expectNear(data.normals[1], {0, 0, 1});
    expectNear(data.normals[3], {1, 0, 0});
}

TEST(MeshNormals, FacesWithoutAnAreaCountForNothing)
{
    MeshData data = triangles({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {2, 0, 0}, {notANumber, 0, 0}},
                              {0, 1, 2, 0, 1, 3, 1, 1, 2, 0, 2, 4});
    completeNormals(data);
    expectNear(data.normals[0], {0, 0, 1});
    expectNear(data.normals[1], {0, 0, 1});
    EXPECT_EQ(data.normals[3], glm::vec3(0.0f)) << "has no other face";
    EXPECT_EQ(data.normals[4], glm::vec3(0.0f));
}

TEST(MeshNormals, TinyAndHugeMeshesHaveNormalsToo)
{
    for (const float size : {1e-18f, 1e18f}) {
        MeshData data = triangles({{0, 0, 0}, {size, 0, 0}, {0, size, 0}}, {0, 1, 2});
        completeNormals(data);
        expectNear(data.normals[0], {0, 0, 1});
    }
}

TEST(MeshNormals, GivenNormalsStayAndMissingOnesAreFilledIn)
{
    MeshData data = triangles({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {0, 1, 2});
    data.normals = {{1, 0, 0}, {0, 0, 0}, {notANumber, 0, 0}};
    completeNormals(data);
    EXPECT_EQ(data.normals[0], glm::vec3(1, 0, 0));
    expectNear(data.normals[1], {0, 0, 1});
    expectNear(data.normals[2], {0, 0, 1});
}

TEST(MeshNormals, LinesAndPointsNeedNone)
{
    MeshData data;
    data.positions = {{0, 0, 0}, {1, 0, 0}};
    data.indices = {0, 1, 0};
    data.parts = {part(MeshData::Part::Lines, 0, 2), part(MeshData::Part::Points, 2, 1)};
    completeNormals(data);
    EXPECT_TRUE(data.normals.empty());
}

TEST(MeshNode3d, TellsWhatItIs)
{
    MeshData data = triangles({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {0, 1, 2});
    data.name = "roof";
    data.origin = {2.7e6, 1.2e6, 400};
    const MeshNode3d node(std::move(data));
    EXPECT_EQ(node.getName(), "roof");
    EXPECT_EQ(node.getOrigin(), glm::dvec3(2.7e6, 1.2e6, 400));
    EXPECT_EQ(node.getDrawerType(), DrawerType::Mesh);
}

TEST(MeshNode3d, BoundsAreInModelCoordinatesInDoubles)
{
    MeshData data;
    const glm::dvec3 origin(2700000.3, 1200000.7, 400.1); // no floats
    data.origin = origin;
    data.positions = {{0.001f, 0, -1}, {-2, 0.5f, 1}, {notANumber, 100, 100}};
    const MeshNode3d node(std::move(data));
    const gmx::BoundingBox bounds = node.getBounds();
    EXPECT_EQ(bounds.getMin(), origin + glm::dvec3(-2, 0, -1));
    EXPECT_EQ(bounds.getMax(), origin + glm::dvec3(double(0.001f), 0.5, 1));
}

TEST(MeshNode3d, AnEmptyMeshHasNoBounds)
{
    const MeshNode3d node({});
    EXPECT_TRUE(node.getBounds().isNull());
    EXPECT_EQ(node.getGeometryInfo().triangleCount, 0u);
}

TEST(MeshNode3d, CountsWhatItsPartsDraw)
{
    MeshData data;
    data.positions.resize(4);
    data.indices = {0, 1, 2, 0, 2, 3, 0, 1, 1, 2, 2, 3, 3, 3, 3, 3};
    data.parts = {part(MeshData::Part::Triangles, 0, 6), part(MeshData::Part::Lines, 6, 4),
                  part(MeshData::Part::Lines, 10, 2), part(MeshData::Part::Points, 12, 4)};
    const Drawable3dPrimitive::GeometryInfo info = MeshNode3d(std::move(data)).getGeometryInfo();
    EXPECT_EQ(info.triangleCount, 2u);
    EXPECT_EQ(info.lineCount, 3u);
    EXPECT_EQ(info.pointCount, 4u);
}

TEST(MeshNode3d, APartialTriangleOrLineDoesNotCount)
{
    MeshData data;
    data.positions.resize(4);
    data.indices = {0, 1, 2, 3, 0};
    data.parts = {part(MeshData::Part::Triangles, 0, 5), part(MeshData::Part::Lines, 0, 5)};
    const Drawable3dPrimitive::GeometryInfo info = MeshNode3d(std::move(data)).getGeometryInfo();
    EXPECT_EQ(info.triangleCount, 1u);
    EXPECT_EQ(info.lineCount, 2u);
}

TEST(MeshNode3d, PartsThatPointOutsideAreLeftOut)
{
    MeshData data;
    data.name = "wall";
    data.positions.resize(3);
    data.indices = {0, 1, 2, 0, 1, 3};
    data.parts = {part(MeshData::Part::Triangles, 0, 3), part(MeshData::Part::Triangles, 3, 3),
                  part(MeshData::Part::Triangles, 5, 3), part(MeshData::Part::Points, 0xFFFFFFFFu, 2)};
    const MeshNode3d node(std::move(data));
    EXPECT_EQ(node.getGeometryInfo().triangleCount, 1u);
    EXPECT_EQ(node.getGeometryInfo().pointCount, 0u);
    EXPECT_EQ(LogTrap::take(), QStringList{"mesh \"wall\": 3 parts with indices out of range are left out"});
}

TEST(MeshNode3d, DrawsNothingWithoutAContext)
{
    MeshNode3d node(triangles({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {0, 1, 2}));
    node.draw(PaintContext(), 1);
    EXPECT_EQ(node.getGeometryInfo().triangleCount, 1u);
}

namespace {

std::unique_ptr<IDrawableNode3d> nodeAt(const glm::dvec3& origin)
{
    MeshData data = triangles({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {0, 1, 2});
    data.origin = origin;
    return std::make_unique<MeshNode3d>(std::move(data));
}

std::vector<std::unique_ptr<IDrawableNode3d>> twoChildren()
{
    std::vector<std::unique_ptr<IDrawableNode3d>> children;
    children.push_back(nodeAt({100, 0, 0}));
    children.push_back(nullptr);
    children.push_back(nodeAt({0, 50, 7}));
    return children;
}

} // namespace

TEST(GroupNode3d, UnitesItsChildren)
{
    const GroupNode3d group(twoChildren());
    EXPECT_EQ(group.getOrigin(), glm::dvec3(100, 0, 0));
    EXPECT_EQ(group.getBounds().getMin(), glm::dvec3(0, 0, 0));
    EXPECT_EQ(group.getBounds().getMax(), glm::dvec3(101, 51, 7));
    EXPECT_EQ(group.getGeometryInfo().triangleCount, 2u);
}

TEST(GroupNode3d, GivesItsChildrenAway)
{
    GroupNode3d group(twoChildren());
    const std::vector<std::unique_ptr<IDrawableNode3d>> children = group.takeChildren();
    ASSERT_EQ(children.size(), 2u);
    EXPECT_EQ(children[1]->getOrigin(), glm::dvec3(0, 50, 7));
    EXPECT_TRUE(group.takeChildren().empty());
    EXPECT_TRUE(group.getBounds().isNull());
}

TEST(GroupNode3d, OfNothingIsEmpty)
{
    GroupNode3d group({});
    EXPECT_EQ(group.getOrigin(), glm::dvec3(0.0));
    EXPECT_TRUE(group.getBounds().isNull());
    group.draw(PaintContext(), 1);
}
