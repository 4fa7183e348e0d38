#include "SceneDepthMapGeneratorTest.h"
#include "Shapes.h"

#include "tests/support/NotingMeshItem.h"

#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>
#include <Viewer3dModule/fences/SphereFence.h>
#include <Viewer3dModule/host/Fence3dItem.h>
#include <Viewer3dModule/host/Scene3dViewLightingSettings.h>
#include <Viewer3dModule/shaders/ProgramVariants.h>
#include <framework/model/COrdinaryItemCreator.h>
#include <framework/model/CProject.h>

#include <QtGui/QOpenGLShaderProgram>

#include <glm/gtc/matrix_transform.hpp>

#include <cstring>

// Solid items are drawn by a program without colours, where nobody sees any, and leave the same depths.

namespace {

/// A mesh that says whether it is solid.
class DepthMesh : public NotingMeshItem
{
public:
    explicit DepthMesh(MeshData data)
        : NotingMeshItem(std::move(data))
    {
        setSolid(node.isSolid());
    }
};

MeshData::Part part(MeshData::Part::Kind kind, std::size_t first, std::size_t count)
{
    MeshData::Part result;
    result.kind = kind;
    result.firstIndex = static_cast<std::uint32_t>(first);
    result.indexCount = static_cast<std::uint32_t>(count);
    return result;
}

/// Triangles, lines and points of all sizes, in front of the eye.
MeshData mixture()
{
    MeshData data;
    data.positions = shapes::randomTriangles(60, 8.0f);
    for (glm::vec3& position : data.positions)
        position.z -= 20.0f;
    for (std::uint32_t i = 0; i < data.positions.size(); ++i)
        data.indices.push_back(i);
    data.parts = {part(MeshData::Part::Triangles, 0, 90), part(MeshData::Part::Lines, 90, 60),
                  part(MeshData::Part::Points, 150, 30)};
    data.parts.back().pointSize = 7.0f;
    data.colors.assign(data.positions.size(), 0xFF8040C0u);
    data.texCoords.assign(data.positions.size(), glm::vec2(0.3f));
    return data;
}

/// A square across the line of sight at the distance 10.
MeshData square()
{
    MeshData data;
    data.positions = {{-5, -5, -10}, {5, -5, -10}, {5, 5, -10}, {-5, 5, -10}};
    data.texCoords = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    data.indices = {0, 1, 2, 0, 2, 3};
    data.parts = {part(MeshData::Part::Triangles, 0, 6)};
    return data;
}

QImage halfTransparent()
{
    QImage image(64, 64, QImage::Format_RGBA8888);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x)
            image.setPixelColor(x, y, QColor(10, 200, 30, x < 32 ? 255 : 0));
    return image;
}

std::vector<char> bytesOf(const QImage& map)
{
    std::vector<char> bytes(static_cast<std::size_t>(map.sizeInBytes()));
    std::memcpy(bytes.data(), map.constBits(), bytes.size());
    return bytes;
}

class DepthProgramTest : public SceneDepthMapGeneratorTest
{
protected:
    QImage mapOf(DepthMesh& item, int drawerType)
    {
        item.setDrawer(scene->getDefaultDrawer(drawerType));
        return map({&item}, QSize(120, 90));
    }
    QOpenGLShaderProgram* programOf(int drawerType)
    {
        return static_cast<SequentialItem3dDrawer*>(scene->getDefaultDrawer(drawerType))->getDefaultProgram();
    }
};

TEST_F(DepthProgramTest, LeavesTheSameDepthsToTheBit)
{
    DepthMesh item(mixture());
    ASSERT_TRUE(item.isSolid());
    for (const int type : {DrawerType::Mono, DrawerType::VertexColor, DrawerType::Mesh}) {
        item.setSolid(true);
        const QImage simple = mapOf(item, type);
        ASSERT_NE(scene->getDepthProgram(programOf(type)), nullptr);
        EXPECT_EQ(item.lastProgram, scene->getDepthProgram(programOf(type)));
        item.setSolid(false);
        const QImage ordinary = mapOf(item, type);
        EXPECT_EQ(item.lastProgram, programOf(type));
        EXPECT_GT(coveredCount(simple), 120 * 90 / 4);
        EXPECT_LT(coveredCount(simple), 120 * 90);
        EXPECT_EQ(bytesOf(simple), bytesOf(ordinary)) << type;
    }
}

// Large surfaces take a variant without the size of points, as they take one where they are seen.
TEST_F(DepthProgramTest, HasAVariantForLargeSurfaces)
{
    project->addProjectSettings(new COrdinaryItemCreator<Scene3dViewLightingSettings>, 4);
    MeshData data = mixture();
    data.parts.resize(1);
    DepthMesh item(data);
    const QImage usual = mapOf(item, DrawerType::Mesh);
    item.setLargeSurface(true);
    const QImage large = mapOf(item, DrawerType::Mesh);
    QOpenGLShaderProgram* plain = scene->getDepthProgram(programOf(DrawerType::Mesh));
    ProgramVariant wanted;
    wanted.drawsLargeSurfaces = true;
    EXPECT_NE(item.lastProgram, plain);
    EXPECT_EQ(item.lastProgram, &findProgramVariant(*plain, wanted));
    EXPECT_GT(coveredCount(large), 120 * 90 / 4);
    EXPECT_EQ(bytesOf(large), bytesOf(usual));
}

TEST_F(DepthProgramTest, IsNoneOfProgramsThatShapeWhatTheyDraw)
{
    for (const int type : {DrawerType::Texture, DrawerType::WideLines, DrawerType::DashedLines,
                           DrawerType::SolidRegularLines, DrawerType::Caption}) {
        EXPECT_EQ(scene->getDepthProgram(programOf(type)), nullptr) << type;
        DepthMesh item(square());
        mapOf(item, type);
        EXPECT_NE(item.lastProgram, scene->getDepthProgram(programOf(DrawerType::Mono))) << type;
    }
    EXPECT_EQ(scene->getDepthProgram(nullptr), nullptr);
}

TEST_F(DepthProgramTest, StaysOutOfPictures)
{
    DepthMesh item(square());
    item.setDrawer(scene->getDefaultDrawer(DrawerType::Mesh));
    scene->drawElements(paintContext(8, 8), nullptr, {});
    EXPECT_EQ(item.lastProgram, programOf(DrawerType::Mesh));
}

TEST_F(DepthProgramTest, WhatIsHighlightedIsDrawnInItsColour)
{
    DepthMesh item(square());
    item.highlighted = true;
    mapOf(item, DrawerType::Mesh);
    EXPECT_EQ(item.lastProgram, programOf(DrawerType::Mesh));
}

// A fence cuts fragments, which the simple program has none of.
TEST_F(DepthProgramTest, WhatIsFencedIsDrawnByAProgramThatCuts)
{
    project->addProjectSettings(new COrdinaryItemCreator<Fence3dItem>, CProject::StoredSettings);
    DepthMesh item(square());
    Fence3dItem* fence = scene->getFence();
    ASSERT_TRUE(fence);
    std::dynamic_pointer_cast<SphereFence>(fence->getCreateFence(Fence3DObject::SphereFence))
        ->setFence({0, 0, -10}, 3.0);
    fence->notifyObservers();
    mapOf(item, DrawerType::Mesh);
    EXPECT_NE(item.lastProgram, programOf(DrawerType::Mesh));
    EXPECT_EQ(item.lastProgram,
              &findProgramVariant(*programOf(DrawerType::Mesh), {ProgramFence::Sphere, false}));
    fence->reset();
    mapOf(item, DrawerType::Mesh);
    EXPECT_EQ(item.lastProgram, scene->getDepthProgram(programOf(DrawerType::Mesh)));
}

// Both kinds in one pass, in whichever order they were added: the nearer one is seen.
TEST_F(DepthProgramTest, SolidItemsAndOthersHideEachOther)
{
    for (const bool isFirstSolid : {false, true}) {
        DepthMesh first(square()), second(square());
        first.setSolid(isFirstSolid);
        second.setSolid(!isFirstSolid);
        second.setTransform(glm::translate(glm::mat4(1.0f), glm::vec3(0, 0, 3)), false);
        for (DepthMesh* item : {&first, &second})
            item->setDrawer(scene->getDefaultDrawer(DrawerType::Mesh));
        EXPECT_NEAR(distanceAt(map({&first, &second}), Size.width() / 2, Size.height() / 2), 7.0f, 1e-4f);
    }
}

TEST_F(DepthProgramTest, HolesOfATextureStayHoles)
{
    MeshData data = square();
    data.images = {halfTransparent()};
    data.parts.front().image = 0;
    DepthMesh item(std::move(data));
    EXPECT_FALSE(item.isSolid());
    const QImage image = mapOf(item, DrawerType::Mesh);
    EXPECT_NEAR(distanceAt(image, 40, 45), 10.0f, 1e-4f);
    EXPECT_TRUE(std::isnan(distanceAt(image, 80, 45)));
}

TEST_F(DepthProgramTest, ColoursSayWhatIsSolid)
{
    const auto isSolid = [](const std::function<void(MeshData&)>& change) {
        MeshData data = square();
        change(data);
        return MeshNode3d(std::move(data)).isSolid();
    };
    const QImage opaque = halfTransparent().convertToFormat(QImage::Format_RGB32);
    EXPECT_TRUE(isSolid([](MeshData&) {}));
    EXPECT_TRUE(isSolid([](MeshData& data) { data.parts[0].color = QColor(1, 2, 3, 1); }));
    EXPECT_FALSE(isSolid([](MeshData& data) { data.parts[0].color = QColor(1, 2, 3, 0); }));
    // bytes red, green, blue, alpha in memory order: the last byte is alpha
    EXPECT_TRUE(isSolid([](MeshData& data) { data.colors.assign(4, 0x01000000u); }));
    EXPECT_FALSE(isSolid([](MeshData& data) { data.colors = {~0u, ~0u, ~0u, 0x00FFFFFFu}; }));
    EXPECT_TRUE(isSolid([&](MeshData& data) {
        data.images = {opaque};
        data.parts[0].image = 0;
    }));
    EXPECT_FALSE(isSolid([](MeshData& data) {
        data.images = {halfTransparent()};
        data.parts[0].image = 0;
    }));
    EXPECT_TRUE(isSolid([](MeshData& data) { data.images = {halfTransparent()}; })); // which no part shows
    EXPECT_TRUE(isSolid([](MeshData& data) { data.parts[0].image = 5; }));
}

} // namespace
