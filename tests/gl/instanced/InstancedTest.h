#pragma once

#include <tests/support/GlCalls.h>
#include <tests/support/GlObjects.h>
#include <tests/support/ImageCheck.h>
#include <tests/support/LogTrap.h>
#include <tests/support/ProgramList.h>
#include <tests/support/SceneTest.h>
#include <tests/support/TestItems.h>

#include <Viewer3dModule/drawers/InstancedViewerOrientedTextureDrawer.h>
#include <Viewer3dModule/shaders/DrawMode.h>

#include <QtCore/QDir>

#include <memory>
#include <vector>

/// An item that stands for an element, of which a drawer of instances takes one vertex.
class MarkItem : public TestGraphicsItem
{
public:
    static constexpr int DrawerKind = 4711; // of no drawer that scenes have by themselves

    MarkItem(LONGID identifier, const glm::vec3& where)
        : TestGraphicsItem(nullptr)
        , id(identifier)
        , place(where)
    {
        drawerType = DrawerKind;
    }
    using Drawable3dItem::setDrawer;

    LONGID getId() const override { return id; }
    glm::vec3 getVertex(int index) override
    {
        return index == 0 ? place : TestGraphicsItem::getVertex(index);
    }
    int getNodePointsCount() const override { return 1; }
    bool isHighlighted() const override { return highlighted; }
    void updateVisibility() override {} // as the test says, there being no element
    gmx::BoundingBox sceneBoundingBox() const override { return {glm::dvec3(place), glm::dvec3(place)}; }
    int getVisibilityType() const override { return DrawerKind; }

    LONGID id;
    glm::vec3 place;
    bool highlighted = false;
};

/// Drawers of instances in a scene whose host has a fragment stage for marks.
class InstancedTest : public SceneTest
{
protected:
    static constexpr int Size = 64;
    using MarkDrawer = InstancedViewerOrientedTextureDrawer;
    using Items = std::vector<std::unique_ptr<MarkItem>>;

    void SetUp() override
    {
        SceneTest::SetUp();
        QDir::addSearchPath(QStringLiteral("shader"),
                            QStringLiteral(V3D_SOURCE_DIR "/tests/gl/instanced/shaders"));
    }
    PaintContext view() { return paintContext(Size, Size); }
    /// The point whose picture is the centre of the pixel.
    static glm::vec3 atPixel(int x, int y, float z = 0.0f)
    {
        return {(float(x) + 0.5f) * 2.0f / Size - 1.0f, 1.0f - (float(y) + 0.5f) * 2.0f / Size, z};
    }
    /// What the drawer draws by itself, over black.
    QImage shown(Item3dDrawer& drawer, const PaintContext& context, const Item3dDrawer::Filter& filter = {})
    {
        RenderTarget target(*gl, context.viewportRect.size());
        target.bind();
        target.clear(QColor(0, 0, 0));
        drawer.draw(context, filter);
        return target.image();
    }
    QImage shown(Item3dDrawer& drawer) { return shown(drawer, view()); }
    /// An item on the drawer for each place, with identifiers from 1 on.
    static Items itemsAt(Item3dDrawer& drawer, const std::vector<glm::vec3>& places)
    {
        Items items;
        for (const glm::vec3& place : places) {
            items.push_back(std::make_unique<MarkItem>(LONGID(items.size()) + 1, place));
            items.back()->setDrawer(&drawer);
        }
        return items;
    }
    template <class T>
    std::vector<T> contentsOf(unsigned int buffer)
    {
        GLint bytes = 0;
        gl->glBindBuffer(GL_ARRAY_BUFFER, buffer);
        gl->glGetBufferParameteriv(GL_ARRAY_BUFFER, GL_BUFFER_SIZE, &bytes);
        std::vector<T> values(static_cast<std::size_t>(bytes) / sizeof(T));
        gl->glGetBufferSubData(GL_ARRAY_BUFFER, 0, bytes, values.data());
        gl->glBindBuffer(GL_ARRAY_BUFFER, 0);
        return values;
    }
    GLint integer(GLenum what)
    {
        GLint value = -1;
        gl->glGetIntegerv(what, &value);
        return value;
    }
};
