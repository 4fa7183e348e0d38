#include "SelectionTest.h"

#include <Viewer3dModule/host/Graphics3dItem.h>

void SelectionTest::TearDown()
{
    if (scene) {
        scene->makeCurrent();
        m_parts.clear();
    }
    SceneTest::TearDown();
}

DrawnItem* SelectionTest::addItem(LONGID id, int drawerType, int elementType)
{
    m_elements.push_back(std::make_unique<TestElement>(elementType));
    auto* item = new DrawnItem(m_elements.back().get(), id, drawerType);
    scene->addElement(item);
    return item;
}

TestElement& SelectionTest::elementOf(const DrawnItem* item)
{
    return static_cast<TestElement&>(*item->getModelElement());
}

DrawnItem* SelectionTest::add(LONGID id, GLenum mode, std::vector<glm::vec3> vertices, const QColor& color,
                              int elementType)
{
    DrawnItem* item = addItem(id, DrawerType::Mono, elementType);
    for (const glm::vec3& vertex : vertices) {
        item->vertices.emplace_back(vertex);
        item->box.unite(glm::dvec3(vertex));
    }
    m_parts.push_back(std::make_unique<VertexItem>(mode, std::move(vertices), color));
    VertexItem* part = m_parts.back().get();
    item->info = part->getGeometryInfo();
    item->drawing = [part](const PaintContext& context) { part->drawElement(context); };
    return item;
}

std::vector<glm::vec3> SelectionTest::square(const QRectF& pixels, float z)
{
    const auto x = [](double pixel) { return static_cast<float>(2.0 * pixel / Size.width() - 1.0); };
    const auto y = [](double pixel) { return static_cast<float>(1.0 - 2.0 * pixel / Size.height()); };
    return squareVertices(x(pixels.left()), y(pixels.bottom()), x(pixels.right()), y(pixels.top()), z);
}

DrawnItem* SelectionTest::addSquare(LONGID id, const QRectF& pixels, float z, const QColor& color)
{
    return add(id, GL_TRIANGLES, square(pixels, z), color);
}

SelectionTest::Ids SelectionTest::once(const std::vector<LONGID>& ids)
{
    Ids unique(ids.begin(), ids.end());
    EXPECT_EQ(unique.size(), ids.size()) << "an identifier is there twice";
    return unique;
}
