#pragma once

#include <tests/support/GlCalls.h>
#include <tests/support/GlObjects.h>
#include <tests/support/ImageCheck.h>
#include <tests/support/LogTrap.h>
#include <tests/support/SceneTest.h>
#include <tests/support/TestItems.h>

#include <Viewer3dModule/drawables/IconTexture.h>
#include <Viewer3dModule/drawers/MultiGlyphItem3dDrawer.h>
#include <Viewer3dModule/shaders/DrawMode.h>
#include <framework/model/CProject.h>

#include <memory>
#include <vector>

/// An item that stands for an element and has the label that the test gives it.
class LabelledItem : public TestGraphicsItem
{
public:
    static constexpr int DrawerKind = 4712; // of no drawer that scenes have by themselves

    explicit LabelledItem(LONGID identifier)
        : TestGraphicsItem(nullptr)
        , id(identifier)
    {
        drawerType = DrawerKind;
    }
    using Drawable3dItem::setDrawer;

    LONGID getId() const override { return id; }
    bool isHighlighted() const override { return highlighted; }
    void updateVisibility() override {} // as the test says, there being no element
    gmx::BoundingBox sceneBoundingBox() const override { return {glm::dvec3(anchor), glm::dvec3(anchor)}; }
    int getVisibilityType() const override { return DrawerKind; }

    LONGID id;
    glm::vec3 anchor{0.0f};
    float height = 0.0f;
    MultiGlyphItem3dDrawer::GlyphList glyphs;
    bool highlighted = false;
};

/// Draws the labels of LabelledItems and counts how often it asks for them.
class LabelledItemDrawer : public MultiGlyphItem3dDrawer
{
public:
    using Item3dDrawer::removeItem;
    using MultiGlyphItem3dDrawer::getGlyphs;
    using MultiGlyphItem3dDrawer::MultiGlyphItem3dDrawer;
    /// An empty one with the same program.
    LabelledItemDrawer(const LabelledItemDrawer& other)
        : MultiGlyphItem3dDrawer(other.scene(), other.getProgram())
    {
    }

    glm::vec3 getAnchor(Graphics3dItem* item) override { return of(item).anchor; }
    float getGlyphHeight(Graphics3dItem* item) override { return of(item).height; }
    int getGlyphCount(Graphics3dItem* item) override
    {
        return static_cast<int>(of(item).glyphs.size()) + extraCount;
    }
    GlyphList getGlyphs(Graphics3dItem* item) override
    {
        ++layouts;
        return of(item).glyphs;
    }
    std::unique_ptr<Item3dDrawer> clone() const override { return nullptr; }

    int extraCount = 0; // what getGlyphCount tells beyond the truth
    int layouts = 0;

private:
    static LabelledItem& of(Graphics3dItem* item) { return static_cast<LabelledItem&>(*item); }
};

/// A drawer of glyphs in a scene, with a few textures that labels can be made of.
class GlyphsTest : public SceneTest
{
protected:
    static constexpr int Size = 64;
    static constexpr std::size_t GlyphBytes = 28;
    using Items = std::vector<std::unique_ptr<LabelledItem>>;
    using Texture = std::shared_ptr<IconTexture>;

    void SetUp() override
    {
        if (kept.scene)
            takeBack();
        else
            SceneTest::SetUp();
        for (int i = 0; i < 6; ++i)
            textures.push_back(opaqueTexture(4, 6));
        drawer = std::make_unique<LabelledItemDrawer>(scene.get());
    }
    void TearDown() override
    {
        if (!drawer) return;
        scene->makeCurrent();
        delete drawer->getProgram();
        drawer.reset();
        textures.clear();
        EXPECT_EQ(gl->glGetError(), 0u) << "pending OpenGL error";
        kept = {std::move(project), std::move(scene), std::move(debug)};
    }
    static void TearDownTestSuite()
    {
        if (kept.scene) kept.scene->makeCurrent();
        kept.scene.reset();
        kept.debug.reset();
        kept.project.reset();
    }
    static Texture opaqueTexture(int width, int height)
    {
        QImage image(width, height, QImage::Format_RGBA8888);
        image.fill(Qt::white);
        return std::make_shared<IconTexture>(image);
    }
    PaintContext view() { return paintContext(Size, Size); }
    /// The point of the scene at a corner of pixels.
    static glm::vec3 atCorner(int x, int y, float z = 0.0f)
    {
        return {float(x) * 2.0f / Size - 1.0f, 1.0f - float(y) * 2.0f / Size, z};
    }
    /// So many glyphs one after the other, six pixels apart, with the textures in turn.
    MultiGlyphItem3dDrawer::GlyphList label(std::size_t count, std::size_t firstTexture = 0) const
    {
        MultiGlyphItem3dDrawer::GlyphList glyphs;
        for (std::size_t j = 0; j < count; ++j)
            glyphs.emplace_back(glm::vec2(6.0f * float(j), 0.0f),
                                textures[(firstTexture + j) % textures.size()]);
        return glyphs;
    }
    LabelledItem& add(LONGID id, MultiGlyphItem3dDrawer::GlyphList glyphs, const glm::vec3& anchor = {})
    {
        items.push_back(std::make_unique<LabelledItem>(id));
        items.back()->glyphs = std::move(glyphs);
        items.back()->anchor = anchor;
        items.back()->setDrawer(drawer.get());
        return *items.back();
    }
    void relabel(LabelledItem& item, MultiGlyphItem3dDrawer::GlyphList glyphs)
    {
        item.glyphs = std::move(glyphs);
        drawer->updateItem(&item);
    }
    /// Draws into a target of its own, over black.
    QImage shown(const PaintContext& context, const Item3dDrawer::Filter& filter = {})
    {
        RenderTarget target(*gl, context.viewportRect.size());
        target.bind();
        target.clear(QColor(0, 0, 0));
        drawer->draw(context, filter);
        return target.image();
    }
    QImage shown() { return shown(view()); }
    /// The number of bytes of each upload of a pass.
    std::vector<std::size_t> uploadsOf(const PaintContext& context, const Item3dDrawer::Filter& filter = {})
    {
        GlCalls calls(*gl);
        shown(context, filter);
        std::vector<std::size_t> bytes;
        for (const GlCalls::Upload& upload : calls.uploads)
            bytes.push_back(upload.bytes);
        return bytes;
    }
    std::vector<std::size_t> uploadsOf() { return uploadsOf(view()); }
    /// Of all records; then, where the order of glyphs changed, that of the live ones.
    static std::vector<std::size_t> everything(std::size_t records, std::size_t live)
    {
        return {GlyphBytes * records, 8 * records, 4 * records, 4 * live};
    }
    static std::vector<std::size_t> recordsOnly(std::size_t records)
    {
        return {GlyphBytes * records, 8 * records, 4 * records};
    }
    static std::vector<std::size_t> flagsOnly(std::size_t records) { return {4 * records}; }
    std::vector<std::pair<int, int>> ranges() const
    {
        std::vector<std::pair<int, int>> list;
        for (const MultiGlyphItem3dDrawer::Range& range : drawer->getRanges())
            list.emplace_back(range.first, range.count);
        return list;
    }
    /// The numbers of vertices of the draw calls of a pass.
    std::vector<int> drawsOf(const PaintContext& context)
    {
        GlCalls calls(*gl);
        shown(context);
        std::vector<int> counts;
        for (const GlCalls::Draw& draw : calls.draws)
            counts.push_back(draw.vertices);
        return counts;
    }

    /// What all tests of a suite have in common: scenes take long to make, and no test here changes its.
    struct Kept
    {
        std::unique_ptr<CProject> project;
        std::unique_ptr<Scene3d> scene;
        std::unique_ptr<GlDebug> debug;
    };
    static inline Kept kept;
    void takeBack()
    {
        project = std::move(kept.project);
        scene = std::move(kept.scene);
        debug = std::move(kept.debug);
        ASSERT_TRUE(scene->makeCurrent());
        gl = scene->getGLFunctions();
    }

    std::vector<Texture> textures;
    std::unique_ptr<LabelledItemDrawer> drawer;
    Items items; // leave the drawer before it goes
};
