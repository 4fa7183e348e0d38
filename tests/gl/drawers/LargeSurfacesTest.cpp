#include "tests/support/ImageCheck.h"
#include "tests/support/NotingMeshItem.h"
#include "tests/support/RenderTarget.h"
#include "tests/support/SceneTest.h"

#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/fences/SphereFence.h>
#include <Viewer3dModule/host/Fence3dItem.h>
#include <Viewer3dModule/host/Scene3dViewLightingSettings.h>
#include <Viewer3dModule/shaders/ProgramVariants.h>
#include <framework/model/COrdinaryItemCreator.h>
#include <framework/model/CProject.h>

#include <memory>

// Passes over large surfaces take a program of their own, which shows what the others show.

namespace {

/// A mesh that is called large or not, whatever its size.
class SurfaceItem : public NotingMeshItem
{
public:
    SurfaceItem(MeshData data, bool large)
        : NotingMeshItem(std::move(data))
    {
        node.promiseFor(*this);
        setLargeSurface(large);
    }
    /// Whether its last pass took the program for large surfaces.
    bool wasLarge() const { return lastProgram && isForLargeSurfaces(*lastProgram); }
};

using Items = std::vector<std::unique_ptr<SurfaceItem>>;

/// A bent sheet of so many triangles across the view, in two parts of different colours.
MeshData sheet(std::uint32_t triangles = 60)
{
    MeshData data;
    const std::uint32_t columns = triangles / 2;
    for (std::uint32_t i = 0; i <= columns; ++i) {
        const float x = -0.9f + 1.8f * static_cast<float>(i) / static_cast<float>(columns);
        data.positions.insert(data.positions.end(), {{x, -0.8f, 0.3f * x * x}, {x, 0.8f, -0.4f * x}});
    }
    for (std::uint32_t a = 0; a < 2 * columns; a += 2)
        data.indices.insert(data.indices.end(), {a, a + 2, a + 3, a, a + 3, a + 1});
    MeshData::Part part;
    part.color = QColor(230, 120, 40);
    part.indexCount = 3 * columns;
    data.parts.push_back(part);
    part.color = QColor(20, 90, 200, 130);
    part.firstIndex = part.indexCount;
    data.parts.push_back(part);
    return data;
}

MeshData coloredSheet()
{
    MeshData data = sheet();
    for (std::uint32_t i = 0; i < data.positions.size(); ++i)
        data.colors.push_back((i % 7 == 0 ? 0x60000000u : 0xFF000000u) + i * 0x030207u);
    return data;
}

MeshData texturedSheet(int alpha)
{
    MeshData data = sheet();
    for (const glm::vec3& position : data.positions)
        data.texCoords.emplace_back(position.x, position.y);
    QImage image(8, 8, QImage::Format_RGBA8888);
    for (int i = 0; i < 64; ++i)
        image.setPixelColor(i % 8, i / 8, QColor(3 * i, 255 - 4 * i, 90, i % 3 == 0 ? alpha : 255));
    data.images = {image};
    data.parts[0].image = 0; // and the other part shows its colour
    return data;
}

class LargeSurfacesTest : public SceneTest
{
protected:
    void SetUp() override
    {
        SceneTest::SetUp();
        project->addProjectSettings(new COrdinaryItemCreator<Scene3dViewLightingSettings>, 4);
        light = dynamic_cast<Scene3dViewLightingSettings*>(project->getProjectSettings(0x36FFCE00));
        ASSERT_TRUE(light);
        light->data("").flag = true;
    }
    Items itemsOf(const std::vector<std::pair<MeshData, bool>>& meshes)
    {
        Items items;
        for (const auto& [data, large] : meshes) {
            items.push_back(std::make_unique<SurfaceItem>(data, large));
            items.back()->setDrawer(scene->getDefaultDrawer(DrawerType::Mesh));
        }
        return items;
    }
    QImage picture(int mode = 0)
    {
        PaintContext context = paintContext(32, 32);
        context.drawMode = mode;
        return drawFrame(context);
    }
    /// The picture of one mesh, checking that it takes the program that is meant for it.
    QImage pictureOf(const MeshData& data, bool large)
    {
        const Items items = itemsOf({{data, large}});
        const QImage image = picture();
        EXPECT_EQ(items[0]->wasLarge(), large);
        return image;
    }
    /// That a mesh looks the same called large and not. Returns what it looks like.
    QImage expectSame(const MeshData& data)
    {
        const QImage usual = pictureOf(data, false);
        EXPECT_EQ(pictureOf(data, true), usual);
        EXPECT_LT(countPixels(usual, QColor(Qt::black)), 32 * 32 * 3 / 4);
        return usual;
    }

    Scene3dViewLightingSettings* light = nullptr;
};

TEST_F(LargeSurfacesTest, LookAsTheyDoOtherwise)
{
    for (const MeshData& data : {sheet(), coloredSheet(), texturedSheet(255), texturedSheet(0)})
        expectSame(data);
}

// The program does not ask for either: what is highlighted, or not lit, takes the usual one and looks so.
TEST_F(LargeSurfacesTest, AreDrawnAsOthersWhereHighlightedOrNotLit)
{
    const Items items = itemsOf({{sheet(), true}, {coloredSheet(), true}});
    const QImage lit = picture();
    EXPECT_TRUE(items[0]->wasLarge() && items[1]->wasLarge());
    const auto expectUsual = [&](const char* what) {
        const QImage other = picture();
        EXPECT_NE(other, lit) << what;
        EXPECT_FALSE(items[0]->wasLarge() || items[1]->wasLarge()) << what;
        for (const auto& item : items)
            item->setLargeSurface(false);
        EXPECT_EQ(picture(), other) << what;
        for (const auto& item : items)
            item->setLargeSurface(true);
    };
    items[1]->highlighted = true;
    expectUsual("highlighted");
    items[1]->setVisible(false); // who is not drawn does not count
    picture();
    EXPECT_TRUE(items[0]->wasLarge());
    items[1]->setVisible(true);
    items[1]->highlighted = false;
    light->data("").flag = false;
    expectUsual("not lit");
    light->data("").flag = true;
    EXPECT_EQ(picture(), lit);
    EXPECT_TRUE(items[0]->wasLarge());
}

TEST_F(LargeSurfacesTest, AreCutByFencesAsOthers)
{
    project->addProjectSettings(new COrdinaryItemCreator<Fence3dItem>, CProject::StoredSettings);
    const QImage whole = expectSame(sheet());
    Fence3dItem* fence = scene->getFence();
    ASSERT_TRUE(fence);
    std::dynamic_pointer_cast<SphereFence>(fence->getCreateFence(Fence3DObject::SphereFence))
        ->setFence({0, 0, 0}, 0.8);
    fence->notifyObservers();
    EXPECT_NE(expectSame(sheet()), whole);
}

TEST_F(LargeSurfacesTest, ASmallOneAmongThemHasAllDrawnAsEver)
{
    const Items items = itemsOf({{sheet(), true}, {coloredSheet(), false}, {sheet(), true}});
    picture();
    for (const auto& item : items)
        EXPECT_FALSE(item->wasLarge());
    items[1]->setVisible(false); // what is not drawn does not count
    picture();
    EXPECT_TRUE(items[0]->wasLarge());
    EXPECT_TRUE(items[2]->wasLarge());
}

TEST_F(LargeSurfacesTest, AreDrawnAsOthersInPassesForMasks)
{
    const Items items = itemsOf({{sheet(), true}});
    for (const int mode : {1, 2}) {
        const QImage large = picture(mode);
        EXPECT_FALSE(items[0]->wasLarge()) << mode;
        items[0]->setLargeSurface(false);
        EXPECT_EQ(picture(mode), large) << mode;
        items[0]->setLargeSurface(true);
    }
}

// A host may look at corners instead of faces. They have the size that points have where nobody says another.
TEST_F(LargeSurfacesTest, ShowTheirCornersAsOthersDo)
{
    gl->glPolygonMode(GL_FRONT_AND_BACK, GL_POINT);
    MeshData square = sheet(2);
    square.parts[0].indexCount = 6;
    square.parts.pop_back();
    const QImage usual = pictureOf(square, false);
    const QImage large = pictureOf(square, true);
    EXPECT_EQ(large, usual);
    EXPECT_EQ(countPixels(large, QColor(Qt::black)), 32 * 32 - 4);
    EXPECT_TRUE(gl->glIsEnabled(GL_PROGRAM_POINT_SIZE)) << "as it was before";
    gl->glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

TEST(LargeMeshTest, HasTenThousandTrianglesAPartAndNothingElse)
{
    const auto isLarge = [](MeshData data) { return MeshNode3d(std::move(data)).isLargeSurface(); };
    EXPECT_TRUE(isLarge(sheet(20000)));
    EXPECT_FALSE(isLarge(sheet(19998)));
    MeshData one = sheet(10000);
    one.parts[0].indexCount = 30000;
    one.parts.pop_back();
    EXPECT_TRUE(isLarge(one));
    for (const MeshData::Part::Kind kind : {MeshData::Part::Points, MeshData::Part::Lines}) {
        MeshData mixed = sheet(60000);
        MeshData::Part other;
        other.kind = kind;
        other.indexCount = 2;
        mixed.parts.push_back(other);
        EXPECT_FALSE(isLarge(mixed)) << kind;
    }
    EXPECT_FALSE(isLarge(MeshData()));
    EXPECT_TRUE(SurfaceItem(one, true).isLargeSurface());
    EXPECT_FALSE(SurfaceItem(one, false).isLargeSurface());
}

} // namespace
