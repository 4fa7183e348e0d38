#pragma once

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/host/Graphics3dItem.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/model/CModelElement.h>

#include <vector>

/// An item whose binding is open to tests and that counts its draws.
class TestItem : public Drawable3dItem
{
public:
    TestItem() = default;
    TestItem(TestItem&&) = default;
    using Drawable3dItem::draw;
    using Drawable3dItem::setDrawer;

    int draws = 0;
    PaintContext lastContext;

protected:
    void draw(const PaintContext& context) override
    {
        ++draws;
        lastContext = context;
    }
};

/// A drawer that notes what it is told; it draws nothing by OpenGL.
class TestDrawer : public Item3dDrawer
{
public:
    explicit TestDrawer(Scene3d* scene = nullptr)
        : Item3dDrawer(scene)
    {
    }
    using Item3dDrawer::addChildDrawer;
    using Item3dDrawer::addItem;
    using Item3dDrawer::prepareProgram;
    using Item3dDrawer::removeItem;
    using Item3dDrawer::setParentDrawer;

    void draw(const PaintContext& context, Filter filter) override
    {
        ++draws;
        lastContext = context;
        for (Drawable3dItem* item : getItems())
            if (!filter || filter(item)) drawn.push_back(item);
    }
    std::unique_ptr<Item3dDrawer> clone() const override { return std::make_unique<TestDrawer>(scene()); }
    using Item3dDrawer::updateItem;
    void updateItem(int index) override { updates.push_back(index); }

    int draws = 0;
    PaintContext lastContext;
    std::vector<Drawable3dItem*> drawn;
    std::vector<int> updates;
};

/// A model element of a type of the tests' choice.
class TestElement : public CModelElement
{
public:
    static constexpr int Type = 77;
    explicit TestElement(int elementType = Type)
        : type(elementType)
    {
    }
    int getType() const override { return type; }
    int type;
    gmx::BoundingBox box{glm::dvec3(0.0), glm::dvec3(1.0)}; ///< model coordinates
};

/// The scene item of a TestElement: its box is the element's, mapped to the scene; it counts what happens to
/// it.
class TestGraphicsItem : public Graphics3dItem
{
public:
    explicit TestGraphicsItem(TestElement* element)
        : Graphics3dItem(element)
        , m_element(element)
    {
        ++alive;
    }
    ~TestGraphicsItem() override { --alive; }

    gmx::BoundingBox sceneBoundingBox() const override
    {
        const gmx::BoundingBox box = fixedBox.isNull() ? m_element->box : fixedBox;
        return scene() && fixedBox.isNull() ? box.transformed(scene()->modelToSceneTransform()) : box;
    }
    int getDefaultDrawerType() const override { return drawerType; }
    void updateDataImpl() override
    {
        ++updates;
        order.push_back(this);
    }
    std::vector<Drawable3dItem*> getDrawableChildren() override { return children; }
    std::vector<glm::vec3> getVertices() override { return vertices; }
    int getNodePointsCount() const override { return static_cast<int>(vertices.size()); }

    int drawerType = 0x36FF1C00;
    int updates = 0;
    int draws = 0;
    gmx::BoundingBox fixedBox; ///< scene coordinates; null: follow the element's
    std::vector<Drawable3dItem*> children;
    std::vector<glm::vec3> vertices;
    static inline int alive = 0;
    static inline std::vector<TestGraphicsItem*> order; ///< items in the order of their updates

protected:
    using Graphics3dItem::draw;
    void draw(const PaintContext&) override { ++draws; }

private:
    TestElement* m_element;
};
