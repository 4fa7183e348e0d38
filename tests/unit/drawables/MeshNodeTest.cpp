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

// The corner is shared by a face of area 6 that looks along z and one of area 2.5 that looks along (-3, 0,
// 4).
TEST(MeshNormals, FacesCountByTheirAreas)
{
    MeshData data = triangles({{0, 0, 0}, {4, 0, 0}, {0, 3, 0}, {0, 1, 0}, {-4, 0, -3}}, {0, 1, 2, 0, 3, 4});
    completeNormals(data);
    ASSERT_EQ(data.positions.size(), 5u);
    expectNear(data.normals[0], glm::normalize(6.0f * glm::vec3(0, 0, 1) + 2.5f * glm::vec3(-0.6f, 0, 0.8f)));
    expectNear(data.normals[1], {0, 0, 1});
    expectNear(data.normals[4], {-0.6f, 0, 0.8f});
}

namespace {

// Two unit squares that share the edge from vertex 0 to vertex 1; the second is turned up about it.
MeshData hinge(float degrees)
{
    const float angle = glm::radians(degrees);
    const float out = std::cos(angle);
    const float up = std::sin(angle);
    return triangles({{0, 0, 0}, {0, 1, 0}, {-1, 0, 0}, {-1, 1, 0}, {out, 0, up}, {out, 1, up}},
                     {0, 1, 3, 0, 3, 2, 0, 4, 5, 0, 5, 1});
}

// The cube from 0 to 1 with its 8 corners, corner i at (i & 1, i / 2 & 1, i / 4); each face against the
// clock.
MeshData cube()
{
    std::vector<glm::vec3> corners;
    for (int i = 0; i < 8; ++i)
        corners.emplace_back(i & 1, i / 2 & 1, i / 4);
    return triangles(std::move(corners), {0, 2, 3, 0, 3, 1, 4, 5, 7, 4, 7, 6, 0, 1, 5, 0, 5, 4,
                                          2, 6, 7, 2, 7, 3, 0, 4, 6, 0, 6, 2, 1, 3, 7, 1, 7, 5});
}

// A ball about the origin: rings of quads between the poles.
MeshData ball(int segments, int rings)
{
    std::vector<glm::vec3> points;
    std::vector<std::uint32_t> indices;
    const float pi = std::acos(-1.0f);
    for (int ring = 0; ring <= rings; ++ring)
        for (int i = 0; i < segments; ++i) {
            const float height = pi * float(ring) / float(rings);
            const float turn = 2.0f * pi * float(i) / float(segments);
            const float radius = ring == rings ? 0.0f : std::sin(height);
            points.emplace_back(radius * std::cos(turn), radius * std::sin(turn), std::cos(height));
        }
    const auto at = [&](int ring, int i) { return std::uint32_t(ring * segments + i % segments); };
    for (int ring = 0; ring < rings; ++ring)
        for (int i = 0; i < segments; ++i)
            for (const std::uint32_t index : {at(ring, i), at(ring + 1, i), at(ring + 1, i + 1), at(ring, i),
                                              at(ring + 1, i + 1), at(ring, i + 1)})
                indices.push_back(index);
    return triangles(std::move(points), std::move(indices));
}

glm::vec3 faceNormal(const MeshData& data, std::size_t face)
{
    const glm::vec3 a = data.positions[data.indices[3 * face]];
    const glm::vec3 b = data.positions[data.indices[3 * face + 1]];
    const glm::vec3 c = data.positions[data.indices[3 * face + 2]];
    return glm::normalize(glm::cross(b - a, c - a));
}

} // namespace

TEST(MeshNormals, FacesOfACubeAreFlat)
{
    const MeshData before = cube();
    MeshData data = before;
    completeNormals(data);
    EXPECT_EQ(data.positions.size(), 24u) << "a corner has one vertex a face and no more";
    ASSERT_EQ(data.normals.size(), data.positions.size());
    ASSERT_EQ(data.indices.size(), before.indices.size());
    for (std::size_t i = 0; i < data.indices.size(); ++i) {
        EXPECT_EQ(data.positions[data.indices[i]], before.positions[before.indices[i]]) << i;
        expectNear(data.normals[data.indices[i]], faceNormal(before, i / 3));
    }
}

TEST(MeshNormals, ABallIsSmooth)
{
    MeshData data = ball(24, 12);
    const std::size_t count = data.positions.size();
    completeNormals(data);
    EXPECT_EQ(data.positions.size(), count) << "no vertex is repeated";
    for (const std::uint32_t vertex : data.indices)
        EXPECT_LT(glm::distance(data.normals[vertex], glm::normalize(data.positions[vertex])), 0.2f);
}

TEST(MeshNormals, TerrainIsSmooth)
{
    const int side = 20;
    std::vector<glm::vec3> points;
    std::vector<std::uint32_t> indices;
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            points.emplace_back(x, y, std::sin(0.7f * float(x)) * std::cos(0.5f * float(y)));
    for (int y = 0; y + 1 < side; ++y)
        for (int x = 0; x + 1 < side; ++x)
            for (const int index : {y * side + x, y * side + x + 1, (y + 1) * side + x + 1, y * side + x,
                                    (y + 1) * side + x + 1, (y + 1) * side + x})
                indices.push_back(std::uint32_t(index));
    MeshData data = triangles(std::move(points), std::move(indices));
    completeNormals(data);
    EXPECT_EQ(data.positions.size(), std::size_t(side * side));
}

TEST(MeshNormals, ACreaseBeginsAboveFortyFiveDegrees)
{
    MeshData below = hinge(45.0f);
    completeNormals(below);
    EXPECT_EQ(below.positions.size(), 6u);
    expectNear(below.normals[0], below.normals[1]);
    MeshData above = hinge(47.0f);
    completeNormals(above);
    EXPECT_EQ(above.positions.size(), 8u) << "the two vertices of the edge are repeated, the others not";
    expectNear(above.normals[above.indices[0]], {0, 0, 1});
    MeshData back = hinge(-47.0f);
    completeNormals(back);
    EXPECT_EQ(back.positions.size(), 8u);
}

TEST(MeshNormals, CopiesKeepColoursAndTextureCoordinates)
{
    const MeshData before = [] {
        MeshData data = cube();
        for (std::uint32_t i = 0; i < 8; ++i) {
            data.colors.push_back(100 + i);
            data.texCoords.emplace_back(i, 2 * i);
        }
        return data;
    }();
    MeshData data = before;
    completeNormals(data);
    ASSERT_EQ(data.colors.size(), 24u);
    ASSERT_EQ(data.texCoords.size(), 24u);
    for (std::size_t i = 0; i < data.indices.size(); ++i) {
        EXPECT_EQ(data.colors[data.indices[i]], before.colors[before.indices[i]]) << i;
        EXPECT_EQ(data.texCoords[data.indices[i]], before.texCoords[before.indices[i]]) << i;
    }
}

TEST(MeshNormals, AVertexWithANormalIsNotRepeated)
{
    MeshData data = cube();
    data.normals.assign(8, glm::vec3(0.0f));
    data.normals[7] = {1, 0, 0};
    completeNormals(data);
    EXPECT_EQ(data.positions.size(), 22u);
    EXPECT_EQ(data.normals[7], glm::vec3(1, 0, 0));
}

TEST(MeshNormals, PartsThatShareTheirIndicesShareTheirNormals)
{
    MeshData data = cube();
    data.parts.push_back(data.parts[0]);
    data.parts.push_back(part(MeshData::Part::Lines, 0, 36));
    completeNormals(data);
    EXPECT_EQ(data.positions.size(), 24u);
    for (std::size_t i = 0; i < data.indices.size(); ++i)
        expectNear(data.normals[data.indices[i]], faceNormal(data, i / 3));
}

// Each face looks another way, all about one vertex: the work for a face stays the same however many there
// are.
TEST(MeshNormals, AHedgehogTakesNoTime)
{
    std::vector<glm::vec3> points = {{0, 0, 0}};
    std::vector<std::uint32_t> indices;
    const std::uint32_t faces = 100000;
    for (std::uint32_t i = 0; i < faces; ++i) {
        const float turn = 2.4f * float(i); // radians; runs over all directions
        const float height = 2.0f * float(i) / float(faces) - 1.0f;
        const float radius = std::sqrt(1.0f - height * height);
        points.emplace_back(radius * std::cos(turn), radius * std::sin(turn), height);
        points.emplace_back(std::cos(1.7f * turn), std::sin(1.7f * turn), 0.3f);
        indices.insert(indices.end(), {0u, 2 * i + 1, 2 * i + 2});
    }
    MeshData data = triangles(std::move(points), std::move(indices));
    const std::size_t before = data.positions.size();
    completeNormals(data);
    EXPECT_GT(data.positions.size(), before);
    EXPECT_LE(data.positions.size(), before + 15);
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

TEST(MeshNode3d, CopiesOfVerticesDoNotCount)
{
    MeshData data = cube();
    data.origin = {10, 20, 30};
    const MeshNode3d node(std::move(data));
    EXPECT_EQ(node.getGeometryInfo().triangleCount, 12u);
    EXPECT_EQ(node.getBounds().getMin(), glm::dvec3(10, 20, 30));
    EXPECT_EQ(node.getBounds().getMax(), glm::dvec3(11, 21, 31));
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
