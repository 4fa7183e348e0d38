#pragma once

#include "tests/support/SceneTest.h"
#include "tests/support/TestItems.h"
#include "tests/unit/fences/FenceShapes.h"

#include <Viewer3dModule/drawables/ItemDrawing.h>
#include <Viewer3dModule/drawables/MeshNode3d.h>
#include <Viewer3dModule/drawables/PolyPolyline3dItem.h>
#include <Viewer3dModule/drawers/BatchedItem3dDrawer.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/IItem3dSelectionProvider.h>
#include <Viewer3dModule/shaders/DrawMode.h>

#include <QtGui/QPolygonF>

#include <memory>

/// An element's item that draws strips or a mesh, and tells so.
class ToldItem : public Graphics3dItem
{
public:
    ToldItem(CModelElement& element, LONGID id)
        : Graphics3dItem(&element)
        , m_id(id)
    {
        setDrawsByPrimitives(true);
    }
    using Drawable3dItem::setDrawer;
    using Drawable3dItem::setTransform;
    using Graphics3dItem::draw;
    LONGID getId() const override { return m_id; }
    bool isHighlighted() const override { return highlighted; }
    GeometryInfo getGeometryInfo() override
    {
        return mesh ? mesh->getGeometryInfo() : line.getGeometryInfo();
    }
    gmx::BoundingBox sceneBoundingBox() const override { return box; }
    void setStrips(const std::vector<glm::vec3>& vertices, std::vector<int> counts)
    {
        line.setVertices(vertices);
        m_counts = std::move(counts);
        drawingChanged();
    }
    void setPen(const QPen& pen)
    {
        m_pen = pen;
        drawingChanged();
    }
    bool describeDrawing(ItemDrawing& drawing) override
    {
        ++descriptions;
        if (mesh) return mesh->describeDrawing(drawing);
        line.describeStrips(drawing, m_pen, m_counts);
        return true;
    }

    Polyline3dPrimitive line;
    std::unique_ptr<MeshNode3d> mesh;
    gmx::BoundingBox box; ///< scene coordinates
    bool highlighted = false;
    int draws = 0;
    int descriptions = 0;

protected:
    void draw(const PaintContext& context) override
    {
        ++draws;
        if (mesh) {
            mesh->draw(context, 1);
            return;
        }
        line.setPen(context, m_pen);
        line.drawStrips(context, m_counts);
        line.resetPen(context);
    }

private:
    LONGID m_id;
    std::vector<int> m_counts;
    QPen m_pen{Qt::white};
};

class LocalStrips : public PolyPolyline3dItem
{
public:
    LocalStrips()
        : PolyPolyline3dItem(0, DrawerType::Mono)
    {
    }
    using PolyPolyline3dItem::setDrawer;
};

/// A batched drawer and a sequential one that draws the same registry.
struct DrawerPair
{
    class Batched : public BatchedItem3dDrawer
    {
    public:
        using BatchedItem3dDrawer::addChildDrawer;
        using BatchedItem3dDrawer::BatchedItem3dDrawer;
    };

    DrawerPair(Scene3d& scene, int type)
        : program(dynamic_cast<SequentialItem3dDrawer&>(*scene.getDefaultDrawer(type)).getDefaultProgram())
        , batched(&scene, program)
        , sequential(&scene, program)
    {
        batched.addChildDrawer(&sequential);
    }

    QOpenGLShaderProgram* program;
    Batched batched;
    SequentialItem3dDrawer sequential;
};

/// A test whose items are drawn both ways.
class BatchedTest : public SceneTest
{
protected:
    static constexpr QSize Size{24, 18};

    struct Drawn
    {
        std::vector<QImage> images;
        std::vector<float> depth;
        std::vector<LONGID> selected;
    };

    void SetUp() override
    {
        SceneTest::SetUp();
        target = std::make_unique<RenderTarget>(*gl, Size, 4);
    }
    void TearDown() override
    {
        if (scene) scene->makeCurrent();
        items.clear();
        pairs.clear();
        target.reset();
        SceneTest::TearDown();
    }
    DrawerPair& pair(int type)
    {
        std::unique_ptr<DrawerPair>& known = pairs[type];
        if (!known) known = std::make_unique<DrawerPair>(*scene, type);
        return *known;
    }
    PaintContext view() { return paintContext(Size.width(), Size.height()); }

    /// What a pass of this drawer leaves; the selected items of a pass for the selection buffer.
    Drawn drawn(Item3dDrawer& drawer, const PaintContext& context, const Item3dDrawer::Filter& filter = {})
    {
        const bool isSelection = context.drawMode == DrawMode::SelectionBufferDraw;
        target->bind();
        target->clear(QColor(10, 20, 30));
        if (context.drawMode != DrawMode::OrdinalDraw) gl->glDisable(GL_BLEND);
        if (isSelection) {
            scene->getItemSelectionProvider()->setSelectionPolygon(QPolygonF(QRectF(3, 2, 16, 13)));
            scene->getItemSelectionProvider()->beginSelection(context);
        }
        drawer.draw(context, filter);
        gl->glEnable(GL_BLEND);
        Drawn result;
        if (isSelection) result.selected = scene->getItemSelectionProvider()->selectedItems();
        const int images = context.drawMode == DrawMode::OrdinalDraw ? 1 : 4;
        for (int i = 0; i < images; ++i)
            result.images.push_back(target->image(i));
        result.depth = target->depth();
        return result;
    }

    ToldItem* addTold(int type, LONGID id)
    {
        auto item = std::make_unique<ToldItem>(element, id);
        item->setDrawer(&pair(type).batched);
        auto* added = item.get();
        items.push_back(std::move(item));
        return added;
    }
    /// A line of one segment across the view at this height.
    ToldItem* addLine(int type, LONGID id, float y, const QColor& color = Qt::white)
    {
        ToldItem* item = addTold(type, id);
        item->setStrips({{-1, y, 0}, {1, y, 0}}, {2});
        item->setPen(QPen(color));
        return item;
    }

    TestElement element;
    std::unique_ptr<RenderTarget> target;
    std::map<int, std::unique_ptr<DrawerPair>> pairs;
    std::vector<std::unique_ptr<Drawable3dItem>> items;
};
